// The timers of one link: one deadline each, the earliest first.
#include <hexmire/hosting/links/TimerQueue.h>

#include <gtest/gtest.h>

namespace hexmire::test {
namespace {

using namespace std::chrono_literals;
using link::TimerId;

const link::TimePoint kStart{1h};

TEST(TimerQueue, TheEarliestDeadlineComesFirst) {
    link::TimerQueue timers;
    EXPECT_FALSE(timers.NextDeadline());
    timers.Start(TimerId::T7, 10s, kStart);
    timers.Start(TimerId::T6, 5s, kStart);
    EXPECT_EQ(timers.NextDeadline(), kStart + 5s);
    EXPECT_FALSE(timers.NextDue(kStart + 4999ms));
    EXPECT_EQ(timers.NextDue(kStart + 20s), TimerId::T6);
    timers.Stop(TimerId::T6);
    EXPECT_EQ(timers.NextDue(kStart + 20s), TimerId::T7);
}

TEST(TimerQueue, StartingAgainMovesTheDeadline) {
    link::TimerQueue timers;
    timers.Start(TimerId::T8, 5s, kStart);
    timers.Start(TimerId::T8, 5s, kStart + 4s);
    EXPECT_FALSE(timers.IsDue(TimerId::T8, kStart + 8s));
    timers.Restart(TimerId::T8, kStart + 9s);
    EXPECT_TRUE(timers.IsDue(TimerId::T8, kStart + 14s));
    EXPECT_FALSE(timers.IsDue(TimerId::T8, kStart + 13s));
}

TEST(TimerQueue, StoppingAnIdleTimerIsANoOp) {
    link::TimerQueue timers;
    timers.Stop(TimerId::T5);
    timers.Start(TimerId::T5, 1s, kStart);
    timers.StopAll();
    EXPECT_FALSE(timers.NextDeadline());
}

}  // namespace
}  // namespace hexmire::test
