// A driver against a raw socket on loopback: what a well-behaved driver would never do to it.
#include <hexmire/driver/LinkStatistics.h>

#include "LinkRig.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/sockios.h>
#include <sys/ioctl.h>

#include <thread>

namespace hexmire::test {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

constexpr const char* kSelectReq = "0000000A FFFF 0000 0001 00000001";
constexpr const char* kSelectRsp = "00 00 00 0A FF FF 00 00 00 02 00 00 00 01 ";

/// True when the receiving end of the system has everything that was sent.
bool IsDelivered(asio::ip::tcp::socket& socket) {
    int unsent = 0;
    return ::ioctl(socket.native_handle(), SIOCOUTQ, &unsent) == 0 && unsent == 0;
}

class PassiveDriver : public testing::Test {
protected:
    void Open() {
        driver_ = std::make_unique<TransportDriver>(rig_.Loop, events_, settings_);
        driver_->OpenLink();
    }
    void Select() {
        Open();
        ASSERT_TRUE(peer_.ConnectTo(port_));
        peer_.Send(kSelectReq);
        ASSERT_EQ(peer_.Read(14), kSelectRsp);
        ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Connect"); }));
        events_.Lines.clear();
    }

    LinkRig rig_;
    std::uint16_t port_ = rig_.FreePort();
    LinkSettings settings_ = LinkRig::Passive(port_);
    LinkRecorder events_;
    RawPeer peer_{rig_};
    std::unique_ptr<TransportDriver> driver_;
};

TEST_F(PassiveDriver, AnExtraCallerIsClosedAndTheLiveLinkIsTested) {
    Select();
    RawPeer extra(rig_);
    ASSERT_TRUE(extra.ConnectTo(port_));
    EXPECT_EQ(extra.ReadToEnd(), "") << "not a byte for it";
    EXPECT_EQ(peer_.Read(14), "00 00 00 0A FF FF 00 00 00 05 38 00 00 00 ");
    peer_.Send("0000000A FFFF 0000 0006 38000000");
    peer_.Send("0000000A FFFF 0000 0005 00000002");
    EXPECT_EQ(peer_.Read(14), "00 00 00 0A FF FF 00 00 00 06 00 00 00 02 ");
    EXPECT_THAT(events_.Lines, ElementsAre("Error 3041"));
}

TEST_F(PassiveDriver, APeerThatDoesNotSelectIsClosedByT7HoweverMuchItTalks) {
    settings_.T7 = 60ms;
    Open();
    ASSERT_TRUE(peer_.ConnectTo(port_));
    ASSERT_TRUE(rig_.RunUntil([&] {
        asio::error_code ignored;
        asio::write(
            peer_.Socket(), asio::buffer(Bytes("0000000A FFFF 0000 0005 00000002")), ignored);
        return events_.Has("Error 3007");
    }));
    EXPECT_FALSE(events_.Has("Disconnect"));
    EXPECT_TRUE(driver_->LinkStatus()) << "it goes on listening";
    RawPeer next(rig_);
    ASSERT_TRUE(next.ConnectTo(port_));
    next.Send(kSelectReq);
    EXPECT_EQ(next.Read(14), kSelectRsp);
}

TEST_F(PassiveDriver, HalfAFrameThenCloseEndsTheLinkAndLeavesNothingBehind) {
    settings_.AutoReconnect = true;
    Select();
    peer_.Send("0000000C 0005 8101");
    peer_.Close();
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Disconnect 3054"); }));
    RawPeer next(rig_);
    ASSERT_TRUE(next.ConnectTo(port_));
    next.Send(kSelectReq);
    EXPECT_EQ(next.Read(14), kSelectRsp);
}

TEST_F(PassiveDriver, AResetIsToldAsALostConnection) {
    Select();
    peer_.Reset();
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Disconnect"); }));
    EXPECT_THAT(events_.Lines, ElementsAre("Disconnect 3055"));
    EXPECT_FALSE(driver_->LinkStatus());
}

TEST_F(PassiveDriver, AResetThatAWriteMeetsFirstIsToldAsALostConnectionToo) {
    Select();
    peer_.Reset();
    driver_->SendMessage(Header(0x81, 1, 1), Variant(), 0);
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Disconnect"); }));
    EXPECT_THAT(events_.Lines, ElementsAre("Error 3073", "Disconnect 3055"));
}

TEST_F(PassiveDriver, AHalfCloseCountsAsAClose) {
    Select();
    peer_.Socket().shutdown(asio::socket_base::shutdown_send);
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Disconnect 3054"); }));
    EXPECT_EQ(peer_.ReadToEnd(), "");
}

TEST_F(PassiveDriver, AFrameThatStopsArrivingIsT8) {
    settings_.T8 = 20ms;
    Select();
    peer_.Send("0000000C 0005");
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Disconnect"); }));
    EXPECT_THAT(events_.Lines, ElementsAre("Error 3008", "Disconnect 3008"));
}

TEST_F(PassiveDriver, BytesThatWaitWhenT8ExpiresAreReadFirst) {
    settings_.T8 = 20ms;
    Select();
    peer_.Send("0000000A FFFF");
    rig_.RunFor(2ms);
    // The rest arrives, but the loop is busy elsewhere until T8 is long over.
    peer_.Send("0000 0005 00000002");
    const auto busyUntil = std::chrono::steady_clock::now() + 40ms;
    asio::post(rig_.Loop, [&] {
        const auto giveUp = busyUntil + 5s;
        while (std::chrono::steady_clock::now() < busyUntil ||
               (!IsDelivered(peer_.Socket()) && std::chrono::steady_clock::now() < giveUp)) {
            std::this_thread::yield();
        }
    });
    EXPECT_EQ(peer_.Read(14), "00 00 00 0A FF FF 00 00 00 06 00 00 00 02 ");
    EXPECT_TRUE(driver_->LinkStatus());
    EXPECT_THAT(events_.Lines, testing::IsEmpty());
}

TEST_F(PassiveDriver, APeerThatStopsReadingStallsTheWrites) {
    settings_.WriteStall = 50ms;
    Select();
    const std::vector<std::uint8_t> body(1'000'000, 0x41);
    for (std::uint32_t count = 0; count < 40; ++count) {
        driver_->SendMessage(Header(6, 1, count), Variant::Bytes(body), 1'000'000);
    }
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Disconnect"); }));
    EXPECT_TRUE(events_.Has("Error 3009"));
    EXPECT_EQ(events_.Lines.back(), "Disconnect 3009");
    EXPECT_EQ(events_.Count("Sent") + events_.Count("Error 3073"), 40U);
}

TEST_F(PassiveDriver, SeparateIsTheLastFrameOfADriverThatIsDestroyed) {
    Select();
    driver_.reset();
    EXPECT_EQ(peer_.ReadToEnd(), "00 00 00 0A FF FF 00 00 00 09 38 00 00 00 ");
    EXPECT_FALSE(peer_.WasReset());
    EXPECT_TRUE(events_.Lines.empty()) << "and nothing is raised";
}

TEST_F(PassiveDriver, CloseLinkWaitsForThePeersCloseASecondAtMost) {
    Select();
    driver_->CloseLink();
    EXPECT_EQ(peer_.ReadToEnd(), "00 00 00 0A FF FF 00 00 00 09 38 00 00 00 ");
    EXPECT_TRUE(events_.Lines.empty()) << "the peer has not closed yet";
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Disconnect 0"); }, 2s));
}

TEST_F(PassiveDriver, APortInUseIsToldOnceAndTakenWhenItIsFree) {
    asio::ip::tcp::acceptor other(rig_.Loop, {asio::ip::address_v4::loopback(), port_});
    Open();
    ASSERT_TRUE(rig_.RunUntil([&] { return driver_->Statistics().ListenFailures >= 3; }));
    EXPECT_THAT(events_.Lines, ElementsAre("Error 3052"));
    EXPECT_TRUE(driver_->LinkStatus());
    other.close();
    ASSERT_TRUE(rig_.RunUntil([&] {
        RawPeer probe(rig_);
        return probe.ConnectTo(port_);
    }));
}

TEST_F(PassiveDriver, CallersThatAreNotOnTheListAreClosed) {
    settings_.AllowedCallers = {"10.1.2.3"};
    Open();
    ASSERT_TRUE(peer_.ConnectTo(port_));
    EXPECT_EQ(peer_.ReadToEnd(), "");
    EXPECT_TRUE(events_.Has("Error 3041"));
    EXPECT_EQ(driver_->Statistics().CallersNotAllowed, 1U);
}

TEST_F(PassiveDriver, NothingStaysInTheLoopAfterTheDriver) {
    Select();
    driver_.reset();
    peer_.Close();
    rig_.Loop.restart();
    rig_.Loop.run_for(1s);
    EXPECT_TRUE(rig_.Loop.stopped()) << "no handler is left";
}

class ActiveDriver : public testing::Test {
protected:
    void Open() {
        driver_ = std::make_unique<TransportDriver>(rig_.Loop, events_, settings_);
        driver_->OpenLink();
    }

