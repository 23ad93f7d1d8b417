#include "commands/PeerCommand.h"

#include <hexmire/hosting/Utf8.h>

#include "CommandLine.h"
#include "DictionaryFile.h"
#include "Failure.h"
#include "Interrupt.h"
#include "JsonEvents.h"
#include "LineSource.h"
#include "MessageLogFile.h"
#include "Peer.h"
#include "Prompt.h"
#include "ScriptRunner.h"
#include "SmlPrinter.h"
#include "Terminal.h"
#include "equipment/EquipmentOptions.h"
#include "equipment/OperatorCommands.h"

#include <csignal>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace hexmire::program {

namespace {

std::unique_ptr<EventOutput> OutputFor(const PeerOptions& options, std::ostream& out) {
    if (options.Json) return std::make_unique<JsonEvents>(out);
    return std::make_unique<SmlPrinter>(out,
                                        options.Side == Role::Host ? "host" : "equipment",
                                        SmlPrinter::Detail::Everything,
                                        ControlsOfOutput());
}

/// What AddOperatorCommands adds, for which it needs an equipment that runs.
constexpr const char* kOperatorCommands =
    ", event CEID, alarm ALID set|clear, variable ID VALUE, terminal TEXT, online, offline, "
    "busy on|off, misbehave SxFy KIND [TIMES|always], behave";

/// "Commands, one a line, ...: connect [SECONDS], send ..."
std::string ScriptHelp(Role side) {
    std::string names;
    const ScriptCommands commands = CommonCommands();
    for (const ScriptCommand& command : commands.All())
        names += (names.empty() ? "" : ", ") + command.Name +
                 (command.Arguments.empty() ? "" : ' ' + command.Arguments);
    if (side == Role::Equipment) names += kOperatorCommands;
    return "Commands, one a line, '-' for the standard input: " + names +
           "; '#' begins a comment. Without a script: a prompt on a terminal, else the link is "
           "served until SIGINT or SIGTERM";
}

/// Keeps the port open until a signal comes.
void Serve(ScriptContext& context) {
    context.Side.KeepNoneWaiting();
    const auto ended = [&] {
        const bool isOpen = context.Side.Control().PortOpened() || context.Side.IsReopening();
        return !isOpen || context.GivenUp();
    };
    constexpr auto kForever = std::chrono::nanoseconds::max();
    if (context.Side.Open(context.GivenUp, kForever)) context.Loop.RunUntil(ended, kForever);
    if (!context.GivenUp())
        throw Failure("the port has closed: " + Utf8FromLatin1(context.Side.LastError()));
}

void Run(ScriptContext& context, const std::string& script) {
    if (script.empty()) return Serve(context);
    if (script != "-") return RunScriptFile(context, script);
    LineSource lines(context.Loop);
    RunScriptLines(context, "<stdin>", [&](bool isContinued) {
        std::optional<std::string> line = lines.Next(context.GivenUp);
        // What there is of the command is not to be done.
        if (!line && isContinued && context.GivenUp()) throw Failure("interrupted");
        return line;
    });
}

void Prompt(ScriptContext& context, Terminal& terminal, Interrupt& interrupt, Role side) {
    std::vector<std::string> templates;
    for (const SECSTransPtr& trans : *context.Side.Control().SECSDictionary())
        templates.push_back(Utf8FromLatin1(trans->Name()));
    context.Out << "'help' lists the commands, Ctrl-D ends." << std::endl;
    context.Side.StartOpening();
    interrupt.KeepTerminalModes();
    terminal.Start(LineCompletion(context.Commands, std::move(templates)), HistoryFile());
    RunPrompt(context, terminal, interrupt, side == Role::Host ? "host> " : "equipment> ");
}

EquipmentRole::Options SimulationOf(const PeerOptions& options) {
    if (options.Side != Role::Equipment) return {};
    return SimulationOf(options.Equipment);
}

/// A log that cannot be written where it was asked for is a failure; the place that it has by
/// itself may well be one that only an installation writes to.
void CheckLog(Peer& peer, const LinkOptions& options) {
    if (options.NoLog) return;
    const std::string problem = ProblemOfLog(peer.Control().SECSLogFile());
    if (problem.empty()) return;
    if (!options.Log.empty()) throw Failure(problem);
    std::cerr << "hexmire: warning: " << problem
              << " (--log FILE writes it elsewhere, --no-log none)" << std::endl;
}

}  // namespace

void AddPeerOptions(Command command, PeerOptions& options) {
    AddLinkOptions(command, options.Link);
    command.Option("--script", options.Script, ScriptHelp(options.Side))
        .Check(&RefuseEmptyName)
        .TypeName("FILE");
    command.Flag("--json", options.Json, "Write one JSON object a line for every event");
    if (options.Side == Role::Equipment) AddEquipmentOptions(command, options.Equipment);
}

void RunPeer(const PeerOptions& options) {
    CheckLinkOptions(options.Link, options.Side);
    if (const std::string advice = AdviceFor(options.Link); !advice.empty())
        std::cerr << "hexmire: warning: " << advice << std::endl;
    // A reader that goes away shows as an output that has failed.
    std::signal(SIGPIPE, SIG_IGN);
    EventLoop loop;
    Interrupt interrupt(loop);
    const bool isPrompt = options.Script.empty() && !options.Json && Terminal::IsThere();
    std::optional<Terminal> terminal;
    if (isPrompt) terminal.emplace(loop);
    const std::unique_ptr<EventOutput> output =
        OutputFor(options, terminal ? terminal->Out() : std::cout);
    EquipmentRole::Options simulated = SimulationOf(options);
    Peer peer(loop, *output, options.Link, options.Side, [&](Platform& platform) {
        AddTruncation(platform, simulated.Truncate);
    });
    CheckLog(peer, options.Link);
    peer.LoadDictionary(FindDictionary(options.Link.Dictionary));
    std::optional<EquipmentRole> equipment;
    ScriptCommands commands = CommonCommands();
    if (options.Side == Role::Equipment) {
        equipment.emplace(loop, peer, std::move(simulated));
        AddOperatorCommands(commands, *equipment);
    }

    struct CloseAtTheEnd {
        Peer& Side;
        ~CloseAtTheEnd() { Side.Close(); }
    };
    const CloseAtTheEnd closing{peer};
    const auto givenUp = [&] { return interrupt.HasCome() || !output->IsGood(); };
    ScriptContext context{.Loop = loop,
                          .Side = peer,
                          .Commands = commands,
                          .Out = terminal       ? terminal->Out()
                                 : options.Json ? std::cerr
                                                : std::cout,
                          .GivenUp = givenUp};
    try {
        if (terminal) {
            Prompt(context, *terminal, interrupt, options.Side);
        } else {
            Run(context, options.Script);
        }
    } catch (const Failure&) {
        if (output->IsGood()) throw;
    }
    if (!output->IsGood()) throw Failure("cannot write to the standard output");
}

}  // namespace hexmire::program
