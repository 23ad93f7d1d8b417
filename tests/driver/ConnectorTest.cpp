// Getting connected, whatever is spoken then: attempts and T5, listening, callers, alternating.
#include "ConnectorFixture.h"
#include <gtest/gtest.h>

#include <set>

namespace hexmire::link {
namespace {

using namespace connector_testing;

// --- attempts and T5 -----------------------------------------------------------------------------

TEST_F(ConnectorTest, TheFirstAttemptIsMadeAtOnce) {
    EXPECT_EQ(Begin(), kConnect);
    EXPECT_TRUE(Link.IsTrying());
    EXPECT_EQ(Begin(), "") << "one attempt at a time";
}

TEST_F(ConnectorTest, T5CountsFromTheEndOfTheAttempt) {
    Begin();
    EXPECT_EQ(FailAt(3'000ms), kRefused);
    EXPECT_EQ(Begin(), "start T5 10000");
    At(12'999ms);
    EXPECT_EQ(Begin(), "start T5 1");
    At(13'000ms);
    EXPECT_EQ(Begin(), kConnect);
    EXPECT_EQ(FailAt(13'000ms), kRefused) << "each failure is told";
    EXPECT_EQ(Begin(), "start T5 10000");
    EXPECT_EQ(Statistics.ConnectFailures, 2U);
}

TEST_F(ConnectorTest, T5CountsFromTheEndOfTheLinkAndOutlivesThePort) {
    Begin();
    EXPECT_EQ(Link.OnConnected(kOwn), Verdict::Adopted);
    EXPECT_EQ(Take(), "adopt");
    At(60'000ms);
    EXPECT_TRUE(Link.Drop());
    EXPECT_EQ(Take(), "close");
    At(64'000ms);
    Link.Open();
    EXPECT_EQ(Begin(), "start T5 6000");
    At(70'000ms);
    EXPECT_EQ(Begin(), kConnect);
}

TEST_F(ConnectorTest, AnotherT5CountsFromTheNextBeginOn) {
    Begin();
    FailAt(0ms);
    Begin();
    Settings.T5 = 3s;
    At(1'000ms);
    EXPECT_EQ(Begin(), "start T5 2000");
    At(3'000ms);
    EXPECT_EQ(Begin(), "connect 10.0.0.2:5000 from 10.0.0.1; start timeout 3000");
}

TEST_F(ConnectorTest, AnAttemptThatTakesTooLongIsGivenUpAndTold) {
    Begin();
    At(10'000ms);
    EXPECT_EQ(Link.OnConnectTimeout(), Verdict::Again);
    EXPECT_EQ(Take(), "Error 3051 Connect timed out: 10.0.0.2:5000; stop-connecting");
    EXPECT_EQ(Begin(), "start T5 10000");
    EXPECT_EQ(Statistics.ConnectTimeouts, 1U);
    EXPECT_EQ(Statistics.ConnectFailures, 0U);
}

TEST_F(ConnectorTest, ASettingReplacesTheTimeOfAnAttempt) {
    Settings.ConnectTimeout = 700ms;
    EXPECT_EQ(Begin(), "connect 10.0.0.2:5000 from 10.0.0.1; start timeout 700");
}

TEST_F(ConnectorTest, WhatComesTooLateChangesNothing) {
    EXPECT_EQ(Link.OnConnectFailed({111, "refused"}), Verdict::Refused);
    EXPECT_EQ(Link.OnConnectTimeout(), Verdict::Refused);
    EXPECT_EQ(Link.OnCrossingTimeout(), Verdict::Refused);
    EXPECT_EQ(Take(), "");
    EXPECT_EQ(Link.OnConnected(kOwn), Verdict::Refused);
    EXPECT_EQ(Take(), "refuse");
    EXPECT_FALSE(Link.Drop());
    EXPECT_EQ(Take(), "");
    EXPECT_EQ(Begin(), kConnect) << "and T5 has not begun";
}

TEST_F(ConnectorTest, GivingUpAnAttemptCountsAsItsEnd) {
    Begin();
    At(2'000ms);
    EXPECT_TRUE(Link.Drop());
    EXPECT_EQ(Take(), "close");
    EXPECT_EQ(Begin(), "start T5 10000");
}

TEST_F(ConnectorTest, AConnectionToItselfIsAFailure) {
    Begin();
    const Endpoints self{"10.0.0.2", 5'000, "10.0.0.2", 5'000, false};
    EXPECT_EQ(Link.OnConnected(self), Verdict::Again);
    EXPECT_EQ(Take(), "Error 3057 Connected to itself: 10.0.0.2:5000; refuse");
    EXPECT_FALSE(Link.IsConnected());
    EXPECT_EQ(Begin(), "start T5 10000");
    EXPECT_EQ(Statistics.SelfConnections, 1U);
}

TEST_F(ConnectorTest, TheSameAddressWithAnotherPortIsNotItself) {
    Begin();
    EXPECT_EQ(Link.OnConnected({"10.0.0.2", 40'000, "10.0.0.2", 5'000, false}), Verdict::Adopted);
}

TEST_F(ConnectorTest, AConnectionToOurOwnListenerIsOneToItself) {
    Use(kAlternating);
    Begin();
    const Endpoints own{"10.0.0.1", 40'000, "10.0.0.1", 5'000, false};
    EXPECT_EQ(Link.OnConnected(own), Verdict::Again);
    EXPECT_EQ(Take(), "Error 3057 Connected to itself: 10.0.0.1:5000; refuse");
}

TEST_F(ConnectorTest, ASerialPortIsOpenedWhateverTheMode) {
    Settings.PortType = 1;
    Use(kPassive);
    EXPECT_EQ(Begin(), "open COM1 9600");
    EXPECT_EQ(Link.OnConnectFailed({2, "no such file", LinkError::SerialOpenFailed}),
              Verdict::Again);
    EXPECT_EQ(Take(), "Error 3060 Serial port cannot be opened: COM1, no such file (2)");
    EXPECT_EQ(Begin(), "start T5 10000");
}

TEST_F(ConnectorTest, TheFirstAttemptSinceOpenIsKnown) {
    Link.Open();
    Begin();
    EXPECT_TRUE(Link.IsFirstAttempt());
    FailAt(0ms);
    At(10'000ms);
    Begin();
    EXPECT_FALSE(Link.IsFirstAttempt());
    Link.Drop();
    Link.Open();
    At(20'000ms);
    Begin();
    EXPECT_TRUE(Link.IsFirstAttempt());
}

TEST_F(ConnectorTest, ThePeerIsNamedWithItsPort) {
    Begin();
    Link.OnConnected(kOwn);
    EXPECT_EQ(Link.PeerText(), "10.0.0.2:5000");
    EXPECT_TRUE(Link.IsOpener());
    EXPECT_EQ(Link.Ends(), kOwn);
}

// --- listening -----------------------------------------------------------------------------------

TEST_F(ConnectorTest, ABindFailureIsToldOnceThenTriedInSilence) {
    Use(kPassive);
    EXPECT_EQ(Begin(), kListen);
    Link.OnListenFailed({98, "in use"});
    EXPECT_EQ(Take(),
              "Error 3052 Bind or listen failed: 10.0.0.1:5000, in use (98); start T5 10000");
    for (int again = 0; again < 3; ++again) {
        EXPECT_EQ(Begin(), kListen);
        Link.OnListenFailed({98, "in use"});
        EXPECT_EQ(Take(), "start T5 10000");
    }
    Begin();
    Link.OnListenFailed({99, "not ours"});
    EXPECT_EQ(Take(),
              "Error 3052 Bind or listen failed: 10.0.0.1:5000, not ours (99); start T5 10000");
    EXPECT_EQ(Statistics.ListenFailures, 5U) << "the silent ones included";
}

TEST_F(ConnectorTest, AfterASuccessAndAfterOpenTheSameFailureIsToldAgain) {
    Use(kPassive);
    for (const bool success : {true, false}) {
        Begin();
        Link.OnListenFailed({98, "in use"});
        EXPECT_TRUE(Take().starts_with("Error 3052")) << success;
        if (success) {
            Begin();
            Link.OnListening();
            Link.StopListening();
            Take();
        } else {
            Link.Open();
            Begin();
            Link.OnListenFailed({98, "in use"});
            EXPECT_TRUE(Take().starts_with("Error 3052"));
        }
    }
}

TEST_F(ConnectorTest, AnAlternatingLinkThatCannotListenGoesOnConnecting) {
    Use(kAlternating);
    EXPECT_EQ(Begin(), kListen + "; " + kConnect);
    Link.OnListenFailed({98, "in use"});
    EXPECT_EQ(Take(), "Error 3052 Bind or listen failed: 10.0.0.1:5000, in use (98)");
    FailAt(100ms);
    EXPECT_TRUE(Begin().starts_with(kListen + "; start T5 ")) << "both are tried again";
}

TEST_F(ConnectorTest, AListenerThatFailsBesideALiveConnectionWaitsForItsEnd) {
    Use(kPassive);
    Begin();
    EXPECT_EQ(Link.OnConnected(kPeer), Verdict::Adopted);
    Take();
    Link.OnListenFailed({98, "in use"});
    EXPECT_EQ(Take(), "Error 3052 Bind or listen failed: 10.0.0.1:5000, in use (98)");
    Link.Drop();
    Take();
    EXPECT_EQ(Begin(), kListen);
}

TEST_F(ConnectorTest, AFailureToListenThatNobodyWantsAnyMoreIsSilent) {
    Use(kPassive);
    Begin();
    Link.StopListening();
    Take();
    Link.OnListenFailed({98, "in use"});
    Link.OnAcceptFailed({24, "too many"});
    Link.OnAcceptRetry();
    EXPECT_EQ(Take(), "");
    EXPECT_EQ(Statistics, LinkStatistics());
}

TEST_F(ConnectorTest, AFailedAcceptIsTriedAgainAfterASecond) {
    Use(kPassive);
    Begin();
    Link.OnAcceptFailed({24, "too many"});
    EXPECT_EQ(Take(), "Error 3053 Accept failed: too many (24); start accept-retry 1000");
    Link.OnAcceptRetry();
    EXPECT_EQ(Take(), "resume-accepting");
    EXPECT_EQ(Statistics.AcceptFailures, 1U);
}

TEST_F(ConnectorTest, TheListenerMovesOrStopsWithTheSettings) {
    Use(kPassive);
    Begin();
    EXPECT_EQ(Begin(), "") << "nothing has changed";
    Settings.LocalIPPort = 6000;
    EXPECT_EQ(Begin(), "stop-listening; stop accept-retry; listen 10.0.0.1:6000");
    Use(kActive);
    EXPECT_EQ(Begin(), "stop-listening; stop accept-retry; " + kConnect);
}

// --- callers -------------------------------------------------------------------------------------

TEST_F(ConnectorTest, ACallerIsTakenAndTheListenerStays) {
    Use(kPassive);
    Begin();
    EXPECT_EQ(Link.OnConnected(kStranger), Verdict::Adopted);
    EXPECT_EQ(Take(), "adopt");
    EXPECT_FALSE(Link.IsOpener());
    EXPECT_EQ(Link.PeerText(), "10.0.0.9:40002");
    EXPECT_FALSE(Link.OnExtraConnected(kPeer));
    EXPECT_EQ(Take(), "Error 3041 Extra connection refused: 10.0.0.2:40001; refuse");
    EXPECT_EQ(Statistics.ExtraConnections, 1U);
    Link.Drop();
    Take();
    EXPECT_EQ(Begin(), "") << "it listens still, and T5 is not its concern";
    EXPECT_EQ(Link.OnConnected(kPeer), Verdict::Adopted);
}

TEST_F(ConnectorTest, CallersThatAreNotOnTheListAreToldAndRefused) {
    Use(kPassive);
    Settings.AllowedCallers = {"10.0.0.7", "10.0.0.2"};
    Begin();
    EXPECT_EQ(Link.OnConnected(kStranger), Verdict::Refused);
    EXPECT_EQ(
        Take(),
        "Error 3041 Extra connection refused: 10.0.0.9:40002 is not an allowed caller; refuse");
    EXPECT_EQ(Statistics.CallersNotAllowed, 1U);
    EXPECT_EQ(Statistics.ExtraConnections, 0U);
    EXPECT_EQ(Link.OnConnected(kPeer), Verdict::Adopted);
}

TEST_F(ConnectorTest, ACallerOfAListenerThatIsGoneIsRefusedInSilence) {
    EXPECT_EQ(Link.OnConnected(kPeer), Verdict::Refused);
    EXPECT_EQ(Take(), "refuse");
}

// --- alternating ---------------------------------------------------------------------------------

TEST_F(ConnectorTest, AnAlternatingLinkListensAllTheTimeAndTriesAtOnceToo) {
    Use(kAlternating);
    EXPECT_EQ(Begin(), kListen + "; " + kConnect);
    FailAt(0ms);
    EXPECT_TRUE(Begin().starts_with("start T5 ")) << "the listener is there already";
}

TEST_F(ConnectorTest, AlternatingAttemptsAreT5AndUpToHalfOfItApart) {
    Use(kAlternating);
    std::set<std::int64_t> waits;
    Milliseconds now = 0ms;
    for (int attempt = 0; attempt < 500; ++attempt) {
        Begin();
        FailAt(now);
        const std::string waiting = Begin();
        const auto wait = std::stoll(waiting.substr(waiting.rfind(' ')));
        EXPECT_GE(wait, 10'000);
        EXPECT_LE(wait, 15'000);
        waits.insert(wait);
        now += Milliseconds(wait);
        At(now - 1ms);
        EXPECT_EQ(Begin(), "start T5 1");
        At(now);
    }
    EXPECT_GT(waits.size(), 400U) << "they differ";
    EXPECT_LT(*waits.begin(), 10'200) << "and reach over the whole range";
    EXPECT_GT(*waits.rbegin(), 14'800);
}

TEST_F(ConnectorTest, AfterADropAnAlternatingLinkListensForOneWholeT5) {
    Use(kAlternating);
    Begin();
    Link.OnConnected(kOwn);
    std::set<std::string> waits;
    for (int drop = 0; drop < 20; ++drop) {
        At(drop * 100'000ms);
        Link.Drop();
        Take();
        const std::string waiting = Begin();
        EXPECT_GE(std::stoll(waiting.substr(waiting.rfind(' '))), 10'000);
        waits.insert(waiting);
        EXPECT_EQ(Link.OnConnected(kPeer), Verdict::Adopted) << "a caller need not wait";
    }
    EXPECT_GT(waits.size(), 10U) << "two ends that lose each other do not meet again";
}

TEST_F(ConnectorTest, OtherSeedsGiveOtherPaces) {
    Use(kAlternating);
    Connector other{Settings, Output, Statistics, 8};
    std::vector<std::string> paces;
    for (Connector* one : {&Link, &other}) {
        one->Begin();
        (void)one->OnConnectFailed({111, "refused"});
        Take();
        one->Begin();
        paces.push_back(Take());
    }
    EXPECT_NE(paces[0].substr(paces[0].rfind(' ')), paces[1].substr(paces[1].rfind(' ')));
}

}  // namespace
}  // namespace hexmire::link
