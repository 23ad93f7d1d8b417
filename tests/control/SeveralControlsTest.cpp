#include "Receiving.h"
#include <gtest/gtest.h>

#include <memory>

namespace hexmire {
namespace {

using namespace fakes;
using Access = detail::SECSTransAccess;

TEST(SeveralControls, KeepTheirSettingsDictionariesTablesAndErrorsApart) {
    Receiving first;
    Receiving second;
    first.Control().T3Timeout(1);
    first.Control().DeviceID(40000);
    EXPECT_EQ(first.Control().ErrorCode(), 1047);
    EXPECT_EQ(second.Control().ErrorCode(), 0);
    EXPECT_TRUE(second.Raised.empty());
    EXPECT_EQ(second.Control().T3Timeout(), 45);
    first.Send(1, 1);
    EXPECT_EQ(first.Table()->TransCount(), 1);
    EXPECT_EQ(second.Table()->TransCount(), 0);
    EXPECT_TRUE(second.Driver.Sent.empty());
    EXPECT_TRUE(second.LogLines().empty());
    first.Control().SECSDictionary()->SECSTrans(1)->Delete();
    EXPECT_EQ(second.Control().SECSDictionary()->TransCount(), 2);
}

TEST(SeveralControls, ShareOneCounterOfSystemBytes) {
    Receiving first;
    Receiving second;
    EXPECT_EQ(first.Send()->SystemBytes(), 1);
    EXPECT_EQ(second.Send()->SystemBytes(), 2);
    EXPECT_EQ(first.Send()->SystemBytes(), 3);
}

TEST(SeveralControls, ReportEveryFaultOfTheirObjectsToTheMaker) {
    Receiving first;
    const SECSTransPtr trans = first.Control().NewSECSTransaction("S1F1");
    Receiving second;
    trans->DeviceID(-1);
    trans->Primary()->Stream(128);
    trans->Primary()->Root()->AddNew(7);
    trans->Primary()->Root()->AddNew(1)->Format(7);
    static_cast<void>(trans->Primary()->Item("none"));
    AddItem(trans->Secondary()->Root(), FormatI4, "abc");
    trans->Reply();
    EXPECT_GE(first.Errors.size(), 6U);
    EXPECT_TRUE(second.Raised.empty());
    EXPECT_EQ(second.Control().ErrorCode(), 0);
}

TEST(SeveralControls, EnterATransactionIntoItsMakersTable) {
    Receiving first;
    const SECSTransPtr trans = first.Control().NewSECSTransaction("S1F1");
    Receiving second;
    second.Control().Events().Connect = [&] { trans->Send(); };
    second.DriverEvents().Connect();
    EXPECT_EQ(first.Table()->TransCount(), 1);
    EXPECT_EQ(second.Table()->TransCount(), 0);
    EXPECT_EQ(first.Driver.Sent.size(), 1U);
    EXPECT_EQ(first.LogLines().size(), 3U);
    EXPECT_TRUE(second.LogLines().empty());
}

TEST(SeveralControls, DecodeUnderTheControlThatReceives) {
    Receiving first;
    Receiving second;
    first.ReceivePrimary(6, 11, 9, "01 02 A5 01");
    EXPECT_EQ(first.Errors.size(), 2U);
    EXPECT_TRUE(second.Raised.empty());
    second.ReceivePrimary(6, 11, 0x80000001U);
    EXPECT_EQ(second.Errors.size(), 1U);
    EXPECT_EQ(first.Errors.size(), 2U);
}

TEST(SeveralControls, MatchRepliesInTheirOwnTables) {
    Receiving first;
    Receiving second;
    first.Send(1, 3);
    second.ReceiveReply(1, 4, 1);
    EXPECT_EQ(first.Table()->TransCount(), 1);
    EXPECT_EQ(second.Errors.at(0).Code, 2013);
    first.ReceiveReply(1, 4, 1);
    EXPECT_EQ(first.Table()->TransCount(), 0);
    EXPECT_TRUE(first.Errors.empty());
}

TEST(SeveralControls, TickApart) {
    Receiving first;
    Receiving second;
    const SECSTransPtr one = first.Send();
    const SECSTransPtr two = second.Send();
    first.TickSecond();
    EXPECT_EQ(Access::T3Counter(*one), 1);
    EXPECT_EQ(Access::T3Counter(*two), 0);
}

TEST(SeveralControls, TalkToEachOther) {
    Receiving host;
    Receiving equipment;
    equipment.Control().ConnectionHost(false);
    host.Driver.OnCall = [](const std::string&) {};
    const SECSTransPtr trans = host.Send(1, 1);
    const SentMessage request = host.Driver.Sent.at(0);
    equipment.MessageReceived(request.Header, request.Body);
    equipment.Primaries.at(0)->Reply();
    SentMessage answer = equipment.Driver.Sent.at(0);
    EXPECT_EQ(answer.Header[0], 0x80);
    answer.Header[0] &= 0x7F;  // Drivers clear the R-bit.
    host.MessageReceived(answer.Header, answer.Body);
    EXPECT_EQ(host.Secondaries.at(0)->SystemBytes(), trans->SystemBytes());
    EXPECT_EQ(host.Table()->TransCount(), 0);
    EXPECT_TRUE(host.Errors.empty());
    EXPECT_TRUE(equipment.Errors.empty());
}

TEST(SeveralControls, MayBeFedFromInsideEachOthersHandlers) {
    Receiving first;
    Receiving second;
    first.Control().Events().ReceivedPrimary =
        [&](const SECSTransPtr&, std::int32_t, const std::string&) {
            second.ReceivePrimary(7, 3);
            first.Control().DeviceID(-1);
        };
    first.ReceivePrimary(7, 5);
    EXPECT_EQ(second.Raised.size(), 2U);
    EXPECT_EQ(second.Errors.at(0).Code, 2011);
    ASSERT_EQ(first.Errors.size(), 2U);
    EXPECT_EQ(first.Errors[0].Code, 1047);
    EXPECT_TRUE(first.Errors[1].Text.ends_with("S7F5"));
}

TEST(SeveralControls, EndInEitherOrder) {
    for (const bool firstEndsFirst : {true, false}) {
        Receiving first;
        Receiving second;
        Receiving& gone = firstEndsFirst ? first : second;
        Receiving& stays = firstEndsFirst ? second : first;
        const SECSTransPtr orphan = gone.Control().NewSECSTransaction();
        gone.DestroyControl();
        orphan->DeviceID(-1);
        orphan->Send();
        EXPECT_TRUE(stays.Raised.empty());
        stays.Send(1, 3);
        stays.ReceiveReply(1, 4, static_cast<std::uint32_t>(detail::State().SystemBytesCounter));
        EXPECT_EQ(stays.Table()->TransCount(), 0);
        EXPECT_TRUE(stays.Errors.empty());
        const SECSTransPtr free = New<SECSTrans>();
        free->DeviceID(-1);
        EXPECT_EQ(stays.Errors.size(), 1U);
    }
}

TEST(SeveralControls, ServeObjectsOfTheHostByTheOneCreatedLast) {
    Receiving first;
    Receiving second;
    const SECSTransPtr free = New<SECSTrans>();
    free->Primary()->Stream(5);
    free->Primary()->Func(7);
    free->Send();
    EXPECT_TRUE(first.Driver.Sent.empty());
    EXPECT_EQ(second.Driver.Sent.size(), 1U);
    EXPECT_EQ(second.Table()->SECSTrans(1), free);
    free->Delete();
    second.DestroyControl();
    free->Send();
    EXPECT_EQ(first.Table()->SECSTrans(1), free);
}

TEST(SeveralControls, TenOfThemWorkAtOnce) {
    std::vector<std::unique_ptr<Receiving>> hosts;
    for (int count = 0; count < 10; ++count)
        hosts.push_back(std::make_unique<Receiving>());
    for (int round = 0; round < 20; ++round) {
        for (const auto& host : hosts)
            host->Send(1, 3);
    }
    for (const auto& host : hosts) {
        host->Control().SystemBytesCheck(true);
        for (int waiting = 20; waiting > 0; --waiting) {
            const std::int32_t systemBytes = host->Table()->SECSTrans(waiting)->SystemBytes();
            host->ReceiveReply(1, 4, static_cast<std::uint32_t>(systemBytes));
        }
        EXPECT_EQ(host->Secondaries.size(), 20U);
        EXPECT_EQ(host->Table()->TransCount(), 0);
        EXPECT_TRUE(host->Errors.empty());
    }
    EXPECT_EQ(detail::State().SystemBytesCounter, 200);
}

TEST(SeveralControls, StartAndStopReplyTimesInTheirOwnTables) {
    Receiving first;
    Receiving second;
    const SECSTransPtr one = first.Send(1, 3);
    second.MessageSent(Header(0, true, 1, 3, 1));
    EXPECT_FALSE(Access::T3Start(*one));
    first.MessageSent(Header(0, true, 1, 3, 1));
    second.BlockReceived(Header(0, false, 1, 4, 1));
    EXPECT_TRUE(Access::T3Start(*one));
    EXPECT_EQ(second.NewLines(),
              (Lines{"Start T3 - Searching for S1F3 SystemBytes: 1",
                     "Cancel T3 - Searching for S1F4 SystemBytes: 1"}));
    EXPECT_EQ(first.NewLines().size(), 6U);
}

TEST(SeveralControls, TellTheirOwnHostOfExpiry) {
    Receiving first;
    first.Control().T3Timeout(1);
    first.Send(1, 3);
    first.MessageSent(Header(0, true, 1, 3, 1));
    Receiving second;
    second.Control().T3Timeout(120);
    first.TickSecond();
    second.TickSecond();
    EXPECT_EQ(first.Control().ErrorCode(), 2012);
    EXPECT_TRUE(second.Raised.empty());
}

TEST(SeveralControls, AnswerIllegalDataFromTheirOwnDictionaries) {
    Receiving first;
    AddItem(first.AddTemplate("S9F7", 9, 7)->Primary()->Root(), FormatBinary);
    first.Control().DeviceID(5);
    Receiving second;
    first.ReceivePrimary(6, 11, 9, "0D 00");
    second.ReceivePrimary(6, 11, 9, "0D 00");
    EXPECT_EQ(HexOf(first.Driver.Sent.at(0).Body), "21 0A 00 05 06 0B 80 01 00 00 00 09");
    EXPECT_TRUE(second.Driver.Sent.empty());
    EXPECT_EQ(first.Control().ErrorCode(), 1001);
    EXPECT_EQ(second.Control().ErrorCode(), 1025);
}

TEST(SeveralControls, MayEndEachOtherInsideAHandler) {
    Receiving first;
    Receiving second;
    first.Send(1, 3);
    second.Send(1, 3);
    first.Control().Events().ReceivedSecondary =
        [&](const SECSTransPtr&, std::int32_t, const std::string&) {
            second.Control().ControlTerminate();
        };
    first.ReceiveReply(1, 4, 1);
    EXPECT_EQ(first.Table()->TransCount(), 0);
    EXPECT_TRUE(first.Errors.empty());
    EXPECT_FALSE(second.Driver.Alive);
    EXPECT_TRUE(second.Raised.empty());
}

}  // namespace
}  // namespace hexmire
