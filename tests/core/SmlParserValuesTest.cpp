#include "../fakes/CommaLocale.h"
#include "SmlParsing.h"

// Every format's elements, the kinds they become, and the numbers that a format cannot hold.

namespace hexmire {
namespace {

using namespace fakes;

TEST(SmlParserValues, HaveTheKindsThatDecodingGives) {
    const std::vector<std::string> items{"<B 1>",
                                         "<B 1 0xFF>",
                                         "<BOOL T>",
                                         "<BOOL T F>",
                                         "<A 'x'>",
                                         "<A 'xyz'>",
                                         "<I1 -1>",
                                         "<I1 -1 1>",
                                         "<I2 -300>",
                                         "<I2 -300 300>",
                                         "<I4 -70000>",
                                         "<I4 -70000 1>",
                                         "<I8 -5>",
                                         "<I8 -5 5>",
                                         "<U1 255>",
                                         "<U1 255 0>",
                                         "<U2 65535>",
                                         "<U2 65535 0>",
                                         "<U4 4294967295>",
                                         "<U4 4294967295 0>",
                                         "<U8 5>",
                                         "<U8 5 6>",
                                         "<F4 0.1>",
                                         "<F4 0.1 2>",
                                         "<F8 0.1>",
                                         "<F8 0.1 2>",
                                         "<V x>",
                                         "<V xyz>",
                                         "<B>",
                                         "<BOOL>",
                                         "<A>",
                                         "<A ''>",
                                         "<I1>",
                                         "<U4>",
                                         "<F8>",
                                         "<V>",
                                         "<I4 1 2 3 4 5>",
                                         "<B 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17>"};
    for (const std::string& item : items) {
        const ParsedSml parsed = ParseSml("S1F1 " + item + ".");
        ASSERT_EQ(parsed.Error, "") << item;
        const DecodedItem decoded = DecodeItem(EncodeBody(*parsed.Message));
        EXPECT_EQ(ShowSmlValue(item), Show(decoded.Item->Value())) << item;
    }
}

TEST(SmlParserValues, Booleans) {
    EXPECT_EQ(ShowSmlValue("<BOOL TRUE>"), "Boolean True");
    EXPECT_EQ(ShowSmlValue("<BOOL t f True fAlSe>"), "Boolean[True, False, True, False]");
    EXPECT_EQ(ShowSmlValue("<BOOL 1>"), "1:12 expected TRUE or FALSE, found \"1\"");
    EXPECT_EQ(ShowSmlValue("<BOOL TRUEFALSE>"), "1:12 expected TRUE or FALSE, found \"TRUEFALSE\"");
}

TEST(SmlParserValues, Bytes) {
    EXPECT_EQ(ShowSmlValue("<B 0x0A 0XfF 0x0 255 007>"), "Byte[10, 255, 0, 255, 7]");
    for (const std::string word : {"256", "-1", "0x100", "1.5", "0x", "0xG", "FF", "T"}) {
        EXPECT_EQ(ShowSmlValue("<B " + word + ">"),
                  "1:9 expected a byte from 0x00 to 0xFF, found \"" + word + "\"");
    }
}

TEST(SmlParserValues, WholeNumbersAtTheirLimits) {
    EXPECT_EQ(ShowSmlValue("<I1 -128 127 +5 0x7F -0x80>"), "Long[-128, 127, 5, 127, -128]");
    EXPECT_EQ(ShowSmlValue("<I2 -32768 32767>"), "Long[-32768, 32767]");
    EXPECT_EQ(ShowSmlValue("<I4 -2147483648 2147483647>"), "Long[-2147483648, 2147483647]");
    EXPECT_EQ(ShowSmlValue("<I8 -9223372036854775808 9223372036854775807>"),
              "Decimal[-9223372036854775808, 9223372036854775807]");
    EXPECT_EQ(ShowSmlValue("<U1 0 255 -0>"), "Long[0, 255, 0]");
    EXPECT_EQ(ShowSmlValue("<U2 65535>"), "Long 65535");
    EXPECT_EQ(ShowSmlValue("<U4 4294967295>"), "Decimal 4294967295");
    EXPECT_EQ(ShowSmlValue("<U8 18446744073709551615 0xFFFFFFFFFFFFFFFF>"),
              "Decimal[18446744073709551615, 18446744073709551615]");
}

TEST(SmlParserValues, WholeNumbersBeyondTheirLimitsAreErrors) {
    const auto refused = [](const std::string& format, const std::string& word) {
        const std::string shown = ShowSmlValue("<" + format + " 0 " + word + ">");
        const std::string start = "1:" + std::to_string(10 + format.size()) + " expected a whole";
        return shown.starts_with(start) && shown.ends_with(", found \"" + word + "\"");
    };
    EXPECT_TRUE(refused("I1", "-129"));
    EXPECT_TRUE(refused("I1", "128"));
    EXPECT_TRUE(refused("I1", "0xFF"));
    EXPECT_TRUE(refused("I2", "-32769"));
    EXPECT_TRUE(refused("I2", "32768"));
    EXPECT_TRUE(refused("I4", "-2147483649"));
    EXPECT_TRUE(refused("I4", "2147483648"));
    EXPECT_TRUE(refused("I8", "-9223372036854775809"));
    EXPECT_TRUE(refused("I8", "9223372036854775808"));
    EXPECT_TRUE(refused("U1", "256"));
    EXPECT_TRUE(refused("U1", "-1"));
    EXPECT_TRUE(refused("U2", "65536"));
    EXPECT_TRUE(refused("U4", "4294967296"));
    EXPECT_TRUE(refused("U8", "18446744073709551616"));
    EXPECT_TRUE(refused("U8", "-1"));
    EXPECT_TRUE(refused("U8", "0x10000000000000000"));
    EXPECT_TRUE(refused("U8", "1E+20"));
    EXPECT_TRUE(refused("U8", "1E+999999999999"));
}

TEST(SmlParserValues, FractionsAreNoWholeNumbers) {
    EXPECT_EQ(ShowSmlValue("<I4 1.5>"),
              "1:10 expected a whole number from -2147483648 to 2147483647, found \"1.5\"");
    for (const std::string word : {"0.1", "1e-1", "1.", ".5", "1e", "e5", "+", "--1", "1,5", "x"}) {
        const std::string shown = ShowSmlValue("<U1 " + word + ">");
        if (word == "1.") {
            EXPECT_EQ(shown, "Long 1");
        } else {
            EXPECT_EQ(shown, "1:10 expected a whole number from 0 to 255, found \"" + word + "\"");
        }
    }
}

TEST(SmlParserValues, WholeNumbersMayHaveAnExponent) {
    EXPECT_EQ(ShowSmlValue("<U8 1E+15 1.25e2 100.00 2500e-2>"),
              "Decimal[1000000000000000, 125, 100, 25]");
    EXPECT_EQ(ShowSmlValue("<U8 1.8446744073709551615E+19>"), "Decimal 18446744073709551615");
    EXPECT_EQ(ShowSmlValue("<I1 0e999999999999999999999>"), "Long 0");
}

TEST(SmlParserValues, FloatingPointNumbers) {
    EXPECT_EQ(ShowSmlValue("<F4 1 -2.5 1E+10 +.5 5. 0.1>"), "Single[1, -2.5, 1e+10, 0.5, 5, 0.1]");
    EXPECT_EQ(ShowSmlValue("<F8 NaN inf -INF +Inf>"), "Double[nan, inf, -inf, inf]");
    EXPECT_EQ(ShowSmlValue("<F8 -0>"), "Double -0");
    EXPECT_EQ(ShowSmlValue("<F8 4.9406564584124654E-324 1.7976931348623157E+308>"),
              "Double[5e-324, 1.7976931348623157e+308]");
    EXPECT_EQ(SmlHex("<F4 3.4028235E+38 1E-45 NaN>"), "91 0C 7F 7F FF FF 00 00 00 01 7F C0 00 00");
}

TEST(SmlParserValues, FloatingPointNumbersBeyondTheirRangeAreErrors) {
    for (const std::string word : {"1e39",
                                   "-1e39",
                                   "3.4028236e38",
                                   "1e-46",
                                   "1e999999999999",
                                   "0x10",
                                   "1e",
                                   "nanx",
                                   "NaN(7FC00000)",
                                   "-NaN"}) {
        EXPECT_EQ(ShowSmlValue("<F4 " + word + ">"),
                  "1:10 expected a number within the range of F4, found \"" + word + "\"");
    }
    EXPECT_EQ(ShowSmlValue("<F8 1e309>"),
              "1:10 expected a number within the range of F8, found \"1e309\"");
    EXPECT_EQ(ShowSmlValue("<F8 1e-400>"),
              "1:10 expected a number within the range of F8, found \"1e-400\"");
}

TEST(SmlParserValues, AFloatIsReadAtOnceAndNotByWayOfADouble) {
    // Halfway between two floats once it has been rounded to a double, above it before.
    EXPECT_EQ(SmlHex("<F4 1.00000005960464477540>"), "91 04 3F 80 00 01");
    EXPECT_EQ(SmlHex("<F4 7.038531E-26>"), "91 04 15 AE 43 FD");
}

TEST(SmlParserValues, ElementsStandApart) {
    EXPECT_EQ(ShowSmlValue("<U1 1\"2\">"), "1:11 expected a blank or \">\", found \"\"\"");
    EXPECT_EQ(ShowSmlValue("<U1 1\t2\r\n3/**/4>"), "Long[1, 2, 3, 4]");
    EXPECT_EQ(ShowSmlValue("<U1 'a'>"),
              "1:10 expected a whole number from 0 to 255 or \">\", found \"'\"");
}

using SmlParserWithDecimalComma = fakes::CommaLocale;

TEST_F(SmlParserWithDecimalComma, TheLocaleDoesNotMatter) {
    EXPECT_EQ(ShowSmlValue("<F8 1.5>"), "Double 1.5");
}

}  // namespace
}  // namespace hexmire
