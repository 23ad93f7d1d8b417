#include "log/LogTime.h"

#include <algorithm>
#include <chrono>
#include <cstdio>

namespace hexmire::program {

namespace {

using std::chrono::sys_days;
using std::chrono::year_month_day;

/// Days from 1970 back to the first day of year 0.
const std::int64_t kEpochDays =
    -sys_days(std::chrono::year(0) / std::chrono::January / 1).time_since_epoch().count();

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

int TwoDigits(const char* text) { return (text[0] - '0') * 10 + (text[1] - '0'); }

/// True when the text looks like the pattern, in which '0' stands for any digit.
bool HasForm(std::string_view text, std::string_view pattern) {
    if (text.size() != pattern.size()) return false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (pattern[i] == '0' ? !IsDigit(text[i]) : text[i] != pattern[i]) return false;
    }
    return true;
}

std::optional<std::int64_t> DayNumber(const char* date) {
    const int year = TwoDigits(date) * 100 + TwoDigits(date + 2);
    const year_month_day day = std::chrono::year(year) /
                               std::chrono::month(static_cast<unsigned>(TwoDigits(date + 5))) /
                               std::chrono::day(static_cast<unsigned>(TwoDigits(date + 8)));
    if (!day.ok()) return std::nullopt;
    return sys_days(day).time_since_epoch().count() + kEpochDays;
}

std::optional<LogTime> TimeOfDay(int hour, int minute, int second, int hundredth) {
    if (hour > 23 || minute > 59 || second > 59) return std::nullopt;
    return ((hour * 60 + minute) * 60 + second) * kSecond + hundredth;
}

std::string Text(LogTime time, const char* format) {
    const std::int64_t days = (time >= 0 ? time : time - kDay + 1) / kDay;
    const LogTime rest = time - days * kDay;
    const year_month_day day{sys_days(std::chrono::days(days - kEpochDays))};
    std::array<char, 64> text{};
    std::snprintf(text.data(),
                  text.size(),
                  format,
                  static_cast<int>(day.year()),
                  static_cast<unsigned>(day.month()),
                  static_cast<unsigned>(day.day()),
                  static_cast<int>(rest / (3600 * kSecond)),
                  static_cast<int>(rest / (60 * kSecond) % 60),
                  static_cast<int>(rest / kSecond % 60),
                  static_cast<int>(rest % kSecond));
    return text.data();
}

/// The parts that a bound leaves out are taken from the pattern "hh:mm:ss.cc" given with it.
std::optional<TimeBound> ParseBound(std::string_view text, std::string_view filling) {
    constexpr std::size_t kDateSize = 10;
    std::string date;
    std::string time(filling);
    if (text.size() >= kDateSize && (text[4] == '-' || text[4] == '/')) {
        date = text.substr(0, kDateSize);
        std::replace(date.begin(), date.end(), '/', '-');
        text.remove_prefix(kDateSize);
        if (!text.empty()) {
            if (text.size() == 1 || (text[0] != ' ' && text[0] != 'T')) return std::nullopt;
            text.remove_prefix(1);
        }
        if (!HasForm(date, "0000-00-00")) return std::nullopt;
    } else if (text.empty()) {
        return std::nullopt;
    }
    if (!text.empty() && !HasForm(text, "00:00") && !HasForm(text, "00:00:00") &&
        !HasForm(text, "00:00:00.00"))
        return std::nullopt;
    time.replace(0, text.size(), text);
    const auto ofDay = TimeOfDay(TwoDigits(time.data()),
                                 TwoDigits(time.data() + 3),
                                 TwoDigits(time.data() + 6),
                                 TwoDigits(time.data() + 9));
    if (!ofDay) return std::nullopt;
    if (date.empty()) return TimeBound{.Value = *ofDay, .EveryDay = true};
    const auto day = DayNumber(date.data());
    if (!day) return std::nullopt;
    return TimeBound{.Value = *day * kDay + *ofDay, .EveryDay = false};
}

}  // namespace

std::string LogTimeText(LogTime time) { return Text(time, "%04d/%02u/%02u %02d:%02d:%02d.%02d"); }

std::string IsoTimeText(LogTime time) { return Text(time, "%04d-%02u-%02uT%02d:%02d:%02d.%02d"); }

std::optional<LogTime> StampReader::Read(std::string_view line) {
    if (line.size() < kSize || !HasForm(line.substr(kDateSize, kSize - kDateSize), " 00:00:00.00 "))
        return std::nullopt;
    if (!std::equal(date_.begin(), date_.end(), line.begin())) {
        if (!HasForm(line.substr(0, kDateSize), "0000/00/00")) return std::nullopt;
        const auto day = DayNumber(line.data());
        if (!day) return std::nullopt;
        day_ = *day * kDay;
        std::copy_n(line.begin(), kDateSize, date_.begin());
    }
    const char* time = line.data() + kDateSize + 1;
    const auto ofDay =
        TimeOfDay(TwoDigits(time), TwoDigits(time + 3), TwoDigits(time + 6), TwoDigits(time + 9));
    if (!ofDay) return std::nullopt;
    return day_ + *ofDay;
}

std::optional<TimeBound> ParseFirst(std::string_view text) {
    return ParseBound(text, "00:00:00.00");
}

std::optional<TimeBound> ParseLast(std::string_view text) {
    return ParseBound(text, "23:59:59.99");
}

std::optional<std::int32_t> ParseDate(std::string_view text) {
    if (!HasForm(text, "0000-00-00") || !DayNumber(text.data())) return std::nullopt;
    return (TwoDigits(text.data()) * 100 + TwoDigits(text.data() + 2)) * 10'000 +
           TwoDigits(text.data() + 5) * 100 + TwoDigits(text.data() + 8);
}

}  // namespace hexmire::program
