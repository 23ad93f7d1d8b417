#include "LogFixture.h"

#include <chrono>
#include <stdexcept>
#include <string>
#include <vector>

// Folders of the daily log, and a file system that fails. The clock stands at 2024-03-05
// 14:07:09.42 at first.

namespace hexmire {
namespace {

using namespace fakes;
using namespace std::chrono_literals;

class LogFolder : public LogFile {};

TEST_F(LogFolder, CreatesItsFolderWhenItIsMissing) {
    Files.Directories.clear();
    Log.WriteLog("x");
    EXPECT_EQ(Files.Created, Texts{"C:\\Log"});
    EXPECT_EQ(Today(), "2024/03/05 14:07:09.42 x\r\n");
    Log.WriteLog("y");
    EXPECT_EQ(Files.Created.size(), 1U);
}

TEST_F(LogFolder, CreatesNoFolderThatIsThere) {
    Log.WriteLog("x");
    EXPECT_EQ(Files.Created, Texts{});
}

TEST_F(LogFolder, AsksForTheFolderBeforeTheLastSeparatorOnly) {
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

TEST_F(LogFolder, WritesNothingWhenItsFolderCannotBeCreatedAndTriesAgainNextTime) {
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

TEST_F(LogFolder, AFolderThatIsRemovedIsMadeAgain) {
    Log.WriteLog("x");
    Files.Directories.clear();
    Log.WriteLog("y");
    EXPECT_EQ(Files.Created, Texts{"C:\\Log"});
}

TEST_F(LogFolder, DropsALineThatCannotBeWrittenAndKeepsSilent) {
    Files.FailAppend = true;
    Log.WriteLog("lost");
    Files.FailAppend = false;
    Log.WriteLog("kept");
    EXPECT_EQ(Today(), "2024/03/05 14:07:09.42 kept\r\n");
    EXPECT_EQ(Errors.Errors, Texts{});
}

TEST_F(LogFolder, WithoutAFolderFilesStandInTheCurrentDirectory) {
    Log.FileName("SECSII.log");
    CLogFile fresh(Files, Clock, Owner.Ref());
    fresh.FileName("SECSII.log");
    fresh.WriteLog("x");
    EXPECT_EQ(Content("SECSII_2024-03-05.log"), "2024/03/05 14:07:09.42 x\r\n");
    EXPECT_EQ(Files.Created, Texts{});
}

TEST_F(LogFolder, ANameWithoutSeparatorKeepsTheRememberedFolder) {
    Log.WriteLog("one");
    Log.FileName("y.log");
    Files.Directories.clear();
    Log.WriteLog("two");
    EXPECT_EQ(Files.Created, Texts{"C:\\Log"});  // Still asked for, though the file is elsewhere.
    EXPECT_EQ(Content("y_2024-03-05.log"), "2024/03/05 14:07:09.42 two\r\n");
    Files.FailCreateDirectory = true;
    Files.Directories.clear();
    Log.WriteLog("lost");
    EXPECT_EQ(Content("y_2024-03-05.log"), "2024/03/05 14:07:09.42 two\r\n");
}

TEST_F(LogFolder, ANameInTheRootForgetsTheFolder) {
    for (const std::string name : {"\\y.log", "/y.log"}) {
        Log.FileName("C:\\Log\\SECSII.log");
        Log.WriteLog("one");
        Log.FileName(name);
        Files.Created.clear();
        Files.Directories.clear();
        Log.WriteLog("two");
        EXPECT_EQ(Files.Created, Texts{});
        EXPECT_EQ(Content(name.substr(0, 2) + "_2024-03-05.log"), "2024/03/05 14:07:09.42 two\r\n");
        Files.Directories.insert("C:\\Log");
    }
}

TEST_F(LogFolder, ANewNamesFolderCountsFromItsFirstLineOn) {
    Log.WriteLog("one");
    Files.Directories.clear();
    Log.FileName("D:\\New\\x.log");
    EXPECT_EQ(Files.Created, Texts{});
    Log.WriteLog("two");
    EXPECT_EQ(Files.Created, Texts{"D:\\New"});
}

TEST_F(LogFolder, ADayThatFailsAtItsFolderIsNotOverForTheNextLine) {
    Files.Directories.clear();
    Files.FailCreateDirectory = true;
    Clock.Advance(24h);
    Log.WriteLog("lost");
    Clock.Advance(-24h);  // Back on the day of the creation: no sweep is due.
    Files.FailCreateDirectory = false;
    Log.WriteLog("kept");
    EXPECT_TRUE(Files.Listed.empty());
    EXPECT_EQ(Today(), "2024/03/05 14:07:09.42 kept\r\n");
}

/// A file system that throws at one member instead of telling its failure.
class ThrowingFiles : public MemoryFiles {
public:
    bool Append(const std::string& path, std::string_view bytes) override {
        Fail("Append");
        return MemoryFiles::Append(path, bytes);
    }
    bool IsDirectory(const std::string& path) override {
        Fail("IsDirectory");
        return MemoryFiles::IsDirectory(path);
    }
    bool CreateDirectory(const std::string& path) override {
        Fail("CreateDirectory");
        return MemoryFiles::CreateDirectory(path);
    }
    std::vector<std::string> ListFiles(const std::string& folder,
                                       const std::string& prefix,
                                       const std::string& suffix) override {
        Fail("ListFiles");
        return MemoryFiles::ListFiles(folder, prefix, suffix);
    }

    std::string Failing;

private:
    void Fail(const std::string& member) const {
        if (member == Failing) throw std::runtime_error("disk is gone");
    }
};

TEST_F(LogFolder, AFileSystemThatThrowsIsPassedOverInSilence) {
    struct Row {
        const char* Failing;
        bool IsWritten;
    };
    for (const Row& row : {Row{"Append", false},
                           Row{"IsDirectory", false},
                           Row{"CreateDirectory", false},
                           Row{"ListFiles", true}}) {
        ThrowingFiles files;
        FakeClock clock;
        CLogFile log(files, clock, Owner.Ref());
        log.FileName("C:\\Log\\x.log");
        clock.Advance(24h);  // A sweep is due.
        files.Failing = row.Failing;
        log.WriteLog("x");
        EXPECT_EQ(files.Files.contains("C:\\Log\\x_2024-03-06.log"), row.IsWritten) << row.Failing;
        files.Failing.clear();
        log.WriteLog("y");
        EXPECT_TRUE(files.Files.contains("C:\\Log\\x_2024-03-06.log")) << row.Failing;
    }
    EXPECT_EQ(Errors.Errors, Texts{});
}

}  // namespace
}  // namespace hexmire
