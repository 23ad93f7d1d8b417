#include "DictionaryValue.h"

#include <hexmire/core/ItemFormat.h>
#include <hexmire/core/ModGeneral.h>
#include <hexmire/support/HexBytes.h>
#include <hexmire/support/Text.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>

namespace hexmire::program {

namespace {

std::string Quoted(std::string_view text) { return '"' + std::string(text) + '"'; }

/// The whole text as a number; from_chars knows no "+".
template <class T>
std::optional<T> Number(std::string_view text) {
    if (text.starts_with('+')) text.remove_prefix(1);
    T value{};
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || stop != end) return std::nullopt;
    return value;
}

std::optional<double> Decimal(std::string_view text) {
    const bool isNumber = text.find_first_not_of("0123456789.+-eE") == std::string_view::npos;
    return isNumber ? Number<double>(text) : std::nullopt;
}

struct Range {
    double Least = 0;
    double Most = 0;
};

Range RangeOf(std::int32_t format) {
    switch (format) {
        case FormatI1:
            return {-0x1p7, 0x1p7 - 1};
        case FormatI2:
            return {-0x1p15, 0x1p15 - 1};
        case FormatI4:
            return {-0x1p31, 0x1p31 - 1};
        case FormatI8:
            return {-0x1p63, 0x1p63 - 1024};
        case FormatU1:
            return {0, 0x1p8 - 1};
        case FormatU2:
            return {0, 0x1p16 - 1};
        case FormatU4:
            return {0, 0x1p32 - 1};
        case FormatU8:
            return {0, 0x1p64 - 2048};
        case FormatF4:
            return {-std::numeric_limits<float>::max(), std::numeric_limits<float>::max()};
        default:
            return {-std::numeric_limits<double>::max(), std::numeric_limits<double>::max()};
    }
}

/// Numbers of eight bytes are read as floating ones, which hold 53 bits.
bool LosesDigits(std::string_view text, double value) {
    if (text.starts_with('-')) {
        const auto whole = Number<std::int64_t>(text);
        return whole && value >= -0x1p63 && static_cast<std::int64_t>(value) != *whole;
    }
    const auto whole = Number<std::uint64_t>(text);
    return whole && value < 0x1p64 && static_cast<std::uint64_t>(value) != *whole;
}

std::string NumberProblem(std::int32_t format, std::string_view text) {
    const std::string name = ModGeneral::ItemFormatToText(format);
    const auto value = Decimal(text);
    if (!value) return Quoted(text) + " is no number";
    const Range range = RangeOf(format);
    const bool isFloat = format == FormatF4 || format == FormatF8;
    if (!isFloat && std::trunc(*value) != *value) return Quoted(text) + " is no whole number";
    if (*value < range.Least || *value > range.Most)
        return Quoted(text) + " is beyond the range of " + name;
    if ((format == FormatI8 || format == FormatU8) && LosesDigits(text, *value))
        return Quoted(text) + " has more digits than the loader keeps (53 bits)";
    return {};
}

std::string ByteProblem(std::string_view text) {
    const bool isByte =
        !text.empty() && text.size() <= 2 &&
        std::all_of(text.begin(), text.end(), [](char c) { return HexDigitValue(c) >= 0; });
    return isByte ? "" : Quoted(text) + " is no byte of two hexadecimal digits";
}

std::string BooleanProblem(std::string_view text) {
    for (const char* word : {"T", "F", "TRUE", "FALSE"}) {
        if (EqualsIgnoringCase(text, word)) return {};
    }
    return Decimal(text) ? "" : Quoted(text) + " is none of T, F, True, False and no number";
}

std::string ElementProblem(std::int32_t format, std::string_view text) {
    if (format == FormatBinary) return ByteProblem(text);
    if (format == FormatBoolean) return BooleanProblem(text);
    return NumberProblem(format, text);
}

std::string ArrayProblem(std::int32_t format, std::string_view text) {
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(' '), text.size());
        if (end == 0) return "a blank where an element should begin ends the array";
        if (std::string problem = ElementProblem(format, text.substr(0, end)); !problem.empty())
            return problem;
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return {};
}

bool HasOtherCharacters(std::string_view utf8) {
    return std::any_of(utf8.begin(), utf8.end(), [](char character) {
        return static_cast<unsigned char>(character) > 0xC3;  // Leads a character above U+00FF.
    });
}

}  // namespace

std::string ValueProblem(std::int32_t format, bool isArray, const std::string& value) {
    if (value.empty()) return {};
    if (format == FormatList) return "a list has no value; " + Quoted(value) + " is not read";
    if (format == FormatAscii || format == FormatVar) {
        if (format == FormatVar && isArray)
            return "an array of any format has no value; " + Quoted(value) + " is not read";
        if (HasOtherCharacters(value))
            return Quoted(value) + " has characters that become \"?\" (above U+00FF)";
        if (TrimBlanks(value).size() != value.size())
            return "the blanks around " + Quoted(value) + " are dropped";
        return {};
    }
    if (isArray) return ArrayProblem(format, value);
    const bool isNumber = format != FormatBinary && format != FormatBoolean;
    return ElementProblem(format, isNumber ? TrimBlanks(value) : std::string_view(value));
}

}  // namespace hexmire::program
