#include <hexmire/hosting/LocalTime.h>
#include <hexmire/hosting/SystemClock.h>

#include "Zone.h"
#include <gtest/gtest.h>

#include <chrono>

namespace hexmire {
namespace {

using namespace std::chrono_literals;
using fakes::Zone;
using std::chrono::sys_days;
using std::chrono::system_clock;

constexpr auto kSummerTimeBegins = sys_days(2024y / 3 / 31) + 1h;  // 01:00 UTC, Central Europe

TEST(LocalTime, is_the_wall_clock_of_the_zone) {
    const Zone zone("CET-1CEST,M3.5.0,M10.5.0/3");
    const ClockReading reading = LocalTime(sys_days(2024y / 3 / 5) + 13h + 7min + 9s + 420ms);
    EXPECT_EQ(reading.Date, 2024y / 3 / 5);
    EXPECT_EQ(reading.TimeOfDay, 14h + 7min + 9s + 420ms);
}

TEST(LocalTime, jumps_over_the_hour_that_summer_time_leaves_out) {
    const Zone zone("CET-1CEST,M3.5.0,M10.5.0/3");
    EXPECT_EQ(LocalTime(kSummerTimeBegins - 1s).TimeOfDay, 1h + 59min + 59s);
    EXPECT_EQ(LocalTime(kSummerTimeBegins).TimeOfDay, 3h);
    EXPECT_EQ(LocalTime(kSummerTimeBegins).Date, 2024y / 3 / 31);
}

TEST(LocalTime, repeats_the_hour_when_summer_time_ends) {
    const Zone zone("CET-1CEST,M3.5.0,M10.5.0/3");
    const auto change = sys_days(2024y / 10 / 27) + 1h;
    EXPECT_EQ(LocalTime(change - 1s).TimeOfDay, 2h + 59min + 59s);
    EXPECT_EQ(LocalTime(change).TimeOfDay, 2h);
}

TEST(LocalTime, date_is_the_local_one_over_midnight) {
    const auto moment = sys_days(2024y / 12 / 31) + 20h;
    const Zone zone("JST-9");
    EXPECT_EQ(LocalTime(moment).Date, 2025y / 1 / 1);
    EXPECT_EQ(LocalTime(moment).TimeOfDay, 5h);
    Zone::Set("PST8");
    EXPECT_EQ(LocalTime(moment).Date, 2024y / 12 / 31);
    EXPECT_EQ(LocalTime(moment).TimeOfDay, 12h);
}

TEST(LocalTime, notices_that_the_zone_changed_while_the_process_runs) {
    const auto moment = sys_days(2024y / 3 / 5) + 12h;
    const Zone zone("UTC0");
    EXPECT_EQ(LocalTime(moment).TimeOfDay, 12h);
    Zone::Set("AAA-3");
    EXPECT_EQ(LocalTime(moment).TimeOfDay, 15h);
}

TEST(LocalTime, before_1970_is_rounded_down_to_the_second) {
    const Zone zone("UTC0");
    const ClockReading reading = LocalTime(sys_days(1969y / 12 / 31) + 23h + 59min + 59s + 500ms);
    EXPECT_EQ(reading.Date, 1969y / 12 / 31);
    EXPECT_EQ(reading.TimeOfDay, 23h + 59min + 59s + 500ms);
}

TEST(SystemClock, reads_the_present_in_one_sample) {
    const ClockReading before = LocalTime(system_clock::now());
    const ClockReading now = SystemClock().Now();
    const ClockReading after = LocalTime(system_clock::now());
    const auto count = [](const ClockReading& r) { return sys_days(r.Date) + r.TimeOfDay; };
    EXPECT_LE(count(before), count(now));
    EXPECT_LE(count(now), count(after));
    EXPECT_LT(now.TimeOfDay, 24h);
}

TEST(SystemClock, shows_what_the_zone_shows_at_that_moment) {
    const Zone zone("CET-1CEST,M3.5.0,M10.5.0/3");
    const SystemClock clock;
    for (const auto step : {-1ms, 0ms, 999ms, 1000ms, 500ms, -1000ms})
        EXPECT_EQ(clock.At(kSummerTimeBegins + step), LocalTime(kSummerTimeBegins + step));
}

TEST(SystemClock, follows_a_change_of_the_zone_within_a_second) {
    const auto moment = sys_days(2024y / 3 / 5) + 12h;
    const Zone zone("UTC0");
    const SystemClock clock;
    EXPECT_EQ(clock.At(moment).TimeOfDay, 12h);
    Zone::Set("AAA-3");
    EXPECT_EQ(clock.At(moment + 1s).TimeOfDay, 15h + 1s);
}

TEST(SystemClock, shows_the_first_second_of_1970) {
    const Zone zone("UTC0");
    EXPECT_EQ(SystemClock().At(sys_days(1970y / 1 / 1) + 420ms),
              (ClockReading{1970y / 1 / 1, 420ms}));
}

}  // namespace
}  // namespace hexmire
