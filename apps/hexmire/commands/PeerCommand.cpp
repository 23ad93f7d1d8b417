#include "commands/PeerCommand.h"

#include <hexmire/hosting/Utf8.h>

#include "DictionaryFile.h"
#include "EquipmentRole.h"
#include "Failure.h"
#include "Interrupt.h"
#include "JsonEvents.h"
#include "LineSource.h"
#include "Peer.h"
#include "ScriptRunner.h"
#include "SmlPrinter.h"
#include <CLI/CLI.hpp>

#include <iostream>
#include <memory>
#include <optional>

namespace hexmire::program {

namespace {

std::unique_ptr<EventOutput> OutputFor(const PeerOptions& options) {
    if (options.Json) return std::make_unique<JsonEvents>(std::cout);
    return std::make_unique<SmlPrinter>(std::cout,
                                        options.Side == Role::Host ? "host" : "equipment");
}

/// "Commands, one a line, ...: connect [SECONDS], send ..."
std::string ScriptHelp() {
    std::string names;
    const ScriptCommands commands = CommonCommands();
    for (const ScriptCommand& command : commands.All())
        names += (names.empty() ? "" : ", ") + command.Name +
                 (command.Arguments.empty() ? "" : ' ' + command.Arguments);
    return "Commands, one a line, '-' for the standard input: " + names +
           "; '#' begins a comment. Without a script the link is served until SIGINT or SIGTERM";
}

/// Keeps the port open until a signal comes.
void Serve(EventLoop& loop, Peer& peer, const Interrupt& interrupt) {
    const auto interrupted = [&] { return interrupt.HasCome(); };
    const auto ended = [&] { return !peer.Control().PortOpened() || interrupted(); };
    constexpr auto kForever = std::chrono::nanoseconds::max();
    if (peer.Open(interrupted, kForever)) loop.RunUntil(ended, kForever);
    if (!interrupt.HasCome())
        throw Failure("the port has closed: " + Utf8FromLatin1(peer.LastError()));
}

}  // namespace

void AddPeerOptions(CLI::App& command, PeerOptions& options) {
    AddLinkOptions(command, options.Link);
    command.add_option("--script", options.Script, ScriptHelp())->type_name("FILE");
    command.add_flag("--json", options.Json, "Write one JSON object a line for every event");
}

void RunPeer(const PeerOptions& options) {
    CheckLinkOptions(options.Link, options.Side);
    if (const std::string advice = AdviceFor(options.Link); !advice.empty())
        std::cerr << "hexmire: warning: " << advice << std::endl;
    EventLoop loop;
    const Interrupt interrupt(loop);
    const std::unique_ptr<EventOutput> output = OutputFor(options);
    Peer peer(loop, *output, options.Link, options.Side);
    peer.LoadDictionary(FindDictionary(options.Link.Dictionary));
    std::optional<EquipmentRole> equipment;
    if (options.Side == Role::Equipment) equipment.emplace(peer);

    struct CloseAtTheEnd {
        Peer& Side;
        ~CloseAtTheEnd() { Side.Close(); }
    };
    const CloseAtTheEnd closing{peer};
    if (options.Script.empty()) return Serve(loop, peer, interrupt);
    const ScriptCommands commands = CommonCommands();
    ScriptContext context{.Loop = loop,
                          .Side = peer,
                          .Commands = commands,
                          .Out = options.Json ? std::cerr : std::cout,
                          .GivenUp = [&] { return interrupt.HasCome(); }};
    if (options.Script != "-") return RunScriptFile(context, options.Script);
    LineSource lines(loop);
    RunScriptLines(context, "<stdin>", [&](bool) { return lines.Next(context.GivenUp); });
}

}  // namespace hexmire::program
