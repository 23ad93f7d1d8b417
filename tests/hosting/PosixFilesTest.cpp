#include <hexmire/hosting/ApplicationFolder.h>
#include <hexmire/hosting/PosixFiles.h>

#include "TempFolder.h"
#include "Zone.h"
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

namespace hexmire {
namespace {

using fakes::TempFolder;
using fakes::Zone;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class PosixFilesTest : public testing::Test {
protected:
    TempFolder folder_;
    PosixFiles files_;
};

TEST_F(PosixFilesTest, append_makes_the_file_and_then_adds_to_it) {
    const std::string path = folder_ / "log";
    EXPECT_TRUE(files_.Append(path, "one\r\n"));
    EXPECT_TRUE(files_.Append(path, std::string_view("t\0o\xFF\r\n", 6)));
    EXPECT_EQ(TempFolder::Read(path), std::string("one\r\nt\0o\xFF\r\n", 11));
}

TEST_F(PosixFilesTest, backslashes_reach_the_system_as_slashes) {
    EXPECT_TRUE(files_.CreateDirectory(folder_.Path() + "\\Log"));
    EXPECT_TRUE(files_.IsDirectory(folder_.Path() + "\\Log"));
    EXPECT_TRUE(files_.Append(folder_.Path() + "\\Log\\a.log", "x"));
    EXPECT_EQ(TempFolder::Read(folder_ / "Log/a.log"), "x");
    EXPECT_THAT(files_.ListFiles(folder_.Path() + "\\Log", "a", ".log"), ElementsAre("a.log"));
    EXPECT_TRUE(files_.ModifiedDate(folder_.Path() + "\\Log\\a.log").has_value());
    EXPECT_TRUE(files_.DeleteFile(folder_.Path() + "\\Log\\a.log"));
    EXPECT_FALSE(std::filesystem::exists(folder_ / "Log/a.log"));
}

TEST_F(PosixFilesTest, append_fails_without_a_folder_and_on_a_folder) {
    EXPECT_FALSE(files_.Append(folder_ / "missing/log", "x"));
    EXPECT_FALSE(files_.Append(folder_.Path(), "x"));
    EXPECT_FALSE(files_.Append("", "x"));
}

TEST_F(PosixFilesTest, append_fails_on_a_full_disk) {
    EXPECT_FALSE(files_.Append("/dev/full", "x"));
    EXPECT_FALSE(files_.Append("/dev/full/SECSII.log", "x"));
}

TEST_F(PosixFilesTest, append_tells_a_write_that_was_cut_short) {
    // The file may grow to 4 bytes: the system writes those and then refuses.
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit small{4, before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    const bool appended = files_.Append(folder_ / "log", "abcdefgh");
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &before), 0);
    std::signal(SIGXFSZ, oldHandler);
    EXPECT_FALSE(appended);
    EXPECT_EQ(TempFolder::Read(folder_ / "log"), "abcd");
}

TEST_F(PosixFilesTest, append_does_not_wait_on_a_pipe_that_nobody_reads) {
    ASSERT_EQ(::mkfifo((folder_ / "pipe").c_str(), 0600), 0);
    EXPECT_FALSE(files_.Append(folder_ / "pipe", "x"));
}

TEST_F(PosixFilesTest, nothing_stays_open) {
    const auto openDescriptors = [] {
        const std::filesystem::directory_iterator descriptors("/proc/self/fd");
        return std::distance(begin(descriptors), end(descriptors));
    };
    const auto before = openDescriptors();
    EXPECT_TRUE(files_.Append(folder_ / "a.log", "x"));
    EXPECT_FALSE(files_.Append("/dev/full", "x"));
    EXPECT_THAT(files_.ListFiles(folder_.Path(), "", ".log"), ElementsAre("a.log"));
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(PosixFilesTest, path_with_a_nul_byte_is_no_path) {
    const std::string path = (folder_ / "a") + std::string("\0b", 2);
    EXPECT_FALSE(files_.Append(path, "x"));
    EXPECT_FALSE(files_.CreateDirectory(path));
    EXPECT_FALSE(files_.IsDirectory(path));
    EXPECT_FALSE(files_.DeleteFile(path));
    EXPECT_FALSE(files_.ModifiedDate(path).has_value());
    EXPECT_THAT(files_.ListFiles(path, "", ""), IsEmpty());
    EXPECT_FALSE(std::filesystem::exists(folder_ / "a"));
}

TEST_F(PosixFilesTest, create_directory_makes_one_level_only) {
    EXPECT_FALSE(files_.CreateDirectory(folder_ / "a/b"));
    EXPECT_TRUE(files_.CreateDirectory(folder_ / "a"));
    EXPECT_TRUE(files_.CreateDirectory(folder_ / "a/b"));
    EXPECT_FALSE(files_.CreateDirectory(folder_ / "a"));
    EXPECT_TRUE(files_.IsDirectory(folder_ / "a/b"));
}

TEST_F(PosixFilesTest, a_file_is_no_directory) {
    EXPECT_FALSE(files_.IsDirectory(folder_.Write("a", "")));
    EXPECT_FALSE(files_.IsDirectory(folder_ / "missing"));
    EXPECT_FALSE(files_.IsDirectory(""));
}

TEST_F(PosixFilesTest, list_compares_prefix_and_suffix_literally) {
    for (const char* name : {"a[1].log", "a[1]_2024-03-05.log", "a1.log", "A[1].log", "a[1].LOG"})
        folder_.Write(name, "");
    EXPECT_THAT(files_.ListFiles(folder_.Path(), "a[1]", ".log"),
                UnorderedElementsAre("a[1].log", "a[1]_2024-03-05.log"));
    EXPECT_THAT(files_.ListFiles(folder_.Path(), "*", ".log"), IsEmpty());
    EXPECT_THAT(files_.ListFiles(folder_.Path(), "a1.l", ".log"), IsEmpty());  // They overlap.
}

TEST_F(PosixFilesTest, list_holds_regular_files_only) {
    folder_.Write("SECSII.log", "");
    std::filesystem::create_directory(folder_ / "SECSII_folder.log");
    std::filesystem::create_symlink(folder_ / "SECSII.log", folder_ / "SECSII_link.log");
    ASSERT_EQ(::mkfifo((folder_ / "SECSII_pipe.log").c_str(), 0600), 0);
    EXPECT_THAT(files_.ListFiles(folder_.Path(), "SECSII", ".log"), ElementsAre("SECSII.log"));
}

TEST_F(PosixFilesTest, list_comes_in_the_order_of_the_folder) {
    for (const char* name : {"c.log", "a.log", "d.log", "b.log"})
        folder_.Write(name, "");
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder_.Path()))
        names.push_back(entry.path().filename().string());
    EXPECT_EQ(files_.ListFiles(folder_.Path(), "", ".log"), names);
}

