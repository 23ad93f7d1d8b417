#include "LogFixture.h"

#include <chrono>
#include <string>
#include <vector>

// Old files of the daily log go when the day changes. Today is 5 March 2024 at first.

namespace hexmire {
namespace {

using namespace fakes;
using namespace std::chrono_literals;

using std::chrono::day;
using std::chrono::days;
using std::chrono::month;
using std::chrono::sys_days;
using std::chrono::year;
using std::chrono::year_month_day;

TEST_F(LogSweep, TheFirstLineOfANewDayDeletesWhatIsOlderThan360Days) {
    AddFile("C:\\Log\\SECSII_a.log", 359);
    AddFile("C:\\Log\\SECSII_b.log", 360);
    AddFile("C:\\Log\\SECSII_c.log", 1000);
    AddFile("C:\\Log\\SECSII_d.log", 0);
    NextDay();  // All are one day older now.
    EXPECT_TRUE(Has("C:\\Log\\SECSII_a.log"));
    EXPECT_FALSE(Has("C:\\Log\\SECSII_b.log"));
    EXPECT_FALSE(Has("C:\\Log\\SECSII_c.log"));
    EXPECT_TRUE(Has("C:\\Log\\SECSII_d.log"));
    EXPECT_EQ(Files.Deleted, (Texts{"C:\\Log\\SECSII_b.log", "C:\\Log\\SECSII_c.log"}));
}

TEST_F(LogSweep, OnTheDayOfItsCreationNothingIsSwept) {
    AddFile("C:\\Log\\SECSII_old.log", 1000);
    Log.WriteLog("one");
    Clock.SetTimeOfDay(24h - 1ns);
    Log.WriteLog("two");
    EXPECT_TRUE(Has("C:\\Log\\SECSII_old.log"));
    EXPECT_TRUE(Files.Listed.empty());
}

TEST_F(LogSweep, EachDayIsSweptOnceAtItsFirstLine) {
    NextDay();
    ASSERT_EQ(Files.Listed.size(), 1U);
    AddFile("C:\\Log\\SECSII_late.log", 1000);
    Log.WriteLog("second line of the day");
    Clock.SetTimeOfDay(24h - 1ns);
    Log.WriteLog("last line of the day");
    EXPECT_EQ(Files.Listed.size(), 1U);
    EXPECT_TRUE(Has("C:\\Log\\SECSII_late.log"));
    NextDay();
    EXPECT_EQ(Files.Listed.size(), 2U);
    EXPECT_FALSE(Has("C:\\Log\\SECSII_late.log"));
}

TEST_F(LogSweep, DaysWithoutALineAreNotSwept) {
    Clock.Advance(24h * 10);
    EXPECT_TRUE(Files.Listed.empty());
    Log.WriteLog("x");
    EXPECT_EQ(Files.Listed.size(), 1U);
}

TEST_F(LogSweep, AClockThatGoesBackADaySweepsToo) {
    AddFile("C:\\Log\\SECSII_old.log", 1000);
    Clock.Advance(-24h);
    Log.WriteLog("x");
    EXPECT_FALSE(Has("C:\\Log\\SECSII_old.log"));
}

TEST_F(LogSweep, AgeIsCountedInCalendarDays) {
    struct Row {
        year_month_day Modified;
        bool Kept;
    };
    // Today will be 6 March 2024; a leap day lies between.
    const std::vector<Row> rows = {
        {{year{2023}, month{3}, day{12}}, true},
        {{year{2023}, month{3}, day{11}}, false},
        {{year{2023}, month{3}, day{6}}, false},
        {{year{2024}, month{3}, day{6}}, true},
        {{year{2024}, month{3}, day{7}}, true},
        {{year{2099}, month{1}, day{1}}, true},
        {{year{1999}, month{12}, day{31}}, false},
    };
    for (std::size_t row = 0; row < rows.size(); ++row) {
        Files.Files["C:\\Log\\SECSII" + std::to_string(row) + ".log"].Modified = rows[row].Modified;
    }
    NextDay();
    for (std::size_t row = 0; row < rows.size(); ++row) {
        EXPECT_EQ(Has("C:\\Log\\SECSII" + std::to_string(row) + ".log"), rows[row].Kept) << row;
    }
}

TEST_F(LogSweep, TheTimeOfDayDoesNotMatter) {
    AddFile("C:\\Log\\SECSII_a.log", 359);
    AddFile("C:\\Log\\SECSII_b.log", 360);
    Clock.Advance(24h);
    Clock.SetTimeOfDay(1ns);
    Log.WriteLog("x");
    EXPECT_TRUE(Has("C:\\Log\\SECSII_a.log"));
    EXPECT_FALSE(Has("C:\\Log\\SECSII_b.log"));
}

TEST_F(LogSweep, ANameThatIsSetBeforeTheFirstLineTouchesNothing) {
    AddFile("C:\\Log\\SECSII_old.log", 1000);
    AddFile("\\SECSII_old.log", 1000);
    Log.FileName("C:\\Log\\SECSII.log");
    EXPECT_EQ(Files.Deleted, Texts{});
    EXPECT_TRUE(Has("C:\\Log\\SECSII_old.log"));
    EXPECT_TRUE(Has("\\SECSII_old.log"));
    EXPECT_EQ(Errors.Count, 0);
}

TEST_F(LogSweep, ANameThatIsSetAfterALineSweepsAtOnce) {
    Log.WriteLog("x");
    AddFile("C:\\Log\\SECSII_old.log", 361);
    AddFile("C:\\Log\\SECSII_young.log", 360);
    DateWrittenFiles();
    Log.FileName("C:\\Log\\SECSII.log");
    EXPECT_FALSE(Has("C:\\Log\\SECSII_old.log"));
    EXPECT_TRUE(Has("C:\\Log\\SECSII_young.log"));
}

TEST_F(LogSweep, ARefusedOrEmptyNameSweepsNothing) {
    Log.WriteLog("x");
    AddFile("C:\\Log\\SECSII_old.log", 1000);
    Log.FileName("trace.txt");
    Log.FileName("");
    EXPECT_TRUE(Has("C:\\Log\\SECSII_old.log"));
    EXPECT_TRUE(Files.Listed.empty());
}

TEST_F(LogSweep, ANewFolderIsUsedFromItsFirstLineOn) {
    Log.WriteLog("x");
    Files.Directories.insert("C:\\New");
    AddFile("C:\\New\\SECSII_old.log", 1000);
    Log.FileName("C:\\New\\SECSII.log");  // Looks for C:\Log\SECSII_old.log, which is not there.
    EXPECT_TRUE(Has("C:\\New\\SECSII_old.log"));
    EXPECT_EQ(Files.DateAsked, Texts{"C:\\Log\\SECSII_old.log"});
    NextDay();
    EXPECT_FALSE(Has("C:\\New\\SECSII_old.log"));
}

TEST_F(LogSweep, WithoutAFolderNothingIsDeleted) {
    MemoryFiles files;
    CLogFile log(files, Clock, Owner.Ref());
    log.FileName("SECSII.log");
    files.Files["SECSII_old.log"].Modified = year_month_day{year{2000}, month{1}, day{1}};
    files.Files["\\SECSII_old.log"].Modified = year_month_day{year{2000}, month{1}, day{1}};
    for (int count = 0; count < 3; ++count) {
        Clock.Advance(24h);
        log.WriteLog("x");
        log.FileName("SECSII.log");
    }
    EXPECT_EQ(files.Deleted, Texts{});
    EXPECT_EQ(files.Files.size(), 5U);
}

TEST_F(LogSweep, AFileThatCannotBeDeletedEndsTheSweepOfTheDay) {
    AddFile("C:\\Log\\SECSII_a.log", 1000);
    AddFile("C:\\Log\\SECSII_b.log", 1000);
    Files.FailDelete = true;
    NextDay();
    EXPECT_EQ(Files.Deleted, Texts{"C:\\Log\\SECSII_a.log"});
    Files.FailDelete = false;
    Log.WriteLog("same day");
    EXPECT_TRUE(Has("C:\\Log\\SECSII_a.log"));
    EXPECT_TRUE(Has("C:\\Log\\SECSII_b.log"));
    NextDay();
    EXPECT_FALSE(Has("C:\\Log\\SECSII_a.log"));
    EXPECT_FALSE(Has("C:\\Log\\SECSII_b.log"));
    EXPECT_EQ(Errors.Count, 0);
}

TEST_F(LogSweep, AFileWithoutADateEndsTheSweepOfTheDay) {
    AddFile("C:\\Log\\SECSII_a.log", 1000);
    Files.Files["C:\\Log\\SECSII_b.log"].Modified.reset();
    AddFile("C:\\Log\\SECSII_c.log", 1000);
    NextDay();
    EXPECT_FALSE(Has("C:\\Log\\SECSII_a.log"));
    EXPECT_TRUE(Has("C:\\Log\\SECSII_b.log"));
    EXPECT_TRUE(Has("C:\\Log\\SECSII_c.log"));
}

TEST_F(LogSweep, TheLineIsWrittenEvenWhenTheSweepFails) {
    AddFile("C:\\Log\\SECSII_a.log", 1000);
    Files.FailDelete = true;
    NextDay();
    EXPECT_EQ(Files.Files["C:\\Log\\SECSII_2024-03-06.log"].Content,
              "2024/03/06 14:07:09.42 x\r\n");
}

TEST_F(LogSweep, TheSweepComesBeforeTheLine) {
    NextDay();  // Today's file was not there yet when the folder was listed.
    EXPECT_EQ(Files.DateAsked, Texts{});
    EXPECT_TRUE(Has("C:\\Log\\SECSII_2024-03-06.log"));
}

TEST_F(LogSweep, ALineThatIsLostHasSweptAllTheSame) {
    AddFile("C:\\Log\\SECSII_old.log", 1000);
    Files.FailAppend = true;
    NextDay();
    EXPECT_FALSE(Has("C:\\Log\\SECSII_old.log"));
    EXPECT_EQ(Files.Listed.size(), 1U);
    Log.WriteLog("x");
    EXPECT_EQ(Files.Listed.size(), 1U);
}

TEST_F(LogSweep, AFolderThatCannotBeCreatedPutsTheSweepOff) {
    Files.Directories.clear();
    Files.FailCreateDirectory = true;
    NextDay();
    EXPECT_TRUE(Files.Listed.empty());
    Files.FailCreateDirectory = false;
    AddFile("C:\\Log\\SECSII_old.log", 1000);
    Log.WriteLog("x");
    EXPECT_EQ(Files.Listed.size(), 1U);
    EXPECT_FALSE(Has("C:\\Log\\SECSII_old.log"));
}

TEST_F(LogSweep, WithoutANameNothingIsSwept) {
    CLogFile unnamed(Files, Clock, Owner.Ref());
    AddFile("C:\\Log\\SECSII_a.log", 1000);
    AddFile("C:\\Log\\.log", 1000);
    AddFile("SECSII_a.log", 1000);  // What a search of no folder would come upon.
    unnamed.DeleteBackup("C:\\Log");
    EXPECT_EQ(Files.Deleted, Texts{});
    EXPECT_TRUE(Files.Listed.empty());
}

}  // namespace
}  // namespace hexmire
