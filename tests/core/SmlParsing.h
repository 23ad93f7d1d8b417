#pragma once

#include <hexmire/sml.h>

#include "../fakes/Messages.h"
#include "../fakes/VariantText.h"
#include <gtest/gtest.h>

#include <string>
#include <string_view>

/// Short forms for tests that parse SML.
namespace hexmire::fakes {

/// Parses a text from a buffer of exactly its size, so that a checker sees every read behind it.
inline ParsedSml ParseExact(std::string_view text) {
    const std::vector<char> buffer(text.begin(), text.end());
    return ParseSml({buffer.data(), buffer.size()});
}

/// "line:column error", or "" when the text is good.
inline std::string SmlErrorOf(std::string_view text) {
    const ParsedSml parsed = ParseExact(text);
    EXPECT_EQ(parsed.Message == nullptr, !parsed.Error.empty());
    if (parsed.Error.empty()) return {};
    return std::to_string(parsed.Line) + ":" + std::to_string(parsed.Column) + " " + parsed.Error;
}

/// Kind and value of the item in "S1F1 <item>.", or the error.
inline std::string ShowSmlValue(const std::string& item) {
    const std::string text = "S1F1 " + item + ".";
    const ParsedSml parsed = ParseExact(text);
    return parsed.Message == nullptr ? SmlErrorOf(text) : Show(Body(parsed.Message)->Value());
}

/// The body bytes of "S1F1 <item>.", or the error.
inline std::string SmlHex(const std::string& item) {
    const std::string text = "S1F1 " + item + ".";
    const ParsedSml parsed = ParseExact(text);
    return parsed.Message == nullptr ? SmlErrorOf(text) : EncodedHex(parsed.Message);
}

/// The text of a message's body, when it is one text item that was rendered and parsed.
inline std::string TextThroughSml(std::string_view text) {
    const ParsedSml parsed = ParseExact(RenderSml(*MessageOf(FormatAscii, text), false));
    if (parsed.Message == nullptr) return "error: " + parsed.Error;
    return std::string(Body(parsed.Message)->Value().Text());
}

}  // namespace hexmire::fakes
