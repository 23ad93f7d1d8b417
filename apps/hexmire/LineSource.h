#pragma once

#include <hexmire/hosting/EventLoop.h>

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>

namespace hexmire::program {

/// The lines of the standard input, as they are written.
class LineSource {
public:
    /// The loop outlives this object.
    explicit LineSource(EventLoop& loop);
    LineSource(const LineSource&) = delete;
    LineSource& operator=(const LineSource&) = delete;
    ~LineSource();

    /// The next line; the loop runs while it is waited for. None at the end of the input, or when
    /// `given_up` holds before a line has come.
    [[nodiscard]] std::optional<std::string> Next(const std::function<bool()>& givenUp);

private:
    void ReadStandardInput(int wake);

    /// What the loop's thread alone touches. What the reader has posted may run after this object's
    /// end, while the program closes its link.
    struct Taken {
        std::deque<std::string> Lines{};
        bool HasEnded = false;
    };

    EventLoop& loop_;
    const std::shared_ptr<Taken> taken_ = std::make_shared<Taken>();
    int wake_[2] = {-1, -1};
    std::thread reader_;
};

}  // namespace hexmire::program
