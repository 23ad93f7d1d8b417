#include "equipment/Answers.h"

/// Alarms, stream 5.
namespace hexmire::program::answers {

namespace {

/// The keys of an item that holds any number of ALIDs.
std::vector<std::string> KeysIn(const Datum& ids) {
    std::vector<std::string> keys;
    if (!ids.Value.IsArray()) {
        const std::string key = KeyOf(ids);
        return key.empty() ? keys : std::vector<std::string>{key};
    }
    if (!IsInteger(ids.Format)) throw IllegalData("an identifier is missing");
    keys.reserve(ids.Value.ElementCount());
    for (std::int32_t i = ids.Value.LowerBound(); i <= ids.Value.UpperBound(); ++i)
        keys.push_back(KeyOf({.Format = ids.Format, .Value = ids.Value.Element(i)}));
    return keys;
}

}  // namespace

Datum EnableAlarms(Equipment& equipment, const Datum& body) {
    constexpr std::uint8_t kAccepted = 0;
    constexpr std::uint8_t kUnknownAlarm = 1;
    constexpr std::uint8_t kEnable = 0x80;
    const auto& parts = ItemsOf(body, 2);
    const bool enable = (ByteOf(parts[0]) & kEnable) != 0;
    const std::vector<std::string> keys = KeysIn(parts[1]);
    for (const std::string& key : keys) {
        if (equipment.FindAlarm(key) == nullptr) return Binary(kUnknownAlarm);
    }
    if (keys.empty()) {  // No ALID: all of them.
        for (Alarm& alarm : equipment.Model().Alarms)
            alarm.Enabled = enable;
    }
    for (const std::string& key : keys)
        equipment.FindAlarm(key)->Enabled = enable;
    return Binary(kAccepted);
}

Datum ListAlarms(Equipment& equipment, const Datum& body) {
    const std::vector<std::string> keys = KeysIn(body);
    Datum answer = List();
    if (keys.empty()) {
        for (const Alarm& alarm : equipment.Model().Alarms)
            answer.Items.push_back(equipment.AlarmEntry(alarm));
    }
    for (std::size_t i = 0; i < keys.size(); ++i) {
        if (const Alarm* alarm = equipment.FindAlarm(keys[i])) {
            answer.Items.push_back(equipment.AlarmEntry(*alarm));
            continue;
        }
        const Variant id =
            body.Value.IsArray() ? body.Value.Element(static_cast<std::int32_t>(i)) : body.Value;
        answer.Items.push_back(List(
            {Datum{.Format = FormatBinary}, Datum{.Format = body.Format, .Value = id}, Ascii("")}));
    }
    return answer;
}

Datum EnabledAlarms(Equipment& equipment, const Datum&) {
    Datum answer = List();
    for (const Alarm& alarm : equipment.Model().Alarms) {
        if (alarm.Enabled) answer.Items.push_back(equipment.AlarmEntry(alarm));
    }
    return answer;
}

}  // namespace hexmire::program::answers
