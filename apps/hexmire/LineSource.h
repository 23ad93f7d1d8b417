#pragma once

#include <hexmire/hosting/EventLoop.h>

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>

namespace hexmire::program {

/// The lines of a script, from a file or, as they are written, from the standard input ("-").
class LineSource {
public:
    /// Throws Failure when the file cannot be read. The loop outlives this object.
    LineSource(EventLoop& loop, const std::string& path);
    LineSource(const LineSource&) = delete;
    LineSource& operator=(const LineSource&) = delete;
    ~LineSource();

    /// The next line; the loop runs while it is waited for. None at the end of the script, or when
    /// `given_up` holds before a line has come.
    [[nodiscard]] std::optional<std::string> Next(const std::function<bool()>& givenUp);

    /// Number of the line that was taken last, from 1.
    [[nodiscard]] int Number() const noexcept { return number_; }

private:
    void ReadFile(const std::string& path);
    void ReadStandardInput(int wake);
    void Add(std::string line);

    EventLoop& loop_;
    std::deque<std::string> lines_;  // The loop's thread alone touches these three.
    bool ended_ = false;
    int number_ = 0;
    int wake_[2] = {-1, -1};
    std::thread reader_;
};

}  // namespace hexmire::program
