#pragma once

#include <hexmire/driver/ErrorLimiter.h>
#include <hexmire/driver/MessageId.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <unordered_map>

namespace hexmire::link {

/// Stands between the peer's system bytes, which are 32 bits, and the control's, which are 31.
///
/// A received message whose system bytes are 0x80000000 or above goes up under an unused substitute
/// from 0x40000000 to 0x7FFFFFFF. For a primary the way back is kept, so that its reply goes out
/// with the original bytes. Primaries whose own system bytes lie in the substitutes' range are kept
/// as they are, so that no substitute can be mistaken for them.
class SystemBytesMap {
public:
    static constexpr std::uint32_t kFirstForeign = 0x80000000;
    static constexpr std::uint32_t kFirstSubstitute = 0x40000000;
    static constexpr std::uint32_t kLastSubstitute = 0x7FFFFFFF;
    /// Ways back that are kept; the oldest is given up for a new one.
    static constexpr std::size_t kMaxEntries = 65'536;

    struct Delivered {
        std::uint32_t SystemBytes;  ///< what the control sees
        bool ForgotOldest;          ///< a way back was given up, for the table was full

        bool operator==(const Delivered&) const = default;
    };

    /// The system bytes under which a received message is delivered. A way back lasts `lifetime`,
    /// after which the peer waits no more.
    [[nodiscard]] Delivered Deliver(const MessageId& received,
                                    TimePoint now,
                                    TimePoint::duration lifetime);
    /// The way back of a primary that Deliver has given these system bytes lasts `lifetime` from
    /// now.
    void Renew(std::uint32_t systemBytes,
               std::uint32_t original,
               TimePoint now,
               TimePoint::duration lifetime);
    /// The peer's system bytes for a reply of the control.
    [[nodiscard]] std::uint32_t Original(std::uint32_t systemBytes, TimePoint now) const;
    /// The reply is on its way: its way back is not needed any more.
    void Answered(std::uint32_t systemBytes) { entries_.erase(systemBytes); }
    void Clear() noexcept;

    [[nodiscard]] std::size_t Size() const noexcept { return entries_.size(); }

private:
    struct Entry {
        std::uint32_t Original;
        std::uint64_t Serial;
        TimePoint Deadline;
    };
    struct Age {
        std::uint32_t SystemBytes;
        std::uint64_t Serial;
    };

    [[nodiscard]] std::uint32_t UnusedSubstitute(TimePoint now);
    bool Keep(std::uint32_t systemBytes, std::uint32_t original, TimePoint deadline, TimePoint now);
    [[nodiscard]] bool IsCurrent(const Age& age) const;
    void DropStale(TimePoint now);

    std::unordered_map<std::uint32_t, Entry> entries_;
    std::deque<Age> ages_;  // oldest first; entries that were answered meanwhile are stale
    std::uint64_t serial_ = 0;
    std::uint32_t next_ = kFirstSubstitute;
};

}  // namespace hexmire::link
