#include <hexmire/support/Conversion.h>
#include <hexmire/support/Fault.h>
#include <hexmire/support/Text.h>

#include "../fakes/CommaLocale.h"
#include <gtest/gtest.h>

#include <cstdint>

namespace hexmire {
namespace {

using fakes::CommaLocale;

std::int32_t FaultOf(const char* text) {
    try {
        static_cast<void>(ToDouble(text));
    } catch (const Fault& fault) {
        return fault.Number();
    }
    return 0;
}

TEST(DecimalSeparator, IsThePointAtFirst) { EXPECT_EQ(DecimalSeparator(), "."); }

TEST_F(CommaLocale, DecimalTextsTakeTheComma) {
    EXPECT_EQ(DecimalSeparator(), ",");
    EXPECT_EQ(ToDouble("1,5"), 1.5);
    EXPECT_EQ(ToLong("2,5"), 2);
    EXPECT_EQ(ToLong("3,5"), 4);
    EXPECT_EQ(FaultOf("1.5"), 13);
    EXPECT_EQ(FaultOf("1.000,5"), 13);
    EXPECT_EQ(FaultOf("1,000,5"), 13);
}

TEST_F(CommaLocale, NumberLiteralsKeepThePoint) {
    EXPECT_EQ(LeadingNumber("1.5"), 1.5);
    EXPECT_EQ(LeadingNumber("1,5"), 1.0);
}

TEST_F(CommaLocale, TextsOfNumbersKeepThePoint) {
    EXPECT_EQ(ToText(1.5), "1.5");
    EXPECT_EQ(ToText(1.5F), "1.5");
    EXPECT_EQ(ToText(Decimal(0, 15, false, 1)), "1.5");
    EXPECT_EQ(ToText(1.25e20), "1.25E+20");
}

TEST_F(CommaLocale, UpperCaseIsUntouched) { EXPECT_EQ(UpperCase("i\xFC"), "I\xDC"); }

}  // namespace
}  // namespace hexmire
