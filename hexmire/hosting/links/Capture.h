#pragma once

#include <hexmire/driver/ILinkMachine.h>
#include <hexmire/driver/LinkSettings.h>
#include <hexmire/driver/LinkStatistics.h>
#include <hexmire/driver/trace/TcpCapture.h>
#include <hexmire/hosting/SystemClock.h>
#include <hexmire/hosting/links/DailyRecord.h>
#include <hexmire/hosting/links/RecordSite.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace hexmire::link {

/// The file of a port's TCP traffic for programs that read captures: SECSI_<port>_<day>.pcapng in
/// LinkSettings::CaptureFolder. A serial port has none.
class Capture {
public:
    Capture(FileWorker& worker,
            RecordSite site,
            LinkStatistics& statistics,
            DailyRecord::Failed failed,
            std::string folder);

    [[nodiscard]] bool IsOn() const noexcept { return !folder_.empty(); }
    /// The port that these settings name.
    void Name(const LinkSettings& settings);

    // Nothing while there is no capture or no TCP connection.
    void Open(const Endpoints& ends, std::string_view comment);
    void Bytes(TraceDirection direction, std::span<const std::uint8_t> bytes);
    void End(ConnectionEnd end, std::string_view comment);
    void Flush() { record_.Flush(); }
    void HandOver() { record_.HandOver(); }

private:
    /// Adds packets that carry this time.
    template <class Packets>
    void Add(Packets&& packets);

    RecordSite site_;
    SystemClock clock_;
    DailyRecord record_;
    std::string folder_;
    std::string name_;
    std::optional<TcpCapture> connection_;
    std::string bytes_;  // being put together; kept to spare an allocation for each
};

}  // namespace hexmire::link
