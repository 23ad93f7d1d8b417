#pragma once

#include "ScriptCommands.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace hexmire::program {

/// What may stand where the cursor is.
struct Completions {
    std::size_t Replaced = 0;  ///< bytes before the cursor that each candidate takes the place of
    std::vector<std::string> Candidates{};
    bool operator==(const Completions&) const = default;
};

/// Completes lines of the prompt. It shares nothing that changes, so that any thread may ask.
class LineCompletion {
public:
    LineCompletion(const ScriptCommands& commands, std::vector<std::string> templates);

    /// Commands, and behind them what the table says; letter case does not count.
    [[nodiscard]] Completions At(std::string_view lineToCursor) const;

private:
    struct Row {
        std::string Name;
        Completion Completes;
    };
    [[nodiscard]] const std::vector<std::string>* NamesBehind(std::string_view command) const;

    std::vector<Row> rows_;
    std::vector<std::string> commands_;
    std::vector<std::string> templates_;
    std::vector<std::string> properties_;
};

/// The longest beginning that all of them share, in the first one's letter case.
[[nodiscard]] std::string CommonBeginning(const std::vector<std::string>& words);

}  // namespace hexmire::program
