#pragma once

#include "log/LogEntry.h"

#include <string>
#include <vector>

namespace hexmire::program {

/// A message put together from its entries.
struct LogMessage {
    LogEntry Head{};  ///< its header; the entry with the SML when there is no header
    std::int64_t Length = -1;
    std::string Sml{};       ///< without the line end behind the final "."
    std::string BodyHex{};   ///< as logged
    bool Whole = false;      ///< its SML came
    bool Shortened = false;  ///< SML or bytes were longer than what is kept
};

/// Puts messages together. What is kept of one is bounded, and so is their number.
class LogMessages : public LogSink {
public:
    void Begin(const LogEntry& entry) final;
    void Text(std::string_view bytes) final;
    void Pause(bool whole) final;
    void Unfinished(const LogEntry& header) final;
    void Finish() final;

protected:
    /// A message, once its SML has come or it is certain that none will.
    virtual void OnMessage(const LogMessage& message) = 0;
    /// A line that belongs to no message; its text without time stamp and line end, shortened.
    virtual void OnLine(const LogEntry& entry, std::string_view text) = 0;
    virtual void OnPause() = 0;

private:
    static constexpr std::size_t kLongest = std::size_t{4} * 1024 * 1024;

    void End();
    [[nodiscard]] LogMessage* Find(std::int64_t message);

    std::vector<LogMessage> open_;
    LogEntry entry_;
    std::string line_;
    bool inEntry_ = false;
};

}  // namespace hexmire::program
