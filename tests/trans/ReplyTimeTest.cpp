#include <hexmire/trans/SECSTrans.h>

#include "../fakes/TransHost.h"
#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace hexmire {
namespace {

using Access = detail::SECSTransAccess;
using fakes::ReportedError;
using fakes::TransHost;
using Reports = TransHost::Reports;

constexpr std::int32_t kLongMax = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kLongMin = std::numeric_limits<std::int32_t>::min();

ReportedError Expired(const std::string& rest) {
    return {2012, "(SECSTrans-Let T3Timer) T3 Timeout encountered. For " + rest, 0};
}
ReportedError Cleared(const std::string& name) {
    return {2015, "(SECSTrans-Let T3Counter) SECSTrans in use cleared. For " + name, 0};
}
const ReportedError kNotContained{1079, "(SECSTrans-Delete) The Root item cannot be deleted.", 0};

/// A sent transaction that waits for its reply.
SECSTransPtr Waiting(TransHost& host, std::int32_t stream = 1, std::int32_t function = 3) {
    SECSTransPtr trans = host.MakeTrans(stream, function);
    trans->Send();
    return trans;
}

TEST(T3Timer, StoresWhatIsAboveZero) {
    TransHost host;
    const SECSTransPtr trans = Waiting(host);
    for (const std::int32_t value : {45, 2, 1, kLongMax}) {
        Access::T3Timer(*trans, value);
        EXPECT_EQ(Access::T3Timer(*trans), value);
    }
    EXPECT_EQ(host.Take(), Reports{});
    EXPECT_EQ(host.Table->TransCount(), 1);
}

TEST(T3Timer, ExpiresAtZeroAndBelow) {
    for (const std::int32_t value : {0, -1, kLongMin}) {
        TransHost host;
        const SECSTransPtr trans = Waiting(host);
        Access::T3Timer(*trans, value);
        EXPECT_EQ(host.Take(), (Reports{Expired("[SystemBytes-1] S1F3")}));
        EXPECT_EQ(host.Table->TransCount(), 0);
        EXPECT_EQ(Access::Parent(*trans), nullptr);
        EXPECT_EQ(Access::T3Timer(*trans), value);
    }
}

TEST(T3Timer, NamesSystemBytesAndPrimaryInPlainDecimal) {
    TransHost host;
    const SECSTransPtr trans = Waiting(host, 127, 3);
    trans->Primary()->Func(255);
    Access::SystemBytes(*trans, 900000000);
    trans->Name("unused");
    trans->Secondary()->Stream(9);
    Access::T3Timer(*trans, 0);
    EXPECT_EQ(host.Take(), (Reports{Expired("[SystemBytes-900000000] S127F255")}));
}

TEST(T3Timer, ReportsFirstAndDeletesThen) {
    TransHost host;
    const SECSTransPtr trans = Waiting(host);
    std::int32_t countInReport = 0;
    std::int32_t indexInReport = 0;
    host.OnError = [&] {
        countInReport = host.Table->TransCount();
        indexInReport = trans->Index();
    };
    Access::T3Timer(*trans, 0);
    EXPECT_EQ(countInReport, 1);
    EXPECT_EQ(indexInReport, 1);
    EXPECT_EQ(host.Table->TransCount(), 0);
}

TEST(T3Timer, LeavesInProgressSystemBytesAndTheRunningMark) {
    TransHost host;
    const SECSTransPtr trans = Waiting(host);
    Access::T3Start(*trans, true);
    Access::T3Counter(*trans, 7);
    Access::T3Timer(*trans, 0);
    EXPECT_TRUE(trans->InProgress());
    EXPECT_EQ(trans->SystemBytes(), 1);
    EXPECT_TRUE(Access::T3Start(*trans));
    EXPECT_EQ(Access::T3Counter(*trans), 7);
}

TEST(T3Timer, RenumbersThoseThatStillWait) {
    TransHost host;
    const SECSTransPtr first = Waiting(host);
    const SECSTransPtr second = Waiting(host);
    const SECSTransPtr third = Waiting(host);
    Access::T3Timer(*second, 0);
    EXPECT_EQ(first->Index(), 1);
    EXPECT_EQ(third->Index(), 2);
    EXPECT_EQ(host.Table->TransCount(), 2);
}

TEST(T3Timer, OutsideATableReportsTheRefusedDeleteToo) {
    TransHost host;
    const SECSTransPtr trans = host.MakeTrans(1, 3);
    Access::T3Timer(*trans, 0);
    EXPECT_EQ(host.Take(), (Reports{Expired("[SystemBytes-0] S1F3"), kNotContained}));
}

TEST(T3Timer, ReportsTheRefusedDeleteWhenTheReportAlreadyDeleted) {
    TransHost host;
    const SECSTransPtr trans = Waiting(host);
    bool once = true;
    host.OnError = [&] {
        if (once) {
            once = false;
            trans->Delete();
        }
    };
    Access::T3Timer(*trans, 0);
    EXPECT_EQ(host.Take(), (Reports{Expired("[SystemBytes-1] S1F3"), kNotContained}));
}

TEST(T3Timer, TakesItselfOutWhereverTheReportHasMovedIt) {
    TransHost host;
    const SECSTransPtr front = Waiting(host);
    const SECSTransPtr trans = Waiting(host);
    const SECSTransPtr behind = Waiting(host);
    SECSTransPtr late;
    host.OnError = [&] {
        front->Delete();
        late = Waiting(host);
    };
    Access::T3Timer(*trans, 0);
    EXPECT_EQ(host.Take(), (Reports{Expired("[SystemBytes-2] S1F3")}));
    ASSERT_EQ(host.Table->TransCount(), 2);
    EXPECT_EQ(host.Table->SECSTrans(1), behind);
    EXPECT_EQ(host.Table->SECSTrans(2), late);
    EXPECT_EQ(behind->Index(), 1);
    EXPECT_EQ(late->Index(), 2);
}

TEST(T3Timer, DeletesEvenWhenTheReportGrantsMoreTime) {
    TransHost host;
    const SECSTransPtr trans = Waiting(host);
    host.OnError = [&] { Access::T3Timer(*trans, 45); };
    Access::T3Timer(*trans, 0);
    EXPECT_EQ(host.Table->TransCount(), 0);
    EXPECT_EQ(Access::T3Timer(*trans), 45);
}

TEST(T3Timer, OfATransactionInItsReportRefusesToSendAndReply) {
    TransHost host;
    const SECSTransPtr trans = Waiting(host);
    host.OnError = [&] {
        host.OnError = nullptr;
        trans->Send();
        trans->Reply();
    };
    Access::T3Timer(*trans, 0);
    EXPECT_EQ(
        host.Take(),
        (Reports{Expired("[SystemBytes-1] S1F3"),
                 {2009, "(SECSTrans-Send) You must call NewSECSTrans to use send method.", 0},
                 {2009, "(SECSTrans-Reply) You must call NewSECSTrans to use send method.", 0}}));
    EXPECT_EQ(host.Record.Sent.size(), 1U);
}

TEST(T3Timer, WithoutPrimaryFaultsAndLeavesTheEntry) {
    TransHost host;
    const SECSTransPtr trans = Waiting(host);
    Access::Primary(*trans, nullptr);
    Access::T3Timer(*trans, 0);
    EXPECT_EQ(
        host.Take(),
        (Reports{
            {91, "(SECSTrans-Let T3Timer) Object variable or With block variable not set", 0}}));
    EXPECT_EQ(Access::T3Timer(*trans), 0);
    EXPECT_EQ(host.Table->TransCount(), 1);
    EXPECT_EQ(Access::Parent(*trans), host.Table);
}

TEST(T3Timer, WritesSystemBytesBelowZeroWithTheirSign) {
    TransHost host;
    const SECSTransPtr trans = Waiting(host);
    Access::SystemBytes(*trans, -1);
    Access::T3Timer(*trans, -1);
    EXPECT_EQ(host.Take(), (Reports{Expired("[SystemBytes--1] S1F3")}));
}

TEST(T3Timer, SurvivesAsTheLastReferenceOfTheTable) {
    TransHost host;
    SECSTrans* const bare = Waiting(host).get();
    Access::T3Timer(*bare, 0);
    EXPECT_EQ(host.Table->TransCount(), 0);
}

TEST(T3Timer, RemovesATemplateToo) {
    TransHost host;
    const auto dictionary = host.Make<SECSDictionary>();
    const SECSTransPtr trans = dictionary->AddNewTrans(1);
    trans->Primary()->Stream(6);
    trans->Primary()->Func(11);
    Access::T3Timer(*trans, 0);
    EXPECT_EQ(host.Take(), (Reports{Expired("[SystemBytes-0] S6F11")}));
    EXPECT_EQ(dictionary->TransCount(), 0);
}

TEST(T3Counter, StoresWhatIsBelowFourTimesT3) {
    TransHost host;
    const SECSTransPtr trans = Waiting(host);
    for (const std::int32_t value : {0, 1, 44, 45, 179, -1, kLongMin}) {
        Access::T3Counter(*trans, value);
        EXPECT_EQ(Access::T3Counter(*trans), value);
    }
    EXPECT_EQ(host.Take(), Reports{});
    EXPECT_EQ(host.Table->TransCount(), 1);
}

TEST(T3Counter, ClearsTheEntryAtFourTimesT3) {
    struct Row {
        std::int32_t T3;
        std::int32_t Kept;
        std::int32_t Cleared;
    };
    for (const Row& row :
         {Row{45, 179, 180}, Row{1, 3, 4}, Row{120, 479, 480}, Row{2, 7, kLongMax}}) {
        TransHost host;
        host.T3 = row.T3;
        const SECSTransPtr trans = Waiting(host);
        trans->Name("AreYouThere");
        Access::T3Counter(*trans, row.Kept);
        EXPECT_EQ(host.Take(), Reports{});
        Access::T3Counter(*trans, row.Cleared);
        EXPECT_EQ(host.Take(), (Reports{Cleared("AreYouThere")}));
        EXPECT_EQ(host.Table->TransCount(), 0);
        EXPECT_EQ(Access::T3Counter(*trans), row.Cleared);
    }
}

TEST(T3Counter, FollowsTheControlsPresentT3) {
    TransHost host;
    const SECSTransPtr trans = Waiting(host);
    host.T3 = 10;
    Access::T3Counter(*trans, 39);
    EXPECT_EQ(host.Table->TransCount(), 1);
    Access::T3Counter(*trans, 40);
    EXPECT_EQ(host.Table->TransCount(), 0);
    EXPECT_EQ(Access::T3Timer(*trans), 45);
}

TEST(T3Counter, TakesTheNameAsItIsEvenEmpty) {
    TransHost host;
    const SECSTransPtr trans = Waiting(host);
    Access::T3Counter(*trans, 180);
    EXPECT_EQ(host.Take(), (Reports{Cleared("")}));
}

TEST(T3Counter, ReportsFirstAndDeletesThen) {
    TransHost host;
    const SECSTransPtr trans = Waiting(host);
    std::int32_t countInReport = 0;
    host.OnError = [&] { countInReport = host.Table->TransCount(); };
    Access::T3Counter(*trans, 180);
    EXPECT_EQ(countInReport, 1);
    EXPECT_EQ(host.Table->TransCount(), 0);
    EXPECT_TRUE(trans->InProgress());
}

TEST(T3Counter, OutsideATableReportsTheRefusedDeleteToo) {
    TransHost host;
    const SECSTransPtr trans = host.MakeTrans(1, 3);
    trans->Name("N");
    Access::T3Counter(*trans, 180);
    EXPECT_EQ(host.Take(), (Reports{Cleared("N"), kNotContained}));
}

TEST(T3Counter, ReportsTheRefusedDeleteWhenTheReportAlreadyDeleted) {
    TransHost host;
    const SECSTransPtr trans = Waiting(host);
    host.OnError = [&] {
        host.OnError = nullptr;
        trans->Delete();
    };
    Access::T3Counter(*trans, 180);
    EXPECT_EQ(host.Take(), (Reports{Cleared(""), kNotContained}));
}

TEST(T3Counter, DeletesEvenWhenTheReportRaisesTheLimit) {
    TransHost host;
    const SECSTransPtr trans = Waiting(host);
    host.OnError = [&] { host.T3 = 120; };
    Access::T3Counter(*trans, 180);
    EXPECT_EQ(host.Table->TransCount(), 0);
}

TEST(T3Counter, NeedsNoMessages) {
    TransHost host;
    const SECSTransPtr trans = Waiting(host);
    Access::Primary(*trans, nullptr);
    Access::Secondary(*trans, nullptr);
    Access::T3Counter(*trans, 180);
    EXPECT_EQ(host.Take(), (Reports{Cleared("")}));
    EXPECT_EQ(host.Table->TransCount(), 0);
}

TEST(T3Start, IsAPlainMark) {
    TransHost host;
    const SECSTransPtr trans = host.MakeTrans(1, 3);
    Access::T3Start(*trans, true);
    EXPECT_TRUE(Access::T3Start(*trans));
    EXPECT_EQ(Access::T3Timer(*trans), 45);
    EXPECT_EQ(Access::T3Counter(*trans), 0);
    Access::T3Start(*trans, false);
    EXPECT_FALSE(Access::T3Start(*trans));
    EXPECT_EQ(host.Take(), Reports{});
}

TEST(T3Fields, AreNotResetByAnotherSend) {
    TransHost host;
    const SECSTransPtr trans = Waiting(host);
    Access::T3Start(*trans, true);
    Access::T3Timer(*trans, 3);
    Access::T3Counter(*trans, 5);
    trans->Delete();
    trans->Send();
    EXPECT_TRUE(Access::T3Start(*trans));
    EXPECT_EQ(Access::T3Timer(*trans), 3);
    EXPECT_EQ(Access::T3Counter(*trans), 5);
}

TEST(T3Fields, ExpireInSilenceAfterTheControl) {
    TransHost host;
    const SECSTransPtr trans = Waiting(host);
    host.End();
    Access::T3Timer(*trans, 0);
    Access::T3Counter(*trans, 1000);
    EXPECT_EQ(host.Take(), Reports{});
}

}  // namespace
}  // namespace hexmire
