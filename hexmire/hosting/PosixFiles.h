#pragma once

#include <hexmire/support/IFileSystem.h>

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace hexmire {

/// The real file system. "\" in a path is translated to "/" when the system is called. Nothing
/// blocks on a file that is no file: a named pipe without a reader cannot be appended to. No member
/// throws.
class PosixFiles final : public IFileSystem {
public:
    bool Append(const std::string& path, std::string_view bytes) override;
    bool IsDirectory(const std::string& path) override;
    bool CreateDirectory(const std::string& path) override;
    /// Symbolic links are not regular files and are left out.
    std::vector<std::string> ListFiles(const std::string& folder,
                                       const std::string& prefix,
                                       const std::string& suffix) override;
    std::optional<std::chrono::year_month_day> ModifiedDate(const std::string& path) override;
    bool DeleteFile(const std::string& path) override;

private:
    bool AppendTo(const std::string& path, std::string_view bytes);

    // The path of the last append and its form for the system: a log appends line after line to one
    // file.
    std::string lastPath_;
    std::string lastSystemPath_;
};

}  // namespace hexmire
