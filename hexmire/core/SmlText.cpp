#include <hexmire/core/detail/SmlNumbers.h>
#include <hexmire/core/detail/SmlValues.h>
#include <hexmire/support/HexBytes.h>

#include <algorithm>
#include <optional>
#include <string_view>

namespace hexmire::detail {

namespace {

bool IsQuote(char character) noexcept { return character == '\'' || character == '"'; }

/// "0x" and a digit at an offset.
bool IsHexByte(std::string_view text, std::size_t offset) noexcept {
    const std::string_view rest = text.substr(offset);
    return rest.size() > 2 && (rest.starts_with("0x") || rest.starts_with("0X")) &&
           HexDigitValue(rest[2]) >= 0;
}

/// A single quote right before `offset` ends its piece: the line, the item or the text ends there,
/// or, behind a blank, another piece or byte begins.
bool EndsPiece(const SmlScanner& scanner, std::size_t offset) noexcept {
    const std::string_view text = scanner.Text();
    const std::size_t next = scanner.AfterBlanks(offset);
    if (next == text.size() || scanner.IsLineEnd(next) || scanner.IsComment(next)) return true;
    if (text[next] == '>') return CanFollowSmlItem(scanner, next + 1);
    return next > offset && (IsQuote(text[next]) || IsHexByte(text, next));
}

/// "<" at an offset begins what looks like a text item with a value.
bool BeginsTextItem(const SmlScanner& scanner, std::size_t offset) noexcept {
    const std::string_view text = scanner.Text();
    const std::size_t name = scanner.AfterBlanks(offset + 1);
    if (name + 1 >= text.size() || (text[name] != 'A' && text[name] != 'a')) return false;
    const char next = text[name + 1];
    return next == ' ' || next == '[' || IsQuote(next);
}

/// Takes a quoted piece with its quotes; it lies in one line. A quote that is no end behind the
/// beginning of another text item means that the closing quote was forgotten.
std::string_view TakePiece(SmlScanner& scanner) {
    const std::string_view text = scanner.Text();
    const std::size_t start = scanner.Position() + 1;
    const char quote = text[start - 1];
    const char* const expected = quote == '"' ? "a closing '\"'" : "a closing \"'\"";
    std::size_t end = start;
    std::size_t item = std::string_view::npos;
    for (; end < text.size() && !scanner.IsLineEnd(end); ++end) {
        if (text[end] == '<' && BeginsTextItem(scanner, end)) item = std::min(item, end);
        if (text[end] != quote) continue;
        if (quote == '\'' && !EndsPiece(scanner, end + 1)) {
            if (item < end) scanner.FailAt(item, expected);
            continue;
        }
        if (!scanner.IsBoundary(end + 1)) scanner.FailAt(end + 1, "a blank or \">\"");
        scanner.MoveTo(end + 1);
        return text.substr(start, end - start);
    }
    scanner.FailAt(end, expected);
}

char TakeByte(SmlScanner& scanner) {
    const std::size_t start = scanner.Position();
    const std::string_view word = scanner.Word();
    if (word.empty()) scanner.FailAt(start, "a quoted text, a byte such as 0x0D or \">\"");
    const std::optional<std::uint8_t> byte =
        IsHexByte(word, 0) ? ReadSmlByte(word) : std::optional<std::uint8_t>();
    if (!byte) scanner.FailAt(start, "a quoted text or a byte from 0x00 to 0xFF");
    if (!scanner.IsBoundary(scanner.Position())) scanner.Fail("a blank or \">\"");
    return static_cast<char>(*byte);
}

}  // namespace

SmlParts ReadSmlParts(SmlScanner& scanner) {
    SmlParts parts;
    for (scanner.SkipBlanks(); !scanner.IsAt('>'); scanner.SkipBlanks()) {
        if (scanner.IsAtQuote()) {
            parts.Text += TakePiece(scanner);
        } else {
            parts.Text += TakeByte(scanner);
        }
        ++parts.Count;
    }
    return parts;
}

bool CanFollowSmlItem(const SmlScanner& scanner, std::size_t offset) noexcept {
    const std::string_view text = scanner.Text();
    const std::size_t next = scanner.AfterBlanks(offset);
    if (next == text.size() || scanner.IsLineEnd(next) || scanner.IsComment(next)) return true;
    if (text[next] == '.') return scanner.IsBoundary(next + 1);
    return text[next] == '<' || text[next] == '>';
}

}  // namespace hexmire::detail
