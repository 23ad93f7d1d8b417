#include <hexmire/support/CLogFile.h>

#include "../fakes/FakeClock.h"
#include "../fakes/MemoryFiles.h"
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <string>
#include <utility>
#include <vector>

// Names, lines and folders of the daily log. The clock stands at 2024-03-05 14:07:09.42 at first.

namespace hexmire {
namespace {

using namespace fakes;
using namespace std::chrono_literals;

using Texts = std::vector<std::string>;

/// Stands in for a control: keeps the errors.
class Sink : public IErrorSink {
public:
    void TriggerError(std::int32_t errorCode,
                      const std::string& errorText,
                      std::int32_t errorLine) override {
        Errors.push_back(std::to_string(errorCode) + " " + errorText + " " +
                         std::to_string(errorLine));
        if (const auto once = std::exchange(OnError, nullptr)) once();
    }

    Texts Errors;
    std::function<void()> OnError;
};

constexpr const char* kNoExtension =
    "2014 (CLogFile-Let FileName) Log file name must have extension .log. 0";

class LogFile : public testing::Test {
protected:
    /// A log with that name; the folder C:\Log exists.
    explicit LogFile(const std::string& name = "C:\\Log\\SECSII.log") {
        Files.Directories.insert("C:\\Log");
        if (!name.empty()) Log.FileName(name);
    }
    std::string Content(const std::string& path) { return Files.Files[path].Content; }
    /// The text of today's file.
    std::string Today() { return Content("C:\\Log\\SECSII_2024-03-05.log"); }
    /// Paths of all files.
    Texts Paths() {
        Texts paths;
        for (const auto& [path, file] : Files.Files) {
            paths.push_back(path);
        }
        return paths;
    }
    /// The path that a log of this name writes to.
    Texts Written(const std::string& name) {
        MemoryFiles files;
        CLogFile log(files, Clock, Owner.Ref());
        log.FileName(name);
        files.Directories = {
            "C:\\Log", "C:", "\\\\server\\share", "/var/log", "C:\\a/b", "C:/a", "logs"};
        log.WriteLog("x");
        Texts paths;
        for (const auto& [path, file] : files.Files) {
            paths.push_back(path);
        }
        return paths;
    }

    MemoryFiles Files;
    FakeClock Clock;
    Sink Errors;
    SiteOwner Owner{Errors};
    CLogFile Log{Files, Clock, Owner.Ref()};
};

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
        {6ms, "01"},
        {14999us, "01"},
        {15001us, "02"},
        {424ms, "42"},
        {426ms, "43"},
        {994ms, "99"},
        {994999us, "99"},
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
    };
    for (const Row& row : rows) {
        Clock.SetDate(row.Year, row.Month, row.Day);
        Log.WriteLog("x");
        EXPECT_EQ(Content(row.File), std::string(row.Line) + "14:07:09.42 x\r\n");
    }
}

// --- Folders
// --------------------------------------------------------------------------------------

TEST_F(LogFile, CreatesItsFolderWhenItIsMissing) {
    Files.Directories.clear();
    Log.WriteLog("x");
    EXPECT_EQ(Files.Created, Texts{"C:\\Log"});
    EXPECT_EQ(Today(), "2024/03/05 14:07:09.42 x\r\n");
    Log.WriteLog("y");
    EXPECT_EQ(Files.Created.size(), 1U);
}

TEST_F(LogFile, CreatesNoFolderThatIsThere) {
    Log.WriteLog("x");
    EXPECT_EQ(Files.Created, Texts{});
}

TEST_F(LogFile, AsksForTheFolderBeforeTheLastSeparatorOnly) {
    const auto created = [this](const char* name) {
        MemoryFiles files;
        CLogFile log(files, Clock, Owner.Ref());
        log.FileName(name);
        log.WriteLog("x");
        return files.Created;
    };
    EXPECT_EQ(created("C:\\a\\b\\x.log"), Texts{"C:\\a\\b"});
    EXPECT_EQ(created("C:\\x.log"), Texts{"C:"});
    EXPECT_EQ(created("/var/log/x.log"), Texts{"/var/log"});
    EXPECT_EQ(created("logs/x.log"), Texts{"logs"});
    EXPECT_EQ(created("C:\\a/b.log"), Texts{"C:\\a"});
    EXPECT_EQ(created("C:/a\\b.log"), Texts{"C:/a"});
    EXPECT_EQ(created("x.log"), Texts{});
    EXPECT_EQ(created("\\x.log"), Texts{});
    EXPECT_EQ(created("/x.log"), Texts{});
}

TEST_F(LogFile, WritesNothingWhenItsFolderCannotBeCreatedAndTriesAgainNextTime) {
    Files.Directories.clear();
    Files.FailCreateDirectory = true;
    Log.WriteLog("lost");
    Log.WriteLog("lost");
    EXPECT_EQ(Files.Created, (Texts{"C:\\Log", "C:\\Log"}));
    EXPECT_EQ(Files.Appends, 0);
    Files.FailCreateDirectory = false;
    Log.WriteLog("kept");
    EXPECT_EQ(Today(), "2024/03/05 14:07:09.42 kept\r\n");
    EXPECT_EQ(Errors.Errors, Texts{});
}

TEST_F(LogFile, AFolderThatIsRemovedIsMadeAgain) {
    Log.WriteLog("x");
    Files.Directories.clear();
    Log.WriteLog("y");
    EXPECT_EQ(Files.Created, Texts{"C:\\Log"});
}

TEST_F(LogFile, DropsALineThatCannotBeWrittenAndKeepsSilent) {
    Files.FailAppend = true;
    Log.WriteLog("lost");
    Files.FailAppend = false;
    Log.WriteLog("kept");
    EXPECT_EQ(Today(), "2024/03/05 14:07:09.42 kept\r\n");
    EXPECT_EQ(Errors.Errors, Texts{});
}

TEST_F(LogFile, WithoutAFolderFilesStandInTheCurrentDirectory) {
    Log.FileName("SECSII.log");
    CLogFile fresh(Files, Clock, Owner.Ref());
    fresh.FileName("SECSII.log");
    fresh.WriteLog("x");
    EXPECT_EQ(Content("SECSII_2024-03-05.log"), "2024/03/05 14:07:09.42 x\r\n");
    EXPECT_EQ(Files.Created, Texts{});
}

}  // namespace
}  // namespace hexmire
