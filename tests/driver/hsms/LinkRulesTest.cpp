// Rules of an HSMS link that need more than one event: connections and their ends, timers, Select.
#include "Selected.h"
#include <gtest/gtest.h>

namespace hexmire::test {
namespace {

using namespace std::chrono_literals;

LinkSettings WithoutReconnect(std::int32_t portType = 4, bool active = true) {
    LinkSettings settings = HsmsRig::Settings(portType, active);
    settings.AutoReconnect = false;
    return settings;
}

// --- the port and the end of connections ---------------------------------------------------------

TEST(HsmsPort, TheEndOfAConnectionClosesThePort) {
    for (const bool active : {true, false}) {
        for (const char* end :
             {"fin", "reset", "rx SeparateReq FFFF 00000001", "fire WriteStall"}) {
            HsmsRig rig(WithoutReconnect(4, active));
            Select(rig);
            const std::string done = rig.Do(end);
            EXPECT_NE(done.find("Disconnect"), std::string::npos);
            EXPECT_EQ(done.find("stop-listening") != std::string::npos, !active);
            EXPECT_EQ(rig.State(), "CLOSED");
            EXPECT_FALSE(rig.Machine().IsOpen());
            EXPECT_EQ(rig.Do("advance 100000"), "") << "nothing more is tried";
            EXPECT_EQ(rig.Violation, "");
        }
    }
}

TEST(HsmsPort, ALinkThatWasNeverSelectedLeavesThePortOpen) {
    HsmsRig rig(WithoutReconnect());
    rig.Do("open");
    rig.Do("connected");
    EXPECT_EQ(rig.Do("fin"), "Error 3054; close");
    EXPECT_TRUE(rig.Machine().IsOpen());
    EXPECT_EQ(rig.Do("advance 10000"), "connect 10.0.0.2:5000 from 10.0.0.1");
}

TEST(HsmsPort, WithAutoReconnectThePortStaysOpen) {
    HsmsRig rig(HsmsRig::Settings());
    Select(rig);
    EXPECT_EQ(rig.Do("fin"), "Disconnect 3054; close");
    EXPECT_TRUE(rig.Machine().IsOpen());
    EXPECT_EQ(rig.Do("advance 9999"), "");
    EXPECT_EQ(rig.Do("advance 1"), "connect 10.0.0.2:5000 from 10.0.0.1");
}

TEST(HsmsPort, DeselectClosesThePortInAnOrderlyWay) {
    HsmsRig rig(WithoutReconnect(2, false));
    Select(rig);
    EXPECT_EQ(rig.Do("rx DeselectReq FFFF 00000001"),
              "Disconnect 3036; tx DeselectRsp FFFF 00000001; stop-listening; shutdown");
    EXPECT_FALSE(rig.Machine().IsOpen());
    EXPECT_EQ(rig.Do("fin"), "close") << "the Disconnect has been";
    EXPECT_EQ(rig.State(), "CLOSED");
}

TEST(HsmsPort, SeparateClosesThePortOfTheGeneralServicesToo) {
    HsmsRig rig(WithoutReconnect(2, true));
    Select(rig);
    EXPECT_EQ(rig.Do("rx SeparateReq 0005 00000001"), "Disconnect 3035; close");
    EXPECT_EQ(rig.State(), "CLOSED");
}

TEST(HsmsPort, OpenAfterADisconnectWaitsForTheRestOfT5) {
    HsmsRig rig(WithoutReconnect());
    Select(rig);
    rig.Do("fin");
    rig.Do("advance 4000");
    EXPECT_EQ(rig.Do("open"), "");
    EXPECT_EQ(rig.Timers(), "T5:6000");
    EXPECT_EQ(rig.Do("advance 6000"), "connect 10.0.0.2:5000 from 10.0.0.1");
}

TEST(HsmsPort, OpenLongAfterADisconnectConnectsAtOnce) {
    HsmsRig rig(WithoutReconnect());
    Select(rig);
    rig.Do("fin");
    rig.Do("advance 10000");
    EXPECT_EQ(rig.Do("open"), "connect 10.0.0.2:5000 from 10.0.0.1");
}

TEST(HsmsPort, EachFailedAttemptIsToldAndFollowedByT5) {
    HsmsRig rig(WithoutReconnect());
    rig.Do("open");
    for (int attempt = 0; attempt < 20; ++attempt) {
        EXPECT_EQ(rig.Do("connect-failed 111"), "Error 3050");
        EXPECT_EQ(rig.Do("advance 10000"), "connect 10.0.0.2:5000 from 10.0.0.1");
    }
    EXPECT_EQ(rig.LastText, "Connect failed: 10.0.0.2:5000, failure (111)");
    EXPECT_TRUE(rig.Machine().IsOpen());
}

TEST(HsmsPort, ConnectTimeoutIsT5WithinTwoToTwentySeconds) {
    const std::vector<std::pair<std::int64_t, std::string>> cases{
        {1, "ConnectTimeout:2000"}, {7, "ConnectTimeout:7000"}, {240, "ConnectTimeout:20000"}};
    for (const auto& [t5, timer] : cases) {
        LinkSettings settings = HsmsRig::Settings();
        settings.T5 = std::chrono::seconds(t5);
        HsmsRig rig(settings);
        rig.Do("open");
        EXPECT_EQ(rig.Timers(), timer);
    }
}

TEST(HsmsPort, OpenDuringTheOrderlyCloseStartsWhenTheOldLinkIsGone) {
    HsmsRig rig(HsmsRig::Settings(4, false));
    Select(rig);
    EXPECT_EQ(rig.Do("close"), "tx SeparateReq FFFF 38000000; stop-listening; shutdown");
    EXPECT_EQ(rig.Do("open"), "");
    EXPECT_TRUE(rig.Machine().IsOpen());
    EXPECT_EQ(rig.Do("fin"), "Disconnect 0; close; listen 10.0.0.1:5000");
    EXPECT_EQ(rig.State(), "NOT CONNECTED");
}

TEST(HsmsPort, OpenDuringTheOrderlyCloseHoldsWithoutAutoReconnectToo) {
    HsmsRig rig(WithoutReconnect(4, false));
    Select(rig);
    rig.Do("close");
    rig.Do("open");
    EXPECT_EQ(rig.Do("fin"), "Disconnect 0; close; listen 10.0.0.1:5000");
    EXPECT_TRUE(rig.Machine().IsOpen());
}

TEST(HsmsPort, TheOrderlyCloseTakesAtMostTwoSeconds) {
    HsmsRig rig(HsmsRig::Settings());
    Select(rig);
    rig.Do("block");
    EXPECT_EQ(rig.Do("close"), "tx SeparateReq FFFF 38000001");
    EXPECT_EQ(rig.Do("advance 999"), "");
    EXPECT_EQ(rig.Do("unblock"), "shutdown");
    EXPECT_EQ(rig.Do("advance 999"), "");
    EXPECT_EQ(rig.Do("advance 1"), "Disconnect 0; close");
}

TEST(HsmsPort, ACloseThatCannotWriteGivesUpAfterOneSecond) {
    HsmsRig rig(HsmsRig::Settings());
    Select(rig);
    rig.Do("block");
    rig.Do("send S1F1W 0005 00000007");
    rig.Do("close");
    EXPECT_EQ(rig.Do("advance 1000"), "Error 3073; Disconnect 0; close");
}

TEST(HsmsPort, WhatArrivesDuringTheCloseIsDropped) {
    HsmsRig rig(HsmsRig::Settings());
    Select(rig);
    rig.Do("close");
    EXPECT_EQ(rig.Do("rx S1F1W 0005 00000002"), "");
    EXPECT_EQ(rig.Do("rx-bytes 00000000"), "");
}

TEST(HsmsPort, NothingOfAHalfFrameReachesTheNextGeneration) {
    HsmsRig rig(HsmsRig::Settings(4, false));
    Select(rig);
    rig.Do("rx-bytes 0000000A FFFF 0000");
    rig.Do("reset");
    rig.Do("connected");
    EXPECT_EQ(rig.Do("rx SelectReq FFFF 00000001"), "tx SelectRsp FFFF 00000001; Connect");
}

// --- listening and callers -----------------------------------------------------------------------

TEST(HsmsListening, AFailureIsToldOncePerErrorNumberAndTriedEveryT5) {
    HsmsRig rig(HsmsRig::Settings(4, false));
    rig.Do("open");
    EXPECT_EQ(rig.Do("listen-failed 98"), "Error 3052");
    EXPECT_EQ(rig.Do("advance 10000"), "listen 10.0.0.1:5000");
    EXPECT_EQ(rig.Do("listen-failed 98"), "");
    EXPECT_EQ(rig.Do("advance 10000"), "listen 10.0.0.1:5000");
    EXPECT_EQ(rig.Do("listen-failed 99"), "Error 3052");
    EXPECT_EQ(rig.Do("advance 10000"), "listen 10.0.0.1:5000");
    rig.Do("listening");
    EXPECT_EQ(rig.Do("connected"), "adopt");
}

TEST(HsmsListening, AcceptingGoesOnASecondAfterAFailure) {
    HsmsRig rig(HsmsRig::Settings(4, false));
    rig.Do("open");
    EXPECT_EQ(rig.Do("accept-failed 24"), "Error 3053");
    EXPECT_EQ(rig.Do("advance 1000"), "resume-accepting");
}

TEST(HsmsListening, CallersMustBeOnTheListIfThereIsOne) {
    LinkSettings settings = HsmsRig::Settings(4, false);
    settings.AllowedCallers = {"10.0.0.2"};
    HsmsRig rig(settings);
    rig.Do("open");
    EXPECT_EQ(rig.Do("caller 10.0.0.9"), "Error 3041; refuse");
    EXPECT_EQ(rig.Do("caller 10.0.0.2"), "adopt");
}

TEST(HsmsListening, AnExtraCallerIsRefusedAndTheLiveLinkProbedOnce) {
    HsmsRig rig(HsmsRig::Settings(4, false));
    Select(rig);
    EXPECT_EQ(rig.Do("caller 10.0.0.9"), "tx LinktestReq FFFF 38000000; Error 3041; refuse");
    EXPECT_EQ(rig.Do("caller 10.0.0.9"), "Error 3041; refuse");
    EXPECT_EQ(rig.Do("advance 5000"), "Error 3006; Disconnect 3006; close");
    EXPECT_EQ(rig.Do("caller 10.0.0.9"), "adopt") << "its next try wins";
}

TEST(HsmsListening, TheListenerMovesWhenItsAddressChanges) {
    HsmsRig rig(HsmsRig::Settings(4, false));
    rig.Do("open");
    LinkSettings settings = HsmsRig::Settings(4, false);
    settings.LocalIPPort = 6000;
    rig.Configure(settings);
    EXPECT_EQ(rig.Take(), "stop-listening; listen 10.0.0.1:6000");
    settings.HSMSConnectionMode = 1;
    rig.Configure(settings);
    EXPECT_EQ(rig.Take(), "stop-listening; connect 10.0.0.2:5000 from 10.0.0.1");
}

TEST(HsmsListening, AConnectThatLeadsBackToItselfFails) {
    HsmsRig rig(HsmsRig::Settings());
    rig.Do("open");
    EXPECT_EQ(rig.Do("self-connected"), "Error 3057; refuse");
    EXPECT_EQ(rig.Timers(), "T5:10000");
}

// --- timers --------------------------------------------------------------------------------------

TEST(HsmsTimers, T7IsNotRestartedByTraffic) {
    HsmsRig rig(HsmsRig::Settings(4, false));
    rig.Do("open");
    rig.Do("connected");
    for (int second = 1; second < 10; ++second) {
        rig.Do("advance 1000");
        rig.Do("rx LinktestReq FFFF 00000001");
    }
    EXPECT_EQ(rig.Do("advance 1000"), "Error 3007; close");
}

TEST(HsmsTimers, T8RunsFromTheFirstLengthByteAndRestartsWithEachRead) {
    HsmsRig rig(HsmsRig::Settings());
    Select(rig);
    rig.Do("rx-bytes 00");
    EXPECT_TRUE(rig.Runs(link::TimerId::T8));
    rig.Do("advance 4999");
    rig.Do("rx-bytes 0000");
    rig.Do("advance 4999");
    EXPECT_EQ(rig.Do("rx-bytes 0A FFFF 0000 0005 00000001"), "tx LinktestRsp FFFF 00000001");
    EXPECT_FALSE(rig.Runs(link::TimerId::T8));
    rig.Do("rx-bytes 00");
    EXPECT_EQ(rig.Do("advance 5000"), "Error 3008; Disconnect 3008; close");
}

TEST(HsmsTimers, TheFrameCapStopsAPeerThatFeedsOneByteAtATime) {
    LinkSettings settings = HsmsRig::Settings();
    settings.LinktestInterval = 0ms;
    HsmsRig rig(settings);
    Select(rig);
    rig.Do("rx-bytes 00010000");
    std::string done;
    int seconds = 0;
    while (done.empty() && seconds < 1'000) {
        done = rig.Do("advance 4000");
        seconds += 4;
        if (done.empty()) rig.Do("rx-bytes 00");
    }
    EXPECT_EQ(done, "Error 3008; Disconnect 3008; close");
    EXPECT_EQ(seconds, 300);
}

TEST(HsmsTimers, TheFrameCapStartsAfreshWithEachFrame) {
    HsmsRig rig(HsmsRig::Settings());
    Select(rig);
    rig.Do("rx-bytes 00");
    rig.Do("advance 1000");
    rig.Do("rx-bytes 00000A FFFF 0000 0005 00000001 00");
    EXPECT_NE(rig.Timers().find("FrameCap:300000"), std::string::npos);
}

TEST(HsmsTimers, TheLinktestsT6WaitsForTheFrameInProgress) {
    HsmsRig rig(HsmsRig::Settings());
    Select(rig);
    EXPECT_EQ(rig.Do("advance 30000"), "tx LinktestReq FFFF 38000001");
    rig.Do("rx-bytes 0000000A FFFF 0000 0006");
    EXPECT_FALSE(rig.Runs(link::TimerId::T6));
    rig.Do("advance 4900");
    rig.Do("rx-bytes 38");
    rig.Do("advance 4900");
    EXPECT_EQ(rig.Do("rx-bytes 000001"), "") << "the response, whose T6 stood still";
    EXPECT_EQ(rig.State(), "SELECTED");
    EXPECT_FALSE(rig.Runs(link::TimerId::T6));
}

TEST(HsmsTimers, T6StartsAgainAfterAFrameThatWasNotTheResponse) {
    HsmsRig rig(HsmsRig::Settings());
    Select(rig);
    rig.Do("advance 30000");
    rig.Do("rx-bytes 0000000A FFFF 0000 0005");
    EXPECT_EQ(rig.Do("rx-bytes 00000001"), "tx LinktestRsp FFFF 00000001");
    EXPECT_EQ(rig.Do("advance 5000"), "Error 3006; Disconnect 3006; close");
}

TEST(HsmsTimers, OwnSendsDoNotPutOffTheLinktest) {
    HsmsRig rig(HsmsRig::Settings());
    Select(rig);
    rig.Do("advance 29000");
    rig.Do("send S6F1 0005 00000001");
    EXPECT_EQ(rig.Do("advance 1000"), "tx LinktestReq FFFF 38000001");
}

TEST(HsmsTimers, NoLinktestIsSentWhenTheIntervalIsZero) {
    LinkSettings settings = HsmsRig::Settings();
    settings.LinktestInterval = 0ms;
    HsmsRig rig(settings);
    Select(rig);
    EXPECT_EQ(rig.Do("advance 10000000"), "");
}

TEST(HsmsTimers, T6StartsWhenTheRequestHasBeenWritten) {
    HsmsRig rig(HsmsRig::Settings());
    rig.Do("block");
    rig.Do("open");
    rig.Do("connected");
    EXPECT_EQ(rig.Timers(), "T7:10000 WriteStall:30000");
    rig.Do("unblock");
    EXPECT_EQ(rig.Timers(), "T6:5000 T7:10000");
}

TEST(HsmsTimers, WritesThatMakeNoProgressEndTheLink) {
    LinkSettings settings = HsmsRig::Settings();
    settings.LinktestInterval = 0ms;
    HsmsRig rig(settings);
    Select(rig);
    rig.Do("block");
    rig.Do("send S6F1 0005 00000001");
    rig.Do("advance 29000");
    rig.Do("written 1");
    EXPECT_EQ(rig.Do("advance 29999"), "");
    EXPECT_EQ(rig.Do("advance 1"), "Error 3009; Error 3073; Disconnect 3009; close");
}

// --- Select --------------------------------------------------------------------------------------

TEST(HsmsSelect, DataInTheSegmentOfTheResponseIsDelivered) {
    HsmsRig rig(HsmsRig::Settings());
    rig.Do("open");
    rig.Do("connected");
    auto bytes = FrameBytes("SelectRsp FFFF 38000000");
    const auto data = FrameBytes("S6F11W 0005 00000009");
    bytes.insert(bytes.end(), data.begin(), data.end());
    rig.Take();
    rig.Feed(bytes);
    EXPECT_EQ(rig.Take(), "Connect; Received S6F11W 0005 00000009");
}

TEST(HsmsSelect, NothingIsReadBehindABadLength) {
    HsmsRig rig(HsmsRig::Settings());
    Select(rig);
    auto bytes = HexToBytes("00000009");
    const auto data = FrameBytes("S6F11W 0005 00000009");
    bytes.insert(bytes.end(), data.begin(), data.end());
    rig.Take();
    rig.Feed(bytes);
    EXPECT_EQ(rig.Take(), "Error 3037; Disconnect 3037; close");
}

TEST(HsmsSelect, ARefusedSelectInASimultaneousOneLeavesThePeersSessionAlone) {
    HsmsRig rig(HsmsRig::Settings());
    SelectByPeer(rig);
    EXPECT_EQ(rig.Do("rx SelectRsp.2 FFFF 38000000"), "Error 3030");
    EXPECT_EQ(rig.State(), "SELECTED");
}

TEST(HsmsSelect, RejectOfOurSelectEndsTheLink) {
    HsmsRig rig(HsmsRig::Settings());
    rig.Do("open");
    rig.Do("connected");
    EXPECT_EQ(rig.Do("rx RejectReq.1 FFFF 38000000"), "Error 3033; close");
}

TEST(HsmsSelect, ARejectIsNeverAnsweredByAReject) {
    HsmsRig rig(HsmsRig::Settings());
    Select(rig);
    EXPECT_EQ(rig.Do("rx-bytes 0000000A FFFF 0004 0307 00000001"), "") << "bad PType";
    EXPECT_EQ(rig.Do("rx-bytes 0000000B FFFF 0004 0007 00000001 00"), "Error 3037") << "a body";
}

TEST(HsmsSelect, ABadPTypeIsToldBeforeABadSType) {
    HsmsRig rig(HsmsRig::Settings());
    Select(rig);
    EXPECT_EQ(rig.Do("rx-bytes 0000000A FFFF 0000 0763 00000001"),
              "tx RejectReq(7).2 FFFF 00000001; Error 3034");
}

TEST(HsmsSelect, OwnRequestsCountThroughTheirRange) {
    LinkSettings settings = HsmsRig::Settings();
    HsmsRig rig(settings);
    Select(rig);
    for (const char* expected : {"38000001", "38000002", "38000003"}) {
        EXPECT_EQ(rig.Do("fire Linktest"), std::string("tx LinktestReq FFFF ") + expected);
        EXPECT_EQ(rig.Do(std::string("rx LinktestRsp FFFF ") + expected), "");
    }
}

TEST(HsmsSelect, OnlyOneLinktestIsOpen) {
    HsmsRig rig(HsmsRig::Settings());
    SelectByPeer(rig);
    EXPECT_EQ(rig.Do("fire Linktest"), "") << "our Select is still open";
    EXPECT_TRUE(rig.Runs(link::TimerId::Linktest));
}

}  // namespace
}  // namespace hexmire::test
