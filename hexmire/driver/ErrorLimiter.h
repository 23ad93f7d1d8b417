#pragma once

#include <hexmire/driver/LinkErrors.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <vector>

namespace hexmire::link {

/// A moment of the loop's monotonic clock. Nothing in this layer reads a clock.
using TimePoint = std::chrono::steady_clock::time_point;

/// Lets the first 50 errors of one code pass in each second; the others are counted and told of in
/// one summary when the second is over. A flood of bad frames must not become a flood of events.
class ErrorLimiter {
public:
    static constexpr std::uint64_t kErrorsPerWindow = 50;
    static constexpr std::chrono::milliseconds kWindow{1'000};

    struct Summary {
        LinkError Code;
        std::uint64_t Suppressed;

        bool operator==(const Summary&) const = default;
    };

    /// True when an error of this code may be raised now; false when it is to be left out.
    [[nodiscard]] bool Admit(LinkError code, TimePoint now);
    /// The codes whose second is over and of which some were left out; they start afresh.
    [[nodiscard]] std::vector<Summary> TakeSummaries(TimePoint now);
    /// When the next summary is due; none when nothing has been left out.
    [[nodiscard]] std::optional<TimePoint> NextSummary() const;

private:
    struct Entry {
        LinkError Code;
        TimePoint Start;
        std::uint64_t Raised;
        std::uint64_t Suppressed;
    };
    std::vector<Entry> entries_;  // one for each code that has ever been raised: a dozen at most
};

}  // namespace hexmire::link
