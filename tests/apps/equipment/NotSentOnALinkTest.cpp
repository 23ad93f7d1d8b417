#include "EquipmentOnALink.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <string>

namespace hexmire::program {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::StartsWith;

class NotSentOnALink : public EquipmentOnALink {};

TEST_F(NotSentOnALink, ABodyThatIsCutOffIsRefusedAndChangesNothing) {
    Start();
    *cutNext_ = true;
    Send(7, 17, List({Ascii("")}));  // What is left could mean all recipes.
    EXPECT_THAT(SeenUntil("S9F7"), ElementsAre("S9F7"));
    EXPECT_THAT(host_.Last.BodyHex, StartsWith("21 0A 00 00 87 11 00 00 00 00 00 "));
    EXPECT_EQ(role_.Simulated().Model().Recipes.size(), 2U);
    EXPECT_THAT(equipment_.Lines, testing::Contains("error 9"));
}

TEST_F(NotSentOnALink, OfflineABodyThatIsCutOffIsAbortedAsAnyOther) {
    Start();
    EXPECT_EQ(Do("offline"), "");
    *cutNext_ = true;
    Send(7, 17, List({Ascii("")}));
    EXPECT_EQ(SeenUntil("S7F0").front(), "S7F0");
}

TEST_F(NotSentOnALink, AnErrorReportIsNotAnsweredWhateverItsWBitSays) {
    Start();
    Send(9, 1);
    Send(1, 1);
    EXPECT_THAT(SeenUntil("S1F2"), ElementsAre("S1F2"));
}

TEST_F(NotSentOnALink, WhatTheDictionaryHasNoReplyForIsNotAnswered) {
    Start();
    const auto entry = equipmentSide_.Control().SECSDictionary()->SECSTrans("S2F25");
    entry->Secondary()->Name("");
    entry->Secondary()->Description("");
    SetBody(*entry->Secondary(), std::nullopt);
    Send(2, 25, Binary(1));
    Send(1, 1);
    EXPECT_THAT(SeenUntil("S1F2"), ElementsAre("S1F2"));
}

TEST_F(NotSentOnALink, WhatCannotGoOutIsNotShownAsSent) {
    Start();
    role_.Simulated().FindEvent("3011")->Enabled = true;
    Plan("S2F41 disconnect");
    Send(2, 41, List({Ascii("START"), List()}));
    EXPECT_EQ(SeenUntil("connect").back(), "connect");
    EXPECT_THAT(equipment_.Sent, ElementsAre());
    EXPECT_EQ(role_.Simulated().Model().ProcessState, "EXECUTING");
}

TEST_F(NotSentOnALink, AReplyThatComesAfterTheEndOfTheLinkIsNotShownAsSent) {
    Start();
    SECSTransPtr late;
    equipmentSide_.OnPrimary = [&](const SECSTransPtr& trans) { late = trans; };
    Send(1, 1);
    EXPECT_TRUE(loop_.RunUntil([&] { return late != nullptr; }, 20s));
    equipmentSide_.Reopen();
    EXPECT_FALSE(equipmentSide_.CanSend());
    equipmentSide_.Reply(late);
    EXPECT_THAT(equipment_.Sent, ElementsAre());
}

TEST_F(NotSentOnALink, AnOperatorIsToldOfAnEventThatCannotBeEncoded) {
    Start();
    Equipment& equipment = role_.Simulated();
    equipment.FindEvent("3020")->Enabled = true;
    equipment.Reports.push_back({Unsigned4(1), {"1102"}});
    equipment.Links.push_back({"3020", {"1"}});
    ASSERT_TRUE(equipment.SetValue("1102", {.Format = FormatU4, .Value = Variant("x")}));
    EXPECT_THAT(Do("event 3020"), StartsWith("cannot send: "));
    EXPECT_THAT(equipment_.Sent, ElementsAre());
    EXPECT_EQ(Do("event 3011"), "");  // It is not enabled.
}

TEST_F(NotSentOnALink, AnOperatorIsToldOfATextThatDoesNotGoOut) {
    Start();
    EXPECT_EQ(Do("offline"), "");
    EXPECT_EQ(Do("terminal hi"), "cannot send: the equipment is offline");
    EXPECT_EQ(Do("online"), "");
    EXPECT_EQ(Do("terminal hi"), "");
    hostSide_.Close();
    EXPECT_TRUE(loop_.RunUntil([&] { return !equipmentSide_.IsConnected(); }, 20s));
    EXPECT_EQ(Do("terminal hi"), "cannot send: no connection");
    EXPECT_THAT(equipment_.Sent, ElementsAre("S10F1"));
}

}  // namespace
}  // namespace hexmire::program
