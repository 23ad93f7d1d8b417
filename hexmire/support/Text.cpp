#include <hexmire/support/Fault.h>
#include <hexmire/support/HexBytes.h>
#include <hexmire/support/Text.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <clocale>
#include <cmath>
#include <limits>

namespace hexmire {

namespace {

constexpr bool IsDigit(char character) { return character >= '0' && character <= '9'; }

std::size_t SkipDigits(std::string_view text, std::size_t at) {
    while (at < text.size() && IsDigit(text[at]))
        ++at;
    return at;
}

/// Where an exponent part that begins at `at` ends; `at` itself when there is none.
std::size_t SkipExponent(std::string_view text, std::size_t at) {
    std::size_t next = at;
    if (next >= text.size() || (text[next] != 'e' && text[next] != 'E')) return at;
    ++next;
    if (next < text.size() && (text[next] == '+' || text[next] == '-')) ++next;
    const std::size_t end = SkipDigits(text, next);
    return end == next ? at : end;
}

/// An exponent's value, held within what any number here can use.
std::int64_t ExponentValue(std::string_view text) {
    constexpr std::int64_t kLargest = 1'000'000'000;
    bool negative = false;
    std::int64_t value = 0;
    for (const char character : text) {
        if (character == '-') negative = true;
        if (IsDigit(character)) value = std::min(kLargest, value * 10 + (character - '0'));
    }
    return negative ? -value : value;
}

/// [-]d[.ddd]E+-dd or fixed notation of shortest scientific digits "d[.ddd]e+-dd".
std::string ArrangeDigits(std::string_view scientific) {
    const bool negative = scientific.front() == '-';
    if (negative) scientific.remove_prefix(1);
    const std::size_t mark = scientific.find('e');
    std::string digits(scientific.substr(0, mark));
    digits.erase(std::remove(digits.begin(), digits.end(), '.'), digits.end());
    const auto exponent = static_cast<int>(ExponentValue(scientific.substr(mark + 1)));
    const auto count = static_cast<int>(digits.size());
    constexpr int kSmallestFixed = -5;
    constexpr int kLargestFixed = 14;
    std::string text;
    if (exponent < kSmallestFixed || exponent > kLargestFixed) {
        text = digits.substr(0, 1);
        if (count > 1) text += "." + digits.substr(1);
        const std::string power = std::to_string(std::abs(exponent));
        text += exponent < 0 ? "E-" : "E+";
        text += power.size() < 2 ? "0" + power : power;
    } else if (exponent < 0) {
        text = "0." + std::string(static_cast<std::size_t>(-exponent) - 1, '0') + digits;
    } else if (count <= exponent + 1) {
        text = digits;
        text.resize(static_cast<std::size_t>(exponent) + 1, '0');
    } else {
        text = digits.insert(static_cast<std::size_t>(exponent) + 1, ".");
    }
    return negative ? "-" + text : text;
}

template <class T>
std::string FloatText(T value) {
    if (std::isnan(value)) return "NaN";
    if (std::isinf(value)) return value < 0 ? "-INF" : "INF";
    if (value == 0) return "0";
    std::array<char, 64> text{};
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::scientific)
            .ptr;
    return ArrangeDigits({text.data(), static_cast<std::size_t>(end - text.data())});
}

}  // namespace

char UpperCase(char character) noexcept {
    const auto code = static_cast<std::uint8_t>(character);
    const bool isLower =
        (code >= 'a' && code <= 'z') || (code >= 0xE0 && code <= 0xFE && code != 0xF7);
    return static_cast<char>(isLower ? code - 0x20 : code);
}

std::string UpperCase(std::string_view text) {
    std::string upper(text);
    std::transform(upper.begin(), upper.end(), upper.begin(), [](char character) {
        return UpperCase(character);
    });
    return upper;
}

bool EqualsIgnoringCase(std::string_view left, std::string_view right) noexcept {
    if (left == right) return true;  // Most names are given as they are spelt.
    return std::equal(left.begin(), left.end(), right.begin(), right.end(), [](char a, char b) {
        return UpperCase(a) == UpperCase(b);
    });
}

