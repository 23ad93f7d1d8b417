#include <hexmire/support/HexBytes.h>
#include <hexmire/support/detail/HexBlocks.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace hexmire {

namespace {

constexpr std::size_t kPlaces = 3;  // two digits and what stands behind them

/// A field and one byte more: a copy of four bytes is one instruction.
using Field = std::array<char, 4>;

constexpr std::array<Field, 256> MakeFields() {
    std::array<Field, 256> table{};
    for (unsigned value = 0; value < 256; ++value) {
        table[value] = {HexDigit(value >> 4U), HexDigit(value), ' ', ' '};
    }
    return table;
}

/// What a character is worth as a digit; below 0 what is none.
constexpr std::array<std::int16_t, 256> MakeDigitValues(int factor) {
    std::array<std::int16_t, 256> table{};
    for (unsigned code = 0; code < 256; ++code) {
        table[code] = static_cast<std::int16_t>(HexDigitValue(static_cast<char>(code)) * factor);
    }
    return table;
}

constexpr auto kFields = MakeFields();
constexpr auto kHighValues = MakeDigitValues(16);
constexpr auto kLowValues = MakeDigitValues(1);

/// Writes the fields of some bytes; `to` has one place more.
void WriteFields(std::span<const std::uint8_t> bytes, char* to) noexcept {
    const std::size_t done = detail::WriteHexBlocks(bytes, to);
    to += done * kPlaces;
    for (const std::uint8_t byte : bytes.subspan(done)) {
        std::memcpy(to, kFields[byte].data(), sizeof(Field));
        to += kPlaces;
    }
}

}  // namespace

void AppendHexText(std::string& text, std::span<const std::uint8_t> bytes) {
    // Piece by piece through a place that stays in the cache: a text that is made longer first is
    // written twice.
    constexpr std::size_t kPiece = 512;
    std::array<char, (kPiece + 1) * kPlaces> fields;  // NOLINT(*-member-init): written before read
    if (bytes.size() > kPiece) text.reserve(text.size() + bytes.size() * kPlaces);
    while (!bytes.empty()) {
        const std::size_t count = std::min(bytes.size(), kPiece);
        WriteFields(bytes.first(count), fields.data());
        text.append(fields.data(), count * kPlaces);
        bytes = bytes.subspan(count);
    }
}

std::string HexText(std::span<const std::uint8_t> bytes) {
    std::string text;
    AppendHexText(text, bytes);
    return text;
}

bool ReadHexText(std::string_view text, std::size_t count, std::uint8_t* out) noexcept {
    if (count == 0) return true;
    if (text.size() / kPlaces < count && text.size() != count * kPlaces - 1) return false;
    // The last byte may have nothing behind it.
    std::size_t done = detail::ReadHexBlocks(text.data(), count - 1, out);
    const char* in = text.data() + done * kPlaces;
    for (; done < count; ++done, in += kPlaces) {
        const int value = kHighValues[static_cast<std::uint8_t>(in[0])] |
                          kLowValues[static_cast<std::uint8_t>(in[1])];
        if (value < 0) return false;
        out[done] = static_cast<std::uint8_t>(value);
    }
    return true;
}

}  // namespace hexmire
