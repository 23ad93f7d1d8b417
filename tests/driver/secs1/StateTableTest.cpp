// Every state by every event, from the table in tests/golden/secs1-line.txt: next state, what went
// out, timers pending (SEMI E4, block transfer protocol).
#include "../../fakes/Secs1Rig.h"
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

namespace hexmire::test {
namespace {

using Lines = std::vector<std::string>;

struct Role {
    std::string Name;
    std::int32_t PortType;
    bool Host;
};
struct State {
    std::string Name;
    Lines Way;  ///< from a closed port
};

const std::vector<Role> kRoles{{"1 host", 1, true}, {"3 equipment", 3, false}};

/// A state's name, what waits behind it, and how one gets there.
std::vector<State> States(const Role& role) {
    const Lines up{"open", "connected"};
    const std::string send = "send S1F1W 000A 0000000A";
    const std::string sendLong = "send S1F1W 000A 0000000A *245";
    const std::string peer = role.Host ? "800A" : "000A";
    const auto with = [&](Lines more) {
        more.insert(more.begin(), up.begin(), up.end());
        return more;
    };
    std::vector<State> states{
        {"CLOSED", {}},
        {"NOT CONNECTED", {"open"}},
        {"IDLE", up},
        {"IDLE with half a message", with({"take S1F3W " + peer + " 0000000D #1 0100"})},
        {"TX_EOT", with({send})},
        {"TX_EOT at the retry limit", with({send, "fire T2", "fire T2", "fire T2"})},
        {"TX_ACK", with({send, "rx EOT"})},
        {"TX_ACK with another block", with({sendLong, "rx EOT"})},
        {"TX_ACK at the retry limit", with({send, "fire T2", "fire T2", "fire T2", "rx EOT"})},
        {"RX_LEN", with({"rx ENQ"})},
        {"RX_LEN with a block", with({"rx ENQ", send})},
        {"RX_BODY", with({"rx ENQ, 0A"})},
        {"DRAIN", with({"rx ENQ, 09"})},
        {"DRAIN with babble", with({"rx ENQ, 09", "fire LineCap"})},
    };
    if (role.Host) {
        states.push_back({"RX_LEN after a yield", with({send, "rx ENQ"})});
        states.push_back({"RX_LEN after a yield at the retry limit",
                          with({send, "fire T2", "fire T2", "fire T2", "rx ENQ"})});
        states.push_back({"RX_BODY after a yield", with({send, "rx ENQ, 0A"})});
        states.push_back({"DRAIN after a yield", with({send, "rx ENQ, FF"})});
    }
    // Over TCP a line that babbles is closed.
    if (role.PortType != 1) {
        std::erase_if(states, [](const State& one) { return one.Name == "DRAIN with babble"; });
    }
    return states;
}

/// The peer's blocks carry its own direction.
Lines Events(const Role& role) {
    const std::string block =
        role.Host ? "S6F11W 800A 0000000B #1E 0100" : "S6F11W 000A 0000000B #1E 0100";
    return {"open",
            "close",
            "connected",
            "caller 10.0.0.9",
            "connect-failed 5",
            "connect-hopeless 2",
            "listening",
            "listen-failed 98",
            "accept-failed 24",
            "rx ENQ",
            "rx EOT",
            "rx ACK",
            "rx NAK",
            "rx 00",
            "rx 09",
            "rx 0A",
            "rx FF",
            "rx " + block,
            "rx bad " + block,
            "rx ENQ, " + block,
            "rx " + block + ", ENQ",
            "rx ACK, ENQ",
            "rx EOT, ACK",
            "fin",
            "reset",
            "send S1F3W 000A 0000000C",
            "consumed 0",
            "fire T1",
            "fire T2",
            "fire T4",
            "fire LineCap",
            "fire T5",
            "fire T6",
            "fire T7",
            "fire T8",
            "fire FrameCap",
            "fire Linktest",
            "fire Linger",
            "fire ConnectTimeout",
            "fire WriteStall",
            "fire AcceptRetry",
            "fire Crossing",
            "fire ErrorWindow"};
}

std::string Row(const Role& role, const State& state, const std::string& event) {
    Secs1Rig rig(Secs1Rig::Settings(role.PortType, role.Host));
    rig.Do(state.Way);
    EXPECT_TRUE(state.Name.starts_with(rig.State())) << state.Name;
    const std::string done = rig.Do(event);
    EXPECT_EQ(rig.Violation, "") << role.Name << ", " << state.Name << ", " << event;
    return role.Name + " | " + state.Name + " | " + event + " | " + rig.State() + " | " + done +
           " | " + rig.Timers();
}

Lines AllRows() {
    Lines rows;
    for (const Role& role : kRoles) {
        for (const State& state : States(role)) {
            for (const std::string& event : Events(role)) {
                rows.push_back(Row(role, state, event));
            }
        }
    }
    return rows;
}

TEST(Secs1StateTable, EveryStateByEveryEventDoesWhatTheTableSays) {
    std::ifstream file(std::string(HEXMIRE_SOURCE_DIR) + "/tests/golden/secs1-line.txt");
    Lines expected;
    for (std::string line; std::getline(file, line);) {
        if (!line.empty() && line.front() != '#') expected.push_back(line);
    }
    const Lines actual = AllRows();
    for (std::size_t index = 0; index < std::max(actual.size(), expected.size()); ++index) {
        EXPECT_EQ(index < actual.size() ? actual[index] : "no such row",
                  index < expected.size() ? expected[index] : "no row in the file");
    }
}

}  // namespace
}  // namespace hexmire::test
