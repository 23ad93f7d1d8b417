#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace hexmire::program {

/// How whole messages lie in a stretch of bytes.
enum class Framing : std::uint8_t {
    Find,     ///< as SECS-I blocks or behind lengths if the bytes look like it, else as a message
    Message,  ///< one message: header and body
    Hsms,     ///< four length bytes in front of each (SEMI E37)
    SecsI,    ///< blocks: length byte, header, data, checksum (SEMI E4)
};

/// The ten bytes in front of a body (SEMI E4, E37).
struct WireHeader {
    static constexpr std::size_t kSize = 10;

    std::uint16_t DeviceID = 0;  ///< 15 bits
    bool IsReversed = false;     ///< the R-bit: from the equipment to the host, on SECS-I links
    bool ReplyExpected = false;
    std::uint8_t Stream = 0;
    std::uint8_t Function = 0;
    std::uint8_t PType = 0;  ///< HSMS; upper byte of the block number in SECS-I
    std::uint8_t SType = 0;
    std::uint32_t SystemBytes = 0;

    [[nodiscard]] static WireHeader From(std::span<const std::uint8_t> bytes);
    [[nodiscard]] std::vector<std::uint8_t> Bytes() const;
};

struct Frame {
    std::size_t Offset = 0;  ///< of its header among all the bytes
    WireHeader Header;
    std::vector<std::uint8_t> Body;
    std::string Control{};  ///< "Select.req" and the like; empty for a data message
};

/// Takes the bytes apart. Throws UsageError, `name` in front, for a message that is cut short and
/// for blocks that do not belong together.
[[nodiscard]] std::vector<Frame> SplitMessages(std::span<const std::uint8_t> bytes,
                                               Framing framing,
                                               const std::string& name);

}  // namespace hexmire::program
