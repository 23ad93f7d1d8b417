#pragma once

#include <hexmire/hosting/EventLoop.h>

#include "Failure.h"
#include "Peer.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace hexmire::program {

using Duration = std::chrono::milliseconds;

class ScriptCommands;

/// What commands work with. Everything outlives it.
struct ScriptContext {
    EventLoop& Loop;
    Peer& Side;
    const ScriptCommands& Commands;
    std::ostream& Out;              ///< takes what list, show, set and help print, in UTF-8
    std::function<bool()> GivenUp;  ///< the program, or the command, is to end
    bool Ended = false;             ///< set by quit

    /// Runs the loop until the predicate holds; false when the time has passed. Throws Failure when
    /// given up.
    [[nodiscard]] bool WaitFor(const std::function<bool()>& predicate, Duration timeout) const;
};

/// What a command does; throws Failure when that does not happen.
using Action = std::function<void(ScriptContext& context)>;

/// A command that cannot be understood, and the place within its text.
class BadCommand : public UsageError {
public:
    explicit BadCommand(const std::string& reason) : UsageError(reason) {}
    BadCommand(const std::string& reason, int line, int column, bool isIncomplete)
        : UsageError(reason), Line(line), Column(column), IsIncomplete(isIncomplete) {}

    int Line = 1;               ///< from 1
    int Column = 0;             ///< from 1; 0 when the whole line is meant
    bool IsIncomplete = false;  ///< more lines could put it right
};

/// A command as it was written.
struct CommandText {
    std::vector<std::string_view> Words;  ///< behind the command's name
    std::string_view Rest;                ///< from the first of these words to the last
    std::string_view Whole;  ///< the name and, for commands with SML, further lines too
};

/// What the Tab key offers behind a command's name.
enum class Completion : std::uint8_t { Nothing, Templates, Properties, Commands };

/// A row of the table that the reader, the help and the completion share.
struct ScriptCommand {
    std::string Name;
    std::string Arguments;  ///< "[SECONDS]"; "" for none
    std::string Help;       ///< one line
    Completion Completes = Completion::Nothing;
    /// Reads what stands behind the name. Throws BadCommand; RefuseUsage does for arguments that
    /// do not look like `Arguments`.
    std::function<Action(const CommandText& text)> Read;
};

/// The commands of scripts and of the prompt, one a line.
class ScriptCommands {
public:
    void Add(ScriptCommand command) { commands_.push_back(std::move(command)); }

    /// None for an unknown name.
    [[nodiscard]] const ScriptCommand* Find(std::string_view name) const;
    [[nodiscard]] const std::vector<ScriptCommand>& All() const noexcept { return commands_; }

    /// An empty action for a blank line and for a comment, which begins with "#". Throws
    /// BadCommand for what is no command.
    [[nodiscard]] Action Read(std::string_view text) const;

private:
    std::vector<ScriptCommand> commands_;
};

/// The commands that a host and an equipment have.
[[nodiscard]] ScriptCommands CommonCommands();

}  // namespace hexmire::program
