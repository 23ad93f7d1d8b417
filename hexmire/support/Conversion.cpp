#include <hexmire/support/Conversion.h>
#include <hexmire/support/Fault.h>
#include <hexmire/support/Text.h>

#include <cmath>
#include <limits>
#include <utility>

namespace hexmire {

namespace {

/// The fault of a kind that is neither number nor text.
[[noreturn]] void ThrowNotScalar(const Variant& value) {
    if (value.IsNull()) throw Fault(FaultNumber::InvalidUseOfNull);
    if (value.IsObject()) {
        throw Fault(value.IsNothing() ? FaultNumber::ObjectNotSet
                                      : FaultNumber::MemberNotSupported);
    }
    throw Fault(FaultNumber::TypeMismatch);
}

std::int64_t ToWhole(const Variant& value) {
    switch (value.Kind()) {
        case VariantKind::Empty:
            return 0;
        case VariantKind::Byte:
            return value.AsByte();
        case VariantKind::Integer:
            return value.AsInteger();
        case VariantKind::Long:
            return value.AsLong();
        case VariantKind::Single:
            return RoundToWhole(static_cast<double>(value.AsSingle()));
        case VariantKind::Double:
            return RoundToWhole(value.AsDouble());
        case VariantKind::Boolean:
            return value.AsBoolean() ? -1 : 0;
        case VariantKind::String:
            return RoundToWhole(ParseDecimalText(value.Text()));
        case VariantKind::Decimal:
            return value.AsDecimal().ToInt64();
        default:
            ThrowNotScalar(value);
    }
}

template <std::integral T>
T Narrow(std::int64_t value) {
    if (!std::in_range<T>(value)) throw Fault(FaultNumber::Overflow);
    return static_cast<T>(value);
}

}  // namespace

std::uint8_t ToByte(const Variant& value) { return Narrow<std::uint8_t>(ToWhole(value)); }

std::int16_t ToInteger(const Variant& value) { return Narrow<std::int16_t>(ToWhole(value)); }

std::int32_t ToLong(const Variant& value) {
    if (value.Kind() == VariantKind::Long) return value.AsLong();
    return Narrow<std::int32_t>(ToWhole(value));
}

std::int16_t NarrowToInteger(std::int64_t value) { return Narrow<std::int16_t>(value); }

float ToSingle(const Variant& value) {
    if (value.Kind() == VariantKind::Single) return value.AsSingle();
    const double wide = ToDouble(value);
    // Half a step above the largest single: from here on the nearest single would be infinite.
    constexpr double kLimit = 0x1.ffffffp127;
    if (std::isfinite(wide) && std::abs(wide) >= kLimit) throw Fault(FaultNumber::Overflow);
    return static_cast<float>(wide);
}

double ToDouble(const Variant& value) {
    switch (value.Kind()) {
        case VariantKind::Single:
            return static_cast<double>(value.AsSingle());
        case VariantKind::Double:
            return value.AsDouble();
        case VariantKind::String:
            return NearestDouble(ParseDecimalText(value.Text()));
        case VariantKind::Decimal:
            return value.AsDecimal().ToDouble();
        default:
            return static_cast<double>(ToWhole(value));
    }
}

bool ToBoolean(const Variant& value) {
    switch (value.Kind()) {
        case VariantKind::Boolean:
            return value.AsBoolean();
        case VariantKind::Single:
            return value.AsSingle() != 0;
        case VariantKind::Double:
            return value.AsDouble() != 0;
        case VariantKind::Decimal:
            return !value.AsDecimal().IsZero();
        case VariantKind::String: {
            if (EqualsIgnoringCase(value.Text(), "True")) return true;
            if (EqualsIgnoringCase(value.Text(), "False")) return false;
            return !ParseDecimalText(value.Text()).Digits.empty();
        }
        default:
            return ToWhole(value) != 0;
    }
}

Decimal ToDecimal(const Variant& value) {
    switch (value.Kind()) {
        case VariantKind::Single:
            return Decimal::FromDouble(static_cast<double>(value.AsSingle()));
        case VariantKind::Double:
            return Decimal::FromDouble(value.AsDouble());
        case VariantKind::Decimal:
            return value.AsDecimal();
        case VariantKind::String: {
            const DecimalText number = ParseDecimalText(value.Text());
            return Decimal::FromDigits(number.Negative, number.Digits, number.Exponent);
        }
        default:
            return Decimal::FromInt64(ToWhole(value));
    }
}

std::string ToText(const Variant& value) {
    switch (value.Kind()) {
        case VariantKind::Empty:
            return {};
        case VariantKind::Single:
            return NumberText(value.AsSingle());
        case VariantKind::Double:
            return NumberText(value.AsDouble());
        case VariantKind::Boolean:
            return value.AsBoolean() ? "True" : "False";
        case VariantKind::String:
            return std::string(value.Text());
        case VariantKind::Decimal:
            return value.AsDecimal().ToText();
        default:
            return std::to_string(ToWhole(value));
    }
}

}  // namespace hexmire
