#pragma once

#include <hexmire/hexmire.h>
#include <hexmire/sml.h>

#include <string_view>

namespace hexmire::program {

/// Reads the SML of one message, in UTF-8. Throws BadCommand with the place of what is wrong.
[[nodiscard]] ParsedSml ReadSml(std::string_view text);

/// Makes the target what the source is: stream, function and body.
void CopyMessage(const SECSMessage& source, SECSMessage& target);

}  // namespace hexmire::program
