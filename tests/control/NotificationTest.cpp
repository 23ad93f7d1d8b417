#include "ReadyHost.h"
#include <gtest/gtest.h>

#include <stdexcept>

namespace hexmire {
namespace {

using namespace fakes;

TEST(Notification, ComesWhenTheDriverHasTheValue) {
    ReadyHost host;
    Names seen;
    host.Container.OnCall = [&](const std::string& property) {
        seen.push_back(property + " " + host.Driver.Calls.back() + " " +
                       std::to_string(host.Control().T3Timeout()));
    };
    host.Control().T3Timeout(60);
    EXPECT_EQ(seen, (Names{"T3Timeout T3(60) 60"}));
}

TEST(Notification, ThatThrowsIsAFaultOfTheSetter) {
    ReadyHost host;
    host.Container.OnCall = [](const std::string&) { throw std::runtime_error("container bug"); };
    host.Control().DeviceID(4);
    EXPECT_EQ(host.Control().DeviceID(), 4);
    EXPECT_EQ(host.Driver.Calls, (Names{"DeviceID(4)"}));
    EXPECT_EQ(host.Errors, (Errors{{440, "(Hexmire-Let DeviceID) container bug", 0}}));
    EXPECT_EQ(host.Control().ErrorCode(), 440);
}

TEST(Notification, MaySetTheSamePropertyAgain) {
    ReadyHost host;
    host.Container.OnCall = [&](const std::string&) {
        if (host.Container.Changed.size() == 1) host.Control().DeviceID(9);
    };
    host.Control().DeviceID(4);
    EXPECT_EQ(host.Control().DeviceID(), 9);
    EXPECT_EQ(host.Container.Changed, (Names{"DeviceID", "DeviceID"}));
    EXPECT_EQ(host.Driver.Calls, (Names{"DeviceID(4)", "DeviceID(9)"}));
}

TEST(Notification, MaySetAnotherPropertyWrongly) {
    ReadyHost host;
    host.Container.OnCall = [&](const std::string&) { host.Control().T4Timeout(0); };
    host.Control().T3Timeout(4);
    EXPECT_EQ(host.Errors,
              (Errors{{1052,
                       "(Hexmire-Let T4Timeout) The T4 value must be between 1 and 120 inclusive.",
                       0}}));
    EXPECT_EQ(host.Control().T3Timeout(), 4);
    EXPECT_EQ(host.Control().ErrorCode(), 1052);
}

TEST(Notification, MayOpenThePortWithTheNewValue) {
    ReadyHost host;
    host.Container.OnCall = [&](const std::string&) { host.Control().OpenPort(); };
    host.Control().SerialPort("COM2");
    EXPECT_EQ(host.Driver.Calls.front(), "SerialPort(COM2)");
    EXPECT_EQ(host.Driver.Calls.at(14), "SerialPort(COM2)");
    EXPECT_EQ(host.Driver.Calls.back(), "OpenLink()");
}

TEST(Notification, MayTerminateTheControl) {
    ReadyHost host;
    host.Container.OnCall = [&](const std::string& call) {
        if (call == "DeviceID") host.Control().ControlTerminate();
    };
    host.Control().DeviceID(4);
    EXPECT_FALSE(host.Driver.Alive);
    EXPECT_EQ(host.Raised, Names{});
    EXPECT_EQ(host.Control().DeviceID(), 4);
}

}  // namespace
}  // namespace hexmire
