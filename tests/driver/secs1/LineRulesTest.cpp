// How often a block is tried, who gives way, and what pieces bytes may come in (SEMI E4, block
// transfer protocol).
#include "Steps.h"

namespace hexmire::test {
namespace {

using namespace std::chrono_literals;

const std::string kSend = "send S1F1W 000A 00000001";
const std::string kBlock = "tx S1F1W 000A 00000001 #1E";
const std::string kSent = "Sent S1F1W 000A 00000001 #1E";
const std::string kPeers = "S6F11W 800A 00000007 #1E 01";
const std::string kTaken = "tx ACK; Block " + kPeers + "; Received " + kPeers;

struct RetryRow {
    std::int32_t Limit;         ///< RTY
    std::int32_t TimeOutRetry;  ///< beyond it, for time-outs
    /// What fails: E no EOT, A no ACK, N NAK, B another byte instead of ACK, L a yield without
    /// length byte, P a yield whose block breaks off, C one whose block is damaged, G one whose
    /// block comes through.
    std::string Failures;
    bool GivenUp;  ///< after the last of them; never before
};

class RetryRig {
public:
    explicit RetryRig(const RetryRow& row) : rig_(Settings(row)) {}

    /// One attempt that fails; true when the block is tried again.
    bool Fail(char how) {
        std::string done;
        switch (how) {
            case 'E':
                done = rig_.Do("advance 500");
                break;
            case 'A':
                rig_.Do("rx EOT");
                done = rig_.Do("advance 500");
                break;
            case 'N':
                rig_.Do("rx EOT");
                done = rig_.Do("rx NAK");
                break;
            case 'B':
                rig_.Do("rx EOT");
                done = rig_.Do("rx 00");
                break;
            case 'L':
                rig_.Do("rx ENQ");
                done = rig_.Do("advance 500");
                break;
            case 'P':
                rig_.Do("rx ENQ, 0A");
                done = rig_.Do("advance 300");
                break;
            case 'C':
                rig_.Do("rx ENQ, bad " + kPeers);
                done = rig_.Do("advance 300");
                break;
            default:
                done = rig_.Do("rx ENQ, " + kPeers);
                break;
        }
        const bool givenUp = done.find("Error 3010") != std::string::npos;
        EXPECT_EQ(done.ends_with("tx ENQ"), !givenUp) << done;
        EXPECT_EQ(rig_.State(), givenUp ? "IDLE" : "TX_EOT");
        return !givenUp;
    }
    Secs1Rig& Rig() { return rig_; }

private:
    static LinkSettings Settings(const RetryRow& row) {
        LinkSettings settings = Secs1Rig::Settings();
        settings.ConnectionRetryLimit = row.Limit;
        settings.TimeOutRetry = row.TimeOutRetry;
        return settings;
    }
    ConnectedRig rig_;
};

const std::vector<RetryRow> kRetryRows{
    {0, 0, "E", true},
    {0, 0, "A", true},
    {0, 0, "N", true},
    {0, 0, "B", true},
    {0, 0, "L", true},
    {0, 0, "P", true},
    {0, 0, "C", true},
    {0, 0, "GGGGG", false},
    {0, 0, "GE", true},
    {1, 0, "EE", true},
    {1, 0, "NA", true},
    {3, 0, "NNN", false},
    {3, 0, "NNNN", true},
    {3, 0, "EANB", true},
    {3, 0, "LPCE", true},
    {3, 0, "EEEGEEE", false},
    {3, 0, "EEEGEEEE", true},
    {3, 0, "LLLGLLLL", true},
    {31, 0, std::string(31, 'E'), false},
    {31, 0, std::string(32, 'E'), true},
    // A time-out has attempts of its own.
    {1, 2, "EEE", false},
    {1, 2, "EEEE", true},
    {1, 2, "EAEA", true},
    {1, 2, "NN", true},
    {1, 2, "NEE", false},
    {1, 2, "NEEE", true},
    {1, 2, "EN", true},
    {1, 2, "EEB", true},
    {1, 2, "EL", true},
    {0, 3, "EEE", false},
    {0, 3, "EEEE", true},
    {0, 3, "N", true},
};

TEST(Secs1Retries, HowOftenABlockIsTried) {
    for (const RetryRow& row : kRetryRows) {
        SCOPED_TRACE("RTY " + std::to_string(row.Limit) + "+" + std::to_string(row.TimeOutRetry) +
                     " " + row.Failures);
        RetryRig tried(row);
        EXPECT_EQ(tried.Rig().Do(kSend), "tx ENQ");
        for (std::size_t index = 0; index < row.Failures.size(); ++index) {
            const bool again = tried.Fail(row.Failures[index]);
            const bool last = index + 1 == row.Failures.size();
            ASSERT_EQ(again, !(last && row.GivenUp)) << "failure " << index + 1;
        }
        // Given up or not, the next message goes through.
        if (!row.GivenUp) {
            EXPECT_EQ(tried.Rig().Do("pass"), kBlock + "; " + kSent);
        }
        tried.Rig().Do("send S1F3W 000A 00000002");
        EXPECT_EQ(tried.Rig().Do("pass"),
                  "tx S1F3W 000A 00000002 #1E; Sent S1F3W 000A 00000002 #1E");
        EXPECT_EQ(tried.Rig().Violation, "");
    }
}

TEST(Secs1Retries, EachBlockHasItsOwn) {
    ConnectedRig rig(Secs1Rig::Settings());
    rig.Do("send S7F3W 000A 00000001 *245");
    for (int block = 1; block <= 2; ++block) {
        for (int failure = 0; failure < 3; ++failure) {
            EXPECT_EQ(rig.Do("advance 500"), "tx ENQ");
        }
        rig.Do("pass");
    }
    EXPECT_EQ(rig.State(), "IDLE");
    EXPECT_EQ(rig.Statistics().BlocksSent, 2U);
    EXPECT_EQ(rig.Statistics().BlocksRetried, 6U);
}

TEST(Secs1Retries, TheWholeMessageIsGivenUpAndTheNextOneStarts) {
    LinkSettings settings = Secs1Rig::Settings();
    settings.ConnectionRetryLimit = 0;
    ConnectedRig rig(settings);
    rig.FullTexts = true;
    rig.Do("send S7F3W 000A 00000001 *500");
    rig.Do("send S1F1W 000A 00000002");
    ExpectSteps(rig,
                {{"rx EOT", "tx S7F3W 000A 00000001 #1 *244"},
                 {"rx ACK", "tx ENQ"},
                 {"advance 500",
                  "Error 3010 \"Retry limit exceeded, message not sent: block 2 of 3 "
                  "hdr=000A8703800300000001\"; tx ENQ"},
                 {"pass", "tx S1F1W 000A 00000002 #1E; Sent S1F1W 000A 00000002 #1E"}});
    EXPECT_EQ(rig.Statistics().MessagesGivenUp, 1U);
}

TEST(Secs1Retries, ANewLimitCountsFromTheNextFailure) {
    LinkSettings settings = Secs1Rig::Settings();
    ConnectedRig rig(settings);
    rig.Do(kSend);
    EXPECT_EQ(rig.Do("advance 500"), "tx ENQ");
    settings.ConnectionRetryLimit = 1;
    rig.Configure(settings);
    EXPECT_EQ(rig.Do("advance 500"), "Error 3010");
}

TEST(Secs1Retries, AreToldOnlyWhenSomebodyTraces) {
    LinkSettings settings = Secs1Rig::Settings();
    settings.ConnectionRetryLimit = 1;
    for (const bool trace : {false, true}) {
        settings.Trace = trace;
        ConnectedRig rig(settings);
        rig.FullTexts = true;
        const auto told = [trace](const std::string& error, const std::string& rest) {
            return trace ? error + "; " + rest : rest;
        };
        const std::string lost =
            "Error 3010 \"Retry limit exceeded, message not sent: block 1 of 1 "
            "hdr=000A8101800100000001\"";
        ExpectSteps(rig,
                    {{kSend, "tx ENQ"},
                     {"advance 500", told("Error 3002 \"T2 time-out: no EOT\"", "tx ENQ")},
                     {"rx EOT", kBlock},
                     {"advance 500", told("Error 3002 \"T2 time-out: no ACK\"", lost)},
                     {kSend, "tx ENQ"},
                     {"rx EOT", kBlock},
                     {"rx NAK", told("Error 3011 \"No ACK after block: byte 21\"", "tx ENQ")},
                     {"rx EOT", kBlock},
                     {"rx 07", told("Error 3011 \"No ACK after block: byte 7\"", lost)},
                     {"rx ENQ", "tx EOT"},
                     {"advance 500", "tx NAK; Error 3002 \"T2 time-out: no length byte\""}});
    }
}

TEST(Secs1Contention, TheHostGivesWayAndSendsItsBlockAfterwards) {
    ConnectedRig rig(Secs1Rig::Settings());
    rig.Do("send S7F3W 000A 00000001 *245");
    rig.Do("pass");
    ExpectSteps(rig,
                {{"rx ENQ", "tx EOT"},
                 {"rx " + kPeers, kTaken + "; tx ENQ"},
                 {"rx EOT", "tx S7F3W 000A 00000001 #2E 44"},
                 {"rx ACK", "Sent S7F3W 000A 00000001 #2E *245"}});
    EXPECT_EQ(rig.Statistics().Yields, 1U);
    EXPECT_EQ(rig.Statistics().BlocksRetried, 0U);
}

TEST(Secs1Contention, TheEquipmentNeverGivesWay) {
    ConnectedRig rig(Secs1Rig::Settings(3, false));
    rig.Do("send S1F1W 000A 00000001");
    ExpectSteps(rig,
                {{"advance 499", ""},
                 {"rx ENQ", ""},
                 {"advance 1", "tx ENQ"},
                 {"rx ENQ, ENQ", ""},
                 {"rx EOT", "tx S1F1W 800A 00000001 #1E"}});
    EXPECT_EQ(rig.Statistics().ContentionsWon, 3U);
    EXPECT_EQ(rig.Statistics().Yields, 0U);
}

TEST(Secs1Contention, ARoleThatChangesCountsAtTheNextOne) {
    LinkSettings settings = Secs1Rig::Settings(3, false);
    ConnectedRig rig(settings);
    rig.Do("send S1F1W 000A 00000001");
    settings.HostRole = true;
    rig.Configure(settings);
    EXPECT_EQ(rig.Do("rx ENQ"), "tx EOT");
}

TEST(Secs1Segments, TokensThatShareARead) {
    ConnectedRig rig(Secs1Rig::Settings());
    const std::string other = "S6F13W 800A 00000008 #1E 02";
    ExpectSteps(rig,
                {{"rx ENQ, " + kPeers, "tx EOT; " + kTaken},
                 {"rx ENQ, " + other + ", ENQ",
                  "tx EOT; tx ACK; Block " + other + "; Received " + other + "; tx EOT"},
                 {"rx " + kPeers, kTaken},
                 {kSend, "tx ENQ"},
                 {"send S7F3 000A 00000002 *245", ""},
                 {"rx EOT", kBlock},
                 // What the peer wants comes before what we have.
                 {"rx ACK, ENQ, " + other,
                  kSent + "; tx EOT; tx ACK; Block " + other + "; Received " + other + "; tx ENQ"},
                 {"rx EOT", "tx S7F3 000A 00000002 #1 *244"},
                 {"rx ACK, ENQ", "tx EOT"},
                 {"rx " + kPeers, kTaken + "; tx ENQ"},
                 {"rx EOT", "tx S7F3 000A 00000002 #2E 44"},
                 {"rx ACK, ACK, NAK", "Sent S7F3 000A 00000002 #2E *245"}});
}

TEST(Secs1Segments, NothingThatCameBeforeTheBlockAnswersIt) {
    ConnectedRig rig(Secs1Rig::Settings());
    rig.Do(kSend);
    ExpectSteps(rig,
                {{"rx EOT, ACK, ENQ, EOT", kBlock}, {"advance 500", "tx ENQ"}, {"rx ACK", ""}});
    EXPECT_EQ(rig.Statistics().LineNoise, 4U) << "three behind the EOT, one late ACK";
}

TEST(Secs1Segments, NothingThatCameBeforeTheEnqAnswersIt) {
    ConnectedRig rig(Secs1Rig::Settings());
    rig.Do(kSend);
    ExpectSteps(
        rig,
        {{"rx EOT", kBlock}, {"rx NAK, EOT", "tx ENQ"}, {"rx EOT", kBlock}, {"rx ACK", kSent}});
}

TEST(Secs1Segments, GarbageDoesNotExtendTheWaitForEot) {
    ConnectedRig rig(Secs1Rig::Settings());
    rig.Do(kSend);
    ExpectSteps(rig,
                {{"advance 400", ""},
                 {"rx NAK, ACK, 00, FF", ""},
                 {"advance 99", ""},
                 {"advance 1", "tx ENQ"}});
}

TEST(Secs1Segments, ByteByByteIsTheSameAsWhole) {
    ConnectedRig rig(Secs1Rig::Settings());
    const auto feed = [&](const std::string& tokens) {
        rig.Take();
        const auto bytes = LineBytes(tokens);
        for (const std::uint8_t byte : bytes) {
            rig.Feed({&byte, 1});
        }
        EXPECT_EQ(rig.Violation, "");
        return rig.Take();
    };
    const std::string longest = "S6F11W 800A 00000009 #1E *244";
    EXPECT_EQ(feed("ENQ, " + longest),
              "tx EOT; tx ACK; Block " + longest + "; Received " + longest);
    EXPECT_EQ(rig.Do(kSend), "tx ENQ");
    EXPECT_EQ(feed("EOT, ACK, ENQ"), kBlock + "; " + kSent + "; tx EOT");
    EXPECT_EQ(feed(kPeers), kTaken);
}

TEST(Secs1Segments, LineCharactersInsideABlockAreData) {
    ConnectedRig rig(Secs1Rig::Settings());
    const std::string block = "S6F11W 800A 05040615 #1E 0504061505040615";
    ExpectSteps(rig, {Complete(block, block)});
}

}  // namespace
}  // namespace hexmire::test
