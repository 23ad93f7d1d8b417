#include <hexmire/core/ModGeneral.h>

#include "../fakes/ErrorRecorder.h"
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace hexmire {
namespace {

using namespace ModGeneral;
using fakes::ErrorRecorder;
using Bytes = std::vector<std::uint8_t>;
using Limits = std::numeric_limits<std::int32_t>;

Bytes Filled(std::int32_t value, std::size_t width) {
    Bytes bytes(width, 0x55);
    static_cast<void>(LongToBytes(bytes, value));
    return bytes;
}

TEST(BytesToLong, UpToThreeBytesAreUnsigned) {
    EXPECT_EQ(BytesToLong({0x01, 0x02}), 258);
    EXPECT_EQ(BytesToLong({0x80}), 128);
    EXPECT_EQ(BytesToLong({0xFF}), 255);
    EXPECT_EQ(BytesToLong({0x00}), 0);
    EXPECT_EQ(BytesToLong({0xFF, 0xFE}), 65534);
    EXPECT_EQ(BytesToLong({0x80, 0x00, 0x00}), 8388608);
    EXPECT_EQ(BytesToLong({0xFF, 0xFF, 0xFF}), 16777215);
    EXPECT_EQ(BytesToLong({0x00, 0x00, 0x01}), 1);
}

TEST(BytesToLong, FourBytesAreTwosComplement) {
    EXPECT_EQ(BytesToLong({0xFF, 0xFF, 0xFF, 0xFF}), -1);
    EXPECT_EQ(BytesToLong({0x80, 0, 0, 0}), Limits::min());
    EXPECT_EQ(BytesToLong({0x7F, 0xFF, 0xFF, 0xFF}), Limits::max());
    EXPECT_EQ(BytesToLong({0x01, 0x02, 0x03, 0x04}), 0x01020304);
}

TEST(BytesToLongNegatif, ExtendsWithOneBitsWhateverTheFirstBit) {
    EXPECT_EQ(BytesToLongNegatif({0x80}), -128);
    EXPECT_EQ(BytesToLongNegatif({0xFF, 0xFE}), -2);
    EXPECT_EQ(BytesToLongNegatif({0x80, 0x00, 0x00}), -8388608);
    EXPECT_EQ(BytesToLongNegatif({0xFF, 0xFF, 0xFF, 0xFE}), -2);
    // The caller picks the routine by the sign bit; a positive byte is extended all the same.
    EXPECT_EQ(BytesToLongNegatif({0x01}), -255);
    EXPECT_EQ(BytesToLongNegatif({0x7F, 0xFF}), -32769);
    EXPECT_EQ(BytesToLongNegatif({0x00, 0x00, 0x00, 0x05}), 5);
}

TEST(BytesToNumbers, InputIsLeftAlone) {
    const Bytes bytes{1, 2, 3, 4};
    Bytes copy = bytes;
    static_cast<void>(BytesToLong(copy));
    static_cast<void>(BytesToLongNegatif(copy));
    static_cast<void>(BytesToSingle(copy));
    static_cast<void>(BytesToDouble(copy));
    EXPECT_EQ(copy, bytes);
}

TEST(BytesToSingle, ReadsIeee754) {
    EXPECT_EQ(BytesToSingle({0x3F, 0x80, 0, 0}), 1.0F);
    EXPECT_EQ(BytesToSingle({0xC0, 0x49, 0x0F, 0xDB}), -3.14159274F);
    EXPECT_EQ(BytesToSingle({0x00, 0x00, 0x00, 0x01}), std::numeric_limits<float>::denorm_min());
    EXPECT_EQ(BytesToSingle({0x7F, 0x80, 0, 0}), std::numeric_limits<float>::infinity());
    EXPECT_TRUE(std::isnan(BytesToSingle({0x7F, 0xC0, 0, 1})));
    EXPECT_TRUE(std::signbit(BytesToSingle({0x80, 0, 0, 0})));
}

TEST(BytesToDouble, ReadsIeee754) {
    EXPECT_EQ(BytesToDouble({0x3F, 0xF0, 0, 0, 0, 0, 0, 0}), 1.0);
    EXPECT_EQ(BytesToDouble({0xBF, 0xB9, 0x99, 0x99, 0x99, 0x99, 0x99, 0x9A}), -0.1);
    EXPECT_EQ(BytesToDouble({0, 0, 0, 0, 0, 0, 0, 1}), std::numeric_limits<double>::denorm_min());
    EXPECT_EQ(BytesToDouble({0xFF, 0xF0, 0, 0, 0, 0, 0, 0}),
              -std::numeric_limits<double>::infinity());
    EXPECT_TRUE(std::signbit(BytesToDouble({0x80, 0, 0, 0, 0, 0, 0, 0})));
}

TEST(LongToBytes, WritesMostSignificantByteFirst) {
    EXPECT_EQ(Filled(258, 2), (Bytes{1, 2}));
    EXPECT_EQ(Filled(0x01020304, 4), (Bytes{1, 2, 3, 4}));
    EXPECT_EQ(Filled(5, 4), (Bytes{0, 0, 0, 5}));
    EXPECT_EQ(Filled(0x010203, 3), (Bytes{1, 2, 3}));
}

TEST(LongToBytes, NegativeNumbersAreTwosComplement) {
    EXPECT_EQ(Filled(-1, 4), (Bytes{0xFF, 0xFF, 0xFF, 0xFF}));
    EXPECT_EQ(Filled(-1, 2), (Bytes{0xFF, 0xFF}));
    EXPECT_EQ(Filled(-2, 1), (Bytes{0xFE}));
    EXPECT_EQ(Filled(Limits::min(), 4), (Bytes{0x80, 0, 0, 0}));
}

TEST(LongToBytes, WiderValuesAreCutWithoutAnError) {
    ErrorRecorder site;
    EXPECT_EQ(Filled(200, 1), (Bytes{0xC8}));
    EXPECT_EQ(Filled(256, 1), (Bytes{0}));
    EXPECT_EQ(Filled(65537, 2), (Bytes{0, 1}));
    EXPECT_EQ(Filled(Limits::min(), 1), (Bytes{0}));
    EXPECT_EQ(Filled(Limits::max(), 2), (Bytes{0xFF, 0xFF}));
    EXPECT_TRUE(site.Errors.empty());
}

TEST(NumbersToBytes, ReturnNothingOfUse) {
    Bytes four(4);
    Bytes eight(8);
    EXPECT_TRUE(LongToBytes(four, 1).IsEmpty());
    EXPECT_TRUE(SingleToBytes(four, 1.0F).IsEmpty());
    EXPECT_TRUE(DoubleToBytes(eight, 1.0).IsEmpty());
    EXPECT_EQ(four.size(), 4U);
    EXPECT_EQ(eight.size(), 8U);
}

TEST(SingleToBytes, WritesIeee754) {
    Bytes bytes(4, 0x55);
    static_cast<void>(SingleToBytes(bytes, 1.0F));
    EXPECT_EQ(bytes, (Bytes{0x3F, 0x80, 0, 0}));
    static_cast<void>(SingleToBytes(bytes, -0.0F));
    EXPECT_EQ(bytes, (Bytes{0x80, 0, 0, 0}));
    static_cast<void>(SingleToBytes(bytes, -std::numeric_limits<float>::infinity()));
    EXPECT_EQ(bytes, (Bytes{0xFF, 0x80, 0, 0}));
    static_cast<void>(SingleToBytes(bytes, std::bit_cast<float>(0x7FC12345U)));
    EXPECT_EQ(bytes, (Bytes{0x7F, 0xC1, 0x23, 0x45}));
    static_cast<void>(SingleToBytes(bytes, std::numeric_limits<float>::denorm_min()));
    EXPECT_EQ(bytes, (Bytes{0, 0, 0, 1}));
}

TEST(DoubleToBytes, WritesIeee754) {
    Bytes bytes(8, 0x55);
    static_cast<void>(DoubleToBytes(bytes, 1.0));
    EXPECT_EQ(bytes, (Bytes{0x3F, 0xF0, 0, 0, 0, 0, 0, 0}));
    static_cast<void>(DoubleToBytes(bytes, -0.1));
    EXPECT_EQ(bytes, (Bytes{0xBF, 0xB9, 0x99, 0x99, 0x99, 0x99, 0x99, 0x9A}));
    static_cast<void>(DoubleToBytes(bytes, std::bit_cast<double>(0x7FF8000000000123ULL)));
    EXPECT_EQ(bytes, (Bytes{0x7F, 0xF8, 0, 0, 0, 0, 0x01, 0x23}));
}

TEST(BytesToNumbers, EmptyArrayHasNoBounds) {
    ErrorRecorder site;
    EXPECT_EQ(BytesToLong({}), 0);
    EXPECT_EQ(BytesToLongNegatif({}), 0);
    EXPECT_EQ(BytesToSingle({}), 0.0F);
    EXPECT_EQ(BytesToDouble({}), 0.0);
    EXPECT_EQ(
        site.Errors,
        (ErrorRecorder::Reports{{9, "(ModGeneral-BytesToLong) Subscript out of range", 0},
                                {9, "(ModGeneral-BytesToLongNegatif) Subscript out of range", 0},
                                {9, "(ModGeneral-BytesToSingle) Subscript out of range", 0},
                                {9, "(ModGeneral-BytesToDouble) Subscript out of range", 0}}));
}

TEST(BytesToNumbers, FewerBytesLieOverTheLowEnd) {
    ErrorRecorder site;
    EXPECT_EQ(BytesToSingle({0x01}), std::numeric_limits<float>::denorm_min());
    EXPECT_EQ(BytesToDouble({0x00, 0x01}), std::numeric_limits<double>::denorm_min());
    EXPECT_TRUE(site.Errors.empty());
}

TEST(NumbersToBytes, ArrayWithoutRoomOrBeyondTheNumberIsASubscriptFault) {
    ErrorRecorder site;
    Bytes none;
    Bytes five(5, 0x55);
    Bytes nine(9, 0x55);
    EXPECT_TRUE(LongToBytes(none, 1).IsEmpty());
    EXPECT_TRUE(LongToBytes(five, 1).IsEmpty());
    EXPECT_TRUE(SingleToBytes(five, 1.0F).IsEmpty());
    EXPECT_TRUE(DoubleToBytes(nine, 1.0).IsEmpty());
    EXPECT_EQ(five, Bytes(5, 0x55));
    EXPECT_EQ(nine, Bytes(9, 0x55));
    EXPECT_EQ(
        site.Errors,
        (ErrorRecorder::Reports{{9, "(ModGeneral-LongToBytes) Subscript out of range", 0},
                                {9, "(ModGeneral-LongToBytes) Subscript out of range", 0},
                                {9, "(ModGeneral-SingleToBytes) Subscript out of range", 0},
                                {9, "(ModGeneral-DoubleToBytes) Subscript out of range", 0}}));
}

TEST(NumberBytes, EveryBitPatternOfAFloatComesBack) {
    std::uint64_t bits = 1;
    for (int round = 0; round < 5000; ++round) {
        bits = bits * 6364136223846793005ULL + 1442695040888963407ULL;
        // Every fourth is a NaN or an infinity, whose payload is kept too.
        const std::uint64_t pattern = round % 4 == 0 ? bits | 0x7FF0000000000000ULL : bits;
        Bytes eight(8, 0x55);
        static_cast<void>(DoubleToBytes(eight, std::bit_cast<double>(pattern)));
        ASSERT_EQ(std::bit_cast<std::uint64_t>(BytesToDouble(eight)), pattern);
        const auto half =
            static_cast<std::uint32_t>(pattern >> 32U) | (round % 8 == 0 ? 0x7F800000U : 0U);
        Bytes four(4, 0x55);
        static_cast<void>(SingleToBytes(four, std::bit_cast<float>(half)));
        ASSERT_EQ(std::bit_cast<std::uint32_t>(BytesToSingle(four)), half);
    }
}

TEST(NumberBytes, NegativeNumbersOfThreeBytesComeBack) {
    for (const std::int32_t value : {-1, -2, -255, -256, -257, -65536, -65537, -8388608}) {
        EXPECT_EQ(BytesToLongNegatif(Filled(value, 3)), value);
        EXPECT_EQ(BytesToLong(Filled(value, 4)), value);
        EXPECT_EQ(BytesToLongNegatif(Filled(value, 4)), value);
    }
}

TEST(NumberBytes, EverySixteenBitNumberComesBack) {
    for (std::int32_t value = -32768; value <= 32767; ++value) {
        const Bytes bytes = Filled(value, 2);
        ASSERT_EQ(value < 0 ? BytesToLongNegatif(bytes) : BytesToLong(bytes), value);
    }
    for (std::int32_t value = 0; value <= 65535; ++value) {
        ASSERT_EQ(BytesToLong(Filled(value, 2)), value);
    }
}

TEST(IsEven, CountsNegativeNumbersToo) {
    EXPECT_TRUE(IsEven(0));
    EXPECT_TRUE(IsEven(2));
    EXPECT_TRUE(IsEven(-2));
    EXPECT_FALSE(IsEven(1));
    EXPECT_FALSE(IsEven(-1));
    EXPECT_FALSE(IsEven(255));
    EXPECT_TRUE(IsEven(Limits::min()));
    EXPECT_FALSE(IsEven(Limits::max()));
}

}  // namespace
}  // namespace hexmire
