#pragma once

#include "MessageRecord.h"

#include <cstdint>
#include <string>

namespace hexmire::program {

/// Where a link's events are shown. Texts come in ISO 8859-1.
class EventOutput {
public:
    virtual void Connect() = 0;
    virtual void Disconnect(std::int32_t code, const std::string& text) = 0;
    virtual void Error(std::int32_t code, const std::string& text, std::int32_t line) = 0;
    virtual void Message(const MessageRecord& message) = 0;

    /// False once something could not be written.
    [[nodiscard]] virtual bool IsGood() const = 0;

    virtual ~EventOutput() = default;

protected:
    EventOutput() = default;
    EventOutput(const EventOutput&) = default;
    EventOutput& operator=(const EventOutput&) = default;
};

}  // namespace hexmire::program
