#include "../hosting/TempFolder.h"
#include "../hosting/links/Pty.h"
#include "ChildProcess.h"
#include "FreePort.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <vector>

namespace hexmire {
namespace {

using fakes::ChildProcess;
using fakes::TempFolder;
using testing::HasSubstr;

using Words = std::vector<std::string>;

constexpr const char* kTalk =
    "connect 20\nsend S1F13\nexpect S1F14 20\nsend S1F1\nexpect S1F2 20\n";

/// A host and an equipment as two processes, on each kind of link.
class PortTypes : public testing::Test {
protected:
    static Words Join(Words words, const Words& more) {
        words.insert(words.end(), more.begin(), more.end());
        return words;
    }
    void ExpectTalk(const Words& host, const Words& equipment) {
        const Words common = {"--no-log", "--json", "--device-id", "7", "--t5", "1"};
        ChildProcess tool(HEXMIRE_PROGRAM, Join(Join({"equipment"}, equipment), common));
        // A serial port forgets what was said before it was opened.
        if (equipment.at(1) == "rs232") {
            ASSERT_TRUE(tool.ReadUntil("\"connect\""));
        }
        ChildProcess mes(
            HEXMIRE_PROGRAM,
            Join(Join(Join({"host"}, host), common), {"--script", folder_.Write("talk", kTalk)}));
        EXPECT_EQ(mes.Wait(), 0) << mes.Errors() << mes.Output();
        EXPECT_EQ(mes.Errors(), "");
        tool.Signal(SIGTERM);
        EXPECT_EQ(tool.Wait(), 0);
        EXPECT_EQ(tool.Errors(), "");
    }

    TempFolder folder_;
    const std::string address_ = "127.0.0.1:" + std::to_string(program::FindFreePort());
    const std::string other_ = "127.0.0.1:" + std::to_string(program::FindFreePort());
};

TEST_F(PortTypes, talk_on_a_serial_line) {
    const test::PtyCable cable;
    const auto end = [](const std::string& path) {
        return Words{"--port-type",
                     "rs232",
                     "--serial",
                     path,
                     "--baud",
                     "19200",
                     "--t1",
                     "1.5",
                     "--t2",
                     "4.5",
                     "--t4",
                     "20",
                     "--retry",
                     "5"};
    };
    ExpectTalk(end(cable.PathA()), end(cable.PathB()));
}

TEST_F(PortTypes, talk_in_blocks_over_tcp) {
    ExpectTalk({"--port-type", "tcpip", "--remote", address_},
               {"--port-type", "tcpip", "--local", address_});
}

TEST_F(PortTypes, talk_in_blocks_over_tcp_whoever_connects) {
    ExpectTalk({"--port-type", "tcpip", "--mode", "passive", "--local", address_},
               {"--port-type", "tcpip", "--mode", "active", "--remote", address_});
}

TEST_F(PortTypes, talk_as_alternating_sides) {
    for (const char* type : {"tcpip", "hsms", "hsms-ss"}) {
        SCOPED_TRACE(type);
        const Words kind = {"--port-type", type, "--mode", "alternating"};
        ExpectTalk(Join(kind, {"--local", address_, "--remote", other_}),
                   Join(kind, {"--local", other_, "--remote", address_}));
    }
}

TEST_F(PortTypes, report_an_unknown_stream_with_the_header_of_the_last_block) {
    ChildProcess tool(
        HEXMIRE_PROGRAM,
        {"equipment",
         "--port-type",
         "tcpip",
         "--local",
         address_,
         "--no-log",
         "--json",
         "--dictionary",
         folder_.Write("small.xml",
                       "<D><Trans Name='S1F1' Desc=''>"
                       "<Primary Stream='1' Func='1' Name='' Desc=''><Root/></Primary>"
                       "<Secondary Stream='1' Func='2' Name='' Desc=''><Root/>"
                       "</Secondary></Trans></D>")});
    ChildProcess mes(HEXMIRE_PROGRAM,
                     {"host",
                      "--port-type",
                      "tcpip",
                      "--remote",
                      address_,
                      "--t5",
                      "1",
                      "--no-log",
                      "--json",
                      "--script",
                      folder_.Write("ask", "connect 20\nsend S2F17\nexpect S9F3 20\n")});
    EXPECT_EQ(mes.Wait(), 0) << mes.Errors();
    EXPECT_THAT(mes.Output(), HasSubstr("21 0A 00 00 82 11 80 01 00 00 00 01"));
    tool.Signal(SIGTERM);
    EXPECT_EQ(tool.Wait(), 0);
}

TEST_F(PortTypes, report_a_foreign_device_with_the_header_of_its_block) {
    ChildProcess tool(HEXMIRE_PROGRAM,
                      {"equipment",
                       "--port-type",
                       "tcpip",
                       "--local",
                       address_,
                       "--no-log",
                       "--json",
                       "--device-id",
                       "7"});
    ChildProcess mes(HEXMIRE_PROGRAM,
                     {"host",
                      "--port-type",
                      "tcpip",
                      "--remote",
                      address_,
                      "--t5",
                      "1",
                      "--no-log",
                      "--script",
                      folder_.Write("ask", "connect 20\nsend S1F1\nexpect S1F2 20\n")});
    EXPECT_TRUE(tool.ReadUntil("21 0A 00 00 81 01 80 01 00 00 00 01"));
    mes.Signal(SIGTERM);
    EXPECT_EQ(mes.Wait(), 1);
    tool.Signal(SIGTERM);
    EXPECT_EQ(tool.Wait(), 0);
    EXPECT_THAT(tool.Output(), HasSubstr(R"("stream":9)"));
}

TEST_F(PortTypes, warn_of_a_t1_that_is_short_for_the_speed) {
    const test::Pty pty;
    ChildProcess mes(HEXMIRE_PROGRAM,
                     {"host",
                      "--port-type",
                      "rs232",
                      "--serial",
                      pty.Path(),
                      "--baud",
                      "150",
                      "--t1",
                      "0.1",
                      "--no-log",
                      "--script",
                      folder_.Write("open", "connect\n")});
    EXPECT_EQ(mes.Wait(), 0);
    EXPECT_EQ(mes.Errors(),
              "hexmire: warning: T1 of 100 ms is short for this speed: at least 220 ms are "
              "advisable\n");
}

TEST_F(PortTypes, tell_of_a_serial_port_in_use) {
    const test::Pty pty;
    const Words line = {"--port-type", "rs232", "--serial", pty.Path(), "--no-log", "--t5", "1"};
    ChildProcess first(HEXMIRE_PROGRAM, Join({"host", "--json"}, line));
    ASSERT_TRUE(first.ReadUntil("\"connect\""));
    ChildProcess second(
        HEXMIRE_PROGRAM,
        Join(Join({"host"}, line), {"--script", folder_.Write("open", "connect 0.2\n")}));
    EXPECT_EQ(second.Wait(), 1);
    EXPECT_THAT(second.Errors(), HasSubstr("open:1: no connection: 3062 "));
    first.Signal(SIGTERM);
    EXPECT_EQ(first.Wait(), 0);
}

}  // namespace
}  // namespace hexmire
