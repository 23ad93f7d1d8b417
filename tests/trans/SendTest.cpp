#include <hexmire/trans/SECSTrans.h>

#include "../fakes/Messages.h"
#include "../fakes/TransHost.h"
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace hexmire {
namespace {

using Access = detail::SECSTransAccess;
using fakes::HexOf;
using fakes::TransHost;
using Lines = std::vector<std::string>;
using Reports = TransHost::Reports;

const Reports kNoMessage{{2008, "(SECSTrans-Send) SECSMessage not found in SECSTrans.", 0}};
const Reports kNotACopy{
    {2009, "(SECSTrans-Send) You must call NewSECSTrans to use send method.", 0}};

TEST(Send, ReadsPortTypeAndRoleWhenItSends) {
    TransHost host;
    const SECSTransPtr trans = host.MakeTrans(1, 1);
    trans->ReplyExpected(false);
    trans->Send();
    host.HostRole = false;
    trans->Send();
    host.PortType = 2;
    trans->Send();
    EXPECT_EQ(host.Record.Sent.at(0).Header[0], 0x00);
    EXPECT_EQ(host.Record.Sent.at(1).Header[0], 0x80);
    EXPECT_EQ(host.Record.Sent.at(2).Header[0], 0x00);
}

TEST(Send, UsesTheTransactionsDeviceIdAndNotTheControls) {
    TransHost host;
    host.DeviceId = 9;
    const SECSTransPtr trans = host.MakeTrans(1, 1);
    host.DeviceId = 10;
    trans->Send();
    EXPECT_EQ(host.Record.Sent.at(0).Header[1], 9);
}

TEST(Send, HandsTheEncodedBodyToTheDriver) {
    TransHost host;
    const SECSTransPtr trans = host.MakeTrans(1, 3);
    const SECSItemPtr list = fakes::AddItem(trans->Primary()->Root(), FormatList);
    fakes::AddItem(list, FormatAscii, "ABC");
    fakes::AddItem(list, FormatU1, 7);
    trans->Send();
    ASSERT_EQ(host.Record.Sent.size(), 1U);
    EXPECT_EQ(HexOf(host.Record.Sent[0].Body), "01 02 41 03 41 42 43 A5 01 07");
    EXPECT_EQ(host.Record.Sent[0].Length, 10);
    EXPECT_FALSE(host.Record.Sent[0].BodyIsText);
    EXPECT_EQ(trans->Primary()->Length(), 10);
}

TEST(Send, HandsAnEmptyTextAndLengthZeroForAHeaderOnlyMessage) {
    TransHost host;
    host.MakeTrans(1, 1)->Send();
    ASSERT_EQ(host.Record.Sent.size(), 1U);
    EXPECT_TRUE(host.Record.Sent[0].BodyIsText);
    EXPECT_TRUE(host.Record.Sent[0].Body.empty());
    EXPECT_EQ(host.Record.Sent[0].Length, 0);
    EXPECT_EQ(host.LogLines(),
              (Lines{"SECS I HEADER Send : 00 00 81 01 00 00 00 00 00 01",
                     "SECS I DATALEN Send : 0",
                     "SECS II Message Send : \r\nS1F1 W\r\n.\r\n"}));
}

TEST(Send, SendsNoStaleBodyAfterTheTreeWasEmptied) {
    TransHost host;
    const SECSTransPtr trans = host.MakeTrans(1, 1);
    trans->ReplyExpected(false);
    fakes::AddItem(trans->Primary()->Root(), FormatU1, 7);
    trans->Send();
    trans->Primary()->Item(1)->Delete();
    host.Files.Files.clear();
    trans->Send();
    EXPECT_EQ(trans->Primary()->RawHex(), "A5 01 07");
    EXPECT_TRUE(host.Record.Sent.at(1).BodyIsText);
    EXPECT_EQ(host.Record.Sent.at(1).Length, 0);
    EXPECT_EQ(host.LogLines(),
              (Lines{"SECS I HEADER Send : 00 00 01 01 00 00 00 00 00 02",
                     "SECS I DATALEN Send : 0",
                     "SECS II Message Send : \r\nS1F1\r\n.\r\n"}));
}

TEST(Send, SendsTheFirstItemOfTheRootOnly) {
    TransHost host;
    const SECSTransPtr trans = host.MakeTrans(1, 1);
    fakes::AddItem(trans->Primary()->Root(), FormatU1, 1);
    fakes::AddItem(trans->Primary()->Root(), FormatU1, 2);
    trans->Send();
    EXPECT_EQ(HexOf(host.Record.Sent.at(0).Body), "A5 01 01");
}

TEST(Send, SendsALargeBodyWhole) {
    TransHost host;
    const SECSTransPtr trans = host.MakeTrans(7, 3);
    fakes::AddItem(trans->Primary()->Root(), FormatAscii, std::string(70000, 'x'));
    trans->Send();
    EXPECT_EQ(host.Record.Sent.at(0).Length, 70004);
    EXPECT_EQ(host.Record.Sent.at(0).Body.size(), 70004U);
    EXPECT_EQ(host.LogLines().at(1), "SECS I DATALEN Send : 70004");
}

TEST(Send, LogsHeaderThenLengthDataAndText) {
    TransHost host;
    const SECSTransPtr trans = host.MakeTrans(1, 3);
    fakes::AddItem(fakes::AddItem(trans->Primary()->Root(), FormatList), FormatU1, 7);
    trans->Send();
    EXPECT_EQ(host.LogLines(),
              (Lines{"SECS I HEADER Send : 00 00 81 03 00 00 00 00 00 01",
                     "SECS I DATALEN Send : 5",
                     "SECS I DATA Send : 01 01 A5 01 07",
                     "SECS II Message Send : \r\nS1F3 W\r\n< L \r\n  < U1 7 >\r\n >\r\n.\r\n"}));
}

TEST(Send, LogsNoWMarkWithoutReplyExpected) {
    TransHost host;
    const SECSTransPtr trans = host.MakeTrans(6, 11);
    trans->ReplyExpected(false);
    trans->Send();
    EXPECT_EQ(host.LogLines().back(), "SECS II Message Send : \r\nS6F11\r\n.\r\n");
}

TEST(Send, WritesTheHeaderLineBeforeAndTheOthersAfterTheDriver) {
    TransHost host;
    const SECSTransPtr trans = host.MakeTrans(1, 1);
    Lines during;
    host.Record.OnCall = [&](const std::string&) { during = host.LogLines(); };
    trans->Send();
    EXPECT_EQ(during, (Lines{"SECS I HEADER Send : 00 00 81 01 00 00 00 00 00 01"}));
    EXPECT_EQ(host.LogLines().size(), 3U);
}

TEST(Send, EntersTheTableAfterTheDriverTookTheMessage) {
    TransHost host;
    const SECSTransPtr trans = host.MakeTrans(1, 1);
    std::int32_t countDuring = -1;
    bool inProgressDuring = true;
    host.Record.OnCall = [&](const std::string&) {
        countDuring = host.Table->TransCount();
        inProgressDuring = trans->InProgress();
    };
    trans->Send();
    EXPECT_EQ(countDuring, 0);
    EXPECT_FALSE(inProgressDuring);
    EXPECT_EQ(host.Table->TransCount(), 1);
    EXPECT_EQ(host.Table->SECSTrans(1), trans);
    EXPECT_EQ(Access::Parent(*trans), host.Table);
    EXPECT_EQ(trans->Index(), 1);
    EXPECT_TRUE(trans->InProgress());
    EXPECT_FALSE(Access::T3Start(*trans));
}

TEST(Send, EntersBehindTheLastOfThoseThatWait) {
    TransHost host;
    std::vector<SECSTransPtr> sent;
    for (int count = 1; count <= 4; ++count) {
        sent.push_back(host.MakeTrans(1, 1));
        sent.back()->Send();
        EXPECT_EQ(sent.back()->Index(), count);
    }
    sent[1]->Delete();
    const SECSTransPtr late = host.MakeTrans(1, 1);
    late->Send();
    EXPECT_EQ(late->Index(), 4);
    EXPECT_EQ(host.Table->SECSTrans(4), late);
    EXPECT_EQ(host.Table->SECSTrans(3), sent[3]);
}

TEST(Send, EntersNothingWithoutReplyExpected) {
    TransHost host;
    const SECSTransPtr trans = host.MakeTrans(6, 11);
    trans->ReplyExpected(false);
    trans->Send();
    EXPECT_EQ(host.Table->TransCount(), 0);
    EXPECT_FALSE(trans->InProgress());
    EXPECT_EQ(trans->Index(), 0);
    EXPECT_EQ(Access::Parent(*trans), nullptr);
}

TEST(Send, IsRefusedWithoutPrimary) {
    TransHost host;
    const SECSTransPtr trans = host.MakeTrans(1, 1);
    Access::Primary(*trans, nullptr);
    EXPECT_TRUE(trans->Send().IsEmpty());
    EXPECT_EQ(host.Take(), kNoMessage);
    EXPECT_TRUE(host.Record.Calls.empty());
    EXPECT_TRUE(host.LogLines().empty());
    EXPECT_EQ(detail::State().SystemBytesCounter, 0);
}

TEST(Send, NeedsNoSecondary) {
    TransHost host;
    const SECSTransPtr trans = host.MakeTrans(1, 1);
    Access::Secondary(*trans, nullptr);
    trans->Send();
    EXPECT_EQ(host.Take(), Reports{});
    EXPECT_EQ(host.Record.Sent.size(), 1U);
}

TEST(Send, ChecksForThePrimaryBeforeTheParent) {
    TransHost host;
    const auto dictionary = host.Make<SECSDictionary>();
    const SECSTransPtr entry = dictionary->AddNewTrans(1);
    Access::Primary(*entry, nullptr);
    entry->Send();
    EXPECT_EQ(host.Take(), kNoMessage);
}

TEST(Send, IsRefusedForATemplate) {
    TransHost host;
    const auto dictionary = host.Make<SECSDictionary>();
    const SECSTransPtr entry = dictionary->AddNewTrans(1);
    EXPECT_TRUE(entry->Send().IsEmpty());
    EXPECT_EQ(host.Take(), kNotACopy);
    EXPECT_TRUE(host.Record.Calls.empty());
    EXPECT_TRUE(host.LogLines().empty());
    EXPECT_EQ(entry->SystemBytes(), 0);
    EXPECT_EQ(detail::State().SystemBytesCounter, 0);
}

TEST(Send, IsRefusedWhileTheReplyIsAwaited) {
    TransHost host;
    const SECSTransPtr trans = host.MakeTrans(1, 1);
    trans->Send();
    trans->Send();
    EXPECT_EQ(host.Take(), kNotACopy);
    EXPECT_EQ(host.Record.Sent.size(), 1U);
    EXPECT_EQ(host.Table->TransCount(), 1);
    EXPECT_EQ(trans->SystemBytes(), 1);
}

}  // namespace
}  // namespace hexmire
