#pragma once

#include <hexmire/support/IClock.h>

#include <chrono>

namespace hexmire {

/// The system's wall clock in the local time zone. Daylight saving and changes of the zone while
/// the process runs are followed, the latter within a second.
class SystemClock final : public IClock {
public:
    [[nodiscard]] ClockReading Now() const override;
    /// What the clock shows at that moment.
    [[nodiscard]] ClockReading At(std::chrono::system_clock::time_point moment) const;

private:
    // Logs and traces ask many times within one second: its calendar is worked out once.
    mutable std::chrono::sys_seconds second_ = std::chrono::sys_seconds::min();
    mutable ClockReading reading_{};
};

}  // namespace hexmire
