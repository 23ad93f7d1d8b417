#include "ReadyHost.h"
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace hexmire {
namespace {

using namespace fakes;

const Errors kOpenAlready{
    {1090, "(Hexmire-OpenPort) An attempt was made to open a port that is already open.", 0}};
const Errors kNotOpen{
    {1089, "(Hexmire-ClosePort) An attempt was made to close a port that is not open.", 0}};

const Names kOpening = DefaultPushesAnd({"OpenLink()"});

TEST(OpenPort, PushesEverySettingInItsOrderAndOpens) {
    ReadyHost host;
    host.Control().OpenPort();
    EXPECT_EQ(host.Driver.Calls, kOpening);
    EXPECT_EQ(host.Driver.StatusReads, 1);
    EXPECT_EQ(host.Raised, Names{});
    EXPECT_EQ(host.Control().ErrorCode(), 0);
    EXPECT_EQ(host.Container.Changed, Names{});
    EXPECT_TRUE(host.XML.Loaded.empty());
    EXPECT_EQ(host.Files.Appends, 0);
}

TEST(OpenPort, PushesWhatWasSet) {
    ReadyHost host;
    Hexmire& control = host.Control();
    control.ConnectionPortType(4);
    control.ConnectionHost(false);
    control.TimeOutRetry(32767);
    control.RemoteIPAddress("10.1.2.3");
    control.ConnectionRetryLimit(31);
    host.Driver.Calls.clear();
    control.OpenPort();
    EXPECT_EQ(host.Driver.Calls.at(1), "HostRole(False)");
    EXPECT_EQ(host.Driver.Calls.at(2), "PortType(4)");
    EXPECT_EQ(host.Driver.Calls.at(3), "ConnectionRetryLimit(31)");
    EXPECT_EQ(host.Driver.Calls.at(11), "RemoteIPAddress(10.1.2.3)");
    EXPECT_EQ(host.Driver.Calls.at(23), "TimeOutRetry(32767)");
}

TEST(OpenPort, IsRefusedWhileThePortIsOpen) {
    ReadyHost host;
    host.Control().OpenPort();
    host.Driver.Calls.clear();
    host.Driver.StatusReads = 0;
    host.Control().OpenPort();
    EXPECT_EQ(host.Errors, kOpenAlready);
    EXPECT_EQ(host.Control().ErrorCode(), 1090);
    EXPECT_EQ(host.Driver.Calls, Names{});
    EXPECT_EQ(host.Driver.StatusReads, 1);
    EXPECT_TRUE(host.Control().PortOpened());
}

TEST(OpenPort, IsRefusedAgainInsideTheHandlerOfItsRefusal) {
    ReadyHost host;
    host.Control().OpenPort();
    const auto record = host.Control().Events().Error;
    std::vector<std::int32_t> during;
    host.Control().Events().Error =
        [&](std::int32_t code, const std::string& text, std::int32_t line) {
            during.push_back(host.Control().ErrorCode());
            record(code, text, line);
            if (host.Errors.size() < 3) host.Control().OpenPort();
        };
    host.Control().OpenPort();
    EXPECT_EQ(host.Errors, (Errors{kOpenAlready[0], kOpenAlready[0], kOpenAlready[0]}));
    EXPECT_EQ(during, (std::vector<std::int32_t>{0, 0, 0}));
    EXPECT_EQ(host.Control().ErrorCode(), 1090);
}

TEST(OpenPort, AsksForTheStatusBeforeItPushesAndNotAgain) {
    ReadyHost host;
    int askedBefore = -1;
    host.Driver.OnCall = [&](const std::string& call) {
        if (call == "BaudRate") askedBefore = host.Driver.StatusReads;
        host.Driver.Status = true;
    };
    host.Control().OpenPort();
    EXPECT_EQ(askedBefore, 1);
    EXPECT_EQ(host.Driver.StatusReads, 1);
    EXPECT_EQ(host.Driver.Calls.back(), "OpenLink()");
}

TEST(OpenPort, PushesWhatWasSetWhileItPushes) {
    ReadyHost host;
    bool once = true;
    host.Driver.OnCall = [&](const std::string& call) {
        if (call == "T1" && std::exchange(once, false)) host.Control().T8Timeout(9);
    };
    host.Control().OpenPort();
    Names expected = kOpening;
    expected.insert(expected.begin() + 16, "T8(9)");
    expected.at(23) = "T8(9)";
    EXPECT_EQ(host.Driver.Calls, expected);
}

TEST(OpenPort, MayBeLeftByTheHandlerThatTerminatesTheControl) {
    // The driver cannot tell its status; the handler of that error ends the control.
    ReadyHost host;
    const auto record = host.Control().Events().Error;
    host.Control().Events().Error =
        [&](std::int32_t code, const std::string& text, std::int32_t line) {
            record(code, text, line);
            if (host.Errors.size() == 1) host.Control().ControlTerminate();
        };
    host.Driver.FailingCall = "LinkStatus";
    host.Control().OpenPort();
    EXPECT_EQ(host.Errors, (Errors{DriverFailedIn("Get PortOpened"), NotSetIn("OpenPort")}));
    EXPECT_EQ(host.Driver.Calls, (Names{"CloseLink()"}));
}

TEST(OpenPort, ReportsAHandlerThatThrowsInItsOwnName) {
    ReadyHost host;
    host.Driver.Status = true;
    const auto record = host.Control().Events().Error;
    host.Control().Events().Error =
        [&](std::int32_t code, const std::string& text, std::int32_t line) {
            record(code, text, line);
            if (code == 1090) throw Fault(FaultNumber::DivisionByZero);
        };
    host.Control().OpenPort();
    EXPECT_EQ(host.Errors,
              (Errors{kOpenAlready[0], {11, "(Hexmire-OpenPort) Division by zero", 0}}));
    EXPECT_EQ(host.Control().ErrorCode(), 11);
}

TEST(OpenPort, StopsAtThePushThatFaults) {
    for (std::size_t failing = 0; failing < kOpening.size(); ++failing) {
        ReadyHost host;
        host.Driver.FailingCall = MemberOf(kOpening[failing]);
        host.Control().OpenPort();
        EXPECT_EQ(host.Driver.Calls, FirstOf(kOpening, failing + 1));
        EXPECT_EQ(host.Errors, (Errors{DriverFailedIn("OpenPort")}));
        EXPECT_EQ(host.Control().ErrorCode(), -2147467259);
        EXPECT_FALSE(host.Control().PortOpened());
    }
}

TEST(OpenPort, StopsAtATimeOutRetryBeyondSixteenBits) {
    ReadyHost host;
    for (const std::int32_t retries : {32768, 65536, 86400}) {
        host.Control().TimeOutRetry(retries);
        host.Driver.Calls.clear();
        host.Errors.clear();
        host.Control().OpenPort();
        EXPECT_EQ(host.Errors, (Errors{{6, "(Hexmire-OpenPort) Overflow", 0}}));
        EXPECT_EQ(host.Driver.Calls, FirstOf(kOpening, 23));
        EXPECT_FALSE(host.Control().PortOpened());
    }
    host.Control().TimeOutRetry(1);
    host.Control().OpenPort();
    EXPECT_EQ(host.Driver.Calls.back(), "OpenLink()");
}

TEST(OpenPort, GoesOnWhenTheDriverCannotTellItsStatus) {
    // The status property reports in its own name and reads False.
    ReadyHost host;
    host.Driver.FailingCall = "LinkStatus";
    host.Control().OpenPort();
    EXPECT_EQ(host.Errors, (Errors{DriverFailedIn("Get PortOpened")}));
    EXPECT_EQ(host.Control().ErrorCode(), -2147467259);
    EXPECT_EQ(host.Driver.Calls, kOpening);
}

TEST(OpenPort, MayBeRetriedFromTheErrorHandlerOnce) {
    ReadyHost host;
    host.Driver.FailingCall = "OpenLink";
    host.Control().Events().Error = [&](std::int32_t, const std::string&, std::int32_t) {
        host.Driver.FailingCall = "";
        host.Control().OpenPort();
    };
    host.Control().OpenPort();
    EXPECT_TRUE(host.Control().PortOpened());
    EXPECT_EQ(host.Driver.Calls.size(), 2 * kOpening.size());
}

TEST(ClosePort, AsksTheDriverToClose) {
    ReadyHost host;
    host.Control().OpenPort();
    host.Driver.Calls.clear();
    host.Driver.StatusReads = 0;
    host.Control().ClosePort();
    EXPECT_EQ(host.Driver.Calls, (Names{"CloseLink()"}));
    EXPECT_EQ(host.Driver.StatusReads, 1);
    EXPECT_EQ(host.Raised, Names{});
    EXPECT_EQ(host.Control().ErrorCode(), 0);
}

TEST(ClosePort, IsRefusedOnAClosedPort) {
    ReadyHost host;
    host.Control().ClosePort();
    EXPECT_EQ(host.Errors, kNotOpen);
    EXPECT_EQ(host.Control().ErrorCode(), 1089);
    EXPECT_EQ(host.Driver.Calls, Names{});
    host.Control().OpenPort();
    host.Control().ClosePort();
    host.Control().ClosePort();
    EXPECT_EQ(host.Errors.size(), 2U);
}

TEST(ClosePort, ReportsADriverThatFaults) {
    ReadyHost host;
    host.Control().OpenPort();
    host.Driver.FailingCall = "CloseLink";
    host.Control().ClosePort();
    EXPECT_EQ(host.Errors, (Errors{DriverFailedIn("ClosePort")}));
    EXPECT_TRUE(host.Control().PortOpened());
}

TEST(ClosePort, IsRefusedWhenTheDriverCannotTellItsStatus) {
    ReadyHost host;
    host.Control().OpenPort();
    host.Driver.FailingCall = "LinkStatus";
    host.Control().ClosePort();
    EXPECT_EQ(host.Errors, (Errors{DriverFailedIn("Get PortOpened"), kNotOpen[0]}));
    EXPECT_EQ(host.Driver.Calls.back(), "OpenLink()");
    EXPECT_EQ(host.Control().ErrorCode(), 1089);
}

TEST(ClosePort, LeavesTransactionsWaiting) {
    ReadyHost host;
    host.Control().OpenPort();
    host.Control().NewSECSTransaction()->Send();
    host.Control().ClosePort();
    EXPECT_EQ(host.Table()->TransCount(), 1);
}

TEST(ClosePort, GoesByTheDriversStatusAlone) {
    // The link has ended by itself, or was opened by nobody.
    ReadyHost host;
    host.Control().OpenPort();
    host.Driver.Status = false;
    host.Driver.Calls.clear();
    host.Control().ClosePort();
    EXPECT_EQ(host.Errors, kNotOpen);
    EXPECT_EQ(host.Driver.Calls, Names{});
    host.Driver.Status = true;
    host.Control().ClosePort();
    EXPECT_EQ(host.Driver.Calls, (Names{"CloseLink()"}));
}

TEST(ClosePort, MayOpenThePortInsideTheHandlerOfItsRefusal) {
    ReadyHost host;
    host.Control().Events().Error = [&](std::int32_t, const std::string&, std::int32_t) {
        host.Control().OpenPort();
    };
    host.Control().ClosePort();
    EXPECT_EQ(host.Driver.Calls, kOpening);
    EXPECT_EQ(host.Control().ErrorCode(), 1089);
}

}  // namespace
}  // namespace hexmire
