#include <hexmire/core/ModGeneral.h>

#include "../fakes/ErrorRecorder.h"
#include "../fakes/VariantText.h"
#include "ItemsOfFormat.h"
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace hexmire {
namespace {

using fakes::ErrorRecorder;
using fakes::Show;
using ModGeneral::lAssignValue;
using ModGeneral::lVarBoolean;
using testing_items::Items;
using testing_items::kFormats;
using Reports = ErrorRecorder::Reports;

const Reports kNone;
const Reports kMismatch{{13, "(ModGeneral-lAssignValue) Type mismatch", 0}};
const Reports kOverflow{{6, "(ModGeneral-lAssignValue) Overflow", 0}};
const Reports kBooleanMismatch{{13, "(ModGeneral-lVarBoolean) Type mismatch", 0}};

struct Row {
    enmItemFormat Format;
    std::string_view Text;
    const char* Result;
};

void Check(const std::vector<Row>& rows, const Reports& reports) {
    ErrorRecorder site;
    Items items;
    for (const Row& row : rows) {
        EXPECT_EQ(Show(lAssignValue(items.Of(row.Format), row.Text)), row.Result)
            << row.Format << " '" << row.Text << "'";
        EXPECT_EQ(site.Take(), reports) << row.Format << " '" << row.Text << "'";
    }
}

TEST(AssignValue, EmptyTextIsEmptyForEveryFormat) {
    for (const enmItemFormat format : kFormats)
        Check({{format, "", "Empty"}}, kNone);
}

TEST(AssignValue, ListsHaveNoValue) {
    Check({{FormatList, "5", "Empty"}, {FormatList, "abc", "Empty"}, {FormatList, " ", "Empty"}},
          kNone);
}

TEST(AssignValue, BinaryReadsHexadecimalDigits) {
    Check({{FormatBinary, "1F", "Byte 31"},
           {FormatBinary, "ff", "Byte 255"},
           {FormatBinary, "0", "Byte 0"},
           {FormatBinary, "10", "Byte 16"},
           {FormatBinary, "1G", "Byte 1"},
           {FormatBinary, "G", "Byte 0"},
           {FormatBinary, "1 F", "Byte 1"},
           {FormatBinary, " 1F", "Byte 0"},
           {FormatBinary, "0x1F", "Byte 0"},
           {FormatBinary, "&H1F", "Byte 0"},
           {FormatBinary, "-1", "Byte 0"},
           {FormatBinary, "1.5", "Byte 1"},
           {FormatBinary, "000000000000FF", "Byte 255"}},
          kNone);
}

TEST(AssignValue, BinaryAboveOneByteIsAnOverflow) {
    Check({{FormatBinary, "100", "Empty"},
           {FormatBinary, "1FF", "Empty"},
           {FormatBinary, "FFFF", "Empty"},
           {FormatBinary, "FFFFFFFF", "Empty"},
           {FormatBinary, "FFFFFF80", "Empty"},
           {FormatBinary, "FFFFFFFFFFFFFFFFFF", "Empty"}},
          kOverflow);
}

TEST(AssignValue, BooleanTakesItsWords) {
    Check({{FormatBoolean, "T", "Boolean True"},
           {FormatBoolean, "f", "Boolean False"},
           {FormatBoolean, "true", "Boolean True"},
           {FormatBoolean, "0", "Boolean False"},
           {FormatBoolean, "2", "Boolean True"}},
          kNone);
}

TEST(AssignValue, BooleanThatDoesNotConvertIsReportedOnceByItsOwnRoutine) {
    Check({{FormatBoolean, "yes", "Empty"}, {FormatBoolean, " T", "Empty"}}, kBooleanMismatch);
}

TEST(AssignValue, WideAndFloatingFormatsAreDoubles) {
    for (const enmItemFormat format : {FormatI8, FormatF8, FormatF4, FormatU8}) {
        Check({{format, "12.5", "Double 12.5"},
               {format, "-1", "Double -1"},
               {format, "1e3", "Double 1000"},
               {format, " 7 ", "Double 7"},
               {format, "0.1", "Double 0.1"},
               {format, "9007199254740993", "Double 9007199254740992"},
               {format, "1e300", "Double 1e+300"}},
              kNone);
        Check({{format, "abc", "Empty"}, {format, " ", "Empty"}, {format, "1,5", "Empty"}},
              kMismatch);
        Check({{format, "1e309", "Empty"}}, kOverflow);
    }
}

TEST(AssignValue, OneByteIntegersAreSixteenBits) {
    for (const enmItemFormat format : {FormatI1, FormatU1}) {
        Check({{format, "5", "Integer 5"},
               {format, "300", "Integer 300"},
               {format, "-1", "Integer -1"},
               {format, "32767", "Integer 32767"},
               {format, "-32768", "Integer -32768"},
               {format, "32767.4", "Integer 32767"},
               {format, "-32768.5", "Integer -32768"},
               {format, "0.5", "Integer 0"},
               {format, "1.5", "Integer 2"},
               {format, "2.5", "Integer 2"},
               {format, "-2.5", "Integer -2"}},
              kNone);
        Check({{format, "32768", "Empty"},
               {format, "-32769", "Empty"},
               {format, "32767.5", "Empty"},
               {format, "1e10", "Empty"}},
              kOverflow);
        Check({{format, "abc", "Empty"}, {format, "0x10", "Empty"}, {format, "1 2", "Empty"}},
              kMismatch);
    }
}

TEST(AssignValue, TwoAndFourByteIntegersAreThirtyTwoBits) {
    for (const enmItemFormat format : {FormatI2, FormatI4}) {
        Check({{format, "12.5", "Long 12"},
               {format, "13.5", "Long 14"},
               {format, "-12.5", "Long -12"},
               {format, "-13.5", "Long -14"},
               {format, "70000", "Long 70000"},
               {format, "2147483647.4", "Long 2147483647"},
               {format, "-2147483648", "Long -2147483648"},
               {format, "12.50000000000000000001", "Long 13"},
               {format, "+7", "Long 7"},
               {format, "1e5", "Long 100000"},
               {format, ".5", "Long 0"}},
              kNone);
        Check({{format, "2147483647.5", "Empty"},
               {format, "2147483648", "Empty"},
               {format, "-2147483649", "Empty"},
               {format, "4294967295", "Empty"}},
              kOverflow);
        Check({{format, "abc", "Empty"},
               {format, "12a", "Empty"},
               {format, "--5", "Empty"},
               {format, "inf", "Empty"},
               {format, "   ", "Empty"},
               {format, "T", "Empty"}},
              kMismatch);
    }
}

TEST(AssignValue, UnsignedTwoAndFourByteIntegersAreTruncatedDoubles) {
    for (const enmItemFormat format : {FormatU2, FormatU4}) {
        Check({{format, "12.7", "Double 12"},
               {format, "-12.7", "Double -12"},
               {format, "0.9", "Double 0"},
               {format, "12.5", "Double 12"},
               {format, "13.5", "Double 13"},
               {format, "4294967295.9", "Double 4294967295"},
               {format, "5000000000", "Double 5e+09"},
               {format, "1e300", "Double 1e+300"}},
              kNone);
        Check({{format, "abc", "Empty"}}, kMismatch);
        Check({{format, "1e309", "Empty"}}, kOverflow);
    }
}

TEST(AssignValue, TextFormatsLoseTheBlanksAtBothEnds) {
    for (const enmItemFormat format : {FormatAscii, FormatVar}) {
        Check({{format, "  a  b  ", "String 'a  b'"},
               {format, "   ", "String ''"},
               {format, "12", "String '12'"},
               {format, "\ta\t", "String '\ta\t'"},
               {format, "'q'", "String ''q''"},
               {format, " \xE9 ", "String '\xE9'"}},
              kNone);
    }
}

TEST(AssignValue, ItemIsLeftAlone) {
    Items items;
    SECSItem& item = items.Of(FormatI4);
    item.Value("before");
    static_cast<void>(lAssignValue(item, "5"));
    EXPECT_EQ(Show(item.Value()), "String 'before'");
    EXPECT_EQ(item.Format(), FormatI4);
}

TEST(VarBoolean, TakesLettersWordsAndNumbers) {
    ErrorRecorder site;
    for (const char* text :
         {"t", "T", "True", "TRUE", "tRuE", "1", "-1", "2", "0.1", " 1 ", "1e5"}) {
        EXPECT_EQ(Show(lVarBoolean(text)), "Boolean True") << text;
    }
    for (const char* text :
         {"f", "F", "False", "FALSE", "fAlSe", "0", "0.0", "-0", "+0", "0e9", " 0 "}) {
        EXPECT_EQ(Show(lVarBoolean(text)), "Boolean False") << text;
    }
    EXPECT_TRUE(site.Errors.empty());
}

TEST(VarBoolean, AnythingElseIsAMismatchAndEmpty) {
    ErrorRecorder site;
    for (const char* text :
         {"yes", "no", "on", "TT", "FF", " T", "F ", "", " ", "Y", "Tru", "0x1", "1 0", "\xFE"}) {
        EXPECT_EQ(Show(lVarBoolean(text)), "Empty") << text;
        EXPECT_EQ(site.Take(), kBooleanMismatch) << text;
    }
}

}  // namespace
}  // namespace hexmire
