#include "../hosting/TempFolder.h"
#include "ProgramRun.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <string>
#include <vector>

// hexmire dictionary, as a real process.

namespace hexmire {
namespace {

using fakes::ProgramRun;
using fakes::RunProgram;
using fakes::TempFolder;
using testing::HasSubstr;

using Words = std::vector<std::string>;

ProgramRun Dictionary(Words words, const std::string& input = {}) {
    words.insert(words.begin(), "dictionary");
    return RunProgram(words, input);
}

const char* const kDefault = HEXMIRE_SOURCE_DIR "/dictionaries/Default.xml";

const char* const kTwoSayings =
    "<D>\n<Trans Name=\"Ask\" Desc=\"A question\">\n"
    "<Primary Stream=\"1\" Func=\"3\" Name=\"\" Desc=\"\"><Root>"
    "<Item Name=\"X\" Desc=\"\" Format=\"U1\" IsArray=\"NO\" Value=\"7\"/></Root></Primary>\n"
    "<Secondary Stream=\"1\" Func=\"4\" Name=\"Answer\" Desc=\"\"><Root/></Secondary></Trans>\n"
    "<Trans Name=\"Tell\" Desc=\"caf\xC3\xA9\">\n"
    "<Primary Stream=\"6\" Func=\"11\" Name=\"\" Desc=\"\"><Root/></Primary>\n"
    "<Secondary Stream=\"6\" Func=\"12\" Name=\"\" Desc=\"\"><Root/></Secondary></Trans>\n</D>\n";

TEST(DictionaryCommand, CheckTellsFileAndLineOfEachFinding) {
    const TempFolder folder;
    const std::string bad = folder.Write("bad.xml", "<D>\n<trans/>\n</D>\n");
    EXPECT_EQ(Dictionary({"check", bad, kDefault}),
              (ProgramRun{1,
                          bad + ":2: element \"trans\" is not loaded; \"Trans\" is\n" + bad +
                              ":1: no transactions in the file\n",
                          ""}));
    const ProgramRun json = Dictionary({"check", "--json", bad, kDefault});
    EXPECT_EQ(json.Status, 1);
    EXPECT_EQ(json.Output,
              "{\"file\":\"" + bad +
                  "\",\"line\":2,\"text\":\"element \\\"trans\\\" is not loaded; \\\"Trans\\\" "
                  "is\"}\n{\"file\":\"" +
                  bad +
                  "\",\"line\":1,\"text\":\"no transactions in the file\"}\n"
                  "{\"files\":2,\"transactions\":268,\"findings\":2}\n");
}

TEST(DictionaryCommand, CheckSaysInOneLineThatNothingWasFound) {
    const TempFolder folder;
    const std::string good = folder.Write("good.xml", kTwoSayings);
    EXPECT_EQ(Dictionary({"check", kDefault}),
              (ProgramRun{0, "1 file, 268 transactions, nothing found\n", ""}));
    EXPECT_EQ(Dictionary({"check", kDefault, good}),
              (ProgramRun{0, "2 files, 270 transactions, nothing found\n", ""}));
    EXPECT_EQ(Dictionary({"check", "--json", good}),
              (ProgramRun{0, "{\"files\":1,\"transactions\":2,\"findings\":0}\n", ""}));
}

TEST(DictionaryCommand, ListAlignsItsColumns) {
    const TempFolder folder;
    const std::string file = folder.Write("d.xml", kTwoSayings);
    EXPECT_EQ(Dictionary({"list", "--dictionary", file}),
              (ProgramRun{0,
                          "NAME  PRIMARY  REPLY  DESCRIPTION\n"
                          "Ask   S1F3 W   S1F4   A question\n"
                          "Tell  S6F11    -      caf\xC3\xA9\n",
                          ""}));
    EXPECT_EQ(Dictionary({"list", "--json", "--dictionary", file, "tell"}),
              (ProgramRun{0,
                          "{\"name\":\"Tell\",\"stream\":6,\"function\":11,\"reply_expected\":"
                          "false,\"description\":\"caf\xC3\xA9\"}\n",
                          ""}));
    const ProgramRun all = Dictionary({"list", "--dictionary", kDefault});
    EXPECT_EQ(std::count(all.Output.begin(), all.Output.end(), '\n'), 269);
}

TEST(DictionaryCommand, ListTakesPatternsOfNamesAndPartsOfTexts) {
    const auto names = [](const std::string& pattern) {
        const ProgramRun run = Dictionary({"list", "--dictionary", kDefault, "--json", pattern});
        std::string found;
        for (std::size_t at = 0, end = 0; (end = run.Output.find('\n', at)) != std::string::npos;
             at = end + 1)
            found += nlohmann::json::parse(run.Output.substr(at, end - at))
                         .at("name")
                         .get<std::string>() +
                     ' ';
        return found;
    };
    EXPECT_EQ(names("S9F?"), "S9F1 S9F3 S9F5 S9F7 S9F9 ");
    EXPECT_EQ(names("s10f*"), "S10F1 S10F3 S10F5 S10F7 S10F9 ");
    EXPECT_EQ(names("are you"), "S1F1 ");
    EXPECT_EQ(names("S1F1"), "S1F1 S1F11 S1F13 S1F15 S1F17 S1F19 ");
    const ProgramRun none = Dictionary({"list", "--dictionary", kDefault, "S99"});
    EXPECT_EQ(none.Status, 1);
    EXPECT_EQ(none.Output, "");
    EXPECT_EQ(none.Errors,
              std::string("hexmire: no transaction matches 'S99' in ") + kDefault + '\n');
}

TEST(DictionaryCommand, ShowIsSmlThatEncodes) {
    const ProgramRun shown = Dictionary({"show", "s6f11", "--dictionary", kDefault});
    EXPECT_EQ(shown,
              (ProgramRun{0,
                          "* S6F11: Event Report Send\n"
                          "S6F11 W\n"
                          "<L\n"
                          "  <U4>  // DATAID: or A I1 I2 I4 I8 U1 U2 U8\n"
                          "  <U4>  // CEID: or A I1 I2 I4 I8 U1 U2 U8\n"
                          "  <L  // any number of entries\n"
                          "    <L\n"
                          "      <U4>  // RPTID: or A I1 I2 I4 I8 U1 U2 U8\n"
                          "      <L  // any number of V\n"
                          "        <V>  // V: any of L B BOOL A I1 I2 I4 I8 F4 F8 U1 U2 U4 U8\n"
                          "      >\n"
                          "    >\n"
                          "  >\n"
                          ">\n"
                          ".\n"
                          "* reply S6F12: Event Report Acknowledge\n"
                          "S6F12\n"
                          "<B>  // ACKC6\n"
                          ".\n",
                          ""}));
    EXPECT_EQ(RunProgram({"encode"}, shown.Output),
              (ProgramRun{0, "01 03 B1 00 B1 00 01 01 01 02 B1 00 01 01 41 00\n21 00\n", ""}));
}

TEST(DictionaryCommand, ShowPutsValuesInAndTellsThatThereIsNoReply) {
    const TempFolder folder;
    const std::string file = folder.Write("d.xml", kTwoSayings);
    EXPECT_EQ(Dictionary({"show", "Ask", "--dictionary", file}).Output,
              "* Ask: A question\nS1F3 W\n<U1 7>  // X\n.\n* reply Answer\nS1F4\n.\n");
    EXPECT_EQ(Dictionary({"show", "Tell", "--dictionary", file}).Output,
              "* Tell: caf\xC3\xA9\nS6F11\n.\n* no reply\n");
    EXPECT_EQ(Dictionary({"show", "Sing", "--dictionary", file}),
              (ProgramRun{1, "", "hexmire: no transaction 'Sing' in " + file + '\n'}));
}

TEST(DictionaryCommand, EveryTemplateShowsAndEncodes) {
    for (const char* name : {"S1F1", "S2F49", "S3F17", "S9F7", "S12F9", "S14F1", "S21F19"}) {
        const ProgramRun shown = Dictionary({"show", name, "--dictionary", kDefault});
        EXPECT_EQ(RunProgram({"encode"}, shown.Output).Status, 0) << shown.Output;
    }
}

TEST(DictionaryCommand, SmlBecomesADictionaryThatLoadsWithoutReport) {
    const TempFolder folder;
    const std::string sml =
        folder.Write("d.sml",
                     "Hello: 'S1F1' W.\n"
                     "S1F2 <L <A \"M&<'x\" 0x22 \">\"> <A \"caf\xC3\xA9\" 0x0A \"b\">>.\n"
                     "S2F41 W <L <A 'GO'> <L>>.\n"
                     "S6F11 <L <F4 0.1 -1e-30> <BOOL T> <BOOL T F>"
                     " <B 1 0xFF> <I8 -9> <U4 4294967295> <U1> <A>>.\n"
                     "S7F1 <V any text>.\n");
    const ProgramRun made = Dictionary({"from-sml", sml});
    EXPECT_EQ(made.Status, 0);
    EXPECT_EQ(made.Errors, "");
    const std::string file = folder.Write("d.xml", made.Output);
    EXPECT_EQ(Dictionary({"check", file}).Output, "1 file, 4 transactions, nothing found\n");
    EXPECT_EQ(Dictionary({"list", "--dictionary", file}).Output,
              "NAME   PRIMARY  REPLY  DESCRIPTION\n"
              "Hello  S1F1 W   S1F2\n"
              "S2F41  S2F41 W  S2F42\n"
              "S6F11  S6F11    -\n"
              "S7F1   S7F1     -\n");
    std::string shown;
    for (const char* name : {"Hello", "S2F41", "S6F11", "S7F1"})
        shown += Dictionary({"show", name, "--dictionary", file}).Output;
    const std::string given = RunProgram({"encode", sml}).Output;
    std::string read = RunProgram({"encode"}, shown).Output;
    // The reply of S2F41 was not given; it has no body.
    const std::string made41 = "01 02 41 02 47 4F 01 00\n";
    const std::size_t at = read.find(made41);
    ASSERT_NE(at, std::string::npos) << read;
    EXPECT_EQ(read.erase(at + made41.size(), 1), given);
}

TEST(DictionaryCommand, SmlThatADictionaryCannotHoldIsRefused) {
    const std::pair<const char*, const char*> kCases[] = {
        {"S1F1 <U1 256>.", "<stdin>:1:10: expected a whole number from 0 to 255, found \"256\""},
        {"S1F2.", "<stdin>: message 1, S1F2: a secondary stands behind its primary"},
        {"S1F1. S1F4.", "<stdin>: message 2, S1F4: a secondary stands behind its primary"},
        {"S1F255.",
         "<stdin>: message 1, S1F255: no function is left for the reply, which is to be there"},
        {"S1F1. S1F1.",
         "<stdin>: message 2, S1F1: the name \"S1F1\" is taken; give it another, such as "
         "Other:'S1F1'"},
        {"S1F1 <A ' x'>.",
         "<stdin>: message 1, S1F1: a dictionary file cannot hold this value: <A  x>"},
        {"S1F1 <A 0x00>.", "message 1, S1F1: a dictionary file cannot hold this value: <A "},
        {"S1F1 <U8 18446744073709551615>.",
         "message 1, S1F1: a dictionary file cannot hold this value: <U8 18446744073709551615>"},
        {"S1F1 <F4 NaN>.", "message 1, S1F1: a dictionary file cannot hold this value: <F4 NaN>"},
        {"<U1 1>", "<stdin>:1:1: expected a stream and function such as S1F1, found an item"},
        {" ", "<stdin>:1:1: expected a message, found the end of the text"},
    };
    for (const auto& [sml, reason] : kCases) {
        const ProgramRun run = Dictionary({"from-sml"}, sml);
        EXPECT_EQ(run.Status, 2) << sml;
        EXPECT_EQ(run.Output, "") << sml;
        EXPECT_THAT(run.Errors, HasSubstr(reason));
        EXPECT_EQ(std::count(run.Errors.begin(), run.Errors.end(), '\n'), 1);
    }
}

TEST(DictionaryCommand, WhatIsNotUnderstoodHasStatus2AndAMissingFile1) {
    for (const Words& words :
         {Words{}, Words{"check"}, Words{"show"}, Words{"burn"}, Words{"list", "a", "b"}})
        EXPECT_EQ(Dictionary(words).Status, 2);
    for (const Words& words : {Words{"check", "no.xml"},
                               Words{"check", "/"},
                               Words{"list", "--dictionary", "no.xml"},
                               Words{"show", "S1F1", "--dictionary", "no.xml"},
                               Words{"from-sml", "no.sml"}}) {
        const ProgramRun run = Dictionary(words);
        EXPECT_EQ(run.Status, 1) << words[0];
        EXPECT_THAT(run.Errors, testing::StartsWith("hexmire: "));
    }
}

}  // namespace
}  // namespace hexmire
