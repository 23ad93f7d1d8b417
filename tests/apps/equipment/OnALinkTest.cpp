#include "EquipmentOnALink.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <utility>
#include <vector>

namespace hexmire::program {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;

TEST_F(EquipmentOnALink, AHostSeesALateReplyInTime) {
    Start();
    Plan("S1F1 late 0.05");
    Send(1, 1);
    Send(2, 17);
    EXPECT_THAT(SeenUntil("S1F2"), ElementsAre("S2F18", "S1F2"));
}

TEST_F(EquipmentOnALink, AHostIsToldOfASecondReplyAsOneWithoutPrimary) {
    Start();
    Plan("S1F1 duplicate");
    Send(1, 1);
    EXPECT_THAT(SeenUntil("error 2013"), ElementsAre("S1F2", "S1F2", "error 2013"));
}

TEST_F(EquipmentOnALink, AHostIsToldOfABodyThatIsCutShortAndGetsWhatIsLeft) {
    Start();
    Plan("S1F1 truncated");
    Send(1, 1);
    EXPECT_THAT(SeenUntil("S1F2"), ElementsAre("error 9", "S1F2"));
    EXPECT_EQ(host_.Last.Sml, "S1F2\r\n< L \r\n  < A 'HXM-200' >\r\n  < A >\r\n >\r\n.");
    Send(1, 1);
    EXPECT_THAT(SeenUntil("S1F2"), ElementsAre("S1F2"));
}

TEST_F(EquipmentOnALink, AHostMissesWhatComesWithAnotherFunctionOrNotAtAll) {
    Start();
    Plan("S1F1 wrong-function");
    Plan("S2F17 silent 2");
    Send(1, 1);
    EXPECT_THAT(SeenUntil("error 2013"), ElementsAre("S1F4", "error 2013"));
    Send(2, 17);
    const auto both = [&] { return std::ranges::count(host_.Lines, "error 2012") == 2; };
    EXPECT_TRUE(loop_.RunUntil(both, 20s));
}

TEST_F(EquipmentOnALink, AHostThatChecksSystemBytesMissesAReplyWithOthers) {
    hostSide_.Control().SystemBytesCheck(true);
    Start();
    Plan("S1F1 wrong-system-bytes");
    Send(1, 1);
    EXPECT_THAT(SeenUntil("error 2012"), ElementsAre("S1F2", "error 2013", "error 2012"));
    EXPECT_EQ(host_.Last.SystemBytes, 0);
}

TEST_F(EquipmentOnALink, AHostLosesALinkThatTheEquipmentClosesAndGetsItBack) {
    Start();
    Plan("S1F1 disconnect");
    Send(1, 1);
    const std::vector<std::string> seen = SeenUntil("connect");
    EXPECT_EQ(seen.front(), "disconnect 3035");
    EXPECT_EQ(seen.back(), "connect");
    Send(1, 1);
    EXPECT_EQ(SeenUntil("S1F2").back(), "S1F2");
}

TEST_F(EquipmentOnALink, AnEquipmentWhoseEventNobodyAcknowledgesTellsSo) {
    Start();
    role_.Simulated().FindEvent("3020")->Enabled = true;
    role_.Simulated().Fire("3020");
    role_.Flush();
    EXPECT_THAT(SeenUntil("S9F9"), ElementsAre("S6F11", "S9F9"));
    EXPECT_THAT(host_.Last.BodyHex, testing::StartsWith("21 0A 00 00 86 0B 00 00 00 00 00 "));
    EXPECT_THAT(equipment_.Lines, testing::Contains("error 2012"));
}

TEST_F(EquipmentOnALink, NothingIsSentWithoutAConnection) {
    Start();
    role_.Simulated().FindEvent("3020")->Enabled = true;
    EXPECT_EQ(Do("event 3020"), "");
    EXPECT_THAT(SeenUntil("S6F11"), ElementsAre("S6F11"));
    hostSide_.Close();
    const auto timedOut = [&] { return std::ranges::count(equipment_.Lines, "error 2012") == 1; };
    EXPECT_TRUE(loop_.RunUntil(timedOut, 20s));
    EXPECT_EQ(Do("event 3020"), "");
    EXPECT_THAT(equipment_.Lines, ElementsAre("connect", "disconnect 3035", "error 2012"));
}

TEST_F(EquipmentOnALink, AnOperatorLetsThingsHappen) {
    Start();
    role_.Simulated().FindEvent("3020")->Enabled = true;
    for (const char* command : {"event 3020", "alarm 4002 set", "terminal out of  gas"})
        EXPECT_EQ(Do(command), "") << command;
    EXPECT_THAT(SeenUntil("S10F1"), ElementsAre("S6F11", "S5F1", "S10F1"));
    EXPECT_THAT(host_.Last.Sml, HasSubstr("< A 'out of  gas' >"));
    for (const char* command :
         {"variable 1101 LOT  7", "variable 1012 5", "variable 2001 77", "busy on", "offline"})
        EXPECT_EQ(Do(command), "") << command;
    EXPECT_EQ(role_.Simulated().ValueOf("1101"), Ascii("LOT  7"));
    EXPECT_EQ(role_.Simulated().ValueOf("1012"), Unsigned4(5));
    EXPECT_TRUE(role_.Simulated().Busy);
    Send(1, 1);
    EXPECT_EQ(SeenUntil("S1F0").front(), "S1F0");
    Send(1, 17);
    EXPECT_THAT(SeenUntil("S1F18").back(), "S1F18");
    EXPECT_THAT(host_.Last.BodyHex, "21 01 01");
    for (const char* command : {"online", "busy off", "misbehave S1F1 silent", "behave"})
        EXPECT_EQ(Do(command), "") << command;
    EXPECT_FALSE(role_.Simulated().Busy);
    Send(1, 1);
    EXPECT_THAT(SeenUntil("S1F2").back(), "S1F2");
}

TEST_F(EquipmentOnALink, AnOperatorIsToldWhatCannotBeDone) {
    const std::pair<const char*, const char*> kCases[] = {
        {"event 77", "no event has the id 77"},
        {"event", "expected 'event CEID'"},
        {"alarm 77 set", "no alarm has the id 77"},
        {"alarm 4001 on", "expected 'alarm ALID set|clear'"},
        {"variable 77 1", "no variable has the id 77"},
        {"variable 1012 x", "'x' is no value of format U4"},
        {"variable 1001 x", "variable 1001 is made by the equipment"},
        {"variable 2001 241", "'241' is no value of constant 2001"},
        {"variable 2001 <A '7'>", "'<A '7'>' is no value of constant 2001"},
        {"variable 1101 \xE2\x82\xAC", "expected characters of ISO 8859-1"},
        {"terminal \xE2\x82\xAC", "expected characters of ISO 8859-1"},
        {"event \xE4", "expected characters of ISO 8859-1"},
        {"alarm \xE2\x82\xAC set", "expected characters of ISO 8859-1"},
        {"variable \xE2\x82\xAC 1", "expected characters of ISO 8859-1"},
        {"variable 1001", "expected 'variable ID VALUE'"},
        {"terminal", "expected 'terminal TEXT'"},
        {"busy maybe", "expected 'busy on|off'"},
        {"online now", "expected 'online'"},
        {"misbehave S1F1", "expected 'misbehave SxFy KIND [TIMES|always]'"}};
    for (const auto& [command, failure] : kCases)
        EXPECT_EQ(Do(command), failure) << command;
}

TEST_F(EquipmentOnALink, ADictionaryWithValuesIsAnsweredAsItStands) {
    Start();
    const auto entry = equipmentSide_.Control().SECSDictionary()->SECSTrans("S1F1");
    entry->Secondary()->Item(1)->Item(1)->Value("OTHER");
    Send(1, 1);
    SeenUntil("S1F2");
    EXPECT_THAT(host_.Last.Sml, HasSubstr("< A 'OTHER' >"));
}

}  // namespace
}  // namespace hexmire::program
