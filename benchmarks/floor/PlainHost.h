#pragma once

#include "Frames.h"
#include "Sockets.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace hexmire::bench {

/// The least that a host can do: it connects to a port, selects, writes frames that are ready and
/// waits in recv.
class PlainHost {
public:
    explicit PlainHost(std::uint16_t port);
    PlainHost(PlainHost&&) = default;
    PlainHost(const PlainHost&) = delete;
    PlainHost& operator=(PlainHost&&) = delete;
    PlainHost& operator=(const PlainHost&) = delete;
    ~PlainHost();

    /// Both throw std::runtime_error when the equipment has gone.
    void Write(std::span<const std::uint8_t> frames);
    void Receive();
    /// The next frame among what has been received; empty when there is none.
    std::span<const std::uint8_t> Next() noexcept { return in_.Next(); }

    /// Writes the frames and reads so many replies.
    void Exchange(std::span<const std::uint8_t> frames, std::size_t replies);

private:
    Socket socket_;
    FrameBuffer in_;
};

}  // namespace hexmire::bench
