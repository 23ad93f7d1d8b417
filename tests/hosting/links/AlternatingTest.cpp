// Alternating links on real sockets: both ends listen, both connect, one connection is left.
#include <hexmire/driver/LinkStatistics.h>

#include "LinkRig.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

namespace hexmire::test {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

LinkSettings Alternating(std::int32_t portType, std::uint16_t local, std::uint16_t remote) {
    LinkSettings settings = LinkRig::Active(local);
    settings.HSMSConnectionMode = 3;
    settings.PortType = portType;
    settings.RemoteIPPort = remote;
    return settings;
}

// --- two drivers ---------------------------------------------------------------------------------

struct Opening {
    std::int32_t PortType;
    bool HostFirst;
    int TurnsBetween;  ///< of the loop, from the first opening to the second
};

void PrintTo(const Opening& opening, std::ostream* out) {
    *out << opening.PortType << (opening.HostFirst ? " host first " : " equipment first ")
         << opening.TurnsBetween;
}

class AlternatingPair : public testing::TestWithParam<Opening> {
protected:
    AlternatingPair() {
        while (equipmentPort_ == hostPort_)
            equipmentPort_ = rig_.FreePort();
        const std::int32_t type = GetParam().PortType;
        LinkSettings settings = Alternating(type, hostPort_, equipmentPort_);
        host_ = std::make_unique<TransportDriver>(rig_.Loop, hostEvents_, settings);
        settings = Alternating(type, equipmentPort_, hostPort_);
        settings.HostRole = false;
        equipment_ = std::make_unique<TransportDriver>(rig_.Loop, equipmentEvents_, settings);
    }
    static void DropConnectFailures(LinkRecorder& events) {
        std::erase_if(events.Lines,
                      [](const std::string& line) { return line.starts_with("Error 3050"); });
    }

    LinkRig rig_;
    std::uint16_t hostPort_ = rig_.FreePort();
    std::uint16_t equipmentPort_ = rig_.FreePort();
    LinkRecorder hostEvents_;
    LinkRecorder equipmentEvents_;
    std::unique_ptr<TransportDriver> host_;
    std::unique_ptr<TransportDriver> equipment_;
};

TEST_P(AlternatingPair, HasOneConnectionHoweverTheCallsCross) {
    (GetParam().HostFirst ? *host_ : *equipment_).OpenLink();
    for (int turn = 0; turn < GetParam().TurnsBetween; ++turn) {
        rig_.Loop.restart();
        (void)rig_.Loop.poll_one();
    }
    (GetParam().HostFirst ? *equipment_ : *host_).OpenLink();
    ASSERT_TRUE(rig_.RunUntil([&] { return hostEvents_.Has("Connect"); }));
    ASSERT_TRUE(rig_.RunUntil([&] { return equipmentEvents_.Has("Connect"); }));
    host_->SendMessage(Header(0x81, 1, 11), "", 0);
    equipment_->SendMessage(Header(0x85, 1, 12), "", 0);
    ASSERT_TRUE(rig_.RunUntil([&] {
        return hostEvents_.Has("Message") && equipmentEvents_.Has("Message") &&
               hostEvents_.Has("Sent") && equipmentEvents_.Has("Sent");
    }));
    for (LinkRecorder* events : {&hostEvents_, &equipmentEvents_}) {
        DropConnectFailures(*events);
        EXPECT_EQ(events->Lines.front(), "Connect");
        EXPECT_EQ(events->Lines.size(), 4U) << testing::PrintToString(events->Lines);
    }
}

std::vector<Opening> Openings() {
    std::vector<Opening> openings;
    for (const std::int32_t type : {2, 3, 4}) {
        for (const bool hostFirst : {true, false}) {
            for (const int turns : {0, 1, 2, 3, 5})
                openings.push_back({type, hostFirst, turns});
        }
    }
    return openings;
}

INSTANTIATE_TEST_SUITE_P(All, AlternatingPair, testing::ValuesIn(Openings()));

// --- one driver and a raw peer, which both listens and calls -------------------------------------

/// The port type, and whether the driver is the host.
class AlternatingDriver : public testing::TestWithParam<std::tuple<std::int32_t, bool>> {
protected:
    AlternatingDriver() {
        while (peerPort_ == port_)
            peerPort_ = rig_.FreePort();
        settings_ = Alternating(std::get<0>(GetParam()), port_, peerPort_);
        settings_.HostRole = std::get<1>(GetParam());
    }
    void Open() {
        driver_ = std::make_unique<TransportDriver>(rig_.Loop, events_, settings_);
        driver_->OpenLink();
    }
    void Listen() {
        acceptor_.emplace(rig_.Loop,
                          asio::ip::tcp::endpoint(asio::ip::address_v4::loopback(), peerPort_));
    }
    [[nodiscard]] bool IsSecs() const { return settings_.PortType == 3; }
    /// The driver answers on this connection: it is the live one.
    void ExpectAlive(RawPeer& peer) {
        if (IsSecs()) {
            const std::string header = settings_.HostRole ? "8005 0105 8001" : "0005 0105 8001";
            peer.Send("05" + BlockHex(header + "000000" + std::to_string(10 + messages_++)));
            EXPECT_EQ(peer.Read(2), "04 06 ");
        } else {
            peer.Send("0000000A FFFF 0000 0005 00000099");
            const std::string bytes = peer.Read(14);
            EXPECT_THAT(bytes, testing::HasSubstr("00 06 00 00 00 99")) << "a Linktest.rsp";
        }
    }
    /// The Select.req of the driver, where the protocol has one.
    void TakeSelect(RawPeer& peer) {
        if (IsSecs()) return;
        EXPECT_THAT(peer.Read(14), testing::HasSubstr("00 00 00 01 38 00 00 0"));
    }

