// Random bytes and damaged sessions: the line may refuse what it likes, but keeps its promises and
// takes the next good message. The seeds are fixed, so a failure repeats.
#include "../../fakes/HeapInUse.h"
#include "Steps.h"

#include <random>

namespace hexmire::test {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Random = std::mt19937;

std::size_t Below(Random& random, std::size_t limit) {
    return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random);
}

std::uint8_t AnyByte(Random& random) { return static_cast<std::uint8_t>(Below(random, 256)); }

/// A line character as often as any other byte: noise alone never gets far.
std::uint8_t LikelyByte(Random& random) {
    constexpr std::array kLikely{
        secs1::kEnq, secs1::kEot, secs1::kAck, secs1::kNak, std::uint8_t{10}, std::uint8_t{11}};
    return Below(random, 2) == 0 ? kLikely.at(Below(random, kLikely.size())) : AnyByte(random);
}

LinkSettings AnySettings(int round) {
    LinkSettings settings = Secs1Rig::Settings(round % 4 == 0 ? 1 : 3, round % 2 == 0);
    settings.InterleaveCheck = round % 3 == 0;
    settings.DuplicateBlockCheck = round % 5 != 0;
    settings.IgnoreDirection = round % 7 == 0;
    settings.ConnectionRetryLimit = round % 4;
    return settings;
}

/// Pieces of any size, with pauses that let some of the timers expire.
void FeedInPieces(Secs1Rig& rig, const Bytes& bytes, Random& random) {
    std::span<const std::uint8_t> rest(bytes);
    while (!rest.empty()) {
        const std::size_t count = 1 + Below(random, rest.size());
        rig.Feed(rest.first(count));
        rest = rest.subspan(count);
        if (Below(random, 4) == 0) rig.Do("advance " + std::to_string(Below(random, 700)));
        ASSERT_EQ(rig.Violation, "");
    }
}

/// Whatever has happened: when the line has been quiet for a while, a message passes each way.
void ExpectRecovery(Secs1Rig& rig, bool host) {
    rig.Do("advance 60000");
    ASSERT_EQ(rig.State(), "IDLE");
    ASSERT_EQ(rig.Timers(), "");
    const std::string block =
        std::string("S99F1W ") + (host ? "800A" : "000A") + " 0ABCDEF0 #1E 01";
    ASSERT_EQ(rig.Do("take " + block), "tx EOT; tx ACK; Block " + block + "; Received " + block);
    rig.Do("send S99F3W 000A 0ABCDEF1");
    const std::string sent = rig.Do("pass");
    ASSERT_TRUE(sent.ends_with("Sent S99F3W 000A 0ABCDEF1 #1E")) << sent;
    ASSERT_EQ(rig.Violation, "");
}

void Send(Secs1Rig& rig, Random& random) {
    if (Below(random, 2) == 0) rig.Do("send S1F1W 000A 00000001");
    if (Below(random, 2) == 0) rig.Do("send S7F3 000A 00000002 *300");
}

TEST(Secs1Noise, TenThousandRandomByteStrings) {
    Random random(20'260'102);
    for (int round = 0; round < 10'000; ++round) {
        ConnectedRig rig(AnySettings(round));
        Send(rig, random);
        Bytes bytes(1 + Below(random, 120));
        for (std::uint8_t& byte : bytes) {
            byte = round % 2 == 0 ? AnyByte(random) : LikelyByte(random);
        }
        FeedInPieces(rig, bytes, random);
        ExpectRecovery(rig, round % 2 == 0);
        if (HasFatalFailure()) FAIL() << "round " << round;
    }
}

