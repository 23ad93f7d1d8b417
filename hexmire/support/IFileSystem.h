#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace hexmire {

/// The few things that the message log asks of the file system. Paths are handed over literally,
/// backslashes included; an implementation translates them when it calls the system ("\" to "/" on
/// POSIX). Names are byte strings. No member throws.
class IFileSystem {
public:
    /// Opens the file for appending (created when missing), writes the bytes and closes it. False
    /// when any of the three failed.
    virtual bool Append(const std::string& path, std::string_view bytes) = 0;

    /// True when the path names an existing directory.
    virtual bool IsDirectory(const std::string& path) = 0;

    /// Creates one directory level; false when it could not be created.
    virtual bool CreateDirectory(const std::string& path) = 0;

    /// Names (without folder) of the regular files in `folder` whose name begins with `prefix` and
    /// ends with `suffix`, both compared literally, in the order of the directory listing. Empty
    /// when the folder cannot be listed. An empty folder is the current directory.
    virtual std::vector<std::string> ListFiles(const std::string& folder,
                                               const std::string& prefix,
                                               const std::string& suffix) = 0;

    /// Local calendar date of the file's last modification; none when it cannot be told.
    virtual std::optional<std::chrono::year_month_day> ModifiedDate(const std::string& path) = 0;

    /// Deletes one file; false when it could not be deleted.
    virtual bool DeleteFile(const std::string& path) = 0;

    virtual ~IFileSystem() = default;

protected:
    IFileSystem() = default;
    IFileSystem(const IFileSystem&) = default;
    IFileSystem& operator=(const IFileSystem&) = default;
};

}  // namespace hexmire
