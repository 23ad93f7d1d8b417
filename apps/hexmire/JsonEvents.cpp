#include "JsonEvents.h"

#include <hexmire/hosting/Utf8.h>

#include <nlohmann/json.hpp>

namespace hexmire::program {

namespace {

using Json = nlohmann::ordered_json;

const char* EventName(MessageKind kind) {
    switch (kind) {
        case MessageKind::ReceivedPrimary:
            return "received-primary";
        case MessageKind::ReceivedSecondary:
            return "received-secondary";
        default:
            return "sent";
    }
}

void Write(std::ostream& out, const Json& event) { out << event.dump() << std::endl; }

}  // namespace

void JsonEvents::Connect() { Write(out_, {{"event", "connect"}}); }

void JsonEvents::Disconnect(std::int32_t code, const std::string& text) {
    Write(out_, {{"event", "disconnect"}, {"code", code}, {"text", Utf8FromLatin1(text)}});
}

void JsonEvents::Error(std::int32_t code, const std::string& text, std::int32_t line) {
    Write(out_,
          {{"event", "error"}, {"code", code}, {"text", Utf8FromLatin1(text)}, {"line", line}});
}

void JsonEvents::Message(const MessageRecord& message) {
    Write(out_,
          {{"event", EventName(message.Kind)},
           {"stream", message.Stream},
           {"function", message.Function},
           {"device_id", message.DeviceID},
           {"system_bytes", message.SystemBytes},
           {"reply_expected", message.ReplyExpected},
           {"name", Utf8FromLatin1(message.Name)},
           {"sml", Utf8FromLatin1(message.Sml)},
           {"body_hex", message.BodyHex}});
}

}  // namespace hexmire::program
