#pragma once

#include <hexmire/support/Decimal.h>

#include <cstdint>
#include <optional>
#include <string_view>

/// Numbers of SML texts, whatever the process's locale. Each reads a whole word and gives none for
/// a word that is no number or that its type cannot hold: no number is cut or wrapped.
///
/// Whole numbers are decimal, hexadecimal behind "0x" or binary behind "0b"; a point or an exponent
/// is accepted as long as the value is whole, for that is how large ones may be written.
namespace hexmire::detail {

[[nodiscard]] std::optional<std::uint8_t> ReadSmlByte(std::string_view word);

/// A whole number of `width` bytes, 1, 2 or 4.
[[nodiscard]] std::optional<std::int32_t> ReadSmlLong(std::string_view word,
                                                      unsigned width,
                                                      bool isSigned);
/// A whole number of `width` bytes, 4 or 8.
[[nodiscard]] std::optional<Decimal> ReadSmlDecimal(std::string_view word,
                                                    unsigned width,
                                                    bool isSigned);

/// Nearest float; also NaN, NaN(0x7FC00001) for the NaN of these bits, INF and -INF, in any letter
/// case. None for a number that would become
/// infinite, and for one other than zero that would become zero.
[[nodiscard]] std::optional<float> ReadSmlSingle(std::string_view word);
[[nodiscard]] std::optional<double> ReadSmlDouble(std::string_view word);

}  // namespace hexmire::detail
