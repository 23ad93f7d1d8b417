#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace hexmire {

/// A whole number from its bytes, most significant first (SEMI E5, item data).
template <std::size_t Width>
[[nodiscard]] constexpr std::uint64_t ReadBigEndian(const std::uint8_t* bytes) noexcept {
    // Written out, so that it becomes a single instruction.
    return [bytes]<std::size_t... Index>(std::index_sequence<Index...>) {
        return (... | (std::uint64_t{bytes[Index]} << (8 * (Width - 1 - Index))));
    }
    (std::make_index_sequence<Width>());
}

/// The low `Width` bytes of a whole number, most significant first.
template <std::size_t Width>
constexpr void WriteBigEndian(std::uint64_t value, std::uint8_t* bytes) noexcept {
    [ value, bytes ]<std::size_t... Index>(std::index_sequence<Index...>) {
        ((bytes[Index] = static_cast<std::uint8_t>(value >> (8 * (Width - 1 - Index)))), ...);
    }
    (std::make_index_sequence<Width>());
}

/// Copies `count` numbers of 1, 2, 4 or 8 bytes, turning most significant byte first into the
/// machine's order or back. The places must not overlap.
template <std::size_t Width>
void CopyBigEndian(const std::uint8_t* from, std::size_t count, std::uint8_t* to) noexcept;

}  // namespace hexmire
