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

const Reports kNoMessage{{2008, "(SECSTrans-Reply) SECSMessage not found in SECSTrans.", 0}};
const Reports kNotACopy{
    {2009, "(SECSTrans-Reply) You must call NewSECSTrans to use send method.", 0}};

/// A received primary with these system bytes.
SECSTransPtr Received(TransHost& host, std::int32_t systemBytes) {
    SECSTransPtr trans = host.MakeTrans(1, 1);
    Access::SystemBytes(*trans, systemBytes);
    return trans;
}

TEST(Reply, SendsTheSecondaryUnderTheStoredSystemBytes) {
    TransHost host;
    detail::State().SystemBytesCounter = 41;
    const SECSTransPtr trans = Received(host, 77);
    fakes::AddItem(trans->Secondary()->Root(), FormatBinary, std::uint8_t{0});
    fakes::AddItem(trans->Primary()->Root(), FormatU1, 9);
    trans->Reply();
    EXPECT_EQ(HexOf(host.Record.Sent.at(0).Header), "00 00 01 02 00 00 00 00 00 4D");
    EXPECT_EQ(HexOf(host.Record.Sent.at(0).Body), "21 01 00");
    EXPECT_EQ(host.Record.Sent.at(0).Length, 3);
    EXPECT_EQ(detail::State().SystemBytesCounter, 41);
    EXPECT_EQ(trans->SystemBytes(), 77);
    EXPECT_TRUE(trans->AutoSystemBytes());
}

TEST(Reply, LeavesTableProgressIndexAndT3) {
    TransHost host;
    const SECSTransPtr waiting = host.MakeTrans(1, 3);
    waiting->Send();
    const SECSTransPtr trans = Received(host, 77);
    Access::Index(*trans, 6);
    Access::InProgress(*trans, true);
    Access::T3Start(*trans, true);
    trans->Reply();
    EXPECT_EQ(host.Table->TransCount(), 1);
    EXPECT_TRUE(trans->InProgress());
    EXPECT_EQ(Access::StoredIndex(*trans), 6);
    EXPECT_EQ(Access::Parent(*trans), nullptr);
    EXPECT_TRUE(Access::T3Start(*trans));
    EXPECT_EQ(Access::T3Timer(*trans), 45);
    EXPECT_EQ(Access::T3Counter(*trans), 0);
}

TEST(Reply, LogsTheWMarkOfThePrimary) {
    TransHost host;
    const SECSTransPtr trans = Received(host, 5);
    fakes::AddItem(trans->Secondary()->Root(), FormatAscii, "OK");
    trans->Reply();
    EXPECT_EQ(host.LogLines(),
              (Lines{"SECS I HEADER Reply : 00 00 01 02 00 00 00 00 00 05",
                     "SECS I DATALEN Reply : 4",
                     "SECS I DATA Reply : 41 02 4F 4B",
                     "SECS II Message Reply : \r\nS1F2 W\r\n< A 'OK' >\r\n.\r\n"}));
}

TEST(Reply, LogsNoWMarkForAPrimaryThatExpectedNone) {
    TransHost host;
    const SECSTransPtr trans = Received(host, 5);
    trans->ReplyExpected(false);
    trans->Reply();
    EXPECT_EQ(host.LogLines(),
              (Lines{"SECS I HEADER Reply : 00 00 01 02 00 00 00 00 00 05",
                     "SECS I DATALEN Reply : 0",
                     "SECS II Message Reply : \r\nS1F2\r\n.\r\n"}));
}

TEST(Reply, HandsAnEmptyTextForAHeaderOnlyMessage) {
    TransHost host;
    Received(host, 5)->Reply();
    EXPECT_TRUE(host.Record.Sent.at(0).BodyIsText);
    EXPECT_EQ(host.Record.Sent.at(0).Length, 0);
}

TEST(Reply, SendsNoStaleBodyAfterTheTreeWasEmptied) {
    TransHost host;
    const SECSTransPtr trans = Received(host, 5);
    fakes::AddItem(trans->Secondary()->Root(), FormatU1, 7);
    trans->Reply();
    trans->Secondary()->Item(1)->Delete();
    host.Files.Files.clear();
    trans->Reply();
    EXPECT_TRUE(host.Record.Sent.at(1).BodyIsText);
    EXPECT_EQ(host.LogLines(),
              (Lines{"SECS I HEADER Reply : 00 00 01 02 00 00 00 00 00 05",
                     "SECS I DATALEN Reply : 0",
                     "SECS II Message Reply : \r\nS1F2 W\r\n.\r\n"}));
}

