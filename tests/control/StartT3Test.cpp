#include <hexmire/support/HexBytes.h>

#include "Receiving.h"
#include <gtest/gtest.h>

#include <algorithm>

namespace hexmire {
namespace {

using namespace fakes;
using Access = detail::SECSTransAccess;

const Errors kNoHeader{
    {2016, "(Hexmire-moSECSIService_SecsMsgSend) Invalid SECS II Header received.", 0}};
const Errors kNoHex{{13, "(Hexmire-moSECSIService_SecsMsgSend) Type mismatch", 0}};
const ErrorEvent kOverflow{6, "(ModGeneral-lLBitShift) Overflow", 0};

TEST(StartT3, BeginsWhenTheDriverHasSentThePrimary) {
    Receiving host;
    const SECSTransPtr trans = host.Send(1, 3);
    EXPECT_FALSE(Access::T3Start(*trans));
    host.NewLines();
    host.MessageSent(Header(0, true, 1, 3, 1));
    EXPECT_TRUE(Access::T3Start(*trans));
    EXPECT_EQ(host.NewLines(),
              (Lines{"Start T3 - Searching for S1F3 SystemBytes: 1",
                     "Start T3 - TransactionInUse[1] : S1F3 SystemBytes: 1",
                     "Start T3 - Timer for S1F3 SystemBytes: 1"}));
    EXPECT_TRUE(host.Raised.empty());
}

TEST(StartT3, WalksTheTableToTheFirstMatch) {
    Receiving host;
    host.Send(1, 3);
    const SECSTransPtr second = host.Send(2, 41);
    const SECSTransPtr third = host.Send(1, 3);
    host.NewLines();
    host.MessageSent(Header(0, true, 2, 41, 2));
    EXPECT_EQ(host.NewLines(),
              (Lines{"Start T3 - Searching for S2F41 SystemBytes: 2",
                     "Start T3 - TransactionInUse[1] : S1F3 SystemBytes: 1",
                     "Start T3 - TransactionInUse[2] : S2F41 SystemBytes: 2",
                     "Start T3 - Timer for S2F41 SystemBytes: 2"}));
    EXPECT_TRUE(Access::T3Start(*second));
    EXPECT_FALSE(Access::T3Start(*third));
}

TEST(StartT3, CountsEveryEntryThatItPasses) {
    Receiving host;
    for (const std::int32_t function : {1, 3, 5, 7, 9})
        host.Send(1, function);
    host.NewLines();
    host.MessageSent(Header(0, true, 1, 7, 4));
    host.MessageSent(Header(0, true, 1, 7, 6));
    const std::string entry = "Start T3 - TransactionInUse[";
    EXPECT_EQ(host.NewLines(),
              (Lines{"Start T3 - Searching for S1F7 SystemBytes: 4",
                     entry + "1] : S1F1 SystemBytes: 1",
                     entry + "2] : S1F3 SystemBytes: 2",
                     entry + "3] : S1F5 SystemBytes: 3",
                     entry + "4] : S1F7 SystemBytes: 4",
                     "Start T3 - Timer for S1F7 SystemBytes: 4",
                     "Start T3 - Searching for S1F7 SystemBytes: 6",
                     entry + "1] : S1F1 SystemBytes: 1",
                     entry + "2] : S1F3 SystemBytes: 2",
                     entry + "3] : S1F5 SystemBytes: 3",
                     entry + "4] : S1F7 SystemBytes: 4",
                     entry + "5] : S1F9 SystemBytes: 5"}));
}

TEST(StartT3, NeedsStreamFunctionAndSystemBytes) {
    struct Row {
        std::int32_t Stream;
        std::int32_t Function;
        std::uint32_t SystemBytes;
    };
    for (const Row& row : {Row{1, 3, 2}, Row{2, 3, 1}, Row{1, 5, 1}, Row{0, 1, 0}}) {
        Receiving host;
        const SECSTransPtr trans = host.Send(1, 3);
        host.NewLines();
        host.MessageSent(Header(0, true, row.Stream, row.Function, row.SystemBytes));
        EXPECT_FALSE(Access::T3Start(*trans));
        EXPECT_EQ(host.NewLines().size(), 2U);
        EXPECT_TRUE(host.Raised.empty());
    }
}

TEST(StartT3, IgnoresWBitDeviceIdAndBlockBytes) {
    Receiving host;
    const SECSTransPtr trans = host.Send(1, 3);
    host.MessageSent(Bytes("FF FF 01 03 80 01 00 00 00 01"));
    EXPECT_TRUE(Access::T3Start(*trans));
}

TEST(StartT3, PassesOverTheBody) {
    Receiving host;
    const SECSTransPtr trans = host.Send(1, 3);
    host.MessageSent(Bytes("00 00 81 03 00 00 00 00 00 01 A5 01 07"));
    EXPECT_TRUE(Access::T3Start(*trans));
}

TEST(StartT3, DoesNothingForAReply) {
    Receiving host;
    const SECSTransPtr trans = host.Send(1, 2);  // Nobody stops a host from this.
    host.NewLines();
    host.MessageSent(Header(0, false, 1, 2, 1));
    host.MessageSent(Header(0, false, 1, 0, 1));
    EXPECT_FALSE(Access::T3Start(*trans));
    EXPECT_TRUE(host.NewLines().empty());
}

TEST(StartT3, WithAnEmptyTableLogsTheSearchOnly) {
    Receiving host;
    host.MessageSent(Header(0, true, 127, 255, 900000000));
    EXPECT_EQ(host.LogLines(), (Lines{"Start T3 - Searching for S127F255 SystemBytes: 900000000"}));
    EXPECT_TRUE(host.Raised.empty());
}

TEST(StartT3, TakesTheFirstOfTwoWithTheSameSystemBytes) {
    Receiving host;
    const SECSTransPtr first = host.Send(1, 3);
    const SECSTransPtr second = host.Send(1, 3);
    Access::SystemBytes(*second, 1);
    host.MessageSent(Header(0, true, 1, 3, 1));
    host.MessageSent(Header(0, true, 1, 3, 1));
    EXPECT_TRUE(Access::T3Start(*first));
    EXPECT_FALSE(Access::T3Start(*second));
}

TEST(StartT3, IsRefusedWithoutText) {
    Receiving host;
    host.DriverEvents().SecsMsgSend("");
    EXPECT_EQ(host.Errors, kNoHeader);
    EXPECT_EQ(host.Control().ErrorCode(), 2016);
    EXPECT_TRUE(host.LogLines().empty());
}

TEST(StartT3, FaultsOnATextThatIsNotTenBytes) {
    const std::string whole = HexText(Header(0, true, 1, 3, 1));
    for (const std::string& text : {whole.substr(0, 28),
                                    whole.substr(0, 27),
                                    whole.substr(0, 3),
                                    std::string("0"),
                                    std::string(" "),
                                    "ZZ" + whole.substr(2),
                                    whole.substr(0, 27) + "-1 "}) {
        Receiving host;
        const SECSTransPtr trans = host.Send(1, 3);
        host.NewLines();
        host.DriverEvents().SecsMsgSend(text);
        EXPECT_EQ(host.Errors, kNoHex) << text;
        EXPECT_FALSE(Access::T3Start(*trans));
        EXPECT_TRUE(host.NewLines().empty());
    }
}

TEST(StartT3, ReadsAnyCaseAndAnySeparator) {
    const std::string whole = "00 00 81 03 00 00 00 00 00 0a ";
    std::string commas = whole;
    std::replace(commas.begin(), commas.end(), ' ', ',');
    for (const std::string& text : {whole, commas, whole.substr(0, 29), whole + "zz not read"}) {
        Receiving host;
        const SECSTransPtr trans = host.Send(1, 3);
        Access::SystemBytes(*trans, 10);
        host.DriverEvents().SecsMsgSend(text);
        EXPECT_TRUE(Access::T3Start(*trans)) << text;
        EXPECT_TRUE(host.Raised.empty()) << text;
    }
}

TEST(StartT3, ReportsSystemBytesBeyondThirtyOneBitsAndGoesOnWithTheLastByte) {
    struct Row {
        std::uint32_t SystemBytes;
        const char* Left;
    };
    for (const Row& row : {Row{0x80000000U, "0"}, Row{0x80000001U, "1"}, Row{0xFFFFFFFFU, "255"}}) {
        Receiving host;
        host.MessageSent(Header(0, true, 1, 3, row.SystemBytes));
        EXPECT_EQ(host.Errors, (Errors{kOverflow}));
        EXPECT_EQ(host.LogLines(),
                  (Lines{std::string("Start T3 - Searching for S1F3 SystemBytes: ") + row.Left}));
    }
    Receiving host;
    host.MessageSent(Header(0, true, 1, 3, 0x7FFFFFFFU));
    EXPECT_TRUE(host.Raised.empty());
}

TEST(StartT3, WorksWithoutALog) {
    Receiving host(false);
    const SECSTransPtr trans = host.Send(1, 3);
    host.MessageSent(Header(0, true, 1, 3, 1));
    EXPECT_TRUE(Access::T3Start(*trans));
    EXPECT_EQ(host.Files.Appends, 0);
}

TEST(StartT3, WorksWithALogThatCannotBeWritten) {
    Receiving host;
    host.Files.FailAppend = true;
    const SECSTransPtr trans = host.Send(1, 3);
    host.MessageSent(Header(0, true, 1, 3, 1));
    EXPECT_TRUE(Access::T3Start(*trans));
    EXPECT_TRUE(host.Raised.empty());
}

TEST(StartT3, FollowsAPrimaryThatTheHostEditsWhileItWaits) {
    Receiving host;
    const SECSTransPtr trans = host.Send(1, 3);
    trans->Primary()->Func(5);
    host.MessageSent(Header(0, true, 1, 3, 1));
    EXPECT_FALSE(Access::T3Start(*trans));
    host.MessageSent(Header(0, true, 1, 5, 1));
    EXPECT_TRUE(Access::T3Start(*trans));
}

TEST(StartT3, FindsNothingAfterADelete) {
    Receiving host;
    const SECSTransPtr trans = host.Send(1, 3);
    trans->Delete();
    host.MessageSent(Header(0, true, 1, 3, 1));
    EXPECT_FALSE(Access::T3Start(*trans));
}

TEST(StartT3, FindsEntriesBehindOneThatLeft) {
    Receiving host;
    const SECSTransPtr first = host.Send(1, 3);
    const SECSTransPtr second = host.Send(1, 5);
    first->Delete();
    host.NewLines();
    host.MessageSent(Header(0, true, 1, 5, 2));
    EXPECT_TRUE(Access::T3Start(*second));
    EXPECT_EQ(host.NewLines().at(1), "Start T3 - TransactionInUse[1] : S1F5 SystemBytes: 2");
}

TEST(StartT3, ReportsAnEntryWithoutPrimary) {
    Receiving host;
    const SECSTransPtr trans = host.Send(1, 3);
    Access::Primary(*trans, nullptr);
    host.MessageSent(Header(0, true, 1, 3, 1));
    EXPECT_EQ(
        host.Errors,
        (Errors{{91,
                 "(Hexmire-moSECSIService_SecsMsgSend) Object variable or With block variable "
                 "not set",
                 0}}));
}

}  // namespace
}  // namespace hexmire
