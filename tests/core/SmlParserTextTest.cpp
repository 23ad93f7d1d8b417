#include "SmlParsing.h"

// Text items: quoted pieces and bytes, quotes inside texts, and the texts that only the renderer's
// layout delimits.

namespace hexmire {
namespace {

using namespace fakes;

/// The text of the item in "S1F1 <item>.", or the error.
std::string TextOf(const std::string& item) {
    const std::string text = "S1F1 " + item + ".";
    const ParsedSml parsed = ParseExact(text);
    if (parsed.Message == nullptr) return SmlErrorOf(text);
    return std::string(Body(parsed.Message)->Value().Text());
}

std::string AllCharacters() {
    std::string all;
    for (int code = 0; code < 256; ++code)
        all.push_back(static_cast<char>(code));
    return all;
}

TEST(SmlParserText, EitherQuote) {
    EXPECT_EQ(TextOf("<A 'abc'>"), "abc");
    EXPECT_EQ(TextOf("<A \"abc\">"), "abc");
    EXPECT_EQ(TextOf("< A \"it's\" >"), "it's");
    EXPECT_EQ(TextOf("<A 'say \"yes\"'>"), "say \"yes\"");
    EXPECT_EQ(TextOf("<A '  x  '>"), "  x  ");
    EXPECT_EQ(TextOf("<A 'a\\n\\x41'>"), "a\\n\\x41");
}

TEST(SmlParserText, PiecesAndBytesMakeOneText) {
    EXPECT_EQ(TextOf("< A 'abc' 0x0D 0x0A \"def\" >"), "abc\r\ndef");
    EXPECT_EQ(TextOf("<A 0x27 0X22 0x3E>"), "'\">");
    EXPECT_EQ(TextOf("<A 'a'\n 'b' // two\n \"c\" /* three */ 0x0>"), std::string("abc\0", 4));
    EXPECT_EQ(TextOf("<A '' \"\" 0x7>"), "\x07");
}

TEST(SmlParserText, EveryCharacterCanBeSaidAsAByte) {
    std::string item = "<A";
    for (const char character : AllCharacters()) {
        constexpr const char* kDigits = "0123456789abcdef";
        const auto code = static_cast<std::uint8_t>(character);
        item += std::string(" 0x") + kDigits[code / 16U] + kDigits[code % 16U];
    }
    EXPECT_EQ(TextOf(item + ">"), AllCharacters());
}

TEST(SmlParserText, PartsThatAreNoneAreErrors) {
    EXPECT_EQ(TextOf("<A abc>"),
              "1:9 expected a quoted text or a byte from 0x00 to 0xFF, found "
              "\"abc\"");
    EXPECT_EQ(TextOf("<A 65>"),
              "1:9 expected a quoted text or a byte from 0x00 to 0xFF, found \"65\"");
    EXPECT_EQ(TextOf("<A 0x100>"),
              "1:9 expected a quoted text or a byte from 0x00 to 0xFF, found \"0x100\"");
    EXPECT_EQ(TextOf("<A 0xg1>"),
              "1:9 expected a quoted text or a byte from 0x00 to 0xFF, found \"0xg1\"");
    EXPECT_EQ(TextOf("<A <"),
              "1:9 expected a quoted text, a byte such as 0x0D or \">\", found "
              "\"<\"");
    EXPECT_EQ(TextOf("<A \"abc\"d>"), "1:14 expected a blank or \">\", found \"d\"");
    EXPECT_EQ(TextOf("<A 0x41'b'>"), "1:13 expected a blank or \">\", found \"'\"");
}

TEST(SmlParserText, APieceEndsInItsLine) {
    EXPECT_EQ(TextOf("<A 'abc>\n"), "1:14 expected a closing \"'\", found the end of the line");
    EXPECT_EQ(TextOf("<A \"abc>\r\n\">"),
              "1:14 expected a closing '\"', found the end of the line");
    EXPECT_EQ(TextOf("<L <A 'abc> <A 'def'>>"), "1:18 expected a closing \"'\", found \"<\"");
    EXPECT_EQ(TextOf("<L <A 'abc> <A[3] 'def'>>"), "1:18 expected a closing \"'\", found \"<\"");
    EXPECT_EQ(TextOf("<L <A 'abc> < a [3] ' def'>>"), "1:18 expected a closing \"'\", found \"<\"");
}

TEST(SmlParserText, SingleQuotesInsideAPiece) {
    EXPECT_EQ(TextOf("<A 'it's'>"), "it's");
    EXPECT_EQ(TextOf("<A 'a''b'>"), "a''b");
    EXPECT_EQ(TextOf("<A ''>"), "");
    EXPECT_EQ(TextOf("<A '''>"), "'");
    EXPECT_EQ(TextOf("< A 'a' > b' >"), "a' > b");
    EXPECT_EQ(TextOf("< A 'it's' 0x41 >"), "it'sA");
    EXPECT_EQ(SmlHex("<L <A 'a'> <A 'b'>>"), "01 02 41 01 61 41 01 62");
    EXPECT_EQ(SmlHex("<L <A 'a'><A 'b'>>"), "01 02 41 01 61 41 01 62");
}

// --- As the renderer writes it

TEST(SmlParserText, EveryCharacterSurvivesRendering) {
    for (int code = 0; code < 256; ++code) {
        const std::string one(1, static_cast<char>(code));
        EXPECT_EQ(TextThroughSml(one), one) << code;
        EXPECT_EQ(TextThroughSml("a" + one + one + "b"), "a" + one + one + "b") << code;
    }
    EXPECT_EQ(TextThroughSml(AllCharacters()), AllCharacters());
}

TEST(SmlParserText, QuotesBracketsAndLineBreaksSurviveRendering) {
    for (const std::string text : {"'",
                                   "it's",
                                   "''",
                                   "' >",
                                   "a' > b",
                                   "a' > . b",
                                   "a' > < A 'b",
                                   "two\r\nlines",
                                   "quote at a line's end'\r\n",
                                   "' >\r\n",
                                   "' >\r\n.x",
                                   "' >\r\n\r\n.",
                                   "' >\n.",
                                   "x' >\r\n >",
                                   "x' >\r\n < A 'y",
                                   "S1F1 W\r\n< L \r\n  < A 'z' >\r\n >\r\n. ",
                                   "\"",
                                   "0x41",
                                   "'0x41'",
                                   "/* */ // *"}) {
        EXPECT_EQ(TextThroughSml(text), text);
    }
}

TEST(SmlParserText, InsideAListTheLineThatFollowsTellsTheEnd) {
    for (const std::string text : {"two\r\nlines",
                                   "' >\r\n.",
                                   "' >\r\n< A 'too far left' >",
                                   "' >\r\n  < Z ",
                                   "' >\r\n    < A 'too far right",
                                   "' >\r\n  >",
                                   "' >\r\n > "}) {
        const SECSMessagePtr message = MessageOf(FormatList);
        AddItem(Body(message), FormatAscii, text);
        AddItem(Body(message), FormatAscii, "next");
        AddItem(AddItem(Body(message), FormatList), FormatAscii, "last\r\n");
        AddItem(Body(message), FormatList);
        const std::string sml = RenderSml(*message, true);
        const ParsedSml parsed = ParseExact(sml);
        ASSERT_EQ(parsed.Error, "") << sml;
        EXPECT_EQ(EncodedHex(parsed.Message), EncodedHex(message)) << sml;
    }
}

TEST(SmlParserText, TextOfAnyFormatIsReadAsItStands) {
    for (const std::string text : {"x",
                                   " x ",
                                   "'x'",
                                   "[ 01 0A ]",
                                   "[ 1, 2 ]",
                                   "a > b",
                                   "two\r\nlines",
                                   " >\r\n",
                                   "/* no comment */"}) {
        const SECSMessagePtr message = MessageOf(FormatVar, text);
        const ParsedSml parsed = ParseExact(RenderSml(*message, false));
        ASSERT_EQ(parsed.Error, "") << text;
        EXPECT_EQ(Body(parsed.Message)->Format(), FormatVar);
        EXPECT_EQ(Show(Body(parsed.Message)->Value()), "String '" + text + "'");
    }
    EXPECT_EQ(ShowSmlValue("<V abc>"), "String 'abc'");
    EXPECT_EQ(ShowSmlValue("< V  a > b  >"), "String ' a > b '");
    EXPECT_EQ(ShowSmlValue("<V [2] x>"), "String '[2] x'");
    EXPECT_EQ(ShowSmlValue("< V >"), "Empty");
    EXPECT_EQ(ShowSmlValue("< V  >"), "Empty");
    EXPECT_EQ(ShowSmlValue("<V 'x"), "1:12 expected \">\", found the end of the text");
    EXPECT_EQ(ShowSmlValue("<V'x'>"), "1:8 expected a blank or \">\", found \"'\"");
    EXPECT_EQ(ShowSmlValue("<V/* x */>"), "1:8 expected a blank or \">\", found \"/\"");
}

TEST(SmlParserText, PartsInTheRenderersLayoutAreReadAsParts) {
    const std::string sml =
        "S1F1\r\n< L \r\n  < A 'abc' 0x0D 0x0A \"def\" >\r\n  < A 'x' >\r\n >\r\n.";
    const ParsedSml parsed = ParseExact(sml);
    ASSERT_EQ(parsed.Error, "");
    EXPECT_EQ(EncodedHex(parsed.Message), "01 02 41 08 61 62 63 0D 0A 64 65 66 41 01 78");
}

TEST(SmlParserText, ATextThatCouldAlsoBePartsIsRefused) {
    constexpr const char* kAmbiguous =
        ":5 expected a text that can be read in one way only, found quotes that may be part of it";
    EXPECT_EQ(SmlErrorOf("S1F1\r\n< A 'a' 0x41 'b' >\r\n."), std::string("2") + kAmbiguous);
    EXPECT_EQ(TextThroughSml("a' 'b"), std::string("error: ") + (kAmbiguous + 3));
    EXPECT_EQ(TextOf("< A 'a' 0x41 'b' >"), "aAb");
    EXPECT_EQ(SmlErrorOf("S1F1\r\n< A \"a\" 0x41 'b' >\r\n."), "");
    EXPECT_EQ(SmlErrorOf("S1F1\n< A 'a' 0x41 'b' >\n."), "");
}

TEST(SmlParserText, ALineBreakIsPartOfATextOnlyInTheRenderersLayout) {
    const std::string item = "< A 'two\r\nlines' >\r\n.";
    EXPECT_EQ(SmlErrorOf("S1F1\r\n" + item), "");
    EXPECT_EQ(SmlErrorOf("// a comment\r\nS1F1\r\n" + item), "");
    EXPECT_EQ(SmlErrorOf("S1F1\n" + item),
              "2:9 expected a closing \"'\", found the end of the line");
    EXPECT_EQ(SmlErrorOf("s1f1\r\n" + item),
              "2:9 expected a closing \"'\", found the end of the line");
    EXPECT_EQ(SmlErrorOf("S1F1\r\n " + item),
              "2:10 expected a closing \"'\", found the end of the line");
    const auto behindList = [](const std::string& indent) {
        return "S1F1\r\n< L \r\n  < L \r\n    < U1 1 >\r\n" + indent +
               " >\r\n  < A 'two\r\nlines' >\r\n >\r\n.";
    };
    EXPECT_EQ(SmlErrorOf(behindList("  ")), "");
    EXPECT_EQ(SmlErrorOf(behindList("\t\t")),
              "6:11 expected a closing \"'\", found the end of the line");
}

}  // namespace
}  // namespace hexmire
