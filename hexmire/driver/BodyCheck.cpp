#include <hexmire/driver/BodyCheck.h>
#include <hexmire/support/ItemHeader.h>

#include <array>
#include <cstddef>

namespace hexmire::link {

namespace {

constexpr std::uint8_t kList = 0;

/// Bytes of one value of each format code; 1 for bytes and texts, 0 for codes that are unknown.
constexpr auto kWidths = [] {
    std::array<std::uint8_t, 64> widths{};
    // Binary, Boolean, ASCII, I1, U1, and any format, which is read as text.
    for (const std::size_t code : {8U, 9U, 16U, 25U, 41U, 63U})
        widths[code] = 1;
    for (const std::size_t code : {26U, 42U})  // I2, U2
        widths[code] = 2;
    for (const std::size_t code : {28U, 36U, 44U})  // I4, F4, U4
        widths[code] = 4;
    for (const std::size_t code : {24U, 32U, 40U})  // I8, F8, U8
        widths[code] = 8;
    return widths;
}();

/// Value bytes that the decoder reads for an item: whole values only, their number rounded to the
/// nearest, halves to even; none for an unknown code.
constexpr std::size_t ValueBytes(const ItemHeader& item) noexcept {
    const std::size_t width = kWidths[item.FormatCode];
    if (width == 0) return 0;
    const std::size_t rest = item.Length & (width - 1);  // a width is a power of two
    const std::size_t whole = item.Length - rest;
    if (rest == 0) return whole;
    const bool isOdd = (whole & width) != 0;
    return 2 * rest > width || (2 * rest == width && isOdd) ? whole + width : whole;
}

}  // namespace

BodyCheck::Verdict BodyCheck::Check(std::span<const std::uint8_t> body, std::uint32_t maxDepth) {
    open_.clear();
    std::size_t depth = 0;
    std::uint32_t left = 0;     // items that the innermost open list still wants
    std::uint64_t claimed = 0;  // the same of all open lists
    std::size_t offset = 0;
    do {
        ItemHeader item;
        offset = ReadItemHeader(body, offset, item);
        if (offset == 0) offset = body.size();  // the head itself is cut off: nothing can follow
        if (depth > 0) {
            --left;
            --claimed;
        }
        if (item.FormatCode == kList) {
            if (depth >= maxDepth) return Verdict::TooDeep;
            if (depth > 0) open_.push_back(left);
            ++depth;
            left = item.Length;
            claimed += left;
        } else {
            const std::size_t bytes = ValueBytes(item);
            offset = bytes > body.size() - offset ? body.size() : offset + bytes;
        }
        if (claimed > body.size() - offset + kExcessItems) return Verdict::TooManyClaimed;
        while (depth > 0 && left == 0) {
            --depth;
            if (depth == 0) break;
            left = open_.back();
            open_.pop_back();
        }
    } while (depth > 0 && offset < body.size());
    return Verdict::Pass;
}

}  // namespace hexmire::link
