#pragma once

#include <hexmire/driver/hsms/Frame.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <vector>

namespace hexmire::hsms {

/// A frame on its way out.
struct OutFrame {
    enum class Kind : std::uint8_t {
        Control,  ///< control frame: nothing is told of it
        Data,     ///< data message that SecsMsgSend has still to tell of
        Settled,  ///< data message that has been told of, or given up after its first bytes
    };
    Kind What = Kind::Control;
    FrameHeader Header;               ///< as the control knows it (data), as on the wire (control)
    std::vector<std::uint8_t> Bytes;  ///< length, header and body as on the wire
};

/// Frames that wait to be written, in their order. Between Offer and Advance a writer may hold
/// views of the offered frames: they stay where they are.
class OutboundQueue {
public:
    void Push(OutFrame frame);
    /// Fills `views` with the next unwritten bytes; those frames are offered until Advance.
    std::size_t Offer(std::span<std::span<const std::uint8_t>> views);
    /// The writer took so many bytes off the front, and gives up its views. Follow with TakeWritten
    /// until it gives none.
    void Advance(std::size_t count) noexcept {
        written_ += count;
        offered_ = 0;
    }
    /// The next frame that has been written whole, oldest first.
    [[nodiscard]] std::optional<OutFrame> TakeWritten();

    /// Offered data frames that are not yet told of, up to and including the one with these system
    /// bytes: they have gone out, the write is just not reported. They become settled; a copy of
    /// each is returned. None when no offered data frame has these system bytes.
    [[nodiscard]] std::vector<OutFrame> SettleThrough(std::uint32_t systemBytes);
    /// Gives up all data frames: those that are begun or offered finish their bytes to
    /// keep the framing, the others are removed. Returns the headers of those that were not told
    /// of.
    [[nodiscard]] std::vector<FrameHeader> AbortData();
    /// Forgets everything, the connection being gone.
    void Clear() noexcept;

    [[nodiscard]] bool IsEmpty() const noexcept { return frames_.empty(); }
    /// Bounds: data messages, their bytes, and control frames that wait.
    [[nodiscard]] std::size_t DataFrames() const noexcept { return dataFrames_; }
    [[nodiscard]] std::size_t DataBytes() const noexcept { return dataBytes_; }
    [[nodiscard]] std::size_t ControlFrames() const noexcept {
        return frames_.size() - dataFrames_;
    }

private:
    void Leave(const OutFrame& frame) noexcept;

    std::deque<OutFrame> frames_;
    std::size_t written_ = 0;  // bytes taken that TakeWritten has not yet given back as frames
    std::size_t offered_ = 0;  // frames at the front that a writer may hold views of
    std::size_t dataFrames_ = 0;
    std::size_t dataBytes_ = 0;
};

}  // namespace hexmire::hsms
