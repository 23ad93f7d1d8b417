#include "equipment/ConstantValue.h"

#include <hexmire/support/Conversion.h>
#include <hexmire/support/Fault.h>

#include <cmath>
#include <limits>

namespace hexmire::program {

namespace {

struct Range {
    double Least;
    double Largest;
};

Range RangeOf(std::int32_t format) {
    constexpr double kTwoTo31 = 2147483648.0;
    constexpr double kTwoTo63 = 9223372036854775808.0;
    switch (format) {
        case FormatI1:
            return {-128, 127};
        case FormatI2:
            return {-32768, 32767};
        case FormatI4:
            return {-kTwoTo31, kTwoTo31 - 1};
        case FormatI8:
            return {-kTwoTo63, kTwoTo63};
        case FormatU1:
            return {0, 255};
        case FormatU2:
            return {0, 65535};
        case FormatU4:
            return {0, 2 * kTwoTo31 - 1};
        case FormatU8:
            return {0, 2 * kTwoTo63};
        case FormatF4:
            return {-std::numeric_limits<float>::max(), std::numeric_limits<float>::max()};
        default:
            return {-std::numeric_limits<double>::max(), std::numeric_limits<double>::max()};
    }
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
    const auto number = value.Format == FormatBinary ? std::nullopt : NumberOf(value);
    if (!number) return std::nullopt;
    const Range range = RangeOf(format);
    const bool fits = *number >= range.Least && *number <= range.Largest &&
                      (IsFloating(format) || std::trunc(*number) == *number) &&
                      (!constant.Minimum || *number >= *NumberOf(*constant.Minimum)) &&
                      (!constant.Maximum || *number <= *NumberOf(*constant.Maximum));
    if (!fits) return std::nullopt;
    return Datum{.Format = format, .Value = NumberAs(format, value.Value)};
}

}  // namespace hexmire::program
