#include <hexmire/driver/ErrorLimiter.h>

#include <algorithm>

namespace hexmire::link {

bool ErrorLimiter::Admit(LinkError code, TimePoint now) {
    if (IsNeverLimited(code)) return true;
    auto entry = std::find_if(
        entries_.begin(), entries_.end(), [code](const Entry& one) { return one.Code == code; });
    if (entry == entries_.end()) {
        entries_.push_back({.Code = code, .Start = now, .Raised = 1, .Suppressed = 0});
        return true;
    }
    // While a summary is owed the old window stays: the summary comes first, then a new window.
    if (now - entry->Start >= kWindow && entry->Suppressed == 0) {
        entry->Start = now;
        entry->Raised = 0;
    }
    if (entry->Raised < kErrorsPerWindow) {
        ++entry->Raised;
        return true;
    }
    ++entry->Suppressed;
    return false;
}

std::vector<ErrorLimiter::Summary> ErrorLimiter::TakeSummaries(TimePoint now) {
    std::vector<Summary> summaries;
    for (Entry& entry : entries_) {
        if (entry.Suppressed == 0 || now - entry.Start < kWindow) continue;
        summaries.push_back({entry.Code, entry.Suppressed});
        entry.Start = now;
        entry.Raised = 0;
        entry.Suppressed = 0;
    }
    return summaries;
}

std::optional<TimePoint> ErrorLimiter::NextSummary() const {
    std::optional<TimePoint> next;
    for (const Entry& entry : entries_) {
        if (entry.Suppressed == 0) continue;
        const TimePoint due = entry.Start + kWindow;
        if (!next || due < *next) next = due;
    }
    return next;
}

}  // namespace hexmire::link
