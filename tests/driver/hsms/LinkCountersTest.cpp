// Counters of the statistics that settings, or many messages, move; and what moves none.
#include "../../fakes/HsmsRig.h"
#include "../../fakes/LinkCounters.h"
#include <gtest/gtest.h>

namespace hexmire::test {
namespace {

using Lines = std::vector<std::string>;

const Lines kSelected{"open", "connected", "rx SelectRsp FFFF 38000000"};

TEST(HsmsStatistics, TheRepliesWithoutTransactionAreCountedIfTheyAreChecked) {
    for (const bool checked : {false, true}) {
        LinkSettings settings = HsmsRig::Settings();
        settings.SystemBytesCheck = checked;
        HsmsRig rig(settings);
        rig.Do(kSelected);
        const LinkStatistics before = rig.Statistics();
        rig.Do("rx S1F2 0005 00000001");
        EXPECT_EQ(MovedCounters(before, rig.Statistics()),
                  checked ? (Lines{"FramesReceived", "RepliesWithoutTransaction"})
                          : (Lines{"FramesReceived"}));
    }
}

TEST(HsmsStatistics, ForgottenSubstitutesAreCounted) {
    HsmsRig rig(HsmsRig::Settings());
    rig.Do(kSelected);
    std::vector<std::uint8_t> frame = FrameBytes("S6F11W 0005 80000000");
    for (std::uint32_t count = 0; count < link::SystemBytesMap::kMaxEntries; ++count) {
        hsms::PutU32(&frame[10], 0x80000000U + count);
        rig.Feed(frame);
    }
    EXPECT_EQ(rig.Statistics().SubstitutesForgotten, 0U);
    const LinkStatistics before = rig.Statistics();
    rig.Do("rx S6F11W 0005 90000000");
    EXPECT_EQ(MovedCounters(before, rig.Statistics()),
              (Lines{"FramesReceived", "SystemBytesReplaced", "SubstitutesForgotten"}));
}

TEST(HsmsStatistics, MalformedSendsAreInternalFailuresToo) {
    HsmsRig rig(HsmsRig::Settings());
    rig.Do(kSelected);
    const LinkStatistics before = rig.Statistics();
    rig.Machine().Send(HexToBytes("0005"), {}, rig.Now());
    EXPECT_EQ(MovedCounters(before, rig.Statistics()),
              (Lines{"MalformedSends", "InternalFailures"}));
}

TEST(HsmsStatistics, PausesAndErrorsLeftOutAreCounted) {
    LinkSettings settings = HsmsRig::Settings();
    settings.MaxWaitingMessages = 1;
    HsmsRig rig(settings);
    rig.Do(kSelected);
    rig.Consumes = false;
    LinkStatistics before = rig.Statistics();
    rig.Do("rx S6F1 0005 00000001");
    EXPECT_EQ(MovedCounters(before, rig.Statistics()), (Lines{"FramesReceived", "ReadingPauses"}));
    rig.Do("consumed 1");
    for (int count = 0; count < 50; ++count) {
        rig.Do("rx S1F1W 0009 00000001");
    }
    before = rig.Statistics();
    rig.Do("rx S1F1W 0009 00000001");
    EXPECT_EQ(MovedCounters(before, rig.Statistics()),
              (Lines{"FramesReceived", "ForeignSessionData", "ErrorsLeftOut"}));
}

TEST(HsmsStatistics, AnOrdinaryConversationCountsNothingButItsFrames) {
    HsmsRig rig(HsmsRig::Settings());
    rig.Do(kSelected);
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

}  // namespace
}  // namespace hexmire::test
