#include "ReadyHost.h"
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace hexmire {
namespace {

using namespace fakes;

TEST(DriverConnect, IsRaisedAsConnect) {
    ReadyHost host;
    host.DriverEvents().Connect();
    EXPECT_EQ(host.Raised, (Names{"Connect"}));
    EXPECT_EQ(host.Control().ErrorCode(), 0);
}

TEST(DriverDisconnect, IsRaisedWithItsValuesAndStoresTheCode) {
    ReadyHost host;
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
    ReadyHost host;
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
    ReadyHost host;
    host.Control().Events() = HexmireEvents();
    host.DriverEvents().Connect();
    host.DriverEvents().Disconnect(3, "x");
    EXPECT_EQ(host.Control().ErrorCode(), 3);
    host.DriverEvents().Error(4, "x");
    EXPECT_EQ(host.Control().ErrorCode(), 4);
}

TEST(DriverEvents, ReportAHandlerThatThrows) {
    ReadyHost host;
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
    ReadyHost host;
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
    ReadyHost host;
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

TEST(DriverError, OfAThrowingHandlerIsReportedOnceMoreInTheHandlersName) {
    ReadyHost host;
    const auto record = host.Control().Events().Error;
    host.Control().Events().Error =
        [&](std::int32_t code, const std::string& text, std::int32_t line) {
            record(code, text, line);
            if (code == 4) throw std::runtime_error("host bug");
        };
    host.DriverEvents().Error(4, "line noise");
    EXPECT_EQ(host.Errors,
              (Errors{{4, "line noise", 0}, {440, "(Hexmire-moSECSIService_Error) host bug", 0}}));
    EXPECT_EQ(host.Control().ErrorCode(), 440);
}

TEST(DriverEvents, TouchNeitherTheDriverNorTheWaitingTransactions) {
    ReadyHost host;
    host.Control().NewSECSTransaction()->Send();
    host.Driver.Calls.clear();
    host.DriverEvents().Connect();
    host.DriverEvents().Error(4, "x");
    host.DriverEvents().Disconnect(3, "x");
    EXPECT_EQ(host.Driver.Calls, Names{});
    EXPECT_EQ(host.Driver.StatusReads, 0);
    EXPECT_EQ(host.Table()->TransCount(), 1);
    EXPECT_EQ(host.Raised, (Names{"Connect", "Error(4,x,0)", "Disconnect(3,x)"}));
}

TEST(DriverEvents, MayReplaceTheirHandlerWhileItRuns) {
    ReadyHost host;
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
    ReadyHost host;
    int raised = 0;
    host.Control().Events().ByteMonitor =
        [&](bool, std::int32_t, const Variant&, const std::string&) { ++raised; };
    host.Control().TraceEnabled(true);
    host.Control().OpenPort();
    host.DriverEvents().Connect();
    host.Control().NewSECSTransaction()->Send();
    host.MessageSent(Header(0, true, 0, 1, 1));
    host.BlockReceived(Header(0, false, 0, 2, 1));
    host.MessageReceived(Header(0, false, 0, 2, 1), {});
    host.DriverEvents().Disconnect(0, "");
    EXPECT_EQ(raised, 0);
}

}  // namespace
}  // namespace hexmire
