#include <hexmire/core/ModGeneral.h>
#include <hexmire/core/detail/Decoder.h>
#include <hexmire/core/detail/SECSItemAccess.h>
#include <hexmire/support/ByteOrder.h>
#include <hexmire/support/Fault.h>
#include <hexmire/support/Reporting.h>
#include <hexmire/support/detail/VariantBoxes.h>

#include <algorithm>
#include <array>
#include <bit>
#include <utility>
#include <vector>

namespace hexmire::detail {

namespace {

using Access = SECSItemAccess;
using Shared = VariantAccess;
using View = std::span<const std::uint8_t>;

constexpr RoutineName kName{"SECSMessage", "lParseSECSMessage"};

/// Reads forward through the body; position is the index of the last byte read.
class Reader {
public:
    Reader(const Variant& body, std::int64_t& position)
        : body_(body),
          bytes_(body.View<std::uint8_t>()),
          position_(position),
          mostItems_(bytes_.size() / 2) {}

    /// What the bytes belong to: long values share them.
    [[nodiscard]] const Variant& Body() const { return body_; }
    /// Room to keep free for that many children. An item has two bytes at least: all lists of a
    /// body together get no more than it can hold, whatever they claim.
    std::size_t RoomFor(std::uint32_t count) {
        const std::size_t room = std::min<std::size_t>(count, mostItems_);
        mostItems_ -= room;
        return room;
    }

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

