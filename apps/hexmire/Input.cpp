#include "Input.h"

#include <hexmire/hosting/Utf8.h>
#include <hexmire/support/HexBytes.h>

#include "FileReader.h"
#include "Utf8Character.h"

#include <cstdio>
#include <filesystem>

namespace hexmire::program {

namespace {

/// Where a text is being read.
struct Place {
    std::size_t Line = 1;
    std::size_t Column = 1;

    void Pass(char character) {
        ++Column;
        if (character == '\n') *this = {Line + 1, 1};
    }
};

bool IsFile(const std::string& name) {
    std::error_code error;
    return std::filesystem::exists(name, error) && !std::filesystem::is_directory(name, error);
}

std::string Found(char character) {
    const auto code = static_cast<unsigned char>(character);
    if (code >= 0x20 && code < 0x7F) return std::string("\"") + character + '"';
    char text[16] = "";
    std::snprintf(text, sizeof text, "byte 0x%02X", code);
    return text;
}

bool IsHexPrefix(const std::string& text, std::size_t offset) {
    return offset + 1 < text.size() && text[offset] == '0' &&
           (text[offset + 1] == 'x' || text[offset + 1] == 'X');
}

}  // namespace

Input ReadInput(const std::vector<std::string>& words) {
    if (words.empty() || (words.size() == 1 && words.front() == "-"))
        return {.Name = "<stdin>", .Text = FileReader().ReadAll()};
    if (words.size() == 1 && IsFile(words.front()))
        return {.Name = words.front(), .Text = FileReader(words.front(), words.front()).ReadAll()};
    Input input{.Name = "<argument>", .Text = words.front()};
    for (std::size_t i = 1; i < words.size(); ++i)
        input.Text += ' ' + words[i];
    return input;
}

std::string PlaceIn(const Input& input, std::size_t line, std::size_t column) {
    return input.Name + ':' + std::to_string(line) + ':' + std::to_string(column) + ": ";
}

std::vector<std::uint8_t> ReadHex(const Input& input) {
    constexpr std::string_view kPassedOver = " \t\r\n\v\f:-,";
    const std::string& text = input.Text;
    std::vector<std::uint8_t> bytes;
    bytes.reserve(text.size() / 2);
    Place place;
    const auto digit = [&](std::size_t offset, const char* expected) {
        const int value = offset < text.size() ? HexDigitValue(text[offset]) : -1;
        if (value >= 0) return static_cast<unsigned>(value);
        const bool isEnd = offset >= text.size();
        const bool isLineEnd = !isEnd && (text[offset] == '\n' || text[offset] == '\r');
        throw UsageError(PlaceIn(input, place.Line, place.Column) + "expected " + expected +
                         ", found " +
                         (isEnd       ? "the end of the text"
                          : isLineEnd ? "the end of the line"
                                      : Found(text[offset])));
    };
    for (std::size_t offset = 0; offset < text.size();) {
        if (kPassedOver.find(text[offset]) != std::string_view::npos) {
            place.Pass(text[offset++]);
            continue;
        }
        if (IsHexPrefix(text, offset)) {
            offset += 2;
            place.Column += 2;
        }
        const unsigned high = digit(offset++, "a hexadecimal digit");
        ++place.Column;
        const unsigned low = digit(offset++, "the second digit of a byte");
        ++place.Column;
        bytes.push_back(static_cast<std::uint8_t>(high << 4U | low));
    }
    return bytes;
}

std::string Latin1Text(std::string_view utf8) {
    std::string latin1;
    latin1.reserve(utf8.size());
    Place place;
    for (std::size_t offset = 0; offset < utf8.size();) {
        const Utf8Character character = FirstCharacter(utf8.substr(offset));
        if (character.Size == 0)
            throw BadText(
                "expected UTF-8, found " + Found(utf8[offset]), place.Line, place.Column, false);
        if (character.Code > 0xFF)
            throw BadText("expected a character of ISO 8859-1, found \"" +
                              std::string(utf8.substr(offset, character.Size)) + '"',
                          place.Line,
                          place.Column,
                          true);
        latin1.push_back(static_cast<char>(character.Code));
        place.Pass(latin1.back());
        offset += character.Size;
    }
    return latin1;
}

std::string Latin1Text(const Input& input) {
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    std::string_view text = input.Text;
    if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
    try {
        return Latin1Text(text);
    } catch (const BadText& bad) {
        throw UsageError(PlaceIn(input, bad.Line, bad.Column) + bad.what() +
                         (bad.IsUtf8 ? "" : " (--latin1 reads ISO 8859-1)"));
    }
}

}  // namespace hexmire::program
