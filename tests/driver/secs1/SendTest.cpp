// What becomes of the messages that the control sends: blocks, headers, order, bounds, and the end
// of the connection (SEMI E4).
#include "Steps.h"

namespace hexmire::test {
namespace {

/// The rig's "pass" for each block of a message, and what the last one causes.
std::string Pass(Secs1Rig& rig, std::size_t blocks) {
    std::string last;
    for (std::size_t block = 0; block < blocks; ++block) {
        last = rig.Do("pass");
    }
    return last;
}

TEST(Secs1Send, BodiesAreCutIntoBlocks) {
    struct Row {
        std::string Body;
        std::vector<std::string> Blocks;
    };
    const std::vector<Row> rows{{"", {"#1E"}},
                                {"00", {"#1E 00"}},
                                {"*244", {"#1E *244"}},
                                {"*245", {"#1 *244", "#2E 44"}},
                                {"*488", {"#1 *244", "#2E (244 bytes)"}},
                                {"*489", {"#1 *244", "#2 (244 bytes)", "#3E 89"}}};
    for (const Row& row : rows) {
        ConnectedRig rig(Secs1Rig::Settings());
        const std::string name = "S7F3W 000A 00000001 ";
        EXPECT_EQ(rig.Do("send " + name + row.Body), "tx ENQ");
        const std::size_t count = row.Blocks.size();
        for (std::size_t block = 1; block <= count; ++block) {
            const std::string body = row.Body.empty() ? "" : " " + row.Body;
            const std::string sent = "Sent " + name + "#" + std::to_string(count) + "E" + body;
            EXPECT_EQ(
                rig.Do("pass"),
                "tx " + name + row.Blocks[block - 1] + "; " + (block == count ? sent : "tx ENQ"));
        }
        EXPECT_EQ(rig.Violation, "");
    }
}

TEST(Secs1Send, TheDirectionIsThatOfTheRole) {
    for (const bool host : {true, false}) {
        for (const char* first : {"000A", "800A", "7FFF", "FFFF"}) {
            ConnectedRig rig(Secs1Rig::Settings(3, host));
            const auto device = std::stoul(first, nullptr, 16) & 0x7FFFU;
            const std::string known = Hex(static_cast<unsigned>(device), 4);
            const std::string onLine =
                host ? known : Hex(static_cast<unsigned>(device | 0x8000U), 4);
            rig.Do(std::string("send S1F1W ") + first + " 00000001");
            EXPECT_EQ(
                rig.Do("pass"),
                "tx S1F1W " + onLine + " 00000001 #1E; Sent S1F1W " + known + " 00000001 #1E");
        }
    }
}

TEST(Secs1Send, BlockNumberAndEndBitOfTheControlMeanNothing) {
    ConnectedRig rig(Secs1Rig::Settings());
    rig.Do("send S1F1W 000A 00000001 #77 01");
    EXPECT_EQ(rig.Do("pass"), "tx S1F1W 000A 00000001 #1E 01; Sent S1F1W 000A 00000001 #1E 01");
}

TEST(Secs1Send, MessagesGoOutInTheirOrder) {
    ConnectedRig rig(Secs1Rig::Settings());
    rig.Do("send S1F1W 000A 00000001");
    EXPECT_EQ(rig.Do("send S7F3 000A 00000002 *245"), "");
    EXPECT_EQ(rig.Do("send S1F3W 000A 00000003"), "");
    EXPECT_EQ(rig.Do("pass"), "tx S1F1W 000A 00000001 #1E; Sent S1F1W 000A 00000001 #1E; tx ENQ");
    EXPECT_EQ(Pass(rig, 2),
              "tx S7F3 000A 00000002 #2E 44; Sent S7F3 000A 00000002 #2E *245; tx ENQ");
    EXPECT_EQ(rig.Do("pass"), "tx S1F3W 000A 00000003 #1E; Sent S1F3W 000A 00000003 #1E");
}

TEST(Secs1Send, IsRefusedWithoutAConnection) {
    Secs1Rig rig(Secs1Rig::Settings());
    rig.FullTexts = true;
    const std::string refused = "Error 3040 \"Send while not selected hdr=000A8101800200000001\"";
    ExpectSteps(rig,
                {{"send S1F1W 800A 00000001 *245", refused},
                 {"open", "connect 10.0.0.2:5000 from 10.0.0.1"},
                 {"send S1F1W 800A 00000001 *245", refused},
                 {"connected", "adopt; Connect"},
                 {"close", "Disconnect 0 \"\"; close"},
                 {"send S1F1W 800A 00000001 *245", refused}});
}

TEST(Secs1Send, MoreThanTheBlockNumbersCanCountIsRefused) {
    ConnectedRig rig(Secs1Rig::Settings());
    rig.FullTexts = true;
    const auto header = secs1::EncodeHeader(ParseBlock("S7F3W 000A 00000001").Header);
    std::vector<std::uint8_t> body(secs1::kMaxBodyBytes + 1);
    rig.Machine().Send(header, body, rig.Now());
    EXPECT_EQ(rig.Do("consumed 0"), "Error 3029 \"Message too long hdr=000A8703FFFF00000001\"");
    body.pop_back();
    rig.Machine().Send(header, body, rig.Now());
    EXPECT_EQ(rig.Do("consumed 0"), "tx ENQ");
    EXPECT_EQ(rig.Statistics().SendsTooLong, 1U);
}

TEST(Secs1Send, MoreThanTheSettingAllowsIsRefused) {
    LinkSettings settings = Secs1Rig::Settings();
    settings.MaxMessageBytes = 300;
    ConnectedRig rig(settings);
    EXPECT_EQ(rig.Do("send S7F3W 000A 00000001 *301"), "Error 3029");
    EXPECT_EQ(rig.Do("send S7F3W 000A 00000001 *300"), "tx ENQ");
}

TEST(Secs1Send, AHeaderThatIsNoneIsRefused) {
    ConnectedRig rig(Secs1Rig::Settings());
    rig.FullTexts = true;
    const std::vector<std::uint8_t> header(11);
    rig.Machine().Send(header, {}, rig.Now());
    EXPECT_EQ(rig.Do("consumed 0"), "Error 3099 \"Internal failure: message header of 11 bytes\"");
    EXPECT_EQ(rig.Statistics().MalformedSends, 1U);
}

TEST(Secs1Send, TheQueueHasBounds) {
    LinkSettings settings = Secs1Rig::Settings();
    settings.MaxQueuedMessages = 2;
    ConnectedRig rig(settings);
    ExpectSteps(rig,
                {{"send S1F1W 000A 00000001", "tx ENQ"},
                 {"send S1F1W 000A 00000002", ""},
                 {"send S1F1W 000A 00000003", "Error 3071"}});
    rig.Do("pass");
    ExpectSteps(rig,
                {{"send S1F1W 000A 00000004", ""}, {"send S1F1W 000A 00000005", "Error 3071"}});
    settings = Secs1Rig::Settings();
    settings.MaxQueuedBytes = 50;
    ConnectedRig small(settings);
    ExpectSteps(small,
                {{"send S1F1W 000A 00000001 *20", "tx ENQ"},
                 {"send S1F1W 000A 00000002 *11", "Error 3071"},
                 {"send S1F1W 000A 00000003 *10", ""},
                 {"send S1F1W 000A 00000004", "Error 3071"}});
    EXPECT_EQ(small.Statistics().SendsRefusedByQueue, 2U);
    Pass(small, 2);
    ExpectSteps(small, {{"send S1F1W 000A 00000005 *40", "tx ENQ"}});
    EXPECT_EQ(LinkSettings().MaxQueuedMessages, 20'000U);
    EXPECT_EQ(LinkSettings().MaxQueuedBytes, 64U * 1024 * 1024);
}

TEST(Secs1Disconnect, TellsEachMessageThatNeverWentOut) {
    const std::string lost1 = "Error 3073 \"Queued message aborted by disconnect ";
    const std::string both =
        lost1 + "hdr=000A8703800200000002\"; " + lost1 + "hdr=000A8103800100000003\"; ";
    struct Row {
        const char* Event;
        std::int32_t PortType;
        std::string End;
    };
    const std::vector<Row> rows{
        {"fin", 3, "Disconnect 3054 \"Connection closed by peer: 10.0.0.2:5000\"; close"},
        {"reset", 3, "Disconnect 3055 \"Connection reset or I/O error: reset (104)\"; close"},
        {"fin", 1, "Disconnect 3063 \"Serial line lost: 10.0.0.2:5000\"; close"},
        {"reset", 1, "Disconnect 3063 \"Serial line lost: reset (104)\"; close"},
        {"close", 3, "Disconnect 0 \"\"; close"}};
    for (const Row& row : rows) {
        ConnectedRig rig(Secs1Rig::Settings(row.PortType));
        rig.FullTexts = true;
        rig.Do("send S1F1W 000A 00000001");
        rig.Do("send S7F3W 000A 00000002 *245");
        rig.Do("send S1F3W 000A 00000003");
        Pass(rig, 2);
        EXPECT_EQ(rig.Do(row.Event), both + row.End) << row.Event << " " << row.PortType;
        EXPECT_EQ(rig.Statistics().SendsAborted, 2U);
        EXPECT_EQ(rig.Violation, "");
    }
}

TEST(Secs1Disconnect, NothingOfTheOldLinkGoesToTheNext) {
    ConnectedRig rig(Secs1Rig::Settings());
    rig.Do("send S1F1W 000A 00000001");
    rig.Do("rx EOT");
    rig.Do("fin");
    rig.Do("advance 10000");
    EXPECT_EQ(rig.Do("connected"), "adopt; Connect");
    EXPECT_EQ(rig.State(), "IDLE");
    EXPECT_EQ(rig.Do("rx ACK"), "");
    EXPECT_EQ(rig.Do("send S1F3W 000A 00000002"), "tx ENQ");
    EXPECT_EQ(rig.Do("pass"), "tx S1F3W 000A 00000002 #1E; Sent S1F3W 000A 00000002 #1E");
}

TEST(Secs1Disconnect, WithoutReconnectionThePortIsClosedFirst) {
    LinkSettings settings = Secs1Rig::Settings();
    settings.AutoReconnect = false;
    ConnectedRig rig(settings);
    EXPECT_EQ(rig.Do("fin"), "Disconnect 3054; close");
    EXPECT_FALSE(rig.Machine().IsOpen());
    EXPECT_EQ(rig.State(), "CLOSED");
    EXPECT_EQ(rig.Timers(), "");
}

TEST(Secs1Disconnect, CloseFromInsideAHandlerEndsEverything) {
    ConnectedRig rig(Secs1Rig::Settings());
    rig.Do("send S1F1W 000A 00000001");
    rig.Do("send S1F3W 000A 00000002");
    EXPECT_EQ(rig.Do("pass"), "tx S1F1W 000A 00000001 #1E; Sent S1F1W 000A 00000001 #1E; tx ENQ");
    // What a handler of SecsMsgSend does before anything else happens.
    EXPECT_EQ(rig.Do("close"), "Error 3073; Disconnect 0; close");
    EXPECT_EQ(rig.Do("close"), "");
    EXPECT_EQ(rig.Timers(), "");
    EXPECT_FALSE(rig.Machine().HasOutput());
    EXPECT_EQ(rig.Do("rx EOT"), "") << "bytes of the old connection";
    EXPECT_EQ(rig.Do("fire T2"), "");
    EXPECT_EQ(rig.Violation, "");
}

}  // namespace
}  // namespace hexmire::test
