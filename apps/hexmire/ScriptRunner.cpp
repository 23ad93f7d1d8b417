#include "ScriptRunner.h"

#include <filesystem>
#include <fstream>
#include <string_view>
#include <utility>
#include <vector>

namespace hexmire::program {

namespace {

/// False for a line that cannot hold the "." at the end of a message: reading all that came so far
/// again for each "." in numbers and texts would take long.
bool MayEndMessage(std::string_view line) {
    const std::size_t last = line.find_last_not_of(" \t\r");
    if (last == std::string_view::npos) return false;
    if (line[last] == '.') return true;
    for (std::size_t i = 0; i < last; ++i) {
        if (line[i] == '"' || line[i] == '\'') {
            const std::size_t quote = line.find(line[i], i + 1);
            if (quote != std::string_view::npos) i = quote;
        } else if (line[i] == '.' &&
                   std::string_view(" \t/*").find(line[i + 1]) != std::string_view::npos) {
            return true;  // A comment may follow, or what does not belong there.
        }
    }
    return false;
}

void Do(const Action& action, ScriptContext& context, const std::string& place) {
    try {
        if (action) action(context);
    } catch (const Failure& failure) {
        throw Failure(place + ": " + failure.what());
    }
    if (context.GivenUp()) throw Failure(place + ": interrupted");
}

}  // namespace

ScriptReader::ScriptReader(const ScriptCommands& commands, std::string name, NextLine next)
    : commands_(commands), name_(std::move(name)), next_(std::move(next)) {}

std::string ScriptReader::Place() const { return name_ + ':' + std::to_string(first_); }

std::optional<Action> ScriptReader::Read() {
    std::optional<std::string> line = next_(false);
    if (!line) return std::nullopt;
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    if (lines_ == 0 && line->starts_with(kByteOrderMark)) line->erase(0, kByteOrderMark.size());
    first_ = ++lines_;
    return ReadCommand(*std::move(line));
}

std::optional<Action> ScriptReader::Next() {
    try {
        return Read();
    } catch (const BadCommand& bad) {
        std::string place = name_ + ':' + std::to_string(first_ + bad.Line - 1);
        if (bad.Column > 0) place += ':' + std::to_string(bad.Column);
        throw UsageError(place + ": " + bad.what());
    }
}

Action ScriptReader::ReadCommand(std::string text) {
    for (;;) {
        try {
            return commands_.Read(text);
        } catch (const BadCommand& bad) {
            if (!bad.IsIncomplete) throw;
            for (bool mayEnd = false; !mayEnd;) {
                const std::optional<std::string> more = next_(true);
                if (!more) return commands_.Read(text);
                ++lines_;
                mayEnd = MayEndMessage(*more);
                text += '\n' + *more;
            }
        }
    }
}

void RunScriptFile(ScriptContext& context, const std::string& path) {
    std::error_code error;
    std::ifstream file(path);
    if (!file || std::filesystem::is_directory(path, error))
        throw Failure("cannot read the script " + path);
    ScriptReader reader(context.Commands, path, [&](bool) -> std::optional<std::string> {
        std::string line;
        if (!std::getline(file, line)) return std::nullopt;
        return line;
    });
    struct Step {
        Action Do;
        std::string Place;
    };
    std::vector<Step> steps;
    while (auto action = reader.Next()) {
        if (*action) steps.push_back({.Do = *std::move(action), .Place = reader.Place()});
    }
    for (const Step& step : steps) {
        Do(step.Do, context, step.Place);
        if (context.Ended) return;
    }
}

void RunScriptLines(ScriptContext& context, const std::string& name, NextLine next) {
    ScriptReader reader(context.Commands, name, std::move(next));
    while (const auto action = reader.Next()) {
        Do(*action, context, reader.Place());
        if (context.Ended) return;
    }
    if (context.GivenUp()) throw Failure("interrupted");
}

}  // namespace hexmire::program
