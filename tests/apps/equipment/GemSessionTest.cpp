#include "../../hosting/TempFolder.h"
#include "../ChildProcess.h"
#include "FreePort.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace hexmire {
namespace {

using fakes::ChildProcess;
using fakes::TempFolder;
using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr const char* kHostScript =
    "connect 20\n"
    "expect S1F13\n"
    "reply S1F14 <L <B 0x00> <L>>.\n"
    "send S1F13\n"
    "expect S1F14\n"
    "send S1F17\n"
    "expect S1F18\n"
    "send S2F33 W <L <U4 1> <L <L <U4 10> <L <U4 1010> <U4 1101>>>>>.\n"
    "expect S2F34\n"
    "send S2F35 W <L <U4 2> <L <L <U4 3011> <L <U4 10>>>>>.\n"
    "expect S2F36\n"
    "send S2F37 W <L <BOOLEAN T> <L <U4 3011>>>.\n"
    "expect S2F38\n"
    "send S2F41 W <L <A 'START'> <L <L <A 'LOTID'> <A 'LOT-7'>>>>.\n"
    "expect S2F42\n"
    "expect S6F11\n"
    "reply S6F12 <B 0x00>.\n"
    "expect S5F1\n"
    "reply S5F2 <B 0x00>.\n"
    "send S7F19\n"
    "expect S7F20\n"
    "send S1F3 W <L <U4 1002> <U4 1010>>.\n"
    "expect S1F4\n"
    "send S1F3 W <U4 1002>.\n"
    "expect S9F7\n"
    "send S1F15\n"
    "expect S1F16\n"
    "send S1F1\n"
    "expect S1F0\n"
    "disconnect\n";

constexpr const char* kEquipmentScript =
    "connect 20\n"
    "expect S6F12\n"
    "variable 1010 21.25\n"
    "alarm 4001 set\n"
    "expect S5F2\n"
    "expect S1F15\n"
    "expect S1F1\n";

/// Received messages as "S1F14" with their bodies in hex.
std::vector<std::string> ReceivedIn(const std::string& output) {
    std::vector<std::string> received;
    std::size_t begin = 0;
    for (std::size_t end = output.find('\n'); end != std::string::npos;
         begin = end + 1, end = output.find('\n', begin)) {
        const json line = json::parse(output.substr(begin, end - begin));
        const std::string event = line.at("event");
        if (!event.starts_with("received")) continue;
        received.push_back("S" + std::to_string(line.at("stream").get<int>()) + "F" +
                           std::to_string(line.at("function").get<int>()) + " " +
                           line.at("body_hex").get<std::string>());
    }
    return received;
}

TEST(GemSession, StartsBetweenAHostAndAnEquipment) {
    TempFolder folder;
    const std::string address = "127.0.0.1:" + std::to_string(program::FindFreePort());
    ChildProcess equipment(HEXMIRE_PROGRAM,
                           {"equipment",
                            "--local",
                            address,
                            "--no-log",
                            "--json",
                            "--establish",
                            "--model",
                            HEXMIRE_SOURCE_DIR "/examples/equipment.json",
                            "--script",
                            folder.Write("equipment", kEquipmentScript)});
    ChildProcess host(HEXMIRE_PROGRAM,
                      {"host",
                       "--remote",
                       address,
                       "--no-log",
                       "--json",
                       "--t5",
                       "1",
                       "--script",
                       folder.Write("host", kHostScript)});
    EXPECT_EQ(host.Wait(), 0) << host.Errors() << host.Output();
    EXPECT_EQ(equipment.Wait(), 0) << equipment.Errors() << equipment.Output();
    EXPECT_THAT(
        ReceivedIn(host.Output()),
        ElementsAre("S1F13 01 02 41 07 48 58 4D 2D 32 30 30 41 03 31 2E 30",
                    "S1F14 01 02 21 01 00 01 02 41 07 48 58 4D 2D 32 30 30 41 03 31 2E 30",
                    "S1F18 21 01 02",
                    "S2F34 21 01 00",
                    "S2F36 21 01 00",
                    "S2F38 21 01 00",
                    "S2F42 01 02 21 01 00 01 00",
                    "S6F11 01 03 B1 04 00 00 00 01 B1 04 00 00 0B C3 01 01 01 02 B1 04 00 00 00 0A "
                    "01 02 91 04 41 A4 00 00 41 05 4C 4F 54 2D 37",
                    HasSubstr("S5F1 01 03 21 01 82 B1 04 00 00 0F A1 41 23 43 68"),
                    "S7F20 01 02 41 05 43 4C 45 41 4E 41 06 45 54 43 48 2D 31",
                    "S1F4 01 02 A5 01 05 91 04 41 AA 00 00",
                    HasSubstr("S9F7 21 0A 00 00 81 03 00 00 00 00"),
                    "S1F16 21 01 00",
                    "S1F0 "));
}

TEST(GemSession, AModelThatIsWrongIsTold) {
    TempFolder folder;
    const std::string path = folder.Write("m.json", "{\"alarms\": [{\"id\": 1, \"txt\": \"\"}]}");
    ChildProcess equipment(HEXMIRE_PROGRAM,
                           {"equipment", "--local", "127.0.0.1:1", "--no-log", "--model", path});
    EXPECT_EQ(equipment.Wait(), 2);
    EXPECT_EQ(equipment.Errors(), "hexmire: " + path + ": alarms[0]: unknown member \"txt\"\n");
    ChildProcess rude(
        HEXMIRE_PROGRAM,
        {"equipment", "--local", "127.0.0.1:1", "--no-log", "--misbehave", "S1F1 late x"});
    EXPECT_EQ(rude.Wait(), 2);
    EXPECT_EQ(rude.Errors(),
              "hexmire: --misbehave 'S1F1 late x': 'x' is no number of seconds from 0 to 86400\n");
}

}  // namespace
}  // namespace hexmire
