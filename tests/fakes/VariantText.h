#pragma once

#include <hexmire/support/Variant.h>

#include <array>
#include <charconv>
#include <cstdint>
#include <string>

namespace hexmire::fakes {

/// Short name of a kind, as Show writes it.
inline std::string KindText(VariantKind kind) {
    constexpr std::array kNames{"Empty",
                                "Null",
                                "Byte",
                                "Integer",
                                "Long",
                                "Single",
                                "Double",
                                "Boolean",
                                "String",
                                "Decimal",
                                "Object",
                                "Byte",
                                "Boolean",
                                "Integer",
                                "Long",
                                "Single",
                                "Double",
                                "Decimal",
                                "Variant"};
    return kNames.at(static_cast<std::size_t>(kind));
}

template <class T>
std::string ShortestDigits(T value) {
    std::array<char, 64> buffer{};
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr;
    return {buffer.data(), end};
}

/// Kind and value in one text that tests compare: "Empty", "Long 12", "String 'abc'",
/// "Boolean True", "Integer[1, 2]", "Variant[Byte 1, Empty]"; a lower bound other than 0 as
/// "Byte(1)[10]".
inline std::string Show(const Variant& value);

namespace detail {

inline std::string ScalarText(const Variant& value) {
    switch (value.Kind()) {
        case VariantKind::Byte:
            return std::to_string(value.AsByte());
        case VariantKind::Integer:
            return std::to_string(value.AsInteger());
        case VariantKind::Long:
            return std::to_string(value.AsLong());
        case VariantKind::Single:
            return ShortestDigits(value.AsSingle());
        case VariantKind::Double:
            return ShortestDigits(value.AsDouble());
        case VariantKind::Boolean:
            return value.AsBoolean() ? "True" : "False";
        case VariantKind::String:
            return "'" + std::string(value.Text()) + "'";
        case VariantKind::Decimal:
            return value.AsDecimal().ToText();
        case VariantKind::Object:
            return value.IsNothing() ? "Nothing" : "Reference";
        default:
            return "";
    }
}

inline std::string ArrayText(const Variant& value) {
    std::string text = KindText(value.Kind());
    const std::int32_t lower = value.LowerBound();
    if (lower != 0) text += "(" + std::to_string(lower) + ")";
    text += "[";
    for (std::int64_t index = lower; index <= value.UpperBound(); ++index) {
        if (index != lower) text += ", ";
        const Variant element = value.Element(static_cast<std::int32_t>(index));
        text += value.Kind() == VariantKind::VariantArray ? Show(element) : ScalarText(element);
    }
    return text + "]";
}

}  // namespace detail

inline std::string Show(const Variant& value) {
    if (value.IsArray()) return detail::ArrayText(value);
    const std::string scalar = detail::ScalarText(value);
    return scalar.empty() ? KindText(value.Kind()) : KindText(value.Kind()) + " " + scalar;
}

}  // namespace hexmire::fakes
