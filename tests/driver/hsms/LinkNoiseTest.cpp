// Random bytes and damaged sessions: the link may refuse what it likes, but keeps its promises. The
// seeds are fixed, so a failure repeats.
#include "../../fakes/HeapInUse.h"
#include "../../fakes/HsmsRig.h"
#include <gtest/gtest.h>

#include <array>
#include <random>

namespace hexmire::test {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Random = std::mt19937;

std::size_t Below(Random& random, std::size_t limit) {
    return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random);
}

std::uint8_t AnyByte(Random& random) { return static_cast<std::uint8_t>(Below(random, 256)); }

/// One link that goes through many connections, each of them ended by noise; port type and mode
/// from their codes.
class NoisyLink {
public:
    NoisyLink(std::int32_t portType, std::int32_t mode)
        : connects_(mode != 2), rig_(SettingsOf(portType, mode)) {
        rig_.Do("open");
    }

    /// Feeds the bytes to a new connection, in pieces, then makes another one work.
    void Round(const Bytes& bytes, bool selected, Random& random) {
        Connect();
        if (selected) rig_.Do("rx SelectReq FFFF 00000001");
        std::span<const std::uint8_t> rest(bytes);
        while (!rest.empty()) {
            const std::size_t count = 1 + Below(random, rest.size());
            rig_.Feed(rest.first(count));
            rest = rest.subspan(count);
            ASSERT_EQ(rig_.Violation, "");
        }
        Connect();
        rig_.Do("rx SelectReq FFFF 00000001");
        ASSERT_EQ(rig_.Do("rx S1F1W 0005 00000002 0100"), "Received S1F1W 0005 00000002 0100");
        ASSERT_EQ(rig_.Violation, "");
    }

    /// Closes the port, which leaves nothing behind.
    void Close() {
        rig_.Do("close");
        rig_.Do("fire Linger");
        ASSERT_EQ(rig_.State(), "CLOSED");
        rig_.Do("advance 20000");
        ASSERT_EQ(rig_.Timers(), "");
    }

private:
    static LinkSettings SettingsOf(std::int32_t portType, std::int32_t mode) {
        LinkSettings settings = HsmsRig::Settings(portType);
        settings.HSMSConnectionMode = mode;
        return settings;
    }

    void Connect() {
        rig_.Do("reset");
        ASSERT_EQ(rig_.State(), "NOT CONNECTED");
        // T5, then the part of an alternating link's own.
        for (int wait = 0; connects_ && !rig_.Runs(link::TimerId::ConnectTimeout); ++wait) {
            ASSERT_LT(wait, 3);
            rig_.Do(wait == 0 ? "advance 10000" : "advance 5000");
        }
        rig_.Do("connected");
        ASSERT_EQ(rig_.State(), "NOT SELECTED");
    }

    bool connects_;
    HsmsRig rig_;
};

constexpr int kRounds = 5'000;  // of each port type

/// Ten thousand rounds, spread over port types and modes; what the links hold stays bounded.
template <class MakeBytes>
void MakeNoise(std::uint32_t seed, const MakeBytes& make) {
    Random random(seed);
    for (const std::int32_t portType : {4, 2}) {
        std::array<NoisyLink, 3> links{
            NoisyLink(portType, 1), NoisyLink(portType, 2), NoisyLink(portType, 3)};
        std::size_t heapAtFirst = 0;
        for (int round = 0; round < kRounds; ++round) {
            if (round == kRounds / 10) heapAtFirst = fakes::HeapInUse();
            NoisyLink& link = links[static_cast<std::size_t>(round) % links.size()];
            link.Round(make(random, round), Below(random, 4) != 0, random);
            if (testing::Test::HasFatalFailure()) {
                FAIL() << "port type " << portType << ", round " << round;
            }
        }
        constexpr std::size_t kSlack = std::size_t{256} * 1024;
        EXPECT_LT(fakes::HeapInUse(), heapAtFirst + kSlack);
        for (NoisyLink& link : links) {
            link.Close();
        }
    }
}

TEST(HsmsNoise, TenThousandRandomByteStrings) {
    MakeNoise(20'260'101, [](Random& random, int round) {
        Bytes bytes(1 + Below(random, 200));
        for (std::uint8_t& byte : bytes) {
            byte = AnyByte(random);
        }
        // Random lengths are nearly always absurd: some get a plausible one.
        if (bytes.size() >= 4 && round % 2 == 0) {
            bytes[0] = bytes[1] = bytes[2] = 0;
            bytes[3] = static_cast<std::uint8_t>(10 + Below(random, 60));
        }
        return bytes;
    });
}

