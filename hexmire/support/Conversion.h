#pragma once

#include <hexmire/support/Variant.h>

#include <cstdint>
#include <string>

/// Conversions of the variant type. Each throws Fault: 6 beyond the target's range (NaN and
/// infinities included), 13 for a text or kind that does not convert, 94 for Null, 438 for an
/// object, 91 for an object reference that refers to nothing. Empty reads as 0, False or "".
///
/// Fractions go to the nearest whole number, ties to even, before the range is checked. True is -1
/// as a number, any number but zero is True.
namespace hexmire {

[[nodiscard]] std::uint8_t ToByte(const Variant& value);
[[nodiscard]] std::int16_t ToInteger(const Variant& value);
[[nodiscard]] std::int32_t ToLong(const Variant& value);
[[nodiscard]] float ToSingle(const Variant& value);
[[nodiscard]] double ToDouble(const Variant& value);
[[nodiscard]] bool ToBoolean(const Variant& value);
[[nodiscard]] Decimal ToDecimal(const Variant& value);
/// Whole numbers in plain decimal; Single and Double the shortest digits that read back, fixed for
/// decimal exponents -5..14, else d.dddE+dd; "True"/"False"; "." always.
[[nodiscard]] std::string ToText(const Variant& value);

/// A narrowing conversion of the settings: fault 6 beyond 16 bits.
[[nodiscard]] std::int16_t NarrowToInteger(std::int64_t value);

}  // namespace hexmire
