#include <hexmire/trans/SECSTrans.h>

#include "../fakes/Messages.h"
#include "../fakes/TransHost.h"
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace hexmire {
namespace {

using Access = detail::SECSTransAccess;
using fakes::HexOf;
using fakes::ReportedError;
using fakes::TransHost;
using Lines = std::vector<std::string>;
using Reports = TransHost::Reports;

const ReportedError kNoNumber{13, "(SECSMessage-lBuildSECSMessage) Type mismatch", 0};

/// A control whose host acts inside the first report. Its transaction has bodies of which each
/// reports one fault while it is encoded: 71 04 go out, and the text is no number.
struct Reentry : TransHost {
    explicit Reentry(std::function<void()> action) {
        OnError = [run = std::move(action), done = false]() mutable {
            if (done) return;
            done = true;
            run();
        };
        Trans = MakeTrans(1, 1);
        fakes::AddItem(Trans->Primary()->Root(), FormatI4, "abc");
        fakes::AddItem(Trans->Secondary()->Root(), FormatI4, "abc");
        Access::SystemBytes(*Trans, 9);
    }
    SECSTransPtr Trans;
};

TEST(SendReentry, FindsTheTransactionNumberedAndNotYetWaiting) {
    bool looked = false;
    Reentry* place = nullptr;
    Reentry host([&] {
        looked = true;
        EXPECT_EQ(place->Trans->SystemBytes(), 1);
        EXPECT_FALSE(place->Trans->InProgress());
        EXPECT_EQ(Access::Parent(*place->Trans), nullptr);
        EXPECT_EQ(place->Table->TransCount(), 0);
        EXPECT_TRUE(place->Record.Calls.empty());
        EXPECT_EQ(place->LogLines(), (Lines{"SECS I HEADER Send : 00 00 81 01 00 00 00 00 00 01"}));
    });
    place = &host;
    host.Trans->Send();
    EXPECT_TRUE(looked);
    EXPECT_EQ(host.Table->TransCount(), 1);
}

// Nothing looks for a parent once the sending has begun: both runs enter the transaction.
TEST(SendReentry, OfTheSameTransactionSendsTheInnerOneFirstAndEntersBoth) {
    Reentry* place = nullptr;
    Reentry host([&] { place->Trans->Send(); });
    place = &host;
    host.Trans->Send();
    EXPECT_EQ(host.Take(), (Reports{kNoNumber, kNoNumber}));
    ASSERT_EQ(host.Record.Sent.size(), 2U);
    EXPECT_EQ(HexOf(host.Record.Sent[0].Header), "00 00 81 01 00 00 00 00 00 02");
    EXPECT_EQ(HexOf(host.Record.Sent[1].Header), "00 00 81 01 00 00 00 00 00 01");
    EXPECT_EQ(HexOf(host.Record.Sent[1].Body), "71 04");
    EXPECT_EQ(host.Record.Sent[1].Length, 2);
    EXPECT_EQ(host.Trans->SystemBytes(), 2);
    ASSERT_EQ(host.Table->TransCount(), 2);
    EXPECT_EQ(host.Table->SECSTrans(1), host.Trans);
    EXPECT_EQ(host.Table->SECSTrans(2), host.Trans);
    EXPECT_EQ(host.Trans->Index(), 2);
    const std::string text = "SECS II Message Send : \r\nS1F1 W\r\n< I4 abc >\r\n.\r\n";
    EXPECT_EQ(host.LogLines(),
              (Lines{"SECS I HEADER Send : 00 00 81 01 00 00 00 00 00 01",
                     "SECS I HEADER Send : 00 00 81 01 00 00 00 00 00 02",
                     "SECS I DATALEN Send : 2",
                     "SECS I DATA Send : 71 04",
                     text,
                     "SECS I DATALEN Send : 2",
                     "SECS I DATA Send : 71 04",
                     text}));
}

TEST(SendReentry, OfAnotherTransactionStandsInFrontOfTheOuterOne) {
    SECSTransPtr other;
    Reentry host([&] { other->Send(); });
    other = host.MakeTrans(1, 3);
    host.Trans->Send();
    EXPECT_EQ(host.Record.Sent.at(0).Header[9], 2);
    EXPECT_EQ(host.Record.Sent.at(1).Header[9], 1);
    EXPECT_EQ(host.Table->SECSTrans(1), other);
    EXPECT_EQ(host.Table->SECSTrans(2), host.Trans);
    EXPECT_EQ(other->Index(), 1);
    EXPECT_EQ(host.Trans->Index(), 2);
    EXPECT_EQ(host.Trans->SystemBytes(), 1);
}

TEST(SendReentry, ThatTurnsTheExpectationRoundLeavesTheHeaderAndDecidesTheRest) {
    for (const bool expected : {true, false}) {
        Reentry* place = nullptr;
        Reentry host([&] { place->Trans->ReplyExpected(!expected); });
        place = &host;
        host.Trans->ReplyExpected(expected);
        host.Trans->Send();
        EXPECT_EQ(host.Record.Sent.at(0).Header[2], expected ? 0x81 : 0x01);
        EXPECT_EQ(host.Table->TransCount(), expected ? 0 : 1);
        EXPECT_EQ(host.Trans->InProgress(), !expected);
        EXPECT_EQ(host.LogLines().back(),
                  expected ? "SECS II Message Send : \r\nS1F1\r\n< I4 abc >\r\n.\r\n"
                           : "SECS II Message Send : \r\nS1F1 W\r\n< I4 abc >\r\n.\r\n");
    }
}

TEST(SendReentry, ThatEditsWhatTheHeaderWasMadeOfComesTooLate) {
    Reentry* place = nullptr;
    Reentry host([&] {
        place->PortType = 4;
        place->HostRole = false;
        place->Trans->DeviceID(5);
        place->Trans->Primary()->Stream(7);
        place->Trans->Primary()->Func(3);
        Access::SystemBytes(*place->Trans, 88);
    });
    place = &host;
    host.Trans->Send();
    EXPECT_EQ(HexOf(host.Record.Sent.at(0).Header), "00 00 81 01 00 00 00 00 00 01");
    EXPECT_EQ(host.LogLines().back(), "SECS II Message Send : \r\nS7F3 W\r\n< I4 abc >\r\n.\r\n");
    EXPECT_EQ(host.Table->SECSTrans(1)->SystemBytes(), 88);
}

TEST(SendReentry, ThatTakesTheDriverAwayEndsBehindTheHeaderLine) {
    Reentry* place = nullptr;
    Reentry host([&] { place->DriverObject.reset(); });
    place = &host;
    host.Trans->Send();
    EXPECT_EQ(
        host.Take(),
        (Reports{kNoNumber,
                 {91, "(SECSTrans-Send) Object variable or With block variable not set", 0}}));
    EXPECT_EQ(host.LogLines().size(), 1U);
    EXPECT_EQ(host.Table->TransCount(), 0);
    EXPECT_EQ(host.Trans->Primary()->RawHex(), "71 04");
}

TEST(ReplyReentry, OfTheSameTransactionSendsTheAnswerTwice) {
    Reentry* place = nullptr;
    Reentry host([&] { place->Trans->Reply(); });
    place = &host;
    host.Trans->Reply();
    EXPECT_EQ(host.Take(), (Reports{kNoNumber, kNoNumber}));
    ASSERT_EQ(host.Record.Sent.size(), 2U);
    for (const fakes::SentMessage& sent : host.Record.Sent) {
        EXPECT_EQ(HexOf(sent.Header), "00 00 01 02 00 00 00 00 00 09");
        EXPECT_EQ(HexOf(sent.Body), "71 04");
    }
    EXPECT_EQ(host.Table->TransCount(), 0);
}

TEST(ReplyReentry, ThatSendsThePrimaryLeavesTheAnswerUnderItsOldNumber) {
    Reentry* place = nullptr;
    Reentry host([&] { place->Trans->Send(); });
    place = &host;
    host.Trans->Reply();
    EXPECT_EQ(HexOf(host.Record.Sent.at(0).Header), "00 00 81 01 00 00 00 00 00 01");
    EXPECT_EQ(HexOf(host.Record.Sent.at(1).Header), "00 00 01 02 00 00 00 00 00 09");
    EXPECT_EQ(host.Table->TransCount(), 1);
    EXPECT_EQ(host.Trans->SystemBytes(), 1);
}

}  // namespace
}  // namespace hexmire
