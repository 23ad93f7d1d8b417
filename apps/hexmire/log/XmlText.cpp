#include "log/XmlText.h"

#include <algorithm>

namespace hexmire::program {

namespace {

/// The size of the character of UTF-8 that a text begins with; 0 when it begins with none that may
/// stand in XML.
std::size_t CharacterSize(std::string_view text) {
    const auto first = static_cast<unsigned char>(text.front());
    if (first < 0x80) return first >= 0x20 || first == '\t' ? 1 : 0;
    std::size_t size = 0;
    unsigned code = 0;
    if (first >= 0xC2 && first < 0xE0) {
        size = 2;
        code = first & 0x1F;
    } else if (first >= 0xE0 && first < 0xF0) {
        size = 3;
        code = first & 0x0F;
    } else if (first >= 0xF0 && first < 0xF5) {
        size = 4;
        code = first & 0x07;
    }
    if (size == 0 || text.size() < size) return 0;
    for (std::size_t i = 1; i < size; ++i) {
        const auto next = static_cast<unsigned char>(text[i]);
        if ((next & 0xC0) != 0x80) return 0;
        code = code << 6 | (next & 0x3F);
    }
    const bool tooLong = (size == 3 && code < 0x800) || (size == 4 && code < 0x10000);
    const bool noCharacter =
        (code >= 0xD800 && code < 0xE000) || code == 0xFFFE || code == 0xFFFF || code > 0x10FFFF;
    return tooLong || noCharacter || (code >= 0x80 && code < 0xA0) ? 0 : size;
}

}  // namespace

std::string XmlText(std::string_view utf8) {
    std::string text;
    while (!utf8.empty()) {
        const std::size_t size = CharacterSize(utf8);
        if (size == 0) {
            text += '?';
        } else if (utf8.front() == '&') {
            text += "&amp;";
        } else if (utf8.front() == '<') {
            text += "&lt;";
        } else if (utf8.front() == '>') {
            text += "&gt;";
        } else if (utf8.front() == '"') {
            text += "&quot;";
        } else {
            text += utf8.substr(0, size);
        }
        utf8.remove_prefix(std::max<std::size_t>(size, 1));
    }
    return text;
}

}  // namespace hexmire::program
