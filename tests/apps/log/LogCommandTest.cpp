#include "../../hosting/TempFolder.h"
#include "../ChildProcess.h"
#include "LogText.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <string>
#include <vector>

namespace hexmire {
namespace {

using fakes::ChildProcess;
using fakes::LogText;
using fakes::TempFolder;
using testing::HasSubstr;

using Words = std::vector<std::string>;

struct Outcome {
    int Status = 0;
    std::string Output;
    std::string Errors;
};

Outcome RunLog(Words words, const std::string& input = "") {
    words.insert(words.begin(), "log");
    ChildProcess program(HEXMIRE_PROGRAM, words);
    program.Write(input);
    program.CloseInput();
    const int status = program.Wait();
    return {.Status = status, .Output = program.Output(), .Errors = program.Errors()};
}

std::string Exchange() {
    return LogText()
        .Message("Send", 0x81, 1, 1)
        .Wait(2)
        .Message("Received", 1, 2, 1)
        .Message("Send", 0x82, 17, 2)
        .Text();
}

TEST(LogCommand, whole_log_comes_out_as_it_was_written) {
    const TempFolder folder;
    const std::string text = Exchange();
    const std::string path = folder.Write("a_2024-03-05.log", text);
    const std::string next =
        folder.Write("a_2024-03-06.log", LogText("2024/03/06").Message("Send", 1, 1, 9).Text());
    for (const Words& words : {Words{path}, Words{"-"}}) {
        const Outcome run = RunLog(words, text);
        EXPECT_EQ(run.Status, 0);
        EXPECT_EQ(run.Output, text);
        EXPECT_EQ(run.Errors, "");
    }
    EXPECT_EQ(RunLog({folder / "a.log"}).Output, text + TempFolder::Read(next));
    EXPECT_EQ(RunLog({next, path}).Output, TempFolder::Read(next) + text);
}

TEST(LogCommand, options_choose_entries) {
    const std::string text = Exchange();
    const std::pair<Words, std::string> kCases[] = {
        {{"--message", "s1f2"}, LogText().Wait(2).Message("Received", 1, 2, 1).Text()},
        {{"--message", "S2", "--message", "S3"},
         LogText().Wait(2).Message("Send", 0x82, 17, 2).Text()},
        {{"--system-bytes", "0x2"}, LogText().Wait(2).Message("Send", 0x82, 17, 2).Text()},
        {{"--device-id", "1"}, ""},
        {{"--received"}, LogText().Wait(2).Message("Received", 1, 2, 1).Text()},
        {{"--sent", "--to", "14:00:00.01"}, LogText().Message("Send", 0x81, 1, 1).Text()},
        {{"--from", "2024-03-06"}, ""},
        {{"--errors"}, ""},
        {{"--unanswered"},
         "2024/03/05 14:00:00.02 sent S2F17 W, system bytes 2: no reply when the log ends, "
         "0.00 s later\n"},
    };
    for (const auto& [options, wanted] : kCases) {
        Words words = options;
        words.emplace_back("-");
        const Outcome run = RunLog(words, text);
        EXPECT_EQ(run.Status, 0) << options.front();
        EXPECT_EQ(run.Output, wanted) << options.front();
        EXPECT_EQ(run.Errors, "") << options.front();
    }
    EXPECT_THAT(RunLog({"--latency", "-"}, text).Output, HasSubstr("S2F17     sent "));
    EXPECT_THAT(RunLog({"--latency", "--json", "-"}, text).Output, HasSubstr("\"median_ms\":20"));
    EXPECT_THAT(RunLog({"--json", "--sml", "-"}, text).Output,
                HasSubstr("\"event\":\"received-secondary\""));
}

TEST(LogCommand, what_is_wrong_with_a_log_is_told_in_one_line_each) {
    const Outcome run = RunLog(
        {"-"},
        LogText().Message("Send", 1, 1, 1).Wait(-500).Line("x").Text() + "2024/03/05 14:00:0");
    EXPECT_EQ(run.Status, 0);
    EXPECT_EQ(
        run.Errors,
        "hexmire: warning: the standard input: the clock goes back 1 time, first by 5.00 s at "
        "line 7\n"
        "hexmire: warning: the standard input: the last entry is cut off\n");
    EXPECT_EQ(
        RunLog({"-"}, LogText().Message("Send", 1, 1, 1).Header("Send", 1, 1, 1).Text() + "?\n")
            .Errors,
        "hexmire: warning: the standard input: 1 line is no whole entry of a log, first line "
        "8\n");
}

TEST(LogCommand, what_cannot_be_done_is_told_in_one_line) {
    const TempFolder folder;
    const std::string log = folder.Write("a.log", Exchange());
    const std::string text = folder.Write("text", "hello\n");
    const struct {
        Words Line;
        int Status;
        std::string Reason;
    } kCases[] = {
        {{}, 2, "FILE is required"},
        {{folder / "none.log"}, 1, "no such log"},
        {{folder.Path()}, 1, "is a folder"},
        {{text}, 1, "is not a message log"},
        {{"--follow", text}, 1, "is not a message log"},
        {{log, "--message", "x"}, 2, "'x' is neither SxFy nor Sx"},
        {{log, "--system-bytes", "0xG"}, 2, "'0xG' is no number"},
        {{log, "--device-id", "32768"}, 2, "--device-id"},
        {{log, "--from", "noon"}, 2, "--from: 'noon' is no time"},
        {{log, "--to", "25:00"}, 2, "--to: '25:00' is no time"},
        {{log, "--errors", "--latency"}, 2, "--errors does not go"},
        {{log, "--sml", "--unanswered"}, 2, "--sml does not go"},
        {{log, "--plot", log}, 2, "must end in .svg"},
        {{log, "--plot", folder / "none/a.svg"}, 1, "cannot write"},
        {{log, "--limit", "0"}, 2, "--limit"},
        {{log, "--side", "left"}, 2, "'left' is none of host|equipment"},
        {{"--follow", "-"}, 2, "--follow takes one FILE"},
        {{"--follow", log, log}, 2, "--follow takes one FILE"},
    };
    for (const auto& one : kCases) {
        const Outcome run = RunLog(one.Line);
        EXPECT_EQ(run.Status, one.Status) << one.Reason;
        EXPECT_THAT(run.Errors, HasSubstr(one.Reason));
        EXPECT_EQ(std::count(run.Errors.begin(), run.Errors.end(), '\n'), 1) << run.Errors;
    }
    EXPECT_EQ(TempFolder::Read(log), Exchange());
}

TEST(LogCommand, picture_of_more_than_the_limit_is_told) {
    const TempFolder folder;
    const std::string picture = folder / "a.svg";
    const Outcome run = RunLog({"-", "--plot", picture, "--limit", "2"}, Exchange());
    EXPECT_EQ(run.Status, 0);
    EXPECT_EQ(run.Output, "");
    EXPECT_THAT(run.Errors, HasSubstr("warning: the first 2 of 3 messages are drawn"));
    EXPECT_THAT(TempFolder::Read(picture), HasSubstr("The first 2 of 3 messages"));
    EXPECT_EQ(RunLog({"-", "--plot", picture}, Exchange()).Errors, "");
}

TEST(LogCommand, follow_goes_on_over_midnight_and_ends_on_an_interrupt) {
    for (const int signal : {SIGINT, SIGTERM}) {
        const TempFolder folder;
        static_cast<void>(folder.Write("a_2024-03-05.log", Exchange()));
        ChildProcess program(HEXMIRE_PROGRAM, {"log", "--follow", "--json", folder / "a.log"});
        EXPECT_TRUE(program.ReadUntil("\"stream\":2,\"function\":17"));
        static_cast<void>(folder.Write("a_2024-03-06.log",
                                       LogText("2024/03/06").Message("Send", 1, 3, 9).Text()));
        EXPECT_TRUE(program.ReadUntil("\"stream\":1,\"function\":3"));
        program.Signal(signal);
        EXPECT_EQ(program.Wait(), 0);
        EXPECT_EQ(program.Errors(), "");
    }
}

}  // namespace
}  // namespace hexmire
