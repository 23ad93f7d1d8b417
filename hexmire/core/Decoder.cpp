#include <hexmire/core/ModGeneral.h>
#include <hexmire/core/detail/Decoder.h>
#include <hexmire/core/detail/SECSItemAccess.h>
#include <hexmire/support/Fault.h>
#include <hexmire/support/Reporting.h>

#include <algorithm>
#include <array>
#include <bit>
#include <string_view>
#include <vector>

namespace hexmire::detail {

namespace {

using Access = SECSItemAccess;
using View = std::span<const std::uint8_t>;

constexpr RoutineName kName{"SECSMessage", "lParseSECSMessage"};

/// Reads forward through the body; position is the index of the last byte read.
class Reader {
public:
    Reader(View bytes, std::int64_t& position) : bytes_(bytes), position_(position) {}

    /// True when the next byte is beyond the end.
    [[nodiscard]] bool IsAtEnd() const { return position_ + 1 >= Size(); }
    std::uint8_t Byte() {
        ++position_;
        if (position_ >= Size()) throw Fault(FaultNumber::SubscriptOutOfRange);
        return bytes_[static_cast<std::size_t>(position_)];
    }
    View Bytes(std::uint32_t count) {
        if (Size() - 1 - position_ < std::int64_t{count}) {
            position_ = std::max(position_, Size());
            throw Fault(FaultNumber::SubscriptOutOfRange);
        }
        const auto start = static_cast<std::size_t>(position_ + 1);
        position_ += count;
        return bytes_.subspan(start, count);
    }

private:
    [[nodiscard]] std::int64_t Size() const { return static_cast<std::int64_t>(bytes_.size()); }

