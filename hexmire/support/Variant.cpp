#include <hexmire/support/Fault.h>
#include <hexmire/support/Variant.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <utility>

namespace hexmire {

struct Variant::ArrayBox {
    std::int32_t LowerBound = 0;
    std::variant<std::vector<std::uint8_t>,
                 BooleanElements,
                 std::vector<std::int16_t>,
                 std::vector<std::int32_t>,
                 std::vector<float>,
                 std::vector<double>,
                 std::vector<Decimal>,
                 std::vector<Variant>>
        Elements;

    [[nodiscard]] std::size_t Size() const noexcept {
        return std::visit([](const auto& held) { return SizeOf(held); }, Elements);
    }

private:
    template <class T>
    static std::size_t SizeOf(const std::vector<T>& held) noexcept {
        return held.size();
    }
    static std::size_t SizeOf(const BooleanElements& held) noexcept { return held.Values.size(); }
};

struct Variant::ObjectBox {
    std::shared_ptr<void> Object;
    const std::type_info* Type = nullptr;
};

Variant::Variant(std::string_view text) {
    if (text.size() <= std::tuple_size_v<decltype(Inline<TextTag>::Data)>) {
        auto& held = value_.emplace<Inline<TextTag>>();
        held.Size = static_cast<std::uint8_t>(text.size());
        std::copy(text.begin(), text.end(), held.Data.begin());
    } else {
        value_ = std::make_shared<const std::string>(text);
    }
}

Variant::Variant(std::string&& text) {
    if (text.size() <= std::tuple_size_v<decltype(Inline<TextTag>::Data)>) {
        *this = Variant(std::string_view(text));
    } else {
        value_ = std::make_shared<const std::string>(std::move(text));
    }
}

Variant Variant::Null() noexcept {
    Variant result;
    result.value_ = NullTag{};
    return result;
}

template <VariantElement T>
Variant Variant::Array(std::vector<T> elements, std::int32_t lowerBound) {
    if (elements.size() > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) {
        throw Fault(FaultNumber::OutOfMemory);
    }
    if constexpr (std::same_as<T, std::uint8_t>) {
        if (lowerBound == 0 && elements.size() <= 15) return Bytes(elements);
    }
    auto box = std::make_shared<ArrayBox>();
    box->LowerBound = lowerBound;
    if constexpr (std::same_as<T, bool>) {
        box->Elements = BooleanElements{{elements.begin(), elements.end()}};
    } else {
        box->Elements = std::move(elements);
    }
    Variant result;
    result.value_ = std::shared_ptr<const ArrayBox>(std::move(box));
    return result;
}

template Variant Variant::Array(std::vector<std::uint8_t>, std::int32_t);
template Variant Variant::Array(std::vector<bool>, std::int32_t);
template Variant Variant::Array(std::vector<std::int16_t>, std::int32_t);
template Variant Variant::Array(std::vector<std::int32_t>, std::int32_t);
template Variant Variant::Array(std::vector<float>, std::int32_t);
template Variant Variant::Array(std::vector<double>, std::int32_t);
template Variant Variant::Array(std::vector<Decimal>, std::int32_t);
template Variant Variant::Array(std::vector<Variant>, std::int32_t);

Variant Variant::Bytes(std::span<const std::uint8_t> bytes) {
    Variant result;
    if (bytes.size() <= 15) {
        auto& held = result.value_.emplace<Inline<BytesTag>>();
        held.Size = static_cast<std::uint8_t>(bytes.size());
        std::copy(bytes.begin(), bytes.end(), held.Data.begin());
        return result;
    }
    return Array(std::vector<std::uint8_t>(bytes.begin(), bytes.end()));
}

Variant Variant::FromObject(std::shared_ptr<void> object, const std::type_info& type) {
    Variant result;
    result.value_ = std::make_shared<const ObjectBox>(ObjectBox{std::move(object), &type});
    return result;
}

std::shared_ptr<void> Variant::ObjectOf(const std::type_info& type) const {
    const auto* box = std::get_if<std::shared_ptr<const ObjectBox>>(&value_);
    return box != nullptr && *(*box)->Type == type ? (*box)->Object : nullptr;
}

bool Variant::IsNothing() const noexcept {
    const auto* box = std::get_if<std::shared_ptr<const ObjectBox>>(&value_);
    return box != nullptr && (*box)->Object == nullptr;
}

const Variant::ArrayBox* Variant::Box() const noexcept {
    const auto* box = std::get_if<std::shared_ptr<const ArrayBox>>(&value_);
    return box == nullptr ? nullptr : box->get();
}

VariantKind Variant::Kind() const noexcept {
    using enum VariantKind;
    // In the order of Storage; the array row is refined below.
    static constexpr std::array kKinds{Empty,
                                       Null,
                                       Byte,
                                       Integer,
                                       Long,
                                       Single,
                                       Double,
                                       Boolean,
                                       VariantKind::Decimal,
                                       String,
                                       String,
                                       ByteArray,
                                       ByteArray,
                                       VariantKind::Object};
    static constexpr std::array kArrays{ByteArray,
                                        BooleanArray,
                                        IntegerArray,
                                        LongArray,
                                        SingleArray,
                                        DoubleArray,
                                        DecimalArray,
                                        VariantArray};
    const ArrayBox* box = Box();
    return box == nullptr ? kKinds[value_.index()] : kArrays[box->Elements.index()];
}

std::int32_t Variant::LowerBound() const {
    if (const ArrayBox* box = Box(); box != nullptr) return box->LowerBound;
    if (std::holds_alternative<Inline<BytesTag>>(value_)) return 0;
    throw Fault(FaultNumber::TypeMismatch);
}

std::int32_t Variant::UpperBound() const {
    return static_cast<std::int32_t>(LowerBound() + static_cast<std::int64_t>(ElementCount()) - 1);
}

std::size_t Variant::ElementCount() const {
    if (const auto* held = std::get_if<Inline<BytesTag>>(&value_); held != nullptr) {
        return held->Size;
    }
    if (const ArrayBox* box = Box(); box != nullptr) return box->Size();
    throw Fault(FaultNumber::TypeMismatch);
}

Variant Variant::Element(std::int32_t index) const {
    const std::int64_t offset = static_cast<std::int64_t>(index) - LowerBound();
    if (offset < 0 || offset >= static_cast<std::int64_t>(ElementCount())) {
        throw Fault(FaultNumber::SubscriptOutOfRange);
    }
    const auto position = static_cast<std::size_t>(offset);
    if (const auto* held = std::get_if<Inline<BytesTag>>(&value_); held != nullptr) {
        return held->Data[position];
    }
    return std::visit(
        [position](const auto& held) -> Variant {
            if constexpr (std::same_as<std::decay_t<decltype(held)>, BooleanElements>) {
                return held.Values[position] != 0;
            } else {
                return held[position];
            }
        },
        Box()->Elements);
}

template <VariantElement T>
auto Variant::View() const noexcept
    -> std::span<const std::conditional_t<std::same_as<T, bool>, std::uint8_t, T>> {
    if constexpr (std::same_as<T, std::uint8_t>) {
        if (const auto* held = std::get_if<Inline<BytesTag>>(&value_); held != nullptr) {
            return {held->Data.data(), held->Size};
        }
    }
    const ArrayBox* box = Box();
    if (box == nullptr) return {};
    if constexpr (std::same_as<T, bool>) {
        const auto* held = std::get_if<BooleanElements>(&box->Elements);
        if (held != nullptr) return held->Values;
    } else {
        const auto* held = std::get_if<std::vector<T>>(&box->Elements);
        if (held != nullptr) return *held;
    }
    return {};
}

template std::span<const std::uint8_t> Variant::View<std::uint8_t>() const noexcept;
template std::span<const std::uint8_t> Variant::View<bool>() const noexcept;
template std::span<const std::int16_t> Variant::View<std::int16_t>() const noexcept;
template std::span<const std::int32_t> Variant::View<std::int32_t>() const noexcept;
template std::span<const float> Variant::View<float>() const noexcept;
template std::span<const double> Variant::View<double>() const noexcept;
template std::span<const Decimal> Variant::View<Decimal>() const noexcept;
template std::span<const Variant> Variant::View<Variant>() const noexcept;

std::string_view Variant::Text() const noexcept {
    if (const auto* held = std::get_if<Inline<TextTag>>(&value_); held != nullptr) {
        return {reinterpret_cast<const char*>(held->Data.data()), held->Size};
    }
    const auto* boxed = std::get_if<std::shared_ptr<const std::string>>(&value_);
    return boxed == nullptr ? std::string_view() : std::string_view(**boxed);
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
            using Ref = std::shared_ptr<const Variant::ObjectBox>;
            return std::get<Ref>(left.value_)->Object == std::get<Ref>(right.value_)->Object;
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
