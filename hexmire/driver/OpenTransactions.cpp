#include <hexmire/driver/OpenTransactions.h>

#include <algorithm>

namespace hexmire::link {

void OpenTransactions::Add(const MessageId& primary, TimePoint deadline, TimePoint now) {
    if (entries_.size() >= sweepAt_) {
        std::erase_if(entries_, [now](const auto& entry) { return entry.second.Deadline <= now; });
        sweepAt_ = std::max(kFirstSweep, 2 * entries_.size());
    }
    entries_.insert_or_assign(
        primary.SystemBytes,
        Entry{.Deadline = deadline, .Stream = primary.Stream, .Function = primary.Function});
}

bool OpenTransactions::EndByReply(const MessageId& secondary, TimePoint now) {
    const auto found = entries_.find(secondary.SystemBytes);
    if (found == entries_.end() || found->second.Deadline <= now) return false;
    const Entry& entry = found->second;
    const bool answers = secondary.Function == 0 || secondary.Function == entry.Function + 1;
    if (!answers || secondary.Stream != entry.Stream) return false;
    entries_.erase(found);
    return true;
}

bool OpenTransactions::End(std::uint32_t systemBytes, TimePoint now) {
    const bool open = IsOpen(systemBytes, now);
    entries_.erase(systemBytes);
    return open;
}

bool OpenTransactions::IsOpen(std::uint32_t systemBytes, TimePoint now) const {
    const auto found = entries_.find(systemBytes);
    return found != entries_.end() && found->second.Deadline > now;
}

}  // namespace hexmire::link
