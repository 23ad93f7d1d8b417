// Bodies that would only burn the host are refused by their item headers alone (SEMI E5, item
// header).
#include <hexmire/driver/BodyCheck.h>

#include "../../fakes/HsmsRig.h"
#include <gtest/gtest.h>

namespace hexmire::test {
namespace {

using link::BodyCheck;
using Verdict = BodyCheck::Verdict;
using Bytes = std::vector<std::uint8_t>;

Verdict Check(const Bytes& body, std::uint32_t maxDepth = 1'000) {
    return BodyCheck().Check(body, maxDepth);
}
Verdict Check(std::string_view hex, std::uint32_t maxDepth = 1'000) {
    return Check(HexToBytes(hex), maxDepth);
}

Bytes Nested(std::size_t lists) {
    Bytes body;
    for (std::size_t list = 1; list < lists; ++list) {
        body.push_back(0x01), body.push_back(0x01);
    }
    body.push_back(0x01), body.push_back(0x00);
    return body;
}

Bytes ListOf(std::uint32_t claimed, std::size_t present, std::uint8_t item) {
    Bytes body{0x03,
               static_cast<std::uint8_t>(claimed >> 16U),
               static_cast<std::uint8_t>(claimed >> 8U),
               static_cast<std::uint8_t>(claimed)};
    body.insert(body.end(), present, item);
    return body;
}

TEST(BodyCheck, OrdinaryBodiesPass) {
    EXPECT_EQ(Check(""), Verdict::Pass);
    EXPECT_EQ(Check("0100"), Verdict::Pass);
    EXPECT_EQ(Check("4103414243"), Verdict::Pass);
    EXPECT_EQ(Check("0103 B10400000001 0102 4101 41 2101 FF 0100"), Verdict::Pass);
}

TEST(BodyCheck, NestingIsAllowedUpToTheLimitAndNoFurther) {
    EXPECT_EQ(Check(Nested(1'000)), Verdict::Pass);
    EXPECT_EQ(Check(Nested(1'001)), Verdict::TooDeep);
    EXPECT_EQ(Check("01010100", 1), Verdict::TooDeep);
    EXPECT_EQ(Check("0100", 1), Verdict::Pass);
}

TEST(BodyCheck, AMillionNestedListsAreRefused) {
    EXPECT_EQ(Check(Nested(1'000'000)), Verdict::TooDeep);
    EXPECT_EQ(Check(Nested(1'000'000), 1'000'000), Verdict::Pass);
}

TEST(BodyCheck, ListsMayClaimFewItemsTooMany) {
    EXPECT_EQ(Check(ListOf(4'096, 0, 0)), Verdict::Pass);
    EXPECT_EQ(Check(ListOf(4'097, 0, 0)), Verdict::TooManyClaimed);
    EXPECT_EQ(Check(ListOf(0xFFFFFF, 10, 0x41)), Verdict::TooManyClaimed);
    EXPECT_EQ(Check(ListOf(5'096, 1'000, 0x00)), Verdict::Pass) << "an item may be one byte";
    EXPECT_EQ(Check(ListOf(5'097, 1'000, 0x00)), Verdict::TooManyClaimed);
}

TEST(BodyCheck, ClaimsOfAllOpenListsCountTogether) {
    Bytes body;
    for (int level = 0; level < 5; ++level) {
        const Bytes list = ListOf(1'000, 0, 0);
        body.insert(body.end(), list.begin(), list.end());
    }
    EXPECT_EQ(Check(body), Verdict::TooManyClaimed);
}

TEST(BodyCheck, AnItemThatEatsItsSiblingsBytesDoesNotHideTheirClaim) {
    Bytes body = ListOf(50'000, 0, 0);
    const Bytes text = HexToBytes("42C350");  // A[50000]
    body.insert(body.end(), text.begin(), text.end());
    body.insert(body.end(), 50'000, 0x20);
    EXPECT_EQ(Check(body), Verdict::TooManyClaimed);
}

TEST(BodyCheck, BytesThatTheDecoderReadsAsTheNextItemAreWalkedToo) {
    // A1 03 is an U8 of three bytes, 3/8 of a value: the decoder reads none of them as its value.
    EXPECT_EQ(Check("0102 A103 02FFFF"), Verdict::TooManyClaimed);
    // Six bytes of U4 are one and a half values, read as two: two bytes of what follows are eaten.
    EXPECT_EQ(Check("0102 B106 000000010000 0303FFFFFF"), Verdict::Pass);
}

TEST(BodyCheck, WhatFollowsTheTopItemIsNotWalked) {
    EXPECT_EQ(Check("4101 41 03FFFFFF"), Verdict::Pass);
}

TEST(BodyCheck, CutOffHeadsEndTheWalk) {
    for (const char* hex : {"03", "03FF", "03FFFF", "41", "42FF", "4105 41", "0102 41"}) {
        EXPECT_EQ(Check(hex), Verdict::Pass) << hex;
    }
}

}  // namespace
}  // namespace hexmire::test
