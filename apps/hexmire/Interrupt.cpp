#include "Interrupt.h"

#include <pthread.h>

#include <csignal>

namespace hexmire::program {

namespace {

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
    for (int signal = 0; sigwait(&signals, &signal) == 0 && !ending_;)
        loop.Post([this, isFinal = signal != SIGINT] {
            come_ = true;
            final_ = final_ || isFinal;
        });
}

}  // namespace hexmire::program
