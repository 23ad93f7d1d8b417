// Every state by every event, from the table in tests/golden/hsms-states.txt: next state, what went
// out, timers pending (SEMI E37 connection state model; SEMI E37.1 for port type 4).
#include "../../fakes/HsmsRig.h"
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <set>
#include <sstream>

namespace hexmire::test {
namespace {

using Lines = std::vector<std::string>;

struct Role {
    std::string Name;
    std::int32_t PortType;
    bool Active;
};

const std::vector<Role> kRoles{{"4 active", 4, true}, {"2 passive", 2, false}};

const Lines kEvents{
    "open",
    "close",
    "connected",
    "self-connected",
    "caller 10.0.0.9",
    "connect-failed 111",
    "listening",
    "listen-failed 98",
    "accept-failed 24",
    "rx SelectReq FFFF 00000001",
    "rx SelectReq 0006 00000001",
    "rx SelectRsp FFFF 38000000",
    "rx SelectRsp.1 FFFF 38000000",
    "rx SelectRsp.3 FFFF 38000000",
    "rx SelectRsp FFFF 00000002",
    "rx DeselectReq FFFF 00000003",
    "rx DeselectReq 0006 00000003",
    "rx DeselectRsp FFFF 00000003",
    "rx LinktestReq FFFF 00000004",
    "rx LinktestRsp FFFF 00000005",
    "rx RejectReq.4 FFFF 38000000",
    "rx RejectReq.3 FFFF 00000006",
    "rx SeparateReq FFFF 00000007",
    "rx SeparateReq 0006 00000007",
    "rx S1F1W 0005 00000008",
    "rx S1F1W 0006 00000008",
    "rx S9F1 0006 00000008",
    "rx-bytes 0000000A FFFF 0000 0008 00000009",
    "rx-bytes 0000000A FFFF 0000 0101 00000009",
    "rx-bytes 0000000B FFFF 0000 0005 00000009 AA",
    "rx-bytes 00000009",
    "rx-bytes 0100000B",
    "rx-bytes 0000000A FFFF",
    "fin",
    "reset",
    "send S1F1W 0005 0000000A",
    "consumed 0",
    "fire T5",
    "fire T6",
    "fire T7",
    "fire T8",
    "fire FrameCap",
    "fire Linktest",
    "fire ConnectTimeout",
    "fire WriteStall",
    "fire Linger",
    "fire AcceptRetry",
    "fire ErrorWindow",
};

Lines WayTo(const std::string& state, bool active) {
    const std::string selecting =
        active ? "rx SelectRsp FFFF 38000000" : "rx SelectReq FFFF 000000FF";
    const Lines way{"open", "connected", selecting, "close"};
    const std::vector<std::string> states{
        "CLOSED", "NOT CONNECTED", "NOT SELECTED", "SELECTED", "ENDING"};
    const auto steps = std::find(states.begin(), states.end(), state) - states.begin();
    return {way.begin(), way.begin() + steps};
}

std::string Row(const Role& role, const std::string& state, const std::string& event) {
    HsmsRig rig(HsmsRig::Settings(role.PortType, role.Active));
    rig.Do(WayTo(state, role.Active));
    EXPECT_EQ(rig.State(), state);
    const std::string done = rig.Do(event);
    EXPECT_EQ(rig.Violation, "") << role.Name << ", " << state << ", " << event;
    return role.Name + " | " + state + " | " + event + " | " + rig.State() + " | " + done + " | " +
           rig.Timers();
}

Lines AllRows() {
    Lines rows;
    for (const Role& role : kRoles) {
        for (const char* state :
             {"CLOSED", "NOT CONNECTED", "NOT SELECTED", "SELECTED", "ENDING"}) {
            for (const std::string& event : kEvents) {
                rows.push_back(Row(role, state, event));
            }
        }
    }
    return rows;
}

TEST(HsmsStateTable, EveryStateByEveryEventDoesWhatTheTableSays) {
    std::ifstream file(std::string(HEXMIRE_SOURCE_DIR) + "/tests/golden/hsms-states.txt");
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

TEST(HsmsStateTable, EachNameOfAStateIsReached) {
    std::set<std::string> names;
    for (const std::string& row : AllRows()) {
        std::istringstream fields(row);
        std::string field;
        for (int skip = 0; skip < 4; ++skip) {
            std::getline(fields, field, '|');
        }
        names.insert(field);
    }
    EXPECT_EQ(names.size(), 5U);
}

}  // namespace
}  // namespace hexmire::test
