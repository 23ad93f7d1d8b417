#include <hexmire/hosting/LocalTime.h>

#include <algorithm>
#include <ctime>

namespace hexmire {

ClockReading LocalTime(std::chrono::system_clock::time_point moment) {
    using namespace std::chrono;
    const auto second = floor<seconds>(moment);
    const std::time_t count = system_clock::to_time_t(second);
    std::tm parts{};
    ::tzset();  // localtime_r alone may keep the zone it saw first.
    if (::localtime_r(&count, &parts) == nullptr) return {};
    ClockReading reading;
    reading.Date = year_month_day(year(parts.tm_year + 1900),
                                  month(static_cast<unsigned>(parts.tm_mon + 1)),
                                  day(static_cast<unsigned>(parts.tm_mday)));
    reading.TimeOfDay = hours(parts.tm_hour) + minutes(parts.tm_min) +
                        seconds(std::min(parts.tm_sec, 59)) + (moment - second);
    return reading;
}

}  // namespace hexmire
