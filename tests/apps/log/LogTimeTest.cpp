#include "log/LogTime.h"
#include <gtest/gtest.h>

#include <string>

namespace hexmire::program {
namespace {

LogTime Moment(const char* stamp) { return StampReader().Read(std::string(stamp) + ' ').value(); }

TEST(LogTime, time_stamp_is_read_and_written_alike) {
    for (const char* stamp : {"2024/03/05 14:07:09.42",
                              "0000/01/01 00:00:00.00",
                              "1969/12/31 23:59:59.99",
                              "2024/02/29 12:00:00.01",
                              "9999/12/31 23:59:59.99"})
        EXPECT_EQ(LogTimeText(Moment(stamp)), stamp);
    EXPECT_EQ(IsoTimeText(Moment("2024/03/05 14:07:09.42")), "2024-03-05T14:07:09.42");
}

TEST(LogTime, times_are_hundredths_apart_over_days_and_leap_days) {
    EXPECT_EQ(Moment("2024/03/01 00:00:00.00") - Moment("2024/02/28 23:59:59.99"), kDay + 1);
    EXPECT_EQ(Moment("2023/03/01 00:00:00.00") - Moment("2023/02/28 23:59:59.99"), 1);
    EXPECT_EQ(Moment("2024/03/05 14:07:09.42") - Moment("2024/03/05 13:06:08.41"), 366'101);
}

TEST(LogTime, line_without_a_whole_time_stamp_has_no_time) {
    for (const char* line : {"",
                             "2024/03/05 14:07:09.42",
                             "2024-03-05 14:07:09.42 ",
                             "2024/03/05T14:07:09.42 ",
                             "2024/13/05 14:07:09.42 ",
                             "2024/02/30 14:07:09.42 ",
                             "2023/02/29 14:07:09.42 ",
                             "2024/03/05 24:00:00.00 ",
                             "2024/03/05 14:60:00.00 ",
                             "2024/03/05 14:07:60.00 ",
                             "2024/03/05 14:07:09,42 ",
                             "2024/03/05 14:07:09.4x ",
                             "2024/03/05 14:07:09.42\t",
                             " 2024/03/05 14:07:09.42 "})
        EXPECT_EQ(StampReader().Read(line), std::nullopt) << line;
}

TEST(LogTime, bad_day_is_bad_behind_a_good_one) {
    StampReader reader;
    EXPECT_TRUE(reader.Read("2024/03/05 14:07:09.42 "));
    EXPECT_FALSE(reader.Read("2024/03/35 14:07:09.42 "));
    EXPECT_TRUE(reader.Read("2024/03/05 14:07:09.43 "));
}

TEST(LogTime, bound_without_a_part_begins_as_early_and_ends_as_late_as_it_can) {
    const struct {
        const char* Text;
        const char* First;
        const char* Last;
    } kCases[] = {
        {"2024-03-05", "2024/03/05 00:00:00.00", "2024/03/05 23:59:59.99"},
        {"2024/03/05 14:07", "2024/03/05 14:07:00.00", "2024/03/05 14:07:59.99"},
        {"2024-03-05T14:07:09", "2024/03/05 14:07:09.00", "2024/03/05 14:07:09.99"},
        {"2024-03-05 14:07:09.42", "2024/03/05 14:07:09.42", "2024/03/05 14:07:09.42"},
    };
    for (const auto& one : kCases) {
        EXPECT_EQ(ParseFirst(one.Text), (TimeBound{.Value = Moment(one.First)})) << one.Text;
        EXPECT_EQ(ParseLast(one.Text), (TimeBound{.Value = Moment(one.Last)})) << one.Text;
    }
    EXPECT_EQ(ParseFirst("14:07"), (TimeBound{.Value = 5'082'000, .EveryDay = true}));
    EXPECT_EQ(ParseLast("14:07"), (TimeBound{.Value = 5'087'999, .EveryDay = true}));
}

TEST(LogTime, anything_else_is_no_bound) {
    for (const char* text : {"",
                             "14",
                             "14:7",
                             "24:00",
                             "14:07:09.4",
                             "2024-03",
                             "2024-03-32",
                             "2024-03-05 ",
                             "2024-03-05 14",
                             "2024-03-0514:07",
                             "2024-03-05 14:07 ",
                             "yesterday",
                             "abcd-03-05"}) {
        EXPECT_EQ(ParseFirst(text), std::nullopt) << text;
        EXPECT_EQ(ParseLast(text), std::nullopt) << text;
    }
}

TEST(LogTime, date_of_a_daily_file_is_a_number) {
    EXPECT_EQ(ParseDate("2024-03-05"), 20'240'305);
    for (const char* text : {"", "2024/03/05", "2024-3-5", "2024-02-30", "2024-03-05x"})
        EXPECT_EQ(ParseDate(text), std::nullopt) << text;
}

}  // namespace
}  // namespace hexmire::program
