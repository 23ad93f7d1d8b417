#pragma once

#include <hexmire/driver/LinkAction.h>
#include <hexmire/driver/MessageId.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace hexmire::secs1 {

// The block of SECS-I (SEMI E4, block structure); see docs/wire/secs1.md.
//
//   +--------+-----------+---------------+----------------+--------------+---------+----------+
//   | length | R, device | W, stream     | E, block       | system bytes | data    | checksum |
//   |        | ID        | and function  | number         |              |         |          |
//   +--------+-----------+---------------+----------------+--------------+---------+----------+
//       1          2             2               2               4         0 to 244      2
//
// The length counts header and data; the checksum is their 16-bit sum. Numbers of several bytes are
// most significant byte first.

/// Line control characters (SEMI E4, block transfer protocol).
inline constexpr std::uint8_t kEot = 0x04;
inline constexpr std::uint8_t kEnq = 0x05;
inline constexpr std::uint8_t kAck = 0x06;
inline constexpr std::uint8_t kNak = 0x15;

inline constexpr std::size_t kHeaderBytes = 10;
inline constexpr std::size_t kMaxDataBytes = 244;  ///< of one block
inline constexpr std::size_t kMinLength = kHeaderBytes;
inline constexpr std::size_t kMaxLength = kHeaderBytes + kMaxDataBytes;
inline constexpr std::size_t kChecksumBytes = 2;
inline constexpr std::size_t kMaxBlocks = 32'767;  ///< block numbers have 15 bits
/// Longest body that block numbers can carry.
inline constexpr std::size_t kMaxBodyBytes = kMaxBlocks * kMaxDataBytes;

/// The ten header bytes, taken apart (SEMI E4, block header).
struct BlockHeader {
    bool ToHost = false;         ///< R-bit: the block goes from equipment to host
    std::uint16_t DeviceID = 0;  ///< [0..32767]
    bool WBit = false;
    std::uint8_t Stream = 0;  ///< [0..127]
    std::uint8_t Function = 0;
    bool IsLast = true;        ///< E-bit
    std::uint16_t Number = 1;  ///< [0..32767]; the first block is 1, some peers number it 0
    std::uint32_t SystemBytes = 0;

    /// What ties reply and primary together.
    [[nodiscard]] link::MessageId Id() const noexcept { return {Stream, Function, SystemBytes}; }
    [[nodiscard]] bool IsPrimary() const noexcept { return Id().IsPrimary(); }
    /// True when both are blocks of one message: all but block number and E-bit are the same.
    [[nodiscard]] bool IsOfSameMessage(const BlockHeader& other) const noexcept;

    bool operator==(const BlockHeader&) const = default;
};

[[nodiscard]] BlockHeader DecodeHeader(std::span<const std::uint8_t, kHeaderBytes> bytes) noexcept;
[[nodiscard]] link::HeaderBytes EncodeHeader(const BlockHeader& header) noexcept;

/// 16-bit sum of header and data.
[[nodiscard]] std::uint16_t Checksum(std::span<const std::uint8_t> bytes) noexcept;

/// A whole block as on the line. `data` has at most kMaxDataBytes bytes.
[[nodiscard]] std::vector<std::uint8_t> EncodeBlock(const BlockHeader& header,
                                                    std::span<const std::uint8_t> data);

/// Blocks that a body takes; a message without a body takes one.
[[nodiscard]] constexpr std::size_t BlockCount(std::size_t bodyBytes) noexcept {
    return bodyBytes == 0 ? 1 : (bodyBytes + kMaxDataBytes - 1) / kMaxDataBytes;
}

}  // namespace hexmire::secs1
