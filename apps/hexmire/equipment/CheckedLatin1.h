#pragma once

#include <hexmire/hosting/Utf8.h>

#include <optional>
#include <string>
#include <string_view>

namespace hexmire::program {

/// The text in ISO 8859-1; none when it holds another character, or is no UTF-8.
[[nodiscard]] inline std::optional<std::string> CheckedLatin1(std::string_view utf8) {
    std::string latin1 = Latin1FromUtf8(utf8);
    if (Utf8FromLatin1(latin1) != utf8) return std::nullopt;
    return latin1;
}

}  // namespace hexmire::program
