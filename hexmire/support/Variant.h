#pragma once

#include <hexmire/support/Decimal.h>

#include <array>
#include <concepts>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <typeinfo>
#include <variant>
#include <vector>

namespace hexmire {

/// Kinds of a Variant.
enum class VariantKind : std::uint8_t {
    Empty,
    Null,
    Byte,     ///< unsigned 8-bit
    Integer,  ///< signed 16-bit
    Long,     ///< signed 32-bit
    Single,   ///< IEEE 754 32-bit
    Double,   ///< IEEE 754 64-bit
    Boolean,
    String,   ///< byte string, one byte a character (ISO 8859-1)
    Decimal,  ///< 96-bit whole mantissa, sign, scale 0..28
    Object,   ///< reference to a shared object
    ByteArray,
    BooleanArray,
    IntegerArray,
    LongArray,
    SingleArray,
    DoubleArray,
    DecimalArray,
    VariantArray,
};

class Variant;

/// The eight element types that an array can have. Booleans lie as one byte each, 0 or 1.
template <class T>
concept VariantElement = std::same_as<T, std::uint8_t> || std::same_as<T, bool> ||
    std::same_as<T, std::int16_t> || std::same_as<T, std::int32_t> || std::same_as<T, float> ||
    std::same_as<T, double> || std::same_as<T, Decimal> || std::same_as<T, Variant>;

/// The integers that are numbers: neither a truth value nor a character.
template <class T>
concept VariantInteger = std::integral<T> && !std::same_as<T, bool> && !std::same_as<T, char> &&
                         !std::same_as<T, wchar_t> && !std::same_as<T, char8_t> &&
                         !std::same_as<T, char16_t> && !std::same_as<T, char32_t>;

/// What a pointer points to when it is no text.
template <class T>
concept NoCharacter = !std::same_as<std::remove_cv_t<T>, char>;

/// A tagged value: what item values, raw bytes and several arguments travel in. It is a value:
/// copies are independent (long texts and arrays are shared unseen, for none can be changed in
/// place).
///
/// C++ numbers take these kinds: bool Boolean, uint8_t Byte, int8_t and int16_t Integer, int32_t
/// and uint16_t Long, uint32_t and 64-bit integers Decimal, float Single, double Double; texts
/// String.
class Variant {
public:
    // The conversions are implicit on purpose: a value is given as it is, item->Value(5).
    // NOLINTBEGIN(google-explicit-constructor)
    Variant() noexcept = default;  ///< Empty
    template <std::same_as<bool> T>
    Variant(T value) noexcept : value_(Truth{value}) {}
    template <VariantInteger T>
    Variant(T value) noexcept : value_(FromInteger(value)) {}
    Variant(float value) noexcept : value_(value) {}
    Variant(double value) noexcept : value_(value) {}
    Variant(const Decimal& value) noexcept : value_(value) {}
    Variant(std::string_view text);
    Variant(std::string&& text);
    Variant(const std::string& text) : Variant(std::string_view(text)) {}
    /// No text at all reads as the empty one.
    Variant(const char* text) : Variant(std::string_view(text == nullptr ? "" : text)) {}
    template <VariantElement T>
    Variant(std::vector<T> elements) : Variant(Array(std::move(elements))) {}
    /// An object reference; a null pointer is an object reference that refers to nothing.
    template <class T>
    Variant(std::shared_ptr<T> object)
        : Variant(FromObject(std::static_pointer_cast<void>(std::move(object)), typeid(T))) {}
    // NOLINTEND(google-explicit-constructor)
    /// A pointer is never a Boolean.
    template <NoCharacter T>
    Variant(T* pointer) = delete;
    Variant(std::nullptr_t) = delete;

    [[nodiscard]] static Variant Null() noexcept;
    /// An array with the given lower bound (0 unless stated). An empty array has the upper bound
    /// lowerBound - 1 and is not the Empty value.
    template <VariantElement T>
    [[nodiscard]] static Variant Array(std::vector<T> elements, std::int32_t lowerBound = 0);
    /// An array of Byte holding a copy of the bytes, lower bound 0.
    [[nodiscard]] static Variant Bytes(std::span<const std::uint8_t> bytes);

