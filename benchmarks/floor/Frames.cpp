#include "Frames.h"

#include <sys/socket.h>

#include <algorithm>
#include <cstring>

namespace hexmire::bench {

namespace {

constexpr std::size_t kFirstSize = std::size_t{2} * 1024;

}  // namespace

std::uint32_t Number(const std::uint8_t* bytes) noexcept {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i)
        value = value << 8U | bytes[i];
    return value;
}

void PutNumber(std::uint8_t* bytes, std::uint32_t value) noexcept {
    for (std::size_t i = 0; i < 4; ++i)
        bytes[i] = static_cast<std::uint8_t>(value >> (24U - 8U * i));
}

std::vector<std::uint8_t> HsmsFrame(std::uint8_t byte2,
                                    std::uint8_t byte3,
                                    std::uint8_t sType,
                                    std::uint32_t systemBytes,
                                    std::span<const std::uint8_t> body) {
    const std::uint8_t session = sType == Data ? 0x00 : 0xFF;
    std::vector<std::uint8_t> frame(kFrameOverhead + body.size());
    PutNumber(frame.data(), static_cast<std::uint32_t>(kHeaderBytes + body.size()));
    frame[4] = session;
    frame[5] = session;
    frame[6] = byte2;
    frame[7] = byte3;
    frame[9] = sType;
    PutNumber(frame.data() + 10, systemBytes);
    std::copy(body.begin(), body.end(), frame.begin() + kFrameOverhead);
    return frame;
}

bool FrameBuffer::Receive(int socket) {
    if (begin_ == end_) {
        begin_ = end_ = 0;
    } else if (begin_ != 0) {
        std::memmove(bytes_.data(), bytes_.data() + begin_, end_ - begin_);
        end_ -= begin_;
        begin_ = 0;
    }
    // More comes at once than there was room for; and the rest of a long frame is read where it
    // will be used.
    if (isFilled_) bytes_.resize(std::max(kFirstSize, 2 * bytes_.size()));
    if (end_ >= kLengthBytes) {
        const std::size_t frame = kLengthBytes + Number(bytes_.data());
        if (bytes_.size() < frame) bytes_.resize(frame);
    }
    const ssize_t count = ::recv(socket, bytes_.data() + end_, bytes_.size() - end_, 0);
    if (count <= 0) return false;
    end_ += static_cast<std::size_t>(count);
    isFilled_ = end_ == bytes_.size();
    return true;
}

std::span<const std::uint8_t> FrameBuffer::Next() noexcept {
    if (end_ - begin_ < kLengthBytes) return {};
    const std::uint8_t* const start = bytes_.data() + begin_;
    const std::size_t length = Number(start);
    if (end_ - begin_ < kLengthBytes + length) return {};
    begin_ += kLengthBytes + length;
    return {start + kLengthBytes, length};
}

}  // namespace hexmire::bench
