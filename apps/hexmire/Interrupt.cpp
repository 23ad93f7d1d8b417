#include "Interrupt.h"

#include <pthread.h>
#include <unistd.h>

#include <csignal>

namespace hexmire::program {

namespace {

constexpr int kSignalStatus = 128;  ///< what shells add to the number of a signal

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
    ending_ = true;
    // The watcher holds the signal blocked and takes it by sigwait: it wakes, it does not end.
    // NOLINTNEXTLINE(bugprone-bad-signal-to-kill-thread)
    pthread_kill(watcher_.native_handle(), SIGTERM);
    watcher_.join();
}

void Interrupt::Watch(EventLoop& loop) {
    const sigset_t signals = Signals();
    for (int signal = 0; sigwait(&signals, &signal) == 0 && !ending_;) {
        // The loop does not run: its thread waits for a file, or for a reader of the output.
        if (waits_.exchange(true)) ::_exit(kSignalStatus + signal);
        loop.Post([this, isFinal = signal != SIGINT] {
            waits_ = false;
            come_ = true;
            final_ = final_ || isFinal;
        });
    }
}

}  // namespace hexmire::program
