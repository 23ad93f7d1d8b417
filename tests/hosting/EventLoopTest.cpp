#include <hexmire/hexmire.h>

#include "TempFolder.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <exception>
#include <filesystem>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace hexmire {
namespace {

using namespace std::chrono_literals;
using testing::Contains;
using testing::ElementsAre;

constexpr auto kBound = 10s;  // Only ends a test that fails.

class EventLoopTest : public testing::Test {
protected:
    EventLoop loop_;
    std::vector<std::string> seen_;
};

// --- Running -------------------------------------------------------------------------------------

TEST_F(EventLoopTest, posted_functions_run_in_order_and_never_inside_post) {
    loop_.Post([&] {
        loop_.Post([&] { seen_.emplace_back("inner"); });
        seen_.emplace_back("first");
    });
    loop_.Post([&] { seen_.emplace_back("second"); });
    EXPECT_TRUE(seen_.empty());
    EXPECT_TRUE(loop_.RunUntil([&] { return seen_.size() == 3; }, kBound));
    EXPECT_THAT(seen_, ElementsAre("first", "second", "inner"));
}

TEST_F(EventLoopTest, empty_function_is_not_posted) {
    loop_.Post({});
    loop_.Post([&] { seen_.emplace_back("next"); });
    EXPECT_TRUE(loop_.RunUntil([&] { return !seen_.empty(); }, kBound));
}

TEST_F(EventLoopTest, run_lasts_until_stop) {
    loop_.Post([&] {
        loop_.Stop();
        seen_.emplace_back("stopping");
    });
    loop_.Post([&] { seen_.emplace_back("later"); });
    loop_.Run();
    EXPECT_THAT(seen_, ElementsAre("stopping"));
    EXPECT_TRUE(loop_.RunUntil([&] { return seen_.size() == 2; }, kBound));
}

TEST_F(EventLoopTest, stop_while_nothing_runs_does_nothing) {
    loop_.Stop();
    loop_.Post([&] { seen_.emplace_back("ran"); });
    EXPECT_TRUE(loop_.RunUntil([&] { return !seen_.empty(); }, kBound));
}

TEST_F(EventLoopTest, run_for_lasts_its_time_though_nothing_happens) {
    const auto start = std::chrono::steady_clock::now();
    loop_.RunFor(30ms);
    EXPECT_GE(std::chrono::steady_clock::now() - start, 30ms);
}

TEST_F(EventLoopTest, run_for_no_time_runs_nothing) {
    loop_.Post([&] { seen_.emplace_back("ran"); });
    loop_.RunFor(0s);
    loop_.RunFor(-1s);
    EXPECT_TRUE(seen_.empty());
}

TEST_F(EventLoopTest, run_until_asks_first_and_runs_nothing_when_it_holds) {
    loop_.Post([&] { seen_.emplace_back("ran"); });
    EXPECT_TRUE(loop_.RunUntil([] { return true; }, 0s));
    EXPECT_TRUE(seen_.empty());
}

TEST_F(EventLoopTest, run_until_is_false_when_the_time_has_passed_or_stop_was_called) {
    EXPECT_FALSE(loop_.RunUntil([] { return false; }, 10ms));
    loop_.Post([&] { loop_.Stop(); });
    EXPECT_FALSE(loop_.RunUntil([] { return false; }, std::chrono::nanoseconds::max()));
}

TEST_F(EventLoopTest, handlers_that_post_each_other_do_not_hold_the_time_up) {
    std::function<void()> again = [&] { loop_.Post(again); };
    again();
    loop_.RunFor(10ms);
    EXPECT_FALSE(loop_.RunUntil([] { return false; }, 10ms));
}

TEST_F(EventLoopTest, loop_refuses_to_run_inside_itself) {
    loop_.Post([&] { loop_.RunFor(1ms); });
    EXPECT_THROW(loop_.Run(), std::logic_error);
    loop_.Post([&] { seen_.emplace_back("alive"); });
    EXPECT_TRUE(loop_.RunUntil([&] { return !seen_.empty(); }, kBound));
}

// --- Exceptions ----------------------------------------------------------------------------------

TEST_F(EventLoopTest, exception_of_a_posted_function_comes_out_of_run_and_nothing_else_is_lost) {
    loop_.Post([] { throw std::runtime_error("posted"); });
    loop_.Post([&] { seen_.emplace_back("next"); });
    EXPECT_THROW(loop_.Run(), std::runtime_error);
    EXPECT_TRUE(loop_.RunUntil([&] { return !seen_.empty(); }, kBound));
}

TEST_F(EventLoopTest, exception_handler_takes_what_would_come_out_of_run) {
    loop_.OnException([&](const std::exception_ptr& thrown) {
        try {
            std::rethrow_exception(thrown);
        } catch (const std::exception& exception) {
            seen_.emplace_back(exception.what());
        }
    });
    loop_.Post([] { throw std::runtime_error("one"); });
    loop_.Post([] { throw std::runtime_error("two"); });
    EXPECT_TRUE(loop_.RunUntil([&] { return seen_.size() == 2; }, kBound));
    EXPECT_THAT(seen_, ElementsAre("one", "two"));
}

TEST_F(EventLoopTest, exception_handler_may_take_itself_back_and_throw) {
    loop_.OnException([&](const std::exception_ptr& thrown) {
        loop_.OnException({});
        std::rethrow_exception(thrown);
    });
    for (int i = 0; i < 2; ++i) {
        loop_.Post([] { throw std::runtime_error("posted"); });
        EXPECT_THROW(loop_.Run(), std::runtime_error);
    }
}

TEST_F(EventLoopTest, exception_of_the_predicate_comes_out_and_the_loop_can_run_again) {
    EXPECT_THROW(loop_.RunUntil([]() -> bool { throw std::runtime_error("asked"); }, 1s),
                 std::runtime_error);
    EXPECT_TRUE(loop_.RunUntil([] { return true; }, 1s));
}

// --- Threads -------------------------------------------------------------------------------------

TEST_F(EventLoopTest, post_is_legal_from_many_threads_while_the_loop_runs) {
    constexpr int kThreads = 4;
    constexpr int kPosts = 500;
    int count = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i)
        threads.emplace_back([&] {
            for (int j = 0; j < kPosts; ++j)
                loop_.Post([&] { ++count; });
        });
    EXPECT_TRUE(loop_.RunUntil([&] { return count == kThreads * kPosts; }, kBound));
    for (std::thread& thread : threads)
        thread.join();
}

