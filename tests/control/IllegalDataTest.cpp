#include "Receiving.h"
#include <gtest/gtest.h>

namespace hexmire {
namespace {

using namespace fakes;

// A body whose format code exists nowhere.
const std::string kUndecodable = "0D 00";
const ErrorEvent kFormatRefused{1001,
                                "(SECSItem-Let Format) You cannot change the Format of the Root "
                                "item. The Root item Format is always 0 (list).",
                                0};

/// A dictionary that knows S9F7 with a body.
struct Answering : Receiving {
    explicit Answering(bool messageLog = true) : Receiving(messageLog) {
        const SECSTransPtr entry = AddTemplate("S9F7", 9, 7);
        AddItem(entry->Primary()->Root(), FormatAscii, "MHEAD");
    }
};

TEST(IllegalData, IsAnsweredWithTheRejectedHeader) {
    Answering host;
    host.Control().DeviceID(258);
    host.MessageReceived(Header(3, true, 6, 11, 0x01020304), Bytes(kUndecodable));
    ASSERT_EQ(host.Driver.Sent.size(), 1U);
    EXPECT_EQ(HexOf(host.Driver.Sent[0].Header), "01 02 89 07 00 00 00 00 00 01");
    EXPECT_EQ(HexOf(host.Driver.Sent[0].Body), "21 0A 01 02 06 0B 80 01 01 02 03 04");
    EXPECT_EQ(host.Driver.Sent[0].Length, 12);
}

TEST(IllegalData, RaisesNothingButTheItemsRefusal) {
    Answering host;
    host.ReceivePrimary(6, 11, 9, kUndecodable);
    EXPECT_TRUE(host.Primaries.empty());
    EXPECT_EQ(host.Errors, (Errors{kFormatRefused}));
    EXPECT_EQ(host.Raised.size(), 1U);
}

TEST(IllegalData, LogsReceptionAndAnswerButNoReceivedText) {
    Answering host;
    host.ReceivePrimary(6, 11, 9, kUndecodable);
    EXPECT_EQ(host.NewLines(),
              (Lines{"SECS I HEADER Received : 00 00 86 0B 00 00 00 00 00 09",
                     "SECS I DATALEN Received : 2",
                     "SECS I DATA Received : 0D 00",
                     "SECS I HEADER Send : 00 00 89 07 00 00 00 00 00 01",
                     "SECS I DATALEN Send : 12",
                     "SECS I DATA Send : 21 0A 00 00 06 0B 80 01 00 00 00 09",
                     "SECS II Message Send : \r\nS9F7 W\r\n< B 0x00 0x00 0x06 0x0B 0x80 0x01 0x00 "
                     "0x00 0x00 0x09 >\r\n.\r\n"}));
}

TEST(IllegalData, WaitsForAReplyThatNeverComes) {
    // Templates expect replies; so the report ends in a time-out of its own.
    Answering host;
    host.Control().T3Timeout(1);
    host.ReceivePrimary(6, 11, 9, kUndecodable);
    ASSERT_EQ(host.Table()->TransCount(), 1);
    host.MessageSent(Header(0, true, 9, 7, 1));
    host.TickSecond();
    EXPECT_EQ(
        host.Errors.back(),
        (ErrorEvent{
            2012, "(SECSTrans-Let T3Timer) T3 Timeout encountered. For [SystemBytes-1] S9F7", 0}));
    EXPECT_EQ(host.Table()->TransCount(), 0);
}

TEST(IllegalData, FollowsATemplateThatExpectsNoReply) {
    Answering host;
    host.Control().SECSDictionary()->SECSTrans("S9F7")->ReplyExpected(false);
    host.ReceivePrimary(6, 11, 9, kUndecodable);
    EXPECT_EQ(host.Driver.Sent.at(0).Header[2], 0x09);
    EXPECT_EQ(host.Table()->TransCount(), 0);
}

TEST(IllegalData, InAReplyLeavesTheEntryWaiting) {
    Answering host;
    const SECSTransPtr waiting = host.Send(1, 3);
    host.ReceiveReply(1, 4, 1, kUndecodable);
    EXPECT_TRUE(host.Secondaries.empty());
    EXPECT_EQ(HexOf(host.Driver.Sent.at(1).Body), "21 0A 00 00 01 04 80 01 00 00 00 01");
    EXPECT_EQ(host.Table()->SECSTrans(1), waiting);
    EXPECT_EQ(host.Table()->TransCount(), 2);
}

TEST(IllegalData, IsAnsweredEvenWhenItIsItselfAnS9F7) {
    Answering host;
    host.ReceivePrimary(9, 7, 9, kUndecodable);
    EXPECT_EQ(HexOf(host.Driver.Sent.at(0).Body), "21 0A 00 00 09 07 80 01 00 00 00 09");
}

TEST(IllegalData, DeepInsideABodyIsAnsweredToo) {
    Answering host;
    host.ReceivePrimary(6, 11, 9, "01 02 A5 01 07 01 01 0D 00");
    EXPECT_EQ(host.Driver.Sent.size(), 1U);
    EXPECT_TRUE(host.Primaries.empty());
}

TEST(IllegalData, TakesWhatIsLeftOfSystemBytesThatOverflow) {
    Answering host;
    host.ReceivePrimary(6, 11, 0x800000FEU, kUndecodable);
    EXPECT_EQ(HexOf(host.Driver.Sent.at(0).Body), "21 0A 00 00 06 0B 80 01 00 00 00 FE");
}

TEST(IllegalData, LeavesTheTemplateAsItWas) {
    Answering host;
    host.ReceivePrimary(6, 11, 9, kUndecodable);
    const SECSItemPtr item = host.Control().SECSDictionary()->SECSTrans("S9F7")->Primary()->Item(1);
    EXPECT_EQ(item->Format(), FormatAscii);
    EXPECT_EQ(item->Value(), Variant("MHEAD"));
}

TEST(IllegalData, TakesTheTemplateByNameAloneAndSendsItsStream) {
    Answering host;
    host.Control().SECSDictionary()->SECSTrans("S9F7")->Primary()->Stream(99);
    host.Control().SECSDictionary()->SECSTrans("S9F7")->Name("s9f7");
    host.ReceivePrimary(6, 11, 9, kUndecodable);
    EXPECT_EQ(host.Driver.Sent.at(0).Header[2], 0x80 | 99);
}

TEST(IllegalData, WithoutATemplateIsReportedAndNotAnswered) {
    Receiving host;
    host.ReceivePrimary(6, 11, 9, kUndecodable);
    ASSERT_GE(host.Errors.size(), 2U);
    EXPECT_EQ(host.Errors[0], kFormatRefused);
    EXPECT_EQ(host.Errors[1],
              (ErrorEvent{1025,
                          "(Hexmire-NewSECSTransaction) SECSTrans name is not found in the "
                          "SECSDictionary.",
                          0}));
    EXPECT_TRUE(host.Driver.Sent.empty());
    EXPECT_TRUE(host.Primaries.empty());
    EXPECT_EQ(host.Table()->TransCount(), 0);
}

TEST(IllegalData, WithAnEmptyDictionaryIsReportedAndNotAnswered) {
    TestHost host;
    host.MessageReceived(Header(0, true, 6, 11, 9), Bytes(kUndecodable));
    ASSERT_GE(host.Errors.size(), 2U);
    EXPECT_EQ(host.Errors[1].Code, 1020);
    EXPECT_TRUE(host.Driver.Sent.empty());
}

TEST(IllegalData, WithATemplateWithoutItemIsReportedAndNotAnswered) {
    Receiving host;
    host.AddTemplate("S9F7", 9, 7);
    host.ReceivePrimary(6, 11, 9, kUndecodable);
    EXPECT_EQ(
        host.Errors,
        (Errors{kFormatRefused,
                {1004, "(SECSItem-Get Item) There are no items contained in the list.", 0},
                {91, "(ModGeneral-SendS9F7) Object variable or With block variable not set", 0}}));
    EXPECT_TRUE(host.Driver.Sent.empty());
    EXPECT_EQ(host.Control().ErrorCode(), 91);
}

TEST(IllegalData, IsReportedBySendWhenTheDriverFaults) {
    Answering host;
    host.Driver.FailingCall = "SendMessage";
    host.ReceivePrimary(6, 11, 9, kUndecodable);
    EXPECT_EQ(host.Errors,
              (Errors{kFormatRefused, {-2147467259, "(SECSTrans-Send) driver failed", 0}}));
    EXPECT_EQ(host.Table()->TransCount(), 0);
}

TEST(IllegalData, IsAnsweredWithoutALog) {
    Answering host(false);
    host.ReceivePrimary(6, 11, 9, kUndecodable);
    EXPECT_EQ(host.Driver.Sent.size(), 1U);
}

TEST(IllegalData, IsAnsweredWithALogThatCannotBeWritten) {
    Answering host;
    host.Files.FailAppend = true;
    host.ReceivePrimary(6, 11, 9, kUndecodable);
    EXPECT_EQ(host.Driver.Sent.size(), 1U);
    EXPECT_EQ(host.Errors, (Errors{kFormatRefused}));
}

TEST(IllegalData, OfSeveralMessagesIsAnsweredEachTime) {
    Answering host;
    for (std::uint32_t systemBytes = 1; systemBytes <= 3; ++systemBytes) {
        host.ReceivePrimary(6, 11, systemBytes, kUndecodable);
    }
    EXPECT_EQ(host.Driver.Sent.size(), 3U);
    EXPECT_EQ(host.Table()->TransCount(), 3);
}

TEST(IllegalData, MayBeSentByTheLibraryForAnyHeader) {
    Answering host;
    host.Control().DeviceID(32767);
    detail::HexmireAccess::SendS9F7(host.Control(), 127, 255, 2147483647);
    EXPECT_EQ(HexOf(host.Driver.Sent.at(0).Body), "21 0A 7F FF 7F FF 80 01 7F FF FF FF");
    EXPECT_TRUE(host.Errors.empty());
}

TEST(IllegalData, TurnsAListIntoTheRejectedHeaderToo) {
    Receiving host;
    const SECSTransPtr entry = host.AddTemplate("S9F7", 9, 7);
    AddItem(AddItem(entry->Primary()->Root(), FormatList), FormatU1, 7);
    AddItem(entry->Primary()->Root(), FormatAscii, "second");
    host.ReceivePrimary(6, 11, 9, kUndecodable);
    EXPECT_EQ(host.Errors, (Errors{kFormatRefused}));
    EXPECT_EQ(HexOf(host.Driver.Sent.at(0).Body), "21 0A 00 00 06 0B 80 01 00 00 00 09");
    EXPECT_EQ(entry->Primary()->Item(1)->ItemCount(), 1);
    EXPECT_EQ(host.Table()->SECSTrans(1)->Name(), "S9F7");
}

TEST(IllegalData, IsAnsweredUnderTheControlsPresentDeviceId) {
    Answering host;
    host.Control().DeviceID(1);
    host.Control().SECSDictionary()->SECSTrans("S9F7")->DeviceID(2);
    host.Control().DeviceID(513);
    host.MessageReceived(Header(3, false, 6, 11, 9), Bytes(kUndecodable));
    EXPECT_EQ(HexOf(host.Driver.Sent.at(0).Header).substr(0, 5), "02 01");
    EXPECT_EQ(HexOf(host.Driver.Sent.at(0).Body), "21 0A 02 01 06 0B 80 01 00 00 00 09");
}

}  // namespace
}  // namespace hexmire
