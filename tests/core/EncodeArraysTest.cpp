#include "../fakes/Messages.h"
#include "../fakes/RecordingSite.h"
#include <gtest/gtest.h>

#include <string>
#include <vector>

// Array values of every kind in every format that takes arrays (SEMI E5, item encoding).

namespace hexmire {
namespace {

using namespace fakes;

using Bytes8 = std::vector<std::uint8_t>;
using Longs = std::vector<std::int32_t>;
using Integers = std::vector<std::int16_t>;
using Doubles = std::vector<double>;
using Singles = std::vector<float>;
using Booleans = std::vector<bool>;
using Decimals = std::vector<Decimal>;
using Variants = std::vector<Variant>;

struct Row {
    std::int32_t Format;
    Variant Value;
    const char* Hex;
};

void ExpectEncoded(const std::vector<Row>& rows) {
    RecordingSite site;
    for (std::size_t index = 0; index < rows.size(); ++index) {
        SCOPED_TRACE("row " + std::to_string(index) + ", expected " + rows[index].Hex);
        EXPECT_EQ(EncodedHex(rows[index].Format, rows[index].Value), rows[index].Hex);
    }
    EXPECT_EQ(site.Errors, std::vector<std::string>{});
}

TEST(EncodeArrays, ElementsFollowEachOtherAsScalarsDo) {
    ExpectEncoded({
        {FormatI4, Longs{1, 2}, "71 08 00 00 00 01 00 00 00 02"},
        {FormatI1, Longs{200, -1, 256}, "65 03 C8 FF 00"},
        {FormatI2, Longs{-2, 40000}, "69 04 FF FE 9C 40"},
        {FormatI8,
         Longs{-1, 0, 1},
         "61 18 FF FF FF FF FF FF FF FF 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 01"},
        {FormatU1, Longs{0, 255, 256, -1}, "A5 04 00 FF 00 FF"},
        {FormatU2, Longs{1, 65536}, "A9 04 00 01 00 00"},
        {FormatU4, Doubles{1, 4294967295.0}, "B1 08 00 00 00 01 FF FF FF FF"},
        {FormatU8,
         Decimals{Decimal::FromUInt64(18446744073709551615ULL), Decimal()},
         "A1 10 FF FF FF FF FF FF FF FF 00 00 00 00 00 00 00 00"},
        {FormatF4, Doubles{0.1, -1}, "91 08 3D CC CC CD BF 80 00 00"},
        {FormatF8, Singles{0.5F, -0.0F}, "81 10 3F E0 00 00 00 00 00 00 80 00 00 00 00 00 00 00"},
        {FormatBoolean, Booleans{true, false, true}, "25 03 FF 00 FF"},
        {FormatBinary, Bytes8{0, 255}, "21 02 00 FF"},
    });
}

TEST(EncodeArrays, EveryArrayKindServesEveryNumberFormat) {
    ExpectEncoded({
        {FormatI2, Bytes8{1, 255}, "69 04 00 01 00 FF"},
        {FormatI2, Integers{-2, 2}, "69 04 FF FE 00 02"},
        {FormatI2, Singles{1.5F, 2.5F}, "69 04 00 02 00 02"},
        {FormatI2, Doubles{0.5, 1.5}, "69 04 00 00 00 02"},
        {FormatI2, Booleans{true, false}, "69 04 FF FF 00 00"},
        {FormatI2, Decimals{Decimal::FromInt64(-3), Decimal()}, "69 04 FF FD 00 00"},
        {FormatU4, Integers{258, 0}, "B1 08 00 00 01 02 00 00 00 00"},
        {FormatU4, Booleans{true, false}, "B1 08 00 00 00 01 00 00 00 00"},
        {FormatI8, Integers{-2, 0}, "61 10 FF FF FF FF FF FF FF FE 00 00 00 00 00 00 00 00"},
        {FormatF4, Bytes8{1, 2}, "91 08 3F 80 00 00 40 00 00 00"},
        {FormatF8,
         Decimals{Decimal::FromInt64(1), Decimal::FromInt64(-2)},
         "81 10 3F F0 00 00 00 00 00 00 C0 00 00 00 00 00 00 00"},
        {FormatBoolean, Longs{0, 5, -1}, "25 03 00 FF FF"},
        {FormatBoolean, Doubles{0.0, -0.0, 0.25}, "25 03 00 00 FF"},
        {FormatBoolean, Bytes8{0, 1}, "25 02 00 FF"},
        {FormatBinary, Longs{0x1F2, -1, 256}, "21 03 F2 FF 00"},
        {FormatBinary, Doubles{2.5, 3.5}, "21 02 02 04"},
        {FormatBinary, Booleans{true, false}, "21 02 FF 00"},
    });
}

TEST(EncodeArrays, OneElementIsAnArrayOfOne) {
    ExpectEncoded({
        {FormatI4, Longs{-1}, "71 04 FF FF FF FF"},
        {FormatBoolean, Booleans{true}, "25 01 FF"},
        {FormatBinary, Bytes8{0xF2}, "21 01 F2"},
        {FormatF8, Doubles{1}, "81 08 3F F0 00 00 00 00 00 00"},
        {FormatU8, Decimals{Decimal::FromInt64(1)}, "A1 08 00 00 00 00 00 00 00 01"},
    });
}

TEST(EncodeArrays, NoElementIsTwoBytes) {
    ExpectEncoded({
        {FormatBinary, Bytes8{}, "21 00"},
        {FormatBoolean, Booleans{}, "25 00"},
        {FormatI8, Decimals{}, "61 00"},
        {FormatI1, Longs{}, "65 00"},
        {FormatI2, Integers{}, "69 00"},
        {FormatI4, Longs{}, "71 00"},
        {FormatF8, Doubles{}, "81 00"},
        {FormatF4, Singles{}, "91 00"},
        {FormatU8, Variants{}, "A1 00"},
        {FormatU1, Longs{}, "A5 00"},
        {FormatU2, Longs{}, "A9 00"},
        {FormatU4, Doubles{}, "B1 00"},
    });
}

TEST(EncodeArrays, VariantsOfMixedKindsConvertOneByOne) {
    const Variants mixed{
        std::uint8_t{1}, std::int16_t{2}, 3, 4.5F, 5.5, "6", true, Decimal::FromInt64(8)};
    ExpectEncoded({
        {FormatI1, mixed, "65 08 01 02 03 04 06 06 FF 08"},
        {FormatU2, mixed, "A9 10 00 01 00 02 00 03 00 04 00 06 00 06 FF FF 00 08"},
        {FormatU4,
         mixed,
         "B1 20 00 00 00 01 00 00 00 02 00 00 00 03 00 00 00 04 00 00 00 06 00 00 00 06 "
         "00 00 00 01 00 00 00 08"},
        {FormatBoolean, Variants{0, "True", "false", 0.0, 2}, "25 05 00 FF 00 00 FF"},
        {FormatBinary, Variants{std::uint8_t{0xAB}, 258, "17"}, "21 03 AB 02 11"},
    });
}

TEST(EncodeArrays, EmptyInsideIsZeroOrFalse) {
    ExpectEncoded({
        {FormatI2, Variants{1, Variant(), 3}, "69 06 00 01 00 00 00 03"},
        {FormatI8, Variants{Variant()}, "61 08 00 00 00 00 00 00 00 00"},
        {FormatU4, Variants{Variant(), 1}, "B1 08 00 00 00 00 00 00 00 01"},
        {FormatF4, Variants{Variant()}, "91 04 00 00 00 00"},
        {FormatF8, Variants{Variant()}, "81 08 00 00 00 00 00 00 00 00"},
        {FormatBoolean, Variants{true, Variant()}, "25 02 FF 00"},
        {FormatBinary, Variants{Variant(), 1}, "21 02 00 01"},
    });
}

TEST(EncodeArrays, ALowerBoundOfOneLeavesTheFirstPlaceZero) {
    ExpectEncoded({
        {FormatI2, ArrayOf(Longs{1, 2}, 1), "69 06 00 00 00 01 00 02"},
        {FormatI1, ArrayOf(Longs{-1}, 1), "65 02 00 FF"},
        {FormatBoolean, ArrayOf(Booleans{true}, 1), "25 02 00 FF"},
        {FormatBinary, ArrayOf(Bytes8{0xAA, 0xBB}, 1), "21 03 00 AA BB"},
        {FormatU4, ArrayOf(Doubles{5}, 1), "B1 08 00 00 00 00 00 00 00 05"},
        {FormatI8, ArrayOf(Longs{-1}, 1), "61 10 00 00 00 00 00 00 00 00 FF FF FF FF FF FF FF FF"},
        {FormatF4, ArrayOf(Singles{1}, 1), "91 08 00 00 00 00 3F 80 00 00"},
        {FormatF8,
         ArrayOf(Variants{2}, 1),
         "81 10 00 00 00 00 00 00 00 00 40 00 00 00 00 00 00 00"},
        {FormatU2, ArrayOf(Longs{7}, 3), "A9 08 00 00 00 00 00 00 00 07"},
    });
}

TEST(EncodeArrays, ALowerBoundCountsForTheLengthBytes) {
    const std::string hex = EncodedHex(FormatBinary, ArrayOf(Bytes8(255, 0xAA), 1));
    EXPECT_EQ(hex.substr(0, 17), "22 01 00 00 AA AA");
    EXPECT_EQ(hex.size(), (3 + 256) * 3 - 1U);
}

TEST(EncodeArrays, ANegativeLowerBoundIsABoundsFaultAndTheSiblingsFollow) {
    RecordingSite site;
    const std::string hex = EncodedBeforeSibling(FormatI2, ArrayOf(Longs{1, 2}, -1));
    EXPECT_TRUE(hex.starts_with("01 02 69 02"));
    EXPECT_TRUE(hex.ends_with("A5 01 07"));
    EXPECT_EQ(site.Errors,
              std::vector<std::string>{"9 (SECSMessage-lBuildSECSMessage) Subscript out of range"});
}

struct FaultRow {
    std::int32_t Format;
    Variant Value;
    const char* Hex;
    const char* Error;
};

TEST(EncodeArrays, AnElementThatDoesNotConvertEndsItsItemOnly) {
    const char* const mismatch = "13 (SECSMessage-lBuildSECSMessage) Type mismatch";
    const char* const overflow = "6 (SECSMessage-lBuildSECSMessage) Overflow";
    const char* const null = "94 (SECSMessage-lBuildSECSMessage) Invalid use of Null";
    const std::vector<FaultRow> rows = {
        {FormatI2, Variants{1, "abc", 3}, "69 06 00 01", mismatch},
        {FormatI2, Variants{"abc", 2, 3}, "69 06", mismatch},
        {FormatI2, Doubles{1, 2, 3e9}, "69 06 00 01 00 02", overflow},
        {FormatU4, Variants{1, Variant::Null()}, "B1 08 00 00 00 01", null},
        {FormatBoolean, Variants{true, "T"}, "25 02 FF", mismatch},
        {FormatBoolean, Variants{Variant::Null(), true}, "25 02", null},
        {FormatBinary, Variants{1, "x"}, "21 02 01", mismatch},
        {FormatF4, Doubles{1, 1e39}, "91 08 3F 80 00 00", overflow},
        {FormatF8, Variants{1, Longs{1, 2}}, "81 10 3F F0 00 00 00 00 00 00", mismatch},
        {FormatI8, Doubles{1e30}, "61 08", overflow},
    };
    RecordingSite site;
    for (const FaultRow& row : rows) {
        SCOPED_TRACE(row.Hex);
        site.Errors.clear();
        EXPECT_EQ(EncodedBeforeSibling(row.Format, row.Value),
                  std::string("01 02 ") + row.Hex + " A5 01 07");
        EXPECT_EQ(site.Errors, std::vector<std::string>{row.Error});
    }
}

TEST(EncodeArrays, ATooLargeElementOfAWideFormatIsReportedAndTheNextOnesFollow) {
    RecordingSite site;
    EXPECT_EQ(EncodedHex(FormatU4, Doubles{1, 549755813888.0, 2, 549755813889.0}),
              "B1 10 00 00 00 01 00 00 00 00 00 00 00 02 00 00 00 01");
    EXPECT_EQ(site.Errors,
              std::vector<std::string>(2, "9 (SECSMessage-lDecToByte) Subscript out of range"));
}

}  // namespace
}  // namespace hexmire
