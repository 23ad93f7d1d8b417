#include "../fakes/HeapInUse.h"
#include "LogFixture.h"

#include <chrono>
#include <string>
#include <vector>

// Names and lines of the daily log. The clock stands at 2024-03-05 14:07:09.42 at first.

namespace hexmire {
namespace {

using namespace fakes;
using namespace std::chrono_literals;

class UnnamedLogFile : public LogFile {
protected:
    UnnamedLogFile() : LogFile("") {}
};

// --- The name
// -------------------------------------------------------------------------------------

TEST_F(UnnamedLogFile, HasAnEmptyNameAndWritesNothingAtAll) {
    EXPECT_EQ(Log.FileName(), "");
    Log.WriteLog("text");
    Clock.Advance(24h);
    Log.WriteLog("text");
    EXPECT_EQ(Files.Appends, 0);
    EXPECT_EQ(Files.Created, Texts{});
    EXPECT_TRUE(Files.Listed.empty());
    EXPECT_EQ(Errors.Errors, Texts{});
}

TEST_F(UnnamedLogFile, TakesAnyNameThatContainsTheExtension) {
    for (const char* name : {"trace.log",
                             "trace.LOG",
                             "trace.Log",
                             "a.log.txt",
                             "C:\\x.logs\\y",
                             ".log",
                             "x.logfile",
                             "C:\\Log\\.lOg.d\\x",
                             "/var/log/x.log"}) {
        Log.FileName(name);
        EXPECT_EQ(Log.FileName(), name);
    }
    EXPECT_EQ(Errors.Errors, Texts{});
}

TEST_F(UnnamedLogFile, RefusesAnyOtherName) {
    for (const char* name : {"trace.txt",
                             "trace",
                             "log",
                             "tracelog",
                             "trace.lo",
                             "trace. log",
                             "C:\\Log\\SECSII",
                             " ",
                             ".l.og",
                             "trace.lög"}) {
        Errors.Errors.clear();
        Log.FileName(name);
        EXPECT_EQ(Log.FileName(), "");
        EXPECT_EQ(Errors.Errors, Texts{kNoExtension});
    }
}

TEST_F(LogFile, KeepsItsNameWhenAnotherIsRefused) {
    Log.FileName("C:\\Log\\trace.txt");
    EXPECT_EQ(Log.FileName(), "C:\\Log\\SECSII.log");
    EXPECT_EQ(Errors.Errors, Texts{kNoExtension});
    Log.WriteLog("x");
    EXPECT_EQ(Paths(), Texts{"C:\\Log\\SECSII_2024-03-05.log"});
}

TEST_F(LogFile, IgnoresAnEmptyNameWithoutError) {
    Log.FileName("");
    EXPECT_EQ(Log.FileName(), "C:\\Log\\SECSII.log");
    EXPECT_EQ(Errors.Errors, Texts{});
}

TEST_F(LogFile, RefusesWithoutAnybodyToTell) {
    CLogFile alone(Files, Clock, SiteRef());
    alone.FileName("trace.txt");
    EXPECT_EQ(alone.FileName(), "");
    EXPECT_EQ(Errors.Errors, Texts{});
}

TEST_F(LogFile, MayBeNamedAnewInsideTheError) {
    Errors.OnError = [&] { Log.FileName("C:\\Log\\other.log"); };
    Log.FileName("trace.txt");
    EXPECT_EQ(Log.FileName(), "C:\\Log\\other.log");
    EXPECT_EQ(Errors.Errors.size(), 1U);
}

TEST_F(LogFile, TakesTheDateInPlaceOfTheLastFourCharactersOfItsName) {
    EXPECT_EQ(Written("C:\\Log\\SECSII.log"), Texts{"C:\\Log\\SECSII_2024-03-05.log"});
    EXPECT_EQ(Written("trace.LOG"), Texts{"trace_2024-03-05.log"});
    EXPECT_EQ(Written("a.log.txt"), Texts{"a.log_2024-03-05.log"});
    EXPECT_EQ(Written("x.logfile"), Texts{"x.log_2024-03-05.log"});
    EXPECT_EQ(Written(".log"), Texts{"_2024-03-05.log"});
    EXPECT_EQ(Written("C:\\Log\\.log"), Texts{"C:\\Log\\_2024-03-05.log"});
    EXPECT_EQ(Written("C:\\SECSII.log"), Texts{"C:\\SECSII_2024-03-05.log"});
    EXPECT_EQ(Written("\\\\server\\share\\x.log"), Texts{"\\\\server\\share\\x_2024-03-05.log"});
    EXPECT_EQ(Written("/var/log/x.log"), Texts{"/var/log/x_2024-03-05.log"});
    EXPECT_EQ(Written("C:\\a/b\\x.log"), Texts{"C:\\a/b\\x_2024-03-05.log"});
    EXPECT_EQ(Written("C:/a/x.log"), Texts{"C:/a/x_2024-03-05.log"});
    EXPECT_EQ(Written("x.logs"), Texts{"x._2024-03-05.log"});
    EXPECT_EQ(Written("C:\\Log\\a.log.LOG"), Texts{"C:\\Log\\a.log_2024-03-05.log"});
    // The extension in the folder's name: the last four characters reach into it.
    EXPECT_EQ(Written("C:\\my.logs\\x"), Texts{"C:\\my.lo_2024-03-05.log"});
    EXPECT_EQ(Written("C:\\my.log\\ab"), Texts{"C:\\my.lo_2024-03-05.log"});
    EXPECT_EQ(Written("C:\\my.log\\"), Texts{"C:\\my._2024-03-05.log"});
}

TEST_F(LogFile, WritesUnderANewNameFromTheNextLineOn) {
    Log.WriteLog("one");
    Log.FileName("C:\\Log\\other.log");
    Log.WriteLog("two");
    EXPECT_EQ(Paths(), (Texts{"C:\\Log\\SECSII_2024-03-05.log", "C:\\Log\\other_2024-03-05.log"}));
}

// --- Lines
// ----------------------------------------------------------------------------------------

TEST_F(LogFile, WritesDateTimeHundredthsAndTheText) {
    Log.WriteLog("SECS I DATALEN Send : 12");
    EXPECT_EQ(Today(), "2024/03/05 14:07:09.42 SECS I DATALEN Send : 12\r\n");
}

TEST_F(LogFile, AppendsLineByLineInOrder) {
    Log.WriteLog("one");
    Clock.Advance(1500ms);
    Log.WriteLog("two");
    EXPECT_EQ(Today(), "2024/03/05 14:07:09.42 one\r\n2024/03/05 14:07:10.92 two\r\n");
    EXPECT_EQ(Files.Appends, 2);
}

TEST_F(LogFile, TakesTheTextAsItIs) {
    Log.WriteLog("");
    Log.WriteLog(" blanks ");
    Log.WriteLog("S1F1 W\r\n.");
    Log.WriteLog("\xE4\xFF\t%s%n");
    Log.WriteLog(std::string_view("a\0b", 3));
    const std::string stamp = "2024/03/05 14:07:09.42 ";
    EXPECT_EQ(Today(),
              stamp + "\r\n" + stamp + " blanks \r\n" + stamp + "S1F1 W\r\n.\r\n" + stamp +
                  "\xE4\xFF\t%s%n\r\n" + stamp + std::string("a\0b", 3) + "\r\n");
}

TEST_F(LogFile, TakesALongText) {
    const std::string text(1000000, 'x');
    Log.WriteLog(text);
    EXPECT_EQ(Today(), "2024/03/05 14:07:09.42 " + text + "\r\n");
}

TEST_F(LogFile, ALongTextLeavesNoMemoryBehind) {
    constexpr std::size_t kLong = std::size_t{8} << 20U;
    Log.WriteLog("first");
    const std::size_t before = fakes::HeapInUse();
    Log.WriteLog(std::string(kLong, 'x'));
    EXPECT_GT(Today().size(), kLong);
    Files.Files.clear();
    EXPECT_LT(fakes::HeapInUse(), before + kLong / 4);
}

TEST_F(LogFile, WritesTwoDigitsEachWhateverTheTime) {
    struct Row {
        std::chrono::nanoseconds Time;
        const char* Text;
    };
    const std::vector<Row> rows = {
        {0ns, "00:00:00.00"},
        {9ms, "00:00:00.01"},
        {1s, "00:00:01.00"},
        {59s + 990ms, "00:00:59.99"},
        {1min, "00:01:00.00"},
        {1h + 2min + 3s + 40ms, "01:02:03.04"},
        {9h + 59min + 59s + 500ms, "09:59:59.50"},
        {12h, "12:00:00.00"},
        {23h + 59min + 59s + 990ms, "23:59:59.99"},
    };
    std::string expected;
    for (const Row& row : rows) {
        Clock.SetTimeOfDay(row.Time);
        Log.WriteLog("x");
        expected += std::string("2024/03/05 ") + row.Text + " x\r\n";
    }
    EXPECT_EQ(Today(), expected);
}

TEST_F(LogFile, RoundsTheHundredthsButNeverCarriesThemIntoTheSeconds) {
    struct Row {
        std::chrono::nanoseconds Fraction;
        const char* Hundredths;
    };
    const std::vector<Row> rows = {
        {4ms, "00"},
        {4999999ns, "00"},
        {5ms, "01"},
        {6ms, "01"},
        {14999us, "01"},
        {15ms, "02"},
        {15001us, "02"},
        {25ms, "03"},
        {424ms, "42"},
        {426ms, "43"},
        {994ms, "99"},
        {994999us, "99"},
        {995ms, "00"},
        {995001us, "00"},
        {999ms, "00"},
        {999999999ns, "00"},
        {104999999ns, "10"},
    };
    for (const Row& row : rows) {
        Clock.SetTimeOfDay(14h + 7min + 9s + row.Fraction);
        Files.Files.clear();
        Log.WriteLog("x");
        EXPECT_EQ(Today(), std::string("2024/03/05 14:07:09.") + row.Hundredths + " x\r\n");
    }
}

TEST_F(LogFile, TheLastHundredthOfADayStaysOnItsDay) {
    Clock.SetTimeOfDay(24h - 1ns);
    Log.WriteLog("x");
    EXPECT_EQ(Today(), "2024/03/05 23:59:59.00 x\r\n");
}

TEST_F(LogFile, LinesAfterMidnightGoToTheNextDaysFile) {
    Clock.SetTimeOfDay(24h - 10ms);
    Log.WriteLog("before");
    Clock.Advance(10ms);
    Log.WriteLog("after");
    EXPECT_EQ(Today(), "2024/03/05 23:59:59.99 before\r\n");
    EXPECT_EQ(Content("C:\\Log\\SECSII_2024-03-06.log"), "2024/03/06 00:00:00.00 after\r\n");
}

TEST_F(LogFile, DatesRunOverMonthsYearsAndLeapDays) {
    struct Row {
        int Year;
        unsigned Month;
        unsigned Day;
        const char* File;
        const char* Line;
    };
    const std::vector<Row> rows = {
        {2024, 2, 29, "C:\\Log\\SECSII_2024-02-29.log", "2024/02/29 "},
        {2023, 12, 31, "C:\\Log\\SECSII_2023-12-31.log", "2023/12/31 "},
        {2025, 1, 1, "C:\\Log\\SECSII_2025-01-01.log", "2025/01/01 "},
        {2031, 10, 9, "C:\\Log\\SECSII_2031-10-09.log", "2031/10/09 "},
        {9999, 12, 31, "C:\\Log\\SECSII_9999-12-31.log", "9999/12/31 "},
        {100, 1, 1, "C:\\Log\\SECSII_0100-01-01.log", "0100/01/01 "},
    };
    for (const Row& row : rows) {
        Clock.SetDate(row.Year, row.Month, row.Day);
        Log.WriteLog("x");
        EXPECT_EQ(Content(row.File), std::string(row.Line) + "14:07:09.42 x\r\n");
    }
}

// --- One moment
// -----------------------------------------------------------------------------------

/// A clock on which midnight passes between any two readings.
class RushingClock : public IClock {
public:
    [[nodiscard]] ClockReading Now() const override {
        const ClockReading now = clock_.Now();
        clock_.Advance(24h);
        return now;
    }

private:
    mutable FakeClock clock_;
};

TEST_F(LogFile, TheFileAndTheStampOfALineAreOfOneMoment) {
    MemoryFiles files;
    files.Directories.insert("C:\\Log");
    const RushingClock clock;
    CLogFile log(files, clock, Owner.Ref());
    log.FileName("C:\\Log\\x.log");
    for (int line = 0; line < 4; ++line)
        log.WriteLog("x");
    ASSERT_EQ(files.Files.size(), 4U);
    for (const auto& [path, file] : files.Files) {
        std::string day = path.substr(path.size() - 14, 10);
        day[4] = day[7] = '/';
        EXPECT_EQ(file.Content, day + " 14:07:09.42 x\r\n") << path;
    }
}

}  // namespace
}  // namespace hexmire
