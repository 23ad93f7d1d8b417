#include "LineCompletion.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace hexmire::program {
namespace {

using Words = std::vector<std::string>;

TEST(LineCompletion, offers_what_the_table_says) {
    const LineCompletion completion(CommonCommands(), {"S1F1", "S1F13", "Are you there"});
    const struct {
        const char* Line;
        std::size_t Replaced;
        Words Candidates;
    } kCases[] = {
        {"s", 1, {"send", "show", "set"}},
        {"  con", 3, {"connect"}},
        {"fetch", 5, {}},
        {"send ", 0, {"S1F1", "S1F13", "Are you there"}},
        {"send\ts1", 2, {"S1F1", "S1F13"}},
        {"show are YOU", 7, {"Are you there"}},
        {"reply S1F13", 5, {"S1F13"}},
        {"set t3", 2, {"T3Timeout"}},
        {"set T3Timeout 4", 0, {}},
        {"help qu", 2, {"quit"}},
        {"wait 1", 0, {}},
        {"fetch S1", 0, {}},
    };
    for (const auto& one : kCases) {
        const Completions found = completion.At(one.Line);
        EXPECT_EQ(found.Candidates, one.Candidates) << one.Line;
        if (!one.Candidates.empty()) {
            EXPECT_EQ(found.Replaced, one.Replaced) << one.Line;
        }
    }
    EXPECT_EQ(completion.At("").Candidates.size(), CommonCommands().All().size());
}

TEST(LineCompletion, beginning_that_all_share_is_found) {
    EXPECT_EQ(CommonBeginning({}), "");
    EXPECT_EQ(CommonBeginning({"S1F1"}), "S1F1");
    EXPECT_EQ(CommonBeginning({"S1F13", "s1f1", "S1F15"}), "S1F1");
    EXPECT_EQ(CommonBeginning({"a", "b"}), "");
}

}  // namespace
}  // namespace hexmire::program
