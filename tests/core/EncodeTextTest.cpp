#include "../fakes/Messages.h"
#include "../fakes/RecordingSite.h"
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

// Text items, and items of any format, which travel as text (SEMI E5, item encoding).

namespace hexmire {
namespace {

using namespace fakes;

using Variants = std::vector<Variant>;
using Bytes8 = std::vector<std::uint8_t>;

/// What a text item made of this value holds, behind its header; the header is checked.
std::string SentText(std::int32_t format, const Variant& value) {
    const SECSMessagePtr message = MessageOf(format, value);
    const std::vector<std::uint8_t> bytes = EncodeBody(*message);
    if (bytes.size() < 2 || bytes[0] != 0x41 || bytes[1] != bytes.size() - 2) {
        return "no short text item: " + HexOf(bytes);
    }
    return {bytes.begin() + 2, bytes.end()};
}

TEST(EncodeAscii, TextGoesOutCharacterByCharacter) {
    EXPECT_EQ(EncodedHex(FormatAscii, "ABC"), "41 03 41 42 43");
    EXPECT_EQ(EncodedHex(FormatAscii, ""), "41 00");
    EXPECT_EQ(EncodedHex(FormatAscii, " "), "41 01 20");
    EXPECT_EQ(EncodedHex(FormatAscii, std::string("a\0b", 3)), "41 03 61 00 62");
    EXPECT_EQ(EncodedHex(FormatAscii, "\xE4\xFF\x80"), "41 03 E4 FF 80");
    EXPECT_EQ(EncodedHex(FormatAscii, "'\"<>"), "41 04 27 22 3C 3E");
    EXPECT_EQ(EncodedHex(FormatAscii, "\r\n"), "41 02 0D 0A");
}

TEST(EncodeAscii, LengthBytesGrowAt256And65536Characters) {
    const auto start = [](std::size_t size) {
        const std::string hex = EncodedHex(FormatAscii, std::string(size, 'x'));
        EXPECT_TRUE(hex.ends_with("78 78"));
        return hex.substr(0, 14);
    };
    EXPECT_EQ(start(255), "41 FF 78 78 78");
    EXPECT_EQ(start(256), "42 01 00 78 78");
    EXPECT_EQ(start(300), "42 01 2C 78 78");
    EXPECT_EQ(start(65535), "42 FF FF 78 78");
    EXPECT_EQ(start(65536), "43 01 00 00 78");
}

TEST(EncodeAscii, BeyondTwentyFourBitsOnlyTheLowLengthBytesGoOut) {
    RecordingSite site;
    const auto encode = [](std::size_t size) {
        const std::vector<std::uint8_t> bytes =
            EncodeBody(*MessageOf(FormatAscii, std::string(size, 'x')));
        EXPECT_EQ(bytes.size(), size + 4);
        EXPECT_EQ(bytes.back(), 'x');
        return HexOf(std::span(bytes).first(5));
    };
    EXPECT_EQ(encode(16777215), "43 FF FF FF 78");
    EXPECT_EQ(encode(16777216), "43 00 00 00 78");
    EXPECT_EQ(encode(16777221), "43 00 00 05 78");
    EXPECT_EQ(site.Errors, std::vector<std::string>{});
}

struct Row {
    Variant Value;
    const char* Text;
};

/// The texts that single values get, in text items and in items of any format alike.
const std::vector<Row>& ScalarTexts() {
    static const std::vector<Row> kRows = {
        {12, "12"},
        {-3, "-3"},
        {0, "0"},
        {std::uint8_t{255}, "255"},
        {std::int16_t{-32768}, "-32768"},
        {std::numeric_limits<std::int32_t>::min(), "-2147483648"},
        {18446744073709551615ULL, "18446744073709551615"},
        {std::numeric_limits<std::int64_t>::min(), "-9223372036854775808"},
        {true, "True"},
        {false, "False"},
        {1.5, "1.5"},
        {-0.25, "-0.25"},
        {0.1F, "0.1"},
        {0.1, "0.1"},
        {-0.0, "0"},
        {1e14, "100000000000000"},
        {1e15, "1E+15"},
        {123456789012345.0, "123456789012345"},
        {1.5e300, "1.5E+300"},
        {0.00001, "0.00001"},
        {0.000001, "1E-06"},
        {1.25e-7, "1.25E-07"},
        {std::numeric_limits<double>::infinity(), "INF"},
        {-std::numeric_limits<float>::infinity(), "-INF"},
        {std::numeric_limits<double>::quiet_NaN(), "NaN"},
        {5e-324, "5E-324"},
        {"text stays", "text stays"},
        {" 7 ", " 7 "},
        {Decimal::FromDigits(false, "10", -2), "0.1"},
        {Decimal::FromDigits(true, "1250", -2), "-12.5"},
    };
    return kRows;
}

TEST(EncodeAscii, NumbersAndBooleansBecomeText) {
    RecordingSite site;
    for (const Row& row : ScalarTexts()) {
        EXPECT_EQ(SentText(FormatAscii, row.Value), row.Text);
    }
    EXPECT_EQ(site.Errors, std::vector<std::string>{});
}

TEST(EncodeAscii, AnArrayOrObjectIsNoTextAndLeavesNoBytes) {
    RecordingSite site;
    const std::string mismatch = "13 (SECSMessage-lBuildSECSMessage) Type mismatch";
    const std::string notSupported =
        "438 (SECSMessage-lBuildSECSMessage) Object doesn't support this property or method";
    const std::string notSet =
        "91 (SECSMessage-lBuildSECSMessage) Object variable or With block variable not set";
    const std::vector<std::pair<Variant, std::string>> rows = {
        {Bytes8{65, 66}, mismatch},
        {std::vector<std::int32_t>{1}, mismatch},
        {Variants{"a", "b"}, mismatch},
        {Bytes8{}, mismatch},
        {std::vector<bool>{true}, mismatch},
        {New<SECSItem>(), notSupported},
        {SECSItemPtr(), notSet},
    };
    for (const auto& [value, error] : rows) {
        site.Errors.clear();
        EXPECT_EQ(EncodedBeforeSibling(FormatAscii, value), "01 02 A5 01 07");
        EXPECT_EQ(site.Errors, std::vector<std::string>{error});
    }
}

TEST(EncodeAnyFormat, SingleValuesAreSentAsTheirText) {
    RecordingSite site;
    for (const Row& row : ScalarTexts()) {
        EXPECT_EQ(SentText(FormatVar, row.Value), row.Text);
    }
    EXPECT_EQ(EncodedHex(FormatVar, 12), "41 02 31 32");
    EXPECT_EQ(EncodedHex(FormatVar, ""), "41 00");
    EXPECT_EQ(site.Errors, std::vector<std::string>{});
}

TEST(EncodeAnyFormat, AnArrayOfBytesIsSentAsHexInBrackets) {
    RecordingSite site;
    EXPECT_EQ(SentText(FormatVar, Bytes8{1, 255}), "[ 01 FF ]");
    EXPECT_EQ(SentText(FormatVar, Bytes8{1, 10, 255}), "[ 01 0A FF ]");
    EXPECT_EQ(SentText(FormatVar, Bytes8{0}), "[ 00 ]");
    EXPECT_EQ(SentText(FormatVar, Variants{std::uint8_t{1}, 10, 255.0}), "[ 01 0A FF ]");
    EXPECT_EQ(SentText(FormatVar, Variants{std::uint8_t{16}, "17"}), "[ 10 11 ]");
    EXPECT_EQ(site.Errors, std::vector<std::string>{});
}

TEST(EncodeAnyFormat, ALowerBoundLeavesTheDumpsTrailingBlanks) {
    RecordingSite site;
    EXPECT_EQ(SentText(FormatVar, ArrayOf(Bytes8{1, 255}, 1)), "[ 01 FF    ]");
    EXPECT_EQ(SentText(FormatVar, ArrayOf(Variants{std::uint8_t{1}, "2"}, 2)), "[ 01 02       ]");
    EXPECT_EQ(SentText(FormatVar, ArrayOf(std::vector<std::int32_t>{1, 2}, 1)), "[ 1, 2 ]");
    EXPECT_EQ(SentText(FormatVar, ArrayOf(std::vector<double>{0.5}, -3)), "[ 0.5 ]");
    EXPECT_EQ(site.Errors, std::vector<std::string>{});
}

TEST(EncodeAnyFormat, AnyOtherArrayIsSentAsItsElementsTexts) {
    RecordingSite site;
    EXPECT_EQ(SentText(FormatVar, std::vector<std::int32_t>{1, 2, 3}), "[ 1, 2, 3 ]");
    EXPECT_EQ(SentText(FormatVar, std::vector<std::int16_t>{-1}), "[ -1 ]");
    EXPECT_EQ(SentText(FormatVar, std::vector<bool>{true, false}), "[ True, False ]");
    EXPECT_EQ(SentText(FormatVar, std::vector<double>{0.5, 1e20}), "[ 0.5, 1E+20 ]");
    EXPECT_EQ(SentText(FormatVar, std::vector<float>{0.1F, -0.0F}), "[ 0.1, 0 ]");
    EXPECT_EQ(SentText(FormatVar, std::vector<Decimal>{Decimal::FromUInt64(~0ULL)}),
              "[ 18446744073709551615 ]");
    EXPECT_EQ(SentText(FormatVar, Variants{"a", 1, true}), "[ a, 1, True ]");
    EXPECT_EQ(SentText(FormatVar, Variants{1, std::uint8_t{2}}), "[ 1, 2 ]");
    EXPECT_EQ(SentText(FormatVar, Variants{1, Variant(), 3}), "[ 1, , 3 ]");
    EXPECT_EQ(SentText(FormatVar, Variants{Variant(), std::uint8_t{1}}), "[ , 1 ]");
    EXPECT_EQ(SentText(FormatVar, Variants{""}), "[  ]");
    EXPECT_EQ(SentText(FormatVar, Variants{" a ", "b,"}), "[  a , b, ]");
    EXPECT_EQ(site.Errors, std::vector<std::string>{});
}

TEST(EncodeAnyFormat, AnEmptyArrayGivesOneBoundsFaultAndEmptyBrackets) {
    RecordingSite site;
    EXPECT_EQ(SentText(FormatVar, std::vector<std::int32_t>{}), "[  ]");
    EXPECT_EQ(SentText(FormatVar, Bytes8{}), "[  ]");
    EXPECT_EQ(site.Errors,
              std::vector<std::string>(2, "9 (ModGeneral-IsByteArray) Subscript out of range"));
}

TEST(EncodeAnyFormat, AnElementWithoutTextLeavesNoBytes) {
    RecordingSite site;
    const std::vector<std::pair<Variant, std::string>> rows = {
        {Variants{1, Variant::Null()}, "94 (SECSMessage-lBuildSECSMessage) Invalid use of Null"},
        {Variants{1, Bytes8{1}}, "13 (SECSMessage-lBuildSECSMessage) Type mismatch"},
        {Variants{New<SECSItem>()},
         "438 (SECSMessage-lBuildSECSMessage) Object doesn't support this property or method"},
        {New<SECSItem>(),
         "438 (SECSMessage-lBuildSECSMessage) Object doesn't support this property or method"},
    };
    for (const auto& [value, error] : rows) {
        site.Errors.clear();
        EXPECT_EQ(EncodedBeforeSibling(FormatVar, value), "01 02 A5 01 07");
        EXPECT_EQ(site.Errors, std::vector<std::string>{error});
    }
}

TEST(EncodeAnyFormat, ADumpThatFaultsIsReportedInItsOwnNameAndTheItemGoesOn) {
    RecordingSite site;
    const std::string hex = EncodedBeforeSibling(FormatVar, Variants{std::uint8_t{1}, 256});
    EXPECT_EQ(site.Errors, std::vector<std::string>{"6 (ModGeneral-HexDumpArray) Overflow"});
    EXPECT_EQ(hex, "01 02 41 04 5B 20 20 5D A5 01 07");
}

TEST(EncodeAnyFormat, TheItemItselfKeepsItsFormatAndValue) {
    const SECSMessagePtr message = MessageOf(FormatVar, 12);
    EXPECT_EQ(EncodedHex(message), "41 02 31 32");
    const SECSItemPtr item = Body(message);
    EXPECT_EQ(item->Format(), FormatVar);
    EXPECT_TRUE(item->Value() == Variant(12));
    EXPECT_EQ(item->Length(), 2);
    EXPECT_EQ(item->NLB(), 1);
    EXPECT_TRUE(item->Raw() == Variant(Bytes8{0x31, 0x32}));
}

TEST(EncodeAnyFormat, LongTextsTakeMoreLengthBytes) {
    EXPECT_EQ(EncodedHex(FormatVar, std::string(256, '7')).substr(0, 14), "42 01 00 37 37");
    const std::string hex = EncodedHex(FormatVar, Bytes8(100, 0xAB));
    EXPECT_EQ(hex.substr(0, 17), "42 01 2F 5B 20 41");
}

}  // namespace
}  // namespace hexmire
