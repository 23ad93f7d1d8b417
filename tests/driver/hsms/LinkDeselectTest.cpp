// Ending a session by Deselect.req of ours (SEMI E37, Deselect procedure): port type 2, on request.
#include "../../fakes/LinkNetwork.h"
#include "Selected.h"
#include <gtest/gtest.h>

#include <algorithm>

namespace hexmire::test {
namespace {

using namespace std::chrono_literals;

LinkSettings Deselecting(std::int32_t portType = 2, bool active = false) {
    LinkSettings settings = HsmsRig::Settings(portType, active);
    settings.DeselectOnClose = true;
    return settings;
}

void Deselect(HsmsRig& rig) {
    Select(rig);
    EXPECT_EQ(rig.Do("close"), "stop-listening; tx DeselectReq 0005 38000000");
    ASSERT_EQ(rig.State(), "DESELECTING");
    EXPECT_FALSE(rig.Machine().IsOpen()) << "closed from the call on";
}

TEST(HsmsDeselect, IsNotSentUnlessItIsAskedFor) {
    HsmsRig rig(HsmsRig::Settings(2, false));
    Select(rig);
    EXPECT_EQ(rig.Do("close"), "tx SeparateReq 0005 38000000; stop-listening; shutdown");
}

TEST(HsmsDeselect, IsNoPartOfTheSingleSessionMode) {
    HsmsRig rig(Deselecting(4));
    rig.Do("open");
    rig.Do("connected");
    rig.Do("rx SelectReq FFFF 000000FF");
    EXPECT_EQ(rig.Do("close"), "tx SeparateReq FFFF 38000000; stop-listening; shutdown");
}

TEST(HsmsDeselect, AnUnselectedConnectionIsJustClosed) {
    HsmsRig rig(Deselecting());
    rig.Do("open");
    rig.Do("connected");
    EXPECT_EQ(rig.Do("close"), "stop-listening; close");
}

TEST(HsmsDeselect, TheConnectionEndsWhenThePeerHasAnswered) {
    HsmsRig rig(Deselecting());
    Deselect(rig);
    EXPECT_EQ(rig.Do("rx DeselectRsp 0005 38000000"), "shutdown");
    EXPECT_EQ(rig.State(), "ENDING");
    EXPECT_EQ(rig.Do("fin"), "Disconnect 0; close");
    EXPECT_EQ(rig.Do("advance 100000"), "") << "one Disconnect, and nothing is tried any more";
}

TEST(HsmsDeselect, ARefusalIsToldAndTheConnectionEndsAllTheSame) {
    for (const char* status : {"1", "2", "3", "128"}) {
        HsmsRig rig(Deselecting());
        Deselect(rig);
        EXPECT_EQ(rig.Do(std::string("rx DeselectRsp.") + status + " 0005 38000000"),
                  "Error 3032; shutdown");
        EXPECT_EQ(rig.LastText, std::string("Deselect refused by peer: status ") + status);
        EXPECT_EQ(rig.Statistics().DeselectsRefused, 1U);
        EXPECT_EQ(rig.Do("fin"), "Disconnect 0; close");
    }
}

TEST(HsmsDeselect, APeerThatKnowsNoDeselectEndsItByReject) {
    HsmsRig rig(Deselecting());
    Deselect(rig);
    EXPECT_EQ(rig.Do("rx RejectReq.1 0005 38000000"), "Error 3033; shutdown");
    EXPECT_EQ(rig.Do("advance 1000"), "Disconnect 0; close");
}

TEST(HsmsDeselect, T6EndsTheWaitWithoutAnError) {
    LinkSettings settings = Deselecting();
    settings.T6 = 1s;
    HsmsRig rig(settings);
    Deselect(rig);
    EXPECT_EQ(rig.Do("advance 999"), "");
    EXPECT_EQ(rig.Do("advance 1"), "Disconnect 0; close");
    EXPECT_EQ(rig.Statistics().T6Timeouts, 1U);
}

TEST(HsmsDeselect, NoCloseTakesLongerThanTwoSecondsWhateverT6Is) {
    HsmsRig rig(Deselecting());
    Deselect(rig);
    EXPECT_EQ(rig.Do("advance 1999"), "");
    EXPECT_EQ(rig.Do("advance 1"), "Disconnect 0; close");
}

TEST(HsmsDeselect, ALateAnswerLeavesOnlyTheRestOfTheTwoSeconds) {
    HsmsRig rig(Deselecting());
    Deselect(rig);
    rig.Do("advance 1900");
    EXPECT_EQ(rig.Do("rx DeselectRsp 0005 38000000"), "shutdown");
    EXPECT_EQ(rig.Do("advance 99"), "");
    EXPECT_EQ(rig.Do("advance 1"), "Disconnect 0; close");
    rig.Do("open");
    Select(rig);
    rig.Do("close");
    EXPECT_EQ(rig.Do("advance 1999"), "") << "the next close has two seconds again";
}

TEST(HsmsDeselect, MessagesThatWaitGoOutFirstOrAreTold) {
    HsmsRig rig(Deselecting());
    Select(rig);
    rig.Do("block");
    rig.Do("send S6F1 0005 00000001");
    rig.Do("send S6F1 0005 00000002");
    EXPECT_EQ(rig.Do("close"), "stop-listening; tx DeselectReq 0005 38000000");
    EXPECT_FALSE(rig.Runs(link::TimerId::T6)) << "it has not been written yet";
    EXPECT_EQ(rig.Do("written 14"), "Sent S6F1 0005 00000001");
    EXPECT_EQ(rig.Do("advance 2000"), "Error 3073; Disconnect 0; close");
    EXPECT_EQ(rig.LastText, "");
    EXPECT_EQ(rig.Statistics().SendsAborted, 1U);
}

TEST(HsmsDeselect, NothingIsSentOrDeliveredMeanwhile) {
    HsmsRig rig(Deselecting());
    Deselect(rig);
    EXPECT_EQ(rig.Do("send S1F1W 0005 00000007"), "Error 3040");
    EXPECT_EQ(rig.Do("rx S6F11W 0005 00000008"), "");
    EXPECT_EQ(rig.Do("rx LinktestReq FFFF 00000009"), "tx LinktestRsp FFFF 00000009");
    EXPECT_FALSE(rig.Runs(link::TimerId::Linktest));
    EXPECT_EQ(rig.Do("rx LinktestRsp FFFF 00000009"), "");
    EXPECT_EQ(rig.Statistics().UnexpectedEvents, 2U) << "the message and the response";
}

TEST(HsmsDeselect, BothEndsMayDeselectAtOnce) {
    HsmsRig rig(Deselecting());
    Deselect(rig);
    EXPECT_EQ(rig.Do("rx DeselectReq 0005 00000003"), "tx DeselectRsp 0005 00000003; shutdown");
    EXPECT_EQ(rig.Do("rx DeselectRsp.1 0005 38000000"), "") << "the session was over by then";
    EXPECT_EQ(rig.Do("fin"), "Disconnect 0; close");
}

TEST(HsmsDeselect, ASeparateOfThePeerEndsTheWait) {
    HsmsRig rig(Deselecting());
    Deselect(rig);
    EXPECT_EQ(rig.Do("rx SeparateReq 0009 00000003"), "") << "not of this session";
    EXPECT_EQ(rig.Do("rx SeparateReq 0005 00000003"), "Disconnect 0; close");
}

TEST(HsmsDeselect, ALostConnectionIsOneOrdinaryDisconnect) {
    for (const char* loss : {"fin", "reset", "rx-bytes 00000009", "fire WriteStall"}) {
        HsmsRig rig(Deselecting());
        Deselect(rig);
        EXPECT_EQ(rig.Do(loss), "Disconnect 0; close") << loss;
        EXPECT_EQ(rig.State(), "CLOSED");
    }
}

TEST(HsmsDeselect, OpenMeanwhileTakesEffectWhenTheOldLinkIsGone) {
    HsmsRig rig(Deselecting());
    Deselect(rig);
    EXPECT_EQ(rig.Do("open"), "");
    EXPECT_TRUE(rig.Machine().IsOpen());
    rig.Do("rx DeselectRsp 0005 38000000");
    EXPECT_EQ(rig.Do("fin"), "Disconnect 0; close; listen 10.0.0.1:5000");
}

TEST(HsmsDeselect, AnOpenRequestIsGivenUpForIt) {
    HsmsRig rig(Deselecting());
    Select(rig);
    rig.Do("fire Linktest");
    EXPECT_EQ(rig.Do("close"), "stop-listening; tx DeselectReq 0005 38000001");
    EXPECT_EQ(rig.Do("rx LinktestRsp FFFF 38000000"), "");
    EXPECT_EQ(rig.Do("rx DeselectRsp 0005 38000001"), "shutdown");
}

TEST(HsmsDeselect, TheAnswerIsReadHoweverMuchWaitsForTheControl) {
    LinkSettings settings = Deselecting();
    settings.MaxWaitingMessages = 1;
    HsmsRig rig(settings);
    Select(rig);
    rig.Consumes = false;
    EXPECT_EQ(rig.Do("rx S6F1 0005 00000001"), "Received S6F1 0005 00000001; pause; Error 3072");
    EXPECT_EQ(rig.Do("close"), "stop-listening; tx DeselectReq 0005 38000000; resume");
    EXPECT_EQ(rig.Do("rx LinktestReq FFFF 00000002"), "tx LinktestRsp FFFF 00000002");
    EXPECT_EQ(rig.Do("rx DeselectRsp 0005 38000000"), "shutdown");
}

TEST(HsmsDeselect, ReadingGoesOnWithTheRequestAndNotWithItsWriting) {
    LinkSettings settings = Deselecting();
    settings.MaxWaitingMessages = 1;
    HsmsRig rig(settings);
    Select(rig);
    rig.Consumes = false;
    rig.Do("rx S6F1 0005 00000001");
    rig.Machine().Close(rig.Now());
    std::vector<link::Action> actions;
    rig.Machine().TakeActions(actions);
    EXPECT_NE(std::find(actions.begin(), actions.end(), link::Action(link::ResumeReading{})),
              actions.end());
}

TEST(HsmsDeselect, TwoEndsDoItTogether) {
    for (const bool both : {false, true}) {
        LinkSettings host = Deselecting(2, true);
        LinkSettings equipment = Deselecting(2, false);
        host.AutoReconnect = equipment.AutoReconnect = false;
        equipment.DeselectOnClose = both;
        equipment.HostRole = false;
        LinkNetwork network(host, equipment);
        network.Open(1);
        network.Open(0);
        network.RunFor(100ms);
        ASSERT_TRUE(network.IsOneLink());
        network.Close(0);
        if (both) network.Close(1);
        network.RunFor(2s);
        EXPECT_EQ(network.State(0), "CLOSED");
        EXPECT_EQ(network.State(1), "CLOSED");
        EXPECT_EQ(network.Seen(0).Errors, std::vector<std::string>{"D0"});
        EXPECT_EQ(network.Seen(1).Errors, std::vector<std::string>{both ? "D0" : "D3036"});
    }
}

}  // namespace
}  // namespace hexmire::test
