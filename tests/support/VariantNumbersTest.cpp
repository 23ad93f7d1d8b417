#include <hexmire/support/Fault.h>
#include <hexmire/support/Variant.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <thread>
#include <vector>

namespace hexmire {

namespace {

template <class T>
constexpr T kMin = std::numeric_limits<T>::min();
template <class T>
constexpr T kMax = std::numeric_limits<T>::max();

std::int32_t FaultOf(const auto& action) {
    try {
        action();
    } catch (const Fault& fault) {
        return fault.Number();
    }
    return 0;
}

template <class T>
void ExpectArrayOfDecimals(const std::vector<T>& numbers) {
    const Variant array = numbers;
    ASSERT_EQ(array.Kind(), VariantKind::DecimalArray);
    EXPECT_TRUE(array.IsArray());
    EXPECT_EQ(array.LowerBound(), 0);
    EXPECT_EQ(array.UpperBound(), static_cast<std::int32_t>(numbers.size()) - 1);
    ASSERT_EQ(array.ElementCount(), numbers.size());
    std::vector<Decimal> expected;
    expected.reserve(numbers.size());
    for (const T number : numbers)
        expected.push_back(Variant(number).AsDecimal());
    for (std::size_t index = 0; index < numbers.size(); ++index)
        EXPECT_EQ(array.Element(static_cast<std::int32_t>(index)), Variant(expected[index]));
    const auto view = array.View<Decimal>();
    EXPECT_EQ(std::vector<Decimal>(view.begin(), view.end()), expected);
    EXPECT_EQ(array.View<Decimal>().data(), view.data()) << "the Decimals are made once";
    EXPECT_EQ(array, Variant(expected));
    EXPECT_EQ(Variant(expected), array);
    EXPECT_EQ(array.Numbers<T>(), numbers);
}

TEST(VariantNumbers, WideIntegersMakeAnArrayOfDecimals) {
    ExpectArrayOfDecimals<std::uint32_t>({0, 1, kMax<std::uint32_t>, 0x80000000U, 0x01020304U});
    ExpectArrayOfDecimals<std::int64_t>(
        {0, -1, kMin<std::int64_t>, kMax<std::int64_t>, 0x0102030405060708});
    ExpectArrayOfDecimals<std::uint64_t>({0, kMax<std::uint64_t>, 0x8000000000000000U, 1});
    ExpectArrayOfDecimals<std::uint32_t>({});
    ExpectArrayOfDecimals<std::uint32_t>({7});
}

TEST(VariantNumbers, AnIndexOutsideIsAFault) {
    const Variant array = std::vector<std::uint32_t>{1, 2};
    EXPECT_EQ(FaultOf([&] { static_cast<void>(array.Element(2)); }), 9);
    EXPECT_EQ(FaultOf([&] { static_cast<void>(array.Element(-1)); }), 9);
}

TEST(VariantNumbers, OtherViewsOfThemAreEmpty) {
    const Variant array = std::vector<std::uint64_t>{1, 2};
    EXPECT_TRUE(array.View<std::uint8_t>().empty());
    EXPECT_TRUE(array.View<std::int32_t>().empty());
    EXPECT_TRUE(array.View<Variant>().empty());
    EXPECT_TRUE(array.Text().empty());
    EXPECT_FALSE(array.IsString());
    EXPECT_FALSE(array.IsObject());
}

TEST(VariantNumbers, AreReadFromEveryKindOfArray) {
    using Longs = std::vector<std::int32_t>;
    EXPECT_EQ(Variant(std::vector<std::uint8_t>{1, 255}).Numbers<std::int32_t>(), (Longs{1, 255}));
    EXPECT_EQ(Variant(std::vector<std::int16_t>{-1, 7}).Numbers<std::int32_t>(), (Longs{-1, 7}));
    EXPECT_EQ(Variant(Longs{-1, 7}).Numbers<std::int32_t>(), (Longs{-1, 7}));
    EXPECT_EQ(Variant(std::vector<bool>{true, false}).Numbers<std::int32_t>(), (Longs{-1, 0}));
    EXPECT_EQ(Variant(std::vector<double>{0.5, 1.5, 2.5}).Numbers<std::int32_t>(),
              (Longs{0, 2, 2}));
    EXPECT_EQ(Variant(std::vector<std::uint32_t>{7, 8}).Numbers<std::int32_t>(), (Longs{7, 8}));
    EXPECT_EQ(Variant(std::vector<Variant>{"12", 3}).Numbers<std::int32_t>(), (Longs{12, 3}));
    EXPECT_EQ(Variant::Array(Longs{5, 6}, 3).Numbers<std::uint64_t>(),
              (std::vector<std::uint64_t>{5, 6}));
    EXPECT_EQ(Variant(std::vector<float>{1.5F}).Numbers<double>(), (std::vector<double>{1.5}));
    EXPECT_EQ(Variant(std::vector<double>{1.5}).Numbers<float>(), (std::vector<float>{1.5F}));
    EXPECT_TRUE(Variant::Bytes({}).Numbers<std::int64_t>().empty());
}

TEST(VariantNumbers, OfOneValueAreThatValue) {
    EXPECT_EQ(Variant(kMax<std::uint64_t>).Numbers<std::uint64_t>(),
              std::vector<std::uint64_t>{kMax<std::uint64_t>});
    EXPECT_EQ(Variant(kMin<std::int64_t>).Numbers<std::int64_t>(),
              std::vector<std::int64_t>{kMin<std::int64_t>});
    EXPECT_EQ(Variant(2.5).Numbers<std::uint32_t>(), std::vector<std::uint32_t>{2});
    EXPECT_EQ(Variant("7").Numbers<double>(), std::vector<double>{7.0});
}

TEST(VariantNumbers, OneThatDoesNotFitIsAFault) {
    EXPECT_EQ(
        FaultOf([] {
            static_cast<void>(
                Variant(std::vector<std::uint32_t>{kMax<std::uint32_t>}).Numbers<std::int32_t>());
        }),
        6);
    EXPECT_EQ(
        FaultOf([] {
            static_cast<void>(Variant(std::vector<std::int32_t>{-1}).Numbers<std::uint32_t>());
        }),
        6);
    EXPECT_EQ(FaultOf([] {
                  static_cast<void>(Variant(std::uint64_t{1} << 32U).Numbers<std::uint32_t>());
              }),
              6);
    EXPECT_EQ(FaultOf([] { static_cast<void>(Variant(-0.6).Numbers<std::uint64_t>()); }), 6);
    EXPECT_EQ(
        FaultOf([] { static_cast<void>(Variant(kMax<std::uint64_t>).Numbers<std::int64_t>()); }),
        6);
    EXPECT_EQ(FaultOf([] { static_cast<void>(Variant("x").Numbers<std::uint32_t>()); }), 13);
}

TEST(VariantNumbers, CopiesOnTwoThreadsShareTheDecimals) {
    const Variant array = std::vector<std::uint32_t>(10'000, 42);
    const Decimal* seen[2] = {};
    const auto look = [&seen, copy = array](std::size_t who) {
        seen[who] = copy.View<Decimal>().data();
    };
    std::thread other(look, 0);
    look(1);
    other.join();
    EXPECT_EQ(seen[0], seen[1]);
    EXPECT_EQ(seen[0], array.View<Decimal>().data());
}

}  // namespace

}  // namespace hexmire
