#include <hexmire/hosting/LocalTime.h>
#include <hexmire/hosting/SystemClock.h>

namespace hexmire {

ClockReading SystemClock::Now() const {
    const auto now = std::chrono::system_clock::now();
    const auto second = std::chrono::floor<std::chrono::seconds>(now);
    if (second != second_) {
        reading_ = LocalTime(second);
        second_ = second;
    }
    ClockReading reading = reading_;
    reading.TimeOfDay += now - second;
    return reading;
}

}  // namespace hexmire
