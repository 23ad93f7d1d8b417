#include "../fakes/Messages.h"
#include "../fakes/RecordingSite.h"
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

// I8, U8 and U4 travel as exact decimals; their bytes are made bit by bit (SEMI E5, item encoding).

namespace hexmire {
namespace {

using namespace fakes;

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
        {FormatI8, Decimal(0, ~0ULL, true), "61 08 00 00 00 00 00 00 00 01"},
        {FormatI8, Power(64).Negated(), "61 08 FF 00 00 00 00 00 00 00"},
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
        {FormatU4, -0.25, "B1 04 00 00 00 02"},
        {FormatU4, -0.5, "B1 04 00 00 00 02"},
        {FormatU4, -1.25, "B1 04 00 00 00 01"},
        {FormatU4, -1.5, "B1 04 00 00 00 00"},
        {FormatU4, -2.5, "B1 04 00 00 00 02"},
        {FormatU4, "-0.0000000000000000000000000001", "B1 04 00 00 00 02"},
        {FormatU8, -1000000.75, "A1 08 00 00 00 00 00 00 00 01"},
        {FormatU4, 127.5, "B1 04 00 00 00 80"},
        {FormatU4, 128.5, "B1 04 00 00 00 80"},
        {FormatU4, 254.5, "B1 04 00 00 00 FE"},
        {FormatU4, 32768.25, "B1 04 00 00 80 00"},
        {FormatU4, 65534.5, "B1 04 00 00 FF FE"},
        {FormatU4, "4294967294.5", "B1 04 FF FF FF FE"},
        {FormatU8, "1180591620717411303424.5", "A1 08 40 00 00 00 00 00 00 00"},
        {FormatU8, "12.7", "A1 08 00 00 00 00 00 00 00 0D"},
        {FormatI8, 12.7, "61 08 00 00 00 00 00 00 00 0D"},
        {FormatI8, -12.7, "61 08 FF FF FF FF FF FF FF F3"},
    });
}

TEST(EncodeWideIntegers, ANegativeFractionThatRoundsToZeroIsSentAsMinusOne) {
    // No byte of the complement of zero can take the 1 that is to be added: all stay FF.
    ExpectEncoded({
        {FormatI8, -0.25, "61 08 FF FF FF FF FF FF FF FF"},
        {FormatI8, -0.5, "61 08 FF FF FF FF FF FF FF FF"},
        {FormatI8, "-0.0000000000000000000000000001", "61 08 FF FF FF FF FF FF FF FF"},
        {FormatI8, -0.75, "61 08 FF FF FF FF FF FF FF FF"},
        {FormatI8, -1.25, "61 08 FF FF FF FF FF FF FF FF"},
        {FormatI8, -1.5, "61 08 FF FF FF FF FF FF FF FE"},
        {FormatI8, -2.5, "61 08 FF FF FF FF FF FF FF FE"},
        {FormatI8, -3.5, "61 08 FF FF FF FF FF FF FF FC"},
        {FormatI8, 0.5, "61 08 00 00 00 00 00 00 00 00"},
        {FormatI8, -1e-30, "61 08 00 00 00 00 00 00 00 00"},
        {FormatI8, "-0.0", "61 08 00 00 00 00 00 00 00 00"},
    });
}

TEST(EncodeWideIntegers, AByteThatRoundsBeyond255IsAnOverflowInTheHelper) {
    RecordingSite site;
    for (const double value : {255.5, 255.75, 511.5, 65535.5, 4294967295.5}) {
        EXPECT_EQ(EncodedBeforeSibling(FormatU4, value), "01 02 B1 04 00 00 00 00 A5 01 07");
    }
    EXPECT_EQ(EncodedHex(FormatI8, -255.5), "61 08 FF FF FF FF FF FF FF FF");
    EXPECT_EQ(EncodedHex(FormatU4, std::vector<double>{16909060, 255.5, 2}),
              "B1 0C 01 02 03 04 00 00 00 00 00 00 00 02");
    EXPECT_EQ(site.Errors, std::vector<std::string>(7, "6 (SECSMessage-lDecToByte) Overflow"));
}

