#pragma once

#include <string>

namespace hexmire {

/// Folder of the running executable, without a trailing separator; "" for one that lies in the root
/// folder. The current directory (".") when the system does not tell.
[[nodiscard]] std::string ApplicationFolder();

}  // namespace hexmire
