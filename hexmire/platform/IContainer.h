#pragma once

#include <chrono>
#include <functional>
#include <string_view>

namespace hexmire {

/// What hosts one control: its periodic timer, its life and its notifications. Single-threaded;
/// call from the loop thread.
class IContainer {
public:
    /// Calls `tick` every `period` from the loop until StopTimer. There is one timer; starting it
    /// again replaces period and function.
    virtual void StartTimer(std::chrono::milliseconds period, std::function<void()> tick) = 0;
    /// Stops the timer; one that is not running is left alone.
    virtual void StopTimer() = 0;
    /// A property of the control has taken a new value; the name is the property's own.
    virtual void PropertyChanged(std::string_view name) = 0;
    /// The control asks to be unloaded: run `callback`, which is its teardown, at once or when it
    /// is convenient. A callback that comes after the control's end does nothing.
    virtual void Unload(std::function<void()> callback) = 0;

    virtual ~IContainer() = default;

protected:
    IContainer() = default;
    IContainer(const IContainer&) = default;
    IContainer& operator=(const IContainer&) = default;
};

}  // namespace hexmire
