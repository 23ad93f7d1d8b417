#include <hexmire/support/Decimal.h>
#include <hexmire/support/Fault.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

namespace hexmire {
namespace {

constexpr const char* kLargest = "79228162514264337593543950335";

std::string TextOf(const std::string& digits, std::int64_t exponent, bool negative = false) {
    return Decimal::FromDigits(negative, digits, exponent).ToText();
}

template <class Body>
std::int32_t FaultOf(Body&& body) {
    try {
        static_cast<void>(body());
    } catch (const Fault& fault) {
        return fault.Number();
    }
    return 0;
}

TEST(Decimal, CarriesEverySixtyFourBitNumber) {
    EXPECT_EQ(Decimal::FromUInt64(std::numeric_limits<std::uint64_t>::max()).ToText(),
              "18446744073709551615");
    EXPECT_EQ(Decimal::FromInt64(std::numeric_limits<std::int64_t>::min()).ToText(),
              "-9223372036854775808");
    EXPECT_EQ(Decimal::FromInt64(std::numeric_limits<std::int64_t>::max()).ToText(),
              "9223372036854775807");
    EXPECT_EQ(Decimal::FromInt64(0).ToText(), "0");
}

TEST(Decimal, LargestMantissaHasNinetySixBits) {
    EXPECT_EQ(Decimal(0xFFFFFFFFU, ~std::uint64_t{0}, false).ToText(), kLargest);
    EXPECT_EQ(Decimal(0xFFFFFFFFU, ~std::uint64_t{0}, true).ToText(), "-" + std::string(kLargest));
    EXPECT_EQ(TextOf(kLargest, 0), kLargest);
    EXPECT_EQ(Decimal(1, 0, false).ToText(), "18446744073709551616");
}

TEST(Decimal, BeyondNinetySixBitsIsAnOverflow) {
    EXPECT_EQ(FaultOf([] { return TextOf("79228162514264337593543950336", 0); }), 6);
    EXPECT_EQ(FaultOf([] { return TextOf("79228162514264337593543950336", 0, true); }), 6);
    EXPECT_EQ(FaultOf([] { return TextOf("8", 28); }), 6);
    EXPECT_EQ(FaultOf([] { return TextOf("1", 29); }), 6);
    EXPECT_EQ(FaultOf([] { return TextOf("1", std::numeric_limits<std::int64_t>::max()); }), 6);
    EXPECT_EQ(TextOf("7", 28), "7" + std::string(28, '0'));
    EXPECT_EQ(TextOf("1", 28), "1" + std::string(28, '0'));
}

TEST(Decimal, FractionBeyondTheMantissaIsRoundedHalfToEven) {
    const std::string head = "7922816251426433759354395033";
    EXPECT_EQ(TextOf(head + "54", -1), head + "5");
    EXPECT_EQ(TextOf(head + "45", -1), head + "4");
    EXPECT_EQ(TextOf(head + "35", -1), head + "4");
    EXPECT_EQ(TextOf(head + "451", -2), head + "5");
    EXPECT_EQ(FaultOf([&] { return TextOf(head + "55", -1); }), 6);
}

TEST(Decimal, TwentyEightPlacesAreKeptTheRestIsRounded) {
    const std::string zeros(27, '0');
    EXPECT_EQ(TextOf("1", -28), "0." + zeros + "1");
    EXPECT_EQ(TextOf("5", -29), "0");
    EXPECT_EQ(TextOf("51", -30), "0." + zeros + "1");
    EXPECT_EQ(TextOf("15", -29), "0." + zeros + "2");
    EXPECT_EQ(TextOf("25", -29), "0." + zeros + "2");
    EXPECT_EQ(TextOf("1", -1000000), "0");
    EXPECT_EQ(TextOf("1", std::numeric_limits<std::int64_t>::min()), "0");
}

TEST(Decimal, ZeroIsNeverNegativeAndNeverScaled) {
    EXPECT_EQ(TextOf("0", 0, true), "0");
    EXPECT_EQ(TextOf("", 0, true), "0");
    EXPECT_EQ(TextOf("0", 1000), "0");
    EXPECT_EQ(TextOf("", std::numeric_limits<std::int64_t>::max()), "0");
    EXPECT_FALSE(Decimal(0, 0, true).IsNegative());
    EXPECT_FALSE(Decimal::FromInt64(0).Negated().IsNegative());
    EXPECT_FALSE(Decimal::FromDigits(true, "4", -29).IsNegative());
    EXPECT_EQ(Decimal(0, 0, false, 5).Scale(), 0U);
    EXPECT_FALSE(Decimal::FromDouble(-0.0).IsNegative());
}

TEST(Decimal, TextHasNoTrailingZerosBehindThePoint) {
    EXPECT_EQ(TextOf("1500", -3), "1.5");
    EXPECT_EQ(TextOf("1500", -1), "150");
    EXPECT_EQ(TextOf("15", -5), "0.00015");
    EXPECT_EQ(TextOf("000123", 0), "123");
    EXPECT_EQ(TextOf("123", 3), "123000");
    EXPECT_EQ(TextOf("1", -1, true), "-0.1");
    EXPECT_EQ(Decimal(0, 1200, false, 2).ToText(), "12");
    EXPECT_TRUE(Decimal(0, 1200, false, 2).IsWhole());
    EXPECT_FALSE(Decimal(0, 1250, false, 2).IsWhole());
}

TEST(Decimal, AnyNumberOfDigitsIsRead) {
    EXPECT_EQ(TextOf("5" + std::string(1000, '0'), -1000), "5");
    EXPECT_EQ(TextOf(std::string(500, '0') + "7", 0), "7");
    // A hair above the half at the 29th place, 500 digits further on.
    EXPECT_EQ(TextOf("2" + std::string(28, '0') + "5" + std::string(500, '0') + "1", -530),
              "2." + std::string(27, '0') + "1");
    EXPECT_EQ(TextOf("2" + std::string(28, '0') + "5" + std::string(500, '0'), -529), "2");
}

TEST(Decimal, EqualNumbersAreEqualWhateverTheirScale) {
    EXPECT_EQ(Decimal(0, 120, false, 1), Decimal(0, 12, false, 0));
    EXPECT_FALSE(Decimal(0, 12, false) == Decimal(0, 12, true));
    EXPECT_FALSE(Decimal(0, 12, false) == Decimal(1, 12, false));
    EXPECT_FALSE(Decimal(0, 12, false, 1) == Decimal(0, 12, false));
}

TEST(Decimal, NegatedTwiceIsItself) {
    const Decimal value = Decimal::FromInt64(std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(value.Negated().ToText(), "9223372036854775808");
    EXPECT_EQ(value.Negated().Negated(), value);
}

TEST(Decimal, RoundsToWholeNumbersHalfToEven) {
    struct Row {
        const char* Digits;
        std::int64_t Exponent;
        std::int64_t Rounded;
    };
    for (const Row& row : {Row{"5", -1, 0},
                           Row{"15", -1, 2},
                           Row{"25", -1, 2},
                           Row{"35", -1, 4},
                           Row{"251", -2, 3},
                           Row{"2500000000000000000000000001", -27, 3},
                           Row{"249", -2, 2},
                           Row{"4", -1, 0},
                           Row{"6", -1, 1}}) {
        EXPECT_EQ(Decimal::FromDigits(false, row.Digits, row.Exponent).ToInt64(), row.Rounded);
        EXPECT_EQ(Decimal::FromDigits(true, row.Digits, row.Exponent).ToInt64(), -row.Rounded);
    }
}

TEST(Decimal, WholeNumberBeyondSixtyFourBitsIsAnOverflow) {
    const auto whole = [](bool negative, const char* digits, std::int64_t exponent) {
        return Decimal::FromDigits(negative, digits, exponent).ToInt64();
    };
    EXPECT_EQ(whole(false, "9223372036854775807", 0), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(whole(true, "9223372036854775808", 0), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(whole(false, "92233720368547758074", -1), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(whole(true, "92233720368547758085", -1), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(FaultOf([&] { return whole(false, "9223372036854775808", 0); }), 6);
    EXPECT_EQ(FaultOf([&] { return whole(false, "92233720368547758075", -1); }), 6);
    EXPECT_EQ(FaultOf([&] { return whole(true, "9223372036854775809", 0); }), 6);
    EXPECT_EQ(FaultOf([&] { return whole(true, "92233720368547758086", -1); }), 6);
    EXPECT_EQ(FaultOf([&] { return whole(false, kLargest, 0); }), 6);
}

TEST(Decimal, FromDoubleIsExactAsFarAsItsDigitsGo) {
    EXPECT_EQ(Decimal::FromDouble(0.5).ToText(), "0.5");
    EXPECT_EQ(Decimal::FromDouble(-1234567.0).ToText(), "-1234567");
    EXPECT_EQ(Decimal::FromDouble(9007199254740993.0).ToText(), "9007199254740992");
    EXPECT_EQ(Decimal::FromDouble(1.8446744073709552e19).ToText(), "18446744073709551616");
    EXPECT_EQ(Decimal::FromDouble(1e-29).ToText(), "0");
    EXPECT_EQ(Decimal::FromDouble(std::numeric_limits<double>::denorm_min()).ToText(), "0");
    EXPECT_EQ(Decimal::FromDouble(std::ldexp(1.0, 95)).ToText(), "39614081257132168796771975168");
}

TEST(Decimal, FromDoubleBeyondItsRangeIsAnOverflow) {
    for (const double value : {std::ldexp(1.0, 96),
                               -std::ldexp(1.0, 96),
                               1e29,
                               1e308,
                               std::numeric_limits<double>::infinity(),
                               -std::numeric_limits<double>::infinity(),
                               std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_EQ(FaultOf([&] { return Decimal::FromDouble(value); }), 6) << value;
    }
    EXPECT_EQ(Decimal::FromDouble(std::nextafter(std::ldexp(1.0, 96), 0.0)).ToText(),
              "79228162514264328797450928128");
}

TEST(Decimal, ToDoubleIsTheNearest) {
    EXPECT_EQ(Decimal::FromDigits(false, "1", -1).ToDouble(), 0.1);
    EXPECT_EQ(Decimal::FromUInt64(std::numeric_limits<std::uint64_t>::max()).ToDouble(),
              18446744073709551616.0);
    EXPECT_EQ(Decimal::FromUInt64(9007199254740993ULL).ToDouble(), 9007199254740992.0);
    EXPECT_EQ(Decimal::FromUInt64(9007199254740995ULL).ToDouble(), 9007199254740996.0);
    EXPECT_EQ(Decimal::FromDigits(true, kLargest, 0).ToDouble(), -std::ldexp(1.0, 96));
    EXPECT_EQ(Decimal::FromDigits(false, kLargest, -28).ToDouble(), 7.9228162514264337593543950335);
}

}  // namespace
}  // namespace hexmire
