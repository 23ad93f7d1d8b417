#pragma once

#include "equipment/EquipmentRole.h"

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace hexmire::program {

/// What the command line tells about a simulated equipment.
struct EquipmentOptions {
    std::string Model{};  ///< "": the one that is built in
    bool Establish = false;
    std::vector<std::string> Misbehaviours{};
};

void AddEquipmentOptions(CLI::App& command, EquipmentOptions& options);

/// Reads the model. Throws UsageError.
[[nodiscard]] EquipmentRole::Options SimulationOf(const EquipmentOptions& options);

}  // namespace hexmire::program