    View bytes_;
    std::int64_t& position_;
};

/// Length / width to the nearest whole number, halves to even.
std::uint32_t ElementCount(std::uint32_t length, std::uint32_t width) {
    const std::uint32_t whole = length / width;
    const std::uint32_t rest = length % width;
    const bool up = rest * 2 > width || (rest * 2 == width && whole % 2 == 1);
    return up ? whole + 1 : whole;
}

template <std::size_t Width>
std::uint64_t Bits(const std::uint8_t* bytes) {
    std::uint64_t bits = 0;
    for (std::size_t index = 0; index < Width; ++index)
        bits = bits << 8U | bytes[index];
    return bits;
}

// One element of each format from its bytes.
template <std::size_t Width, bool Signed>
struct LongElement {
    using Type = std::int32_t;
    static constexpr std::uint32_t kWidth = Width;
    static Type Read(const std::uint8_t* bytes) {
        constexpr unsigned kUnused = 32 - 8 * Width;
        const auto bits = static_cast<std::uint32_t>(Bits<Width>(bytes));
        if constexpr (Signed) return static_cast<std::int32_t>(bits << kUnused) >> kUnused;
        return static_cast<std::int32_t>(bits);
    }
};
template <std::size_t Width>
struct UnsignedElement {
    using Type = Decimal;
    static constexpr std::uint32_t kWidth = Width;
    static Type Read(const std::uint8_t* bytes) { return Decimal::FromUInt64(Bits<Width>(bytes)); }
};
struct SignedElement {
    using Type = Decimal;
    static constexpr std::uint32_t kWidth = 8;
    static Type Read(const std::uint8_t* bytes) {
        constexpr std::uint8_t kSignBit = 0x80;
        if (bytes[0] < kSignBit) return Decimal::FromUInt64(Bits<8>(bytes));
        std::array<std::uint8_t, kWidth> magnitude{};
        std::copy_n(bytes, kWidth, magnitude.begin());
        lToPInt(magnitude);
        return Decimal::FromUInt64(Bits<8>(magnitude.data())).Negated();
    }
};
struct SingleElement {
    using Type = float;
    static constexpr std::uint32_t kWidth = 4;
    static Type Read(const std::uint8_t* bytes) {
        return std::bit_cast<float>(static_cast<std::uint32_t>(Bits<4>(bytes)));
    }
};
struct DoubleElement {
    using Type = double;
    static constexpr std::uint32_t kWidth = 8;
    static Type Read(const std::uint8_t* bytes) { return std::bit_cast<double>(Bits<8>(bytes)); }
};

template <class Element>
void ReadNumbers(Reader& reader, std::uint32_t length, SECSItem& item) {
    const std::uint32_t count = ElementCount(length, Element::kWidth);
    if (count == 0) return;  // The bytes, if any, are read as the next item.
    const View bytes = reader.Bytes(count * Element::kWidth);
    if (count == 1) {
        item.Value(Element::Read(bytes.data()));
    } else {
        std::vector<typename Element::Type> values(count);
        const std::uint8_t* next = bytes.data();
        for (auto& value : values) {
            value = Element::Read(next);
            next += Element::kWidth;
        }
        item.Value(std::move(values));
    }
    Access::Raw(item, Variant::Bytes(bytes));
}

void ReadText(Reader& reader, std::uint32_t length, SECSItem& item) {
    if (length == 0) return;
    const View bytes = reader.Bytes(length);
    item.Value(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
    Access::Raw(item, length == 1 ? Variant(bytes.front()) : Variant::Bytes(bytes));
}

void ReadBinary(Reader& reader, std::uint32_t length, SECSItem& item) {
    if (length == 0) return;
    const View bytes = reader.Bytes(length);
    const Variant value = length == 1 ? Variant(bytes.front()) : Variant::Bytes(bytes);
    item.Value(value);
    Access::Raw(item, value);
}

void ReadBooleans(Reader& reader, std::uint32_t length, SECSItem& item) {
    if (length == 0) return;
    const View bytes = reader.Bytes(length);
    if (length == 1) {
        item.Value(bytes.front() != 0);
        Access::Raw(item, bytes.front());
        return;
    }
    std::vector<bool> values(length);
    std::transform(
        bytes.begin(), bytes.end(), values.begin(), [](std::uint8_t byte) { return byte != 0; });
    item.Value(std::move(values));
    Access::Raw(item, Variant::Bytes(bytes));
}

/// Everything but lists; false for an unknown code.
bool ReadValue(Reader& reader, int code, std::uint32_t length, SECSItem& item) {
    switch (code) {
        case FormatAscii:
        case FormatVar:
            ReadText(reader, length, item);
            return true;
        case FormatBoolean:
            ReadBooleans(reader, length, item);
            return true;
        case FormatBinary:
            ReadBinary(reader, length, item);
            return true;
        case FormatI1:
            ReadNumbers<LongElement<1, true>>(reader, length, item);
            return true;
        case FormatI2:
            ReadNumbers<LongElement<2, true>>(reader, length, item);
            return true;
        case FormatI4:
            ReadNumbers<LongElement<4, true>>(reader, length, item);
            return true;
        case FormatU1:
            ReadNumbers<LongElement<1, false>>(reader, length, item);
            return true;
        case FormatU2:
            ReadNumbers<LongElement<2, false>>(reader, length, item);
            return true;
        case FormatU4:
            ReadNumbers<UnsignedElement<4>>(reader, length, item);
            return true;
        case FormatU8:
            ReadNumbers<UnsignedElement<8>>(reader, length, item);
            return true;
        case FormatI8:
            ReadNumbers<SignedElement>(reader, length, item);
            return true;
        case FormatF4:
            ReadNumbers<SingleElement>(reader, length, item);
            return true;
        case FormatF8:
            ReadNumbers<DoubleElement>(reader, length, item);
            return true;
        default:
            return false;
    }
}

/// A list whose children are still awaited.
struct Step {
    SECSItemPtr Parent;
    std::uint32_t Count = 0;
    std::uint32_t Next = 1;
};

/// Reads one item; a list is left for the caller to fill.
bool ReadItem(Reader& reader,
              const SECSItemPtr& parent,
              std::int32_t index,
              std::vector<Step>& steps) {
    const std::uint8_t format = reader.Byte();
    std::uint32_t length = 0;
    for (int byte = format & 3; byte > 0; --byte)
        length = length << 8U | reader.Byte();
    const SECSItemPtr item = parent->AddNew(index);
    if (item == nullptr) throw Fault(FaultNumber::ObjectNotSet);
    const int code = format >> 2;
    item->Format(code);
    if (code != FormatList) return ReadValue(reader, code, length, *item);
    if (length > 0) steps.push_back({item, length});
    return true;
}

}  // namespace

bool lParseSECSMessage(std::span<const std::uint8_t> bytes,
                       std::int64_t& position,
                       const SECSItemPtr& parent,
                       std::int32_t index) {
    bool ok = true;
    Reader reader(bytes, position);
    std::vector<Step> steps;  // In place of the machine's stack: lists nest to any depth.
    const auto read = [&](const SECSItemPtr& list, std::int32_t place) {
        RunFreeRoutine(kName, [&] {
            if (!ReadItem(reader, list, place, steps)) ok = false;
        });
    };
    read(parent, index);
    while (!steps.empty()) {
        Step& step = steps.back();
        if (step.Next > step.Count) {
            steps.pop_back();
        } else if (reader.IsAtEnd()) {
            // A list may claim millions of children behind the end: each is a fault, none is
            // thrown.
            ++step.Next;
            ReportFault(CurrentSite(), kName, FaultNumber::SubscriptOutOfRange);
        } else {
            const SECSItemPtr list = step.Parent;
            read(list, static_cast<std::int32_t>(step.Next++));
        }
    }
    return ok;
}

void lToPInt(std::span<std::uint8_t> bytes) noexcept {
    for (std::size_t index = bytes.size(); index-- > 0;) {
        if (bytes[index] == 0) continue;
        --bytes[index];
        std::fill(bytes.begin() + static_cast<std::ptrdiff_t>(index) + 1,
                  bytes.end(),
                  std::uint8_t{0xFF});
        break;
    }
    for (std::uint8_t& byte : bytes)
        byte = static_cast<std::uint8_t>(~byte);
}

}  // namespace hexmire::detail
