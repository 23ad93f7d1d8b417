#include "equipment/EquipmentOptions.h"

#include "LinkOptions.h"
#include "ScriptWords.h"
#include "equipment/ModelFile.h"
#include <CLI/CLI.hpp>

namespace hexmire::program {

namespace {

Misbehaviour MisbehaviourIn(const std::string& text) {
    const std::string option = "--misbehave '" + text + "': ";
    try {
        return ReadMisbehaviour(SplitWords(text));
    } catch (const UsageOfCommand&) {
        throw UsageError(option + "expected '" + std::string(kMisbehaviourUsage) + "'");
    } catch (const UsageError& error) {
        throw UsageError(option + error.what());
    }
}

}  // namespace

void AddEquipmentOptions(CLI::App& command, EquipmentOptions& options) {
    command
        .add_option("--model",
                    options.Model,
                    "JSON file with the variables, constants, events, alarms, commands and recipes "
                    "of the equipment, in place of those built in")
        ->check(&RefuseEmptyName)
        ->type_name("FILE");
    command.add_flag(
        "--establish", options.Establish, "Send S1F13 at the beginning of each connection");
    command
        .add_option("--misbehave",
                    options.Misbehaviours,
                    "Answer a primary wrongly, to test a host: " + std::string(kMisbehaviourUsage) +
                        "; may be given several times")
        ->type_name("TEXT")
        ->allow_extra_args(false);
}

EquipmentRole::Options SimulationOf(const EquipmentOptions& options) {
    EquipmentRole::Options result;
    result.Model = options.Model.empty() ? BuiltInModel() : LoadModel(options.Model);
    result.Establish = options.Establish;
    for (const std::string& text : options.Misbehaviours)
        result.Planned.Plan(MisbehaviourIn(text));
    return result;
}

}  // namespace hexmire::program
