#pragma once

#include <hexmire/support/Variant.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <span>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace hexmire {

/// What the bytes of an array of whole numbers are, most significant byte first.
enum class Variant::NumberForm : std::uint8_t { UInt32, UInt64, Int64 };

/// What several values may refer to: counted, and never changed once it is made. The count is
/// atomic, for a value may be copied to another thread.
struct Variant::Box {
    Box() = default;
    Box(const Box&) = delete;
    Box& operator=(const Box&) = delete;
    virtual ~Box() = default;

    void Retain() const noexcept { uses_.fetch_add(1, std::memory_order_relaxed); }
    void Release() const noexcept {
        // The last user needs no locked instruction: nobody else is there to count.
        if (uses_.load(std::memory_order_acquire) == 1 ||
            uses_.fetch_sub(1, std::memory_order_acq_rel) == 1)
            delete this;
    }

private:
    mutable std::atomic<std::uint32_t> uses_ = 1;
};

/// The bytes of a long text or byte array.
struct Variant::Memory : Box {
    [[nodiscard]] std::span<const std::uint8_t> Bytes() const noexcept { return {Data, Size}; }

    const std::uint8_t* Data = nullptr;
    std::size_t Size = 0;
};

namespace detail {

/// Boxes behind a value.
class VariantAccess {
public:
    using Box = Variant::Box;
    using Memory = Variant::Memory;
    using NumberForm = Variant::NumberForm;

    /// Bytes behind the object itself: one request for memory.
    class OwnMemory;
    /// Bytes of a text or vector that was handed over.
    template <class Container>
    class TakenMemory;
    /// A part of somebody else's bytes.
    class PartMemory;

    /// An array of Byte from a part of `whole`'s bytes: it shares them when that keeps no more than
    /// twice its size alive, and copies them otherwise.
    [[nodiscard]] static Variant BytesWithin(const Variant& whole,
                                             std::span<const std::uint8_t> part);
    /// The bytes of one number.
    template <std::size_t Width>
    [[nodiscard]] static Variant BytesOfNumber(const std::uint8_t* bytes) noexcept {
        return {Variant::Tag::ShortBytes, std::span<const std::uint8_t>(bytes, Width)};
    }
    /// A String, likewise.
    [[nodiscard]] static Variant TextWithin(const Variant& whole,
                                            std::span<const std::uint8_t> part);
    /// An array of Decimal whose numbers lie in `part`, likewise.
    [[nodiscard]] static Variant NumbersWithin(const Variant& whole,
                                               std::span<const std::uint8_t> part,
                                               NumberForm form);
    /// The bytes of a text or of an array of Byte or of whole numbers, as an array of Byte that
    /// shares them.
    [[nodiscard]] static Variant BytesOf(const Variant& value);
    /// The bytes of an array of whole numbers of that form; none for anything else.
    [[nodiscard]] static std::span<const std::uint8_t> NumberBytes(const Variant& value,
                                                                   NumberForm form) noexcept;
    /// An array of Boolean from bytes that are 0 or 1.
    [[nodiscard]] static Variant Booleans(std::vector<std::uint8_t> values);
    /// The value takes over the caller's use of the box.
    [[nodiscard]] static Variant Holding(Variant::Tag tag, const Box* box) noexcept {
        return {tag, box};
    }

    static constexpr NumberForm kUInt32 = NumberForm::UInt32;
    static constexpr NumberForm kUInt64 = NumberForm::UInt64;
    static constexpr NumberForm kInt64 = NumberForm::Int64;

private:
    static const Memory* Share(const Variant& whole, std::span<const std::uint8_t> part);
};

class VariantAccess::OwnMemory final : public Memory {
public:
    static OwnMemory* Make(std::size_t size) {
        // The place for the bytes lies behind the object.
        return new (::operator new(sizeof(OwnMemory) + size)) OwnMemory(size);
    }
    static void operator delete(void* place) { ::operator delete(place); }
    std::uint8_t* Place() noexcept { return reinterpret_cast<std::uint8_t*>(this + 1); }

private:
    explicit OwnMemory(std::size_t size) noexcept {
        Data = Place();
        Size = size;
    }
    static void* operator new(std::size_t, void* place) noexcept { return place; }
};

template <class Container>
class VariantAccess::TakenMemory final : public Memory {
public:
    explicit TakenMemory(Container&& taken) noexcept : taken_(std::move(taken)) {
        Data = reinterpret_cast<const std::uint8_t*>(taken_.data());
        Size = taken_.size();
    }

private:
    const Container taken_;
};

class VariantAccess::PartMemory : public Memory {
public:
    PartMemory(const Box& owner, std::span<const std::uint8_t> part) noexcept : owner_(owner) {
        owner_.Retain();
        Data = part.data();
        Size = part.size();
    }
    PartMemory(const PartMemory&) = delete;
    PartMemory& operator=(const PartMemory&) = delete;
    ~PartMemory() override { owner_.Release(); }

private:
    const Box& owner_;
};

}  // namespace detail

/// Whole numbers as bytes; as Decimals once somebody has asked for a view of them.
struct Variant::NumberMemory final : detail::VariantAccess::PartMemory {
    NumberMemory(const Box& owner, std::span<const std::uint8_t> part, NumberForm form) noexcept
        : PartMemory(owner, part), Form(form) {}
    NumberMemory(const NumberMemory&) = delete;
    NumberMemory& operator=(const NumberMemory&) = delete;
    ~NumberMemory() override { delete decimals_.load(std::memory_order_acquire); }

    [[nodiscard]] std::size_t Count() const noexcept {
        return Size / (Form == NumberForm::UInt32 ? 4 : 8);
    }
    [[nodiscard]] Decimal At(std::size_t position) const noexcept;
    [[nodiscard]] std::span<const Decimal> Decimals() const;

    const NumberForm Form;

private:
    mutable std::atomic<const std::vector<Decimal>*> decimals_ = nullptr;
};

/// Arrays that lie as their elements.
struct Variant::ArrayBox final : Box {
    /// One byte each, 0 or 1.
    struct Booleans {
        std::vector<std::uint8_t> Values;
    };
    using Elements = std::variant<std::vector<std::uint8_t>,
                                  Booleans,
                                  std::vector<std::int16_t>,
                                  std::vector<std::int32_t>,
                                  std::vector<float>,
                                  std::vector<double>,
                                  std::vector<Decimal>,
                                  std::vector<Variant>>;

    ArrayBox(Elements elements, std::int32_t lowerBound)
        : Held(std::move(elements)), LowerBound(lowerBound) {}
    [[nodiscard]] std::size_t Size() const noexcept {
        return std::visit([](const auto& held) { return SizeOf(held); }, Held);
    }

    const Elements Held;
    const std::int32_t LowerBound;

private:
    template <class T>
    static std::size_t SizeOf(const std::vector<T>& held) noexcept {
        return held.size();
    }
    static std::size_t SizeOf(const Booleans& held) noexcept { return held.Values.size(); }
};

struct Variant::ObjectBox final : Box {
    ObjectBox(std::shared_ptr<void> object, const std::type_info& type)
        : Object(std::move(object)), Type(type) {}

    const std::shared_ptr<void> Object;
    const std::type_info& Type;
};

}  // namespace hexmire
