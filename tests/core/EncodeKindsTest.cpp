#include "../fakes/CommaLocale.h"
#include "../fakes/ErrorRecorder.h"
#include "../fakes/Messages.h"
#include "../fakes/RecordingSite.h"
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

// Every kind of value in every format that holds numbers, also as elements (SEMI E5, item
// encoding).

namespace hexmire {
namespace {

using namespace fakes;

using Bytes8 = std::vector<std::uint8_t>;
using Variants = std::vector<Variant>;

constexpr std::int32_t kNumberFormats[] = {FormatBinary,
                                           FormatBoolean,
                                           FormatI8,
                                           FormatI1,
                                           FormatI2,
                                           FormatI4,
                                           FormatF8,
                                           FormatF4,
                                           FormatU8,
                                           FormatU1,
                                           FormatU2,
                                           FormatU4};

/// The value bytes of one number.
Bytes8 ScalarBytes(std::int32_t format, const Variant& value) {
    const Bytes8 bytes = EncodeBody(*MessageOf(format, value));
    return {bytes.begin() + 2, bytes.end()};
}

/// An array of each kind beside its elements one by one.
struct ArrayRow {
    Variant Array;
    Variants Elements;
};

const std::vector<ArrayRow>& Arrays() {
    static const Decimal kThirdPower = Decimal::FromDigits(false, "1000", 0);
    static const Decimal kFraction = Decimal::FromDigits(true, "125", -1);
    static const std::vector<ArrayRow> kArrays = {
        {Bytes8{0, 1, 127, 128, 255},
         {std::uint8_t{0},
          std::uint8_t{1},
          std::uint8_t{127},
          std::uint8_t{128},
          std::uint8_t{255}}},
        {std::vector<bool>{true, false, true}, {true, false, true}},
        {std::vector<std::int16_t>{0, 1, -1, 32767, -32768},
         {std::int16_t{0},
          std::int16_t{1},
          std::int16_t{-1},
          std::int16_t{32767},
          std::int16_t{-32768}}},
        {std::vector<std::int32_t>{
             0, 258, -1, 2147483647, std::numeric_limits<std::int32_t>::min()},
         {0, 258, -1, 2147483647, std::numeric_limits<std::int32_t>::min()}},
        {std::vector<float>{0, -0.0F, 1.5F, 2.5F, -3.25F, 0.1F, 1e9F},
         {0.0F, -0.0F, 1.5F, 2.5F, -3.25F, 0.1F, 1e9F}},
        {std::vector<double>{0, -0.0, 0.5, -0.5, 12.7, 2147483647, -2147483648.5},
         {0.0, -0.0, 0.5, -0.5, 12.7, 2147483647.0, -2147483648.5}},
        {std::vector<Decimal>{Decimal(), kThirdPower, kFraction},
         {Decimal(), kThirdPower, kFraction}},
    };
    return kArrays;
}

TEST(EncodeKinds, AnArrayOfAnyKindIsItsElementsOneAfterAnother) {
    RecordingSite site;
    for (const std::int32_t format : kNumberFormats) {
        for (const ArrayRow& row : Arrays()) {
            SCOPED_TRACE(std::to_string(format) + " of kind " +
                         std::to_string(static_cast<int>(row.Array.Kind())));
            Bytes8 values;
            for (const Variant& element : row.Elements) {
                const Bytes8 bytes = ScalarBytes(format, element);
                values.insert(values.end(), bytes.begin(), bytes.end());
            }
            Bytes8 expected{static_cast<std::uint8_t>(format * 4 + 1),
                            static_cast<std::uint8_t>(values.size())};
            expected.insert(expected.end(), values.begin(), values.end());
            EXPECT_EQ(HexOf(EncodeBody(*MessageOf(format, row.Array))), HexOf(expected));
            EXPECT_EQ(HexOf(EncodeBody(*MessageOf(format, row.Elements))), HexOf(expected));
        }
    }
    EXPECT_EQ(site.Errors, std::vector<std::string>{});
}

/// The first `width` bytes of a format's head and the fault that its value leaves behind it.
std::string HeadOnly(std::int32_t format, std::size_t width) {
    return "01 02 " +
           HexOf(Bytes8{static_cast<std::uint8_t>(format * 4 + 1),
                        static_cast<std::uint8_t>(width)}) +
           " A5 01 07";
}

std::size_t WidthOf(std::int32_t format) { return ScalarBytes(format, 0).size(); }

TEST(EncodeKinds, WhatIsNoNumberLeavesTheHeaderInEveryFormat) {
    struct Row {
        Variant Value;
        const char* Error;
    };
    const std::vector<Row> rows = {
        {"", "13 (SECSMessage-lBuildSECSMessage) Type mismatch"},
        {" ", "13 (SECSMessage-lBuildSECSMessage) Type mismatch"},
        {"0x1F", "13 (SECSMessage-lBuildSECSMessage) Type mismatch"},
        {"1,5", "13 (SECSMessage-lBuildSECSMessage) Type mismatch"},
        {"1e", "13 (SECSMessage-lBuildSECSMessage) Type mismatch"},
        {std::string("1\0", 2), "13 (SECSMessage-lBuildSECSMessage) Type mismatch"},
        {New<SECSMessage>(),
         "438 (SECSMessage-lBuildSECSMessage) Object doesn't support this property or method"},
        {SECSMessagePtr(),
         "91 (SECSMessage-lBuildSECSMessage) Object variable or With block variable not set"},
    };
    RecordingSite site;
    for (const std::int32_t format : kNumberFormats) {
        for (const Row& row : rows) {
            SCOPED_TRACE(std::to_string(format) + " " + row.Error);
            site.Errors.clear();
            EXPECT_EQ(EncodedBeforeSibling(format, row.Value), HeadOnly(format, WidthOf(format)));
            EXPECT_EQ(site.Errors, std::vector<std::string>{row.Error});
            site.Errors.clear();
            EXPECT_EQ(EncodedBeforeSibling(format, Variants{row.Value}),
                      HeadOnly(format, WidthOf(format)));
            EXPECT_EQ(site.Errors, std::vector<std::string>{row.Error});
        }
    }
}

TEST(EncodeKinds, NullInsideAnArrayEndsTheItemInEveryFormat) {
    RecordingSite site;
    for (const std::int32_t format : kNumberFormats) {
        SCOPED_TRACE(format);
        site.Errors.clear();
        const std::size_t width = WidthOf(format);
        const std::string hex = EncodedBeforeSibling(format, Variants{0, Variant::Null(), 1});
        EXPECT_EQ(hex,
                  "01 02 " +
                      HexOf(Bytes8{static_cast<std::uint8_t>(format * 4 + 1),
                                   static_cast<std::uint8_t>(width * 3)}) +
                      " " + HexOf(Bytes8(width, 0)) + " A5 01 07");
        EXPECT_EQ(site.Errors,
                  std::vector<std::string>{"94 (SECSMessage-lBuildSECSMessage) Invalid use of "
                                           "Null"});
    }
}

TEST(EncodeKinds, AnArrayInsideAnArrayIsAMismatchInEveryFormat) {
    RecordingSite site;
    for (const std::int32_t format : kNumberFormats) {
        site.Errors.clear();
        EXPECT_EQ(EncodedBeforeSibling(format, Variants{Bytes8{1}}),
                  HeadOnly(format, WidthOf(format)));
        EXPECT_EQ(site.Errors,
                  std::vector<std::string>{"13 (SECSMessage-lBuildSECSMessage) Type mismatch"});
    }
}

struct Row {
    std::int32_t Format;
    Variant Value;
    const char* Hex;
};

TEST(EncodeKinds, NumbersWrittenAsTextFollowTheRulesOfNumbers) {
    const std::vector<Row> rows = {
        {FormatI4, " 12 ", "71 04 00 00 00 0C"},
        {FormatI4, "-2.5", "71 04 FF FF FF FE"},
        {FormatI4, "1e-400", "71 04 00 00 00 00"},
        {FormatI4, "0.00002147483647e14", "71 04 7F FF FF FF"},
        {FormatI4, "2147483647.4999", "71 04 7F FF FF FF"},
        {FormatI4, "-2147483648.5", "71 04 80 00 00 00"},
        {FormatI4, ".5", "71 04 00 00 00 00"},
        {FormatI4, "5.", "71 04 00 00 00 05"},
        {FormatBinary, "1e3", "21 01 E8"},
        {FormatBinary, "3.5", "21 01 04"},
        {FormatU1, "-1", "A5 01 FF"},
        {FormatU4, "1e3", "B1 04 00 00 03 E8"},
        {FormatU4, " 12.7 ", "B1 04 00 00 00 0D"},
        {FormatI8, "-1.5", "61 08 FF FF FF FF FF FF FF FE"},
        {FormatBoolean, " 7 ", "25 01 FF"},
        {FormatBoolean, "1e-400", "25 01 FF"},
        {FormatBoolean, "0e5", "25 01 00"},
        {FormatF4, " 1e3 ", "91 04 44 7A 00 00"},
        {FormatF4, "1e-60", "91 04 00 00 00 00"},
        {FormatF8, "+1", "81 08 3F F0 00 00 00 00 00 00"},
    };
    RecordingSite site;
    for (const Row& row : rows) {
        EXPECT_EQ(EncodedHex(row.Format, row.Value), row.Hex);
    }
    EXPECT_EQ(site.Errors, std::vector<std::string>{});
}

TEST(EncodeKinds, FractionsKeptExactlyRoundAsTheOthersDo) {
    const auto tenths = [](bool negative, const char* digits) {
        return Variant(Decimal::FromDigits(negative, digits, -1));
    };
    const std::vector<Row> rows = {
        {FormatI4, tenths(false, "25"), "71 04 00 00 00 02"},
        {FormatI4, tenths(false, "35"), "71 04 00 00 00 04"},
        {FormatI4, tenths(true, "15"), "71 04 FF FF FF FE"},
        {FormatI4, tenths(true, "5"), "71 04 00 00 00 00"},
        {FormatI2, tenths(false, "21474836474"), "69 02 FF FF"},
        {FormatI4, tenths(true, "21474836485"), "71 04 80 00 00 00"},
        {FormatBinary, tenths(false, "25"), "21 01 02"},
        {FormatBoolean, tenths(false, "1"), "25 01 FF"},
        {FormatF4, tenths(false, "1"), "91 04 3D CC CC CD"},
        {FormatF8, tenths(false, "1"), "81 08 3F B9 99 99 99 99 99 9A"},
        {FormatF4, Decimal(0xFFFFFFFFU, ~0ULL, false), "91 04 6F 80 00 00"},
        {FormatF8, Decimal(0xFFFFFFFFU, ~0ULL, true), "81 08 C5 F0 00 00 00 00 00 00"},
        {FormatBoolean, std::numeric_limits<double>::quiet_NaN(), "25 01 FF"},
        {FormatBoolean, 0.5F, "25 01 FF"},
    };
    RecordingSite site;
    for (const Row& row : rows) {
        EXPECT_EQ(EncodedHex(row.Format, row.Value), row.Hex);
    }
    EXPECT_EQ(site.Errors, std::vector<std::string>{});
    for (const Variant& value : {tenths(false, "21474836475"), tenths(true, "21474836486")}) {
        site.Errors.clear();
        EXPECT_EQ(EncodedHex(FormatI1, value), "65 01");
        EXPECT_EQ(site.Errors,
                  std::vector<std::string>{"6 (SECSMessage-lBuildSECSMessage) Overflow"});
    }
}

TEST(EncodeKinds, TheLimitOfASingleIsHalfAStepAboveTheLargest) {
    constexpr double kLargest = std::numeric_limits<float>::max();
    constexpr double kTie = 0x1.ffffffp127;
    RecordingSite site;
    EXPECT_EQ(EncodedHex(FormatF4, kLargest), "91 04 7F 7F FF FF");
    EXPECT_EQ(EncodedHex(FormatF4, std::nextafter(kTie, 0.0)), "91 04 7F 7F FF FF");
    EXPECT_EQ(EncodedHex(FormatF4, std::nextafter(-kTie, 0.0)), "91 04 FF 7F FF FF");
    EXPECT_EQ(site.Errors, std::vector<std::string>{});
    EXPECT_EQ(EncodedHex(FormatF4, kTie), "91 04");
    EXPECT_EQ(EncodedHex(FormatF4, std::vector<double>{1, -kTie, 1}), "91 0C 3F 80 00 00");
    EXPECT_EQ(site.Errors,
              std::vector<std::string>(2, "6 (SECSMessage-lBuildSECSMessage) Overflow"));
}

class EncodeDecimalComma : public CommaLocale {};

TEST_F(EncodeDecimalComma, TextsInNumbersTakeTheCommaAndNumbersAsTextKeepThePoint) {
    RecordingSite site;
    EXPECT_EQ(EncodedHex(FormatI4, "2,5"), "71 04 00 00 00 02");
    EXPECT_EQ(EncodedHex(FormatU4, "12,7"), "B1 04 00 00 00 0D");
    EXPECT_EQ(EncodedHex(FormatF4, Variants{"0,5"}), "91 04 3F 00 00 00");
    EXPECT_EQ(EncodedHex(FormatAscii, 2.5), "41 03 32 2E 35");
    EXPECT_EQ(EncodedHex(FormatVar, Variants{2.5}), "41 07 5B 20 32 2E 35 20 5D");
    EXPECT_EQ(site.Errors, std::vector<std::string>{});
    EXPECT_EQ(EncodedHex(FormatF8, "2.5"), "81 08");
    EXPECT_EQ(site.Errors,
              std::vector<std::string>{"13 (SECSMessage-lBuildSECSMessage) Type mismatch"});
}

TEST(EncodeErrors, GoToTheControlThatMadeTheMessage) {
    ErrorRecorder maker;
    ErrorRecorder latest;
    const SECSMessagePtr message = maker.Make<SECSMessage>();
    AddItem(message->Root(), FormatList);
    AddItem(Body(message), FormatI4, "abc");
    AddItem(Body(message), FormatU4, 549755813888ULL);
    AddItem(Body(message), FormatVar, Bytes8{});
    AddItem(Body(message), FormatVar, Variants{std::uint8_t{1}, 256});
    EXPECT_EQ(EncodedHex(message),
              "01 04 71 04 B1 04 00 00 00 00 41 04 5B 20 20 5D 41 04 5B 20 20 5D");
    EXPECT_EQ(maker.Take(),
              (ErrorRecorder::Reports{
                  {13, "(SECSMessage-lBuildSECSMessage) Type mismatch", 0},
                  {9, "(SECSMessage-lDecToByte) Subscript out of range", 0},
                  {9, "(ModGeneral-IsByteArray) Subscript out of range", 0},
                  {6, "(ModGeneral-HexDumpArray) Overflow", 0},
              }));
    EXPECT_TRUE(latest.Take().empty());
}

}  // namespace
}  // namespace hexmire
