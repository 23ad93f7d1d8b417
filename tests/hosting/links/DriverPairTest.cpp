// Two drivers on loopback in one loop: what a host and an equipment see of each other.
#include <hexmire/driver/LinkStatistics.h>

#include "LinkRig.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

namespace hexmire::test {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::StartsWith;

class DriverPair : public testing::Test {
protected:
    void Make() {
        host_ = std::make_unique<TransportDriver>(rig_.Loop, hostEvents_, hostSettings_);
        equipment_ =
            std::make_unique<TransportDriver>(rig_.Loop, equipmentEvents_, equipmentSettings_);
    }
    bool Connect() {
        Make();
        equipment_->OpenLink();
        host_->OpenLink();
        return rig_.RunUntil(
            [&] { return hostEvents_.Has("Connect") && equipmentEvents_.Has("Connect"); });
    }
    void Clear() {
        hostEvents_.Lines.clear();
        equipmentEvents_.Lines.clear();
    }

    LinkRig rig_;
    std::uint16_t port_ = rig_.FreePort();
    LinkSettings hostSettings_ = LinkRig::Active(port_);
    LinkSettings equipmentSettings_ = LinkRig::Passive(port_);
    LinkRecorder hostEvents_;
    LinkRecorder equipmentEvents_;
    std::unique_ptr<TransportDriver> host_;
    std::unique_ptr<TransportDriver> equipment_;
};

TEST_F(DriverPair, SelectRaisesConnectOnceOnBothSides) {
    ASSERT_TRUE(Connect());
    EXPECT_THAT(hostEvents_.Lines, ElementsAre("Connect"));
    EXPECT_THAT(equipmentEvents_.Lines, ElementsAre("Connect"));
    EXPECT_TRUE(host_->LinkStatus());
}

TEST_F(DriverPair, StatusIsTrueFromOpenLinkOn) {
    Make();
    EXPECT_FALSE(host_->LinkStatus());
    host_->OpenLink();
    EXPECT_TRUE(host_->LinkStatus());
    host_->CloseLink();
    EXPECT_FALSE(host_->LinkStatus());
}

TEST_F(DriverPair, PrimaryAndReplyTravelWithTheirEventsInOrder) {
    ASSERT_TRUE(Connect());
    Clear();
    equipmentEvents_.Hook = [&](const std::string& line) {
        if (!line.starts_with("Message")) return;
        equipment_->SendMessage(Header(1, 2, 77), Variant::Bytes(Bytes("0100")), 2);
    };
    host_->SendMessage(Header(0x81, 1, 77), "", 0);
    EXPECT_TRUE(hostEvents_.Lines.empty()) << "no event from inside the call";
    ASSERT_TRUE(rig_.RunUntil([&] { return hostEvents_.Has("Message"); }));
    EXPECT_THAT(hostEvents_.Lines,
                ElementsAre("Sent 00 05 81 01 00 00 00 00 00 4D ",
                            "Block 00 05 01 02 00 00 00 00 00 4D 01 00 ",
                            "Message 00 05 01 02 00 00 00 00 00 4D | 01 00 | 2"));
    EXPECT_THAT(equipmentEvents_.Lines,
                ElementsAre("Block 00 05 81 01 00 00 00 00 00 4D ",
                            "Message 00 05 81 01 00 00 00 00 00 4D | | 0",
                            "Sent 00 05 01 02 00 00 00 00 00 4D 01 00 "));
}

TEST_F(DriverPair, LargeBodiesArriveWhole) {
    ASSERT_TRUE(Connect());
    std::vector<std::uint8_t> body(3'000'003, 0x41);
    body[0] = 0x43, body[1] = 0x2D, body[2] = 0xC6, body[3] = 0xBF;  // A[2999999]
    Clear();
    host_->SendMessage(
        Header(7, 3, 9), Variant::Bytes(body), static_cast<std::int32_t>(body.size()));
    ASSERT_TRUE(rig_.RunUntil([&] { return equipmentEvents_.Has("Message"); }));
    ASSERT_TRUE(rig_.RunUntil([&] { return hostEvents_.Has("Sent"); }));
    EXPECT_EQ(equipmentEvents_.Lines.at(0).substr(6), hostEvents_.Lines.at(0).substr(5));
    EXPECT_TRUE(equipmentEvents_.Lines.at(1).ends_with("| 3000003"));
}

TEST_F(DriverPair, CloseLinkSeparatesAndEachSideSeesOneDisconnect) {
    ASSERT_TRUE(Connect());
    host_->CloseLink();
    host_->CloseLink();
    EXPECT_FALSE(host_->LinkStatus());
    ASSERT_TRUE(rig_.RunUntil([&] { return hostEvents_.Has("Disconnect"); }, 3s));
    ASSERT_TRUE(rig_.RunUntil([&] { return equipmentEvents_.Has("Disconnect"); }, 3s));
    EXPECT_FALSE(equipment_->LinkStatus()) << "the connection has ended, the port is closed";
    rig_.RunFor(50ms);
    EXPECT_THAT(hostEvents_.Lines, ElementsAre("Connect", "Disconnect 0"));
    EXPECT_THAT(equipmentEvents_.Lines, ElementsAre("Connect", "Disconnect 3035"));
    EXPECT_THAT(hostEvents_.Texts, ElementsAre(""));
}

TEST_F(DriverPair, SeparateReachesThePeerWhenTheDriverIsDestroyedAfterCloseLink) {
    ASSERT_TRUE(Connect());
    host_->CloseLink();
    host_.reset();
    ASSERT_TRUE(rig_.RunUntil([&] { return equipmentEvents_.Has("Disconnect"); }));
    EXPECT_TRUE(equipmentEvents_.Has("Disconnect 3035"));
    EXPECT_FALSE(hostEvents_.Has("Disconnect")) << "a destroyed driver raises nothing more";
}

TEST_F(DriverPair, DriverMayBeDestroyedInsideEachOfItsEvents) {
    for (const char* event : {"Connect", "Sent", "Block", "Message", "Disconnect", "Error"}) {
        SCOPED_TRACE(event);
        Clear();
        bool destroyed = false;
        hostEvents_.Hook = [&](const std::string& line) {
            EXPECT_FALSE(destroyed) << "nothing follows, not even " << line;
            if (line.starts_with(event)) {
                host_.reset();
                destroyed = true;
            } else if (line == "Connect") {
                host_->SendMessage(Header(0x81, 1, 3), "", 0);
            } else if (line.starts_with("Message")) {
                equipment_->CloseLink();
            } else if (line.starts_with("Disconnect")) {
                host_->SendMessage(Header(0x81, 1, 4), "", 0);
            }
        };
        equipmentEvents_.Hook = [&](const std::string& line) {
            if (line.starts_with("Message")) equipment_->SendMessage(Header(1, 2, 3), "", 0);
        };
        equipment_.reset();
        Make();
        equipment_->OpenLink();
        host_->OpenLink();
        EXPECT_TRUE(rig_.RunUntil([&] { return destroyed; }));
        rig_.RunFor(2ms);
    }
}

TEST_F(DriverPair, AutoReconnectBringsTheLinkBackAfterT5) {
    hostSettings_.AutoReconnect = equipmentSettings_.AutoReconnect = true;
    ASSERT_TRUE(Connect());
    equipment_->CloseLink();
    ASSERT_TRUE(rig_.RunUntil([&] { return hostEvents_.Has("Disconnect"); }));
    EXPECT_TRUE(host_->LinkStatus());
    ASSERT_TRUE(rig_.RunUntil([&] { return equipmentEvents_.Has("Disconnect"); }));
    equipment_->OpenLink();
    ASSERT_TRUE(rig_.RunUntil([&] { return hostEvents_.Count("Connect") == 2; }));
    EXPECT_EQ(hostEvents_.Count("Disconnect"), 1U);
}

TEST_F(DriverPair, OpenLinkInsideDisconnectStartsANewGeneration) {
    equipmentSettings_.AutoReconnect = true;
    hostEvents_.Hook = [&](const std::string& line) {
        if (line.starts_with("Disconnect")) host_->OpenLink();
    };
    ASSERT_TRUE(Connect());
    host_->CloseLink();
    ASSERT_TRUE(rig_.RunUntil([&] { return hostEvents_.Count("Connect") == 2; }));
    EXPECT_THAT(hostEvents_.Lines, ElementsAre("Connect", "Disconnect 0", "Connect"));
}

TEST_F(DriverPair, SendsWithoutASelectedLinkAreRefusedLater) {
    Make();
    host_->SendMessage(Header(0x81, 1, 77), "", 0);
    EXPECT_TRUE(hostEvents_.Lines.empty());
    ASSERT_TRUE(rig_.RunUntil([&] { return hostEvents_.Has("Error 3040"); }));
    EXPECT_THAT(hostEvents_.Texts.at(0), testing::EndsWith(" hdr=0005810100000000004D"));
}

TEST_F(DriverPair, AHandlerThatRunsTheLoopGetsNoNestedEventsAndItsSendsGoOut) {
    ASSERT_TRUE(Connect());
    Clear();
    int depth = 0;
    equipmentEvents_.Hook = [&](const std::string& line) {
        EXPECT_EQ(depth, 0) << "one event at a time";
        if (!line.starts_with("Message")) return;
        ++depth;
        equipment_->SendMessage(Header(1, 2, 3), "", 0);
        EXPECT_TRUE(rig_.RunUntil([&] { return hostEvents_.Count("Message") > 0; }));
        --depth;
    };
    host_->SendMessage(Header(0x81, 1, 3), "", 0);
    host_->SendMessage(Header(0x81, 1, 4), "", 0);
    ASSERT_TRUE(rig_.RunUntil([&] { return equipmentEvents_.Count("Sent") == 2; }));
    EXPECT_EQ(equipmentEvents_.Count("Message"), 2U);
}

TEST_F(DriverPair, AHandlerThatThrowsIsToldAsAnInternalError) {
    ASSERT_TRUE(Connect());
    Clear();
    equipmentEvents_.Hook = [&](const std::string& line) {
        if (line.starts_with("Message")) throw std::runtime_error("handler");
    };
    host_->SendMessage(Header(0x81, 1, 3), "", 0);
    ASSERT_TRUE(rig_.RunUntil([&] { return equipmentEvents_.Has("Error 3099"); }));
    EXPECT_TRUE(equipment_->LinkStatus());
}

TEST_F(DriverPair, ABodyShorterThanItsLengthIsAnInternalError) {
    ASSERT_TRUE(Connect());
    host_->SendMessage(Header(0x81, 1, 3), Variant::Bytes(Bytes("0100")), 3);
    ASSERT_TRUE(rig_.RunUntil([&] { return hostEvents_.Has("Error 3099"); }));
    EXPECT_EQ(host_->Statistics().MalformedSends, 1U);
}

TEST_F(DriverPair, NamesAreResolvedWithoutBlockingTheLoop) {
    hostSettings_.RemoteIPAddress = "localhost";
    hostSettings_.LocalIPAddress = "0.0.0.0";
    EXPECT_TRUE(Connect());
}

TEST_F(DriverPair, IPv6WorksAsWell) {
    hostSettings_.RemoteIPAddress = hostSettings_.LocalIPAddress = "::1";
    equipmentSettings_.LocalIPAddress = "::1";
    EXPECT_TRUE(Connect());
}

TEST_F(DriverPair, SettersTakeSecondsAndKeepExactMilliseconds) {
    Make();
    host_->T1(0.1F), host_->T2(0.2F), host_->T3(45), host_->T8(120);
    EXPECT_EQ(host_->Settings().T1, 100ms);
    EXPECT_EQ(host_->Settings().T2, 200ms);
    EXPECT_EQ(host_->Settings().T3, 45s);
    EXPECT_EQ(host_->Settings().T8, 120s);
    host_->T1(std::numeric_limits<float>::quiet_NaN());
    host_->OpenLink();
    EXPECT_FALSE(host_->LinkStatus());
    ASSERT_TRUE(rig_.RunUntil([&] { return hostEvents_.Has("Error 3070"); }));
    EXPECT_EQ(hostEvents_.Texts.at(0), "Setting out of range: T1 = -1");
}

TEST_F(DriverPair, ASettingOfAnOpenLinkCountsAtOnceAndABadOneChangesNothing) {
    ASSERT_TRUE(Connect());
    equipment_->DeviceID(6);
    host_->SendMessage(Header(0x81, 1, 3), "", 0);
    ASSERT_TRUE(rig_.RunUntil([&] { return equipmentEvents_.Has("Error 3020"); }));
    equipment_->T6(0);
    ASSERT_TRUE(rig_.RunUntil([&] { return equipmentEvents_.Has("Error 3070"); }));
    EXPECT_TRUE(equipment_->LinkStatus());
}

TEST_F(DriverPair, AThousandRoundTripsKeepSendBeforeReply) {
    ASSERT_TRUE(Connect());
    Clear();
    equipmentEvents_.Recording = false;
    equipmentEvents_.Hook = [&](const std::string& line) {
        if (!line.starts_with("Message")) return;
        std::uint8_t header[10]{};
        ASSERT_TRUE(ReadHexText(line.substr(8), 10, header));
        header[2] = 1, header[3] = 2;
        equipment_->SendMessage(header, "", 0);
    };
    for (std::uint32_t count = 1; count <= 1'000; ++count) {
        host_->SendMessage(Header(0x81, 1, count), "", 0);
    }
    ASSERT_TRUE(rig_.RunUntil([&] { return hostEvents_.Count("Message") == 1'000; }));
    std::size_t sent = 0;
    std::size_t received = 0;
    for (const std::string& line : hostEvents_.Lines) {
        if (line.starts_with("Sent")) ++sent;
        if (line.starts_with("Message")) ++received;
        ASSERT_GE(sent, received);
    }
    EXPECT_EQ(sent, 1'000U);
}

}  // namespace
}  // namespace hexmire::test
