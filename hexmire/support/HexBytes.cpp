#include <hexmire/support/HexBytes.h>

#include <array>

namespace hexmire {

namespace {

using Triplet = std::array<char, 3>;

constexpr std::array<Triplet, 256> MakeTriplets() {
    std::array<Triplet, 256> table{};
    for (unsigned value = 0; value < 256; ++value) {
        table[value] = {HexDigit(value >> 4U), HexDigit(value), ' '};
    }
    return table;
}

constexpr std::array<std::int16_t, 256> MakeDigitValues() {
    std::array<std::int16_t, 256> table{};
    for (unsigned code = 0; code < 256; ++code) {
        table[code] = static_cast<std::int16_t>(HexDigitValue(static_cast<char>(code)));
    }
    return table;
}

constexpr auto kTriplets = MakeTriplets();
constexpr auto kDigitValues = MakeDigitValues();

}  // namespace

void AppendHexText(std::string& text, std::span<const std::uint8_t> bytes) {
    const std::size_t start = text.size();
    text.resize(start + bytes.size() * 3);
    char* out = text.data() + start;
    for (const std::uint8_t byte : bytes) {
        const Triplet& field = kTriplets[byte];
        out[0] = field[0];
        out[1] = field[1];
        out[2] = field[2];
        out += 3;
    }
}

std::string HexText(std::span<const std::uint8_t> bytes) {
    std::string text;
    AppendHexText(text, bytes);
    return text;
}

bool ReadHexText(std::string_view text, std::size_t count, std::uint8_t* out) noexcept {
    if (count == 0) return true;
    if (text.size() / 3 < count && text.size() != count * 3 - 1) return false;
    const char* in = text.data();
    for (std::size_t index = 0; index < count; ++index, in += 3) {
        const int high = kDigitValues[static_cast<std::uint8_t>(in[0])];
        const int low = kDigitValues[static_cast<std::uint8_t>(in[1])];
        if ((high | low) < 0) return false;
        out[index] = static_cast<std::uint8_t>(high * 16 + low);
    }
    return true;
}

}  // namespace hexmire
