// Each counter of the statistics counts exactly what its name says: one script a counter.
#include "Steps.h"

namespace hexmire::test {
namespace {

using Lines = std::vector<std::string>;
using Counter = LinkStatistics::Count LinkStatistics::*;

struct Row {
    const char* Name;
    Counter Field;
    bool Host;
    Lines Way;    ///< from a connected line to where the counter is still 0
    Lines Event;  ///< and then 1
};

const std::string kSend = "send S1F1W 000A 00000001";
const std::string kPeers = "S6F11W 800A 00000007 #1E";
const std::string kFirst = "S6F11W 800A 00000007 #1";

const std::vector<Row> kRows{
    {"BlocksReceived",
     &LinkStatistics::BlocksReceived,
     true,
     {"rx ENQ, bad " + kPeers, "advance 300"},
     {"take " + kPeers}},
    {"BlocksSent", &LinkStatistics::BlocksSent, true, {kSend, "rx EOT"}, {"rx ACK"}},
    {"BlocksRetried", &LinkStatistics::BlocksRetried, true, {kSend, "rx EOT"}, {"rx NAK"}},
    {"LineNoise", &LinkStatistics::LineNoise, true, {"rx ENQ, " + kPeers}, {"rx ACK"}},
    {"Yields", &LinkStatistics::Yields, true, {kSend}, {"rx ENQ"}},
    {"ContentionsWon", &LinkStatistics::ContentionsWon, false, {kSend}, {"rx ENQ"}},
    {"NaksReceived",
     &LinkStatistics::NaksReceived,
     true,
     {"rx NAK", kSend, "rx NAK", "rx EOT"},
     {"rx NAK"}},
    {"WrongAnswers",
     &LinkStatistics::WrongAnswers,
     true,
     {kSend, "rx EOT", "rx NAK", "rx EOT"},
     {"rx EOT"}},
    {"BadBlockLengths", &LinkStatistics::BadBlockLengths, true, {"rx ENQ"}, {"rx 09"}},
    {"BadChecksums", &LinkStatistics::BadChecksums, true, {"rx ENQ"}, {"rx bad " + kPeers}},
    {"Babbles", &LinkStatistics::Babbles, false, {"rx ENQ, 00"}, {"fire LineCap"}},
    {"T1Timeouts", &LinkStatistics::T1Timeouts, true, {"rx ENQ, 0A"}, {"advance 300"}},
    {"T2Timeouts", &LinkStatistics::T2Timeouts, true, {"rx ENQ"}, {"advance 500"}},
    {"T2Timeouts", &LinkStatistics::T2Timeouts, true, {kSend}, {"advance 500"}},
    {"T2Timeouts", &LinkStatistics::T2Timeouts, true, {kSend, "rx EOT"}, {"advance 500"}},
    {"WrongDirections",
     &LinkStatistics::WrongDirections,
     true,
     {"take " + kPeers},
     {"take S1F1 000A 00000001 #1E"}},
    {"ForeignDeviceBlocks",
     &LinkStatistics::ForeignDeviceBlocks,
     true,
     {"take " + kPeers},
     {"take S1F1 800B 00000001 #1E"}},
    {"DuplicateBlocks",
     &LinkStatistics::DuplicateBlocks,
     true,
     {"take " + kPeers},
     {"take " + kPeers}},
    {"BlocksOutOfSequence",
     &LinkStatistics::BlocksOutOfSequence,
     true,
     {"take " + kFirst},
     {"take S6F11W 800A 00000007 #3"}},
    {"BlocksWithoutMessage",
     &LinkStatistics::BlocksWithoutMessage,
     true,
     {"take " + kPeers},
     {"take S6F11W 800A 00000007 #3"}},
    {"HeadersChanged",
     &LinkStatistics::HeadersChanged,
     true,
     {"take " + kFirst},
     {"take S6F13W 800A 00000007 #1"}},
    {"InterleavedMessages",
     &LinkStatistics::InterleavedMessages,
     true,
     {"take " + kFirst},
     {"take S6F11W 800A 00000008 #1"}},
    {"MessagesTooLong",
     &LinkStatistics::MessagesTooLong,
     true,
     {"take " + kFirst + " *244"},
     {"take S6F11W 800A 00000007 #2 *244"}},
    {"T4Timeouts",
     &LinkStatistics::T4Timeouts,
     true,
     {"take " + kFirst, "advance 9999"},
     {"advance 1"}},
    {"MessagesGivenUp",
     &LinkStatistics::MessagesGivenUp,
     true,
     {kSend, "advance 500", "advance 500", "advance 500"},
     {"advance 500"}},
    {"HostileBodies",
     &LinkStatistics::HostileBodies,
     true,
     {"take " + kPeers},
     {"take S1F1 800A 00000001 #1E 03FFFFFF"}},
    {"RepliesWithoutTransaction",
     &LinkStatistics::RepliesWithoutTransaction,
     true,
     {kSend, "pass", "take S1F2 800A 00000001 #1E"},
     {"take S1F2 800A 00000002 #1E"}},
    {"EarlyReplies",
     &LinkStatistics::EarlyReplies,
     true,
     {kSend, "rx EOT", "rx NAK", "rx ENQ"},
     {"rx S1F2 800A 00000001 #1E"}},
    {"SystemBytesReplaced",
     &LinkStatistics::SystemBytesReplaced,
     true,
     {"take S6F11W 800A 7FFFFFFF #1E"},
     {"take S6F11W 800A 80000000 #1E"}},
    {"SendsWhileNotSelected",
     &LinkStatistics::SendsWhileNotSelected,
     true,
     {kSend, "fin"},
     {kSend}},
    {"SendsTooLong",
     &LinkStatistics::SendsTooLong,
     true,
     {"send S7F3 000A 00000001 *300"},
     {"send S7F3 000A 00000001 *301"}},
    {"SendsRefusedByQueue", &LinkStatistics::SendsRefusedByQueue, true, {kSend, kSend}, {kSend}},
    {"SendsAborted", &LinkStatistics::SendsAborted, true, {kSend, "pass", kSend}, {"fin"}},
    {"WriteStalls",
     &LinkStatistics::WriteStalls,
     true,
     {"block", kSend, "advance 29999"},
     {"advance 1"}},
    {"ExtraConnections", &LinkStatistics::ExtraConnections, true, {}, {"caller 10.0.0.9"}},
    {"ConnectFailures",
     &LinkStatistics::ConnectFailures,
     true,
     {"fin", "advance 10000"},
     {"connect-failed 111"}},
    {"ConnectTimeouts",
     &LinkStatistics::ConnectTimeouts,
     true,
     {"fin", "advance 10000", "advance 9999"},
     {"advance 1"}},
    {"UnexpectedEvents", &LinkStatistics::UnexpectedEvents, true, {}, {"fire T1"}},
    {"UnexpectedEvents", &LinkStatistics::UnexpectedEvents, true, {"rx ENQ"}, {"fire LineCap"}},
    {"UnexpectedEvents", &LinkStatistics::UnexpectedEvents, true, {}, {"fire T6"}},
    {"UnexpectedEvents", &LinkStatistics::UnexpectedEvents, true, {"fin"}, {"fire T2"}},
};

TEST(Secs1Statistics, EachCounterCountsWhatItsNameSays) {
    for (const Row& row : kRows) {
        LinkSettings settings = Secs1Rig::Settings(3, row.Host);
        settings.SystemBytesCheck = true;
        settings.InterleaveCheck = true;
        settings.MaxMessageBytes = 300;
        settings.MaxQueuedMessages = 2;
        ConnectedRig rig(settings);
        rig.Do(row.Way);
        EXPECT_EQ(rig.Statistics().*row.Field, 0U) << row.Name;
        rig.Do(row.Event);
        EXPECT_EQ(rig.Statistics().*row.Field, 1U) << row.Name;
        EXPECT_EQ(rig.Violation, "") << row.Name;
    }
}

TEST(Secs1Statistics, AnUndisturbedExchangeCountsBlocksAlone) {
    ConnectedRig rig(Secs1Rig::Settings());
    rig.Do(kSend);
    rig.Do("pass");
    rig.Do("take S1F2 800A 00000001 #1E 0100");
    LinkStatistics expected;
    expected.BlocksSent = 1;
    expected.BlocksReceived = 1;
    EXPECT_EQ(rig.Statistics(), expected);
}

TEST(Secs1Statistics, TooManyErrorsAreCountedAndSummedUp) {
    ConnectedRig rig(Secs1Rig::Settings());
    rig.FullTexts = true;
    std::string told;
    for (int block = 0; block < 60; ++block) {
        told += rig.Do("take S1F1 800B " + Hex(static_cast<unsigned>(block), 8) + " #1E");
    }
    EXPECT_EQ(rig.Statistics().ForeignDeviceBlocks, 60U);
    EXPECT_EQ(rig.Statistics().ErrorsLeftOut, 10U);
    EXPECT_EQ(rig.Do("advance 1000"),
              "Error 3020 \"Unknown device or session ID: 10 more left out\"");
}

}  // namespace
}  // namespace hexmire::test
