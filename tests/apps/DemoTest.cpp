#include "../hosting/TempFolder.h"
#include "ChildProcess.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <string>

namespace hexmire {
namespace {

using fakes::ChildProcess;
using fakes::TempFolder;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

/// One line, as every failure is told.
void ExpectOneLine(const std::string& errors) {
    EXPECT_THAT(errors, StartsWith("hexmire: "));
    EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), 1) << errors;
}

TEST(Demo, shows_both_sides_of_a_whole_conversation) {
    const TempFolder folder;
    ChildProcess demo(HEXMIRE_PROGRAM, {"demo", "--log", folder / "demo.log"});
    EXPECT_EQ(demo.Wait(), 0);
    EXPECT_EQ(demo.Errors(), "");
    for (const char* text :
         {"host       connected",
          "equipment  connected",
          "    S1F13 W\n    < L  >\n    .\n",
          "host       received S1F14,",
          "    S1F1 W\n    .\n",
          "< A 'HXM-200' >",
          "equipment  received S2F41 W,",
          "< A 'RECIPE-7' >",
          "host       received S6F11 W,",
          "< F4 23.5 >",
          "equipment  received S6F12,",
          "host       error 2012 (SECSTrans-Let T3Timer) T3 Timeout encountered.",
          "host       disconnected\n",
          "equipment  disconnected, 3035 Separate.req received",
          "(reply after ",
          " ms)"})
        EXPECT_THAT(demo.Output(), HasSubstr(text));
    EXPECT_THAT(demo.Output(), testing::Not(HasSubstr("missed")));
}

TEST(Demo, names_the_log_that_it_has_written) {
    const TempFolder folder;
    ChildProcess demo(HEXMIRE_PROGRAM, {"demo", "--log", folder / "demo.log"});
    ASSERT_EQ(demo.Wait(), 0);
    const std::string mark = "Message log: ";
    const std::size_t begin = demo.Output().find(mark) + mark.size();
    const std::string path = demo.Output().substr(begin, demo.Output().find('\n', begin) - begin);
    EXPECT_THAT(path, MatchesRegex(".*/demo_20[0-9][0-9]-[0-9][0-9]-[0-9][0-9]\\.log"));
    const std::string log = TempFolder::Read(path);
    EXPECT_THAT(log, HasSubstr(" SECS I HEADER Send : 00 00 81 0D 00 00 00 00 00 01\r\n"));
    EXPECT_THAT(log, HasSubstr(" SECS II Message Received : \r\nS1F14\r\n"));
}

TEST(Demo, without_log_writes_no_file) {
    const TempFolder folder;
    ChildProcess demo(HEXMIRE_PROGRAM, {"demo", "--no-log"}, folder.Path());
    EXPECT_EQ(demo.Wait(), 0);
    EXPECT_THAT(demo.Output(), HasSubstr("Message log: off"));
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path()));
}

TEST(Demo, tells_when_the_log_could_not_be_written) {
    // Beside the program: a copy of it stands where a file has the name of the folder.
    const TempFolder folder;
    std::filesystem::copy_file(HEXMIRE_PROGRAM, folder / "hexmire");
    folder.Write("Log", "");
    ChildProcess demo(folder / "hexmire",
                      {"demo", "--dictionary", HEXMIRE_SOURCE_DIR "/dictionaries/Default.xml"});
    EXPECT_EQ(demo.Wait(), 0);
    EXPECT_THAT(demo.Output(), HasSubstr("Message log: could not be written to "));
}

TEST(Demo, fails_in_one_line_without_its_dictionary) {
    const TempFolder folder;
    const std::string broken = folder.Write("broken.xml", "<SECSDictionary><Trans");
    for (const std::string& path : {folder / "missing.xml", folder.Path(), broken}) {
        ChildProcess demo(HEXMIRE_PROGRAM, {"demo", "--no-log", "--dictionary", path});
        EXPECT_EQ(demo.Wait(), 1);
        ExpectOneLine(demo.Errors());
        EXPECT_THAT(demo.Errors(), HasSubstr(path));
    }
}

TEST(Demo, fails_in_one_line_when_the_dictionary_lacks_its_messages) {
    const TempFolder folder;
    const std::string empty = folder.Write("empty.xml", "<SECSDictionary/>");
    const std::string other = folder.Write(
        "other.xml",
        "<D><Trans Name='S1F13' Desc=''>"
        "<Primary Stream='1' Func='13' Name='' Desc=''><Root/></Primary>"
        "<Secondary Stream='1' Func='14' Name='' Desc=''><Root/></Secondary></Trans></D>");
    for (const std::string& path : {empty, other}) {
        ChildProcess demo(HEXMIRE_PROGRAM, {"demo", "--no-log", "--dictionary", path});
        EXPECT_EQ(demo.Wait(), 1);
        ExpectOneLine(demo.Errors());
    }
}

TEST(Demo, ends_early_when_it_is_interrupted) {
    ChildProcess demo(HEXMIRE_PROGRAM, {"demo", "--no-log"});
    ASSERT_TRUE(demo.ReadUntil("1. select"));
    demo.Signal(SIGINT);
    EXPECT_EQ(demo.Wait(), 1);
    EXPECT_EQ(demo.Errors(), "hexmire: interrupted\n");
}

}  // namespace
}  // namespace hexmire
