#include "LineCompletion.h"

#include "ControlProperties.h"
#include "ScriptWords.h"

#include <algorithm>
#include <utility>

namespace hexmire::program {

namespace {

bool BeginsWith(std::string_view text, std::string_view beginning) {
    return text.size() >= beginning.size() &&
           IsSameWord(text.substr(0, beginning.size()), beginning);
}

Completions Fitting(std::string_view typed, const std::vector<std::string>& names) {
    Completions found{.Replaced = typed.size()};
    for (const std::string& name : names) {
        if (BeginsWith(name, typed)) found.Candidates.push_back(name);
    }
    return found;
}

}  // namespace

LineCompletion::LineCompletion(const ScriptCommands& commands, std::vector<std::string> templates)
    : templates_(std::move(templates)) {
    for (const ScriptCommand& command : commands.All()) {
        rows_.push_back({.Name = command.Name, .Completes = command.Completes});
        commands_.push_back(command.Name);
    }
    for (const ControlProperty& property : ControlProperties())
        properties_.push_back(property.Name);
}

const std::vector<std::string>* LineCompletion::NamesBehind(std::string_view command) const {
    const auto row = std::ranges::find(rows_, command, &Row::Name);
    if (row == rows_.end()) return nullptr;
    switch (row->Completes) {
        case Completion::Templates:
            return &templates_;
        case Completion::Properties:
            return &properties_;
        case Completion::Commands:
            return &commands_;
        default:
            return nullptr;
    }
}

Completions LineCompletion::At(std::string_view lineToCursor) const {
    constexpr std::string_view kBlanks = " \t";
    const std::size_t begin =
        std::min(lineToCursor.find_first_not_of(kBlanks), lineToCursor.size());
    const std::string_view line = lineToCursor.substr(begin);
    const std::size_t end = line.find_first_of(kBlanks);
    if (end == std::string_view::npos) return Fitting(line, commands_);
    const std::vector<std::string>* names = NamesBehind(line.substr(0, end));
    if (names == nullptr) return {};
    const std::size_t argument = std::min(line.find_first_not_of(kBlanks, end), line.size());
    return Fitting(line.substr(argument), *names);
}

std::string CommonBeginning(const std::vector<std::string>& words) {
    if (words.empty()) return {};
    std::size_t length = words[0].size();
    for (const std::string& word : words) {
        std::size_t same = 0;
        while (same < std::min(length, word.size()) &&
               IsSameWord(std::string_view(words[0]).substr(same, 1),
                          std::string_view(word).substr(same, 1)))
            ++same;
        length = same;
    }
    return words[0].substr(0, length);
}

}  // namespace hexmire::program
