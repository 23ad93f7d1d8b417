#pragma once

#include <hexmire/support/IClock.h>

#include <chrono>

namespace hexmire::fakes {

/// A wall clock that stands still until a test moves it. Starts on 5 March 2024, 14:07:09.42.
class FakeClock : public IClock {
public:
    [[nodiscard]] ClockReading Now() const override { return reading_; }

    void SetDate(int year, unsigned month, unsigned day) {
        reading_.Date = std::chrono::year_month_day{
            std::chrono::year{year}, std::chrono::month{month}, std::chrono::day{day}};
    }
    void SetTimeOfDay(std::chrono::nanoseconds time) { reading_.TimeOfDay = time; }
    /// Moves forward (or back), over midnights too.
    void Advance(std::chrono::nanoseconds step) {
        using namespace std::chrono;
        nanoseconds total = reading_.TimeOfDay + step;
        const auto days = floor<std::chrono::days>(total);
        reading_.Date = year_month_day{sys_days{reading_.Date} + days};
        reading_.TimeOfDay = total - days;
    }

private:
    ClockReading reading_{
        std::chrono::year_month_day{
            std::chrono::year{2024}, std::chrono::March, std::chrono::day{5}},
        std::chrono::hours{14} + std::chrono::minutes{7} + std::chrono::milliseconds{9420}};
};

}  // namespace hexmire::fakes
