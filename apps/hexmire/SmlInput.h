#pragma once

#include <hexmire/hexmire.h>

#include "Input.h"

#include <cstdint>
#include <vector>

namespace hexmire::program {

enum class TextEncoding : std::uint8_t { Utf8, Latin1 };

/// The messages of a text, one at least. A text that begins with "<" is one body without header or
/// "."; `isItem` is then set. Throws UsageError, "name:line:column: expected ..., found ...".
[[nodiscard]] std::vector<ParsedSml> ParseInput(const Input& input,
                                                TextEncoding encoding,
                                                bool& isItem);

}  // namespace hexmire::program
