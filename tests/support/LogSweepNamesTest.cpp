#include "LogFixture.h"

#include <chrono>
#include <string>
#include <vector>

// Which files of which folder the daily log sweeps. Today is 5 March 2024 at first.

namespace hexmire {
namespace {

using namespace fakes;
using namespace std::chrono_literals;

using std::chrono::day;
using std::chrono::month;
using std::chrono::year;
using std::chrono::year_month_day;

class LogSweepNames : public LogSweep {};

TEST_F(LogSweepNames, TheBaseFileAndAllThatBeginLikeItAreSweptAndNothingElse) {
    const Texts swept{"C:\\Log\\SECSII.log",
                      "C:\\Log\\SECSIIB.log",
                      "C:\\Log\\SECSII_2020-01-01.log",
                      "C:\\Log\\SECSII_x_y.log"};
    const Texts kept{"C:\\Log\\SECS.log",
                     "C:\\Log\\other.log",
                     "C:\\Log\\SECSII_a.txt",
                     "C:\\Log\\SECSII_a.log.bak",
                     "C:\\Log\\xSECSII.log",
                     "C:\\SECSII_a.log",
                     "C:\\Log\\Old\\SECSII_a.log"};
    for (const std::string& path : swept) {
        AddFile(path, 1000);
    }
    for (const std::string& path : kept) {
        AddFile(path, 1000);
    }
    NextDay();
    for (const std::string& path : swept) {
        EXPECT_FALSE(Has(path)) << path;
    }
    for (const std::string& path : kept) {
        EXPECT_TRUE(Has(path)) << path;
    }
}

TEST_F(LogSweepNames, TheBaseFileOfANameWithTheExtensionInTheMiddleIsNotItsOwn) {
    Files.Directories.insert("C:\\Log");
    Log.FileName("C:\\Log\\a.log.txt");
    AddFile("C:\\Log\\a.log", 1000);  // Too short for "a.log" and ".log" behind it.
    AddFile("C:\\Log\\a.log.log", 1000);
    AddFile("C:\\Log\\a.log.txt", 1000);
    AddFile("C:\\Log\\a.log_2020-01-01.log", 1000);
    NextDay();
    EXPECT_EQ(Files.Deleted, (Texts{"C:\\Log\\a.log.log", "C:\\Log\\a.log_2020-01-01.log"}));
}

TEST_F(LogSweepNames, TheFolderIsListedForTheNameWithoutItsLastFourCharacters) {
    NextDay();
    EXPECT_EQ(Files.Listed, (std::vector<MemoryFiles::Listing>{{"C:\\Log", "SECSII", ".log"}}));
}

TEST_F(LogSweepNames, OddNamesAreListedByTheSameRule) {
    const auto listed = [this](const char* name, const char* folder) {
        MemoryFiles files;
        CLogFile log(files, Clock, Owner.Ref());
        log.FileName(name);
        log.DeleteBackup(folder);
        return files.Listed;
    };
    using Listings = std::vector<MemoryFiles::Listing>;
    EXPECT_EQ(listed("C:\\Log\\a.log.txt", "C:\\Log"), (Listings{{"C:\\Log", "a.log", ".log"}}));
    EXPECT_EQ(listed("C:\\Log\\.log", "C:\\Log"), (Listings{{"C:\\Log", "", ".log"}}));
    EXPECT_EQ(listed("/var/log/x.LOG", "/var/log"), (Listings{{"/var/log", "x", ".log"}}));
    EXPECT_EQ(listed("C:\\a[1]?*.log", "C:"), (Listings{{"C:", "a[1]?*", ".log"}}));
    EXPECT_EQ(listed("C:\\my.logs\\x", "C:\\my.logs"), (Listings{{"C:", "my.lo", ".log"}}));
    EXPECT_EQ(listed("x.log", "C:"), (Listings{{"", "x", ".log"}}));
    EXPECT_EQ(listed("\\x.log", "C:"), (Listings{{"\\", "x", ".log"}}));
    EXPECT_EQ(listed("/x.log", "C:"), (Listings{{"/", "x", ".log"}}));
}

TEST_F(LogSweepNames, PathsAreMadeOfTheRememberedFolderABackslashAndTheName) {
    MemoryFiles files;
    files.Directories.insert("/var/log");
    CLogFile log(files, Clock, Owner.Ref());
    log.FileName("/var/log/x.log");
    files.Files["/var/log\\x_old.log"].Modified = year_month_day{year{2000}, month{1}, day{1}};
    Clock.Advance(24h);
    log.WriteLog("x");
    EXPECT_EQ(files.DateAsked, Texts{"/var/log\\x_old.log"});
    EXPECT_EQ(files.Deleted, Texts{"/var/log\\x_old.log"});
}

TEST_F(LogSweepNames, ANewNameLooksForItsFilesInTheRememberedFolder) {
    Log.WriteLog("x");
    Files.Directories.insert("C:\\New");
    AddFile("C:\\New\\y_old.log", 1000);
    AddFile("C:\\Log\\y_old.log", 1000);
    AddFile("C:\\Log\\y_other.log", 1000);
    Log.FileName("C:\\New\\y.log");
    EXPECT_EQ(Files.Deleted, Texts{"C:\\Log\\y_old.log"});
    EXPECT_TRUE(Has("C:\\New\\y_old.log"));
    EXPECT_TRUE(Has("C:\\Log\\y_other.log"));
}

/// A folder whose listing comes in an order of its own.
class UnsortedFiles : public MemoryFiles {
public:
    std::vector<std::string> ListFiles(const std::string& /*folder*/,
                                       const std::string& /*prefix*/,
                                       const std::string& /*suffix*/) override {
        return {"SECSII_c.log", "SECSII_a.log", "SECSII_d.log", "SECSII_b.log"};
    }
};

TEST_F(LogSweepNames, GoesInTheOrderOfTheListing) {
    UnsortedFiles files;
    CLogFile log(files, Clock, Owner.Ref());
    log.FileName("C:\\Log\\SECSII.log");
    for (const char* name : {"a", "b", "c"}) {
        files.Files[std::string("C:\\Log\\SECSII_") + name + ".log"].Modified =
            year_month_day{year{2000}, month{1}, day{1}};
    }
    log.DeleteBackup("C:\\Log");  // There is no d.
    EXPECT_EQ(files.Deleted, (Texts{"C:\\Log\\SECSII_c.log", "C:\\Log\\SECSII_a.log"}));
}

TEST_F(LogSweepNames, ASweepCanBeAskedForInAnyFolder) {
    AddFile("C:\\Log\\SECSII_a.log", 1000);
    AddFile("D:\\Copy\\SECSII_a.log", 1000);
    AddFile("D:\\Copy\\SECSII_b.log", 1000);
    Log.DeleteBackup("D:\\Copy");  // The names are those of the log's own folder.
    EXPECT_TRUE(Has("C:\\Log\\SECSII_a.log"));
    EXPECT_FALSE(Has("D:\\Copy\\SECSII_a.log"));
    EXPECT_TRUE(Has("D:\\Copy\\SECSII_b.log"));
}

TEST_F(LogSweepNames, TwoLogsInOneFolderSweepTheirOwnFiles) {
    CLogFile other(Files, Clock, Owner.Ref());
    other.FileName("C:\\Log\\other.log");
    AddFile("C:\\Log\\SECSII_old.log", 1000);
    AddFile("C:\\Log\\other_old.log", 1000);
    Clock.Advance(24h);
    other.WriteLog("x");
    EXPECT_FALSE(Has("C:\\Log\\other_old.log"));
    EXPECT_TRUE(Has("C:\\Log\\SECSII_old.log"));
}

}  // namespace
}  // namespace hexmire
