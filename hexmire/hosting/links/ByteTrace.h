#pragma once

#include <hexmire/driver/LinkSettings.h>
#include <hexmire/driver/LinkStatistics.h>
#include <hexmire/driver/trace/TraceText.h>
#include <hexmire/hosting/SystemClock.h>
#include <hexmire/hosting/links/DailyRecord.h>
#include <hexmire/hosting/links/RecordSite.h>

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace hexmire::link {

/// The text file that shows every byte of a port, sent and received, and what happened to its
/// connections: SECSI_<port>_<day>.log in the folder of the settings. The lines are those of
/// TraceText.h.
class ByteTrace {
public:
    ByteTrace(FileWorker& worker,
              RecordSite site,
              LinkStatistics& statistics,
              DailyRecord::Failed failed);

    /// On or off, and the folder.
    void Configure(const LinkSettings& settings);
    /// The port that these settings name: with the next connection they come into force.
    void Name(const LinkSettings& settings);

    [[nodiscard]] bool IsOn() const noexcept { return isOn_; }
    // Nothing while the trace is off.
    void Bytes(TraceDirection direction, std::span<const std::uint8_t> bytes);
    void Note(std::string_view text);
    void Flush() { record_.Flush(); }
    void HandOver() { record_.HandOver(); }

private:
    void Place();
    [[nodiscard]] ClockReading Now() const { return clock_.At(site_.Now()); }

    RecordSite site_;
    SystemClock clock_;
    DailyRecord record_;
    bool isOn_ = false;
    std::string folder_;
    std::string name_;
    std::string text_;  // being put together; kept to spare an allocation for each
};

}  // namespace hexmire::link
