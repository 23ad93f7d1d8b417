#include <hexmire/support/ByteOrder.h>
#include <hexmire/support/Conversion.h>
#include <hexmire/support/Fault.h>
#include <hexmire/support/Variant.h>
#include <hexmire/support/detail/VariantBoxes.h>

#include <bit>
#include <cstddef>
#include <limits>
#include <memory>

/// Arrays of whole numbers beyond 32 bits signed: bytes first, Decimals when they are asked for.
namespace hexmire {

using Access = detail::VariantAccess;

namespace {

template <WideInteger T>
constexpr auto FormOf() {
    if constexpr (std::same_as<T, std::uint32_t>) {
        return Access::kUInt32;
    } else if constexpr (std::same_as<T, std::uint64_t>) {
        return Access::kUInt64;
    } else {
        return Access::kInt64;
    }
}

}  // namespace

// --- Making --------------------------------------------------------------------------------------

template <WideInteger T>
Variant Variant::Decimals(std::span<const T> numbers) {
    if (numbers.size() > std::size_t{std::numeric_limits<std::int32_t>::max()}) {
        throw Fault(FaultNumber::OutOfMemory);
    }
    const std::size_t size = numbers.size() * sizeof(T);
    auto* memory = Access::OwnMemory::Make(size);
    const Variant holder = Access::Holding(Tag::LongBytes, memory);  // until the numbers hold it
    CopyBigEndian<sizeof(T)>(
        reinterpret_cast<const std::uint8_t*>(numbers.data()), numbers.size(), memory->Place());
    return Access::Holding(Tag::Numbers, new NumberMemory(*memory, memory->Bytes(), FormOf<T>()));
}

template Variant Variant::Decimals(std::span<const std::uint32_t>);
template Variant Variant::Decimals(std::span<const std::int64_t>);
template Variant Variant::Decimals(std::span<const std::uint64_t>);

// --- Decimals ------------------------------------------------------------------------------------

Decimal Variant::NumberMemory::At(std::size_t position) const noexcept {
    switch (Form) {
        case NumberForm::UInt32:
            return Decimal::FromUInt64(ReadBigEndian<4>(Data + position * 4));
        case NumberForm::UInt64:
            return Decimal::FromUInt64(ReadBigEndian<8>(Data + position * 8));
        case NumberForm::Int64:
            break;
    }
    return Decimal::FromInt64(std::bit_cast<std::int64_t>(ReadBigEndian<8>(Data + position * 8)));
}

std::span<const Decimal> Variant::NumberMemory::Decimals() const {
    const std::vector<Decimal>* made = decimals_.load(std::memory_order_acquire);
    if (made == nullptr) {
        auto values = std::make_unique<std::vector<Decimal>>(Count());
        for (std::size_t position = 0; position < values->size(); ++position)
            (*values)[position] = At(position);
        // Another thread may have made them meanwhile: the first ones stay.
        if (decimals_.compare_exchange_strong(made, values.get(), std::memory_order_acq_rel)) {
            made = values.release();
        }
    }
    return *made;
}

// --- Reading -------------------------------------------------------------------------------------

namespace {

template <NumberElement T>
T Number(const Variant& value) {
    if constexpr (std::same_as<T, double>) {
        return ToDouble(value);
    } else if constexpr (std::same_as<T, float>) {
        return ToSingle(value);
    } else if constexpr (std::same_as<T, std::int32_t>) {
        return ToLong(value);
    } else if constexpr (std::same_as<T, std::int64_t>) {
        return ToDecimal(value).ToInt64();
    } else {
        const Decimal decimal = ToDecimal(value);
        if (decimal.IsWhole() && !decimal.IsNegative() && decimal.MantissaHigh() == 0 &&
            decimal.MantissaLow() <= std::numeric_limits<T>::max()) {
            return static_cast<T>(decimal.MantissaLow());
        }
        const std::int64_t rounded = decimal.ToInt64();
        if (rounded < 0 || static_cast<std::uint64_t>(rounded) > std::numeric_limits<T>::max()) {
            throw Fault(FaultNumber::Overflow);
        }
        return static_cast<T>(rounded);
    }
}

}  // namespace

template <NumberElement T>
std::vector<T> Variant::Numbers() const {
    if (!IsArray()) return {Number<T>(*this)};
    if constexpr (WideInteger<T>) {
        const std::span<const std::uint8_t> bytes = Access::NumberBytes(*this, FormOf<T>());
        if (!bytes.empty()) {
            std::vector<T> numbers(bytes.size() / sizeof(T));
            CopyBigEndian<sizeof(T)>(
                bytes.data(), numbers.size(), reinterpret_cast<std::uint8_t*>(numbers.data()));
            return numbers;
        }
    } else {
        const std::span<const T> same = View<T>();
        if (!same.empty()) return {same.begin(), same.end()};
    }
    std::vector<T> numbers;
    numbers.reserve(ElementCount());
    const std::int32_t first = LowerBound();
    for (std::size_t position = 0; position < ElementCount(); ++position) {
        numbers.push_back(Number<T>(Element(first + static_cast<std::int32_t>(position))));
    }
    return numbers;
}

template std::vector<std::int32_t> Variant::Numbers() const;
template std::vector<std::uint32_t> Variant::Numbers() const;
template std::vector<std::int64_t> Variant::Numbers() const;
template std::vector<std::uint64_t> Variant::Numbers() const;
template std::vector<float> Variant::Numbers() const;
template std::vector<double> Variant::Numbers() const;

// --- Sharing -------------------------------------------------------------------------------------

namespace detail {

/// The box that owns the bytes of `whole`, when sharing them is worth it.
const Variant::Memory* VariantAccess::Share(const Variant& whole,
                                            std::span<const std::uint8_t> part) {
    const Memory* memory = whole.MemoryOf(Variant::Tag::LongBytes);
    return memory != nullptr && part.size() >= memory->Size / 2 ? memory : nullptr;
}

Variant VariantAccess::BytesWithin(const Variant& whole, std::span<const std::uint8_t> part) {
    const Memory* memory = part.size() <= Variant::kShortBytes ? nullptr : Share(whole, part);
    if (memory == nullptr) return Variant::Bytes(part);
    return Holding(Variant::Tag::LongBytes, new PartMemory(*memory, part));
}

Variant VariantAccess::TextWithin(const Variant& whole, std::span<const std::uint8_t> part) {
    const Memory* memory = part.size() <= Variant::kShortBytes ? nullptr : Share(whole, part);
    if (memory == nullptr) {
        return std::string_view(reinterpret_cast<const char*>(part.data()), part.size());
    }
    return Holding(Variant::Tag::LongText, new PartMemory(*memory, part));
}

Variant VariantAccess::NumbersWithin(const Variant& whole,
                                     std::span<const std::uint8_t> part,
                                     NumberForm form) {
    using Tag = Variant::Tag;
    if (const Memory* memory = Share(whole, part); memory != nullptr) {
        return Holding(Tag::Numbers, new Variant::NumberMemory(*memory, part, form));
    }
    auto* memory = OwnMemory::Make(part.size());
    const Variant holder = Holding(Tag::LongBytes, memory);  // until the numbers hold it
    std::copy(part.begin(), part.end(), memory->Place());
    return Holding(Tag::Numbers, new Variant::NumberMemory(*memory, memory->Bytes(), form));
}

Variant VariantAccess::BytesOf(const Variant& value) {
    using Tag = Variant::Tag;
    for (const Tag tag : {Tag::LongText, Tag::LongBytes, Tag::Numbers}) {
        if (const Memory* memory = value.MemoryOf(tag); memory != nullptr) {
            if (memory->Size <= Variant::kShortBytes) return Variant::Bytes(memory->Bytes());
            return Holding(Tag::LongBytes, new PartMemory(*memory, memory->Bytes()));
        }
    }
    return {Variant::Tag::ShortBytes, {value.held_.Data(), value.held_.Size()}};
}

std::span<const std::uint8_t> VariantAccess::NumberBytes(const Variant& value,
                                                         NumberForm form) noexcept {
    const Variant::NumberMemory* numbers = value.NumbersOf();
    return numbers != nullptr && numbers->Form == form ? numbers->Bytes()
                                                       : std::span<const std::uint8_t>();
}

Variant VariantAccess::Booleans(std::vector<std::uint8_t> values) {
    return Holding(Variant::Tag::Array,
                   new Variant::ArrayBox(Variant::ArrayBox::Booleans{std::move(values)}, 0));
}

}  // namespace detail

}  // namespace hexmire
