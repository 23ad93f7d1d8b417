#pragma once

#include <hexmire/support/Decimal.h>

#include <algorithm>
#include <array>
#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <typeinfo>
#include <utility>
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

namespace detail {
class VariantAccess;
}

/// The eight element types that an array can have. Booleans lie as one byte each, 0 or 1.
template <class T>
concept VariantElement = std::same_as<T, std::uint8_t> || std::same_as<T, bool> ||
    std::same_as<T, std::int16_t> || std::same_as<T, std::int32_t> || std::same_as<T, float> ||
    std::same_as<T, double> || std::same_as<T, Decimal> || std::same_as<T, Variant>;

/// Integers beyond Long: an array of them is an array of Decimal, as one of them is a Decimal.
template <class T>
concept WideInteger = std::same_as<T, std::uint32_t> || std::same_as<T, std::int64_t> ||
    std::same_as<T, std::uint64_t>;

/// What Variant::Numbers reads the elements as.
template <class T>
concept NumberElement = std::same_as<T, std::int32_t> || std::same_as<T, float> ||
    std::same_as<T, double> || WideInteger<T>;

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
    Variant(T value) noexcept : Variant(Tag::Boolean, value) {}
    template <VariantInteger T>
    Variant(T value) noexcept : Variant(FromInteger(value)) {}
    Variant(float value) noexcept : Variant(Tag::Single, value) {}
    Variant(double value) noexcept : Variant(Tag::Double, value) {}
    Variant(const Decimal& value) noexcept : Variant(Tag::Decimal, value) {}
    Variant(std::string_view text);
    Variant(std::string&& text);
    Variant(const std::string& text) : Variant(std::string_view(text)) {}
    /// No text at all reads as the empty one.
    Variant(const char* text) : Variant(std::string_view(text == nullptr ? "" : text)) {}
    template <VariantElement T>
    Variant(std::vector<T> elements) : Variant(Array(std::move(elements))) {}
    /// An array of Decimal.
    template <WideInteger T>
    Variant(const std::vector<T>& elements) : Variant(Decimals(std::span<const T>(elements))) {}
    /// An object reference; a null pointer is an object reference that refers to nothing.
    template <class T>
    Variant(std::shared_ptr<T> object)
        : Variant(FromObject(std::static_pointer_cast<void>(std::move(object)), typeid(T))) {}
    // NOLINTEND(google-explicit-constructor)
    /// A pointer is never a Boolean.
    template <NoCharacter T>
    Variant(T* pointer) = delete;
    Variant(std::nullptr_t) = delete;

    Variant(const Variant& other) noexcept : held_(other.held_) {
        if (IsBoxed()) Retain();
    }
    Variant(Variant&& other) noexcept : held_(other.held_) { other.held_ = Held(); }
    Variant& operator=(const Variant& other) noexcept { return *this = Variant(other); }
    Variant& operator=(Variant&& other) noexcept {
        // What was held goes last: its end may come back to this value.
        const Variant before(held_);
        held_ = other.held_;
        other.held_ = Held();
        return *this;
    }
    ~Variant() {
        if (IsBoxed()) Release();
    }

    [[nodiscard]] static Variant Null() noexcept;
    /// An array with the given lower bound (0 unless stated). An empty array has the upper bound
    /// lowerBound - 1 and is not the Empty value.
    template <VariantElement T>
    [[nodiscard]] static Variant Array(std::vector<T> elements, std::int32_t lowerBound = 0);
    /// An array of Byte holding a copy of the bytes, lower bound 0.
    [[nodiscard]] static Variant Bytes(std::span<const std::uint8_t> bytes) {
        return bytes.size() <= kShortBytes ? Variant(Tag::ShortBytes, bytes) : LongBytes(bytes);
    }
    /// An array of Decimal from whole numbers, lower bound 0. It lies as compactly as the numbers
    /// did, and is sent as U4, U8 or I8 as fast as they can be copied.
    template <WideInteger T>
    [[nodiscard]] static Variant Decimals(std::span<const T> numbers);

    [[nodiscard]] VariantKind Kind() const noexcept {
        return held_.What() == Tag::Array ? KindOfArray()
                                          : kKinds[static_cast<std::size_t>(held_.What())];
    }
    [[nodiscard]] bool IsEmpty() const noexcept { return held_.What() == Tag::Empty; }
    [[nodiscard]] bool IsNull() const noexcept { return held_.What() == Tag::Null; }
    [[nodiscard]] bool IsArray() const noexcept {
        return held_.What() == Tag::ShortBytes ||
               (held_.What() >= Tag::LongBytes && held_.What() <= Tag::Array);
    }
    [[nodiscard]] bool IsString() const noexcept {
        return held_.What() == Tag::ShortText || held_.What() == Tag::LongText;
    }
    [[nodiscard]] bool IsObject() const noexcept { return held_.What() == Tag::Object; }
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
    /// value; empty for any other kind. The first view of a received array of Decimal makes its
    /// Decimals, 16 bytes each; Numbers() needs none. std::bad_alloc when there is no memory for
    /// them.
    template <VariantElement T>
    [[nodiscard]] auto View() const
        -> std::span<const std::conditional_t<std::same_as<T, bool>, std::uint8_t, T>>;

    /// The elements of an array, or the one value of anything else, as numbers of type T. Fault 6
    /// for one that T does not hold, 13 for one that is no number; fractions are rounded to the
    /// nearest whole number, halves to even.
    template <NumberElement T>
    [[nodiscard]] std::vector<T> Numbers() const;

    /// The characters of a String, living as long as this value; empty for any other kind.
    [[nodiscard]] std::string_view Text() const noexcept;

    /// The object that this value refers to when it was stored as a shared_ptr<T>; otherwise none.
    template <class T>
    [[nodiscard]] std::shared_ptr<T> Object() const {
        return std::static_pointer_cast<T>(ObjectOf(typeid(T)));
    }

    // Scalars of the kind named, unconverted; 0 or false for any other kind.
    [[nodiscard]] std::uint8_t AsByte() const noexcept { return Get<std::uint8_t>(Tag::Byte); }
    [[nodiscard]] std::int16_t AsInteger() const noexcept {
        return Get<std::int16_t>(Tag::Integer);
    }
    [[nodiscard]] std::int32_t AsLong() const noexcept { return Get<std::int32_t>(Tag::Long); }
    [[nodiscard]] float AsSingle() const noexcept { return Get<float>(Tag::Single); }
    [[nodiscard]] double AsDouble() const noexcept { return Get<double>(Tag::Double); }
    [[nodiscard]] bool AsBoolean() const noexcept { return Get<bool>(Tag::Boolean); }
    [[nodiscard]] Decimal AsDecimal() const noexcept { return Get<Decimal>(Tag::Decimal); }

    /// Same kind and same value; arrays also the same lower bound; objects the same object.
    friend bool operator==(const Variant& left, const Variant& right) noexcept;

