#include "Failure.h"
#include "Script.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace hexmire::program {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;

TEST(Script, each_command_is_read) {
    const std::pair<const char*, Command> kCases[] = {
        {"connect", ConnectCommand{.Timeout = 30s}},
        {"  connect\t2.5 \r", ConnectCommand{.Timeout = 2500ms}},
        {"send S1F1", SendCommand{"S1F1"}},
        {"send  Are you there ", SendCommand{"Are you there"}},
        {"expect S1F2", ExpectCommand{.Stream = 1, .Function = 2, .Timeout = 45s}},
        {"expect s127f255 0.001", ExpectCommand{.Stream = 127, .Function = 255, .Timeout = 1ms}},
        {"expect S0F0 0", ExpectCommand{.Stream = 0, .Function = 0, .Timeout = 0ms}},
        {"wait 86400", WaitCommand{.Time = 86'400s}},
        {"disconnect", DisconnectCommand()},
        {"quit", QuitCommand()},
    };
    for (const auto& [line, command] : kCases)
        EXPECT_EQ(ParseCommand(line), command) << line;
}

TEST(Script, blank_lines_and_comments_are_passed_over) {
    for (const char* line : {"", "  \t\r", "# connect", "   #quit"})
        EXPECT_EQ(ParseCommand(line), std::nullopt) << line;
}

TEST(Script, line_that_is_no_command_is_told) {
    const std::pair<const char*, const char*> kCases[] = {
        {"Connect", "unknown command 'Connect'"},
        {"connect 1 2", "expected 'connect [SECONDS]'"},
        {"connect -1", "'-1' is no number of seconds"},
        {"connect 1s", "'1s' is no number of seconds"},
        {"connect nan", "'nan' is no number of seconds"},
        {"connect 1e9", "no number of seconds"},
        {"wait", "expected 'wait SECONDS'"},
        {"wait 86401", "no number of seconds"},
        {"send", "expected 'send NAME'"},
        {"expect", "expected 'expect SxFy [SECONDS]'"},
        {"expect S1F2 3 4", "expected 'expect SxFy [SECONDS]'"},
        {"expect 1F2", "no stream and function"},
        {"expect S1", "no stream and function"},
        {"expect S1F", "no stream and function"},
        {"expect S128F1", "no stream and function"},
        {"expect S1F256", "no stream and function"},
        {"expect S-1F1", "no stream and function"},
        {"expect S1F2W", "no stream and function"},
        {"quit now", "expected 'quit'"},
        {"disconnect now", "expected 'disconnect'"},
    };
    for (const auto& [line, reason] : kCases) {
        try {
            static_cast<void>(ParseCommand(line));
            ADD_FAILURE() << line;
        } catch (const Failure& failure) {
            EXPECT_THAT(failure.what(), HasSubstr(reason));
        }
    }
}

}  // namespace
}  // namespace hexmire::program
