#include "Traced.h"
#include <gtest/gtest.h>

namespace hexmire {
namespace {

using namespace fakes;
using Access = detail::SECSTransAccess;

TEST(ExchangeInTrouble, OfIllegalDataUpToTheReplyOnItsReport) {
    Traced host;
    const SECSTransPtr entry = host.AddTemplate("S9F7", 9, 7);
    AddItem(entry->Primary()->Root(), FormatBinary);
    host.ReceivePrimary(6, 11, 9, "0D 00");
    host.MessageSent(Header(0, true, 9, 7, 1));
    host.BlockReceived(Header(0, false, 9, 8, 1));
    host.ReceiveReply(9, 8, 1);
    EXPECT_EQ(
        host.Trace(),
        (Lines{"SECS I HEADER Received : 00 00 86 0B 00 00 00 00 00 09",
               "SECS I DATALEN Received : 2",
               "SECS I DATA Received : 0D 00",
               "Error(1001,(SECSItem-Let Format) You cannot change the Format of the Root item. "
               "The Root item Format is always 0 (list).,0)",
               "SECS I HEADER Send : 00 00 89 07 00 00 00 00 00 01",
               "SendMessage(12)",
               "SECS I DATALEN Send : 12",
               "SECS I DATA Send : 21 0A 00 00 06 0B 80 01 00 00 00 09",
               "SECS II Message Send : \r\nS9F7 W\r\n< B 0x00 0x00 0x06 0x0B 0x80 0x01 0x00 0x00 "
               "0x00 0x09 >\r\n.\r\n",
               "Start T3 - Searching for S9F7 SystemBytes: 1",
               "Start T3 - TransactionInUse[1] : S9F7 SystemBytes: 1",
               "Start T3 - Timer for S9F7 SystemBytes: 1",
               "Cancel T3 - Searching for S9F8 SystemBytes: 1",
               "Cancel T3 - TransactionInUse[1] : S9F8 SystemBytes: 1",
               "Cancel T3 - Timer for S9F8 SystemBytes: 1",
               "SECS I HEADER Received : 00 00 09 08 00 00 00 00 00 01",
               "SECS I DATALEN Received : 0",
               "SECS II Message Received : \r\nS9F8\r\n.",
               "ReceivedSecondary(S9F8,0,)"}));
}

TEST(ExchangeInTrouble, ThatTheDriverRefusesLeavesTheHeaderLineAndTheNextSystemBytes) {
    Traced host;
    const SECSTransPtr trans = host.Request();
    host.Driver.FailingCall = "SendMessage";
    trans->Send();
    host.Driver.FailingCall = "";
    host.MessageSent(Header(0, true, 1, 3, 1));
    trans->Send();
    EXPECT_EQ(host.Trace(),
              (Lines{"SECS I HEADER Send : 00 00 81 03 00 00 00 00 00 01",
                     "Error(-2147467259,(SECSTrans-Send) driver failed,0)",
                     "Start T3 - Searching for S1F3 SystemBytes: 1",
                     "SECS I HEADER Send : 00 00 81 03 00 00 00 00 00 02",
                     "SendMessage(3)",
                     "SECS I DATALEN Send : 3",
                     "SECS I DATA Send : A5 01 07",
                     "SECS II Message Send : \r\nS1F3 W\r\n< U1 7 >\r\n.\r\n"}));
    EXPECT_EQ(host.Table()->TransCount(), 1);
    EXPECT_EQ(trans->Index(), 1);
}

TEST(ExchangeInTrouble, OfARefusedReplyLeavesTheHeaderLine) {
    Traced host;
    host.ReceivePrimary(1, 1, 5);
    host.Trace();
    host.Driver.FailingCall = "SendMessage";
    host.Primaries.at(0)->Reply();
    EXPECT_EQ(host.Trace(),
              (Lines{"SECS I HEADER Reply : 00 00 01 02 00 00 00 00 00 05",
                     "Error(-2147467259,(SECSTrans-Reply) driver failed,0)"}));
}

TEST(ExchangeInTrouble, OfABlockQuickerThanTheDriversWordStillExpires) {
    Traced host;
    host.Control().T3Timeout(2);
    host.Request()->Send();
    host.BlockReceived(Header(0, false, 1, 4, 1));
    host.MessageSent(Header(0, true, 1, 3, 1));
    host.Trace();
    host.TickSecond();
    EXPECT_EQ(host.Trace(), Lines{});
    host.TickSecond();
    EXPECT_EQ(host.Trace(),
              (Lines{"Error(2012,(SECSTrans-Let T3Timer) T3 Timeout encountered. For "
                     "[SystemBytes-1] S1F3,0)"}));
}

// Without the check the block stops the timer of the one and the message takes out the other.
TEST(ExchangeInTrouble, OfTheSecondOfTwoAlikeWithoutTheCheckStrandsTheSecond) {
    Traced host;
    host.Control().T3Timeout(2);
    const SECSTransPtr first = host.Request();
    const SECSTransPtr second = host.Request();
    for (const SECSTransPtr& trans : {first, second}) {
        trans->Send();
        host.MessageSent(Header(0, true, 1, 3, static_cast<std::uint32_t>(trans->SystemBytes())));
    }
    host.Trace();
    host.BlockReceived(Header(0, false, 1, 4, 2));
    host.ReceiveReply(1, 4, 2);
    for (int second_ = 0; second_ < 8; ++second_)
        host.TickSecond();
    EXPECT_EQ(
        host.Trace(),
        (Lines{"Cancel T3 - Searching for S1F4 SystemBytes: 2",
               "Cancel T3 - TransactionInUse[1] : S1F4 SystemBytes: 1",
               "Cancel T3 - TransactionInUse[2] : S1F4 SystemBytes: 2",
               "Cancel T3 - Timer for S1F4 SystemBytes: 2",
               "SECS I HEADER Received : 00 00 01 04 00 00 00 00 00 02",
               "SECS I DATALEN Received : 0",
               "SECS II Message Received : \r\nS1F4\r\n.",
               "ReceivedSecondary(S1F4,0,)",
               "Error(2015,(SECSTrans-Let T3Counter) SECSTrans in use cleared. For S1F3,0)"}));
    EXPECT_EQ(Access::T3Timer(*second), 2);
    EXPECT_EQ(host.Secondaries.at(0)->SystemBytes(), 2);
}

TEST(ExchangeInTrouble, OfASecondSendWhileTheFirstWaitsIsRefusedWithoutALine) {
    Traced host;
    const SECSTransPtr trans = host.Request();
    trans->Send();
    host.Trace();
    trans->Send();
    trans->Reply();
    EXPECT_EQ(
        host.Trace(),
        (Lines{"Error(2009,(SECSTrans-Send) You must call NewSECSTrans to use send method.,0)",
               "Error(2009,(SECSTrans-Reply) You must call NewSECSTrans to use send "
               "method.,0)"}));
    EXPECT_EQ(host.Request()->SystemBytes(), 0);
    EXPECT_EQ(host.Send()->SystemBytes(), 2);
}

TEST(ExchangeInTrouble, WithoutReplyExpectedIsSearchedForInVain) {
    Traced host;
    const SECSTransPtr trans = host.Request();
    trans->ReplyExpected(false);
    trans->Send();
    host.MessageSent(Header(0, false, 1, 3, 1));
    EXPECT_EQ(host.Trace(),
              (Lines{"SECS I HEADER Send : 00 00 01 03 00 00 00 00 00 01",
                     "SendMessage(3)",
                     "SECS I DATALEN Send : 3",
                     "SECS I DATA Send : A5 01 07",
                     "SECS II Message Send : \r\nS1F3\r\n< U1 7 >\r\n.\r\n",
                     "Start T3 - Searching for S1F3 SystemBytes: 1"}));
    EXPECT_FALSE(trans->InProgress());
}

TEST(ExchangeInTrouble, OfARefusedMessageLeavesTheHeaderLine) {
    Traced host;
    const std::string header = "00 00 86 0B 00 00 00 00 00 09 ";
    host.DriverEvents().SecsMsgReceive(header, "A5 01 0", 3);
    host.DriverEvents().SecsMsgReceive(header, "", 3);
    const std::string line = "SECS I HEADER Received : 00 00 86 0B 00 00 00 00 00 09";
    const std::string prefix = "(Hexmire-moSECSIService_SecsMsgReceive) ";
    EXPECT_EQ(host.Trace(),
              (Lines{line,
                     "Error(2017," + prefix + "SECS II Data length mismatched.,0)",
                     line,
                     "Error(2010," + prefix + "SECS II Data not found.,0)"}));
}

}  // namespace
}  // namespace hexmire
