#pragma once

#include <hexmire/core/ItemFormat.h>
#include <hexmire/support/Variant.h>

#include <bit>
#include <cmath>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace hexmire::detail {

/// A number as its format's bytes: the low `Width` bytes of `Bits`. Width 0 when a value is none,
/// or would have to be converted first.
struct PlainNumber {
    std::uint64_t Bits = 0;
    std::size_t Width = 0;

    [[nodiscard]] bool IsOne() const noexcept { return Width != 0; }
};

/// A whole number in one of the wide formats, so that no decimal is needed to make its bytes.
template <std::size_t Width, bool Signed>
PlainNumber PlainWhole(std::uint64_t magnitude, bool negative) noexcept {
    constexpr std::uint64_t kLargest = ~std::uint64_t{0} >> (64 - Width * 8);
    if (magnitude > kLargest || (negative && !Signed)) return {};
    return {negative ? 0 - magnitude : magnitude, Width};
}

/// The same of a value of any element type, or of a Variant.
template <std::size_t Width, bool Signed, class T>
PlainNumber PlainWide(const T& value) noexcept {
    if constexpr (std::same_as<T, Decimal>) {
        if (!value.IsWhole() || value.MantissaHigh() != 0) return {};
        return PlainWhole<Width, Signed>(value.MantissaLow(), value.IsNegative());
    } else if constexpr (std::integral<T> && !std::same_as<T, bool>) {
        const auto magnitude = static_cast<std::uint64_t>(std::abs(std::int64_t{value}));
        return PlainWhole<Width, Signed>(magnitude, value < 0);
    } else if constexpr (std::floating_point<T>) {
        constexpr double kExact = 9007199254740992.0;  // 2^53
        const auto wide = static_cast<double>(value);
        if (!(std::abs(wide) <= kExact) || std::trunc(wide) != wide) return {};
        return PlainWhole<Width, Signed>(static_cast<std::uint64_t>(std::abs(wide)), wide < 0);
    } else if constexpr (std::same_as<T, Variant>) {
        const VariantKind kind = value.Kind();
        if (kind == VariantKind::Decimal) return PlainWide<Width, Signed>(value.AsDecimal());
        if (kind == VariantKind::Long) return PlainWide<Width, Signed>(value.AsLong());
        if (kind == VariantKind::Integer) return PlainWide<Width, Signed>(value.AsInteger());
        return {};
    } else {
        return {};
    }
}

/// A Variant in one of the formats of up to 32 bits: what does not fit loses its high bytes.
template <std::size_t Width>
PlainNumber PlainNarrow(const Variant& value) noexcept {
    constexpr std::uint32_t kMask = ~std::uint32_t{0} >> (32 - Width * 8);
    const VariantKind kind = value.Kind();
    if (kind == VariantKind::Long) {
        return {static_cast<std::uint32_t>(value.AsLong()) & kMask, Width};
    }
    if (kind == VariantKind::Integer) {
        return {static_cast<std::uint32_t>(value.AsInteger()) & kMask, Width};
    }
    if (kind == VariantKind::Byte) return {value.AsByte(), Width};
    return {};
}

/// A single value as the number of its item's format (SEMI E5, item formats).
[[nodiscard]] inline PlainNumber PlainNumberOf(std::int32_t format, const Variant& value) noexcept {
    switch (format) {
        case FormatI1:
        case FormatU1:
            return PlainNarrow<1>(value);
        case FormatI2:
        case FormatU2:
            return PlainNarrow<2>(value);
        case FormatI4:
            return PlainNarrow<4>(value);
        case FormatU4:
            return PlainWide<4, false>(value);
        case FormatU8:
            return PlainWide<8, false>(value);
        case FormatI8:
            return PlainWide<8, true>(value);
        case FormatF4:
            if (value.Kind() != VariantKind::Single) return {};
            return {std::bit_cast<std::uint32_t>(value.AsSingle()), sizeof(float)};
        case FormatF8:
            if (value.Kind() != VariantKind::Double) return {};
            return {std::bit_cast<std::uint64_t>(value.AsDouble()), sizeof(double)};
        default:
            return {};
    }
}

}  // namespace hexmire::detail
