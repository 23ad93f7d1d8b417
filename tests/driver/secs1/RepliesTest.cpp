// Replies, early, late and stray, and the system bytes under which primaries are known to the
// control (SEMI E4).
#include "Steps.h"

namespace hexmire::test {
namespace {

using namespace std::chrono_literals;

TEST(Secs1Replies, SecsMsgSendComesFirst) {
    const std::string reply = "S1F2 800A 00000001 #1E 0100";
    ConnectedRig rig(Secs1Rig::Settings());
    rig.Do("send S1F1W 000A 00000001");
    rig.Do("rx EOT");
    EXPECT_EQ(
        rig.Do("rx ACK, ENQ, " + reply),
        "Sent S1F1W 000A 00000001 #1E; tx EOT; tx ACK; Block " + reply + "; Received " + reply);
    EXPECT_EQ(rig.Statistics().EarlyReplies, 0U);
}

TEST(Secs1Replies, SecsMsgSendComesFirstAlsoWhenTheAckWasLost) {
    const std::string reply = "S1F2 800A 00000001 #1E 0100";
    ConnectedRig rig(Secs1Rig::Settings());
    rig.Do("send S1F1W 000A 00000001");
    rig.Do("rx EOT");
    rig.Do("advance 500");
    EXPECT_EQ(rig.Do("rx ENQ, " + reply),
              "tx EOT; tx ACK; Sent S1F1W 000A 00000001 #1E; Block " + reply + "; Received " +
                  reply + "; tx ENQ");
    EXPECT_EQ(rig.Statistics().EarlyReplies, 1U);
    // The block goes out again, for the peer may wait for its end of the exchange; the control has
    // been told.
    EXPECT_EQ(rig.Do("pass"), "tx S1F1W 000A 00000001 #1E");
    EXPECT_EQ(rig.State(), "IDLE");
}

TEST(Secs1Replies, AMessageThatWasAnsweredIsNotLost) {
    LinkSettings settings = Secs1Rig::Settings();
    settings.ConnectionRetryLimit = 0;
    settings.TimeOutRetry = 1;
    ConnectedRig rig(settings);
    rig.Do("send S1F1W 000A 00000001");
    rig.Do("rx EOT");
    rig.Do("advance 500");
    rig.Do("rx ENQ, S1F2 800A 00000001 #1E");
    rig.Do("rx EOT");
    EXPECT_EQ(rig.Do("rx NAK"), "") << "given up without a word";
    EXPECT_EQ(rig.State(), "IDLE");
    EXPECT_EQ(rig.Statistics().MessagesGivenUp, 0U);
    rig.Do("send S1F3W 000A 00000002");
    rig.Do("rx EOT");
    rig.Do("advance 500");
    rig.Do("rx ENQ, S1F4 800A 00000002 #1E");
    EXPECT_EQ(rig.Do("fin"), "Disconnect 3054; close") << "nor aborted";
}

TEST(Secs1Replies, OnlyAReplyToABlockThatWentOutIsEarly) {
    const auto told = [](const Steps& before, const std::string& reply) {
        ConnectedRig rig(Secs1Rig::Settings());
        for (const Step& step : before) {
            rig.Do(step.Line);
        }
        const std::string done = rig.Do("rx " + reply);
        EXPECT_NE(done.find("tx ACK"), std::string::npos) << done;
        return done.find("Sent") != std::string::npos;
    };
    const std::string send = "send S1F1W 000A 00000001";
    const Steps tried{{send, ""}, {"rx EOT", ""}, {"advance 500", ""}, {"rx ENQ", ""}};
    EXPECT_TRUE(told(tried, "S1F2 800A 00000001 #1E"));
    EXPECT_TRUE(told(tried, "S1F0 800A 00000001 #1E"));
    EXPECT_TRUE(told(tried, "S1F2 800A 00000001 #1"));
    EXPECT_FALSE(told(tried, "S1F4 800A 00000001 #1E"));
    EXPECT_FALSE(told(tried, "S2F2 800A 00000001 #1E"));
    EXPECT_FALSE(told(tried, "S1F2 800A 00000002 #1E"));
    EXPECT_FALSE(told(tried, "S1F2 800B 00000001 #1E"));
    EXPECT_FALSE(told(tried, "S1F2 000A 00000001 #1E"));
    EXPECT_FALSE(told({{send, ""}, {"rx ENQ", ""}}, "S1F2 800A 00000001 #1E"))
        << "only ENQ went out";
    EXPECT_FALSE(told({{"rx ENQ", ""}, {send, ""}}, "S1F2 800A 00000001 #1E"));
    EXPECT_FALSE(told({{"send S1F3W 000A 00000009", ""}, {"pass", ""}, {send, ""}, {"rx ENQ", ""}},
                      "S1F2 800A 00000001 #1E"))
        << "it was the message before that did";
    EXPECT_FALSE(told({{"send S1F1W 000A 00000001 *245", ""},
                       {"rx EOT", ""},
                       {"advance 500", ""},
                       {"rx ENQ", ""}},
                      "S1F2 800A 00000001 #1E"))
        << "its last block did not";
}

TEST(Secs1Replies, WithoutTransactionTheyAreCountedAndDelivered) {
    LinkSettings settings = Secs1Rig::Settings();
    settings.SystemBytesCheck = true;
    ConnectedRig rig(settings);
    const auto strays = [&] { return rig.Statistics().RepliesWithoutTransaction; };
    const auto transact = [&](const std::string& reply) {
        rig.Do("send S1F1W 000A 00000001");
        rig.Do("pass");
        const std::string block = reply + " #1E";
        ExpectSteps(rig, {Complete(block, block)});
        return strays();
    };
    EXPECT_EQ(transact("S1F2 800A 00000001"), 0U);
    EXPECT_EQ(transact("S1F0 800A 00000001"), 0U);
    EXPECT_EQ(transact("S1F4 800A 00000001"), 1U);
    EXPECT_EQ(transact("S2F2 800A 00000001"), 2U);
    EXPECT_EQ(transact("S1F2 800A 00000003"), 3U);
    EXPECT_EQ(transact("S2F3 800A 00000003"), 3U) << "no reply";
    EXPECT_EQ(transact("S1F2 800A 00000001"), 3U);
    const std::string again = "S1F2 800A 00000002 #1E";
    ExpectSteps(rig, {Complete(again, again)});
    EXPECT_EQ(strays(), 4U);
    settings.SystemBytesCheck = false;
    rig.Configure(settings);
    EXPECT_EQ(transact("S1F4 800A 00000001"), 4U);
}

TEST(Secs1Replies, OnlyAPrimaryThatWantsOneHasATransaction) {
    LinkSettings settings = Secs1Rig::Settings();
    settings.SystemBytesCheck = true;
    ConnectedRig rig(settings);
    rig.Do("send S1F1 000A 00000001");
    rig.Do("pass");
    rig.Do("take S1F2 800A 00000001 #1E");
    EXPECT_EQ(rig.Statistics().RepliesWithoutTransaction, 1U);
}

TEST(Secs1Replies, TheTransactionEndsWithTheLink) {
    LinkSettings settings = Secs1Rig::Settings();
    settings.SystemBytesCheck = true;
    ConnectedRig rig(settings);
    rig.Do("send S1F1W 000A 00000001");
    rig.Do("pass");
    rig.Do("fin");
    rig.Do("advance 10000");
    rig.Do("connected");
    rig.Do("take S1F2 800A 00000001 #1E");
    EXPECT_EQ(rig.Statistics().RepliesWithoutTransaction, 1U);
}

TEST(Secs1Replies, TheTransactionEndsWithT3InSilence) {
    LinkSettings settings = Secs1Rig::Settings();
    settings.SystemBytesCheck = true;
    for (const bool late : {false, true}) {
        ConnectedRig rig(settings);
        rig.Do("send S1F1W 000A 00000001");
        rig.Do("pass");
        EXPECT_EQ(rig.Do(late ? "advance 45000" : "advance 44999"), "");
        const std::string reply = "S1F2 800A 00000001 #1E";
        ExpectSteps(rig, {Complete(reply, reply)});
        EXPECT_EQ(rig.Statistics().RepliesWithoutTransaction, late ? 1U : 0U);
    }
}

TEST(Secs1SystemBytes, ThoseThatTheControlCannotCountAreReplaced) {
    ConnectedRig rig(Secs1Rig::Settings());
    const std::string name = "S6F11W 800A ";
    ExpectSteps(rig,
                {Take(name + "80000001 #1 AA", "Block " + name + "40000000 #1 AA"),
                 Take(name + "80000001 #2E BB",
                      "Block " + name + "40000000 #2E BB; Received " + name + "40000000 #2E AABB"),
                 Take(name + "FFFFFFFF #1E",
                      "Block " + name + "40000001 #1E; Received " + name + "40000001 #1E"),
                 Complete(name + "7FFFFFFF #1E", name + "7FFFFFFF #1E"),
                 {"send S6F12 000A 40000000", "tx ENQ"},
                 {"pass", "tx S6F12 000A 80000001 #1E; Sent S6F12 000A 40000000 #1E"},
                 {"send S6F12 000A 40000001", "tx ENQ"},
                 {"pass", "tx S6F12 000A FFFFFFFF #1E; Sent S6F12 000A 40000001 #1E"},
                 {"send S6F12 000A 7FFFFFFF", "tx ENQ"},
                 {"pass", "tx S6F12 000A 7FFFFFFF #1E; Sent S6F12 000A 7FFFFFFF #1E"}});
    EXPECT_EQ(rig.Statistics().SystemBytesReplaced, 2U);
}

TEST(Secs1SystemBytes, TheWayBackIsForOneReply) {
    ConnectedRig rig(Secs1Rig::Settings());
    rig.Do("take S6F11W 800A 80000001 #1E");
    rig.Do("send S6F12 000A 40000000");
    EXPECT_EQ(rig.Do("rx EOT"), "tx S6F12 000A 80000001 #1E");
    rig.Do("rx ACK");
    rig.Do("send S6F12 000A 40000000");
    EXPECT_EQ(rig.Do("rx EOT"), "tx S6F12 000A 40000000 #1E");
}

TEST(Secs1SystemBytes, TheWayBackEndsWithTheLink) {
    ConnectedRig rig(Secs1Rig::Settings());
    rig.Do("take S6F11W 800A 80000001 #1E");
    rig.Do("fin");
    rig.Do("advance 10000");
    rig.Do("connected");
    rig.Do("send S6F12 000A 40000000");
    EXPECT_EQ(rig.Do("rx EOT"), "tx S6F12 000A 40000000 #1E");
}

TEST(Secs1SystemBytes, TheWayBackLastsT3FromTheLastBlock) {
    for (const bool late : {false, true}) {
        LinkSettings settings = Secs1Rig::Settings();
        settings.T4 = 60s;
        ConnectedRig rig(settings);
        rig.Do("take S6F11W 800A 80000001 #1 AA");
        rig.Do("advance 44999");
        rig.Do("take S6F11W 800A 80000001 #2E BB");
        rig.Do(late ? "advance 45000" : "advance 44999");
        rig.Do("send S6F12 000A 40000000");
        EXPECT_EQ(rig.Do("rx EOT"),
                  late ? "tx S6F12 000A 40000000 #1E" : "tx S6F12 000A 80000001 #1E");
    }
}

}  // namespace
}  // namespace hexmire::test
