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

bool IsControl(char letter) {
    const auto code = static_cast<unsigned char>(letter);
    return (code < 0x20 && letter != '\n' && letter != '\t') || (code >= 0x7F && code < 0xA0);
}

}  // namespace

SmlPrinter::SmlPrinter(std::ostream& out, std::string label, Detail detail, Controls controls)
    : out_(out), label_(std::move(label)), detail_(detail), controls_(controls) {}

std::string SmlPrinter::Shown(std::string_view latin1) const {
    if (controls_ == Controls::AsTheyCame) return Utf8FromLatin1(latin1);
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string text;
    text.reserve(latin1.size());
    for (std::size_t i = 0; i < latin1.size(); ++i) {
        const bool endsLine = latin1.substr(i).starts_with("\r\n");
        if (endsLine || !IsControl(latin1[i])) {
            text.push_back(latin1[i]);
        } else {
            const auto code = static_cast<unsigned char>(latin1[i]);
            text.append("\\x").append({kDigits[code >> 4U], kDigits[code & 0x0FU]});
        }
    }
    return Utf8FromLatin1(text);
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
