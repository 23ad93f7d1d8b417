#include "equipment/ConstantValue.h"

#include <hexmire/support/Conversion.h>
#include <hexmire/support/Decimal.h>

#include <cmath>
#include <cstdint>
#include <limits>

namespace hexmire::program {

namespace {

/// Of an integer format.
struct Range {
    Decimal Least;
    Decimal Largest;
};

template <class T>
Range RangeOfType() {
    using Limits = std::numeric_limits<T>;
    return {Decimal::FromInt64(static_cast<std::int64_t>(Limits::min())),
            Decimal::FromUInt64(static_cast<std::uint64_t>(Limits::max()))};
}

Range RangeOf(std::int32_t format) {
    switch (format) {
        case FormatI1:
            return RangeOfType<std::int8_t>();
        case FormatI2:
            return RangeOfType<std::int16_t>();
        case FormatI4:
            return RangeOfType<std::int32_t>();
        case FormatI8:
            return RangeOfType<std::int64_t>();
        case FormatU1:
            return RangeOfType<std::uint8_t>();
        case FormatU2:
            return RangeOfType<std::uint16_t>();
        case FormatU4:
            return RangeOfType<std::uint32_t>();
        default:
            return RangeOfType<std::uint64_t>();
    }
}

/// A single number without fraction, up to 2^64 - 1 on either side of 0. Numbers of 8 bytes are
/// compared as such: a double holds 53 of their bits.
std::optional<Decimal> WholeNumberOf(const Datum& datum) {
    constexpr double kTwoTo64 = 18446744073709551616.0;
    const auto number = NumberOf(datum);
    if (!number || !(std::abs(*number) <= kTwoTo64) || std::trunc(*number) != *number)
        return std::nullopt;
    const Decimal whole = ToDecimal(datum.Value);
    if (whole.MantissaHigh() != 0) return std::nullopt;
    return whole;
}

/// Of whole numbers.
bool IsLess(const Decimal& left, const Decimal& right) {
    if (left.IsNegative() != right.IsNegative()) return left.IsNegative();
    return left.IsNegative() ? right.MantissaLow() < left.MantissaLow()
                             : left.MantissaLow() < right.MantissaLow();
}

bool WholeNumberFits(const Constant& constant, const Datum& value) {
    const auto number = WholeNumberOf(value);
    if (!number) return false;
    const Range range = RangeOf(constant.Default.Format);
    return !IsLess(*number, range.Least) && !IsLess(range.Largest, *number) &&
           (!constant.Minimum || !IsLess(*number, *WholeNumberOf(*constant.Minimum))) &&
           (!constant.Maximum || !IsLess(*WholeNumberOf(*constant.Maximum), *number));
}

bool FloatFits(const Constant& constant, const Datum& value) {
    const auto number = NumberOf(value);
    if (!number) return false;
    const double largest = constant.Default.Format == FormatF4
                               ? double{std::numeric_limits<float>::max()}
                               : std::numeric_limits<double>::max();
    return std::abs(*number) <= largest &&
           (!constant.Minimum || *number >= *NumberOf(*constant.Minimum)) &&
           (!constant.Maximum || *number <= *NumberOf(*constant.Maximum));
}

/// The number in the kind that decoding gives the format.
Variant NumberAs(std::int32_t format, const Variant& number) {
    switch (format) {
        case FormatF4:
            return ToSingle(number);
        case FormatF8:
            return ToDouble(number);
        case FormatI8:
        case FormatU4:
        case FormatU8:
            return ToDecimal(number);
        default:
            return ToLong(number);
    }
}

}  // namespace

std::optional<Datum> ValueFor(const Constant& constant, const Datum& value) {
    const std::int32_t format = constant.Default.Format;
    if (!IsInteger(format) && !IsFloating(format)) {
        if (value.Format != format) return std::nullopt;
        return value;
    }
    if (value.Format == FormatBinary) return std::nullopt;
    const bool fits =
        IsInteger(format) ? WholeNumberFits(constant, value) : FloatFits(constant, value);
    if (!fits) return std::nullopt;
    return Datum{.Format = format, .Value = NumberAs(format, value.Value)};
}

}  // namespace hexmire::program
