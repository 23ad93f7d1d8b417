#include <hexmire/support/Fault.h>
#include <hexmire/support/Text.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

namespace hexmire {
namespace {

template <class Body>
std::int32_t FaultOf(Body&& body) {
    try {
        static_cast<void>(body());
    } catch (const Fault& fault) {
        return fault.Number();
    }
    return 0;
}

TEST(Text, UpperCaseFollowsIso8859_1ForEveryCharacter) {
    for (int code = 0; code < 256; ++code) {
        const bool ascii = code >= 'a' && code <= 'z';
        const bool latin = code >= 0xE0 && code <= 0xFE && code != 0xF7;
        const int expected = ascii || latin ? code - 0x20 : code;
        EXPECT_EQ(UpperCase(static_cast<char>(code)), static_cast<char>(expected)) << code;
        EXPECT_EQ(UpperCase(std::string(1, static_cast<char>(code))),
                  std::string(1, static_cast<char>(expected)));
    }
}

TEST(Text, CharactersWithoutAnUpperCaseOfOneByteStay) {
    EXPECT_EQ(UpperCase("\xDF\xFF\xB5\xF7"), "\xDF\xFF\xB5\xF7");
    EXPECT_EQ(UpperCase("stra\xDF"
                        "e"),
              "STRA\xDF"
              "E");
}

TEST(Text, UpperCaseKeepsLengthAndNulCharacters) {
    EXPECT_EQ(UpperCase(std::string("a\0b", 3)), std::string("A\0B", 3));
    EXPECT_EQ(UpperCase(""), "");
}

TEST(Text, ComparisonIgnoresCaseAndNothingElse) {
    EXPECT_TRUE(EqualsIgnoringCase("temp", "TEMP"));
    EXPECT_TRUE(EqualsIgnoringCase("\xE9t\xE9", "\xC9T\xC9"));
    EXPECT_TRUE(EqualsIgnoringCase("", ""));
    EXPECT_FALSE(EqualsIgnoringCase("temp", "temp "));
    EXPECT_FALSE(EqualsIgnoringCase("temp", "tem"));
    EXPECT_FALSE(EqualsIgnoringCase("\xF7", "\xD7"));
    EXPECT_FALSE(EqualsIgnoringCase("\xDF", "ss"));
    EXPECT_FALSE(EqualsIgnoringCase("[", "{"));
    EXPECT_FALSE(EqualsIgnoringCase("@", "`"));
    EXPECT_FALSE(EqualsIgnoringCase(std::string_view("a\0b", 3), std::string_view("a\0c", 3)));
}

TEST(Text, TrimmingTakesBlanksAtBothEndsOnly) {
    EXPECT_EQ(TrimBlanks("  a b  "), "a b");
    EXPECT_EQ(TrimBlanks("   "), "");
    EXPECT_EQ(TrimBlanks(""), "");
    EXPECT_EQ(TrimBlanks("\ta\r\n"), "\ta\r\n");
    EXPECT_EQ(TrimBlanks("\xA0x\xA0"), "\xA0x\xA0");
    EXPECT_EQ(TrimBlanks(" \t "), "\t");
}

TEST(Text, DecimalTextIsTakenApart) {
    const DecimalText number = ParseDecimalText("  -012.50e3 ");
    EXPECT_TRUE(number.Negative);
    EXPECT_EQ(number.Digits, "1250");
    EXPECT_EQ(number.Exponent, 1);
    EXPECT_EQ(ParseDecimalText("0").Digits, "");
    EXPECT_EQ(FaultOf([] { return ParseDecimalText("12x"); }), 13);
    EXPECT_EQ(FaultOf([] { return ParseDecimalText(""); }), 13);
}

TEST(Text, RoundingOfADecimalTextIsExactForAnyNumberOfDigits) {
    struct Row {
        std::string Text;
        std::int64_t Rounded;
    };
    const std::string zeros(60, '0');
    const std::string nines(60, '9');
    for (const Row& row : {Row{"2.5", 2},
                           Row{"3.5", 4},
                           Row{"2.5" + zeros + "1", 3},
                           Row{"2.4" + nines, 2},
                           Row{"0." + zeros + "5", 0},
                           Row{"0.5", 0},
                           Row{"0.5" + zeros + "1", 1},
                           Row{zeros + "1.5", 2},
                           Row{"5e-1", 0},
                           Row{"15e-1", 2},
                           Row{"25" + zeros + "e-61", 2},
                           Row{"1" + zeros + "e-60", 1},
                           Row{"1e18", 1000000000000000000},
                           Row{"1e-1000000", 0},
                           Row{"9223372036854775806.5", 9223372036854775806}}) {
        EXPECT_EQ(RoundToWhole(ParseDecimalText(row.Text)), row.Rounded) << row.Text;
        EXPECT_EQ(RoundToWhole(ParseDecimalText("-" + row.Text)), -row.Rounded) << row.Text;
    }
}

TEST(Text, RoundingBeyondSixtyFourBitsIsAnOverflow) {
    using Limits = std::numeric_limits<std::int64_t>;
    EXPECT_EQ(RoundToWhole(ParseDecimalText("9223372036854775807.4")), Limits::max());
    EXPECT_EQ(RoundToWhole(ParseDecimalText("-9223372036854775808.5")), Limits::min());
    for (const char* text : {"9223372036854775807.5",
                             "9223372036854775808",
                             "1e19",
                             "1e999999999",
                             "-9223372036854775809",
                             "-9223372036854775808.51"}) {
        EXPECT_EQ(FaultOf([&] { return RoundToWhole(ParseDecimalText(text)); }), 6) << text;
    }
}

TEST(Text, RoundingOfADoubleIsHalfToEven) {
    EXPECT_EQ(RoundToWhole(0.5), 0);
    EXPECT_EQ(RoundToWhole(1.5), 2);
    EXPECT_EQ(RoundToWhole(2.5), 2);
    EXPECT_EQ(RoundToWhole(-0.5), 0);
    EXPECT_EQ(RoundToWhole(-1.5), -2);
    EXPECT_EQ(RoundToWhole(-2.5), -2);
    EXPECT_EQ(RoundToWhole(0.49999999999999994), 0);
    EXPECT_EQ(RoundToWhole(4503599627370497.5), 4503599627370498);
    EXPECT_EQ(RoundToWhole(-9223372036854775808.0), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(FaultOf([] { return RoundToWhole(9223372036854775808.0); }), 6);
    EXPECT_EQ(FaultOf([] { return RoundToWhole(std::nan("")); }), 6);
    EXPECT_EQ(FaultOf([] { return RoundToWhole(std::numeric_limits<double>::infinity()); }), 6);
}

TEST(Text, NearestDoubleOfADecimalText) {
    EXPECT_EQ(NearestDouble(ParseDecimalText("0.1")), 0.1);
    EXPECT_EQ(NearestDouble(ParseDecimalText("-123.456e-7")), -123.456e-7);
    EXPECT_EQ(NearestDouble(ParseDecimalText("9007199254740993.0000000000000001")),
              9007199254740994.0);
    EXPECT_EQ(FaultOf([] { return NearestDouble(ParseDecimalText("1e309")); }), 6);
    EXPECT_EQ(NearestDouble(ParseDecimalText("1e-400")), 0.0);
}

TEST(Text, LeadingNumberStopsAtWhatCannotBelongToIt) {
    struct Row {
        std::string_view Text;
        double Value;
    };
    for (const Row& row :
         {Row{"12", 12},     Row{"12abc", 12}, Row{"1e5x", 1e5}, Row{"1e", 1},     Row{"1e+", 1},
          Row{"1e+x", 1},    Row{"2E-1", 0.2}, Row{".5", 0.5},   Row{"5.", 5},     Row{"5.e1", 50},
          Row{"1.2.3", 1.2}, Row{"+3", 3},     Row{"-3", -3},    Row{"-.5e1", -5}, Row{"--3", 0},
          Row{"+-3", 0},     Row{".", 0},      Row{"-", 0},      Row{"-.", 0},     Row{"e5", 0},
          Row{".e5", 0},     Row{"", 0},       Row{"abc", 0},    Row{" 1", 0},     Row{"0x10", 0},
          Row{"&H10", 0},    Row{"1,5", 1},    Row{"inf", 0},    Row{"nan", 0},    Row{"1\t2", 1},
          Row{"007", 7},     Row{"1-2", 1},    Row{"1e-400", 0}}) {
        EXPECT_EQ(LeadingNumber(row.Text), row.Value) << row.Text;
    }
}

TEST(Text, LeadingHexNumberTakesDigitsOnly) {
    struct Row {
        std::string_view Text;
        std::uint32_t Value;
    };
    for (const Row& row : {Row{"1F", 31},
                           Row{"1fz", 31},
                           Row{"G", 0},
                           Row{"", 0},
                           Row{"-1", 0},
                           Row{"+1", 0},
                           Row{"0x1F", 0},
                           Row{"&HFF", 0},
                           Row{" 1F", 0},
                           Row{"1 F", 1},
                           Row{"FFFFFFFF", 4294967295U},
                           Row{"00000000000000000000000000000012", 18},
                           Row{"ABCDEF", 0xABCDEF},
                           Row{"abcdef", 0xABCDEF},
                           Row{"1.5", 1}}) {
        EXPECT_EQ(LeadingHexNumber(row.Text), row.Value) << row.Text;
    }
    EXPECT_EQ(FaultOf([] { return LeadingHexNumber("100000000"); }), 6);
    EXPECT_EQ(FaultOf([] { return LeadingHexNumber("FFFFFFFFFFFFFFFFFFFFFFFF"); }), 6);
}

}  // namespace
}  // namespace hexmire
