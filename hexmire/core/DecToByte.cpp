#include <hexmire/core/detail/Encoder.h>
#include <hexmire/support/Fault.h>
#include <hexmire/support/Reporting.h>

#include <algorithm>

namespace hexmire::detail {

namespace {

__extension__ using Wide = unsigned __int128;

/// The places of a big-endian number, filled from the last to the first.
class Places {
public:
    Places(std::span<std::uint8_t> bytes, std::int16_t count) : bytes_(bytes), index_(count - 1) {}

    void StoreFull(std::uint64_t value) {
        Store(index_, value);
        --index_;
    }
    void StorePartial(std::uint64_t value) { Store(std::max(index_, 0), value); }

private:
    void Store(int index, std::uint64_t value) {
        if (index < 0 || static_cast<std::size_t>(index) >= bytes_.size()) {
            throw Fault(FaultNumber::SubscriptOutOfRange);
        }
        if (value > 0xFF) throw Fault(FaultNumber::Overflow);
        bytes_[static_cast<std::size_t>(index)] = static_cast<std::uint8_t>(value);
    }

    std::span<std::uint8_t> bytes_;
    int index_;
};

/// A whole number from its low end: eight bits make a full byte, the last bits a partial one.
void WriteWhole(Wide value, Places& places) {
    constexpr unsigned kTopBit = 0x80;
    while (value >= kTopBit) {
        places.StoreFull(static_cast<std::uint64_t>(value & 0xFFU));
        value >>= 8U;
        if (value == 0) return;
    }
    places.StorePartial(static_cast<std::uint64_t>(value));
}

/// The first bit of a fraction or of a negative number is what is left of the value beyond the even
/// number below it: anything from 0 to just under 2. All other bits come from the half of that
/// number.
void WriteGeneral(const Decimal& value, Places& places) {
    Wide one = 1;
    for (unsigned place = 0; place < value.Scale(); ++place)
        one *= 10;
    const Wide mantissa = Wide{value.MantissaHigh()} << 64U | value.MantissaLow();
    Wide rest = mantissa % (one * 2);
    Wide half = mantissa / (one * 2);
    if (value.IsNegative()) {  // Floor: the half is below zero, so the first bit is the only one.
        if (rest != 0) rest = one * 2 - rest;
        half = 0;
    }
    const auto rounded = [&](Wide wholeBits) {
        Wide whole = rest / one + wholeBits;
        const Wide fraction = rest % one;
        if (fraction * 2 > one || (fraction * 2 == one && (whole & 1U) != 0)) ++whole;
        return static_cast<std::uint64_t>(whole);
    };
    constexpr unsigned kSixBits = 0x3F;
    constexpr unsigned kSevenBits = 0x7F;
    if (half <= kSixBits) {
        places.StorePartial(rounded(half * 2));
        return;
    }
    places.StoreFull(rounded((half & kSevenBits) * 2));
    half >>= 7U;
    if (half != 0) WriteWhole(half, places);
}

}  // namespace

void lDecToByte(const Decimal& value, std::span<std::uint8_t> bytes, std::int16_t count) {
    RunFreeRoutine({"SECSMessage", "lDecToByte"}, [&] {
        Places places(bytes, count);
        if (value.IsWhole() && !value.IsNegative()) {
            WriteWhole(Wide{value.MantissaHigh()} << 64U | value.MantissaLow(), places);
        } else {
            WriteGeneral(value, places);
        }
    });
}

void lToNInt(std::span<std::uint8_t> bytes) noexcept {
    for (std::uint8_t& byte : bytes)
        byte = static_cast<std::uint8_t>(~byte);
    for (std::size_t index = bytes.size(); index-- > 0;) {
        if (bytes[index] == 0xFF) continue;
        ++bytes[index];
        std::fill(
            bytes.begin() + static_cast<std::ptrdiff_t>(index) + 1, bytes.end(), std::uint8_t{0});
        return;
    }
}

}  // namespace hexmire::detail
