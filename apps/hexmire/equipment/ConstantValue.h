#pragma once

#include "equipment/EquipmentModel.h"

#include <optional>

namespace hexmire::program {

/// The value as the constant's format holds it; none when it is of another kind, more than one, or
/// outside of the format's range or the constant's limits.
[[nodiscard]] std::optional<Datum> ValueFor(const Constant& constant, const Datum& value);

}  // namespace hexmire::program
