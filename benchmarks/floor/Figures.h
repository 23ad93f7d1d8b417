#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// What contestants of a race measure, and the line of JSON in which they tell it.
namespace hexmire::bench {

using Clock = std::chrono::steady_clock;

/// Names and numbers, written as one JSON object.
class Figures {
public:
    void Add(std::string name, double value) { values_.emplace_back(std::move(name), value); }
    void Print() const;

private:
    std::vector<std::pair<std::string, double>> values_;
};

/// The time for which round trips run: a part that does not count, then one that does.
class RaceTime {
public:
    explicit RaceTime(double seconds);
    [[nodiscard]] bool Counts(Clock::time_point now) const noexcept { return now >= begin_; }
    [[nodiscard]] bool Over(Clock::time_point now) const noexcept { return now >= end_; }
    [[nodiscard]] Clock::time_point Begin() const noexcept { return begin_; }
    [[nodiscard]] Clock::time_point End() const noexcept { return end_; }

private:
    Clock::time_point begin_;
    Clock::time_point end_;
};

/// The times of single round trips.
class RoundTripTimes {
public:
    explicit RoundTripTimes(const RaceTime& time);
    /// One that has ended; it counts when it lies in the time that counts. The first may end later.
    void Add(Clock::time_point begin, Clock::time_point end);
    /// True when the time is over and something has been counted in it.
    [[nodiscard]] bool Complete(Clock::time_point now) const noexcept {
        return time_.Over(now) && !nanoseconds_.empty();
    }
    /// p50_us, p99_us, per_s, count.
    void Print();

private:
    const RaceTime& time_;
    std::vector<std::uint64_t> nanoseconds_;
    Clock::time_point last_;
};

/// True when RACE_SHORT is set: the figures are of no interest, only that they can be had.
bool IsShortRace();

/// Nanoseconds of one call: the median of several batches, after some that do not count.
template <typename Function>
double NanosecondsOf(Function function) {
    const auto warmUp = std::chrono::milliseconds(IsShortRace() ? 1 : 60);
    const auto batch = std::chrono::milliseconds(IsShortRace() ? 1 : 25);
    constexpr std::size_t kBatches = 7;
    const auto run = [&function](std::size_t calls) {
        const auto begin = Clock::now();
        for (std::size_t i = 0; i < calls; ++i)
            function();
        return Clock::now() - begin;
    };
    std::size_t calls = 1;
    auto taken = run(calls);
    for (auto spent = taken; spent < warmUp; spent += taken) {
        if (taken * 2 <= batch) calls *= 2;
        taken = run(calls);
    }
    std::vector<double> batches;
    for (std::size_t i = 0; i < kBatches; ++i) {
        const std::chrono::duration<double, std::nano> time = run(calls);
        batches.push_back(time.count() / static_cast<double>(calls));
    }
    std::nth_element(batches.begin(), batches.begin() + kBatches / 2, batches.end());
    return batches[kBatches / 2];
}

/// Keeps the compiler from leaving out what makes the value.
template <typename Value>
inline void Keep(const Value& value) {
    asm volatile("" : : "r,m"(value) : "memory");
}

/// The whole content of DIRECTORY/NAME.bin; throws when it cannot be read.
std::vector<std::uint8_t> ReadBody(std::string_view directory, std::string_view name);

}  // namespace hexmire::bench
