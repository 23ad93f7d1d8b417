#pragma once

#include "Interrupt.h"
#include "ScriptCommands.h"
#include "Terminal.h"

#include <string>

namespace hexmire::program {

/// Reads and does commands until "quit", the end of the input or SIGTERM. What fails is told and
/// ends nothing; Ctrl-C drops the line that is typed or ends the command that runs.
void RunPrompt(ScriptContext& context,
               Terminal& terminal,
               Interrupt& interrupt,
               const std::string& prompt);

}  // namespace hexmire::program
