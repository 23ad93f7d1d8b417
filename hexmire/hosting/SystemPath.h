#pragma once

#include <optional>
#include <string>

namespace hexmire {

/// The form in which a path goes to the system: every "\" becomes "/". Settings keep their literal
/// text, so this happens at the call only. None for a path with a NUL byte, which the system would
/// cut short and so take for another file.
[[nodiscard]] std::optional<std::string> SystemPath(const std::string& path);

}  // namespace hexmire