TEST(Reply, WritesTheHeaderLineBeforeAndTheOthersAfterTheDriver) {
    TransHost host;
    const SECSTransPtr trans = Received(host, 5);
    Lines during;
    host.Record.OnCall = [&](const std::string&) { during = host.LogLines(); };
    trans->Reply();
    EXPECT_EQ(during, (Lines{"SECS I HEADER Reply : 00 00 01 02 00 00 00 00 00 05"}));
}

TEST(Reply, MayBeRepeated) {
    TransHost host;
    const SECSTransPtr trans = Received(host, 5);
    trans->Reply();
    trans->Reply();
    EXPECT_EQ(host.Record.Sent.size(), 2U);
    EXPECT_EQ(host.Record.Sent.at(0).Header, host.Record.Sent.at(1).Header);
    EXPECT_EQ(host.Take(), Reports{});
}

TEST(Reply, IsRefusedWithoutPrimaryOrSecondary) {
    for (const bool primary : {true, false}) {
        TransHost host;
        const SECSTransPtr trans = Received(host, 5);
        primary ? Access::Primary(*trans, nullptr) : Access::Secondary(*trans, nullptr);
        EXPECT_TRUE(trans->Reply().IsEmpty());
        EXPECT_EQ(host.Take(), kNoMessage);
        EXPECT_TRUE(host.Record.Calls.empty());
        EXPECT_TRUE(host.LogLines().empty());
    }
}

TEST(Reply, ChecksForTheMessagesBeforeTheParent) {
    TransHost host;
    const auto dictionary = host.Make<SECSDictionary>();
    const SECSTransPtr entry = dictionary->AddNewTrans(1);
    Access::Secondary(*entry, nullptr);
    entry->Reply();
    EXPECT_EQ(host.Take(), kNoMessage);
}

TEST(Reply, IsRefusedForATemplateAndForAWaitingTransaction) {
    TransHost host;
    const auto dictionary = host.Make<SECSDictionary>();
    const SECSTransPtr entry = dictionary->AddNewTrans(1);
    entry->Reply();
    EXPECT_EQ(host.Take(), kNotACopy);
    const SECSTransPtr waiting = host.MakeTrans(1, 1);
    waiting->Send();
    waiting->Reply();
    EXPECT_EQ(host.Take(), kNotACopy);
    EXPECT_EQ(host.Record.Sent.size(), 1U);
}

TEST(Reply, ReportsTheDriversFaultAndLogsTheHeaderOnly) {
    TransHost host;
    host.Record.FailingCall = "SendMessage";
    const SECSTransPtr trans = Received(host, 5);
    trans->Reply();
    EXPECT_EQ(host.Take(), (Reports{{-2147467259, "(SECSTrans-Reply) driver failed", 0}}));
    EXPECT_EQ(host.LogLines(), (Lines{"SECS I HEADER Reply : 00 00 01 02 00 00 00 00 00 05"}));
    host.Record.FailingCall = "";
    trans->Reply();
    EXPECT_EQ(host.Record.Sent.size(), 1U);
}

TEST(Reply, ReportsAMissingDriver) {
    TransHost host;
    host.DriverObject.reset();
    Received(host, 5)->Reply();
    EXPECT_EQ(
        host.Take(),
        (Reports{{91, "(SECSTrans-Reply) Object variable or With block variable not set", 0}}));
}

TEST(Reply, IgnoresAnUnwritableLog) {
    TransHost host;
    host.Files.FailAppend = true;
    Received(host, 5)->Reply();
    EXPECT_EQ(host.Take(), Reports{});
    EXPECT_EQ(host.Record.Sent.size(), 1U);
}

TEST(Reply, SurvivesAsTheOnlyReference) {
    TransHost host;
    SECSTransPtr trans = Received(host, 5);
    SECSTrans* const bare = trans.get();
    host.Record.OnCall = [&](const std::string&) { trans.reset(); };
    bare->Reply();
    EXPECT_EQ(host.LogLines().size(), 3U);
}

TEST(Reply, AfterTheControlsEndDoesNothing) {
    TransHost host;
    const SECSTransPtr trans = Received(host, 5);
    host.End();
    trans->Reply();
    EXPECT_TRUE(host.Record.Sent.empty());
    EXPECT_EQ(host.Take(), Reports{});
    EXPECT_TRUE(host.LogLines().empty());
}

}  // namespace
}  // namespace hexmire
