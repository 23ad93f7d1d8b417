#include <hexmire/core/ModGeneral.h>
#include <hexmire/core/SECSItem.h>
#include <hexmire/support/ModErrorMsg.h>

#include "../fakes/TestHost.h"
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace hexmire {
namespace {

using detail::HexmireAccess;
using fakes::ErrorEvent;
using fakes::TestHost;
using Events = std::vector<ErrorEvent>;

const ErrorEvent kDeviceIdRefused{
    1047, "(Hexmire-Let DeviceID) The DeviceID must be between 0 and 32767.", 0};

TEST(ErrorEvent, ErrorCodeIsZeroAtFirst) {
    TestHost host;
    EXPECT_EQ(host.Control().ErrorCode(), 0);
    EXPECT_TRUE(host.Errors.empty());
}

TEST(ErrorEvent, RejectedValueRaisesErrorAndStaysOut) {
    TestHost host;
    host.Control().DeviceID(40000);
    EXPECT_EQ(host.Errors, (Events{kDeviceIdRefused}));
    EXPECT_EQ(host.Control().DeviceID(), 0);
    EXPECT_EQ(host.Control().ErrorCode(), 1047);
}

TEST(ErrorEvent, AcceptedValueLeavesTheLastCode) {
    TestHost host;
    host.Control().DeviceID(40000);
    host.Control().DeviceID(5);
    EXPECT_EQ(host.Control().ErrorCode(), 1047);
    EXPECT_EQ(host.Errors.size(), 1U);
}

TEST(ErrorEvent, EveryRejectedSettingNamesItsSetter) {
    TestHost host;
    Hexmire& control = host.Control();
    struct Row {
        void (*Set)(Hexmire&);
        std::int32_t Code;
        const char* Property;
    };
    for (const Row& row :
         {Row{[](Hexmire& c) { c.BaudRate(600); }, 1046, "BaudRate"},
          Row{[](Hexmire& c) { c.DeviceID(-1); }, 1047, "DeviceID"},
          Row{[](Hexmire& c) { c.ConnectionRetryLimit(32); }, 1048, "ConnectionRetryLimit"},
          Row{[](Hexmire& c) { c.T1Timeout(0.0F); }, 1049, "T1Timeout"},
          Row{[](Hexmire& c) { c.T2Timeout(26.0F); }, 1050, "T2Timeout"},
          Row{[](Hexmire& c) { c.T3Timeout(0); }, 1051, "T3Timeout"},
          Row{[](Hexmire& c) { c.T4Timeout(121); }, 1052, "T4Timeout"},
          Row{[](Hexmire& c) { c.ConnectionPortType(5); }, 1053, "ConnectionPortType"},
          Row{[](Hexmire& c) { c.T5Timeout(241); }, 1066, "T5Timeout"},
          Row{[](Hexmire& c) { c.T6Timeout(0); }, 1067, "T6Timeout"},
          Row{[](Hexmire& c) { c.T7Timeout(-5); }, 1068, "T7Timeout"},
          Row{[](Hexmire& c) { c.T8Timeout(121); }, 1069, "T8Timeout"},
          Row{[](Hexmire& c) { c.HSMSConnectionType(0); }, 2005, "HSMSConnectionType"},
          Row{[](Hexmire& c) { c.LocalIPPort(0); }, 2006, "LocalIPPort"},
          Row{[](Hexmire& c) { c.RemoteIPPort(-1); }, 2006, "RemoteIPPort"},
          Row{[](Hexmire& c) { c.TimeOutRetry(86401); }, 2007, "TimeOutRetry"}}) {
        host.Errors.clear();
        row.Set(control);
        EXPECT_EQ(host.Errors,
                  (Events{{row.Code,
                           "(Hexmire-Let " + std::string(row.Property) + ") " +
                               ModErrorMsg::FormatErrorMsg(row.Code),
                           0}}));
        EXPECT_EQ(control.ErrorCode(), row.Code);
    }
}

TEST(ErrorEvent, TriggerErrorPassesItsThreeValuesUnchanged) {
    TestHost host;
    HexmireAccess::TriggerError(host.Control(), -7, "any \xE9 text", 99);
    HexmireAccess::TriggerError(host.Control(), std::numeric_limits<std::int32_t>::min(), "", -1);
    EXPECT_EQ(
        host.Errors,
        (Events{{-7, "any \xE9 text", 99}, {std::numeric_limits<std::int32_t>::min(), "", -1}}));
    EXPECT_EQ(host.Control().ErrorCode(), std::numeric_limits<std::int32_t>::min());
}

TEST(ErrorEvent, CodeZeroIsStoredToo) {
    TestHost host;
    host.Control().DeviceID(-1);
    HexmireAccess::TriggerError(host.Control(), 0, "nothing", 0);
    EXPECT_EQ(host.Control().ErrorCode(), 0);
}

TEST(ErrorEvent, HandlerRunsBeforeTheReportingRoutineReturns) {
    TestHost host;
    bool inside = false;
    host.Control().Events().Error = [&](std::int32_t, const std::string&, std::int32_t) {
        inside = true;
    };
    host.Control().DeviceID(-1);
    EXPECT_TRUE(inside);
}

TEST(ErrorEvent, WithoutHandlerOnlyTheCodeIsKept) {
    TestHost host;
    host.Control().Events().Error = nullptr;
    host.Control().DeviceID(-1);
    EXPECT_EQ(host.Control().ErrorCode(), 1047);
    HexmireAccess::TriggerError(host.Control(), 6, "", 0);
    EXPECT_EQ(host.Control().ErrorCode(), 6);
}

TEST(ErrorEvent, DriversErrorIsPassedOnWithoutPrefix) {
    TestHost host;
    host.DriverEvents().Error(10061, "connection refused");
    EXPECT_EQ(host.Errors, (Events{{10061, "connection refused", 0}}));
    EXPECT_EQ(host.Control().ErrorCode(), 10061);
}

TEST(ErrorEvent, DriversDisconnectStoresItsCodeWithoutAnError) {
    TestHost host;
    host.DriverEvents().Disconnect(10054, "reset");
    EXPECT_EQ(host.Control().ErrorCode(), 10054);
    host.DriverEvents().Disconnect(0, "");
    EXPECT_EQ(host.Control().ErrorCode(), 0);
    EXPECT_TRUE(host.Errors.empty());
}

TEST(ErrorEvent, FaultOfTheDriverIsReportedUnderItsOwnNumber) {
    TestHost host;
    host.Driver.FailingCall = "BaudRate";
    host.Control().BaudRate(300);
    EXPECT_EQ(host.Errors, (Events{{-2147467259, "(Hexmire-Let BaudRate) driver failed", 0}}));
    EXPECT_EQ(host.Control().ErrorCode(), -2147467259);
}

TEST(ErrorEvent, ObjectsOfTheModelReachTheControl) {
    TestHost host;
    const SECSTransPtr trans = host.Control().NewSECSTransaction();
    trans->Primary()->Stream(128);
    EXPECT_EQ(host.Errors,
              (Events{{1013,
                       "(SECSMessage-Let Stream) The Stream property must be between 0 and 127 "
                       "inclusive.",
                       0}}));
    EXPECT_EQ(host.Control().ErrorCode(), 1013);
}

TEST(ErrorEvent, FreeRoutinesReachTheControl) {
    TestHost host;
    EXPECT_EQ(ModGeneral::lLBitShift(1, 31), 0);
    EXPECT_EQ(host.Errors, (Events{{6, "(ModGeneral-lLBitShift) Overflow", 0}}));
}

TEST(ErrorEventOfSeveralControls, ObjectsReportToTheirMakerOthersToTheLast) {
    TestHost first;
    const SECSTransPtr ofFirst = first.Control().NewSECSTransaction();
    TestHost second;
    ofFirst->Primary()->Stream(128);
    ofFirst->Primary()->Root()->AddNew(1)->NLB(9);
    EXPECT_EQ(first.Errors.size(), 2U);
    EXPECT_TRUE(second.Errors.empty());
    New<SECSItem>()->NLB(9);
    EXPECT_EQ(second.Errors.size(), 1U);
    first.Control().DeviceID(-1);
    EXPECT_EQ(first.Control().ErrorCode(), 1047);
    EXPECT_EQ(second.Control().ErrorCode(), 1003);
}

TEST(ErrorEventOfSeveralControls, InsideAHandlerFreeRoutinesReportToItsControl) {
    TestHost first;
    TestHost second;
    std::vector<std::int32_t> codes;
    first.Control().Events().Error = [&](std::int32_t code, const std::string&, std::int32_t) {
        codes.push_back(code);
        if (code == 1047) static_cast<void>(ModGeneral::lLBitShift(1, 31));
    };
    first.Control().DeviceID(-1);
    EXPECT_EQ(codes, (std::vector<std::int32_t>{1047, 6}));
    EXPECT_TRUE(second.Errors.empty());
}

TEST(ErrorEventOfSeveralControls, AReportMakesTheControlThatRaisesItTheCurrentOne) {
    TestHost first;
    TestHost second;
    std::vector<std::int32_t> codes;
    first.Control().Events().Error = [&](std::int32_t code, const std::string&, std::int32_t) {
        codes.push_back(code);
        if (code == 5) static_cast<void>(ModGeneral::lLBitShift(1, 31));
    };
    HexmireAccess::TriggerError(first.Control(), 5, "", 0);
    EXPECT_EQ(codes, (std::vector<std::int32_t>{5, 6}));
    EXPECT_TRUE(second.Errors.empty());
}

TEST(ErrorEventOfSeveralControls, LastOnesEndHandsOverToTheOneBefore) {
    TestHost first;
    {
        TestHost second;
        static_cast<void>(ModGeneral::lLBitShift(1, 31));
        EXPECT_EQ(second.Errors.size(), 1U);
    }
    static_cast<void>(ModGeneral::lLBitShift(1, 31));
    EXPECT_EQ(first.Errors.size(), 1U);
}

TEST(ErrorEventOfSeveralControls, ObjectsOfAnEndedControlAreSilent) {
    TestHost first;
    TestHost second;
    const SECSTransPtr trans = first.Control().NewSECSTransaction();
    first.DestroyControl();
    trans->Primary()->Stream(128);
    static_cast<void>(trans->Delete());
    EXPECT_TRUE(first.Errors.empty());
    EXPECT_TRUE(second.Errors.empty());
    EXPECT_EQ(trans->Primary()->Stream(), 0);
}

TEST(ErrorEvent, TerminatedControlReportsItsOperationsAsAMissingObject) {
    TestHost host;
    host.Control().ControlTerminate();
    host.Errors.clear();
    host.Control().OpenPort();
    host.Control().ClosePort();
    ASSERT_GE(host.Errors.size(), 2U);
    for (const ErrorEvent& event : host.Errors) {
        EXPECT_EQ(event.Code, 91);
        EXPECT_NE(event.Text.find("Object variable or With block variable not set"),
                  std::string::npos);
    }
}

}  // namespace
}  // namespace hexmire
