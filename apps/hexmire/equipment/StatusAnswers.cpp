#include "equipment/Answers.h"

/// Stream 1: who the equipment is, its variables and events by name, and its control state.
namespace hexmire::program::answers {

namespace {

Datum Identity(const Equipment& equipment) {
    return List({Ascii(equipment.Model().Name), Ascii(equipment.Model().Revision)});
}

/// For each identifier asked for what `known` makes of it; for none asked for, all of `all`.
template <class T>
Datum ForEach(const Datum& asked, const std::vector<T>& all, auto make) {
    Datum answer = List();
    if (ItemsOf(asked).empty()) {
        for (const T& entry : all)
            answer.Items.push_back(make(entry.Id));
    }
    for (const Datum& id : asked.Items)
        answer.Items.push_back(make(id));
    return answer;
}

Datum NameAndUnits(const Datum& id, const Variable* variable) {
    if (variable == nullptr) return List({id, Ascii(""), Ascii("")});
    return List({variable->Id, Ascii(variable->Name), Ascii(variable->Units)});
}

}  // namespace

Datum AreYouThere(Equipment& equipment, const Datum&) { return Identity(equipment); }

Datum SelectedStatus(Equipment& equipment, const Datum& body) {
    return ForEach(body, equipment.Model().StatusVariables, [&](const Datum& id) {
        const Variable* variable = equipment.FindStatusVariable(KeyOf(id));
        return variable == nullptr ? List() : equipment.ValueOf(*variable);
    });
}

Datum StatusNames(Equipment& equipment, const Datum& body) {
    return ForEach(body, equipment.Model().StatusVariables, [&](const Datum& id) {
        return NameAndUnits(id, equipment.FindStatusVariable(KeyOf(id)));
    });
}

Datum EstablishCommunications(Equipment& equipment, const Datum&) {
    constexpr std::uint8_t kAccepted = 0;
    return List({Binary(kAccepted), Identity(equipment)});
}

Datum GoOffline(Equipment& equipment, const Datum&) {
    constexpr std::uint8_t kAccepted = 0;
    equipment.State(ControlState::HostOffline);
    return Binary(kAccepted);
}

Datum GoOnline(Equipment& equipment, const Datum&) {
    constexpr std::uint8_t kAccepted = 0;
    constexpr std::uint8_t kNotAllowed = 1;
    constexpr std::uint8_t kAlreadyOnline = 2;
    if (equipment.State() == ControlState::Online) return Binary(kAlreadyOnline);
    if (equipment.State() == ControlState::EquipmentOffline) return Binary(kNotAllowed);
    equipment.State(ControlState::Online);
    return Binary(kAccepted);
}

Datum DataValueNames(Equipment& equipment, const Datum& body) {
    return ForEach(body, equipment.Model().DataValues, [&](const Datum& id) {
        return NameAndUnits(id, equipment.FindDataValue(KeyOf(id)));
    });
}

Datum EventNames(Equipment& equipment, const Datum& body) {
    return ForEach(body, equipment.Model().Events, [&](const Datum& id) {
        const CollectionEvent* event = equipment.FindEvent(KeyOf(id));
        if (event == nullptr) return List({id, Ascii(""), List()});
        Datum variables = List();
        for (const std::string& key : event->Variables)
            variables.Items.push_back(equipment.IdOf(key));
        return List({event->Id, Ascii(event->Name), std::move(variables)});
    });
}

}  // namespace hexmire::program::answers
