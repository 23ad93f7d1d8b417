#pragma once

// Getting connected, whatever is spoken then: a connector whose actions are read as texts.
#include <hexmire/driver/Connector.h>

#include <gtest/gtest.h>

#include <set>

namespace hexmire::link::connector_testing {

using namespace std::chrono_literals;
using Milliseconds = std::chrono::milliseconds;
using Verdict = Connector::Verdict;

constexpr std::int32_t kActive = 1;
constexpr std::int32_t kPassive = 2;
constexpr std::int32_t kAlternating = 3;

inline const Endpoints kOwn{"10.0.0.1", 40'000, "10.0.0.2", 5'000, false};
inline const Endpoints kPeer{"10.0.0.1", 5'000, "10.0.0.2", 40'001, true};
inline const Endpoints kStranger{"10.0.0.1", 5'000, "10.0.0.9", 40'002, true};

inline std::string ShowTimer(TimerId id) {
    switch (id) {
        case TimerId::T5:
            return "T5";
        case TimerId::ConnectTimeout:
            return "timeout";
        case TimerId::AcceptRetry:
            return "accept-retry";
        case TimerId::Crossing:
            return "crossing";
        default:
            return "other timer";
    }
}

inline std::string Show(const Action& action) {
    if (const auto* one = std::get_if<StartTimer>(&action)) {
        return "start " + ShowTimer(one->Id) + " " + std::to_string(one->Delay.count());
    }
    if (const auto* one = std::get_if<StopTimer>(&action)) return "stop " + ShowTimer(one->Id);
    if (const auto* one = std::get_if<Listen>(&action)) {
        return "listen " + one->Address + ":" + std::to_string(one->Port);
    }
    if (const auto* one = std::get_if<Connect>(&action)) {
        return "connect " + one->RemoteAddress + ":" + std::to_string(one->RemotePort) + " from " +
               one->LocalAddress;
    }
    if (const auto* one = std::get_if<OpenSerial>(&action)) {
        return "open " + one->Device + " " + std::to_string(one->BaudRate);
    }
    if (const auto* one = std::get_if<RaiseError>(&action)) {
        return "Error " + std::to_string(static_cast<int>(one->Code)) + " " + one->Text;
    }
    if (std::holds_alternative<StopListening>(action)) return "stop-listening";
    if (std::holds_alternative<ResumeAccepting>(action)) return "resume-accepting";
    if (std::holds_alternative<StopConnecting>(action)) return "stop-connecting";
    if (std::holds_alternative<HoldConnection>(action)) return "hold";
    if (std::holds_alternative<AdoptHeld>(action)) return "adopt-held";
    if (std::holds_alternative<RefuseHeld>(action)) return "refuse-held";
    if (std::holds_alternative<AdoptConnection>(action)) return "adopt";
    if (std::holds_alternative<RefuseConnection>(action)) return "refuse";
    if (std::holds_alternative<CloseConnection>(action)) return "close";
    return "another action";
}

class ConnectorTest : public testing::Test {
protected:
    ConnectorTest() {
        Settings.PortType = 4;
        Settings.LocalIPAddress = "10.0.0.1";
        Settings.RemoteIPAddress = "10.0.0.2";
        At(0ms);
    }

    void Use(std::int32_t mode, bool host = true) {
        Settings.HSMSConnectionMode = mode;
        Settings.HostRole = host;
    }
    void At(Milliseconds time) { Output.Now(TimePoint(1h) + time); }
    /// Everything that has been asked for since the last call.
    std::string Take() {
        std::vector<Action> actions;
        Output.TakeActions(actions);
        std::string text;
        for (const Action& action : actions) {
            text += (text.empty() ? "" : "; ") + Show(action);
        }
        return text;
    }
    std::string Begin() {
        Link.Begin();
        return Take();
    }
    std::string FailAt(Milliseconds time, int number = 111) {
        At(time);
        EXPECT_EQ(Link.OnConnectFailed({number, "refused"}), Verdict::Again);
        return Take();
    }

    LinkSettings Settings;
    LinkStatistics Statistics;
    LinkOutput Output{Statistics};
    Connector Link{Settings, Output, Statistics, 7};
};

inline const std::string kConnect = "connect 10.0.0.2:5000 from 10.0.0.1; start timeout 10000";
inline const std::string kListen = "listen 10.0.0.1:5000";
inline const std::string kRefused = "Error 3050 Connect failed: 10.0.0.2:5000, refused (111)";

}  // namespace hexmire::link::connector_testing
