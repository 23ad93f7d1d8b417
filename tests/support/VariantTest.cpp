#include <hexmire/support/Fault.h>
#include <hexmire/support/Variant.h>

#include "../fakes/VariantText.h"
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace hexmire {
namespace {

using fakes::Show;

// A pointer is never a Boolean, a character is no number, and no argument means no value.
static_assert(!std::is_constructible_v<Variant, int*>);
static_assert(!std::is_constructible_v<Variant, const int*>);
static_assert(!std::is_constructible_v<Variant, void*>);
static_assert(!std::is_constructible_v<Variant, const std::string*>);
static_assert(!std::is_constructible_v<Variant, const unsigned char*>);
static_assert(!std::is_constructible_v<Variant, void (*)()>);
static_assert(!std::is_constructible_v<Variant, std::nullptr_t>);
static_assert(!std::is_constructible_v<Variant, char>);
static_assert(!std::is_constructible_v<Variant, wchar_t>);
static_assert(!std::is_constructible_v<Variant, char8_t>);
static_assert(!std::is_constructible_v<Variant, char16_t>);
static_assert(!std::is_constructible_v<Variant, char32_t>);
static_assert(std::is_constructible_v<Variant, const char*>);
static_assert(!std::is_constructible_v<Variant, std::vector<char>>);
static_assert(!std::is_constructible_v<Variant, std::vector<std::uint16_t>>);
static_assert(std::is_convertible_v<std::int32_t, Variant>);
static_assert(std::is_nothrow_move_constructible_v<Variant>);
static_assert(std::is_copy_assignable_v<Variant>);

/// Number of the fault that a body throws; 0 when it throws none.
template <class Body>
std::int32_t FaultOf(Body&& body) {
    try {
        std::forward<Body>(body)();
    } catch (const Fault& fault) {
        return fault.Number();
    }
    return 0;
}

TEST(Variant, KindFollowsTheCppType) {
    EXPECT_EQ(Show(Variant()), "Empty");
    EXPECT_EQ(Show(Variant::Null()), "Null");
    EXPECT_EQ(Show(true), "Boolean True");
    EXPECT_EQ(Show(std::uint8_t{200}), "Byte 200");
    EXPECT_EQ(Show(std::int8_t{-100}), "Integer -100");
    EXPECT_EQ(Show(std::int16_t{-300}), "Integer -300");
    EXPECT_EQ(Show(std::uint16_t{65535}), "Long 65535");
    EXPECT_EQ(Show(std::int32_t{7}), "Long 7");
    EXPECT_EQ(Show(7), "Long 7");
    EXPECT_EQ(Show(std::uint32_t{7}), "Decimal 7");
    EXPECT_EQ(Show(std::int64_t{-7}), "Decimal -7");
    EXPECT_EQ(Show(std::uint64_t{7}), "Decimal 7");
    EXPECT_EQ(Show(7L), "Decimal 7");
    EXPECT_EQ(Show(7ULL), "Decimal 7");
    EXPECT_EQ(Show(0.1F), "Single 0.1");
    EXPECT_EQ(Show(0.1), "Double 0.1");
}

TEST(Variant, WholeRangesOfTheCppTypesAreKept) {
    EXPECT_EQ(Show(std::numeric_limits<std::uint64_t>::max()), "Decimal 18446744073709551615");
    EXPECT_EQ(Show(std::numeric_limits<std::int64_t>::min()), "Decimal -9223372036854775808");
    EXPECT_EQ(Show(std::numeric_limits<std::uint32_t>::max()), "Decimal 4294967295");
    EXPECT_EQ(Show(std::numeric_limits<std::int32_t>::min()), "Long -2147483648");
    EXPECT_EQ(Show(std::numeric_limits<std::int8_t>::min()), "Integer -128");
}

TEST(Variant, TextsAreStrings) {
    const std::string text = "abc";
    EXPECT_EQ(Show("abc"), "String 'abc'");
    EXPECT_EQ(Show(text), "String 'abc'");
    EXPECT_EQ(Show(std::string("abc")), "String 'abc'");
    EXPECT_EQ(Show(std::string_view(text).substr(1)), "String 'bc'");
    EXPECT_EQ(Show(""), "String ''");
    EXPECT_EQ(Show(std::string_view()), "String ''");
    EXPECT_FALSE(Variant("").IsEmpty());
}

TEST(Variant, TextKeepsEveryByteAndLength) {
    std::string bytes;
    for (int code = 0; code < 256; ++code)
        bytes.push_back(static_cast<char>(code));
    EXPECT_EQ(Variant(bytes).Text(), bytes);
    // Lengths around the point where short texts stop lying in place.
    for (std::size_t length = 0; length <= 40; ++length) {
        const std::string text = std::string(length, 'x') + std::string(1, '\0') + "y";
        const Variant value(text);
        EXPECT_EQ(value.Text(), text);
        EXPECT_TRUE(value.IsString());
    }
}

TEST(Variant, MovedInTextIsTheSameText) {
    std::string longText(1000, 'q');
    const Variant value(std::move(longText));
    EXPECT_EQ(value.Text(), std::string(1000, 'q'));
    std::string shortText = "q";
    EXPECT_EQ(Variant(std::move(shortText)).Text(), "q");
}

TEST(Variant, ArraysTakeTheKindOfTheirElements) {
    EXPECT_EQ(Show(std::vector<std::uint8_t>{1, 255}), "Byte[1, 255]");
    EXPECT_EQ(Show(std::vector<bool>{true, false}), "Boolean[True, False]");
    EXPECT_EQ(Show(std::vector<std::int16_t>{-1, 2}), "Integer[-1, 2]");
    EXPECT_EQ(Show(std::vector<std::int32_t>{-1, 70000}), "Long[-1, 70000]");
    EXPECT_EQ(Show(std::vector<float>{0.5F}), "Single[0.5]");
    EXPECT_EQ(Show(std::vector<double>{0.5, -2}), "Double[0.5, -2]");
    EXPECT_EQ(Show(std::vector<Decimal>{Decimal::FromInt64(5)}), "Decimal[5]");
    EXPECT_EQ(Show(std::vector<Variant>{1, "a", Variant(), Variant::Null()}),
              "Variant[Long 1, String 'a', Empty, Null]");
}

TEST(Variant, ArrayOfArraysIsAnArrayOfVariants) {
    const Variant inner(std::vector<std::int32_t>{1, 2});
    EXPECT_EQ(Show(std::vector<Variant>{inner, inner}), "Variant[Long[1, 2], Long[1, 2]]");
}

TEST(Variant, EmptyArrayIsNotEmptyAndEndsBelowItsLowerBound) {
    const Variant values[] = {Variant(std::vector<std::uint8_t>{}),
                              Variant(std::vector<bool>{}),
                              Variant(std::vector<std::int16_t>{}),
                              Variant(std::vector<std::int32_t>{}),
                              Variant(std::vector<float>{}),
                              Variant(std::vector<double>{}),
                              Variant(std::vector<Decimal>{}),
                              Variant(std::vector<Variant>{}),
                              Variant::Bytes({})};
    for (const Variant& value : values) {
        EXPECT_FALSE(value.IsEmpty());
        EXPECT_TRUE(value.IsArray());
        EXPECT_EQ(value.LowerBound(), 0);
        EXPECT_EQ(value.UpperBound(), -1);
        EXPECT_EQ(value.ElementCount(), 0U);
        EXPECT_EQ(FaultOf([&] { static_cast<void>(value.Element(0)); }), 9);
    }
    EXPECT_EQ(Variant::Array(std::vector<std::int32_t>{}, 1).UpperBound(), 0);
}

TEST(Variant, ArrayHasNoMoreElementsThanItsBoundsCanTell) {
    constexpr std::size_t kTooMany = std::size_t{1} << 31U;
    try {
        static_cast<void>(Variant::Array(std::vector<bool>(kTooMany)));  // A bit each.
        FAIL() << "such an array was made";
    } catch (const Fault& fault) {
        EXPECT_EQ(fault.Number(), 7);
    }
}

TEST(Variant, LowerBoundShiftsTheIndexes) {
    const Variant value = Variant::Array(std::vector<std::int32_t>{10, 20, 30}, 1);
    EXPECT_EQ(value.LowerBound(), 1);
    EXPECT_EQ(value.UpperBound(), 3);
    EXPECT_EQ(value.ElementCount(), 3U);
    EXPECT_EQ(Show(value.Element(1)), "Long 10");
    EXPECT_EQ(Show(value.Element(3)), "Long 30");
    EXPECT_EQ(FaultOf([&] { static_cast<void>(value.Element(0)); }), 9);
    EXPECT_EQ(FaultOf([&] { static_cast<void>(value.Element(4)); }), 9);
    const Variant below = Variant::Array(std::vector<std::uint8_t>{7, 8}, -5);
    EXPECT_EQ(below.UpperBound(), -4);
    EXPECT_EQ(Show(below.Element(-4)), "Byte 8");
    EXPECT_EQ(FaultOf([&] { static_cast<void>(below.Element(-3)); }), 9);
}

TEST(Variant, ElementOutsideIsASubscriptFault) {
    const Variant value(std::vector<std::uint8_t>{1, 2});
    for (const std::int32_t index : {-1,
                                     2,
                                     std::numeric_limits<std::int32_t>::min(),
                                     std::numeric_limits<std::int32_t>::max()}) {
        EXPECT_EQ(FaultOf([&] { static_cast<void>(value.Element(index)); }), 9) << index;
    }
}

TEST(Variant, BoundsOfAScalarAreAMismatch) {
    for (const Variant& value : {Variant(),
                                 Variant::Null(),
                                 Variant(1),
                                 Variant("text"),
                                 Variant(true),
                                 Variant(1.5),
                                 Variant(std::make_shared<int>(1))}) {
        EXPECT_EQ(FaultOf([&] { static_cast<void>(value.LowerBound()); }), 13);
        EXPECT_EQ(FaultOf([&] { static_cast<void>(value.UpperBound()); }), 13);
        EXPECT_EQ(FaultOf([&] { static_cast<void>(value.ElementCount()); }), 13);
        EXPECT_EQ(FaultOf([&] { static_cast<void>(value.Element(0)); }), 13);
    }
}

TEST(Variant, CopiesAreIndependent) {
    Variant first(std::vector<std::int32_t>(100, 1));
    const Variant second = first;
    first = Variant(std::vector<std::int32_t>{2});
    EXPECT_EQ(second.ElementCount(), 100U);
    EXPECT_EQ(Show(second.Element(99)), "Long 1");
    Variant text(std::string(500, 'a'));
    const Variant copy = text;
    text = "b";
    EXPECT_EQ(copy.Text(), std::string(500, 'a'));
}

TEST(Variant, ArrayIsACopyOfWhatItWasMadeFrom) {
    std::vector<std::uint8_t> bytes{1, 2, 3};
    const Variant value(bytes);
    const Variant fromSpan = Variant::Bytes(bytes);
    bytes[0] = 99;
    EXPECT_EQ(Show(value), "Byte[1, 2, 3]");
    EXPECT_EQ(Show(fromSpan), "Byte[1, 2, 3]");
}

TEST(Variant, MoveAndSelfAssignmentKeepTheValue) {
    Variant value(std::string(100, 'm'));
    const Variant& alias = value;
    value = alias;
    EXPECT_EQ(value.Text().size(), 100U);
    const Variant moved = std::move(value);
    EXPECT_EQ(moved.Text().size(), 100U);
}

TEST(Variant, AssignmentChangesTheKind) {
    Variant value = 1;
    value = "text";
    EXPECT_EQ(Show(value), "String 'text'");
    value = std::vector<bool>{true};
    EXPECT_EQ(Show(value), "Boolean[True]");
    value = Variant();
    EXPECT_TRUE(value.IsEmpty());
    value = Variant::Null();
    EXPECT_TRUE(value.IsNull());
    EXPECT_FALSE(value.IsEmpty());
}

TEST(Variant, ElementOfItselfMayBeAssignedToIt) {
    Variant value(std::vector<Variant>{std::string(100, 'x'), 2});
    value = value.Element(0);
    EXPECT_EQ(value.Text(), std::string(100, 'x'));
}

TEST(Variant, ByteArraysOfAnyLengthAreKept) {
    for (std::size_t length = 0; length <= 40; ++length) {
        std::vector<std::uint8_t> bytes(length);
        for (std::size_t index = 0; index < length; ++index) {
            bytes[index] = static_cast<std::uint8_t>(index * 7);
        }
        const Variant value(bytes);
        const auto view = value.View<std::uint8_t>();
        EXPECT_EQ(std::vector<std::uint8_t>(view.begin(), view.end()), bytes);
        EXPECT_EQ(value.UpperBound(), static_cast<std::int32_t>(length) - 1);
        EXPECT_EQ(value, Variant::Bytes(bytes));
    }
}

TEST(Variant, ViewsAreOfTheirOwnKindOnly) {
    const Variant bytes(std::vector<std::uint8_t>{1, 2});
    EXPECT_EQ(bytes.View<std::uint8_t>().size(), 2U);
    EXPECT_TRUE(bytes.View<bool>().empty());
    EXPECT_TRUE(bytes.View<std::int16_t>().empty());
    const Variant booleans(std::vector<bool>{true, false});
    EXPECT_TRUE(booleans.View<std::uint8_t>().empty());
    ASSERT_EQ(booleans.View<bool>().size(), 2U);
    EXPECT_EQ(booleans.View<bool>()[0], 1);
    EXPECT_EQ(booleans.View<bool>()[1], 0);
    EXPECT_TRUE(Variant(5).View<std::int32_t>().empty());
    EXPECT_TRUE(Variant(std::vector<std::int32_t>{5}).View<Variant>().empty());
    EXPECT_TRUE(Variant(std::vector<std::uint8_t>{65}).Text().empty());
    EXPECT_TRUE(Variant().Text().empty());
}

TEST(Variant, ScalarsOfAnotherKindReadAsNothing) {
    const Variant value = 300;
    EXPECT_EQ(value.AsLong(), 300);
    EXPECT_EQ(value.AsByte(), 0);
    EXPECT_EQ(value.AsInteger(), 0);
    EXPECT_EQ(value.AsSingle(), 0.0F);
    EXPECT_EQ(value.AsDouble(), 0.0);
    EXPECT_FALSE(value.AsBoolean());
    EXPECT_TRUE(value.AsDecimal().IsZero());
    EXPECT_EQ(Variant(true).AsLong(), 0);
}

struct Base {
    virtual ~Base() = default;
};
struct Derived : Base {};

TEST(Variant, ObjectComesBackByTheTypeItWasStoredWith) {
    const auto object = std::make_shared<Derived>();
    const Variant value(object);
    EXPECT_TRUE(value.IsObject());
    EXPECT_FALSE(value.IsNothing());
    EXPECT_EQ(value.Object<Derived>(), object);
    EXPECT_EQ(value.Object<Base>(), nullptr);
    EXPECT_EQ(value.Object<int>(), nullptr);
    EXPECT_EQ(Variant(5).Object<int>(), nullptr);
    EXPECT_EQ(Variant().Object<Derived>(), nullptr);
}

TEST(Variant, ObjectIsSharedNotCopied) {
    auto object = std::make_shared<int>(1);
    const std::weak_ptr<int> watch = object;
    {
        const Variant value(object);
        const Variant copy = value;
        *object = 2;
        object.reset();
        EXPECT_EQ(*copy.Object<int>(), 2);
    }
    EXPECT_TRUE(watch.expired());
}

TEST(Variant, ReferenceToNothingIsStillAnObject) {
    const Variant value(std::shared_ptr<Derived>{});
    EXPECT_TRUE(value.IsObject());
    EXPECT_TRUE(value.IsNothing());
    EXPECT_FALSE(value.IsEmpty());
    EXPECT_EQ(value.Object<Derived>(), nullptr);
    EXPECT_FALSE(Variant().IsNothing());
    EXPECT_FALSE(Variant::Null().IsNothing());
}

TEST(Variant, EqualityAsksForKindAndValue) {
    EXPECT_EQ(Variant(5), Variant(5));
    EXPECT_FALSE(Variant(5) == Variant(std::int16_t{5}));
    EXPECT_FALSE(Variant(5) == Variant(5.0));
    EXPECT_FALSE(Variant() == Variant::Null());
    EXPECT_FALSE(Variant() == Variant(""));
    EXPECT_EQ(Variant(""), Variant(std::string()));
    EXPECT_FALSE(Variant("a") == Variant("A"));
    EXPECT_EQ(Variant(std::vector<std::int32_t>{1, 2}), Variant(std::vector<std::int32_t>{1, 2}));
    EXPECT_FALSE(Variant(std::vector<std::int32_t>{1}) == Variant(std::vector<std::int16_t>{1}));
    EXPECT_FALSE(Variant(std::vector<std::int32_t>{1}) ==
                 Variant::Array(std::vector<std::int32_t>{1}, 1));
    EXPECT_FALSE(Variant(std::vector<std::uint8_t>{}) == Variant());
    const auto object = std::make_shared<int>(1);
    EXPECT_EQ(Variant(object), Variant(object));
    EXPECT_FALSE(Variant(object) == Variant(std::make_shared<int>(1)));
}

TEST(Variant, BytesWithALowerBoundKeepIt) {
    const Variant value = Variant::Array(std::vector<std::uint8_t>{10, 255}, 1);
    EXPECT_EQ(Show(value), "Byte(1)[10, 255]");
    EXPECT_EQ(value.View<std::uint8_t>().size(), 2U);
}

TEST(Variant, NestedArraysKeepWhatIsInnermost) {
    Variant value = 1;
    for (int depth = 0; depth < 1000; ++depth)
        value = Variant(std::vector<Variant>{value});
    for (int depth = 0; depth < 1000; ++depth)
        value = value.Element(0);
    EXPECT_EQ(Show(value), "Long 1");
}

}  // namespace
}  // namespace hexmire
