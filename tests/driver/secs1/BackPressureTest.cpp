// A control that lags behind, and a peer that does not read: nothing grows without bound, and
// nobody is blamed for what has not been read.
#include "Steps.h"

namespace hexmire::test {
namespace {

struct SlowRig : ConnectedRig {
    explicit SlowRig(const LinkSettings& settings) : ConnectedRig(settings) { Consumes = false; }
};

LinkSettings TwoWaiting() {
    LinkSettings settings = Secs1Rig::Settings();
    settings.MaxWaitingMessages = 2;
    return settings;
}

std::string Number(int number) { return "S6F11W 800A " + Hex(static_cast<unsigned>(number), 8); }

std::string Delivered(int number) {
    return "Block " + Number(number) + " #1E; Received " + Number(number) + " #1E";
}

TEST(Secs1BackPressure, ReadingStopsUntilHalfIsConsumed) {
    SlowRig rig(TwoWaiting());
    rig.FullTexts = true;
    ExpectSteps(
        rig,
        {Take(Number(1) + " #1E", Delivered(1)),
         Take(Number(2) + " #1E",
              Delivered(2) +
                  "; pause; Error 3072 \"Receive backlog, reading stopped: 2 messages wait\""),
         {"advance 100000", ""},
         {"consumed 1", "resume"},
         Take(Number(3) + " #1E",
              Delivered(3) +
                  "; pause; Error 3072 \"Receive backlog, reading stopped: 2 messages wait\""),
         {"consumed 2", "resume"}});
    EXPECT_EQ(rig.Statistics().ReadingPauses, 2U);
    EXPECT_EQ(LinkSettings().MaxWaitingMessages, 10'000U);
}

TEST(Secs1BackPressure, OneLessThanTheBoundIsNotHalf) {
    LinkSettings settings = Secs1Rig::Settings();
    settings.MaxWaitingMessages = 4;
    SlowRig rig(settings);
    for (int number = 1; number <= 3; ++number) {
        ExpectSteps(rig, {Take(Number(number) + " #1E", Delivered(number))});
    }
    rig.Do("take " + Number(4) + " #1E");
    ExpectSteps(rig, {{"consumed 1", ""}, {"consumed 1", "resume"}, {"consumed 2", ""}});
}

TEST(Secs1BackPressure, TheLinesTimersStandStillMeanwhile) {
    SlowRig rig(TwoWaiting());
    rig.Do("take " + Number(1) + " #1E");
    // The read goes on in the middle of the next block.
    EXPECT_EQ(rig.Do("rx ENQ, " + Number(2) + " #1E, ENQ, first 5 " + Number(3) + " #1E"),
              "tx EOT; tx ACK; " + Delivered(2) + "; tx EOT; pause; Error 3072");
    EXPECT_EQ(rig.State(), "RX_BODY");
    EXPECT_FALSE(rig.Runs(link::TimerId::T1));
    EXPECT_EQ(rig.Do("advance 100000"), "");
    EXPECT_EQ(rig.Do("consumed 2"), "resume");
    EXPECT_EQ(rig.Timers(), "T1:300");
    EXPECT_EQ(rig.Do("advance 300"), "tx NAK; Error 3001");
}

TEST(Secs1BackPressure, AnAnswerThatIsNotReadIsNotMissed) {
    SlowRig rig(TwoWaiting());
    rig.Do("take " + Number(1) + " #1E");
    rig.Do("rx ENQ");
    rig.Do("send S1F1W 000A 00000001");
    EXPECT_EQ(rig.Do("rx " + Number(2) + " #1E"),
              "tx ACK; " + Delivered(2) + "; pause; Error 3072");
    EXPECT_EQ(rig.Do("advance 100000"), "") << "our own block waits as well";
    EXPECT_EQ(rig.Do("consumed 1"), "resume; tx ENQ");
    EXPECT_EQ(rig.Timers(), "T2:500");
}

TEST(Secs1BackPressure, AWriteThatEndsMeanwhileStartsNoTimer) {
    SlowRig rig(TwoWaiting());
    rig.Do("take " + Number(1) + " #1E");
    rig.Do("block");
    rig.Do("rx ENQ, " + Number(2) + " #1E, ENQ");
    rig.Do("unblock");
    EXPECT_EQ(rig.State(), "RX_LEN");
    EXPECT_FALSE(rig.Runs(link::TimerId::T2));
    EXPECT_EQ(rig.Do("advance 100000"), "");
    EXPECT_EQ(rig.Do("consumed 2"), "resume");
    EXPECT_TRUE(rig.Runs(link::TimerId::T2));
}

TEST(Secs1BackPressure, T4StandsStillMeanwhile) {
    SlowRig rig(TwoWaiting());
    const std::string half = Number(9) + " #1 01";
    ExpectSteps(rig, {Accept(half), {"advance 4000", ""}});
    rig.Do("take " + Number(1) + " #1E");
    rig.Do("take " + Number(2) + " #1E");
    EXPECT_EQ(rig.Timers(), "");
    EXPECT_EQ(rig.Do("advance 100000"), "");
    EXPECT_EQ(rig.Do("consumed 2"), "resume");
    EXPECT_EQ(rig.Timers(), "T4:6000");
    EXPECT_EQ(rig.Do("advance 6000"), "Error 3004");
}

TEST(Secs1BackPressure, EndsWithTheConnection) {
    SlowRig rig(TwoWaiting());
    rig.Do("take " + Number(1) + " #1E");
    rig.Do("rx ENQ, " + Number(2) + " #1E, ENQ");
    EXPECT_EQ(rig.Do("fin"), "Disconnect 3054; close");
    rig.Do("advance 10000");
    // What the control has not had yet still counts.
    EXPECT_EQ(rig.Do("connected"), "adopt; Connect; pause; Error 3072");
    EXPECT_EQ(rig.Do("consumed 2"), "resume");
    EXPECT_EQ(rig.Timers(), "");
}

TEST(Secs1BackPressure, APeerThatDoesNotReadIsNotRead) {
    ConnectedRig rig(Secs1Rig::Settings());
    rig.Do("block");
    std::string done;
    for (int count = 1; count <= 32; ++count) {
        EXPECT_EQ(done.find("pause"), std::string::npos) << count;
        done = rig.Do("take " + Number(count) + " #1E");
    }
    EXPECT_TRUE(done.ends_with("; pause; Error 3072")) << done;
    EXPECT_EQ(rig.Statistics().ReadingPauses, 1U);
    EXPECT_EQ(rig.Do("unblock"), "resume");
    EXPECT_EQ(rig.Violation, "");
}

TEST(Secs1BackPressure, APeerThatNeverReadsIsLost) {
    ConnectedRig rig(Secs1Rig::Settings());
    rig.FullTexts = true;
    rig.Do("block");
    rig.Do("rx ENQ");
    EXPECT_EQ(rig.Do("advance 29999"), "");
    EXPECT_EQ(rig.Do("advance 1"),
              "Error 3009 \"Write stalled\"; Disconnect 3009 \"Write stalled\"; close");
    EXPECT_EQ(rig.Statistics().WriteStalls, 1U);
}

}  // namespace
}  // namespace hexmire::test
