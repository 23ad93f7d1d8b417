#include "Receiving.h"
#include <gtest/gtest.h>

#include <chrono>

namespace hexmire {
namespace {

using namespace std::chrono_literals;
using namespace fakes;
using Access = detail::SECSTransAccess;

ErrorEvent Expired(int systemBytes) {
    return {2012,
            "(SECSTrans-Let T3Timer) T3 Timeout encountered. For [SystemBytes-" +
                std::to_string(systemBytes) + "] S1F3",
            0};
}

/// Sends S1F3, which expires at the first tick.
SECSTransPtr SendExpiring(Receiving& host) {
    SECSTransPtr trans = host.Send(1, 3);
    Access::T3Start(*trans, true);
    Access::T3Timer(*trans, 1);
    return trans;
}

TEST(Expiry, OfBothKindsInOneTickFollowsTheTable) {
    Receiving host;
    SendExpiring(host);
    const SECSTransPtr silent = host.Send(1, 3);
    silent->Name("silent");
    Access::T3Counter(*silent, 179);
    SendExpiring(host);
    host.TickSecond();
    EXPECT_EQ(host.Errors,
              (Errors{Expired(1),
                      {2015, "(SECSTrans-Let T3Counter) SECSTrans in use cleared. For silent", 0},
                      Expired(3)}));
    EXPECT_EQ(host.Control().ErrorCode(), 2012);
    EXPECT_EQ(host.Table()->TransCount(), 0);
    EXPECT_TRUE(silent->InProgress());
}

TEST(Expiry, SeesTwoSecondsOfNoonAndNightApart) {
    Receiving host;
    const SECSTransPtr trans = host.Send(1, 3);
    for (int count = 1; count <= 3; ++count) {
        host.Clock.Advance(12h);
        host.Container.Tick();
        EXPECT_EQ(Access::T3Counter(*trans), count);
    }
}

TEST(Expiry, RemembersTheSecondThatFoundAnEmptyTable) {
    Receiving host;
    host.TickSecond();
    const SECSTransPtr trans = host.Send(1, 3);
    host.Container.Tick();
    EXPECT_EQ(Access::T3Counter(*trans), 0);
    host.TickSecond();
    EXPECT_EQ(Access::T3Counter(*trans), 1);
}

TEST(ExpiryHandler, ThatDeletesAndSendsTheEntryAgainLosesItOnceMore) {
    Receiving host;
    const SECSTransPtr trans = SendExpiring(host);
    host.OnError([&](std::int32_t) {
        trans->Delete();
        trans->Send();
    });
    host.TickSecond();
    EXPECT_EQ(host.Errors, (Errors{Expired(1)}));
    EXPECT_EQ(host.Driver.Sent.size(), 2U);
    EXPECT_EQ(host.Table()->TransCount(), 0);
    EXPECT_TRUE(trans->InProgress());
}

TEST(ExpiryHandler, ThatDeletesAndSendsALaterEntryAgainLeavesItItsOneStep) {
    Receiving host;
    SendExpiring(host);
    const SECSTransPtr later = host.Send(1, 5);
    const SECSTransPtr last = host.Send(1, 7);
    host.OnError([&](std::int32_t) {
        later->Delete();
        later->Send();
    });
    host.TickSecond();
    EXPECT_EQ(Access::T3Counter(*later), 1);
    EXPECT_EQ(Access::T3Counter(*last), 1);
    EXPECT_EQ(last->Index(), 1);
    EXPECT_EQ(later->Index(), 2);
}

TEST(ExpiryHandler, ThatHearsOfALaterPrimaryTakesItsFirstSecond) {
    Receiving host;
    SendExpiring(host);
    const SECSTransPtr later = host.Send(1, 5);
    host.OnError([&](std::int32_t) { host.MessageSent(Header(0, true, 1, 5, 2)); });
    host.TickSecond();
    EXPECT_EQ(Access::T3Timer(*later), 44);
    EXPECT_EQ(Access::T3Counter(*later), 0);
}

TEST(ExpiryHandler, ThatReceivesTheLateReplyFindsTheEntryForIt) {
    Receiving host;
    const SECSTransPtr trans = SendExpiring(host);
    host.OnError([&](std::int32_t code) {
        if (code == 2012) host.ReceiveReply(1, 4, 1);
    });
    host.TickSecond();
    EXPECT_EQ(host.Raised,
              (Lines{"Error(2012," + Expired(1).Text + ",0)",
                     "ReceivedSecondary(S1F4,0,)",
                     "Error(1079,(SECSTrans-Delete) The Root item cannot be deleted.,0)"}));
    EXPECT_FALSE(trans->InProgress());
}

TEST(ExpiryHandler, ThatLowersTheReplyTimeClearsLaterSilentEntriesInTheSameTick) {
    Receiving host;
    SendExpiring(host);
    const SECSTransPtr silent = host.Send(1, 5);
    Access::T3Counter(*silent, 3);
    host.OnError([&](std::int32_t code) {
        if (code == 2012) host.Control().T3Timeout(1);
    });
    host.TickSecond();
    EXPECT_EQ(host.Control().ErrorCode(), 2015);
    EXPECT_EQ(host.Table()->TransCount(), 0);
}

}  // namespace
}  // namespace hexmire
