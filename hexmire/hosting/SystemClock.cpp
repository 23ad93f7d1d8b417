#include <hexmire/hosting/LocalTime.h>
#include <hexmire/hosting/SystemClock.h>

namespace hexmire {

ClockReading SystemClock::Now() const { return At(std::chrono::system_clock::now()); }

ClockReading SystemClock::At(std::chrono::system_clock::time_point moment) const {
    const auto second = std::chrono::floor<std::chrono::seconds>(moment);
    if (second != second_) {
        reading_ = LocalTime(second);
        second_ = second;
    }
    ClockReading reading = reading_;
    reading.TimeOfDay += moment - second;
    return reading;
}

}  // namespace hexmire
