#pragma once

#include <hexmire/platform/IContainer.h>

#include <chrono>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace hexmire::fakes {

/// A container whose timer ticks when the test says so. Unload runs its callback at once unless
/// HoldUnload is set; then it waits in Held.
class RecordingContainer : public IContainer {
public:
    void StartTimer(std::chrono::milliseconds period, std::function<void()> tick) override {
        ++Starts;
        Note("StartTimer");
        Period = period;
        tick_ = std::move(tick);
    }
    void StopTimer() override {
        ++Stops;
        tick_ = nullptr;
        Note("StopTimer");
    }
    void PropertyChanged(std::string_view name) override {
        Changed.emplace_back(name);
        Note(Changed.back());
    }
    void Unload(std::function<void()> callback) override {
        ++Unloads;
        Note("Unload");
        if (HoldUnload) {
            Held = std::move(callback);
        } else {
            callback();
        }
    }

    /// One tick of the control's timer; nothing while it is stopped.
    void Tick() {
        const auto tick = tick_;
        if (tick) tick();
    }
    [[nodiscard]] bool TimerRuns() const { return static_cast<bool>(tick_); }

    std::vector<std::string> Changed;
    std::chrono::milliseconds Period{0};
    int Starts = 0;
    int Stops = 0;
    int Unloads = 0;
    bool HoldUnload = false;
    std::function<void()> Held;
    /// When set, runs inside each call: "StartTimer", "StopTimer", "Unload" or the changed
    /// property. What it throws leaves the call.
    std::function<void(const std::string& call)> OnCall;

private:
    void Note(const std::string& call) const {
        if (OnCall) OnCall(call);
    }

    std::function<void()> tick_;
};

}  // namespace hexmire::fakes
