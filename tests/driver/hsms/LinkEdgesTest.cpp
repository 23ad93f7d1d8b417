// Where two rules of an HSMS link meet: timers beside each other, requests that wait, and what is
// told first.
#include "Selected.h"
#include <gtest/gtest.h>

#include <array>

namespace hexmire::test {
namespace {

using namespace std::chrono_literals;

// --- timers beside each other --------------------------------------------------------------------

TEST(HsmsTimers, T7EndsAConnectionThatFeedsHalfAFrameForever) {
    HsmsRig rig(HsmsRig::Settings(4, false));
    rig.Do("open");
    rig.Do("connected");
    rig.Do("rx-bytes 00010000");
    for (int second = 1; second < 10; ++second) {
        rig.Do("advance 1000");
        EXPECT_EQ(rig.Do("rx-bytes 00"), "");
    }
    EXPECT_EQ(rig.Do("advance 1000"), "Error 3007; close");
    EXPECT_EQ(rig.Timers(), "") << "T8 and the cap are gone with it";
}

TEST(HsmsTimers, NothingIsTimedBetweenFrames) {
    HsmsRig rig(Quiet());
    Select(rig);
    rig.Do("rx S6F1 0005 00000001");
    EXPECT_EQ(rig.Timers(), "");
    EXPECT_EQ(rig.Do("advance 86400000"), "");
}

TEST(HsmsTimers, ALinktestThatFallsDueInsideAFrameWaitsForItsEnd) {
    HsmsRig rig(HsmsRig::Settings());
    Select(rig);
    rig.Do("advance 29000");
    rig.Do("rx-bytes 0000000A 0005 0601");
    EXPECT_EQ(rig.Do("advance 1000"), "tx LinktestReq FFFF 38000001");
    EXPECT_FALSE(rig.Runs(link::TimerId::T6)) << "T8 guards the frame";
    rig.Do("rx-bytes 0000 00000001");
    EXPECT_TRUE(rig.Runs(link::TimerId::T6));
    EXPECT_EQ(rig.Do("advance 5000"), "Error 3006; Disconnect 3006; close");
}

TEST(HsmsTimers, TheSelectsT6DoesNotWaitForAFrameInProgress) {
    HsmsRig rig(HsmsRig::Settings());
    rig.Do("open");
    rig.Do("connected");
    rig.Do("rx-bytes 0000");
    rig.Do("advance 4000");
    rig.Do("rx-bytes 00");
    EXPECT_EQ(rig.Do("advance 1000"), "Error 3006; close");
}

TEST(HsmsTimers, ARequestThatIsNotWrittenHasNoT6) {
    LinkSettings settings = HsmsRig::Settings();
    settings.MaxWaitingMessages = 1;
    HsmsRig rig(settings);
    Select(rig);
    rig.Do("block");
    rig.Do("fire Linktest");
    EXPECT_FALSE(rig.Runs(link::TimerId::T6));
    rig.Do("rx-bytes 0000");
    rig.Do("rx-bytes 000A 0005 0601 0000 00000001");
    EXPECT_FALSE(rig.Runs(link::TimerId::T6)) << "the end of a frame does not start it";
    rig.Consumes = false;
    rig.Do("rx S6F1 0005 00000001");
    EXPECT_EQ(rig.Do("consumed 1"), "resume");
    EXPECT_FALSE(rig.Runs(link::TimerId::T6)) << "nor does reading on";
    rig.Do("unblock");
    EXPECT_TRUE(rig.Runs(link::TimerId::T6));
}

TEST(HsmsTimers, ARequestWrittenWhileReadingIsPausedIsTimedWhenItGoesOn) {
    LinkSettings settings = HsmsRig::Settings();
    settings.MaxWaitingMessages = 1;
    HsmsRig rig(settings);
    Select(rig);
    rig.Do("block");
    rig.Do("fire Linktest");
    rig.Consumes = false;
    rig.Do("rx S6F1 0005 00000001");
    rig.Do("unblock");
    EXPECT_FALSE(rig.Runs(link::TimerId::T6));
    rig.Do("consumed 1");
    EXPECT_TRUE(rig.Runs(link::TimerId::T6));
}

TEST(HsmsTimers, OneByteOfProgressPutsTheWriteStallOff) {
    HsmsRig rig(Quiet());
    Select(rig);
    rig.Do("block");
    rig.Do("send S6F1 0005 00000001");
    for (int count = 0; count < 13; ++count) {
        EXPECT_EQ(rig.Do("advance 29999"), "");
        rig.Do("written 1");
    }
    rig.Do("advance 29999");
    EXPECT_EQ(rig.Do("written 1"), "Sent S6F1 0005 00000001");
    EXPECT_EQ(rig.Timers(), "");
}

// --- what is told first ----------------------------------------------------------------------

TEST(HsmsOrder, TheErrorThenWhatIsLostThenTheDisconnect) {
    for (const char* fault : {"rx-bytes 00000009", "rx-bytes 0100000B", "fire T8", "fire T6"}) {
        HsmsRig rig(Quiet());
        Select(rig);
        rig.Do("block");
        rig.Do("send S6F1 0005 00000001");
        const std::string done = rig.Do(fault);
        const auto code = done.substr(6, 4);
        EXPECT_EQ(done, "Error " + code + "; Error 3073; Disconnect " + code + "; close");
    }
}

TEST(HsmsOrder, AMessageThatIsRejectedIsToldAsSentBefore) {
    HsmsRig rig(Quiet());
    Select(rig);
    rig.Do("block");
    rig.Do("send S1F1W 0005 00000001");
    EXPECT_EQ(rig.Do("rx-early RejectReq.4 0005 00000001"), "Sent S1F1W 0005 00000001; Error 3033");
    EXPECT_EQ(rig.Statistics().RejectsWithoutTransaction, 0U);
    EXPECT_EQ(rig.Do("written 14"), "") << "once";
}

TEST(HsmsOrder, AReplyReadEarlyEndsItsTransactionForGood) {
    LinkSettings settings = Quiet();
    settings.SystemBytesCheck = true;
    HsmsRig rig(settings);
    Select(rig);
    rig.Do("block");
    rig.Do("send S1F1W 0005 00000001");
    rig.Do("rx-early S1F2 0005 00000001");
    rig.Do("unblock");
    rig.Do("rx S1F2 0005 00000001");
    EXPECT_EQ(rig.Statistics().RepliesWithoutTransaction, 1U) << "the second one fits nothing";
}

TEST(HsmsOrder, ASelectResponsePrecedesWhatTheConnectHandlerSends) {
    HsmsRig rig(HsmsRig::Settings(4, false));
    rig.Do("open");
    rig.Do("connected");
    rig.Do("block");
    rig.Do("rx SelectReq FFFF 00000001");
    rig.Do("send S1F13W 0005 00000002");
    std::array<std::span<const std::uint8_t>, 4> views;
    ASSERT_EQ(rig.Machine().Output(views), 2U);
    EXPECT_EQ(FrameNotation(views[0]), "SelectRsp FFFF 00000001");
    EXPECT_EQ(FrameNotation(views[1]), "S1F13W 0005 00000002");
}

TEST(HsmsOrder, DataPipelinedBehindTheSelectRequestComesAfterConnect) {
    HsmsRig rig(HsmsRig::Settings(4, false));
    rig.Do("open");
    rig.Do("connected");
    auto bytes = FrameBytes("SelectReq FFFF 00000001");
    for (const char* frame : {"SelectReq FFFF 00000002", "S1F1W 0005 00000003"}) {
        const auto more = FrameBytes(frame);
        bytes.insert(bytes.end(), more.begin(), more.end());
    }
    rig.Take();
    rig.Feed(bytes);
    EXPECT_EQ(rig.Take(),
              "tx SelectRsp FFFF 00000001; Connect; tx SelectRsp.1 FFFF 00000002; "
              "Received S1F1W 0005 00000003");
}

TEST(HsmsOrder, NothingBehindASeparateIsRead) {
    HsmsRig rig(HsmsRig::Settings());
    Select(rig);
    auto bytes = FrameBytes("SeparateReq FFFF 00000001");
    const auto more = FrameBytes("S1F1W 0005 00000003");
    bytes.insert(bytes.end(), more.begin(), more.end());
    rig.Take();
    rig.Feed(bytes);
    EXPECT_EQ(rig.Take(), "Disconnect 3035; close");
}

TEST(HsmsOrder, AFloodOfCallersIsFiftyErrorsAndASummary) {
    HsmsRig rig(HsmsRig::Settings(4, false));
    rig.Do("open");
    rig.Do("connected");
    int told = 0;
    for (int caller = 0; caller < 300; ++caller) {
        const std::string done = rig.Do("caller 10.0.0.9");
        EXPECT_TRUE(done.ends_with("refuse"));
        told += done.starts_with("Error 3041") ? 1 : 0;
    }
    EXPECT_EQ(told, 50);
    EXPECT_EQ(rig.State(), "NOT SELECTED") << "and no Linktest before Select";
    EXPECT_EQ(rig.Do("advance 1000"), "Error 3041");
    EXPECT_EQ(rig.LastText, "Extra connection refused: 250 more left out");
}

TEST(HsmsOrder, NumbersOfOwnRequestsGoOnOverConnections) {
    HsmsRig rig(Quiet());
    Select(rig);
    std::uint32_t last = 0x38000000;
    for (int count = 0; count < 3; ++count) {
        const std::string done = rig.Do("fire Linktest");
        const auto number =
            static_cast<std::uint32_t>(std::stoul(done.substr(done.rfind(' ')), nullptr, 16));
        EXPECT_EQ(number, ++last);
        rig.Do("fin");
        rig.Do("advance 10000");
        rig.Do("connected");
        rig.Do("rx SelectRsp FFFF 3800000" + std::to_string(++last - 0x38000000));
        ASSERT_EQ(rig.State(), "SELECTED");
    }
}

}  // namespace
}  // namespace hexmire::test
