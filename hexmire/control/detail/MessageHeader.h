#pragma once

#include <hexmire/control/detail/Control.h>

#include <array>
#include <cstdint>
#include <string>

namespace hexmire::detail {

/// The ten header bytes of a message as the control reads them (SEMI E4 and E37, message header).
struct Control::MessageHeader {
    std::array<std::uint8_t, 10> Bytes{};
    std::int32_t DeviceID = 0;
    bool ReplyExpected = false;
    std::int32_t Stream = 0;
    std::int32_t Function = 0;
    std::int32_t SystemBytes = 0;  ///< filled by ReadSystemBytes

    /// From the first ten byte pairs of a hex text; fault 13 when they are not all there.
    explicit MessageHeader(const std::string& hex);
    /// Bytes 6 to 9, most significant first. The arithmetic is that of signed 32-bit numbers: with
    /// the top bit set it overflows, the fault is reported and the last byte alone is left.
    void ReadSystemBytes();
    /// "S1F2"
    [[nodiscard]] std::string Name() const;
};

}  // namespace hexmire::detail
