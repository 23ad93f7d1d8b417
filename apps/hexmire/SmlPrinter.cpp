#include "SmlPrinter.h"

#include <hexmire/hosting/Utf8.h>

#include <string_view>
#include <utility>

namespace hexmire::program {

namespace {

/// The SML's lines, each one indented.
std::string Indented(std::string_view sml) {
    std::string text;
    while (!sml.empty()) {
        const std::size_t end = sml.find("\r\n");
        text.append("    ").append(sml.substr(0, end)).push_back('\n');
        sml.remove_prefix(end == std::string_view::npos ? sml.size() : end + 2);
    }
    return text;
}

}  // namespace

SmlPrinter::SmlPrinter(std::ostream& out, std::string label, Detail detail, Controls controls)
    : out_(out), label_(std::move(label)), detail_(detail), controls_(controls) {}

std::string SmlPrinter::Shown(std::string_view latin1) const {
    if (controls_ == Controls::AsTheyCame) return Utf8FromLatin1(latin1);
    return VisibleText(Utf8FromLatin1(latin1), "\n\t");
}

void SmlPrinter::Connect() { out_ << label_ << " connected" << std::endl; }

void SmlPrinter::Disconnect(std::int32_t code, const std::string& text) {
    out_ << label_ << " disconnected";
    if (code != 0) out_ << ", " << code << ' ' << Shown(text);
    out_ << std::endl;
}

void SmlPrinter::Error(std::int32_t code, const std::string& text, std::int32_t line) {
    out_ << label_ << " error " << code << ' ' << Shown(text);
    if (line != 0) out_ << " (line " << line << ')';
    out_ << std::endl;
}

void SmlPrinter::Message(const MessageRecord& message) {
    const bool sent = message.Kind == MessageKind::Sent;
    out_ << label_ << (sent ? " sent " : " received ")
         << StreamFunction(message.Stream, message.Function) << (message.ReplyExpected ? " W" : "")
         << ", device ID " << message.DeviceID << ", system bytes " << message.SystemBytes << '\n';
    if (!sent || detail_ == Detail::Everything) out_ << Shown(Indented(message.Sml));
    out_ << std::flush;
}

}  // namespace hexmire::program
