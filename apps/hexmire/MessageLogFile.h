#pragma once

#include <string>

namespace hexmire::program {

/// The file of today of a message log with this base name, which ends in ".log".
[[nodiscard]] std::string DailyFile(const std::string& baseName);

/// What keeps the log from being written, "cannot write the message log PATH: reason"; "" when it
/// can be. Makes the file, and its folder, as the log itself does: without one the log is silent.
[[nodiscard]] std::string ProblemOfLog(const std::string& baseName);

}  // namespace hexmire::program
