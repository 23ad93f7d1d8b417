#include "Interrupt.h"

#include <pthread.h>
#include <unistd.h>

#include <csignal>

namespace hexmire::program {

namespace {

constexpr int kSignalStatus = 128;            ///< what shells add to the number of a signal
constexpr std::chrono::seconds kPatience{1};  ///< a loop that runs takes a signal within this

sigset_t Signals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    // A program that was started to survive its terminal (nohup) does.
    struct sigaction hangUp {};
    if (::sigaction(SIGHUP, nullptr, &hangUp) == 0 && hangUp.sa_handler != SIG_IGN)
        sigaddset(&signals, SIGHUP);
    return signals;
}

}  // namespace

Interrupt::Interrupt(EventLoop& loop) {
    const sigset_t signals = Signals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    watcher_ = std::thread([this, &loop] { Watch(loop); });
}

Interrupt::~Interrupt() {
    {
        const std::scoped_lock lock(mutex_);
        ending_ = true;
    }
    changed_.notify_one();
    // The watcher holds the signal blocked and takes it by sigwait: it wakes, it does not end.
    // NOLINTNEXTLINE(bugprone-bad-signal-to-kill-thread)
    pthread_kill(watcher_.native_handle(), SIGTERM);
    watcher_.join();
}

void Interrupt::KeepTerminalModes() {
    termios modes{};
    if (::tcgetattr(STDIN_FILENO, &modes) != 0) return;
    const std::scoped_lock lock(mutex_);
    modes_ = modes;
}

// In the background, setting modes would stop the program.
void Interrupt::RestoreTerminal() const {
    if (modes_ && ::tcgetpgrp(STDIN_FILENO) == ::getpgrp())
        ::tcsetattr(STDIN_FILENO, TCSANOW, &*modes_);
}

void Interrupt::Watch(EventLoop& loop) {
    const sigset_t signals = Signals();
    for (int signal = 0; sigwait(&signals, &signal) == 0;) {
        std::unique_lock lock(mutex_);
        if (!LoopTakesOn(lock)) {
            RestoreTerminal();
            ::_exit(kSignalStatus + signal);
        }
        if (ending_) return;
        waitsSince_ = Clock::now();
        lock.unlock();
        loop.Post([this, isFinal = signal != SIGINT] { Take(isFinal); });
    }
}

bool Interrupt::LoopTakesOn(std::unique_lock<std::mutex>& lock) {
    if (!waitsSince_) return true;
    return changed_.wait_until(
        lock, *waitsSince_ + kPatience, [this] { return !waitsSince_ || ending_; });
}

void Interrupt::Take(bool isFinal) {
    {
        const std::scoped_lock lock(mutex_);
        waitsSince_.reset();
    }
    changed_.notify_one();
    come_ = true;
    final_ = final_ || isFinal;
}

}  // namespace hexmire::program
