#include <hexmire/core/detail/Decoder.h>
#include <hexmire/core/detail/Encoder.h>

#include "../fakes/Messages.h"
#include "../fakes/RecordingSite.h"
#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <string>
#include <vector>

// I8, U8 and U4 travel as exact decimals; their bytes are made bit by bit (SEMI E5, item encoding).

namespace hexmire {
namespace {

using namespace fakes;
using detail::lDecToByte;
using detail::lToNInt;
using detail::lToPInt;

struct Row {
    std::int32_t Format;
    Variant Value;
    const char* Hex;
};

void ExpectEncoded(const std::vector<Row>& rows) {
    RecordingSite site;
    for (const Row& row : rows) {
        EXPECT_EQ(EncodedHex(row.Format, row.Value), row.Hex);
    }
    EXPECT_EQ(site.Errors, std::vector<std::string>{});
}

/// Two to the power given, exact.
Decimal Power(unsigned exponent) {
    return exponent < 64 ? Decimal(0, std::uint64_t{1} << exponent, false)
                         : Decimal(1U << (exponent - 64), 0, false);
}

TEST(EncodeWideIntegers, SignedValuesAreTwosComplement) {
    ExpectEncoded({
        {FormatI8, -1, "61 08 FF FF FF FF FF FF FF FF"},
        {FormatI8, -256, "61 08 FF FF FF FF FF FF FF 00"},
        {FormatI8, -257, "61 08 FF FF FF FF FF FF FE FF"},
        {FormatI8, -65536, "61 08 FF FF FF FF FF FF 00 00"},
        {FormatI8, std::int64_t{-4294967296LL}, "61 08 FF FF FF FF 00 00 00 00"},
        {FormatI8, std::numeric_limits<std::int64_t>::min(), "61 08 80 00 00 00 00 00 00 00"},
        {FormatI8, std::numeric_limits<std::int64_t>::max(), "61 08 7F FF FF FF FF FF FF FF"},
        {FormatI8, 0, "61 08 00 00 00 00 00 00 00 00"},
        {FormatI8, -0.0, "61 08 00 00 00 00 00 00 00 00"},
        {FormatI8, -9007199254740991.0, "61 08 FF E0 00 00 00 00 00 01"},
    });
}

TEST(EncodeWideIntegers, ASignedMagnitudeWithTheTopBitIsNotChecked) {
    ExpectEncoded({
        {FormatI8, Power(63), "61 08 80 00 00 00 00 00 00 00"},
        {FormatI8, 18446744073709551615ULL, "61 08 FF FF FF FF FF FF FF FF"},
        {FormatI8, Decimal(0, (1ULL << 63U) + 1, true), "61 08 7F FF FF FF FF FF FF FF"},
    });
}

TEST(EncodeWideIntegers, UnsignedValuesAreExact) {
    ExpectEncoded({
        {FormatU4, 0, "B1 04 00 00 00 00"},
        {FormatU4, 4294967295U, "B1 04 FF FF FF FF"},
        {FormatU4, 4294967295.0, "B1 04 FF FF FF FF"},
        {FormatU4, 2147483648U, "B1 04 80 00 00 00"},
        {FormatU8, 0, "A1 08 00 00 00 00 00 00 00 00"},
        {FormatU8, 18446744073709551615ULL, "A1 08 FF FF FF FF FF FF FF FF"},
        {FormatU8, 9007199254740993ULL, "A1 08 00 20 00 00 00 00 00 01"},
        {FormatU8, 10000000000000000000ULL, "A1 08 8A C7 23 04 89 E8 00 00"},
    });
}

TEST(EncodeWideIntegers, ANegativeUnsignedValueKeepsOneBitOnly) {
    ExpectEncoded({
        {FormatU4, -1, "B1 04 00 00 00 01"},
        {FormatU4, -2, "B1 04 00 00 00 00"},
        {FormatU4, -3, "B1 04 00 00 00 01"},
        {FormatU8, -1, "A1 08 00 00 00 00 00 00 00 01"},
        {FormatU8, std::int64_t{-1000000000001LL}, "A1 08 00 00 00 00 00 00 00 01"},
    });
}

TEST(EncodeWideIntegers, FractionsStayInTheLastByteAndAreRoundedThere) {
    ExpectEncoded({
        {FormatU4, 12.7, "B1 04 00 00 00 0D"},
        {FormatU4, 12.5, "B1 04 00 00 00 0C"},
        {FormatU4, 13.5, "B1 04 00 00 00 0E"},
        {FormatU4, 0.25, "B1 04 00 00 00 00"},
        {FormatU4, 0.75, "B1 04 00 00 00 01"},
        {FormatU4, 255.25, "B1 04 00 00 00 FF"},
        {FormatU4, 256.5, "B1 04 00 00 01 00"},
        {FormatU4, 256.75, "B1 04 00 00 01 01"},
        {FormatU4, -0.5, "B1 04 00 00 00 02"},
        {FormatU8, "12.7", "A1 08 00 00 00 00 00 00 00 0D"},
        {FormatI8, 12.7, "61 08 00 00 00 00 00 00 00 0D"},
        {FormatI8, -12.7, "61 08 FF FF FF FF FF FF FF F3"},
    });
}

TEST(EncodeWideIntegers, AByteThatRoundsBeyond255IsAnOverflowInTheHelper) {
    RecordingSite site;
    EXPECT_EQ(EncodedBeforeSibling(FormatU4, 255.5), "01 02 B1 04 00 00 00 00 A5 01 07");
    EXPECT_EQ(site.Errors, std::vector<std::string>{"6 (SECSMessage-lDecToByte) Overflow"});
}

TEST(EncodeWideIntegers, APartialByteTooManyGoesToTheFirstByte) {
    ExpectEncoded({
        {FormatU4, 4294967296ULL, "B1 04 01 00 00 00"},
        {FormatU4, 4294967301ULL, "B1 04 01 00 00 05"},
        {FormatU4, 8589934592ULL, "B1 04 02 00 00 00"},
        {FormatU4, 549755813887ULL, "B1 04 7F FF FF FF"},
        {FormatU8, Power(64), "A1 08 01 00 00 00 00 00 00 00"},
        {FormatU8, Power(70), "A1 08 40 00 00 00 00 00 00 00"},
        {FormatU8, 18446744073709551616.0, "A1 08 01 00 00 00 00 00 00 00"},
        {FormatI8, Power(64), "61 08 01 00 00 00 00 00 00 00"},
    });
}

TEST(EncodeWideIntegers, AWholeByteTooManyIsABoundsFaultOfTheHelperAndTheItemGoesOn) {
    const std::string fault = "9 (SECSMessage-lDecToByte) Subscript out of range";
    const std::vector<Row> rows = {
        {FormatU4, 549755813888ULL, "B1 04 00 00 00 00"},
        {FormatU4, 549755813893ULL, "B1 04 00 00 00 05"},
        {FormatU4, 1099511627775ULL, "B1 04 FF FF FF FF"},
        {FormatU8, Power(71), "A1 08 00 00 00 00 00 00 00 00"},
        {FormatU8, Decimal(0xFFFFFFFFU, 7, false), "A1 08 00 00 00 00 00 00 00 07"},
    };
    RecordingSite site;
    for (const Row& row : rows) {
        site.Errors.clear();
        EXPECT_EQ(EncodedBeforeSibling(row.Format, row.Value),
                  std::string("01 02 ") + row.Hex + " A5 01 07");
        EXPECT_EQ(site.Errors, std::vector<std::string>{fault});
    }
}

TEST(EncodeWideIntegers, BeyondTheDecimalRangeTheHeaderStaysAndOneOverflowIsReported) {
    RecordingSite site;
    const double infinity = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const Variant& value : {Variant(1e29),
                                 Variant(-1e300),
                                 Variant(1e30F),
                                 Variant("1e29"),
                                 Variant(infinity),
                                 Variant(-infinity),
                                 Variant(nan),
                                 Variant("79228162514264337593543950336")}) {
        site.Errors.clear();
        EXPECT_EQ(EncodedBeforeSibling(FormatU8, value), "01 02 A1 08 A5 01 07");
        EXPECT_EQ(EncodedBeforeSibling(FormatU4, value), "01 02 B1 04 A5 01 07");
        EXPECT_EQ(EncodedBeforeSibling(FormatI8, value), "01 02 61 08 A5 01 07");
        EXPECT_EQ(site.Errors,
                  std::vector<std::string>(3, "6 (SECSMessage-lBuildSECSMessage) Overflow"));
    }
}

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
