#pragma once

#include "EventOutput.h"

#include <cstdint>
#include <ostream>
#include <string>

namespace hexmire::program {

/// One JSON object a line, each line written out at once.
class JsonEvents final : public EventOutput {
public:
    /// The stream outlives this object.
    explicit JsonEvents(std::ostream& out) : out_(out) {}

    void Connect() override;
    void Disconnect(std::int32_t code, const std::string& text) override;
    void Error(std::int32_t code, const std::string& text, std::int32_t line) override;
    void Message(const MessageRecord& message) override;
    [[nodiscard]] bool IsGood() const override { return out_.good(); }

private:
    std::ostream& out_;
};

}  // namespace hexmire::program
