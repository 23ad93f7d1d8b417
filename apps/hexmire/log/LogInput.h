#pragma once

#include "log/LogReader.h"

#include <functional>
#include <string>

namespace hexmire::program {

/// An open file; closed with the object.
class LogFile {
public:
    /// "-" is the standard input. Throws Failure when the file cannot be read.
    explicit LogFile(const std::string& path);
    LogFile(const LogFile&) = delete;
    LogFile& operator=(const LogFile&) = delete;
    ~LogFile();

    /// Puts what comes next into the reader; false at the end of the file, for now. Throws Failure.
    [[nodiscard]] bool ReadSome(LogReader& reader);
    /// True when the path leads to another file by now, or to the same one cut short.
    [[nodiscard]] bool WasReplaced() const;
    [[nodiscard]] const std::string& Path() const noexcept { return path_; }

private:
    std::string path_;
    int file_ = -1;
    std::int64_t position_ = 0;
};

/// Reads a file to its end. Throws Failure when it cannot be read or is no message log.
LogReport ReadLogFile(LogReader& reader, const std::string& path);

/// Reads a file, waits at its end for more, and goes on with the next daily file when there is one,
/// until `wait` gives false. The reader pauses before each wait. A file that was moved away or cut
/// short is read anew. `report` gets what each file that has ended tells.
void FollowLog(LogReader& reader,
               std::string path,
               const std::function<bool()>& wait,
               const std::function<void(const std::string&, const LogReport&)>& report);

}  // namespace hexmire::program
