#include <hexmire/hosting/LoopContainer.h>

#include <algorithm>
#include <utility>

namespace hexmire {

namespace {

using Moment = asio::steady_timer::time_point;

/// Timers of one period tick together in a few groups, however many there are: each group wakes the
/// loop once. None ticks before its period is over, and the first tick is late by a small part of
/// it at most.
Moment FirstTick(Moment now, Moment::duration period) {
    constexpr int kGroups = 32;
    const Moment::duration step = std::max(period / kGroups, Moment::duration(1));
    const Moment::duration due = now.time_since_epoch() + period;
    return Moment((due + step - Moment::duration(1)) / step * step);
}

}  // namespace

LoopContainer::LoopContainer(asio::io_context& loop, std::function<void(LoopContainer&)> onIdle)
    : timer_(loop), onIdle_(std::move(onIdle)) {}

void LoopContainer::StartTimer(std::chrono::milliseconds period, std::function<void()> tick) {
    period_ = std::max(period, std::chrono::milliseconds(1));
    tick_ = std::make_shared<const Tick>(std::move(tick));
    timer_.expires_at(FirstTick(asio::steady_timer::clock_type::now(), period_));
    Schedule();
}

void LoopContainer::StopTimer() {
    timer_.cancel();
    tick_.reset();
    onIdle_(*this);
}

void LoopContainer::PropertyChanged(std::string_view name) {
    if (!observer_) return;
    const Observer observer = observer_;  // It may replace itself.
    observer(name);
}

void LoopContainer::Unload(std::function<void()> callback) {
    if (callback) callback();
}

void LoopContainer::Schedule() {
    // The weak reference tells a tick that was due when the timer was stopped or started anew.
    timer_.async_wait([this, expected = std::weak_ptr<const Tick>(tick_)](const auto& error) {
        const std::shared_ptr<const Tick> tick = expected.lock();
        if (error || tick == nullptr || tick != tick_) return;
        const auto now = asio::steady_timer::clock_type::now();
        const auto late = now - timer_.expiry();
        timer_.expires_at(timer_.expiry() + period_ * (1 + late / period_));
        Schedule();
        if (*tick) (*tick)();
    });
}

}  // namespace hexmire
