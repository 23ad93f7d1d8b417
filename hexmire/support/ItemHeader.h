#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace hexmire {

/// The head of one encoded item (SEMI E5, item header): a format byte (format code x 4 + number of
/// length bytes) and 0 to 3 length bytes, most significant first.
struct ItemHeader {
    std::uint8_t FormatCode = 0;   ///< six bits
    std::uint8_t LengthBytes = 0;  ///< 0..3
    std::uint32_t Length = 0;      ///< children of a list, value bytes of anything else
};

/// Reads the item head at `offset`. Returns the offset behind it, or 0 when the bytes end before
/// the head is complete.
[[nodiscard]] constexpr std::size_t ReadItemHeader(std::span<const std::uint8_t> bytes,
                                                   std::size_t offset,
                                                   ItemHeader& header) noexcept {
    if (offset >= bytes.size()) return 0;
    const std::uint8_t format = bytes[offset++];
    header.FormatCode = static_cast<std::uint8_t>(format >> 2U);
    header.LengthBytes = static_cast<std::uint8_t>(format & 3U);
    header.Length = 0;
    if (bytes.size() - offset < header.LengthBytes) return 0;
    for (unsigned index = 0; index < header.LengthBytes; ++index) {
        header.Length = header.Length << 8U | bytes[offset++];
    }
    return offset;
}

}  // namespace hexmire
