#pragma once

#include "log/LogEntry.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace hexmire::program {

/// Which entries of a log are asked for. Every condition that is set must hold; of several names
/// one.
struct LogFilter {
    std::vector<MessageName> Messages{};  ///< a negative function: the whole stream
    std::optional<std::uint32_t> SystemBytes{};
    std::optional<std::int32_t> DeviceID{};
    std::optional<TimeBound> From{};
    std::optional<TimeBound> To{};  ///< the last hundredth that is asked for
    bool Errors = false;
    bool Sent = false;  ///< Sent and Received together are the same as none of them
    bool Received = false;
    bool SmlAlone = false;  ///< no headers, lengths, bytes and timers

    /// Nothing is left out, not even what is broken.
    [[nodiscard]] bool IsEmpty() const;
    [[nodiscard]] bool Passes(const LogEntry& entry) const;
    /// The same, whatever kind of line it is: for a message as a whole.
    [[nodiscard]] bool PassesMessage(const LogEntry& entry) const;
    [[nodiscard]] bool PassesTime(LogTime time) const;
};

}  // namespace hexmire::program
