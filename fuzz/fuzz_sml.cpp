// An SML text: any text is read or refused with a place inside it, and a message that was read can
// be sent, rendered and read again. The same bytes, taken as a body, render to a text that reads
// back to the same message; bodies that a link refuses are left out.
#include <hexmire/driver/BodyCheck.h>
#include <hexmire/sml.h>

#include "Require.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace hexmire;

void RequirePlace(const ParsedSml& parsed, std::string_view text) {
    const auto lines = std::count(text.begin(), text.end(), '\n') + 1;
    fuzz::Require(parsed.Line >= 1 && parsed.Line <= lines && parsed.Column >= 1 &&
                      static_cast<std::size_t>(parsed.Column) <= text.size() + 1,
                  "an error lies inside its text");
    fuzz::Require(parsed.Error.starts_with("expected "), "an error says what was expected");
}

/// Texts that hold the end of an item, or quotes that may delimit parts, do not read back alike.
bool ReadsBack(std::string_view body) {
    return body.find(" >\r\n") == std::string_view::npos &&
           body.find('\'') == std::string_view::npos;
}

void CheckRendering(SECSMessage& message) {
    constexpr std::size_t kLargest = 8192;  // Deeper trees may be too deep to indent.
    const std::vector<std::uint8_t> bytes = EncodeBody(message);
    if (bytes.size() > kLargest) return;
    const std::string text = RenderSml(message, true);
    const ParsedSml parsed = ParseSml(text);
    if (parsed.Message == nullptr) RequirePlace(parsed, text);
    if (!ReadsBack({reinterpret_cast<const char*>(bytes.data()), bytes.size()})) return;

    fuzz::Require(parsed.Message != nullptr, "what was rendered is read");
    fuzz::Require(RenderSml(*parsed.Message, true) == text, "what was read renders alike");
    // The sign of a zero and the bits of a NaN are not in the text: only their room is compared.
    fuzz::Require(EncodeBody(*parsed.Message).size() == bytes.size(), "and is sent alike");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const ParsedSml parsed = ParseSml(text);
    if (parsed.Message == nullptr) {
        RequirePlace(parsed, text);
    } else {
        CheckRendering(*parsed.Message);
    }
    for (const ParsedSml& message : ParseSmlMessages(text))
        fuzz::Require((message.Message == nullptr) != message.Error.empty(), "read or refused");

    constexpr std::uint32_t kDeepest = 1'000;
    link::BodyCheck check;
    if (check.Check({data, size}, kDeepest) != link::BodyCheck::Verdict::Pass) return 0;
    const DecodedBody decoded = DecodeBody({data, size});
    if (decoded.Ok) CheckRendering(*decoded.Message);
    return 0;
}
