#include <hexmire/core/ModGeneral.h>

#include "../fakes/ErrorRecorder.h"
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace hexmire {
namespace {

using fakes::ErrorRecorder;
using ModGeneral::IsByteArray;
using Reports = ErrorRecorder::Reports;

const Variant kByte = std::uint8_t{7};

TEST(IsByteArray, LooksAtTheFirstElementOnly) {
    ErrorRecorder site;
    EXPECT_TRUE(IsByteArray(std::vector<std::uint8_t>{1, 2}));
    EXPECT_TRUE(IsByteArray(std::vector<Variant>{kByte, "text", Variant()}));
    EXPECT_FALSE(IsByteArray(std::vector<Variant>{1, kByte}));
    EXPECT_FALSE(IsByteArray(std::vector<Variant>{Variant(), kByte}));
    EXPECT_FALSE(IsByteArray(std::vector<Variant>{Variant::Null()}));
    EXPECT_FALSE(IsByteArray(std::vector<Variant>{Variant(std::vector<std::uint8_t>{1})}));
    EXPECT_TRUE(site.Errors.empty());
}

TEST(IsByteArray, ArraysOfOtherKindsAreNone) {
    ErrorRecorder site;
    EXPECT_FALSE(IsByteArray(std::vector<bool>{true}));
    EXPECT_FALSE(IsByteArray(std::vector<std::int16_t>{1}));
    EXPECT_FALSE(IsByteArray(std::vector<std::int32_t>{1}));
    EXPECT_FALSE(IsByteArray(std::vector<float>{1}));
    EXPECT_FALSE(IsByteArray(std::vector<double>{1}));
    EXPECT_FALSE(IsByteArray(std::vector<Decimal>{Decimal()}));
    EXPECT_TRUE(site.Errors.empty());
}

TEST(IsByteArray, FirstElementStandsAtTheLowerBound) {
    ErrorRecorder site;
    EXPECT_TRUE(IsByteArray(Variant::Array(std::vector<Variant>{kByte, 2}, 1)));
    EXPECT_FALSE(IsByteArray(Variant::Array(std::vector<Variant>{2, kByte}, 1)));
    EXPECT_TRUE(IsByteArray(Variant::Array(std::vector<std::uint8_t>{1}, -3)));
    EXPECT_TRUE(site.Errors.empty());
}

TEST(IsByteArray, NumberThatWouldFitAByteIsNone) {
    ErrorRecorder site;
    EXPECT_FALSE(IsByteArray(Variant::Array(std::vector<std::int16_t>{7}, 1)));
    EXPECT_FALSE(IsByteArray(std::vector<Variant>{std::int16_t{7}, kByte}));
    EXPECT_FALSE(IsByteArray(std::vector<Variant>{"7"}));
    EXPECT_FALSE(IsByteArray(std::vector<Variant>{std::make_shared<int>(7)}));
    EXPECT_TRUE(IsByteArray(std::vector<std::uint8_t>(100, 0)));
    EXPECT_TRUE(IsByteArray(Variant::Array(std::vector<std::uint8_t>(100, 0), 1)));
    EXPECT_TRUE(site.Errors.empty());
}

TEST(IsByteArray, EmptyArrayIsASubscriptFault) {
    ErrorRecorder site;
    const Reports fault{{9, "(ModGeneral-IsByteArray) Subscript out of range", 0}};
    for (const Variant& value : {Variant(std::vector<std::uint8_t>{}),
                                 Variant(std::vector<Variant>{}),
                                 Variant(std::vector<double>{}),
                                 Variant::Array(std::vector<std::uint8_t>{}, 1)}) {
        EXPECT_FALSE(IsByteArray(value));
        EXPECT_EQ(site.Take(), fault);
    }
}

TEST(IsByteArray, AnythingButAnArrayIsAMismatch) {
    ErrorRecorder site;
    const Reports fault{{13, "(ModGeneral-IsByteArray) Type mismatch", 0}};
    for (const Variant& value : {Variant(),
                                 Variant::Null(),
                                 kByte,
                                 Variant("text"),
                                 Variant(5),
                                 Variant(std::make_shared<int>(1))}) {
        EXPECT_FALSE(IsByteArray(value));
        EXPECT_EQ(site.Take(), fault);
    }
}

}  // namespace
}  // namespace hexmire