std::string_view TrimBlanks(std::string_view text) noexcept {
    const std::size_t first = text.find_first_not_of(' ');
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::string NumberText(float value) { return FloatText(value); }

std::string NumberText(double value) { return FloatText(value); }

std::string DecimalSeparator() { return std::localeconv()->decimal_point; }

DecimalText ParseDecimalText(std::string_view text) {
    const std::string separator = DecimalSeparator();
    std::string_view rest = TrimBlanks(text);
    DecimalText number;
    if (!rest.empty() && (rest.front() == '+' || rest.front() == '-')) {
        number.Negative = rest.front() == '-';
        rest.remove_prefix(1);
    }
    const std::size_t wholeEnd = SkipDigits(rest, 0);
    number.Digits = rest.substr(0, wholeEnd);
    rest.remove_prefix(wholeEnd);
    if (rest.starts_with(separator)) {
        rest.remove_prefix(separator.size());
        const std::size_t fractionEnd = SkipDigits(rest, 0);
        number.Digits += rest.substr(0, fractionEnd);
        number.Exponent = -static_cast<std::int64_t>(fractionEnd);
        rest.remove_prefix(fractionEnd);
    }
    const std::size_t exponentEnd = SkipExponent(rest, 0);
    if (number.Digits.empty() || exponentEnd != rest.size()) {
        throw Fault(FaultNumber::TypeMismatch);
    }
    number.Exponent += ExponentValue(rest);
    number.Digits.erase(0, std::min(number.Digits.find_first_not_of('0'), number.Digits.size()));
    return number;
}

std::int64_t RoundToWhole(const DecimalText& number) {
    const auto size = static_cast<std::int64_t>(number.Digits.size());
    const std::int64_t wholeDigits = size + number.Exponent;
    if (size == 0 || wholeDigits < 0) return 0;
    constexpr std::int64_t kMostDigits = 19;
    if (wholeDigits > kMostDigits) throw Fault(FaultNumber::Overflow);
    std::uint64_t whole = 0;
    for (std::int64_t index = 0; index < wholeDigits; ++index) {
        const char digit = index < size ? number.Digits[static_cast<std::size_t>(index)] : '0';
        whole = whole * 10 + static_cast<std::uint64_t>(digit - '0');
    }
    if (wholeDigits < size) {
        const std::string_view rest =
            std::string_view(number.Digits).substr(static_cast<std::size_t>(wholeDigits));
        const bool isTie =
            rest.front() == '5' && rest.find_first_not_of('0', 1) == std::string_view::npos;
        if (isTie ? (whole & 1U) != 0 : rest.front() >= '5') ++whole;
    }
    constexpr auto kLargest = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    if (whole > kLargest + (number.Negative ? 1 : 0)) throw Fault(FaultNumber::Overflow);
    return static_cast<std::int64_t>(number.Negative ? 0 - whole : whole);
}

double NearestDouble(const DecimalText& number) {
    if (number.Digits.empty()) return 0;
    const std::string text = number.Digits + "e" + std::to_string(number.Exponent);
    double value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec == std::errc::result_out_of_range) {
        const auto size = static_cast<std::int64_t>(number.Digits.size());
        if (size + number.Exponent > 0) throw Fault(FaultNumber::Overflow);
        value = 0;
    }
    return number.Negative ? -value : value;
}

std::int64_t RoundToWhole(double value) {
    const double whole = std::nearbyint(value);
    if (!(whole >= -0x1p63 && whole < 0x1p63)) throw Fault(FaultNumber::Overflow);
    return static_cast<std::int64_t>(whole);
}

double LeadingNumber(std::string_view text) {
    DecimalText number;
    std::size_t at = 0;
    if (at < text.size() && (text[at] == '+' || text[at] == '-')) {
        number.Negative = text[at] == '-';
        ++at;
    }
    const std::size_t wholeEnd = SkipDigits(text, at);
    number.Digits = text.substr(at, wholeEnd - at);
    std::size_t end = wholeEnd;
    if (end < text.size() && text[end] == '.') {
        end = SkipDigits(text, end + 1);
        const std::string_view fraction = text.substr(wholeEnd + 1, end - wholeEnd - 1);
        number.Digits += fraction;
        number.Exponent = -static_cast<std::int64_t>(fraction.size());
    }
    if (number.Digits.empty()) return 0;
    number.Exponent += ExponentValue(text.substr(end, SkipExponent(text, end) - end));
    number.Digits.erase(0, std::min(number.Digits.find_first_not_of('0'), number.Digits.size()));
    return NearestDouble(number);
}

std::uint32_t LeadingHexNumber(std::string_view text) {
    std::uint64_t value = 0;
    for (const char digit : text) {
        const int step = HexDigitValue(digit);
        if (step < 0) break;
        value = value * 16 + static_cast<std::uint64_t>(step);
        if (value > std::numeric_limits<std::uint32_t>::max()) throw Fault(FaultNumber::Overflow);
    }
    return static_cast<std::uint32_t>(value);
}

}  // namespace hexmire
