#include "../fakes/Messages.h"
#include "../fakes/RecordingSite.h"
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

// The line of every kind of value in every format.

namespace hexmire {
namespace {

using namespace fakes;

using Texts = std::vector<std::string>;
using Bytes8 = std::vector<std::uint8_t>;
using Longs = std::vector<std::int32_t>;
using Variants = std::vector<Variant>;

/// The text of a body of one item, without the lines around it.
std::string Line(std::int32_t format, const Variant& value) {
    const std::string text = RenderSml(*MessageOf(format, value), false);
    const std::string head = "S0F1\r\n";
    const std::string tail = "\r\n.";
    if (!text.starts_with(head) || !text.ends_with(tail)) return "unexpected: " + text;
    return text.substr(head.size(), text.size() - head.size() - tail.size());
}

struct Row {
    std::int32_t Format;
    Variant Value;
    const char* Line;
};

void ExpectLines(const std::vector<Row>& rows) {
    RecordingSite site;
    for (const Row& row : rows) {
        EXPECT_EQ(Line(row.Format, row.Value), row.Line);
    }
    EXPECT_EQ(site.Errors, Texts{});
}

TEST(SmlValues, NothingShowsTheFormatOnlyAndBinaryKeepsItsBlank) {
    for (const Variant& nothing : {Variant(), Variant::Null()}) {
        ExpectLines({
            {FormatBinary, nothing, "< B  >"},
            {FormatBoolean, nothing, "< BOOL >"},
            {FormatAscii, nothing, "< A >"},
            {FormatI8, nothing, "< I8 >"},
            {FormatI1, nothing, "< I1 >"},
            {FormatI2, nothing, "< I2 >"},
            {FormatI4, nothing, "< I4 >"},
            {FormatF8, nothing, "< F8 >"},
            {FormatF4, nothing, "< F4 >"},
            {FormatU8, nothing, "< U8 >"},
            {FormatU1, nothing, "< U1 >"},
            {FormatU2, nothing, "< U2 >"},
            {FormatU4, nothing, "< U4 >"},
            {FormatVar, nothing, "< V >"},
        });
    }
}

TEST(SmlValues, AnEmptyTextIsNothingInATextItemOnly) {
    ExpectLines({
        {FormatAscii, "", "< A >"},
        {FormatVar, "", "< V  >"},
        {FormatI4, "", "< I4  >"},
    });
}

TEST(SmlValues, TextStandsBetweenSingleQuotesAsItIs) {
    ExpectLines({
        {FormatAscii, "ABC", "< A 'ABC' >"},
        {FormatAscii, " ", "< A ' ' >"},
        {FormatAscii, "it's", "< A 'it's' >"},
        {FormatAscii, "'", "< A ''' >"},
        {FormatAscii, "a\r\nb", "< A 'a\r\nb' >"},
        {FormatAscii, "> < \" \\", "< A '> < \" \\' >"},
        {FormatAscii, "\xE4\xFF", "< A '\xE4\xFF' >"},
        {FormatAscii, 12, "< A '12' >"},
        {FormatAscii, true, "< A 'True' >"},
        {FormatAscii, -0.5, "< A '-0.5' >"},
    });
    EXPECT_EQ(Line(FormatAscii, std::string("a\0b", 3)), std::string("< A 'a\0b' >", 11));
}

TEST(SmlValues, EveryCharacterIsShownAsItIs) {
    RecordingSite site;
    std::string all;
    for (int code = 0; code < 256; ++code) {
        all.push_back(static_cast<char>(code));
        const std::string one(1, all.back());
        EXPECT_EQ(Line(FormatAscii, one), "< A '" + one + "' >");
        EXPECT_EQ(Line(FormatVar, one), "< V " + one + " >");
    }
    EXPECT_EQ(Line(FormatAscii, all), "< A '" + all + "' >");
    EXPECT_EQ(site.Errors, Texts{});
}

TEST(SmlValues, BooleansAreWords) {
    ExpectLines({
        {FormatBoolean, true, "< BOOL TRUE >"},
        {FormatBoolean, false, "< BOOL FALSE >"},
        {FormatBoolean, 5, "< BOOL TRUE >"},
        {FormatBoolean, 0.0, "< BOOL FALSE >"},
        {FormatBoolean, -0.0, "< BOOL FALSE >"},
        {FormatBoolean, 0.1F, "< BOOL TRUE >"},
        {FormatBoolean, "False", "< BOOL FALSE >"},
        {FormatBoolean, "1", "< BOOL TRUE >"},
        {FormatBoolean, Decimal(), "< BOOL FALSE >"},
        {FormatBoolean, std::vector<bool>{true, false, true}, "< BOOL TRUE FALSE TRUE >"},
        {FormatBoolean, std::vector<bool>{false}, "< BOOL FALSE >"},
        {FormatBoolean, std::vector<bool>{}, "< BOOL >"},
        {FormatBoolean, Longs{0, 2}, "< BOOL FALSE TRUE >"},
        {FormatBoolean, Variants{true, "false", Variant(), 1.5}, "< BOOL TRUE FALSE FALSE TRUE >"},
    });
}

TEST(SmlValues, BinaryIsHexadecimalWithTwoDigitsAtLeast) {
    ExpectLines({
        {FormatBinary, std::uint8_t{0}, "< B 0x00 >"},
        {FormatBinary, std::uint8_t{10}, "< B 0x0A >"},
        {FormatBinary, std::uint8_t{15}, "< B 0x0F >"},
        {FormatBinary, std::uint8_t{16}, "< B 0x10 >"},
        {FormatBinary, std::uint8_t{255}, "< B 0xFF >"},
        {FormatBinary, 256, "< B 0x100 >"},
        {FormatBinary, 0x1F2, "< B 0x1F2 >"},
        {FormatBinary, 10.0, "< B 0x0A >"},
        {FormatBinary, "12", "< B 0x0C >"},
        {FormatBinary, Decimal::FromInt64(171), "< B 0xAB >"},
        {FormatBinary, Bytes8{10, 255}, "< B 0x0A 0xFF >"},
        {FormatBinary, Bytes8{0}, "< B 0x00 >"},
        {FormatBinary, Longs{1, 16}, "< B 0x01 0x10 >"},
        {FormatBinary, Variants{std::uint8_t{1}, "2", 3.0}, "< B 0x01 0x02 0x03 >"},
    });
}

TEST(SmlValues, ABinaryArrayWithLowerBoundOneKeepsTheDumpsTrailingBlanks) {
    ExpectLines({{FormatBinary, ArrayOf(Bytes8{10, 255}, 1), "< B 0x0A 0xFF      >"}});
}

TEST(SmlValues, NumbersShowTheirDefaultText) {
    ExpectLines({
        {FormatI1, -128, "< I1 -128 >"},
        {FormatI2, std::int16_t{-3}, "< I2 -3 >"},
        {FormatI4, std::numeric_limits<std::int32_t>::min(), "< I4 -2147483648 >"},
        {FormatI8, std::numeric_limits<std::int64_t>::min(), "< I8 -9223372036854775808 >"},
        {FormatU1, std::uint8_t{255}, "< U1 255 >"},
        {FormatU2, 65535, "< U2 65535 >"},
        {FormatU4, 4294967295U, "< U4 4294967295 >"},
        {FormatU8, 18446744073709551615ULL, "< U8 18446744073709551615 >"},
        {FormatF4, 1.5F, "< F4 1.5 >"},
        {FormatF4, 0.1F, "< F4 0.1 >"},
        {FormatF8, 0.1, "< F8 0.1 >"},
        {FormatU4, 12.0, "< U4 12 >"},
        {FormatU1, 1000000, "< U1 1000000 >"},
    });
}

TEST(SmlValues, AValueOfAnotherKindShowsItsOwnText) {
    ExpectLines({
        {FormatI4, "abc", "< I4 abc >"},
        {FormatI4, true, "< I4 True >"},
        {FormatU1, 1.5, "< U1 1.5 >"},
        {FormatF8, 3, "< F8 3 >"},
        {FormatU8, " 7 ", "< U8  7  >"},
    });
}

TEST(SmlValues, FloatsShowTheShortestDigitsThatReadBack) {
    const double infinity = std::numeric_limits<double>::infinity();
    ExpectLines({
        {FormatF8, 0.0, "< F8 0 >"},
        {FormatF8, -0.0, "< F8 0 >"},
        {FormatF4, -0.0F, "< F4 0 >"},
        {FormatF8, 1e14, "< F8 100000000000000 >"},
        {FormatF8, 1e15, "< F8 1E+15 >"},
        {FormatF8, -1.25e15, "< F8 -1.25E+15 >"},
        {FormatF8, 999999999999999.0, "< F8 999999999999999 >"},
        {FormatF8, 1e-5, "< F8 0.00001 >"},
        {FormatF8, 0.0000123, "< F8 0.0000123 >"},
        {FormatF8, 9.99e-6, "< F8 9.99E-06 >"},
        {FormatF8, 1e-6, "< F8 1E-06 >"},
        {FormatF8, -9.9999999999e-6, "< F8 -9.9999999999E-06 >"},
        {FormatF8, 999999999999999.9, "< F8 999999999999999.9 >"},
        {FormatF8, 1000000000000000.1, "< F8 1.0000000000000001E+15 >"},
        {FormatF8, -123456789012345.6, "< F8 -123456789012345.6 >"},
        {FormatF8, 9007199254740993.0, "< F8 9.007199254740992E+15 >"},
        {FormatF8, 2.2250738585072014e-308, "< F8 2.2250738585072014E-308 >"},
        {FormatF4, 1e-5F, "< F4 0.00001 >"},
        {FormatF4, 9.9e-6F, "< F4 9.9E-06 >"},
        {FormatF4, 1e14F, "< F4 100000000000000 >"},
        {FormatF4, 1e15F, "< F4 1E+15 >"},
        {FormatF4, 9.999999e14F, "< F4 999999900000000 >"},
        {FormatF4, 1.1754944e-38F, "< F4 1.1754944E-38 >"},
        {FormatF4, 0.3F, "< F4 0.3 >"},
        {FormatF8, static_cast<double>(0.3F), "< F8 0.30000001192092896 >"},
        {FormatF8, 1e100, "< F8 1E+100 >"},
        {FormatF8, 1.7976931348623157e308, "< F8 1.7976931348623157E+308 >"},
        {FormatF8, 5e-324, "< F8 5E-324 >"},
        {FormatF4, std::numeric_limits<float>::denorm_min(), "< F4 1E-45 >"},
        {FormatF4, std::numeric_limits<float>::max(), "< F4 3.4028235E+38 >"},
        {FormatF4, 16777216.0F, "< F4 16777216 >"},
        {FormatF8, 0.1 + 0.2, "< F8 0.30000000000000004 >"},
        {FormatF8, 1.0 / 3, "< F8 0.3333333333333333 >"},
        {FormatF8, infinity, "< F8 INF >"},
        {FormatF8, -infinity, "< F8 -INF >"},
        {FormatF8, std::numeric_limits<double>::quiet_NaN(), "< F8 NaN >"},
        {FormatF4, -std::numeric_limits<float>::quiet_NaN(), "< F4 NaN >"},
    });
}

TEST(SmlValues, ArraysShowEveryElementBehindABlank) {
    ExpectLines({
        {FormatU4, std::vector<double>{1, 2}, "< U4 1 2 >"},
        {FormatI1, Longs{-1}, "< I1 -1 >"},
        {FormatI4, Longs{}, "< I4 >"},
        {FormatF4, std::vector<float>{0.1F, -0.0F}, "< F4 0.1 0 >"},
        {FormatI8, std::vector<Decimal>{Decimal::FromInt64(-1), Decimal()}, "< I8 -1 0 >"},
        {FormatU1, Bytes8{1, 255}, "< U1 1 255 >"},
        {FormatI2, std::vector<bool>{true, false}, "< I2 True False >"},
        {FormatU2, Variants{1, "x", true, 2.5, Variant()}, "< U2 1 x True 2.5  >"},
        {FormatI2, std::vector<std::int16_t>{-7, 7}, "< I2 -7 7 >"},
    });
}

TEST(SmlValues, AnyFormatShowsTheTextThatIsSent) {
    ExpectLines({
        {FormatVar, "abc", "< V abc >"},
        {FormatVar, 12, "< V 12 >"},
        {FormatVar, true, "< V True >"},
        {FormatVar, 0.5, "< V 0.5 >"},
        {FormatVar, Bytes8{1, 255}, "< V [ 01 FF ] >"},
        {FormatVar, Longs{1, 2, 3}, "< V [ 1, 2, 3 ] >"},
        {FormatVar, Variants{"a", 1}, "< V [ a, 1 ] >"},
    });
}

TEST(SmlValues, DecodedBodiesShowWhatCame) {
    RecordingSite site;
    const auto shown = [](Bytes8 bytes) { return RenderSml(*DecodeItem(bytes).Message, true); };
    EXPECT_EQ(shown({0x61, 8, 255, 255, 255, 255, 255, 255, 255, 254}), "S0F1 W\r\n< I8 -2 >\r\n.");
    EXPECT_EQ(shown({0x91, 4, 0x3D, 0xCC, 0xCC, 0xCD}), "S0F1 W\r\n< F4 0.1 >\r\n.");
    EXPECT_EQ(shown({0x25, 2, 0, 7}), "S0F1 W\r\n< BOOL FALSE TRUE >\r\n.");
    EXPECT_EQ(shown({0x21, 1, 9}), "S0F1 W\r\n< B 0x09 >\r\n.");
    EXPECT_EQ(shown({0xFD, 2, 65, 66}), "S0F1 W\r\n< V AB >\r\n.");
    EXPECT_EQ(shown({0xFC}), "S0F1 W\r\n< V >\r\n.");
    EXPECT_EQ(shown({0x41, 0}), "S0F1 W\r\n< A >\r\n.");
    EXPECT_EQ(shown({0xB1, 8, 0, 0, 0, 1, 255, 255, 255, 255}),
              "S0F1 W\r\n< U4 1 4294967295 >\r\n.");
    EXPECT_EQ(site.Errors, Texts{});
}

}  // namespace
}  // namespace hexmire
