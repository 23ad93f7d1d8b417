#include "VisibleText.h"

#include "Utf8Character.h"
#include <unistd.h>

namespace hexmire::program {

namespace {

bool IsControl(std::uint32_t code) { return code < 0x20 || (code >= 0x7F && code < 0xA0); }

void AppendByte(std::string& text, std::uint32_t byte) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    text.append("\\x").append({kDigits[byte >> 4U & 0x0FU], kDigits[byte & 0x0FU]});
}

}  // namespace

Controls ControlsOfOutput() {
    return ::isatty(STDOUT_FILENO) == 1 ? Controls::Visible : Controls::AsTheyCame;
}

std::string VisibleText(std::string_view utf8, std::string_view kept) {
    const bool keepsLines = kept.find('\n') != std::string_view::npos;
    std::string text;
    text.reserve(utf8.size());
    while (!utf8.empty()) {
        const Utf8Character character = FirstCharacter(utf8);
        const bool isKept = kept.find(utf8.front()) != std::string_view::npos ||
                            (keepsLines && utf8.starts_with("\r\n"));
        if (character.Size == 0) {
            AppendByte(text, static_cast<unsigned char>(utf8.front()));
        } else if (isKept || !IsControl(character.Code)) {
            text.append(utf8.substr(0, character.Size));
        } else {
            AppendByte(text, character.Code);
        }
        utf8.remove_prefix(character.Size == 0 ? 1 : character.Size);
    }
    return text;
}

std::string OutputText(std::string_view utf8) {
    if (ControlsOfOutput() == Controls::AsTheyCame) return std::string(utf8);
    return VisibleText(utf8, "\n\t");
}

}  // namespace hexmire::program
