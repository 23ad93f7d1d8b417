#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace hexmire::program {

constexpr std::size_t kHeaderSize = 10;
using HeaderBytes = std::array<std::uint8_t, kHeaderSize>;

/// What a header is made of (SEMI E5, MHEAD and SHEAD).
struct HeaderFacts {
    std::int32_t DeviceID = 0;
    std::int32_t Stream = 0;
    std::int32_t Function = 0;
    bool ReplyExpected = false;
    std::int32_t SystemBytes = 0;
    /// On a SECS-I link: bytes of the body, which give the number of the last block (SEMI E4).
    /// None on HSMS links, where these two header bytes are 0.
    std::optional<std::size_t> BodyBytes{};
    bool FromEquipment = false;  ///< R-bit, on a SECS-I link
};

/// The header as it stood on the link; on a SECS-I link that of the last block.
[[nodiscard]] HeaderBytes HeaderOf(const HeaderFacts& facts);

/// A message of stream 9: its function and the header that it reports.
struct ErrorMessage {
    std::int32_t Function = 0;
    HeaderBytes Header{};
    bool operator==(const ErrorMessage&) const = default;
};

/// What an equipment tells its host about an error of its control (SEMI E5, stream 9): S9F1 for a
/// foreign device ID, S9F7 for a body that was refused, S9F9 for a primary of its own whose reply
/// has not come in time, S9F11 for a SECS-I message that is too long (a frame of HSMS that is too
/// long ends the link). None for any other error, for one
/// that does not tell which message it is about, and for messages of stream 9. `own` holds what all
/// primaries of the equipment have in common.
[[nodiscard]] std::optional<ErrorMessage> ErrorMessageFor(std::int32_t code,
                                                          std::string_view text,
                                                          const HeaderFacts& own);

}  // namespace hexmire::program
