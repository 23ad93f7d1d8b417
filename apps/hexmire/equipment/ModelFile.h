#pragma once

#include "equipment/EquipmentModel.h"

#include <string>
#include <string_view>

namespace hexmire::program {

/// Reads a model from JSON text. Throws UsageError with the name and the place of what is wrong:
/// "NAME: alarms[2].id: ...".
[[nodiscard]] EquipmentModel ReadModel(std::string_view json, const std::string& name);

/// The same from a file.
[[nodiscard]] EquipmentModel LoadModel(const std::string& path);

/// The model that `hexmire equipment` has without a file: examples/equipment.json.
[[nodiscard]] EquipmentModel BuiltInModel();

}  // namespace hexmire::program
