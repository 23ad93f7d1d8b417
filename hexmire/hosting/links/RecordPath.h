#pragma once

#include <string>
#include <string_view>

namespace hexmire::link {

/// A name in a folder as settings give it: both "/" and "\" may end it, and "" is the current one.
[[nodiscard]] inline std::string PathIn(const std::string& folder, std::string_view name) {
    std::string path = folder;
    if (!path.empty() && path.back() != '/' && path.back() != '\\') path += '/';
    path += name;
    return path;
}

}  // namespace hexmire::link
