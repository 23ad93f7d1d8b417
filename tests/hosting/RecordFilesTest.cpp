// Records on a real file system.
#include <hexmire/hosting/RecordFiles.h>

#include "TempFolder.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <latch>
#include <string>
#include <thread>
#include <vector>

namespace hexmire {
namespace {

namespace fs = std::filesystem;
using fakes::TempFolder;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

std::vector<std::string> NamesIn(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder))
        names.push_back(entry.path().filename());
    return names;
}

class RecordFilesTest : public testing::Test {
protected:
    TempFolder folder_;
    RecordFiles files_;
};

// --- what is appended ----------------------------------------------------------------------------

TEST_F(RecordFilesTest, BytesAreAddedAndOnlyANewFileGetsItsStart) {
    const std::string path = folder_ / "a.log";
    EXPECT_EQ(files_.Append(path, "start ", "one "), "");
    EXPECT_EQ(files_.Append(path, "start ", std::string("tw\0o", 4)), "");
    EXPECT_EQ(TempFolder::Read(path), std::string("start one tw\0o", 14));
    folder_.Write("empty", "");
    EXPECT_EQ(files_.Append(folder_ / "empty", "start ", "one"), "");
    EXPECT_EQ(TempFolder::Read(folder_ / "empty"), "start one");
}

TEST_F(RecordFilesTest, AMissingFolderIsMadeOneLevelDeep) {
    EXPECT_EQ(files_.Append(folder_ / "new/a.log", "", "one"), "");
    EXPECT_EQ(TempFolder::Read(folder_ / "new/a.log"), "one");
    EXPECT_EQ(files_.Append(folder_ / "two/levels/a.log", "", "one"),
              "No such file or directory (2)");
    EXPECT_THAT(NamesIn(folder_.Path()), ElementsAre("new"));
}

TEST_F(RecordFilesTest, WritersThatMissTheSameFolderAllSucceed) {
    constexpr int kRounds = 200;
    for (int round = 0; round < kRounds; ++round) {
        const std::string folder = folder_ / std::to_string(round);
        std::latch start(3);
        std::vector<std::string> failures(3);
        std::vector<std::thread> writers;
        writers.reserve(failures.size());
        for (std::string& failure : failures) {
            writers.emplace_back([&start, &failure, &folder] {
                start.arrive_and_wait();
                failure = RecordFiles().Append(folder + "/a.log", "", "x");
            });
        }
        for (std::thread& writer : writers)
            writer.join();
        EXPECT_THAT(failures, ElementsAre("", "", ""));
        EXPECT_EQ(TempFolder::Read(folder + "/a.log"), "xxx");
    }
}

TEST_F(RecordFilesTest, BothSeparatorsCount) {
    EXPECT_EQ(files_.Append(folder_.Path() + "\\Log\\a.log", "", "one"), "");
    EXPECT_EQ(TempFolder::Read(folder_ / "Log/a.log"), "one");
}

TEST_F(RecordFilesTest, WhatCannotBeWrittenToSaysWhy) {
    ASSERT_EQ(::mkfifo((folder_ / "pipe").c_str(), 0600), 0);
    fs::create_directory(folder_ / "folder");
    folder_.Write("file", "");
    EXPECT_EQ(files_.Append("/dev/full", "", "one"), "No space left on device (28)");
    EXPECT_EQ(files_.Append(folder_ / "pipe", "", "one"), "No such device or address (6)");
    EXPECT_EQ(files_.Append(folder_ / "folder", "", "one"), "Is a directory (21)");
    EXPECT_EQ(files_.Append(folder_ / "file/a", "", "one"), "Not a directory (20)");
    EXPECT_EQ(files_.Append("/proc/none/a", "", "one"), "No such file or directory (2)");
    EXPECT_EQ(files_.Append(std::string("a\0b", 3), "", "one"), "a path with a NUL byte");
    EXPECT_EQ(files_.Append(folder_ / std::string(256, 'n'), "", "one"), "File name too long (36)");
}