    LinkRig rig_;
    std::uint16_t port_ = rig_.FreePort();
    LinkSettings settings_ = LinkRig::Active(port_);
    LinkRecorder events_;
    RawPeer peer_{rig_};
    std::unique_ptr<TransportDriver> driver_;
};

TEST_F(ActiveDriver, ARefusedConnectIsToldAndTriedAgainEveryT5) {
    settings_.T5 = 5ms;
    Open();
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Count("Error 3050") >= 3; }));
    EXPECT_TRUE(driver_->LinkStatus());
    EXPECT_EQ(events_.Count("Error"), events_.Lines.size());
}

TEST_F(ActiveDriver, SelectGoesOutAtOnceAndItsAnswerConnects) {
    asio::ip::tcp::acceptor acceptor(rig_.Loop, {asio::ip::address_v4::loopback(), port_});
    Open();
    ASSERT_TRUE(peer_.AcceptFrom(acceptor));
    EXPECT_EQ(peer_.Read(14), "00 00 00 0A FF FF 00 00 00 01 38 00 00 00 ");
    // The answer and the first data message in one segment.
    peer_.Send("0000000A FFFF 0000 0002 38000000 0000000A 0005 0601 0000 00000009");
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Message"); }));
    EXPECT_THAT(events_.Lines,
                ElementsAre("Connect",
                            "Block 00 05 06 01 00 00 00 00 00 09 ",
                            "Message 00 05 06 01 00 00 00 00 00 09 | | 0"));
}

