#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace hexmire::detail {

// Hex texts many bytes at a time, where the machine can: a table gives one byte a step, several
// times slower than memory. Each function says how many bytes it has done, from the first one on;
// the rest is the caller's. On other machines that is all of them.

/// Writes two digits and a blank for each byte.
[[nodiscard]] std::size_t WriteHexBlocks(std::span<const std::uint8_t> bytes, char* to) noexcept;

/// Reads bytes of two digits and any character; stops in front of a block that holds anything but
/// digits. `from` has three characters for each of the bytes.
[[nodiscard]] std::size_t ReadHexBlocks(const char* from,
                                        std::size_t count,
                                        std::uint8_t* to) noexcept;

}  // namespace hexmire::detail
