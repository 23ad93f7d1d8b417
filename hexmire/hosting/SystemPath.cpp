#include <hexmire/hosting/SystemPath.h>

#include <algorithm>

namespace hexmire {

std::optional<std::string> SystemPath(const std::string& path) {
    if (path.find('\0') != std::string::npos) return std::nullopt;
    std::string translated = path;
    std::replace(translated.begin(), translated.end(), '\\', '/');
    return translated;
}

}  // namespace hexmire
