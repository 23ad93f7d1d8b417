#include "equipment/Answers.h"
#include "equipment/ConstantValue.h"

#include <algorithm>
#include <utility>

/// Remote commands, S2F41.
namespace hexmire::program::answers {

namespace {

constexpr std::uint8_t kInvalidCommand = 1;
constexpr std::uint8_t kNotNow = 2;
constexpr std::uint8_t kInvalidParameter = 3;
constexpr std::uint8_t kAlreadySo = 5;

Datum Refused(std::uint8_t reason, Datum parameters = List()) {
    return List({Binary(reason), std::move(parameters)});
}

/// CPACK of one parameter; 0 when there is nothing against it.
std::uint8_t CheckParameter(Equipment& equipment,
                            const CommandParameter* known,
                            const Datum& value) {
    constexpr std::uint8_t kUnknownName = 1;
    constexpr std::uint8_t kIllegalValue = 2;
    constexpr std::uint8_t kIllegalFormat = 3;
    if (known == nullptr) return kUnknownName;
    if (value.Format != known->Format) return kIllegalFormat;
    const bool isAllowed =
        known->Values.empty() || std::ranges::find(known->Values, value) != known->Values.end();
    const Constant* constant = equipment.FindConstant(known->Variable);
    const bool canBeTaken = constant == nullptr || ValueFor(*constant, value).has_value();
    return isAllowed && canBeTaken ? 0 : kIllegalValue;
}

}  // namespace

Datum HostCommand(Equipment& equipment, const Datum& body) {
    const auto& parts = ItemsOf(body, 2);
    const std::string name = KeyOf(parts[0]);
    std::vector<std::pair<Datum, const Datum*>> given;
    for (const Datum& entry : ItemsOf(parts[1])) {
        const auto& pair = ItemsOf(entry, 2);
        given.emplace_back(pair[0], &pair[1]);
    }
    const RemoteCommand* command = equipment.FindCommand(name);
    if (command == nullptr) return Refused(kInvalidCommand);
    EquipmentModel& model = equipment.Model();
    if (equipment.Busy) return Refused(kNotNow);
    if (!command->To.empty() && command->To == model.ProcessState) return Refused(kAlreadySo);
    const bool isPossible =
        command->From.empty() ||
        std::ranges::find(command->From, model.ProcessState) != command->From.end();
    if (!isPossible) return Refused(kNotNow);

    Datum wrong = List();
    std::vector<std::pair<std::string, Datum>> values;
    for (const auto& [parameter, value] : given) {
        const auto known =
            std::ranges::find(command->Parameters, KeyOf(parameter), &CommandParameter::Name);
        const CommandParameter* found = known == command->Parameters.end() ? nullptr : &*known;
        if (const std::uint8_t reason = CheckParameter(equipment, found, *value); reason != 0) {
            wrong.Items.push_back(List({parameter, Binary(reason)}));
        } else if (!found->Variable.empty()) {
            values.emplace_back(found->Variable, *value);
        }
    }
    if (!wrong.Items.empty()) return Refused(kInvalidParameter, std::move(wrong));
    for (const auto& [variable, value] : values)
        equipment.SetValue(variable, value);
    if (!command->To.empty()) model.ProcessState = command->To;
    equipment.Fire(command->Event);
    return List({Binary(command->Acknowledge), List()});
}

}  // namespace hexmire::program::answers