TEST(EncodeWideIntegers, ElementsOfEveryKindHoldAtTheLimitsToo) {
    constexpr std::int32_t kLowest = std::numeric_limits<std::int32_t>::min();
    ExpectEncoded({
        {FormatU4, std::vector<std::int32_t>{-1, kLowest}, "B1 08 00 00 00 01 00 00 00 00"},
        {FormatU4, std::vector<double>{-3, 4294967296.0}, "B1 08 00 00 00 01 01 00 00 00"},
        {FormatU4, std::vector<double>{4294967294.5, -2.5}, "B1 08 FF FF FF FE 00 00 00 02"},
        {FormatU4, std::vector<Decimal>{Power(32), Power(31)}, "B1 08 01 00 00 00 80 00 00 00"},
        {FormatI8, std::vector<std::int32_t>{kLowest}, "61 08 FF FF FF FF 80 00 00 00"},
        {FormatI8,
         std::vector<double>{-9007199254740992.0, -9007199254740994.0},
         "61 10 FF E0 00 00 00 00 00 00 FF DF FF FF FF FF FF FE"},
        {FormatI8,
         std::vector<float>{-0.0F, -0.25F},
         "61 10 00 00 00 00 00 00 00 00 FF FF FF FF FF FF FF FF"},
        {FormatI8,
         std::vector<Decimal>{Decimal(0, ~0ULL, true), Power(64).Negated()},
         "61 10 00 00 00 00 00 00 00 01 FF 00 00 00 00 00 00 00"},
        {FormatU8,
         std::vector<double>{9007199254740994.0, 18446744073709551616.0},
         "A1 10 00 20 00 00 00 00 00 02 01 00 00 00 00 00 00 00"},
        {FormatU8, std::vector<bool>{true}, "A1 08 00 00 00 00 00 00 00 01"},
        {FormatI8, std::vector<bool>{true}, "61 08 FF FF FF FF FF FF FF FF"},
    });
}

TEST(EncodeWideIntegers, TheSignOfOneElementIsNotThatOfTheNext) {
    RecordingSite site;
    EXPECT_EQ(
        EncodedHex(FormatI8, std::vector<Decimal>{Decimal::FromInt64(-1), Power(71), Decimal()}),
        "61 18 FF FF FF FF FF FF FF FF 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00");
    EXPECT_EQ(EncodedHex(FormatI8, std::vector<Decimal>{Power(71).Negated(), Power(0)}),
              "61 10 FF FF FF FF FF FF FF FF 00 00 00 00 00 00 00 01");
    EXPECT_EQ(site.Errors,
              std::vector<std::string>(2, "9 (SECSMessage-lDecToByte) Subscript out of range"));
}

TEST(EncodeWideIntegers, APartialByteTooManyGoesToTheFirstByte) {
    ExpectEncoded({
        {FormatU4, 4294967296ULL, "B1 04 01 00 00 00"},
        {FormatU4, 4294967301ULL, "B1 04 01 00 00 05"},
        {FormatU4, 8589934592ULL, "B1 04 02 00 00 00"},
        {FormatU4, 549755813887ULL, "B1 04 7F FF FF FF"},
        {FormatU4, "549755813887.25", "B1 04 7F FF FF FF"},
        {FormatU8, Decimal(1, 1, false), "A1 08 01 00 00 00 00 00 00 01"},
        {FormatU8, Decimal(0x7F, ~0ULL, false), "A1 08 7F FF FF FF FF FF FF FF"},
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
        {FormatU8, "79228162514264337593543950335", "A1 08 FF FF FF FF FF FF FF FF"},
        {FormatU8, 1e28, "A1 08 3E 25 02 00 00 00 00 00"},
        {FormatU8, "1e28", "A1 08 3E 25 02 61 10 00 00 00"},
        {FormatI8, Power(71).Negated(), "61 08 FF FF FF FF FF FF FF FF"},
        {FormatU4, 549755813888.5, "B1 04 00 00 00 00"},
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

}  // namespace
}  // namespace hexmire
