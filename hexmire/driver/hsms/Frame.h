#pragma once

#include <hexmire/driver/LinkAction.h>
#include <hexmire/driver/MessageId.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace hexmire::hsms {

// The frame of HSMS (SEMI E37, message format); see docs/wire/hsms.md.
//
//   +--------+------------+----+----+-------+-------+--------------+------- - -
//   | length | session ID | b2 | b3 | PType | SType | system bytes | body
//   +--------+------------+----+----+-------+-------+--------------+------- - -
//       4          2         1    1     1       1          4          length - 10
//
// All numbers are most significant byte first. The length does not count itself.

inline constexpr std::size_t kLengthBytes = 4;
inline constexpr std::size_t kHeaderBytes = 10;
/// Session ID of control frames in the single-session mode (SEMI E37.1).
inline constexpr std::uint16_t kNoSession = 0xFFFF;
/// PType of SECS-II messages, the only one that there is.
inline constexpr std::uint8_t kPTypeSecs2 = 0;

/// Session types. 8 and 10 to 255 are not assigned, or local to others.
enum class SType : std::uint8_t {
    Data = 0,
    SelectReq = 1,
    SelectRsp = 2,
    DeselectReq = 3,
    DeselectRsp = 4,
    LinktestReq = 5,
    LinktestRsp = 6,
    RejectReq = 7,
    SeparateReq = 9,
};
[[nodiscard]] bool IsKnownSType(std::uint8_t value) noexcept;

/// Status in byte 3 of a Select.rsp.
enum class SelectStatus : std::uint8_t { Established = 0, AlreadyActive = 1, NoSuchEntity = 4 };
/// Status in byte 3 of a Deselect.rsp.
enum class DeselectStatus : std::uint8_t { Ended = 0, NotEstablished = 1 };
/// Reason in byte 3 of a Reject.req.
enum class RejectReason : std::uint8_t {
    STypeUnknown = 1,
    PTypeUnknown = 2,
    NotOpen = 3,
    NotSelected = 4,
};

/// The ten header bytes, taken apart.
struct FrameHeader {
    std::uint16_t SessionID = 0;
    std::uint8_t Byte2 = 0;  ///< data: W-bit and stream
    std::uint8_t Byte3 = 0;  ///< data: function; responses: status; Reject.req: reason
    std::uint8_t PType = kPTypeSecs2;
    std::uint8_t SessionType = 0;  ///< an SType, or what the peer made of it
    std::uint32_t SystemBytes = 0;

    [[nodiscard]] bool IsData() const noexcept { return SessionType == 0; }
    [[nodiscard]] bool WBit() const noexcept { return (Byte2 & 0x80U) != 0; }
    [[nodiscard]] std::uint8_t Stream() const noexcept {
        return static_cast<std::uint8_t>(Byte2 & 0x7FU);
    }
    [[nodiscard]] std::uint8_t Function() const noexcept { return Byte3; }
    /// Data: an odd function opens a transaction, an even one (0 included) answers one.
    [[nodiscard]] bool IsPrimary() const noexcept { return (Byte3 & 1U) != 0; }

    /// Data: what ties reply and primary together.
    [[nodiscard]] link::MessageId Id() const noexcept {
        return {Stream(), Function(), SystemBytes};
    }

    bool operator==(const FrameHeader&) const = default;
};

[[nodiscard]] FrameHeader DecodeHeader(std::span<const std::uint8_t, kHeaderBytes> bytes) noexcept;
[[nodiscard]] link::HeaderBytes EncodeHeader(const FrameHeader& header) noexcept;

/// A whole frame without a body: length 10 and the header.
[[nodiscard]] std::array<std::uint8_t, kLengthBytes + kHeaderBytes> EncodeControlFrame(
    const FrameHeader& header) noexcept;
/// Header of a control frame.
[[nodiscard]] FrameHeader ControlHeader(SType type,
                                        std::uint16_t sessionId,
                                        std::uint32_t systemBytes,
                                        std::uint8_t byte3 = 0) noexcept;
/// Header of the Reject.req for a frame: it names the frame's SType, or its PType when that is
/// wrong.
[[nodiscard]] FrameHeader RejectHeader(const FrameHeader& rejected, RejectReason reason) noexcept;

/// Writes a number most significant byte first.
inline void PutU32(std::uint8_t* out, std::uint32_t value) noexcept {
    out[0] = static_cast<std::uint8_t>(value >> 24U);
    out[1] = static_cast<std::uint8_t>(value >> 16U);
    out[2] = static_cast<std::uint8_t>(value >> 8U);
    out[3] = static_cast<std::uint8_t>(value);
}
[[nodiscard]] inline std::uint32_t GetU32(const std::uint8_t* in) noexcept {
    return static_cast<std::uint32_t>(in[0]) << 24U | static_cast<std::uint32_t>(in[1]) << 16U |
           static_cast<std::uint32_t>(in[2]) << 8U | in[3];
}

}  // namespace hexmire::hsms
