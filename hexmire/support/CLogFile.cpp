#include <hexmire/support/CLogFile.h>
#include <hexmire/support/DateText.h>
#include <hexmire/support/Reporting.h>
#include <hexmire/support/Text.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <stdexcept>
#include <utility>

namespace hexmire {

namespace {

// A path's folder ends at its last separator; both kinds count, as on POSIX one stands for the
// other.
constexpr const char* kSeparators = "\\/";
constexpr std::size_t kExtensionSize = 4;
constexpr int kKeptDays = 360;

void PutTwoDigits(char* place, std::int64_t value) {
    place[0] = static_cast<char>('0' + value / 10 % 10);
    place[1] = static_cast<char>('0' + value % 10);
}

/// "hh:mm:ss.cc "; the hundredths are rounded on their own and never carried into the seconds.
std::array<char, 12> TimeText(std::chrono::nanoseconds timeOfDay) {
    using namespace std::chrono;
    const auto whole = floor<seconds>(timeOfDay);
    const auto hundredths = (timeOfDay - whole + milliseconds(5)) / milliseconds(10) % 100;
    const std::int64_t second = whole.count();
    auto text = std::to_array({'0', '0', ':', '0', '0', ':', '0', '0', '.', '0', '0', ' '});
    PutTwoDigits(&text[0], second / 3600);
    PutTwoDigits(&text[3], second / 60 % 60);
    PutTwoDigits(&text[6], second % 60);
    PutTwoDigits(&text[9], hundredths);
    return text;
}

/// Lines longer than this give their memory back.
constexpr std::size_t kKeptLineBytes = std::size_t{64} * 1024;

/// Failures of the log are nobody's errors: they end the routine and are dropped.
template <class Body>
void RunSilently(Body&& body) noexcept {
    try {
        std::forward<Body>(body)();
    } catch (...) {
    }
}

void Require(bool succeeded) {
    if (!succeeded) throw std::runtime_error("file system");
}

}  // namespace

CLogFile::CLogFile(IFileSystem& files, const IClock& clock, SiteRef site)
    : files_(files), clock_(clock), site_(std::move(site)), currentDay_(clock.Now().Date) {}

void CLogFile::FileName(const std::string& name) {
    RunSilently([&] {
        if (name.empty()) return;
        if (UpperCase(name).find(".LOG") == std::string::npos) {
            ReportError(site_, {"CLogFile", "Let FileName"}, 2014);
            return;
        }
        fileName_ = name;
        path_.clear();
        DeleteBackup(folder_);
    });
}

std::string CLogFile::Stem() const {
    return fileName_.substr(0, fileName_.size() - kExtensionSize);
}

void CLogFile::DeleteBackup(const std::string& folder) {
    RunSilently([&] {
        // Without a folder the paths would lead to the file system's root.
        if (folder.empty() || fileName_.empty()) return;
        const std::string stem = Stem();
        const std::size_t cut = stem.find_last_of(kSeparators);
        const bool hasFolder = cut != std::string::npos;
        // The root is all separator.
        const std::size_t folderSize = std::max<std::size_t>(cut, 1);
        const std::string listed = hasFolder ? stem.substr(0, folderSize) : "";
        const std::string prefix = hasFolder ? stem.substr(cut + 1) : stem;
        const auto today = std::chrono::sys_days{clock_.Now().Date};
        for (const std::string& name : files_.ListFiles(listed, prefix, ".log")) {
            std::string path = folder;
            path.append("\\").append(name);
            const auto modified = files_.ModifiedDate(path);
            Require(modified.has_value());
            if ((today - std::chrono::sys_days{*modified}).count() > kKeptDays) {
                Require(files_.DeleteFile(path));
            }
        }
    });
}

void CLogFile::PrepareFolder() {
    if (!folder_.empty() && !files_.IsDirectory(folder_)) {
        Require(files_.CreateDirectory(folder_));
    }
}

/// Whether the file's folder is there is not asked before each line: a line that cannot be appended
/// tells.
void CLogFile::AppendMakingFolder(const std::string& path, std::string_view line) {
    if (files_.Append(path, line) || folder_.empty() || files_.IsDirectory(folder_)) return;
    Require(files_.CreateDirectory(folder_));
    files_.Append(path, line);
}

void CLogFile::WriteLog(std::string_view text) {
    RunSilently([&] {
        if (fileName_.empty()) return;
        if (path_.empty()) {
            const std::size_t cut = fileName_.find_last_of(kSeparators);
            hasFolder_ = cut != std::string::npos;
            if (hasFolder_) folder_.assign(fileName_, 0, cut);
        }
        const ClockReading now = clock_.Now();
        const bool isNewDay = now.Date != currentDay_;
        // A name without a folder leaves the one before it remembered, which must be there all the
        // same. No sweep, and no new day, while it cannot be made.
        if (!hasFolder_ || isNewDay) PrepareFolder();
        if (isNewDay) {
            DeleteBackup(folder_);
            currentDay_ = now.Date;
            path_.clear();
        }
        if (path_.empty()) BeginDay(now.Date);
        const auto time = TimeText(now.TimeOfDay);
        line_.assign(dayText_).append(time.data(), time.size()).append(text).append("\r\n");
        AppendMakingFolder(path_, line_);
        if (line_.capacity() > kKeptLineBytes) std::string().swap(line_);
    });
}

void CLogFile::BeginDay(const std::chrono::year_month_day& day) {
    dayText_ = DateText(day, '/') + ' ';
    path_ = Stem() + '_' + DateText(day, '-') + ".log";
}

}  // namespace hexmire
