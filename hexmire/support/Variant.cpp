#include <hexmire/support/Fault.h>
#include <hexmire/support/Variant.h>
#include <hexmire/support/detail/VariantBoxes.h>

#include <algorithm>
#include <limits>
#include <utility>

namespace hexmire {

using Access = detail::VariantAccess;

namespace {

constexpr auto kMostElements = static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max());

std::span<const std::uint8_t> BytesOfText(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

}  // namespace

// --- Boxes ---------------------------------------------------------------------------------------

void Variant::Retain() const noexcept { Load<const Box*>()->Retain(); }

void Variant::Release() noexcept { Load<const Box*>()->Release(); }

const Variant::Memory* Variant::MemoryOf(Tag tag) const noexcept {
    return held_.What() == tag ? static_cast<const Memory*>(Load<const Box*>()) : nullptr;
}

const Variant::NumberMemory* Variant::NumbersOf() const noexcept {
    return held_.What() == Tag::Numbers ? static_cast<const NumberMemory*>(Load<const Box*>())
                                        : nullptr;
}

const Variant::ArrayBox* Variant::ArrayOf() const noexcept {
    return held_.What() == Tag::Array ? static_cast<const ArrayBox*>(Load<const Box*>()) : nullptr;
}

const Variant::ObjectBox* Variant::ObjectBoxOf() const noexcept {
    return held_.What() == Tag::Object ? static_cast<const ObjectBox*>(Load<const Box*>())
                                       : nullptr;
}

// --- Making --------------------------------------------------------------------------------------

Variant::Variant(std::string_view text) {
    const std::span<const std::uint8_t> bytes = BytesOfText(text);
    if (bytes.size() <= kShortBytes) {
        *this = Variant(Tag::ShortText, bytes);
        return;
    }
    auto* memory = Access::OwnMemory::Make(bytes.size());
    std::copy(bytes.begin(), bytes.end(), memory->Place());
    *this = Access::Holding(Tag::LongText, memory);
}

Variant::Variant(std::string&& text) {
    if (text.size() <= kShortBytes) {
        *this = Variant(Tag::ShortText, BytesOfText(text));
    } else {
        *this =
            Access::Holding(Tag::LongText, new Access::TakenMemory<std::string>(std::move(text)));
    }
}

Variant Variant::Null() noexcept { return Variant(Held(Tag::Null)); }

template <VariantElement T>
Variant Variant::Array(std::vector<T> elements, std::int32_t lowerBound) {
    if (elements.size() > kMostElements) throw Fault(FaultNumber::OutOfMemory);
    if constexpr (std::same_as<T, std::uint8_t>) {
        if (lowerBound == 0) {
            if (elements.size() <= kShortBytes) return Bytes(elements);
            using Taken = Access::TakenMemory<std::vector<std::uint8_t>>;
            return Access::Holding(Tag::LongBytes, new Taken(std::move(elements)));
        }
    }
    const auto make = [lowerBound](ArrayBox::Elements held) {
        return Access::Holding(Tag::Array, new ArrayBox(std::move(held), lowerBound));
    };
    if constexpr (std::same_as<T, bool>) {
        return make(ArrayBox::Booleans{{elements.begin(), elements.end()}});
    } else {
        return make(std::move(elements));
    }
}

template Variant Variant::Array(std::vector<std::uint8_t>, std::int32_t);
template Variant Variant::Array(std::vector<bool>, std::int32_t);
template Variant Variant::Array(std::vector<std::int16_t>, std::int32_t);
template Variant Variant::Array(std::vector<std::int32_t>, std::int32_t);
template Variant Variant::Array(std::vector<float>, std::int32_t);
template Variant Variant::Array(std::vector<double>, std::int32_t);
template Variant Variant::Array(std::vector<Decimal>, std::int32_t);
template Variant Variant::Array(std::vector<Variant>, std::int32_t);

Variant Variant::LongBytes(std::span<const std::uint8_t> bytes) {
    if (bytes.size() > kMostElements) throw Fault(FaultNumber::OutOfMemory);
    auto* memory = Access::OwnMemory::Make(bytes.size());
    std::copy(bytes.begin(), bytes.end(), memory->Place());
    return Access::Holding(Tag::LongBytes, memory);
}

Variant Variant::FromObject(std::shared_ptr<void> object, const std::type_info& type) {
    return Access::Holding(Tag::Object, new ObjectBox(std::move(object), type));
}

// --- Reading -------------------------------------------------------------------------------------

std::shared_ptr<void> Variant::ObjectOf(const std::type_info& type) const {
    const ObjectBox* box = ObjectBoxOf();
    return box != nullptr && box->Type == type ? box->Object : nullptr;
}

bool Variant::IsNothing() const noexcept {
    const ObjectBox* box = ObjectBoxOf();
    return box != nullptr && box->Object == nullptr;
}

VariantKind Variant::KindOfArray() const noexcept {
    using enum VariantKind;
    // In the order of ArrayBox::Elements.
    static constexpr std::array kArrays{ByteArray,
                                        BooleanArray,
                                        IntegerArray,
                                        LongArray,
                                        SingleArray,
                                        DoubleArray,
                                        DecimalArray,
                                        VariantArray};
    return kArrays[ArrayOf()->Held.index()];
}

std::int32_t Variant::LowerBound() const {
    if (const ArrayBox* box = ArrayOf(); box != nullptr) return box->LowerBound;
    if (IsArray()) return 0;
    throw Fault(FaultNumber::TypeMismatch);
}

std::int32_t Variant::UpperBound() const {
    return static_cast<std::int32_t>(LowerBound() + static_cast<std::int64_t>(ElementCount()) - 1);
}

std::size_t Variant::ElementCount() const {
    if (held_.What() == Tag::ShortBytes) return held_.Size();
    if (const Memory* memory = MemoryOf(Tag::LongBytes); memory != nullptr) return memory->Size;
    if (const NumberMemory* numbers = NumbersOf(); numbers != nullptr) return numbers->Count();
    if (const ArrayBox* box = ArrayOf(); box != nullptr) return box->Size();
    throw Fault(FaultNumber::TypeMismatch);
}

Variant Variant::Element(std::int32_t index) const {
    const std::int64_t offset = static_cast<std::int64_t>(index) - LowerBound();
    if (offset < 0 || offset >= static_cast<std::int64_t>(ElementCount())) {
        throw Fault(FaultNumber::SubscriptOutOfRange);
    }
    const auto position = static_cast<std::size_t>(offset);
    if (const NumberMemory* numbers = NumbersOf(); numbers != nullptr) return numbers->At(position);
    const ArrayBox* box = ArrayOf();
    if (box == nullptr) return View<std::uint8_t>()[position];
    return std::visit(
        [position](const auto& held) -> Variant {
            if constexpr (std::same_as<std::decay_t<decltype(held)>, ArrayBox::Booleans>) {
                return held.Values[position] != 0;
            } else {
                return held[position];
            }
        },
        box->Held);
}

template <VariantElement T>
auto Variant::View() const
    -> std::span<const std::conditional_t<std::same_as<T, bool>, std::uint8_t, T>> {
    if constexpr (std::same_as<T, std::uint8_t>) {
        if (held_.What() == Tag::ShortBytes) return {held_.Data(), held_.Size()};
        if (const Memory* memory = MemoryOf(Tag::LongBytes); memory != nullptr) {
            return memory->Bytes();
        }
    } else if constexpr (std::same_as<T, hexmire::Decimal>) {
        if (const NumberMemory* numbers = NumbersOf(); numbers != nullptr) {
            return numbers->Decimals();
        }
    }
    const ArrayBox* box = ArrayOf();
    if (box == nullptr) return {};
    if constexpr (std::same_as<T, bool>) {
        const auto* held = std::get_if<ArrayBox::Booleans>(&box->Held);
        if (held != nullptr) return held->Values;
    } else {
        const auto* held = std::get_if<std::vector<T>>(&box->Held);
        if (held != nullptr) return *held;
    }
    return {};
}

template std::span<const std::uint8_t> Variant::View<std::uint8_t>() const;
template std::span<const std::uint8_t> Variant::View<bool>() const;
template std::span<const std::int16_t> Variant::View<std::int16_t>() const;
template std::span<const std::int32_t> Variant::View<std::int32_t>() const;
template std::span<const float> Variant::View<float>() const;
template std::span<const double> Variant::View<double>() const;
template std::span<const Decimal> Variant::View<Decimal>() const;
template std::span<const Variant> Variant::View<Variant>() const;

std::string_view Variant::Text() const noexcept {
    const std::uint8_t* data = held_.Data();
    std::size_t size = held_.Size();
    if (const Memory* memory = MemoryOf(Tag::LongText); memory != nullptr) {
        data = memory->Data;
        size = memory->Size;
    } else if (held_.What() != Tag::ShortText) {
        return {};
    }
    return {reinterpret_cast<const char*>(data), size};
}

bool operator==(const Variant& left, const Variant& right) noexcept {
    using enum VariantKind;
    const VariantKind kind = left.Kind();
    if (kind != right.Kind()) return false;
    switch (kind) {
        case Empty:
        case Null:
            return true;
        case Byte:
            return left.AsByte() == right.AsByte();
        case Integer:
            return left.AsInteger() == right.AsInteger();
        case Long:
            return left.AsLong() == right.AsLong();
        case Single:
            return left.AsSingle() == right.AsSingle();
        case Double:
            return left.AsDouble() == right.AsDouble();
        case Boolean:
            return left.AsBoolean() == right.AsBoolean();
        case String:
            return left.Text() == right.Text();
        case VariantKind::Decimal:
            return left.AsDecimal() == right.AsDecimal();
        case VariantKind::Object: {
            return left.ObjectBoxOf()->Object == right.ObjectBoxOf()->Object;
        }
        default:
            break;
    }
    if (left.LowerBound() != right.LowerBound()) return false;
    const auto same = [](const auto& a, const auto& b) {
        return std::equal(a.begin(), a.end(), b.begin(), b.end());
    };
    switch (kind) {
        case ByteArray:
            return same(left.View<std::uint8_t>(), right.View<std::uint8_t>());
        case BooleanArray:
            return same(left.View<bool>(), right.View<bool>());
        case IntegerArray:
            return same(left.View<std::int16_t>(), right.View<std::int16_t>());
        case LongArray:
            return same(left.View<std::int32_t>(), right.View<std::int32_t>());
        case SingleArray:
            return same(left.View<float>(), right.View<float>());
        case DoubleArray:
            return same(left.View<double>(), right.View<double>());
        case DecimalArray:
            return same(left.View<hexmire::Decimal>(), right.View<hexmire::Decimal>());
        default:
            return same(left.View<Variant>(), right.View<Variant>());
    }
}

}  // namespace hexmire
