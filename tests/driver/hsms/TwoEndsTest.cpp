// Two links back to back over a network in simulated time: whatever order things happen in and
// wherever the connection fails, both ends come to agree on exactly one.
#include "../../fakes/LinkNetwork.h"
#include <gtest/gtest.h>

namespace hexmire::test {
namespace {

using namespace std::chrono_literals;
using Milliseconds = std::chrono::milliseconds;

constexpr std::int32_t kActive = 1;
constexpr std::int32_t kPassive = 2;
constexpr std::int32_t kAlternating = 3;

LinkSettings Settings(std::int32_t portType, std::int32_t mode, bool host) {
    LinkSettings settings;
    settings.PortType = portType;
    settings.HSMSConnectionMode = mode;
    settings.HostRole = host;
    settings.DeviceID = 5;
    settings.LocalIPAddress = host ? "10.0.0.1" : "10.0.0.2";
    settings.RemoteIPAddress = host ? "10.0.0.2" : "10.0.0.1";
    settings.AutoReconnect = true;
    return settings;
}

struct Modes {
    const char* Name;
    std::int32_t Host;
    std::int32_t Equipment;
};

constexpr std::array kModes{
    Modes{"ActiveHost", kActive, kPassive},
    Modes{"PassiveHost", kPassive, kActive},
    Modes{"BothAlternating", kAlternating, kAlternating},
    Modes{"AlternatingHost", kAlternating, kPassive},
    Modes{"AlternatingEquipment", kActive, kAlternating},
    Modes{"AlternatingHostActiveEquipment", kAlternating, kActive},
};

/// No message came twice, and each that was handed over has come, was told as aborted, or had been
/// told as sent before the link went down.
void ExpectNothingLostInSilence(const LinkNetwork& network) {
    for (const int end : {0, 1}) {
        const auto& sender = network.Seen(end);
        const auto& receiver = network.Seen(1 - end);
        for (const auto& [message, count] : receiver.Taken) {
            EXPECT_EQ(count, 1) << "message " << message << " came twice";
        }
        for (const auto& [message, count] : sender.Sent) {
            EXPECT_EQ(count, 1) << "message " << message << " was told as sent twice";
        }
        for (const std::uint32_t message : sender.Accepted) {
            const bool accounted = receiver.Taken.contains(message) ||
                                   sender.Aborted.contains(message) ||
                                   sender.Broken.contains(message);
            EXPECT_TRUE(accounted) << "message " << message << " of end " << end << " is missing";
        }
    }
}

/// From now on, without any more trouble, there is one link within `bound`, and it stays.
void ExpectOneLink(LinkNetwork& network, Milliseconds bound) {
    const auto limit = network.Now() + bound;
    while (!network.IsOneLink() && network.Now() < limit) {
        network.Step();
    }
    ASSERT_TRUE(network.IsOneLink()) << network.State(0) << ", " << network.State(1);
    const int connects = network.Seen(0).Connects + network.Seen(1).Connects;
    network.RunFor(70s);
    EXPECT_TRUE(network.IsOneLink());
    EXPECT_EQ(network.Seen(0).Connects + network.Seen(1).Connects, connects) << "it stays";
    ExpectNothingLostInSilence(network);
}

class TwoEnds : public testing::TestWithParam<std::tuple<Modes, std::int32_t>> {
protected:
    [[nodiscard]] static std::unique_ptr<LinkNetwork> Network(Milliseconds out, Milliseconds back) {
        const auto& [modes, portType] = GetParam();
        auto network = std::make_unique<LinkNetwork>(Settings(portType, modes.Host, true),
                                                     Settings(portType, modes.Equipment, false));
        network->Delay = {out, back};
        return network;
    }
};

TEST_P(TwoEnds, ComeTogetherWhateverTheDelaysAndWhoeverBegins) {
    const std::array delays{0ms, 1ms, 40ms, 300ms};
    for (const Milliseconds out : delays) {
        for (const Milliseconds back : delays) {
            for (const Milliseconds later : {0ms, 1ms, 39ms, 41ms, 80ms, 121ms, 600ms, 4000ms}) {
                for (const int first : {0, 1}) {
                    SCOPED_TRACE(std::to_string(out.count()) + " ms out, " +
                                 std::to_string(back.count()) + " ms back, end " +
                                 std::to_string(1 - first) + " " + std::to_string(later.count()) +
                                 " ms later");
                    const auto network = Network(out, back);
                    network->Open(first);
                    network->RunFor(later);
                    network->Open(1 - first);
                    ExpectOneLink(*network, 60s);
                    if (HasFatalFailure()) return;
                }
            }
        }
    }
}

/// The connection is lost at each step of getting connected and selected.
TEST_P(TwoEnds, RecoverFromALossAtEachStep) {
    const std::vector<std::array<bool, 2>> views{{true, true}, {true, false}, {false, true}};
    for (const Milliseconds delay : {0ms, 30ms}) {
        for (const auto& seenBy : views) {
            for (int steps = 0; steps < 40; ++steps) {
                SCOPED_TRACE("lost after step " + std::to_string(steps) + ", seen by " +
                             (seenBy[0] ? "host " : "") + (seenBy[1] ? "equipment" : ""));
                const auto network = Network(delay, delay);
                network->Open(0);
                network->Open(1);
                for (int step = 0; step < steps; ++step) {
                    network->Step();
                }
                network->ResetAll(seenBy);
                network->RunFor(100ms);
                // An end that has not seen it finds out by its own timers.
                ExpectOneLink(*network, 120s);
                if (HasFatalFailure()) return;
            }
        }
    }
}

TEST_P(TwoEnds, RecoverFromANetworkThatIsDownForAWhileAtEachStep) {
    for (const Milliseconds down : {900ms, 6'000ms, 40'000ms}) {
        for (int steps = 0; steps < 30; ++steps) {
            SCOPED_TRACE("down for " + std::to_string(down.count()) + " ms after step " +
                         std::to_string(steps));
            const auto network = Network(20ms, 30ms);
            network->Open(0);
            network->Open(1);
            for (int step = 0; step < steps; ++step) {
                network->Step();
            }
            network->Down = true;
            network->RunFor(down);
            network->Restore();
            ExpectOneLink(*network, 120s);
            if (HasFatalFailure()) return;
        }
    }
}

TEST_P(TwoEnds, EitherEndMayCloseAndOpenAgainAtEachStep) {
    for (const int end : {0, 1}) {
        for (int steps = 0; steps < 40; ++steps) {
            SCOPED_TRACE("end " + std::to_string(end) + " after step " + std::to_string(steps));
            const auto network = Network(20ms, 20ms);
            network->Open(0);
            network->Open(1);
            for (int step = 0; step < steps; ++step) {
                network->Step();
            }
            network->Close(end);
            network->Open(end);
            ExpectOneLink(*network, 120s);
            if (HasFatalFailure()) return;
        }
    }
}

// --- crossings -----------------------------------------------------------------------------------

/// Both alternating ends call at once, the equipment `lead` earlier (negative: later).
std::unique_ptr<LinkNetwork> Crossing(Milliseconds delay, Milliseconds lead) {
    auto network = std::make_unique<LinkNetwork>(Settings(4, kAlternating, true),
                                                 Settings(4, kAlternating, false));
    network->Delay = {delay, delay};
    // Both listen before either connects: the first attempts find nobody or wait for their turn.
    const int first = lead > 0ms ? 1 : 0;
    network->Open(first);
    network->RunFor(std::chrono::abs(lead));
    network->Open(1 - first);
    return network;
}

TEST(CrossingEnds, TheHostsConnectionIsKeptWheneverBothAreUnderWay) {
    for (const Milliseconds delay : {1ms, 20ms, 100ms, 200ms}) {
        for (const Milliseconds lead : {0ms, delay / 2, -delay / 2, delay - 1ms, 1ms - delay}) {
            SCOPED_TRACE(std::to_string(delay.count()) + " ms, lead " +
                         std::to_string(lead.count()) + " ms");
            const auto network = Crossing(delay, lead);
            ExpectOneLink(*network, 8 * delay);
            if (HasFatalFailure()) return;
            EXPECT_EQ(network->Opener(0), 0);
            EXPECT_EQ(network->Opener(1), 0);
            EXPECT_GT(
                network->Statistics(0).CrossingsResolved + network->Statistics(1).CrossingsResolved,
                0U);
            for (const int end : {0, 1}) {
                EXPECT_EQ(network->Seen(end).Errors, std::vector<std::string>()) << "end " << end;
                EXPECT_EQ(network->Seen(end).Connects, 1);
            }
        }
    }
}

/// Both set up as host, or both as equipment: a mistake, but none that keeps them apart for good.
TEST(CrossingEnds, TwoOfTheSameRoleComeTogetherByTheirPaces) {
    for (const bool hosts : {true, false}) {
        for (const Milliseconds delay : {0ms, 1ms, 50ms, 300ms}) {
            SCOPED_TRACE(std::to_string(delay.count()) + (hosts ? " ms, hosts" : " ms, equipment"));
            LinkSettings first = Settings(4, kAlternating, true);
            LinkSettings second = Settings(4, kAlternating, false);
            first.HostRole = second.HostRole = hosts;
            LinkNetwork network(first, second);
            network.Delay = {delay, delay};
            network.Open(0);
            network.Open(1);
            ExpectOneLink(network, 200s);
            if (HasFatalFailure()) return;
        }
    }
}

TEST(CrossingEnds, OnALineSlowerThanTheWaitTheyStillComeTogether) {
    for (const Milliseconds delay : {260ms, 400ms, 700ms, 1'500ms}) {
        for (const Milliseconds lead : {0ms, 50ms, -50ms, 300ms, -300ms}) {
            SCOPED_TRACE(std::to_string(delay.count()) + " ms, lead " +
                         std::to_string(lead.count()) + " ms");
            const auto network = Crossing(delay, lead);
            ExpectOneLink(*network, 120s);
            if (HasFatalFailure()) return;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(All,
                         TwoEnds,
                         testing::Combine(testing::ValuesIn(kModes), testing::Values(4, 2)),
                         [](const auto& instance) {
                             return std::string(std::get<0>(instance.param).Name) + "OnPortType" +
                                    std::to_string(std::get<1>(instance.param));
                         });

}  // namespace
}  // namespace hexmire::test
