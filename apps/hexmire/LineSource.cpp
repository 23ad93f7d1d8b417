#include "LineSource.h"

#include "Failure.h"
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <string_view>
#include <utility>

namespace hexmire::program {

namespace {

constexpr std::size_t kLongestLine = 16 << 20;
constexpr std::size_t kMostUntaken = 1 << 20;

/// What a line takes in memory, about.
std::size_t CostOf(const std::string& line) { return line.size() + 256; }

}  // namespace

LineSource::LineSource(EventLoop& loop) : loop_(loop) {
    if (::pipe(wake_) != 0) throw Failure("cannot watch the standard input");
    reader_ = std::thread([this, wake = wake_[0]] { ReadStandardInput(wake); });
}

LineSource::~LineSource() {
    if (!reader_.joinable()) return;
    {
        const std::scoped_lock lock(mutex_);
        isEnding_ = true;
    }
    wanted_.notify_one();
    ::close(wake_[1]);  // The reader sees the end of the pipe.
    reader_.join();
    ::close(wake_[0]);
}

bool LineSource::Give(std::string line) {
    std::unique_lock lock(mutex_);
    untaken_ += CostOf(line);
    loop_.Post([taken = taken_, line = std::move(line)] { taken->Lines.push_back(line); });
    wanted_.wait(lock, [this] { return untaken_ <= kMostUntaken || isEnding_; });
    return !isEnding_;
}

void LineSource::ReadStandardInput(int wake) {
    std::string pending;
    std::array<char, 4096> buffer{};
    int error = 0;
    while (pending.size() <= kLongestLine) {
        pollfd watched[] = {{.fd = STDIN_FILENO, .events = POLLIN, .revents = 0},
                            {.fd = wake, .events = POLLIN, .revents = 0}};
        if (::poll(watched, 2, -1) < 0) {
            if (errno == EINTR) continue;
            error = errno;
            break;
        }
        if (watched[1].revents != 0) return;
        if (watched[0].revents == 0) continue;
        const ssize_t count = ::read(STDIN_FILENO, buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) error = errno;
        if (count <= 0) break;
        std::size_t searched = pending.size();
        pending.append(buffer.data(), static_cast<std::size_t>(count));
        for (std::size_t end = pending.find('\n', searched); end != std::string::npos;
             end = pending.find('\n', searched)) {
            if (!Give(pending.substr(0, end))) return;
            pending.erase(0, end + 1);
            searched = 0;
        }
    }
    loop_.Post([taken = taken_, line = std::move(pending), error] {
        taken->IsTooLong = line.size() > kLongestLine;
        taken->Error = error;
        if (!line.empty() && !taken->IsTooLong && error == 0) taken->Lines.push_back(line);
        taken->HasEnded = true;
    });
}

std::optional<std::string> LineSource::Next(const std::function<bool()>& givenUp) {
    loop_.RunUntil([&] { return !taken_->Lines.empty() || taken_->HasEnded || givenUp(); },
                   std::chrono::nanoseconds::max());
    if (givenUp()) return std::nullopt;
    if (taken_->Lines.empty()) {
        if (taken_->Error != 0)
            throw Failure(std::string("cannot read the script <stdin>: ") +
                          std::strerror(taken_->Error));
        if (taken_->IsTooLong) throw UsageError("<stdin>: a line is longer than 16 MiB");
        return std::nullopt;
    }
    std::string line = std::move(taken_->Lines.front());
    taken_->Lines.pop_front();
    {
        const std::scoped_lock lock(mutex_);
        untaken_ -= std::min(untaken_, CostOf(line));  // The last one was not counted.
    }
    wanted_.notify_one();
    return line;
}

}  // namespace hexmire::program
