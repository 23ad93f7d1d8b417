#pragma once

#include "ScriptCommands.h"
#include "equipment/EquipmentRole.h"

namespace hexmire::program {

/// Adds what an operator of the equipment can do: event, alarm, variable, terminal, online,
/// offline, busy, misbehave, behave. The equipment outlives the commands.
void AddOperatorCommands(ScriptCommands& commands, EquipmentRole& equipment);

/// The value that a text stands for in a variable of that format: an item in SML when it begins
/// with "<", otherwise the text of an A, or numbers or T and F as SML has them between "<U4" and
/// ">". Throws BadCommand.
[[nodiscard]] Datum ValueFromText(std::int32_t format, std::string_view text);

}  // namespace hexmire::program
