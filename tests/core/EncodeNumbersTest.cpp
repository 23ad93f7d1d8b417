#include "../fakes/Messages.h"
#include "../fakes/RecordingSite.h"
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

// One number at a time: what each kind of value becomes in each format (SEMI E5, item encoding).

namespace hexmire {
namespace {

using namespace fakes;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

struct Row {
    std::int32_t Format;
    Variant Value;
    const char* Hex;
};

/// Encodes every row; none may report an error.
void ExpectEncoded(const std::vector<Row>& rows) {
    RecordingSite site;
    for (std::size_t index = 0; index < rows.size(); ++index) {
        SCOPED_TRACE("row " + std::to_string(index) + ", expected " + rows[index].Hex);
        EXPECT_EQ(EncodedHex(rows[index].Format, rows[index].Value), rows[index].Hex);
    }
    EXPECT_EQ(site.Errors, std::vector<std::string>{});
}

/// Encodes every row in front of a sibling; each leaves the bytes given and the one error, and the
/// sibling follows.
void ExpectFault(const std::vector<Row>& rows, const std::string& error) {
    RecordingSite site;
    for (std::size_t index = 0; index < rows.size(); ++index) {
        SCOPED_TRACE("row " + std::to_string(index) + ", expected " + rows[index].Hex);
        site.Errors.clear();
        EXPECT_EQ(EncodedBeforeSibling(rows[index].Format, rows[index].Value),
                  std::string("01 02 ") + rows[index].Hex + " A5 01 07");
        EXPECT_EQ(site.Errors, std::vector<std::string>{error});
    }
}

constexpr const char* kOverflow = "6 (SECSMessage-lBuildSECSMessage) Overflow";
constexpr const char* kMismatch = "13 (SECSMessage-lBuildSECSMessage) Type mismatch";

TEST(EncodeNumbers, SmallIntegersAreCutToTheirLowBytesSilently) {
    ExpectEncoded({
        {FormatI1, 200, "65 01 C8"},
        {FormatI1, 128, "65 01 80"},
        {FormatI1, -129, "65 01 7F"},
        {FormatI1, 256, "65 01 00"},
        {FormatI1, 2147483647, "65 01 FF"},
        {FormatI2, 32768, "69 02 80 00"},
        {FormatI2, 40000, "69 02 9C 40"},
        {FormatI2, 65536, "69 02 00 00"},
        {FormatI2, -32769, "69 02 7F FF"},
        {FormatU1, 256, "A5 01 00"},
        {FormatU1, 511, "A5 01 FF"},
        {FormatU1, -1, "A5 01 FF"},
        {FormatU2, 65536, "A9 02 00 00"},
        {FormatU2, 65537, "A9 02 00 01"},
        {FormatU2, -2, "A9 02 FF FE"},
    });
}

TEST(EncodeNumbers, EveryWholeKindServesEveryIntegerFormat) {
    ExpectEncoded({
        {FormatI1, std::uint8_t{5}, "65 01 05"},
        {FormatI1, std::int16_t{-5}, "65 01 FB"},
        {FormatI1, Decimal::FromInt64(-5), "65 01 FB"},
        {FormatI2, std::uint8_t{255}, "69 02 00 FF"},
        {FormatI2, std::int16_t{-2}, "69 02 FF FE"},
        {FormatI4, std::int16_t{-2}, "71 04 FF FF FF FE"},
        {FormatI4, Decimal::FromInt64(-2147483648LL), "71 04 80 00 00 00"},
        {FormatI4, 2147483647U, "71 04 7F FF FF FF"},
        {FormatI8, std::uint8_t{255}, "61 08 00 00 00 00 00 00 00 FF"},
        {FormatI8, std::int16_t{-1}, "61 08 FF FF FF FF FF FF FF FF"},
        {FormatI8, -2, "61 08 FF FF FF FF FF FF FF FE"},
        {FormatU1, Decimal::FromInt64(255), "A5 01 FF"},
        {FormatU2, std::uint8_t{255}, "A9 02 00 FF"},
        {FormatU4, std::uint8_t{255}, "B1 04 00 00 00 FF"},
        {FormatU4, 1, "B1 04 00 00 00 01"},
        {FormatU8, std::int16_t{258}, "A1 08 00 00 00 00 00 00 01 02"},
    });
}

TEST(EncodeNumbers, FractionsGoToTheNearestWholeNumberTiesToEven) {
    ExpectEncoded({
        {FormatI1, 2.5, "65 01 02"},
        {FormatI1, 3.5, "65 01 04"},
        {FormatI1, -2.5, "65 01 FE"},
        {FormatI1, -3.5, "65 01 FC"},
        {FormatI1, 0.5, "65 01 00"},
        {FormatI1, -0.5, "65 01 00"},
        {FormatI2, 2.5F, "69 02 00 02"},
        {FormatI2, 1.49, "69 02 00 01"},
        {FormatI4, 1.51, "71 04 00 00 00 02"},
        {FormatI4, 2147483647.4, "71 04 7F FF FF FF"},
        {FormatI4, 2147483646.5, "71 04 7F FF FF FE"},
        {FormatI4, -2147483648.5, "71 04 80 00 00 00"},
        {FormatI4, "12.5", "71 04 00 00 00 0C"},
        {FormatI4, "13.5", "71 04 00 00 00 0E"},
        {FormatU1, 255.5, "A5 01 00"},
        {FormatU1, 254.5, "A5 01 FE"},
        {FormatU2, 65535.5, "A9 02 00 00"},
        {FormatBinary, 2.5, "21 01 02"},
        {FormatBinary, 255.5, "21 01 00"},
        {FormatI4, -0.0, "71 04 00 00 00 00"},
    });
}

TEST(EncodeNumbers, BeyondThirtyTwoBitsTheHeaderStaysAndOneOverflowIsReported) {
    ExpectFault(
        {
            {FormatI1, 2147483648.0, "65 01"},
            {FormatI2, -2147483649.0, "69 02"},
            {FormatI4, 2147483648.0, "71 04"},
            {FormatI4, 2147483647.5, "71 04"},
            {FormatI4, -2147483649.0, "71 04"},
            {FormatI4, 4294967295U, "71 04"},
            {FormatI4, Decimal::FromInt64(2147483648LL), "71 04"},
            {FormatI4, "2147483648", "71 04"},
            {FormatI4, "1e10", "71 04"},
            {FormatU1, 1e300, "A5 01"},
            {FormatU2, 3e9F, "A9 02"},
            {FormatU2, std::int64_t{-9223372036854775807LL}, "A9 02"},
            {FormatBinary, 2147483648.0, "21 01"},
            {FormatI4, kInfinity, "71 04"},
            {FormatI2, -kInfinity, "69 02"},
            {FormatU1, std::numeric_limits<double>::quiet_NaN(), "A5 01"},
            {FormatI1, std::numeric_limits<float>::quiet_NaN(), "65 01"},
        },
        kOverflow);
}

TEST(EncodeNumbers, DecimalTextServesEveryNumberFormat) {
    ExpectEncoded({
        {FormatBinary, "12", "21 01 0C"},
        {FormatBoolean, "1", "25 01 FF"},
        {FormatBoolean, "0", "25 01 00"},
        {FormatI1, " -5 ", "65 01 FB"},
        {FormatI2, "+258", "69 02 01 02"},
        {FormatI4, "1e3", "71 04 00 00 03 E8"},
        {FormatI8, "-9223372036854775808", "61 08 80 00 00 00 00 00 00 00"},
        {FormatU1, "2.5", "A5 01 02"},
        {FormatU2, "65535", "A9 02 FF FF"},
        {FormatU4, "4294967295", "B1 04 FF FF FF FF"},
        {FormatU8, "18446744073709551615", "A1 08 FF FF FF FF FF FF FF FF"},
        {FormatF4, "0.1", "91 04 3D CC CC CD"},
        {FormatF8, "0.1", "81 08 3F B9 99 99 99 99 99 9A"},
        {FormatF8, "-1.5e-3", "81 08 BF 58 93 74 BC 6A 7E FA"},
    });
}

TEST(EncodeNumbers, TextThatIsNoNumberLeavesTheHeaderAndOneTypeMismatch) {
    ExpectFault(
        {
            {FormatI1, "abc", "65 01"},      {FormatI2, "12x", "69 02"},
            {FormatI4, "abc", "71 04"},      {FormatI4, "", "71 04"},
            {FormatI4, "   ", "71 04"},      {FormatI4, "0x10", "71 04"},
            {FormatI4, "1,5", "71 04"},      {FormatI4, "1 2", "71 04"},
            {FormatI4, "True", "71 04"},     {FormatI8, "abc", "61 08"},
            {FormatU1, "-", "A5 01"},        {FormatU2, ".", "A9 02"},
            {FormatU4, "inf", "B1 04"},      {FormatU8, "nan", "A1 08"},
            {FormatF4, "inf", "91 04"},      {FormatF8, "1.2.3", "81 08"},
            {FormatBinary, "F2", "21 01"},   {FormatBoolean, "T", "25 01"},
            {FormatBoolean, "yes", "25 01"}, {FormatBoolean, "", "25 01"},
        },
        kMismatch);
}

TEST(EncodeNumbers, TrueIsMinusOneAsANumber) {
    ExpectEncoded({
        {FormatI1, true, "65 01 FF"},
        {FormatI2, true, "69 02 FF FF"},
        {FormatI4, true, "71 04 FF FF FF FF"},
        {FormatI8, true, "61 08 FF FF FF FF FF FF FF FF"},
        {FormatU1, true, "A5 01 FF"},
        {FormatU2, false, "A9 02 00 00"},
        {FormatU4, true, "B1 04 00 00 00 01"},
        {FormatBinary, true, "21 01 FF"},
        {FormatF4, true, "91 04 BF 80 00 00"},
        {FormatF8, false, "81 08 00 00 00 00 00 00 00 00"},
    });
}

TEST(EncodeNumbers, AnyNumberButZeroIsTrue) {
    ExpectEncoded({
        {FormatBoolean, true, "25 01 FF"},
        {FormatBoolean, false, "25 01 00"},
        {FormatBoolean, 1, "25 01 FF"},
        {FormatBoolean, -1, "25 01 FF"},
        {FormatBoolean, std::uint8_t{0}, "25 01 00"},
        {FormatBoolean, std::uint8_t{255}, "25 01 FF"},
        {FormatBoolean, 0.1, "25 01 FF"},
        {FormatBoolean, 5e-324, "25 01 FF"},
        {FormatBoolean, 0.0, "25 01 00"},
        {FormatBoolean, -0.0, "25 01 00"},
        {FormatBoolean, kInfinity, "25 01 FF"},
        {FormatBoolean, std::numeric_limits<float>::denorm_min(), "25 01 FF"},
        {FormatBoolean, Decimal::FromInt64(0), "25 01 00"},
        {FormatBoolean, 18446744073709551615ULL, "25 01 FF"},
        {FormatBoolean, "true", "25 01 FF"},
        {FormatBoolean, "FALSE", "25 01 00"},
        {FormatBoolean, "-0.5", "25 01 FF"},
        {FormatBoolean, "0.0", "25 01 00"},
    });
}

TEST(EncodeNumbers, BinaryKeepsTheLowByte) {
    ExpectEncoded({
        {FormatBinary, 0x1F2, "21 01 F2"},
        {FormatBinary, std::uint8_t{0xF2}, "21 01 F2"},
        {FormatBinary, -1, "21 01 FF"},
        {FormatBinary, std::int16_t{-256}, "21 01 00"},
        {FormatBinary, 2147483647, "21 01 FF"},
        {FormatBinary, Decimal::FromInt64(-2147483648LL), "21 01 00"},
        {FormatBinary, 256, "21 01 00"},
    });
}

TEST(EncodeNumbers, SinglesAreRoundedToTheNearest) {
    ExpectEncoded({
        {FormatF4, 0.1, "91 04 3D CC CC CD"},
        {FormatF4, 0.1F, "91 04 3D CC CC CD"},
        {FormatF4, 16777217, "91 04 4B 80 00 00"},
        {FormatF4, Decimal::FromInt64(16777219), "91 04 4B 80 00 02"},
        {FormatF4, 1e-46, "91 04 00 00 00 00"},
        {FormatF4, -1e-46, "91 04 80 00 00 00"},
        {FormatF4, 1e-45, "91 04 00 00 00 01"},
        {FormatF4, -0.0, "91 04 80 00 00 00"},
        {FormatF4, 3.4028235e38, "91 04 7F 7F FF FF"},
        {FormatF4, kInfinity, "91 04 7F 80 00 00"},
        {FormatF4, -kInfinity, "91 04 FF 80 00 00"},
        {FormatF4, std::numeric_limits<double>::quiet_NaN(), "91 04 7F C0 00 00"},
        {FormatF4, std::uint8_t{255}, "91 04 43 7F 00 00"},
    });
}

TEST(EncodeNumbers, DoublesTakeEveryKindWithoutLoss) {
    ExpectEncoded({
        {FormatF8, 1.0, "81 08 3F F0 00 00 00 00 00 00"},
        {FormatF8, 0.1F, "81 08 3F B9 99 99 A0 00 00 00"},
        {FormatF8, 2147483647, "81 08 41 DF FF FF FF C0 00 00"},
        {FormatF8, Decimal::FromInt64(1LL << 53U), "81 08 43 40 00 00 00 00 00 00"},
        {FormatF8, Decimal::FromInt64((1LL << 53U) + 1), "81 08 43 40 00 00 00 00 00 00"},
        {FormatF8, Decimal::FromInt64((1LL << 53U) + 3), "81 08 43 40 00 00 00 00 00 02"},
        {FormatF8, -0.0, "81 08 80 00 00 00 00 00 00 00"},
        {FormatF8, 5e-324, "81 08 00 00 00 00 00 00 00 01"},
        {FormatF8, -kInfinity, "81 08 FF F0 00 00 00 00 00 00"},
        {FormatF8, std::numeric_limits<float>::denorm_min(), "81 08 36 A0 00 00 00 00 00 00"},
    });
}

TEST(EncodeNumbers, AFloatBeyondItsFormatLeavesTheHeaderAndOneOverflow) {
    ExpectFault(
        {
            {FormatF4, 1e39, "91 04"},
            {FormatF4, -1e39, "91 04"},
            {FormatF4, 3.5e38, "91 04"},
            {FormatF4, "1e39", "91 04"},
            {FormatF8, "1e400", "81 08"},
            {FormatF8, "-1e400", "81 08"},
        },
        kOverflow);
}

TEST(EncodeNumbers, ObjectsHaveNoNumber) {
    const SECSItemPtr object = New<SECSItem>();
    for (const std::int32_t format : {FormatBinary,
                                      FormatBoolean,
                                      FormatI8,
                                      FormatI1,
                                      FormatF8,
                                      FormatF4,
                                      FormatU8,
                                      FormatU4,
                                      FormatU2}) {
        RecordingSite site;
        const std::string bytes = EncodedBeforeSibling(format, object);
        EXPECT_EQ(bytes.size(), std::string("01 02 71 04 A5 01 07").size());
        EXPECT_EQ(site.Errors,
                  std::vector<std::string>{"438 (SECSMessage-lBuildSECSMessage) Object doesn't "
                                           "support this property or method"});
        site.Errors.clear();
        EXPECT_EQ(EncodedBeforeSibling(format, SECSItemPtr()), bytes);
        EXPECT_EQ(site.Errors,
                  std::vector<std::string>{"91 (SECSMessage-lBuildSECSMessage) Object variable or "
                                           "With block variable not set"});
    }
}

TEST(EncodeNumbers, NothingAndNullAreTwoBytesInEveryFormat) {
    RecordingSite site;
    for (const std::int32_t format : {8, 9, 16, 24, 25, 26, 28, 32, 36, 40, 41, 42, 44}) {
        const std::string expected = HexOf(
            std::vector<std::uint8_t>{static_cast<std::uint8_t>(format * 4 + 1), std::uint8_t{0}});
        EXPECT_EQ(EncodedHex(format), expected);
        EXPECT_EQ(EncodedHex(format, Variant::Null()), expected);
    }
    EXPECT_EQ(EncodedHex(FormatVar), "41 00");
    EXPECT_EQ(EncodedHex(FormatVar, Variant::Null()), "41 00");
    EXPECT_EQ(site.Errors, std::vector<std::string>{});
}

}  // namespace
}  // namespace hexmire
