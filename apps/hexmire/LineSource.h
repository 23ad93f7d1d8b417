#pragma once

#include <hexmire/hosting/EventLoop.h>

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace hexmire::program {

/// The lines of the standard input, as they are written. Few are read before they are asked for.
class LineSource {
public:
    /// The loop outlives this object.
    explicit LineSource(EventLoop& loop);
    LineSource(const LineSource&) = delete;
    LineSource& operator=(const LineSource&) = delete;
    ~LineSource();

    /// The next line; the loop runs while it is waited for. None at the end of the input, or when
    /// `givenUp` holds before a line has come. Throws UsageError for a line of more than 16 MiB,
    /// and Failure when the input cannot be read.
    [[nodiscard]] std::optional<std::string> Next(const std::function<bool()>& givenUp);

private:
    void ReadStandardInput(int wake);
    /// Hands the line to the loop and waits until few are untaken. False when this object ends.
    bool Give(std::string line);

    /// What the loop's thread alone touches. What the reader has posted may run after this object's
    /// end, while the program closes its link.
    struct Taken {
        std::deque<std::string> Lines{};
        bool HasEnded = false;
        bool IsTooLong = false;  ///< ended by a line that does not end
        int Error = 0;           ///< ended by what the system could not do
    };

    EventLoop& loop_;
    const std::shared_ptr<Taken> taken_ = std::make_shared<Taken>();
    std::mutex mutex_;  // For the three below.
    std::condition_variable wanted_;
    std::size_t untaken_ = 0;  ///< bytes of lines that were given and not taken
    bool isEnding_ = false;
    int wake_[2] = {-1, -1};
    std::thread reader_;
};

}  // namespace hexmire::program
