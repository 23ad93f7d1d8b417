#include "../hosting/TempFolder.h"
#include "ChildProcess.h"
#include "FreePort.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <csignal>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace hexmire {
namespace {

using fakes::ChildProcess;
using fakes::TempFolder;
using nlohmann::json;
using testing::EndsWith;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;

using Words = std::vector<std::string>;

/// An equipment and a host as two real processes.
class TwoProcesses : public testing::Test {
protected:
    [[nodiscard]] Words Equipment(const Words& more = {}) const {
        return Join({"equipment", "--local", address_, "--no-log", "--json"}, more);
    }
    [[nodiscard]] Words Host(const Words& more = {}) const {
        // A host that starts before the equipment listens tries again after a second.
        return Join({"host", "--remote", address_, "--no-log", "--json", "--t5", "1"}, more);
    }
    [[nodiscard]] static Words Join(Words words, const Words& more) {
        words.insert(words.end(), more.begin(), more.end());
        return words;
    }
    [[nodiscard]] Words Script(const std::string& text, Words more = {}) {
        const std::string path = folder_.Write("script" + std::to_string(scripts_++), text);
        return Join(std::move(more), {"--script", path});
    }

    const std::string address_ = "127.0.0.1:" + std::to_string(program::FindFreePort());
    TempFolder folder_;
    int scripts_ = 0;
};

/// The first event of that kind for that stream and function.
std::optional<json> Find(const std::string& output, const std::string& event, int s, int f) {
    std::size_t begin = 0;
    for (std::size_t end = output.find('\n'); end != std::string::npos;
         begin = end + 1, end = output.find('\n', begin)) {
        const json line = json::parse(output.substr(begin, end - begin));
        if (line.at("event") == event && line.value("stream", 0) == s &&
            line.value("function", 0) == f)
            return line;
    }
    return std::nullopt;
}

TEST_F(TwoProcesses, exchange_messages_as_their_scripts_say) {
    ChildProcess equipment(HEXMIRE_PROGRAM,
                           Equipment(Script("connect\nexpect S1F13\nexpect S1F1\nsend S6F11\n"
                                            "expect S2F17\nwait 0\nexpect S9F99 0.5\n")));
    ChildProcess host(HEXMIRE_PROGRAM,
                      Host(Script("# a host\nconnect\nsend S1F13\nexpect S1F14\nsend s1f1\n"
                                  "expect S1F2\nexpect S6F11\nsend S2F17\nexpect S2F18\n"
                                  "disconnect\nquit\nsend never\n")));
    EXPECT_EQ(host.Wait(), 0) << host.Errors();
    EXPECT_EQ(host.Errors(), "");
    EXPECT_EQ(equipment.Wait(), 1);  // Nobody sends an S9F99.
    EXPECT_EQ(equipment.Errors(), "hexmire: " + (folder_ / "script0:7") + ": S9F99 did not come\n");

    const auto reply = Find(host.Output(), "received-secondary", 1, 14);
    ASSERT_TRUE(reply.has_value());
    EXPECT_EQ(reply->at("name"), "S1F13");
    EXPECT_EQ(reply->at("device_id"), 0);
    EXPECT_EQ(reply->at("reply_expected"), false);
    EXPECT_THAT(reply->at("body_hex"), HasSubstr("01 02 21 01 00"));  // COMMACK 0
    EXPECT_THAT(reply->at("sml"), HasSubstr("S1F14\r\n"));
    EXPECT_EQ(reply->at("system_bytes"), Find(host.Output(), "sent", 1, 13)->at("system_bytes"));
    const auto time = Find(host.Output(), "received-secondary", 2, 18);
    ASSERT_TRUE(time.has_value());
    EXPECT_THAT(time->at("sml").get<std::string>(),
                MatchesRegex("S2F18\r\n< A '20[0-9]{14}' >\r\n\\."));
    EXPECT_TRUE(Find(host.Output(), "received-primary", 6, 11).has_value());
    EXPECT_THAT(host.Output(), HasSubstr(R"({"event":"disconnect","code":0,"text":""})"));
    EXPECT_THAT(equipment.Output(), HasSubstr("\"code\":3035"));
    EXPECT_EQ(Find(equipment.Output(), "received-primary", 1, 1)->at("reply_expected"), true);
}

TEST_F(TwoProcesses, templates_go_out_without_examples_and_without_a_w_bit_that_nobody_answers) {
    ChildProcess equipment(HEXMIRE_PROGRAM,
                           Equipment(Script("connect\nexpect S2F43\nsend S9F13\nwait 5\n")));
    ChildProcess host(
        HEXMIRE_PROGRAM,
        Host(Script("connect\nsend S1F3\nexpect S1F4\nsend S2F43\nexpect S2F44\nexpect S9F13\n")));
    EXPECT_EQ(host.Wait(), 0) << host.Errors();
    EXPECT_EQ(Find(host.Output(), "sent", 1, 3)->at("body_hex"), "01 00");
    EXPECT_EQ(Find(host.Output(), "sent", 1, 3)->at("reply_expected"), true);
    EXPECT_EQ(Find(host.Output(), "received-secondary", 2, 44)->at("body_hex"),
              "01 02 21 00 01 00");
    const auto timeout = Find(host.Output(), "received-primary", 9, 13);
    ASSERT_TRUE(timeout.has_value());
    EXPECT_EQ(timeout->at("reply_expected"), false);
    EXPECT_EQ(timeout->at("body_hex"), "01 02 41 00 41 00");
    equipment.Signal(SIGTERM);
    equipment.Wait();
    EXPECT_EQ(Find(equipment.Output(), "sent", 9, 13)->at("reply_expected"), false);
}

/// Names of the files in a folder; the day is left out.
Words NamesIn(const std::string& folder) {
    Words names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        std::string name = entry.path().filename();
        const std::size_t day = name.rfind("_20");
        if (day != std::string::npos) name.erase(day, std::string("_2024-03-05").size());
        names.push_back(name);
    }
    return names;
}

