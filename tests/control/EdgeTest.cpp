#include "Receiving.h"
#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <utility>

namespace hexmire {
namespace {

using namespace fakes;
using Access = detail::SECSTransAccess;

TEST(TriggerError, RaisesTheThreeValuesUnchangedAndStoresTheCode) {
    TestHost host;
    for (const ErrorEvent& event :
         {ErrorEvent{1, "text", 7}, ErrorEvent{-1, "", 0}, ErrorEvent{0, "zero", -3}}) {
        host.Errors.clear();
        detail::HexmireAccess::TriggerError(host.Control(), event.Code, event.Text, event.Line);
        EXPECT_EQ(host.Errors, (Errors{event}));
        EXPECT_EQ(host.Control().ErrorCode(), event.Code);
    }
}

TEST(TriggerError, RaisesOnceMoreWithTheFaultOfAThrowingHandler) {
    TestHost host;
    const auto record = host.Control().Events().Error;
    int calls = 0;
    host.Control().Events().Error =
        [&](std::int32_t code, const std::string& text, std::int32_t n) {
            record(code, text, n);
            if (++calls == 1) throw std::runtime_error("host bug");
        };
    detail::HexmireAccess::TriggerError(host.Control(), 1047, "text", 3);
    EXPECT_EQ(host.Errors,
              (Errors{{1047, "text", 3}, {440, "(Hexmire-TriggerError) host bug", 0}}));
    EXPECT_EQ(host.Control().ErrorCode(), 440);
}

TEST(TriggerError, GivesTheNumberOfTheFaultItself) {
    TestHost host;
    bool once = true;
    host.Control().Events().Error = [&](std::int32_t, const std::string&, std::int32_t) {
        if (std::exchange(once, false)) throw std::bad_alloc();
    };
    host.Control().NewSECSTransaction()->Delete();
    EXPECT_EQ(host.Control().ErrorCode(), 7);
}

TEST(TriggerError, OfAnObjectKeepsTheOldCodeInsideTheHandler) {
    TestHost host;
    std::vector<std::int32_t> inside;
    host.Control().Events().Error = [&](std::int32_t, const std::string&, std::int32_t) {
        inside.push_back(host.Control().ErrorCode());
    };
    const SECSTransPtr trans = host.Control().NewSECSTransaction();
    trans->Delete();
    trans->DeviceID(-1);
    EXPECT_EQ(inside, (std::vector<std::int32_t>{0, 1079}));
    EXPECT_EQ(host.Control().ErrorCode(), 1047);
}

TEST(ControlsOwnError, OfAThrowingHandlerIsReportedInTheRoutinesName) {
    TestHost host;
    const auto record = host.Control().Events().Error;
    int calls = 0;
    host.Control().Events().Error =
        [&](std::int32_t code, const std::string& text, std::int32_t n) {
            record(code, text, n);
            if (++calls == 1) throw std::runtime_error("host bug");
        };
    host.Control().DeviceID(-1);
    EXPECT_EQ(host.Errors,
              (Errors{{1047, "(Hexmire-Let DeviceID) The DeviceID must be between 0 and 32767.", 0},
                      {440, "(Hexmire-Let DeviceID) host bug", 0}}));
    EXPECT_EQ(host.Control().ErrorCode(), 440);
    EXPECT_EQ(host.Control().DeviceID(), 0);
}

TEST(Conversation, RunsFromSendToReplyInItsStatedOrder) {
    Receiving host;
    host.Control().OpenPort();
    host.DriverEvents().Connect();
    const SECSTransPtr trans = host.Control().NewSECSTransaction("S1F1");
    trans->Send();
    host.MessageSent(Header(0, true, 1, 1, 1));
    host.TickSecond();
    host.BlockReceived(Header(0, false, 1, 2, 1));
    host.ReceiveReply(1, 2, 1, "01 00");
    host.DriverEvents().Disconnect(0, "");
    EXPECT_EQ(host.Raised, (Lines{"Connect", "ReceivedSecondary(S1F2,0,)", "Disconnect(0,)"}));
    EXPECT_EQ(host.NewLines(),
              (Lines{"SECS I HEADER Send : 00 00 81 01 00 00 00 00 00 01",
                     "SECS I DATALEN Send : 0",
                     "SECS II Message Send : \r\nS1F1 W\r\n.\r\n",
                     "Start T3 - Searching for S1F1 SystemBytes: 1",
                     "Start T3 - TransactionInUse[1] : S1F1 SystemBytes: 1",
                     "Start T3 - Timer for S1F1 SystemBytes: 1",
                     "Cancel T3 - Searching for S1F2 SystemBytes: 1",
                     "Cancel T3 - TransactionInUse[1] : S1F2 SystemBytes: 1",
                     "Cancel T3 - Timer for S1F2 SystemBytes: 1",
                     "SECS I HEADER Received : 00 00 01 02 00 00 00 00 00 01",
                     "SECS I DATALEN Received : 2",
                     "SECS I DATA Received : 01 00",
                     "SECS II Message Received : \r\nS1F2\r\n< L  >\r\n."}));
    EXPECT_EQ(Access::T3Timer(*trans), 44);
    EXPECT_EQ(host.Table()->TransCount(), 0);
}

TEST(Conversation, StampsEveryLineWithTheTimeOfNow) {
    Receiving host;
    host.Clock.SetTimeOfDay(std::chrono::hours(23) + std::chrono::minutes(59) +
                            std::chrono::milliseconds(59995));
    host.MessageSent(Header(0, true, 1, 1, 1));
    EXPECT_TRUE(host.LogText().starts_with("2024/03/05 23:59:59."));
    host.Clock.Advance(std::chrono::seconds(1));
    host.MessageSent(Header(0, true, 1, 3, 2));
    EXPECT_TRUE(host.LogText().starts_with("2024/03/06 00:00:00."));
    EXPECT_EQ(host.LogLines(), (Lines{"Start T3 - Searching for S1F3 SystemBytes: 2"}));
}

TEST(Conversation, OfTwoWithTheSameNamesIsMatchedFirstComeFirstServedWithoutTheCheck) {
    Receiving host;
    const SECSTransPtr first = host.Send(1, 3);
    const SECSTransPtr second = host.Send(1, 3);
    first->Name("first");
    second->Name("second");
    host.ReceiveReply(1, 4, 2);
    host.ReceiveReply(1, 4, 1);
    EXPECT_EQ(host.Secondaries.at(0)->Name(), "first");
    EXPECT_EQ(host.Secondaries.at(0)->SystemBytes(), 2);
    EXPECT_EQ(host.Secondaries.at(1)->Name(), "second");
    EXPECT_TRUE(host.Errors.empty());
}

TEST(Conversation, OfTwoWithTheSameNamesIsMatchedExactlyWithTheCheck) {
    Receiving host;
    host.Control().SystemBytesCheck(true);
    const SECSTransPtr first = host.Send(1, 3);
    const SECSTransPtr second = host.Send(1, 3);
    first->Name("first");
    second->Name("second");
    host.ReceiveReply(1, 4, 2);
    host.Control().SystemBytesCheck(false);
    host.ReceiveReply(1, 4, 77);
    EXPECT_EQ(host.Secondaries.at(0)->Name(), "second");
    EXPECT_EQ(host.Secondaries.at(1)->Name(), "first");
    EXPECT_TRUE(host.Errors.empty());
}

TEST(Conversation, OverTheWrapOfTheCounterStaysApart) {
    Receiving host;
    detail::State().SystemBytesCounter = 899999999;
    host.Control().SystemBytesCheck(true);
    const std::vector<SECSTransPtr> sent{host.Send(1, 3), host.Send(1, 3), host.Send(1, 3)};
    EXPECT_EQ(sent[0]->SystemBytes(), 900000000);
    EXPECT_EQ(sent[1]->SystemBytes(), 0);
    EXPECT_EQ(sent[2]->SystemBytes(), 1);
    host.MessageSent(Header(0, true, 1, 3, 0));
    EXPECT_TRUE(Access::T3Start(*sent[1]));
    host.ReceiveReply(1, 4, 0);
    host.ReceiveReply(1, 4, 900000000);
    EXPECT_EQ(host.Table()->SECSTrans(1), sent[2]);
    EXPECT_TRUE(host.Errors.empty());
}

TEST(Conversation, WithAnErrorInEveryHandlerLeavesNothingBehind) {
    Receiving host;
    HexmireEvents& events = host.Control().Events();
    const auto fail = [] { throw std::runtime_error("host bug"); };
    events.Connect = fail;
    events.Disconnect = [&](std::int32_t, const std::string&) { fail(); };
    events.Error = [&](std::int32_t, const std::string&, std::int32_t) { fail(); };
    events.ReceivedPrimary = [&](const SECSTransPtr&, std::int32_t, const std::string&) { fail(); };
    events.ReceivedSecondary = events.ReceivedPrimary;
    host.DriverEvents().Connect();
    const SECSTransPtr trans = host.Send(1, 3);
    host.ReceivePrimary(7, 3);
    host.ReceiveReply(1, 4, 1);
    host.DriverEvents().Disconnect(1, "x");
    Access::T3Start(*trans, true);
    Access::T3Timer(*trans, 1);
    host.TickSecond();
    EXPECT_EQ(host.Table()->TransCount(), 0);
    events = HexmireEvents();
    host.Send(1, 3);
    host.ReceiveReply(1, 4, 2);
    EXPECT_EQ(host.Table()->TransCount(), 0);
}

TEST(HeldObjects, OutliveTheirControlInAnyOrder) {
    SECSTransPtr trans;
    SECSMessagePtr message;
    SECSItemPtr item;
    SECSDictionaryPtr dictionary;
    {
        Receiving host;
        host.ReceivePrimary(6, 11, 9, "01 01 A5 01 07");
        trans = host.Primaries.at(0);
        message = trans->Secondary();
        item = trans->Primary()->Item(1);
        dictionary = host.Control().SECSDictionary();
    }
    EXPECT_EQ(item->Item(1)->Value(), Variant(7));
    EXPECT_EQ(dictionary->TransCount(), 0);
    trans.reset();
    EXPECT_EQ(item->ItemCount(), 0);
    message->Stream(500);
    EXPECT_EQ(message->Stream(), 6);
}

}  // namespace
}  // namespace hexmire
