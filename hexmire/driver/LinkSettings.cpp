#include <hexmire/driver/Address.h>
#include <hexmire/driver/LinkErrors.h>
#include <hexmire/driver/LinkSettings.h>

#include <algorithm>
#include <array>
#include <initializer_list>
#include <string_view>

namespace hexmire {

namespace {

using link::LinkError;
using Fault = std::optional<SettingsFault>;
using Milliseconds = LinkSettings::Milliseconds;
using namespace std::chrono_literals;

constexpr std::array kBaudRates{150, 300, 1200, 2400, 4800, 9600, 19200};
constexpr Milliseconds kDay = 24h;

Fault MakeFault(LinkError code, std::string_view details) {
    return SettingsFault{static_cast<std::int32_t>(code), link::ErrorText(code, details)};
}

Fault OutOfRange(std::string_view name, std::int64_t value) {
    std::string details(name);
    details.append(" = ").append(std::to_string(value));
    return MakeFault(LinkError::SettingOutOfRange, details);
}

struct NumberRange {
    std::string_view Name;
    std::int64_t Value;
    std::int64_t Least;
    std::int64_t Most;
};

Fault FirstOutside(std::initializer_list<NumberRange> ranges) {
    for (const NumberRange& range : ranges) {
        if (range.Value < range.Least || range.Value > range.Most) {
            return OutOfRange(range.Name, range.Value);
        }
    }
    return std::nullopt;
}

Fault CheckNumbers(const LinkSettings& settings) {
    if (std::find(kBaudRates.begin(), kBaudRates.end(), settings.BaudRate) == kBaudRates.end()) {
        return OutOfRange("BaudRate", settings.BaudRate);
    }
    constexpr std::int64_t kMost = std::int64_t{1} << 40U;
    return FirstOutside({
        {"PortType", settings.PortType, 1, 4},
        {"ConnectionRetryLimit", settings.ConnectionRetryLimit, 0, 31},
        {"DeviceID", settings.DeviceID, 0, 32'767},
        {"HSMSConnectionMode", settings.HSMSConnectionMode, 1, 3},
        {"TimeOutRetry", settings.TimeOutRetry, 0, 32'767},
        {"MaxMessageBytes", settings.MaxMessageBytes, 1, 0xFFFF'FFF5},
        {"MaxListDepth", settings.MaxListDepth, 1, 1'000'000},
        {"MaxQueuedMessages", static_cast<std::int64_t>(settings.MaxQueuedMessages), 1, kMost},
        {"MaxQueuedBytes", static_cast<std::int64_t>(settings.MaxQueuedBytes), 1, kMost},
        {"MaxWaitingMessages", static_cast<std::int64_t>(settings.MaxWaitingMessages), 1, kMost},
    });
}

Fault CheckTimers(const LinkSettings& settings) {
    const bool fast = settings.AllowShortTimers;
    const auto range =
        [](std::string_view name, Milliseconds value, Milliseconds least, Milliseconds most) {
            return NumberRange{name, value.count(), least.count(), most.count()};
        };
    const auto least = [fast](Milliseconds standard) { return fast ? 1ms : standard; };
    return FirstOutside({
        range("T1", settings.T1, least(100ms), 10s),
        range("T2", settings.T2, least(200ms), 25s),
        range("T3", settings.T3, least(1s), 120s),
        range("T4", settings.T4, least(1s), 120s),
        range("T5", settings.T5, least(1s), 240s),
        range("T6", settings.T6, least(1s), 240s),
        range("T7", settings.T7, least(1s), 240s),
        range("T8", settings.T8, least(1s), 120s),
        range("LinktestInterval", settings.LinktestInterval, 0ms, kDay),
        range("FrameCap", settings.FrameCap, 1ms, kDay),
        range("ConnectTimeout", settings.ConnectTimeout.value_or(1s), 1ms, kDay),
        range("WriteStall", settings.WriteStall, 1ms, kDay),
    });
}

Fault BadAddress(std::string_view name, std::string_view value) {
    std::string details(name);
    details.append(" \"").append(value).append("\"");
    return MakeFault(LinkError::BadAddress, details);
}

bool IsUsablePort(std::int32_t port) noexcept { return port >= 1 && port <= 65'535; }

/// A passive link listens, an active one connects, an alternating one does both.
Fault CheckEndpoints(const LinkSettings& settings) {
    const auto mode = static_cast<LinkConnectionMode>(settings.HSMSConnectionMode);
    if (link::ClassifyAddress(settings.LocalIPAddress) == link::AddressKind::Bad) {
        return BadAddress("LocalIPAddress", settings.LocalIPAddress);
    }
    if (mode != LinkConnectionMode::Active && !IsUsablePort(settings.LocalIPPort)) {
        return BadAddress("LocalIPPort", std::to_string(settings.LocalIPPort));
    }
    if (mode == LinkConnectionMode::Passive) return std::nullopt;
    if (link::ClassifyAddress(settings.RemoteIPAddress) == link::AddressKind::Bad) {
        return BadAddress("RemoteIPAddress", settings.RemoteIPAddress);
    }
    if (IsUsablePort(settings.RemoteIPPort)) return std::nullopt;
    return BadAddress("RemoteIPPort", std::to_string(settings.RemoteIPPort));
}

Fault CheckSerialPort(const LinkSettings& settings) {
    if (!settings.SerialPort.empty()) return std::nullopt;
    return MakeFault(LinkError::SettingOutOfRange, "SerialPort \"\"");
}

}  // namespace

std::optional<SettingsFault> CheckSettingRanges(const LinkSettings& settings) {
    if (Fault fault = CheckNumbers(settings)) return fault;
    return CheckTimers(settings);
}

std::optional<SettingsFault> CheckLinkSettings(const LinkSettings& settings) {
    if (Fault fault = CheckSettingRanges(settings)) return fault;
    const auto type = static_cast<LinkPortType>(settings.PortType);
    return type == LinkPortType::Serial ? CheckSerialPort(settings) : CheckEndpoints(settings);
}

LinkSettings::Milliseconds LeastSensibleT1(std::int32_t baudRate) noexcept {
    constexpr std::int64_t kThreeCharacters = std::int64_t{30} * 1'000;  // bits, in milliseconds
    constexpr Milliseconds kAdapterDelay = 20ms;
    return Milliseconds((kThreeCharacters + baudRate - 1) / baudRate) + kAdapterDelay;
}

}  // namespace hexmire
