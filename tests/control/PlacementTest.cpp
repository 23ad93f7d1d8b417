#include <hexmire/trans/detail/SECSTransAccess.h>

#include "ReadyHost.h"
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace hexmire {
namespace {

using namespace fakes;

const Names kNotified{
    "BaudRate",         "ConnectionHost",      "ConnectionPortType", "ConnectionRetryLimit",
    "DeviceID",         "DuplicateBlockCheck", "HSMSConnectionType", "InterleaveCheck",
    "LocalIPAddress",   "LocalIPPort",         "TraceEnabled",       "RemoteIPAddress",
    "RemoteIPPort",     "SECSDictionaryFile",  "SECSLogFile",        "SerialPort",
    "SystemBytesCheck", "T1Timeout",           "T2Timeout",          "T3Timeout",
    "T4Timeout",        "T5Timeout",           "T6Timeout",          "T7Timeout",
    "T8Timeout",        "TimeOutRetry"};

const Names kPushed = DefaultPushesAnd({"RecipeFileEnabled(False)",
                                        "RecipeSendPath()",
                                        "RecipeRecvPath()",
                                        "SECSILogPath(C:\\App\\Log\\)"});

TEST(InitProperties, ChecksPushesAndNotifiesEverySettingInTheTablesOrder) {
    ReadyHost host;
    host.Control().InitProperties();
    EXPECT_EQ(host.Driver.Calls, kPushed);
    EXPECT_EQ(host.Driver.StatusReads, 0);
    EXPECT_EQ(host.Container.Changed, kNotified);
    EXPECT_EQ(host.Raised, Names{});
}

TEST(InitProperties, GoesOnBehindEachSetterThatFaults) {
    for (const std::string& push : kPushed) {
        ReadyHost host;
        host.Driver.FailingCall = MemberOf(push);
        host.Control().InitProperties();
        EXPECT_EQ(host.Driver.Calls, kPushed) << push;
        ASSERT_EQ(host.Errors.size(), 1U) << push;
        const bool notifies = push.find("ecipe") == std::string::npos && !push.starts_with("SECSI");
        EXPECT_EQ(host.Container.Changed.size(), notifies ? 25U : 26U) << push;
    }
}

TEST(InitProperties, ReportsAgainATimeOutRetryThatTheDriverCannotTake) {
    ReadyHost host;
    host.Control().TimeOutRetry(40000);
    host.Control().InitProperties();
    const ErrorEvent overflow{6, "(Hexmire-Let TimeOutRetry) Overflow", 0};
    EXPECT_EQ(host.Errors, (Errors{overflow, overflow}));
    Names pushed = kPushed;
    pushed.erase(pushed.begin() + 23);
    EXPECT_EQ(host.Driver.Calls, pushed);
    EXPECT_EQ(host.Container.Changed, FirstOf(kNotified, 25));
}

TEST(InitProperties, StopsWhenTheTimerCannotBeStarted) {
    ReadyHost host;
    host.Container.OnCall = [](const std::string&) { throw std::runtime_error("no timers left"); };
    host.Control().InitProperties();
    EXPECT_EQ(host.Errors, (Errors{{440, "(Hexmire-InitProperties) no timers left", 0}}));
    EXPECT_EQ(host.Driver.Calls, Names{});
}

TEST(InitProperties, NotifiesOfALogNameThatTheLogRefusesAgain) {
    ReadyHost host;
    host.Control().SECSLogFile("trace.txt");
    host.Errors.clear();
    host.Container.Changed.clear();
    host.Control().InitProperties();
    EXPECT_EQ(host.Errors.size(), 1U);
    EXPECT_EQ(host.Control().ErrorCode(), 2014);
    EXPECT_EQ(host.Container.Changed, kNotified);
}

TEST(InitProperties, StartsTheTimerAgainWithTheTimeOfNow) {
    TestHost host;
    const SECSTransPtr trans = host.Control().NewSECSTransaction();
    trans->Send();
    host.Clock.Advance(std::chrono::seconds(5));
    host.Control().InitProperties();
    EXPECT_EQ(host.Container.Starts, 2);
    EXPECT_EQ(host.Container.Period, std::chrono::milliseconds(500));
    host.Container.Tick();
    EXPECT_EQ(detail::SECSTransAccess::T3Counter(*trans), 0);
    host.TickSecond();
    EXPECT_EQ(detail::SECSTransAccess::T3Counter(*trans), 1);
}

TEST(InitProperties, PushesWhatIsHeldNow) {
    TestHost host;
    host.Control().DeviceID(5);
    host.Control().T1Timeout(0.7F);
    host.Control().RecipeSendPath("R:\\");
    host.Driver.Calls.clear();
    host.Control().InitProperties();
    EXPECT_EQ(host.Driver.Calls.at(4), "DeviceID(5)");
    EXPECT_EQ(host.Driver.Calls.at(15), "T1(0.7)");
    EXPECT_EQ(host.Driver.Calls.at(25), "RecipeSendPath(R:\\)");
}

TEST(InitProperties, AfterTheTeardownStartsNoTimer) {
    TestHost host;
    host.Control().ControlTerminate();
    host.Driver.Calls.clear();
    host.Control().InitProperties();
    EXPECT_EQ(host.Errors, (Errors{NotSetIn("InitProperties")}));
    EXPECT_FALSE(host.Container.TimerRuns());
    EXPECT_EQ(host.Driver.Calls, Names{});
    EXPECT_EQ(host.Container.Changed, Names{});
}

TEST(LogFileSetting, RenamesTheSharedLog) {
    TestHost host;
    host.Files.Directories.insert("D:\\Logs");
    host.Control().SECSLogFile("D:\\Logs\\fab.log");
    EXPECT_EQ(host.Control().SECSLogFile(), "D:\\Logs\\fab.log");
    EXPECT_EQ(host.Container.Changed, (Names{"SECSLogFile"}));
    host.Control().NewSECSTransaction()->Send();
    EXPECT_TRUE(host.Files.Files.contains("D:\\Logs\\fab_2024-03-05.log"));
    EXPECT_EQ(host.LogText(), "");
}

TEST(LogFileSetting, AcceptsTheExtensionAnywhereInAnyCase) {
    for (const char* name : {"trace.LOG", "a.log.txt", "x.Log", ".log"}) {
        TestHost host;
        host.Control().SECSLogFile(name);
        EXPECT_EQ(host.Control().SECSLogFile(), name);
        EXPECT_EQ(host.Raised, Names{});
        EXPECT_EQ(detail::HexmireAccess::Log(host.Control())->FileName(), name);
    }
}

TEST(LogFileSetting, WithoutTheExtensionLeavesTheLogWhereItWas) {
    TestHost host;
    host.Control().SECSLogFile("trace.txt");
    EXPECT_EQ(
        host.Errors,
        (Errors{{2014, "(CLogFile-Let FileName) Log file name must have extension .log.", 0}}));
    EXPECT_EQ(host.Control().ErrorCode(), 2014);
    EXPECT_EQ(host.Control().SECSLogFile(), "trace.txt");
    EXPECT_EQ(host.Container.Changed, (Names{"SECSLogFile"}));
    EXPECT_EQ(detail::HexmireAccess::Log(host.Control())->FileName(), "C:\\App\\Log\\SECSII.log");
    host.Control().NewSECSTransaction()->Send();
    EXPECT_EQ(host.LogLines().size(), 3U);
}

TEST(LogFileSetting, OfNothingIsIgnoredByTheLog) {
    TestHost host;
    host.Control().SECSLogFile("");
    EXPECT_EQ(host.Raised, Names{});
    EXPECT_EQ(detail::HexmireAccess::Log(host.Control())->FileName(), "C:\\App\\Log\\SECSII.log");
    EXPECT_EQ(host.Control().SECSLogFile(), "");
    EXPECT_EQ(host.Container.Changed, (Names{"SECSLogFile"}));
}

TEST(LogFileSetting, IsHeldWithoutALogObject) {
    TestHost host(false);
    host.Control().SECSLogFile("trace.txt");
    EXPECT_EQ(host.Control().SECSLogFile(), "trace.txt");
    EXPECT_EQ(host.Raised, Names{});
    EXPECT_EQ(host.Container.Changed, (Names{"SECSLogFile"}));
    host.Control().NewSECSTransaction()->Send();
    EXPECT_EQ(host.Files.Appends, 0);
}

TEST(LogFileSetting, AfterTheTeardownIsNotTaken) {
    TestHost host;
    host.Control().ControlTerminate();
    host.Control().SECSLogFile("C:\\x.log");
    host.Control().SECSLogFile("trace.txt");
    EXPECT_EQ(host.Errors, (Errors{NotSetIn("Let SECSLogFile"), NotSetIn("Let SECSLogFile")}));
    EXPECT_EQ(host.Control().SECSLogFile(), "C:\\App\\Log\\SECSII.log");
    EXPECT_EQ(host.Container.Changed, Names{});
}

TEST(LogFileSetting, IsNotPushed) {
    TestHost host;
    host.Driver.Calls.clear();
    host.Control().SECSLogFile("C:\\x.log");
    EXPECT_EQ(host.Driver.Calls, Names{});
}

TEST(Status, IsAskedOfTheDriverOnEveryRead) {
    TestHost host;
    host.Driver.StatusReads = 0;
    host.Driver.Status = true;
    EXPECT_TRUE(host.Control().Connected());
    EXPECT_TRUE(host.Control().PortOpened());
    host.Driver.Status = false;
    EXPECT_FALSE(host.Control().PortOpened());
    EXPECT_FALSE(host.Control().Connected());
    EXPECT_EQ(host.Driver.StatusReads, 4);
    EXPECT_EQ(host.Raised, Names{});
}

TEST(Status, ReportsADriverThatCannotTell) {
    TestHost host;
    host.Driver.Status = true;
    EXPECT_TRUE(host.Control().Connected());
    host.Driver.FailingCall = "LinkStatus";
    EXPECT_FALSE(host.Control().Connected());
    EXPECT_FALSE(host.Control().PortOpened());
    EXPECT_EQ(host.Errors,
              (Errors{DriverFailedIn("Get Connected"), DriverFailedIn("Get PortOpened")}));
    EXPECT_EQ(host.Control().ErrorCode(), -2147467259);
}

TEST(Status, CopiesTheSettingsThatAreCurrent) {
    ReadyHost host;
    host.Control().BaudRate(19200);
    host.Control().HSMSConnectionType(3);
    EXPECT_EQ(host.Control().CurrentBaud(), 19200);
    EXPECT_EQ(host.Control().CurrentHSMSConnectionType(), 3);
    host.Control().BaudRate(7);
    EXPECT_EQ(host.Control().CurrentBaud(), 19200);
    EXPECT_EQ(host.Driver.StatusReads, 0);
    EXPECT_EQ(host.Container.Changed, (Names{"BaudRate", "HSMSConnectionType"}));
}

}  // namespace
}  // namespace hexmire
