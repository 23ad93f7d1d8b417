#include "equipment/ClockText.h"

#include <algorithm>
#include <ctime>

namespace hexmire::program {

using namespace std::chrono;

std::string ClockText(system_clock::time_point time) {
    const std::time_t second = system_clock::to_time_t(floor<seconds>(time));
    std::tm parts{};
    ::localtime_r(&second, &parts);
    char text[32] = "";
    const std::size_t length = std::strftime(text, sizeof text, "%Y%m%d%H%M%S", &parts);
    const auto hundredths = (time - floor<seconds>(time)) / milliseconds(10);
    return std::string(text, length) + std::to_string(100 + hundredths).substr(1);
}

std::optional<system_clock::time_point> TimeFromClockText(std::string_view text) {
    constexpr std::size_t kShort = 12;
    constexpr std::size_t kLong = 16;
    const bool isDigits = std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
    if (!isDigits || (text.size() != kShort && text.size() != kLong)) return std::nullopt;
    const auto take = [&text](std::size_t count) {
        int number = 0;
        for (const char digit : text.substr(0, count))
            number = 10 * number + (digit - '0');
        text.remove_prefix(count);
        return number;
    };
    const bool isLong = text.size() == kLong;
    int year = take(isLong ? 4 : 2);
    if (!isLong) year += year < 70 ? 2000 : 1900;
    // What the system's clock counts since 1970, in nanoseconds, ends in 2262.
    constexpr int kFirstYear = 1970;
    constexpr int kLastYear = 2200;
    if (year < kFirstYear || year > kLastYear) return std::nullopt;
    std::tm parts{};
    parts.tm_year = year - 1900;
    parts.tm_mon = take(2) - 1;
    parts.tm_mday = take(2);
    parts.tm_hour = take(2);
    parts.tm_min = take(2);
    parts.tm_sec = take(2);
    parts.tm_isdst = -1;
    const milliseconds rest(isLong ? 10 * take(2) : 0);
    const year_month_day day{std::chrono::year(year),
                             month(static_cast<unsigned>(parts.tm_mon + 1)),
                             std::chrono::day(static_cast<unsigned>(parts.tm_mday))};
    if (!day.ok() || parts.tm_hour > 23 || parts.tm_min > 59 || parts.tm_sec > 59)
        return std::nullopt;
    const std::time_t second = std::mktime(&parts);
    if (second == -1) return std::nullopt;  // The seconds may have 32 bits: until 2038.
    return system_clock::from_time_t(second) + rest;
}

}  // namespace hexmire::program