    LinkRig rig_;
    std::uint16_t port_ = rig_.FreePort();
    std::uint16_t peerPort_ = rig_.FreePort();
    LinkSettings settings_;
    int messages_ = 0;
    LinkRecorder events_;
    RawPeer called_{rig_};  ///< the driver has called us
    RawPeer caller_{rig_};  ///< we have called the driver
    std::optional<asio::ip::tcp::acceptor> acceptor_;
    std::unique_ptr<TransportDriver> driver_;
};

TEST_P(AlternatingDriver, OfTwoConnectionsKeepsThatOfTheHost) {
    Listen();
    Open();
    ASSERT_TRUE(called_.AcceptFrom(*acceptor_));
    TakeSelect(called_);
    ASSERT_TRUE(caller_.ConnectTo(port_));
    if (settings_.HostRole) {
        EXPECT_EQ(caller_.ReadToEnd(), "");
        ExpectAlive(called_);
    } else {
        EXPECT_EQ(called_.ReadToEnd(), "");
        ExpectAlive(caller_);
    }
    EXPECT_EQ(driver_->Statistics().CrossingsResolved, 1U);
    EXPECT_EQ(events_.Count("Error"), 0U) << "a crossing is nothing to tell of";
    EXPECT_LE(events_.Count("Connect"), 1U);
    EXPECT_EQ(events_.Count("Disconnect"), 0U);
}

TEST_P(AlternatingDriver, LosesNothingWhenThePeerChangesOverFirst) {
    Listen();
    Open();
    ASSERT_TRUE(called_.AcceptFrom(*acceptor_));
    TakeSelect(called_);
    // Both are there before the driver looks: the end of its own connection first.
    called_.Close();
    caller_.Socket().connect({asio::ip::address_v4::loopback(), port_});
    if (settings_.HostRole) {
        EXPECT_TRUE(rig_.RunUntil([&] { return events_.Has(IsSecs() ? "Disconnect" : "Error"); }))
            << "its own connection was the one to keep";
        return;
    }
    ExpectAlive(caller_);
    EXPECT_EQ(driver_->Statistics().CrossingsResolved, 1U);
    EXPECT_EQ(events_.Count("Error"), 0U);
    EXPECT_EQ(events_.Count("Disconnect"), 0U);
}

TEST_P(AlternatingDriver, TakesACallerWhileItsOwnCallHangs) {
    // A listener whose queue is full lets callers wait.
    asio::ip::tcp::acceptor full(rig_.Loop);
    full.open(asio::ip::tcp::v4());
    full.bind({asio::ip::address_v4::loopback(), peerPort_});
    full.listen(0);
    RawPeer first(rig_);
    ASSERT_TRUE(first.ConnectTo(peerPort_));
    Open();
    const auto begun = std::chrono::steady_clock::now();
    ASSERT_TRUE(caller_.ConnectTo(port_));
    ExpectAlive(caller_);
    if (settings_.HostRole) {
        EXPECT_GE(std::chrono::steady_clock::now() - begun, 490ms)
            << "a host's own call goes first for a while";
    }
    EXPECT_EQ(driver_->Statistics().ConnectFailures, 0U);
    EXPECT_EQ(events_.Count("Error"), 0U);
}

TEST_P(AlternatingDriver, RefusesOneMoreCallerAloud) {
    settings_.T5 = 60s;
    Open();
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has("Error 3050"); })) << "nobody is there";
    ASSERT_TRUE(caller_.ConnectTo(port_));
    ExpectAlive(caller_);
    RawPeer extra(rig_);
    ASSERT_TRUE(extra.ConnectTo(port_));
    EXPECT_EQ(extra.ReadToEnd(), "");
    EXPECT_TRUE(events_.Has("Error 3041"));
    EXPECT_EQ(driver_->Statistics().CrossingsResolved, 0U);
    ExpectAlive(caller_);
}

