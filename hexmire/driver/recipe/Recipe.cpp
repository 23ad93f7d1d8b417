#include <hexmire/driver/recipe/Recipe.h>
#include <hexmire/support/ItemHeader.h>

#include <array>
#include <cstddef>

namespace hexmire::link {

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::uint8_t kStream = 7;
constexpr std::uint8_t kProcessProgramSend = 3;
constexpr std::uint8_t kProcessProgramData = 6;
constexpr std::uint8_t kList = 0;
constexpr std::uint8_t kBinary = 8;
constexpr std::uint8_t kAscii = 16;
// Binary, Boolean, ASCII, JIS-8, two-byte text, I8, I1, I2, I4, F8, F4, U8, U1, U2, U4.
constexpr std::array<std::uint8_t, 15> kValueFormats{
    8, 9, 16, 17, 18, 24, 25, 26, 28, 32, 36, 40, 41, 42, 44};

constexpr bool IsValueFormat(std::uint8_t code) noexcept {
    for (const std::uint8_t known : kValueFormats) {
        if (code == known) return true;
    }
    return false;
}

/// One item that is no list: its header and its value bytes. None when the bytes end before it.
struct ValueItem {
    ItemHeader Header;
    Bytes Value;
    std::size_t End = 0;
};
std::optional<ValueItem> ReadValueItem(Bytes bytes, std::size_t offset) noexcept {
    ValueItem item;
    const std::size_t start = ReadItemHeader(bytes, offset, item.Header);
    if (start == 0 || !IsValueFormat(item.Header.FormatCode)) return std::nullopt;
    if (item.Header.Length > bytes.size() - start) return std::nullopt;
    item.Value = bytes.subspan(start, item.Header.Length);
    item.End = start + item.Header.Length;
    return item;
}

/// Where the item at `offset` ends, its children included; 0 when the bytes end before. Each item
/// is one byte at least, so the walk is over after as many steps as there are bytes, however much a
/// list claims.
std::size_t EndOfItem(Bytes bytes, std::size_t offset) noexcept {
    std::uint64_t wanted = 1;
    while (wanted > 0) {
        ItemHeader header;
        const std::size_t start = ReadItemHeader(bytes, offset, header);
        if (start == 0) return 0;
        --wanted;
        if (header.FormatCode == kList) {
            wanted += header.Length;
            offset = start;
            continue;
        }
        const auto item = ReadValueItem(bytes, offset);
        if (!item) return 0;
        offset = item->End;
    }
    return offset;
}

}  // namespace

bool CarriesRecipe(std::uint8_t stream, std::uint8_t function, Bytes body) noexcept {
    if (stream != kStream) return false;
    if (function != kProcessProgramData) return function == kProcessProgramSend;
    ItemHeader top;
    const std::size_t start = ReadItemHeader(body, 0, top);
    const bool isEmptyList = start != 0 && top.FormatCode == kList && top.Length == 0;
    return !body.empty() && !isEmptyList;
}

std::optional<Recipe> FindRecipe(std::uint8_t stream, std::uint8_t function, Bytes body) noexcept {
    if (!CarriesRecipe(stream, function, body)) return std::nullopt;
    ItemHeader pair;
    const std::size_t first = ReadItemHeader(body, 0, pair);
    if (first == 0 || pair.FormatCode != kList || pair.Length != 2) return std::nullopt;
    const auto id = ReadValueItem(body, first);
    if (!id || (id->Header.FormatCode != kAscii && id->Header.FormatCode != kBinary)) {
        return std::nullopt;
    }
    const std::size_t end = EndOfItem(body, id->End);
    if (end == 0 || end != body.size()) return std::nullopt;
    const auto value = ReadValueItem(body, id->End);
    return Recipe{.Id = id->Value, .Body = value ? value->Value : body.subspan(id->End)};
}

}  // namespace hexmire::link
