#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace hexmire {

/// The driver's hex text: every byte as two upper-case digits and one blank, three characters a
/// byte, the last one included.
[[nodiscard]] std::string HexText(std::span<const std::uint8_t> bytes);
/// Appends the same to a text.
void AppendHexText(std::string& text, std::span<const std::uint8_t> bytes);

/// Reads `count` bytes of three characters each from the start of a hex text: two digits of either
/// case and any one separator, which may be missing behind the last byte. False when the text is
/// too short or holds anything else; `out` then holds the bytes read so far in front.
[[nodiscard]] bool ReadHexText(std::string_view text,
                               std::size_t count,
                               std::uint8_t* out) noexcept;

/// Upper-case digit of a value 0..15.
[[nodiscard]] constexpr char HexDigit(unsigned value) noexcept {
    return "0123456789ABCDEF"[value & 0x0FU];
}

/// Value of a hexadecimal digit of either case; -1 for any other character.
[[nodiscard]] constexpr int HexDigitValue(char digit) noexcept {
    if (digit >= '0' && digit <= '9') return digit - '0';
    if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
    if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
    return -1;
}

}  // namespace hexmire
