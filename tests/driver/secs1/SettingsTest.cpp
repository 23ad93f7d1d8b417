// Settings of an open SECS-I link: each counts from the next block, timer or message on; and what
// the connection underneath means to the line.
#include "Steps.h"

namespace hexmire::test {
namespace {

using namespace std::chrono_literals;

const std::string kSend = "send S1F1W 000A 00000001";
const std::string kPeers = "S6F11W 800A 00000007 #1E";

struct Row {
    const char* Name;
    void (*Change)(LinkSettings&);
    Steps Before;
    Steps After;
};

TEST(Secs1Settings, CountFromTheNextUseOn) {
    const std::vector<Row> rows{
        {"DeviceID",
         [](LinkSettings& settings) { settings.DeviceID = 11; },
         {Complete(kPeers, kPeers), Take("S6F11W 800B 00000007 #1E", "Error 3020")},
         {Complete("S6F11W 800B 00000007 #1E", "S6F11W 800B 00000007 #1E"),
          Take(kPeers, "Error 3020")}},
        {"T2",
         [](LinkSettings& settings) { settings.T2 = 2s; },
         {{kSend, "tx ENQ"}},
         {{"advance 500", "tx ENQ"}, {"advance 1999", ""}, {"advance 1", "tx ENQ"}}},
        {"TimeOutRetry",
         [](LinkSettings& settings) { settings.TimeOutRetry = 1; },
         {{kSend, "tx ENQ"},
          {"advance 500", "tx ENQ"},
          {"advance 500", "tx ENQ"},
          {"advance 500", "tx ENQ"}},
         {{"advance 500", "tx ENQ"}, {"advance 500", "Error 3010"}}},
        {"InterleaveCheck",
         [](LinkSettings& settings) { settings.InterleaveCheck = true; },
         {Accept("S6F11W 800A 00000007 #1"), Accept("S6F11W 800A 00000008 #1")},
         {Take("S6F11W 800A 00000009 #1",
               "Error 3026; Error 3026; Block S6F11W 800A 00000009 #1")}},
        {"IgnoreDirection",
         [](LinkSettings& settings) { settings.IgnoreDirection = true; },
         {Take("S1F1W 000A 00000001 #1E", "Error 3021")},
         {Complete("S1F1W 000A 00000001 #1E", "S1F1W 000A 00000001 #1E")}},
        {"HostRole, for what is received and for what is sent",
         [](LinkSettings& settings) { settings.HostRole = false; },
         {{kSend, "tx ENQ"}},
         {{"rx EOT", "tx S1F1W 000A 00000001 #1E"},
          {"rx ACK", "Sent S1F1W 000A 00000001 #1E"},
          Take(kPeers, "Error 3021"),
          {"send S1F3W 000A 00000002", "tx ENQ"},
          {"rx EOT", "tx S1F3W 800A 00000002 #1E"}}},
        {"MaxMessageBytes",
         [](LinkSettings& settings) { settings.MaxMessageBytes = 1; },
         {Complete(kPeers + " 0102", kPeers + " 0102")},
         {Take("S6F11W 800A 00000008 #1E 0102", "Error 3029"),
          {"send S1F1W 000A 00000001 0102", "Error 3029"}}},
        {"MaxListDepth",
         [](LinkSettings& settings) { settings.MaxListDepth = 1; },
         {Complete(kPeers + " 01010100", kPeers + " 01010100")},
         {Take("S6F11W 800A 00000008 #1E 01010100", "Error 3090")}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.Name);
        LinkSettings settings = Secs1Rig::Settings();
        ConnectedRig rig(settings);
        ExpectSteps(rig, row.Before);
        row.Change(settings);
        rig.Configure(settings);
        EXPECT_EQ(rig.Take(), "");
        ExpectSteps(rig, row.After);
    }
}

TEST(Secs1Settings, ThatCannotWorkChangeNothing) {
    LinkSettings settings = Secs1Rig::Settings();
    ConnectedRig rig(settings);
    rig.FullTexts = true;
    settings.T1 = 0ms;
    settings.DeviceID = 11;
    rig.Configure(settings);
    EXPECT_EQ(rig.Take(), "Error 3070 \"Setting out of range: T1 = 0\"");
    ExpectSteps(rig, {Complete(kPeers, kPeers)});
    rig.Do("rx ENQ, 0A");
    EXPECT_EQ(rig.Timers(), "T1:300");
}

TEST(Secs1Settings, ThatCannotWorkOpenNothing) {
    LinkSettings settings = Secs1Rig::Settings(1);
    settings.BaudRate = 9'601;
    Secs1Rig rig(settings);
    EXPECT_EQ(rig.Do("open"), "Error 3070");
    EXPECT_FALSE(rig.Machine().IsOpen());
}

TEST(Secs1Connection, ASerialPortHasNoMode) {
    for (const std::int32_t mode : {1, 2, 3}) {
        LinkSettings settings = Secs1Rig::Settings(1);
        settings.HSMSConnectionMode = mode;
        settings.SerialPort = "/dev/ttyS3";
        settings.BaudRate = 19'200;
        Secs1Rig rig(settings);
        ExpectSteps(rig,
                    {{"open", "open /dev/ttyS3 at 19200"},
                     {"connected", "adopt; Connect"},
                     {"reset", "Disconnect 3063; close"},
                     {"advance 9999", ""},
                     {"advance 1", "open /dev/ttyS3 at 19200"}});
    }
}

TEST(Secs1Connection, OverTcpTheListenerIsHostOrEquipmentAlike) {
    for (const bool host : {true, false}) {
        LinkSettings settings = Secs1Rig::Settings(3, host);
        settings.HSMSConnectionMode = 2;
        Secs1Rig rig(settings);
        ExpectSteps(rig,
                    {{"open", "listen 10.0.0.1:5000"},
                     {"listening", ""},
                     {"caller 10.0.0.2", "adopt; Connect"},
                     {"caller 10.0.0.3", "Error 3041; refuse"},
                     {"send S1F1W 000A 00000001", "tx ENQ"},
                     {"rx ENQ", host ? "tx EOT" : ""}});
    }
}

/// Both ends have called each other; the equipment changes over to the host's connection.
TEST(Secs1Connection, AChangeOfConnectionsStartsTheLineAfresh) {
    LinkSettings settings = Secs1Rig::Settings(3, false);
    settings.HSMSConnectionMode = 3;
    Secs1Rig rig(settings);
    rig.Do("open");
    EXPECT_EQ(rig.Do("connected"), "adopt; Connect");
    EXPECT_EQ(rig.Do("send S1F1W 000A 00000001"), "tx ENQ");
    EXPECT_EQ(rig.Do("caller 10.0.0.2"), "adopt; tx ENQ") << "no second Connect, nothing lost";
    EXPECT_EQ(rig.Do("pass"), "tx S1F1W 800A 00000001 #1E; Sent S1F1W 000A 00000001 #1E");
    EXPECT_EQ(rig.Do("caller 10.0.0.2"), "Error 3041; refuse") << "this one is in use";
    EXPECT_EQ(rig.Violation, "");
}

}  // namespace
}  // namespace hexmire::test
