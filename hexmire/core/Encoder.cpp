#include <hexmire/core/ModGeneral.h>
#include <hexmire/core/detail/EncodedBytes.h>
#include <hexmire/core/detail/Encoder.h>
#include <hexmire/core/detail/PlainNumber.h>
#include <hexmire/core/detail/SECSItemAccess.h>
#include <hexmire/core/detail/SmlWriter.h>
#include <hexmire/support/ByteOrder.h>
#include <hexmire/support/Conversion.h>
#include <hexmire/support/Fault.h>
#include <hexmire/support/Reporting.h>
#include <hexmire/support/detail/VariantBoxes.h>

#include <algorithm>
#include <array>
#include <bit>
#include <concepts>
#include <cstddef>
#include <string>
#include <type_traits>

namespace hexmire::detail {

namespace {

using Access = SECSItemAccess;
using Output = EncodedBytes;
using View = std::span<const std::uint8_t>;

constexpr RoutineName kName{"SECSMessage", "lBuildSECSMessage"};
constexpr std::size_t kLargestShortLength = 0xFF;
constexpr std::size_t kLargestMediumLength = 0xFFFF;

/// Format byte and length bytes, and what the item remembers of them. Of a length beyond 24 bits
/// only the low ones go out.
void WriteHead(Output& out, SECSItem& item, std::int32_t format, std::size_t length) {
    const std::uint8_t nlb =
        length <= kLargestShortLength ? 1 : (length <= kLargestMediumLength ? 2 : 3);
    const auto formatByte = static_cast<std::uint64_t>(format) * 4 | nlb;
    if (nlb == 1) {
        out.PutNumber<2>(formatByte << 8U | length);
    } else if (nlb == 2) {
        out.PutNumber<3>(formatByte << 16U | length);
    } else {
        out.PutNumber<4>(formatByte << 24U | (length & 0xFFFFFFU));
    }
    Access::NLB(item, nlb);
    Access::Length(item, static_cast<std::int32_t>(length));
}

void KeepRaw(const Output& out, SECSItem& item, std::size_t start) {
    Access::KeepRaw(item, Variant::Bytes(out.From(start)));
}

void WriteText(Output& out, SECSItem& item, const Variant& value) {
    const std::string_view text = value.Text();
    WriteHead(out, item, FormatAscii, text.size());
    out.Put({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
    if (!text.empty()) Access::KeepRaw(item, VariantAccess::BytesOf(value));
}

const Variant& AsVariant(const Variant& value) { return value; }
Variant AsVariant(const auto& value) { return value; }

template <class T>
std::int32_t AsLong(const T& value) {
    if constexpr (std::same_as<T, Variant>) {
        return ToLong(value);
    } else if constexpr (std::same_as<T, bool>) {
        return value ? -1 : 0;
    } else if constexpr (std::integral<T>) {
        return value;
    } else {
        return ToLong(Variant(value));
    }
}

bool Truth(bool value) { return value; }
bool Truth(const auto& value) { return ToBoolean(AsVariant(value)); }

// How one value of a format is written; each takes any element type or a Variant. AsItLies gives
// the bytes of an array that go out unchanged; Turned the elements of one whose bytes are only to
// be put most significant first.
struct WriteOneByOne {
    static View AsItLies(const Variant& /*array*/) { return {}; }
    static View Turned(const Variant& /*array*/) { return {}; }
};
template <VariantElement T>
View BytesOfElements(const Variant& array) {
    const auto elements = array.View<T>();
    return {reinterpret_cast<const std::uint8_t*>(elements.data()), elements.size_bytes()};
}

struct WriteBoolean : WriteOneByOne {
    static constexpr std::size_t kWidth = 1;
    void operator()(Output& out, const auto& value) const {
        out.PutByte(Truth(value) ? 0xFF : 0x00);
    }
};
struct WriteBinary : WriteOneByOne {
    static constexpr std::size_t kWidth = 1;
    static View AsItLies(const Variant& array) { return array.View<std::uint8_t>(); }
    void operator()(Output& out, const auto& value) const {
        out.PutByte(static_cast<std::uint8_t>(AsLong(value) & 0xFF));
    }
};
template <std::size_t Width>
struct WriteInteger : WriteOneByOne {
    static constexpr std::size_t kWidth = Width;
    static View AsItLies(const Variant& array) {
        if constexpr (Width == 1) return array.View<std::uint8_t>();
        return {};
    }
    static View Turned(const Variant& array) {
        if constexpr (Width == 2) return BytesOfElements<std::int16_t>(array);
        if constexpr (Width == 4) return BytesOfElements<std::int32_t>(array);
        return {};
    }
    void operator()(Output& out, const auto& value) const {
        out.PutNumber<Width>(static_cast<std::uint32_t>(AsLong(value)));
    }
};
template <std::size_t Width, bool Signed>
struct WriteWide : WriteOneByOne {
    static constexpr std::size_t kWidth = Width;
    static View AsItLies(const Variant& array) {
        constexpr auto kForm = Width == 4 ? VariantAccess::kUInt32
                               : Signed   ? VariantAccess::kInt64
                                          : VariantAccess::kUInt64;
        return VariantAccess::NumberBytes(array, kForm);
    }
    void operator()(Output& out, const auto& value) const {
        if (const PlainNumber plain = PlainWide<Width, Signed>(value); plain.IsOne()) {
            out.PutNumber<Width>(plain.Bits);
            return;
        }
        Decimal number = ToDecimal(AsVariant(value));
        const bool negative = Signed && number.IsNegative();
        if (negative) number = number.Negated();
        const std::span<std::uint8_t> place = out.PutZeros(Width);
        lDecToByte(number, place, static_cast<std::int16_t>(Width));
        if (negative) lToNInt(place);
    }
};
struct WriteSingle : WriteOneByOne {
    static constexpr std::size_t kWidth = 4;
    static View Turned(const Variant& array) { return BytesOfElements<float>(array); }
    void operator()(Output& out, float value) const {
        out.PutNumber<4>(std::bit_cast<std::uint32_t>(value));
    }
    void operator()(Output& out, const auto& value) const {
        (*this)(out, ToSingle(AsVariant(value)));
    }
};
struct WriteDouble : WriteOneByOne {
    static constexpr std::size_t kWidth = 8;
    static View Turned(const Variant& array) { return BytesOfElements<double>(array); }
    void operator()(Output& out, double value) const {
        out.PutNumber<8>(std::bit_cast<std::uint64_t>(value));
    }
    void operator()(Output& out, const auto& value) const {
        (*this)(out, ToDouble(AsVariant(value)));
    }
};

template <VariantElement T>
void WriteElements(Output& out, const Variant& array, auto write) {
    for (const auto& element : array.View<T>()) {
        if constexpr (std::same_as<T, bool>) {
            write(out, element != 0);
        } else {
            write(out, element);
        }
    }
}

void WriteElementsOfAnyKind(Output& out, const Variant& array, auto write) {
    switch (array.Kind()) {
        case VariantKind::ByteArray:
            return WriteElements<std::uint8_t>(out, array, write);
        case VariantKind::BooleanArray:
            return WriteElements<bool>(out, array, write);
        case VariantKind::IntegerArray:
            return WriteElements<std::int16_t>(out, array, write);
        case VariantKind::LongArray:
            return WriteElements<std::int32_t>(out, array, write);
        case VariantKind::SingleArray:
            return WriteElements<float>(out, array, write);
        case VariantKind::DoubleArray:
            return WriteElements<double>(out, array, write);
        case VariantKind::DecimalArray:
            return WriteElements<Decimal>(out, array, write);
        default:
            return WriteElements<Variant>(out, array, write);
    }
}

/// Arrays count from index 0: what lies below a higher lower bound goes out as zero bytes.
template <class Write>
void WriteArray(Output& out, SECSItem& item, const Variant& array, Write write) {
    const std::int32_t lowerBound = array.LowerBound();
    const std::int64_t count = std::int64_t{array.UpperBound()} + 1;
    const auto length = static_cast<std::size_t>(std::max<std::int64_t>(count, 0)) * Write::kWidth;
    WriteHead(out, item, item.Format(), length);
    if (lowerBound < 0) throw Fault(FaultNumber::SubscriptOutOfRange);
    const std::size_t start = out.Size();
    if (const View same = lowerBound == 0 ? Write::AsItLies(array) : View(); !same.empty()) {
        out.Put(same);
        Access::RawIsBytes(item);
        return;
    }
    out.PutZeros(static_cast<std::size_t>(lowerBound) * Write::kWidth);
    if (const View turned = Write::Turned(array); !turned.empty()) {
        std::uint8_t* const place = out.PutZeros(turned.size()).data();
        CopyBigEndian<Write::kWidth>(turned.data(), turned.size() / Write::kWidth, place);
    } else {
        WriteElementsOfAnyKind(out, array, write);
    }
    KeepRaw(out, item, start);
}

template <class Write>
void WriteValue(Output& out, SECSItem& item, const Variant& value, Write write) {
    if (value.IsArray()) {
        WriteArray(out, item, value, write);
        return;
    }
    WriteHead(out, item, item.Format(), Write::kWidth);
    const std::size_t start = out.Size();
    write(out, value);
    const std::uint8_t* const written = out.From(start).data();
    if constexpr (std::same_as<Write, WriteBoolean>) {
        Access::RawIsTruth(item, *written);
    } else if constexpr (std::same_as<Write, WriteBinary>) {
        Access::RawIsByte(item, *written);
    } else {
        Access::KeepRaw(item, VariantAccess::BytesOfNumber<Write::kWidth>(written));
    }
}

/// A value that needs no conversion; false when it does need one. Nobody is asked or told anything,
/// so the item keeps its value meanwhile.
bool WritePlain(Output& out, SECSItem& item) {
    const Variant& value = Access::Value(item);
    const std::int32_t format = item.Format();
    if (const PlainNumber number = PlainNumberOf(format, value); number.IsOne()) {
        const std::uint64_t head =
            static_cast<std::uint64_t>(format) << 10U | 1U << 8U | number.Width;
        if (number.Width < sizeof(number.Bits)) {
            out.PutLowBytes(head << (8 * number.Width) | number.Bits, 2 + number.Width);
        } else {
            out.PutNumber<2>(head);
            out.PutNumber<sizeof(number.Bits)>(number.Bits);
        }
        Access::NLB(item, 1);
        Access::Length(item, static_cast<std::int32_t>(number.Width));
        Access::RawIsNumber(item);
        return true;
    }
    if (format == FormatAscii && value.IsString()) {
        const std::string_view text = value.Text();
        WriteHead(out, item, format, text.size());
        out.Put({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
        if (!text.empty()) Access::RawIsBytes(item);
        return true;
    }
    if (format == FormatBoolean && value.Kind() == VariantKind::Boolean) {
        const std::uint8_t byte = value.AsBoolean() ? 0xFF : 0x00;
        WriteHead(out, item, format, sizeof(byte));
        out.PutByte(byte);
        Access::RawIsTruth(item, byte);
        return true;
    }
    return false;
}

bool HasNoValue(const Variant& value) { return value.IsEmpty() || value.IsNull(); }

/// Any other value, but no list. The value is copied: an error on the way may run a handler that
/// changes the item.
void WriteItem(Output& out, SECSItem& item) {
    const Variant value = Access::Value(item);
    const std::int32_t format = item.Format();
    const bool isText = format == FormatAscii || format == FormatVar;
    if (HasNoValue(value)) {
        WriteHead(out, item, isText ? static_cast<std::int32_t>(FormatAscii) : format, 0);
        return;
    }
    switch (format) {
        case FormatAscii:
            return WriteText(out, item, ToText(value));
        case FormatVar:
            return WriteText(out, item, AnyFormatText(value));
        case FormatBoolean:
            return WriteValue(out, item, value, WriteBoolean());
        case FormatBinary:
            return WriteValue(out, item, value, WriteBinary());
        case FormatI1:
        case FormatU1:
            return WriteValue(out, item, value, WriteInteger<1>());
        case FormatI2:
        case FormatU2:
            return WriteValue(out, item, value, WriteInteger<2>());
        case FormatI4:
            return WriteValue(out, item, value, WriteInteger<4>());
        case FormatI8:
            return WriteValue(out, item, value, WriteWide<8, true>());
        case FormatU4:
            return WriteValue(out, item, value, WriteWide<4, false>());
        case FormatU8:
            return WriteValue(out, item, value, WriteWide<8, false>());
        case FormatF4:
            return WriteValue(out, item, value, WriteSingle());
        default:  // F8; an item takes no other format.
            return WriteValue(out, item, value, WriteDouble());
    }
}

/// How many children ahead the machine is asked to fetch: a long list does not fit its caches.
constexpr std::size_t kAhead = 8;

/// The children of a list that are still to be written.
struct Step {
    std::shared_ptr<const Access::ChildList> Children;
    std::size_t Next = 0;
};

}  // namespace

void lBuildSECSMessage(std::vector<std::uint8_t>& bytes, const SECSItemPtr& item) {
    EncodedBytes out(bytes);
    std::vector<Step> steps;  // In place of the machine's stack: lists nest to any depth.
    const auto enter = [&](const SECSItemPtr& next) {
        RunFreeRoutine(kName, [&] {
            if (next == nullptr) throw Fault(FaultNumber::ObjectNotSet);
            if (next->Format() != FormatList) {
                if (!WritePlain(out, *next)) WriteItem(out, *next);
                return;
            }
            std::shared_ptr<const Access::ChildList> children = Access::AllItems(*next);
            WriteHead(out, *next, FormatList, children == nullptr ? 0 : children->size());
            if (children != nullptr) steps.push_back({std::move(children)});
        });
    };
    enter(item);
    while (!steps.empty()) {
        Step& step = steps.back();
        if (step.Next == step.Children->size()) {
            steps.pop_back();
        } else {
            // The list of children may move while it grows; the children themselves stay.
            const Access::ChildList& children = *step.Children;
            const SECSItemPtr& child = children[step.Next++];
            if (step.Next + kAhead < children.size())
                Access::Fetch(children[step.Next + kAhead].get());
            enter(child);
        }
    }
}

}  // namespace hexmire::detail
