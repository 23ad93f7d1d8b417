// The line's timers: how long each wait lasts, what starts it anew, and what a line that never
// falls silent gets (SEMI E4, block transfer protocol).
#include "Steps.h"

namespace hexmire::test {
namespace {

using namespace std::chrono_literals;

const std::string kPeers = "S6F11W 800A 00000007 #1E 0102";

TEST(Secs1T1, EachPieceStartsItAnew) {
    ConnectedRig rig(Secs1Rig::Settings());
    rig.FullTexts = true;
    ExpectSteps(
        rig,
        {{"rx ENQ", "tx EOT"},
         {"rx first 1 " + kPeers, ""},
         {"advance 299", ""},
         {"rx-bytes 80", ""},
         {"advance 299", ""},
         {"rx-bytes 0A 86", ""},
         {"advance 299", ""},
         {"advance 1", "tx NAK; Error 3001 \"T1 time-out, block incomplete: 3 of 14 bytes\""}});
    EXPECT_EQ(rig.State(), "IDLE");
    ExpectSteps(rig, {Complete(kPeers, kPeers)});
}

TEST(Secs1T1, ADamagedBlockIsRefusedAfterSilenceOnly) {
    ConnectedRig rig(Secs1Rig::Settings());
    rig.FullTexts = true;
    ExpectSteps(rig,
                {{"rx ENQ", "tx EOT"},
                 {"rx bad " + kPeers, ""},
                 {"advance 299", ""},
                 {"rx ENQ, 0A", ""},
                 {"advance 299", ""},
                 {"rx 00", ""},
                 {"advance 299", ""},
                 {"advance 1", "tx NAK; Error 3012 \"Checksum wrong\""},
                 {"rx ENQ", "tx EOT"},
                 {"rx FF", ""},
                 {"advance 299", ""},
                 {"advance 1", "tx NAK; Error 3013 \"Bad block length: length byte 255\""}});
}

TEST(Secs1T1, ANewValueCountsFromTheNextPiece) {
    LinkSettings settings = Secs1Rig::Settings();
    ConnectedRig rig(settings);
    rig.Do("rx ENQ, 0A");
    settings.T1 = 1s;
    rig.Configure(settings);
    ExpectSteps(rig, {{"advance 299", ""}, {"rx 00", ""}, {"advance 999", ""}});
    EXPECT_EQ(rig.Do("advance 1"), "tx NAK; Error 3001");
}

TEST(Secs1T2, StartsWhenEverythingIsWritten) {
    ConnectedRig rig(Secs1Rig::Settings());
    rig.Do("block");
    ExpectSteps(rig, {{"send S1F1W 000A 00000001", "tx ENQ"}});
    EXPECT_EQ(rig.Timers(), "WriteStall:30000");
    ExpectSteps(rig, {{"advance 29000", ""}, {"unblock", ""}});
    EXPECT_EQ(rig.Timers(), "T2:500");
    ExpectSteps(rig, {{"block", ""}, {"rx EOT", "tx S1F1W 000A 00000001 #1E"}, {"written 12", ""}});
    EXPECT_EQ(rig.Timers(), "WriteStall:30000") << "one byte is left";
    ExpectSteps(rig, {{"written 1", ""}});
    EXPECT_EQ(rig.Timers(), "T2:500");
}

struct SpeedRow {
    std::int32_t BaudRate;
    const char* OneByte;     ///< T2 after ENQ
    const char* WholeBlock;  ///< T2 after 257 bytes
};

TEST(Secs1T2, OnASerialLineTheBytesTakeTheirTime) {
    const std::vector<SpeedRow> rows{{150, "T2:587", "T2:17654"},
                                     {300, "T2:554", "T2:9087"},
                                     {1'200, "T2:529", "T2:2662"},
                                     {2'400, "T2:525", "T2:1591"},
                                     {4'800, "T2:523", "T2:1056"},
                                     {9'600, "T2:522", "T2:788"},
                                     {19'200, "T2:521", "T2:654"}};
    for (const SpeedRow& row : rows) {
        LinkSettings settings = Secs1Rig::Settings(1);
        settings.BaudRate = row.BaudRate;
        ConnectedRig rig(settings);
        // A speed that is set later is that of the next connection.
        settings.BaudRate = 2'400;
        rig.Configure(settings);
        rig.Do("send S7F3 000A 00000001 *244");
        EXPECT_EQ(rig.Timers(), row.OneByte) << row.BaudRate;
        rig.Do("rx EOT");
        EXPECT_EQ(rig.Timers(), row.WholeBlock) << row.BaudRate;
    }
}

TEST(Secs1T2, OverTcpTheyTakeNone) {
    LinkSettings settings = Secs1Rig::Settings(3);
    settings.BaudRate = 150;
    ConnectedRig rig(settings);
    rig.Do("send S7F3 000A 00000001 *244");
    rig.Do("rx EOT");
    EXPECT_EQ(rig.Timers(), "T2:500");
}

TEST(Secs1T2, WhatIsWrittenBeforeTakesItsTimeToo) {
    LinkSettings settings = Secs1Rig::Settings(1);
    settings.BaudRate = 150;
    ConnectedRig rig(settings);
    rig.Do("rx ENQ");
    rig.Do("send S1F1 000A 00000001");
    ExpectSteps(
        rig, {{"rx " + kPeers, "tx ACK; Block " + kPeers + "; Received " + kPeers + "; tx ENQ"}});
    EXPECT_EQ(rig.Timers(), "T2:654") << "two characters, 20 ms, T2";
}

TEST(Secs1Babble, FourThousandBytesWithoutAPause) {
    for (const std::int32_t portType : {1, 3}) {
        for (const bool host : {true, false}) {
            ConnectedRig rig(Secs1Rig::Settings(portType, host));
            rig.Do("rx ENQ, 00");
            const std::vector<std::uint8_t> noise(4'096, secs1::kEnq);
            rig.Feed(noise);
            EXPECT_EQ(rig.Take(), "");
            EXPECT_EQ(rig.State(), "DRAIN");
            if (portType == 1) {
                ExpectSteps(rig,
                            {{"rx ENQ", "Error 3014"},
                             {"rx ENQ", ""},
                             {"advance 299", ""},
                             {"advance 1", ""}});
                EXPECT_EQ(rig.State(), "IDLE") << "nobody is answered";
                EXPECT_EQ(rig.Do("rx ENQ"), "tx EOT");
            } else {
                ExpectSteps(rig, {{"rx ENQ", "Error 3014; Disconnect 3014; close"}});
            }
            EXPECT_EQ(rig.Statistics().Babbles, 1U);
        }
    }
}

TEST(Secs1Babble, TenSecondsBeyondT2WithoutAPause) {
    for (const std::int32_t portType : {1, 3}) {
        ConnectedRig rig(Secs1Rig::Settings(portType));
        rig.Do("rx ENQ, 00");
        for (int piece = 0; piece < 52; ++piece) {
            ASSERT_EQ(rig.Do("advance 200"), "");
            ASSERT_EQ(rig.Do("rx 55"), "");
        }
        ExpectSteps(
            rig,
            {{"advance 99", ""},
             {"advance 1", portType == 1 ? "Error 3014" : "Error 3014; Disconnect 3014; close"}});
    }
}

TEST(Secs1Babble, TakesQueuedMessagesWithIt) {
    LinkSettings settings = Secs1Rig::Settings();
    settings.AutoReconnect = false;
    ConnectedRig rig(settings);
    rig.FullTexts = true;
    rig.Do("rx ENQ, 00");
    rig.Do("send S1F1W 000A 00000001");
    EXPECT_EQ(rig.Do("fire LineCap"),
              "Error 3014 \"Line babbles\"; "
              "Error 3073 \"Queued message aborted by disconnect hdr=000A8101800100000001\"; "
              "Disconnect 3014 \"Line babbles\"; close");
    EXPECT_EQ(rig.State(), "CLOSED");
}

TEST(Secs1Babble, KeepsAPostponedBlockWaitingForOneAttempt) {
    ConnectedRig rig(Secs1Rig::Settings(1));
    ExpectSteps(rig,
                {{"send S1F1W 000A 00000001", "tx ENQ"},
                 {"rx ENQ, 00", "tx EOT"},
                 {"fire LineCap", "Error 3014"},
                 {"advance 300", "tx ENQ"}});
    EXPECT_EQ(rig.Statistics().BlocksRetried, 1U);
}

TEST(Secs1Noise, BytesOnAnIdleLineMeanNothing) {
    ConnectedRig rig(Secs1Rig::Settings());
    std::vector<std::uint8_t> noise;
    for (int byte = 0; byte < 256; ++byte) {
        if (byte != secs1::kEnq) noise.push_back(static_cast<std::uint8_t>(byte));
    }
    rig.Feed(noise);
    EXPECT_EQ(rig.Take(), "");
    EXPECT_EQ(rig.State(), "IDLE");
    EXPECT_EQ(rig.Statistics().LineNoise, 255U);
}

}  // namespace
}  // namespace hexmire::test
