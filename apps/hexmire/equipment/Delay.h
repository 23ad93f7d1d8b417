#pragma once

#include <hexmire/hosting/EventLoop.h>

#include <chrono>
#include <functional>
#include <map>

namespace hexmire::program {

/// Functions that the loop calls after a time, in the order of their times.
class Delay {
public:
    /// The loop outlives this object.
    explicit Delay(EventLoop& loop) : platform_(loop.Platform()) {}
    Delay(const Delay&) = delete;
    Delay& operator=(const Delay&) = delete;
    ~Delay() { Clear(); }

    void After(std::chrono::milliseconds time, std::function<void()> function);
    /// Nothing that was asked for is called any more.
    void Clear();

private:
    using Clock = std::chrono::steady_clock;

    void WaitForNext();
    void CallDue();

    Platform platform_;  // Its container has the timer.
    std::multimap<Clock::time_point, std::function<void()>> waiting_;
};

}  // namespace hexmire::program
