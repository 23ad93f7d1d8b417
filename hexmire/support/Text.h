#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// Texts are byte strings in ISO 8859-1: one byte, one character.
namespace hexmire {

/// Upper case after the ISO 8859-1 table, never the process's locale.
[[nodiscard]] char UpperCase(char character) noexcept;
[[nodiscard]] std::string UpperCase(std::string_view text);
/// Same text when both are upper-cased.
[[nodiscard]] bool EqualsIgnoringCase(std::string_view left, std::string_view right) noexcept;

/// Without the blanks at both ends.
[[nodiscard]] std::string_view TrimBlanks(std::string_view text) noexcept;

/// The text of a number as Conversion.h tells it.
[[nodiscard]] std::string NumberText(float value);
[[nodiscard]] std::string NumberText(double value);

/// A decimal text taken apart: [blanks] [sign] digits[separator digits] [e[sign]digits] [blanks],
/// the separator being that of the process's C locale.
struct DecimalText {
    bool Negative = false;
    std::string Digits;         ///< without leading zeros; "" is zero
    std::int64_t Exponent = 0;  ///< value = Digits x 10^Exponent
};

/// The decimal separator of the process's C locale.
[[nodiscard]] std::string DecimalSeparator();
/// Reads a whole text; fault 13 when it is not a decimal text.
[[nodiscard]] DecimalText ParseDecimalText(std::string_view text);
/// Nearest whole number, ties to even, exact for any number of digits; fault 6 beyond 64 bits.
[[nodiscard]] std::int64_t RoundToWhole(const DecimalText& number);
/// Nearest double; fault 6 beyond its range.
[[nodiscard]] double NearestDouble(const DecimalText& number);

/// Nearest whole number, ties to even; fault 6 for NaN, infinities and beyond 64 bits.
[[nodiscard]] std::int64_t RoundToWhole(double value);

/// The number literal that a text begins with: the longest leading [+-](digits[.[digits]] |
/// .digits)
/// [(e|E)[+-]digits] with "." always; 0 when there is none.
[[nodiscard]] double LeadingNumber(std::string_view text);

/// The number that a text's leading hexadecimal digits spell, no sign, no prefix, no blank; 0 when
/// there are none; fault 6 beyond 32 bits.
[[nodiscard]] std::uint32_t LeadingHexNumber(std::string_view text);

}  // namespace hexmire