TEST(HsmsNoise, TenThousandMutatedSessions) {
    const std::vector<std::string> session{"SelectReq FFFF 00000001",
                                           "S1F13W 0005 00000002 0102410141410142",
                                           "LinktestReq FFFF 00000003",
                                           "S6F11W 0005 90000004 0103A5010121010141014101",
                                           "SelectRsp FFFF 38000000",
                                           "RejectReq.4 0005 00000005",
                                           "DeselectReq 0005 00000006",
                                           "SelectReq 0005 00000007",
                                           "SeparateReq FFFF 00000008"};
    Bytes whole;
    for (const std::string& frame : session) {
        const Bytes bytes = FrameBytes(frame);
        whole.insert(whole.end(), bytes.begin(), bytes.end());
    }
    MakeNoise(4'711, [&whole](Random& random, int) {
        Bytes bytes = whole;
        for (std::size_t damage = 1 + Below(random, 6); damage > 0; --damage) {
            const auto at =
                bytes.begin() + static_cast<std::ptrdiff_t>(Below(random, bytes.size()));
            switch (Below(random, 4)) {
                case 0:
                    *at = AnyByte(random);
                    break;
                case 1:
                    *at = static_cast<std::uint8_t>(*at ^ (1U << Below(random, 8)));
                    break;
                case 2:
                    bytes.erase(at);
                    break;
                default:
                    bytes.insert(at, AnyByte(random));
                    break;
            }
        }
        return bytes;
    });
}

TEST(HsmsNoise, RandomEventsInRandomOrder) {
    const std::vector<std::string> lines{"open",
                                         "open",
                                         "close",
                                         "connected",
                                         "connected",
                                         "caller 10.0.0.2",
                                         "caller 10.0.0.9",
                                         "self-connected",
                                         "listening",
                                         "connect-failed 111",
                                         "listen-failed 98",
                                         "accept-failed 24",
                                         "fin",
                                         "reset",
                                         "rx SelectReq FFFF 00000001",
                                         "rx SelectRsp FFFF 38000000",
                                         "rx S1F1W 0005 00000001",
                                         "rx-bytes 0000",
                                         "rx-bytes 00000A",
                                         "rx LinktestReq FFFF 00000001",
                                         "rx SeparateReq FFFF 00000001",
                                         "rx DeselectReq 0005 00000001",
                                         "rx DeselectRsp 0005 38000001",
                                         "rx RejectReq.1 0005 38000000",
                                         "send S1F1W 0005 00000001",
                                         "block",
                                         "unblock",
                                         "advance 1000",
                                         "advance 5000",
                                         "advance 10000",
                                         "advance 31000"};
    Random random(1'234);
    for (int round = 0; round < 1'200; ++round) {
        LinkSettings settings = HsmsRig::Settings(round % 2 == 0 ? 4 : 2);
        settings.HSMSConnectionMode = 1 + round % 3;
        settings.HostRole = round % 7 < 3;
        settings.DeselectOnClose = round % 4 < 2;
        settings.AutoReconnect = round % 5 != 0;
        HsmsRig rig(settings);
        for (int step = 0; step < 60; ++step) {
            const std::string& line = lines[Below(random, lines.size())];
            rig.Do(line);
            ASSERT_EQ(rig.Violation, "") << "round " << round << ", step " << step << ", " << line;
        }
        rig.Do("unblock");
        rig.Do("close");
        rig.Do("fire Linger");
        ASSERT_EQ(rig.State(), "CLOSED");
    }
}

TEST(HsmsNoise, AFourGigabyteLengthClosesAtOnce) {
    LinkSettings settings = HsmsRig::Settings();
    settings.MaxMessageBytes = 0xFFFFFFF0;
    HsmsRig rig(settings);
    rig.Do("open");
    rig.Do("connected");
    EXPECT_EQ(rig.Do("rx-bytes FFFFFFFF"), "Error 3038; close");
}

TEST(HsmsNoise, AMillionNestedListsAreRefusedWithoutHarm) {
    HsmsRig rig(HsmsRig::Settings());
    rig.Do("open");
    rig.Do("connected");
    rig.Do("rx SelectReq FFFF 00000001");
    Bytes frame = FrameBytes("S6F11W 0005 00000002");
    for (int list = 0; list < 1'000'000; ++list) {
        frame.push_back(0x01), frame.push_back(0x01);
    }
    hsms::PutU32(frame.data(), static_cast<std::uint32_t>(frame.size() - 4));
    rig.Take();
    rig.Feed(frame);
    EXPECT_EQ(rig.Take(), "Error 3090");
    EXPECT_EQ(rig.State(), "SELECTED");
}

}  // namespace
}  // namespace hexmire::test
