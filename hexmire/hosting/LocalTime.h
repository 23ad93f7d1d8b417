#pragma once

#include <hexmire/support/IClock.h>

#include <chrono>

namespace hexmire {

/// Local calendar date and wall-clock time of a moment, after the time zone that is in force now: a
/// change of the zone while the process runs is noticed. A leap second reads as the second before
/// it.
[[nodiscard]] ClockReading LocalTime(std::chrono::system_clock::time_point moment);

}  // namespace hexmire
