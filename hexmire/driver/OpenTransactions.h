#pragma once

#include <hexmire/driver/ErrorLimiter.h>
#include <hexmire/driver/MessageId.h>

#include <cstddef>
#include <cstdint>
#include <unordered_map>

namespace hexmire::link {

/// Primaries of ours that wait for their reply. The control supervises T3; this table exists to
/// tell a reply or a Reject.req that fits from one that does not, and forgets in silence after T3.
///
/// There is no timer: an entry past its time counts as absent, and is swept out when the table has
/// doubled since the last sweep.
class OpenTransactions {
public:
    /// A primary with W-bit has gone out; it is forgotten after `deadline`.
    void Add(const MessageId& primary, TimePoint deadline, TimePoint now);
    /// Ends the transaction that this secondary answers: same system bytes and stream, function one
    /// above the primary's, or 0 for an abort. False when there is none.
    bool EndByReply(const MessageId& secondary, TimePoint now);
    /// Ends the transaction with these system bytes, whatever its message. False when there is
    /// none.
    bool End(std::uint32_t systemBytes, TimePoint now);
    [[nodiscard]] bool IsOpen(std::uint32_t systemBytes, TimePoint now) const;
    void Clear() noexcept { entries_.clear(); }

    /// Entries held, those past their time included.
    [[nodiscard]] std::size_t Size() const noexcept { return entries_.size(); }

private:
    struct Entry {
        TimePoint Deadline;
        std::uint8_t Stream;
        std::uint8_t Function;
    };
    static constexpr std::size_t kFirstSweep = 64;

    std::unordered_map<std::uint32_t, Entry> entries_;
    std::size_t sweepAt_ = kFirstSweep;
};

}  // namespace hexmire::link
