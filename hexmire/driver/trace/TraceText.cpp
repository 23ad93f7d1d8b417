#include <hexmire/driver/SafeFileName.h>
#include <hexmire/driver/trace/TraceText.h>
#include <hexmire/support/DateText.h>
#include <hexmire/support/HexBytes.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>

namespace hexmire::link {

namespace {

constexpr std::size_t kBytesInLine = 65'536;
constexpr std::string_view kLineEnd = "\r\n";

/// "yyyy/mm/dd hh:mm:ss.uuuuuu "; what is below a microsecond is cut off.
void AppendTime(std::string& text, const ClockReading& time) {
    using namespace std::chrono;
    text += DateText(time.Date, '/');
    const hh_mm_ss parts(floor<microseconds>(time.TimeOfDay));
    std::array<char, 48> written{};
    std::snprintf(written.data(),
                  written.size(),
                  " %02d:%02d:%02d.%06d ",
                  static_cast<int>(parts.hours().count()),
                  static_cast<int>(parts.minutes().count()),
                  static_cast<int>(parts.seconds().count()),
                  static_cast<int>(parts.subseconds().count()));
    text += written.data();
}

}  // namespace

void AppendTraceBytes(std::string& text,
                      const ClockReading& time,
                      TraceDirection direction,
                      std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        const auto line = bytes.first(std::min(bytes.size(), kBytesInLine));
        bytes = bytes.subspan(line.size());
        AppendTime(text, time);
        text += direction == TraceDirection::Sent ? "Send " : "Recv ";
        text += std::to_string(line.size());
        text += ": ";
        AppendHexText(text, line);
        text.pop_back();  // the blank behind the last byte
        text += kLineEnd;
    }
}

void AppendTraceNote(std::string& text, const ClockReading& time, std::string_view note) {
    constexpr unsigned char kFirstPrintable = 0x20;
    constexpr unsigned char kDelete = 0x7F;
    AppendTime(text, time);
    text += "Note ";
    for (const char one : note) {
        const auto byte = static_cast<unsigned char>(one);
        text += byte < kFirstPrintable || byte == kDelete ? '?' : one;
    }
    text += kLineEnd;
}

std::string TracePortName(const LinkSettings& settings) {
    constexpr std::string_view kDevices = "/dev/";
    if (settings.PortType == static_cast<std::int32_t>(LinkPortType::Serial)) {
        std::string_view device = settings.SerialPort;
        if (device.starts_with(kDevices)) device.remove_prefix(kDevices.size());
        return SafeFileName("serial-" + std::string(device));
    }
    const bool active =
        settings.HSMSConnectionMode == static_cast<std::int32_t>(LinkConnectionMode::Active);
    std::string name = active ? "to-" : "at-";
    name += active ? settings.RemoteIPAddress : settings.LocalIPAddress;
    name += '-';
    name += std::to_string(active ? settings.RemoteIPPort : settings.LocalIPPort);
    name += "-device-";
    name += std::to_string(settings.DeviceID);
    return SafeFileName(name);
}

}  // namespace hexmire::link
