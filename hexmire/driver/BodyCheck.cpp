#include <hexmire/driver/BodyCheck.h>
#include <hexmire/support/ItemHeader.h>

#include <cstddef>

namespace hexmire::link {

namespace {

constexpr std::uint8_t kList = 0;

/// Bytes of one value of a numeric format code; 1 for bytes and texts, 0 for codes that are
/// unknown.
constexpr std::size_t WidthOf(std::uint8_t formatCode) noexcept {
    switch (formatCode) {
        case 8:   // Binary
        case 9:   // Boolean
        case 16:  // ASCII
        case 25:  // I1
        case 41:  // U1
        case 63:  // any format, read as text
            return 1;
        case 26:  // I2
        case 42:  // U2
            return 2;
        case 28:  // I4
        case 36:  // F4
        case 44:  // U4
            return 4;
        case 24:  // I8
        case 32:  // F8
        case 40:  // U8
            return 8;
        default:
            return 0;
    }
}

/// Value bytes that the decoder reads for an item: whole values only, their number rounded to the
/// nearest, halves to even; none for an unknown code.
constexpr std::size_t ValueBytes(const ItemHeader& item) noexcept {
    const std::size_t width = WidthOf(item.FormatCode);
    if (width <= 1) return width * item.Length;
    std::size_t count = item.Length / width;
    const std::size_t twiceRest = 2 * (item.Length % width);
    if (twiceRest > width || (twiceRest == width && count % 2 == 1)) ++count;
    return count * width;
}

}  // namespace

BodyCheck::Verdict BodyCheck::Check(std::span<const std::uint8_t> body, std::uint32_t maxDepth) {
    open_.clear();
    std::uint64_t claimed = 0;  // items that the open lists still want
    std::size_t offset = 0;
    do {
        ItemHeader item;
        offset = ReadItemHeader(body, offset, item);
        if (offset == 0) offset = body.size();  // the head itself is cut off: nothing can follow
        if (!open_.empty()) {
            --open_.back();
            --claimed;
        }
        if (item.FormatCode == kList) {
            if (open_.size() >= maxDepth) return Verdict::TooDeep;
            open_.push_back(item.Length);
            claimed += item.Length;
        } else {
            const std::size_t bytes = ValueBytes(item);
            offset = bytes > body.size() - offset ? body.size() : offset + bytes;
        }
        if (claimed > body.size() - offset + kExcessItems) return Verdict::TooManyClaimed;
        while (!open_.empty() && open_.back() == 0) {
            open_.pop_back();
        }
    } while (!open_.empty() && offset < body.size());
    return Verdict::Pass;
}

}  // namespace hexmire::link
