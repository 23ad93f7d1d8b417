#include "Program.h"

#include "Failure.h"
#include "VisibleText.h"
#include "commands/DecodeCommand.h"
#include "commands/DemoCommand.h"
#include "commands/DictionaryCommand.h"
#include "commands/EncodeCommand.h"
#include "commands/LogCommand.h"
#include "commands/PeerCommand.h"
#include <CLI/CLI.hpp>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <exception>
#include <iostream>
#include <new>
#include <string>

namespace hexmire::program {

namespace {

constexpr int kFailed = 1;
constexpr int kNotUnderstood = 2;

void PrintVersion() { std::cout << "hexmire " << HEXMIRE_VERSION << std::endl; }

int Report(std::string message, int status) {
    std::replace(message.begin(), message.end(), '\n', ' ');
    std::cerr << "hexmire: " << VisibleText(message) << std::endl;
    return status;
}

/// What was written may still wait in the stream.
int Written(int status) {
    if (!std::cout.flush()) return Report("cannot write to the standard output", kFailed);
    return status;
}

/// A standard stream that the program was started without would be the next file or socket that it
/// opens. In its place: an input at its end, an output that cannot be written.
void OpenMissingStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        // The lowest number that is free is taken.
        if (::fcntl(stream, F_GETFD) < 0) static_cast<void>(::open("/dev/null", O_RDONLY));
    }
}

void AddPeer(CLI::App& program,
             const std::string& name,
             const std::string& description,
             PeerOptions& options) {
    CLI::App* command = program.add_subcommand(name, description);
    AddPeerOptions(*command, options);
    command->callback([&options] { RunPeer(options); });
}

/// Reads the command line, runs its command and turns what went wrong into a message and a status.
int Perform(CLI::App& program, int argc, const char* const* argv) {
    try {
        program.parse(argc, argv);
        return Written(0);
    } catch (const CLI::Success& asked) {
        return Written(program.exit(asked));  // Help and version.
    } catch (const CLI::RequiredError& error) {
        const auto unknown = program.remaining();
        const std::string reason =
            unknown.empty() ? error.what() : "unknown command '" + unknown.front() + "'";
        return Report(reason + " (see hexmire --help)", kNotUnderstood);
    } catch (const CLI::ParseError& error) {
        return Report(std::string(error.what()) + " (see hexmire --help)", kNotUnderstood);
    } catch (const UsageError& error) {
        return Report(error.what(), kNotUnderstood);
    } catch (const Told&) {
        return kFailed;
    } catch (const std::bad_alloc&) {
        return Report("out of memory", kFailed);
    } catch (const std::exception& error) {
        return Report(error.what(), kFailed);
    }
}

}  // namespace

int Run(int argc, const char* const* argv) {
    OpenMissingStreams();
    CLI::App program("SECS-II messages between a factory host and its equipment", "hexmire");
    program.set_version_flag(
        "--version", std::string("hexmire ") + HEXMIRE_VERSION, "Print the version");
    program.set_help_flag("-h,--help", "Print this help");
    program.require_subcommand(1);

    LinkOptions demo;
    CLI::App* demoCommand = program.add_subcommand(
        "demo", "Show a host and a simulated equipment talking over HSMS-SS in this process");
    AddDemoOptions(*demoCommand, demo);
    demoCommand->callback([&demo] { RunDemo(demo); });

    PeerOptions host{.Side = Role::Host};
    AddPeer(program, "host", "Be the host of a real link", host);
    PeerOptions equipment{.Side = Role::Equipment};
    AddPeer(program,
            "equipment",
            "Be a simulated equipment on a real link: every primary of the dictionary that expects "
            "a reply gets one",
            equipment);

    DecodeOptions decode;
    CLI::App* decodeCommand = program.add_subcommand("decode", "Show bytes of messages as SML");
    AddDecodeOptions(*decodeCommand, decode);
    decodeCommand->callback([&decode] { RunDecode(decode); });
    EncodeOptions encode;
    CLI::App* encodeCommand = program.add_subcommand("encode", "Write SML as bytes");
    AddEncodeOptions(*encodeCommand, encode);
    encodeCommand->callback([&encode] { RunEncode(encode); });
    DictionaryOptions dictionary;
    AddDictionaryCommands(
        *program.add_subcommand("dictionary", "Check, show and make dictionary files"), dictionary);
    LogOptions log;
    CLI::App* logCommand = program.add_subcommand(
        "log", "Read message logs: filter, follow, pair primaries with replies, draw");
    AddLogOptions(*logCommand, log);
    logCommand->callback([&log] { RunLog(log); });

    program.add_subcommand("version", "Print the version")->callback(&PrintVersion);

    return Perform(program, argc, argv);
}

}  // namespace hexmire::program
