#include <hexmire/hosting/ContainerPool.h>
#include <hexmire/hosting/LoopContainer.h>

#include <asio/io_context.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace hexmire {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

class LoopContainerTest : public testing::Test {
protected:
    /// Runs handlers until the condition holds; the bound only ends a test that fails.
    template <class Condition>
    bool Until(Condition condition) {
        const auto end = std::chrono::steady_clock::now() + 10s;
        while (!condition() && std::chrono::steady_clock::now() < end) {
            loop_.restart();
            loop_.run_one_for(10ms);
        }
        return condition();
    }

    asio::io_context loop_{1};
    std::shared_ptr<ContainerPool> pool_ = std::make_shared<ContainerPool>(loop_);
    ContainerPool::Leased leased_ = pool_->Take({});
    LoopContainer& container_ = leased_.Container;
};

TEST_F(LoopContainerTest, timer_ticks_again_and_again) {
    int ticks = 0;
    container_.StartTimer(1ms, [&] { ++ticks; });
    EXPECT_EQ(ticks, 0);
    EXPECT_TRUE(Until([&] { return ticks >= 3; }));
}

TEST_F(LoopContainerTest, timer_keeps_to_its_period) {
    const auto start = std::chrono::steady_clock::now();
    int ticks = 0;
    container_.StartTimer(20ms, [&] { ++ticks; });
    EXPECT_TRUE(Until([&] { return ticks == 3; }));
    EXPECT_GE(std::chrono::steady_clock::now() - start, 60ms);
}

TEST_F(LoopContainerTest, timers_of_one_period_tick_in_a_few_groups) {
    constexpr std::size_t kTimers = 300;
    std::vector<ContainerPool::Leased> leases;
    std::size_t ticks = 0;
    const auto start = std::chrono::steady_clock::now();
    for (std::size_t count = 0; count < kTimers; ++count) {
        leases.push_back(pool_->Take({}));
        leases.back().Container.StartTimer(320ms, [&] { ++ticks; });
    }
    // Those that were started within a tenth of the period are due in a few wake-ups.
    const auto started = std::chrono::steady_clock::now() - start;
    int wakeups = 0;
    const auto end = start + 10s;
    while (ticks < kTimers && std::chrono::steady_clock::now() < end) {
        loop_.restart();
        loop_.run_one_for(10s);
        loop_.restart();
        loop_.poll();
        ++wakeups;
    }
    EXPECT_GE(std::chrono::steady_clock::now() - start, 320ms);
    EXPECT_GE(ticks, kTimers);
    EXPECT_LE(wakeups, 2 * (started / 10ms + 2));
    for (ContainerPool::Leased& leased : leases)
        leased.Container.StopTimer();
}

TEST_F(LoopContainerTest, ticks_that_were_missed_are_left_out) {
    int ticks = 0;
    container_.StartTimer(1ms, [&] {
        const auto end = std::chrono::steady_clock::now() + 30ms;
        while (ticks == 0 && std::chrono::steady_clock::now() < end) {
        }
        ++ticks;
    });
    EXPECT_TRUE(Until([&] { return ticks == 1; }));
    loop_.restart();
    loop_.poll();
    EXPECT_LE(ticks, 3);  // Not the thirty that fell into the long one.
}

TEST_F(LoopContainerTest, stop_ends_the_ticks_even_those_already_due) {
    int ticks = 0;
    container_.StartTimer(1ms, [&] { ++ticks; });
    const auto due = std::chrono::steady_clock::now() + 5ms;
    while (std::chrono::steady_clock::now() < due) {
    }
    container_.StopTimer();
    container_.StopTimer();
    loop_.run();  // Nothing is left to wait for.
    EXPECT_EQ(ticks, 0);
    EXPECT_FALSE(container_.IsRunning());
}

TEST_F(LoopContainerTest, tick_may_stop_its_own_timer) {
    int ticks = 0;
    container_.StartTimer(1ms, [&, guard = std::make_shared<int>(7)] {
        container_.StopTimer();
        ticks += *guard;  // The function outlives its own end.
    });
    loop_.run();
    EXPECT_EQ(ticks, 7);
}

