#include "ScriptRunner.h"

#include "FileReader.h"
#include "MessageEnd.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

namespace hexmire::program {

namespace {

/// Of a line in a file, and of a command with the lines that go on in it.
constexpr std::size_t kLongest = std::size_t{16} << 20;

/// The command's name is no SML.
std::string WithoutName(std::string line) {
    const std::size_t begin = std::min(line.find_first_not_of(" \t"), line.size());
    const std::size_t end = std::min(line.find_first_of(" \t\r", begin), line.size());
    return line.replace(begin, end - begin, end - begin, ' ');
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
    MessageEnd end;
    static_cast<void>(end.MayBeIn(WithoutName(text)));
    for (;;) {
        try {
            return commands_.Read(text);
        } catch (const BadCommand& bad) {
            if (!bad.IsIncomplete) throw;
        }
        for (bool mayEnd = false; !mayEnd;) {
            const std::optional<std::string> more = next_(true);
            if (!more) return commands_.Read(text);
            ++lines_;
            if (text.size() + more->size() >= kLongest)
                throw BadCommand("the command is longer than 16 MiB");
            mayEnd = end.MayBeIn(*more);
            text += '\n' + *more;
        }
    }
}

void RunScriptFile(ScriptContext& context, const std::string& path) {
    FileLines file(path, "the script " + path);
    ScriptReader reader(context.Commands, path, [&](bool) { return file.Next(kLongest); });
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
