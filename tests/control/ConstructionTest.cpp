#include "ReadyHost.h"
#include "Settings.h"
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace hexmire {
namespace {

using namespace fakes;

const Names kPushes{"BaudRate(9600)",
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
                    "SECSILogPath(C:\\App\\Log\\)",
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
                    "ConnectionRetryLimit(0)",
                    "RecipeFileEnabled(False)"};

/// A place for controls: the host's own one is gone.
struct Place : TestHost {
    Place() {
        DestroyControl();
        Driver.Calls.clear();
        Driver.StatusReads = 0;
        Container = RecordingContainer();
    }
};

TEST(Construction, PushesTheDefaultsInTheirOrder) {
    TestHost host;
    EXPECT_EQ(host.Driver.Calls, kPushes);
}

TEST(Construction, LeavesTheDriverARetryLimitOfZeroUntilThePortIsOpened) {
    TestHost host;
    std::string limit;
    for (const std::string& call : host.Driver.Calls) {
        if (call.starts_with("ConnectionRetryLimit")) limit = call;
    }
    EXPECT_EQ(limit, "ConnectionRetryLimit(0)");
    EXPECT_EQ(host.Control().ConnectionRetryLimit(), 3);
    EXPECT_EQ(host.Control().TimeOutRetry(), 0);
}

TEST(Construction, NotifiesNobody) {
    TestHost host;
    EXPECT_EQ(host.Container.Changed, Names{});
    EXPECT_EQ(host.Raised, Names{});
    EXPECT_EQ(host.Control().ErrorCode(), 0);
}

TEST(Construction, StartsTheTimerOfHalfASecondOnce) {
    TestHost host;
    EXPECT_EQ(host.Container.Starts, 1);
    EXPECT_EQ(host.Container.Stops, 0);
    EXPECT_EQ(host.Container.Period, std::chrono::milliseconds(500));
    EXPECT_TRUE(host.Container.TimerRuns());
}

TEST(Construction, MakesTheDriverThenTheDocumentThenStartsTheTimerThenPushes) {
    Place place;
    Names order;
    const Platform given = place.MakePlatform();
    Platform platform = given;
    platform.NewDriver = [&](SECSIServiceEvents& events) {
        order.emplace_back("driver");
        return given.NewDriver(events);
    };
    platform.NewXMLDocument = [&] {
        order.emplace_back("document");
        return given.NewXMLDocument();
    };
    place.Container.OnCall = [&](const std::string& call) { order.push_back(call); };
    place.Driver.OnCall = [&](const std::string& call) {
        if (order.size() < 4) order.push_back(call);
    };
    const Hexmire control(platform);
    EXPECT_EQ(order, (Names{"driver", "document", "StartTimer", "BaudRate"}));
    EXPECT_EQ(place.Driver.Calls, kPushes);
}

TEST(Construction, StopsWhenTheTimerCannotBeStarted) {
    Place place;
    place.Container.OnCall = [](const std::string&) { throw std::runtime_error("no timers left"); };
    const Hexmire control(place.MakePlatform());
    EXPECT_EQ(control.ErrorCode(), 440);
    EXPECT_EQ(place.Driver.Calls, Names{});
    EXPECT_NE(control.SECSDictionary(), nullptr);
}

TEST(Construction, MakesTheDictionaryAndTheTable) {
    TestHost host;
    ASSERT_NE(host.Control().SECSDictionary(), nullptr);
    EXPECT_EQ(host.Control().SECSDictionary()->Description(), "Default Dictionary");
    EXPECT_EQ(host.Control().SECSDictionary()->TransCount(), 0);
    EXPECT_EQ(host.Control().SECSDictionary(), host.Control().SECSDictionary());
    ASSERT_NE(host.Table(), nullptr);
    EXPECT_EQ(host.Table()->Description(), "TRANSINUSE");
    EXPECT_NE(host.Table(), host.Control().SECSDictionary());
}

TEST(Construction, FixesTheFace) {
    TestHost host;
    Hexmire& control = host.Control();
    EXPECT_EQ(control.Width(), 615);
    EXPECT_EQ(control.Height(), 615);
    EXPECT_EQ(control.Caption(), "SxFx");
    for (const std::int32_t size : {0, 1, -5, 10000, kLongMax}) {
        control.Resize(size, size / 2);
        EXPECT_EQ(control.Width(), 615);
        EXPECT_EQ(control.Height(), 615);
    }
    EXPECT_EQ(host.Container.Changed, Names{});
}

TEST(Construction, NamesTheLogBelowTheApplicationFolder) {
    TestHost host;
    EXPECT_EQ(host.Control().SECSLogFile(), "C:\\App\\Log\\SECSII.log");
    EXPECT_EQ(host.Control().SECSILogPath(), "C:\\App\\Log\\");
    EXPECT_EQ(host.Control().RecipeSendPath(), "");
    EXPECT_EQ(host.Control().RecipeRecvPath(), "");
    ASSERT_NE(detail::HexmireAccess::Log(host.Control()), nullptr);
    EXPECT_EQ(detail::HexmireAccess::Log(host.Control())->FileName(), "C:\\App\\Log\\SECSII.log");
    EXPECT_TRUE(host.Files.Files.empty());
}

TEST(Construction, AppendsTheTailsToAnyFolderAsItStands) {
    Place place;
    Platform platform = place.MakePlatform();
    for (const std::string folder : {"/opt/fab host", "", "C:\\App\\", "D:"}) {
        platform.ApplicationFolder = folder;
        const Hexmire control(platform);
        EXPECT_EQ(control.SECSLogFile(), folder + "\\Log\\SECSII.log");
        EXPECT_EQ(control.SECSILogPath(), folder + "\\Log\\");
    }
}

TEST(Construction, MakesNoLogObjectWithoutMessageLog) {
    TestHost host(false);
    EXPECT_EQ(detail::HexmireAccess::Log(host.Control()), nullptr);
    EXPECT_EQ(host.Control().SECSLogFile(), "C:\\App\\Log\\SECSII.log");
    EXPECT_EQ(host.Driver.Calls, kPushes);
}

TEST(Construction, ReadsTheDriversStatusOnceBehindThePushes) {
    Place place;
    int readBefore = 0;
    place.Driver.OnCall = [&](const std::string&) { readBefore = place.Driver.StatusReads; };
    const Hexmire control(place.MakePlatform());
    EXPECT_EQ(readBefore, 0);
    EXPECT_EQ(place.Driver.StatusReads, 1);
}

TEST(Construction, KeepsWhatIsCurrent) {
    TestHost host;
    EXPECT_FALSE(host.Control().Connected());
    EXPECT_FALSE(host.Control().PortOpened());
    EXPECT_EQ(host.Control().CurrentBaud(), 9600);
    EXPECT_EQ(host.Control().CurrentHSMSConnectionType(), 1);
}

TEST(Construction, StopsAtThePushThatFaultsAndKeepsItsCode) {
    for (std::size_t failing = 0; failing < kPushes.size(); ++failing) {
        const std::string member = MemberOf(kPushes[failing]);
        if (member == "ConnectionRetryLimit" && failing > 3) continue;  // The first one fails.
        Place place;
        place.Driver.FailingCall = member;
        std::unique_ptr<Hexmire> control;
        EXPECT_NO_THROW(control = std::make_unique<Hexmire>(place.MakePlatform()));
        EXPECT_EQ(place.Driver.Calls, FirstOf(kPushes, failing + 1));
        EXPECT_EQ(place.Driver.StatusReads, 0) << member;
        EXPECT_EQ(control->ErrorCode(), -2147467259) << member;
        EXPECT_TRUE(place.Container.TimerRuns()) << member;
        const bool beforeTheLog = failing <= 12;
        EXPECT_EQ(detail::HexmireAccess::Log(*control) == nullptr, beforeTheLog) << member;
    }
}

TEST(Construction, ThatFaultedLeavesAControlThatOpensItsPort) {
    for (const char* member : {"BaudRate", "SECSILogPath", "RecipeFileEnabled", "LinkStatus"}) {
        Place place;
        place.Driver.FailingCall = member;
        Hexmire control(place.MakePlatform());
        place.Driver.FailingCall = "";
        place.Driver.Calls.clear();
        control.OpenPort();
        EXPECT_EQ(place.Driver.Calls.size(), 25U) << member;
        EXPECT_EQ(place.Driver.Calls.back(), "OpenLink()");
        EXPECT_EQ(control.BaudRate(), 9600);
        EXPECT_EQ(control.T8Timeout(), 5);
        EXPECT_EQ(control.SECSILogPath(), "C:\\App\\Log\\");
    }
}

TEST(Construction, SurvivesADriverThatCannotBeMade) {
    Place place;
    Platform platform = place.MakePlatform();
    platform.NewDriver = [](SECSIServiceEvents&) -> std::unique_ptr<SECSIService> {
        throw DriverError(77, "no driver");
    };
    Hexmire control(platform);
    EXPECT_EQ(control.ErrorCode(), 77);
    control.T3Timeout(3);
    EXPECT_EQ(control.ErrorCode(), 91);
    EXPECT_EQ(control.T3Timeout(), 3);
    EXPECT_FALSE(control.Connected());
    Errors errors;
    control.Events().Error = [&](std::int32_t code, const std::string& text, std::int32_t line) {
        errors.push_back({code, text, line});
    };
    control.OpenPort();
    EXPECT_EQ(errors, (Errors{NotSetIn("Get PortOpened"), NotSetIn("OpenPort")}));
    errors.clear();
    EXPECT_EQ(control.NewSECSTransaction("S1F1"), nullptr);
    EXPECT_EQ(errors, (Errors{NotSetIn("NewSECSTransaction")}));
    errors.clear();
    control.InitProperties();
    errors.clear();
    place.Clock.Advance(std::chrono::seconds(1));
    place.Container.Tick();
    EXPECT_EQ(errors, (Errors{NotSetIn("TimerCheck_Timer")}));
    errors.clear();
    control.ClosePort();
    control.ControlTerminate();
    EXPECT_EQ(errors.size(), 2U);
    EXPECT_TRUE(place.Driver.Calls.empty());
    EXPECT_EQ(place.Container.Starts, 1);  // That of the placement.
}

TEST(Construction, SurvivesAPlatformThatGivesNothing) {
    Place place;
    Platform platform = place.MakePlatform();
    platform.NewDriver = [](SECSIServiceEvents&) { return std::unique_ptr<SECSIService>(); };
    Hexmire control(platform);
    EXPECT_EQ(control.ErrorCode(), 91);
    Platform empty = place.MakePlatform();
    empty.NewDriver = nullptr;
    Hexmire other(empty);
    EXPECT_NE(other.ErrorCode(), 0);
}

TEST(Construction, SurvivesAnXmlDocumentThatCannotBeMade) {
    Place place;
    Platform platform = place.MakePlatform();
    platform.NewXMLDocument = []() -> std::unique_ptr<IXMLDocument> {
        throw std::runtime_error("not installed");
    };
    Hexmire control(platform);
    EXPECT_EQ(control.ErrorCode(), 440);
    std::vector<ErrorEvent> errors;
    control.Events().Error = [&](std::int32_t code, const std::string& text, std::int32_t line) {
        errors.push_back({code, text, line});
    };
    control.LoadXMLDictionary();
    ASSERT_EQ(errors.size(), 1U);
    EXPECT_EQ(errors[0].Code, 91);
    EXPECT_TRUE(errors[0].Text.starts_with("(Hexmire-LoadXMLDictionary) "));
}

TEST(Construction, BeginsWithTheSameDefaultsEachTime) {
    Place place;
    {
        Hexmire first(place.MakePlatform());
        first.T3Timeout(99);
        first.SerialPort("COM9");
    }
    place.Driver.Calls.clear();
    const Hexmire second(place.MakePlatform());
    EXPECT_EQ(second.T3Timeout(), 45);
    EXPECT_EQ(second.SerialPort(), "COM1");
    EXPECT_EQ(place.Driver.Calls, kPushes);
}

TEST(Construction, ThatFaultedServesNoObjectsOfTheHost) {
    TestHost first;
    Place place;
    const SECSTransPtr free = New<SECSTrans>();
    place.Driver.FailingCall = "RecipeFileEnabled";
    Hexmire second(place.MakePlatform());
    first.Errors.clear();
    free->DeviceID(-1);
    EXPECT_EQ(first.Errors.size(), 1U);
    EXPECT_EQ(second.ErrorCode(), -2147467259);
    second.NewSECSTransaction()->DeviceID(-1);
    EXPECT_EQ(first.Errors.size(), 1U);
    EXPECT_EQ(second.ErrorCode(), 1047);
}

TEST(Construction, ForgetsAnErrorThatTheDriverReportedMeanwhile) {
    Place place;
    place.Driver.OnCall = [&](const std::string& call) {
        if (call == "T8") place.Driver.Events->Error(5, "early");
    };
    const Hexmire control(place.MakePlatform());
    EXPECT_EQ(control.ErrorCode(), 0);
}

}  // namespace
}  // namespace hexmire
