#include "../fakes/ErrorRecorder.h"
#include "SmlParsing.h"

// Header, items, counts, comments, the closing "." and the place of an error.

namespace hexmire {
namespace {

using namespace fakes;

TEST(SmlParser, ReadsStreamFunctionAndReplyBit) {
    const ParsedSml parsed = ParseSml("S6F11 W\r\n.");
    ASSERT_NE(parsed.Message, nullptr);
    EXPECT_EQ(parsed.Message->Stream(), 6);
    EXPECT_EQ(parsed.Message->Func(), 11);
    EXPECT_EQ(parsed.Message->Root()->ItemCount(), 0);
    EXPECT_TRUE(parsed.ReplyExpected);
    EXPECT_EQ(parsed.Name, "");
    EXPECT_EQ(parsed.Error, "");
    EXPECT_FALSE(parsed.IsIncomplete);
    EXPECT_FALSE(ParseSml("S6F11.").ReplyExpected);
}

TEST(SmlParser, ReadsTheHeadersOfTheDialects) {
    const auto header = [](std::string_view text) {
        const ParsedSml parsed = ParseExact(text);
        if (parsed.Message == nullptr) return parsed.Error;
        return parsed.Name + "|S" + std::to_string(parsed.Message->Stream()) + "F" +
               std::to_string(parsed.Message->Func()) + (parsed.ReplyExpected ? " W" : "");
    };
    EXPECT_EQ(header("'S1F1' W."), "|S1F1 W");
    EXPECT_EQ(header("\"S1F1\"."), "|S1F1");
    EXPECT_EQ(header("s127f255 w ."), "|S127F255 W");
    EXPECT_EQ(header("AreYouThere: 'S1F1' W ."), "AreYouThere|S1F1 W");
    EXPECT_EQ(header("AreYouThere:S1F1 W."), "AreYouThere|S1F1 W");
    EXPECT_EQ(header("'Are you there' : S1F1 W."), "Are you there|S1F1 W");
    EXPECT_EQ(header("S1F1: 'S1F3'."), "S1F1|S1F3");
    EXPECT_EQ(header("  \n\t S0F0 W<L>."), "|S0F0 W");
}

TEST(SmlParser, RefusesHeadersThatAreNone) {
    EXPECT_EQ(SmlErrorOf(""),
              "1:1 expected a stream and function such as S1F1, found the end of "
              "the text");
    EXPECT_EQ(SmlErrorOf("hello ."),
              "1:1 expected a stream and function such as S1F1, found \"hello\"");
    EXPECT_EQ(SmlErrorOf("S1F1W ."),
              "1:1 expected a stream and function such as S1F1, found \"S1F1W\"");
    EXPECT_EQ(SmlErrorOf("S128F1 ."), "1:2 expected a stream from 0 to 127, found \"128F1\"");
    EXPECT_EQ(SmlErrorOf("S-1F1 ."), "1:2 expected a stream from 0 to 127, found \"-1F1\"");
    EXPECT_EQ(SmlErrorOf("S1F256 ."), "1:4 expected a function from 0 to 255, found \"256\"");
    EXPECT_EQ(SmlErrorOf("S1F99999999999999999999 ."),
              "1:4 expected a function from 0 to 255, found \"99999999999999999999\"");
    EXPECT_EQ(SmlErrorOf("S1F1 X ."), "1:6 expected \"<\" or \".\", found \"X\"");
    EXPECT_EQ(SmlErrorOf(": S1F1 ."), "1:1 expected a name, found \":\"");
    EXPECT_EQ(SmlErrorOf("'S1F1\n' ."), "1:6 expected \"'\", found the end of the line");
    EXPECT_EQ(SmlErrorOf("'S1F1"), "1:6 expected \"'\", found the end of the text");
}

TEST(SmlParser, TheClosingPointIsRequiredAndTheLast) {
    EXPECT_EQ(SmlErrorOf("S1F1 W"), "1:7 expected \"<\" or \".\", found the end of the text");
    EXPECT_EQ(SmlErrorOf("S1F1\n<L>\n"), "3:1 expected \".\", found the end of the text");
    EXPECT_EQ(SmlErrorOf("S1F1\n<L>\n<L>."), "3:1 expected \".\", found \"<\"");
    EXPECT_EQ(SmlErrorOf("S1F1 . S1F2 ."), "1:8 expected the end of the text, found \"S1F2\"");
    EXPECT_EQ(SmlErrorOf("S1F1 .\r\n // the end\r\n"), "");
}

TEST(SmlParser, ReadsListsInEveryLayout) {
    const std::string expected = "01 02 01 00 01 01 A5 01 07";
    EXPECT_EQ(SmlHex("<L<L><L<U1 7>>>"), expected);
    EXPECT_EQ(SmlHex("< L < L > < L < U1 7 > > >"), expected);
    EXPECT_EQ(SmlHex("<l [2]\n <L[0]>\n <L [1]\n  <u1[1] 7>\n >\n>\n"), expected);
    EXPECT_EQ(SmlHex("\r\n< L \r\n  < L    >\r\n  < L \r\n    < U1 7 >\r\n   >\r\n >\r\n"),
              expected);
}

TEST(SmlParser, ReadsFormatNamesInAnyLetterCase) {
    EXPECT_EQ(SmlHex("<boolean T>"), "25 01 FF");
    EXPECT_EQ(SmlHex("<Bool T>"), "25 01 FF");
    EXPECT_EQ(SmlHex("<b 1>"), "21 01 01");
    EXPECT_EQ(SmlHex("<a 'x'>"), "41 01 78");
    EXPECT_EQ(SmlHex("<f4 1>"), "91 04 3F 80 00 00");
    EXPECT_EQ(SmlHex("<v x>"), "41 01 78");
    EXPECT_EQ(SmlHex("<J 'x'>"), "1:7 expected a format name, found \"J\"");
    EXPECT_EQ(SmlHex("<>"), "1:7 expected a format name, found \">\"");
    EXPECT_EQ(SmlHex("<U1x 1>"), "1:7 expected a format name, found \"U1x\"");
}

TEST(SmlParser, ChecksCounts) {
    EXPECT_EQ(SmlHex("<L [1..3] <U1[2] 1 2>>"), "01 01 A5 02 01 02");
    EXPECT_EQ(SmlHex("<A [ 0..4 ] 'abc'>"), "41 03 61 62 63");
    EXPECT_EQ(SmlHex("<A[5] 'abc' 0x0D 0x0A>"), "41 05 61 62 63 0D 0A");
    EXPECT_EQ(SmlHex("<U4[0]>"), "B1 00");
    EXPECT_EQ(SmlHex("<L [2] <L>>"), "1:9 expected 2 items, found 1");
    EXPECT_EQ(SmlHex("<A [2] 'abc'>"), "1:9 expected 2 characters, found 3");
    EXPECT_EQ(SmlHex("<U1 [2..3] 1>"), "1:10 expected 2 to 3 elements, found 1");
    EXPECT_EQ(SmlHex("<U1 [0..1] 1 2>"), "1:10 expected 0 to 1 elements, found 2");
    EXPECT_EQ(SmlHex("<U1 [x] 1>"), "1:11 expected a count such as 2 or 1..3, found \"x\"");
    EXPECT_EQ(SmlHex("<U1 [3..2] 1>"), "1:11 expected a count such as 2 or 1..3, found \"3..2\"");
    EXPECT_EQ(SmlHex("<U1 [1..] 1>"), "1:11 expected a count such as 2 or 1..3, found \"1..\"");
    EXPECT_EQ(SmlHex("<U1 [1 2] 1>"), "1:13 expected \"]\", found \"2\"");
    EXPECT_EQ(SmlHex("<U1 [999999999999] 1>"), "1:10 expected 999999999999 elements, found 1");
}

TEST(SmlParser, SkipsComments) {
    EXPECT_EQ(SmlErrorOf("/* one\n two */ S1F1 /* . */ W // <L>\n.// end"), "");
    EXPECT_EQ(SmlErrorOf("* a line of its own\nS1F1 W\n  * another <\n \t * a third >\n.\n*"), "");
    EXPECT_EQ(SmlHex("<L/*two*/<A/**/'x'/* > */><U1 1//2\n3>>"), "01 02 41 01 78 A5 02 01 03");
    EXPECT_EQ(SmlHex("<A 'a /* b */ // c'>"), "41 0E 61 20 2F 2A 20 62 20 2A 2F 20 2F 2F 20 63");
    EXPECT_EQ(SmlHex("<U1 1 * 2>"), "1:12 expected a whole number from 0 to 255, found \"*\"");
    EXPECT_EQ(SmlErrorOf("S1F1 /* ."), "1:10 expected \"*/\", found the end of the text");
}

TEST(SmlParser, ItemsThatAreNotClosedAreErrors) {
    EXPECT_EQ(SmlErrorOf("S1F1 <L"), "1:8 expected \"<\" or \">\", found the end of the text");
    EXPECT_EQ(SmlErrorOf("S1F1 <L ."), "1:9 expected \"<\" or \">\", found \".\"");
    EXPECT_EQ(SmlErrorOf("S1F1 <U1 1 <"),
              "1:12 expected a whole number from 0 to 255 or \">\", found \"<\"");
    EXPECT_EQ(SmlErrorOf("S1F1 >."), "1:6 expected \"<\" or \".\", found \">\"");
    EXPECT_EQ(SmlErrorOf("S1F1 <L> >."), "1:10 expected \".\", found \">\"");
}

TEST(SmlParser, ErrorsTellLineAndColumn) {
    EXPECT_EQ(SmlErrorOf("S1F1\r\n<L\r\n\t<U1 1>\r\n\t<U1 x>>."),
              "4:6 expected a whole number from 0 to 255, found \"x\"");
    EXPECT_EQ(SmlErrorOf("S1F1\n\n<L\n<U1 1>\n\n  ?>."),
              "6:3 expected \"<\" or \">\", found \"?\"");
    EXPECT_EQ(SmlErrorOf("S1F1\n<U1 " + std::string(40, '\x01') + ">."),
              "2:5 expected a whole number from 0 to 255, found \"????????????????????????...\"");
}

TEST(SmlParser, SaysWhetherMoreTextCouldHelp) {
    EXPECT_TRUE(ParseSml("").IsIncomplete);
    EXPECT_TRUE(ParseSml("S1F1 W\n<L\n").IsIncomplete);
    EXPECT_TRUE(ParseSml("S1F1 W\n<A 'abc").IsIncomplete);
    EXPECT_TRUE(ParseSml("S1F1 W\n<BOO").IsIncomplete);
    EXPECT_FALSE(ParseSml("S1F1 W\n<A 'abc\n>.").IsIncomplete);
    EXPECT_FALSE(ParseSml("S1F1 W\n<U1 256 ").IsIncomplete);
    EXPECT_FALSE(ParseSml("S1F1 . .\n").IsIncomplete);
}

TEST(SmlParser, ASyntaxErrorRaisesNoEvent) {
    ErrorRecorder recorder;
    EXPECT_NE(SmlErrorOf("S128F1 <L <U1 256> <Z>"), "");
    EXPECT_NE(SmlErrorOf("S1F1 <U8 18446744073709551616>."), "");
    EXPECT_EQ(SmlErrorOf("S1F1 <L <A 'x'>>."), "");
    EXPECT_EQ(recorder.Take(), ErrorRecorder::Reports{});
}

TEST(SmlParser, ListsNestToAnyDepth) {
    constexpr std::size_t kDepth = 1'000'000;
    std::string text = "S1F1 ";
    for (std::size_t level = 0; level < kDepth; ++level)
        text += "<L";
    EXPECT_EQ(ParseSml(text).Column, static_cast<std::int32_t>(text.size() + 1));
    text += std::string(kDepth, '>') + ".";
    const ParsedSml parsed = ParseSml(text);
    ASSERT_EQ(parsed.Error, "");
    const std::vector<std::uint8_t> bytes = EncodeBody(*parsed.Message);
    EXPECT_EQ(bytes.size(), 2 * kDepth);
}

TEST(SmlParser, LongTextsTakeTimeInProportion) {
    constexpr std::size_t kItems = 100'000;
    std::string oneLine = "S1F1 <L";
    std::string rendered = "S1F1\r\n< L \r\n";
    for (std::size_t item = 0; item < kItems; ++item) {
        oneLine += " <A 'it's' 0x41>";
        rendered += "  < A 'it' 0x41 \"s\" >\r\n";
    }
    EXPECT_EQ(SmlErrorOf(oneLine + ">."), "");
    EXPECT_EQ(SmlErrorOf(rendered + "  < A 'x' >\r\n >\r\n."), "");
    EXPECT_EQ(SmlErrorOf(rendered + "  < V x >\r\n >\r\n."), "");
}

TEST(SmlMessages, ReadsThemOneBehindTheOther) {
    const auto messages = ParseSmlMessages(
        "* a file\r\nAsk: S1F1 W\r\n.\r\n\r\nS1F2\r\n< L \r\n"
        "  < A 'a' > 'b' >\r\n >\r\n.S2F0 .\r\n// end\r\n");
    ASSERT_EQ(messages.size(), 3U);
    EXPECT_EQ(messages[0].Name, "Ask");
    EXPECT_EQ(EncodedHex(messages[1].Message), "01 01 41 07 61 27 20 3E 20 27 62");
    EXPECT_EQ(messages[2].Message->Stream(), 2);
}

TEST(SmlMessages, ATextThatIsTheBodyEndsBeforeTheNextMessage) {
    const auto messages = ParseSmlMessages("S1F1\r\n< A 'a'\r\n' >\r\n.\r\nS1F2\r\n.");
    ASSERT_EQ(messages.size(), 2U);
    EXPECT_EQ(EncodedHex(messages[0].Message), "41 04 61 27 0D 0A");
}

TEST(SmlMessages, APointAtTheBeginningOfALineOfATextEndsNoMessage) {
    const auto messages = ParseSmlMessages("S1F1\r\n< A 'a' >\r\n.b' >\r\n.\r\nS1F2\r\n.");
    ASSERT_EQ(messages.size(), 2U);
    EXPECT_EQ(EncodedHex(messages[0].Message), "41 08 61 27 20 3E 0D 0A 2E 62");
}

TEST(SmlMessages, StopsAtTheFirstError) {
    const auto messages = ParseSmlMessages("S1F1 .\nS1F2 <U1 256>.\nS1F3 .");
    ASSERT_EQ(messages.size(), 2U);
    EXPECT_EQ(messages[1].Message, nullptr);
    EXPECT_EQ(messages[1].Line, 2);
    EXPECT_EQ(messages[1].Column, 10);
}

TEST(SmlMessages, NoneInATextOfBlanks) {
    EXPECT_TRUE(ParseSmlMessages("").empty());
    EXPECT_TRUE(ParseSmlMessages(" \r\n /* none */ \r\n").empty());
    EXPECT_EQ(ParseSmlMessages("/* none").size(), 1U);
}

}  // namespace
}  // namespace hexmire
