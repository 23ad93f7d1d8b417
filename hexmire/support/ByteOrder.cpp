#include <hexmire/support/ByteOrder.h>

#include <cstring>
#include <utility>

namespace hexmire {

namespace {

template <std::size_t Width>
void CopyOneByOne(const std::uint8_t* from, std::size_t count, std::uint8_t* to) noexcept {
    for (std::size_t number = 0; number < count; ++number, from += Width, to += Width) {
        for (std::size_t index = 0; index < Width; ++index)
            to[index] = from[Width - 1 - index];
    }
}

#if defined(__x86_64__)

constexpr std::size_t kBlock = 16;
using Block [[gnu::vector_size(kBlock)]] = std::uint8_t;

/// Sixteen bytes at a time: compilers for the oldest machine of this kind swap one number at a
/// time, several times slower than memory.
template <std::size_t Width, std::size_t... Index>
[[gnu::target("ssse3")]] void CopyBlocks(const std::uint8_t* from,
                                         std::size_t blocks,
                                         std::uint8_t* to,
                                         std::index_sequence<Index...> /*places*/) noexcept {
    for (std::size_t block = 0; block < blocks; ++block, from += kBlock, to += kBlock) {
        Block bytes;
        std::memcpy(&bytes, from, kBlock);
        bytes = __builtin_shufflevector(
            bytes, bytes, (Index / Width * Width + Width - 1 - Index % Width)...);
        std::memcpy(to, &bytes, kBlock);
    }
}

template <std::size_t Width>
void CopyReversed(const std::uint8_t* from, std::size_t count, std::uint8_t* to) noexcept {
    static const bool kCanShuffle = __builtin_cpu_supports("ssse3") != 0;
    std::size_t done = 0;
    if (kCanShuffle) {
        const std::size_t blocks = count * Width / kBlock;
        CopyBlocks<Width>(from, blocks, to, std::make_index_sequence<kBlock>());
        done = blocks * kBlock;
    }
    CopyOneByOne<Width>(from + done, count - done / Width, to + done);
}

#else

template <std::size_t Width>
void CopyReversed(const std::uint8_t* from, std::size_t count, std::uint8_t* to) noexcept {
    CopyOneByOne<Width>(from, count, to);
}

#endif

}  // namespace

template <std::size_t Width>
void CopyBigEndian(const std::uint8_t* from, std::size_t count, std::uint8_t* to) noexcept {
    if (count == 0) return;  // there may be no place then
    if constexpr (std::endian::native == std::endian::big) {
        std::memcpy(to, from, count * Width);
    } else {
        CopyReversed<Width>(from, count, to);
    }
}

template <>
void CopyBigEndian<1>(const std::uint8_t* from, std::size_t count, std::uint8_t* to) noexcept {
    if (count != 0) std::memcpy(to, from, count);
}

template void CopyBigEndian<2>(const std::uint8_t*, std::size_t, std::uint8_t*) noexcept;
template void CopyBigEndian<4>(const std::uint8_t*, std::size_t, std::uint8_t*) noexcept;
template void CopyBigEndian<8>(const std::uint8_t*, std::size_t, std::uint8_t*) noexcept;

}  // namespace hexmire
