// Work on a thread of its own, told of on the loop's.
#include <hexmire/hosting/links/FileWorker.h>

#include "HeldFiles.h"
#include "LinkRig.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <atomic>
#include <stdexcept>

namespace hexmire::test {
namespace {

using namespace std::chrono_literals;
using link::FileWorker;
using testing::ElementsAre;

class FileWorkerTest : public testing::Test {
protected:
    void Post(std::string failure) {
        worker_.Post([failure = std::move(failure)] { return failure; },
                     [this](const std::string& told) { told_.push_back(told); });
    }

    LinkRig rig_;
    std::vector<std::string> told_;
    FileWorker worker_{rig_.Loop};
};

TEST_F(FileWorkerTest, WorkIsDoneInItsOrderAndToldOnTheLoopsThread) {
    // Written by the worker, read when all has been told.
    std::vector<int> done;
    std::thread::id thread;
    const std::thread::id here = std::this_thread::get_id();
    for (int count = 0; count < 100; ++count) {
        worker_.Post(
            [&, count] {
                done.push_back(count);
                thread = std::this_thread::get_id();
                return std::to_string(count);
            },
            [&](const std::string& failure) {
                EXPECT_EQ(here, std::this_thread::get_id());
                told_.push_back(failure);
            });
    }
    EXPECT_TRUE(told_.empty()) << "never from inside a call";
    ASSERT_TRUE(rig_.RunUntil([&] { return told_.size() == 100; }));
    EXPECT_NE(here, thread);
    for (std::size_t count = 0; count < 100; ++count) {
        EXPECT_EQ(done.at(count), static_cast<int>(count));
        EXPECT_EQ(told_.at(count), std::to_string(count));
    }
}

TEST_F(FileWorkerTest, WorkThatThrowsHasFailed) {
    worker_.Post([]() -> std::string { throw std::runtime_error("disk"); },
                 [this](const std::string& failure) { told_.push_back(failure); });
    Post("");
    ASSERT_TRUE(rig_.RunUntil([&] { return told_.size() == 2; }));
    EXPECT_THAT(told_, ElementsAre("failed", ""));
}

TEST_F(FileWorkerTest, FinishWaitsForEverythingAndTellsNothing) {
    std::atomic<int> done = 0;
    for (int count = 0; count < 1'000; ++count) {
        worker_.Post(
            [&done] {
                ++done;
                return std::string();
            },
            [](const std::string&) { ADD_FAILURE() << "told after Finish"; });
    }
    EXPECT_TRUE(worker_.Finish(10s));
    EXPECT_EQ(done, 1'000);
    Post("late");
    rig_.RunFor(2ms);
    EXPECT_TRUE(told_.empty());
    EXPECT_TRUE(worker_.Finish(10s)) << "a second time changes nothing";
}

TEST_F(FileWorkerTest, FinishWithoutWorkStartsNoThread) { EXPECT_TRUE(worker_.Finish(0s)); }

TEST_F(FileWorkerTest, ADiskThatHangsIsLeftBehind) {
    const auto files = std::make_shared<HeldFiles>();
    files->Hold();
    auto left = std::make_unique<FileWorker>(rig_.Loop);
    for (const char* name : {"first", "second"}) {
        left->Post([files, name] { return files->Store("", name, ""); },
                   [](const std::string&) { ADD_FAILURE() << "told after its end"; });
    }
    ASSERT_TRUE(rig_.RunUntil([&] { return files->IsWaiting(); }));
    EXPECT_FALSE(left->Finish(1ms));
    left.reset();
    files->Release();
    ASSERT_TRUE(rig_.RunUntil([&] { return files->Writes() == 1; }));
    EXPECT_EQ(files->Files().count("/second"), 0U) << "what waited is dropped";
}

TEST_F(FileWorkerTest, SignalsOfTheProcessAreNotHandledOnItsThread) {
    sigset_t blocked;
    ::sigemptyset(&blocked);
    worker_.Post(
        [&blocked] {
            ::pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
            return std::string();
        },
        [this](const std::string& failure) { told_.push_back(failure); });
    ASSERT_TRUE(rig_.RunUntil([&] { return told_.size() == 1; }));
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGCHLD, SIGUSR1}) {
        EXPECT_EQ(::sigismember(&blocked, signal), 1) << signal;
    }
    sigset_t here;
    ::pthread_sigmask(SIG_SETMASK, nullptr, &here);
    EXPECT_EQ(::sigismember(&here, SIGTERM), 0) << "the loop's thread keeps its own";
}

}  // namespace
}  // namespace hexmire::test
