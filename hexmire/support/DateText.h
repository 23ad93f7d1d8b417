#pragma once

#include <array>
#include <chrono>
#include <cstdio>
#include <string>

namespace hexmire {

/// A day as logs write it: "2024/03/05" or, in names of files, "2024-03-05".
[[nodiscard]] inline std::string DateText(const std::chrono::year_month_day& date, char separator) {
    std::array<char, 32> text{};
    std::snprintf(text.data(),
                  text.size(),
                  "%04d%c%02u%c%02u",
                  static_cast<int>(date.year()),
                  separator,
                  static_cast<unsigned>(date.month()),
                  separator,
                  static_cast<unsigned>(date.day()));
    return text.data();
}

}  // namespace hexmire
