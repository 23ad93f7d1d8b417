#include <hexmire/driver/OpenTransactions.h>

#include <algorithm>
#include <utility>

namespace hexmire::link {

void OpenTransactions::Add(const MessageId& primary, TimePoint deadline, TimePoint now) {
    if (size_ >= sweepAt_) Sweep(now);
    if (4 * (size_ + 1) > 3 * slots_.size())
        Rebuild(std::max(kFirstSlots, 2 * slots_.size()), TimePoint::min());
    Slot& slot = slots_[PlaceOf(primary.SystemBytes)];
    if (!slot.IsTaken) ++size_;
    slot = {.Deadline = deadline,
            .SystemBytes = primary.SystemBytes,
            .Stream = primary.Stream,
            .Function = primary.Function,
            .IsTaken = true};
}

bool OpenTransactions::EndByReply(const MessageId& secondary, TimePoint now) {
    const Slot* found = Find(secondary.SystemBytes);
    if (found == nullptr || found->Deadline <= now) return false;
    const bool answers = secondary.Function == 0 || secondary.Function == found->Function + 1;
    if (!answers || secondary.Stream != found->Stream) return false;
    Erase(static_cast<std::size_t>(found - slots_.data()));
    return true;
}

bool OpenTransactions::End(std::uint32_t systemBytes, TimePoint now) {
    const Slot* found = Find(systemBytes);
    if (found == nullptr) return false;
    const bool open = found->Deadline > now;
    Erase(static_cast<std::size_t>(found - slots_.data()));
    return open;
}

bool OpenTransactions::IsOpen(std::uint32_t systemBytes, TimePoint now) const {
    const Slot* found = Find(systemBytes);
    return found != nullptr && found->Deadline > now;
}

void OpenTransactions::Clear() noexcept {
    slots_ = decltype(slots_)();  // with their memory
    size_ = 0;
}

std::size_t OpenTransactions::HomeOf(std::uint32_t systemBytes) const noexcept {
    // Hosts count their system bytes up; the factor scatters those that have come round.
    constexpr std::uint64_t kFactor = 0x9E37'79B9'7F4A'7C15;
    return static_cast<std::size_t>(systemBytes * kFactor >> 32U) & (slots_.size() - 1);
}

std::size_t OpenTransactions::After(std::size_t place) const noexcept {
    return (place + 1) & (slots_.size() - 1);
}

std::size_t OpenTransactions::PlaceOf(std::uint32_t systemBytes) const noexcept {
    std::size_t place = HomeOf(systemBytes);
    while (slots_[place].IsTaken && slots_[place].SystemBytes != systemBytes)
        place = After(place);
    return place;
}

const OpenTransactions::Slot* OpenTransactions::Find(std::uint32_t systemBytes) const noexcept {
    if (slots_.empty()) return nullptr;
    const Slot& slot = slots_[PlaceOf(systemBytes)];
    return slot.IsTaken ? &slot : nullptr;
}

/// Those behind move up, but for those that would come before the slot where they belong.
void OpenTransactions::Erase(std::size_t place) noexcept {
    --size_;
    for (std::size_t next = After(place); slots_[next].IsTaken; next = After(next)) {
        const std::size_t fromHome =
            (next - HomeOf(slots_[next].SystemBytes)) & (slots_.size() - 1);
        const std::size_t fromPlace = (next - place) & (slots_.size() - 1);
        if (fromHome < fromPlace) continue;
        slots_[place] = slots_[next];
        place = next;
    }
    slots_[place].IsTaken = false;
}

void OpenTransactions::Rebuild(std::size_t count, TimePoint after) {
    const std::vector<Slot> old = std::exchange(slots_, std::vector<Slot>(count));
    size_ = 0;
    for (const Slot& slot : old) {
        if (!slot.IsTaken || slot.Deadline <= after) continue;
        slots_[PlaceOf(slot.SystemBytes)] = slot;
        ++size_;
    }
}

/// Drops what is past its time, and the room that it took.
void OpenTransactions::Sweep(TimePoint now) {
    const auto left = static_cast<std::size_t>(std::ranges::count_if(
        slots_, [now](const Slot& slot) { return slot.IsTaken && slot.Deadline > now; }));
    std::size_t count = kFirstSlots;
    while (3 * count < 4 * (left + 1))
        count *= 2;
    Rebuild(count, now);
    sweepAt_ = std::max(kFirstSweep, 2 * left);
}

}  // namespace hexmire::link
