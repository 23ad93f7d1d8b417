#include <hexmire/hosting/links/ByteTrace.h>
#include <hexmire/hosting/links/RecordPath.h>

#include <utility>

namespace hexmire::link {

ByteTrace::ByteTrace(FileWorker& worker,
                     RecordSite site,
                     LinkStatistics& statistics,
                     DailyRecord::Failed failed)
    : site_(std::move(site)),
      record_(worker,
              site_.Files,
              {.Extension = ".log",
               .Gap =
                   [this](std::uint64_t lost) {
                       std::string text;
                       const std::string what = std::to_string(lost) + " lines are missing here";
                       AppendTraceNote(text, Now(), what);
                       return text;
                   }},
              statistics.TraceEntriesLost,
              std::move(failed)) {}

void ByteTrace::Configure(const LinkSettings& settings) {
    const bool turnsOn = settings.Trace && !isOn_;
    const bool moves = settings.SECSILogPath != folder_;
    isOn_ = settings.Trace;
    folder_ = settings.SECSILogPath;
    if (name_.empty()) name_ = TracePortName(settings);
    if (isOn_ && (turnsOn || moves)) Place();
}

void ByteTrace::Name(const LinkSettings& settings) {
    std::string name = TracePortName(settings);
    if (name == name_) return;
    name_ = std::move(name);
    if (isOn_) Place();
}

void ByteTrace::Place() { record_.Place(PathIn(folder_, "SECSI_" + name_)); }

void ByteTrace::Bytes(TraceDirection direction, std::span<const std::uint8_t> bytes) {
    if (!isOn_) return;
    const ClockReading now = Now();
    text_.clear();
    AppendTraceBytes(text_, now, direction, bytes);
    record_.Add(text_, now.Date);
}

void ByteTrace::Note(std::string_view text) {
    if (!isOn_) return;
    const ClockReading now = Now();
    text_.clear();
    AppendTraceNote(text_, now, text);
    record_.Add(text_, now.Date);
}

}  // namespace hexmire::link
