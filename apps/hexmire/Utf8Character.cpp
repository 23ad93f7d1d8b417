#include "Utf8Character.h"

namespace hexmire::program {

Utf8Character FirstCharacter(std::string_view text) {
    const auto lead = static_cast<unsigned char>(text.front());
    if (lead < 0x80) return {1, lead};
    const std::size_t size = lead >= 0xF0 ? 4U : lead >= 0xE0 ? 3U : 2U;
    if (lead < 0xC2 || lead > 0xF4 || size > text.size()) return {};
    std::uint32_t code = lead & (0x7FU >> size);
    for (std::size_t i = 1; i < size; ++i) {
        const auto next = static_cast<unsigned char>(text[i]);
        if ((next & 0xC0U) != 0x80U) return {};
        code = code << 6U | (next & 0x3FU);
    }
    constexpr std::uint32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    return code < kLeast[size] ? Utf8Character{} : Utf8Character{size, code};
}

}  // namespace hexmire::program
