#pragma once

#include "../fakes/TestHost.h"

#include <string>
#include <vector>

namespace hexmire::fakes {

using Names = std::vector<std::string>;
using Errors = std::vector<ErrorEvent>;

/// A host that has forgotten what construction did.
struct ReadyHost : TestHost {
    explicit ReadyHost(bool messageLog = true) : TestHost(messageLog) {
        Driver.Calls.clear();
        Driver.StatusReads = 0;
    }
};

/// A routine of the control that meets a missing object.
inline ErrorEvent NotSetIn(const std::string& routine) {
    return {91, "(Hexmire-" + routine + ") Object variable or With block variable not set", 0};
}

/// A routine of the control that meets a failure of the recording driver.
inline ErrorEvent DriverFailedIn(const std::string& routine) {
    return {-2147467259, "(Hexmire-" + routine + ") driver failed", 0};
}

/// The first `count` of a list.
inline Names FirstOf(const Names& names, std::size_t count) {
    return {names.begin(), names.begin() + static_cast<std::ptrdiff_t>(count)};
}

/// The member of the driver that a recorded call names.
inline std::string MemberOf(const std::string& call) { return call.substr(0, call.find('(')); }

/// What the opening of the port pushes while every setting has its default.
inline const Names kDefaultPushes{"BaudRate(9600)",
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
                                  "TimeOutRetry(0)"};

/// The same list with more calls behind it.
inline Names DefaultPushesAnd(const Names& more) {
    Names calls = kDefaultPushes;
    calls.insert(calls.end(), more.begin(), more.end());
    return calls;
}

}  // namespace hexmire::fakes
