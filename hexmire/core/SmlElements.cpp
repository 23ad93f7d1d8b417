#include <hexmire/core/ItemFormat.h>
#include <hexmire/core/detail/SmlNumbers.h>
#include <hexmire/core/detail/SmlValues.h>
#include <hexmire/support/Text.h>

#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace hexmire::detail {

namespace {

std::optional<bool> ReadBoolean(std::string_view word) {
    if (EqualsIgnoringCase(word, "T") || EqualsIgnoringCase(word, "TRUE")) return true;
    if (EqualsIgnoringCase(word, "F") || EqualsIgnoringCase(word, "FALSE")) return false;
    return std::nullopt;
}

/// `read` makes an element of a word; `expected` says what the format takes.
template <class T, class Read>
SmlValue ReadElements(SmlScanner& scanner, const char* expected, Read read) {
    std::vector<T> elements;
    for (scanner.SkipBlanks(); !scanner.IsAt('>'); scanner.SkipBlanks()) {
        const std::size_t start = scanner.Position();
        const std::string_view word = scanner.Word();
        if (word.empty()) scanner.FailAt(start, std::string(expected) + " or \">\"");
        const std::optional<T> element = read(word);
        if (!element) scanner.FailAt(start, expected);
        if (!scanner.IsBoundary(scanner.Position())) scanner.Fail("a blank or \">\"");
        elements.push_back(*element);
    }
    const std::size_t count = elements.size();
    if (count == 0) return {};
    if (count == 1) return {T{elements.front()}, count};
    return {std::move(elements), count};
}

SmlValue ReadLongs(SmlScanner& scanner, unsigned width, bool isSigned, const char* range) {
    return ReadElements<std::int32_t>(
        scanner, range, [=](std::string_view word) { return ReadSmlLong(word, width, isSigned); });
}

SmlValue ReadDecimals(SmlScanner& scanner, unsigned width, bool isSigned, const char* range) {
    return ReadElements<Decimal>(scanner, range, [=](std::string_view word) {
        return ReadSmlDecimal(word, width, isSigned);
    });
}

}  // namespace

SmlValue ReadSmlElements(SmlScanner& scanner, std::int32_t format) {
    switch (format) {
        case FormatBoolean:
            return ReadElements<bool>(scanner, "TRUE or FALSE", ReadBoolean);
        case FormatI1:
            return ReadLongs(scanner, 1, true, "a whole number from -128 to 127");
        case FormatI2:
            return ReadLongs(scanner, 2, true, "a whole number from -32768 to 32767");
        case FormatI4:
            return ReadLongs(scanner, 4, true, "a whole number from -2147483648 to 2147483647");
        case FormatI8:
            return ReadDecimals(scanner,
                                8,
                                true,
                                "a whole number from -9223372036854775808 to 9223372036854775807");
        case FormatU1:
            return ReadLongs(scanner, 1, false, "a whole number from 0 to 255");
        case FormatU2:
            return ReadLongs(scanner, 2, false, "a whole number from 0 to 65535");
        case FormatU4:
            return ReadDecimals(scanner, 4, false, "a whole number from 0 to 4294967295");
        case FormatU8:
            return ReadDecimals(scanner, 8, false, "a whole number from 0 to 18446744073709551615");
        case FormatF4:
            return ReadElements<float>(scanner, "a number within the range of F4", ReadSmlSingle);
        case FormatF8:
            return ReadElements<double>(scanner, "a number within the range of F8", ReadSmlDouble);
        default:
            return ReadElements<std::uint8_t>(scanner, "a byte from 0x00 to 0xFF", ReadSmlByte);
    }
}

}  // namespace hexmire::detail
