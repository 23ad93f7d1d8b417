#include <hexmire/support/Conversion.h>

#include "ConversionOutcome.h"
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <vector>

/// What lies on the edge of each conversion: truth values as numbers, numbers that are none, halves
/// at the ends of the ranges, texts of great length.
namespace hexmire {
namespace {

using testing_conversions::Check;
using testing_conversions::Outcome;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr float kInfinityF = std::numeric_limits<float>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr float kNaNF = std::numeric_limits<float>::quiet_NaN();

TEST(ConversionLimits, TrueIsMinusOneAndSoNoByte) {
    EXPECT_EQ(Outcome(ToByte, true), "fault 6");
    EXPECT_EQ(Outcome(ToByte, false), "0");
    EXPECT_EQ(ToInteger(true), -1);
    EXPECT_EQ(ToLong(true), -1);
    EXPECT_EQ(ToSingle(true), -1.0F);
    EXPECT_EQ(ToDouble(true), -1.0);
    EXPECT_EQ(ToDecimal(true), Decimal::FromInt64(-1));
    EXPECT_EQ(ToText(true), "True");
    EXPECT_EQ(ToInteger(false), 0);
    EXPECT_EQ(ToLong(false), 0);
    EXPECT_EQ(ToDouble(false), 0.0);
    EXPECT_TRUE(ToDecimal(false).IsZero());
    EXPECT_EQ(ToText(false), "False");
}

TEST(ConversionLimits, WordsOfTruthAreNoNumbers) {
    for (const char* text : {"True", "False", "T", "F"}) {
        EXPECT_EQ(Outcome(ToByte, text), "fault 13") << text;
        EXPECT_EQ(Outcome(ToInteger, text), "fault 13") << text;
        EXPECT_EQ(Outcome(ToLong, text), "fault 13") << text;
        EXPECT_EQ(Outcome(ToDecimal, text), "fault 13") << text;
    }
}

TEST(ConversionLimits, WhatIsNoNumberOverflowsEveryWholeKind) {
    const std::vector<std::function<std::string(const Variant&)>> conversions{
        [](const Variant& value) { return Outcome(ToByte, value); },
        [](const Variant& value) { return Outcome(ToInteger, value); },
        [](const Variant& value) { return Outcome(ToLong, value); },
        [](const Variant& value) { return Outcome(ToDecimal, value); }};
    for (const auto& convert : conversions) {
        for (const Variant& value : {Variant(kNaN),
                                     Variant(kInfinity),
                                     Variant(-kInfinity),
                                     Variant(kNaNF),
                                     Variant(kInfinityF),
                                     Variant(-kInfinityF),
                                     Variant(1e300),
                                     Variant(-3e38F)}) {
            EXPECT_EQ(convert(value), "fault 6");
        }
    }
}

TEST(ConversionLimits, WhatIsNoNumberIsTrueAndStaysAmongTheFloats) {
    Check(ToBoolean,
          {{kNaN, "1"},
           {kNaNF, "1"},
           {kInfinity, "1"},
           {-kInfinityF, "1"},
           {-0.0F, "0"},
           {std::numeric_limits<double>::denorm_min(), "1"},
           {std::numeric_limits<float>::denorm_min(), "1"}});
    EXPECT_TRUE(std::isnan(ToDouble(kNaNF)));
    EXPECT_TRUE(std::isnan(ToSingle(kNaN)));
    EXPECT_EQ(ToSingle(kInfinity), kInfinityF);
    EXPECT_EQ(ToSingle(-kInfinity), -kInfinityF);
    EXPECT_EQ(ToDouble(-kInfinityF), -kInfinity);
    EXPECT_EQ(ToText(kNaNF), "NaN");
}

TEST(ConversionLimits, TextIsTrueUnlessItsNumberIsZero) {
    Check(ToBoolean,
          {{"1e400", "1"},
           {"-1e-400", "1"},
           {"0e400", "0"},
           {" 0,0 ", "fault 13"},
           {" True", "fault 13"},
           {"False ", "fault 13"},
           {"NaN", "fault 13"},
           {"INF", "fault 13"}});
}

TEST(ConversionLimits, HalvesAtTheEndsOfTheRanges) {
    Check(ToByte,
          {{255.49, "255"},
           {255.5, "fault 6"},
           {-0.5, "0"},
           {-0.5000001, "fault 6"},
           {255.5F, "fault 6"},
           {-0.5F, "0"},
           {"-0.5", "0"},
           {"-0.50000000000000000001", "fault 6"},
           {"255.49999999999999999999", "255"}});
    Check(ToInteger,
          {{32766.5, "32766"},
           {32767.5F, "fault 6"},
           {-32768.5F, "-32768"},
           {-32767.5, "-32768"},
           {"-32768.5000000000000000001", "fault 6"},
           {"32767.4999999999999999999", "32767"}});
    Check(ToLong,
          {{2147483646.5, "2147483646"},
           {2147483647.4999998, "2147483647"},
           {-2147483648.5000005, "fault 6"},
           {-2147483648.0F, "-2147483648"},
           {2147483648.0F, "fault 6"},
           {"2147483647.4999999999999999", "2147483647"},
           {"-2147483648.5000000000000001", "fault 6"}});
}

TEST(ConversionLimits, DecimalsRoundAsExactNumbers) {
    const auto scaled = [](const char* digits, std::int64_t exponent, bool negative) {
        return Variant(Decimal::FromDigits(negative, digits, exponent));
    };
    Check(ToByte,
          {{scaled("5", -1, true), "0"},
           {scaled("5000000000000000000000000001", -28, true), "fault 6"},
           {scaled("2555", -1, false), "fault 6"}});
    Check(ToInteger,
          {{scaled("327685", -1, true), "-32768"}, {scaled("3276851", -2, true), "fault 6"}});
    Check(ToLong,
          {{scaled("21474836485", -1, true), "-2147483648"},
           {scaled("21474836474999999999999999", -16, false), "2147483647"},
           {scaled("79228162514264337593543950335", 0, false), "fault 6"}});
    // The last one's low 64 bits are all zero.
    Check(ToBoolean,
          {{scaled("1", -28, true), "1"},
           {scaled("0", 0, true), "0"},
           {scaled("18446744073709551616", 0, false), "1"}});
}

TEST(ConversionLimits, SingleEndsHalfAStepAboveItsLargest) {
    constexpr double kHalfStepAbove = 0x1.ffffffp127;
    EXPECT_EQ(ToSingle(std::nextafter(kHalfStepAbove, 0.0)), std::numeric_limits<float>::max());
    EXPECT_EQ(ToSingle(-std::nextafter(kHalfStepAbove, 0.0)), std::numeric_limits<float>::lowest());
    EXPECT_EQ(Outcome(ToSingle, kHalfStepAbove), "fault 6");
    EXPECT_EQ(Outcome(ToSingle, -kHalfStepAbove), "fault 6");
    EXPECT_EQ(ToSingle(1e-46), 0.0F);
    EXPECT_TRUE(std::signbit(ToSingle(-0.0)));
}

TEST(ConversionLimits, LongTextsAreReadToTheirEnd) {
    const std::string zeros(100'000, '0');
    const std::string blanks(100'000, ' ');
    EXPECT_EQ(ToLong(blanks + "-7" + blanks), -7);
    EXPECT_EQ(ToLong(zeros + "2.5" + zeros), 2);
    EXPECT_EQ(ToLong(zeros + "2.5" + zeros + "1"), 3);
    EXPECT_EQ(ToDouble("1" + zeros + "e-100000"), 1.0);
    EXPECT_EQ(ToDecimal("3" + zeros + "e-100000"), Decimal::FromInt64(3));
    EXPECT_EQ(ToDecimal("0." + zeros + "1"), Decimal());
    EXPECT_FALSE(ToBoolean(zeros));
    EXPECT_EQ(Outcome(ToLong, "1" + zeros), "fault 6");
    EXPECT_EQ(Outcome(ToDouble, "1" + zeros), "fault 6");
    EXPECT_EQ(Outcome(ToDecimal, "1" + zeros), "fault 6");
    EXPECT_EQ(Outcome(ToDouble, zeros + "x"), "fault 13");
    EXPECT_EQ(Outcome(ToDouble, blanks), "fault 13");
}

}  // namespace
}  // namespace hexmire
