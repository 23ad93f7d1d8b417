#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace hexmire::program {

/// A moment as the log writes it: hundredths of a second of local time, counted from the first day
/// of year 0. Local time may jump: two moments tell the time between them only on the same side of
/// a change of the clock.
using LogTime = std::int64_t;

constexpr LogTime kSecond = 100;
constexpr LogTime kDay = 86'400 * kSecond;

/// "2024/03/05 14:07:09.42", as in the log.
[[nodiscard]] std::string LogTimeText(LogTime time);
/// "2024-03-05T14:07:09.42"
[[nodiscard]] std::string IsoTimeText(LogTime time);

/// Reads the time stamps of lines. Lines of one day follow each other, so the day is read once.
class StampReader {
public:
    /// Size of "yyyy/mm/dd hh:mm:ss.cc " with the blank behind it.
    static constexpr std::size_t kSize = 23;

    /// The time that a line begins with; none when it does not begin with a time stamp.
    [[nodiscard]] std::optional<LogTime> Read(std::string_view line);

private:
    static constexpr std::size_t kDateSize = 10;

    std::array<char, kDateSize> date_{};
    LogTime day_ = 0;
};

/// One end of a span of time, as it is given on the command line.
struct TimeBound {
    LogTime Value = 0;
    bool EveryDay = false;  ///< a time without a date: holds on each day

    friend bool operator==(const TimeBound&, const TimeBound&) = default;
};

/// Reads "yyyy-mm-dd", "yyyy-mm-dd hh:mm[:ss[.cc]]" or "hh:mm[:ss[.cc]]"; "/" may stand for "-",
/// and "T" for the blank. What is left out is the least that it can be.
[[nodiscard]] std::optional<TimeBound> ParseFirst(std::string_view text);
/// The same, but what is left out is the most that it can be: "14:07" ends with 14:07:59.99.
[[nodiscard]] std::optional<TimeBound> ParseLast(std::string_view text);

/// 20240305 for the text "2024-03-05"; none when it is no date.
[[nodiscard]] std::optional<std::int32_t> ParseDate(std::string_view text);

}  // namespace hexmire::program
