// SECS-I over TCP against a raw socket: what the line does when its characters come in segments.
#include <hexmire/driver/LinkStatistics.h>

#include "LinkRig.h"
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/tcp.h>

#include <memory>

namespace hexmire::test {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

constexpr const char* kToEquipment = "0005 0105 8001 00000101";  // S1F5
constexpr const char* kToHost = "8005 0605 8001 00000101";       // S6F5

/// The value of an option of one of our own sockets, found by its two ports; -1 when there is none.
int OptionOf(std::uint16_t localPort, std::uint16_t remotePort, int level, int option) {
    for (int descriptor = 0; descriptor < 256; ++descriptor) {
        sockaddr_in local{};
        sockaddr_in remote{};
        socklen_t localSize = sizeof local;
        socklen_t remoteSize = sizeof remote;
        auto* const localEnd = reinterpret_cast<sockaddr*>(&local);    // NOLINT: of the system
        auto* const remoteEnd = reinterpret_cast<sockaddr*>(&remote);  // NOLINT: of the system
        if (::getsockname(descriptor, localEnd, &localSize) != 0 ||
            ::getpeername(descriptor, remoteEnd, &remoteSize) != 0 ||
            ntohs(local.sin_port) != localPort || ntohs(remote.sin_port) != remotePort) {
            continue;
        }
        if (level < 0) return ::fcntl(descriptor, F_GETFD);
        int value = -1;
        socklen_t size = sizeof value;
        return ::getsockopt(descriptor, level, option, &value, &size) == 0 ? value : -1;
    }
    return -1;
}

void ExpectOptions(std::uint16_t localPort, std::uint16_t remotePort) {
    const auto option = [&](int level, int name) {
        return OptionOf(localPort, remotePort, level, name);
    };
    EXPECT_EQ(option(SOL_SOCKET, SO_KEEPALIVE), 1);
    EXPECT_EQ(option(IPPROTO_TCP, TCP_KEEPIDLE), 30);
    EXPECT_EQ(option(IPPROTO_TCP, TCP_KEEPINTVL), 10);
    EXPECT_EQ(option(IPPROTO_TCP, TCP_KEEPCNT), 3);
    EXPECT_EQ(option(IPPROTO_TCP, TCP_USER_TIMEOUT), 30'000);
    EXPECT_EQ(option(IPPROTO_TCP, TCP_NODELAY), 1);
    EXPECT_EQ(option(-1, 0) & FD_CLOEXEC, FD_CLOEXEC);
}

class SecsTcp : public testing::Test {
protected:
    SecsTcp() { settings_.PortType = 3; }
    void Connect() {
        driver_ = std::make_unique<TransportDriver>(rig_.Loop, events_, settings_);
        driver_->OpenLink();
        ASSERT_TRUE(peer_.ConnectTo(port_));
        ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Connect"); }));
        events_.Lines.clear();
    }
    bool RunUntil(std::string_view event, std::size_t count = 1) {
        return rig_.RunUntil([&] { return events_.Count(event) >= count; });
    }

    LinkRig rig_;
    std::uint16_t port_ = rig_.FreePort();
    LinkSettings settings_ = LinkRig::Passive(port_);  // an equipment
    LinkRecorder events_;
    RawPeer peer_{rig_};
    std::unique_ptr<TransportDriver> driver_;
};

TEST_F(SecsTcp, IsConnectedByTheConnectionAlone) {
    Connect();
    EXPECT_EQ(peer_.Socket().available(), 0U) << "not a byte was needed";
    EXPECT_EQ(driver_->Statistics().LineNoise, 0U);
}

TEST_F(SecsTcp, SetsTheDirectionByItsRoleAndNotByWhoHasConnected) {
    Connect();
    driver_->SendMessage(Header(6, 1, 7), Variant::Bytes(Bytes("0100")), 2);
    EXPECT_EQ(peer_.Read(1), "05 ");
    peer_.Send("04");
    EXPECT_EQ(peer_.Read(15), BlockHex("8005 0601 8001 00000007", "0100"));
    peer_.Send("06");
    ASSERT_TRUE(RunUntil("Sent"));
    EXPECT_THAT(events_.Lines, ElementsAre("Sent 00 05 06 01 80 01 00 00 00 07 01 00 "));
}

TEST_F(SecsTcp, TakesAnswersAndQuestionsFromOneSegment) {
    Connect();
    driver_->SendMessage(Header(6, 1, 7), "", 0);
    EXPECT_EQ(peer_.Read(1), "05 ");
    peer_.Send("04");
    (void)peer_.Read(13);
    peer_.Send("06 05");  // the ACK, and the wish to send
    EXPECT_EQ(peer_.Read(1), "04 ");
    peer_.Send(BlockHex(kToEquipment) + "05");
    EXPECT_EQ(peer_.Read(2), "06 04 ");
    ASSERT_TRUE(RunUntil("Message"));
    EXPECT_EQ(events_.Lines.front(), "Sent 00 05 06 01 80 01 00 00 00 07 ");
}

TEST_F(SecsTcp, TakesABlockThatComesWithItsEnq) {
    Connect();
    peer_.Send("05" + BlockHex(kToEquipment));
    EXPECT_EQ(peer_.Read(2), "04 06 ");
    ASSERT_TRUE(RunUntil("Message"));
}

TEST_F(SecsTcp, IgnoresWhatADeviceServerHasKeptFromBefore) {
    driver_ = std::make_unique<TransportDriver>(rig_.Loop, events_, settings_);
    driver_->OpenLink();
    ASSERT_TRUE(peer_.ConnectTo(port_));
    peer_.Send("06 15 FF 00 0A");
    peer_.Send("05");
    EXPECT_EQ(peer_.Read(1), "04 ");
    EXPECT_EQ(driver_->Statistics().LineNoise, 5U);
}

TEST_F(SecsTcp, ClosesAnExtraCallerAndLeavesTheLineAlone) {
    Connect();
    RawPeer extra(rig_);
    ASSERT_TRUE(extra.ConnectTo(port_));
    EXPECT_EQ(extra.ReadToEnd(), "");
    peer_.Send("05");
    EXPECT_EQ(peer_.Read(1), "04 ");
    EXPECT_THAT(events_.Lines, ElementsAre("Error 3041"));
    EXPECT_EQ(driver_->Statistics().ExtraConnections, 1U);
}

TEST_F(SecsTcp, EndsWithItsConnection) {
    Connect();
    driver_->SendMessage(Header(6, 1, 7), "", 0);
    driver_->SendMessage(Header(6, 1, 8), "", 0);
    EXPECT_EQ(peer_.Read(1), "05 ");
    peer_.Close();
    ASSERT_TRUE(RunUntil("Disconnect"));
    EXPECT_FALSE(driver_->LinkStatus());
    EXPECT_THAT(events_.Lines, ElementsAre("Error 3073", "Error 3073", "Disconnect 3054"));
}

TEST_F(SecsTcp, TellsAResetFromAClose) {
    Connect();
    peer_.Reset();
    ASSERT_TRUE(RunUntil("Disconnect"));
    EXPECT_THAT(events_.Lines, ElementsAre("Disconnect 3055"));
}

TEST_F(SecsTcp, KeepsNothingOfAConnectionForTheNext) {
    settings_.AutoReconnect = true;
    Connect();
    peer_.Send("05" + BlockHex(kToEquipment).substr(0, 18));
    EXPECT_EQ(peer_.Read(1), "04 ");
    peer_.Close();
    ASSERT_TRUE(RunUntil("Disconnect 3054"));
    EXPECT_TRUE(driver_->LinkStatus());
    RawPeer next(rig_);
    ASSERT_TRUE(next.ConnectTo(port_));
    next.Send("05" + BlockHex(kToEquipment));
    EXPECT_EQ(next.Read(2), "04 06 ") << "no half block, no duplicate";
    ASSERT_TRUE(RunUntil("Message"));
    EXPECT_THAT(events_.Lines,
                ElementsAre("Disconnect 3054",
                            "Connect",
                            "Block 00 05 01 05 80 01 00 00 01 01 ",
                            "Message 00 05 01 05 80 01 00 00 01 01 | | 0"));
}

TEST_F(SecsTcp, StaysConnectedWhenAMessageIsGivenUp) {
    settings_.T2 = 10ms;
    settings_.ConnectionRetryLimit = 1;
    Connect();
    driver_->SendMessage(Header(6, 1, 7), "", 0);
    EXPECT_EQ(peer_.Read(2), "05 05 ");
    ASSERT_TRUE(RunUntil("Error 3010"));
    peer_.Send("05");
    EXPECT_EQ(peer_.Read(1), "04 ");
    EXPECT_THAT(events_.Lines, ElementsAre("Error 3010"));
}

TEST_F(SecsTcp, ClosesAConnectionThatBabbles) {
    Connect();
    peer_.Send("05");
    EXPECT_EQ(peer_.Read(1), "04 ");
    std::string babble;
    for (int count = 0; count < 5'000; ++count)
        babble += "FF";
    peer_.Send(babble);
    ASSERT_TRUE(RunUntil("Disconnect"));
    EXPECT_THAT(events_.Lines, ElementsAre("Error 3014", "Disconnect 3014"));
}

TEST_F(SecsTcp, LeavesItsLastBytesToThePeerWhenItCloses) {
    Connect();
    peer_.Send("05" + BlockHex(kToEquipment));
    ASSERT_TRUE(RunUntil("Message"));
    peer_.Send("05 05 05");  // never read by the driver
    driver_->CloseLink();
    EXPECT_TRUE(peer_.ReadToEnd().starts_with("04 06 "));
    EXPECT_FALSE(peer_.WasReset());
    ASSERT_TRUE(RunUntil("Disconnect 0"));
}

TEST_F(SecsTcp, AsksTheSystemToWatchTheConnectionOfACaller) {
    Connect();
    ExpectOptions(port_, peer_.Socket().local_endpoint().port());
}

TEST_F(SecsTcp, AsksTheSystemToWatchTheConnectionThatItOpens) {
    settings_ = LinkRig::Active(port_);
    settings_.PortType = 3;
    asio::ip::tcp::acceptor acceptor(rig_.Loop, {asio::ip::address_v4::loopback(), port_});
    driver_ = std::make_unique<TransportDriver>(rig_.Loop, events_, settings_);
    driver_->OpenLink();
    ASSERT_TRUE(peer_.AcceptFrom(acceptor));
    ASSERT_TRUE(RunUntil("Connect"));
    ExpectOptions(peer_.Socket().remote_endpoint().port(), port_);
    peer_.Send("05" + BlockHex(kToHost));
    EXPECT_EQ(peer_.Read(2), "04 06 ") << "the host is the slave whoever has connected";
}

TEST_F(SecsTcp, RefusesCallersThatAreNotOnTheList) {
    settings_.AllowedCallers = {"10.1.2.3"};
    driver_ = std::make_unique<TransportDriver>(rig_.Loop, events_, settings_);
    driver_->OpenLink();
    ASSERT_TRUE(peer_.ConnectTo(port_));
    EXPECT_EQ(peer_.ReadToEnd(), "");
    EXPECT_THAT(events_.Lines, ElementsAre("Error 3041"));
}

TEST_F(SecsTcp, KnowsAnAllowedCallerHoweverItIsWritten) {
    settings_.AllowedCallers = {"::FFFF:7F00:1"};
    Connect();
}

TEST_F(SecsTcp, ListensAtANameAsWell) {
    settings_.LocalIPAddress = "localhost";
    driver_ = std::make_unique<TransportDriver>(rig_.Loop, events_, settings_);
    driver_->OpenLink();
    ASSERT_TRUE(rig_.RunUntil([&] { return peer_.ConnectTo(port_); })) << "once it is resolved";
    ASSERT_TRUE(RunUntil("Connect"));
}

TEST_F(SecsTcp, WaitsForANameThatIsNotThereToAppear) {
    settings_.LocalIPAddress = "no-such-host.invalid";
    settings_.T5 = 5ms;
    driver_ = std::make_unique<TransportDriver>(rig_.Loop, events_, settings_);
    driver_->OpenLink();
    ASSERT_TRUE(rig_.RunUntil([&] { return driver_->Statistics().ListenFailures >= 2; }));
    EXPECT_EQ(events_.Lines.front(), "Error 3052");
    EXPECT_TRUE(driver_->LinkStatus());
    driver_->LocalIPAddress("127.0.0.1");
    ASSERT_TRUE(rig_.RunUntil([&] { return peer_.ConnectTo(port_); }));
    ASSERT_TRUE(RunUntil("Connect"));
}

}  // namespace
}  // namespace hexmire::test
