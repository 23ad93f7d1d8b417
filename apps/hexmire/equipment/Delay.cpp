#include "equipment/Delay.h"

#include <algorithm>
#include <utility>

namespace hexmire::program {

using namespace std::chrono_literals;

void Delay::After(std::chrono::milliseconds time, std::function<void()> function) {
    waiting_.emplace(Clock::now() + time, std::move(function));
    WaitForNext();
}

void Delay::Clear() {
    waiting_.clear();
    platform_.Container.StopTimer();
}

void Delay::WaitForNext() {
    if (waiting_.empty()) return platform_.Container.StopTimer();
    const auto rest = waiting_.begin()->first - Clock::now();
    const auto period = std::chrono::ceil<std::chrono::milliseconds>(rest);
    platform_.Container.StartTimer(std::max(period, 1ms), [this] { CallDue(); });
}

void Delay::CallDue() {
    while (!waiting_.empty() && waiting_.begin()->first <= Clock::now())
        waiting_.extract(waiting_.begin()).mapped()();
    WaitForNext();
}

}  // namespace hexmire::program