    const Variant& body_;
    View bytes_;
    std::int64_t& position_;
    std::size_t mostItems_;
};

/// Length / width to the nearest whole number, halves to even.
std::uint32_t ElementCount(std::uint32_t length, std::uint32_t width) {
    const std::uint32_t whole = length / width;
    const std::uint32_t rest = length % width;
    const bool up = rest * 2 > width || (rest * 2 == width && whole % 2 == 1);
    return up ? whole + 1 : whole;
}

// How the numbers of each format are read: one by itself, or all of an array; and whether the array
// keeps their bytes as they are.
template <std::size_t Width, bool Signed>
struct LongNumbers {
    static constexpr std::uint32_t kWidth = Width;
    static constexpr bool kAsTheyLie = false;
    static std::int32_t One(const std::uint8_t* bytes) {
        constexpr unsigned kUnused = 32 - 8 * Width;
        const auto bits = static_cast<std::uint32_t>(ReadBigEndian<Width>(bytes));
        if constexpr (Signed) return std::bit_cast<std::int32_t>(bits << kUnused) >> kUnused;
        return std::bit_cast<std::int32_t>(bits);
    }
    static Variant All(const Variant& /*body*/, View bytes) {
        std::vector<std::int32_t> values(bytes.size() / Width);
        if constexpr (Width == sizeof(std::int32_t)) {
            auto* const to = reinterpret_cast<std::uint8_t*>(values.data());
            CopyBigEndian<Width>(bytes.data(), values.size(), to);
        } else {
            const std::uint8_t* next = bytes.data();
            for (std::int32_t& value : values) {
                value = One(next);
                next += Width;
            }
        }
        return values;
    }
};
template <Shared::NumberForm Form>
struct WideNumbers {
    static constexpr std::uint32_t kWidth = Form == Shared::kUInt32 ? 4 : 8;
    static constexpr bool kAsTheyLie = true;
    static Decimal One(const std::uint8_t* bytes) {
        if constexpr (Form == Shared::kInt64) {
            constexpr std::uint8_t kSignBit = 0x80;
            if ((bytes[0] & kSignBit) != 0) {
                std::array<std::uint8_t, kWidth> magnitude{};
                std::copy_n(bytes, kWidth, magnitude.begin());
                lToPInt(magnitude);
                return Decimal::FromUInt64(ReadBigEndian<kWidth>(magnitude.data())).Negated();
            }
        }
        return Decimal::FromUInt64(ReadBigEndian<kWidth>(bytes));
    }
    static Variant All(const Variant& body, View bytes) {
        return Shared::NumbersWithin(body, bytes, Form);
    }
};
template <class Float, class BitsOfFloat>
struct FloatNumbers {
    static constexpr std::uint32_t kWidth = sizeof(Float);
    static constexpr bool kAsTheyLie = false;
    static Float One(const std::uint8_t* bytes) {
        return std::bit_cast<Float>(static_cast<BitsOfFloat>(ReadBigEndian<kWidth>(bytes)));
    }
    static Variant All(const Variant& /*body*/, View bytes) {
        std::vector<Float> values(bytes.size() / kWidth);
        auto* const to = reinterpret_cast<std::uint8_t*>(values.data());
        CopyBigEndian<kWidth>(bytes.data(), values.size(), to);
        return values;
    }
};

template <class Numbers>
void ReadNumbers(Reader& reader, std::uint32_t length, SECSItem& item) {
    const std::uint32_t count = ElementCount(length, Numbers::kWidth);
    if (count == 0) return;  // The bytes, if any, are read as the next item.
    const View bytes = reader.Bytes(count * Numbers::kWidth);
    if (count == 1) {
        Access::FirstValue(item, Numbers::One(bytes.data()));
        Access::RawIsNumber(item);
        return;
    }
    Access::FirstValue(item, Numbers::All(reader.Body(), bytes));
    if constexpr (Numbers::kAsTheyLie) {
        Access::RawIsBytes(item);
    } else {
        Access::KeepRaw(item, Shared::BytesWithin(reader.Body(), bytes));
    }
}

void ReadText(Reader& reader, std::uint32_t length, SECSItem& item) {
    if (length == 0) return;
    const View bytes = reader.Bytes(length);
    Access::FirstValue(item, Shared::TextWithin(reader.Body(), bytes));
    if (length == 1) {
        Access::RawIsByte(item, bytes.front());
    } else {
        Access::RawIsBytes(item);
    }
}

void ReadBinary(Reader& reader, std::uint32_t length, SECSItem& item) {
    if (length == 0) return;
    const View bytes = reader.Bytes(length);
    if (length == 1) {
        Access::FirstValue(item, bytes.front());
        Access::RawIsByte(item, bytes.front());
    } else {
        Access::FirstValue(item, Shared::BytesWithin(reader.Body(), bytes));
        Access::RawIsBytes(item);
    }
}

void ReadBooleans(Reader& reader, std::uint32_t length, SECSItem& item) {
    if (length == 0) return;
    const View bytes = reader.Bytes(length);
    if (length == 1) {
        Access::FirstValue(item, bytes.front() != 0);
        Access::RawIsByte(item, bytes.front());
        return;
    }
    std::vector<std::uint8_t> values(length);
    std::transform(bytes.begin(), bytes.end(), values.begin(), [](std::uint8_t byte) {
        return static_cast<std::uint8_t>(byte != 0 ? 1 : 0);
    });
    Access::FirstValue(item, Shared::Booleans(std::move(values)));
    Access::KeepRaw(item, Shared::BytesWithin(reader.Body(), bytes));
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
            ReadNumbers<LongNumbers<1, true>>(reader, length, item);
            return true;
        case FormatI2:
            ReadNumbers<LongNumbers<2, true>>(reader, length, item);
            return true;
        case FormatI4:
            ReadNumbers<LongNumbers<4, true>>(reader, length, item);
            return true;
        case FormatU1:
            ReadNumbers<LongNumbers<1, false>>(reader, length, item);
            return true;
        case FormatU2:
            ReadNumbers<LongNumbers<2, false>>(reader, length, item);
            return true;
        case FormatU4:
            ReadNumbers<WideNumbers<Shared::kUInt32>>(reader, length, item);
            return true;
        case FormatU8:
            ReadNumbers<WideNumbers<Shared::kUInt64>>(reader, length, item);
            return true;
        case FormatI8:
            ReadNumbers<WideNumbers<Shared::kInt64>>(reader, length, item);
            return true;
        case FormatF4:
            ReadNumbers<FloatNumbers<float, std::uint32_t>>(reader, length, item);
            return true;
        case FormatF8:
            ReadNumbers<FloatNumbers<double, std::uint64_t>>(reader, length, item);
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
bool ReadItem(Reader& reader, SECSItem& parent, std::int32_t index, std::vector<Step>& steps) {
    const std::uint8_t format = reader.Byte();
    std::uint32_t length = 0;
    for (int byte = format & 3; byte > 0; --byte)
        length = length << 8U | reader.Byte();
    const int code = format >> 2;
    SECSItemPtr added;
    SECSItem* item = Access::Append(parent, index, code);
    if (item == nullptr) {
        added = parent.AddNew(index);
        if (added == nullptr) throw Fault(FaultNumber::ObjectNotSet);
        added->Format(code);
        item = added.get();
    }
    if (code != FormatList) return ReadValue(reader, code, length, *item);
    if (length > 0) {
        Access::Reserve(*item, reader.RoomFor(length));
        steps.push_back({item->shared_from_this(), length});
    }
    return true;
}

}  // namespace

bool lParseSECSMessage(const Variant& body,
                       std::int64_t& position,
                       const SECSItemPtr& parent,
                       std::int32_t index) {
    bool ok = true;
    Reader reader(body, position);
    std::vector<Step> steps;  // In place of the machine's stack: lists nest to any depth.
    const auto read = [&](SECSItem& list, std::int32_t place) {
        RunFreeRoutine(kName, [&] {
            if (!ReadItem(reader, list, place, steps)) ok = false;
        });
    };
    read(*parent, index);
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
            // The list of steps may move while it grows; the list that is read stays.
            SECSItem& list = *step.Parent;
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
