// Whole conversations with a scripted peer; each runs again with the link failing at each of its
// steps, and with every frame arriving byte by byte (SEMI E37, SEMI E37.1).
#include "../../fakes/HsmsRig.h"
#include <gtest/gtest.h>

namespace hexmire::test {
namespace {

struct Step {
    std::string Line;
    std::string Expected;
};
struct Script {
    std::string Name;
    std::int32_t PortType;
    bool Active;
    std::vector<Step> Steps;
};

const std::string kAdoptAndSelect = "adopt; tx SelectReq FFFF 38000000";

const std::vector<Script> kScripts{
    {"active side selects, asks, answers and separates",
     4,
     true,
     {{"open", "connect 10.0.0.2:5000 from 10.0.0.1"},
      {"connected", kAdoptAndSelect},
      {"rx SelectRsp FFFF 38000000", "Connect"},
      {"send S1F13W 0005 00000001 0100",
       "tx S1F13W 0005 00000001 0100; Sent S1F13W 0005 00000001 0100"},
      {"rx S1F14 0005 00000001 210100", "Received S1F14 0005 00000001 210100"},
      {"rx S6F11W 0005 00000077 0100", "Received S6F11W 0005 00000077 0100"},
      {"send S6F12 0005 00000077 210100",
       "tx S6F12 0005 00000077 210100; Sent S6F12 0005 00000077 210100"},
      {"rx LinktestReq FFFF 00000078", "tx LinktestRsp FFFF 00000078"},
      {"close", "tx SeparateReq FFFF 38000001; shutdown"},
      {"fin", "Disconnect 0; close"}}},
    {"passive side is selected and separated, then listens on",
     4,
     false,
     {{"open", "listen 10.0.0.1:5000"},
      {"listening", ""},
      {"connected", "adopt"},
      {"rx SelectReq FFFF 00000001", "tx SelectRsp FFFF 00000001; Connect"},
      {"rx S1F1W 0005 00000002", "Received S1F1W 0005 00000002"},
      {"send S1F2 0005 00000002 0100", "tx S1F2 0005 00000002 0100; Sent S1F2 0005 00000002 0100"},
      {"rx SeparateReq FFFF 00000003", "Disconnect 3035; close"},
      {"connected", "adopt"},
      {"rx SelectReq FFFF 00000001", "tx SelectRsp FFFF 00000001; Connect"}}},
    {"both sides select at once, data may come between",
     2,
     true,
     {{"open", "connect 10.0.0.2:5000 from 10.0.0.1"},
      {"connected", "adopt; tx SelectReq 0005 38000000"},
      {"rx SelectReq 0005 00000001", "tx SelectRsp 0005 00000001; Connect"},
      {"rx S1F1W 0005 00000002", "Received S1F1W 0005 00000002"},
      {"rx SelectRsp.1 0005 38000000", ""},
      {"rx SelectReq 0005 00000003", "tx SelectRsp.1 0005 00000003"}}},
    {"a session of the general services is deselected and selected again",
     2,
     false,
     {{"open", "listen 10.0.0.1:5000"},
      {"connected", "adopt"},
      {"rx SelectReq 0005 00000001", "tx SelectRsp 0005 00000001; Connect"},
      {"rx DeselectReq 0005 00000002", "Disconnect 3036; tx DeselectRsp 0005 00000002"},
      {"rx S1F1W 0005 00000003", "tx RejectReq.4 0005 00000003; Error 3034"},
      {"rx SelectReq 0005 00000004", "tx SelectRsp 0005 00000004; Connect"},
      {"rx SeparateReq 0005 00000005", "Disconnect 3035"},
      {"rx SelectReq FFFF 00000006", "tx SelectRsp FFFF 00000006; Connect"}}},
    {"quiet links are tested, and one that is dead is found out",
     4,
     true,
     {{"open", "connect 10.0.0.2:5000 from 10.0.0.1"},
      {"connected", kAdoptAndSelect},
      {"rx SelectRsp FFFF 38000000", "Connect"},
      {"advance 30000", "tx LinktestReq FFFF 38000001"},
      {"advance 4999", ""},
      {"rx LinktestRsp FFFF 38000001", ""},
      {"advance 29999", ""},
      {"advance 1", "tx LinktestReq FFFF 38000002"},
      {"advance 5000", "Error 3006; Disconnect 3006; close"},
      {"advance 10000", "connect 10.0.0.2:5000 from 10.0.0.1"}}},
};

class HsmsScripts : public testing::TestWithParam<Script> {};

TEST_P(HsmsScripts, GoesAsWritten) {
    HsmsRig rig(HsmsRig::Settings(GetParam().PortType, GetParam().Active));
    for (const Step& step : GetParam().Steps) {
        EXPECT_EQ(rig.Do(step.Line), step.Expected) << step.Line;
        ASSERT_EQ(rig.Violation, "") << step.Line;
    }
}

TEST_P(HsmsScripts, GoesTheSameByteByByte) {
    HsmsRig rig(HsmsRig::Settings(GetParam().PortType, GetParam().Active));
    for (const Step& step : GetParam().Steps) {
        if (!step.Line.starts_with("rx ")) {
            rig.Do(step.Line);
            continue;
        }
        rig.Take();
        for (const std::uint8_t byte : FrameBytes(step.Line.substr(3))) {
            rig.Feed({&byte, 1});
        }
        EXPECT_EQ(rig.Take(), step.Expected) << step.Line;
        EXPECT_FALSE(rig.Runs(link::TimerId::T8)) << "the frame is complete";
    }
}

/// After each step the link fails: whatever happened, the port is where a new attempt is made, the
/// events are balanced, and the whole script works again from there.
TEST_P(HsmsScripts, SurvivesTheLinkFailingAtEachStep) {
    const Script& script = GetParam();
    for (const char* failure : {"fin", "reset", "rx-bytes 00000000", "close"}) {
        for (std::size_t failing = 0; failing < script.Steps.size(); ++failing) {
            SCOPED_TRACE(std::string(failure) + " after step " + std::to_string(failing));
            HsmsRig rig(HsmsRig::Settings(script.PortType, script.Active));
            for (std::size_t step = 0; step <= failing; ++step) {
                rig.Do(script.Steps[step].Line);
            }
            rig.Do(failure);
            rig.Do("close");
            rig.Do("fire Linger");
            ASSERT_EQ(rig.State(), "CLOSED");
            ASSERT_EQ(rig.Violation, "");
            ASSERT_EQ(rig.Timers(), "") << "nothing is left running";
            rig.Do("advance 10000");
            rig.Do("open");
            rig.Do("connected");
            ASSERT_EQ(rig.State(), "NOT SELECTED");
            rig.Do("rx SelectReq FFFF 00000099");
            ASSERT_EQ(rig.State(), "SELECTED");
            EXPECT_EQ(rig.Do("rx S1F1W 0005 00000002"), "Received S1F1W 0005 00000002");
            ASSERT_EQ(rig.Violation, "");
        }
    }
}

INSTANTIATE_TEST_SUITE_P(All, HsmsScripts, testing::ValuesIn(kScripts), [](const auto& script) {
    return "Script" + std::to_string(script.index);
});

}  // namespace
}  // namespace hexmire::test
