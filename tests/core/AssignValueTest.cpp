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
using testing_items::Items;
using testing_items::kFormats;
using Reports = ErrorRecorder::Reports;

const Reports kNone;
const Reports kMismatch{{13, "(ModGeneral-lAssignValue) Type mismatch", 0}};
const Reports kOverflow{{6, "(ModGeneral-lAssignValue) Overflow", 0}};
const Reports kBooleanMismatch{{13, "(ModGeneral-lVarBoolean) Type mismatch", 0}};

struct Row {
    enmItemFormat Format;
    std::string Text;
    std::string Result;
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

TEST(AssignValue, BinaryKnowsNoSignAndNoPrefix) {
    using namespace std::string_literals;
    Check({{FormatBinary, "-FF", "Byte 0"},
           {FormatBinary, "-1F", "Byte 0"},
           {FormatBinary, "+1F", "Byte 0"},
           {FormatBinary, "\t1F", "Byte 0"},
           {FormatBinary, "\xA0\x31", "Byte 0"},
           {FormatBinary, "   ", "Byte 0"},
           {FormatBinary, "1F\t", "Byte 31"},
           {FormatBinary, "1F\0FF"s, "Byte 31"},
           {FormatBinary, "\0FF"s, "Byte 0"},
           {FormatBinary, "1Fh", "Byte 31"},
           {FormatBinary, "Ff", "Byte 255"}},
          kNone);
}

TEST(AssignValue, DecimalTextMayHaveAPointAndAnExponent) {
    Check({{FormatI4, "1.e1", "Long 10"},
           {FormatI4, ".5e1", "Long 5"},
           {FormatI4, "1E+03", "Long 1000"},
           {FormatI4, "100e-2", "Long 1"},
           {FormatI4, "0.00001e5", "Long 1"},
           {FormatI4, "5.", "Long 5"},
           {FormatI4, "  +5  ", "Long 5"},
           {FormatI4, "-0", "Long 0"},
           {FormatI4, "00000000000000000000012", "Long 12"},
           {FormatI1, "3276.74e1", "Integer 32767"}},
          kNone);
}

TEST(AssignValue, DecimalTextHasNoOtherForm) {
    using namespace std::string_view_literals;
    for (const enmItemFormat format : {FormatI1, FormatI4, FormatU4, FormatU8, FormatF4}) {
        for (const std::string_view text :
             {"5\0"sv, "\0005"sv, "5\t"sv,  "\t5"sv, "\xA0\x35"sv, "5\xA0"sv, "5\n"sv,   "\r5"sv,
              "1_0"sv, "5%"sv,    "5&"sv,   "5#"sv,  "(5)"sv,      "$5"sv,    "\xB2"sv,  "1'000"sv,
              "+-5"sv, "-+5"sv,   "5-"sv,   "- 5"sv, "1e5."sv,     "1e 5"sv,  "1 e5"sv,  "1e--5"sv,
              ".e5"sv, "-."sv,    "0b1"sv,  "1.e"sv, "1..2"sv,     "True"sv,  "Empty"sv, "NaN"sv,
              "1e+"sv, "E5"sv,    "&H10"sv, "1d3"sv, "1.2.3"sv,    "."sv,     "+"sv,     "INF"sv}) {
            Check({{format, std::string(text), "Empty"}}, kMismatch);
        }
    }
}

TEST(AssignValue, RoundingSeesEveryDigit) {
    // Read as a double first, each of these would stand exactly on the half.
    Check({{FormatI4, "0.50000000000000000000001", "Long 1"},
           {FormatI4, "-0.50000000000000000000001", "Long -1"},
           {FormatI4, "2.4999999999999999999999", "Long 2"},
           {FormatI4, "2147483647.4999999999999999", "Long 2147483647"},
           {FormatI4, "-2147483648.5", "Long -2147483648"},
           {FormatI1, "32767.49999999999999999999", "Integer 32767"},
           {FormatI1, "-32768.50", "Integer -32768"}},
          kNone);
    Check({{FormatI4, "-2147483648.5000000000000001", "Empty"},
           {FormatI4, "2147483647.50", "Empty"},
           {FormatI1, "-32768.50000000000000000001", "Empty"},
           {FormatI4, "1e99999999999999999999", "Empty"},
           {FormatI1, "-1e19", "Empty"}},
          kOverflow);
}

TEST(AssignValue, ExponentsBeyondADoubleCountByTheirNumber) {
    Check({{FormatF8, "0e99999999999999999999", "Double 0"},
           {FormatF8, "1e-400", "Double 0"},
           {FormatF4, "1e39", "Double 1e+39"},
           {FormatI4, "1e-99999999999999999999", "Long 0"},
           {FormatI4, "0e99999999999999999999", "Long 0"},
           {FormatU4, "1e-400", "Double 0"}},
          kNone);
    Check({{FormatF4, "-1e309", "Empty"}, {FormatU4, "1e99999999999999999999", "Empty"}},
          kOverflow);
}

TEST(AssignValue, TruncationIsTowardZeroOnBothSides) {
    Check({{FormatU4, "-0.9", "Double -0"},
           {FormatU4, "-12.999", "Double -12"},
           {FormatU2, "65535.99", "Double 65535"},
           {FormatU2, "-1", "Double -1"},
           {FormatU2, "1.9e1", "Double 19"}},
          kNone);
}

TEST(AssignValue, LongTextsAreReadToTheirEnd) {
    const std::string zeros(100'000, '0');
    const std::string blanks(100'000, ' ');
    Check({{FormatBinary, zeros + "1F", "Byte 31"},
           {FormatBoolean, zeros, "Boolean False"},
           {FormatBoolean, zeros + "." + zeros + "1", "Boolean True"},
           {FormatI4, zeros + "12.5" + zeros, "Long 12"},
           {FormatI4, zeros + "12.5" + zeros + "1", "Long 13"},
           {FormatI4, blanks + "7" + blanks, "Long 7"},
           {FormatU4, "12.9" + zeros, "Double 12"},
           {FormatF8, "1" + zeros + "e-100000", "Double 1"},
           {FormatF8, "0." + zeros + "1e100001", "Double 1"},
           {FormatAscii, blanks + "a b" + blanks, "String 'a b'"},
           {FormatVar, zeros + " ", ("String '" + zeros + "'")}},
          kNone);
    Check({{FormatBinary, std::string(100'000, 'F'), "Empty"}, {FormatI4, "1" + zeros, "Empty"}},
          kOverflow);
    Check({{FormatI4, zeros + "x", "Empty"}, {FormatF8, blanks, "Empty"}}, kMismatch);
    Check({{FormatBoolean, zeros + "x", "Empty"}}, kBooleanMismatch);
}

TEST(AssignValue, TrimmingTakesBlanksAndNothingElse) {
    using namespace std::string_view_literals;
    ErrorRecorder site;
    Items items;
    for (const enmItemFormat format : {FormatAscii, FormatVar}) {
        const SECSItem& item = items.Of(format);
        EXPECT_EQ(lAssignValue(item, "a\0 "sv), Variant("a\0"sv));
        EXPECT_EQ(lAssignValue(item, " \0 "sv), Variant("\0"sv));
        EXPECT_EQ(lAssignValue(item, " \xA0 a \xA0 "sv), Variant("\xA0 a \xA0"sv));
        EXPECT_EQ(lAssignValue(item, " \n "sv), Variant("\n"));
    }
    EXPECT_TRUE(site.Errors.empty());
}

TEST(AssignValue, ItemIsLeftAlone) {
    Items items;
    SECSItem& item = items.Of(FormatI4);
    item.Value("before");
    static_cast<void>(lAssignValue(item, "5"));
    EXPECT_EQ(Show(item.Value()), "String 'before'");
    EXPECT_EQ(item.Format(), FormatI4);
}

}  // namespace
}  // namespace hexmire
