#include <hexmire/hosting/LocalTime.h>
#include <hexmire/hosting/SystemClock.h>

#include <chrono>

namespace hexmire {

ClockReading SystemClock::Now() const { return LocalTime(std::chrono::system_clock::now()); }

}  // namespace hexmire
