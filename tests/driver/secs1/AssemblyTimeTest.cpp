// What time does to unfinished messages and to the memory of the last block: T4, and T3 of silence
// (SEMI E4).
#include "Steps.h"

namespace hexmire::test {
namespace {

using namespace std::chrono_literals;

std::string A(const std::string& block) { return "S6F11W 800A 00000007 " + block; }
std::string B(const std::string& block) { return "S6F13W 800A 00000008 " + block; }
const std::string kLostA1 =
    "Error 3004 \"T4 time-out, message incomplete hdr=800A860B000100000007\"";
const std::string kLostA2 =
    "Error 3004 \"T4 time-out, message incomplete hdr=800A860B000200000007\"";
const std::string kLostB1 =
    "Error 3004 \"T4 time-out, message incomplete hdr=800A860D000100000008\"";

struct TimedRig : ConnectedRig {
    explicit TimedRig(const LinkSettings& settings = Secs1Rig::Settings())
        : ConnectedRig(settings) {
        FullTexts = true;
    }
};

TEST(Secs1T4, AnUnfinishedMessageIsGivenUp) {
    TimedRig rig;
    ExpectSteps(rig, {Accept(A("#1 01"))});
    EXPECT_EQ(rig.Timers(), "T4:10000");
    ExpectSteps(rig, {{"advance 9999", ""}, {"advance 1", kLostA1}});
    EXPECT_EQ(rig.Timers(), "");
    EXPECT_EQ(rig.State(), "IDLE") << "the link stays";
    rig.FullTexts = false;
    ExpectSteps(rig, {Take(A("#2E 02"), "Error 3024"), Complete(B("#1E"), B("#1E"))});
}

TEST(Secs1T4, EachBlockStartsItAnew) {
    TimedRig rig;
    ExpectSteps(rig,
                {Accept(A("#1 01")),
                 {"advance 9999", ""},
                 Accept(A("#2 02")),
                 {"advance 9999", ""},
                 {"advance 1", kLostA2}});
}

TEST(Secs1T4, ADuplicateDoesNotStartItAnew) {
    TimedRig rig;
    ExpectSteps(
        rig,
        {Accept(A("#1 01")),
         {"advance 9000", ""},
         Take(A("#1 01"), "Error 3022 \"Duplicate block dropped hdr=800A860B000100000007\""),
         {"advance 999", ""},
         {"advance 1", kLostA1}});
}

TEST(Secs1T4, TheLastBlockEndsIt) {
    TimedRig rig;
    ExpectSteps(rig, {Accept(A("#1 01")), Complete(A("#2E 02"), A("#2E 0102"))});
    EXPECT_EQ(rig.Timers(), "");
}

TEST(Secs1T4, EachMessageHasItsOwn) {
    TimedRig rig;
    ExpectSteps(rig,
                {Accept(A("#1 01")),
                 {"advance 3000", ""},
                 Accept(B("#1 02")),
                 {"advance 6999", ""},
                 {"advance 1", kLostA1},
                 {"advance 2999", ""},
                 {"advance 1", kLostB1}});
}

TEST(Secs1T4, TwoThatExpireTogetherAreToldOldestFirst) {
    TimedRig rig;
    ExpectSteps(
        rig, {Accept(A("#1 01")), Accept(B("#1 02")), {"advance 10000", kLostA1 + "; " + kLostB1}});
}

TEST(Secs1T4, StandsStillWhileOurOwnBlockGoesOut) {
    LinkSettings settings = Secs1Rig::Settings();
    settings.T2 = 25s;
    TimedRig rig(settings);
    ExpectSteps(rig,
                {Accept(A("#1 01")),
                 {"advance 6000", ""},
                 {"send S1F1W 000A 0000000B", "tx ENQ"},
                 {"advance 24000", ""},
                 {"rx EOT", "tx S1F1W 000A 0000000B #1E"},
                 {"advance 24000", ""},
                 {"rx ACK", "Sent S1F1W 000A 0000000B #1E"}});
    EXPECT_EQ(rig.Timers(), "T4:4000");
    ExpectSteps(rig, {{"advance 3999", ""}, {"advance 1", kLostA1}});
}

TEST(Secs1T4, StandsStillWhileThePeerHasTheLine) {
    LinkSettings settings = Secs1Rig::Settings();
    settings.T1 = 5s;
    settings.T2 = 25s;
    TimedRig rig(settings);
    const std::string other = B("#1E 02");
    ExpectSteps(rig,
                {Accept(A("#1 01")),
                 {"advance 6000", ""},
                 {"rx ENQ", "tx EOT"},
                 {"advance 20000", ""},
                 {"rx first 5 " + other, ""},
                 {"advance 4000", ""}});
    EXPECT_EQ(rig.Timers(), "T1:5000");
    ExpectSteps(
        rig,
        {{"advance 1000", "tx NAK; Error 3001 \"T1 time-out, block incomplete: 4 of 13 bytes\""},
         {"advance 3999", ""},
         {"advance 1", kLostA1}});
}

TEST(Secs1T4, ANewSettingCountsFromTheNextBlock) {
    LinkSettings settings = Secs1Rig::Settings();
    TimedRig rig(settings);
    ExpectSteps(rig, {Accept(A("#1 01"))});
    settings.T4 = 2s;
    rig.Configure(settings);
    ExpectSteps(
        rig,
        {{"advance 5000", ""}, Accept(A("#2 02")), {"advance 1999", ""}, {"advance 1", kLostA2}});
}

TEST(Secs1T4, TheEndOfTheConnectionEndsUnfinishedMessages) {
    TimedRig rig;
    rig.FullTexts = false;
    ExpectSteps(rig,
                {Accept(A("#1 01")),
                 {"fin", "Disconnect 3054; close"},
                 {"advance 10000", "connect 10.0.0.2:5000 from 10.0.0.1"},
                 {"connected", "adopt; Connect"},
                 Take(A("#2E 02"), "Error 3024")});
}

TEST(Secs1DuplicateMemory, LastsT3OfSilence) {
    TimedRig rig;
    rig.FullTexts = false;
    ExpectSteps(rig,
                {Complete(A("#1E 01"), A("#1E 01")),
                 {"advance 44999", ""},
                 Take(A("#1E 01"), "Error 3022"),
                 {"advance 44999", ""},
                 Take(A("#1E 01"), "Error 3022"),
                 {"advance 45000", ""},
                 Complete(A("#1E 02"), A("#1E 02"))});
}

TEST(Secs1DuplicateMemory, EndsWithT4OfItsMessage) {
    TimedRig rig;
    rig.FullTexts = false;
    ExpectSteps(rig,
                {Accept(A("#1 01")),
                 {"advance 10000", "Error 3004"},
                 Accept(A("#1 01")),
                 Complete(A("#2E 02"), A("#2E 0102"))});
}

TEST(Secs1DuplicateMemory, OutlastsT4OfAnotherMessage) {
    TimedRig rig;
    rig.FullTexts = false;
    ExpectSteps(rig,
                {Accept(A("#1 01")),
                 {"advance 5000", ""},
                 Accept(B("#1 02")),
                 {"advance 5000", "Error 3004"},
                 Take(B("#1 02"), "Error 3022"),
                 Complete(B("#2E 03"), B("#2E 0203"))});
}

TEST(Secs1DuplicateMemory, EndsWithTheConnection) {
    TimedRig rig;
    rig.FullTexts = false;
    ExpectSteps(rig,
                {Complete(A("#1E 01"), A("#1E 01")),
                 {"fin", "Disconnect 3054; close"},
                 {"advance 10000", "connect 10.0.0.2:5000 from 10.0.0.1"},
                 {"connected", "adopt; Connect"},
                 Complete(A("#1E 01"), A("#1E 01"))});
}

TEST(Secs1DuplicateMemory, ASwitchTakesEffectAtTheNextBlock) {
    LinkSettings settings = Secs1Rig::Settings();
    TimedRig rig(settings);
    rig.FullTexts = false;
    ExpectSteps(rig, {Complete(A("#1E 01"), A("#1E 01"))});
    settings.DuplicateBlockCheck = false;
    rig.Configure(settings);
    ExpectSteps(rig, {Complete(A("#1E 01"), A("#1E 01"))});
    settings.DuplicateBlockCheck = true;
    rig.Configure(settings);
    ExpectSteps(rig, {Take(A("#1E 01"), "Error 3022")});
}

}  // namespace
}  // namespace hexmire::test
