#include "Receiving.h"
#include <gtest/gtest.h>

#include <functional>

namespace hexmire {
namespace {

using namespace fakes;
using Access = detail::SECSTransAccess;

const std::string kNotSet = "Object variable or With block variable not set";

ErrorEvent Expired(std::int32_t systemBytes) {
    return {2012,
            "(SECSTrans-Let T3Timer) T3 Timeout encountered. For [SystemBytes-" +
                std::to_string(systemBytes) + "] S1F1",
            0};
}
const ErrorEvent kCleared{2015, "(SECSTrans-Let T3Counter) SECSTrans in use cleared. For ", 0};
const ErrorEvent kNoNumber{13, "(SECSMessage-lBuildSECSMessage) Type mismatch", 0};

// The reply time is that of the transaction's creation: sending once more does not restore it.
TEST(Resend, AfterExpiryExpiresWithTheNextSecond) {
    Receiving host;
    host.Control().T3Timeout(1);
    const SECSTransPtr trans = host.Send();
    host.MessageSent(Header(0, true, 1, 1, 1));
    host.TickSecond();
    EXPECT_EQ(host.Errors, (Errors{Expired(1)}));
    trans->Send();
    EXPECT_EQ(host.Table()->TransCount(), 1);
    host.TickSecond();
    EXPECT_EQ(host.Errors, (Errors{Expired(1), Expired(2)}));
    EXPECT_EQ(Access::T3Timer(*trans), -1);
    EXPECT_EQ(host.Table()->TransCount(), 0);
}

TEST(Resend, AfterTheGuardIsClearedWithTheNextSecond) {
    Receiving host;
    host.Control().T3Timeout(1);
    const SECSTransPtr trans = host.Send();
    for (int second = 0; second < 4; ++second)
        host.TickSecond();
    EXPECT_EQ(host.Errors, (Errors{kCleared}));
    trans->Send();
    host.TickSecond();
    EXPECT_EQ(host.Errors, (Errors{kCleared, kCleared}));
    EXPECT_EQ(Access::T3Counter(*trans), 5);
}

TEST(Resend, AfterItsReplyGoesOnWithTheTimeThatWasLeft) {
    Receiving host;
    const SECSTransPtr trans = host.Send();
    host.MessageSent(Header(0, true, 1, 1, 1));
    for (int second = 0; second < 3; ++second)
        host.TickSecond();
    host.BlockReceived(Header(0, false, 1, 2, 1));
    host.ReceiveReply(1, 2, 1);
    EXPECT_FALSE(trans->InProgress());
    trans->Send();
    EXPECT_TRUE(trans->InProgress());
    EXPECT_EQ(trans->SystemBytes(), 2);
    EXPECT_EQ(Access::T3Timer(*trans), 42);
    EXPECT_FALSE(Access::T3Start(*trans));
    host.TickSecond();
    EXPECT_EQ(Access::T3Timer(*trans), 42);
    EXPECT_EQ(Access::T3Counter(*trans), 1);
    EXPECT_TRUE(host.Errors.empty());
}

TEST(Resend, OfADeletedTemplateLeavesTheDictionaryWithoutIt) {
    Receiving host;
    const SECSTransPtr trans = host.Control().SECSDictionary()->SECSTrans("S1F1");
    trans->Delete();
    trans->Send();
    EXPECT_EQ(host.Table()->SECSTrans(1), trans);
    EXPECT_EQ(host.Control().NewSECSTransaction("S1F1"), nullptr);
    EXPECT_EQ(host.Control().NewSECSTransaction("s6f11")->Primary()->Func(), 11);
    EXPECT_EQ(host.Errors.size(), 1U);
}

TEST(Answer, WithoutTemplateIsStreamZeroFunctionTwoUnderTheNumbersReceived) {
    Receiving host;
    host.Control().ConnectionHost(false);
    host.MessageReceived(Header(3, true, 7, 25, 0x01020304), {});
    host.Primaries.at(0)->Reply();
    EXPECT_EQ(HexOf(host.Driver.Sent.at(0).Header), "80 03 00 02 00 00 01 02 03 04");
    EXPECT_EQ(host.LogLines().back(), "SECS II Message Reply : \r\nS0F2 W\r\n.\r\n");
    EXPECT_EQ(host.Table()->TransCount(), 0);
}

TEST(Answer, AfterTeardownLogsItsHeaderAndFaults) {
    Receiving host;
    host.ReceivePrimary(1, 1, 9);
    host.Errors.clear();
    host.NewLines();
    host.Control().ControlTerminate();
    host.Primaries.at(0)->Reply();
    EXPECT_EQ(host.Errors, (Errors{{91, "(SECSTrans-Reply) " + kNotSet, 0}}));
    EXPECT_EQ(host.NewLines(), (Lines{"SECS I HEADER Reply : 00 00 01 02 00 00 00 00 00 09"}));
    host.DestroyControl();
    host.Primaries.at(0)->Reply();
    EXPECT_EQ(host.Errors.size(), 1U);
    EXPECT_TRUE(host.Driver.Sent.empty());
}

TEST(SystemBytes, GoOnWithTheNextControlWhereTheLastOneEnded) {
    TestHost first;
    const SECSTransPtr one = first.Control().NewSECSTransaction();
    one->Send();
    const std::int32_t last = one->SystemBytes();
    first.DestroyControl();
    one->Send();
    EXPECT_EQ(one->SystemBytes(), last);
    TestHost second;
    const SECSTransPtr two = second.Control().NewSECSTransaction();
    two->Send();
    EXPECT_EQ(two->SystemBytes(), last + 1);
}

// The dictionary's own lookup is exact, the making of a transaction ignores letter case.
TEST(Names, ThatDifferInCaseOnlyAreOneForNewTransactionsAndTwoForTheDictionary) {
    TestHost host;
    host.AddTemplate("s1f1", 1, 1);
    host.AddTemplate("S1F1", 2, 1);
    const auto dictionary = host.Control().SECSDictionary();
    EXPECT_EQ(dictionary->SECSTrans("S1F1")->Primary()->Stream(), 2);
    EXPECT_EQ(host.Control().NewSECSTransaction("S1F1")->Primary()->Stream(), 1);
    EXPECT_EQ(host.Control().NewSECSTransaction("S1F1")->Name(), "s1f1");
    EXPECT_EQ(dictionary->SECSTrans("S1f1"), nullptr);
    EXPECT_EQ(host.Control().NewSECSTransaction("S1f1")->Primary()->Stream(), 1);
    ASSERT_EQ(host.Errors.size(), 1U);
    EXPECT_EQ(host.Errors[0].Code, 1025);
}

// The entry stands in the table once the driver's call has returned, not before.
TEST(DriverEventsInsideSend, FindNoEntryYet) {
    Receiving host;
    host.Driver.OnCall = [&](const std::string& call) {
        if (call != "SendMessage") return;
        host.MessageSent(Header(0, true, 1, 1, 1));
        host.BlockReceived(Header(0, false, 1, 2, 1));
        host.ReceiveReply(1, 2, 1);
    };
    const SECSTransPtr trans = host.Send();
    ASSERT_EQ(host.Errors.size(), 1U);
    EXPECT_EQ(host.Errors[0].Code, 2013);
    EXPECT_EQ(host.Table()->TransCount(), 1);
    EXPECT_FALSE(Access::T3Start(*trans));
    EXPECT_TRUE(trans->InProgress());
}

TEST(SettingsBetweenCopyAndSend, DecideTheReverseBitAndNothingElse) {
    struct Row {
        std::int32_t PortType;
        bool HostRole;
        const char* Header;
    };
    for (const Row& row : {Row{1, false, "80 05 81 01 00 00 00 00 00 01"},
                           Row{2, false, "00 05 81 01 00 00 00 00 00 01"},
                           Row{3, false, "80 05 81 01 00 00 00 00 00 01"},
                           Row{4, false, "80 05 81 01 00 00 00 00 00 01"},
                           Row{4, true, "00 05 81 01 00 00 00 00 00 01"}}) {
        Receiving host;
        host.Control().DeviceID(5);
        const SECSTransPtr trans = host.Control().NewSECSTransaction("S1F1");
        host.Control().DeviceID(6);
        host.Control().T3Timeout(3);
        host.Control().ConnectionPortType(row.PortType);
        host.Control().ConnectionHost(row.HostRole);
        trans->Send();
        EXPECT_EQ(HexOf(host.Driver.Sent.at(0).Header), row.Header);
        EXPECT_EQ(Access::T3Timer(*trans), 45);
        Access::T3Counter(*trans, 11);
        EXPECT_EQ(host.Table()->TransCount(), 1);
        Access::T3Counter(*trans, 12);
        EXPECT_EQ(host.Table()->TransCount(), 0);
    }
}

/// Sends a body that reports one fault while it is encoded.
SECSTransPtr SendFaulting(Receiving& host) {
    SECSTransPtr trans = host.Control().NewSECSTransaction("S1F1");
    AddItem(trans->Primary()->Root(), FormatI4, "abc");
    trans->Send();
    return trans;
}

TEST(EncodingFaultHandler, ThatEndsTheControlStopsTheSendBehindItsHeaderLine) {
    Receiving host;
    int reports = 0;
    host.Control().Events().Error =
        [&](std::int32_t code, const std::string& text, std::int32_t line) {
            host.Errors.push_back({code, text, line});
            if (++reports == 1) host.Control().ControlTerminate();
        };
    const SECSTransPtr trans = SendFaulting(host);
    EXPECT_EQ(host.Errors, (Errors{kNoNumber, {91, "(SECSTrans-Send) " + kNotSet, 0}}));
    EXPECT_EQ(host.Control().ErrorCode(), 91);
    EXPECT_TRUE(host.Driver.Sent.empty());
    EXPECT_EQ(host.LogLines().size(), 1U);
    EXPECT_EQ(trans->SystemBytes(), 1);
    EXPECT_FALSE(trans->InProgress());
}

TEST(EncodingFaultHandler, ThatThrowsIsReportedAndTheMessageGoesOut) {
    Receiving host;
    bool thrown = false;
    host.Control().Events().Error =
        [&](std::int32_t code, const std::string& text, std::int32_t line) {
            host.Errors.push_back({code, text, line});
            if (!std::exchange(thrown, true)) throw std::runtime_error("no screen");
        };
    SendFaulting(host);
    EXPECT_EQ(host.Errors, (Errors{kNoNumber, {440, "(Hexmire-TriggerError) no screen", 0}}));
    EXPECT_EQ(host.Control().ErrorCode(), 440);
    EXPECT_EQ(HexOf(host.Driver.Sent.at(0).Body), "71 04");
    EXPECT_EQ(host.Table()->TransCount(), 1);
}

TEST(EncodingFaultHandler, ThatClosesThePortLeavesTheMessageToTheDriver) {
    Receiving host;
    host.Control().OpenPort();
    host.Driver.Calls.clear();
    host.Control().Events().Error = [&](std::int32_t, const std::string&, std::int32_t) {
        host.Control().ClosePort();
    };
    SendFaulting(host);
    EXPECT_EQ(host.Driver.Calls, (Lines{"CloseLink()", "SendMessage(2)"}));
    EXPECT_EQ(host.Table()->TransCount(), 1);
}

TEST(RenderingFaultHandler, ThatEndsTheControlStillGetsTheLogLine) {
    Receiving host;
    const SECSTransPtr trans = host.Control().NewSECSTransaction("S1F1");
    AddItem(trans->Primary()->Root(), FormatAscii, Variant(std::vector<std::int32_t>{1}));
    host.Control().Events().Error = [&](std::int32_t, const std::string& text, std::int32_t) {
        if (text.starts_with("(SECSMessage-ItemToSML)")) host.Control().ControlTerminate();
    };
    trans->Send();
    EXPECT_EQ(host.Driver.Sent.size(), 1U);
    EXPECT_EQ(host.LogLines().back(), "SECS II Message Send : \r\nS1F1 W\r\n.\r\n");
    EXPECT_EQ(Access::Parent(*trans), nullptr);
    EXPECT_EQ(trans->Index(), 0);
    EXPECT_TRUE(trans->InProgress());
}

}  // namespace
}  // namespace hexmire