TEST_F(TwoProcesses, keep_traces_captures_and_recipes_where_they_are_told) {
    const auto records = [this](const std::string& name) -> Words {
        return {"--trace",
                folder_ / (name + "-trace"),
                "--pcap",
                folder_ / (name + "-pcap"),
                "--recipes",
                folder_ / (name + "/recipes")};
    };
    ChildProcess equipment(HEXMIRE_PROGRAM, Equipment(records("equipment")));
    ChildProcess host(
        HEXMIRE_PROGRAM,
        Host(Script("connect\nsend S7F3\nexpect S7F4\nsend S7F5\nexpect S7F6\n", records("host"))));
    EXPECT_EQ(host.Wait(), 0) << host.Errors();
    equipment.Signal(SIGTERM);
    EXPECT_EQ(equipment.Wait(), 0);

    const std::string port = address_.substr(address_.find(':') + 1) + "-device-0";
    const std::string from = "SECSI_to-127.0.0.1-" + port;
    const std::string at = "SECSI_at-127.0.0.1-" + port;
    EXPECT_EQ(NamesIn(folder_ / "host-trace"), Words{from + ".log"});
    EXPECT_EQ(NamesIn(folder_ / "host-pcap"), Words{from + ".pcapng"});
    EXPECT_EQ(NamesIn(folder_ / "equipment-trace"), Words{at + ".log"});
    EXPECT_EQ(NamesIn(folder_ / "equipment-pcap"), Words{at + ".pcapng"});
    // The templates of the dictionary have an empty PPID.
    for (const char* folder : {"host", "equipment"}) {
        EXPECT_EQ(NamesIn(folder_ / (folder + std::string("/recipes/sent"))), Words{"%empty"});
        EXPECT_EQ(NamesIn(folder_ / (folder + std::string("/recipes/received"))), Words{"%empty"});
    }
}

TEST_F(TwoProcesses, equipment_reports_what_its_dictionary_does_not_hold) {
    const std::string small = folder_.Write(
        "small.xml",
        "<D><Trans Name='S1F1' Desc=''>"
        "<Primary Stream='1' Func='1' Name='' Desc=''><Root/></Primary>"
        "<Secondary Stream='1' Func='2' Name='' Desc=''><Root/></Secondary></Trans></D>");
    ChildProcess equipment(HEXMIRE_PROGRAM, Equipment({"--dictionary", small}));
    ChildProcess host(HEXMIRE_PROGRAM,
                      Host(Script("connect\nsend S1F15\nexpect S9F5\nsend S2F17\nexpect S9F3\n"
                                  "send S9F1\nsend S1F1\nexpect S1F2\n")));
    EXPECT_EQ(host.Wait(), 0) << host.Errors();
    EXPECT_EQ(Find(host.Output(), "received-primary", 9, 5)->at("body_hex"),
              "21 0A 00 00 81 0F 00 00 00 00 00 01");
    EXPECT_EQ(Find(host.Output(), "received-primary", 9, 3)->at("body_hex"),
              "21 0A 00 00 82 11 00 00 00 00 00 02");
    equipment.Signal(SIGTERM);
    EXPECT_EQ(equipment.Wait(), 0);
    EXPECT_EQ(Find(equipment.Output(), "received-primary", 9, 1)->at("name"), "");
}

