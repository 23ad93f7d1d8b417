#include <hexmire/hosting/FileDescriptor.h>
#include <hexmire/hosting/RecordFiles.h>
#include <hexmire/hosting/SystemPath.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <optional>
#include <system_error>

namespace hexmire {

namespace {

/// "words (number)" of a system call that has just failed.
std::string Failure(int number) {
    return std::generic_category().message(number) + " (" + std::to_string(number) + ")";
}

std::string BadPath() { return "a path with a NUL byte"; }

/// Opens a file to be written; makes its folder when that is what is missing.
FileDescriptor Open(const std::string& path, int flags) {
    const int all = flags | O_WRONLY | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
    FileDescriptor file(::open(path.c_str(), all, 0644));
    if (file.IsOpen() || errno != ENOENT) return file;
    const std::size_t cut = path.find_last_of('/');
    if (cut == std::string::npos || cut == 0) return file;
    if (::mkdir(path.substr(0, cut).c_str(), 0755) != 0 && errno != EEXIST) {
        errno = ENOENT;
        return file;
    }
    // Made by us, or by another writer a moment ago.
    return FileDescriptor(::open(path.c_str(), all, 0644));
}

/// The error number of the write that failed; 0 when everything was written.
int WriteAll(int descriptor, std::string_view bytes, std::size_t& written) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return count < 0 ? errno : ENOSPC;
        bytes.remove_prefix(static_cast<std::size_t>(count));
        written += static_cast<std::size_t>(count);
    }
    return 0;
}

/// Takes half a record back, unless somebody else has added to the file meanwhile. What cannot be
/// taken back stays.
void TakeBack(int descriptor, off_t sizeBefore, std::size_t written) {
    struct stat status {};
    if (written == 0 || ::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) return;
    if (status.st_size != sizeBefore + static_cast<off_t>(written)) return;
    [[maybe_unused]] const int ignored = ::ftruncate(descriptor, sizeBefore);
}

/// A rename that the disk knows of; some file systems offer no such thing.
void SyncFolder(const std::string& folder) {
    const FileDescriptor opened(
        ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (opened.IsOpen()) (void)::fsync(opened.Get());
}

/// A name that nobody else uses; names of records do not begin with a dot.
std::string TemporaryName() {
    static std::atomic<unsigned> count{0};
    return ".hexmire-" + std::to_string(::getpid()) + "-" + std::to_string(++count) + ".tmp";
}

/// A new file, under a name that nobody has.
FileDescriptor OpenTemporary(const std::string& folder, std::string& path) {
    constexpr int kTries = 100;  // a process of the same number may have left some
    for (int tries = 1;; ++tries) {
        path = folder + TemporaryName();
        FileDescriptor file = Open(path, O_EXCL);
        if (file.IsOpen() || errno != EEXIST || tries == kTries) return file;
    }
}

}  // namespace

std::string RecordFiles::Append(const std::string& path,
                                std::string_view start,
                                std::string_view bytes) {
    const auto system = SystemPath(path);
    if (!system) return BadPath();
    FileDescriptor file = Open(*system, O_APPEND);
    struct stat status {};
    if (!file.IsOpen() || ::fstat(file.Get(), &status) != 0) return Failure(errno);
    std::size_t written = 0;
    int failed = status.st_size == 0 ? WriteAll(file.Get(), start, written) : 0;
    if (failed == 0) failed = WriteAll(file.Get(), bytes, written);
    if (failed != 0) {
        TakeBack(file.Get(), status.st_size, written);
        return Failure(failed);
    }
    return file.Close() ? "" : Failure(errno);
}

std::string RecordFiles::Store(const std::string& folder,
                               const std::string& name,
                               std::string_view bytes) {
    auto system = SystemPath(folder);
    if (!system) return BadPath();
    if (!system->empty() && !system->ends_with('/')) *system += '/';
    std::string temporary;
    FileDescriptor file = OpenTemporary(*system, temporary);
    if (!file.IsOpen()) return Failure(errno);
    std::size_t written = 0;
    int failed = WriteAll(file.Get(), bytes, written);
    if (failed == 0 && ::fsync(file.Get()) != 0) failed = errno;
    if (!file.Close() && failed == 0) failed = errno;
    if (failed == 0 && std::rename(temporary.c_str(), (*system + name).c_str()) != 0)
        failed = errno;
    if (failed == 0) {
        SyncFolder(*system);
        return "";
    }
    ::unlink(temporary.c_str());
    return Failure(failed);
}

}  // namespace hexmire
