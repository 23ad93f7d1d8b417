// The statistics: one script for each counter that HSMS and connections have. It moves that counter
// once, and besides it only those that the row names.
#include "../../fakes/HsmsRig.h"
#include "../../fakes/LinkCounters.h"
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <set>
#include <sstream>

namespace hexmire::test {
namespace {

using Lines = std::vector<std::string>;
enum class Link : std::uint8_t { Active4, Passive4, Active2, Passive2, Host, Equipment };

struct Row {
    std::string Name;
    Link Kind;
    Lines Way;           ///< from CLOSED to where the event may happen
    Lines Event;         ///< what moves the counter
    Lines Besides = {};  ///< counters that the event moves as well
};

const Lines kSelected{"open", "connected", "rx SelectRsp FFFF 38000000"};
const Lines kCalled{"open", "connected", "rx SelectReq FFFF 00000001"};
const Lines kConnected{"open", "connected"};
const Lines kFrame{"FramesReceived"};

const std::vector<Row> kRows{
    {"FramesReceived", Link::Active4, kConnected, {"rx SelectRsp FFFF 38000000"}},
    {"FramesReceived", Link::Active4, kSelected, {"rx S1F1W 0005 00000001"}},
    {"FramesReceived", Link::Active4, kSelected, {"rx LinktestReq FFFF 00000001"}},
    {"ShortLengths", Link::Active4, kSelected, {"rx-bytes 00000009"}},
    {"LongLengths", Link::Active4, kSelected, {"rx-bytes 0100000B"}},
    {"UnknownPTypes",
     Link::Active4,
     kSelected,
     {"rx-bytes 0000000A 0005 8101 0100 00000001"},
     kFrame},
    {"UnknownSTypes",
     Link::Active4,
     kSelected,
     {"rx-bytes 0000000A FFFF 0000 0008 00000001"},
     kFrame},
    {"ControlFramesWithBody",
     Link::Active4,
     kSelected,
     {"rx LinktestReq FFFF 00000001 00"},
     kFrame},
    {"ControlFramesWithBody", Link::Active4, kSelected, {"rx RejectReq.1 FFFF 1 00"}, kFrame},
    {"BrokenRejects",
     Link::Active4,
     kSelected,
     {"rx-bytes 0000000A FFFF 0000 0107 00000001"},
     kFrame},
    {"DataWhileNotSelected", Link::Active4, kConnected, {"rx S1F1W 0005 00000001"}, kFrame},
    {"ForeignSessionData", Link::Active4, kSelected, {"rx S1F1W 0006 00000001"}, kFrame},
    {"ForeignSessionData", Link::Active2, kSelected, {"rx S1F1W 0006 00000001"}, kFrame},
    {"ForeignS9F1", Link::Active4, kSelected, {"rx S9F1 0006 00000001"}, kFrame},
    {"HostileBodies", Link::Active4, kSelected, {"rx S1F1W 0005 00000001 03FFFFFF"}, kFrame},
    {"EarlyReplies",
     Link::Active4,
     {"open", "connected", "rx SelectRsp FFFF 38000000", "block", "send S1F1W 0005 00000007"},
     {"rx-early S1F2 0005 00000007"},
     kFrame},
    {"SystemBytesReplaced", Link::Active4, kSelected, {"rx S1F1W 0005 80000001"}, kFrame},
    {"SelectsWhileSelected", Link::Passive4, kCalled, {"rx SelectReq FFFF 00000002"}, kFrame},
    {"SelectsOfForeignSession", Link::Passive2, kConnected, {"rx SelectReq 0009 00000002"}, kFrame},
    {"SelectsFromPassiveSide",
     Link::Active2,
     {"open", "connected", "rx SelectRsp FFFF 38000000", "rx SeparateReq FFFF 00000001"},
     {"rx SelectReq FFFF 00000002"},
     kFrame},
    {"SimultaneousSelects",
     Link::Active2,
     kConnected,
     {"rx SelectReq FFFF 00000002"},
     {"FramesReceived", "SelectsFromPassiveSide"}},
    {"SelectsRefused", Link::Active4, kConnected, {"rx SelectRsp.2 FFFF 38000000"}, kFrame},
    {"SelectsRefused",
     Link::Active4,
     {"open", "connected", "rx SelectReq FFFF 00000001"},
     {"rx SelectRsp.2 FFFF 38000000"},
     kFrame},
    {"DeselectsRefused",
     Link::Passive2,
     {"open", "connected", "rx SelectReq FFFF 00000001", "close"},
     {"rx DeselectRsp.2 0005 38000000"},
     kFrame},
    {"DeselectsNotSupported", Link::Active4, kSelected, {"rx DeselectReq FFFF 00000002"}, kFrame},
    {"DeselectsNotSupported", Link::Active4, kConnected, {"rx DeselectReq FFFF 00000002"}, kFrame},
    {"DeselectsWhileNotSelected",
     Link::Active2,
     kConnected,
     {"rx DeselectReq FFFF 00000002"},
     kFrame},
    {"SeparatesWhileNotSelected",
     Link::Active4,
     kConnected,
     {"rx SeparateReq FFFF 00000002"},
     kFrame},
    {"ForeignSessionEnds", Link::Active2, kSelected, {"rx SeparateReq 0009 00000002"}, kFrame},
    {"ForeignSessionEnds", Link::Active2, kSelected, {"rx DeselectReq 0009 00000002"}, kFrame},
    {"ForeignSessionEnds",
     Link::Passive2,
     {"open", "connected", "rx SelectReq FFFF 00000001", "close"},
     {"rx DeselectReq 0009 00000002"},
     kFrame},
    {"ForeignSessionEnds",
     Link::Passive2,
     {"open", "connected", "rx SelectReq FFFF 00000001", "close"},
     {"rx SeparateReq 0009 00000002"},
     kFrame},
    {"ResponsesWithoutTransaction",
     Link::Active4,
     kSelected,
     {"rx LinktestRsp FFFF 00000002"},
     kFrame},
    {"ResponsesWithoutTransaction",
     Link::Active4,
     kConnected,
     {"rx SelectRsp FFFF 00000002"},
     kFrame},
    {"ResponsesWithoutTransaction",
     Link::Active4,
     kSelected,
     {"rx DeselectRsp FFFF 00000002"},
     kFrame},
    {"RejectsReceived",
     Link::Active4,
     {"open", "connected", "rx SelectRsp FFFF 38000000", "send S1F1W 0005 00000002"},
     {"rx RejectReq.1 0005 00000002"},
     kFrame},
    {"RejectsWithoutTransaction",
     Link::Active4,
     kSelected,
     {"rx RejectReq.1 FFFF 00000002"},
     {"FramesReceived", "RejectsReceived"}},
    {"RejectsWithoutTransaction",
     Link::Active4,
     kConnected,
     {"rx RejectReq.1 FFFF 00000002"},
     {"FramesReceived", "RejectsReceived"}},
    {"LinktestsSent", Link::Active4, kSelected, {"advance 30000"}},
    {"CrossingsResolved", Link::Host, {"open", "caller 10.0.0.2"}, {"connected"}},
    {"CrossingsResolved", Link::Host, {"open", "caller 10.0.0.2"}, {"fire Crossing"}},
    {"CrossingsResolved", Link::Host, kConnected, {"caller 10.0.0.2"}},
    {"CrossingsResolved", Link::Equipment, {"open"}, {"caller 10.0.0.2"}},
    {"CrossingsResolved", Link::Equipment, kConnected, {"caller 10.0.0.2"}},
    {"ExtraConnections", Link::Passive4, kConnected, {"caller 10.0.0.9"}},
    {"ExtraConnections", Link::Passive4, kCalled, {"caller 10.0.0.9"}, {"LinktestsSent"}},
    {"CallersNotAllowed", Link::Passive4, {"open"}, {"caller 10.0.0.66"}},
    {"SelfConnections", Link::Active4, {"open"}, {"self-connected"}},
    {"ConnectFailures", Link::Active4, {"open"}, {"connect-failed 111"}},
    {"ConnectTimeouts", Link::Active4, {"open"}, {"advance 10000"}},
    {"ListenFailures", Link::Passive4, {"open"}, {"listen-failed 98"}},
    {"AcceptFailures", Link::Passive4, {"open"}, {"accept-failed 24"}},
    {"T6Timeouts", Link::Active4, kConnected, {"advance 5000"}},
    {"T7Timeouts", Link::Passive4, kConnected, {"advance 10000"}},
    {"T8Timeouts", Link::Active4, kSelected, {"rx-bytes 00", "advance 5000"}},
    {"FrameCapTimeouts", Link::Active4, kSelected, {"rx-bytes 00", "fire FrameCap"}},
    {"WriteStalls",
     Link::Active4,
     {"open", "connected", "rx SelectRsp FFFF 38000000", "block", "rx LinktestReq FFFF 00000001"},
     {"fire WriteStall"}},
    {"SendsWhileNotSelected", Link::Active4, kConnected, {"send S1F1 0005 00000001"}},
    {"SendsTooLong", Link::Active4, kSelected, {"send S1F1 0005 1 210C000102030405060708090A0B"}},
    {"SendsRefusedByQueue",
     Link::Active4,
     {"open",
      "connected",
      "rx SelectRsp FFFF 38000000",
      "block",
      "send S1F1 0005 00000001",
      "send S1F1 0005 00000002"},
     {"send S1F1 0005 00000003"}},
    {"SendsAborted",
     Link::Active4,
     {"open", "connected", "rx SelectRsp FFFF 38000000", "block", "send S1F1 0005 00000001"},
     {"fin"}},
    {"UnexpectedEvents", Link::Active4, kSelected, {"fire Linger"}},
    {"UnexpectedEvents", Link::Active4, kSelected, {"fire T2"}},
};

LinkSettings SettingsOf(Link kind) {
    const bool single = kind != Link::Active2 && kind != Link::Passive2;
    const bool passive = kind == Link::Passive4 || kind == Link::Passive2;
    LinkSettings settings = HsmsRig::Settings(single ? 4 : 2, !passive);
    settings.HostRole = kind != Link::Equipment;
    if (kind == Link::Host || kind == Link::Equipment) settings.HSMSConnectionMode = 3;
    settings.AllowedCallers = {"10.0.0.2", "10.0.0.9"};
    settings.DeselectOnClose = true;
    settings.MaxQueuedMessages = 2;
    return settings;
}

TEST(HsmsStatistics, EachCounterMovesOnceAndOnlyWhatItsRowNames) {
    for (const Row& row : kRows) {
        LinkSettings settings = SettingsOf(row.Kind);
        if (row.Name == "SendsTooLong") settings.MaxMessageBytes = 13;
        HsmsRig rig(settings);
        rig.Do(row.Way);
        const LinkStatistics before = rig.Statistics();
        rig.Do(row.Event);
        Lines expected = row.Besides;
        expected.push_back(row.Name);
        Lines moved = MovedCounters(before, rig.Statistics());
        std::sort(expected.begin(), expected.end());
        std::sort(moved.begin(), moved.end());
        EXPECT_EQ(moved, expected) << row.Name << ": " << row.Event.back();
    }
}

/// Counters that only settings or many messages move: tested in LinkCountersTest.cpp.
const Lines kElsewhere{"RepliesWithoutTransaction",
                       "SubstitutesForgotten",
                       "MalformedSends",
                       "InternalFailures",
                       "ReadingPauses",
                       "ErrorsLeftOut"};

std::set<std::string> CountersTested() {
    std::set<std::string> names(kElsewhere.begin(), kElsewhere.end());
    for (const Row& row : kRows) {
        names.insert(row.Name);
    }
    return names;
}

TEST(HsmsStatistics, EachCounterThatIsNotOfSecs1HasARow) {
    std::set<std::string> tested = CountersTested();
    // Of sockets, serial ports and files, not of the machine.
    tested.insert(
        {"ShortT1s", "LateReads", "TraceEntriesLost", "RecipesStored", "RecipesNotStored"});
    bool ofSecs1 = false;
    for (const NamedCounter& counter : kLinkCounters) {
        const std::string name = counter.Name;
        if (name == "BlocksReceived") ofSecs1 = true;
        EXPECT_TRUE(ofSecs1 || tested.contains(name)) << name;
        if (name == "MessagesGivenUp") ofSecs1 = false;
    }
}

TEST(HsmsStatistics, EachCounterIsInTheTableOfTheDocumentation) {
    std::ifstream file(std::string(HEXMIRE_SOURCE_DIR) + "/docs/wire/hsms.md");
    std::ostringstream text;
    text << file.rdbuf();
    for (const std::string& name : CountersTested()) {
        EXPECT_NE(text.str().find("| `" + name + "` |"), std::string::npos) << name;
    }
}

}  // namespace
}  // namespace hexmire::test
