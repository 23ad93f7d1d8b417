#include "LineSource.h"

#include "Failure.h"
#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <string_view>
#include <utility>

namespace hexmire::program {

LineSource::LineSource(EventLoop& loop) : loop_(loop) {
    if (::pipe(wake_) != 0) throw Failure("cannot watch the standard input");
    reader_ = std::thread([this, wake = wake_[0]] { ReadStandardInput(wake); });
}

LineSource::~LineSource() {
    if (!reader_.joinable()) return;
    ::close(wake_[1]);  // The reader sees the end of the pipe.
    reader_.join();
    ::close(wake_[0]);
}

void LineSource::ReadStandardInput(int wake) {
    std::string pending;
    std::array<char, 4096> buffer{};
    for (;;) {
        pollfd watched[] = {{.fd = STDIN_FILENO, .events = POLLIN, .revents = 0},
                            {.fd = wake, .events = POLLIN, .revents = 0}};
        if (::poll(watched, 2, -1) < 0 && errno != EINTR) break;
        if (watched[1].revents != 0) return;
        if (watched[0].revents == 0) continue;
        const ssize_t count = ::read(STDIN_FILENO, buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;
        pending.append(buffer.data(), static_cast<std::size_t>(count));
        for (std::size_t end = pending.find('\n'); end != std::string::npos;
             end = pending.find('\n')) {
            loop_.Post(
                [taken = taken_, line = pending.substr(0, end)] { taken->Lines.push_back(line); });
            pending.erase(0, end + 1);
        }
    }
    loop_.Post([taken = taken_, line = std::move(pending)] {
        if (!line.empty()) taken->Lines.push_back(line);
        taken->HasEnded = true;
    });
}

std::optional<std::string> LineSource::Next(const std::function<bool()>& givenUp) {
    loop_.RunUntil([&] { return !taken_->Lines.empty() || taken_->HasEnded || givenUp(); },
                   std::chrono::nanoseconds::max());
    if (taken_->Lines.empty() || givenUp()) return std::nullopt;
    std::string line = std::move(taken_->Lines.front());
    taken_->Lines.pop_front();
    return line;
}

}  // namespace hexmire::program
