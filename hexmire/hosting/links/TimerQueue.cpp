#include <hexmire/hosting/links/TimerQueue.h>

namespace hexmire::link {

void TimerQueue::Start(TimerId id, std::chrono::milliseconds delay, TimePoint now) noexcept {
    At(id) = {.Running = true, .Deadline = now + delay, .Delay = delay};
}

bool TimerQueue::IsDue(TimerId id, TimePoint now) const noexcept {
    const Entry& entry = entries_[static_cast<std::size_t>(id)];
    return entry.Running && entry.Deadline <= now;
}

const TimerQueue::Entry* TimerQueue::Earliest() const noexcept {
    const Entry* earliest = nullptr;
    for (const Entry& entry : entries_) {
        if (!entry.Running) continue;
        if (earliest == nullptr || entry.Deadline < earliest->Deadline) earliest = &entry;
    }
    return earliest;
}

std::optional<TimePoint> TimerQueue::NextDeadline() const noexcept {
    const Entry* earliest = Earliest();
    if (earliest == nullptr) return std::nullopt;
    return earliest->Deadline;
}

std::optional<TimerId> TimerQueue::NextDue(TimePoint now) const noexcept {
    const Entry* earliest = Earliest();
    if (earliest == nullptr || earliest->Deadline > now) return std::nullopt;
    return static_cast<TimerId>(earliest - entries_.data());
}

}  // namespace hexmire::link
