#pragma once

#include <hexmire/support/ByteOrder.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

namespace hexmire::detail {

/// Bytes of a body while it is encoded, behind what `bytes` holds already. Room is made ahead, in
/// ever larger steps, so that a small item costs no call; while this lives, `bytes` is longer than
/// what has been written.
class EncodedBytes {
public:
    explicit EncodedBytes(std::vector<std::uint8_t>& bytes) noexcept
        : bytes_(bytes), size_(bytes.size()) {}
    EncodedBytes(const EncodedBytes&) = delete;
    EncodedBytes& operator=(const EncodedBytes&) = delete;
    ~EncodedBytes() { bytes_.resize(size_); }

    [[nodiscard]] std::size_t Size() const noexcept { return size_; }
    /// What was written from there on.
    [[nodiscard]] std::span<const std::uint8_t> From(std::size_t start) const noexcept {
        return std::span<const std::uint8_t>(bytes_).subspan(start, size_ - start);
    }

    void PutByte(std::uint8_t byte) {
        *Room(1) = byte;
        ++size_;
    }
    /// The low `Width` bytes of a whole number, most significant first.
    template <std::size_t Width>
    void PutNumber(std::uint64_t value) {
        WriteBigEndian<Width>(value, Room(Width));
        size_ += Width;
    }
    /// The same for a width, 1 to 8, that is known only now.
    void PutLowBytes(std::uint64_t value, std::size_t width) {
        constexpr std::size_t kMost = sizeof(value);
        WriteBigEndian<kMost>(value << (8 * (kMost - width)), Room(kMost));
        size_ += width;
    }
    void Put(std::span<const std::uint8_t> bytes) {
        if (bytes.size() > bytes_.size() - size_ && bytes.size() >= kLong) {
            bytes_.resize(size_);
            bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
        } else if (!bytes.empty()) {
            std::memcpy(Room(bytes.size()), bytes.data(), bytes.size());
        }
        size_ += bytes.size();
    }
    /// So many zero bytes, to be written over.
    std::span<std::uint8_t> PutZeros(std::size_t count) {
        std::uint8_t* const place = Room(count);
        std::fill_n(place, count, std::uint8_t{0});
        size_ += count;
        return {place, count};
    }

private:
    static constexpr std::size_t kLong = 4096;
    static constexpr std::size_t kSmallestStep = 64;

    std::uint8_t* Room(std::size_t count) {
        if (bytes_.size() - size_ < count) {
            bytes_.resize(std::max({size_ + count, 2 * bytes_.size(), kSmallestStep}));
        }
        return bytes_.data() + size_;
    }

    std::vector<std::uint8_t>& bytes_;
    std::size_t size_;
};

}  // namespace hexmire::detail
