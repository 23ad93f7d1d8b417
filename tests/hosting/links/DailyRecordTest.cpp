// A record that goes on from day to day, and what a bad disk costs it.
#include <hexmire/hosting/links/DailyRecord.h>

#include "HeldFiles.h"
#include "LinkRig.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

namespace hexmire::test {
namespace {

using namespace std::chrono_literals;
using link::DailyRecord;
using link::FileWorker;
using std::chrono::day;
using std::chrono::month;
using std::chrono::year;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

constexpr std::chrono::year_month_day kDay{year(2024), month(3), day(5)};
constexpr std::chrono::year_month_day kNextDay{year(2024), month(3), day(6)};

class DailyRecordTest : public testing::Test {
protected:
    ~DailyRecordTest() override { files_->Release(); }

    void SetUp() override { record_.Place("/logs/a", "start "); }
    /// Adds an entry, hands it over and lets the loop hear what became of it.
    void Write(const std::string& entry) {
        const int before = files_->Writes();
        record_.Add(entry, kDay);
        record_.HandOver();
        ASSERT_TRUE(rig_.RunUntil([&] { return files_->Writes() > before; }));
        Settle();
    }
    /// Until the worker has told of everything.
    void Settle() {
        bool told = false;
        worker_.Post([] { return std::string(); }, [&](const std::string&) { told = true; });
        ASSERT_TRUE(rig_.RunUntil([&] { return told; }));
    }

    LinkRig rig_;
    std::shared_ptr<HeldFiles> files_ = std::make_shared<HeldFiles>();
    std::vector<std::string> failures_;
    std::uint64_t lost_ = 0;
    FileWorker worker_{rig_.Loop};
    DailyRecord record_{
        worker_,
        files_,
        {.Extension = ".log",
         .Gap = [](std::uint64_t lost) { return "(" + std::to_string(lost) + " lost) "; }},
        lost_,
        [this](const std::string& what) { failures_.push_back(what); }};
};

TEST_F(DailyRecordTest, EntriesGoToTheFileOfTheirDayWhichBeginsWithItsStart) {
    record_.Add("one ", kDay);
    record_.Add("two ", kDay);
    record_.Add("three ", kNextDay);
    record_.HandOver();
    Settle();
    EXPECT_THAT(files_->Files(),
                ElementsAre(Pair("/logs/a_2024-03-05.log", "start one two "),
                            Pair("/logs/a_2024-03-06.log", "start three ")));
    EXPECT_THAT(failures_, IsEmpty());
    EXPECT_EQ(lost_, 0U);
}

TEST_F(DailyRecordTest, NothingGatheredIsNothingWritten) {
    record_.Flush();
    record_.HandOver();
    Settle();
    EXPECT_EQ(files_->Writes(), 0);
}

TEST_F(DailyRecordTest, WhatWasGatheredBeforeAMoveStaysAtTheOldPlace) {
    record_.Add("one ", kDay);
    record_.Place("/logs/b");
    record_.Add("two ", kDay);
    record_.HandOver();
    Settle();
    EXPECT_THAT(files_->Files(),
                ElementsAre(Pair("/logs/a_2024-03-05.log", "start one "),
                            Pair("/logs/b_2024-03-05.log", "two ")));
}

TEST_F(DailyRecordTest, ASlowDiskGetsFewLargePieces) {
    files_->Hold();
    for (int count = 0; count < 1'000; ++count) {
        record_.Add("x", kDay);
        record_.Flush();
    }
    files_->Release();
    ASSERT_TRUE(rig_.RunUntil([&] { return files_->Writes() == 2; }));
    Settle();
    EXPECT_EQ(files_->Writes(), 2) << "the first entry, and all that came while it was written";
    EXPECT_THAT(files_->Files(),
                ElementsAre(Pair("/logs/a_2024-03-05.log", "start " + std::string(1'000, 'x'))));
}

TEST_F(DailyRecordTest, AFailureIsToldOnceAndAgainAfterASuccess) {
    files_->Fail("full");
    Write("one ");
    Write("two ");
    EXPECT_THAT(failures_, ElementsAre("/logs/a_2024-03-05.log: full"));
    EXPECT_EQ(lost_, 2U);
    files_->Fail("");
    Write("three ");
    Write("four ");
    EXPECT_THAT(failures_, ElementsAre("/logs/a_2024-03-05.log: full"));
    files_->Fail("full again");
    Write("five ");
    Write("six ");
    EXPECT_THAT(failures_,
                ElementsAre("/logs/a_2024-03-05.log: full", "/logs/a_2024-03-05.log: full again"));
    files_->Fail("");
    Write("seven ");
    EXPECT_THAT(
        files_->Files(),
        ElementsAre(Pair("/logs/a_2024-03-05.log", "start (2 lost) three four (2 lost) seven ")));
    EXPECT_EQ(lost_, 4U);
}

TEST_F(DailyRecordTest, AGapThatCouldNotBeToldIsToldLater) {
    files_->Fail("full");
    Write("one ");
    Write("two ");
    Write("three ");
    files_->Fail("");
    Write("four ");
    EXPECT_THAT(files_->Files(),
                ElementsAre(Pair("/logs/a_2024-03-05.log", "start (3 lost) four ")));
}

TEST_F(DailyRecordTest, EachPlaceTellsItsFailuresAnew) {
    files_->Fail("full");
    Write("one ");
    record_.Place("/logs/b");
    Write("two ");
    Write("three ");
    EXPECT_THAT(failures_,
                ElementsAre("/logs/a_2024-03-05.log: full", "/logs/b_2024-03-05.log: full"));
}

TEST_F(DailyRecordTest, MidnightDoesNotTellTheSameFailureAgain) {
    files_->Fail("full");
    Write("one ");
    record_.Add("two ", kNextDay);
    record_.HandOver();
    Settle();
    EXPECT_THAT(failures_, ElementsAre("/logs/a_2024-03-05.log: full"));
}

TEST_F(DailyRecordTest, WhatWaitsIsBounded) {
    files_->Hold();
    const std::string megabyte(std::size_t{1} << 20U, 'x');
    for (int count = 0; count < 70; ++count) {
        record_.Add(megabyte, kDay);
        record_.Flush();
    }
    EXPECT_EQ(lost_, 6U);
    files_->Release();
    Settle();
    Settle();
    Write("y");
    const std::string file = files_->Files().begin()->second;
    EXPECT_EQ(file.size(), 6 + 64 * megabyte.size() + std::string("(6 lost) ").size() + 1);
    EXPECT_THAT(failures_, IsEmpty()) << "the disk is slow, not bad";
}

}  // namespace
}  // namespace hexmire::test
