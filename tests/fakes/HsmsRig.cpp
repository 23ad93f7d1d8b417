#include "HsmsRig.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <variant>

namespace hexmire::test {

namespace {

using std::chrono::milliseconds;

std::string Join(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) {
        text += (text.empty() ? "" : "; ") + line;
    }
    return text;
}

std::vector<std::uint8_t> AsFrame(const link::HeaderBytes& header,
                                  std::span<const std::uint8_t> body) {
    std::vector<std::uint8_t> frame(hsms::kLengthBytes + header.size() + body.size());
    const auto bodyAt = std::copy(header.begin(), header.end(), frame.begin() + hsms::kLengthBytes);
    std::copy(body.begin(), body.end(), bodyAt);
    return frame;
}

template <class... Cases>
struct Overloaded : Cases... {
    using Cases::operator()...;
};
template <class... Cases>
Overloaded(Cases...) -> Overloaded<Cases...>;

}  // namespace

HsmsRig::HsmsRig(const LinkSettings& settings)
    : machine_(settings, statistics_), now_(std::chrono::hours(1)) {}

LinkSettings HsmsRig::Settings(std::int32_t portType, bool active) {
    LinkSettings settings;
    settings.PortType = portType;
    settings.HSMSConnectionMode = active ? 1 : 2;
    settings.DeviceID = 5;
    settings.LocalIPAddress = "10.0.0.1";
    settings.RemoteIPAddress = "10.0.0.2";
    settings.AutoReconnect = true;
    return settings;
}

std::string HsmsRig::Do(std::string_view line) {
    lines_.clear();
    Execute(line);
    return Take();
}

std::string HsmsRig::Do(const std::vector<std::string>& lines) {
    std::string last;
    for (const std::string& line : lines) {
        last = Do(line);
    }
    return last;
}

std::string HsmsRig::Take() {
    std::string text = Join(lines_);
    lines_.clear();
    return text;
}

std::string HsmsRig::Timers() const {
    std::vector<std::string> running;
    for (const auto& [id, timer] : timers_) {
        running.push_back(TimerName(id) + ":" + std::to_string(timer.Delay.count()));
    }
    std::string text = Join(running);
    std::erase(text, ';');
    return text;
}

void HsmsRig::Feed(std::span<const std::uint8_t> bytes) {
    machine_.OnBytes(bytes, now_);
    Settle();
}

void HsmsRig::Configure(const LinkSettings& settings) {
    machine_.Configure(settings, now_);
    Settle();
}

void HsmsRig::Execute(std::string_view line) {
    const std::size_t blank = std::min(line.find(' '), line.size());
    ExecuteWord(std::string(line.substr(0, blank)),
                std::string(line.substr(std::min(blank + 1, line.size()))));
    Settle();
}

void HsmsRig::ExecuteWord(const std::string& word, const std::string& rest) {
    const auto number = [&rest] { return std::stoul(rest); };
    const auto failure = [&] { return link::SystemFailure{static_cast<int>(number()), "failure"}; };
    if (word == "open") return machine_.Open(now_);
    if (word == "close") return machine_.Close(now_);
    if (word == "connected") {
        return machine_.OnConnected({"10.0.0.1", 40'000, "10.0.0.2", 5'000, !trying_}, now_);
    }
    if (word == "self-connected") {
        return machine_.OnConnected({"10.0.0.2", 5'000, "10.0.0.2", 5'000}, now_);
    }
    if (word == "caller") {
        return machine_.OnConnected({"10.0.0.1", 5'000, rest, 40'000, true}, now_);
    }
    if (word == "connect-failed") {
        trying_ = false;
        return machine_.OnConnectFailed(failure(), now_);
    }
    if (word == "listen-failed") return machine_.OnListenFailed(failure(), now_);
    if (word == "listening") return machine_.OnListening(now_);
    if (word == "accept-failed") return machine_.OnAcceptFailed(failure(), now_);
    if (word == "rx") return machine_.OnBytes(FrameBytes(rest), now_);
    if (word == "rx-bytes") return machine_.OnBytes(HexToBytes(rest), now_);
    if (word == "rx-early") {
        std::array<std::span<const std::uint8_t>, 64> views;
        (void)machine_.Output(views);
        return machine_.OnBytes(FrameBytes(rest), now_);
    }
    if (word == "fin") return machine_.OnClosed(now_);
    if (word == "reset") return machine_.OnLost({104, "reset"}, now_);
    if (word == "send") {
        const auto frame = FrameBytes(rest);
        const std::span<const std::uint8_t> bytes(frame);
        return machine_.Send(bytes.subspan(4, 10), bytes.subspan(14), now_);
    }
    if (word == "fire") {
        timers_.erase(TimerNamed(rest));
        return machine_.OnTimer(TimerNamed(rest), now_);
    }
    if (word == "advance") return Advance(milliseconds(number()));
    if (word == "block") return void(blocked_ = true);
    if (word == "unblock") return void(blocked_ = false);
    if (word == "written") {
        shown_ -= number();
        return machine_.OnWritten(number(), now_);
    }
    if (word == "consumed") {
        waiting_ -= number();
        return machine_.OnConsumed(number(), now_);
    }
    throw std::invalid_argument("no such line: " + word);
}

void HsmsRig::Advance(milliseconds duration) {
    const link::TimePoint end = now_ + duration;
    for (;;) {
        const auto next = std::min_element(
            timers_.begin(), timers_.end(), [](const auto& left, const auto& right) {
                return left.second.Deadline < right.second.Deadline;
            });
        if (next == timers_.end() || next->second.Deadline > end) break;
        now_ = next->second.Deadline;
        const link::TimerId id = next->first;
        timers_.erase(next);
        machine_.OnTimer(id, now_);
        Settle();
    }
    now_ = end;
}

