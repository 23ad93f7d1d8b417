#include <hexmire/core/ModGeneral.h>

#include "../fakes/ErrorRecorder.h"
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <limits>
#include <map>
#include <string>
#include <string_view>

namespace hexmire {
namespace {

using ModGeneral::ItemFormatToText;
using ModGeneral::TextToItemFormat;

struct Row {
    std::int32_t Code;
    const char* Name;
};

constexpr std::array kRows{Row{0, "L"},
                           Row{8, "B"},
                           Row{9, "BOOL"},
                           Row{16, "A"},
                           Row{24, "I8"},
                           Row{25, "I1"},
                           Row{26, "I2"},
                           Row{28, "I4"},
                           Row{32, "F8"},
                           Row{36, "F4"},
                           Row{40, "U8"},
                           Row{41, "U1"},
                           Row{42, "U2"},
                           Row{44, "U4"}};

TEST(FormatNames, EveryFormatHasItsName) {
    for (const Row& row : kRows) {
        EXPECT_EQ(ItemFormatToText(row.Code), row.Name);
        EXPECT_EQ(TextToItemFormat(row.Name), row.Code);
    }
}

TEST(FormatNames, EveryOtherNumberIsV) {
    std::map<std::int32_t, std::string> names;
    for (const Row& row : kRows)
        names[row.Code] = row.Name;
    for (std::int32_t code = -600; code <= 600; ++code) {
        EXPECT_EQ(ItemFormatToText(code), names.contains(code) ? names[code] : "V") << code;
    }
    using Limits = std::numeric_limits<std::int32_t>;
    for (const std::int32_t code : {63, 7, 17, 18, 256, 65536, Limits::min(), Limits::max()}) {
        EXPECT_EQ(ItemFormatToText(code), "V") << code;
    }
}

TEST(FormatNames, LetterCaseDoesNotMatter) {
    for (const auto& [text, code] : {std::pair{"bool", 9},
                                     {"Bool", 9},
                                     {"bOOL", 9},
                                     {"l", 0},
                                     {"b", 8},
                                     {"a", 16},
                                     {"i8", 24},
                                     {"u4", 44},
                                     {"f4", 36}}) {
        EXPECT_EQ(TextToItemFormat(text), code) << text;
    }
}

TEST(FormatNames, UnknownTextIsAnyFormat) {
    for (const std::string_view text :
         {"",      "V",     "v",  " A", "A ",  " ",   "LIST", "BOOLEAN", "BOO",
          "BOOLE", "ASCII", "I",  "I3", "I16", "U",   "F",    "F2",      "J",
          "JIS8",  "W",     "63", "16", "0",   "I 4", "\tA",  "\xC0",    "B\xD6OL"}) {
        EXPECT_EQ(TextToItemFormat(text), 63) << text;
    }
    EXPECT_EQ(TextToItemFormat(std::string_view("A\0", 2)), 63);
}

TEST(FormatNames, UnknownTextsAndCodesAreNoErrors) {
    fakes::ErrorRecorder site;
    EXPECT_EQ(TextToItemFormat("nonsense"), 63);
    EXPECT_EQ(ItemFormatToText(-1), "V");
    EXPECT_TRUE(site.Errors.empty());
}

TEST(FormatNames, EnumerationHasTheCodesOfTheStandard) {
    static_assert(FormatList == 0 && FormatBinary == 8 && FormatBoolean == 9 && FormatAscii == 16);
    static_assert(FormatI8 == 24 && FormatI1 == 25 && FormatI2 == 26 && FormatI4 == 28);
    static_assert(FormatF8 == 32 && FormatF4 == 36 && FormatVar == 63);
    static_assert(FormatU8 == 40 && FormatU1 == 41 && FormatU2 == 42 && FormatU4 == 44);
    EXPECT_EQ(ItemFormatToText(FormatBoolean), "BOOL");
}

}  // namespace
}  // namespace hexmire
