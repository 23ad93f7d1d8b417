#pragma once

#include <chrono>
#include <cstdint>

namespace hexmire {

/// One reading of the wall clock in local time.
struct ClockReading {
    std::chrono::year_month_day Date{};     ///< Local calendar date.
    std::chrono::nanoseconds TimeOfDay{0};  ///< Since local midnight, [0 .. 24 h).

    bool operator==(const ClockReading&) const = default;
};

/// The wall clock. Tests set it by hand.
class IClock {
public:
    /// Local date and time, taken in one sample.
    [[nodiscard]] virtual ClockReading Now() const = 0;

    virtual ~IClock() = default;

protected:
    IClock() = default;
    IClock(const IClock&) = default;
    IClock& operator=(const IClock&) = default;
};

}  // namespace hexmire
