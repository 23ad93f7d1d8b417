#pragma once

#include <hexmire/support/IClock.h>
#include <hexmire/support/IFileSystem.h>
#include <hexmire/support/Site.h>

#include <chrono>
#include <string>
#include <string_view>

namespace hexmire {

/// One text log as a series of daily files. Each line opens the day's file, is appended and closes
/// it again, so the log survives a crash of the host and can be read or moved meanwhile. Files
/// older than 360 days go when the day changes. Failures are silent; the one reported error is
/// 2014.
class CLogFile {
public:
    CLogFile(IFileSystem& files, const IClock& clock, SiteRef site);

    /// The base name, folder included, e.g. "C:\\App\\Log\\SECSII.log"; the file of 5 March 2024 is
    /// then "C:\\App\\Log\\SECSII_2024-03-05.log".
    [[nodiscard]] const std::string& FileName() const noexcept { return fileName_; }
    /// Accepts a name that contains ".log" anywhere, in any letter case, and sweeps old files;
    /// otherwise error 2014 and the old name stays. An empty name is ignored.
    void FileName(const std::string& name);

    /// Appends one line: "yyyy/mm/dd hh:mm:ss.cc ", the text, CR LF. Nothing while there is no
    /// name.
    void WriteLog(std::string_view text);

    /// Deletes the files of this log that were last written more than 360 days ago. Paths are made
    /// of `folder`; the first failure ends the sweep.
    void DeleteBackup(const std::string& folder);

private:
    void PrepareFolder();
    void AppendMakingFolder(const std::string& path, std::string_view line);
    [[nodiscard]] std::string Stem() const;
    void BeginDay(const std::chrono::year_month_day& day);

    IFileSystem& files_;
    const IClock& clock_;
    SiteRef site_;

    std::chrono::year_month_day currentDay_;
    std::string fileName_;
    std::string folder_;
    // Of the name and day of the last line; made when a line needs them.
    std::string path_;
    std::string dayText_;
    bool hasFolder_ = false;
    std::string line_;  // kept to spare a request for memory for each
};

}  // namespace hexmire
