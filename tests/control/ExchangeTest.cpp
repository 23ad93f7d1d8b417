#include "Traced.h"
#include <gtest/gtest.h>

namespace hexmire {
namespace {

using namespace fakes;
using Access = detail::SECSTransAccess;

TEST(Exchange, OfARequestAndItsReply) {
    Traced host;
    host.Request()->Send();
    host.MessageSent(Header(0, true, 1, 3, 1));
    host.BlockReceived(Header(0, false, 1, 4, 1));
    host.ReceiveReply(1, 4, 1, "01 02 41 02 4F 4B A5 01 07");
    host.TickSecond();
    EXPECT_EQ(host.Trace(),
              (Lines{"SECS I HEADER Send : 00 00 81 03 00 00 00 00 00 01",
                     "SendMessage(3)",
                     "SECS I DATALEN Send : 3",
                     "SECS I DATA Send : A5 01 07",
                     "SECS II Message Send : \r\nS1F3 W\r\n< U1 7 >\r\n.\r\n",
                     "Start T3 - Searching for S1F3 SystemBytes: 1",
                     "Start T3 - TransactionInUse[1] : S1F3 SystemBytes: 1",
                     "Start T3 - Timer for S1F3 SystemBytes: 1",
                     "Cancel T3 - Searching for S1F4 SystemBytes: 1",
                     "Cancel T3 - TransactionInUse[1] : S1F4 SystemBytes: 1",
                     "Cancel T3 - Timer for S1F4 SystemBytes: 1",
                     "SECS I HEADER Received : 00 00 01 04 00 00 00 00 00 01",
                     "SECS I DATALEN Received : 9",
                     "SECS I DATA Received : 01 02 41 02 4F 4B A5 01 07",
                     "SECS II Message Received : \r\nS1F4\r\n< L \r\n  < A 'OK' >\r\n  < U1 7 "
                     ">\r\n >\r\n.",
                     "ReceivedSecondary(S1F4,0,)"}));
}

TEST(Exchange, OfAPrimaryAnsweredInsideItsEvent) {
    Traced host;
    host.OnReceived = [](const SECSTransPtr& trans) {
        AddItem(trans->Secondary()->Root(), FormatBinary, std::uint8_t{0});
        trans->Reply();
    };
    host.ReceivePrimary(6, 11, 0x01020304, "A5 01 07");
    host.MessageSent(Header(0, false, 6, 12, 0x01020304));
    EXPECT_EQ(host.Trace(),
              (Lines{"SECS I HEADER Received : 00 00 86 0B 00 00 01 02 03 04",
                     "SECS I DATALEN Received : 3",
                     "SECS I DATA Received : A5 01 07",
                     "SECS II Message Received : \r\nS6F11 W\r\n< U1 7 >\r\n.",
                     "ReceivedPrimary(S6F11,0,)",
                     "SECS I HEADER Reply : 00 00 06 0C 00 00 01 02 03 04",
                     "SendMessage(3)",
                     "SECS I DATALEN Reply : 3",
                     "SECS I DATA Reply : 21 01 00",
                     "SECS II Message Reply : \r\nS6F12 W\r\n< B 0x00 >\r\n.\r\n"}));
}

TEST(Exchange, OfAnUnknownPrimaryAnsweredBeforeItIsReported) {
    Traced host;
    host.OnReceived = [](const SECSTransPtr& trans) { trans->Reply(); };
    host.ReceivePrimary(7, 3, 5);
    EXPECT_EQ(host.Trace(),
              (Lines{"SECS I HEADER Received : 00 00 87 03 00 00 00 00 00 05",
                     "SECS I DATALEN Received : 0",
                     "SECS II Message Received : \r\nS7F3 W\r\n.",
                     "ReceivedPrimary(S7F3,0,)",
                     "SECS I HEADER Reply : 00 00 00 02 00 00 00 00 00 05",
                     "SendMessage(0)",
                     "SECS I DATALEN Reply : 0",
                     "SECS II Message Reply : \r\nS0F2 W\r\n.\r\n",
                     "Error(2011,(Hexmire-moSECSIService_SecsMsgReceive) This SECSMessage received "
                     "is not contained in the SECSDictionary. - S7F3,0)"}));
}

TEST(Exchange, OfAReplyQuickerThanTheDriversWordLeavesNothingToSupervise) {
    Traced host;
    const SECSTransPtr trans = host.Request();
    trans->Send();
    host.Trace();
    host.BlockReceived(Header(0, false, 1, 4, 1));
    host.ReceiveReply(1, 4, 1);
    host.MessageSent(Header(0, true, 1, 3, 1));
    for (int second = 0; second < 200; ++second)
        host.TickSecond();
    EXPECT_EQ(host.Trace(),
              (Lines{"Cancel T3 - Searching for S1F4 SystemBytes: 1",
                     "Cancel T3 - TransactionInUse[1] : S1F4 SystemBytes: 1",
                     "Cancel T3 - Timer for S1F4 SystemBytes: 1",
                     "SECS I HEADER Received : 00 00 01 04 00 00 00 00 00 01",
                     "SECS I DATALEN Received : 0",
                     "SECS II Message Received : \r\nS1F4\r\n.",
                     "ReceivedSecondary(S1F4,0,)",
                     "Start T3 - Searching for S1F3 SystemBytes: 1"}));
    EXPECT_FALSE(Access::T3Start(*trans));
}

TEST(Exchange, OfTheSecondOfTwoAlikeWithTheCheckLeavesTheFirstToExpire) {
    Traced host;
    host.Control().T3Timeout(2);
    host.Control().SystemBytesCheck(true);
    for (const std::uint32_t systemBytes : {1U, 2U}) {
        host.Request()->Send();
        host.MessageSent(Header(0, true, 1, 3, systemBytes));
    }
    host.BlockReceived(Header(0, false, 1, 4, 2));
    host.ReceiveReply(1, 4, 2);
    host.Trace();
    host.TickSecond();
    host.TickSecond();
    EXPECT_EQ(host.Trace(),
              (Lines{"Error(2012,(SECSTrans-Let T3Timer) T3 Timeout encountered. For "
                     "[SystemBytes-1] S1F3,0)"}));
    EXPECT_EQ(host.Table()->TransCount(), 0);
}

TEST(Exchange, ThatFollowsInsideTheReplyOfTheLastStandsBehindItInTheTable) {
    Traced host;
    host.OnReceived = [&](const SECSTransPtr&) {
        if (host.Secondaries.size() == 1) host.Request()->Send();
    };
    host.Request()->Send();
    host.Trace();
    host.ReceiveReply(1, 4, 1);
    host.MessageSent(Header(0, true, 1, 3, 2));
    host.ReceiveReply(1, 4, 2);
    EXPECT_EQ(host.Trace(),
              (Lines{"SECS I HEADER Received : 00 00 01 04 00 00 00 00 00 01",
                     "SECS I DATALEN Received : 0",
                     "SECS II Message Received : \r\nS1F4\r\n.",
                     "ReceivedSecondary(S1F4,0,)",
                     "SECS I HEADER Send : 00 00 81 03 00 00 00 00 00 02",
                     "SendMessage(3)",
                     "SECS I DATALEN Send : 3",
                     "SECS I DATA Send : A5 01 07",
                     "SECS II Message Send : \r\nS1F3 W\r\n< U1 7 >\r\n.\r\n",
                     "Start T3 - Searching for S1F3 SystemBytes: 2",
                     "Start T3 - TransactionInUse[1] : S1F3 SystemBytes: 2",
                     "Start T3 - Timer for S1F3 SystemBytes: 2",
                     "SECS I HEADER Received : 00 00 01 04 00 00 00 00 00 02",
                     "SECS I DATALEN Received : 0",
                     "SECS II Message Received : \r\nS1F4\r\n.",
                     "ReceivedSecondary(S1F4,0,)"}));
    EXPECT_EQ(host.Table()->TransCount(), 0);
}

TEST(Exchange, UnderThePeersOwnSystemBytesWhenTheTransactionKeepsThem) {
    Traced host;
    host.ReceivePrimary(1, 1, 0x01020304);
    const SECSTransPtr trans = host.Primaries.at(0);
    trans->AutoSystemBytes(false);
    host.Trace();
    trans->Send();
    host.MessageSent(Header(0, true, 1, 1, 0x01020304));
    EXPECT_EQ(host.Trace(),
              (Lines{"SECS I HEADER Send : 00 00 81 01 00 00 01 02 03 04",
                     "SendMessage(0)",
                     "SECS I DATALEN Send : 0",
                     "SECS II Message Send : \r\nS1F1 W\r\n.\r\n",
                     "Start T3 - Searching for S1F1 SystemBytes: 16909060",
                     "Start T3 - TransactionInUse[1] : S1F1 SystemBytes: 16909060",
                     "Start T3 - Timer for S1F1 SystemBytes: 16909060"}));
    EXPECT_EQ(host.Send()->SystemBytes(), 1);
}

}  // namespace
}  // namespace hexmire
