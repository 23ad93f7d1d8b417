#pragma once

#include "log/LineSplitter.h"
#include "log/LogEntry.h"

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace hexmire::program {

/// What is wrong with a log as a whole. Counted for one file after another.
struct LogReport {
    std::int64_t Entries = 0;  ///< with a time stamp
    std::int64_t Bytes = 0;
    std::int64_t Broken = 0;  ///< lines, and entries that are damaged
    std::int64_t FirstBroken = 0;
    std::int64_t StepsBack = 0;  ///< times that are earlier than the one before
    std::int64_t FirstStepBack = 0;
    LogTime FirstStepSize = 0;
    bool CutOff = false;  ///< the last entry is not whole
};

/// Reads a message log from its bytes, in one pass and constant memory, and hands entry after entry
/// to a sink. Lines end with CR LF or LF. Nothing that stands in a log makes it fail: what is no
/// entry is handed on as broken.
///
/// The log rounds the hundredths by themselves: what happens in the last five milliseconds of a
/// second bears ".00" and seems to be earlier than the line above it. Such a time is reckoned as
/// the end of its second.
class LogReader {
public:
    /// The sink outlives this object.
    explicit LogReader(LogSink& sink, std::size_t bufferSize = LineSplitter::kSize);

    /// Where the next bytes are to be put, and how many were.
    [[nodiscard]] std::span<char> Room() noexcept { return splitter_.Room(); }
    void Take(std::size_t count);
    /// Nothing more has come for now.
    void Pause();
    /// A file has ended; what follows begins a line. The report is of this file.
    LogReport EndFile();
    /// Everything has ended.
    void Finish();

    /// Of the file so far.
    [[nodiscard]] const LogReport& Report() const noexcept { return report_; }

private:
    /// Deeper than sends from within the handlers of sends ever nest; older headers are given up.
    static constexpr std::size_t kOpenHeaders = 8;

    void OnPiece(const LinePiece& piece);
    void OnLine(std::string_view text, LogTime time);
    void OnLineWithoutTime(const LinePiece& piece);
    void OnSmlName(const LinePiece& piece);
    void BeginBroken();
    void Begin();

    void OpenHeader();
    void CloseMessage();
    void TakeFromHeader();
    void GiveUp(std::vector<LogEntry>& open, std::size_t from, std::size_t count);
    void GiveUpReceived();
    void FollowTimer();
    [[nodiscard]] bool NobodyWaits() const;
    void CountBroken(std::int64_t line);
    [[nodiscard]] LogTime MomentOf(LogTime time);
    [[nodiscard]] bool IsWhole() const;
    [[nodiscard]] std::vector<LogEntry>& Open(Way way) {
        return open_[static_cast<std::size_t>(way)];
    }

    LogSink& sink_;
    LineSplitter splitter_;
    StampReader stamps_;
    LogReport report_;
    std::int64_t line_ = 0;
    LogEntry entry_;        // The one that text belongs to.
    bool inEntry_ = false;  // False before the first one of all.
    std::string
        messageLine_;  // "... SECS II Message ...", kept until the line below tells its name.
    bool smlEnded_ = false;
    bool lineEnded_ = true;
    std::int64_t entries_ = 0;  // Over all files.
    LogTime lastTime_ = 0;
    std::optional<LogTime> lastMoment_;
    std::array<std::vector<LogEntry>, 4> open_;  // Headers whose SML has not come, by way.
    std::optional<LineFacts> searched_;  // The reply that a waiting transaction is searched for.
};

}  // namespace hexmire::program
