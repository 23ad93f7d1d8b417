#include "log/JsonLog.h"

#include <hexmire/hosting/Utf8.h>

#include <nlohmann/json.hpp>

#include <utility>

namespace hexmire::program {

namespace {

using Json = nlohmann::ordered_json;

const char* EventName(const LineFacts& facts) {
    if (facts.Direction != Way::Received) return "sent";
    return facts.Name.Function % 2 == 0 ? "received-secondary" : "received-primary";
}

const char* StepName(TimerStep step) {
    switch (step) {
        case TimerStep::Searching:
            return "searching";
        case TimerStep::Waiting:
            return "waiting";
        default:
            return "timer";
    }
}

void AddMessage(Json& json, const LogMessage& message) {
    const LineFacts& facts = message.Head.Facts;
    json["event"] = EventName(facts);
    json["time"] = IsoTimeText(message.Head.Time);
    json["stream"] = facts.Name.Stream;
    json["function"] = facts.Name.Function;
    if (facts.DeviceID >= 0) json["device_id"] = facts.DeviceID;
    if (facts.SystemBytes) json["system_bytes"] = ShownSystemBytes(*facts.SystemBytes);
    json["reply_expected"] = facts.ReplyExpected;
    if (message.Length >= 0) json["length"] = message.Length;
    if (message.Whole) json["sml"] = Utf8FromLatin1(message.Sml);
    json["body_hex"] = Utf8FromLatin1(message.BodyHex);
    if (message.Shortened) json["shortened"] = true;
    if (!message.Whole) json["incomplete"] = true;
    if (message.Head.Unexpected) json["unexpected"] = true;
    if (message.Head.Error) json["error"] = true;
}

void AddTimer(Json& json, const LogEntry& entry) {
    const LineFacts& facts = entry.Facts;
    json["event"] = "timer";
    json["time"] = IsoTimeText(entry.Time);
    json["action"] = facts.Start ? "start" : "cancel";
    json["step"] = StepName(facts.Step);
    if (facts.Step == TimerStep::Waiting) json["position"] = facts.Position;
    json["stream"] = facts.Name.Stream;
    json["function"] = facts.Name.Function;
    json["system_bytes"] = ShownSystemBytes(facts.SystemBytes.value_or(0));
}

}  // namespace

JsonLog::JsonLog(std::ostream& out, LogFilter filter) : out_(out), filter_(std::move(filter)) {}

void JsonLog::OnMessage(const LogMessage& message) {
    if (!filter_.PassesMessage(message.Head)) return;
    Json json;
    AddMessage(json, message);
    out_ << json.dump() << '\n';
}

void JsonLog::OnLine(const LogEntry& entry, std::string_view text) {
    if (!filter_.Passes(entry)) return;
    Json json;
    if (entry.Facts.Kind == LineKind::Timer) {
        AddTimer(json, entry);
    } else {
        const bool broken =
            entry.Facts.Kind == LineKind::Broken || entry.Facts.Kind == LineKind::Damaged;
        json["event"] = broken ? "broken" : "other";
        if (entry.Facts.Kind != LineKind::Broken) json["time"] = IsoTimeText(entry.Time);
        json["line"] = entry.Line;
        json["text"] = Utf8FromLatin1(std::string(text));
    }
    out_ << json.dump() << '\n';
}

std::int32_t ShownSystemBytes(std::uint32_t systemBytes) {
    return static_cast<std::int32_t>(systemBytes);
}

}  // namespace hexmire::program
