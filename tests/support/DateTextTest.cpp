#include <hexmire/support/DateText.h>

#include <gtest/gtest.h>

namespace hexmire {
namespace {

using std::chrono::day;
using std::chrono::month;
using std::chrono::year;

TEST(DateText, ADayHasTenCharacters) {
    EXPECT_EQ(DateText({year(2024), month(3), day(5)}, '-'), "2024-03-05");
    EXPECT_EQ(DateText({year(2024), month(12), day(31)}, '/'), "2024/12/31");
    EXPECT_EQ(DateText({year(987), month(12), day(31)}, '-'), "0987-12-31");
}

}  // namespace
}  // namespace hexmire
