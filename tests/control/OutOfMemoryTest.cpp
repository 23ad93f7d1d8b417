#include <hexmire/support/HexBytes.h>

#include "../fakes/FailingMemory.h"
#include "Receiving.h"
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <new>
#include <string>
#include <vector>

// The control when memory runs out, at each single request: nothing is thrown to host, driver or
// container, and the next call works.

namespace hexmire {
namespace {

using namespace fakes;

const std::string kLongText(200, 'x');

/// One setting that is a text.
struct TextSetting {
    const char* Name;
    std::string (Hexmire::*Get)() const;
    void (Hexmire::*Let)(const std::string&);
};

const std::vector<TextSetting> kTextSettings{
    {"LocalIPAddress", &Hexmire::LocalIPAddress, &Hexmire::LocalIPAddress},
    {"RemoteIPAddress", &Hexmire::RemoteIPAddress, &Hexmire::RemoteIPAddress},
    {"SECSDictionaryFile", &Hexmire::SECSDictionaryFile, &Hexmire::SECSDictionaryFile},
    {"SECSLogFile", &Hexmire::SECSLogFile, &Hexmire::SECSLogFile},
    {"SerialPort", &Hexmire::SerialPort, &Hexmire::SerialPort},
    {"RecipeSendPath", &Hexmire::RecipeSendPath, &Hexmire::RecipeSendPath},
    {"RecipeRecvPath", &Hexmire::RecipeRecvPath, &Hexmire::RecipeRecvPath},
    {"SECSILogPath", &Hexmire::SECSILogPath, &Hexmire::SECSILogPath},
};

TEST(ControlOutOfMemory, TextThatCannotBeReadIsEmptyAndReported) {
    for (const TextSetting& setting : kTextSettings) {
        TestHost host(false);
        (host.Control().*setting.Let)(kLongText);
        std::string read;
        FailEverywhere(
            host.Errors,
            [&] { read = (host.Control().*setting.Get)(); },
            [&] { EXPECT_EQ(read, host.Errors.empty() ? kLongText : ""); },
            {"(Hexmire-Get " + std::string(setting.Name) + ") "});
        EXPECT_EQ(host.Control().ErrorCode(), 7);
    }
}

TEST(ControlOutOfMemory, TextThatCannotBeStoredIsReportedAndTheOldOneOrTheNewOneStands) {
    for (const TextSetting& setting : kTextSettings) {
        TestHost host(false);
        const std::string before = (host.Control().*setting.Get)();
        FailEverywhere(
            host.Errors,
            [&] { (host.Control().*setting.Let)(kLongText); },
            [&] {
                const std::string after = (host.Control().*setting.Get)();
                EXPECT_TRUE(after == before || after == kLongText) << after;
            },
            {"(Hexmire-Let " + std::string(setting.Name) + ") "});
        EXPECT_EQ((host.Control().*setting.Get)(), kLongText);
    }
}

TEST(ControlOutOfMemory, PlacementLosesNoSetting) {
    TestHost host(false);
    for (const TextSetting& setting : kTextSettings)
        (host.Control().*setting.Let)(kLongText + setting.Name);
    for (long request = 1;; ++request) {
        ASSERT_LT(request, 1000);
        host.Errors.clear();
        const bool reached = FailsRequest(request, [&] { host.Control().InitProperties(); });
        for (const TextSetting& setting : kTextSettings)
            ASSERT_EQ((host.Control().*setting.Get)(), kLongText + setting.Name) << request;
        if (!reached) break;
        EXPECT_EQ(host.Errors.size(), 1U) << request;
    }
    EXPECT_TRUE(host.Errors.empty());
}

TEST(ControlOutOfMemory, NewTransactionIsThereOrNot) {
    TestHost host(false);
    SECSTransPtr made;
    FailEverywhere(
        host.Errors,
        [&] { made = host.Control().NewSECSTransaction(); },
        [&] { EXPECT_TRUE(made == nullptr || made->Primary()->Root() != nullptr); },
        {"(Hexmire-NewSECSTransaction) ", "(SECSItem-Let Name) "});
    EXPECT_NE(made, nullptr);
}

TEST(ControlOutOfMemory, TemplateOfALongNameIsFoundOrTheFailureIsTold) {
    const std::string name = kLongText + "n";
    const std::vector<std::function<SECSTransPtr(Hexmire&)>> calls{
        [&](Hexmire& control) { return control.NewSECSTransaction(name); },
        [&](Hexmire& control) { return control.NewSECSTransaction(name.c_str()); },
        [&](Hexmire& control) { return control.NewSECSTransaction(std::string_view(name)); }};
    for (const auto& call : calls) {
        TestHost host(false);
        host.AddTemplate(name, 1, 1);
        SECSTransPtr made;
        FailEverywhere(
            host.Errors,
            [&] { made = call(host.Control()); },
            [] {},
            {"(Hexmire-NewSECSTransaction) ", "(SECSTrans-Let Name) ", "(SECSItem-Let Name) "});
        ASSERT_NE(made, nullptr);
        EXPECT_EQ(made->Name(), name);
    }
}

TEST(ControlOutOfMemory, NoTextAtAllIsTheEmptyName) {
    TestHost host(false);
    host.AddTemplate("S1F1", 1, 1);
    EXPECT_EQ(host.Control().NewSECSTransaction(static_cast<const char*>(nullptr)), nullptr);
    EXPECT_EQ(host.Control().ErrorCode(), 1027);
}

/// Runs one event of the driver with each of its requests failing: a control for each. With all the
/// memory it ends in the code.
void FireEverywhere(const std::function<void(TestHost&)>& prepare,
                    const std::function<void(TestHost&)>& fire,
                    std::int32_t code = 0) {
    int failures = 0;
    for (long request = 1;; ++request) {
        ASSERT_LT(request, 2000);
        TestHost host(false);
        prepare(host);
        host.Errors.clear();
        if (!FailsRequest(request, [&] { fire(host); })) {
            EXPECT_EQ(host.Control().ErrorCode(), code);
            break;
        }
        ++failures;
        // Some failures have others in their wake, such as an item that is missed.
        ASSERT_GE(host.Errors.size(), 1U) << request;
        EXPECT_EQ(host.Errors[0].Code, 7) << host.Errors[0].Text;
        // The control goes on.
        host.Errors.clear();
        const std::size_t primaries = host.Primaries.size();
        host.MessageReceived(Header(0, true, 1, 1, 77), {});
        EXPECT_EQ(host.Primaries.size(), primaries + 1);
        EXPECT_TRUE(host.Errors.empty());
    }
    EXPECT_GT(failures, 0);
}

TEST(ControlOutOfMemory, ReceivedPrimaryIsRaisedOrTheFailureIsTold) {
    const std::string header = HexText(Header(0, true, 1, 1, 5));
    const std::string body = "01 02 41 01 78 B1 04 00 00 00 07 ";
    FireEverywhere([](TestHost& host) { host.AddTemplate("S1F1", 1, 1); },
                   [&](TestHost& host) { host.DriverEvents().SecsMsgReceive(header, body, 11); });
}

TEST(ControlOutOfMemory, ReplyIsRaisedOrTheFailureIsTold) {
    const std::string header = HexText(Header(0, false, 1, 2, 1));
    FireEverywhere(
        [](TestHost& host) {
            host.AddTemplate("S1F1", 1, 1);
            host.Control().NewSECSTransaction("S1F1")->Send();
        },
        [&](TestHost& host) { host.DriverEvents().SecsMsgReceive(header, "41 01 78 ", 3); });
}

TEST(ControlOutOfMemory, RefusalOfABlockIsTold) {
    const auto prepare = [](TestHost& host) { host.AddTemplate("S1F1", 1, 1); };
    FireEverywhere(
        prepare, [](TestHost& host) { host.DriverEvents().SecsMsgSend(""); }, 2016);
    FireEverywhere(
        prepare, [](TestHost& host) { host.DriverEvents().SecsBlockReceive(""); }, 2016);
}

TEST(ControlOutOfMemory, ConstructionGivesAControlThatLivesOrNone) {
    int controls = 0;
    int none = 0;
    for (long request = 1;; ++request) {
        ASSERT_LT(request, 2000);
        TestHost host;
        const Platform platform = host.MakePlatform();
        std::unique_ptr<Hexmire> control;
        bool reached = true;
        try {
            reached = FailsRequest(request, [&] { control = std::make_unique<Hexmire>(platform); });
        } catch (const std::bad_alloc&) {
            ++none;
            continue;
        }
        ASSERT_NE(control, nullptr);
        if (!reached) {
            EXPECT_EQ(control->ErrorCode(), 0);
            break;
        }
        ++controls;
        // Whatever it lacks, its operations return.
        control->OpenPort();
        static_cast<void>(control->NewSECSTransaction("S1F1"));
        control->LoadXMLDictionary();
        control->ClosePort();
        control->InitProperties();
        control->ControlTerminate();
        EXPECT_EQ(host.Control().ErrorCode(), 0);
    }
    EXPECT_GT(controls, 0);
    EXPECT_GT(none, 0);
}

TEST(ControlOutOfMemory, LogLineThatFindsNoMemoryIsLostInSilence) {
    TestHost host;
    CLogFile* log = detail::HexmireAccess::Log(host.Control());
    const std::string text = kLongText + kLongText;
    int lost = 0;
    for (long request = 1;; ++request) {
        ASSERT_LT(request, 1000);
        host.Files.Files.clear();
        const bool reached = FailsRequest(request, [&] { log->WriteLog(text); });
        if (!reached) break;
        lost += host.LogLines().empty() ? 1 : 0;
    }
    EXPECT_GT(lost, 0);
    EXPECT_EQ(host.LogLines(), (std::vector<std::string>{text}));
    EXPECT_TRUE(host.Errors.empty());
    EXPECT_EQ(host.Control().ErrorCode(), 0);
}

TEST(ControlOutOfMemory, LogFileNameIsTakenOrLeftInSilence) {
    TestHost host;
    CLogFile* log = detail::HexmireAccess::Log(host.Control());
    const std::string before = log->FileName();
    const std::string name = "C:\\App\\Log\\" + kLongText + ".log";
    for (long request = 1;; ++request) {
        ASSERT_LT(request, 1000);
        const bool reached = FailsRequest(request, [&] { log->FileName(name); });
        EXPECT_TRUE(log->FileName() == before || log->FileName() == name);
        if (!reached) break;
    }
    EXPECT_EQ(log->FileName(), name);
    EXPECT_TRUE(host.Errors.empty());
}

TEST(ControlOutOfMemory, ThrowingHandlersWithoutMemoryStillLeaveTheirCode) {
    const std::string words(300, 'w');
    for (long request = 1;; ++request) {
        ASSERT_LT(request, 1000);
        TestHost host(false);
        int calls = 0;
        host.Control().Events().Error = [&](std::int32_t, const std::string&, std::int32_t) {
            ++calls;
            throw std::runtime_error(words);
        };
        const bool reached = FailsRequest(request, [&] {
            detail::HexmireAccess::TriggerError(host.Control(), 1003, "first", 0);
            host.Control().DeviceID(-1);
        });
        const std::int32_t code = host.Control().ErrorCode();
        EXPECT_TRUE(code == 440 || code == 7) << code;
        EXPECT_LE(calls, 6);  // Two for each report: the error, its text that failed, the refusal.
        if (!reached) break;
    }
}

TEST(ControlOutOfMemory, AFaultWhoseWordsFindNoMemoryLeavesNumberSeven) {
    TestHost host(false);
    const std::runtime_error error(std::string(300, 'w'));
    int calls = 0;
    host.Control().Events().Error = [&](std::int32_t, const std::string&, std::int32_t) {
        ++calls;
        throw error;
    };
    const auto report = [&] {
        detail::HexmireAccess::TriggerError(host.Control(), 1003, "first", 0);
    };
    EXPECT_TRUE(FailsRequest(1, report));
    EXPECT_EQ(calls, 1);  // Nothing is left to tell the fault with.
    EXPECT_EQ(host.Control().ErrorCode(), 7);
    report();
    EXPECT_EQ(host.Control().ErrorCode(), 440);
}

}  // namespace
}  // namespace hexmire
