#pragma once

#include <hexmire/platform/IContainer.h>

#include <asio/io_context.hpp>
#include <asio/steady_timer.hpp>

#include <chrono>
#include <functional>
#include <memory>
#include <string_view>

namespace hexmire {

/// The standard container of a control: its timer runs on the loop, an unload happens at once, and
/// changed properties are told to an observer.
class LoopContainer final : public IContainer {
public:
    using Observer = std::function<void(std::string_view name)>;

    /// `onIdle` is called whenever the timer was stopped.
    LoopContainer(asio::io_context& loop, std::function<void(LoopContainer&)> onIdle);

    /// The first tick comes up to a thirty-second of the period late, so that many timers tick
    /// together. After it the tick keeps its period: one that comes late does not shift the next,
    /// and missed ones are left out. Its function may stop or restart the timer, and throw: the
    /// timer goes on.
    void StartTimer(std::chrono::milliseconds period, std::function<void()> tick) override;
    void StopTimer() override;
    void PropertyChanged(std::string_view name) override;
    void Unload(std::function<void()> callback) override;

    void Observe(Observer observer) { observer_ = std::move(observer); }
    [[nodiscard]] bool IsRunning() const noexcept { return tick_ != nullptr; }

    // Kept for the pool of containers.
    bool IsLeased = false;
    bool IsPooled = false;

private:
    using Tick = std::function<void()>;

    void Schedule();

    asio::steady_timer timer_;
    std::chrono::milliseconds period_{0};
    std::shared_ptr<const Tick> tick_;  // Shared with the tick that is running.
    Observer observer_;
    std::function<void(LoopContainer&)> onIdle_;
};

}  // namespace hexmire
