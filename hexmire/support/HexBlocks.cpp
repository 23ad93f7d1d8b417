#include <hexmire/support/detail/HexBlocks.h>

#include <array>
#include <cstring>
#include <utility>

#if defined(__x86_64__) && !defined(HEXMIRE_PLAIN_HEX)

namespace hexmire::detail {

namespace {

constexpr std::size_t kPlaces = 3;  // two digits and what stands behind them

constexpr std::size_t kBlock = 16;
using Block [[gnu::vector_size(kBlock)]] = std::uint8_t;

bool CanShuffle() {
    static const bool kCan = __builtin_cpu_supports("ssse3") != 0;
    return kCan;
}

[[gnu::target("ssse3")]] inline Block Load(const void* from) noexcept {
    Block block;
    std::memcpy(&block, from, kBlock);
    return block;
}

/// The digits of sixteen values 0..15.
[[gnu::target("ssse3")]] inline Block Digits(Block values) noexcept {
    const auto isLetter = reinterpret_cast<Block>(values > 9);
    return values + '0' + (isLetter & ('A' - '0' - 10));
}

/// Pairs of digits with a blank behind each, from the place `First` of a field on, without the
/// first `Skip` digits.
template <std::size_t First, std::size_t Skip, std::size_t... Place>
[[gnu::target("ssse3")]] inline Block Spread(Block pairs,
                                             Block blanks,
                                             std::index_sequence<Place...> /*places*/) noexcept {
    return __builtin_shufflevector(
        pairs,
        blanks,
        ((First + Place) % kPlaces == 2
             ? kBlock
             : (First + Place) / kPlaces * 2 + (First + Place) % kPlaces + Skip)...);
}

[[gnu::target("ssse3")]] void WriteBlocks(const std::uint8_t* from,
                                          std::size_t blocks,
                                          char* to) noexcept {
    constexpr std::make_index_sequence<kBlock> kAll;
    const Block blanks = Block{} + ' ';
    for (; blocks > 0; --blocks, from += kBlock, to += kPlaces * kBlock) {
        const Block bytes = Load(from);
        const Block high = Digits(bytes >> 4);
        const Block low = Digits(bytes & 0x0F);
        // The digits in pairs: of the bytes 0 to 7, 8 to 15 and 5 to 12.
        const Block front = __builtin_shufflevector(
            high, low, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
        const Block back = __builtin_shufflevector(
            high, low, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
        const Block middle = __builtin_shufflevector(
            front, back, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25);
        const Block texts[] = {Spread<0, 0>(front, blanks, kAll),
                               Spread<1, 0>(middle, blanks, kAll),
                               Spread<2, 4>(back, blanks, kAll)};
        std::memcpy(to, texts, sizeof(texts));
    }
}

constexpr std::size_t kWide = 2 * kBlock;
using WideBlock [[gnu::vector_size(kWide)]] = std::uint8_t;

bool CanShuffleWide() {
    static const bool kCan = __builtin_cpu_supports("avx2") != 0;
    return kCan;
}

[[gnu::target("avx2")]] inline WideBlock WideDigits(WideBlock values) noexcept {
    const auto isLetter = reinterpret_cast<WideBlock>(values > 9);
    return values + '0' + (isLetter & ('A' - '0' - 10));
}

/// Spread in each half by itself.
template <std::size_t First, std::size_t Skip, std::size_t... Place>
[[gnu::target("avx2")]] inline WideBlock SpreadHalves(
    WideBlock pairs, WideBlock blanks, std::index_sequence<Place...> /*places*/) noexcept {
    return __builtin_shufflevector(
        pairs,
        blanks,
        ((First + Place % kBlock) % kPlaces == 2
             ? kWide + Place
             : Place / kBlock * kBlock + (First + Place % kBlock) / kPlaces * 2 +
                   (First + Place % kBlock) % kPlaces + Skip)...);
}

/// What WriteBlocks does, for two blocks at a time.
template <std::size_t... Place>
[[gnu::target("avx2")]] void WriteWideBlocks(const std::uint8_t* from,
                                             std::size_t blocks,
                                             char* to,
                                             std::index_sequence<Place...> /*places*/) noexcept {
    constexpr std::make_index_sequence<kWide> kAll;
    const WideBlock blanks = WideBlock{} + ' ';
    for (; blocks > 0; --blocks, from += kWide, to += kPlaces * kWide) {
        WideBlock bytes;
        std::memcpy(&bytes, from, kWide);
        const WideBlock high = WideDigits(bytes >> 4);
        const WideBlock low = WideDigits(bytes & 0x0F);
        const WideBlock front =
            __builtin_shufflevector(high,
                                    low,
                                    (Place / 2 + Place % 2 * kWide)...,
                                    (kBlock + Place / 2 + Place % 2 * kWide)...);
        const WideBlock back =
            __builtin_shufflevector(high,
                                    low,
                                    (kBlock / 2 + Place / 2 + Place % 2 * kWide)...,
                                    (kBlock / 2 + kBlock + Place / 2 + Place % 2 * kWide)...);
        const WideBlock middle = __builtin_shufflevector(
            front,
            back,
            (Place < 6 ? 10 + Place : kWide + Place - 6)...,
            (Place < 6 ? kBlock + 10 + Place : kWide + kBlock + Place - 6)...);
        const WideBlock texts[] = {SpreadHalves<0, 0>(front, blanks, kAll),
                                   SpreadHalves<1, 0>(middle, blanks, kAll),
                                   SpreadHalves<2, 4>(back, blanks, kAll)};
        for (std::size_t part = 0; part < kPlaces; ++part) {
            const auto* text = reinterpret_cast<const char*>(&texts[part]);
            std::memcpy(to + part * kBlock, text, kBlock);
            std::memcpy(to + (kPlaces + part) * kBlock, text + kBlock, kBlock);
        }
    }
}

/// The values of sixteen digits; what is none sets bits in `wrong`.
[[gnu::target("ssse3")]] inline Block Values(Block digits, Block& wrong) noexcept {
    const Block number = digits - '0';
    const Block letter = (digits | 0x20) - 'a';
    const auto isNumber = reinterpret_cast<Block>(number < 10);
    const auto isLetter = reinterpret_cast<Block>(letter < 6);
    wrong |= ~(isNumber | isLetter);
    return (number & isNumber) | ((letter + 10) & isLetter);
}

/// Reads blocks of sixteen bytes up to the first that holds anything but digits; returns how many.
[[gnu::target("ssse3")]] std::size_t ReadBlocks(const char* from,
                                                std::size_t blocks,
                                                std::uint8_t* to) noexcept {
    for (std::size_t done = 0; done < blocks; ++done, from += kPlaces * kBlock, to += kBlock) {
        const Block front = Load(from);
        const Block middle = Load(from + kBlock);
        const Block back = Load(from + 2 * kBlock);
        const Block frontHigh = __builtin_shufflevector(
            front, middle, 0, 3, 6, 9, 12, 15, 18, 21, 24, 27, 30, 0, 0, 0, 0, 0);
        const Block frontLow = __builtin_shufflevector(
            front, middle, 1, 4, 7, 10, 13, 16, 19, 22, 25, 28, 31, 0, 0, 0, 0, 0);
        const Block high = __builtin_shufflevector(
            frontHigh, back, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 17, 20, 23, 26, 29);
        const Block low = __builtin_shufflevector(
            frontLow, back, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 18, 21, 24, 27, 30);
        Block wrong = {};
        const Block bytes = Values(high, wrong) << 4 | Values(low, wrong);
        std::array<std::uint64_t, 2> halves{};
        std::memcpy(halves.data(), &wrong, kBlock);
        if ((halves[0] | halves[1]) != 0) return done;
        std::memcpy(to, &bytes, kBlock);
    }
    return blocks;
}

}  // namespace

std::size_t WriteHexBlocks(std::span<const std::uint8_t> bytes, char* to) noexcept {
    std::size_t done = 0;
    if (bytes.size() >= kWide && CanShuffleWide()) {
        const std::size_t blocks = bytes.size() / kWide;
        WriteWideBlocks(bytes.data(), blocks, to, std::make_index_sequence<kBlock>());
        done = blocks * kWide;
    }
    if (bytes.size() - done >= kBlock && CanShuffle()) {
        const std::size_t blocks = (bytes.size() - done) / kBlock;
        WriteBlocks(&bytes[done], blocks, to + done * kPlaces);
        done += blocks * kBlock;
    }
    return done;
}

std::size_t ReadHexBlocks(const char* from, std::size_t count, std::uint8_t* to) noexcept {
    return count >= kBlock && CanShuffle() ? ReadBlocks(from, count / kBlock, to) * kBlock : 0;
}

}  // namespace hexmire::detail

#else

namespace hexmire::detail {

std::size_t WriteHexBlocks(std::span<const std::uint8_t> /*bytes*/, char* /*to*/) noexcept {
    return 0;
}

std::size_t ReadHexBlocks(const char* /*from*/,
                          std::size_t /*count*/,
                          std::uint8_t* /*to*/) noexcept {
    return 0;
}

}  // namespace hexmire::detail

#endif