    [[nodiscard]] VariantKind Kind() const noexcept;
    [[nodiscard]] bool IsEmpty() const noexcept { return value_.index() == 0; }
    [[nodiscard]] bool IsNull() const noexcept { return Kind() == VariantKind::Null; }
    [[nodiscard]] bool IsArray() const noexcept { return Kind() >= VariantKind::ByteArray; }
    [[nodiscard]] bool IsString() const noexcept { return Kind() == VariantKind::String; }
    [[nodiscard]] bool IsObject() const noexcept { return Kind() == VariantKind::Object; }
    /// True for an object reference that refers to nothing.
    [[nodiscard]] bool IsNothing() const noexcept;

    /// Bounds of an array; fault 13 for anything else.
    [[nodiscard]] std::int32_t LowerBound() const;
    [[nodiscard]] std::int32_t UpperBound() const;
    /// Number of elements that an array holds; fault 13 for anything else.
    [[nodiscard]] std::size_t ElementCount() const;
    /// One element by its index, LowerBound() to UpperBound(); fault 9 outside, 13 for no array.
    [[nodiscard]] Variant Element(std::int32_t index) const;

    /// The elements of an array of T (bool as bytes 0 and 1), the view living as long as this
    /// value; empty for any other kind.
    template <VariantElement T>
    [[nodiscard]] auto View() const noexcept
        -> std::span<const std::conditional_t<std::same_as<T, bool>, std::uint8_t, T>>;

    /// The characters of a String, living as long as this value; empty for any other kind.
    [[nodiscard]] std::string_view Text() const noexcept;

    /// The object that this value refers to when it was stored as a shared_ptr<T>; otherwise none.
    template <class T>
    [[nodiscard]] std::shared_ptr<T> Object() const {
        return std::static_pointer_cast<T>(ObjectOf(typeid(T)));
    }

    // Scalars of the kind named, unconverted; 0 or false for any other kind.
    [[nodiscard]] std::uint8_t AsByte() const noexcept { return Get<std::uint8_t>(); }
    [[nodiscard]] std::int16_t AsInteger() const noexcept { return Get<std::int16_t>(); }
    [[nodiscard]] std::int32_t AsLong() const noexcept { return Get<std::int32_t>(); }
    [[nodiscard]] float AsSingle() const noexcept { return Get<float>(); }
    [[nodiscard]] double AsDouble() const noexcept { return Get<double>(); }
    [[nodiscard]] bool AsBoolean() const noexcept { return Get<Truth>().Value; }
    [[nodiscard]] Decimal AsDecimal() const noexcept { return Get<Decimal>(); }

    /// Same kind and same value; arrays also the same lower bound; objects the same object.
    friend bool operator==(const Variant& left, const Variant& right) noexcept;

private:
    struct NullTag {};
    struct Truth {
        bool Value = false;
    };
    /// Up to 15 bytes in place: short texts and small byte arrays need no memory of their own.
    template <class Tag>
    struct Inline {
        std::uint8_t Size = 0;
        std::array<std::uint8_t, 15> Data{};
    };
    struct TextTag;
    struct BytesTag;
    struct BooleanElements {
        std::vector<std::uint8_t> Values;
    };
    struct ArrayBox;
    struct ObjectBox;

    using Storage = std::variant<std::monostate,
                                 NullTag,
                                 std::uint8_t,
                                 std::int16_t,
                                 std::int32_t,
                                 float,
                                 double,
                                 Truth,
                                 Decimal,
                                 Inline<TextTag>,
                                 std::shared_ptr<const std::string>,
                                 Inline<BytesTag>,
                                 std::shared_ptr<const ArrayBox>,
                                 std::shared_ptr<const ObjectBox>>;

    template <std::integral T>
    static Storage FromInteger(T value) noexcept {
        if constexpr (std::same_as<T, std::uint8_t>) {
            return value;
        } else if constexpr (std::signed_integral<T> && sizeof(T) <= 2) {
            return static_cast<std::int16_t>(value);
        } else if constexpr ((std::signed_integral<T> && sizeof(T) == 4) || sizeof(T) == 2) {
            return static_cast<std::int32_t>(value);
        } else if constexpr (std::signed_integral<T>) {
            return Decimal::FromInt64(value);
        } else {
            return Decimal::FromUInt64(value);
        }
    }
    template <class T>
    [[nodiscard]] T Get() const noexcept {
        const T* held = std::get_if<T>(&value_);
        return held == nullptr ? T{} : *held;
    }
    static Variant FromObject(std::shared_ptr<void> object, const std::type_info& type);
    [[nodiscard]] std::shared_ptr<void> ObjectOf(const std::type_info& type) const;
    [[nodiscard]] const ArrayBox* Box() const noexcept;

    Storage value_;
};

}  // namespace hexmire
