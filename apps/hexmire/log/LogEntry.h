#pragma once

#include "log/LogLine.h"
#include "log/LogTime.h"

#include <cstdint>
#include <string_view>

namespace hexmire::program {

/// One entry of the log: a line with its time stamp, and the lines below it when it is SML. What a
/// line does not say itself (whose length, whose bytes) is taken from the header that it follows.
struct LogEntry {
    LineFacts Facts{};
    LogTime Time = 0;          ///< as logged; of a broken line: that of the entry above it
    LogTime Moment = 0;        ///< the time to reckon with: see LogReader
    std::int64_t Line = 0;     ///< number of its first line in its file, from 1
    std::int64_t Message = 0;  ///< number of the header that it belongs to, a header's own; 0: none
    bool Error = false;        ///< belongs to a message that tells of, or is, an error
    bool Unexpected = false;   ///< a received reply for which no transaction waited
};

/// Takes what a log reader finds.
class LogSink {
public:
    virtual void Begin(const LogEntry& entry) = 0;
    /// Bytes of the entry that began last, exactly as logged, its line ends among them.
    virtual void Text(std::string_view bytes) = 0;
    /// The entry that began last is whole, as far as can be told; more text may follow all the
    /// same. Told when the input pauses, so that what was logged last can be shown.
    virtual void Pause(bool whole) = 0;
    /// The message of this header never came to its SML: it could not be decoded, or not be sent.
    virtual void Unfinished(const LogEntry& header) = 0;
    /// Nothing follows.
    virtual void Finish() = 0;

    virtual ~LogSink() = default;

protected:
    LogSink() = default;
    LogSink(const LogSink&) = default;
    LogSink& operator=(const LogSink&) = default;
};

}  // namespace hexmire::program