TEST_F(TwoProcesses, equipment_reports_a_foreign_device) {
    ChildProcess equipment(HEXMIRE_PROGRAM, Equipment({"--device-id", "7"}));
    ChildProcess host(HEXMIRE_PROGRAM, Host(Script("connect\nsend S1F1\nexpect S1F2 20\n")));
    ASSERT_TRUE(equipment.ReadUntil(R"("event":"sent")"));
    host.Signal(SIGTERM);
    EXPECT_EQ(host.Wait(), 1);
    EXPECT_EQ(host.Errors(), "hexmire: " + (folder_ / "script0:3") + ": interrupted\n");
    equipment.Signal(SIGTERM);
    EXPECT_EQ(equipment.Wait(), 0);
    EXPECT_EQ(Find(equipment.Output(), "sent", 9, 1)->at("body_hex"),
              "21 0A 00 00 81 01 00 00 00 00 00 01");
}

TEST_F(TwoProcesses, script_comes_from_the_standard_input_line_by_line) {
    ChildProcess equipment(HEXMIRE_PROGRAM, Equipment());
    ChildProcess host(HEXMIRE_PROGRAM, Host({"--script", "-"}));
    host.Write("connect\n");
    ASSERT_TRUE(host.ReadUntil("\"connect\""));
    host.Write("send S1F1\nexp");
    ASSERT_TRUE(host.ReadUntil("\"sent\""));
    ASSERT_TRUE(host.ReadUntil("\"received-secondary\""));
    host.Write("ect S1F2 0");
    host.CloseInput();  // The last line needs no end.
    EXPECT_EQ(host.Wait(), 0) << host.Errors();
    EXPECT_THAT(host.Output(), HasSubstr("\"code\":0"));
}

TEST_F(TwoProcesses, signal_ends_a_link_with_a_separate) {
    for (const int signal : {SIGINT, SIGTERM}) {
        ChildProcess equipment(HEXMIRE_PROGRAM, Equipment());
        ChildProcess host(HEXMIRE_PROGRAM, Host());
        ASSERT_TRUE(host.ReadUntil("\"connect\""));
        host.Signal(signal);
        EXPECT_EQ(host.Wait(), 0);
        EXPECT_EQ(host.Errors(), "");
        EXPECT_TRUE(equipment.ReadUntil("\"code\":3035"));
        equipment.Signal(signal);
        EXPECT_EQ(equipment.Wait(), 0);
    }
}

TEST_F(TwoProcesses, two_signals_at_once_end_a_link_with_a_separate_too) {
    ChildProcess equipment(HEXMIRE_PROGRAM, Equipment());
    ChildProcess host(HEXMIRE_PROGRAM, Host());
    ASSERT_TRUE(host.ReadUntil("\"connect\""));
    host.Signal(SIGTERM);
    host.Signal(SIGHUP);
    host.Signal(SIGINT);
    EXPECT_EQ(host.Wait(), 0);
    EXPECT_TRUE(equipment.ReadUntil("\"code\":3035"));
    equipment.Signal(SIGHUP);
    equipment.Signal(SIGTERM);
    EXPECT_EQ(equipment.Wait(), 0);
}

TEST_F(TwoProcesses, unfinished_command_is_not_done_when_a_signal_comes) {
    for (const char* unfinished : {"send\nS1F1", "send S1F3 W <L\n<U4 1001>\n>"}) {
        ChildProcess equipment(HEXMIRE_PROGRAM, Equipment());
        ChildProcess host(HEXMIRE_PROGRAM, Host({"--script", "-"}));
        host.Write("connect\n" + std::string(unfinished) + "\n");
        ASSERT_TRUE(host.ReadUntil("\"connect\""));
        host.Signal(SIGTERM);
        EXPECT_EQ(host.Wait(), 1);
        EXPECT_THAT(host.Errors(), EndsWith("interrupted\n"));
        EXPECT_THAT(host.Output(), Not(HasSubstr("\"sent\"")));
        equipment.Signal(SIGTERM);
        EXPECT_EQ(equipment.Wait(), 0);
    }
}

