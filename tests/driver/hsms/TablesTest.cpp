// The link's small tables: open transactions, system bytes of two sizes, the queue, error windows.
#include <hexmire/driver/ErrorLimiter.h>
#include <hexmire/driver/OpenTransactions.h>
#include <hexmire/driver/SystemBytesMap.h>
#include <hexmire/driver/hsms/OutboundQueue.h>

#include "../../fakes/HsmsRig.h"
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <map>
#include <random>
#include <set>

namespace hexmire::test {
namespace {

using namespace std::chrono_literals;
using hsms::FrameHeader;
using link::LinkError;
using link::TimePoint;

const TimePoint kStart{1h};

link::MessageId Message(int stream, int function, std::uint32_t systemBytes) {
    return {static_cast<std::uint8_t>(stream), static_cast<std::uint8_t>(function), systemBytes};
}

// --- open transactions ---------------------------------------------------------------------------

TEST(OpenTransactions, AReplyFitsByStreamFunctionAndSystemBytes) {
    link::OpenTransactions table;
    table.Add(Message(1, 1, 7), kStart + 45s, kStart);
    EXPECT_FALSE(table.EndByReply(Message(1, 2, 8), kStart));
    EXPECT_FALSE(table.EndByReply(Message(1, 4, 7), kStart));
    EXPECT_FALSE(table.EndByReply(Message(2, 2, 7), kStart));
    EXPECT_TRUE(table.EndByReply(Message(1, 2, 7), kStart));
    EXPECT_FALSE(table.EndByReply(Message(1, 2, 7), kStart)) << "it is over";
}

TEST(OpenTransactions, FunctionZeroAbortsTheTransaction) {
    link::OpenTransactions table;
    table.Add(Message(3, 17, 7), kStart + 45s, kStart);
    EXPECT_TRUE(table.EndByReply(Message(3, 0, 7), kStart));
}

TEST(OpenTransactions, ATransactionIsForgottenAfterT3) {
    link::OpenTransactions table;
    table.Add(Message(1, 1, 7), kStart + 45s, kStart);
    EXPECT_TRUE(table.IsOpen(7, kStart + 44999ms));
    EXPECT_FALSE(table.IsOpen(7, kStart + 45s));
    EXPECT_FALSE(table.EndByReply(Message(1, 2, 7), kStart + 45s));
}

TEST(OpenTransactions, ForgottenOnesDoNotPileUp) {
    link::OpenTransactions table;
    for (std::uint32_t count = 0; count < 100'000; ++count) {
        const TimePoint now = kStart + count * 1s;
        table.Add(Message(1, 1, count), now + 45s, now);
    }
    EXPECT_LT(table.Size(), 200U);
}

TEST(OpenTransactions, HoldsWhatAPlainTableHolds) {
    struct Known {
        TimePoint Deadline;
        std::uint8_t Stream = 0;
        std::uint8_t Function = 0;
    };
    link::OpenTransactions table;
    std::map<std::uint32_t, Known> plain;
    std::mt19937 random(7);
    const auto below = [&](std::uint32_t limit) {
        return static_cast<std::uint32_t>(random() % limit);
    };
    TimePoint now = kStart;
    for (int step = 0; step < 60'000; ++step) {
        // Few different values, in the range's corners: many meet in one place.
        const std::uint32_t systemBytes = below(2) == 0 ? below(300) : 0xFFFFFF00U + below(256);
        const auto stream = static_cast<std::uint8_t>(1 + below(2));
        const auto known = plain.find(systemBytes);
        const bool isOpen = known != plain.end() && known->second.Deadline > now;
        ASSERT_EQ(table.IsOpen(systemBytes, now), isOpen) << step;
        switch (below(5)) {
            case 0: {
                const bool answers =
                    isOpen && known->second.Stream == stream && known->second.Function == 1;
                ASSERT_EQ(table.EndByReply({stream, 2, systemBytes}, now), answers) << step;
                if (answers) plain.erase(known);
                break;
            }
            case 1:
                ASSERT_EQ(table.End(systemBytes, now), isOpen) << step;
                if (known != plain.end()) plain.erase(known);
                break;
            case 2:
                if (below(step < 30'000 ? 3'000 : 40) == 0) now += 1s;
                if (below(5'000) == 0) {
                    table.Clear();
                    plain.clear();
                }
                break;
            default: {
                const TimePoint deadline = now + std::chrono::seconds(1 + below(40));
                const auto function = static_cast<std::uint8_t>(below(8) == 0 ? 3 : 1);
                table.Add({stream, function, systemBytes}, deadline, now);
                plain[systemBytes] = {deadline, stream, function};
                break;
            }
        }
    }
}

// --- system bytes --------------------------------------------------------------------------------

TEST(SystemBytesMap, ThirtyOneBitsPassUnchanged) {
    link::SystemBytesMap map;
    EXPECT_EQ(map.Deliver(Message(1, 1, 0), kStart, 45s).SystemBytes, 0U);
    EXPECT_EQ(map.Deliver(Message(1, 1, 0x3FFFFFFF), kStart, 45s).SystemBytes, 0x3FFFFFFFU);
    EXPECT_EQ(map.Deliver(Message(1, 1, 0x7FFFFFFF), kStart, 45s).SystemBytes, 0x7FFFFFFFU);
    EXPECT_EQ(map.Original(0x7FFFFFFF, kStart), 0x7FFFFFFFU);
}

TEST(SystemBytesMap, TheTopBitIsReplacedAndTheReplyFindsItsWayBack) {
    link::SystemBytesMap map;
    const auto first = map.Deliver(Message(1, 1, 0x80000000), kStart, 45s).SystemBytes;
    const auto second = map.Deliver(Message(1, 1, 0xFFFFFFFF), kStart, 45s).SystemBytes;
    EXPECT_GE(first, link::SystemBytesMap::kFirstSubstitute);
    EXPECT_LE(first, link::SystemBytesMap::kLastSubstitute);
    EXPECT_NE(first, second);
    EXPECT_EQ(map.Original(first, kStart), 0x80000000U);
    EXPECT_EQ(map.Original(second, kStart), 0xFFFFFFFFU);
    map.Answered(first);
    EXPECT_EQ(map.Original(first, kStart), first);
}

TEST(SystemBytesMap, ASubstituteIsNeverOneThatThePeerUsesItself) {
    link::SystemBytesMap map;
    std::set<std::uint32_t> used;
    for (std::uint32_t count = 0; count < 100; ++count) {
        const auto own = link::SystemBytesMap::kFirstSubstitute + count;
        used.insert(map.Deliver(Message(1, 1, own), kStart, 45s).SystemBytes);
        used.insert(map.Deliver(Message(1, 1, 0x90000000 + count), kStart, 45s).SystemBytes);
    }
    EXPECT_EQ(used.size(), 200U);
}

TEST(SystemBytesMap, ANonPrimaryIsReplacedWithoutAWayBack) {
    link::SystemBytesMap map;
    EXPECT_LT(map.Deliver(Message(1, 2, 0x80000001), kStart, 45s).SystemBytes, 0x80000000U);
    EXPECT_EQ(map.Size(), 0U);
}

TEST(SystemBytesMap, WaysBackEndAfterT3) {
    link::SystemBytesMap map;
    const auto seen = map.Deliver(Message(1, 1, 0x80000000), kStart, 45s).SystemBytes;
    EXPECT_EQ(map.Original(seen, kStart + 45s), seen);
}

TEST(SystemBytesMap, TheOldestWayBackIsGivenUpWhenTheTableIsFull) {
    link::SystemBytesMap map;
    const auto oldest = map.Deliver(Message(1, 1, 0x80000000), kStart, 45s).SystemBytes;
    for (std::uint32_t count = 1; count < link::SystemBytesMap::kMaxEntries; ++count) {
        EXPECT_FALSE(map.Deliver(Message(1, 1, 0x80000000 + count), kStart, 45s).ForgotOldest);
    }
    EXPECT_EQ(map.Original(oldest, kStart), 0x80000000U);
    EXPECT_TRUE(map.Deliver(Message(1, 1, 0xA0000000), kStart, 45s).ForgotOldest);
    EXPECT_EQ(map.Original(oldest, kStart), oldest);
    EXPECT_EQ(map.Size(), link::SystemBytesMap::kMaxEntries);
}

TEST(SystemBytesMap, AnsweredEntriesLeaveRoomHoweverManyThereAre) {
    link::SystemBytesMap map;
    const auto waiting = map.Deliver(Message(1, 1, 0x80000000), kStart, 45s).SystemBytes;
    for (std::uint32_t count = 1; count < 300'000; ++count) {
        const auto seen = map.Deliver(Message(1, 1, 0x80000000 + count), kStart, 45s);
        EXPECT_FALSE(seen.ForgotOldest);
        map.Answered(seen.SystemBytes);
    }
    EXPECT_EQ(map.Original(waiting, kStart), 0x80000000U);
}

// --- outbound queue ------------------------------------------------------------------------------

hsms::OutFrame Frame(std::uint32_t systemBytes, bool data) {
    return {.What = data ? hsms::OutFrame::Kind::Data : hsms::OutFrame::Kind::Control,
            .Header = FrameHeader{.Byte2 = 1, .Byte3 = 1, .SystemBytes = systemBytes},
            .Bytes = std::vector<std::uint8_t>(14, static_cast<std::uint8_t>(systemBytes))};
}

TEST(OutboundQueue, PartialWritesGiveFramesBackWholeAndInOrder) {
    hsms::OutboundQueue queue;
    queue.Push(Frame(1, true));
    queue.Push(Frame(2, false));
    std::array<std::span<const std::uint8_t>, 4> views;
    EXPECT_EQ(queue.Offer(views), 2U);
    queue.Advance(13);
    EXPECT_FALSE(queue.TakeWritten());
    EXPECT_EQ(queue.Offer(views), 2U);
    EXPECT_EQ(views[0].size(), 1U);
    queue.Advance(15);
    EXPECT_EQ(queue.TakeWritten()->Header.SystemBytes, 1U);
    EXPECT_EQ(queue.TakeWritten()->Header.SystemBytes, 2U);
    EXPECT_FALSE(queue.TakeWritten());
    EXPECT_TRUE(queue.IsEmpty());
    EXPECT_EQ(queue.DataBytes(), 0U);
}

TEST(OutboundQueue, AbortKeepsControlFramesAndTheFrameThatIsBegun) {
    hsms::OutboundQueue queue;
    for (std::uint32_t count = 1; count <= 4; ++count) {
        queue.Push(Frame(count, count != 3));
    }
    queue.Advance(1);
    const auto aborted = queue.AbortData();
    ASSERT_EQ(aborted.size(), 3U);
    std::array<std::span<const std::uint8_t>, 4> views;
    ASSERT_EQ(queue.Offer(views), 2U);
    EXPECT_EQ(views[0].size(), 13U);
    EXPECT_EQ(views[1][0], 3);
    EXPECT_EQ(queue.DataFrames(), 1U);
    EXPECT_EQ(queue.ControlFrames(), 1U);
}

// --- error windows -------------------------------------------------------------------------------

TEST(ErrorLimiter, FiftyASecondPassThenOneSummary) {
    link::ErrorLimiter limiter;
    int admitted = 0;
    for (int count = 0; count < 120; ++count) {
        admitted += limiter.Admit(LinkError::ExtraConnection, kStart + count * 1ms) ? 1 : 0;
    }
    EXPECT_EQ(admitted, 50);
    EXPECT_EQ(limiter.NextSummary(), kStart + 1s);
    EXPECT_TRUE(limiter.TakeSummaries(kStart + 999ms).empty());
    const auto summaries = limiter.TakeSummaries(kStart + 1s);
    ASSERT_EQ(summaries.size(), 1U);
    EXPECT_EQ(summaries[0].Suppressed, 70U);
    EXPECT_FALSE(limiter.NextSummary());
    EXPECT_TRUE(limiter.Admit(LinkError::ExtraConnection, kStart + 1s));
}

TEST(ErrorLimiter, CodesDoNotShareTheirWindows) {
    link::ErrorLimiter limiter;
    for (int count = 0; count < 60; ++count) {
        (void)limiter.Admit(LinkError::ExtraConnection, kStart);
    }
    EXPECT_FALSE(limiter.Admit(LinkError::ExtraConnection, kStart));
    EXPECT_TRUE(limiter.Admit(LinkError::RejectSent, kStart));
}

TEST(ErrorLimiter, CodesOfOneLostMessageEachAreNeverLeftOut) {
    link::ErrorLimiter limiter;
    for (const LinkError code : {LinkError::MessageTooLong,
                                 LinkError::NotSelected,
                                 LinkError::SendQueueFull,
                                 LinkError::SendAborted,
                                 LinkError::HostileBody}) {
        for (int count = 0; count < 1'000; ++count) {
            EXPECT_TRUE(limiter.Admit(code, kStart));
        }
    }
}

}  // namespace
}  // namespace hexmire::test
