#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace hexmire::program {

using Duration = std::chrono::milliseconds;

// The commands of a script, one a line:
struct ConnectCommand {  ///< connect [SECONDS]: open the port if need be, wait for the connection
    Duration Timeout{30'000};
    bool operator==(const ConnectCommand&) const = default;
};
struct SendCommand {   ///< send NAME: send a copy of the template of that name
    std::string Name;  ///< in UTF-8
    bool operator==(const SendCommand&) const = default;
};
struct ExpectCommand {  ///< expect SxFy [SECONDS]: wait for a message that no expect took before
    std::int32_t Stream = 0;
    std::int32_t Function = 0;
    Duration Timeout{45'000};
    bool operator==(const ExpectCommand&) const = default;
};
struct WaitCommand {  ///< wait SECONDS
    Duration Time{0};
    bool operator==(const WaitCommand&) const = default;
};
struct DisconnectCommand {  ///< disconnect: close the port
    bool operator==(const DisconnectCommand&) const = default;
};
struct QuitCommand {  ///< quit: end here
    bool operator==(const QuitCommand&) const = default;
};

using Command = std::variant<ConnectCommand,
                             SendCommand,
                             ExpectCommand,
                             WaitCommand,
                             DisconnectCommand,
                             QuitCommand>;

/// Reads one line of a script. None for a blank line and for a comment, which begins with "#".
/// Throws Failure with the reason for a line that is no command.
[[nodiscard]] std::optional<Command> ParseCommand(std::string_view line);

}  // namespace hexmire::program
