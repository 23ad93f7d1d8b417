// Every state by every event, from the table in tests/golden/hsms-states.txt: next state, what went
// out, timers pending (SEMI E37 connection state model; SEMI E37.1 for port type 4).
#include "../../fakes/HsmsRig.h"
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <set>

namespace hexmire::test {
namespace {

using Lines = std::vector<std::string>;

constexpr std::int32_t kActive = 1;
constexpr std::int32_t kPassive = 2;
constexpr std::int32_t kAlternating = 3;

struct Role {
    std::string Name;
    std::int32_t PortType;
    std::int32_t Mode;
    bool Host = true;
};

/// A state's name, what else there is, and how one gets there from a closed port.
struct Situation {
    std::string Name;
    Lines Way;
    std::string Request = "38000000";  ///< our control request that was sent last
};

/// Port type and mode: active, passive, alternating host, alternating equipment.
const std::vector<Role> kRoles{
    {"4a", 4, kActive},
    {"4p", 4, kPassive},
    {"4h", 4, kAlternating},
    {"4e", 4, kAlternating, false},
    {"2a", 2, kActive},
    {"2p", 2, kPassive},
    {"2h", 2, kAlternating},
    {"2e", 2, kAlternating, false},
};

const std::string kDeselecting = "DESELECTING";

LinkSettings SettingsOf(const Role& role, const Situation& situation) {
    LinkSettings settings = HsmsRig::Settings(role.PortType);
    settings.HSMSConnectionMode = role.Mode;
    settings.HostRole = role.Host;
    settings.DeselectOnClose = situation.Name.starts_with(kDeselecting);
    return settings;
}

std::vector<Situation> Situations(const Role& role) {
    const std::string peerSelects = "rx SelectReq FFFF 000000FF";
    const Lines up{"open", "connected"};
    const auto with = [](Lines way, const Lines& more) {
        way.insert(way.end(), more.begin(), more.end());
        return way;
    };
    const bool opens = role.Mode != kPassive;
    const Lines selected =
        with(up, {opens ? std::string("rx SelectRsp FFFF 38000000") : peerSelects});
    const std::string next = opens ? "38000001" : "38000000";
    std::vector<Situation> all{
        {"CLOSED", {}},
        {"NOT CONNECTED", {"open"}},
        {"NOT SELECTED", up},
        {"SELECTED", selected},
        {"SELECTED, Linktest open", with(selected, {"fire Linktest"}), next},
        {"ENDING", with(selected, {"close"}), next},
    };
    if (opens) {
        all.push_back({"NOT CONNECTED, T5 runs", {"open", "connect-failed 111"}});
        all.push_back({"SELECTED, Select open", with(up, {peerSelects})});
    }
    if (role.Mode == kAlternating) {
        const std::string call = "caller 10.0.0.2";
        if (role.Host) all.push_back({"NOT CONNECTED, caller held", {"open", call}});
        const Lines called{"open", "connect-failed 111", call};
        all.push_back({"NOT SELECTED, called", called});
        all.push_back({"SELECTED, called", with(called, {peerSelects})});
    }
    if (role.PortType == 2) {
        all.push_back(
            {"NOT SELECTED, separated", with(selected, {"rx SeparateReq 0005 000000FE"})});
        all.push_back({kDeselecting, with(selected, {"close"}), next});
    }
    return all;
}

/// OURS stands for the system bytes of our last control request.
Lines Events() {
    Lines events{
        "open",
        "close",
        "connected",
        "self-connected",
        "caller 10.0.0.2",
        "caller 10.0.0.9",
        "connect-failed 111",
        "listening",
        "listen-failed 98",
        "accept-failed 24",
        "rx SelectReq FFFF 00000001",
        "rx SelectReq 0005 00000001",
        "rx SelectReq 0006 00000001",
        "rx SelectRsp FFFF 00000002",
        "rx DeselectReq FFFF 00000003",
        "rx DeselectReq 0006 00000003",
        "rx DeselectRsp FFFF 00000003",
        "rx LinktestReq FFFF 00000004",
        "rx LinktestReq 0006 00000004",
        "rx LinktestRsp FFFF OURS",
        "rx LinktestRsp FFFF 00000005",
        "rx RejectReq.3 FFFF 00000006",
        "rx SeparateReq FFFF 00000007",
        "rx SeparateReq 0006 00000007",
        "rx S1F1W 0005 00000008",
        "rx S1F1W 0006 00000008",
        "rx S1F1W FFFF 00000008",
        "rx S9F1 0006 00000008",
        "rx-bytes 0000000A FFFF 0000 0008 00000009",
        "rx-bytes 0000000A FFFF 0000 00FF 00000009",
        "rx-bytes 0000000A FFFF 0000 0101 00000009",
        "rx-bytes 0000000A FFFF 0000 0107 00000009",
        "rx-bytes 0000000B FFFF 0000 0005 00000009 AA",
        "rx-bytes 0000000B FFFF 0000 0007 00000009 AA",
        "rx-bytes 00000009",
        "rx-bytes 0100000B",
        "rx-bytes 0000000A FFFF",
        "fin",
        "reset",
        "send S1F1W 0005 0000000A",
        "consumed 0",
    };
    for (const int status : {0, 1, 2, 3, 4, 5, 6, 7, 128, 255}) {
        events.push_back("rx SelectRsp." + std::to_string(status) + " FFFF OURS");
    }
    for (const int status : {0, 1, 2, 3, 255}) {
        events.push_back("rx DeselectRsp." + std::to_string(status) + " FFFF OURS");
    }
    for (const int reason : {1, 2, 3, 4, 255}) {
        events.push_back("rx RejectReq." + std::to_string(reason) + " FFFF OURS");
    }
    for (std::size_t timer = 0; timer < link::kTimerCount; ++timer) {
        events.push_back("fire " + TimerName(static_cast<link::TimerId>(timer)));
    }
    return events;
}

/// What happens, as a row without its roles; empty when nothing happens at all.
std::string Row(const Role& role, const Situation& situation, std::string event) {
    HsmsRig rig(SettingsOf(role, situation));
    rig.Do(situation.Way);
    EXPECT_TRUE(situation.Name.starts_with(rig.State())) << role.Name << ", " << situation.Name;
    const std::string row = situation.Name + " | " + event + " | ";
    if (const auto at = event.find("OURS"); at != std::string::npos) {
        event.replace(at, 4, situation.Request);
    }
    const std::string before = rig.State() + rig.Timers();
    const std::string done = rig.Do(event);
    EXPECT_EQ(rig.Violation, "") << role.Name << " " << row;
    if (done.empty() && rig.State() + rig.Timers() == before) return {};
    return row + rig.State() + " | " + done + " | " + rig.Timers();
}

/// The rows in the order of the first role that each of them is true for.
Lines AllRows() {
    Lines rows;
    std::map<std::string, std::string> roles;
    for (const Role& role : kRoles) {
        for (const Situation& situation : Situations(role)) {
            for (const std::string& event : Events()) {
                const std::string row = Row(role, situation, event);
                if (row.empty()) continue;
                const auto [found, isNew] = roles.try_emplace(row, "");
                if (isNew) rows.push_back(row);
                found->second += (found->second.empty() ? "" : " ") + role.Name;
            }
        }
    }
    for (std::string& row : rows) {
        row += " | " + roles.at(row);
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
        ASSERT_EQ(index < actual.size() ? actual[index] : "no such row",
                  index < expected.size() ? expected[index] : "no row in the file")
            << "row " << index + 1;
    }
}

TEST(HsmsStateTable, EachNameOfAStateIsReached) {
    std::set<std::string> names;
    for (const Role& role : kRoles) {
        for (const Situation& situation : Situations(role)) {
            HsmsRig rig(SettingsOf(role, situation));
            rig.Do(situation.Way);
            names.insert(rig.State());
        }
    }
    EXPECT_EQ(names.size(), 6U);
}

}  // namespace
}  // namespace hexmire::test
