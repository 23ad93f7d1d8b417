#include <hexmire/trans/SECSTrans.h>

#include "../fakes/Messages.h"
#include "../fakes/TransHost.h"
#include <gtest/gtest.h>

namespace hexmire {
namespace {

using fakes::HexOf;
using fakes::TransHost;
using Reports = TransHost::Reports;

TEST(SystemBytes, BeginAtOneInAFreshProcess) {
    EXPECT_EQ(detail::ProcessState().SystemBytesCounter, 0);
    TransHost host;
    const SECSTransPtr trans = host.MakeTrans(1, 1);
    trans->Send();
    EXPECT_EQ(trans->SystemBytes(), 1);
}

TEST(SystemBytes, ComeFromTheCounterOfTheProcess) {
    TransHost first;
    TransHost second;
    const SECSTransPtr one = first.MakeTrans(1, 1);
    const SECSTransPtr two = second.MakeTrans(1, 1);
    one->Send();
    two->Send();
    EXPECT_EQ(one->SystemBytes(), 1);
    EXPECT_EQ(two->SystemBytes(), 2);
    EXPECT_EQ(HexOf(second.Record.Sent.at(0).Header), "00 00 81 01 00 00 00 00 00 02");
    EXPECT_EQ(first.Table->TransCount(), 1);
    EXPECT_EQ(second.Table->TransCount(), 1);
}

TEST(SystemBytes, WrapBehindNineHundredMillion) {
    TransHost host;
    detail::State().SystemBytesCounter = 899999998;
    for (const std::int32_t expected : {899999999, 900000000, 0, 1, 2}) {
        const SECSTransPtr trans = host.MakeTrans(1, 1);
        trans->ReplyExpected(false);
        trans->Send();
        EXPECT_EQ(trans->SystemBytes(), expected);
    }
    detail::State().SystemBytesCounter = 900000005;
    const SECSTransPtr trans = host.MakeTrans(1, 1);
    trans->Send();
    EXPECT_EQ(trans->SystemBytes(), 0);
}

TEST(SystemBytes, LeaveTheCounterAloneWithoutAutoSystemBytes) {
    TransHost host;
    detail::State().SystemBytesCounter = 41;
    const SECSTransPtr trans = host.MakeTrans(1, 1);
    trans->AutoSystemBytes(false);
    trans->Send();
    EXPECT_EQ(trans->SystemBytes(), 0);
    EXPECT_EQ(detail::State().SystemBytesCounter, 41);
}

TEST(SystemBytes, AreNewEachTime) {
    TransHost host;
    const SECSTransPtr trans = host.MakeTrans(6, 11);
    trans->ReplyExpected(false);
    trans->Send();
    trans->Send();
    trans->AutoSystemBytes(false);
    trans->Send();
    EXPECT_EQ(host.Record.Sent.at(0).Header[9], 1);
    EXPECT_EQ(host.Record.Sent.at(1).Header[9], 2);
    EXPECT_EQ(host.Record.Sent.at(2).Header[9], 2);
}

TEST(SystemBytes, OfTheWrapStandInTheHeaderAndTheMessageOfItsExpiry) {
    TransHost host;
    detail::State().SystemBytesCounter = 899999999;
    const SECSTransPtr last = host.MakeTrans(1, 1);
    const SECSTransPtr wrapped = host.MakeTrans(1, 1);
    last->Send();
    wrapped->Send();
    EXPECT_EQ(HexOf(host.Record.Sent.at(0).Header), "00 00 81 01 00 00 35 A4 E9 00");
    EXPECT_EQ(HexOf(host.Record.Sent.at(1).Header), "00 00 81 01 00 00 00 00 00 00");
    detail::SECSTransAccess::T3Timer(*wrapped, 0);
    EXPECT_EQ(host.Take(),
              (Reports{{2012,
                        "(SECSTrans-Let T3Timer) T3 Timeout encountered. For [SystemBytes-0] S1F1",
                        0}}));
}

TEST(SystemBytes, AreNotTakenByWhatIsNotSent) {
    TransHost host;
    const auto dictionary = host.Make<SECSDictionary>();
    const SECSTransPtr entry = dictionary->AddNewTrans(1);
    dictionary->AddNewTrans(9);
    entry->Send();
    entry->Reply();
    const SECSTransPtr trans = host.MakeTrans(1, 1);
    trans->Reply();
    detail::SECSTransAccess::Primary(*trans, nullptr);
    trans->Send();
    EXPECT_EQ(host.Take().size(), 4U);
    EXPECT_EQ(detail::State().SystemBytesCounter, 0);
}

TEST(SystemBytes, AreTakenAgainWhenTheHostTurnsTheCounterOnOnceMore) {
    TransHost host;
    const SECSTransPtr trans = host.MakeTrans(6, 11);
    trans->ReplyExpected(false);
    trans->AutoSystemBytes(false);
    trans->Send();
    trans->AutoSystemBytes(true);
    trans->Send();
    EXPECT_EQ(host.Record.Sent.at(0).Header[9], 0);
    EXPECT_EQ(host.Record.Sent.at(1).Header[9], 1);
    EXPECT_EQ(trans->SystemBytes(), 1);
}

}  // namespace
}  // namespace hexmire
