#include <hexmire/support/Conversion.h>
#include <hexmire/support/Fault.h>

#include "ConversionOutcome.h"
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace hexmire {
namespace {

using testing_conversions::Check;
using testing_conversions::Outcome;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

Variant Digits(const char* digits, std::int64_t exponent = 0, bool negative = false) {
    return Decimal::FromDigits(negative, digits, exponent);
}

TEST(Conversion, KindsWithoutAValueConvertAlike) {
    const std::vector<std::function<std::string(const Variant&)>> conversions{
        [](const Variant& value) { return Outcome(ToByte, value); },
        [](const Variant& value) { return Outcome(ToInteger, value); },
        [](const Variant& value) { return Outcome(ToLong, value); },
        [](const Variant& value) { return Outcome(ToSingle, value); },
        [](const Variant& value) { return Outcome(ToDouble, value); },
        [](const Variant& value) { return Outcome(ToBoolean, value); },
        [](const Variant& value) { return Outcome(ToDecimal, value); },
        [](const Variant& value) { return Outcome(ToText, value); },
    };
    for (const auto& convert : conversions) {
        EXPECT_EQ(convert(Variant::Null()), "fault 94");
        EXPECT_EQ(convert(Variant(std::make_shared<int>(1))), "fault 438");
        EXPECT_EQ(convert(Variant(std::shared_ptr<int>())), "fault 91");
        EXPECT_EQ(convert(Variant(std::vector<std::uint8_t>{1})), "fault 13");
        EXPECT_EQ(convert(Variant(std::vector<std::int32_t>{})), "fault 13");
        EXPECT_EQ(convert(Variant(std::vector<Variant>{1})), "fault 13");
    }
}

TEST(Conversion, EmptyIsZeroFalseOrNoText) {
    EXPECT_EQ(ToByte(Variant()), 0);
    EXPECT_EQ(ToInteger(Variant()), 0);
    EXPECT_EQ(ToLong(Variant()), 0);
    EXPECT_EQ(ToSingle(Variant()), 0.0F);
    EXPECT_EQ(ToDouble(Variant()), 0.0);
    EXPECT_FALSE(ToBoolean(Variant()));
    EXPECT_TRUE(ToDecimal(Variant()).IsZero());
    EXPECT_EQ(ToText(Variant()), "");
}

TEST(Conversion, ToByteKeepsZeroTo255) {
    Check(ToByte,
          {{std::uint8_t{255}, "255"},
           {std::int16_t{-1}, "fault 6"},
           {255, "255"},
           {256, "fault 6"},
           {-1, "fault 6"},
           {254.5, "254"},
           {255.4, "255"},
           {255.5, "fault 6"},
           {253.5, "254"},
           {-0.5, "0"},
           {-0.51, "fault 6"},
           {0.5F, "0"},
           {1.5F, "2"},
           {Digits("2555", -1), "fault 6"},
           {Digits("2545", -1), "254"},
           {"12", "12"},
           {" 12 ", "12"},
           {"255.5", "fault 6"},
           {"256", "fault 6"},
           {"", "fault 13"},
           {"FF", "fault 13"},
           {false, "0"},
           {kNaN, "fault 6"},
           {kInfinity, "fault 6"}});
}

TEST(Conversion, ToIntegerRoundsBeforeItChecksTheRange) {
    Check(ToInteger,
          {{std::uint8_t{255}, "255"},
           {32767, "32767"},
           {32768, "fault 6"},
           {-32768, "-32768"},
           {-32769, "fault 6"},
           {32767.4, "32767"},
           {32767.5, "fault 6"},
           {-32768.5, "-32768"},
           {-32768.51, "fault 6"},
           {2.5, "2"},
           {3.5, "4"},
           {-2.5, "-2"},
           {-3.5, "-4"},
           {true, "-1"},
           {false, "0"},
           {"32767.5", "fault 6"},
           {"-32768.5", "-32768"},
           {"0.5", "0"},
           {"1.5", "2"},
           {-kInfinity, "fault 6"},
           {std::uint32_t{40000}, "fault 6"}});
}

TEST(Conversion, ToLongRoundsBeforeItChecksTheRange) {
    Check(ToLong,
          {{2147483647.4, "2147483647"},
           {2147483647.5, "fault 6"},
           {2147483648.0, "fault 6"},
           {-2147483648.5, "-2147483648"},
           {-2147483649.0, "fault 6"},
           {1e300, "fault 6"},
           {kNaN, "fault 6"},
           {true, "-1"},
           {"2147483647", "2147483647"},
           {"2147483648", "fault 6"},
           {"-2147483648.5", "-2147483648"},
           {"-2147483649", "fault 6"},
           {"2147483646.5000000000000000001", "2147483647"},
           {"1e3", "1000"},
           {"1.5e0", "2"},
           {"25e-1", "2"},
           {"1e400", "fault 6"},
           {"1e-400", "0"},
           {"abc", "fault 13"},
           {std::uint64_t{4294967295U}, "fault 6"},
           {std::int64_t{-2147483648LL}, "-2147483648"},
           {Digits("21474836475", -1), "fault 6"},
           {Digits("21474836465", -1), "2147483646"},
           {16777217.0F, "16777216"},
           {3e9F, "fault 6"}});
}

TEST(Conversion, TextsAreDecimalTextsOnly) {
    Check(ToDouble,
          {{"1.5", "1.500000"},
           {"  -1.5  ", "-1.500000"},
           {"+2", "2.000000"},
           {".5", "0.500000"},
           {"5.", "5.000000"},
           {"1E2", "100.000000"},
           {"1e+2", "100.000000"},
           {"1e-2", "0.010000"},
           {"000012", "12.000000"},
           {"", "fault 13"},
           {" ", "fault 13"},
           {".", "fault 13"},
           {"-", "fault 13"},
           {"e5", "fault 13"},
           {"1e", "fault 13"},
           {"1e+", "fault 13"},
           {"1.2.3", "fault 13"},
           {"1 2", "fault 13"},
           {"- 1", "fault 13"},
           {"--1", "fault 13"},
           {"1-", "fault 13"},
           {"1,5", "fault 13"},
           {"1,000", "fault 13"},
           {"0x10", "fault 13"},
           {"&H10", "fault 13"},
           {"inf", "fault 13"},
           {"INF", "fault 13"},
           {"nan", "fault 13"},
           {"1e5.5", "fault 13"},
           {"1\t", "fault 13"},
           {"\n1", "fault 13"},
           {"1f", "fault 13"},
           {"1d2", "fault 13"},
           {"True", "fault 13"},
           {"12abc", "fault 13"},
           {std::string("1\0", 2), "fault 13"},
           {"\xA0"
            "1",
            "fault 13"}});
}

TEST(Conversion, ToDoubleReadsTheNearestNumber) {
    EXPECT_EQ(ToDouble("0.1"), 0.1);
    EXPECT_EQ(ToDouble("1.7976931348623157E+308"), std::numeric_limits<double>::max());
    EXPECT_EQ(ToDouble("4.9e-324"), std::numeric_limits<double>::denorm_min());
    EXPECT_EQ(ToDouble("1e-99999999999999999999"), 0.0);
    EXPECT_EQ(ToDouble("0e99999999999999999999"), 0.0);
    EXPECT_EQ(Outcome(ToDouble, "1e309"), "fault 6");
    EXPECT_EQ(Outcome(ToDouble, "-1e99999999999999999999"), "fault 6");
    EXPECT_EQ(ToDouble("9007199254740993"), 9007199254740992.0);
    EXPECT_EQ(ToDouble(0.1F), static_cast<double>(0.1F));
    EXPECT_EQ(ToDouble(true), -1.0);
}

TEST(Conversion, ToSingleRefusesWhatIsBeyondItsRange) {
    EXPECT_EQ(ToSingle("0.1"), 0.1F);
    EXPECT_EQ(ToSingle(0.1), 0.1F);
    EXPECT_EQ(ToSingle(16777217), 16777216.0F);
    EXPECT_EQ(ToSingle(true), -1.0F);
    EXPECT_EQ(ToSingle("3.4028235E+38"), std::numeric_limits<float>::max());
    EXPECT_EQ(ToSingle(3.4028234663852886e38), std::numeric_limits<float>::max());
    EXPECT_EQ(ToSingle(1e-60), 0.0F);
    Check(ToSingle,
          {{1e39, "fault 6"},
           {-1e39, "fault 6"},
           {"1e39", "fault 6"},
           {"3.41E+38", "fault 6"},
           {1e308, "fault 6"}});
}

TEST(Conversion, ToBooleanTakesAnyNumberButZeroAsTrue) {
    Check(ToBoolean,
          {{0, "0"},
           {1, "1"},
           {-1, "1"},
           {2, "1"},
           {0.0, "0"},
           {-0.0, "0"},
           {0.1, "1"},
           {1e-300, "1"},
           {std::uint8_t{0}, "0"},
           {std::uint8_t{255}, "1"},
           {std::uint64_t{0}, "0"},
           {Digits("1", -28), "1"},
           {"True", "1"},
           {"TRUE", "1"},
           {"tRuE", "1"},
           {"False", "0"},
           {"false", "0"},
           {"0", "0"},
           {"0.0", "0"},
           {"-0", "0"},
           {"0.4", "1"},
           {"-1", "1"},
           {" 1 ", "1"},
           {"T", "fault 13"},
           {"F", "fault 13"},
           {"yes", "fault 13"},
           {"", "fault 13"},
           {"Tru", "fault 13"},
           {"Truee", "fault 13"}});
}

TEST(Conversion, ToDecimalIsExact) {
    Check(ToDecimal,
          {{"18446744073709551615", "18446744073709551615"},
           {"-0.5", "-0.5"},
           {"1e28", "10000000000000000000000000000"},
           {"79228162514264337593543950335", "79228162514264337593543950335"},
           {"79228162514264337593543950336", "fault 6"},
           {"1e29", "fault 6"},
           {"abc", "fault 13"},
           {true, "-1"},
           {2.5, "2.5"},
           {1e29, "fault 6"},
           {kNaN, "fault 6"},
           {-7, "-7"},
           {std::uint8_t{7}, "7"},
           {0.5F, "0.5"},
           {std::numeric_limits<std::uint64_t>::max(), "18446744073709551615"}});
}

TEST(Conversion, WholeKindsAreWrittenPlainly) {
    Check(ToText,
          {{std::uint8_t{7}, "7"},
           {std::int16_t{-32768}, "-32768"},
           {2147483647, "2147483647"},
           {std::numeric_limits<std::uint64_t>::max(), "18446744073709551615"},
           {Digits("125", -2, true), "-1.25"},
           {true, "True"},
           {false, "False"},
           {"abc", "abc"},
           {"", ""},
           {" 1 ", " 1 "}});
}

TEST(Conversion, DoublesAreWrittenWithTheShortestDigitsThatReadBack) {
    Check(ToText,
          {{0.0, "0"},
           {-0.0, "0"},
           {1.0, "1"},
           {1.5, "1.5"},
           {-3.0, "-3"},
           {0.1, "0.1"},
           {1.0 / 3.0, "0.3333333333333333"},
           {100.0, "100"},
           {123456.789, "123456.789"},
           {0.00001, "0.00001"},
           {0.000012345, "0.000012345"},
           {0.000009, "9E-06"},
           {1e-6, "1E-06"},
           {-1.5e-10, "-1.5E-10"},
           {1e14, "100000000000000"},
           {123456789012345.0, "123456789012345"},
           {999999999999999.0, "999999999999999"},
           {1e15, "1E+15"},
           {1234567890123456.0, "1.234567890123456E+15"},
           {-1.25e20, "-1.25E+20"},
           {1.5e100, "1.5E+100"},
           {1e-300, "1E-300"},
           {5e-324, "5E-324"},
           {std::numeric_limits<double>::max(), "1.7976931348623157E+308"},
           {9007199254740993.0, "9.007199254740992E+15"},
           {kNaN, "NaN"},
           {-kNaN, "NaN"},
           {kInfinity, "INF"},
           {-kInfinity, "-INF"}});
}

TEST(Conversion, SinglesAreWrittenFromTheirOwnThirtyTwoBits) {
    constexpr float kInfinityF = std::numeric_limits<float>::infinity();
    Check(ToText,
          {{0.1F, "0.1"},
           {-0.0F, "0"},
           {16777216.0F, "16777216"},
           {123456789.0F, "123456790"},
           {1e10F, "10000000000"},
           {3.3F, "3.3"},
           {1e14F, "100000000000000"},
           {1e15F, "1E+15"},
           {1e-5F, "0.00001"},
           {1e-6F, "1E-06"},
           {std::numeric_limits<float>::max(), "3.4028235E+38"},
           {std::numeric_limits<float>::denorm_min(), "1E-45"},
           {kInfinityF, "INF"},
           {-kInfinityF, "-INF"}});
}

TEST(Conversion, NumbersReadBackFromTheirText) {
    std::uint64_t bits = 0x9E3779B97F4A7C15ULL;
    for (int round = 0; round < 20000; ++round) {
        bits = bits * 6364136223846793005ULL + 1442695040888963407ULL;
        double value = 0;
        std::memcpy(&value, &bits, sizeof(value));
        if (std::isfinite(value)) {
            ASSERT_EQ(ToDouble(ToText(value)), value) << ToText(value);
        }
        const auto half = static_cast<std::uint32_t>(bits >> 32U);
        float single = 0;
        std::memcpy(&single, &half, sizeof(single));
        if (std::isfinite(single)) {
            ASSERT_EQ(ToSingle(ToText(single)), single) << ToText(single);
        }
    }
}

TEST(Conversion, NarrowingToSixteenBitsOverflows) {
    EXPECT_EQ(NarrowToInteger(32767), 32767);
    EXPECT_EQ(NarrowToInteger(-32768), -32768);
    for (const std::int64_t value : {std::int64_t{32768},
                                     std::int64_t{-32769},
                                     std::int64_t{65536},
                                     std::numeric_limits<std::int64_t>::max(),
                                     std::numeric_limits<std::int64_t>::min()}) {
        EXPECT_THROW(static_cast<void>(NarrowToInteger(value)), Fault) << value;
    }
    try {
        static_cast<void>(NarrowToInteger(86400));
    } catch (const Fault& fault) {
        EXPECT_EQ(fault.Number(), 6);
    }
}

}  // namespace
}  // namespace hexmire
