#include "Input.h"

#include <hexmire/hosting/Utf8.h>
#include <hexmire/support/HexBytes.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

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

std::string Contents(std::istream& stream, const std::string& name) {
    std::string text{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    if (stream.bad()) throw Failure("cannot read " + name);
    return text;
}

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

/// Number of bytes of the UTF-8 character at an offset and its code; no bytes for what is none.
struct Character {
    std::size_t Size = 0;
    std::uint32_t Code = 0;
};

Character CharacterAt(std::string_view text, std::size_t offset) {
    const auto lead = static_cast<unsigned char>(text[offset]);
    if (lead < 0x80) return {1, lead};
    const std::size_t size = lead >= 0xF0 ? 4U : lead >= 0xE0 ? 3U : 2U;
    if (lead < 0xC2 || lead > 0xF4 || size > text.size() - offset) return {};
    std::uint32_t code = lead & (0x7FU >> size);
    for (std::size_t i = 1; i < size; ++i) {
        const auto next = static_cast<unsigned char>(text[offset + i]);
        if ((next & 0xC0U) != 0x80U) return {};
        code = code << 6U | (next & 0x3FU);
    }
    constexpr std::uint32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    return code < kLeast[size] ? Character{} : Character{size, code};
}

}  // namespace

Input ReadInput(const std::vector<std::string>& words) {
    if (words.empty() || (words.size() == 1 && words.front() == "-"))
        return {.Name = "<stdin>", .Text = Contents(std::cin, "the standard input")};
    if (words.size() == 1 && IsFile(words.front())) {
        std::ifstream file(words.front(), std::ios::binary);
        if (!file) throw Failure("cannot read " + words.front());
        return {.Name = words.front(), .Text = Contents(file, words.front())};
    }
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
        const Character character = CharacterAt(utf8, offset);
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
