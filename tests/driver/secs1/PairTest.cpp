// Host and equipment on one line, in simulated time: messages both ways at once, undisturbed and
// with each byte of the traffic going wrong in turn (SEMI E4).
#include "../../fakes/LinePair.h"
#include "../../fakes/Secs1Rig.h"
#include <gtest/gtest.h>

#include <algorithm>

namespace hexmire::test {
namespace {

using std::chrono::milliseconds;
using Message = LinePair::Message;
using Record = LinePair::Record;

struct Medium {
    const char* Name;
    std::int32_t PortType;
    bool Interleave;
    bool OneByOne;
};

LinkSettings SettingsOf(const Medium& medium) {
    LinkSettings settings = Secs1Rig::Settings(medium.PortType);
    settings.InterleaveCheck = medium.Interleave;
    return settings;
}

/// Single blocks and two blocks, answered and unanswered, from both ends at the same moment.
void SendBothWays(LinePair& pair) {
    pair.Send(true, "S1F1W 000A 00000001");
    pair.Send(false, "S5F1 000A 00000002 0101");
    pair.Send(true, "S2F33 000A 00000003 *246");
    pair.Send(false, "S6F11W 000A 90000004 *250");
}

std::string NameOf(const Message& message) {
    return "S" + std::to_string(message.Header.Stream) + "F" +
           std::to_string(message.Header.Function);
}

bool IsSame(const Message& one, const Message& other) {
    return NameOf(one) == NameOf(other) && one.Header.WBit == other.Header.WBit &&
           one.Body == other.Body;
}

std::size_t CountIn(const std::vector<Message>& messages, const Message& message) {
    return static_cast<std::size_t>(
        std::count_if(messages.begin(), messages.end(), [&](const Message& one) {
            return IsSame(one, message);
        }));
}

/// True when one of the errors names the message in its header.
bool IsToldLost(const Record& record, const Message& message) {
    const std::string stream = Hex((message.Header.WBit ? 0x80U : 0U) | message.Header.Stream, 2);
    const std::string name = stream + Hex(message.Header.Function, 2);
    return std::any_of(record.Errors.begin(), record.Errors.end(), [&](const std::string& error) {
        const std::size_t at = error.find("hdr=");
        return at != std::string::npos && error.substr(at + 8, 4) == name;
    });
}

/// What is wrong with the traffic from one end to the other; empty when nothing is.
std::string FaultsOf(const Record& from, const Record& to) {
    std::string faults;
    for (const Message& message : from.Offered) {
        const std::size_t count = CountIn(to.Received, message);
        const bool told = IsToldLost(from, message) || IsToldLost(to, message);
        if (count > 1) faults += NameOf(message) + " doubled; ";
        if (count == 0 && !told) faults += NameOf(message) + " lost in silence; ";
        if (CountIn(from.Sent, message) == 0 && !told) faults += NameOf(message) + " not told; ";
    }
    for (const Message& message : to.Received) {
        if (CountIn(from.Offered, message) == 0) faults += NameOf(message) + " never sent; ";
    }
    return faults;
}

std::string FaultsOf(const LinePair& pair) {
    return FaultsOf(pair.Host(), pair.Equipment()) + FaultsOf(pair.Equipment(), pair.Host());
}

/// Everything is quiet: now a message each way must pass.
std::string AfterwardsFaultsOf(LinePair& pair) {
    const std::size_t errors = pair.Host().Errors.size() + pair.Equipment().Errors.size();
    pair.Send(true, "S1F65W 000A 00000101 01");
    if (!pair.Run()) return "never quiet afterwards; ";
    pair.Send(false, "S1F67W 000A 00000102 02");
    if (!pair.Run()) return "never quiet afterwards; ";
    std::string faults = FaultsOf(pair);
    if (pair.Host().Errors.size() + pair.Equipment().Errors.size() != errors) {
        faults += "errors afterwards; ";
    }
    if (pair.Host().Received.back().Header.Function != 67) faults += "no S1F67; ";
    if (pair.Equipment().Received.back().Header.Function != 68) faults += "no S1F68; ";
    return faults;
}

class Secs1Pair : public testing::TestWithParam<Medium> {};

TEST_P(Secs1Pair, MessagesBothWaysAtOnceArriveOnceAndInOrder) {
    LinePair pair(SettingsOf(GetParam()));
    SendBothWays(pair);
    ASSERT_TRUE(pair.Run());
    EXPECT_EQ(FaultsOf(pair), "");
    EXPECT_EQ(pair.Host().Errors, std::vector<std::string>{});
    EXPECT_EQ(pair.Equipment().Errors, std::vector<std::string>{});
    std::string host;
    for (const Message& message : pair.Host().Received) {
        host += NameOf(message) + " ";
    }
    EXPECT_EQ(host, "S5F1 S6F11 S1F2 ");
    EXPECT_GT(pair.HostCounts().Yields, 0U);
    EXPECT_EQ(pair.HostCounts().Yields, pair.EquipmentCounts().ContentionsWon);
    EXPECT_EQ(AfterwardsFaultsOf(pair), "");
}

/// One byte goes wrong in one way, whichever byte it is.
void ExpectNothingLost(const Medium& medium, LinePair::Fault fault, const std::string& name) {
    LinePair undisturbed(SettingsOf(medium));
    SendBothWays(undisturbed);
    ASSERT_TRUE(undisturbed.Run());
    LinkStatistics::Count retried = 0;
    for (fault.Byte = 0; fault.Byte < undisturbed.Bytes(); ++fault.Byte) {
        LinePair pair(SettingsOf(medium), fault);
        pair.OneByOne = medium.OneByOne;
        SendBothWays(pair);
        ASSERT_TRUE(pair.Run()) << name << " byte " << fault.Byte;
        ASSERT_EQ(FaultsOf(pair), "") << name << " byte " << fault.Byte;
        ASSERT_EQ(AfterwardsFaultsOf(pair), "") << name << " byte " << fault.Byte;
        retried += pair.HostCounts().BlocksRetried + pair.EquipmentCounts().BlocksRetried;
    }
    EXPECT_GT(retried, undisturbed.Bytes() / 2) << name << ": most bytes cost an attempt";
}

TEST_P(Secs1Pair, EachByteLost) {
    ExpectNothingLost(GetParam(), {.What = LinePair::Damage::Lost}, "lost");
}

TEST_P(Secs1Pair, EachByteDoubled) {
    ExpectNothingLost(GetParam(), {.What = LinePair::Damage::Doubled}, "doubled");
}

TEST_P(Secs1Pair, EachByteChanged) {
    // Also such that one line character becomes another.
    for (const unsigned mask : {0x01U, 0x03U, 0xFFU}) {
        ExpectNothingLost(
            GetParam(),
            {.What = LinePair::Damage::Changed, .Mask = static_cast<std::uint8_t>(mask)},
            "changed with mask " + Hex(mask, 2));
    }
}

TEST_P(Secs1Pair, EachByteLate) {
    const LinkSettings settings = SettingsOf(GetParam());
    for (const milliseconds delay :
         {settings.T1 + milliseconds(100), settings.T2 + milliseconds(100), 3 * settings.T2}) {
        ExpectNothingLost(GetParam(),
                          {.What = LinePair::Damage::Late, .Delay = delay},
                          "late by " + std::to_string(delay.count()));
    }
}

INSTANTIATE_TEST_SUITE_P(Media,
                         Secs1Pair,
                         testing::Values(Medium{"Serial", 1, false, false},
                                         Medium{"TcpWithInterleaveCheck", 3, true, false}),
                         [](const auto& one) { return std::string(one.param.Name); });

TEST(Secs1LineOneByOne, EachByteLost) {
    ExpectNothingLost({"Serial", 1, false, true}, {.What = LinePair::Damage::Lost}, "lost");
}

TEST(Secs1LongMessage, TheLongestMessageHas32767Blocks) {
    LinePair pair(Secs1Rig::Settings(3));
    pair.Echo = false;
    const auto body = PatternBytes(secs1::kMaxBodyBytes);
    pair.Send(true, ParseBlock("S7F3 000A 00000001").Header, body);
    ASSERT_TRUE(pair.Run());
    ASSERT_EQ(pair.Equipment().Received.size(), 1U);
    const Message& received = pair.Equipment().Received.front();
    EXPECT_TRUE(received.Body == body);
    EXPECT_EQ(received.Header.Number, 32'767);
    EXPECT_TRUE(received.Header.IsLast);
    EXPECT_EQ(pair.HostCounts().BlocksSent, 32'767U);
    EXPECT_EQ(pair.Host().Sent.size(), 1U);
    EXPECT_EQ(pair.Host().Sent.front().Header.Number, 32'767);
}

TEST(Secs1LongMessage, TakesHardlyLongerThanItsBytes) {
    const LinkSettings settings = Secs1Rig::Settings(1);
    LinePair pair(settings);
    const auto body = PatternBytes(100'000);
    pair.Send(false, ParseBlock("S6F11 000A 00000001").Header, body);
    ASSERT_TRUE(pair.Run());
    ASSERT_EQ(pair.Host().Received.size(), 1U);
    const std::size_t blocks = 410;
    const std::size_t least = body.size() + blocks * (3 + 1 + 10 + 2);
    EXPECT_EQ(pair.Bytes(), least);
    const std::chrono::duration<double> limit(static_cast<double>(least) * 10 / settings.BaudRate);
    EXPECT_LE(pair.Elapsed(), limit * 1.02);
    EXPECT_GE(pair.Elapsed(), limit * 0.99) << "faster than the line";
}

}  // namespace
}  // namespace hexmire::test
