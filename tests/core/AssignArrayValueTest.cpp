#include <hexmire/core/ModGeneral.h>

#include "../fakes/ErrorRecorder.h"
#include "../fakes/VariantText.h"
#include "ItemsOfFormat.h"
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace hexmire {
namespace {

using namespace ModGeneral;
using fakes::ErrorRecorder;
using fakes::Show;
using testing_items::Items;
using testing_items::kFormats;
using Reports = ErrorRecorder::Reports;

const Reports kNone;

struct Row {
    enmItemFormat Format;
    std::string_view Text;
    std::string Result;
};

void Check(const std::vector<Row>& rows, const Reports& reports) {
    ErrorRecorder site;
    Items items;
    for (const Row& row : rows) {
        EXPECT_EQ(Show(lAssignArrayValue(items.Of(row.Format), row.Text)), row.Result)
            << row.Format << " '" << row.Text << "'";
        EXPECT_EQ(site.Take(), reports) << row.Format << " '" << row.Text << "'";
    }
}

TEST(AssignArrayValue, EmptyTextIsEmptyForEveryFormat) {
    for (const enmItemFormat format : kFormats)
        Check({{format, "", "Empty"}}, kNone);
}

TEST(AssignArrayValue, ListsAndAnyFormatHaveNoArray) {
    Check({{FormatList, "1 2", "Empty"}, {FormatVar, "1 2", "Empty"}, {FormatVar, "abc", "Empty"}},
          kNone);
}

TEST(AssignArrayValue, ArrayKindFollowsTheFormat) {
    for (const enmItemFormat format :
         {FormatI8, FormatF8, FormatF4, FormatU8, FormatU2, FormatU4}) {
        Check({{format, "1 2 3", "Double[1, 2, 3]"}}, kNone);
    }
    for (const enmItemFormat format : {FormatI1, FormatU1}) {
        Check({{format, "1 2 3", "Integer[1, 2, 3]"}}, kNone);
    }
    for (const enmItemFormat format : {FormatI2, FormatI4}) {
        Check({{format, "1 2 3", "Long[1, 2, 3]"}}, kNone);
    }
    Check({{FormatBinary, "1 2 FF", "Byte[1, 2, 255]"},
           {FormatBoolean, "T F 1", "Boolean[True, False, True]"}},
          kNone);
}

TEST(AssignArrayValue, OneElementIsStillAnArray) {
    Check({{FormatU1, "5", "Integer[5]"},
           {FormatBinary, "A", "Byte[10]"},
           {FormatBoolean, "f", "Boolean[False]"},
           {FormatF4, ".5", "Double[0.5]"},
           {FormatI4, "-7", "Long[-7]"}},
          kNone);
}

TEST(AssignArrayValue, AsciiIsTheTrimmedText) {
    Check({{FormatAscii, "  a  b c ", "String 'a  b c'"}, {FormatAscii, "   ", "String ''"}},
          kNone);
}

TEST(AssignArrayValue, DoubledBlankEndsTheText) {
    Check({{FormatI4, "1 2  3", "Long[1, 2]"},
           {FormatI4, "1  2 3", "Long[1]"},
           {FormatI4, "1 2  ", "Long[1, 2]"},
           {FormatBinary, "0A  FF", "Byte[10]"},
           {FormatBoolean, "T  F", "Boolean[True]"}},
          kNone);
}

TEST(AssignArrayValue, LeadingBlankLeavesNothing) {
    Check({{FormatU1, " 1 2 3", "Empty"},
           {FormatU1, " ", "Empty"},
           {FormatU1, "  ", "Empty"},
           {FormatBinary, " FF", "Empty"},
           {FormatBoolean, " T", "Empty"},
           {FormatF8, " 1", "Empty"}},
          kNone);
}

TEST(AssignArrayValue, TrailingBlankIsPassedOver) {
    Check({{FormatU1, "1 2 ", "Integer[1, 2]"},
           {FormatBinary, "FF ", "Byte[255]"},
           {FormatBoolean, "T ", "Boolean[True]"}},
          kNone);
}

TEST(AssignArrayValue, OnlyBlanksSeparate) {
    Check({{FormatI4, "1\t2", "Long[1]"},
           {FormatI4, "1,2 3", "Long[1, 3]"},
           {FormatI4, "1\r\n2 3", "Long[1, 3]"}},
          kNone);
}

TEST(AssignArrayValue, ElementIsTheNumberThatItBeginsWith) {
    Check({{FormatI4, "1x 2y abc", "Long[1, 2, 0]"},
           {FormatI4, "0x10 - +", "Long[0, 0, 0]"},
           {FormatF8, "1.5.2 -.5 1e2z 2e", "Double[1.5, -0.5, 100, 2]"},
           {FormatU1, "inf nan", "Integer[0, 0]"}},
          kNone);
}

TEST(AssignArrayValue, ElementsAreRoundedOrTruncatedAsSingleValuesAre) {
    Check({{FormatI4, "12.5 13.5 -12.5", "Long[12, 14, -12]"},
           {FormatU1, "0.5 1.5 300", "Integer[0, 2, 300]"},
           {FormatU2, "12.7 -3.9", "Double[12, -3]"},
           {FormatU4, "4294967295.9", "Double[4294967295]"},
           {FormatF4, "0.1 1e-7 1e20", "Double[0.1, 1e-07, 1e+20]"},
           {FormatI8, "9007199254740993", "Double[9007199254740992]"}},
          kNone);
}

TEST(AssignArrayValue, ElementThatDoesNotFitBecomesZeroAndTheRestFollows) {
    const Reports overflow{{6, "(ModGeneral-lAssignValue) Overflow", 0}};
    Check({{FormatU1, "1 40000 3", "Integer[1, 0, 3]"},
           {FormatI4, "3000000000 2", "Long[0, 2]"},
           {FormatI1, "1 2 -32769", "Integer[1, 2, 0]"}},
          overflow);
}

TEST(AssignArrayValue, EachElementThatDoesNotFitIsReportedOnce) {
    const ErrorRecorder::Reports twice{{6, "(ModGeneral-lAssignValue) Overflow", 0},
                                       {6, "(ModGeneral-lAssignValue) Overflow", 0}};
    Check({{FormatI4, "3000000000 5 -3000000000", "Long[0, 5, 0]"}}, twice);
}

TEST(AssignArrayValue, BooleanThatDoesNotConvertBecomesFalse) {
    Check({{FormatBoolean, "T x T", "Boolean[True, False, True]"}},
          {{13, "(ModGeneral-lVarBoolean) Type mismatch", 0}});
}

TEST(AssignArrayValue, BinaryElementAboveOneByteEndsTheArray) {
    const Reports overflow{{6, "(ModGeneral-lByteArrayValue) Overflow", 0}};
    Check({{FormatBinary, "0A 1FF 03", "Byte[10]"},
           {FormatBinary, "1 2 100", "Byte[1, 2]"},
           {FormatBinary, "1FF 03", "Empty"},
           {FormatBinary, "FFFFFFFFFF", "Empty"}},
          overflow);
}

TEST(AssignArrayValue, BinaryElementsReadLeadingHexDigitsOnly) {
    Check({{FormatBinary, "GG 1 0x2 fF", "Byte[0, 1, 0, 255]"}}, kNone);
}

TEST(AssignArrayValue, ManyElementsKeepTheirOrder) {
    std::string text;
    std::vector<std::int16_t> numbers;
    for (int index = 0; index < 5000; ++index) {
        text += std::to_string(index) + " ";
        numbers.push_back(static_cast<std::int16_t>(index));
    }
    Items items;
    EXPECT_EQ(lAssignArrayValue(items.Of(FormatU1), text), Variant(numbers));
}

TEST(ArrayBuilders, FillTheArrayThatTheyAreGiven) {
    ErrorRecorder site;
    Items items;
    Variant longs(std::vector<std::int32_t>{});
    EXPECT_EQ(Show(lVariantArrayValue(items.Of(FormatI4), "1 2", longs)), "Long[1, 2]");
    EXPECT_EQ(Show(longs), "Long[1, 2]");
    Variant bytes(std::vector<std::uint8_t>{});
    EXPECT_EQ(Show(lByteArrayValue(items.Of(FormatBinary), "1 FF", bytes)), "Byte[1, 255]");
    EXPECT_EQ(Show(bytes), "Byte[1, 255]");
    Variant booleans(std::vector<bool>{});
    EXPECT_EQ(Show(lBoolArrayValue(items.Of(FormatBoolean), "T F", booleans)),
              "Boolean[True, False]");
    EXPECT_EQ(Show(booleans), "Boolean[True, False]");
    EXPECT_TRUE(site.Errors.empty());
}

TEST(ArrayBuilders, ArrayKindMayDifferFromTheFormat) {
    Items items;
    Variant doubles(std::vector<double>{});
    EXPECT_EQ(Show(lVariantArrayValue(items.Of(FormatI4), "12.5 3", doubles)), "Double[12, 3]");
}

TEST(ArrayBuilders, EmptyTextBuildsNothing) {
    Items items;
    Variant longs(std::vector<std::int32_t>{});
    EXPECT_EQ(Show(lVariantArrayValue(items.Of(FormatI4), "", longs)), "Empty");
    EXPECT_EQ(Show(lVariantArrayValue(items.Of(FormatI4), " 1", longs)), "Empty");
}

}  // namespace
}  // namespace hexmire