TEST_F(TwoProcesses, killed_equipment_fails_what_the_host_expects) {
    ChildProcess equipment(HEXMIRE_PROGRAM, Equipment());
    ChildProcess host(HEXMIRE_PROGRAM, Host(Script("connect\nexpect S6F11 2\n")));
    ASSERT_TRUE(host.ReadUntil("\"connect\""));
    equipment.Signal(SIGKILL);
    EXPECT_TRUE(host.ReadUntil("\"disconnect\""));
    EXPECT_EQ(host.Wait(), 1);
    EXPECT_EQ(host.Errors(), "hexmire: " + (folder_ / "script0:2") + ": S6F11 did not come\n");
}

TEST_F(TwoProcesses, killed_host_leaves_the_equipment_ready_for_the_next) {
    ChildProcess equipment(HEXMIRE_PROGRAM, Equipment());
    ChildProcess first(HEXMIRE_PROGRAM, Host());
    ASSERT_TRUE(first.ReadUntil("\"connect\""));
    first.Signal(SIGKILL);
    EXPECT_EQ(first.Wait(), -SIGKILL);
    ASSERT_TRUE(equipment.ReadUntil("\"disconnect\""));
    ChildProcess second(HEXMIRE_PROGRAM, Host(Script("connect\nsend S1F1\nexpect S1F2\n")));
    EXPECT_EQ(second.Wait(), 0) << second.Errors();
}

TEST_F(TwoProcesses, host_may_listen_and_the_equipment_connect) {
    ChildProcess host(HEXMIRE_PROGRAM,
                      {"host",
                       "--mode",
                       "passive",
                       "--port-type",
                       "hsms",
                       "--local",
                       address_,
                       "--no-log",
                       "--device-id",
                       "513",
                       "--script",
                       folder_.Write("s", "connect\nsend S1F1\nexpect S1F2\n")});
    ChildProcess equipment(HEXMIRE_PROGRAM,
                           {"equipment",
                            "--mode",
                            "active",
                            "--port-type",
                            "hsms",
                            "--remote",
                            address_,
                            "--no-log",
                            "--device-id",
                            "513",
                            "--t5",
                            "1"});
    EXPECT_EQ(host.Wait(), 0) << host.Errors();
    EXPECT_THAT(host.Output(), HasSubstr("host received S1F2, device ID 513, system bytes 1\n"));
}

TEST_F(TwoProcesses, connect_that_comes_to_nothing_fails_the_script) {
    ChildProcess host(HEXMIRE_PROGRAM, Host(Script("connect 1\n")));
    EXPECT_EQ(host.Wait(), 1);
    EXPECT_THAT(host.Errors(), HasSubstr("script0:1: no connection: 3050 "));
}

TEST_F(TwoProcesses, template_that_is_unknown_fails_the_script) {
    ChildProcess host(HEXMIRE_PROGRAM, Host(Script("send S99F1\n")));
    EXPECT_EQ(host.Wait(), 1);
    EXPECT_THAT(host.Errors(), HasSubstr("script0:1: cannot send S99F1: 1025 "));
}

TEST_F(TwoProcesses, port_that_is_taken_is_told) {
    ChildProcess first(HEXMIRE_PROGRAM, Equipment());
    ChildProcess host(HEXMIRE_PROGRAM, Host());
    ASSERT_TRUE(host.ReadUntil("\"connect\""));
    ChildProcess second(HEXMIRE_PROGRAM, Equipment());
    EXPECT_TRUE(second.ReadUntil("\"code\":3052"));
}

TEST_F(TwoProcesses, first_host_of_the_examples_gets_its_answer) {
    ChildProcess equipment(HEXMIRE_PROGRAM, Equipment());
    ChildProcess host(HEXMIRE_PROGRAM, Host(Script("connect\n")));
    ASSERT_EQ(host.Wait(), 0);  // The equipment listens.
    const std::string port = address_.substr(address_.rfind(':') + 1);
    ChildProcess example(HEXMIRE_FIRST_HOST,
                         {port, std::string(HEXMIRE_SOURCE_DIR) + "/dictionaries/Default.xml"});
    EXPECT_EQ(example.Wait(), 0) << example.Errors();
    EXPECT_THAT(example.Output(), HasSubstr("S1F2\r\n"));
}

}  // namespace
}  // namespace hexmire
