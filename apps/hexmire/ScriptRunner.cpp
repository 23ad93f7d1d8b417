#include "ScriptRunner.h"

#include <filesystem>
#include <fstream>
#include <utility>
#include <vector>

namespace hexmire::program {

namespace {

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
            // A message ends with a ".": a line without one needs no other attempt.
            for (bool mayEnd = false; !mayEnd;) {
                const std::optional<std::string> more = next_(true);
                if (!more) return commands_.Read(text);
                ++lines_;
                mayEnd = more->find('.') != std::string::npos;
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
