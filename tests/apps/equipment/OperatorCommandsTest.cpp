#include "Failure.h"
#include "ScriptWords.h"
#include "equipment/Misbehaviour.h"
#include "equipment/OperatorCommands.h"
#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace hexmire::program {
namespace {

using enum Misbehaviour::Kind;

TEST(MisbehaviourPlan, IsReadFromWords) {
    const std::pair<const char*, Misbehaviour> kCases[] = {
        {"S1F3 silent", {.Primary = {1, 3}, .What = Silent, .Times = 1}},
        {"s2f41 wrong-function 3", {.Primary = {2, 41}, .What = WrongFunction, .Times = 3}},
        {"S1F1 wrong-system-bytes always",
         {.Primary = {1, 1}, .What = WrongSystemBytes, .Times = std::nullopt}},
        {"S1F1 truncated", {.Primary = {1, 1}, .What = Truncated, .Times = 1}},
        {"S1F1 duplicate", {.Primary = {1, 1}, .What = Duplicate, .Times = 1}},
        {"S1F1 disconnect 2", {.Primary = {1, 1}, .What = Disconnect, .Times = 2}},
        {"S1F1 late 0.25", {.Primary = {1, 1}, .What = Late, .Delay = Duration(250), .Times = 1}},
        {"S1F1 late 2 4", {.Primary = {1, 1}, .What = Late, .Delay = Duration(2000), .Times = 4}}};
    for (const auto& [text, expected] : kCases)
        EXPECT_EQ(ReadMisbehaviour(SplitWords(text)), expected) << text;
}

TEST(MisbehaviourPlan, WhatCannotBeReadIsRefused) {
    for (const char* text : {"", "S1F1", "S1F1 late", "S1F1 silent 1 2", "S1F1 late 1 2 3"})
        EXPECT_THROW(static_cast<void>(ReadMisbehaviour(SplitWords(text))), UsageOfCommand) << text;
    for (const char* text : {"F1 silent",
                             "S1F2 silent",
                             "S1F0 silent",
                             "S1F1 silent 0",
                             "S1F1 silent -1",
                             "S1F1 silent often",
                             "S1F1 late x",
                             "S1F1 rude"})
        EXPECT_THROW(static_cast<void>(ReadMisbehaviour(SplitWords(text))), BadCommand) << text;
}

TEST(MisbehaviourPlan, HoldsForItsPrimaryAsOftenAsItSays) {
    Misbehaviours plan;
    plan.Plan({.Primary = {1, 3}, .What = Silent, .Times = 2});
    plan.Plan({.Primary = {1, 1}, .What = Truncated, .Times = std::nullopt});
    EXPECT_FALSE(plan.Take(1, 13).has_value());
    EXPECT_EQ(plan.Take(1, 3)->What, Silent);
    EXPECT_EQ(plan.Take(1, 3)->What, Silent);
    EXPECT_FALSE(plan.Take(1, 3).has_value());
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(plan.Take(1, 1)->What, Truncated);
    plan.Plan({.Primary = {1, 1}, .What = Duplicate, .Times = 1});
    EXPECT_EQ(plan.Take(1, 1)->What, Duplicate);
    EXPECT_FALSE(plan.Take(1, 1).has_value());
    plan.Plan({.Primary = {1, 1}, .What = Duplicate, .Times = 1});
    plan.Clear();
    EXPECT_FALSE(plan.Take(1, 1).has_value());
}

TEST(OperatorValue, IsReadInTheFormatOfTheVariable) {
    EXPECT_EQ(ValueFromText(FormatAscii, "LOT 7 'x' >"), Ascii("LOT 7 'x' >"));
    EXPECT_EQ(ValueFromText(FormatAscii, "\xC3\xA4"), Ascii("\xE4"));
    EXPECT_EQ(ValueFromText(FormatAscii, "<A '\xC3\xA4'>"), Ascii("\xE4"));
    EXPECT_EQ(ValueFromText(FormatU4, "4294967295"), Unsigned4(4294967295U));
    EXPECT_EQ(ValueFromText(FormatBoolean, "T"), Boolean(true));
    EXPECT_EQ(ValueFromText(FormatBinary, "0x10"), Binary(16));
    EXPECT_EQ(ValueFromText(FormatF4, "20.25"), (Datum{.Format = FormatF4, .Value = 20.25F}));
    EXPECT_EQ(ValueFromText(FormatU2, "1 2"),
              (Datum{.Format = FormatU2, .Value = Variant(std::vector<std::int32_t>{1, 2})}));
    EXPECT_EQ(ValueFromText(FormatU4, "<L <A 'x'>>"), List({Ascii("x")}));
    for (const auto& [format, text] : {std::pair(FormatU1, "256"),
                                       std::pair(FormatU1, "x"),
                                       std::pair(FormatBoolean, "maybe"),
                                       std::pair(FormatU1, "1> <U1 2"),
                                       std::pair(FormatU1, "1>. S1F1 <U1 2"),
                                       std::pair(FormatU4, "<U4"),
                                       std::pair(FormatAscii, "5\xE2\x82\xAC"),
                                       std::pair(FormatU4, "<A '\xE2\x82\xAC'>"),
                                       std::pair(FormatAscii, "\xE4")})
        EXPECT_THROW(static_cast<void>(ValueFromText(format, text)), BadCommand) << text;
}

std::string NestedLists(std::size_t levels) {
    std::string sml;
    for (std::size_t i = 0; i < levels; ++i)
        sml += "<L ";
    return sml + std::string(levels, '>');
}

TEST(OperatorValue, IsNestedAsDeepAsALinkTakesIt) {
    EXPECT_EQ(ValueFromText(FormatList, NestedLists(2)), List({List()}));
    EXPECT_EQ(ValueFromText(FormatList, NestedLists(DeepestValue())).Items.size(), 1U);
    for (const std::size_t levels : {DeepestValue() + 1, std::size_t{100'000}})
        EXPECT_THROW(static_cast<void>(ValueFromText(FormatList, NestedLists(levels))), BadCommand);
}

}  // namespace
}  // namespace hexmire::program
