#include <hexmire/core/ModGeneral.h>
#include <hexmire/core/detail/EncodedBytes.h>
#include <hexmire/core/detail/Encoder.h>
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
#include <cmath>
#include <concepts>
#include <cstddef>
#include <cstdlib>
#include <optional>
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
    Access::Raw(item, Variant::Bytes(out.From(start)));
}

void WriteText(Output& out, SECSItem& item, const Variant& value) {
    const std::string_view text = value.Text();
    WriteHead(out, item, FormatAscii, text.size());
    out.Put({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
    if (!text.empty()) Access::Raw(item, VariantAccess::BytesOf(value));
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

/// The low bytes of a whole number that its wide format holds, so that no decimal is needed to make
/// them; none for anything else.
template <std::size_t Width, bool Signed>
std::optional<std::uint64_t> BitsOf(std::uint64_t magnitude, bool negative) {
    constexpr std::uint64_t kLargest = ~std::uint64_t{0} >> (64 - Width * 8);
    if (magnitude > kLargest || (negative && !Signed)) return std::nullopt;
    return negative ? 0 - magnitude : magnitude;
}

template <std::size_t Width, bool Signed, class T>
std::optional<std::uint64_t> PlainBits(const T& value) {
    if constexpr (std::same_as<T, Decimal>) {
        if (!value.IsWhole() || value.MantissaHigh() != 0) return std::nullopt;
        return BitsOf<Width, Signed>(value.MantissaLow(), value.IsNegative());
    } else if constexpr (std::integral<T> && !std::same_as<T, bool>) {
        const auto magnitude = static_cast<std::uint64_t>(std::abs(std::int64_t{value}));
        return BitsOf<Width, Signed>(magnitude, value < 0);
    } else if constexpr (std::floating_point<T>) {
        constexpr double kExact = 9007199254740992.0;  // 2^53
        const auto wide = static_cast<double>(value);
        if (!(std::abs(wide) <= kExact) || std::trunc(wide) != wide) return std::nullopt;
        return BitsOf<Width, Signed>(static_cast<std::uint64_t>(std::abs(wide)), wide < 0);
    } else if constexpr (std::same_as<T, Variant>) {
        switch (value.Kind()) {
            case VariantKind::Decimal:
                return PlainBits<Width, Signed>(value.AsDecimal());
            case VariantKind::Long:
                return PlainBits<Width, Signed>(value.AsLong());
            case VariantKind::Integer:
                return PlainBits<Width, Signed>(value.AsInteger());
            default:
                return std::nullopt;
        }
    } else {
        return std::nullopt;
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
        if (const auto bits = PlainBits<Width, Signed>(value); bits) {
            out.PutNumber<Width>(*bits);
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
        Access::Raw(item, VariantAccess::BytesOf(array));
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
        Access::Raw(item, std::int16_t{*written});
    } else if constexpr (std::same_as<Write, WriteBinary>) {
        Access::Raw(item, *written);
    } else {
        Access::Raw(item, VariantAccess::BytesOfNumber<Write::kWidth>(written));
    }
}

bool HasNoValue(const Variant& value) { return value.IsEmpty() || value.IsNull(); }

/// Anything but a list. The value is copied: an error on the way may run a handler that changes the
/// item.
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
            return WriteText(out, item, value.IsString() ? value : ToText(value));
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
                WriteItem(out, *next);
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
            const SECSItemPtr& child = (*step.Children)[step.Next++];
            enter(child);
        }
    }
}

}  // namespace hexmire::detail
