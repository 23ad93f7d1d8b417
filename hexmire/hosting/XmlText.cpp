#include <hexmire/hosting/XmlText.h>

#include <cstddef>

namespace hexmire {

namespace {

bool IsContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

/// Length of the character that `text` begins with, 1 for a byte that begins none.
std::size_t CharacterLength(std::string_view text) {
    const auto lead = static_cast<unsigned char>(text.front());
    std::size_t expected = 1;
    if (lead >= 0xF0 && lead <= 0xF4) {
        expected = 4;
    } else if (lead >= 0xE0) {
        expected = 3;
    } else if (lead >= 0xC2) {
        expected = 2;
    }
    if (lead > 0xF4 || expected > text.size()) return 1;
    for (std::size_t i = 1; i < expected; ++i) {
        if (!IsContinuation(text[i])) return 1;
    }
    return expected;
}

}  // namespace

std::string Latin1FromUtf8(std::string_view utf8) {
    std::string latin1;
    latin1.reserve(utf8.size());
    while (!utf8.empty()) {
        const std::size_t length = CharacterLength(utf8);
        const auto lead = static_cast<unsigned char>(utf8.front());
        if (lead < 0x80) {
            latin1.push_back(utf8.front());
        } else if (length == 2 && lead <= 0xC3) {  // U+0080..U+00FF
            const auto low = static_cast<unsigned char>(utf8[1]) & 0x3FU;
            latin1.push_back(static_cast<char>(((lead & 0x03U) << 6U) | low));
        } else {
            latin1.push_back('?');
        }
        utf8.remove_prefix(length);
    }
    return latin1;
}

}  // namespace hexmire