TEST_P(AlternatingDriver, ListensForAWholeT5AfterALoss) {
    settings_.AutoReconnect = true;
    settings_.T5 = 60ms;
    Listen();
    Open();
    ASSERT_TRUE(called_.AcceptFrom(*acceptor_));
    TakeSelect(called_);
    const auto lost = std::chrono::steady_clock::now();
    called_.Close();
    RawPeer next(rig_);
    ASSERT_TRUE(next.AcceptFrom(*acceptor_));
    EXPECT_GE(std::chrono::steady_clock::now() - lost, 60ms);
    TakeSelect(next);
    ExpectAlive(next);
}

TEST_P(AlternatingDriver, TakesACallerDuringThatTime) {
    settings_.AutoReconnect = true;
    settings_.T5 = 60s;
    Listen();
    Open();
    ASSERT_TRUE(called_.AcceptFrom(*acceptor_));
    TakeSelect(called_);
    called_.Close();
    const char* const end = IsSecs() ? "Disconnect 3054" : "Error 3054";
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Has(end); }));
    ASSERT_TRUE(caller_.ConnectTo(port_));
    ExpectAlive(caller_);
}

TEST_P(AlternatingDriver, ConnectsEvenWhereItCannotListen) {
    const asio::ip::tcp::acceptor other(rig_.Loop, {asio::ip::address_v4::loopback(), port_});
    Open();
    ASSERT_TRUE(rig_.RunUntil([&] { return driver_->Statistics().ListenFailures >= 3; }));
    EXPECT_EQ(events_.Count("Error 3052"), 1U) << "told once";
    Listen();
    ASSERT_TRUE(called_.AcceptFrom(*acceptor_));
    TakeSelect(called_);
    ExpectAlive(called_);
}

TEST_P(AlternatingDriver, DoesNotTalkToItself) {
    settings_.RemoteIPPort = port_;
    Open();
    ASSERT_TRUE(rig_.RunUntil([&] { return events_.Count("Error 3057") >= 3; }));
    EXPECT_EQ(events_.Count("Error 3057"), events_.Lines.size());
    EXPECT_TRUE(driver_->LinkStatus());
    ASSERT_TRUE(caller_.ConnectTo(port_));
    ExpectAlive(caller_);
}

TEST_P(AlternatingDriver, RefusesCallersThatAreNotOnTheList) {
    settings_.AllowedCallers = {"10.1.2.3"};
    Listen();
    Open();
    ASSERT_TRUE(called_.AcceptFrom(*acceptor_));
    TakeSelect(called_);
    ASSERT_TRUE(caller_.ConnectTo(port_));
    EXPECT_EQ(caller_.ReadToEnd(), "");
    ExpectAlive(called_);
}

INSTANTIATE_TEST_SUITE_P(All,
                         AlternatingDriver,
                         testing::Combine(testing::Values(2, 3, 4), testing::Bool()));

}  // namespace
}  // namespace hexmire::test
