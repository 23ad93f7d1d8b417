#include <hexmire/core/detail/Decoder.h>
#include <hexmire/core/detail/Encoder.h>
#include <hexmire/support/Conversion.h>

#include "../fakes/Messages.h"
#include "../fakes/RecordingSite.h"
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

// The bytes of 8-byte and unsigned 4-byte integers: magnitudes, and their two's complement.

namespace hexmire {
namespace {

using namespace fakes;
using detail::lDecToByte;
using detail::lToNInt;
using detail::lToPInt;

TEST(DecToByte, WritesBackwardsFromTheCountAndKeepsBytesNotReached) {
    RecordingSite site;
    const auto written = [](std::int64_t value, std::int16_t count) {
        std::array<std::uint8_t, 4> bytes{9, 9, 9, 9};
        lDecToByte(Decimal::FromInt64(value), bytes, count);
        return HexOf(bytes);
    };
    EXPECT_EQ(written(5, 4), "09 09 09 05");
    EXPECT_EQ(written(0, 4), "09 09 09 00");
    EXPECT_EQ(written(255, 4), "09 09 09 FF");
    EXPECT_EQ(written(256, 4), "09 09 01 00");
    EXPECT_EQ(written(5, 2), "09 05 09 09");
    EXPECT_EQ(written(256, 2), "01 00 09 09");
    EXPECT_EQ(written(65536, 2), "01 00 09 09");
    EXPECT_EQ(written(65535, 2), "FF FF 09 09");
    EXPECT_EQ(written(3, 1), "03 09 09 09");
    EXPECT_EQ(site.Errors, std::vector<std::string>{});
}

TEST(DecToByte, StopsAtTheByteInFrontOfTheFirst) {
    RecordingSite site;
    std::array<std::uint8_t, 2> bytes{9, 9};
    lDecToByte(Decimal::FromInt64(0xFF1234), bytes, 2);
    EXPECT_EQ(HexOf(bytes), "12 34");
    EXPECT_EQ(site.Errors,
              std::vector<std::string>{"9 (SECSMessage-lDecToByte) Subscript out of range"});
}

TEST(DecToByte, WithoutAnyPlaceTheFirstByteTakesAPartialOne) {
    RecordingSite site;
    std::array<std::uint8_t, 2> bytes{9, 9};
    lDecToByte(Decimal::FromInt64(5), bytes, 0);
    EXPECT_EQ(HexOf(bytes), "05 09");
    EXPECT_EQ(site.Errors, std::vector<std::string>{});
    lDecToByte(Decimal::FromInt64(200), bytes, 0);
    EXPECT_EQ(HexOf(bytes), "05 09");
    EXPECT_EQ(site.Errors,
              std::vector<std::string>{"9 (SECSMessage-lDecToByte) Subscript out of range"});
}

TEST(DecToByte, AFractionFillsTheSamePlacesAsAWholeNumber) {
    struct Row {
        const char* Value;
        std::int16_t Count;
        const char* Bytes;
        std::size_t Errors;
    };
    // Seven bits are a partial byte, which may land on the first place; eight are a full one.
    const std::vector<Row> rows = {
        {"64.5", 4, "09 09 09 40", 0},
        {"127.25", 4, "09 09 09 7F", 0},
        {"128.25", 4, "09 09 09 80", 0},
        {"255.25", 4, "09 09 09 FF", 0},
        {"256.25", 4, "09 09 01 00", 0},
        {"128.25", 1, "80 09 09 09", 0},
        {"64.5", 0, "40 09 09 09", 0},
        {"127.25", 0, "7F 09 09 09", 0},
        {"128.25", 0, "09 09 09 09", 1},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.Value);
        RecordingSite site;
        std::array<std::uint8_t, 4> bytes{9, 9, 9, 9};
        lDecToByte(ToDecimal(row.Value), bytes, row.Count);
        EXPECT_EQ(HexOf(bytes), row.Bytes);
        EXPECT_EQ(site.Errors,
                  std::vector<std::string>(row.Errors,
                                           "9 (SECSMessage-lDecToByte) Subscript out of range"));
    }
}

TEST(DecToByte, APlaceBehindTheLastByteIsABoundsFault) {
    RecordingSite site;
    std::array<std::uint8_t, 2> bytes{9, 9};
    lDecToByte(Decimal::FromInt64(5), bytes, 3);
    lDecToByte(Decimal::FromInt64(0xABCD), bytes, 3);
    lDecToByte(Decimal(), {}, 0);
    EXPECT_EQ(HexOf(bytes), "09 09");
    EXPECT_EQ(site.Errors,
              std::vector<std::string>(3, "9 (SECSMessage-lDecToByte) Subscript out of range"));
}

TEST(TwosComplement, OfZeroIsAllOnesAndStaysSo) {
    for (const std::size_t size : {1U, 2U, 8U}) {
        std::vector<std::uint8_t> negated(size, 0);
        lToNInt(negated);
        EXPECT_EQ(negated, std::vector<std::uint8_t>(size, 255));
        std::vector<std::uint8_t> magnitude(size, 0);
        lToPInt(magnitude);
        EXPECT_EQ(magnitude, std::vector<std::uint8_t>(size, 255));
    }
    std::vector<std::uint8_t> nothing;
    lToNInt(nothing);
    lToPInt(nothing);
    EXPECT_TRUE(nothing.empty());
}

TEST(TwosComplement, NegatesAMagnitudeAndBack) {
    struct Pair {
        std::vector<std::uint8_t> Magnitude;
        std::vector<std::uint8_t> Negative;
    };
    const std::vector<Pair> pairs = {
        {{0, 0, 0, 0, 0, 0, 0, 1}, {255, 255, 255, 255, 255, 255, 255, 255}},
        {{0, 0, 0, 0, 0, 0, 1, 0}, {255, 255, 255, 255, 255, 255, 255, 0}},
        {{128, 0, 0, 0, 0, 0, 0, 0}, {128, 0, 0, 0, 0, 0, 0, 0}},
        {{127, 255}, {128, 1}},
        {{1}, {255}},
        {{0x12, 0x34, 0x56}, {0xED, 0xCB, 0xAA}},
        {{0x12, 0, 0}, {0xEE, 0, 0}},
    };
    for (const Pair& pair : pairs) {
        std::vector<std::uint8_t> bytes = pair.Magnitude;
        lToNInt(bytes);
        EXPECT_EQ(bytes, pair.Negative);
        lToPInt(bytes);
        EXPECT_EQ(bytes, pair.Magnitude);
    }
}

TEST(TwosComplement, HoldsForEveryTwoByteMagnitude) {
    for (unsigned value = 1; value < 65536; ++value) {
        std::array<std::uint8_t, 2> bytes{static_cast<std::uint8_t>(value >> 8U),
                                          static_cast<std::uint8_t>(value)};
        lToNInt(bytes);
        ASSERT_EQ(bytes[0] * 256U + bytes[1], 65536 - value);
        lToPInt(bytes);
        ASSERT_EQ(bytes[0] * 256U + bytes[1], value);
    }
}

}  // namespace
}  // namespace hexmire
