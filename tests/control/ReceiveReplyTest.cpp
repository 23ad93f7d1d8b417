#include "Receiving.h"
#include <gtest/gtest.h>

#include <stdexcept>

namespace hexmire {
namespace {

using namespace fakes;
using Access = detail::SECSTransAccess;

const std::string kNotOurs =
    "(Hexmire-moSECSIService_SecsMsgReceive) This SECSMessage received is not belong to any "
    "primary SECSMessage. - ";

TEST(ReceiveReply, RaisesACopyOfTheWaitingEntryWithTheReplyInIt) {
    Receiving host;
    const SECSTransPtr waiting = host.Send(1, 3);
    waiting->Name("status");
    waiting->Tag(5);
    AddItem(waiting->Primary()->Root(), FormatU1, 1);
    AddItem(waiting->Secondary()->Root(), FormatAscii, "expected");
    host.ReceiveReply(1, 4, 1, "41 02 4F 4B");
    EXPECT_EQ(host.Raised, (Lines{"ReceivedSecondary(S1F4,0,)"}));
    const SECSTransPtr trans = host.Secondaries.at(0);
    EXPECT_NE(trans, waiting);
    EXPECT_EQ(trans->Name(), "status");
    EXPECT_EQ(trans->Tag(), Variant(5));
    EXPECT_EQ(trans->SystemBytes(), 1);
    EXPECT_FALSE(trans->ReplyExpected());
    EXPECT_FALSE(trans->InProgress());
    EXPECT_EQ(trans->Index(), 0);
    EXPECT_EQ(trans->Primary()->Func(), 3);
    EXPECT_NE(trans->Primary(), waiting->Primary());
    EXPECT_EQ(trans->Primary()->Item(1)->Value(), Variant(1));
    EXPECT_EQ(trans->Secondary()->Item(1)->Value(), Variant("OK"));
    EXPECT_EQ(waiting->Secondary()->Item(1)->Value(), Variant("expected"));
}

TEST(ReceiveReply, AReplyWithoutTemplateItemsTakesItsPlaceInTheCopyAllTheSame) {
    Receiving host;
    const SECSTransPtr waiting = host.Send(1, 3);
    AddItem(waiting->Primary()->Root(), FormatU1, 1);
    host.ReceiveReply(1, 4, 1, "41 02 4F 4B");
    const SECSTransPtr trans = host.Secondaries.at(0);
    EXPECT_NE(trans->Primary(), waiting->Primary());
    EXPECT_EQ(trans->Primary()->Func(), 3);
    EXPECT_EQ(trans->Primary()->Item(1)->Value(), Variant(1));
    EXPECT_NE(trans->Secondary(), waiting->Secondary());
    EXPECT_EQ(trans->Secondary()->Func(), 4);
    EXPECT_EQ(trans->Secondary()->Item(1)->Value(), Variant("OK"));
    EXPECT_EQ(trans->Secondary()->Root()->ItemCount(), 1);
    EXPECT_EQ(waiting->Secondary()->Root()->ItemCount(), 0);
}

TEST(ReceiveReply, TakesTheEntryOutOfTheTableAfterTheHandler) {
    Receiving host;
    const SECSTransPtr waiting = host.Send(1, 3);
    std::int32_t countInside = 0;
    bool inProgressInside = false;
    host.Control().Events().ReceivedSecondary =
        [&](const SECSTransPtr&, std::int32_t, const std::string&) {
            countInside = host.Table()->TransCount();
            inProgressInside = waiting->InProgress();
        };
    host.ReceiveReply(1, 4, 1);
    EXPECT_EQ(countInside, 1);
    EXPECT_TRUE(inProgressInside);
    EXPECT_EQ(host.Table()->TransCount(), 0);
    EXPECT_FALSE(waiting->InProgress());
    EXPECT_EQ(Access::Parent(*waiting), nullptr);
    EXPECT_TRUE(host.Raised.empty());
}

TEST(ReceiveReply, MayComeBeforeTheDriversWordThatThePrimaryWentOut) {
    Receiving host;
    host.Send(1, 3);
    host.ReceiveReply(1, 4, 1);
    EXPECT_EQ(host.Table()->TransCount(), 0);
    host.NewLines();
    host.MessageSent(Header(0, true, 1, 3, 1));
    EXPECT_EQ(host.NewLines(), (Lines{"Start T3 - Searching for S1F3 SystemBytes: 1"}));
    EXPECT_EQ(host.Raised, (Lines{"ReceivedSecondary(S1F4,0,)"}));
}

struct MatchRow {
    const char* Label;
    bool Check;
    std::uint32_t SystemBytes;
    int Matched;  // Position of the entry that leaves; 0: none.
};

TEST(ReceiveReply, MatchesTheFirstEntryAndItsSystemBytesWhenAskedTo) {
    // Waiting: S1F3 under 1, S2F41 under 2, S1F3 under 3.
    for (const MatchRow& row : {MatchRow{"off, first", false, 1, 1},
                                MatchRow{"off, second's", false, 3, 1},
                                MatchRow{"off, other", false, 99, 1},
                                MatchRow{"on, first", true, 1, 1},
                                MatchRow{"on, second's", true, 3, 3},
                                MatchRow{"on, other stream's", true, 2, 0},
                                MatchRow{"on, other", true, 99, 0}}) {
        Receiving host;
        host.Control().SystemBytesCheck(row.Check);
        const std::vector<SECSTransPtr> sent{host.Send(1, 3), host.Send(2, 41), host.Send(1, 3)};
        host.ReceiveReply(1, 4, row.SystemBytes);
        for (int position = 1; position <= 3; ++position) {
            EXPECT_EQ(Access::Parent(*sent[static_cast<std::size_t>(position) - 1]) == nullptr,
                      position == row.Matched)
                << row.Label;
        }
        EXPECT_EQ(host.Secondaries.size(), 1U) << row.Label;
        EXPECT_EQ(host.Secondaries.at(0)->SystemBytes(),
                  static_cast<std::int32_t>(row.SystemBytes));
        EXPECT_EQ(host.Errors.size(), row.Matched == 0 ? 1U : 0U) << row.Label;
    }
}

TEST(ReceiveReply, IsMatchedByTheLastByteOfSystemBytesThatOverflow) {
    Receiving host;
    host.Control().SystemBytesCheck(true);
    host.Send(1, 3);
    const SECSTransPtr second = host.Send(1, 3);
    host.ReceiveReply(1, 4, 0x80000002U);
    EXPECT_EQ(host.Raised,
              (Lines{"Error(6,(ModGeneral-lLBitShift) Overflow,0)", "ReceivedSecondary(S1F4,0,)"}));
    EXPECT_EQ(Access::Parent(*second), nullptr);
    EXPECT_EQ(host.Table()->TransCount(), 1);
}

TEST(ReceiveReply, TakesWBitAndDeviceIdFromTheReply) {
    Receiving host;
    host.Send(1, 3);
    host.MessageReceived(Header(17, true, 1, 4, 1), {});
    EXPECT_TRUE(host.Secondaries.at(0)->ReplyExpected());
    EXPECT_EQ(host.Secondaries.at(0)->DeviceID(), 17);
}

TEST(ReceiveReply, KeepsTheControlsDeviceIdWhenTheReceivedOneIsRefused) {
    Receiving host;
    host.Control().DeviceID(5);
    host.Send(1, 3);
    host.MessageReceived(Header(0x8000, false, 1, 4, 1), {});
    EXPECT_EQ(host.Errors.at(0).Code, 1047);
    EXPECT_EQ(host.Secondaries.at(0)->DeviceID(), 5);
    EXPECT_EQ(host.Table()->TransCount(), 0);
}

TEST(ReceiveReply, ThatNobodyAwaitsIsRaisedFirstAndReportedThen) {
    Receiving host;
    host.MessageReceived(Header(3, false, 1, 4, 21), Bytes("A5 01 07"));
    EXPECT_EQ(host.Raised,
              (Lines{"ReceivedSecondary(S1F4,0,)", "Error(2013," + kNotOurs + "S1F4,0)"}));
    const SECSTransPtr trans = host.Secondaries.at(0);
    EXPECT_EQ(trans->DeviceID(), 3);
    EXPECT_EQ(trans->SystemBytes(), 21);
    EXPECT_FALSE(trans->ReplyExpected());
    EXPECT_FALSE(trans->InProgress());
    EXPECT_EQ(trans->Secondary()->Item(1)->Value(), Variant(7));
    EXPECT_EQ(trans->Primary()->Func(), 1);
    EXPECT_EQ(host.Control().ErrorCode(), 2013);
}

TEST(ReceiveReply, OfFunctionZeroIsAReply) {
    Receiving host;
    host.ReceiveReply(1, 0, 1);
    EXPECT_EQ(host.Raised,
              (Lines{"ReceivedSecondary(S1F0,0,)", "Error(2013," + kNotOurs + "S1F0,0)"}));
}

TEST(ReceiveReply, IsNotMatchedToATemplate) {
    Receiving host;
    host.ReceiveReply(1, 2, 1);
    EXPECT_EQ(host.Errors, (Errors{{2013, kNotOurs + "S1F2", 0}}));
    EXPECT_EQ(host.Control().SECSDictionary()->TransCount(), 2);
}

TEST(ReceiveReply, ComesTooLateAfterExpiry) {
    Receiving host;
    const SECSTransPtr waiting = host.Send(1, 3);
    Access::T3Timer(*waiting, 0);
    host.ReceiveReply(1, 4, 1);
    EXPECT_EQ(host.Errors.size(), 2U);
    EXPECT_EQ(host.Errors.at(1), (ErrorEvent{2013, kNotOurs + "S1F4", 0}));
    EXPECT_TRUE(waiting->InProgress());
}

TEST(ReceiveReply, TwiceIsUnexpectedTheSecondTime) {
    Receiving host;
    host.Send(1, 3);
    host.ReceiveReply(1, 4, 1);
    host.ReceiveReply(1, 4, 1);
    EXPECT_EQ(host.Raised,
              (Lines{"ReceivedSecondary(S1F4,0,)",
                     "ReceivedSecondary(S1F4,0,)",
                     "Error(2013," + kNotOurs + "S1F4,0)"}));
}

TEST(ReceiveReply, FollowsASecondaryThatTheHostEditsWhileItWaits) {
    Receiving host;
    const SECSTransPtr waiting = host.Send(1, 3);
    waiting->Secondary()->Func(0);
    host.ReceiveReply(1, 4, 1);
    EXPECT_EQ(host.Table()->TransCount(), 1);
    host.ReceiveReply(1, 0, 1);
    EXPECT_EQ(host.Table()->TransCount(), 0);
}

TEST(ReceiveReply, RenumbersThoseThatStillWait) {
    Receiving host;
    const SECSTransPtr first = host.Send(1, 3);
    const SECSTransPtr second = host.Send(2, 41);
    host.ReceiveReply(1, 4, 1);
    EXPECT_EQ(second->Index(), 1);
    EXPECT_EQ(first->Index(), 0);
}

TEST(ReceiveReplyHandler, ThatDeletesTheEntryGetsTheRefusalToo) {
    Receiving host;
    const SECSTransPtr waiting = host.Send(1, 3);
    host.Control().Events().ReceivedSecondary =
        [&](const SECSTransPtr&, std::int32_t, const std::string&) { waiting->Delete(); };
    host.ReceiveReply(1, 4, 1);
    EXPECT_EQ(host.Errors,
              (Errors{{1079, "(SECSTrans-Delete) The Root item cannot be deleted.", 0}}));
    EXPECT_FALSE(waiting->InProgress());
}

TEST(ReceiveReplyHandler, ThatSendsIsNotHurtByTheDelete) {
    Receiving host;
    host.Send(1, 3);
    const SECSTransPtr other = host.Send(2, 41);
    SECSTransPtr next;
    host.Control().Events().ReceivedSecondary =
        [&](const SECSTransPtr&, std::int32_t, const std::string&) { next = host.Send(1, 5); };
    host.ReceiveReply(1, 4, 1);
    EXPECT_EQ(host.Table()->TransCount(), 2);
    EXPECT_EQ(other->Index(), 1);
    EXPECT_EQ(next->Index(), 2);
    EXPECT_EQ(host.Table()->SECSTrans(2), next);
}

TEST(ReceiveReplyHandler, ThatSendsTheCopyEntersItBesideTheOldEntry) {
    Receiving host;
    const SECSTransPtr waiting = host.Send(1, 3);
    host.Control().Events().ReceivedSecondary =
        [&](const SECSTransPtr& trans, std::int32_t, const std::string&) {
            trans->ReplyExpected(true);
            trans->Send();
        };
    host.ReceiveReply(1, 4, 1);
    ASSERT_EQ(host.Table()->TransCount(), 1);
    EXPECT_NE(host.Table()->SECSTrans(1), waiting);
    EXPECT_EQ(host.Table()->SECSTrans(1)->SystemBytes(), 2);
    EXPECT_EQ(host.Table()->SECSTrans(1)->Index(), 1);
}

TEST(ReceiveReplyHandler, ThatThrowsLeavesTheEntryWaiting) {
    Receiving host;
    const SECSTransPtr waiting = host.Send(1, 3);
    host.Control().Events().ReceivedSecondary =
        [](const SECSTransPtr&, std::int32_t, const std::string&) {
            throw std::runtime_error("host bug");
        };
    host.ReceiveReply(1, 4, 1);
    EXPECT_EQ(host.Errors, (Errors{{440, "(Hexmire-moSECSIService_SecsMsgReceive) host bug", 0}}));
    EXPECT_EQ(host.Table()->TransCount(), 1);
    EXPECT_TRUE(waiting->InProgress());
}

TEST(ReceiveReplyHandler, IsNotNeeded) {
    Receiving host;
    host.Send(1, 3);
    host.Control().Events() = HexmireEvents();
    host.ReceiveReply(1, 4, 1);
    EXPECT_EQ(host.Table()->TransCount(), 0);
}

TEST(ReceiveReplyHandler, ThatClosesThePortLeavesTheTableInOrder) {
    Receiving host;
    host.Control().OpenPort();
    host.Send(1, 3);
    host.Send(1, 3);
    host.Control().Events().ReceivedSecondary =
        [&](const SECSTransPtr&, std::int32_t, const std::string&) { host.Control().ClosePort(); };
    host.ReceiveReply(1, 4, 1);
    EXPECT_FALSE(host.Control().PortOpened());
    EXPECT_EQ(host.Table()->TransCount(), 1);
    EXPECT_TRUE(host.Errors.empty());
}

TEST(ReceiveReplyHandler, ThatReceivesTheSameReplyAgainMatchesTheSameEntryTwice) {
    Receiving host;
    host.Send(1, 3);
    int depth = 0;
    host.Control().Events().ReceivedSecondary =
        [&](const SECSTransPtr&, std::int32_t, const std::string&) {
            if (++depth == 1) host.ReceiveReply(1, 4, 1);
        };
    host.ReceiveReply(1, 4, 1);
    EXPECT_EQ(depth, 2);
    EXPECT_EQ(host.Table()->TransCount(), 0);
    EXPECT_EQ(host.Errors,
              (Errors{{1079, "(SECSTrans-Delete) The Root item cannot be deleted.", 0}}));
}

}  // namespace
}  // namespace hexmire
