#include "Receiving.h"
#include <gtest/gtest.h>

#include <stdexcept>

namespace hexmire {
namespace {

using namespace fakes;
using Access = detail::SECSTransAccess;

const std::string kUnknown =
    "(Hexmire-moSECSIService_SecsMsgReceive) This SECSMessage received is not contained in the "
    "SECSDictionary. - ";

TEST(ReceivePrimary, RaisesACopyOfItsTemplate) {
    Receiving host;
    const SECSTransPtr entry = host.Control().SECSDictionary()->SECSTrans(2);
    entry->Description("event report");
    entry->Tag(5);
    AddItem(entry->Secondary()->Root(), FormatBinary, std::uint8_t{0});
    host.ReceivePrimary(6, 11, 77, "A5 01 07");
    EXPECT_EQ(host.Raised, (Lines{"ReceivedPrimary(S6F11,0,)"}));
    const SECSTransPtr trans = host.Primaries.at(0);
    EXPECT_NE(trans, entry);
    EXPECT_EQ(trans->Name(), "S6F11");
    EXPECT_EQ(trans->Description(), "event report");
    EXPECT_EQ(trans->Tag(), Variant(5));
    EXPECT_EQ(trans->SystemBytes(), 77);
    EXPECT_TRUE(trans->ReplyExpected());
    EXPECT_FALSE(trans->InProgress());
    EXPECT_EQ(trans->Index(), 0);
    EXPECT_EQ(trans->Primary()->Item(1)->Value(), Variant(7));
    EXPECT_EQ(trans->Secondary()->Func(), 12);
    EXPECT_EQ(trans->Secondary()->Root()->ItemCount(), 1);
    EXPECT_EQ(host.Control().ErrorCode(), 0);
}

TEST(ReceivePrimary, PutsTheReceivedMessageInPlaceOfTheTemplates) {
    Receiving host;
    const SECSTransPtr entry = host.Control().SECSDictionary()->SECSTrans(2);
    entry->Primary()->Name("template's");
    AddItem(entry->Primary()->Root(), FormatAscii, "template's");
    host.ReceivePrimary(6, 11, 77, "A5 01 07");
    const SECSMessagePtr message = host.Primaries.at(0)->Primary();
    EXPECT_EQ(message->Name(), "");
    EXPECT_EQ(message->RawHex(), "A5 01 07");
    EXPECT_EQ(message->Root()->ItemCount(), 1);
    EXPECT_EQ(entry->Primary()->Item(1)->Value(), Variant("template's"));
}

TEST(ReceivePrimary, TakesTheReceivedDeviceId) {
    struct Row {
        std::int32_t Received;
        std::int32_t Taken;
    };
    for (const Row& row : {Row{0, 0}, Row{1, 1}, Row{258, 258}, Row{32767, 32767}}) {
        Receiving host;
        host.Control().DeviceID(5);
        host.MessageReceived(Header(row.Received, true, 1, 1, 9), {});
        EXPECT_EQ(host.Primaries.at(0)->DeviceID(), row.Taken);
        EXPECT_TRUE(host.Errors.empty());
    }
}

TEST(ReceivePrimary, KeepsTheControlsDeviceIdWhenTheReceivedOneIsRefused) {
    for (const std::int32_t received : {32768, 0x8001, 65535}) {
        Receiving host;
        host.Control().DeviceID(5);
        host.MessageReceived(Header(received, true, 1, 1, 9), {});
        EXPECT_EQ(host.Raised,
                  (Lines{"Error(1047,(SECSTrans-Let DeviceID) The DeviceID must be between 0 and "
                         "32767.,0)",
                         "ReceivedPrimary(S1F1,0,)"}));
        EXPECT_EQ(host.Primaries.at(0)->DeviceID(), 5);
    }
}

TEST(ReceivePrimary, TakesTheReceivedWBitOverTheTemplates) {
    for (const bool expected : {true, false}) {
        Receiving host;
        host.Control().SECSDictionary()->SECSTrans(1)->ReplyExpected(!expected);
        host.MessageReceived(Header(0, expected, 1, 1, 9), {});
        EXPECT_EQ(host.Primaries.at(0)->ReplyExpected(), expected);
    }
}

TEST(ReceivePrimary, MatchesTheFirstTemplateByStreamAndFunctionAlone) {
    Receiving host;
    host.AddTemplate("second", 6, 11);
    host.Control().SECSDictionary()->SECSTrans(2)->Name("first");
    host.ReceivePrimary(6, 11);
    EXPECT_EQ(host.Primaries.at(0)->Name(), "first");
    host.Control().SECSDictionary()->SECSTrans(2)->Primary()->Func(13);
    host.ReceivePrimary(6, 11);
    EXPECT_EQ(host.Primaries.at(1)->Name(), "second");
    host.Control().SECSDictionary()->SECSTrans(2)->Primary()->Func(11);
    host.ReceivePrimary(6, 11);
    EXPECT_EQ(host.Primaries.at(2)->Name(), "first");
    host.Control().SECSDictionary()->SECSTrans(2)->Delete();
    host.ReceivePrimary(6, 11);
    EXPECT_EQ(host.Primaries.at(3)->Name(), "second");
    EXPECT_TRUE(host.Errors.empty());
}

TEST(ReceivePrimary, FindsATemplateInsertedInFront) {
    Receiving host;
    host.ReceivePrimary(6, 11);
    const SECSTransPtr front = host.Control().SECSDictionary()->AddNewTrans(1);
    front->Name("front");
    front->Primary()->Stream(6);
    front->Primary()->Func(11);
    host.ReceivePrimary(6, 11);
    EXPECT_EQ(host.Primaries.at(1)->Name(), "front");
}

TEST(ReceivePrimary, IsNotMatchedToASecondaryOfATemplate) {
    Receiving host;
    host.Control().SECSDictionary()->SECSTrans(1)->Secondary()->Func(3);
    host.ReceivePrimary(1, 3);
    EXPECT_EQ(host.Errors, (Errors{{2011, kUnknown + "S1F3", 0}}));
}

TEST(ReceivePrimary, PassesOverTheBlockBytesOfTheHeader) {
    Receiving host;
    host.MessageReceived(Bytes("00 00 81 01 FF FF 00 00 00 09"), {});
    EXPECT_EQ(host.Raised, (Lines{"ReceivedPrimary(S1F1,0,)"}));
    EXPECT_EQ(host.Primaries.at(0)->SystemBytes(), 9);
}

TEST(ReceivePrimary, WithoutTemplateIsRaisedFirstAndReportedThen) {
    Receiving host;
    host.Control().DeviceID(5);
    host.MessageReceived(Header(3, true, 7, 3, 21), Bytes("A5 01 07"));
    EXPECT_EQ(host.Raised,
              (Lines{"ReceivedPrimary(S7F3,0,)", "Error(2011," + kUnknown + "S7F3,0)"}));
    EXPECT_EQ(host.Control().ErrorCode(), 2011);
    const SECSTransPtr trans = host.Primaries.at(0);
    EXPECT_EQ(trans->DeviceID(), 3);
    EXPECT_TRUE(trans->ReplyExpected());
    EXPECT_EQ(trans->SystemBytes(), 21);
    EXPECT_FALSE(trans->InProgress());
    EXPECT_EQ(trans->Name(), "");
    EXPECT_EQ(trans->Primary()->Item(1)->Value(), Variant(7));
    EXPECT_EQ(trans->Secondary()->Stream(), 0);
    EXPECT_EQ(trans->Secondary()->Func(), 2);
}

TEST(ReceivePrimary, WithoutTemplateNamesStreamAndFunctionInPlainDecimal) {
    Receiving host;
    host.ReceivePrimary(0, 1);
    host.ReceivePrimary(127, 255);
    host.ReceivePrimary(6, 1);
    EXPECT_EQ(host.Errors,
              (Errors{{2011, kUnknown + "S0F1", 0},
                      {2011, kUnknown + "S127F255", 0},
                      {2011, kUnknown + "S6F1", 0}}));
}

TEST(ReceivePrimary, WithAnEmptyDictionaryIsRaisedToo) {
    TestHost host;
    host.MessageReceived(Header(0, true, 6, 11, 1), {});
    EXPECT_EQ(host.Raised,
              (Lines{"ReceivedPrimary(S6F11,0,)", "Error(2011," + kUnknown + "S6F11,0)"}));
}

TEST(ReceivePrimary, MayBeAnsweredInsideTheEvent) {
    Receiving host;
    host.Control().Events().ReceivedPrimary =
        [&](const SECSTransPtr& trans, std::int32_t, const std::string&) {
            AddItem(trans->Secondary()->Root(), FormatBinary, std::uint8_t{0});
            trans->Reply();
        };
    host.MessageReceived(Header(3, true, 6, 11, 0x01020304), {});
    ASSERT_EQ(host.Driver.Sent.size(), 1U);
    EXPECT_EQ(HexOf(host.Driver.Sent[0].Header), "00 03 06 0C 00 00 01 02 03 04");
    EXPECT_EQ(HexOf(host.Driver.Sent[0].Body), "21 01 00");
    EXPECT_EQ(host.Table()->TransCount(), 0);
}

TEST(ReceivePrimary, MayBeAnsweredLater) {
    Receiving host;
    host.ReceivePrimary(1, 1, 8);
    host.ReceivePrimary(6, 11, 9);
    host.Primaries.at(1)->Reply();
    host.Primaries.at(0)->Reply();
    EXPECT_EQ(HexOf(host.Driver.Sent.at(0).Header), "00 00 06 0C 00 00 00 00 00 09");
    EXPECT_EQ(HexOf(host.Driver.Sent.at(1).Header), "00 00 01 02 00 00 00 00 00 08");
}

TEST(ReceivePrimary, FromAHandlerThatThrowsIsReported) {
    Receiving host;
    host.Control().Events().ReceivedPrimary =
        [](const SECSTransPtr&, std::int32_t, const std::string&) {
            throw std::runtime_error("host bug");
        };
    host.ReceivePrimary(7, 3);
    EXPECT_EQ(host.Errors, (Errors{{440, "(Hexmire-moSECSIService_SecsMsgReceive) host bug", 0}}));
    EXPECT_EQ(host.Control().ErrorCode(), 440);
}

TEST(ReceivePrimary, WithoutHandlerStillReportsTheUnknownOne) {
    Receiving host;
    host.Control().Events().ReceivedPrimary = nullptr;
    host.ReceivePrimary(7, 3);
    EXPECT_EQ(host.Errors, (Errors{{2011, kUnknown + "S7F3", 0}}));
}

TEST(ReceivePrimary, LeavesTheTableAlone) {
    Receiving host;
    const SECSTransPtr waiting = host.Send(1, 1);
    host.ReceivePrimary(1, 1, 1);
    EXPECT_EQ(host.Table()->TransCount(), 1);
    EXPECT_TRUE(waiting->InProgress());
}

TEST(ReceivePrimary, MayComeFromInsideAnotherOnesHandler) {
    Receiving host;
    const auto record = host.Control().Events().ReceivedPrimary;
    host.Control().Events().ReceivedPrimary =
        [&](const SECSTransPtr& trans, std::int32_t code, const std::string& text) {
            record(trans, code, text);
            if (host.Primaries.size() == 1) host.ReceivePrimary(7, 3);
        };
    host.ReceivePrimary(1, 1);
    EXPECT_EQ(host.Raised,
              (Lines{"ReceivedPrimary(S1F1,0,)",
                     "ReceivedPrimary(S7F3,0,)",
                     "Error(2011," + kUnknown + "S7F3,0)"}));
}

TEST(ReceivePrimary, FromATemplateThatTheHandlerDeletesStaysWhole) {
    Receiving host;
    host.Control().Events().ReceivedPrimary =
        [&](const SECSTransPtr& trans, std::int32_t, const std::string&) {
            while (host.Control().SECSDictionary()->TransCount() > 0) {
                host.Control().SECSDictionary()->SECSTrans(1)->Delete();
            }
            trans->Reply();
        };
    host.ReceivePrimary(6, 11);
    EXPECT_TRUE(host.Errors.empty());
    EXPECT_EQ(host.Driver.Sent.size(), 1U);
}

}  // namespace
}  // namespace hexmire
