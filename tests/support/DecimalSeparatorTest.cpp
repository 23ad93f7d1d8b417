#include <hexmire/support/Conversion.h>
#include <hexmire/support/Fault.h>
#include <hexmire/support/Text.h>

#include <gtest/gtest.h>
#include <stdlib.h>

#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace hexmire {
namespace {

/// A process whose numbers have a decimal comma, for the time of one test.
class CommaLocale : public testing::Test {
protected:
    void SetUp() override {
        const std::filesystem::path folder =
            std::filesystem::path(HEXMIRE_BINARY_DIR) / "test-locales";
        std::filesystem::create_directories(folder);
        if (!std::filesystem::exists(folder / "de_DE")) {
            const std::string command = "localedef -i de_DE -f ISO-8859-1 '" +
                                        (folder / "de_DE").string() + "' > /dev/null 2>&1";
            static_cast<void>(std::system(command.c_str()));
        }
        ::setenv("LOCPATH", folder.c_str(), 1);
        if (std::setlocale(LC_NUMERIC, "de_DE") == nullptr) {
            GTEST_SKIP() << "no locale with a decimal comma can be made here";
        }
    }
    void TearDown() override {
        std::setlocale(LC_NUMERIC, "C");
        ::unsetenv("LOCPATH");
    }
};

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