TEST_F(PosixFilesTest, list_of_no_folder_is_the_current_directory) {
    const auto before = std::filesystem::current_path();
    folder_.Write("here.log", "");
    std::filesystem::current_path(folder_.Path());
    const auto names = files_.ListFiles("", "here", ".log");
    std::filesystem::current_path(before);
    EXPECT_THAT(names, ElementsAre("here.log"));
}

TEST_F(PosixFilesTest, list_of_a_missing_folder_is_empty) {
    EXPECT_THAT(files_.ListFiles(folder_ / "missing", "", ""), IsEmpty());
    EXPECT_THAT(files_.ListFiles(folder_.Write("file", ""), "", ""), IsEmpty());
}

TEST_F(PosixFilesTest, modified_date_is_the_local_date) {
    using namespace std::chrono;
    const std::string path = folder_.Write("old", "");
    const auto moment = sys_days(2023y / 2 / 28) + 23h;
    const timespec times[] = {{.tv_sec = 0, .tv_nsec = 0},
                              {.tv_sec = system_clock::to_time_t(moment), .tv_nsec = 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
    const Zone zone("JST-9");
    EXPECT_EQ(files_.ModifiedDate(path), 2023y / 3 / 1);
    Zone::Set("PST8");
    EXPECT_EQ(files_.ModifiedDate(path), 2023y / 2 / 28);
    EXPECT_EQ(files_.ModifiedDate(folder_ / "missing"), std::nullopt);
}

TEST_F(PosixFilesTest, delete_takes_one_file_and_no_folder) {
    const std::string path = folder_.Write("a", "");
    EXPECT_TRUE(files_.DeleteFile(path));
    EXPECT_FALSE(files_.DeleteFile(path));
    std::filesystem::create_directory(folder_ / "b");
    EXPECT_FALSE(files_.DeleteFile(folder_ / "b"));
    EXPECT_TRUE(std::filesystem::exists(folder_ / "b"));
}

TEST(ApplicationFolder, is_that_of_the_running_executable) {
    const std::string folder = ApplicationFolder();
    EXPECT_FALSE(folder.ends_with('/'));
    EXPECT_TRUE(std::filesystem::equivalent(
        folder, std::filesystem::read_symlink("/proc/self/exe").parent_path()));
}

}  // namespace
}  // namespace hexmire
