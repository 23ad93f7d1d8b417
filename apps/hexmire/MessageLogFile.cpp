#include "MessageLogFile.h"

#include <hexmire/hosting/SystemClock.h>
#include <hexmire/support/DateText.h>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace hexmire::program {

std::string DailyFile(const std::string& baseName) {
    constexpr std::string_view kExtension = ".log";
    const std::string date = DateText(SystemClock().Now().Date, '-');
    std::string path = baseName.substr(0, baseName.size() - kExtension.size()) + "_" + date;
    path += kExtension;
    std::replace(path.begin(), path.end(), '\\', '/');
    return path;
}

std::string ProblemOfLog(const std::string& baseName) {
    const std::string path = DailyFile(baseName);
    const auto folder = std::filesystem::path(path).parent_path();
    std::error_code error;
    // A folder that cannot be made shows with the file.
    if (!folder.empty()) std::filesystem::create_directory(folder, error);
    constexpr int kFlags = O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
    const int file = ::open(path.c_str(), kFlags, 0644);
    if (file < 0) return "cannot write the message log " + path + ": " + std::strerror(errno);
    ::close(file);
    return {};
}

}  // namespace hexmire::program
