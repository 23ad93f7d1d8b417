#include <hexmire/core/detail/SmlHeader.h>
#include <hexmire/support/Text.h>

#include <charconv>
#include <optional>
#include <string_view>
#include <system_error>

namespace hexmire::detail {

namespace {

constexpr std::int32_t kLargestStream = 127;
constexpr std::int32_t kLargestFunction = 255;

/// A word, or a text between quotes, and where it begins.
struct Title {
    std::string_view Text;
    std::size_t Offset = 0;
};

Title TakeTitle(SmlScanner& scanner) {
    if (!scanner.IsAtQuote()) {
        const std::size_t start = scanner.Position();
        return {scanner.Word(".:"), start};
    }
    const std::string_view text = scanner.Text();
    const std::size_t start = scanner.Position() + 1;
    const char quote = text[start - 1];
    std::size_t end = start;
    while (end < text.size() && text[end] != quote && !scanner.IsLineEnd(end))
        ++end;
    scanner.MoveTo(end);
    scanner.Take(quote);
    return {text.substr(start, end - start), start};
}

/// The digits at the front of a text; none when there are none or too many.
std::optional<std::size_t> TakeNumber(std::string_view& text) {
    std::size_t value = 0;
    const auto [next, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc()) return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(next - text.data()));
    return value;
}

bool TakeLetter(std::string_view& text, char letter) {
    if (text.empty() || UpperCase(text.front()) != letter) return false;
    text.remove_prefix(1);
    return true;
}

/// Reads "S6F11".
void ReadStreamAndFunction(const SmlScanner& scanner, const Title& title, SmlHeader& header) {
    std::string_view rest = title.Text;
    const auto offset = [&] { return title.Offset + title.Text.size() - rest.size(); };
    const auto take = [&](char letter, std::size_t largest, const char* range) {
        if (!TakeLetter(rest, letter)) {
            scanner.FailAt(title.Offset, "a stream and function such as S1F1");
        }
        const std::size_t start = offset();
        const auto value = TakeNumber(rest);
        if (!value || *value > largest) scanner.FailAt(start, range);
        return static_cast<std::int32_t>(*value);
    };
    header.Stream = take('S', kLargestStream, "a stream from 0 to 127");
    header.Function = take('F', kLargestFunction, "a function from 0 to 255");
    if (!rest.empty()) scanner.FailAt(title.Offset, "a stream and function such as S1F1");
}

bool TakeReplyBit(SmlScanner& scanner) {
    scanner.SkipBlanks();
    const std::size_t start = scanner.Position();
    if (EqualsIgnoringCase(scanner.Word(".:"), "W")) return true;
    scanner.MoveTo(start);
    return false;
}

}  // namespace

std::string SmlHeader::Text() const {
    std::string text = "S" + std::to_string(Stream) + "F" + std::to_string(Function);
    return ReplyExpected ? text + " W" : text;
}

SmlHeader ReadSmlHeader(SmlScanner& scanner) {
    SmlHeader header;
    Title title = TakeTitle(scanner);
    const std::size_t behind = scanner.Position();
    scanner.SkipBlanks();
    if (scanner.IsAt(':')) {
        if (title.Text.empty()) scanner.Fail("a name");
        header.Name = title.Text;
        scanner.Take(':');
        scanner.SkipBlanks();
        title = TakeTitle(scanner);
    } else {
        scanner.MoveTo(behind);
    }
    ReadStreamAndFunction(scanner, title, header);
    header.ReplyExpected = TakeReplyBit(scanner);
    return header;
}

SmlCount ReadSmlCount(SmlScanner& scanner) {
    scanner.SkipBlanks();
    const bool isBracketed = scanner.IsAt('[');
    if (!isBracketed && !scanner.IsAt(',')) return {};
    constexpr const char* kExpected = "a count such as 2 or 1..3";
    SmlCount count{scanner.Position(), 0, 0, true};
    scanner.Take(isBracketed ? '[' : ',');
    const auto takeNumber = [&scanner](std::string_view& word, std::size_t start) {
        const auto number = TakeNumber(word);
        if (!number) scanner.FailAt(start, kExpected);
        return *number;
    };
    scanner.SkipBlanks();
    const std::size_t start = scanner.Position();
    std::string_view word = scanner.Word();
    count.Least = count.Most = takeNumber(word, start);
    if (word.starts_with("..")) {
        word.remove_prefix(2);
        count.Most = takeNumber(word, start);
    }
    if (!word.empty() || count.Most < count.Least) scanner.FailAt(start, kExpected);
    if (!isBracketed) return count;
    scanner.SkipBlanks();
    scanner.Take(']');
    return count;
}

void CheckSmlCount(const SmlCount& count, std::size_t found, const char* what) {
    if (!count.IsStated || (found >= count.Least && found <= count.Most)) return;
    std::string expected = std::to_string(count.Least);
    if (count.Most != count.Least) expected += " to " + std::to_string(count.Most);
    throw SmlError{count.Offset, expected + " " + what, std::to_string(found)};
}

}  // namespace hexmire::detail
