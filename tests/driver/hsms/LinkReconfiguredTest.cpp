// Settings that change while an HSMS link is up: each counts from its next use on.
#include "Selected.h"
#include <gtest/gtest.h>

namespace hexmire::test {
namespace {

using namespace std::chrono_literals;

TEST(HsmsSettings, ANewT7CountsFromTheNextConnection) {
    HsmsRig rig(HsmsRig::Settings(4, false));
    rig.Do("open");
    rig.Do("connected");
    LinkSettings settings = HsmsRig::Settings(4, false);
    settings.T7 = 2s;
    rig.Configure(settings);
    EXPECT_EQ(rig.Do("advance 9999"), "");
    EXPECT_EQ(rig.Do("advance 1"), "Error 3007; close");
    rig.Do("connected");
    EXPECT_EQ(rig.Timers(), "T7:2000");
}

TEST(HsmsSettings, ANewT8CountsFromTheNextRead) {
    HsmsRig rig(HsmsRig::Settings());
    Select(rig);
    rig.Do("rx-bytes 00");
    LinkSettings settings = HsmsRig::Settings();
    settings.T8 = 1s;
    rig.Configure(settings);
    rig.Do("rx-bytes 00");
    EXPECT_EQ(rig.Do("advance 1000"), "Error 3008; Disconnect 3008; close");
}

TEST(HsmsSettings, ANewLinktestIntervalCountsFromTheNextFrame) {
    HsmsRig rig(HsmsRig::Settings());
    Select(rig);
    rig.Configure(Quiet());
    rig.Do("rx LinktestReq FFFF 00000001");
    EXPECT_EQ(rig.Do("advance 30000"), "tx LinktestReq FFFF 38000001") << "it was under way";
    rig.Do("rx LinktestRsp FFFF 38000001");
    EXPECT_EQ(rig.Do("advance 1000000"), "");
}

TEST(HsmsSettings, ANewLimitCountsFromTheNextFrame) {
    HsmsRig rig(Quiet());
    Select(rig);
    rig.Do("rx-bytes 0000000E 0005 0601");
    LinkSettings settings = Quiet();
    settings.MaxMessageBytes = 3;
    rig.Configure(settings);
    EXPECT_EQ(rig.Do("rx-bytes 0000 00000007 2102 AABB"), "Received S6F1 0005 00000007 2102AABB");
    EXPECT_EQ(rig.Do("rx-bytes 0000000D"), "") << "a body of three bytes";
    EXPECT_EQ(rig.Do("rx-bytes 0005 0601 0000 00000007 2101AA 0000000E"),
              "Received S6F1 0005 00000007 2101AA; Error 3038; Disconnect 3038; close");
}

TEST(HsmsSettings, ANewPortTypeIsThatOfTheNextConnection) {
    HsmsRig rig(HsmsRig::Settings(4, false));
    Select(rig);
    rig.Configure(HsmsRig::Settings(2, false));
    EXPECT_EQ(rig.Do("rx DeselectReq FFFF 00000001"), "tx RejectReq(3).1 FFFF 00000001; Error 3034")
        << "the link that is up is a single session";
    rig.Do("fin");
    Select(rig);
    EXPECT_EQ(rig.Do("rx DeselectReq FFFF 00000001"),
              "Disconnect 3036; tx DeselectRsp FFFF 00000001");
}

TEST(HsmsSettings, NewAddressesLeaveALinkUp) {
    HsmsRig rig(HsmsRig::Settings());
    Select(rig);
    LinkSettings settings = HsmsRig::Settings();
    settings.RemoteIPAddress = "10.0.0.7";
    settings.HSMSConnectionMode = 2;
    rig.Configure(settings);
    EXPECT_EQ(rig.Take(), "");
    EXPECT_EQ(rig.State(), "SELECTED");
    EXPECT_EQ(rig.Do("fin"), "Disconnect 3054; close; listen 10.0.0.1:5000");
}

TEST(HsmsSettings, BadOnesAreToldAndTheOldOnesStay) {
    HsmsRig rig(HsmsRig::Settings());
    Select(rig);
    LinkSettings settings = HsmsRig::Settings();
    settings.T8 = 121s;
    settings.DeviceID = 6;
    rig.Configure(settings);
    EXPECT_EQ(rig.Take(), "Error 3070");
    EXPECT_EQ(rig.Do("rx S1F1W 0005 00000001"), "Received S1F1W 0005 00000001");
}

}  // namespace
}  // namespace hexmire::test
