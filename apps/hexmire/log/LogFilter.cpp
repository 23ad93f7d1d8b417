#include "log/LogFilter.h"

#include <algorithm>

namespace hexmire::program {

namespace {

bool Matches(const MessageName& wanted, const MessageName& name) {
    return wanted.Stream == name.Stream &&
           (wanted.Function < 0 || wanted.Function == name.Function);
}

LogTime Comparable(LogTime time, const TimeBound& bound) {
    return bound.EveryDay ? time % kDay : time;
}

}  // namespace

bool LogFilter::IsEmpty() const {
    return Messages.empty() && !SystemBytes && !DeviceID && !From && !To && !Errors && !Sent &&
           !Received && !SmlAlone;
}

bool LogFilter::PassesTime(LogTime time) const {
    return (!From || Comparable(time, *From) >= From->Value) &&
           (!To || Comparable(time, *To) <= To->Value);
}

bool LogFilter::PassesMessage(const LogEntry& entry) const {
    const LineFacts& facts = entry.Facts;
    if (Errors && !entry.Error) return false;
    if (!PassesTime(entry.Time)) return false;
    if (SystemBytes && facts.SystemBytes != SystemBytes) return false;
    if (DeviceID && facts.DeviceID != *DeviceID) return false;
    if (Sent != Received) {
        if (facts.Direction == Way::None) return false;
        if ((facts.Direction == Way::Received) != Received) return false;
    }
    return Messages.empty() ||
           std::any_of(Messages.begin(), Messages.end(), [&](const MessageName& wanted) {
               return Matches(wanted, facts.Name);
           });
}

bool LogFilter::Passes(const LogEntry& entry) const {
    return (!SmlAlone || entry.Facts.Kind == LineKind::Message) && PassesMessage(entry);
}

}  // namespace hexmire::program
