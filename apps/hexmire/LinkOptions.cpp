#include "LinkOptions.h"

#include "Failure.h"
#include <CLI/CLI.hpp>
#include <arpa/inet.h>

#include <map>

namespace hexmire::program {

namespace {

using Codes = std::map<std::string, std::int32_t>;

void AddEndpoint(CLI::App& command,
                 const std::string& name,
                 std::optional<Endpoint>& target,
                 const std::string& description) {
    const auto read = [&target](const std::string& text) { target = ParseEndpoint(text); };
    const auto check = [](const std::string& text) {
        return ParseEndpoint(text) ? std::string()
                                   : "'" + text + "' is not ADDR:PORT with a port from 1 to 65535";
    };
    command.add_option_function<std::string>(name, read, description)
        ->check(check)
        ->type_name("ADDR:PORT");
}

void AddCode(CLI::App& command,
             const std::string& name,
             const Codes& codes,
             const std::function<void(std::int32_t)>& read,
             const std::string& description) {
    std::string names;
    for (const auto& [text, code] : codes)
        names += (names.empty() ? "" : "|") + text;
    const auto check = [codes, names](const std::string& text) {
        return codes.contains(text) ? std::string() : "'" + text + "' is none of " + names;
    };
    command
        .add_option_function<std::string>(
            name, [codes, read](const std::string& text) { read(codes.at(text)); }, description)
        ->check(check)
        ->type_name(names);
}

void AddTimer(CLI::App& command,
              const std::string& name,
              std::optional<std::int32_t>& target,
              std::int32_t longest,
              const std::string& description) {
    command.add_option(name, target, description)
        ->check(CLI::Range(1, longest))
        ->type_name("SECONDS");
}

}  // namespace

void AddFileOptions(CLI::App& command, LinkOptions& options) {
    const auto isLogName = [](const std::string& name) {
        return name.size() > 4 && name.ends_with(".log") ? std::string()
                                                         : "'" + name + "' must end in .log";
    };
    auto* log =
        command
            .add_option(
                "--log", options.Log, "Message log; the date is added to the name, one file a day")
            ->check(isLogName)
            ->type_name("FILE");
    command.add_flag("--no-log", options.NoLog, "Write no message log")->excludes(log);
    command
        .add_option("--dictionary",
                    options.Dictionary,
                    "XML dictionary (default: Default.xml next to the program, of the source tree, "
                    "or in the current directory)")
        ->type_name("FILE");
}

void AddLinkOptions(CLI::App& command, LinkOptions& options) {
    const auto isAddress = [](const std::string& text) {
        in6_addr address{};
        const bool numeric = ::inet_pton(AF_INET, text.c_str(), &address) == 1 ||
                             ::inet_pton(AF_INET6, text.c_str(), &address) == 1;
        return numeric ? std::string() : "'" + text + "' is no numeric IPv4 or IPv6 address";
    };
    AddCode(
        command,
        "--port-type",
        {{"hsms", PortTypeHSMS}, {"hsms-ss", PortTypeHSMS_SS}},
        [&options](std::int32_t code) { options.PortType = code; },
        "Kind of link (default: hsms-ss)");
    AddCode(
        command,
        "--mode",
        {{"active", ConnectionModeActive}, {"passive", ConnectionModePassive}},
        [&options](std::int32_t code) { options.Mode = code; },
        "Who connects (default: a host is active, an equipment passive)");
    AddEndpoint(command, "--local", options.Local, "Where a passive side listens");
    AddEndpoint(command, "--remote", options.Remote, "Where an active side connects to");
    command.add_option("--device-id", options.DeviceID, "Device ID (default: 0)")
        ->check(CLI::Range(0, 32'767))
        ->type_name("N");
    AddTimer(command, "--t3", options.T3, 120, "Reply time-out");
    AddTimer(command, "--t5", options.T5, 240, "Time between two attempts to connect");
    AddTimer(command, "--t6", options.T6, 240, "Time-out of a control transaction");
    AddTimer(command, "--t7", options.T7, 240, "Time that a connection may stay unselected");
    AddTimer(command, "--t8", options.T8, 120, "Time between two parts of one message");
    command.add_flag(
        "--system-bytes-check", options.SystemBytesCheck, "Match a reply by its system bytes too");
    command
        .add_option("--allow",
                    options.AllowedCallers,
                    "Address that may call a passive side; may be repeated (default: any)")
        ->check(isAddress)
        ->type_name("ADDR")
        ->allow_extra_args(false);
    AddFileOptions(command, options);
}

std::int32_t ModeOf(const LinkOptions& options, Role role) {
    return options.Mode.value_or(role == Role::Host ? ConnectionModeActive : ConnectionModePassive);
}

void CheckLinkOptions(const LinkOptions& options, Role role) {
    if (ModeOf(options, role) == ConnectionModeActive) {
        if (!options.Remote) throw UsageError("an active side needs --remote ADDR:PORT");
    } else if (!options.Local) {
        throw UsageError("a passive side needs --local ADDR:PORT");
    }
}

PlatformOptions PlatformFor(const LinkOptions& options) {
    PlatformOptions platform;
    platform.Link.AutoReconnect = true;
    platform.Link.AllowedCallers = options.AllowedCallers;
    platform.MessageLog = !options.NoLog;
    return platform;
}

void Configure(Hexmire& control, const LinkOptions& options, Role role) {
    control.ConnectionHost(role == Role::Host);
    control.ConnectionPortType(options.PortType);
    control.HSMSConnectionType(ModeOf(options, role));
    control.DeviceID(options.DeviceID);
    control.SystemBytesCheck(options.SystemBytesCheck);
    if (options.Local) {
        control.LocalIPAddress(options.Local->Address);
        control.LocalIPPort(options.Local->Port);
    }
    if (options.Remote) {
        control.RemoteIPAddress(options.Remote->Address);
        control.RemoteIPPort(options.Remote->Port);
    }
    if (options.T3) control.T3Timeout(*options.T3);
    if (options.T5) control.T5Timeout(*options.T5);
    if (options.T6) control.T6Timeout(*options.T6);
    if (options.T7) control.T7Timeout(*options.T7);
    if (options.T8) control.T8Timeout(*options.T8);
    if (!options.Log.empty()) control.SECSLogFile(options.Log);
}

}  // namespace hexmire::program
