#include "../hosting/TempFolder.h"
#include "Failure.h"
#include "ProgramRun.h"
#include "commands/EncodeCommand.h"
#include <gtest/gtest.h>

#include <string>
#include <vector>

// hexmire encode, as a real process.

namespace hexmire {
namespace {

using fakes::ProgramRun;
using fakes::RunProgram;
using fakes::TempFolder;

using Words = std::vector<std::string>;

ProgramRun Encode(Words words, const std::string& input = {}) {
    words.insert(words.begin(), "encode");
    return RunProgram(words, input);
}

TEST(Encode, AMessageAndAnItemAloneAreBodies) {
    const std::string hex = "01 01 B1 04 00 00 03 E9\n";
    for (const char* sml : {"S1F3 W <L <U4 1001>>.",
                            "Ask:'S1F3' W <L,1 <U4,1 1001>> .",
                            "<L <U4 1001>>",
                            "<L <U4 1001>>.",
                            "  \n<L\n <U4 1001>\n>\n",
                            "<L <U4 1001>> // it ends.",
                            "\xEF\xBB\xBFS1F3 <L <U4 1001>>."}) {
        EXPECT_EQ(Encode({sml}), (ProgramRun{0, hex, ""})) << sml;
        EXPECT_EQ(Encode({}, sml), (ProgramRun{0, hex, ""})) << sml;
    }
    EXPECT_EQ(Encode({"S1F1", "W", "."}), (ProgramRun{0, "\n", ""}));
}

TEST(Encode, SeveralMessagesAreALineEach) {
    const TempFolder folder;
    const std::string file =
        folder.Write("two.sml", "* two\nS1F1 W .\nS1F2 <L <A 'x'> <A 'y'>>.\nS1F3 W <L>.\n");
    EXPECT_EQ(Encode({file}), (ProgramRun{0, "\n01 02 41 01 78 41 01 79\n01 00\n", ""}));
    EXPECT_EQ(Encode({"--header", file, "--device-id", "32767", "--system-bytes", "4294967295"}),
              (ProgramRun{0,
                          "7F FF 81 01 00 00 FF FF FF FF\n"
                          "7F FF 01 02 00 00 FF FF FF FF 01 02 41 01 78 41 01 79\n"
                          "7F FF 81 03 00 00 00 00 00 00 01 00\n",
                          ""}));
    EXPECT_EQ(Encode({"--length", file}).Output,
              "00 00 00 0A 00 00 81 01 00 00 00 00 00 01\n"
              "00 00 00 12 00 00 01 02 00 00 00 00 00 01 01 02 41 01 78 41 01 79\n"
              "00 00 00 0C 00 00 81 03 00 00 00 00 00 02 01 00\n");
}

TEST(Encode, BytesComeOutAsTheyAre) {
    EXPECT_EQ(Encode({"--binary", "<B 0 10 13 255>"}),
              (ProgramRun{0, std::string("\x21\x04\0\x0A\x0D\xFF", 6), ""}));
    EXPECT_EQ(Encode({"--binary", "S1F1."}), (ProgramRun{0, "", ""}));
    const ProgramRun two = Encode({"--binary", "S1F1. S1F3."});
    EXPECT_EQ(two.Status, 2);
    EXPECT_NE(two.Errors.find("need --length"), std::string::npos);
    EXPECT_EQ(Encode({"--binary", "--length", "S1F1. S1F3."}).Output.size(), 28U);
}

TEST(Encode, TextsAreUtf8UnlessToldOtherwise) {
    EXPECT_EQ(Encode({"<A 'caf\xC3\xA9'>"}), (ProgramRun{0, "41 04 63 61 66 E9\n", ""}));
    EXPECT_EQ(Encode({"--latin1"}, "<A 'caf\xE9'>"), (ProgramRun{0, "41 04 63 61 66 E9\n", ""}));
    EXPECT_EQ(Encode({}, "S1F1\n<A 'caf\xE9'>."),
              (ProgramRun{2,
                          "",
                          "hexmire: <stdin>:2:8: expected UTF-8, found byte 0xE9 (--latin1 reads "
                          "ISO 8859-1)\n"}));
    EXPECT_EQ(Encode({}, "<A 'caf\xC3\xA9 \xE2\x82\xAC'>"),
              (ProgramRun{2,
                          "",
                          "hexmire: <stdin>:1:10: expected a character of ISO 8859-1, found "
                          "\"\xE2\x82\xAC\"\n"}));
}

TEST(Encode, EveryCharacterOfLatin1IsReadAndTheNextOneIsNot) {
    EXPECT_EQ(Encode({}, "<A '\xC2\x80\xC3\xBF'>"), (ProgramRun{0, "41 02 80 FF\n", ""}));
    // U+0100, an overlong slash, a lone byte of a character, one cut short, and beyond four bytes.
    for (const char* text :
         {"\xC4\x80", "\xC0\xAF", "\x80", "\xC3", "\xF5\x80\x80\x80", "\xE0\x80\xAF"})
        EXPECT_EQ(Encode({}, "<A '" + std::string(text) + "'>").Status, 2);
}

TEST(Encode, ErrorsTellFileLineAndColumn) {
    const TempFolder folder;
    const std::string file = folder.Write("bad.sml", "S1F1.\nS1F3 <L\n  <U1 256>\n>.\n");
    const struct {
        Words Line;
        int Status;
        std::string Reason;
    } kCases[] = {
        {{file}, 2, file + ":3:7: expected a whole number from 0 to 255, found \"256\""},
        {{"<I1 -129>"},
         2,
         "<argument>:1:5: expected a whole number from -128 to 127, found \"-129\""},
        {{"<L <U1 1>"}, 2, "<argument>:1:10: expected \"<\" or \">\", found the end of the text"},
        {{"<U1 1> <U1 2>"}, 2, "<argument>:1:8: expected \".\", found \"<\""},
        {{"S1F1 W"}, 2, "<argument>:1:7: expected \"<\" or \".\", found the end of the text"},
        {{""}, 2, "<argument>:1:1: expected a message, found the end of the text"},
        {{"nowhere.sml"}, 1, "no such file: nowhere.sml"},
        {{"no/where"}, 1, "no such file: no/where"},
        {{"--header", "<U1 1>"},
         2,
         "<argument>:1:1: expected a stream and function such as S1F1 to make a header of, found "
         "an item"},
    };
    for (const auto& one : kCases)
        EXPECT_EQ(Encode(one.Line), (ProgramRun{one.Status, "", "hexmire: " + one.Reason + '\n'}));
}

TEST(Encode, NothingIsWrittenWhenALaterMessageIsWrong) {
    EXPECT_EQ(Encode({"S1F1 <U1 1>. S1F1 <U1 x>."}).Output, "");
}

TEST(Encode, AnItemThatIsTooLongIsRefused) {
    const SECSMessagePtr message = New<SECSMessage>();
    const SECSItemPtr list = message->Root()->AddNew(1);
    list->Format(FormatList);
    list->AddNew(1)->Value("short");
    const SECSItemPtr text = list->AddNew(2);
    text->Format(FormatAscii);
    text->Value(std::string(0xFFFFFF, 'x'));
    static_cast<void>(EncodeBody(*message));
    EXPECT_NO_THROW(program::CheckItemLengths(*message));
    text->Value(std::string(0x1000000, 'x'));
    static_cast<void>(EncodeBody(*message));
    try {
        program::CheckItemLengths(*message);
        ADD_FAILURE() << "it was not refused";
    } catch (const program::UsageError& error) {
        EXPECT_STREQ(error.what(), "an item of length 16777216: the longest is 16777215");
    }
}

TEST(Encode, HeadersOutOfRangeHaveStatus2) {
    for (const Words& words : {Words{"--device-id", "32768", "<L>"},
                               Words{"--device-id", "-1", "<L>"},
                               Words{"--system-bytes", "4294967296", "<L>"},
                               Words{"--system-bytes", "x", "<L>"}}) {
        EXPECT_EQ(Encode(words).Status, 2) << words[1];
    }
}

}  // namespace
}  // namespace hexmire
