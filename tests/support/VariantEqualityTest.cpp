#include <hexmire/support/Variant.h>

#include "../fakes/VariantText.h"
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <vector>

namespace hexmire {
namespace {

using fakes::Show;

Decimal Whole(std::int64_t value) { return Decimal::FromInt64(value); }

/// One value of every kind, each made anew.
std::vector<Variant> OneOfEachKind(int number) {
    const auto byte = static_cast<std::uint8_t>(number);
    const auto integer = static_cast<std::int16_t>(number);
    const auto single = static_cast<float>(number);
    const bool odd = number % 2 != 0;
    return {Variant(byte),
            Variant(integer),
            Variant(number),
            Variant(single),
            Variant(static_cast<double>(number)),
            Variant(odd),
            Variant(std::to_string(number)),
            Variant(Whole(number)),
            Variant(std::vector<std::uint8_t>{byte}),
            Variant(std::vector<bool>{odd}),
            Variant(std::vector<std::int16_t>{integer}),
            Variant(std::vector<std::int32_t>{number}),
            Variant(std::vector<float>{single}),
            Variant(std::vector<double>{static_cast<double>(number)}),
            Variant(std::vector<Decimal>{Whole(number)}),
            Variant(std::vector<Variant>{number})};
}

TEST(VariantEquality, SameKindAndValueAreEqualAndNothingElseIs) {
    const std::vector<Variant> first = OneOfEachKind(1);
    const std::vector<Variant> again = OneOfEachKind(1);
    const std::vector<Variant> other = OneOfEachKind(2);
    for (std::size_t left = 0; left < first.size(); ++left) {
        EXPECT_FALSE(first[left] == other[left]) << Show(first[left]);
        EXPECT_FALSE(first[left] == Variant()) << Show(first[left]);
        EXPECT_FALSE(first[left] == Variant::Null()) << Show(first[left]);
        for (std::size_t right = 0; right < again.size(); ++right) {
            EXPECT_EQ(first[left] == again[right], left == right)
                << Show(first[left]) << " and " << Show(again[right]);
        }
    }
    EXPECT_EQ(Variant::Null(), Variant::Null());
    EXPECT_EQ(Variant(), Variant());
}

TEST(VariantEquality, ArraysOfAnotherLengthOrBoundDiffer) {
    EXPECT_FALSE(Variant(std::vector<float>{1}) == Variant(std::vector<float>{1, 1}));
    EXPECT_FALSE(Variant(std::vector<float>{1, 1}) == Variant(std::vector<float>{1}));
    EXPECT_FALSE(Variant::Array(std::vector<std::uint8_t>{1}, 1) ==
                 Variant(std::vector<std::uint8_t>{1}));
    EXPECT_FALSE(Variant(std::vector<std::uint8_t>(16, 1)) ==
                 Variant(std::vector<std::uint8_t>(15, 1)));
}

TEST(VariantEquality, WhatIsNoNumberEqualsNothing) {
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    EXPECT_FALSE(Variant(kNaN) == Variant(kNaN));
    EXPECT_EQ(Variant(0.0), Variant(-0.0));
}

TEST(VariantViews, OfAnotherKindAreEmpty) {
    const std::vector<Variant> values = OneOfEachKind(1);
    for (const Variant& value : values) {
        const VariantKind kind = value.Kind();
        EXPECT_EQ(value.View<std::uint8_t>().size(), kind == VariantKind::ByteArray ? 1U : 0U);
        EXPECT_EQ(value.View<bool>().size(), kind == VariantKind::BooleanArray ? 1U : 0U);
        EXPECT_EQ(value.View<std::int16_t>().size(), kind == VariantKind::IntegerArray ? 1U : 0U);
        EXPECT_EQ(value.View<std::int32_t>().size(), kind == VariantKind::LongArray ? 1U : 0U);
        EXPECT_EQ(value.View<float>().size(), kind == VariantKind::SingleArray ? 1U : 0U);
        EXPECT_EQ(value.View<double>().size(), kind == VariantKind::DoubleArray ? 1U : 0U);
        EXPECT_EQ(value.View<Decimal>().size(), kind == VariantKind::DecimalArray ? 1U : 0U);
        EXPECT_EQ(value.View<Variant>().size(), kind == VariantKind::VariantArray ? 1U : 0U);
    }
}

}  // namespace
}  // namespace hexmire