#ifndef NDEBUG
using EventLoopDeathTest = EventLoopTest;

TEST_F(EventLoopDeathTest, debug_build_stops_at_a_call_from_another_thread) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_DEATH(std::thread([&] { loop_.RunFor(1ms); }).join(),
                 "on the thread that made the loop");
    EXPECT_DEATH(std::thread([&] { loop_.Stop(); }).join(), "on the thread that made the loop");
    EXPECT_DEATH(std::thread([&] { static_cast<void>(loop_.Platform()); }).join(),
                 "on the thread that made the loop");
}
#endif

// --- Controls on the loop ------------------------------------------------------------------------

TEST_F(EventLoopTest, platform_carries_the_folder_of_the_executable_and_the_options) {
    EXPECT_EQ(loop_.Platform().ApplicationFolder,
              std::filesystem::read_symlink("/proc/self/exe").parent_path().string());
    EXPECT_TRUE(loop_.Platform().MessageLog);
    const Platform platform =
        loop_.Platform(PlatformOptions{.ApplicationFolder = "C:\\App", .MessageLog = false});
    EXPECT_EQ(platform.ApplicationFolder, "C:\\App");
    EXPECT_FALSE(platform.MessageLog);
}

TEST_F(EventLoopTest, changed_properties_of_a_control_are_told_to_the_observer) {
    PlatformOptions options;
    options.PropertyChanged = [&](std::string_view name) { seen_.emplace_back(name); };
    Hexmire control(loop_.Platform(options));
    control.DeviceID(7);
    control.DeviceID(-1);  // Refused.
    EXPECT_THAT(seen_, ElementsAre("DeviceID"));
}

TEST_F(EventLoopTest, each_platform_has_its_own_container) {
    EXPECT_NE(&loop_.Platform().Container, &loop_.Platform().Container);
}

TEST_F(EventLoopTest, controls_one_after_the_other_get_the_same_container) {
    PlatformOptions options{.MessageLog = false};
    const IContainer* first = nullptr;
    for (int i = 0; i < 1'000; ++i) {
        const Platform platform = loop_.Platform(options);
        if (first == nullptr) first = &platform.Container;
        EXPECT_EQ(&platform.Container, first);
        const Hexmire control(platform);
    }
}

TEST_F(EventLoopTest, exception_of_a_tick_comes_out_of_run_and_the_timer_goes_on) {
    const Platform platform = loop_.Platform();
    int ticks = 0;
    platform.Container.StartTimer(1ms, [&] {
        if (++ticks == 1) throw std::runtime_error("tick");
    });
    EXPECT_THROW(loop_.Run(), std::runtime_error);
    EXPECT_TRUE(loop_.RunUntil([&] { return ticks == 3; }, kBound));
    platform.Container.StopTimer();
}

TEST_F(EventLoopTest, control_may_be_terminated_from_a_posted_function) {
    auto control = std::make_unique<Hexmire>(loop_.Platform(PlatformOptions{.MessageLog = false}));
    loop_.Post([&] {
        control->ControlTerminate();
        control->OpenPort();  // It is inert.
        seen_.emplace_back("terminated");
    });
    loop_.Post([&] { control.reset(); });
    EXPECT_TRUE(loop_.RunUntil([&] { return control == nullptr; }, kBound));
}

TEST_F(EventLoopTest, handler_of_a_control_that_throws_is_an_error_and_leaves_the_loop_alone) {
    Hexmire control(loop_.Platform(PlatformOptions{.MessageLog = false}));
    control.ConnectionPortType(PortTypeHSMS_SS);
    control.HSMSConnectionType(ConnectionModePassive);
    control.LocalIPPort(70'000);  // No such port: OpenPort tells so by an error.
    control.Events().Error = [&](std::int32_t code, const std::string&, std::int32_t) {
        seen_.push_back(std::to_string(code));
        if (code == 3056) throw std::runtime_error("handler");
    };
    control.OpenPort();
    EXPECT_TRUE(loop_.RunUntil([&] { return !seen_.empty(); }, kBound));
    EXPECT_THAT(seen_, Contains("3056"));
    loop_.RunFor(1ms);
}

}  // namespace
}  // namespace hexmire
