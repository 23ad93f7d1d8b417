#include <hexmire/hosting/LocalTime.h>
#include <hexmire/hosting/SystemClock.h>

#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>

#include <chrono>
#include <cstdlib>
#include <optional>
#include <string>

namespace hexmire {
namespace {

using namespace std::chrono_literals;
using std::chrono::sys_days;
using std::chrono::system_clock;

/// The zone of the process for the time of one test.
class Zone {
public:
    explicit Zone(const char* name) {
        if (const char* before = std::getenv("TZ")) before_ = before;
        Set(name);
    }
    Zone(const Zone&) = delete;
    Zone& operator=(const Zone&) = delete;
    ~Zone() {
        before_ ? ::setenv("TZ", before_->c_str(), 1) : ::unsetenv("TZ");
        ::tzset();
    }
    static void Set(const char* name) { ::setenv("TZ", name, 1); }

private:
    std::optional<std::string> before_;
};

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

}  // namespace
}  // namespace hexmire
