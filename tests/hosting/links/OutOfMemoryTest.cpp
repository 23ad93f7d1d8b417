// Memory that ends while a driver gets its connection: whatever fails is told, and the port goes
// on.
#include <hexmire/driver/LinkStatistics.h>

#include "../../fakes/FailingMemory.h"
#include "LinkRig.h"
#include <gtest/gtest.h>

#include <memory>

namespace hexmire::test {
namespace {

constexpr const char* kSelectReq = "0000000A FFFF 0000 0001 00000001";
constexpr const char* kSelectRsp = "00 00 00 0A FF FF 00 00 00 02 00 00 00 01 ";

/// What became of a port whose opening found no memory once.
enum class Outcome : std::uint8_t { Opened, NotOpened, NothingFailed };

/// The driver opens with its n-th request for memory failing, and must not lose its way.
Outcome OpenWithout(long request, TransportDriver& driver, LinkRig& rig, LinkRecorder& events) {
    if (!fakes::FailsRequest(request, [&] { driver.OpenLink(); })) return Outcome::NothingFailed;
    if (driver.LinkStatus()) return Outcome::Opened;
    EXPECT_TRUE(rig.RunUntil([&] { return events.Has("Error 3099"); })) << request;
    driver.OpenLink();
    return Outcome::NotOpened;
}

TEST(DriverOutOfMemory, APassivePortListensInTheEnd) {
    int opened = 0;
    for (long request = 1; request < 1'000; ++request) {
        LinkRig rig;
        const std::uint16_t port = rig.FreePort();
        LinkRecorder events;
        TransportDriver driver(rig.Loop, events, LinkRig::Passive(port));
        const Outcome outcome = OpenWithout(request, driver, rig, events);
        RawPeer peer(rig);
        ASSERT_TRUE(rig.RunUntil([&] { return peer.ConnectTo(port); })) << request;
        peer.Send(kSelectReq);
        ASSERT_EQ(peer.Read(14), kSelectRsp) << request;
        if (outcome == Outcome::NothingFailed) break;
        if (outcome == Outcome::Opened) ++opened;
        if (driver.Statistics().TraceEntriesLost > 0) continue;  // only its record is concerned
        EXPECT_TRUE(rig.RunUntil([&] { return events.Has("Error"); })) << request;
    }
    EXPECT_GT(opened, 0) << "the failure of an action";
}

TEST(DriverOutOfMemory, AnActivePortConnectsInTheEnd) {
    int opened = 0;
    for (long request = 1; request < 1'000; ++request) {
        LinkRig rig;
        const std::uint16_t port = rig.FreePort();
        asio::ip::tcp::acceptor acceptor(rig.Loop, {asio::ip::address_v4::loopback(), port});
        LinkRecorder events;
        TransportDriver driver(rig.Loop, events, LinkRig::Active(port));
        const Outcome outcome = OpenWithout(request, driver, rig, events);
        RawPeer peer(rig);
        ASSERT_TRUE(peer.AcceptFrom(acceptor)) << request;
        ASSERT_TRUE(peer.Read(14).starts_with("00 00 00 0A FF FF 00 00 00 01 ")) << request;
        if (outcome == Outcome::NothingFailed) break;
        if (outcome == Outcome::Opened) ++opened;
        if (driver.Statistics().TraceEntriesLost > 0) continue;  // only its record is concerned
        EXPECT_TRUE(rig.RunUntil([&] { return events.Has("Error"); })) << request;
    }
    EXPECT_GT(opened, 0) << "the failure of an action";
}

}  // namespace
}  // namespace hexmire::test
