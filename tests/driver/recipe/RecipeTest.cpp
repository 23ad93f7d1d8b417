// Process programs found in the bytes of a message.
#include <hexmire/driver/recipe/Recipe.h>
#include <hexmire/support/HexBytes.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace hexmire::link {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes BytesOf(std::string_view hex) {
    Bytes bytes((hex.size() + 1) / 3);
    EXPECT_TRUE(ReadHexText(hex, bytes.size(), bytes.data()));
    return bytes;
}

std::string Shown(std::uint8_t stream, std::uint8_t function, const Bytes& body) {
    const auto recipe = FindRecipe(stream, function, body);
    return recipe ? HexText(recipe->Id) + "| " + HexText(recipe->Body) : "none";
}

struct Row {
    const char* Name;
    const char* Body;
    const char* Wanted;
};

// L,2 {PPID, PPBODY}
const Row kRows[] = {
    {"ASCII", "01 02 41 02 50 31 41 03 61 62 63", "50 31 | 61 62 63 "},
    {"binary", "01 02 41 02 50 31 21 03 00 FF 80", "50 31 | 00 FF 80 "},
    {"JIS-8", "01 02 41 02 50 31 45 01 A6", "50 31 | A6 "},
    {"two-byte text", "01 02 41 02 50 31 49 04 00 01 00 41", "50 31 | 00 01 00 41 "},
    {"Boolean", "01 02 41 02 50 31 25 02 01 00", "50 31 | 01 00 "},
    {"U1", "01 02 41 02 50 31 A5 02 01 02", "50 31 | 01 02 "},
    {"I4", "01 02 41 02 50 31 71 08 00 00 00 01 FF FF FF FF", "50 31 | 00 00 00 01 FF FF FF FF "},
    {"F8", "01 02 41 02 50 31 81 08 3F F0 00 00 00 00 00 00", "50 31 | 3F F0 00 00 00 00 00 00 "},
    {"empty", "01 02 41 02 50 31 41 00", "50 31 | "},
    {"empty without length bytes", "01 02 41 02 50 31 40", "50 31 | "},
    {"list", "01 02 41 02 50 31 01 02 A5 01 07 41 01 78", "50 31 | 01 02 A5 01 07 41 01 78 "},
    {"empty list", "01 02 41 02 50 31 01 00", "50 31 | 01 00 "},
    {"nested lists", "01 02 41 02 50 31 01 01 01 01 01 00", "50 31 | 01 01 01 01 01 00 "},
    {"three length bytes", "01 02 41 02 50 31 43 00 00 01 61", "50 31 | 61 "},
    {"length bytes of the list", "03 00 00 02 41 02 50 31 41 01 61", "50 31 | 61 "},
    {"binary identifier", "01 02 21 02 00 2F 41 01 61", "00 2F | 61 "},
    {"empty identifier", "01 02 41 00 41 01 61", "| 61 "},
    {"no item", "", "none"},
    {"no list", "41 02 50 31", "none"},
    {"empty top list", "01 00", "none"},
    {"list of one", "01 01 41 02 50 31", "none"},
    {"list of three", "01 03 41 02 50 31 41 01 61 41 00", "none"},
    {"number as identifier", "01 02 A5 01 31 41 01 61", "none"},
    {"list as identifier", "01 02 01 00 41 01 61", "none"},
    {"format that there is not", "01 02 41 02 50 31 F9 01 61", "none"},
    {"bad format inside the list", "01 02 41 02 50 31 01 01 F9 00", "none"},
    {"list that claims too much", "01 02 41 02 50 31 03 FF FF FF", "none"},
};

TEST(Recipe, IsFoundInAListOfIdentifierAndBody) {
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.Name);
        const Bytes body = BytesOf(row.Body);
        EXPECT_EQ(Shown(7, 3, body), row.Wanted);
        EXPECT_EQ(Shown(7, 6, body), row.Wanted);
    }
}

TEST(Recipe, BytesLeftOverMakeItNone) {
    for (const Row& row : kRows) {
        Bytes body = BytesOf(row.Body);
        body.push_back(0);
        EXPECT_EQ(Shown(7, 3, body), "none") << row.Name;
    }
}

TEST(Recipe, EveryTruncationIsNone) {
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.Name);
        const Bytes whole = BytesOf(row.Body);
        for (std::size_t size = 0; size < whole.size(); ++size) {
            // At its exact size, so that a read beyond the end is noticed.
            const Bytes body(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
            EXPECT_EQ(Shown(7, 3, body), "none") << size;
        }
    }
}

TEST(Recipe, OtherMessagesCarryNone) {
    const Bytes body = BytesOf("01 02 41 02 50 31 41 01 61");
    for (int stream = 0; stream < 128; ++stream) {
        for (int function = 0; function < 256; ++function) {
            const bool wanted = stream == 7 && (function == 3 || function == 6);
            const auto s = static_cast<std::uint8_t>(stream);
            const auto f = static_cast<std::uint8_t>(function);
            ASSERT_EQ(CarriesRecipe(s, f, body), wanted) << stream << ' ' << function;
            ASSERT_EQ(FindRecipe(s, f, body).has_value(), wanted) << stream << ' ' << function;
        }
    }
}

TEST(Recipe, AnAnswerMayHaveNone) {
    EXPECT_FALSE(CarriesRecipe(7, 6, {}));
    EXPECT_FALSE(CarriesRecipe(7, 6, BytesOf("01 00")));
    EXPECT_TRUE(CarriesRecipe(7, 6, BytesOf("41 00")));
    EXPECT_TRUE(CarriesRecipe(7, 6, BytesOf("01 01 41 00")));
    EXPECT_TRUE(CarriesRecipe(7, 3, {}));
    EXPECT_TRUE(CarriesRecipe(7, 3, BytesOf("01 00")));
}

TEST(Recipe, ABodyNestedAMillionDeepIsWalkedLikeAnyOther) {
    Bytes body = BytesOf("01 02 41 01 50");
    for (int depth = 0; depth < 1'000'000; ++depth) {
        body.push_back(0x01);
        body.push_back(0x01);
    }
    body.push_back(0x40);
    const auto recipe = FindRecipe(7, 3, body);
    ASSERT_TRUE(recipe);
    EXPECT_EQ(recipe->Body.size(), 2'000'001U);
}

}  // namespace
}  // namespace hexmire::link
