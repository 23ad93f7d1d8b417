#pragma once

#include <string>
#include <string_view>

namespace hexmire {

/// UTF-8 as the parser keeps it, in ISO 8859-1; one "?" for each character above U+00FF and for
/// each byte that is no part of a character.
[[nodiscard]] std::string Latin1FromUtf8(std::string_view utf8);

}  // namespace hexmire
