#include "equipment/Answers.h"
#include "equipment/ConstantValue.h"

#include <utility>

/// Equipment constants and the clock, stream 2.
namespace hexmire::program::answers {

Datum ConstantValues(Equipment& equipment, const Datum& body) {
    Datum answer = List();
    if (ItemsOf(body).empty()) {
        for (const Constant& constant : equipment.Model().Constants)
            answer.Items.push_back(constant.Value);
    }
    for (const Datum& id : body.Items) {
        const Constant* constant = equipment.FindConstant(KeyOf(id));
        answer.Items.push_back(constant == nullptr ? List() : constant->Value);
    }
    return answer;
}

Datum NewConstants(Equipment& equipment, const Datum& body) {
    constexpr std::uint8_t kAccepted = 0;
    constexpr std::uint8_t kUnknown = 1;
    constexpr std::uint8_t kBusy = 2;
    constexpr std::uint8_t kOutOfRange = 3;
    std::vector<std::pair<Constant*, const Datum*>> asked;
    for (const Datum& entry : ItemsOf(body)) {
        const auto& pair = ItemsOf(entry, 2);
        asked.emplace_back(equipment.FindConstant(KeyOf(pair[0])), &pair[1]);
    }
    if (equipment.Busy) return Binary(kBusy);
    for (const auto& [constant, value] : asked) {
        if (constant == nullptr) return Binary(kUnknown);
    }
    std::vector<Datum> values;
    values.reserve(asked.size());
    for (const auto& [constant, value] : asked) {
        auto fitting = ValueFor(*constant, *value);
        if (!fitting) return Binary(kOutOfRange);
        values.push_back(*std::move(fitting));
    }
    for (std::size_t i = 0; i < asked.size(); ++i)
        asked[i].first->Value = std::move(values[i]);
    if (!asked.empty()) equipment.Fire(equipment.Model().OwnEvents.ConstantChanged);
    return Binary(kAccepted);
}

Datum ConstantNames(Equipment& equipment, const Datum& body) {
    const auto entry = [](const Constant& constant) {
        return List({constant.Id,
                     Ascii(constant.Name),
                     constant.Minimum.value_or(Ascii("")),
                     constant.Maximum.value_or(Ascii("")),
                     constant.Default,
                     Ascii(constant.Units)});
    };
    Datum answer = List();
    if (ItemsOf(body).empty()) {
        for (const Constant& constant : equipment.Model().Constants)
            answer.Items.push_back(entry(constant));
    }
    for (const Datum& id : body.Items) {
        const Constant* constant = equipment.FindConstant(KeyOf(id));
        answer.Items.push_back(
            constant != nullptr
                ? entry(*constant)
                : List({id, Ascii(""), Ascii(""), Ascii(""), Ascii(""), Ascii("")}));
    }
    return answer;
}

Datum DateAndTime(Equipment& equipment, const Datum&) { return Ascii(equipment.TimeText()); }

Datum SetDateAndTime(Equipment& equipment, const Datum& body) {
    constexpr std::uint8_t kAccepted = 0;
    constexpr std::uint8_t kNotDone = 1;
    return Binary(equipment.SetTime(TextOf(body)) ? kAccepted : kNotDone);
}

}  // namespace hexmire::program::answers
