#pragma once

#include "equipment/EquipmentRole.h"

#include <string>
#include <vector>

namespace hexmire::program {

class Command;

/// What the command line tells about a simulated equipment.
struct EquipmentOptions {
    std::string Model{};  ///< "": the one that is built in
    bool Establish = false;
    std::vector<std::string> Misbehaviours{};
};

void AddEquipmentOptions(Command command, EquipmentOptions& options);

/// Reads the model. Throws UsageError.
[[nodiscard]] EquipmentRole::Options SimulationOf(const EquipmentOptions& options);

}  // namespace hexmire::program
