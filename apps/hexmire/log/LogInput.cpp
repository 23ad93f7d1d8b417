#include "log/LogInput.h"

#include "Failure.h"
#include "log/LogFiles.h"
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <utility>

namespace hexmire::program {

namespace {

/// A file without one time stamp up to here is no log.
constexpr std::int64_t kLongestDoubt = std::int64_t{1024} * 1024;

[[noreturn]] void ThrowUnreadable(const std::string& path) {
    throw Failure("cannot read " + path + ": " + std::strerror(errno));
}

void RequireLog(const LogReport& report, const std::string& path) {
    if (report.Entries == 0 && report.Bytes > 0) throw Failure(path + " is not a message log");
}

bool ReadOn(LogFile& file, LogReader& reader) {
    if (!file.ReadSome(reader)) return false;
    if (reader.Report().Bytes > kLongestDoubt) RequireLog(reader.Report(), file.Path());
    return true;
}

}  // namespace

LogFile::LogFile(const std::string& path)
    : path_(path == "-" ? "the standard input" : path),
      file_(path == "-" ? STDIN_FILENO : ::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
    if (file_ < 0) ThrowUnreadable(path_);
}

LogFile::~LogFile() {
    if (file_ != STDIN_FILENO) ::close(file_);
}

bool LogFile::ReadSome(LogReader& reader) {
    const std::span<char> room = reader.Room();
    ssize_t count = 0;
    do {
        count = ::read(file_, room.data(), room.size());
    } while (count < 0 && errno == EINTR);
    if (count < 0) ThrowUnreadable(path_);
    position_ += count;
    reader.Take(static_cast<std::size_t>(count));
    return count > 0;
}

bool LogFile::WasReplaced() const {
    struct stat here {};
    struct stat there {};
    if (::fstat(file_, &here) != 0 || ::stat(path_.c_str(), &there) != 0) return false;
    return here.st_ino != there.st_ino || here.st_dev != there.st_dev || here.st_size < position_;
}

LogReport ReadLogFile(LogReader& reader, const std::string& path) {
    LogFile file(path);
    while (ReadOn(file, reader)) {
    }
    LogReport report = reader.EndFile();
    RequireLog(report, file.Path());
    return report;
}

void FollowLog(LogReader& reader,
               std::string path,
               const std::function<bool()>& wait,
               const std::function<void(const std::string&, const LogReport&)>& report) {
    auto file = std::make_unique<LogFile>(path);
    for (;;) {
        while (ReadOn(*file, reader)) {
        }
        std::optional<std::string> next = NextDailyFile(path);
        if (next || file->WasReplaced()) {
            // What was written between the last read and the look at the folder.
            while (ReadOn(*file, reader)) {
            }
            report(path, reader.EndFile());
            if (next) path = std::move(*next);
            file = std::make_unique<LogFile>(path);
            continue;
        }
        if (reader.Report().Broken > 0) RequireLog(reader.Report(), path);
        reader.Pause();
        if (!wait()) break;
    }
    report(path, reader.EndFile());
}

}  // namespace hexmire::program
