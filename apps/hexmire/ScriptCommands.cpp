#include "ScriptCommands.h"

#include "ScriptWords.h"

#include <algorithm>

namespace hexmire::program {

bool ScriptContext::WaitFor(const std::function<bool()>& predicate, Duration timeout) const {
    bool holds = false;
    const auto decided = [&] {
        holds = holds || predicate();
        return holds || GivenUp();
    };
    Loop.RunUntil(decided, timeout);
    if (!holds && GivenUp()) throw Failure("interrupted");
    return holds;
}

const ScriptCommand* ScriptCommands::Find(std::string_view name) const {
    const auto found = std::ranges::find(commands_, name, &ScriptCommand::Name);
    return found == commands_.end() ? nullptr : &*found;
}

Action ScriptCommands::Read(std::string_view text) const {
    const std::vector<std::string_view> words = SplitWords(text);
    if (words.empty() || words[0].starts_with('#')) return {};
    const ScriptCommand* command = Find(words[0]);
    if (command == nullptr)
        throw BadCommand("unknown command '" + std::string(words[0]) + "' (see help)");
    CommandText read{.Words = {words.begin() + 1, words.end()}, .Rest = {}, .Whole = text};
    if (!read.Words.empty())
        read.Rest = {words[1].data(), words.back().data() + words.back().size()};
    try {
        return command->Read(read);
    } catch (const UsageOfCommand&) {
        const std::string arguments = command->Arguments.empty() ? "" : ' ' + command->Arguments;
        throw BadCommand("expected '" + command->Name + arguments + "'");
    }
}

}  // namespace hexmire::program
