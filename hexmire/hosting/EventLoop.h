#pragma once

#include <hexmire/driver/LinkSettings.h>
#include <hexmire/platform/Platform.h>

#include <chrono>
#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace hexmire {

/// What a host may decide about the surroundings of one control.
struct PlatformOptions {
    /// What the driver starts with. The control pushes its own settings over those that it has;
    /// the driver's own (AutoReconnect, MaxMessageBytes and so on) stay as given here.
    LinkSettings Link{};
    /// Told the name of each property that takes a new value; empty: nobody is told.
    std::function<void(std::string_view name)> PropertyChanged{};
    /// Folder that default paths begin with, without a trailing separator; "": that of the running
    /// executable.
    std::string ApplicationFolder{};
    /// False: no message log is written.
    bool MessageLog = true;
};

/// The loop that carries controls: sockets, timers and everything that a control needs of the
/// system. `Hexmire control(loop.Platform());` is all that a host writes.
///
/// It belongs to the thread that made it: every member but Post is called there, and so are the
/// controls; debug builds stop at a call from another thread. It outlives its controls.
///
/// An exception that leaves a posted function, a timer's function or any other code of the host
/// that the loop called comes out of the running Run, RunFor or RunUntil, or goes to the handler
/// that was set for it. In both cases nothing else is lost: timers go on, what waits is kept, and
/// the loop can be run again. (Handlers of a control's events are not concerned: the control
/// reports what they throw as an error.)
class EventLoop {
public:
    EventLoop();
    EventLoop(const EventLoop&) = delete;
    EventLoop& operator=(const EventLoop&) = delete;
    ~EventLoop();

    /// The surroundings of one control: each call is for one control.
    [[nodiscard]] hexmire::Platform Platform();
    [[nodiscard]] hexmire::Platform Platform(const LinkSettings& link);
    [[nodiscard]] hexmire::Platform Platform(const PlatformOptions& options);

    /// Runs until Stop. It waits even when there is nothing to wait for.
    /// Running a loop from within itself throws std::logic_error, here and in the two below: events
    /// would overtake each other.
    void Run();
    /// Runs for the given time, or until Stop.
    void RunFor(std::chrono::nanoseconds duration);
    /// Runs until the predicate holds; asked first at once, then after each event. False when the
    /// time has passed, or Stop was called, and it still does not hold.
    bool RunUntil(const std::function<bool()>& predicate, std::chrono::nanoseconds timeout);
    /// Ends the running Run, RunFor or RunUntil after the present event. Nothing when none runs.
    void Stop();

    /// Has the function run by the loop, after everything posted before. Legal from any thread, at
    /// any time during the loop's life.
    void Post(std::function<void()> function);

    /// Takes the exceptions that would otherwise come out of Run; an empty handler restores that.
    /// What the handler throws comes out of Run.
    void OnException(std::function<void(std::exception_ptr)> handler);

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace hexmire