TEST_F(LoopContainerTest, starting_again_replaces_period_and_function) {
    std::vector<int> ticks;
    container_.StartTimer(1ms, [&] { ticks.push_back(1); });
    container_.StartTimer(2ms, [&] {
        ticks.push_back(2);
        container_.StartTimer(1ms, [&] {
            ticks.push_back(3);
            container_.StopTimer();
        });
    });
    loop_.run();
    EXPECT_THAT(ticks, ElementsAre(2, 3));
}

TEST_F(LoopContainerTest, tick_that_throws_does_not_end_the_timer) {
    int ticks = 0;
    container_.StartTimer(1ms, [&] {
        if (++ticks == 1) throw std::runtime_error("tick");
        container_.StopTimer();
    });
    EXPECT_THROW(loop_.run(), std::runtime_error);
    loop_.run();
    EXPECT_EQ(ticks, 2);
}

TEST_F(LoopContainerTest, unload_runs_the_callback_at_once) {
    int unloaded = 0;
    container_.Unload([&] { ++unloaded; });
    EXPECT_EQ(unloaded, 1);
    container_.Unload({});
}

TEST_F(LoopContainerTest, changed_properties_are_told_to_the_observer) {
    container_.PropertyChanged("DeviceID");  // Nobody listens.
    std::vector<std::string> names;
    container_.Observe([&](std::string_view name) {
        names.emplace_back(name);
        if (name == "T3Timeout") container_.Observe({});
    });
    for (const char* name : {"DeviceID", "T3Timeout", "T5Timeout"})
        container_.PropertyChanged(name);
    EXPECT_THAT(names, ElementsAre("DeviceID", "T3Timeout"));
}

TEST(ContainerPool, ten_thousand_controls_one_after_the_other_share_one_container) {
    asio::io_context loop(1);
    const auto pool = std::make_shared<ContainerPool>(loop);
    for (int i = 0; i < 10'000; ++i) {
        const auto leased = pool->Take({});
        leased.Container.StartTimer(500ms, [] {});
        leased.Container.StopTimer();
    }
    EXPECT_EQ(pool->Size(), 1U);
}

TEST(ContainerPool, controls_at_the_same_time_have_their_own) {
    asio::io_context loop(1);
    const auto pool = std::make_shared<ContainerPool>(loop);
    std::vector<ContainerPool::Leased> leased;
    for (int i = 0; i < 100; ++i)
        leased.push_back(pool->Take({}));
    EXPECT_EQ(pool->Size(), 100U);
    leased.clear();
    for (int i = 0; i < 100; ++i)
        leased.push_back(pool->Take({}));
    EXPECT_EQ(pool->Size(), 100U);
}

TEST(ContainerPool, container_whose_timer_runs_is_not_handed_out_though_its_platform_is_gone) {
    asio::io_context loop(1);
    const auto pool = std::make_shared<ContainerPool>(loop);
    auto first = pool->Take({});
    first.Container.StartTimer(500ms, [] {});
    first.Lease.reset();
    EXPECT_NE(&pool->Take({}).Container, &first.Container);
    first.Container.StopTimer();
    EXPECT_TRUE(&pool->Take({}).Container == &first.Container ||
                &pool->Take({}).Container == &first.Container);
    EXPECT_EQ(pool->Size(), 2U);
}

TEST(ContainerPool, container_that_was_started_again_after_it_was_given_back_stays_where_it_is) {
    asio::io_context loop(1);
    const auto pool = std::make_shared<ContainerPool>(loop);
    auto first = pool->Take({});
    first.Lease.reset();
    first.Container.StartTimer(500ms, [] {});
    EXPECT_NE(&pool->Take({}).Container, &first.Container);
}

TEST(ContainerPool, platform_may_outlive_the_loop) {
    std::shared_ptr<void> lease;
    {
        asio::io_context loop(1);
        lease = std::make_shared<ContainerPool>(loop)->Take({}).Lease;
    }
    lease.reset();
    EXPECT_EQ(lease, nullptr);
}

}  // namespace
}  // namespace hexmire
