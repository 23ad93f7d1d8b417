#include "../../hosting/TempFolder.h"
#include "Failure.h"
#include "LogText.h"
#include "log/EntryPrinter.h"
#include "log/LogFiles.h"
#include "log/LogInput.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

namespace hexmire::program {
namespace {

using fakes::LogText;
using fakes::TempFolder;
using testing::ElementsAre;
using testing::HasSubstr;

using Paths = std::vector<std::string>;

std::string Reason(const std::function<void()>& body) {
    try {
        body();
    } catch (const Failure& failure) {
        return failure.what();
    }
    return "no failure";
}

TEST(LogFiles, daily_name_has_a_stem_and_a_date) {
    const auto name = ParseDailyName("Log/SECSII_2024-03-05.log");
    ASSERT_TRUE(name);
    EXPECT_EQ(name->Stem, "Log/SECSII");
    EXPECT_EQ(name->Date, 20'240'305);
    for (const char* path : {"SECSII.log",
                             "SECSII-2024-03-05.log",
                             "SECSII_2024-02-30.log",
                             "SECSII_2024-03-05.txt",
                             "2024-03-05.log",
                             ""})
        EXPECT_FALSE(ParseDailyName(path)) << path;
}

TEST(LogFiles, base_name_stands_for_its_daily_files_in_order) {
    const TempFolder folder;
    const std::string third = folder.Write("a_2024-10-01.log", "");
    const std::string first = folder.Write("a_2023-12-31.log", "");
    const std::string second = folder.Write("a_2024-03-05.log", "");
    static_cast<void>(folder.Write("ab_2024-03-05.log", ""));
    static_cast<void>(folder.Write("a_2024-13-05.log", ""));
    static_cast<void>(folder.Write("a_2024-03-05.log.gz", ""));
    EXPECT_EQ(FindLogFiles(folder / "a.log"), (Paths{first, second, third}));
    EXPECT_EQ(FindLogFiles(second), Paths{second});
    EXPECT_EQ(NextDailyFile(first), second);
    EXPECT_EQ(NextDailyFile(second), third);
    EXPECT_EQ(NextDailyFile(third), std::nullopt);
    EXPECT_EQ(NextDailyFile(folder / "a_2024-01-01.log"), second);
    EXPECT_EQ(NextDailyFile(folder / "a.log"), std::nullopt);
}

TEST(LogFiles, file_of_that_very_name_goes_before_daily_files) {
    const TempFolder folder;
    static_cast<void>(folder.Write("a_2024-03-05.log", ""));
    const std::string plain = folder.Write("a.log", "");
    EXPECT_EQ(FindLogFiles(plain), Paths{plain});
}

TEST(LogFiles, name_without_any_file_fails) {
    const TempFolder folder;
    const auto reason = [&](const std::string& path) {
        return Reason([&] { static_cast<void>(FindLogFiles(path)); });
    };
    EXPECT_THAT(reason(folder / "a.log"), HasSubstr("nor a daily file"));
    EXPECT_THAT(reason(folder / "none/a.log"), HasSubstr("no such log"));
    EXPECT_EQ(reason(folder / "a_2024-03-05.log"), "no such log: " + folder / "a_2024-03-05.log");
    EXPECT_THAT(reason(folder.Path()), HasSubstr("is a folder"));
    EXPECT_THAT(reason("x"), HasSubstr("no such log"));
}

TEST(LogFiles, file_that_is_no_log_fails) {
    const TempFolder folder;
    std::ostringstream out;
    const auto reason = [&](const std::string& path) {
        return Reason([&] {
            EntryPrinter printer(out, {});
            LogReader reader(printer);
            static_cast<void>(ReadLogFile(reader, path));
        });
    };
    EXPECT_EQ(reason(folder.Write("empty", "")), "no failure");
    EXPECT_THAT(reason(folder.Write("text", "hello\n")), HasSubstr("is not a message log"));
    EXPECT_THAT(reason(folder.Write("zeros", std::string(3'000'000, '\0'))),
                HasSubstr("is not a message log"));
    EXPECT_THAT(reason(folder / "missing"), HasSubstr("cannot read"));
    EXPECT_THAT(reason(folder.Path()), HasSubstr("cannot read"));
}

/// Follows a log; each wait takes the next step, and after the last one the program is told to end.
struct Following {
    std::ostringstream Out;
    Paths Ended;
    std::vector<std::string> Seen;  ///< what was written before each wait

