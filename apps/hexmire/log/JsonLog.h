#pragma once

#include "log/LogFilter.h"
#include "log/LogMessages.h"

#include <ostream>

namespace hexmire::program {

/// Writes the messages and lines that pass a filter as one JSON object a line, with the fields that
/// the events of a link have.
class JsonLog final : public LogMessages {
public:
    /// The stream outlives this object.
    JsonLog(std::ostream& out, LogFilter filter);

private:
    void OnMessage(const LogMessage& message) override;
    void OnLine(const LogEntry& entry, std::string_view text) override;
    void OnPause() override { out_.flush(); }

    std::ostream& out_;
    LogFilter filter_;
};

/// The value as the control and the log's own lines show it: with a sign.
[[nodiscard]] std::int32_t ShownSystemBytes(std::uint32_t systemBytes);

}  // namespace hexmire::program
