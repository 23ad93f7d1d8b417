#pragma once

#include "VisibleText.h"
#include "log/LogEntry.h"
#include "log/LogFilter.h"

#include <ostream>
#include <string>

namespace hexmire::program {

/// Writes the entries that pass a filter: exactly as they were logged, or in UTF-8 with control
/// characters visible.
class EntryPrinter final : public LogSink {
public:
    /// The stream outlives this object.
    EntryPrinter(std::ostream& out, LogFilter filter, Controls controls = Controls::AsTheyCame);

    void Begin(const LogEntry& entry) override;
    void Text(std::string_view bytes) override;
    void Pause(bool whole) override;
    void Unfinished(const LogEntry& header) override;
    void Finish() override;

private:
    enum class Show : std::uint8_t { No, Yes, Later };

    void Write(std::string_view bytes);
    void Put(std::string_view bytes);
    [[nodiscard]] Show Decide(const LogEntry& entry);

    std::ostream& out_;
    LogFilter filter_;
    LogFilter withoutErrors_;  // The filter but for its errors.
    Controls controls_;
    std::string return_;  // A CR at the end of what was put: whether LF follows shows later.
    Show show_ = Show::No;
    std::string pending_;  // Goes out in large pieces.
    // When errors are asked for: the lines of a received message that may turn out to be one.
    std::string held_;
};

}  // namespace hexmire::program
