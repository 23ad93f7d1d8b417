#pragma once

#include <string>
#include <string_view>

/// Inside, texts are byte strings in ISO 8859-1; XML files, terminals and JSON speak UTF-8.
namespace hexmire {

/// One "?" for each character above U+00FF and for each byte that is no part of a character.
[[nodiscard]] std::string Latin1FromUtf8(std::string_view utf8);

[[nodiscard]] std::string Utf8FromLatin1(std::string_view latin1);

}  // namespace hexmire
