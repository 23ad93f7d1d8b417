#pragma once

#include <hexmire/hexmire.h>

#include "Endpoint.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace hexmire::program {

class Command;

enum class Role : std::uint8_t { Host, Equipment };

/// What the command line tells about a link and the files that go with it.
struct LinkOptions {
    std::int32_t PortType = PortTypeHSMS_SS;
    /// None: a host is active, an equipment passive.
    std::optional<std::int32_t> Mode{};
    std::optional<Endpoint> Local{};
    std::optional<Endpoint> Remote{};
    std::string Serial{};  ///< device of an RS-232 link
    std::optional<std::int32_t> Baud{};
    std::int32_t DeviceID = 0;
    std::optional<float> T1{}, T2{};  ///< seconds; none: the control's own, as everywhere below
    std::optional<std::int32_t> T3{}, T4{}, T5{}, T6{}, T7{}, T8{};  ///< seconds
    std::optional<std::int32_t> Retry{};
    bool SystemBytesCheck = false;
    std::vector<std::string> AllowedCallers{};
    /// Base name of the daily log; "": the control's own.
    std::string Log{};
    bool NoLog = false;
    // Folders; "": none.
    std::string Trace{};    ///< of the byte trace
    std::string Pcap{};     ///< of captures
    std::string Recipes{};  ///< its folders sent/ and received/ get the process programs
    /// Path of the dictionary; "": it is searched for.
    std::string Dictionary{};
};

/// What is wrong with a name of a file or folder on the command line; "" when nothing is.
[[nodiscard]] std::string RefuseEmptyName(const std::string& name);

/// Adds the options of files (log, traces, recipes, dictionary), and all of a link's options.
void AddFileOptions(Command command, LinkOptions& options);
void AddLinkOptions(Command command, LinkOptions& options);

/// The mode that a role has when none was given.
[[nodiscard]] std::int32_t ModeOf(const LinkOptions& options, Role role);

/// Throws UsageError when something is missing that the kind of link or the mode needs, or given
/// that it has no use for.
void CheckLinkOptions(const LinkOptions& options, Role role);

/// What may be meant but is not advisable, in one line; "" when there is nothing.
[[nodiscard]] std::string AdviceFor(const LinkOptions& options);

/// The surroundings of the control: a link that stays open over the end of a connection.
[[nodiscard]] PlatformOptions PlatformFor(const LinkOptions& options);

/// Sets the control's properties.
void Configure(Hexmire& control, const LinkOptions& options, Role role);

}  // namespace hexmire::program
