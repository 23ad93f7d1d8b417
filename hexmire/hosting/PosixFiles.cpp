#include <hexmire/hosting/FileDescriptor.h>
#include <hexmire/hosting/LocalTime.h>
#include <hexmire/hosting/PosixFiles.h>
#include <hexmire/hosting/SystemPath.h>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <utility>

namespace hexmire {

namespace {

/// Runs a file operation; a failure that is thrown, such as missing memory, is a failure like any
/// other.
template <class Result, class Operation>
Result Guarded(Result failed, Operation&& operation) noexcept {
    try {
        return operation();
    } catch (...) {
        return failed;
    }
}

bool WriteAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

bool IsRegularFile(DIR* folder, const dirent& entry) {
    if (entry.d_type != DT_UNKNOWN) return entry.d_type == DT_REG;
    struct stat status {};
    return ::fstatat(::dirfd(folder), entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
           S_ISREG(status.st_mode);
}

bool Matches(std::string_view name, std::string_view prefix, std::string_view suffix) {
    return name.size() >= prefix.size() + suffix.size() && name.starts_with(prefix) &&
           name.ends_with(suffix);
}

struct CloseDirectory {
    void operator()(DIR* folder) const noexcept { ::closedir(folder); }
};

std::vector<std::string> List(const std::string& folder,
                              std::string_view prefix,
                              std::string_view suffix) {
    std::vector<std::string> names;
    const auto system = SystemPath(folder.empty() ? "." : folder);
    if (!system) return names;
    const std::unique_ptr<DIR, CloseDirectory> listing(::opendir(system->c_str()));
    if (listing == nullptr) return names;
    while (const dirent* entry = ::readdir(listing.get())) {
        if (Matches(entry->d_name, prefix, suffix) && IsRegularFile(listing.get(), *entry))
            names.emplace_back(entry->d_name);
    }
    return names;
}

std::optional<std::chrono::year_month_day> DateOf(const std::string& path) {
    const auto system = SystemPath(path);
    struct stat status {};
    if (!system || ::stat(system->c_str(), &status) != 0) return std::nullopt;
    return LocalTime(std::chrono::system_clock::from_time_t(status.st_mtime)).Date;
}

}  // namespace

bool PosixFiles::AppendTo(const std::string& path, std::string_view bytes) {
    if (path != lastPath_ || path.empty()) {
        auto system = SystemPath(path);
        if (!system) return false;
        lastPath_ = path;
        lastSystemPath_ = std::move(*system);
    }
    constexpr int kFlags = O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
    FileDescriptor file(::open(lastSystemPath_.c_str(), kFlags, 0644));
    if (!file.IsOpen()) return false;
    const bool written = WriteAll(file.Get(), bytes);
    return file.Close() && written;
}

bool PosixFiles::Append(const std::string& path, std::string_view bytes) {
    return Guarded(false, [&] { return AppendTo(path, bytes); });
}

bool PosixFiles::IsDirectory(const std::string& path) {
    return Guarded(false, [&] {
        const auto system = SystemPath(path);
        struct stat status {};
        return system && ::stat(system->c_str(), &status) == 0 && S_ISDIR(status.st_mode);
    });
}

bool PosixFiles::CreateDirectory(const std::string& path) {
    return Guarded(false, [&] {
        const auto system = SystemPath(path);
        return system && ::mkdir(system->c_str(), 0755) == 0;
    });
}

std::vector<std::string> PosixFiles::ListFiles(const std::string& folder,
                                               const std::string& prefix,
                                               const std::string& suffix) {
    return Guarded(std::vector<std::string>(), [&] { return List(folder, prefix, suffix); });
}

std::optional<std::chrono::year_month_day> PosixFiles::ModifiedDate(const std::string& path) {
    return Guarded(std::optional<std::chrono::year_month_day>(), [&] { return DateOf(path); });
}

bool PosixFiles::DeleteFile(const std::string& path) {
    return Guarded(false, [&] {
        const auto system = SystemPath(path);
        return system && ::unlink(system->c_str()) == 0;
    });
}

}  // namespace hexmire
