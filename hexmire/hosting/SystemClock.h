#pragma once

#include <hexmire/support/IClock.h>

namespace hexmire {

/// The system's wall clock in the local time zone. Daylight saving and changes of the zone while
/// the process runs are followed.
class SystemClock final : public IClock {
public:
    [[nodiscard]] ClockReading Now() const override;
};

}  // namespace hexmire
