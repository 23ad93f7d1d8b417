#include <hexmire/hosting/ApplicationFolder.h>

#include <unistd.h>

#include <cstddef>

namespace hexmire {

namespace {

std::string ExecutablePath() {
    constexpr std::size_t kLongestPath = 1U << 20;
    for (std::size_t size = 1024; size <= kLongestPath; size *= 2) {
        std::string path(size, '\0');
        const ssize_t length = ::readlink("/proc/self/exe", path.data(), path.size());
        if (length < 0) return {};
        if (static_cast<std::size_t>(length) < size) {
            path.resize(static_cast<std::size_t>(length));
            return path;
        }
    }
    return {};
}

}  // namespace

std::string ApplicationFolder() {
    const std::string path = ExecutablePath();
    const std::size_t separator = path.rfind('/');
    return separator == std::string::npos ? "." : path.substr(0, separator);
}

}  // namespace hexmire
