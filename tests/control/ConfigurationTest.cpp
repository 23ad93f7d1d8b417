#include "ReadyHost.h"
#include "Settings.h"
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace hexmire {
namespace {

using namespace fakes;

std::string TextOf(std::int32_t value) { return std::to_string(value); }
std::string TextOf(bool value) { return value ? "True" : "False"; }
std::string TextOf(const std::string& value) { return value; }
std::string TextOf(float value) {
    std::ostringstream text;
    text << value;
    return text.str();
}

template <class Row>
void ExpectAccepted(const Row& row) {
    ReadyHost host;
    Hexmire& control = host.Control();
    EXPECT_EQ((control.*row.Getter)(), row.Default) << row.Name;
    Names calls;
    Names changed;
    for (const auto& accepted : row.Accepted) {
        (control.*row.Setter)(accepted);
        EXPECT_EQ((control.*row.Getter)(), accepted) << row.Name;
        if (*row.DriverMember != '\0') {
            calls.push_back(std::string(row.DriverMember) + "(" + TextOf(accepted) + ")");
        }
        if (row.Notifies) changed.emplace_back(row.Name);
    }
    EXPECT_EQ(host.Driver.Calls, calls) << row.Name;
    EXPECT_EQ(host.Container.Changed, changed) << row.Name;
    EXPECT_EQ(host.Raised, Names{}) << row.Name;
    EXPECT_EQ(control.ErrorCode(), 0) << row.Name;
}

template <class Row>
void ExpectRefused(const Row& row) {
    for (const auto& refused : row.Refused) {
        ReadyHost host;
        Hexmire& control = host.Control();
        std::int32_t codeInHandler = -1;
        const auto record = control.Events().Error;
        control.Events().Error =
            [&](std::int32_t code, const std::string& text, std::int32_t line) {
                codeInHandler = control.ErrorCode();
                record(code, text, line);
            };
        (control.*row.Setter)(refused);
        EXPECT_EQ((control.*row.Getter)(), row.Default) << row.Name;
        EXPECT_EQ(
            host.Errors,
            (Errors{{row.Code, std::string("(Hexmire-Let ") + row.Name + ") " + row.Text, 0}}));
        EXPECT_EQ(codeInHandler, 0) << row.Name;
        EXPECT_EQ(control.ErrorCode(), row.Code) << row.Name;
        EXPECT_EQ(host.Driver.Calls, Names{}) << row.Name;
        EXPECT_EQ(host.Container.Changed, Names{}) << row.Name;
    }
}

/// The driver faults in the push: the value is held, nobody is notified, nothing else happens.
template <class Row>
void ExpectPushFault(const Row& row) {
    if (*row.DriverMember == '\0') return;
    ReadyHost host;
    const auto& value = row.Accepted.back();
    host.Driver.FailingCall = row.DriverMember;
    (host.Control().*row.Setter)(value);
    EXPECT_EQ((host.Control().*row.Getter)(), value) << row.Name;
    EXPECT_EQ(host.Errors, (Errors{DriverFailedIn(std::string("Let ") + row.Name)}));
    EXPECT_EQ(host.Control().ErrorCode(), -2147467259);
    EXPECT_EQ(host.Container.Changed, Names{}) << row.Name;
    host.Driver.FailingCall = "";
    (host.Control().*row.Setter)(value);
    EXPECT_EQ(host.Container.Changed, row.Notifies ? Names{row.Name} : Names{});
    EXPECT_EQ(host.Errors.size(), 1U) << row.Name;
}

/// An open port changes nothing: the driver has the value at once and is asked nothing.
template <class Row>
void ExpectTakenWhileOpen(const Row& row) {
    ReadyHost host;
    host.Control().OpenPort();
    host.Driver.Calls.clear();
    host.Driver.StatusReads = 0;
    (host.Control().*row.Setter)(row.Accepted.front());
    EXPECT_EQ(host.Driver.Calls.size(), *row.DriverMember == '\0' ? 0U : 1U) << row.Name;
    EXPECT_EQ(host.Driver.StatusReads, 0) << row.Name;
    EXPECT_EQ(host.Raised, Names{}) << row.Name;
    EXPECT_TRUE(host.Control().PortOpened());
}

/// Without an Error handler a refusal changes the code all the same.
template <class Row>
void ExpectCodeWithoutHandler(const Row& row) {
    if (row.Refused.empty()) return;
    ReadyHost host;
    host.Control().Events().Error = nullptr;
    (host.Control().*row.Setter)(row.Refused.front());
    EXPECT_EQ(host.Control().ErrorCode(), row.Code) << row.Name;
}

/// After the teardown a setter takes nothing, good or bad, and notifies nobody.
template <class Row>
void ExpectInertAfterTeardown(const Row& row) {
    ReadyHost host;
    host.Control().ControlTerminate();
    host.Driver.Calls.clear();
    auto values = row.Accepted;
    values.insert(values.end(), row.Refused.begin(), row.Refused.end());
    for (const auto& value : values) {
        host.Errors.clear();
        (host.Control().*row.Setter)(value);
        EXPECT_EQ((host.Control().*row.Getter)(), row.Default) << row.Name;
        EXPECT_EQ(host.Errors, (Errors{NotSetIn(std::string("Let ") + row.Name)}));
        EXPECT_EQ(host.Control().ErrorCode(), 91) << row.Name;
    }
    EXPECT_EQ(host.Driver.Calls, Names{});
    EXPECT_EQ(host.Container.Changed, Names{});
}

template <class Check>
void ForEachProperty(const Check& check) {
    for (const auto& row : IntegerRows())
        check(row);
    for (const auto& row : FloatRows())
        check(row);
    for (const auto& row : FlagRows())
        check(row);
    for (const auto& row : TextRows())
        check(row);
}

TEST(Configuration, TakesStoresPushesAndNotifiesEachAcceptedValue) {
    ForEachProperty([](const auto& row) { ExpectAccepted(row); });
}

TEST(Configuration, RefusesEveryOtherValueWithItsCodeAndKeepsTheOldOne) {
    ForEachProperty([](const auto& row) { ExpectRefused(row); });
}

TEST(Configuration, HoldsTheValueWhenTheDriverFaultsAndDoesNotNotify) {
    ForEachProperty([](const auto& row) { ExpectPushFault(row); });
}

TEST(Configuration, KeepsTheCodeWithoutAnErrorHandler) {
    ForEachProperty([](const auto& row) { ExpectCodeWithoutHandler(row); });
}

TEST(Configuration, IsInertAfterTheTeardown) {
    ForEachProperty([](const auto& row) { ExpectInertAfterTeardown(row); });
}

TEST(Configuration, IsTakenWhileThePortIsOpen) {
    ForEachProperty([](const auto& row) { ExpectTakenWhileOpen(row); });
}

TEST(Configuration, PushesTheStoredValueBeforeItNotifies) {
    ReadyHost host;
    Names order;
    host.Driver.OnCall = [&](const std::string& call) {
        order.push_back(call + " " + std::to_string(host.Control().T3Timeout()) + " " +
                        std::to_string(host.Container.Changed.size()));
    };
    host.Control().T3Timeout(60);
    EXPECT_EQ(order, (Names{"T3 60 0"}));
    EXPECT_EQ(host.Container.Changed, (Names{"T3Timeout"}));
}

TEST(Configuration, HoldsATimeOutRetryThatTheDriverCannotTake) {
    for (const std::int32_t value : {32768, 40000, 86400}) {
        ReadyHost host;
        host.Control().TimeOutRetry(value);
        EXPECT_EQ(host.Control().TimeOutRetry(), value);
        EXPECT_EQ(host.Errors, (Errors{{6, "(Hexmire-Let TimeOutRetry) Overflow", 0}}));
        EXPECT_EQ(host.Control().ErrorCode(), 6);
        EXPECT_EQ(host.Driver.Calls, Names{});
        EXPECT_EQ(host.Container.Changed, Names{});
        host.Control().TimeOutRetry(86401);
        EXPECT_EQ(host.Control().TimeOutRetry(), value);
        host.Control().TimeOutRetry(32767);
        EXPECT_EQ(host.Driver.Calls, (Names{"TimeOutRetry(32767)"}));
        EXPECT_EQ(host.Container.Changed, (Names{"TimeOutRetry"}));
    }
}

TEST(Configuration, NotifiesEvenWhenTheValueStaysTheSame) {
    ReadyHost host;
    host.Control().BaudRate(9600);
    host.Control().BaudRate(9600);
    EXPECT_EQ(host.Container.Changed, (Names{"BaudRate", "BaudRate"}));
    EXPECT_EQ(host.Driver.Calls, (Names{"BaudRate(9600)", "BaudRate(9600)"}));
}

TEST(Configuration, KeepsTheLastCodeUntilAnotherError) {
    ReadyHost host;
    host.Control().DeviceID(40000);
    host.Control().DeviceID(5);
    EXPECT_EQ(host.Control().ErrorCode(), 1047);
    host.Control().T4Timeout(0);
    EXPECT_EQ(host.Control().ErrorCode(), 1052);
}

TEST(Configuration, InsideTheErrorHandlerStillReadsTheOldCode) {
    ReadyHost host;
    Hexmire& control = host.Control();
    control.DeviceID(40000);
    std::vector<std::int32_t> codes;
    control.Events().Error = [&](std::int32_t, const std::string&, std::int32_t) {
        codes.push_back(control.ErrorCode());
    };
    control.T4Timeout(0);
    control.T5Timeout(0);
    EXPECT_EQ(codes, (std::vector<std::int32_t>{1047, 1052}));
}

TEST(Configuration, MayBeCorrectedFromInsideTheErrorHandler) {
    ReadyHost host;
    Hexmire& control = host.Control();
    control.Events().Error = [&](std::int32_t, const std::string&, std::int32_t) {
        control.DeviceID(12);
    };
    control.DeviceID(40000);
    EXPECT_EQ(control.DeviceID(), 12);
    EXPECT_EQ(host.Driver.Calls, (Names{"DeviceID(12)"}));
    EXPECT_EQ(control.ErrorCode(), 1047);
}

TEST(Configuration, StoresTheOuterCodeLastWhenAHandlerCausesAnotherError) {
    ReadyHost host;
    Hexmire& control = host.Control();
    int depth = 0;
    control.Events().Error = [&](std::int32_t, const std::string&, std::int32_t) {
        if (++depth == 1) control.T4Timeout(0);
    };
    control.DeviceID(40000);
    EXPECT_EQ(depth, 2);
    EXPECT_EQ(control.ErrorCode(), 1047);
}

TEST(Configuration, EndsInsideTheErrorHandlerThatTerminatesTheControl) {
    ReadyHost host;
    Hexmire& control = host.Control();
    control.Events().Error = [&](std::int32_t code, const std::string&, std::int32_t) {
        if (code == 1047) control.ControlTerminate();
    };
    control.DeviceID(40000);
    EXPECT_FALSE(host.Driver.Alive);
    EXPECT_EQ(control.ErrorCode(), 1047);
    control.DeviceID(5);
    EXPECT_EQ(control.DeviceID(), 0);
    EXPECT_EQ(control.ErrorCode(), 91);
}

TEST(Configuration, OfTheDeviceIDServesTransactionsMadeAfterwards) {
    ReadyHost host;
    const SECSTransPtr before = host.Control().NewSECSTransaction();
    host.Control().DeviceID(7);
    EXPECT_EQ(before->DeviceID(), 0);
    EXPECT_EQ(host.Control().NewSECSTransaction()->DeviceID(), 7);
    EXPECT_EQ(host.AddTemplate("S1F1", 1, 1)->DeviceID(), 7);
}

}  // namespace
}  // namespace hexmire
