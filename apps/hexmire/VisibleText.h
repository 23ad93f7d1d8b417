#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace hexmire::program {

/// What becomes of control characters in a text that somebody else has made.
enum class Controls : std::uint8_t {
    AsTheyCame,
    Visible,  ///< "\x1B": the other side is not to move a terminal's cursor
};

/// Visible when the standard output is a terminal.
[[nodiscard]] Controls ControlsOfOutput();

/// The text, in UTF-8, with its control characters and whatever is no UTF-8 as "\x1B". Those in
/// `kept` stay; with LF, CR LF does too.
[[nodiscard]] std::string VisibleText(std::string_view utf8, std::string_view kept = {});

/// The text as the standard output takes it: on a terminal, visible but for the ends of lines and
/// tabulators.
[[nodiscard]] std::string OutputText(std::string_view utf8);

}  // namespace hexmire::program
