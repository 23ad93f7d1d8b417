#pragma once

#include <hexmire/driver/hsms/Frame.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace hexmire::hsms {

/// Takes a byte stream apart into frames, whatever pieces it comes in. Memory grows with the bytes
/// that have arrived, never with what a length field claims.
class FrameParser {
public:
    enum class Step : std::uint8_t {
        NeedMore,  ///< all input is used up, a frame may be in progress
        Frame,     ///< a frame is complete: Header() and TakeBody()
        TooShort,  ///< the length field is below 10; framing is lost
        TooLong,   ///< the length field is above the limit; framing is lost
    };

    /// Uses bytes from the front of `input`, which shrinks, until there is something to tell. Both
    /// length faults are told on the four length bytes alone.
    [[nodiscard]] Step Next(std::span<const std::uint8_t>& input, std::uint32_t maxBodyBytes);

    /// True when a frame has begun and is not complete.
    [[nodiscard]] bool InProgress() const noexcept { return headCount_ != 0; }
    /// Length field of the frame last told, or of the one in progress.
    [[nodiscard]] std::uint32_t Length() const noexcept { return GetU32(head_.data()); }
    /// Header bytes of the frame last told.
    [[nodiscard]] std::span<const std::uint8_t, kHeaderBytes> Header() const noexcept {
        return std::span<const std::uint8_t, kHeaderBytes>(head_.data() + kLengthBytes,
                                                           kHeaderBytes);
    }
    /// Body of the frame last told, as long as Next has not been called again.
    [[nodiscard]] std::span<const std::uint8_t> Body() const noexcept { return body_; }
    /// The same, given away.
    [[nodiscard]] std::vector<std::uint8_t> TakeBody() noexcept { return std::move(body_); }

    /// Forgets a frame in progress.
    void Reset() noexcept;

private:
    bool FillHead(std::span<const std::uint8_t>& input, std::size_t upTo) noexcept;

    std::array<std::uint8_t, kLengthBytes + kHeaderBytes> head_{};
    std::size_t headCount_ = 0;
    std::vector<std::uint8_t> body_;
};

}  // namespace hexmire::hsms
