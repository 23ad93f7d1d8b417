#pragma once

#include <hexmire/driver/LinkAction.h>

#include <array>
#include <chrono>
#include <optional>

namespace hexmire::link {

/// The timers of one link: at most one deadline for each TimerId. The loop asks NextDeadline() and
/// sleeps until then.
class TimerQueue {
public:
    /// Starts a timer, or starts it again.
    void Start(TimerId id, std::chrono::milliseconds delay, TimePoint now) noexcept;
    /// Starts an expired timer again with the delay it had.
    void Restart(TimerId id, TimePoint now) noexcept { Start(id, At(id).Delay, now); }
    void Stop(TimerId id) noexcept { At(id).Running = false; }
    void StopAll() noexcept { entries_ = {}; }

    [[nodiscard]] bool IsDue(TimerId id, TimePoint now) const noexcept;
    /// The earliest deadline; none when no timer runs.
    [[nodiscard]] std::optional<TimePoint> NextDeadline() const noexcept;
    /// A timer whose time has come, the earliest first; none when there is none. It goes on
    /// counting as running until it is stopped or started again.
    [[nodiscard]] std::optional<TimerId> NextDue(TimePoint now) const noexcept;

private:
    struct Entry {
        bool Running = false;
        TimePoint Deadline;
        std::chrono::milliseconds Delay{};
    };
    [[nodiscard]] Entry& At(TimerId id) noexcept { return entries_[static_cast<std::size_t>(id)]; }
    [[nodiscard]] const Entry* Earliest() const noexcept;

    std::array<Entry, kTimerCount> entries_{};
};

}  // namespace hexmire::link
