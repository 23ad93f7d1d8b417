#pragma once

#include "ScriptCommands.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace hexmire::program {

/// The words of a line, between blanks.
[[nodiscard]] std::vector<std::string_view> SplitWords(std::string_view line);

/// The text, or a piece of the command's, in ISO 8859-1. Throws BadCommand with the place of a
/// character that ISO 8859-1 does not have.
[[nodiscard]] std::string Latin1In(std::string_view utf8);
[[nodiscard]] std::string Latin1In(const CommandText& text, std::string_view piece);

/// Thrown by a reader whose arguments do not look like the ones in the table; the table says which
/// those are.
struct UsageOfCommand {};

/// Throws UsageOfCommand unless that many words follow the command's name.
void CheckWordCount(const CommandText& text, std::size_t least, std::size_t most);

/// Seconds with or without a fraction, up to a day. Throws BadCommand.
[[nodiscard]] Duration SecondsIn(std::string_view word);

/// A stream and a function, as S6F11 or s6f11.
struct StreamAndFunction {
    std::int32_t Stream = 0;
    std::int32_t Function = 0;
    auto operator<=>(const StreamAndFunction&) const = default;
};

/// None for anything else.
[[nodiscard]] std::optional<StreamAndFunction> ParseStreamAndFunction(std::string_view word);

/// The same; throws BadCommand.
[[nodiscard]] StreamAndFunction StreamAndFunctionIn(std::string_view word);

/// Equal but for the case of letters.
[[nodiscard]] bool IsSameWord(std::string_view one, std::string_view other);

/// True when the text fits the pattern: "*" stands for any characters, "?" for one. A pattern
/// without them is looked for anywhere in the text. Letter case does not count.
[[nodiscard]] bool FitsPattern(std::string_view text, std::string_view pattern);

}  // namespace hexmire::program
