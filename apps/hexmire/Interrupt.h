#pragma once

#include <hexmire/hosting/EventLoop.h>

#include <termios.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>

namespace hexmire::program {

/// Turns SIGINT, SIGTERM and SIGHUP into an event of the loop, so that the program can end its link
/// first. A further one ends the program at once if the loop has not come to the first within a
/// second: its thread waits for a file, or for a reader of the output. To be made before anything
/// that starts a thread, and used on the loop's thread.
class Interrupt {
public:
    /// The loop outlives this object.
    explicit Interrupt(EventLoop& loop);
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;
    ~Interrupt();

    /// The terminal gets its present modes back when the program is ended at once.
    void KeepTerminalModes();

    /// True once one of the signals has come.
    [[nodiscard]] bool HasCome() const noexcept { return come_; }

    /// True once one of them has come that no prompt survives: SIGTERM or SIGHUP.
    [[nodiscard]] bool IsFinal() const noexcept { return final_; }

    /// A SIGINT that has come counts no longer.
    void Forget() noexcept { come_ = final_; }

private:
    using Clock = std::chrono::steady_clock;

    void Watch(EventLoop& loop);
    /// False when the loop, given its time, has not come to the signals before.
    bool LoopTakesOn(std::unique_lock<std::mutex>& lock);
    void Take(bool isFinal);
    void RestoreTerminal() const;

    bool come_ = false;  // The loop's thread alone touches these two.
    bool final_ = false;
    std::mutex mutex_;  // For the four below.
    std::condition_variable changed_;
    std::optional<Clock::time_point> waitsSince_;  ///< for the loop to take a signal
    bool ending_ = false;
    std::optional<termios> modes_;
    std::thread watcher_;
};

}  // namespace hexmire::program
