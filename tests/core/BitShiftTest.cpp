#include <hexmire/core/ModGeneral.h>

#include "../fakes/ErrorRecorder.h"
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace hexmire {
namespace {

using fakes::ErrorRecorder;
using ModGeneral::lLBitShift;
using ModGeneral::lRBitShift;
using Limits = std::numeric_limits<std::int32_t>;
using Reports = ErrorRecorder::Reports;

struct Row {
    std::int32_t Value;
    std::int16_t Shift;
    std::int32_t Result;
};

const Reports kLeftOverflow{{6, "(ModGeneral-lLBitShift) Overflow", 0}};
const Reports kRightOverflow{{6, "(ModGeneral-lRBitShift) Overflow", 0}};

TEST(LeftShift, MultipliesByAPowerOfTwo) {
    ErrorRecorder site;
    for (const Row& row : {Row{3, 4, 48},
                           Row{1, 0, 1},
                           Row{1, 30, 1 << 30},
                           Row{-1, 31, Limits::min()},
                           Row{-3, 2, -12},
                           Row{0, 31, 0},
                           Row{0, 1023, 0},
                           Row{Limits::max(), 0, Limits::max()},
                           Row{Limits::min(), 0, Limits::min()},
                           Row{8388607, 8, 2147483392}}) {
        EXPECT_EQ(lLBitShift(row.Value, row.Shift), row.Result) << row.Value << " " << row.Shift;
    }
    EXPECT_TRUE(site.Errors.empty());
}

TEST(LeftShift, NegativeShiftRoundsHalfToEven) {
    ErrorRecorder site;
    for (const Row& row : {Row{5, -1, 2},
                           Row{7, -1, 4},
                           Row{3, -1, 2},
                           Row{1, -1, 0},
                           Row{-1, -1, 0},
                           Row{-3, -1, -2},
                           Row{-5, -1, -2},
                           Row{5, -2, 1},
                           Row{6, -2, 2},
                           Row{7, -2, 2},
                           Row{100, -1000, 0},
                           Row{Limits::max(), -1, 1073741824},
                           Row{Limits::min(), -1, -1073741824},
                           Row{Limits::min(), -31, -1},
                           Row{Limits::min(), -32, 0},
                           Row{Limits::max(), -31, 1},
                           Row{Limits::min(), -33, 0},
                           Row{Limits::max(), std::numeric_limits<std::int16_t>::min(), 0}}) {
        EXPECT_EQ(lLBitShift(row.Value, row.Shift), row.Result) << row.Value << " " << row.Shift;
    }
    EXPECT_TRUE(site.Errors.empty());
}

TEST(LeftShift, BeyondThirtyTwoBitsIsAnOverflowNotTheSignBit) {
    ErrorRecorder site;
    for (const Row& row : {Row{1, 31, 0},
                           Row{2, 30, 0},
                           Row{-1, 32, 0},
                           Row{-3, 31, 0},
                           Row{Limits::max(), 1, 0},
                           Row{Limits::min(), 1, 0},
                           Row{1, 32, 0},
                           Row{1, 64, 0},
                           Row{1, 1000, 0},
                           Row{1, 32767, 0},
                           Row{8388608, 8, 0}}) {
        EXPECT_EQ(lLBitShift(row.Value, row.Shift), 0) << row.Value << " " << row.Shift;
        EXPECT_EQ(site.Take(), kLeftOverflow) << row.Value << " " << row.Shift;
    }
}

TEST(LeftShift, PowerBeyondADoubleIsAnOverflowEvenOfZero) {
    ErrorRecorder site;
    EXPECT_EQ(lLBitShift(0, 1024), 0);
    EXPECT_EQ(site.Take(), kLeftOverflow);
}

TEST(RightShift, DividesTowardZero) {
    ErrorRecorder site;
    for (const Row& row : {Row{-7, 2, -1},
                           Row{-1, 1, 0},
                           Row{-5, 1, -2},
                           Row{7, 2, 1},
                           Row{258, 8, 1},
                           Row{255, 8, 0},
                           Row{256, 8, 1},
                           Row{-256, 8, -1},
                           Row{-255, 8, 0},
                           Row{5, 0, 5},
                           Row{-5, 0, -5},
                           Row{0, 30, 0},
                           Row{Limits::max(), 30, 1},
                           Row{Limits::min(), 30, -2},
                           Row{Limits::min(), 1, -1073741824},
                           Row{Limits::min(), 0, Limits::min()},
                           Row{Limits::max(), 1, 1073741823},
                           Row{-1073741825, 30, -1}}) {
        EXPECT_EQ(lRBitShift(row.Value, row.Shift), row.Result) << row.Value << " " << row.Shift;
    }
    EXPECT_TRUE(site.Errors.empty());
}

TEST(RightShift, DivisorBeyondThirtyTwoBitsIsAnOverflow) {
    ErrorRecorder site;
    for (const Row& row : {Row{1, 31, 0},
                           Row{0, 31, 0},
                           Row{-1, 31, 0},
                           Row{Limits::min(), 31, 0},
                           Row{1, 32, 0},
                           Row{1, 1024, 0},
                           Row{1, 32767, 0}}) {
        EXPECT_EQ(lRBitShift(row.Value, row.Shift), 0) << row.Value << " " << row.Shift;
        EXPECT_EQ(site.Take(), kRightOverflow) << row.Value << " " << row.Shift;
    }
}

TEST(RightShift, DivisorRoundedToZeroIsADivisionByZero) {
    ErrorRecorder site;
    for (const std::int16_t shift : {std::int16_t{-1},
                                     std::int16_t{-2},
                                     std::int16_t{-31},
                                     std::numeric_limits<std::int16_t>::min()}) {
        EXPECT_EQ(lRBitShift(8, shift), 0);
        EXPECT_EQ(site.Take(), (Reports{{11, "(ModGeneral-lRBitShift) Division by zero", 0}}));
    }
}

TEST(BitShifts, AgreeWithExactArithmetic) {
    ErrorRecorder site;
    std::uint64_t random = 1;
    for (int round = 0; round < 20000; ++round) {
        random = random * 6364136223846793005ULL + 1442695040888963407ULL;
        const auto value = static_cast<std::int32_t>(random >> (32U + random % 24U));
        const auto signedValue = (random & 0x8000U) != 0 ? value : -value;
        const auto shift = static_cast<std::int16_t>((random >> 20U) % 31U);
        const std::int64_t power = std::int64_t{1} << shift;
        ASSERT_EQ(lRBitShift(signedValue, shift), signedValue / power);
        ASSERT_TRUE(site.Take().empty());
        const std::int64_t product = signedValue * power;
        const bool fits = product >= Limits::min() && product <= Limits::max();
        ASSERT_EQ(lLBitShift(signedValue, shift), fits ? product : 0);
        ASSERT_EQ(site.Take().size(), fits ? 0U : 1U);
    }
}

TEST(BitShifts, LengthBytesOfAMessageAreTakenApartAndPutTogether) {
    for (const std::int32_t length : {0, 1, 255, 256, 65535, 65536, 16777215}) {
        const std::int32_t high = lRBitShift(length, 16) & 255;
        const std::int32_t middle = lRBitShift(length, 8) & 255;
        const std::int32_t together = lLBitShift(lLBitShift(high, 8) | middle, 8) | (length & 255);
        EXPECT_EQ(together, length);
    }
}

}  // namespace
}  // namespace hexmire
