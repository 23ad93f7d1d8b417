#include <hexmire/trans/detail/SECSTransAccess.h>

#include "ReadyHost.h"
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace hexmire {
namespace {

using namespace fakes;
using Access = detail::SECSTransAccess;

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
    EXPECT_EQ(host.Control().ErrorCode(), 0);
}

TEST(Teardown, ReleasesTheDriverBeforeItEmptiesTheTableAndThenTheDocument) {
    // A tag of the host's tells when its transaction goes.
    struct Document : IXMLDocument {
        explicit Document(Names& order) : Order(order) {}
        Document(const Document&) = delete;
        Document& operator=(const Document&) = delete;
        ~Document() override { Order.emplace_back("document"); }
        bool Load(const std::string&) override { return true; }
        [[nodiscard]] std::int32_t ParseErrorCode() const override { return 0; }
        [[nodiscard]] std::shared_ptr<const IXMLNode> DocumentElement() const override {
            return nullptr;
        }
        Names& Order;
    };
    TestHost host;
    Names order;
    const auto tag = [&](const std::string& name) {
        return std::shared_ptr<int>(new int(0), [&host, &order, name](const int* value) {
            order.push_back(name + (host.Driver.Alive ? " with driver" : ""));
            delete value;
        });
    };
    Platform platform = host.MakePlatform();
    platform.NewXMLDocument = [&] { return std::make_unique<Document>(order); };
    Hexmire control(platform);
    control.SECSDictionary()->AddNewTrans(1)->Tag(tag("template"));
    SECSTransPtr sent = control.NewSECSTransaction();
    sent->Tag(tag("waiting"));
    sent->Send();
    sent.reset();  // The last reference is the table's.
    control.ControlTerminate();
    EXPECT_EQ(order, (Names{"template", "waiting", "document"}));
}

TEST(Teardown, FindsNoDictionaryWhenATemplateThatGoesCallsTheControl) {
    TestHost host;
    const auto loads = [&host](const int* value) {
        host.Control().LoadXMLDictionary();
        EXPECT_EQ(host.Control().NewSECSTransaction(1), nullptr);
        delete value;
    };
    host.Control().SECSDictionary()->AddNewTrans(1)->Tag(std::shared_ptr<int>(new int(0), loads));
    host.Control().ControlTerminate();
    EXPECT_EQ(host.Errors, (Errors{NotSetIn("LoadXMLDictionary"), NotSetIn("NewSECSTransaction")}));
    EXPECT_TRUE(host.XML.Loaded.empty());
}

TEST(Teardown, GoesOnWhenTheTimerCannotBeStopped) {
    TestHost host;
    host.Container.OnCall = [](const std::string& call) {
        if (call == "StopTimer") throw Fault(FaultNumber::Overflow);
    };
    host.Control().ControlTerminate();
    EXPECT_EQ(host.Errors, (Errors{{6, "(Hexmire-Class_Terminate) Overflow", 0}}));
    EXPECT_EQ(host.Driver.Calls.back(), "CloseLink()");
    EXPECT_FALSE(host.Driver.Alive);
    EXPECT_EQ(host.Control().SECSDictionary(), nullptr);
}

TEST(Teardown, ThatTheContainerRefusesLeavesTheControlAtWork) {
    TestHost host;
    host.Container.OnCall = [](const std::string& call) {
        if (call == "Unload") throw Fault(FaultNumber::Overflow);
    };
    host.Control().ControlTerminate();
    EXPECT_EQ(host.Errors, (Errors{{6, "(Hexmire-ControlTerminate) Overflow", 0}}));
    EXPECT_TRUE(host.Driver.Alive);
    host.Control().OpenPort();
    EXPECT_TRUE(host.Control().PortOpened());
}

TEST(Teardown, ReportsNoTransactionThatStillWaits) {
    TestHost host;
    const auto table = host.Table();
    std::vector<SECSTransPtr> waiting;
    for (int count = 0; count < 3; ++count) {
        waiting.push_back(host.Control().NewSECSTransaction());
        waiting.back()->Send();
        Access::T3Start(*waiting.back(), true);
    }
    host.Control().ControlTerminate();
    EXPECT_EQ(host.Raised, Names{});
    for (const SECSTransPtr& trans : waiting) {
        EXPECT_TRUE(trans->InProgress());
        EXPECT_EQ(Access::T3Timer(*trans), 45);
    }
    EXPECT_EQ(waiting[2]->Index(), 3);
}

TEST(Teardown, IsOverWhenTheHandlerOfItsErrorCallsTheControl) {
    TestHost host;
    const auto record = host.Control().Events().Error;
    host.Control().Events().Error =
        [&](std::int32_t code, const std::string& text, std::int32_t line) {
            record(code, text, line);
            if (host.Errors.size() == 1) {
                host.Control().OpenPort();
                host.Control().ControlTerminate();
                host.Control().DeviceID(3);
            }
        };
    host.Driver.FailingCall = "CloseLink";
    host.Driver.Calls.clear();
    host.Control().ControlTerminate();
    EXPECT_EQ(host.Driver.Calls, (Names{"CloseLink()"}));
    EXPECT_EQ(host.Errors,
              (Errors{DriverFailedIn("Class_Terminate"),
                      NotSetIn("OpenPort"),
                      NotSetIn("ControlTerminate"),
                      NotSetIn("Let DeviceID")}));
    EXPECT_EQ(host.Container.Stops, 1);
    EXPECT_EQ(host.Control().ErrorCode(), -2147467259);
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

}  // namespace
}  // namespace hexmire
