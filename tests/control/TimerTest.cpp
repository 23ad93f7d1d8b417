#include "Receiving.h"
#include <gtest/gtest.h>

#include <chrono>
#include <stdexcept>
#include <utility>

namespace hexmire {
namespace {

using namespace std::chrono_literals;
using namespace fakes;
using Access = detail::SECSTransAccess;

ErrorEvent Expired(int systemBytes) {
    return {2012,
            "(SECSTrans-Let T3Timer) T3 Timeout encountered. For [SystemBytes-" +
                std::to_string(systemBytes) + "] S1F1",
            0};
}
ErrorEvent Cleared(const std::string& name) {
    return {2015, "(SECSTrans-Let T3Counter) SECSTrans in use cleared. For " + name, 0};
}
const ErrorEvent kNotContained{1079, "(SECSTrans-Delete) The Root item cannot be deleted.", 0};

struct Supervised : Receiving {
    /// A sent S1F1; with a reply timer of that many seconds when it is above 0.
    SECSTransPtr Send(std::int32_t timer = 0) {
        SECSTransPtr trans = Receiving::Send();
        if (timer > 0) {
            Access::T3Start(*trans, true);
            Access::T3Timer(*trans, timer);
        }
        return trans;
    }
};

TEST(Timer, CountsOnceForEachNewSecondOfTheClock) {
    Supervised host;
    const SECSTransPtr trans = host.Send(45);
    host.Container.Tick();
    EXPECT_EQ(Access::T3Timer(*trans), 45);
    host.Clock.Advance(500ms);
    host.Container.Tick();
    EXPECT_EQ(Access::T3Timer(*trans), 45);
    host.Clock.Advance(100ms);
    host.Container.Tick();
    host.Container.Tick();
    EXPECT_EQ(Access::T3Timer(*trans), 44);
    host.Clock.Advance(500ms);
    host.Container.Tick();
    EXPECT_EQ(Access::T3Timer(*trans), 44);
}

TEST(Timer, CountsOneSecondHoweverFarTheClockMoved) {
    Supervised host;
    const SECSTransPtr trans = host.Send(45);
    std::int32_t left = 45;
    for (const auto step : {1h, -2h, 24h}) {
        host.Clock.Advance(step);
        host.Container.Tick();
        if (step != 24h) --left;  // A whole day later it is the same second.
        EXPECT_EQ(Access::T3Timer(*trans), left);
    }
    host.Clock.Advance(7s);
    host.Container.Tick();
    EXPECT_EQ(Access::T3Timer(*trans), left - 1);
    host.Clock.Advance(-1s);
    host.Container.Tick();
    EXPECT_EQ(Access::T3Timer(*trans), left - 2);
}

TEST(Timer, CountsOverMidnight) {
    Supervised host;
    host.Clock.SetTimeOfDay(23h + 59min + 59s);
    host.Container.Tick();
    const SECSTransPtr trans = host.Send(45);
    host.TickSecond();
    host.TickSecond();
    EXPECT_EQ(Access::T3Timer(*trans), 43);
}

TEST(Timer, TakesEitherTheTimerOrTheCounter) {
    Supervised host;
    const SECSTransPtr running = host.Send(45);
    const SECSTransPtr silent = host.Send();
    host.TickSecond();
    EXPECT_EQ(Access::T3Timer(*running), 44);
    EXPECT_EQ(Access::T3Counter(*running), 0);
    EXPECT_EQ(Access::T3Timer(*silent), 45);
    EXPECT_EQ(Access::T3Counter(*silent), 1);
}

TEST(Timer, ExpiresARunningEntryAfterItsReplyTime) {
    Supervised host;
    host.Control().T3Timeout(3);
    const SECSTransPtr trans = host.Send();
    Access::T3Start(*trans, true);
    host.TickSecond();
    host.TickSecond();
    EXPECT_TRUE(host.Raised.empty());
    host.TickSecond();
    EXPECT_EQ(host.Errors, (Errors{Expired(1)}));
    EXPECT_EQ(host.Control().ErrorCode(), 2012);
    EXPECT_EQ(host.Table()->TransCount(), 0);
    host.TickSecond();
    EXPECT_EQ(host.Errors.size(), 1U);
}

TEST(Timer, ClearsASilentEntryAfterFourTimesTheReplyTime) {
    Supervised host;
    host.Control().T3Timeout(2);
    const SECSTransPtr trans = host.Send();
    trans->Name("S1F1");
    for (int second = 0; second < 7; ++second)
        host.TickSecond();
    EXPECT_TRUE(host.Raised.empty());
    host.TickSecond();
    EXPECT_EQ(host.Errors, (Errors{Cleared("S1F1")}));
    EXPECT_EQ(host.Table()->TransCount(), 0);
}

TEST(Timer, FollowsAReplyTimeThatIsShortenedForSilentEntriesOnly) {
    Supervised host;
    const SECSTransPtr running = host.Send(45);
    const SECSTransPtr silent = host.Send();
    for (int second = 0; second < 10; ++second)
        host.TickSecond();
    host.Control().T3Timeout(1);
    host.TickSecond();
    EXPECT_EQ(host.Errors, (Errors{Cleared("")}));
    EXPECT_EQ(Access::T3Timer(*running), 34);
    EXPECT_EQ(Access::Parent(*silent), nullptr);
}

TEST(Timer, ExpiresSeveralInOneTickInTheirOrder) {
    Supervised host;
    const SECSTransPtr stays = host.Send(45);
    host.Send(1);
    host.Send(1);
    const SECSTransPtr staysToo = host.Send(45);
    host.Send(1);
    host.TickSecond();
    EXPECT_EQ(host.Errors, (Errors{Expired(2), Expired(3), Expired(5)}));
    EXPECT_EQ(host.Table()->TransCount(), 2);
    EXPECT_EQ(stays->Index(), 1);
    EXPECT_EQ(staysToo->Index(), 2);
    EXPECT_EQ(Access::T3Timer(*stays), 44);
    EXPECT_EQ(Access::T3Timer(*staysToo), 44);
}

TEST(Timer, DoesNothingWithAnEmptyTable) {
    Supervised host;
    host.TickSecond();
    EXPECT_TRUE(host.Raised.empty());
    EXPECT_EQ(host.LogText(), "");
}

TEST(Timer, WritesNoLogLines) {
    Supervised host;
    host.Send(5);
    const std::size_t before = host.LogLines().size();
    host.TickSecond();
    EXPECT_EQ(host.LogLines().size(), before);
}

TEST(TimerHandler, ThatSendsLeavesTheNewEntryToTheNextTick) {
    Supervised host;
    SECSTransPtr again;
    host.Send(1);
    const SECSTransPtr other = host.Send(9);
    host.OnError([&](std::int32_t) { again = host.Send(45); });
    host.TickSecond();
    EXPECT_EQ(Access::T3Timer(*again), 45);
    EXPECT_EQ(Access::T3Timer(*other), 8);
    EXPECT_EQ(host.Table()->TransCount(), 2);
    EXPECT_EQ(other->Index(), 1);
    EXPECT_EQ(again->Index(), 2);
    host.TickSecond();
    EXPECT_EQ(Access::T3Timer(*again), 44);
}

TEST(TimerHandler, ThatDeletesAnotherEntryKeepsItFromThisTick) {
    Supervised host;
    host.Send(1);
    const SECSTransPtr victim = host.Send(1);
    const SECSTransPtr last = host.Send(9);
    host.OnError([&](std::int32_t) { victim->Delete(); });
    host.TickSecond();
    EXPECT_EQ(host.Errors, (Errors{Expired(1)}));
    EXPECT_EQ(Access::T3Timer(*victim), 1);
    EXPECT_EQ(Access::T3Timer(*last), 8);
    EXPECT_EQ(last->Index(), 1);
}

TEST(TimerHandler, ThatDeletesAnEntryInFrontMakesNobodyWaitOrCountTwice) {
    Supervised host;
    const SECSTransPtr first = host.Send(9);
    host.Send(1);
    const SECSTransPtr third = host.Send(9);
    host.OnError([&](std::int32_t) { first->Delete(); });
    host.TickSecond();
    EXPECT_EQ(Access::T3Timer(*first), 8);
    EXPECT_EQ(Access::T3Timer(*third), 8);
    EXPECT_EQ(host.Table()->TransCount(), 1);
}

TEST(TimerHandler, ThatDeletesTheExpiredEntryGetsTheRefusalToo) {
    Supervised host;
    const SECSTransPtr trans = host.Send(1);
    bool once = true;
    host.OnError([&](std::int32_t) {
        if (std::exchange(once, false)) trans->Delete();
    });
    host.TickSecond();
    EXPECT_EQ(host.Errors, (Errors{Expired(1), kNotContained}));
    EXPECT_EQ(host.Table()->TransCount(), 0);
}

TEST(TimerHandler, FindsTheExpiredEntryStillInTheTable) {
    Supervised host;
    host.Send(1);
    std::int32_t count = -1;
    std::int32_t code = -1;
    host.OnError([&](std::int32_t) {
        count = host.Table()->TransCount();
        code = host.Control().ErrorCode();
    });
    host.TickSecond();
    EXPECT_EQ(count, 1);
    EXPECT_EQ(code, 0);
}

TEST(TimerHandler, ThatSendsTheExpiredOneAgainIsRefused) {
    Supervised host;
    const SECSTransPtr trans = host.Send(1);
    host.OnError([&](std::int32_t code) {
        if (code == 2012) trans->Send();
    });
    host.TickSecond();
    EXPECT_EQ(host.Errors.size(), 2U);
    EXPECT_EQ(host.Errors.at(1).Code, 2009);
    EXPECT_EQ(host.Table()->TransCount(), 0);
    trans->Send();
    EXPECT_EQ(host.Table()->TransCount(), 1);
}

TEST(TimerHandler, ThatThrowsIsReportedAndTheEntryStillLeaves) {
    Supervised host;
    host.Send(1);
    const SECSTransPtr other = host.Send(9);
    bool once = true;
    host.OnError([&](std::int32_t) {
        if (std::exchange(once, false)) throw std::runtime_error("host bug");
    });
    host.TickSecond();
    EXPECT_EQ(host.Errors, (Errors{Expired(1), {440, "(Hexmire-TriggerError) host bug", 0}}));
    EXPECT_EQ(host.Control().ErrorCode(), 440);
    EXPECT_EQ(host.Table()->TransCount(), 1);
    EXPECT_EQ(Access::T3Timer(*other), 8);
}

TEST(TimerHandler, ThatTicksInsideDoesNotCountTwice) {
    Supervised host;
    host.Send(1);
    const SECSTransPtr other = host.Send(9);
    host.OnError([&](std::int32_t) { host.Container.Tick(); });
    host.TickSecond();
    EXPECT_EQ(Access::T3Timer(*other), 8);
}

TEST(TimerHandler, ThatClosesThePortLeavesTheOthersWaiting) {
    Supervised host;
    host.Control().OpenPort();
    host.Send(1);
    host.Send(9);
    host.OnError([&](std::int32_t) { host.Control().ClosePort(); });
    host.TickSecond();
    EXPECT_FALSE(host.Control().PortOpened());
    EXPECT_EQ(host.Table()->TransCount(), 1);
}

}  // namespace
}  // namespace hexmire
