#include "../fakes/TestHost.h"
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace hexmire {
namespace {

using fakes::ErrorEvent;
using fakes::TestHost;
using Names = std::vector<std::string>;
using Errors = std::vector<ErrorEvent>;

const Errors kOpenAlready{
    {1090, "(Hexmire-OpenPort) An attempt was made to open a port that is already open.", 0}};
const Errors kNotOpen{
    {1089, "(Hexmire-ClosePort) An attempt was made to close a port that is not open.", 0}};

const Names kOpening{"BaudRate(9600)",
                     "HostRole(True)",
                     "PortType(1)",
                     "ConnectionRetryLimit(3)",
                     "DeviceID(0)",
                     "DuplicateBlockCheck(True)",
                     "HSMSConnectionMode(1)",
                     "InterleaveCheck(False)",
                     "LocalIPAddress(0.0.0.0)",
                     "LocalIPPort(5000)",
                     "Trace(False)",
                     "RemoteIPAddress(255.255.255.100)",
                     "RemoteIPPort(5000)",
                     "SerialPort(COM1)",
                     "SystemBytesCheck(False)",
                     "T1(0.3)",
                     "T2(0.5)",
                     "T3(45)",
                     "T4(10)",
                     "T5(10)",
                     "T6(5)",
                     "T7(10)",
                     "T8(5)",
                     "TimeOutRetry(0)",
                     "OpenLink()"};

struct Ready : TestHost {
    Ready() { Driver.Calls.clear(); }
};

TEST(OpenPort, PushesEverySettingInItsOrderAndOpens) {
    Ready host;
    host.Control().OpenPort();
    EXPECT_EQ(host.Driver.Calls, kOpening);
    EXPECT_EQ(host.Raised, Names{});
    EXPECT_EQ(host.Container.Changed, Names{});
    EXPECT_TRUE(host.XML.Loaded.empty());
    EXPECT_EQ(host.Files.Appends, 0);
}

TEST(OpenPort, PushesWhatWasSet) {
    Ready host;
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
    Ready host;
    host.Control().OpenPort();
    host.Driver.Calls.clear();
    host.Control().OpenPort();
    EXPECT_EQ(host.Errors, kOpenAlready);
    EXPECT_EQ(host.Control().ErrorCode(), 1090);
    EXPECT_EQ(host.Driver.Calls, Names{});
}

TEST(OpenPort, StopsAtThePushThatFaults) {
    for (std::size_t failing = 0; failing < kOpening.size(); ++failing) {
        Ready host;
        host.Driver.FailingCall = kOpening[failing].substr(0, kOpening[failing].find('('));
        host.Control().OpenPort();
        EXPECT_EQ(
            host.Driver.Calls,
            Names(kOpening.begin(), kOpening.begin() + static_cast<std::ptrdiff_t>(failing) + 1));
        EXPECT_EQ(host.Errors, (Errors{{-2147467259, "(Hexmire-OpenPort) driver failed", 0}}));
        EXPECT_EQ(host.Control().ErrorCode(), -2147467259);
        EXPECT_FALSE(host.Control().PortOpened());
    }
}

TEST(OpenPort, StopsAtATimeOutRetryBeyondSixteenBits) {
    Ready host;
    host.Control().TimeOutRetry(86400);
    host.Driver.Calls.clear();
    host.Errors.clear();
    host.Control().OpenPort();
    EXPECT_EQ(host.Errors, (Errors{{6, "(Hexmire-OpenPort) Overflow", 0}}));
    EXPECT_EQ(host.Driver.Calls, Names(kOpening.begin(), kOpening.end() - 2));
    host.Control().TimeOutRetry(1);
    host.Control().OpenPort();
    EXPECT_EQ(host.Driver.Calls.back(), "OpenLink()");
}

TEST(OpenPort, GoesOnWhenTheDriverCannotTellItsStatus) {
    // The status property reports in its own name and reads False.
    Ready host;
    host.Driver.FailingCall = "LinkStatus";
    host.Control().OpenPort();
    EXPECT_EQ(host.Errors, (Errors{{-2147467259, "(Hexmire-Get PortOpened) driver failed", 0}}));
    EXPECT_EQ(host.Driver.Calls, kOpening);
}

TEST(OpenPort, MayBeRetriedFromTheErrorHandlerOnce) {
    Ready host;
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
    Ready host;
    host.Control().OpenPort();
    host.Driver.Calls.clear();
    host.Control().ClosePort();
    EXPECT_EQ(host.Driver.Calls, (Names{"CloseLink()"}));
    EXPECT_EQ(host.Raised, Names{});
}

TEST(ClosePort, IsRefusedOnAClosedPort) {
    Ready host;
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
    Ready host;
    host.Control().OpenPort();
    host.Driver.FailingCall = "CloseLink";
    host.Control().ClosePort();
    EXPECT_EQ(host.Errors, (Errors{{-2147467259, "(Hexmire-ClosePort) driver failed", 0}}));
    EXPECT_TRUE(host.Control().PortOpened());
}

TEST(ClosePort, IsRefusedWhenTheDriverCannotTellItsStatus) {
    Ready host;
    host.Control().OpenPort();
    host.Driver.FailingCall = "LinkStatus";
    host.Control().ClosePort();
    EXPECT_EQ(host.Errors,
              (Errors{{-2147467259, "(Hexmire-Get PortOpened) driver failed", 0}, kNotOpen[0]}));
}

TEST(ClosePort, LeavesTransactionsWaiting) {
    Ready host;
    host.Control().OpenPort();
    host.Control().NewSECSTransaction()->Send();
    host.Control().ClosePort();
    EXPECT_EQ(host.Table()->TransCount(), 1);
}

TEST(DriverConnect, IsRaisedAsConnect) {
    Ready host;
    host.DriverEvents().Connect();
    EXPECT_EQ(host.Raised, (Names{"Connect"}));
    EXPECT_EQ(host.Control().ErrorCode(), 0);
}

TEST(DriverDisconnect, IsRaisedWithItsValuesAndStoresTheCode) {
    Ready host;
    std::vector<std::int32_t> during;
    host.Control().Events().Disconnect = [&](std::int32_t code, const std::string& text) {
        during.push_back(host.Control().ErrorCode());
        host.Raised.push_back(std::to_string(code) + text);
    };
    host.DriverEvents().Disconnect(10054, "reset by peer");
    EXPECT_EQ(host.Control().ErrorCode(), 10054);
    host.DriverEvents().Disconnect(0, "");
    EXPECT_EQ(host.Control().ErrorCode(), 0);
    EXPECT_EQ(host.Raised, (Names{"10054reset by peer", "0"}));
    EXPECT_EQ(during, (std::vector<std::int32_t>{0, 10054}));
}

TEST(DriverError, IsRaisedUnchangedWithoutPrefix) {
    Ready host;
    std::vector<std::int32_t> during;
    const auto record = host.Control().Events().Error;
    host.Control().Events().Error =
        [&](std::int32_t code, const std::string& text, std::int32_t n) {
            during.push_back(host.Control().ErrorCode());
            record(code, text, n);
        };
    host.DriverEvents().Error(-5, "line noise");
    host.DriverEvents().Error(0, "");
    EXPECT_EQ(host.Errors, (Errors{{-5, "line noise", 0}, {0, "", 0}}));
    EXPECT_EQ(during, (std::vector<std::int32_t>{0, -5}));
    EXPECT_EQ(host.Control().ErrorCode(), 0);
}

TEST(DriverEvents, GoNowhereWithoutHandlersButStoreTheCode) {
    Ready host;
    host.Control().Events() = HexmireEvents();
    host.DriverEvents().Connect();
    host.DriverEvents().Disconnect(3, "x");
    EXPECT_EQ(host.Control().ErrorCode(), 3);
    host.DriverEvents().Error(4, "x");
    EXPECT_EQ(host.Control().ErrorCode(), 4);
}

TEST(DriverEvents, ReportAHandlerThatThrows) {
    Ready host;
    host.Control().Events().Connect = [] { throw std::runtime_error("host bug"); };
    host.Control().Events().Disconnect = [](std::int32_t, const std::string&) {
        throw Fault(FaultNumber::DivisionByZero);
    };
    EXPECT_NO_THROW(host.DriverEvents().Connect());
    EXPECT_EQ(host.Control().ErrorCode(), 440);
    EXPECT_NO_THROW(host.DriverEvents().Disconnect(3, "x"));
    EXPECT_EQ(host.Errors,
              (Errors{{440, "(Hexmire-moSECSIService_Connect) host bug", 0},
                      {11, "(Hexmire-moSECSIService_Disconnect) Division by zero", 0}}));
    EXPECT_EQ(host.Control().ErrorCode(), 11);
}

TEST(DriverEvents, SurviveAnErrorHandlerThatAlwaysThrows) {
    Ready host;
    host.Control().Events().Error = [](std::int32_t, const std::string&, std::int32_t) {
        throw std::runtime_error("host bug");
    };
    EXPECT_NO_THROW(host.DriverEvents().Error(4, "x"));
    EXPECT_NO_THROW(host.Control().DeviceID(-1));
    EXPECT_NO_THROW(host.Control().ClosePort());
    EXPECT_NO_THROW(host.Control().NewSECSTransaction()->Delete());
    host.Control().Events().Error = nullptr;
    host.Control().DeviceID(-1);
    EXPECT_EQ(host.Control().ErrorCode(), 1047);
}

TEST(DriverEvents, MayCloseAndReopenThePort) {
    Ready host;
    host.Control().Events().Connect = [&] { host.Control().ClosePort(); };
    host.Control().Events().Disconnect = [&](std::int32_t, const std::string&) {
        host.Control().OpenPort();
    };
    host.Control().OpenPort();
    host.DriverEvents().Connect();
    EXPECT_FALSE(host.Control().PortOpened());
    host.DriverEvents().Disconnect(0, "");
    EXPECT_TRUE(host.Control().PortOpened());
    EXPECT_EQ(host.Raised, Names{});
}

TEST(DriverEvents, MayReplaceTheirHandlerWhileItRuns) {
    Ready host;
    int first = 0;
    int second = 0;
    host.Control().Events().Connect = [&] {
        host.Control().Events().Connect = [&] { ++second; };
        ++first;
    };
    host.DriverEvents().Connect();
    host.DriverEvents().Connect();
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 1);
}

TEST(ByteMonitor, IsNeverRaised) {
    Ready host;
    int raised = 0;
    host.Control().Events().ByteMonitor =
        [&](bool, std::int32_t, const Variant&, const std::string&) { ++raised; };
    host.Control().TraceEnabled(true);
    host.Control().OpenPort();
    host.DriverEvents().Connect();
    host.Control().NewSECSTransaction()->Send();
    host.MessageSent(fakes::Header(0, true, 0, 1, 1));
    host.BlockReceived(fakes::Header(0, false, 0, 2, 1));
    host.MessageReceived(fakes::Header(0, false, 0, 2, 1), {});
    host.DriverEvents().Disconnect(0, "");
    EXPECT_EQ(raised, 0);
}

}  // namespace
}  // namespace hexmire
