#pragma once

#include "ScriptCommands.h"

#include <functional>
#include <optional>
#include <string>

namespace hexmire::program {

/// The next line of a script; none at its end. `isContinued` tells that a command goes on in it.
using NextLine = std::function<std::optional<std::string>(bool isContinued)>;

/// Puts the lines of a script together to commands.
class ScriptReader {
public:
    /// Errors begin with the name. The table outlives the reader.
    ScriptReader(const ScriptCommands& commands, std::string name, NextLine next);

    /// The next command; none at the end. Throws UsageError with the place of what cannot be
    /// understood.
    [[nodiscard]] std::optional<Action> Next();

    /// The same without the name: throws BadCommand with the place within the command.
    [[nodiscard]] std::optional<Action> Read();

    /// "name:line", where the command that was read last begins.
    [[nodiscard]] std::string Place() const;

private:
    [[nodiscard]] Action ReadCommand(std::string text);

    const ScriptCommands& commands_;
    std::string name_;
    NextLine next_;
    int lines_ = 0;
    int first_ = 0;
};

/// Runs a script from a file. All of it is read before its first command is done. Throws Failure
/// with the place at the first command that fails, and when the program is interrupted.
void RunScriptFile(ScriptContext& context, const std::string& path);

/// Runs a script line by line as it comes.
void RunScriptLines(ScriptContext& context, const std::string& name, NextLine next);

}  // namespace hexmire::program
