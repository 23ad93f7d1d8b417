#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

/// HSMS messages (SEMI E37) as bytes, and nothing else.
namespace hexmire::bench {

inline constexpr std::size_t kLengthBytes = 4;
inline constexpr std::size_t kHeaderBytes = 10;
/// What stands around a body.
inline constexpr std::size_t kFrameOverhead = kLengthBytes + kHeaderBytes;

enum SType : std::uint8_t { Data = 0, SelectRequest = 1, LinktestRequest = 5, Separate = 9 };

/// The four bytes of a big-endian number.
std::uint32_t Number(const std::uint8_t* bytes) noexcept;
void PutNumber(std::uint8_t* bytes, std::uint32_t value) noexcept;

/// A message as it stands on the wire: length, header, body. Control messages have session FFFF.
std::vector<std::uint8_t> HsmsFrame(std::uint8_t byte2,
                                    std::uint8_t byte3,
                                    std::uint8_t sType,
                                    std::uint32_t systemBytes,
                                    std::span<const std::uint8_t> body = {});

/// Gathers the frames of a byte stream in one buffer that is read into directly.
class FrameBuffer {
public:
    /// Takes what is there, waiting for it; false when the peer has gone.
    bool Receive(int socket);
    /// The next frame that is there as a whole, without its length; empty when none is. It is valid
    /// until the next Receive.
    std::span<const std::uint8_t> Next() noexcept;

private:
    std::vector<std::uint8_t> bytes_;
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
    bool isFilled_ = true;  ///< by what came last; at first there is no room at all
};

}  // namespace hexmire::bench
