#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace hexmire {

/// A whole number from its bytes, most significant first (SEMI E5, item data).
template <std::size_t Width>
[[nodiscard]] constexpr std::uint64_t ReadBigEndian(const std::uint8_t* bytes) noexcept {
    std::uint64_t value = 0;
    for (std::size_t index = 0; index < Width; ++index)
        value = value << 8U | bytes[index];
    return value;
}

/// The low `Width` bytes of a whole number, most significant first.
template <std::size_t Width>
constexpr void WriteBigEndian(std::uint64_t value, std::uint8_t* bytes) noexcept {
    for (std::size_t index = 0; index < Width; ++index)
        bytes[Width - 1 - index] = static_cast<std::uint8_t>(value >> (index * 8) & 0xFFU);
}

/// Copies `count` numbers of 1, 2, 4 or 8 bytes, turning most significant byte first into the
/// machine's order or back. The places must not overlap.
template <std::size_t Width>
void CopyBigEndian(const std::uint8_t* from, std::size_t count, std::uint8_t* to) noexcept;

}  // namespace hexmire
