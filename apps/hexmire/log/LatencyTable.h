#pragma once

#include "log/LogTime.h"
#include "log/Pairing.h"

#include <cstdint>
#include <map>
#include <ostream>
#include <tuple>
#include <vector>

namespace hexmire::program {

/// Counts times in hundredths of a second in constant memory: exactly below 20.48 s, in steps of
/// 1/64 of the value above. A quantile in a step is told as the step's end.
class LatencyHistogram {
public:
    /// `latency` is at least 0.
    void Add(LogTime latency);
    [[nodiscard]] std::uint64_t Count() const noexcept { return count_; }
    /// The least time that at least `percent` of all do not exceed; 0 when there are none.
    [[nodiscard]] LogTime Quantile(unsigned percent) const;
    [[nodiscard]] LogTime Max() const noexcept { return max_; }

private:
    std::vector<std::uint64_t> counts_;  // Grows with the longest time.
    std::uint64_t count_ = 0;
    LogTime max_ = 0;
};

/// How long the primaries of a log waited for their replies, a row for each stream and function.
class LatencyTable {
public:
    /// More than any dictionary holds; what comes beyond is counted in no row.
    static constexpr std::size_t kMostRows = 1024;
    /// Longer than any reply timer can wait: only a change of the clock looks like that.
    static constexpr LogTime kLongest = 600 * kSecond;

    void AddPrimary(const LogEntry& primary);
    void AddReply(const LogEntry& primary, LogTime latency);

    void Print(std::ostream& out) const;
    void PrintJson(std::ostream& out) const;
    /// Primaries that found no row.
    [[nodiscard]] std::uint64_t Beyond() const noexcept { return beyond_; }

private:
    struct Row {
        std::uint64_t Count = 0;
        std::uint64_t Expected = 0;
        std::uint64_t Answered = 0;
        LatencyHistogram Times{};
    };
    using Key = std::tuple<std::int32_t, std::int32_t, bool>;  // Stream, function, received.

    [[nodiscard]] static Key KeyOf(const LogEntry& primary);

    std::map<Key, Row> rows_;
    std::uint64_t beyond_ = 0;
};

}  // namespace hexmire::program
