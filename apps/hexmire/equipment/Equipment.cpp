#include "equipment/Equipment.h"

#include "equipment/ClockText.h"
#include "equipment/ConstantValue.h"

#include <algorithm>
#include <optional>

namespace hexmire::program {

namespace {

template <class T>
T* FindById(std::vector<T>& entries, std::string_view key) {
    const auto found =
        std::ranges::find_if(entries, [&](const T& entry) { return KeyOf(entry.Id) == key; });
    return found == entries.end() ? nullptr : &*found;
}

template <class T, class Field>
T* FindByText(std::vector<T>& entries, Field T::*field, std::string_view text) {
    const auto found =
        std::ranges::find_if(entries, [&](const T& entry) { return entry.*field == text; });
    return found == entries.end() ? nullptr : &*found;
}

/// The identifiers of those entries for which the flag holds.
template <class T>
Datum Flagged(const std::vector<T>& entries, bool T::*flag) {
    Datum list = List();
    for (const T& entry : entries) {
        if (entry.*flag) list.Items.push_back(entry.Id);
    }
    return list;
}

}  // namespace

Equipment::Equipment(EquipmentModel model, Now now)
    : model_(std::move(model)),
      now_(std::move(now)),
      state_(model_.Online ? ControlState::Online : ControlState::HostOffline) {}

Variable* Equipment::FindStatusVariable(std::string_view key) {
    return FindById(model_.StatusVariables, key);
}
Variable* Equipment::FindDataValue(std::string_view key) {
    return FindById(model_.DataValues, key);
}
Constant* Equipment::FindConstant(std::string_view key) { return FindById(model_.Constants, key); }
CollectionEvent* Equipment::FindEvent(std::string_view key) { return FindById(model_.Events, key); }
Alarm* Equipment::FindAlarm(std::string_view key) { return FindById(model_.Alarms, key); }
RemoteCommand* Equipment::FindCommand(std::string_view name) {
    return FindByText(model_.Commands, &RemoteCommand::Name, name);
}
Recipe* Equipment::FindRecipe(std::string_view id) {
    return FindByText(model_.Recipes, &Recipe::Id, id);
}
ReportDefinition* Equipment::FindReport(std::string_view key) { return FindById(Reports, key); }
EventLink* Equipment::FindLink(std::string_view event) {
    return FindByText(Links, &EventLink::Event, event);
}

bool Equipment::HasVariable(std::string_view key) {
    return FindStatusVariable(key) != nullptr || FindDataValue(key) != nullptr ||
           FindConstant(key) != nullptr;
}

Datum Equipment::IdOf(std::string_view key) {
    if (const Variable* variable = FindStatusVariable(key)) return variable->Id;
    if (const Variable* variable = FindDataValue(key)) return variable->Id;
    const Constant* constant = FindConstant(key);
    return constant == nullptr ? Datum() : constant->Id;
}

Datum Equipment::ValueOf(std::string_view key) {
    if (const Variable* variable = FindStatusVariable(key)) return ValueOf(*variable);
    if (const Variable* variable = FindDataValue(key)) return ValueOf(*variable);
    if (const Constant* constant = FindConstant(key)) return constant->Value;
    return List();
}

Datum Equipment::ValueOf(const Variable& variable) const {
    switch (variable.From) {
        case Variable::Source::Clock:
            return Ascii(TimeText());
        case Variable::Source::ControlState:
            return Unsigned1(static_cast<std::uint8_t>(state_));
        case Variable::Source::ProcessState:
            return Ascii(model_.ProcessState);
        case Variable::Source::AlarmsSet:
            return Flagged(model_.Alarms, &Alarm::Set);
        case Variable::Source::AlarmsEnabled:
            return Flagged(model_.Alarms, &Alarm::Enabled);
        case Variable::Source::EventsEnabled:
            return Flagged(model_.Events, &CollectionEvent::Enabled);
        default:
            return variable.Value;
    }
}

bool Equipment::SetValue(std::string_view key, const Datum& value) {
    Variable* variable = FindStatusVariable(key);
    if (variable == nullptr) variable = FindDataValue(key);
    if (variable != nullptr) {
        if (variable->From != Variable::Source::Kept) return false;
        variable->Value = value;
        return true;
    }
    Constant* constant = FindConstant(key);
    auto fitting = constant == nullptr ? std::nullopt : ValueFor(*constant, value);
    if (!fitting) return false;
    constant->Value = *std::move(fitting);
    Fire(model_.OwnEvents.ConstantChanged);
    return true;
}

void Equipment::State(ControlState state) {
    const bool wasOnline = state_ == ControlState::Online;
    // The last word of an equipment that goes offline is its event.
    if (wasOnline && state != ControlState::Online) Fire(model_.OwnEvents.Offline);
    state_ = state;
    if (!wasOnline && state == ControlState::Online) Fire(model_.OwnEvents.Online);
}

std::string Equipment::TimeText() const { return ClockText(now_() + clockOffset_); }

bool Equipment::SetTime(std::string_view text) {
    const auto time = TimeFromClockText(text);
    if (!time) return false;
    clockOffset_ = *time - now_();
    return true;
}

void Equipment::Fire(std::string_view event) {
    const CollectionEvent* found = FindEvent(event);
    if (found == nullptr || !found->Enabled) return;
    Send(6, 11, EventReport(found->Id));
}

Datum Equipment::EventReport(const Datum& event) {
    Datum reports = List();
    if (const EventLink* link = FindLink(KeyOf(event))) {
        for (const std::string& key : link->Reports)
            reports.Items.push_back(List({FindReport(key)->Id, ReportValues(key)}));
    }
    return List({Unsigned4(nextDataId_++), event, std::move(reports)});
}

Datum Equipment::ReportValues(std::string_view report) {
    Datum values = List();
    if (const ReportDefinition* found = FindReport(report)) {
        for (const std::string& variable : found->Variables)
            values.Items.push_back(ValueOf(variable));
    }
    return values;
}

void Equipment::SetAlarm(Alarm& alarm, bool set) {
    if (alarm.Set == set) return;
    alarm.Set = set;
    if (alarm.Enabled) Send(5, 1, AlarmEntry(alarm));
    Fire(set ? alarm.SetEvent : alarm.ClearEvent);
}

Datum Equipment::AlarmEntry(const Alarm& alarm) const {
    constexpr std::uint8_t kSet = 0x80;
    const auto code = static_cast<std::uint8_t>(alarm.Category | (alarm.Set ? kSet : 0));
    return List({Binary(code), alarm.Id, Ascii(alarm.Text)});
}

void Equipment::Send(std::int32_t stream, std::int32_t function, Datum body) {
    if (state_ != ControlState::Online) return;
    outgoing_.push_back({stream, function, std::move(body)});
}

std::vector<OutgoingPrimary> Equipment::TakeOutgoing() { return std::exchange(outgoing_, {}); }

}  // namespace hexmire::program