private:
    friend class detail::VariantAccess;

    enum class Tag : std::uint8_t {
        Empty,
        Null,
        Byte,
        Integer,
        Long,
        Single,
        Double,
        Boolean,
        Decimal,
        ShortText,
        ShortBytes,
        // From here on a pointer to a counted box.
        LongText,
        LongBytes,
        Numbers,  ///< an array of Decimal as the bytes of whole numbers
        Array,
        Object,
    };
    /// In the order of Tag; an Array has its kind in its box.
    static constexpr std::array kKinds{VariantKind::Empty,
                                       VariantKind::Null,
                                       VariantKind::Byte,
                                       VariantKind::Integer,
                                       VariantKind::Long,
                                       VariantKind::Single,
                                       VariantKind::Double,
                                       VariantKind::Boolean,
                                       VariantKind::Decimal,
                                       VariantKind::String,
                                       VariantKind::ByteArray,
                                       VariantKind::String,
                                       VariantKind::ByteArray,
                                       VariantKind::DecimalArray,
                                       VariantKind::VariantArray,
                                       VariantKind::Object};
    /// Short texts and small byte arrays need no memory of their own.
    static constexpr std::size_t kShortBytes = 22;
    /// The value's bytes lie in front, what they are in the last two bytes. All in whole words: a
    /// copy waits for single bytes that were written just before it.
    class Held {
    public:
        Held() noexcept = default;
        explicit Held(Tag what, std::uint64_t first = 0, std::uint64_t second = 0) noexcept
            : words_{first, second, std::uint64_t{static_cast<std::uint8_t>(what)} << kWhatAt} {}
        Held(Tag what, std::span<const std::uint8_t> bytes) noexcept : Held(what) {
            if (!bytes.empty()) std::memcpy(words_.data(), bytes.data(), bytes.size());
            words_[2] |= std::uint64_t{bytes.size()} << kSizeAt;
        }

        [[nodiscard]] Tag What() const noexcept {
            return static_cast<Tag>(words_[2] >> kWhatAt & 0xFFU);
        }
        /// Of a short text or byte array.
        [[nodiscard]] std::size_t Size() const noexcept { return words_[2] >> kSizeAt & 0xFFU; }
        [[nodiscard]] const std::uint8_t* Data() const noexcept {
            return reinterpret_cast<const std::uint8_t*>(words_.data());
        }

    private:
        static constexpr bool kIsLittle = std::endian::native == std::endian::little;
        static constexpr unsigned kWhatAt = kIsLittle ? 56 : 0;
        static constexpr unsigned kSizeAt = kIsLittle ? 48 : 8;

        std::array<std::uint64_t, 3> words_{};
    };
    struct Box;
    struct Memory;
    struct NumberMemory;
    struct ArrayBox;
    struct ObjectBox;
    enum class NumberForm : std::uint8_t;

    explicit Variant(const Held& held) noexcept : held_(held) {}
    template <class T>
    Variant(Tag tag, const T& value) noexcept {
        // NOLINTBEGIN(bugprone-sizeof-expression): a pointer is meant where T is one
        static_assert(std::is_trivially_copyable_v<T> && sizeof(T) <= 2 * sizeof(std::uint64_t));
        // Word by word: one wide copy would wait for what was written in parts just before.
        std::uint64_t first = 0;
        std::uint64_t second = 0;
        std::memcpy(&first, &value, std::min(sizeof(T), sizeof(first)));
        if constexpr (sizeof(T) > sizeof(first)) {
            const auto* const rest = reinterpret_cast<const std::uint8_t*>(&value) + sizeof(first);
            std::memcpy(&second, rest, sizeof(T) - sizeof(first));
        }
        // NOLINTEND(bugprone-sizeof-expression)
        held_ = Held(tag, first, second);
    }
    Variant(Tag tag, std::span<const std::uint8_t> bytes) noexcept : held_(tag, bytes) {}
    template <std::integral T>
    static Variant FromInteger(T value) noexcept {
        if constexpr (std::same_as<T, std::uint8_t>) {
            return {Tag::Byte, value};
        } else if constexpr (std::signed_integral<T> && sizeof(T) <= 2) {
            return {Tag::Integer, static_cast<std::int16_t>(value)};
        } else if constexpr ((std::signed_integral<T> && sizeof(T) == 4) || sizeof(T) == 2) {
            return {Tag::Long, static_cast<std::int32_t>(value)};
        } else if constexpr (std::signed_integral<T>) {
            return Decimal::FromInt64(value);
        } else {
            return Decimal::FromUInt64(value);
        }
    }
    template <class T>
    [[nodiscard]] T Load() const noexcept {
        T value{};
        // NOLINTNEXTLINE(bugprone-sizeof-expression): a pointer is meant where T is one
        std::memcpy(static_cast<void*>(&value), held_.Data(), sizeof(T));
        return value;
    }
    template <class T>
    [[nodiscard]] T Get(Tag tag) const noexcept {
        return held_.What() == tag ? Load<T>() : T{};
    }
    [[nodiscard]] VariantKind KindOfArray() const noexcept;
    [[nodiscard]] bool IsBoxed() const noexcept { return held_.What() >= Tag::LongText; }
    void Retain() const noexcept;
    void Release() noexcept;
    static Variant LongBytes(std::span<const std::uint8_t> bytes);
    static Variant FromObject(std::shared_ptr<void> object, const std::type_info& type);
    [[nodiscard]] std::shared_ptr<void> ObjectOf(const std::type_info& type) const;
    [[nodiscard]] const Memory* MemoryOf(Tag tag) const noexcept;
    [[nodiscard]] const NumberMemory* NumbersOf() const noexcept;
    [[nodiscard]] const ArrayBox* ArrayOf() const noexcept;
    [[nodiscard]] const ObjectBox* ObjectBoxOf() const noexcept;

    Held held_;
};

}  // namespace hexmire
