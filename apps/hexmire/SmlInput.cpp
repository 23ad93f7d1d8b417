#include "SmlInput.h"

#include <hexmire/hosting/Utf8.h>

#include "Failure.h"

#include <string>
#include <utility>

namespace hexmire::program {

namespace {

constexpr const char* kBlanks = " \t\r\n";

/// "S0F1", a line of its own, is put in front of an item, and what ends it behind, unless it stands
/// there.
ParsedSml ParseItem(const std::string& text) {
    const std::string message = "S0F1\r\n" + text;
    ParsedSml parsed = ParseSml(message);
    if (parsed.IsIncomplete) {
        const std::size_t end = message.find_last_not_of(kBlanks) + 1;
        ParsedSml ended = ParseSml(message.substr(0, end) + "\r\n.");
        if (ended.Message != nullptr) parsed = std::move(ended);
    }
    --parsed.Line;
    return parsed;
}

/// An argument that is no SML, but looks like the name of a file.
bool LooksLikePath(const Input& input) {
    const std::string& word = input.Text;
    if (input.Name != "<argument>" || word.find_first_of(" \t\n<:'\"") != std::string::npos)
        return false;
    const std::size_t dot = word.rfind('.');
    return word.find('/') != std::string::npos ||
           (dot != std::string::npos && dot + 1 < word.size());
}

}  // namespace

std::vector<ParsedSml> ParseInput(const Input& input, TextEncoding encoding, bool& isItem) {
    const std::string text = encoding == TextEncoding::Latin1 ? input.Text : Latin1Text(input);
    const std::size_t first = text.find_first_not_of(kBlanks);
    isItem = first != std::string::npos && text[first] == '<';
    std::vector<ParsedSml> messages;
    if (isItem) {
        messages.push_back(ParseItem(text));
    } else {
        messages = ParseSmlMessages(text);
    }
    if (messages.empty())
        throw UsageError(PlaceIn(input, 1, 1) + "expected a message, found the end of the text");
    const ParsedSml& last = messages.back();
    if (last.Error.empty()) return messages;
    if (LooksLikePath(input)) throw Failure("no such file: " + input.Text);
    throw UsageError(
        PlaceIn(input, static_cast<std::size_t>(last.Line), static_cast<std::size_t>(last.Column)) +
        Utf8FromLatin1(last.Error));
}

}  // namespace hexmire::program
