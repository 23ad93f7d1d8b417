#include <hexmire/trans/detail/SECSTransAccess.h>

#include "../fakes/Messages.h"
#include "ReadyHost.h"
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace hexmire {
namespace {

using namespace fakes;
constexpr const char* kNotSet = "Object variable or With block variable not set";
using Access = detail::SECSTransAccess;

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
        EXPECT_EQ(host.Errors, (Errors{NotSetIn(row.Routine)}));
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
    AddItem(trans->Primary()->Root(), FormatU1, 7);
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
        {"undecodable body",
         [](TestHost& host) { host.MessageReceived(Header(0, true, 1, 1, 1), Bytes("0D 00")); }}};
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
        AddItem(host.Control().SECSDictionary()->SECSTrans(1)->Primary()->Root(), FormatU1, 7);
        const SECSTransPtr trans = host.Control().NewSECSTransaction("s1f1");
        trans->Tag(host.Control().NewSECSTransaction());
        trans->Send();
        host.Control().NewSECSTransaction(1)->Send();
        host.MessageReceived(Header(0, true, 1, 1, 9), Bytes("A5 01 07"));
        ASSERT_EQ(host.Primaries.size(), 1U);
        host.Primaries[0]->Reply();
        host.MessageReceived(Header(0, false, 1, 2, 1), {});
        ASSERT_EQ(host.Table()->TransCount(), 1);
        if (life % 3 == 0) host.Control().ControlTerminate();
    }
}

TEST(AfterTeardown, ATickThatWasOnItsWayDoesNothing) {
    struct LateContainer : RecordingContainer {
        void StartTimer(std::chrono::milliseconds period, std::function<void()> tick) override {
            OnItsWay = tick;
            RecordingContainer::StartTimer(period, std::move(tick));
        }
        std::function<void()> OnItsWay;
    };
    TestHost host;
    LateContainer container;
    const Platform given = host.MakePlatform();
    Hexmire control(Platform{.NewDriver = given.NewDriver,
                             .NewXMLDocument = given.NewXMLDocument,
                             .Container = container,
                             .Files = host.Files,
                             .Clock = host.Clock,
                             .ApplicationFolder = "C:\\App"});
    int errors = 0;
    control.Events().Error = [&](std::int32_t, const std::string&, std::int32_t) { ++errors; };
    control.ControlTerminate();
    host.Clock.Advance(std::chrono::seconds(1));
    container.OnItsWay();
    EXPECT_EQ(errors, 0);
    EXPECT_EQ(control.ErrorCode(), 0);
}

}  // namespace
}  // namespace hexmire
