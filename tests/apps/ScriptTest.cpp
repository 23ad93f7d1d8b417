#include "ControlProperties.h"
#include "ScriptCommands.h"
#include "ScriptRunner.h"
#include "ScriptWords.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <iterator>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>

namespace hexmire::program {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;

/// Reads a whole script; the reason when it is refused.
std::string Refusal(const std::string& script) {
    const ScriptCommands commands = CommonCommands();
    std::istringstream lines(script);
    ScriptReader reader(commands, "it", [&](bool) -> std::optional<std::string> {
        std::string line;
        if (!std::getline(lines, line)) return std::nullopt;
        return line;
    });
    try {
        while (reader.Next()) {
        }
        return "";
    } catch (const UsageError& error) {
        return error.what();
    }
}

TEST(Script, each_command_is_read) {
    for (const char* line : {"connect",
                             "  connect\t2.5 \r",
                             "send S1F1",
                             "send  Are you there ",
                             "send S1F1 W.",
                             "send S1F3 W <L <U4 1>>.",
                             "reply S1F2",
                             "reply S6F12 <B 0>.",
                             "expect S1F2",
                             "expect s127f255 0.001",
                             "expect S0F0 0",
                             "hold",
                             "hold S6F11",
                             "release",
                             "release s1f13",
                             "wait 86400",
                             "list",
                             "list S1*",
                             "show S1F13",
                             "set",
                             "set T3Timeout",
                             "set t3timeout 1000",
                             "set SECSLogFile a folder/name.log",
                             "set ConnectionPortType hsms",
                             "set TraceEnabled true",
                             "disconnect",
                             "quit",
                             "help",
                             "help send"}) {
        EXPECT_EQ(Refusal(line), "") << line;
        EXPECT_TRUE(CommonCommands().Read(line)) << line;
    }
}

TEST(Script, blank_lines_and_comments_are_passed_over) {
    for (const char* line : {"", "  \t\r", "# connect", "   #quit"})
        EXPECT_FALSE(CommonCommands().Read(line)) << line;
}

TEST(Script, sml_goes_on_to_its_end_in_further_lines) {
    EXPECT_EQ(Refusal("send\nS6F11 W\n<L [2]\n  <U4 1.0>\n  # none\n"),
              "it:5:3: expected \"<\" or \">\", found \"#\"");
    EXPECT_EQ(Refusal("send\nS1F1 W\n.\nsend S1F3 W <L\n<U4 1>\n>.\r\nwait"),
              "it:7: expected 'wait SECONDS'");
}

TEST(Script, comment_may_stand_behind_the_end_of_sml) {
    for (const char* end : {". // the end", ". /* the end */", ".// 1", "\t.\t", "<A 'x. '> ."})
        EXPECT_EQ(Refusal("send\nS1F1 W\n" + std::string(end) + "\nwait"),
                  "it:4: expected 'wait SECONDS'")
            << end;
    EXPECT_THAT(Refusal("send\nS1F1 W\n. wait\nwait"), HasSubstr("it:3:3: expected"));
}

TEST(Script, quotes_and_points_in_comments_hide_no_end) {
    for (const char* sml : {"S1F1 W /* it's */. // that's it",
                            "S1F1 W /*\nit's.\n*/ . // \"",
                            "S1F1 <A 'x' // it's.\n>.",
                            "S1F1 <A \"/* it's\" >. /* a\n. b */"}) {
        const auto lines = std::count(sml, sml + std::string_view(sml).size(), '\n');
        EXPECT_EQ(Refusal("send\n" + std::string(sml) + "\nwait"),
                  "it:" + std::to_string(3 + lines) + ": expected 'wait SECONDS'")
            << sml;
    }
}

TEST(Script, command_over_lines_is_sml_even_without_an_end) {
    EXPECT_EQ(Refusal("send\nS1F1"), "it:2:5: expected \"<\" or \".\", found the end of the text");
}

TEST(Script, command_that_does_not_end_is_refused) {
    const ScriptCommands commands = CommonCommands();
    std::size_t given = 0;
    ScriptReader reader(commands, "it", [&](bool isContinued) -> std::optional<std::string> {
        std::string line = isContinued ? std::string(1 << 20, ' ') : "send";
        given += line.size();
        return line;
    });
    try {
        static_cast<void>(reader.Next());
        FAIL();
    } catch (const UsageError& error) {
        EXPECT_STREQ(error.what(), "it:1: the command is longer than 16 MiB");
    }
    EXPECT_LT(given, std::size_t{17} << 20U);
}

TEST(Script, sml_is_not_read_again_for_points_in_numbers_and_texts) {
    int reads = 0;
    ScriptCommands commands;
    commands.Add({.Name = "send",
                  .Arguments = "",
                  .Help = "",
                  .Completes = Completion::Nothing,
                  .Read = [&](const CommandText& text) -> Action {
                      ++reads;
                      if (!text.Whole.ends_with("\n>.")) throw BadCommand("no end", 1, 1, true);
                      return [](ScriptContext&) {};
                  }});
    int line = 0;
    ScriptReader reader(commands, "it", [&](bool) -> std::optional<std::string> {
        const int at = line++;
        if (at == 0) return "send S6F11 <L";
        if (at > 100) return ">.";
        return at % 2 == 0 ? "<F4 1.5>" : "<A 'The end. Or not.'> // 1.5";
    });
    EXPECT_TRUE(reader.Next().has_value());
    EXPECT_EQ(line, 102);
    EXPECT_EQ(reads, 2);
}

TEST(Script, character_that_cannot_be_sent_is_told_with_its_place) {
    const std::pair<const char*, const char*> kCases[] = {
        {"send S1F1 <A '\xE2\x82\xAC'>.", "it:1:15: "},
        {"send\nS1F1\n<A '\xC3\xA9\xE2\x82\xAC'>.", "it:3:6: "},
        {"reply S1F2 <A '\xE2\x82\xAC'>.", "it:1:16: "},
        {"send \xE2\x82\xAC", "it:1:6: "},
        {"reply \xE2\x82\xAC", "it:1:7: "},
        {"list \xE2\x82\xAC", "it:1:6: "},
        {"show  \xE2\x82\xAC", "it:1:7: "},
        {"set SECSLogFile \xC3\xA9 \xE2\x82\xAC.log", "it:1:19: "},
    };
    for (const auto& [script, place] : kCases)
        EXPECT_EQ(Refusal(script),
                  std::string(place) + "expected a character of ISO 8859-1, found \"\xE2\x82\xAC\"")
            << script;
    EXPECT_EQ(Refusal("wait 0\nlist a\xFF"), "it:2:7: expected UTF-8, found byte 0xFF");
    EXPECT_EQ(Refusal("list \xC3\xA9\n# \xE2\x82\xAC"), "");
}

TEST(Script, byte_order_mark_in_front_is_passed_over) {
    EXPECT_EQ(Refusal("\xEF\xBB\xBFwait 0\nwait"), "it:2: expected 'wait SECONDS'");
}

TEST(Script, line_that_is_no_command_is_told_with_its_place) {
    const std::pair<const char*, const char*> kCases[] = {
        {"Connect", "it:1: unknown command 'Connect'"},
        {"\n# x\nconnect 1 2", "it:3: expected 'connect [SECONDS]'"},
        {"connect -1", "'-1' is no number of seconds"},
        {"connect 1s", "'1s' is no number of seconds"},
        {"connect nan", "'nan' is no number of seconds"},
        {"connect 1e9", "no number of seconds"},
        {"wait", "expected 'wait SECONDS'"},
        {"wait 86401", "no number of seconds"},
        {"send", "it:1:5: expected"},
        {"send\nS1F1 W\n<L\n", "found the end of the text"},
        {"wait 1\nsend S1F1 <U1 256>.", "it:2:15: expected a whole number from 0 to 255"},
        {"  send\nS1F1\n  <U1 256>.", "it:3:7: expected a whole number from 0 to 255"},
        {"reply <B 0>.", "it:1:7: expected"},
        {"expect", "expected 'expect SxFy [SECONDS]'"},
        {"expect S1F2 3 4", "expected 'expect SxFy [SECONDS]'"},
        {"expect 1F2", "no stream and function"},
        {"expect S1", "no stream and function"},
        {"expect S1F", "no stream and function"},
        {"expect S128F1", "no stream and function"},
        {"expect S1F256", "no stream and function"},
        {"expect S-1F1", "no stream and function"},
        {"expect S1F2W", "no stream and function"},
        {"hold S1", "no stream and function"},
        {"release S1F1 S1F3", "expected 'release [SxFy]'"},
        {"show", "expected 'show NAME'"},
        {"set T9Timeout 1", "unknown property 'T9Timeout'"},
        {"set T3Timeout 1.5", "'1.5' is no whole number"},
        {"set T?Timeout 1", "unknown property 'T?Timeout'"},
        {"set T1Timeout fast", "'fast' is no number"},
        {"set TraceEnabled 1", "'1' is neither True nor False"},
        {"set HSMSConnectionType lazy", "'lazy' is none of active, passive, alternating"},
        {"quit now", "expected 'quit'"},
        {"disconnect now", "expected 'disconnect'"},
        {"help send now", "expected 'help [COMMAND]'"},
    };
    for (const auto& [script, reason] : kCases)
        EXPECT_THAT(Refusal(script), HasSubstr(reason)) << script;
}

TEST(Script, seconds_are_read_to_the_millisecond) {
    EXPECT_EQ(SecondsIn("2.5"), 2500ms);
    EXPECT_EQ(SecondsIn("0.0014"), 1ms);
    EXPECT_EQ(SecondsIn("0"), 0ms);
}

TEST(Script, patterns_are_those_of_file_names_or_pieces) {
    const struct {
        const char* Text;
        const char* Pattern;
        bool Fits;
    } kCases[] = {
        {"S1F13", "", true},
        {"S1F13", "f1", true},
        {"S1F13", "f2", false},
        {"S1F13", "s1*", true},
        {"S1F13", "*1", false},
        {"S1F13", "S?F1?", true},
        {"S1F13", "S?F1", false},
        {"S1F13", "S1F13*", true},
        {"S1F13", "*F1*3*", true},
        {"", "*", true},
        {"", "?", false},
    };
    for (const auto& one : kCases)
        EXPECT_EQ(FitsPattern(one.Text, one.Pattern), one.Fits) << one.Text << ' ' << one.Pattern;
}

TEST(Script, table_has_each_command_and_each_property_once_with_a_help) {
    std::set<std::string> names;
    const ScriptCommands commands = CommonCommands();
    for (const ScriptCommand& command : commands.All()) {
        EXPECT_TRUE(names.insert(command.Name).second) << command.Name;
        EXPECT_NE(command.Help, "");
        EXPECT_EQ(commands.Find(command.Name), &command);
    }
    EXPECT_EQ(commands.Find("fetch"), nullptr);
    EXPECT_TRUE(std::ranges::is_sorted(ControlProperties(), {}, &ControlProperty::Name));
    for (const ControlProperty& property : ControlProperties()) {
        EXPECT_TRUE(names.insert(property.Name).second) << property.Name;
        EXPECT_NE(property.Values, "");
    }
}

TEST(Script, commands_are_those_of_the_page_about_them) {
    std::ifstream file(std::string(HEXMIRE_SOURCE_DIR) + "/docs/program-sessions.md");
    const std::string page(std::istreambuf_iterator<char>(file), {});
    const ScriptCommands commands = CommonCommands();
    for (const ScriptCommand& command : commands.All()) {
        std::string row = command.Name;
        if (!command.Arguments.empty()) row += ' ' + command.Arguments;
        if (const std::size_t bar = row.find('|'); bar != std::string::npos)
            row.insert(bar, 1, '\\');
        EXPECT_THAT(page, HasSubstr("\n| `" + row + "` | "));
    }
}

}  // namespace
}  // namespace hexmire::program
