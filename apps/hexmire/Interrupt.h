#pragma once

#include <hexmire/hosting/EventLoop.h>

#include <atomic>
#include <thread>

namespace hexmire::program {

/// Turns SIGINT, SIGTERM and SIGHUP into an event of the loop, so that the program can end its link
/// first. A second one, while the loop has not come to the first, ends the program at once. To be
/// made before anything that starts a thread, and used on the loop's thread.
class Interrupt {
public:
    /// The loop outlives this object.
    explicit Interrupt(EventLoop& loop);
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;
    ~Interrupt();

    /// True once one of the signals has come.
    [[nodiscard]] bool HasCome() const noexcept { return come_; }

    /// True once one of them has come that no prompt survives: SIGTERM or SIGHUP.
    [[nodiscard]] bool IsFinal() const noexcept { return final_; }

    /// A SIGINT that has come counts no longer.
    void Forget() noexcept { come_ = final_; }

private:
    void Watch(EventLoop& loop);

    bool come_ = false;  // The loop's thread alone touches these two.
    bool final_ = false;
    std::atomic<bool> waits_ = false;  // The loop has not taken the last signal yet.
    std::atomic<bool> ending_ = false;
    std::thread watcher_;
};

}  // namespace hexmire::program
