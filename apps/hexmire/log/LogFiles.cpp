#include "log/LogFiles.h"

#include "Failure.h"
#include "log/LogTime.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

namespace hexmire::program {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kDateSize = 10;
constexpr std::string_view kExtension = ".log";

using Dated = std::pair<std::int32_t, std::string>;

/// The daily files of a stem by date. An unreadable folder has none.
std::vector<Dated> DailyFiles(const std::string& stem) {
    std::vector<Dated> files;
    const fs::path folder = fs::path(stem).parent_path();
    std::error_code error;
    for (fs::directory_iterator entry(folder.empty() ? fs::path(".") : folder, error), end;
         !error && entry != end;
         entry.increment(error)) {
        std::string path = (folder / entry->path().filename()).string();
        const auto name = ParseDailyName(path);
        if (name && name->Stem == stem) files.emplace_back(name->Date, std::move(path));
    }
    std::sort(files.begin(), files.end());
    return files;
}

}  // namespace

std::optional<DailyName> ParseDailyName(const std::string& path) {
    constexpr std::size_t kTail = 1 + kDateSize + kExtension.size();
    if (path.size() < kTail || !path.ends_with(kExtension)) return std::nullopt;
    const std::size_t cut = path.size() - kTail;
    const auto date = ParseDate(std::string_view(path).substr(cut + 1, kDateSize));
    if (!date || path[cut] != '_') return std::nullopt;
    return DailyName{.Stem = path.substr(0, cut), .Date = *date};
}

std::vector<std::string> FindLogFiles(const std::string& path) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (fs::is_directory(status)) throw Failure("'" + path + "' is a folder, not a log");
    if (fs::exists(status)) return {path};
    std::vector<std::string> files;
    if (path.size() > kExtension.size()) {
        for (Dated& file : DailyFiles(path.substr(0, path.size() - kExtension.size())))
            files.push_back(std::move(file.second));
    }
    if (!files.empty()) return files;
    if (ParseDailyName(path)) throw Failure("no such log: " + path);
    throw Failure("no such log: " + path + ", nor a daily file of that base name");
}

std::optional<std::string> NextDailyFile(const std::string& path) {
    const auto current = ParseDailyName(path);
    if (!current) return std::nullopt;
    for (Dated& file : DailyFiles(current->Stem)) {
        if (file.first > current->Date) return std::move(file.second);
    }
    return std::nullopt;
}

}  // namespace hexmire::program
