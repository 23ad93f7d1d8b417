#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace hexmire {

/// Port types of the control's interface, as PortType carries them.
enum class LinkPortType : std::int16_t { Serial = 1, Hsms = 2, Tcp = 3, HsmsSs = 4 };

/// Connection modes of the control's interface, as HSMSConnectionMode carries them.
enum class LinkConnectionMode : std::int16_t { Active = 1, Passive = 2, Alternating = 3 };

/// Everything that a link is configured with. The first group is what the setters of the driver
/// give; it starts with the control's defaults. The second group is the driver's own.
///
/// Codes and numbers are kept as they came, illegal ones included: CheckLinkSettings tells at
/// OpenLink which of them is wrong, and nothing is ever clamped. Durations are whole milliseconds,
/// for 0.1 s has no exact binary fraction. The fields stand in the order of the interface, not in
/// that of the least padding.
struct LinkSettings {  // NOLINT(clang-analyzer-optin.performance.Padding)
    using Milliseconds = std::chrono::milliseconds;

    // --- given by the setters --------------------------------------------------------------------
    std::string SerialPort = "COM1";
    std::int32_t ConnectionRetryLimit = 3;  ///< RTY [0..31]
    std::int32_t PortType = 1;              ///< LinkPortType [1..4]
    bool HostRole = true;                   ///< false: equipment
    std::int32_t BaudRate = 9600;           ///< 150, 300, 1200, 2400, 4800, 9600 or 19200 bit/s
    Milliseconds T1{300};                   ///< inter-character [100..10 000] ms
    Milliseconds T2{500};                   ///< protocol [200..25 000] ms
    Milliseconds T3{45'000};                ///< reply [1..120] s
    Milliseconds T4{10'000};                ///< inter-block [1..120] s
    Milliseconds T5{10'000};                ///< connect separation [1..240] s
    Milliseconds T6{5'000};                 ///< control transaction [1..240] s
    Milliseconds T7{10'000};                ///< not selected [1..240] s
    Milliseconds T8{5'000};                 ///< network inter-character [1..120] s
    std::int32_t DeviceID = 0;              ///< [0..32767]
    std::string LocalIPAddress = "0.0.0.0";
    std::int32_t LocalIPPort = 5000;  ///< [1..65535] where one is needed: passive, alternating
    std::string RemoteIPAddress = "255.255.255.100";
    std::int32_t RemoteIPPort = 5000;  ///< [1..65535] where one is needed: active, alternating
    bool InterleaveCheck = false;
    bool DuplicateBlockCheck = true;
    bool SystemBytesCheck = false;
    std::int32_t TimeOutRetry = 0;        ///< [0..32767]
    std::int32_t HSMSConnectionMode = 1;  ///< LinkConnectionMode [1..3]
    bool Trace = false;
    bool RecipeFileEnabled = false;
    std::string RecipeSendPath;
    std::string RecipeRecvPath;
    std::string SECSILogPath;

    // --- the driver's own ------------------------------------------------------------------------
    /// Longest message body, received or sent [1..4 294 967 285] bytes. A longer frame ends the
    /// link.
    std::uint32_t MaxMessageBytes = 16U * 1024U * 1024U;
    /// Deepest nesting of lists that a received body may have [1..1 000 000].
    std::uint32_t MaxListDepth = 1'000;
    /// False: the end of a connection closes the port. True: the port stays open over it; the
    /// active side connects again after T5, the passive side goes on listening.
    bool AutoReconnect = false;
    /// SECS-I: true takes blocks whatever their R-bit; several peers never set it.
    bool IgnoreDirection = false;
    /// Numeric addresses that may call a passive port; empty: anybody.
    std::vector<std::string> AllowedCallers;
    /// Port type 2: true ends a session by Deselect.req and closes the connection when the peer has
    /// answered; false by Separate.req, which nobody answers.
    bool DeselectOnClose = false;
    /// Quiet time after which a Linktest.req is sent [0..86 400 000] ms; 0: none is ever sent.
    Milliseconds LinktestInterval{30'000};
    /// Longest time that one frame may take to arrive [1..86 400 000] ms: it stops a peer that
    /// feeds one byte just within each T8.
    Milliseconds FrameCap{300'000};
    /// Longest time of one connect attempt [1..86 400 000] ms; none: T5, but 2 s to 20 s.
    std::optional<Milliseconds> ConnectTimeout;
    /// Longest time that outgoing bytes may wait without any progress [1..86 400 000] ms.
    Milliseconds WriteStall{30'000};
    /// Messages and bytes that may wait to be written; more are refused.
    std::size_t MaxQueuedMessages = 20'000;
    std::size_t MaxQueuedBytes = std::size_t{64} * 1024 * 1024;
    /// Received messages that may wait for the control before reading stops.
    std::size_t MaxWaitingMessages = 10'000;
    /// Folder of captures (pcapng) of what goes over TCP, one file for each port and day; empty: no
    /// captures. Read when the driver is made.
    std::string CaptureFolder;
    /// True: T1 to T8 need only be positive. For rigs that run in accelerated time.
    bool AllowShortTimers = false;

    bool operator==(const LinkSettings&) const = default;
};

/// What is wrong with settings: an error code and a text that names the setting.
struct SettingsFault {
    std::int32_t Code = 0;
    std::string Text;

    bool operator==(const SettingsFault&) const = default;
};

/// The first value that is outside its own range, whatever the others are; none when there is none.
[[nodiscard]] std::optional<SettingsFault> CheckSettingRanges(const LinkSettings& settings);

/// The first fault that would keep a link with these settings from ever working; none when there is
/// none. The name of the serial port, addresses and ports are looked at only where the port type
/// and mode use them.
[[nodiscard]] std::optional<SettingsFault> CheckLinkSettings(const LinkSettings& settings);

/// The shortest T1 that a serial line at this speed keeps: three characters, and what adapters
/// hold back. A shorter one is allowed, but breaks off blocks that are in order.
[[nodiscard]] LinkSettings::Milliseconds LeastSensibleT1(std::int32_t baudRate) noexcept;

}  // namespace hexmire
