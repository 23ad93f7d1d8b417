#include <hexmire/hosting/PosixFiles.h>
#include <hexmire/support/CLogFile.h>

#include "../fakes/FakeClock.h"
#include "TempFolder.h"
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <string>

namespace hexmire {
namespace {

using namespace std::chrono_literals;
using fakes::FakeClock;
using fakes::TempFolder;

/// The daily log on the real file system, named as a host on the original platform would name it.
class DailyLogTest : public testing::Test {
protected:
    [[nodiscard]] std::string Path(std::string_view name) const {
        return folder_ / ("Log/" + std::string(name));
    }
    /// A file of the log that was last written so many days before the clock's date.
    std::string Old(std::string_view name, int days) {
        std::filesystem::create_directory(folder_ / "Log");
        const std::string path = folder_.Write("Log/" + std::string(name), "old");
        const auto noon = std::chrono::sys_days(clock_.Now().Date) - std::chrono::days(days) + 12h;
        const std::timespec time{.tv_sec = std::chrono::system_clock::to_time_t(noon),
                                 .tv_nsec = 0};
        const std::timespec times[] = {time, time};
        EXPECT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
        return path;
    }

    TempFolder folder_;
    FakeClock clock_;
    PosixFiles files_;
    CLogFile log_{files_, clock_, SiteRef()};
};

TEST_F(DailyLogTest, first_line_makes_the_folder_and_the_file_of_the_day) {
    log_.FileName(folder_.Path() + "\\Log\\SECSII.log");
    log_.WriteLog("SECS I DATALEN Send : 12");
    log_.WriteLog("caf\xE9");
    EXPECT_EQ(TempFolder::Read(Path("SECSII_2024-03-05.log")),
              "2024/03/05 14:07:09.42 SECS I DATALEN Send : 12\r\n"
              "2024/03/05 14:07:09.42 caf\xE9\r\n");
}

TEST_F(DailyLogTest, each_day_has_its_file) {
    log_.FileName(folder_.Path() + "\\Log\\SECSII.log");
    log_.WriteLog("one");
    clock_.Advance(24h);
    log_.WriteLog("two");
    EXPECT_EQ(TempFolder::Read(Path("SECSII_2024-03-05.log")), "2024/03/05 14:07:09.42 one\r\n");
    EXPECT_EQ(TempFolder::Read(Path("SECSII_2024-03-06.log")), "2024/03/06 14:07:09.42 two\r\n");
}

TEST_F(DailyLogTest, file_may_be_moved_between_two_lines) {
    log_.FileName(folder_ / "SECSII.log");
    log_.WriteLog("one");
    std::filesystem::rename(folder_ / "SECSII_2024-03-05.log", folder_ / "kept");
    log_.WriteLog("two");
    EXPECT_EQ(TempFolder::Read(folder_ / "kept"), "2024/03/05 14:07:09.42 one\r\n");
    EXPECT_EQ(TempFolder::Read(folder_ / "SECSII_2024-03-05.log"),
              "2024/03/05 14:07:09.42 two\r\n");
}

TEST_F(DailyLogTest, old_files_of_this_log_go_when_the_day_changes) {
    log_.FileName(folder_.Path() + "\\Log\\SECSII.log");
    const std::string gone = Old("SECSII_2023-03-11.log", 361);
    const std::string kept = Old("SECSII_2023-03-13.log", 359);
    const std::string other = Old("OTHER_2023-03-10.log", 361);
    const std::string base = Old("SECSII.log", 361);
    log_.WriteLog("today");
    EXPECT_TRUE(std::filesystem::exists(gone));
    clock_.Advance(24h);
    log_.WriteLog("tomorrow");
    EXPECT_FALSE(std::filesystem::exists(gone));
    EXPECT_FALSE(std::filesystem::exists(base));
    EXPECT_TRUE(std::filesystem::exists(kept));
    EXPECT_TRUE(std::filesystem::exists(other));
}

TEST_F(DailyLogTest, missing_parent_of_the_folder_is_passed_over_in_silence) {
    log_.FileName(folder_ / "a/b/SECSII.log");
    log_.WriteLog("lost");
    EXPECT_FALSE(std::filesystem::exists(folder_ / "a"));
    std::filesystem::create_directory(folder_ / "a");
    log_.WriteLog("kept");
    EXPECT_EQ(TempFolder::Read(folder_ / "a/b/SECSII_2024-03-05.log"),
              "2024/03/05 14:07:09.42 kept\r\n");
}

TEST_F(DailyLogTest, folder_that_is_a_file_is_passed_over_in_silence) {
    const std::string file = folder_.Write("Log", "mine");
    log_.FileName(folder_ / "Log/SECSII.log");
    log_.WriteLog("lost");
    EXPECT_EQ(TempFolder::Read(file), "mine");
}

TEST_F(DailyLogTest, file_that_cannot_be_written_is_passed_over_in_silence) {
    // A directory of that name refuses every user, the superuser of a container included.
    std::filesystem::create_directory(folder_ / "SECSII_2024-03-05.log");
    log_.FileName(folder_ / "SECSII.log");
    log_.WriteLog("lost");
    EXPECT_TRUE(std::filesystem::is_empty(folder_ / "SECSII_2024-03-05.log"));
}

TEST_F(DailyLogTest, full_disk_is_passed_over_in_silence) {
    std::filesystem::create_symlink("/dev/full", folder_ / "SECSII_2024-03-05.log");
    log_.FileName(folder_ / "SECSII.log");
    log_.WriteLog("lost");
    clock_.Advance(24h);
    log_.WriteLog("kept");
    EXPECT_EQ(TempFolder::Read(folder_ / "SECSII_2024-03-06.log"),
              "2024/03/06 14:07:09.42 kept\r\n");
}

TEST_F(DailyLogTest, folder_named_like_a_log_file_does_not_end_the_sweep) {
    log_.FileName(folder_.Path() + "\\Log\\SECSII.log");
    std::filesystem::create_directories(folder_ / "Log/SECSII_0.log");
    const std::string first = Old("SECSII_1.log", 400);
    const std::string last = Old("SECSII_2.log", 400);
    clock_.Advance(24h);
    log_.WriteLog("x");
    EXPECT_TRUE(std::filesystem::exists(folder_ / "Log/SECSII_0.log"));
    EXPECT_FALSE(std::filesystem::exists(first));
    EXPECT_FALSE(std::filesystem::exists(last));
}

TEST_F(DailyLogTest, name_without_folder_follows_the_current_directory_and_sweeps_nothing) {
    const auto before = std::filesystem::current_path();
    std::filesystem::create_directory(folder_ / "Log");
    std::filesystem::create_directory(folder_ / "Other");
    log_.FileName("SECSII.log");
    std::filesystem::current_path(folder_ / "Log");
    const std::string kept = Old("SECSII_old.log", 400);
    log_.WriteLog("one");
    std::filesystem::current_path(folder_ / "Other");
    clock_.Advance(24h);
    log_.WriteLog("two");
    std::filesystem::current_path(before);
    EXPECT_EQ(TempFolder::Read(Path("SECSII_2024-03-05.log")), "2024/03/05 14:07:09.42 one\r\n");
    EXPECT_EQ(TempFolder::Read(folder_ / "Other/SECSII_2024-03-06.log"),
              "2024/03/06 14:07:09.42 two\r\n");
    EXPECT_TRUE(std::filesystem::exists(kept));
}

TEST_F(DailyLogTest, either_separator_ends_the_folder) {
    std::filesystem::create_directory(folder_ / "a");
    log_.FileName(folder_.Path() + "\\a/x.log");
    log_.WriteLog("one");
    log_.FileName(folder_.Path() + "/a\\x.log");
    log_.WriteLog("two");
    EXPECT_EQ(TempFolder::Read(folder_ / "a/x_2024-03-05.log"),
              "2024/03/05 14:07:09.42 one\r\n2024/03/05 14:07:09.42 two\r\n");
}

TEST_F(DailyLogTest, line_that_is_cut_by_a_full_disk_loses_nothing_of_the_next_day) {
    std::filesystem::create_symlink("/dev/full", folder_ / "SECSII_2024-03-05.log");
    std::filesystem::create_symlink("/dev/full", folder_ / "SECSII_2024-03-07.log");
    log_.FileName(folder_ / "SECSII.log");
    for (int day = 0; day < 4; ++day) {
        log_.WriteLog("x");
        clock_.Advance(24h);
    }
    EXPECT_EQ(TempFolder::Read(folder_ / "SECSII_2024-03-06.log"), "2024/03/06 14:07:09.42 x\r\n");
    EXPECT_EQ(TempFolder::Read(folder_ / "SECSII_2024-03-08.log"), "2024/03/08 14:07:09.42 x\r\n");
}

}  // namespace
}  // namespace hexmire
