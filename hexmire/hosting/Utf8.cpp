#include <hexmire/hosting/Utf8.h>

#include <cstddef>

namespace hexmire {

namespace {

/// Number of bytes that a character with this first byte has; 1 for a byte that begins none.
std::size_t ExpectedLength(unsigned char lead) {
    if (lead >= 0xC2 && lead <= 0xDF) return 2;
    if (lead >= 0xE0 && lead <= 0xEF) return 3;
    if (lead >= 0xF0 && lead <= 0xF4) return 4;
    return 1;
}

std::size_t CharacterLength(std::string_view text) {
    const std::size_t expected = ExpectedLength(static_cast<unsigned char>(text.front()));
    if (expected > text.size()) return 1;
    for (std::size_t i = 1; i < expected; ++i) {
        if ((static_cast<unsigned char>(text[i]) & 0xC0U) != 0x80U) return 1;
    }
    return expected;
}

}  // namespace

std::string Utf8FromLatin1(std::string_view latin1) {
    std::string utf8;
    utf8.reserve(latin1.size());
    for (const char c : latin1) {
        const auto code = static_cast<unsigned char>(c);
        if (code < 0x80) {
            utf8.push_back(c);
        } else {
            utf8.push_back(static_cast<char>(0xC0U | (code >> 6U)));
            utf8.push_back(static_cast<char>(0x80U | (code & 0x3FU)));
        }
    }
    return utf8;
}

std::string Latin1FromUtf8(std::string_view utf8) {
    std::string latin1;
    latin1.reserve(utf8.size());
    while (!utf8.empty()) {
        const std::size_t length = CharacterLength(utf8);
        const auto lead = static_cast<unsigned char>(utf8.front());
        if (lead < 0x80) {
            latin1.push_back(utf8.front());
        } else if (length == 2 && lead <= 0xC3) {
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
