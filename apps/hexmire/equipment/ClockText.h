#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace hexmire::program {

/// "yyyymmddhhmmsscc" in local time (SEMI E5, TIME).
[[nodiscard]] std::string ClockText(std::chrono::system_clock::time_point time);

/// The time of such a text in the years 1970 to 2200, or of "yymmddhhmmss" in the years 1970 to
/// 2069; none when it is no time of the calendar.
[[nodiscard]] std::optional<std::chrono::system_clock::time_point> TimeFromClockText(
    std::string_view text);

}  // namespace hexmire::program