/// A session of the peer, blocks of one message, of several, bad ones, and its line characters.
Bytes Session(bool host) {
    const std::string peer = host ? " 800A " : " 000A ";
    return LineBytes("ENQ, S1F13W" + peer + "00000002 #1E 0102410141410142, ENQ, S6F11W" + peer +
                     "90000004 #1 0103, ENQ, S6F11W" + peer + "90000004 #2 A501, ENQ, S1F1W" +
                     peer + "00000005 #1E, EOT, ACK, ENQ, S6F11W" + peer +
                     "90000004 #3E 010121010141014101, ACK, EOT, ACK, ENQ, S1F2" + peer +
                     "00000001 #1E 0100, NAK, ENQ, S2F3W" + peer +
                     "00000006 #0 01, EOT, ENQ, S2F3W" + peer + "00000006 #1E 00");
}

void Mutate(Bytes& bytes, Random& random) {
    for (std::size_t damage = 1 + Below(random, 6); damage > 0; --damage) {
        const auto at = bytes.begin() + static_cast<std::ptrdiff_t>(Below(random, bytes.size()));
        switch (Below(random, 5)) {
            case 0:
                *at = LikelyByte(random);
                break;
            case 1:
                *at = static_cast<std::uint8_t>(*at ^ (1U << Below(random, 8)));
                break;
            case 2:
                bytes.erase(at);
                break;
            case 3:
                bytes.insert(at, *at);
                break;
            default:
                bytes.insert(at, LikelyByte(random));
                break;
        }
    }
}

TEST(Secs1Noise, TenThousandMutatedSessions) {
    Random random(4'712);
    for (int round = 0; round < 10'000; ++round) {
        const bool host = round % 2 == 0;
        ConnectedRig rig(AnySettings(round));
        Send(rig, random);
        Bytes bytes = Session(host);
        Mutate(bytes, random);
        FeedInPieces(rig, bytes, random);
        ExpectRecovery(rig, host);
        if (HasFatalFailure()) FAIL() << "round " << round;
    }
}

TEST(Secs1Noise, RandomEventsInRandomOrder) {
    const std::vector<std::string> lines{"open",
                                         "close",
                                         "connected",
                                         "connected",
                                         "caller 10.0.0.9",
                                         "connect-failed 111",
                                         "listen-failed 98",
                                         "fin",
                                         "reset",
                                         "rx ENQ",
                                         "rx EOT",
                                         "rx ACK",
                                         "rx NAK",
                                         "rx 0A",
                                         "take S1F1W 800A 00000001 #1E",
                                         "take S1F1W 000A 00000001 #1",
                                         "take S1F1W 000A 00000001 #2E",
                                         "rx bad S1F1W 800A 00000001 #1E",
                                         "pass",
                                         "send S1F1W 000A 00000001",
                                         "send S7F3W 000A 00000002 *300",
                                         "block",
                                         "unblock",
                                         "advance 300",
                                         "advance 500",
                                         "advance 10000",
                                         "advance 31000"};
    Random random(1'235);
    for (int round = 0; round < 500; ++round) {
        LinkSettings settings = AnySettings(round);
        settings.AutoReconnect = round % 5 != 0;
        Secs1Rig rig(settings);
        for (int step = 0; step < 80; ++step) {
            const std::string& line = lines[Below(random, lines.size())];
            rig.Do(line);
            ASSERT_EQ(rig.Violation, "") << "round " << round << ", step " << step << ", " << line;
        }
        rig.Do("unblock");
        rig.Do("close");
        ASSERT_EQ(rig.State(), "CLOSED");
        ASSERT_EQ(rig.Violation, "");
    }
}

TEST(Secs1Noise, AMillionBytesLeaveNothingBehind) {
    Random random(77);
    ConnectedRig rig(Secs1Rig::Settings(1));
    Bytes bytes(4'096);
    const auto feed = [&] {
        for (int read = 0; read < 128; ++read) {
            for (std::uint8_t& byte : bytes) {
                byte = LikelyByte(random);
            }
            rig.Feed(bytes);
            rig.Do("advance " + std::to_string(Below(random, 700)));
        }
        ASSERT_EQ(rig.Violation, "");
    };
    feed();
    const std::size_t before = fakes::HeapInUse();
    feed();
    EXPECT_LT(fakes::HeapInUse(), before + 65'536);
    ExpectRecovery(rig, true);
}

}  // namespace
}  // namespace hexmire::test
