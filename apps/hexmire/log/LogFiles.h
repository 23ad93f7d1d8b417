#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace hexmire::program {

/// The parts of a daily file's name: "Log/SECSII_2024-03-05.log".
struct DailyName {
    std::string Stem{};     ///< "Log/SECSII"
    std::int32_t Date = 0;  ///< 20240305
};

[[nodiscard]] std::optional<DailyName> ParseDailyName(const std::string& path);

/// The files that a name stands for, in order: the file itself, or the daily files of that base
/// name, "Log/SECSII.log". Throws Failure when there are none.
[[nodiscard]] std::vector<std::string> FindLogFiles(const std::string& path);

/// The first daily file after this one that is there; none for a file that is not daily.
[[nodiscard]] std::optional<std::string> NextDailyFile(const std::string& path);

}  // namespace hexmire::program