    void Run(const std::string& path, const std::vector<std::function<void()>>& steps) {
        EntryPrinter printer(Out, {});
        LogReader reader(printer);
        std::size_t next = 0;
        FollowLog(
            reader,
            path,
            [&] {
                Seen.push_back(Out.str());
                Out.str("");
                if (next == steps.size()) return false;
                steps[next++]();
                return true;
            },
            [&](const std::string& file, const LogReport&) { Ended.push_back(file); });
        reader.Finish();
    }
};

void Append(const std::string& path, const std::string& text) {
    std::ofstream(path, std::ios::binary | std::ios::app) << text;
}

TEST(FollowLog, what_is_appended_is_shown_before_the_next_wait) {
    const TempFolder folder;
    const std::string one = LogText().Message("Send", 0x81, 1, 1).Text();
    const std::string two = LogText().Message("Received", 1, 2, 1).Text();
    const std::string path = folder.Write("a.log", one);
    Following log;
    log.Run(path, {[&] { Append(path, two); }, [] {}, [&] { Append(path, one); }});
    EXPECT_THAT(log.Seen, ElementsAre(one, two, "", one));
    EXPECT_THAT(log.Ended, ElementsAre(path));
}

TEST(FollowLog, half_a_line_waits_for_its_other_half) {
    const TempFolder folder;
    const std::string one = LogText().Line("a note").Text();
    const std::string path = folder.Write("a.log", one + one.substr(0, 30));
    Following log;
    log.Run(path, {[&] { Append(path, one.substr(30)); }});
    EXPECT_THAT(log.Seen, ElementsAre(one, one));
}

TEST(FollowLog, next_days_files_are_gone_on_with) {
    const TempFolder folder;
    const std::string one = LogText().Message("Send", 0x81, 1, 1).Text();
    const std::string late = LogText().Wait(3'500'000).Message("Received", 1, 2, 1).Text();
    const std::string two = LogText("2024/03/06").Message("Send", 0x81, 1, 2).Text();
    const std::string five = LogText("2024/03/09").Message("Send", 0x81, 1, 3).Text();
    const std::string first = folder.Write("a_2024-03-05.log", one);
    Following log;
    log.Run(first,
            {[&] {
                 Append(first, late);
                 static_cast<void>(folder.Write("a_2024-03-06.log", two));
             },
             [&] { static_cast<void>(folder.Write("a_2024-03-09.log", five)); }});
    EXPECT_THAT(log.Seen, ElementsAre(one, late + two, five));
    EXPECT_THAT(log.Ended,
                ElementsAre(first, folder / "a_2024-03-06.log", folder / "a_2024-03-09.log"));
}

TEST(FollowLog, file_that_is_moved_or_cut_is_read_anew) {
    const TempFolder folder;
    const std::string one = LogText().Message("Send", 0x81, 1, 1).Text();
    const std::string two = LogText().Message("Send", 0x82, 17, 2).Text();
    const std::string path = folder.Write("a.log", one + one);
    Following log;
    log.Run(path,
            {[&] { std::filesystem::rename(path, folder / "old.log"); },
             [&] { Append(path, two + two); },
             [&] { static_cast<void>(folder.Write("a.log", two)); }});
    EXPECT_THAT(log.Seen, ElementsAre(one + one, "", two + two, two));
}

TEST(FollowLog, file_that_is_no_log_fails_before_it_is_waited_for) {
    const TempFolder folder;
    Following log;
    EXPECT_THAT(Reason([&] { log.Run(folder.Write("a.log", "hello\n"), {}); }),
                HasSubstr("is not a message log"));
    EXPECT_TRUE(log.Seen.empty());
}

}  // namespace
}  // namespace hexmire::program
