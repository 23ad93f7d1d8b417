#include <hexmire/trans/SECSTrans.h>

#include "../fakes/Messages.h"
#include "../fakes/TransHost.h"
#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <string>
#include <vector>

namespace hexmire {
namespace {

using Access = detail::SECSTransAccess;
using fakes::TransHost;
using Lines = std::vector<std::string>;
using Reports = TransHost::Reports;

constexpr const char* kHeaderLine = "SECS I HEADER Send : 00 00 81 01 00 00 00 00 00 01";

TEST(SendFault, OfTheDriverIsReportedWithItsOwnNumberAndText) {
    TransHost host;
    host.Record.FailingCall = "SendMessage";
    const SECSTransPtr trans = host.MakeTrans(1, 1);
    EXPECT_TRUE(trans->Send().IsEmpty());
    EXPECT_EQ(host.Take(), (Reports{{-2147467259, "(SECSTrans-Send) driver failed", 0}}));
}

TEST(SendFault, OfTheDriverLeavesTheTransactionOutOfTheTable) {
    TransHost host;
    host.Record.FailingCall = "SendMessage";
    const SECSTransPtr trans = host.MakeTrans(1, 1);
    trans->Send();
    EXPECT_EQ(host.Table->TransCount(), 0);
    EXPECT_FALSE(trans->InProgress());
    EXPECT_EQ(trans->Index(), 0);
    EXPECT_EQ(Access::Parent(*trans), nullptr);
    EXPECT_EQ(trans->SystemBytes(), 1);
    EXPECT_EQ(host.LogLines(), (Lines{kHeaderLine}));
}

TEST(SendFault, OfTheDriverAllowsAnotherTryWithNewSystemBytes) {
    TransHost host;
    host.Record.FailingCall = "SendMessage";
    const SECSTransPtr trans = host.MakeTrans(1, 1);
    trans->Send();
    host.Record.FailingCall = "";
    trans->Send();
    EXPECT_EQ(trans->SystemBytes(), 2);
    EXPECT_EQ(host.Table->TransCount(), 1);
    EXPECT_EQ(host.Errors.size(), 1U);
}

TEST(SendFault, OfTheDriverLeavesThePrimaryEncoded) {
    TransHost host;
    host.Record.FailingCall = "SendMessage";
    const SECSTransPtr trans = host.MakeTrans(1, 1);
    fakes::AddItem(trans->Primary()->Root(), FormatU1, 7);
    trans->Send();
    EXPECT_EQ(trans->Primary()->Length(), 3);
    EXPECT_EQ(trans->Primary()->RawHex(), "A5 01 07");
    EXPECT_EQ(trans->Primary()->Item(1)->NLB(), 1);
}

TEST(SendFault, OfTheDriverLeavesOthersThatWait) {
    TransHost host;
    const SECSTransPtr waiting = host.MakeTrans(1, 1);
    waiting->Send();
    host.Record.FailingCall = "SendMessage";
    host.MakeTrans(1, 3)->Send();
    EXPECT_EQ(host.Table->TransCount(), 1);
    EXPECT_EQ(waiting->Index(), 1);
}

TEST(SendFault, OfAForeignKindHasTheNumberOfItsKind) {
    struct Row {
        std::function<void()> Throw;
        std::int32_t Code;
        const char* Text;
    };
    const std::vector<Row> rows{
        {[] { throw std::bad_alloc(); }, 7, "(SECSTrans-Send) Out of memory"},
        {[] { throw std::out_of_range("x"); }, 9, "(SECSTrans-Send) Subscript out of range"},
        {[] { throw std::overflow_error("x"); }, 6, "(SECSTrans-Send) Overflow"},
        {[] { throw std::runtime_error("cable cut"); }, 440, "(SECSTrans-Send) cable cut"},
        {[] { throw Fault(FaultNumber::TypeMismatch); }, 13, "(SECSTrans-Send) Type mismatch"},
        {[] { throw Fault(1234, "own"); }, 1234, "(SECSTrans-Send) own"}};
    for (const Row& row : rows) {
        TransHost host;
        host.Record.OnCall = [&](const std::string&) { row.Throw(); };
        host.MakeTrans(1, 1)->Send();
        EXPECT_EQ(host.Take(), (Reports{{row.Code, row.Text, 0}}));
        EXPECT_EQ(host.Table->TransCount(), 0);
    }
}

TEST(SendFault, OfNoKnownKindIsAnAutomationError) {
    TransHost host;
    host.Record.OnCall = [](const std::string&) { throw 5; };
    host.MakeTrans(1, 1)->Send();
    ASSERT_EQ(host.Errors.size(), 1U);
    EXPECT_EQ(host.Errors[0].Code, 440);
    EXPECT_TRUE(host.Errors[0].Text.starts_with("(SECSTrans-Send) "));
}

TEST(SendFault, WithoutDriverComesBehindTheHeaderLine) {
    TransHost host;
    host.DriverObject.reset();
    const SECSTransPtr trans = host.MakeTrans(1, 1);
    trans->Send();
    EXPECT_EQ(
        host.Take(),
        (Reports{{91, "(SECSTrans-Send) Object variable or With block variable not set", 0}}));
    EXPECT_EQ(host.LogLines(), (Lines{kHeaderLine}));
    EXPECT_EQ(host.Table->TransCount(), 0);
}

TEST(SendFault, WithoutTableComesBehindTheDriver) {
    TransHost host;
    host.Table.reset();
    const SECSTransPtr trans = host.MakeTrans(1, 1);
    trans->Send();
    EXPECT_EQ(
        host.Take(),
        (Reports{{91, "(SECSTrans-Send) Object variable or With block variable not set", 0}}));
    EXPECT_EQ(host.Record.Sent.size(), 1U);
    EXPECT_FALSE(trans->InProgress());
    EXPECT_EQ(host.LogLines(), (Lines{kHeaderLine}));
}

TEST(SendFault, NeedsNoTableWithoutReplyExpected) {
    TransHost host;
    host.Table.reset();
    const SECSTransPtr trans = host.MakeTrans(1, 1);
    trans->ReplyExpected(false);
    trans->Send();
    EXPECT_EQ(host.Take(), Reports{});
    EXPECT_EQ(host.LogLines().size(), 3U);
}

TEST(SendFault, OfAnItemIsReportedAndTheRestIsSent) {
    TransHost host;
    const SECSTransPtr trans = host.MakeTrans(1, 1);
    const SECSItemPtr list = fakes::AddItem(trans->Primary()->Root(), FormatList);
    fakes::AddItem(list, FormatI4, "abc");
    fakes::AddItem(list, FormatU1, 7);
    trans->Send();
    EXPECT_EQ(host.Take(), (Reports{{13, "(SECSMessage-lBuildSECSMessage) Type mismatch", 0}}));
    EXPECT_EQ(fakes::HexOf(host.Record.Sent.at(0).Body), "01 02 71 04 A5 01 07");
    EXPECT_EQ(host.Record.Sent.at(0).Length, 7);
    EXPECT_EQ(host.Table->TransCount(), 1);
}

TEST(SendFault, OfAnItemComesBehindTheHeaderLineAndBeforeTheDriver) {
    TransHost host;
    const SECSTransPtr trans = host.MakeTrans(1, 1);
    fakes::AddItem(trans->Primary()->Root(), FormatI4, "abc");
    std::size_t lines = 0;
    std::size_t calls = 9;
    host.OnError = [&] {
        lines = host.LogLines().size();
        calls = host.Record.Calls.size();
    };
    trans->Send();
    EXPECT_EQ(lines, 1U);
    EXPECT_EQ(calls, 0U);
}

TEST(SendFault, LeavesABodyOfNoBytesAsHeaderOnly) {
    TransHost host;
    const SECSTransPtr trans = host.MakeTrans(1, 1);
    fakes::AddItem(trans->Primary()->Root(), FormatAscii, Variant(std::vector<std::int32_t>{1}));
    trans->Send();
    EXPECT_EQ(host.Take(),
              (Reports{{13, "(SECSMessage-lBuildSECSMessage) Type mismatch", 0},
                       {13, "(SECSMessage-ItemToSML) Type mismatch", 0}}));
    EXPECT_TRUE(host.Record.Sent.at(0).BodyIsText);
    EXPECT_EQ(host.Record.Sent.at(0).Length, 0);
}

TEST(SendFault, OfAnUnwritableLogIsSilent) {
    TransHost host;
    host.Files.FailAppend = true;
    const SECSTransPtr trans = host.MakeTrans(1, 1);
    trans->Send();
    EXPECT_EQ(host.Take(), Reports{});
    EXPECT_EQ(host.Record.Sent.size(), 1U);
    EXPECT_EQ(host.Table->TransCount(), 1);
    EXPECT_EQ(host.Files.Appends, 3);
}

TEST(SendFault, DoesNotComeFromAMissingLog) {
    TransHost host(false);
    const SECSTransPtr trans = host.MakeTrans(1, 1);
    fakes::AddItem(trans->Primary()->Root(), FormatU1, 7);
    trans->Send();
    trans->Delete();
    trans->Reply();
    EXPECT_EQ(host.Take(), Reports{});
    EXPECT_EQ(host.Record.Sent.size(), 2U);
    EXPECT_EQ(host.Files.Appends, 0);
}

TEST(SendFault, InSmlLeavesTheMessageSentAndWaiting) {
    TransHost host;
    const SECSTransPtr trans = host.MakeTrans(1, 1);
    const SECSItemPtr list = fakes::AddItem(trans->Primary()->Root(), FormatList);
    fakes::AddItem(list, FormatU1, 1);
    host.Record.OnCall = [&](const std::string&) {
        list->Item(1)->Value(Variant(host.Make<SECSItem>()));  // No text for an object.
    };
    std::int32_t indexInReport = 0;
    host.OnError = [&] { indexInReport = trans->Index(); };
    trans->Send();
    EXPECT_EQ(indexInReport, 1);
    EXPECT_EQ(
        host.Take(),
        (Reports{
            {438, "(SECSMessage-ItemToSML) Object doesn't support this property or method", 0}}));
    EXPECT_EQ(host.Table->TransCount(), 1);
    EXPECT_EQ(host.LogLines(),
              (Lines{kHeaderLine,
                     "SECS I DATALEN Send : 5",
                     "SECS I DATA Send : 01 01 A5 01 01",
                     "SECS II Message Send : \r\nS1F1 W\r\n< L \r\n >\r\n.\r\n"}));
}

TEST(SendFault, InSmlDoesNotComeWithoutALog) {
    TransHost host(false);
    const SECSTransPtr trans = host.MakeTrans(1, 1);
    fakes::AddItem(trans->Primary()->Root(), FormatAscii, Variant(std::vector<std::int32_t>{1}));
    fakes::AddItem(trans->Secondary()->Root(), FormatAscii, Variant(std::vector<std::int32_t>{1}));
    trans->Reply();
    trans->Send();
    const fakes::ReportedError encoding{13, "(SECSMessage-lBuildSECSMessage) Type mismatch", 0};
    EXPECT_EQ(host.Take(), (Reports{encoding, encoding}));
}

TEST(SendFault, KeepsATransactionThatTheDriverDroppedOnTheWay) {
    TransHost host;
    SECSTransPtr trans = host.MakeTrans(1, 1);
    SECSTrans* const bare = trans.get();
    host.Record.OnCall = [&](const std::string&) { trans.reset(); };
    bare->Send();
    ASSERT_EQ(host.Table->TransCount(), 1);
    EXPECT_EQ(host.Table->SECSTrans(1).get(), bare);
}

TEST(SendFault, DoesNotTouchTheBytesHandedOver) {
    TransHost host;
    const SECSTransPtr trans = host.MakeTrans(1, 1);
    fakes::AddItem(trans->Primary()->Root(), FormatU1, 7);
    host.Record.OnCall = [&](const std::string&) { trans->Primary()->Raw("changed"); };
    trans->Send();
    EXPECT_EQ(fakes::HexOf(host.Record.Sent.at(0).Body), "A5 01 07");
    EXPECT_EQ(host.Take(), Reports{});
}

}  // namespace
}  // namespace hexmire
