// Each counter of the statistics counts exactly what its name says: one script a counter.
#include "../../fakes/HsmsRig.h"
#include <gtest/gtest.h>

namespace hexmire::test {
namespace {

using Lines = std::vector<std::string>;
using Counter = LinkStatistics::Count LinkStatistics::*;

struct Row {
    const char* Name;
    Counter Field;
    std::int32_t PortType;
    bool Active;
    Lines Way;    ///< from CLOSED to where the counter is still 0
    Lines Event;  ///< and then 1
};

const Lines kActive{"open", "connected", "rx SelectRsp FFFF 38000000"};
const Lines kPassive{"open", "connected", "rx SelectReq FFFF 00000001"};
const Lines kConnected{"open", "connected"};

const std::vector<Row> kRows{
    {"ShortLengths", &LinkStatistics::ShortLengths, 4, true, kActive, {"rx-bytes 00000009"}},
    {"LongLengths", &LinkStatistics::LongLengths, 4, true, kActive, {"rx-bytes 0100000B"}},
    {"UnknownPTypes",
     &LinkStatistics::UnknownPTypes,
     4,
     true,
     kActive,
     {"rx-bytes 0000000A 0005 8101 0100 00000001"}},
    {"UnknownSTypes",
     &LinkStatistics::UnknownSTypes,
     4,
     true,
     kActive,
     {"rx-bytes 0000000A FFFF 0000 0008 00000001"}},
    {"ControlFramesWithBody",
     &LinkStatistics::ControlFramesWithBody,
     4,
     true,
     kActive,
     {"rx LinktestReq FFFF 00000001 00"}},
    {"BrokenRejects",
     &LinkStatistics::BrokenRejects,
     4,
     true,
     kActive,
     {"rx-bytes 0000000A FFFF 0000 0107 00000001"}},
    {"DataWhileNotSelected",
     &LinkStatistics::DataWhileNotSelected,
     4,
     true,
     kConnected,
     {"rx S1F1W 0005 00000001"}},
    {"ForeignSessionData",
     &LinkStatistics::ForeignSessionData,
     4,
     true,
     kActive,
     {"rx S1F1W 0006 00000001"}},
    {"ForeignS9F1", &LinkStatistics::ForeignS9F1, 4, true, kActive, {"rx S9F1 0006 00000001"}},
    {"HostileBodies",
     &LinkStatistics::HostileBodies,
     4,
     true,
     kActive,
     {"rx S1F1W 0005 00000001 03FFFFFF"}},
    {"SystemBytesReplaced",
     &LinkStatistics::SystemBytesReplaced,
     4,
     true,
     kActive,
     {"rx S1F1W 0005 80000001"}},
    {"SelectsWhileSelected",
     &LinkStatistics::SelectsWhileSelected,
     4,
     false,
     kPassive,
     {"rx SelectReq FFFF 00000002"}},
    {"SelectsOfForeignSession",
     &LinkStatistics::SelectsOfForeignSession,
     2,
     false,
     kConnected,
     {"rx SelectReq 0009 00000002"}},
    {"SelectsFromPassiveSide",
     &LinkStatistics::SelectsFromPassiveSide,
     4,
     true,
     kConnected,
     {"rx SelectReq FFFF 00000002"}},
    {"SimultaneousSelects",
     &LinkStatistics::SimultaneousSelects,
     2,
     true,
     kConnected,
     {"rx SelectReq FFFF 00000002"}},
    {"DeselectsNotSupported",
     &LinkStatistics::DeselectsNotSupported,
     4,
     true,
     kActive,
     {"rx DeselectReq FFFF 00000002"}},
    {"DeselectsWhileNotSelected",
     &LinkStatistics::DeselectsWhileNotSelected,
     2,
     true,
     kConnected,
     {"rx DeselectReq FFFF 00000002"}},
    {"SeparatesWhileNotSelected",
     &LinkStatistics::SeparatesWhileNotSelected,
     4,
     true,
     kConnected,
     {"rx SeparateReq FFFF 00000002"}},
    {"ForeignSessionEnds",
     &LinkStatistics::ForeignSessionEnds,
     2,
     true,
     kActive,
     {"rx SeparateReq 0009 00000002"}},
    {"ResponsesWithoutTransaction",
     &LinkStatistics::ResponsesWithoutTransaction,
     4,
     true,
     kActive,
     {"rx LinktestRsp FFFF 00000002"}},
    {"RejectsReceived",
     &LinkStatistics::RejectsReceived,
     4,
     true,
     kActive,
     {"rx RejectReq.1 FFFF 00000002"}},
    {"RejectsWithoutTransaction",
     &LinkStatistics::RejectsWithoutTransaction,
     4,
     true,
     kActive,
     {"rx RejectReq.1 FFFF 00000002"}},
    {"LinktestsSent", &LinkStatistics::LinktestsSent, 4, true, kActive, {"advance 30000"}},
    {"ExtraConnections",
     &LinkStatistics::ExtraConnections,
     4,
     false,
     kPassive,
     {"caller 10.0.0.9"}},
    {"SelfConnections", &LinkStatistics::SelfConnections, 4, true, {"open"}, {"self-connected"}},
    {"ConnectFailures",
     &LinkStatistics::ConnectFailures,
     4,
     true,
     {"open"},
     {"connect-failed 111"}},
    {"ConnectTimeouts", &LinkStatistics::ConnectTimeouts, 4, true, {"open"}, {"advance 10000"}},
    {"ListenFailures", &LinkStatistics::ListenFailures, 4, false, {"open"}, {"listen-failed 98"}},
    {"AcceptFailures", &LinkStatistics::AcceptFailures, 4, false, {"open"}, {"accept-failed 24"}},
    {"T6Timeouts", &LinkStatistics::T6Timeouts, 4, true, kConnected, {"advance 5000"}},
    {"T7Timeouts", &LinkStatistics::T7Timeouts, 4, false, kConnected, {"advance 10000"}},
    {"T8Timeouts", &LinkStatistics::T8Timeouts, 4, true, kActive, {"rx-bytes 00", "advance 5000"}},
    {"FrameCapTimeouts",
     &LinkStatistics::FrameCapTimeouts,
     4,
     true,
     kActive,
     {"rx-bytes 00", "fire FrameCap"}},
    {"WriteStalls",
     &LinkStatistics::WriteStalls,
     4,
     true,
     kActive,
     {"block", "send S1F1 0005 00000001", "fire WriteStall"}},
    {"SendsWhileNotSelected",
     &LinkStatistics::SendsWhileNotSelected,
     4,
     true,
     kConnected,
     {"send S1F1 0005 00000001"}},
    {"SendsAborted",
     &LinkStatistics::SendsAborted,
     4,
     true,
     kActive,
     {"block", "send S1F1 0005 00000001", "fin"}},
    {"UnexpectedEvents", &LinkStatistics::UnexpectedEvents, 4, true, kActive, {"fire Linger"}},
    {"FramesReceived",
     &LinkStatistics::FramesReceived,
     4,
     true,
     kConnected,
     {"rx SelectRsp FFFF 38000000"}},
};

TEST(HsmsStatistics, EachCounterCountsItsOwnEventOnce) {
    for (const Row& row : kRows) {
        HsmsRig rig(HsmsRig::Settings(row.PortType, row.Active));
        rig.Do(row.Way);
        EXPECT_EQ(rig.Statistics().*row.Field, 0U) << row.Name;
        rig.Do(row.Event);
        EXPECT_EQ(rig.Statistics().*row.Field, 1U) << row.Name;
    }
}

TEST(HsmsStatistics, AnOrdinaryConversationCountsNothingButItsFrames) {
    HsmsRig rig(HsmsRig::Settings());
    rig.Do(kActive);
    rig.Do("rx S1F1W 0005 00000001");
    rig.Do("send S1F2 0005 00000001");
    rig.Do("send S1F3W 0005 00000002");
    rig.Do("rx S1F4 0005 00000002");
    rig.Do("rx LinktestReq FFFF 00000003");
    rig.Do("close");
    rig.Do("fin");
    LinkStatistics expected;
    expected.FramesReceived = 4;
    EXPECT_EQ(rig.Statistics(), expected);
}

TEST(HsmsStatistics, CountersThatNeedSettingsCountToo) {
    LinkSettings settings = HsmsRig::Settings(4, false);
    settings.AllowedCallers = {"10.0.0.7"};
    HsmsRig rig(settings);
    rig.Do("open");
    rig.Do("caller 10.0.0.9");
    EXPECT_EQ(rig.Statistics().CallersNotAllowed, 1U);
    EXPECT_EQ(rig.Statistics().ExtraConnections, 0U);
}

}  // namespace
}  // namespace hexmire::test
