#include "LinkOptions.h"

#include "CommandLine.h"
#include "Failure.h"
#include <arpa/inet.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <functional>
#include <system_error>
#include <utility>

namespace hexmire::program {

namespace {

using Codes = std::vector<std::pair<std::string, std::int32_t>>;

void AddEndpoint(Command command,
                 const std::string& name,
                 std::optional<Endpoint>& target,
                 const std::string& description) {
    const auto read = [&target](const std::string& text) { target = ParseEndpoint(text); };
    const auto check = [](const std::string& text) {
        return ParseEndpoint(text) ? std::string()
                                   : "'" + text + "' is not ADDR:PORT with a port from 1 to 65535";
    };
    command.OptionFunction(name, read, description).Check(check).TypeName("ADDR:PORT");
}

void AddCode(Command command,
             const std::string& name,
             const Codes& codes,
             const std::function<void(std::int32_t)>& read,
             const std::string& description) {
    std::string names;
    for (const auto& [text, code] : codes)
        names += (names.empty() ? "" : "|") + text;
    const auto codeOf = [codes](const std::string& text) -> std::optional<std::int32_t> {
        const auto found = std::ranges::find(codes, text, &Codes::value_type::first);
        return found == codes.end() ? std::nullopt : std::optional(found->second);
    };
    const auto check = [codeOf, names](const std::string& text) {
        return codeOf(text) ? std::string() : "'" + text + "' is none of " + names;
    };
    command
        .OptionFunction(
            name, [codeOf, read](const std::string& text) { read(*codeOf(text)); }, description)
        .Check(check)
        .TypeName(names);
}

template <class Number>
void AddTimer(Command command,
              const std::string& name,
              std::optional<Number>& target,
              Number shortest,
              Number longest,
              const std::string& description) {
    command.Option(name, target, description).Range(shortest, longest).TypeName("SECONDS");
}

/// Ranges as the control has them.
void AddTimers(Command command, LinkOptions& options) {
    AddTimer(command, "--t1", options.T1, 0.1F, 10.0F, "Time between two characters of a block");
    AddTimer(command, "--t2", options.T2, 0.2F, 25.0F, "Time-out of the line's protocol");
    AddTimer(command, "--t3", options.T3, 1, 120, "Reply time-out");
    AddTimer(command, "--t4", options.T4, 1, 120, "Time between two blocks of one message");
    AddTimer(command, "--t5", options.T5, 1, 240, "Time between two attempts to connect");
    AddTimer(command, "--t6", options.T6, 1, 240, "Time-out of a control transaction");
    AddTimer(command, "--t7", options.T7, 1, 240, "Time that a connection may stay unselected");
    AddTimer(command, "--t8", options.T8, 1, 120, "Time between two parts of one message");
}

void AddSerialOptions(Command command, LinkOptions& options) {
    command.Option("--serial", options.Serial, "Serial port of an rs232 link, as /dev/ttyUSB0")
        .TypeName("DEVICE");
    AddCode(
        command,
        "--baud",
        {{"150", BaudRate150},
         {"300", BaudRate300},
         {"1200", BaudRate1200},
         {"2400", BaudRate2400},
         {"4800", BaudRate4800},
         {"9600", BaudRate9600},
         {"19200", BaudRate19200}},
        [&options](std::int32_t baud) { options.Baud = baud; },
        "Bits a second of a serial port (default: 9600)");
    command
        .Option("--retry",
                options.Retry,
                "How often a block is tried again on rs232 and tcpip links (default: 3)")
        .Range(0, 31)
        .TypeName("N");
}

void AddRecordOptions(Command command, LinkOptions& options) {
    command
        .Option("--trace",
                options.Trace,
                "Write every byte sent and received to a text file in this folder, one for "
                "each port and day")
        .Check(&RefuseEmptyName)
        .TypeName("FOLDER");
    command
        .Option("--pcap",
                options.Pcap,
                "Write what goes over TCP to a capture (pcapng, for Wireshark) in this "
                "folder, one for each port and day")
        .Check(&RefuseEmptyName)
        .TypeName("FOLDER");
    command
        .Option("--recipes",
                options.Recipes,
                "Store the process program of each S7F3 and S7F6 below this folder, in sent/ "
                "and received/")
        .Check(&RefuseEmptyName)
        .TypeName("FOLDER");
}

}  // namespace

std::string RefuseEmptyName(const std::string& name) {
    return name.empty() ? "a name has no characters" : "";
}

void AddFileOptions(Command command, LinkOptions& options) {
    const auto isLogName = [](const std::string& name) {
        return name.size() > 4 && name.ends_with(".log") ? std::string()
                                                         : "'" + name + "' must end in .log";
    };
    const CommandOption log =
        command
            .Option(
                "--log", options.Log, "Message log; the date is added to the name, one file a day")
            .Check(isLogName)
            .TypeName("FILE");
    command.Flag("--no-log", options.NoLog, "Write no message log").Excludes(log);
    AddRecordOptions(command, options);
    command
        .Option("--dictionary",
                options.Dictionary,
                "XML dictionary (default: Default.xml next to the program, of the source tree, "
                "or in the current directory)")
        .Check(&RefuseEmptyName)
        .TypeName("FILE");
}

void AddLinkOptions(Command command, LinkOptions& options) {
    const auto isAddress = [](const std::string& text) {
        in6_addr address{};
        const bool numeric = ::inet_pton(AF_INET, text.c_str(), &address) == 1 ||
                             ::inet_pton(AF_INET6, text.c_str(), &address) == 1;
        return numeric ? std::string() : "'" + text + "' is no numeric IPv4 or IPv6 address";
    };
    AddCode(
        command,
        "--port-type",
        {{"rs232", PortTypeRS232},
         {"hsms", PortTypeHSMS},
         {"tcpip", PortTypeTCPIP},
         {"hsms-ss", PortTypeHSMS_SS}},
        [&options](std::int32_t code) { options.PortType = code; },
        "Kind of link: SECS-I on a serial port, HSMS, SECS-I over TCP, or HSMS-SS (default: "
        "hsms-ss)");
    AddCode(
        command,
        "--mode",
        {{"active", ConnectionModeActive},
         {"passive", ConnectionModePassive},
         {"alternating", ConnectionModeAlternating}},
        [&options](std::int32_t code) { options.Mode = code; },
        "Who connects over TCP (default: a host is active, an equipment passive)");
    AddEndpoint(command, "--local", options.Local, "Where a passive or alternating side listens");
    AddEndpoint(
        command, "--remote", options.Remote, "Where an active or alternating side connects to");
    AddSerialOptions(command, options);
    command.Option("--device-id", options.DeviceID, "Device ID (default: 0)")
        .Range(0, 32'767)
        .TypeName("N");
    AddTimers(command, options);
    command.Flag(
        "--system-bytes-check", options.SystemBytesCheck, "Match a reply by its system bytes too");
    command
        .Option("--allow",
                options.AllowedCallers,
                "Address that may call a passive or alternating side; may be repeated "
                "(default: any)")
        .Check(isAddress)
        .TypeName("ADDR")
        .OneEachTime();
    AddFileOptions(command, options);
}

std::int32_t ModeOf(const LinkOptions& options, Role role) {
    return options.Mode.value_or(role == Role::Host ? ConnectionModeActive : ConnectionModePassive);
}

namespace {

void CheckSerialOptions(const LinkOptions& options) {
    if (options.Serial.empty()) throw UsageError("an rs232 link needs --serial DEVICE");
    const struct {
        const char* Name;
        bool IsGiven;
    } kOfTcp[] = {
        {"--mode", options.Mode.has_value()},
        {"--local", options.Local.has_value()},
        {"--remote", options.Remote.has_value()},
        {"--allow", !options.AllowedCallers.empty()},
    };
    for (const auto& option : kOfTcp) {
        if (option.IsGiven) throw UsageError(std::string(option.Name) + " is not for rs232 links");
    }
}

}  // namespace

void CheckLinkOptions(const LinkOptions& options, Role role) {
    if (options.PortType == PortTypeRS232) return CheckSerialOptions(options);
    if (!options.Serial.empty()) throw UsageError("--serial is for rs232 links alone");
    if (options.Baud) throw UsageError("--baud is for rs232 links alone");
    const std::int32_t mode = ModeOf(options, role);
    const std::string side = mode == ConnectionModeActive    ? "an active side"
                             : mode == ConnectionModePassive ? "a passive side"
                                                             : "an alternating side";
    if (mode != ConnectionModePassive && !options.Remote)
        throw UsageError(side + " needs --remote ADDR:PORT");
    if (mode != ConnectionModeActive && !options.Local)
        throw UsageError(side + " needs --local ADDR:PORT");
}

std::string AdviceFor(const LinkOptions& options) {
    if (options.PortType != PortTypeRS232) return {};
    const LinkSettings defaults;
    const auto least = LeastSensibleT1(options.Baud.value_or(defaults.BaudRate));
    const auto t1 =
        options.T1 ? std::chrono::milliseconds(std::lround(*options.T1 * 1'000.0F)) : defaults.T1;
    if (t1 >= least) return {};
    return "T1 of " + std::to_string(t1.count()) + " ms is short for this speed: at least " +
           std::to_string(least.count()) + " ms are advisable";
}

PlatformOptions PlatformFor(const LinkOptions& options) {
    PlatformOptions platform;
    platform.Link.AutoReconnect = true;
    platform.Link.AllowedCallers = options.AllowedCallers;
    platform.MessageLog = !options.NoLog;
    platform.Link.CaptureFolder = options.Pcap;
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
    if (!options.Serial.empty()) control.SerialPort(options.Serial);
    if (options.Baud) control.BaudRate(*options.Baud);
    if (options.Retry) control.ConnectionRetryLimit(*options.Retry);
    if (options.T1) control.T1Timeout(*options.T1);
    if (options.T2) control.T2Timeout(*options.T2);
    if (options.T3) control.T3Timeout(*options.T3);
    if (options.T4) control.T4Timeout(*options.T4);
    if (options.T5) control.T5Timeout(*options.T5);
    if (options.T6) control.T6Timeout(*options.T6);
    if (options.T7) control.T7Timeout(*options.T7);
    if (options.T8) control.T8Timeout(*options.T8);
    if (!options.Log.empty()) control.SECSLogFile(options.Log);
    if (!options.Trace.empty()) {
        control.SECSILogPath(options.Trace);
        control.TraceEnabled(true);
    }
    if (!options.Recipes.empty()) {
        std::error_code ignored;  // a folder that cannot be made shows with the first recipe
        std::filesystem::create_directories(options.Recipes, ignored);
        control.RecipeSendPath(options.Recipes + "/sent");
        control.RecipeRecvPath(options.Recipes + "/received");
        control.RecipeFileEnabled(true);
    }
}

}  // namespace hexmire::program
