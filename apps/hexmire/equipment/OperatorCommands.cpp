#include "equipment/OperatorCommands.h"

#include <hexmire/hosting/Utf8.h>

#include "ScriptWords.h"
#include "SmlMessage.h"
#include "equipment/CheckedLatin1.h"

#include <memory>
#include <string>
#include <utility>

namespace hexmire::program {

namespace {

/// What stands behind the first word.
std::string_view BehindFirstWord(const CommandText& text) {
    const char* begin = text.Words[1].data();
    return {begin, text.Rest.data() + text.Rest.size()};
}

/// Outside of ISO 8859-1 nothing can be sent.
std::string Latin1Of(std::string_view utf8) {
    auto latin1 = CheckedLatin1(utf8);
    if (!latin1) throw BadCommand("expected characters of ISO 8859-1");
    return *std::move(latin1);
}

bool OnOrOff(std::string_view word, std::string_view on, std::string_view off) {
    if (word != on && word != off) throw UsageOfCommand();
    return word == on;
}

class OperatorCommands : public std::enable_shared_from_this<OperatorCommands> {
public:
    explicit OperatorCommands(EquipmentRole& role) : role_(role) {}

    void AddTo(ScriptCommands& commands) {
        const auto add = [&](const char* name, const char* arguments, const char* help, auto read) {
            commands.Add({.Name = name,
                          .Arguments = arguments,
                          .Help = help,
                          .Completes = Completion::Nothing,
                          .Read = [self = shared_from_this(), read](const CommandText& text) {
                              return (*self.*read)(text);
                          }});
        };
        using Self = OperatorCommands;
        add("event", "CEID", "Let an event happen: S6F11 if it is enabled", &Self::Event);
        add("alarm",
            "ALID set|clear",
            "Set or clear an alarm: S5F1 if it is enabled",
            &Self::Alarm);
        add("variable", "ID VALUE", "Give a variable or constant a value", &Self::Variable);
        add("terminal", "TEXT", "Send a text of the operator, S10F1", &Self::Terminal);
        add("online", "", "Go online", &Self::Online);
        add("offline", "", "Go offline; no host brings it back", &Self::Offline);
        add("busy", "on|off", "Refuse commands, new constants and recipes", &Self::Busy);
        add("misbehave",
            "SxFy KIND [TIMES|always]",
            "Answer a primary wrongly: silent, late SECONDS, truncated ...",
            &Self::Misbehave);
        add("behave", "", "Answer everything right again", &Self::Behave);
    }

private:
    /// The action, and what it made the equipment send.
    template <class F>
    Action Do(F action) {
        return [&role = role_, action = std::move(action)](const ScriptContext& context) {
            action(role.Simulated());
            if (!role.Flush())
                throw Failure("cannot send: " + Utf8FromLatin1(context.Side.LastError()));
        };
    }

    Action Event(const CommandText& text) {
        CheckWordCount(text, 1, 1);
        return Do([id = Latin1Of(text.Words[0])](Equipment& equipment) {
            if (equipment.FindEvent(id) == nullptr)
                throw Failure("no event has the id " + Utf8FromLatin1(id));
            equipment.Fire(id);
        });
    }

    Action Alarm(const CommandText& text) {
        CheckWordCount(text, 2, 2);
        const bool set = OnOrOff(text.Words[1], "set", "clear");
        return Do([id = Latin1Of(text.Words[0]), set](Equipment& equipment) {
            program::Alarm* alarm = equipment.FindAlarm(id);
            if (alarm == nullptr) throw Failure("no alarm has the id " + Utf8FromLatin1(id));
            equipment.SetAlarm(*alarm, set);
        });
    }

    Action Variable(const CommandText& text) {
        if (text.Words.size() < 2) throw UsageOfCommand();
        const std::string value(BehindFirstWord(text));
        return Do([id = Latin1Of(text.Words[0]), value](Equipment& equipment) {
            const std::string shown = Utf8FromLatin1(id);
            if (!equipment.HasVariable(id)) throw Failure("no variable has the id " + shown);
            try {
                const Datum datum = ValueFromText(equipment.ValueOf(id).Format, value);
                if (equipment.SetValue(id, datum)) return;
                if (equipment.FindConstant(id) == nullptr)
                    throw Failure("variable " + shown + " is made by the equipment");
                throw Failure('\'' + value + "' is no value of constant " + shown);
            } catch (const BadCommand& bad) {
                throw Failure(bad.what());
            }
        });
    }

    Action Terminal(const CommandText& text) {
        if (text.Words.empty()) throw UsageOfCommand();
        return Do([&role = role_, line = Latin1Of(text.Rest)](Equipment& equipment) {
            constexpr std::uint8_t kMainTerminal = 0;
            if (equipment.State() != ControlState::Online)
                throw Failure("cannot send: the equipment is offline");
            if (!role.HasHost()) throw Failure("cannot send: no connection");
            equipment.Send(10, 1, List({Binary(kMainTerminal), Ascii(line)}));
        });
    }

    Action Online(const CommandText& text) {
        CheckWordCount(text, 0, 0);
        return Do([](Equipment& equipment) { equipment.State(ControlState::Online); });
    }

    Action Offline(const CommandText& text) {
        CheckWordCount(text, 0, 0);
        return Do([](Equipment& equipment) { equipment.State(ControlState::EquipmentOffline); });
    }

    Action Busy(const CommandText& text) {
        CheckWordCount(text, 1, 1);
        const bool busy = OnOrOff(text.Words[0], "on", "off");
        return Do([busy](Equipment& equipment) { equipment.Busy = busy; });
    }

    Action Misbehave(const CommandText& text) {
        return [&role = role_, planned = ReadMisbehaviour(text.Words)](ScriptContext&) {
            role.Planned().Plan(planned);
        };
    }

    Action Behave(const CommandText& text) {
        CheckWordCount(text, 0, 0);
        return [&role = role_](ScriptContext&) { role.Planned().Clear(); };
    }

    EquipmentRole& role_;
};

}  // namespace

void AddOperatorCommands(ScriptCommands& commands, EquipmentRole& equipment) {
    const auto all = std::make_shared<OperatorCommands>(equipment);
    all->AddTo(commands);
}

Datum ValueFromText(std::int32_t format, std::string_view text) {
    const bool isSml = text.starts_with('<');
    const std::string latin1 = Latin1Of(text);
    if (!isSml && format == FormatAscii) return Ascii(latin1);
    const std::string item = isSml ? latin1 : "<" + NameOf(format) + ' ' + latin1 + ">";
    const ParsedSml parsed = ParseSml("S1F1 " + item + ".");
    if (!parsed.Error.empty())
        throw BadCommand("'" + std::string(text) + "' is no value of format " + NameOf(format));
    if (DepthOf(*parsed.Message) > DeepestValue())
        throw BadCommand("lists are nested more than " + std::to_string(DeepestValue()) +
                         " deep: no link takes them");
    const auto body = BodyOf(*parsed.Message);
    if (!body || (!isSml && body->Format != format))
        throw BadCommand("'" + std::string(text) + "' is no value of format " + NameOf(format));
    return *body;
}

}  // namespace hexmire::program
