#pragma once

#include "EventOutput.h"
#include "VisibleText.h"

#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>

namespace hexmire::program {

/// Events as text for people: one line each, and the SML of a message below its line.
class SmlPrinter final : public EventOutput {
public:
    enum class Detail : std::uint8_t {
        Everything,
        ReceivedSml,  ///< a sent message is one line: the other side, shown too, prints its SML
    };

    /// Lines begin with the label. The stream outlives this object.
    SmlPrinter(std::ostream& out,
               std::string label,
               Detail detail = Detail::Everything,
               Controls controls = Controls::AsTheyCame);

    void Connect() override;
    void Disconnect(std::int32_t code, const std::string& text) override;
    void Error(std::int32_t code, const std::string& text, std::int32_t line) override;
    void Message(const MessageRecord& message) override;
    [[nodiscard]] bool IsGood() const override { return out_.good(); }

private:
    /// In UTF-8, as it is to be written.
    [[nodiscard]] std::string Shown(std::string_view latin1) const;

    std::ostream& out_;
    std::string label_;
    Detail detail_;
    Controls controls_;
};

}  // namespace hexmire::program
