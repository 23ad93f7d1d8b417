#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace hexmire::program {

class Command;

/// `hexmire log`: reads the message logs of a control. Texts as they are given.
struct LogOptions {
    std::vector<std::string> Files{};
    bool Follow = false;
    std::vector<std::string> Messages{};
    std::string SystemBytes{};
    int DeviceID = -1;
    std::string From{};
    std::string To{};
    bool Errors = false;
    bool Sent = false;
    bool Received = false;
    bool Sml = false;
    bool Latency = false;
    bool Unanswered = false;
    bool Json = false;
    std::string Plot{};
    std::size_t Limit = 200;
    std::string Side{};
};

void AddLogOptions(Command command, LogOptions& options);

/// Throws Failure or UsageError.
void RunLog(const LogOptions& options);

}  // namespace hexmire::program
