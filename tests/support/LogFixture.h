#pragma once

#include <hexmire/support/CLogFile.h>

#include "../fakes/FakeClock.h"
#include "../fakes/MemoryFiles.h"
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace hexmire::fakes {

using Texts = std::vector<std::string>;

/// Stands in for a control: keeps the errors.
class Sink : public IErrorSink {
public:
    void TriggerError(std::int32_t errorCode,
                      const std::string& errorText,
                      std::int32_t errorLine) override {
        Errors.push_back(std::to_string(errorCode) + " " + errorText + " " +
                         std::to_string(errorLine));
        if (const auto once = std::exchange(OnError, nullptr)) once();
    }

    Texts Errors;
    std::function<void()> OnError;
};

inline constexpr const char* kNoExtension =
    "2014 (CLogFile-Let FileName) Log file name must have extension .log. 0";

/// A daily log in memory; the clock stands at 2024-03-05 14:07:09.42 at first.
class LogFile : public testing::Test {
protected:
    /// A log with that name; the folder C:\Log exists.
    explicit LogFile(const std::string& name = "C:\\Log\\SECSII.log") {
        Files.Directories.insert("C:\\Log");
        if (!name.empty()) Log.FileName(name);
    }
    std::string Content(const std::string& path) { return Files.Files[path].Content; }
    /// The text of today's file.
    std::string Today() { return Content("C:\\Log\\SECSII_2024-03-05.log"); }
    /// Paths of all files.
    Texts Paths() {
        Texts paths;
        for (const auto& [path, file] : Files.Files) {
            paths.push_back(path);
        }
        return paths;
    }
    /// The path that a log of this name writes to.
    Texts Written(const std::string& name) {
        MemoryFiles files;
        CLogFile log(files, Clock, Owner.Ref());
        log.FileName(name);
        files.Directories = {"C:\\Log",
                             "C:\\my.logs",
                             "C:\\my.log",
                             "C:",
                             "\\\\server\\share",
                             "/var/log",
                             "C:\\a/b",
                             "C:/a",
                             "logs"};
        log.WriteLog("x");
        Texts paths;
        for (const auto& [path, file] : files.Files) {
            paths.push_back(path);
        }
        return paths;
    }

    MemoryFiles Files;
    FakeClock Clock;
    Sink Errors;
    SiteOwner Owner{Errors};
    CLogFile Log{Files, Clock, Owner.Ref()};
};

/// Keeps nothing but the number of errors.
class CountingSink : public IErrorSink {
public:
    void TriggerError(std::int32_t /*code*/,
                      const std::string& /*text*/,
                      std::int32_t /*line*/) override {
        ++Count;
    }
    int Count = 0;
};

/// The same with old files.
class LogSweep : public testing::Test {
protected:
    LogSweep() {
        Files.Directories.insert("C:\\Log");
        Log.FileName("C:\\Log\\SECSII.log");
    }
    /// A file that was last written so many days before today, as the clock stands.
    void AddFile(const std::string& path, int age) {
        Files.Files[path].Modified = std::chrono::year_month_day{
            std::chrono::sys_days{Clock.Now().Date} - std::chrono::days{age}};
    }
    /// Gives the files that the log wrote the date of today.
    void DateWrittenFiles() {
        for (auto& [path, file] : Files.Files) {
            if (!file.Content.empty() && !file.Modified) file.Modified = Clock.Now().Date;
        }
    }
    /// Moves to the next day and writes one line.
    void NextDay() {
        DateWrittenFiles();
        Clock.Advance(std::chrono::hours{24});
        Log.WriteLog("x");
    }
    [[nodiscard]] bool Has(const std::string& path) const { return Files.Files.contains(path); }

    MemoryFiles Files;
    FakeClock Clock;
    CountingSink Errors;
    SiteOwner Owner{Errors};
    CLogFile Log{Files, Clock, Owner.Ref()};
};

}  // namespace hexmire::fakes
