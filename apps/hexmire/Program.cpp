#include "Program.h"

#include "CommandLine.h"
#include "Failure.h"
#include "VisibleText.h"
#include "commands/DecodeCommand.h"
#include "commands/DemoCommand.h"
#include "commands/DictionaryCommand.h"
#include "commands/EncodeCommand.h"
#include "commands/LogCommand.h"
#include "commands/PeerCommand.h"
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

void AddPeer(Command program,
             const std::string& name,
             const std::string& description,
             PeerOptions& options) {
    const Command command = program.Add(name, description);
    AddPeerOptions(command, options);
    command.Run([&options] { RunPeer(options); });
}

/// Reads the command line, runs its command and turns what went wrong into a message and a status.
int Perform(CommandLine& program, int argc, const char* const* argv) {
    try {
        program.Perform(argc, argv);
        return Written(0);
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
    CommandLine program(
        "hexmire", HEXMIRE_VERSION, "SECS-II messages between a factory host and its equipment");
    const Command top = program.Top();

    LinkOptions demo;
    const Command demoCommand = top.Add(
        "demo", "Show a host and a simulated equipment talking over HSMS-SS in this process");
    AddDemoOptions(demoCommand, demo);
    demoCommand.Run([&demo] { RunDemo(demo); });

    PeerOptions host{.Side = Role::Host};
    AddPeer(top, "host", "Be the host of a real link", host);
    PeerOptions equipment{.Side = Role::Equipment};
    AddPeer(top,
            "equipment",
            "Be a simulated equipment on a real link: every primary of the dictionary that expects "
            "a reply gets one",
            equipment);

    DecodeOptions decode;
    const Command decodeCommand = top.Add("decode", "Show bytes of messages as SML");
    AddDecodeOptions(decodeCommand, decode);
    decodeCommand.Run([&decode] { RunDecode(decode); });
    EncodeOptions encode;
    const Command encodeCommand = top.Add("encode", "Write SML as bytes");
    AddEncodeOptions(encodeCommand, encode);
    encodeCommand.Run([&encode] { RunEncode(encode); });
    DictionaryOptions dictionary;
    AddDictionaryCommands(top.Add("dictionary", "Check, show and make dictionary files"),
                          dictionary);
    LogOptions log;
    const Command logCommand =
        top.Add("log", "Read message logs: filter, follow, pair primaries with replies, draw");
    AddLogOptions(logCommand, log);
    logCommand.Run([&log] { RunLog(log); });

    top.Add("version", "Print the version").Run(&PrintVersion);

    return Perform(program, argc, argv);
}

}  // namespace hexmire::program
