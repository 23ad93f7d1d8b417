#include "Occasions.h"
#include <gtest/gtest.h>

#include <stdexcept>

namespace hexmire {
namespace {

using namespace fakes;
using Access = detail::SECSTransAccess;

/// What follows when the entry that is to leave cannot be deleted any more.
Lines With(Lines lines, const std::string& last) {
    lines.push_back(last);
    return lines;
}

TEST(InsideAHandler, NothingDoneIsTheStatedCourse) {
    for (const Occasion& occasion : Occasions()) {
        Acting host;
        occasion.Fire(host);
        EXPECT_EQ(host.Raised, occasion.Raised) << occasion.Label;
        EXPECT_EQ(host.Control().ErrorCode(), occasion.Code) << occasion.Label;
        EXPECT_EQ(host.Table()->TransCount(), occasion.Leaves ? 0 : 1) << occasion.Label;
        EXPECT_EQ(host.Driver.Sent.size(), 1U) << occasion.Label;
    }
}

TEST(InsideAHandler, ASendIsEnteredBesideTheOthers) {
    for (const Occasion& occasion : Occasions()) {
        Acting host;
        SECSTransPtr sent;
        host.ActInside(occasion.At, [&] { sent = host.Send(2, 41); });
        occasion.Fire(host);
        EXPECT_EQ(host.Raised, occasion.Raised) << occasion.Label;
        EXPECT_EQ(host.Control().ErrorCode(), occasion.Code) << occasion.Label;
        EXPECT_EQ(host.Driver.Sent.size(), 2U) << occasion.Label;
        ASSERT_EQ(host.Table()->TransCount(), occasion.Leaves ? 1 : 2) << occasion.Label;
        EXPECT_EQ(sent->Index(), host.Table()->TransCount()) << occasion.Label;
        EXPECT_EQ(sent->SystemBytes(), 2) << occasion.Label;
    }
}

TEST(InsideAHandler, AReplyGoesOut) {
    for (const Occasion& occasion : Occasions()) {
        Acting host;
        host.ActInside(occasion.At, [&] { host.Control().NewSECSTransaction("S1F1")->Reply(); });
        occasion.Fire(host);
        EXPECT_EQ(host.Raised, occasion.Raised) << occasion.Label;
        ASSERT_EQ(host.Driver.Sent.size(), 2U) << occasion.Label;
        EXPECT_EQ(HexOf(host.Driver.Sent[1].Header), "00 00 01 02 00 00 00 00 00 00");
        EXPECT_EQ(host.Table()->TransCount(), occasion.Leaves ? 0 : 1) << occasion.Label;
    }
}

TEST(InsideAHandler, ADeleteOfTheEntryThatIsAboutToLeaveIsToldOnce) {
    const std::string refused = "Error(1079,(SECSTrans-Delete) The Root item cannot be deleted.,0)";
    for (const Occasion& occasion : Occasions()) {
        Acting host;
        host.ActInside(occasion.At, [&] { host.Waiting->Delete(); });
        occasion.Fire(host);
        EXPECT_EQ(host.Raised, occasion.Leaves ? With(occasion.Raised, refused) : occasion.Raised)
            << occasion.Label;
        EXPECT_EQ(host.Control().ErrorCode(), occasion.Leaves ? 1079 : occasion.Code);
        EXPECT_EQ(host.Table()->TransCount(), 0) << occasion.Label;
    }
}

TEST(InsideAHandler, TheClosingOfThePortLeavesTheTable) {
    for (const Occasion& occasion : Occasions()) {
        Acting host;
        host.ActInside(occasion.At, [&] { host.Control().ClosePort(); });
        occasion.Fire(host);
        EXPECT_EQ(host.Raised, occasion.Raised) << occasion.Label;
        EXPECT_EQ(host.Control().ErrorCode(), occasion.Code) << occasion.Label;
        EXPECT_EQ(host.Driver.Calls.back(), "CloseLink()") << occasion.Label;
        EXPECT_FALSE(host.Control().PortOpened()) << occasion.Label;
        EXPECT_EQ(host.Table()->TransCount(), occasion.Leaves ? 0 : 1) << occasion.Label;
    }
}

TEST(InsideAHandler, TheLoadingOfADictionaryAppends) {
    for (const Occasion& occasion : Occasions()) {
        Acting host;
        host.ActInside(occasion.At, [&] { host.Control().LoadXMLDictionary(); });
        occasion.Fire(host);
        EXPECT_EQ(host.Raised, occasion.Raised) << occasion.Label;
        ASSERT_EQ(host.Control().SECSDictionary()->TransCount(), 3) << occasion.Label;
        EXPECT_EQ(host.Control().SECSDictionary()->SECSTrans(3)->Name(), "S5F1");
        EXPECT_EQ(host.Control().ErrorCode(), occasion.Code) << occasion.Label;
    }
}

// The tear-down empties the table, but an entry still names it: its own way out then faults.
TEST(InsideAHandler, TheEndOfTheControlComesToEffectBehindIt) {
    for (const Occasion& occasion : Occasions()) {
        Acting host;
        const std::weak_ptr<SECSDictionary> dictionary = host.Control().SECSDictionary();
        const std::weak_ptr<SECSDictionary> table = host.Table();
        int livesInside = 0;
        host.ActInside(occasion.At, [&] {
            host.Control().ControlTerminate();
            livesInside = (host.Driver.Alive ? 1 : 0) + (dictionary.expired() ? 0 : 2) +
                          (table.expired() ? 0 : 4) + (host.Waiting->Index() == 1 ? 8 : 0);
        });
        occasion.Fire(host);
        EXPECT_EQ(livesInside, 15) << occasion.Label;
        EXPECT_EQ(host.Raised,
                  occasion.Leaves ? With(occasion.Raised,
                                         "Error(9,(SECSTrans-Delete) Subscript out of range,0)")
                                  : occasion.Raised)
            << occasion.Label;
        EXPECT_EQ(host.Control().ErrorCode(), occasion.Leaves ? 9 : occasion.Code);
        EXPECT_FALSE(host.Driver.Alive) << occasion.Label;
        EXPECT_TRUE(dictionary.expired()) << occasion.Label;
        EXPECT_TRUE(table.expired()) << occasion.Label;
        EXPECT_EQ(host.Waiting->Index(), 0) << occasion.Label;
    }
}

TEST(InsideAHandler, AThrowEndsTheRoutineThatRaised) {
    for (const Occasion& occasion : Occasions()) {
        Acting host;
        host.ActInside(occasion.At, [] { throw std::runtime_error("host bug"); });
        occasion.Fire(host);
        Lines expected(occasion.Raised.begin(),
                       occasion.Raised.begin() + static_cast<std::ptrdiff_t>(occasion.At));
        expected.push_back(std::string("Error(440,(Hexmire-") + occasion.Teller + ") host bug,0)");
        EXPECT_EQ(host.Raised, expected) << occasion.Label;
        EXPECT_EQ(host.Control().ErrorCode(), 440) << occasion.Label;
        // Only what the entry reports by itself goes on.
        const bool gone = occasion.Leaves && std::string(occasion.Teller) == "TriggerError";
        EXPECT_EQ(host.Table()->TransCount(), gone ? 0 : 1) << occasion.Label;
        EXPECT_EQ(Access::T3Start(*host.Waiting), occasion.Code == 6 || occasion.Code == 2012);
    }
}

TEST(InsideAHandler, AnErrorOfItsOwnIsFollowedByTheOuterCode) {
    for (const Occasion& occasion : Occasions()) {
        Acting host;
        std::vector<std::int32_t> codes;
        host.ActInside(occasion.At, [&] {
            codes.push_back(host.Control().ErrorCode());
            host.Control().T3Timeout(0);
            codes.push_back(host.Control().ErrorCode());
        });
        occasion.Fire(host);
        EXPECT_EQ(codes, (std::vector<std::int32_t>{0, 1051})) << occasion.Label;
        EXPECT_EQ(host.Control().ErrorCode(), occasion.Code == 0 ? 1051 : occasion.Code)
            << occasion.Label;
    }
}

}  // namespace
}  // namespace hexmire
