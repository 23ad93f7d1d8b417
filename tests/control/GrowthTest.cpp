#include "../fakes/HeapInUse.h"
#include "Receiving.h"
#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

// A host runs for years: whatever a round allocates must be given back by its end.
namespace hexmire {
namespace {

using fakes::Bytes;
using fakes::Header;
using fakes::HeapInUse;
using fakes::Receiving;

constexpr int kRounds = 10'000;
constexpr int kFewRounds = 1'000;
const std::string kReport =
    "01 03 B1 04 00 00 00 01 41 02 4F 4B 01 02 A5 01 07 81 08 3F F0 00 00 00 00 00 00";
const std::string kLongText(300, 'x');

/// Runs a round often; the bytes that each round after the first hundred kept, in whole blocks of
/// memory: the allocator's own lists of free blocks come and go.
std::ptrdiff_t Kept(int rounds, const std::function<void()>& round) {
    std::size_t before = 0;
    for (int count = 0; count < rounds; ++count) {
        if (count == 100) before = HeapInUse();
        round();
    }
    constexpr std::ptrdiff_t kSmallestBlock = 16;
    const auto kept =
        static_cast<std::ptrdiff_t>(HeapInUse()) - static_cast<std::ptrdiff_t>(before);
    return kept / rounds / kSmallestBlock * kSmallestBlock;
}

/// Forgets what the fakes recorded, so that only the control's own memory is compared.
void Forget(Receiving& host) {
    host.Raised.clear();
    host.Errors.clear();
    host.Primaries.clear();
    host.Secondaries.clear();
    host.Driver.Calls.clear();
    host.Driver.Sent.clear();
}

void Fill(SECSMessage& message) {
    const SECSItemPtr list = message.Root()->AddNew(1);
    list->Format(FormatList);
    for (int index = 1; index <= 3; ++index) {
        const SECSItemPtr child = list->AddNew(index);
        child->Name(kLongText);
        child->Format(FormatAscii);
        child->Value(kLongText);
    }
    list->Item(2)->Duplicate();
}

// One exchange each way: a filled primary with its reply, a received event with its acknowledge.
void Exchange(Receiving& host) {
    const SECSTransPtr trans = host.Control().NewSECSTransaction("S6F11");
    Fill(*trans->Primary());
    trans->Send();
    const auto systemBytes = static_cast<std::uint32_t>(trans->SystemBytes());
    host.MessageSent(Header(0, true, 6, 11, systemBytes));
    host.BlockReceived(Header(0, false, 6, 12, systemBytes));
    host.ReceiveReply(6, 12, systemBytes, kReport);
    host.ReceivePrimary(6, 11, 7, kReport);
    Fill(*host.Primaries.back()->Secondary());
    host.Primaries.back()->Reply();
}

TEST(GrowthTest, AControlGivesEverythingBackWhenItEnds) {
    EXPECT_LE(Kept(kRounds,
                   [] {
                       Receiving host(false);
                       Exchange(host);
                       EXPECT_EQ(host.Secondaries.size(), 1U);
                       EXPECT_TRUE(host.Errors.empty());
                   }),
              0);
}

TEST(GrowthTest, AControlThatLivesOnKeepsNothingOfAnExchange) {
    Receiving host(false);
    EXPECT_LE(Kept(kRounds,
                   [&host] {
                       Exchange(host);
                       EXPECT_EQ(host.Table()->TransCount(), 0);
                       Forget(host);
                   }),
              0);
}

TEST(GrowthTest, UnansweredAndRefusedMessagesLeaveNothing) {
    Receiving host(false);
    host.Control().T3Timeout(1);
    EXPECT_LE(Kept(kFewRounds,
                   [&host] {
                       const SECSTransPtr trans = host.Send();
                       host.MessageSent(
                           Header(0, true, 1, 1, static_cast<std::uint32_t>(trans->SystemBytes())));
                       host.TickSecond();
                       host.ReceiveReply(1, 4, 5, kReport);
                       host.MessageReceived(Header(0, true, 1, 1, 5), Bytes("01 05 41 09 41"));
                       host.MessageReceived(Header(0, true, 1, 1, 5), Bytes("0D 01 00"));
                       EXPECT_EQ(host.Table()->TransCount(), 0);
                       EXPECT_GE(host.Errors.size(), 3U);
                       Forget(host);
                   }),
              0);
}

TEST(GrowthTest, ABranchThatTheHostHoldsIsFreedWithTheHost) {
    EXPECT_LE(Kept(kRounds,
                   [] {
                       const SECSMessagePtr message = New<SECSMessage>();
                       Fill(*message);
                       const SECSItemPtr branch = message->Item(1);
                       branch->Item(3)->Delete();
                   }),
              0);
}

}  // namespace
}  // namespace hexmire
