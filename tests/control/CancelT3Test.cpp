#include <hexmire/support/HexBytes.h>

#include "Receiving.h"
#include <gtest/gtest.h>

namespace hexmire {
namespace {

using namespace fakes;
using Access = detail::SECSTransAccess;

/// A host whose sent transactions run their reply timers.
struct Waiting : Receiving {
    using Receiving::Receiving;
    SECSTransPtr Send(std::int32_t stream, std::int32_t function) {
        SECSTransPtr trans = Receiving::Send(stream, function);
        Access::T3Start(*trans, true);
        return trans;
    }
};

TEST(CancelT3, StopsTheTimerWhenABlockOfTheReplyHasCome) {
    Waiting host;
    const SECSTransPtr trans = host.Send(1, 3);
    Access::T3Timer(*trans, 7);
    host.NewLines();
    host.BlockReceived(Header(0, false, 1, 4, 1));
    EXPECT_FALSE(Access::T3Start(*trans));
    EXPECT_EQ(Access::T3Timer(*trans), 7);
    EXPECT_EQ(host.Table()->TransCount(), 1);
    EXPECT_EQ(host.NewLines(),
              (Lines{"Cancel T3 - Searching for S1F4 SystemBytes: 1",
                     "Cancel T3 - TransactionInUse[1] : S1F4 SystemBytes: 1",
                     "Cancel T3 - Timer for S1F4 SystemBytes: 1"}));
    EXPECT_TRUE(host.Raised.empty());
}

TEST(CancelT3, WalksTheTableToTheFirstMatch) {
    Waiting host;
    const SECSTransPtr first = host.Send(1, 3);
    const SECSTransPtr second = host.Send(2, 41);
    host.Send(2, 41);
    host.NewLines();
    host.BlockReceived(Header(0, false, 2, 42, 2));
    EXPECT_EQ(host.NewLines(),
              (Lines{"Cancel T3 - Searching for S2F42 SystemBytes: 2",
                     "Cancel T3 - TransactionInUse[1] : S1F4 SystemBytes: 1",
                     "Cancel T3 - TransactionInUse[2] : S2F42 SystemBytes: 2",
                     "Cancel T3 - Timer for S2F42 SystemBytes: 2"}));
    EXPECT_TRUE(Access::T3Start(*first));
    EXPECT_FALSE(Access::T3Start(*second));
}

TEST(CancelT3, ShowsTheRepliesOfAllThatItPasses) {
    Waiting host;
    host.Send(1, 3)->Secondary()->Stream(9);
    host.Send(1, 5)->Secondary()->Func(0);
    host.Send(1, 7);
    host.NewLines();
    host.BlockReceived(Header(0, false, 1, 8, 4));
    EXPECT_EQ(host.NewLines(),
              (Lines{"Cancel T3 - Searching for S1F8 SystemBytes: 4",
                     "Cancel T3 - TransactionInUse[1] : S9F4 SystemBytes: 1",
                     "Cancel T3 - TransactionInUse[2] : S1F0 SystemBytes: 2",
                     "Cancel T3 - TransactionInUse[3] : S1F8 SystemBytes: 3"}));
    host.BlockReceived(Header(0, false, 1, 0, 2));
    EXPECT_EQ(host.NewLines().back(), "Cancel T3 - Timer for S1F0 SystemBytes: 2");
}

TEST(CancelT3, NeedsStreamFunctionAndSystemBytesWhateverTheCheckSays) {
    struct Row {
        std::int32_t Stream;
        std::int32_t Function;
        std::uint32_t SystemBytes;
    };
    for (const bool check : {true, false}) {
        for (const Row& row : {Row{1, 4, 2}, Row{2, 4, 1}, Row{1, 6, 1}, Row{1, 0, 1}}) {
            Waiting host;
            host.Control().SystemBytesCheck(check);
            const SECSTransPtr trans = host.Send(1, 3);
            host.NewLines();
            host.BlockReceived(Header(0, false, row.Stream, row.Function, row.SystemBytes));
            EXPECT_TRUE(Access::T3Start(*trans));
            EXPECT_EQ(host.NewLines().size(), 2U);
        }
    }
}

TEST(CancelT3, DoesNothingForAPrimary) {
    Waiting host;
    const SECSTransPtr trans = host.Send(1, 3);
    trans->Secondary()->Func(3);
    host.NewLines();
    host.BlockReceived(Header(0, true, 1, 3, 1));
    EXPECT_TRUE(Access::T3Start(*trans));
    EXPECT_TRUE(host.NewLines().empty());
}

TEST(CancelT3, IgnoresDeviceIdWBitBlockBytesAndData) {
    Waiting host;
    const SECSTransPtr trans = host.Send(1, 3);
    host.BlockReceived(Bytes("FF FF 81 04 80 01 00 00 00 01 41 00"));
    EXPECT_FALSE(Access::T3Start(*trans));
}

TEST(CancelT3, IsRefusedWithoutText) {
    Waiting host;
    host.DriverEvents().SecsBlockReceive("");
    EXPECT_EQ(host.Errors,
              (Errors{{2016,
                       "(Hexmire-moSECSIService_SecsBlockReceive) Invalid SECS II Header received.",
                       0}}));
    EXPECT_EQ(host.Control().ErrorCode(), 2016);
}

TEST(CancelT3, FaultsOnATextThatIsNotTenBytes) {
    const std::string whole = HexText(Header(0, false, 1, 4, 1));
    for (const std::string& text :
         {whole.substr(0, 28), std::string("00"), "G0" + whole.substr(2)}) {
        Waiting host;
        const SECSTransPtr trans = host.Send(1, 3);
        host.NewLines();
        host.DriverEvents().SecsBlockReceive(text);
        EXPECT_EQ(host.Errors,
                  (Errors{{13, "(Hexmire-moSECSIService_SecsBlockReceive) Type mismatch", 0}}));
        EXPECT_TRUE(Access::T3Start(*trans));
        EXPECT_TRUE(host.NewLines().empty());
    }
}

TEST(CancelT3, ReportsSystemBytesBeyondThirtyOneBitsAndGoesOnWithTheLastByte) {
    Waiting host;
    const SECSTransPtr trans = host.Send(1, 3);
    host.BlockReceived(Header(0, false, 1, 4, 0x80000001U));
    EXPECT_EQ(host.Errors, (Errors{{6, "(ModGeneral-lLBitShift) Overflow", 0}}));
    EXPECT_FALSE(Access::T3Start(*trans));
}

TEST(CancelT3, BeforeTheMessageWentOutIsUndoneByTheStart) {
    // A reply may be quicker than the driver's word that the primary has gone out.
    Waiting host;
    const SECSTransPtr trans = host.Send(1, 3);
    Access::T3Start(*trans, false);
    host.BlockReceived(Header(0, false, 1, 4, 1));
    EXPECT_FALSE(Access::T3Start(*trans));
    host.MessageSent(Header(0, true, 1, 3, 1));
    EXPECT_TRUE(Access::T3Start(*trans));
}

TEST(CancelT3, LetsTheCounterRunInsteadOfTheTimer) {
    Waiting host;
    const SECSTransPtr trans = host.Send(1, 3);
    host.TickSecond();
    host.BlockReceived(Header(0, false, 1, 4, 1));
    host.TickSecond();
    host.TickSecond();
    EXPECT_EQ(Access::T3Timer(*trans), 44);
    EXPECT_EQ(Access::T3Counter(*trans), 2);
}

TEST(CancelT3, OfSeveralBlocksIsLoggedEachTime) {
    Waiting host;
    host.Send(1, 3);
    host.NewLines();
    host.BlockReceived(Header(0, false, 1, 4, 1));
    host.BlockReceived(Header(0, false, 1, 4, 1));
    EXPECT_EQ(host.NewLines().size(), 6U);
}

TEST(CancelT3, WorksWithoutALog) {
    Waiting host(false);
    const SECSTransPtr trans = host.Send(1, 3);
    host.BlockReceived(Header(0, false, 1, 4, 1));
    EXPECT_FALSE(Access::T3Start(*trans));
    EXPECT_EQ(host.Files.Appends, 0);
}

TEST(CancelT3, ReportsAnEntryWithoutSecondary) {
    Waiting host;
    const SECSTransPtr trans = host.Send(1, 3);
    Access::Secondary(*trans, nullptr);
    host.BlockReceived(Header(0, false, 1, 4, 1));
    ASSERT_EQ(host.Errors.size(), 1U);
    EXPECT_EQ(host.Errors[0].Code, 91);
    EXPECT_TRUE(host.Errors[0].Text.starts_with("(Hexmire-moSECSIService_SecsBlockReceive) "));
}

}  // namespace
}  // namespace hexmire
