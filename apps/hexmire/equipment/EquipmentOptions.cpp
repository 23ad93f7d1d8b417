#include "equipment/EquipmentOptions.h"

#include "CommandLine.h"
#include "LinkOptions.h"
#include "ScriptWords.h"
#include "equipment/ModelFile.h"

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

void AddEquipmentOptions(Command command, EquipmentOptions& options) {
    command
        .Option("--model",
                options.Model,
                "JSON file with the variables, constants, events, alarms, commands and recipes "
                "of the equipment, in place of those built in")
        .Check(&RefuseEmptyName)
        .TypeName("FILE");
    command.Flag(
        "--establish", options.Establish, "Send S1F13 at the beginning of each connection");
    command
        .Option("--misbehave",
                options.Misbehaviours,
                "Answer a primary wrongly, to test a host: " + std::string(kMisbehaviourUsage) +
                    "; may be given several times")
        .TypeName("TEXT")
        .OneEachTime();
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