/// A file that may not grow beyond a size, as on a disk that gets full.
class SizeLimit {
public:
    explicit SizeLimit(rlim_t bytes) {
        ::getrlimit(RLIMIT_FSIZE, &before_);
        handler_ = ::signal(SIGXFSZ, SIG_IGN);
        rlimit limit = before_;
        limit.rlim_cur = bytes;
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    SizeLimit(const SizeLimit&) = delete;
    SizeLimit& operator=(const SizeLimit&) = delete;
    ~SizeLimit() {
        ::setrlimit(RLIMIT_FSIZE, &before_);
        ::signal(SIGXFSZ, handler_);
    }

private:
    rlimit before_{};
    sighandler_t handler_ = SIG_DFL;
};

TEST_F(RecordFilesTest, HalfARecordIsTakenBack) {
    const std::string path = folder_.Write("a.log", "before ");
    {
        const SizeLimit full(10);
        EXPECT_EQ(files_.Append(path, "", "twelve bytes"), "File too large (27)");
    }
    EXPECT_EQ(TempFolder::Read(path), "before ");
    EXPECT_EQ(files_.Append(path, "", "after"), "");
    EXPECT_EQ(TempFolder::Read(path), "before after");
}

// --- what is stored whole ------------------------------------------------------------------------

TEST_F(RecordFilesTest, AFileIsStoredWholeAndReplacesAnOlderOne) {
    EXPECT_EQ(files_.Store(folder_.Path(), "P1", "a long first one"), "");
    EXPECT_EQ(files_.Store(folder_.Path() + "/", "P1", "short"), "");
    EXPECT_EQ(files_.Store(folder_.Path() + "\\", "empty", ""), "");
    EXPECT_EQ(TempFolder::Read(folder_ / "P1"), "short");
    EXPECT_EQ(TempFolder::Read(folder_ / "empty"), "");
    EXPECT_THAT(NamesIn(folder_.Path()), UnorderedElementsAre("P1", "empty"));
}

TEST_F(RecordFilesTest, StoringMakesAMissingFolderOneLevelDeep) {
    EXPECT_EQ(files_.Store(folder_ / "new", "P1", "one"), "");
    EXPECT_EQ(TempFolder::Read(folder_ / "new/P1"), "one");
    EXPECT_EQ(files_.Store(folder_ / "two/levels", "P1", "one"), "No such file or directory (2)");
}

TEST_F(RecordFilesTest, ALinkUnderTheNameIsReplacedNotFollowed) {
    const std::string target = folder_.Write("target", "untouched");
    fs::create_directory(folder_ / "in");
    fs::create_symlink(target, folder_ / "in/P1");
    EXPECT_EQ(files_.Store(folder_ / "in", "P1", "one"), "");
    EXPECT_EQ(TempFolder::Read(target), "untouched");
    EXPECT_FALSE(fs::is_symlink(folder_ / "in/P1"));
}

TEST_F(RecordFilesTest, AFileThatCannotBeStoredLeavesNothingAndTheOldOne) {
    fs::create_directory(folder_ / "taken");
    EXPECT_EQ(files_.Store(folder_.Path(), "taken", "one"), "Is a directory (21)");
    folder_.Write("P1", "old");
    {
        const SizeLimit full(10);
        EXPECT_EQ(files_.Store(folder_.Path(), "P1", "twelve bytes"), "File too large (27)");
    }
    EXPECT_EQ(TempFolder::Read(folder_ / "P1"), "old");
    EXPECT_THAT(NamesIn(folder_.Path()), UnorderedElementsAre("taken", "P1"));
    EXPECT_EQ(files_.Store(folder_ / "P1", "a", "one"), "Not a directory (20)");
    EXPECT_EQ(files_.Store("/proc", "a", "one"), "No such file or directory (2)");
    EXPECT_EQ(files_.Store(std::string("a\0b", 3), "a", "one"), "a path with a NUL byte");
}

TEST_F(RecordFilesTest, FilesAreReadableByOthersButWrittenByTheOwnerAlone) {
    const mode_t before = ::umask(0);
    EXPECT_EQ(files_.Store(folder_.Path(), "P1", "one"), "");
    EXPECT_EQ(files_.Append(folder_ / "a.log", "", "one"), "");
    ::umask(before);
    for (const char* name : {"P1", "a.log"}) {
        struct stat status {};
        ASSERT_EQ(::stat((folder_ / name).c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777U, 0644U) << name;
    }
}

}  // namespace
}  // namespace hexmire
