#include <hexmire/driver/SystemBytesMap.h>

namespace hexmire::link {

SystemBytesMap::Delivered SystemBytesMap::Deliver(const MessageId& received,
                                                  TimePoint now,
                                                  TimePoint::duration lifetime) {
    const std::uint32_t original = received.SystemBytes;
    if (original < kFirstSubstitute) return {original, false};
    const auto taken = entries_.find(original);
    const bool keepsItsOwn =
        original < kFirstForeign && (taken == entries_.end() || taken->second.Original == original);
    if (!received.IsPrimary()) {
        // A reply of ours can only answer a primary; what is no primary needs no way back.
        return {original < kFirstForeign ? original : UnusedSubstitute(now), false};
    }
    const std::uint32_t delivered = keepsItsOwn ? original : UnusedSubstitute(now);
    return {delivered, Keep(delivered, original, now + lifetime, now)};
}

void SystemBytesMap::Renew(std::uint32_t systemBytes,
                           std::uint32_t original,
                           TimePoint now,
                           TimePoint::duration lifetime) {
    if (systemBytes >= kFirstSubstitute) (void)Keep(systemBytes, original, now + lifetime, now);
}

std::uint32_t SystemBytesMap::Original(std::uint32_t systemBytes, TimePoint now) const {
    const auto found = entries_.find(systemBytes);
    if (found == entries_.end() || found->second.Deadline <= now) return systemBytes;
    return found->second.Original;
}

void SystemBytesMap::Clear() noexcept {
    entries_.clear();
    ages_.clear();
}

std::uint32_t SystemBytesMap::UnusedSubstitute(TimePoint now) {
    for (;;) {
        const std::uint32_t candidate = next_;
        next_ = candidate == kLastSubstitute ? kFirstSubstitute : candidate + 1;
        const auto taken = entries_.find(candidate);
        if (taken == entries_.end() || taken->second.Deadline <= now) return candidate;
    }
}

bool SystemBytesMap::Keep(std::uint32_t systemBytes,
                          std::uint32_t original,
                          TimePoint deadline,
                          TimePoint now) {
    entries_.erase(systemBytes);
    DropStale(now);
    bool forgotOldest = false;
    if (entries_.size() >= kMaxEntries) {
        entries_.erase(ages_.front().SystemBytes);
        ages_.pop_front();
        forgotOldest = true;
    }
    entries_.emplace(systemBytes, Entry{original, ++serial_, deadline});
    ages_.push_back({systemBytes, serial_});
    return forgotOldest;
}

bool SystemBytesMap::IsCurrent(const Age& age) const {
    const auto found = entries_.find(age.SystemBytes);
    return found != entries_.end() && found->second.Serial == age.Serial;
}

void SystemBytesMap::DropStale(TimePoint now) {
    while (!ages_.empty()) {
        const Age oldest = ages_.front();
        if (IsCurrent(oldest)) {
            if (entries_.at(oldest.SystemBytes).Deadline > now) break;
            entries_.erase(oldest.SystemBytes);
        }
        ages_.pop_front();
    }
    // An old entry in front can hide many stale ones behind it; they must not pile up.
    if (ages_.size() > 2 * kMaxEntries) {
        std::erase_if(ages_, [this](const Age& age) { return !IsCurrent(age); });
    }
}

}  // namespace hexmire::link
