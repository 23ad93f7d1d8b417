#pragma once

#include <hexmire/driver/ErrorLimiter.h>
#include <hexmire/driver/MessageId.h>

#include <cstddef>
#include <cstdint>
#include <vector>

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
    void Clear() noexcept;

    /// Entries held, those past their time included.
    [[nodiscard]] std::size_t Size() const noexcept { return size_; }

private:
    struct Slot {
        TimePoint Deadline;
        std::uint32_t SystemBytes = 0;
        std::uint8_t Stream = 0;
        std::uint8_t Function = 0;
        bool IsTaken = false;
    };
    static constexpr std::size_t kFirstSweep = 64;
    static constexpr std::size_t kFirstSlots = 16;

    [[nodiscard]] std::size_t HomeOf(std::uint32_t systemBytes) const noexcept;
    [[nodiscard]] std::size_t After(std::size_t place) const noexcept;
    /// The slot with these system bytes, or the free one where they belong.
    [[nodiscard]] std::size_t PlaceOf(std::uint32_t systemBytes) const noexcept;
    [[nodiscard]] const Slot* Find(std::uint32_t systemBytes) const noexcept;
    void Erase(std::size_t place) noexcept;
    /// So many slots, for the entries whose deadline lies behind `after`.
    void Rebuild(std::size_t count, TimePoint after);
    void Sweep(TimePoint now);

    // An entry lies in the slot that its system bytes give, or in the next free one behind it: it
    // needs no memory of its own. A power of two of slots, one in four at least free.
    std::vector<Slot> slots_;
    std::size_t size_ = 0;
    std::size_t sweepAt_ = kFirstSweep;
};

}  // namespace hexmire::link
