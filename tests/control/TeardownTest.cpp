#include <hexmire/trans/detail/SECSTransAccess.h>

#include "../fakes/Messages.h"
#include "../fakes/TestHost.h"
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace hexmire {
namespace {

using Access = detail::SECSTransAccess;
using fakes::ErrorEvent;
using fakes::Header;
using fakes::TestHost;
using Names = std::vector<std::string>;
using Errors = std::vector<ErrorEvent>;

constexpr const char* kNotSet = "Object variable or With block variable not set";

TEST(Teardown, StopsTheTimerThenClosesAndReleasesTheDriver) {
    TestHost host;
    int stopsBeforeClose = -1;
    host.Driver.OnCall = [&](const std::string& call) {
        if (call == "CloseLink") stopsBeforeClose = host.Container.Stops;
    };
    host.Driver.Calls.clear();
    host.Control().ControlTerminate();
    EXPECT_EQ(host.Container.Unloads, 1);
    EXPECT_EQ(stopsBeforeClose, 1);
    EXPECT_EQ(host.Driver.Calls, (Names{"CloseLink()"}));
    EXPECT_FALSE(host.Driver.Alive);
    EXPECT_FALSE(host.Container.TimerRuns());
    EXPECT_EQ(host.Raised, Names{});
}

TEST(Teardown, ClosesWithoutAskingForTheStatus) {
    TestHost host;
    host.Driver.FailingCall = "LinkStatus";
    host.DestroyControl();
    EXPECT_EQ(host.Driver.Calls.back(), "CloseLink()");
    EXPECT_FALSE(host.Driver.Alive);
    EXPECT_EQ(host.Raised, Names{});
}

TEST(Teardown, RunsWithTheEndOfTheObject) {
    TestHost host;
    host.DestroyControl();
    EXPECT_EQ(host.Container.Unloads, 0);
    EXPECT_EQ(host.Container.Stops, 1);
    EXPECT_EQ(host.Driver.Calls.back(), "CloseLink()");
    EXPECT_FALSE(host.Driver.Alive);
}

TEST(Teardown, RunsOnce) {
    TestHost host;
    host.Driver.Calls.clear();
    host.Control().ControlTerminate();
    host.Control().ControlTerminate();
    host.DestroyControl();
    EXPECT_EQ(host.Driver.Calls, (Names{"CloseLink()"}));
    EXPECT_EQ(host.Container.Stops, 1);
}

TEST(Teardown, EmptiesBothDictionariesThatAHostStillHolds) {
    TestHost host;
    const SECSTransPtr entry = host.AddTemplate("S1F1", 1, 1);
    const SECSTransPtr waiting = host.Control().NewSECSTransaction("S1F1");
    waiting->Send();
    const auto dictionary = host.Control().SECSDictionary();
    const auto table = host.Table();
    host.Control().ControlTerminate();
    EXPECT_EQ(dictionary->TransCount(), 0);
    EXPECT_EQ(table->TransCount(), 0);
    EXPECT_EQ(Access::Parent(*entry), dictionary);
    EXPECT_EQ(Access::Parent(*waiting), table);
    EXPECT_EQ(host.Control().SECSDictionary(), nullptr);
    EXPECT_EQ(host.Table(), nullptr);
}

TEST(Teardown, ReleasesWhatNobodyElseHolds) {
    TestHost host;
    const std::weak_ptr<SECSTrans> entry = host.AddTemplate("S1F1", 1, 1);
    const std::weak_ptr<SECSDictionary> dictionary = host.Control().SECSDictionary();
    SECSTransPtr sent = host.Control().NewSECSTransaction("S1F1");
    sent->Send();
    const std::weak_ptr<SECSTrans> waiting = sent;
    sent.reset();
    EXPECT_FALSE(waiting.expired());
    host.Control().ControlTerminate();
    EXPECT_TRUE(entry.expired());
    EXPECT_TRUE(dictionary.expired());
    EXPECT_TRUE(waiting.expired());
}

TEST(Teardown, GoesOnWhenTheDriverCannotClose) {
    TestHost host;
    host.AddTemplate("S1F1", 1, 1);
    const auto dictionary = host.Control().SECSDictionary();
    host.Driver.FailingCall = "CloseLink";
    host.Control().ControlTerminate();
    ASSERT_EQ(host.Errors.size(), 1U);
    EXPECT_EQ(host.Errors[0].Code, -2147467259);
    EXPECT_EQ(host.Errors[0].Text, "(Hexmire-Class_Terminate) driver failed");
    EXPECT_FALSE(host.Driver.Alive);
    EXPECT_EQ(dictionary->TransCount(), 0);
    EXPECT_EQ(host.Control().SECSDictionary(), nullptr);
}

TEST(Teardown, GoesOnWhenTheErrorHandlerThrows) {
    TestHost host;
    const auto dictionary = host.Control().SECSDictionary();
    host.AddTemplate("S1F1", 1, 1);
    host.Driver.FailingCall = "CloseLink";
    host.Control().Events().Error = [](std::int32_t, const std::string&, std::int32_t) {
        throw Fault(FaultNumber::Overflow);
    };
    EXPECT_NO_THROW(host.DestroyControl());
    EXPECT_FALSE(host.Driver.Alive);
    EXPECT_EQ(dictionary->TransCount(), 0);
}

TEST(Teardown, WaitsForTheContainer) {
    TestHost host;
    host.Container.HoldUnload = true;
    host.Control().ControlTerminate();
    EXPECT_TRUE(host.Driver.Alive);
    host.Control().OpenPort();
    EXPECT_TRUE(host.Control().PortOpened());
    host.Container.Held();
    EXPECT_FALSE(host.Driver.Alive);
    host.Container.Held();
    EXPECT_EQ(host.Container.Stops, 1);
}

TEST(Teardown, CalledLateByTheContainerDoesNothing) {
    TestHost host;
    host.Container.HoldUnload = true;
    host.Control().ControlTerminate();
    host.DestroyControl();
    host.Driver.Calls.clear();
    host.Container.Held();
    EXPECT_EQ(host.Driver.Calls, Names{});
    EXPECT_EQ(host.Container.Stops, 1);
}

TEST(AfterTeardown, OperationsReportAMissingObjectInTheirOwnName) {
    struct Row {
        const char* Routine;
        std::function<void(Hexmire&)> Call;
    };
    const std::vector<Row> rows{
        {"OpenPort", [](Hexmire& control) { control.OpenPort(); }},
        {"ClosePort", [](Hexmire& control) { control.ClosePort(); }},
        {"ControlTerminate", [](Hexmire& control) { control.ControlTerminate(); }},
        {"LoadXMLDictionary", [](Hexmire& control) { control.LoadXMLDictionary(); }},
        {"NewSECSTransaction",
         [](Hexmire& control) { EXPECT_EQ(control.NewSECSTransaction(), nullptr); }},
        {"NewSECSTransaction",
         [](Hexmire& control) { EXPECT_EQ(control.NewSECSTransaction("S1F1"), nullptr); }},
        {"NewSECSTransaction",
         [](Hexmire& control) { EXPECT_EQ(control.NewSECSTransaction(1), nullptr); }},
        {"Get Connected", [](Hexmire& control) { EXPECT_FALSE(control.Connected()); }},
        {"Get PortOpened", [](Hexmire& control) { EXPECT_FALSE(control.PortOpened()); }}};
    for (const Row& row : rows) {
        TestHost host;
        host.Control().ControlTerminate();
        row.Call(host.Control());
        EXPECT_EQ(host.Errors,
                  (Errors{{91, std::string("(Hexmire-") + row.Routine + ") " + kNotSet, 0}}));
        EXPECT_EQ(host.Control().ErrorCode(), 91);
    }
}

TEST(AfterTeardown, DriverEventsAndTicksDoNothing) {
    TestHost host;
    host.Container.HoldUnload = true;
    host.Control().ControlTerminate();
    const auto tick = [&] { host.Container.Tick(); };
    host.Container.Held();
    SECSIServiceEvents& events = host.DriverEvents();
    events.Connect();
    events.Disconnect(1, "x");
    events.Error(2, "x");
    events.SecsMsgSend("");
    events.SecsBlockReceive("");
    events.SecsMsgReceive("", "", 0);
    host.MessageReceived(Header(0, true, 1, 1, 1), {});
    host.Clock.Advance(std::chrono::seconds(1));
    tick();
    EXPECT_EQ(host.Raised, Names{});
    EXPECT_EQ(host.Control().ErrorCode(), 0);
    EXPECT_EQ(host.LogText(), "");
}

TEST(AfterTeardown, SettingsThatWereHeldStillRead) {
    TestHost host;
    host.Control().DeviceID(8);
    host.Control().ControlTerminate();
    EXPECT_EQ(host.Control().DeviceID(), 8);
    EXPECT_EQ(host.Control().CurrentBaud(), 9600);
    EXPECT_EQ(host.Control().Width(), 615);
}

TEST(AfterTeardown, TransactionsOfTheControlSendNothing) {
    TestHost host;
    const SECSTransPtr trans = host.Control().NewSECSTransaction();
    host.Control().ControlTerminate();
    trans->Send();
    trans->Reply();
    EXPECT_EQ(host.Errors,
              (Errors{{91, std::string("(SECSTrans-Send) ") + kNotSet, 0},
                      {91, std::string("(SECSTrans-Reply) ") + kNotSet, 0}}));
    EXPECT_TRUE(host.Driver.Sent.empty());
    EXPECT_FALSE(trans->InProgress());
}

TEST(AfterTheObject, TransactionsItemsAndDictionariesStayUsable) {
    TestHost host;
    const SECSTransPtr entry = host.AddTemplate("S1F1", 1, 1);
    const SECSTransPtr trans = host.Control().NewSECSTransaction("S1F1");
    const auto dictionary = host.Control().SECSDictionary();
    host.DestroyControl();
    host.Raised.clear();
    trans->Send();
    trans->Reply();
    trans->Delete();
    trans->DeviceID(-1);
    trans->Primary()->Stream(200);
    fakes::AddItem(trans->Primary()->Root(), FormatU1, 7);
    trans->Primary()->Root()->Delete();
    EXPECT_EQ(dictionary->AddNewTrans(9), nullptr);
    EXPECT_EQ(dictionary->SECSTrans("none"), nullptr);
    EXPECT_NE(dictionary->AddNewTrans(1), nullptr);
    entry->Delete();
    Access::T3Timer(*trans, 0);
    EXPECT_EQ(host.Raised, Names{});
    EXPECT_TRUE(host.Driver.Sent.empty());
    EXPECT_EQ(trans->Primary()->Root()->ItemCount(), 1);
}

TEST(TerminateInsideAHandler, KeepsTheDriverUntilTheHandlerHasReturned) {
    struct Row {
        const char* Event;
        std::function<void(TestHost&)> Fire;
    };
    const std::vector<Row> rows{
        {"connect", [](TestHost& host) { host.DriverEvents().Connect(); }},
        {"disconnect", [](TestHost& host) { host.DriverEvents().Disconnect(1, "x"); }},
        {"error", [](TestHost& host) { host.DriverEvents().Error(1, "x"); }},
        {"send error", [](TestHost& host) { host.DriverEvents().SecsMsgSend(""); }},
        {"block error", [](TestHost& host) { host.DriverEvents().SecsBlockReceive("zz"); }},
        {"receive error", [](TestHost& host) { host.DriverEvents().SecsMsgReceive("", "", 0); }},
        {"primary", [](TestHost& host) { host.MessageReceived(Header(0, true, 1, 1, 1), {}); }},
        {"unknown primary",
         [](TestHost& host) { host.MessageReceived(Header(0, true, 7, 7, 1), {}); }},
        {"reply", [](TestHost& host) { host.MessageReceived(Header(0, false, 1, 2, 1), {}); }},
        {"unknown reply",
         [](TestHost& host) { host.MessageReceived(Header(0, false, 7, 8, 1), {}); }},
        {"overflowing system bytes",
         [](TestHost& host) { host.MessageReceived(Header(0, false, 1, 2, 0x80000001U), {}); }},
        {"overflow in sent",
         [](TestHost& host) { host.MessageSent(Header(0, true, 1, 1, 0x80000001U)); }},
        {"overflow in block",
         [](TestHost& host) { host.BlockReceived(Header(0, false, 1, 2, 0x80000001U)); }},
        {"undecodable body", [](TestHost& host) {
             host.MessageReceived(Header(0, true, 1, 1, 1), fakes::Bytes("0D 00"));
         }}};
    for (const Row& row : rows) {
        TestHost host;
        host.AddTemplate("S1F1", 1, 1);
        host.AddTemplate("S9F7", 9, 7);
        host.Control().NewSECSTransaction("S1F1")->Send();
        HexmireEvents& events = host.Control().Events();
        int terminated = 0;
        bool aliveInside = false;
        const auto terminate = [&] {
            if (terminated++ > 0) return;
            host.Control().ControlTerminate();
            aliveInside = host.Driver.Alive;
        };
        events.Connect = terminate;
        events.Disconnect = [&](std::int32_t, const std::string&) { terminate(); };
        events.Error = [&](std::int32_t, const std::string&, std::int32_t) { terminate(); };
        events.ReceivedPrimary = [&](const SECSTransPtr&, std::int32_t, const std::string&) {
            terminate();
        };
        events.ReceivedSecondary = events.ReceivedPrimary;
        row.Fire(host);
        EXPECT_GE(terminated, 1) << row.Event;
        EXPECT_TRUE(aliveInside) << row.Event;
        EXPECT_FALSE(host.Driver.Alive) << row.Event;
        EXPECT_FALSE(host.Container.TimerRuns()) << row.Event;
        EXPECT_EQ(host.Control().SECSDictionary(), nullptr) << row.Event;
    }
}

TEST(TerminateInsideAHandler, EndsTheTick) {
    TestHost host;
    for (int count = 0; count < 3; ++count) {
        const SECSTransPtr trans = host.Control().NewSECSTransaction();
        trans->Send();
        Access::T3Start(*trans, true);
        Access::T3Timer(*trans, 1);
    }
    int expired = 0;
    host.Control().Events().Error = [&](std::int32_t code, const std::string&, std::int32_t) {
        if (code == 2012 && ++expired == 1) host.Control().ControlTerminate();
    };
    host.TickSecond();
    EXPECT_EQ(expired, 1);
    EXPECT_EQ(host.Table(), nullptr);
}

TEST(Memory, IsReturnedAfterTenThousandLives) {
    for (int life = 0; life < 10000; ++life) {
        TestHost host(life % 2 == 0);
        host.AddTemplate("S1F1", 1, 1);
        fakes::AddItem(
            host.Control().SECSDictionary()->SECSTrans(1)->Primary()->Root(), FormatU1, 7);
        const SECSTransPtr trans = host.Control().NewSECSTransaction("s1f1");
        trans->Tag(host.Control().NewSECSTransaction());
        trans->Send();
        host.Control().NewSECSTransaction(1)->Send();
        host.MessageReceived(Header(0, true, 1, 1, 9), fakes::Bytes("A5 01 07"));
        ASSERT_EQ(host.Primaries.size(), 1U);
        host.Primaries[0]->Reply();
        host.MessageReceived(Header(0, false, 1, 2, 1), {});
        ASSERT_EQ(host.Table()->TransCount(), 1);
        if (life % 3 == 0) host.Control().ControlTerminate();
    }
}

}  // namespace
}  // namespace hexmire
