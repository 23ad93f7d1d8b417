#include <hexmire/hosting/Utf8.h>

#include "ControlProperties.h"
#include "ScriptCommands.h"
#include "ScriptWords.h"
#include "SmlMessage.h"
#include "Template.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

namespace hexmire::program {

namespace {

using namespace std::chrono_literals;

// --- The link ----------------------------------------------------------------------------------

Action ReadConnect(const CommandText& text) {
    CheckWordCount(text, 0, 1);
    const Duration timeout = text.Words.empty() ? Duration(30s) : SecondsIn(text.Words[0]);
    return [timeout](ScriptContext& context) {
        if (context.Side.Open(context.GivenUp, timeout)) return;
        if (context.GivenUp()) throw Failure("interrupted");
        const std::string& reason = context.Side.LastError();
        throw Failure("no connection" + (reason.empty() ? "" : ": " + Utf8FromLatin1(reason)));
    };
}

Action ReadDisconnect(const CommandText& text) {
    CheckWordCount(text, 0, 0);
    return [](ScriptContext& context) { context.Side.Close(); };
}

// --- Messages ----------------------------------------------------------------------------------

/// SML stands behind the command, and maybe in further lines: not a name.
bool IsSml(const CommandText& text) {
    return text.Rest.empty() || text.Whole.find('\n') != std::string_view::npos ||
           text.Rest.find('<') != std::string_view::npos || text.Rest.ends_with('.');
}

/// The message behind the command's name. The name is blanked, so that places stay right.
ParsedSml SmlOf(const CommandText& text, std::string_view name) {
    std::string sml(text.Whole);
    const std::size_t begin = sml.find(name);
    sml.replace(begin, name.size(), name.size(), ' ');
    return ReadSml(sml);
}

void Send(ScriptContext& context, const SECSTransPtr& trans, const std::string& what) {
    const std::uint64_t before = context.Side.Errors();
    bool isSent = trans != nullptr && context.Side.Send(trans);
    // Without a connection the link refuses the message a little later.
    if (isSent && !context.Side.CanSend())
        isSent = !context.WaitFor([&] { return context.Side.Errors() != before; }, 1s);
    if (!isSent)
        throw Failure("cannot send " + what + ": " + Utf8FromLatin1(context.Side.LastError()));
}

/// A new transaction with the template's name, in ISO 8859-1; its errors are the control's.
SECSTransPtr CopyOfTemplate(ScriptContext& context, const std::string& name) {
    SECSTransPtr trans = context.Side.Control().NewSECSTransaction(name);
    if (trans != nullptr) PrepareSending(*trans);
    return trans;
}

/// That of the first template with this stream and function; "" when there is none.
std::string NameOf(ScriptContext& context, const SECSMessage& primary) {
    for (const SECSTransPtr& trans : *context.Side.Control().SECSDictionary()) {
        const SECSMessage& message = *trans->Primary();
        if (message.Stream() == primary.Stream() && message.Func() == primary.Func())
            return trans->Name();
    }
    return {};
}

Action ReadSend(const CommandText& text) {
    if (!IsSml(text)) {
        return [name = Latin1In(text, text.Rest)](ScriptContext& context) {
            Send(context, CopyOfTemplate(context, name), Utf8FromLatin1(name));
        };
    }
    return [sml = SmlOf(text, "send")](ScriptContext& context) {
        const SECSTransPtr trans = context.Side.Control().NewSECSTransaction();
        CopyMessage(*sml.Message, *trans->Primary());
        // What a reply is known by.
        trans->Secondary()->Stream(sml.Message->Stream());
        if (sml.Message->Func() < 255) trans->Secondary()->Func(sml.Message->Func() + 1);
        trans->ReplyExpected(sml.ReplyExpected);
        trans->Name(sml.Name.empty() ? NameOf(context, *sml.Message) : sml.Name);
        Send(context, trans, StreamFunction(sml.Message->Stream(), sml.Message->Func()));
    };
}

void Reply(ScriptContext& context, const SECSMessage& message) {
    const std::string name = StreamFunction(message.Stream(), message.Func());
    const SECSTransPtr trans = context.Side.TakeWaiting(message.Stream(), message.Func());
    if (trans == nullptr) throw Failure("no received primary waits for " + name);
    CopyMessage(message, *trans->Secondary());
    if (!context.Side.Reply(trans))
        throw Failure("cannot reply " + name + ": " + Utf8FromLatin1(context.Side.LastError()));
}

Action ReadReply(const CommandText& text) {
    if (!IsSml(text)) {
        return [name = Latin1In(text, text.Rest)](ScriptContext& context) {
            const SECSTransPtr trans = CopyOfTemplate(context, name);
            if (trans == nullptr)
                throw Failure("cannot reply " + Utf8FromLatin1(name) + ": " +
                              Utf8FromLatin1(context.Side.LastError()));
            DropExamples(*trans->Secondary());
            Reply(context, *trans->Secondary());
        };
    }
    return [sml = SmlOf(text, "reply")](ScriptContext& context) { Reply(context, *sml.Message); };
}

Action ReadExpect(const CommandText& text) {
    CheckWordCount(text, 1, 2);
    const auto [stream, function] = StreamAndFunctionIn(text.Words[0]);
    const Duration timeout = text.Words.size() == 1 ? Duration(45s) : SecondsIn(text.Words[1]);
    return [stream = stream, function = function, timeout](ScriptContext& context) {
        const auto taken = [&] { return context.Side.TakeReceived(stream, function); };
        if (!context.WaitFor(taken, timeout))
            throw Failure(StreamFunction(stream, function) + " did not come");
    };
}

Action HoldOrRelease(const CommandText& text, bool isHeld) {
    CheckWordCount(text, 0, 1);
    if (text.Words.empty())
        return [isHeld](ScriptContext& context) { context.Side.HoldAll(isHeld); };
    const StreamAndFunction message = StreamAndFunctionIn(text.Words[0]);
    return [message, isHeld](ScriptContext& context) {
        context.Side.Hold(message.Stream, message.Function, isHeld);
    };
}

Action ReadWait(const CommandText& text) {
    CheckWordCount(text, 1, 1);
    const Duration time = SecondsIn(text.Words[0]);
    return [time](ScriptContext& context) {
        static_cast<void>(context.WaitFor([] { return false; }, time));
    };
}

// --- The dictionary ----------------------------------------------------------------------------

std::string HeaderOf(const SECSTrans& trans) {
    const std::string header = StreamFunction(trans.Primary()->Stream(), trans.Primary()->Func());
    return header + (HasReply(trans) ? " W" : "");
}

Action ReadList(const CommandText& text) {
    return [pattern = Latin1In(text, text.Rest)](ScriptContext& context) {
        const auto dictionary = context.Side.Control().SECSDictionary();
        bool isEmpty = true;
        for (const SECSTransPtr& trans : *dictionary) {
            if (!FitsPattern(trans->Name(), pattern) && !FitsPattern(trans->Description(), pattern))
                continue;
            isEmpty = false;
            std::string line = Utf8FromLatin1(trans->Name());
            if (line.size() < 12) line.resize(12, ' ');
            line += "  " + HeaderOf(*trans);
            if (!trans->Description().empty()) {
                if (line.size() < 24) line.resize(24, ' ');
                line += ' ' + Utf8FromLatin1(trans->Description());
            }
            context.Out << line << '\n';
        }
        context.Out << std::flush;
        if (isEmpty)
            throw Failure(pattern.empty() ? "the dictionary is empty"
                                          : "no template fits '" + Utf8FromLatin1(pattern) + "'");
    };
}

/// Lines end as on a terminal.
void PrintSml(std::ostream& out, const std::string& sml) {
    std::string text = Utf8FromLatin1(sml);
    std::erase(text, '\r');
    out << text << '\n';
}

/// As a message is sent by its name: letter case does not count.
SECSTransPtr FindTemplate(ScriptContext& context, std::string_view name) {
    for (const SECSTransPtr& trans : *context.Side.Control().SECSDictionary()) {
        if (IsSameWord(trans->Name(), name)) return trans;
    }
    return nullptr;
}

Action ReadShow(const CommandText& text) {
    if (text.Words.empty()) throw UsageOfCommand();
    return [name = Latin1In(text, text.Rest)](ScriptContext& context) {
        const SECSTransPtr trans = FindTemplate(context, name);
        if (trans == nullptr) throw Failure("no template '" + Utf8FromLatin1(name) + "'");
        if (!trans->Description().empty())
            context.Out << "// " << Utf8FromLatin1(trans->Description()) << '\n';
        PrintSml(context.Out, RenderSml(*trans->Primary(), HasReply(*trans)));
        if (HasReply(*trans)) PrintSml(context.Out, RenderSml(*trans->Secondary(), false));
        context.Out << std::flush;
    };
}

// --- The control -------------------------------------------------------------------------------

void PrintProperty(ScriptContext& context, const ControlProperty& property) {
    context.Out << property.Name << ' ' << Utf8FromLatin1(property.Get(context.Side.Control()))
                << std::endl;
}

Action ReadSet(const CommandText& text) {
    if (text.Words.empty()) {
        return [](ScriptContext& context) {
            for (const ControlProperty& property : ControlProperties())
                PrintProperty(context, property);
        };
    }
    const ControlProperty* property = FindControlProperty(text.Words[0]);
    if (property == nullptr)
        throw BadCommand("unknown property '" + std::string(text.Words[0]) + "' (set lists them)");
    if (text.Words.size() == 1)
        return [property](ScriptContext& context) { PrintProperty(context, *property); };
    // A path may hold blanks: everything up to the last word is the value.
    const std::string_view behind(text.Words[1].data(), text.Rest.data() + text.Rest.size());
    const auto change = property->Read(Latin1In(text, behind));
    return [property, change, value = std::string(behind)](ScriptContext& context) {
        const std::uint64_t before = context.Side.Errors();
        change(context.Side.Control());
        if (context.Side.Errors() != before)
            throw Failure("cannot set " + property->Name + " to " + value + ": " +
                          Utf8FromLatin1(context.Side.LastError()));
    };
}

// --- The rest ----------------------------------------------------------------------------------

Action ReadQuit(const CommandText& text) {
    CheckWordCount(text, 0, 0);
    return [](ScriptContext& context) { context.Ended = true; };
}

void PrintHelp(ScriptContext& context, const ScriptCommand& command) {
    std::string line = command.Name;
    if (!command.Arguments.empty()) line += ' ' + command.Arguments;
    line.resize(std::max<std::size_t>(line.size(), 24), ' ');
    context.Out << line << ' ' << command.Help << '\n';
}

Action ReadHelp(const CommandText& text) {
    CheckWordCount(text, 0, 1);
    return [name = std::string(text.Rest)](ScriptContext& context) {
        if (!name.empty() && context.Commands.Find(name) == nullptr)
            throw Failure("no command '" + name + "'");
        for (const ScriptCommand& command : context.Commands.All()) {
            if (name.empty() || command.Name == name) PrintHelp(context, command);
        }
        context.Out << std::flush;
    };
}

}  // namespace

ScriptCommands CommonCommands() {
    using enum Completion;
    const auto hold = [](const CommandText& text) { return HoldOrRelease(text, true); };
    const auto release = [](const CommandText& text) { return HoldOrRelease(text, false); };
    ScriptCommands commands;
    for (ScriptCommand command : {
             ScriptCommand{"connect",
                           "[SECONDS]",
                           "Open the port and wait for the connection (30 s)",
                           Nothing,
                           ReadConnect},
             {"send",
              "NAME|SML",
              "Send the primary of a template, or SML up to its '.'",
              Templates,
              ReadSend},
             {"reply",
              "NAME|SML",
              "Answer the oldest primary that waits for this message",
              Templates,
              ReadReply},
             {"expect",
              "SxFy [SECONDS]",
              "Wait for a message that no expect took before (45 s)",
              Nothing,
              ReadExpect},
             {"hold",
              "[SxFy]",
              "Answer this primary, or all, by reply alone, not by itself",
              Nothing,
              hold},
             {"release", "[SxFy]", "Take a hold back", Nothing, release},
             {"wait", "SECONDS", "Let time pass", Nothing, ReadWait},
             {"list",
              "[PATTERN]",
              "List the templates whose name or description fits; '*', '?'",
              Templates,
              ReadList},
             {"show", "NAME", "Print the messages of a template", Templates, ReadShow},
             {"set",
              "[PROPERTY [VALUE]]",
              "Change a property of the control, or print its value, or all",
              Properties,
              ReadSet},
             {"disconnect", "", "Close the port", Nothing, ReadDisconnect},
             {"quit", "", "End the program", Nothing, ReadQuit},
             {"help", "[COMMAND]", "Print this list", Commands, ReadHelp},
         })
        commands.Add(std::move(command));
    return commands;
}

}  // namespace hexmire::program
