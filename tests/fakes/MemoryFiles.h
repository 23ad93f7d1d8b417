#pragma once

#include <hexmire/support/IFileSystem.h>

#include <chrono>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace hexmire::fakes {

/// A file system in memory with literal paths: what was written stands in Files, keyed by the whole
/// path as it was given. Nothing is written into a folder that is not there. Each kind of failure
/// can be switched on.
class MemoryFiles : public IFileSystem {
public:
    struct File {
        std::string Content;
        std::optional<std::chrono::year_month_day> Modified;
    };

    bool Append(const std::string& path, std::string_view bytes) override {
        const auto cut = path.find_last_of("\\/");
        const bool hasFolder = cut != std::string::npos && cut != 0;
        if (hasFolder && !Directories.contains(path.substr(0, cut))) return false;
        ++Appends;
        if (FailAppend) return false;
        File& file = Files[path];
        file.Content += bytes;
        return true;
    }
    bool IsDirectory(const std::string& path) override { return Directories.contains(path); }
    bool CreateDirectory(const std::string& path) override {
        Created.push_back(path);
        if (FailCreateDirectory) return false;
        Directories.insert(path);
        return true;
    }
    /// Files whose path is folder, one separator, and a matching name, sorted. An empty folder
    /// lists the paths without separator.
    std::vector<std::string> ListFiles(const std::string& folder,
                                       const std::string& prefix,
                                       const std::string& suffix) override {
        Listed.push_back({folder, prefix, suffix});
        std::vector<std::string> names;
        for (const auto& [path, file] : Files) {
            const auto cut = path.find_last_of("\\/");
            std::string head = cut == std::string::npos ? "" : path.substr(0, cut);
            if (cut == 0) head = path.substr(0, 1);  // The root is all separator.
            const std::string name = cut == std::string::npos ? path : path.substr(cut + 1);
            if (head == folder && name.size() >= prefix.size() + suffix.size() &&
                name.starts_with(prefix) && name.ends_with(suffix)) {
                names.push_back(name);
            }
        }
        return names;
    }
    std::optional<std::chrono::year_month_day> ModifiedDate(const std::string& path) override {
        DateAsked.push_back(path);
        const auto found = Files.find(path);
        return found == Files.end() ? std::nullopt : found->second.Modified;
    }
    bool DeleteFile(const std::string& path) override {
        Deleted.push_back(path);
        return !FailDelete && Files.erase(path) == 1;
    }

    std::map<std::string, File> Files;
    std::set<std::string> Directories;
    bool FailAppend = false;
    bool FailCreateDirectory = false;
    bool FailDelete = false;

    struct Listing {
        std::string Folder;
        std::string Prefix;
        std::string Suffix;
        bool operator==(const Listing&) const = default;
    };
    int Appends = 0;
    std::vector<std::string> Created;
    std::vector<Listing> Listed;
    std::vector<std::string> DateAsked;
    std::vector<std::string> Deleted;
};

}  // namespace hexmire::fakes
