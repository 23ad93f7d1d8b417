#pragma once

#include <string>
#include <string_view>

namespace hexmire {

/// Writes the records of a link: traces and recipes. Paths are literal as in settings; folders are
/// made when they are missing, one level. Both return what went wrong, as the system words it; ""
/// when nothing did. Called on a thread that may wait for the disk.
class IRecordFiles {
public:
    /// Adds bytes to a file, all of them or none as far as the system allows. A file that is new or
    /// empty begins with `start`.
    virtual std::string Append(const std::string& path,
                               std::string_view start,
                               std::string_view bytes) = 0;
    /// Writes a file whole: it appears under its name when it is complete, in place of an older
    /// one. `name` is no path: it holds no separator and does not begin with a dot.
    virtual std::string Store(const std::string& folder,
                              const std::string& name,
                              std::string_view bytes) = 0;

    virtual ~IRecordFiles() = default;

protected:
    IRecordFiles() = default;
    IRecordFiles(const IRecordFiles&) = default;
    IRecordFiles& operator=(const IRecordFiles&) = default;
};

}  // namespace hexmire