/// Performs actions until there are none, and writes what is offered unless writes are blocked.
void HsmsRig::Settle() {
    std::vector<link::Action> actions;
    bool tried = false;
    for (;;) {
        machine_.TakeActions(actions);
        for (const link::Action& action : actions) {
            Show(action);
        }
        if (actions.empty()) {
            if (!machine_.HasOutput() || (blocked_ && tried)) break;
            tried = true;
            machine_.OnWritten(blocked_ ? 0 : std::exchange(shown_, 0), now_);
        }
    }
    if (Consumes && waiting_ > 0) {
        machine_.OnConsumed(std::exchange(waiting_, 0), now_);
        Settle();
    }
    Check();
}

/// Shows the frames that the machine has just announced, and checks that they are whole.
void HsmsRig::ShowOutput(std::size_t count) {
    std::vector<std::span<const std::uint8_t>> views(16);
    std::size_t filled = machine_.Output(views);
    while (filled == views.size()) {
        views.resize(views.size() * 2);
        filled = machine_.Output(views);
    }
    std::size_t offset = 0;
    for (std::size_t index = 0; index < filled; ++index) {
        if (offset == shown_ && views[index].size() == count) {
            lines_.push_back("tx " + FrameNotation(views[index]));
            break;
        }
        offset += views[index].size();
    }
    shown_ += count;
}

void HsmsRig::Show(const link::Action& action) {
    const auto add = [this](std::string text) { lines_.push_back(std::move(text)); };
    const auto told = [&](const std::string& kind, link::LinkError code, const std::string& text) {
        LastText = text;
        add(kind + " " + std::to_string(static_cast<int>(code)) +
            (FullTexts ? " \"" + text + "\"" : ""));
    };
    std::visit(
        Overloaded{
            [&](const link::StartTimer& one) {
                timers_[one.Id] = {now_ + one.Delay, one.Delay};
            },
            [&](const link::StopTimer& one) { timers_.erase(one.Id); },
            [&](const link::Listen& one) {
                add("listen " + one.Address + ":" + std::to_string(one.Port));
            },
            [&](const link::StopListening&) { add("stop-listening"); },
            [&](const link::ResumeAccepting&) { add("resume-accepting"); },
            [&](const link::Connect& one) {
                trying_ = true;
                add("connect " + one.RemoteAddress + ":" + std::to_string(one.RemotePort) +
                    " from " + one.LocalAddress);
            },
            [&](const link::OpenSerial& one) {
                add("open " + one.Device + " at " + std::to_string(one.BaudRate));
            },
            [&](const link::StopConnecting&) {
                trying_ = false;
                add("stop-connecting");
            },
            [&](const link::HoldConnection&) { add("hold"); },
            [&](const link::RefuseHeld&) { add("refuse-held"); },
            [&](const link::AdoptHeld&) {
                connected_ = true;
                shown_ = 0;
                add("adopt-held");
            },
            [&](const link::AdoptConnection&) {
                connected_ = true;
                trying_ = false;
                shown_ = 0;
                add("adopt");
            },
            [&](const link::RefuseConnection&) { add("refuse"); },
            [&](const link::CloseConnection&) {
                connected_ = trying_ = false;
                shown_ = 0;
                add("close");
            },
            [&](const link::ShutdownSend&) { add("shutdown"); },
            [&](const link::SendBytes& one) {
                if (!connected_) Violation = "sends without a connection";
                ShowOutput(one.Count);
            },
            [&](const link::PauseReading&) { add("pause"); },
            [&](const link::ResumeReading&) { add("resume"); },
            [&](const link::RaiseConnect&) {
                if (std::exchange(sessionOpen_, true)) Violation = "Connect twice";
                add("Connect");
            },
            [&](const link::RaiseDisconnect& one) {
                if (!std::exchange(sessionOpen_, false)) Violation = "Disconnect twice";
                told("Disconnect", one.Code, one.Text);
            },
            [&](const link::RaiseError& one) { told("Error", one.Code, one.Text); },
            [&](const link::RaiseSent& one) {
                if (!sessionOpen_) Violation = "Sent without a session";
                add("Sent " + FrameNotation(AsFrame(one.Header,
                                                    std::span(one.Bytes).subspan(one.BodyOffset))));
            },
            [&](const link::RaiseBlock&) { Violation = "a block of SECS-I"; },
            [&](const link::RaiseReceived& one) {
                if (!sessionOpen_) Violation = "Received without a session";
                ++waiting_;
                add("Received " + FrameNotation(AsFrame(one.Header, one.Body)));
            },
        },
        action);
}

void HsmsRig::Check() {
    const bool linkTimer = Runs(link::TimerId::T6) || Runs(link::TimerId::T7) ||
                           Runs(link::TimerId::T8) || Runs(link::TimerId::FrameCap) ||
                           Runs(link::TimerId::Linktest) || Runs(link::TimerId::WriteStall) ||
                           Runs(link::TimerId::Linger);
    if (!connected_ && linkTimer) Violation = "timers without a connection: " + Timers();
    if (!connected_ && sessionOpen_) Violation = "a session without a connection";
    if (!connected_ && machine_.HasOutput()) Violation = "output without a connection";
    if (connected_ && State() == "CLOSED") Violation = "CLOSED with a connection";
    const bool attempt = Runs(link::TimerId::T5) || Runs(link::TimerId::ConnectTimeout);
    if (attempt && State() != "NOT CONNECTED") Violation = "attempts in " + State();
    if (Runs(link::TimerId::T7) != (State() == "NOT SELECTED")) Violation = "T7 in " + State();
}

}  // namespace hexmire::test
