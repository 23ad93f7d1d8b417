// What becomes of two connections that cross.
#include "ConnectorFixture.h"
#include <gtest/gtest.h>

namespace hexmire::link {
namespace {

using namespace connector_testing;
using ConnectorCrossingTest = ConnectorTest;

TEST_F(ConnectorCrossingTest, TheHostHoldsTheCallerUntilItsOwnConnectComesThrough) {
    Use(kAlternating, true);
    Begin();
    EXPECT_EQ(Link.OnConnected(kPeer), Verdict::Refused);
    EXPECT_EQ(Take(), "hold; start crossing 500");
    EXPECT_EQ(Link.OnConnected(kOwn), Verdict::Adopted);
    EXPECT_EQ(Take(), "adopt; stop crossing; refuse-held");
    EXPECT_TRUE(Link.IsOpener());
    EXPECT_EQ(Statistics.CrossingsResolved, 1U);
    EXPECT_EQ(Statistics.ExtraConnections, 0U);
}

TEST_F(ConnectorCrossingTest, TheHostTakesTheCallerWhenItsOwnConnectFails) {
    Use(kAlternating, true);
    Begin();
    Link.OnConnected(kPeer);
    Take();
    EXPECT_EQ(Link.OnConnectFailed({111, "refused"}), Verdict::Adopted);
    EXPECT_EQ(Take(), kRefused + "; stop crossing; adopt-held");
    EXPECT_FALSE(Link.IsOpener());
    EXPECT_EQ(Link.Ends(), kPeer);
    EXPECT_EQ(Statistics.CrossingsResolved, 0U);
}

TEST_F(ConnectorCrossingTest, TheHostTakesTheCallerWhenItsOwnConnectGetsNoAnswerInTime) {
    Use(kAlternating, true);
    Begin();
    Link.OnConnected(kPeer);
    Take();
    EXPECT_EQ(Link.OnCrossingTimeout(), Verdict::Adopted);
    EXPECT_EQ(Take(), "stop-connecting; stop crossing; adopt-held");
    EXPECT_EQ(Statistics.CrossingsResolved, 1U);
    EXPECT_EQ(Link.OnConnected(kOwn), Verdict::Refused) << "it comes through all the same";
    EXPECT_EQ(Take(), "refuse");
}

TEST_F(ConnectorCrossingTest, TheHostTakesTheCallerWhenTheTimeOfItsOwnConnectIsOver) {
    Use(kAlternating, true);
    Begin();
    At(9'900ms);
    Link.OnConnected(kPeer);
    Take();
    At(10'000ms);
    EXPECT_EQ(Link.OnConnectTimeout(), Verdict::Adopted);
    EXPECT_EQ(Take(),
              "Error 3051 Connect timed out: 10.0.0.2:5000; stop-connecting; stop crossing; "
              "adopt-held");
}

TEST_F(ConnectorCrossingTest, OneCallerIsHeldTheNextIsExtra) {
    Use(kAlternating, true);
    Begin();
    Link.OnConnected(kPeer);
    Take();
    EXPECT_EQ(Link.OnConnected(kStranger), Verdict::Refused);
    EXPECT_EQ(Take(), "Error 3041 Extra connection refused: 10.0.0.9:40002; refuse");
}

TEST_F(ConnectorCrossingTest, ClosingLetsTheHeldCallerGoToo) {
    Use(kAlternating, true);
    Begin();
    Link.OnConnected(kPeer);
    Take();
    EXPECT_TRUE(Link.Drop());
    EXPECT_EQ(Take(), "refuse-held; stop crossing; close");
    EXPECT_EQ(Link.OnCrossingTimeout(), Verdict::Refused);
}

TEST_F(ConnectorCrossingTest, TheHostKeepsItsOwnConnectionWhenThePeersCallComesLater) {
    Use(kAlternating, true);
    Begin();
    Link.OnConnected(kOwn);
    Take();
    EXPECT_TRUE(Link.IsCrossing(kPeer));
    EXPECT_FALSE(Link.OnExtraConnected(kPeer));
    EXPECT_EQ(Take(), "refuse") << "in silence";
    EXPECT_TRUE(Link.IsOpener());
    EXPECT_EQ(Statistics.CrossingsResolved, 1U);
}

TEST_F(ConnectorCrossingTest, ALateCallerOfAnIdleHostIsExtra) {
    Use(kAlternating, true);
    Begin();
    Link.OnConnected(kOwn);
    Take();
    At(499ms);
    EXPECT_TRUE(Link.IsCrossing(kPeer));
    At(500ms);
    EXPECT_FALSE(Link.IsCrossing(kPeer)) << "whether or not the peer has spoken";
    EXPECT_FALSE(Link.OnExtraConnected(kPeer));
    EXPECT_EQ(Take(), "Error 3041 Extra connection refused: 10.0.0.2:40001; refuse");
    EXPECT_TRUE(Link.IsOpener());
    EXPECT_EQ(Statistics.CrossingsResolved, 0U);
    EXPECT_EQ(Statistics.ExtraConnections, 1U);
}

TEST_F(ConnectorCrossingTest, TheEquipmentGivesUpItsAttemptForACaller) {
    Use(kAlternating, false);
    Begin();
    EXPECT_EQ(Link.OnConnected(kPeer), Verdict::Adopted);
    EXPECT_EQ(Take(), "stop-connecting; adopt");
    EXPECT_FALSE(Link.IsOpener());
    EXPECT_FALSE(Link.IsTrying());
    EXPECT_EQ(Statistics.CrossingsResolved, 1U);
    EXPECT_EQ(Link.OnConnectFailed({111, "refused"}), Verdict::Refused);
    EXPECT_EQ(Take(), "");
}

TEST_F(ConnectorCrossingTest, TheEquipmentChangesOverFromAConnectionOnWhichItHasHeardNothing) {
    Use(kAlternating, false);
    Begin();
    Link.OnConnected(kOwn);
    Take();
    At(3'000ms);
    EXPECT_TRUE(Link.OnExtraConnected(kPeer)) << "be it late";
    EXPECT_EQ(Take(), "adopt");
    EXPECT_FALSE(Link.IsOpener());
    EXPECT_EQ(Link.Ends(), kPeer);
    EXPECT_EQ(Statistics.CrossingsResolved, 1U);
}

TEST_F(ConnectorCrossingTest, TheEquipmentStaysWhereThePeerHasSpoken) {
    Use(kAlternating, false);
    Begin();
    Link.OnConnected(kOwn);
    Link.Heard();
    Take();
    EXPECT_FALSE(Link.OnExtraConnected(kPeer));
    EXPECT_EQ(Take(), "refuse") << "the peer's other call, in silence";
    At(500ms);
    EXPECT_FALSE(Link.OnExtraConnected(kPeer));
    EXPECT_EQ(Take(), "Error 3041 Extra connection refused: 10.0.0.2:40001; refuse")
        << "by then it is somebody else, or the peer started anew";
}

TEST_F(ConnectorCrossingTest, NobodyElseCrosses) {
    Use(kAlternating, false);
    Begin();
    Link.OnConnected(kOwn);
    Take();
    EXPECT_FALSE(Link.OnExtraConnected(kStranger));
    EXPECT_EQ(Take(), "Error 3041 Extra connection refused: 10.0.0.9:40002; refuse");
    Settings.AllowedCallers = {"10.0.0.7"};
    EXPECT_FALSE(Link.OnExtraConnected(kPeer)) << "not on the list";
    EXPECT_EQ(Take(), "Error 3041 Extra connection refused: 10.0.0.2:40001; refuse");
}

TEST_F(ConnectorCrossingTest, ACallerTakenFirstIsNotGivenUpForAnother) {
    Use(kAlternating, false);
    Begin();
    Link.OnConnected(kPeer);
    Take();
    EXPECT_FALSE(Link.OnExtraConnected({"10.0.0.1", 5'000, "10.0.0.2", 40'009, true}));
    EXPECT_EQ(Take(), "Error 3041 Extra connection refused: 10.0.0.2:40009; refuse");
}

TEST_F(ConnectorCrossingTest, ACrossingMeansNothingToOtherModes) {
    for (const std::int32_t mode : {kActive, kPassive}) {
        Use(mode, false);
        Link.Begin();
        Link.OnConnected(mode == kActive ? kOwn : kPeer);
        Take();
        EXPECT_FALSE(Link.IsCrossing(kPeer)) << mode;
        Link.Drop();
        At(100'000ms);
    }
}

}  // namespace
}  // namespace hexmire::link