TEST_F(ActiveDriver, CloseLinkDuringAnAttemptRaisesNothing) {
    settings_.RemoteIPAddress = "127.0.0.1";
    Open();
    driver_->CloseLink();
    rig_.RunFor(10ms);
    EXPECT_THAT(events_.Lines, testing::IsEmpty());
    EXPECT_FALSE(driver_->LinkStatus());
}

TEST_F(ActiveDriver, ANameThatDoesNotExistIsAFailedAttempt) {
    settings_.RemoteIPAddress = "no-such-host.invalid";
    settings_.LocalIPAddress = "0.0.0.0";
    Open();
    EXPECT_TRUE(rig_.RunUntil([&] { return events_.Has("Error 305"); }));
    EXPECT_TRUE(driver_->LinkStatus());
}

TEST_F(ActiveDriver, ALocalAddressThatIsNotHereIsAFailedAttempt) {
    settings_.LocalIPAddress = "192.0.2.1";
    Open();
    EXPECT_TRUE(rig_.RunUntil([&] { return events_.Has("Error 3050"); }));
}

TEST_F(ActiveDriver, TheSocketDoesNotDelaySmallWrites) {
    asio::ip::tcp::acceptor acceptor(rig_.Loop, {asio::ip::address_v4::loopback(), port_});
    Open();
    ASSERT_TRUE(peer_.AcceptFrom(acceptor));
    peer_.Read(14);
    peer_.Send("0000000A FFFF 0000 0002 38000000");
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Connect"); }));
    driver_->SendMessage(Header(0x81, 1, 1), "", 0);
    driver_->SendMessage(Header(0x81, 3, 2), "", 0);
    asio::error_code error;
    rig_.RunFor(1ms);
    EXPECT_EQ(peer_.Socket().available(error), 28U) << "both are there without an acknowledgement";
}

}  // namespace
}  // namespace hexmire::test
