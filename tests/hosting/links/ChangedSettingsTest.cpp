// Settings that change while a port is open: the next connection is made with them, the present one
// is not dropped for them.
#include <hexmire/driver/LinkStatistics.h>

#include "LinkRig.h"
#include "Pty.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

namespace hexmire::test {
namespace {

using namespace std::chrono_literals;

constexpr const char* kSelectReq = "0000000A FFFF 0000 0001 00000001";
constexpr const char* kSelectRsp = "00 00 00 0A FF FF 00 00 00 02 00 00 00 01 ";

class ChangedSettings : public testing::Test {
protected:
    void Open() {
        settings_.AutoReconnect = true;
        driver_ = std::make_unique<TransportDriver>(rig_.Loop, events_, settings_);
        driver_->OpenLink();
    }
    bool RunUntil(std::string_view event, std::size_t count = 1) {
        return rig_.RunUntil([&] { return events_.Count(event) >= count; });
    }

    LinkRig rig_;
    std::uint16_t port_ = rig_.FreePort();
    LinkSettings settings_ = LinkRig::Passive(port_);
    LinkRecorder events_;
    RawPeer peer_{rig_};
    std::unique_ptr<TransportDriver> driver_;
};

TEST_F(ChangedSettings, AnotherKindOfLinkWaitsForTheEndOfTheConnection) {
    Open();
    ASSERT_TRUE(peer_.ConnectTo(port_));
    peer_.Send(kSelectReq);
    ASSERT_EQ(peer_.Read(14), kSelectRsp);
    driver_->PortType(3);
    peer_.Send("0000000A FFFF 0000 0005 00000002");
    EXPECT_EQ(peer_.Read(14), "00 00 00 0A FF FF 00 00 00 06 00 00 00 02 ") << "HSMS as before";
    peer_.Close();
    ASSERT_TRUE(RunUntil("Disconnect 3054"));
    rig_.RunFor(1ms);
    RawPeer next(rig_);
    ASSERT_TRUE(rig_.RunUntil([&] { return next.ConnectTo(port_); }));
    next.Send("05");
    EXPECT_EQ(next.Read(1), "04 ") << "and now SECS-I";
    EXPECT_EQ(events_.Count("Connect"), 2U);
    EXPECT_TRUE(driver_->LinkStatus());
}

TEST_F(ChangedSettings, AnotherKindOfLinkBeginsAtOnceWhereThereIsNoConnection) {
    Open();
    rig_.RunFor(1ms);
    driver_->PortType(3);
    EXPECT_TRUE(driver_->LinkStatus());
    rig_.RunFor(1ms);
    ASSERT_TRUE(peer_.ConnectTo(port_));
    ASSERT_TRUE(RunUntil("Connect"));
    EXPECT_THAT(events_.Lines, testing::ElementsAre("Connect"));
}

TEST_F(ChangedSettings, AnotherKindOfLinkKeepsT5) {
    settings_ = LinkRig::Active(port_);
    settings_.T5 = 80ms;
    Open();
    ASSERT_TRUE(RunUntil("Error 3050"));
    const auto failed = std::chrono::steady_clock::now();
    asio::ip::tcp::acceptor acceptor(rig_.Loop, {asio::ip::address_v4::loopback(), port_});
    driver_->PortType(3);
    ASSERT_TRUE(peer_.AcceptFrom(acceptor));
    EXPECT_GE(std::chrono::steady_clock::now() - failed, 70ms);
    ASSERT_TRUE(RunUntil("Connect"));
}

TEST_F(ChangedSettings, ANetworkLinkMayBecomeASerialOne) {
    const Pty pty;
    RawLine line(rig_, pty);
    Open();
    rig_.RunFor(1ms);
    driver_->PortType(1);
    driver_->SerialPort(pty.Path());
    ASSERT_TRUE(RunUntil("Connect"));
    line.Send("05");
    EXPECT_EQ(line.Read(1), "04 ");
    EXPECT_FALSE(peer_.ConnectTo(port_)) << "nobody listens any more";
}

TEST_F(ChangedSettings, TheNextAttemptGoesToTheNewAddress) {
    settings_ = LinkRig::Active(port_);
    Open();
    ASSERT_TRUE(RunUntil("Error 3050"));
    asio::ip::tcp::acceptor acceptor(rig_.Loop, {asio::ip::address_v4::loopback(), 0});
    driver_->RemoteIPPort(acceptor.local_endpoint().port());
    ASSERT_TRUE(peer_.AcceptFrom(acceptor));
    EXPECT_TRUE(peer_.Read(14).starts_with("00 00 00 0A FF FF 00 00 00 01 "));
}

TEST_F(ChangedSettings, APassivePortMovesToTheNewPort) {
    Open();
    rig_.RunFor(1ms);
    std::uint16_t other = rig_.FreePort();
    while (other == port_)
        other = rig_.FreePort();
    driver_->LocalIPPort(other);
    rig_.RunFor(1ms);
    ASSERT_TRUE(peer_.ConnectTo(other));
    peer_.Send(kSelectReq);
    EXPECT_EQ(peer_.Read(14), kSelectRsp);
    RawPeer late(rig_);
    EXPECT_FALSE(late.ConnectTo(port_));
}

TEST_F(ChangedSettings, APortTypeThatThereIsNotIsRefused) {
    Open();
    driver_->PortType(5);
    ASSERT_TRUE(RunUntil("Error 3070"));
    ASSERT_TRUE(peer_.ConnectTo(port_));
    peer_.Send(kSelectReq);
    EXPECT_EQ(peer_.Read(14), kSelectRsp);
}

TEST_F(ChangedSettings, AValueOutOfItsRangeIsToldOnceAndStopsNoOther) {
    Open();
    driver_->T6(0);
    driver_->DeviceID(32'768);
    driver_->T7(3);
    driver_->DeviceID(6);
    ASSERT_TRUE(RunUntil("Error 3070", 2));
    ASSERT_TRUE(peer_.ConnectTo(port_));
    peer_.Send(kSelectReq);
    ASSERT_EQ(peer_.Read(14), kSelectRsp);
    peer_.Send("0000000A 0006 0601 0000 00000009");
    ASSERT_TRUE(RunUntil("Message"));
    EXPECT_EQ(events_.Count("Error"), 2U);
    EXPECT_THAT(events_.Texts,
                testing::ElementsAre("Setting out of range: T6 = 0",
                                     "Setting out of range: DeviceID = 32768"));
    EXPECT_EQ(driver_->Settings().T6, 5s) << "as before";
    EXPECT_EQ(driver_->Settings().T7, 3s);
    driver_->CloseLink();
    driver_->OpenLink();
    EXPECT_TRUE(driver_->LinkStatus());
}

TEST_F(ChangedSettings, AnAddressThatCannotWorkIsToldOnceAndStopsNoOther) {
    Open();
    driver_->LocalIPAddress("no address");
    driver_->DeviceID(6);
    ASSERT_TRUE(RunUntil("Error 3056"));
    ASSERT_TRUE(peer_.ConnectTo(port_));
    peer_.Send(kSelectReq);
    ASSERT_EQ(peer_.Read(14), kSelectRsp);
    peer_.Send("0000000A 0006 0601 0000 00000009");
    ASSERT_TRUE(RunUntil("Message"));
    EXPECT_EQ(events_.Count("Error"), 1U);
    driver_->CloseLink();
    driver_->OpenLink();
    EXPECT_FALSE(driver_->LinkStatus()) << "it is what the next opening would use";
    ASSERT_TRUE(RunUntil("Error 3056", 2));
}

TEST_F(ChangedSettings, AModeWaitsForThePortThatItNeeds) {
    settings_ = LinkRig::Active(port_);
    settings_.LocalIPPort = 70'000;
    Open();
    ASSERT_TRUE(RunUntil("Error 3050"));
    driver_->HSMSConnectionMode(2);
    driver_->DeviceID(6);
    ASSERT_TRUE(RunUntil("Error 3056"));
    driver_->LocalIPPort(port_);
    ASSERT_TRUE(rig_.RunUntil([&] { return peer_.ConnectTo(port_); })) << "now it listens";
    EXPECT_EQ(events_.Count("Error 3056"), 1U);
    EXPECT_EQ(driver_->Settings().HSMSConnectionMode, 2);
}

TEST_F(ChangedSettings, AKindOfLinkThatCannotWorkYetIsToldOnce) {
    Open();
    rig_.RunFor(1ms);
    driver_->SerialPort("");
    driver_->PortType(1);
    ASSERT_TRUE(RunUntil("Error 3070"));
    EXPECT_EQ(events_.Texts.back(), "Setting out of range: SerialPort \"\"");
    driver_->T7(3);
    ASSERT_TRUE(peer_.ConnectTo(port_)) << "the present kind goes on";
    peer_.Send(kSelectReq);
    ASSERT_EQ(peer_.Read(14), kSelectRsp);
    peer_.Close();
    ASSERT_TRUE(RunUntil("Disconnect 3054"));
    rig_.RunFor(2ms);
    EXPECT_EQ(events_.Count("Error"), 1U);
    driver_->PortType(4);
    driver_->PortType(1);
    ASSERT_TRUE(RunUntil("Error 3070", 2)) << "asked for once more";
    const Pty pty;
    driver_->SerialPort(pty.Path());
    ASSERT_TRUE(RunUntil("Connect", 2));
    EXPECT_EQ(events_.Count("Error"), 2U);
}

TEST_F(ChangedSettings, AnActivePortBetweenAttemptsTellsOfAKindThatCannotWork) {
    settings_ = LinkRig::Active(port_);
    settings_.T5 = 30s;
    Open();
    ASSERT_TRUE(RunUntil("Error 3050"));
    driver_->SerialPort("");
    driver_->PortType(1);
    ASSERT_TRUE(RunUntil("Error 3070"));
    EXPECT_TRUE(driver_->LinkStatus());
}

TEST_F(ChangedSettings, AnotherKindOfLinkMayBeOpenedInsideTheDisconnectOfTheOld) {
    Open();
    ASSERT_TRUE(peer_.ConnectTo(port_));
    peer_.Send(kSelectReq);
    ASSERT_EQ(peer_.Read(14), kSelectRsp);
    ASSERT_TRUE(RunUntil("Connect"));
    driver_->CloseLink();
    driver_->PortType(3);
    driver_->OpenLink();
    EXPECT_TRUE(driver_->LinkStatus()) << "once the HSMS link has said goodbye";
    EXPECT_EQ(peer_.Read(14), "00 00 00 0A FF FF 00 00 00 09 38 00 00 00 ");
    peer_.Close();
    ASSERT_TRUE(RunUntil("Disconnect 0"));
    RawPeer next(rig_);
    ASSERT_TRUE(rig_.RunUntil([&] { return next.ConnectTo(port_); }));
    next.Send("05");
    EXPECT_EQ(next.Read(1), "04 ");
}

}  // namespace
}  // namespace hexmire::test
