#include "MachineRig.h"

#include <hexmire/support/HexBytes.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <stdexcept>
#include <utility>
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

constexpr std::array<std::string_view, link::kTimerCount> kTimers{"T1",
                                                                  "T2",
                                                                  "T4",
                                                                  "LineCap",
                                                                  "T5",
                                                                  "T6",
                                                                  "T7",
                                                                  "T8",
                                                                  "FrameCap",
                                                                  "Linktest",
                                                                  "ConnectTimeout",
                                                                  "WriteStall",
                                                                  "Linger",
                                                                  "AcceptRetry",
                                                                  "Crossing",
                                                                  "ErrorWindow"};

}  // namespace

MachineRig::MachineRig(link::ILinkMachine& machine)
    : machine_(machine), now_(std::chrono::hours(1)) {}

std::string MachineRig::Do(std::string_view line) {
    lines_.clear();
    Execute(line);
    return Take();
}

std::string MachineRig::Do(const std::vector<std::string>& lines) {
    std::string last;
    for (const std::string& line : lines) {
        last = Do(line);
    }
    return last;
}

std::string MachineRig::Take() {
    std::string text = Join(lines_);
    lines_.clear();
    return text;
}

std::string MachineRig::Timers() const {
    std::vector<std::string> running;
    for (const auto& [id, timer] : timers_) {
        running.push_back(TimerName(id) + ":" + std::to_string(timer.Delay.count()));
    }
    std::string text = Join(running);
    std::erase(text, ';');
    return text;
}

void MachineRig::Feed(std::span<const std::uint8_t> bytes) {
    machine_.OnBytes(bytes, now_);
    Settle();
}

void MachineRig::Configure(const LinkSettings& settings) {
    machine_.Configure(settings, now_);
    Settle();
}

void MachineRig::Execute(std::string_view line) {
    const std::size_t blank = std::min(line.find(' '), line.size());
    ExecuteWord(std::string(line.substr(0, blank)),
                std::string(line.substr(std::min(blank + 1, line.size()))));
    Settle();
}

void MachineRig::ExecuteWord(const std::string& word, const std::string& rest) {
    const auto number = [&rest] { return std::stoul(rest); };
    if (word == "open") return machine_.Open(now_);
    if (word == "close") return machine_.Close(now_);
    if (word == "rx-bytes") return machine_.OnBytes(HexToBytes(rest), now_);
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
    if (ExecuteConnection(word, rest) || ExecuteOwn(word, rest)) return;
    throw std::invalid_argument("no such line: " + word);
}

bool MachineRig::ExecuteConnection(const std::string& word, const std::string& rest) {
    const auto failure = [&](bool permanent = false) {
        trying_ = false;
        return link::SystemFailure{
            .Number = std::stoi(rest),
            .Text = "failure",
            .Code = permanent ? link::LinkError::SerialOpenFailed : link::LinkError::ConnectFailed,
            .IsPermanent = permanent};
    };
    if (word == "connected") {
        machine_.OnConnected({"10.0.0.1", 40'000, "10.0.0.2", 5'000, !trying_}, now_);
    } else if (word == "self-connected") {
        machine_.OnConnected({"10.0.0.2", 5'000, "10.0.0.2", 5'000}, now_);
    } else if (word == "caller") {
        machine_.OnConnected({"10.0.0.1", 5'000, rest, 40'000, true}, now_);
    } else if (word == "connect-failed") {
        machine_.OnConnectFailed(failure(), now_);
    } else if (word == "connect-hopeless") {
        machine_.OnConnectFailed(failure(true), now_);
    } else if (word == "listen-failed") {
        machine_.OnListenFailed({std::stoi(rest), "failure"}, now_);
    } else if (word == "listening") {
        machine_.OnListening(now_);
    } else if (word == "accept-failed") {
        machine_.OnAcceptFailed({std::stoi(rest), "failure"}, now_);
    } else if (word == "fin") {
        machine_.OnClosed(now_);
    } else if (word == "reset") {
        machine_.OnLost({104, "reset"}, now_);
    } else {
        return false;
    }
    return true;
}

void MachineRig::Advance(milliseconds duration) {
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
void MachineRig::Settle() {
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

/// Shows the writes that the machine has just announced, and checks that they are whole.
void MachineRig::ShowOutput(std::size_t count) {
    std::vector<std::span<const std::uint8_t>> views(16);
    std::size_t filled = machine_.Output(views);
    while (filled == views.size()) {
        views.resize(views.size() * 2);
        filled = machine_.Output(views);
    }
    std::size_t offset = 0;
    for (std::size_t index = 0; index < filled; ++index) {
        if (offset == shown_ && views[index].size() == count) {
            Add("tx " + WriteNotation(views[index]));
            break;
        }
        offset += views[index].size();
    }
    shown_ += count;
}

// A row for each kind of action.
// NOLINTNEXTLINE(readability-function-size)
void MachineRig::Show(const link::Action& action) {
    const auto told = [&](const std::string& kind, link::LinkError code, const std::string& text) {
        LastText = text;
        Add(kind + " " + std::to_string(static_cast<int>(code)) +
            (FullTexts ? " \"" + text + "\"" : ""));
    };
    std::visit(Overloaded{
                   [&](const link::StartTimer& one) {
                       timers_[one.Id] = {now_ + one.Delay, one.Delay};
                   },
                   [&](const link::StopTimer& one) { timers_.erase(one.Id); },
                   [&](const link::Listen& one) {
                       Add("listen " + one.Address + ":" + std::to_string(one.Port));
                   },
                   [&](const link::StopListening&) { Add("stop-listening"); },
                   [&](const link::ResumeAccepting&) { Add("resume-accepting"); },
                   [&](const link::Connect& one) {
                       trying_ = true;
                       Add("connect " + one.RemoteAddress + ":" + std::to_string(one.RemotePort) +
                           " from " + one.LocalAddress);
                   },
                   [&](const link::OpenSerial& one) {
                       trying_ = true;
                       Add("open " + one.Device + " at " + std::to_string(one.BaudRate));
                   },
                   [&](const link::StopConnecting&) {
                       trying_ = false;
                       Add("stop-connecting");
                   },
                   [&](const link::HoldConnection&) { Add("hold"); },
                   [&](const link::RefuseHeld&) { Add("refuse-held"); },
                   [&](const link::AdoptHeld&) {
                       connected_ = true;
                       shown_ = 0;
                       Add("adopt-held");
                   },
                   [&](const link::AdoptConnection&) {
                       connected_ = true;
                       trying_ = false;
                       shown_ = 0;
                       Add("adopt");
                   },
                   [&](const link::RefuseConnection&) { Add("refuse"); },
                   [&](const link::CloseConnection&) {
                       connected_ = trying_ = false;
                       shown_ = 0;
                       Add("close");
                   },
                   [&](const link::ShutdownSend&) { Add("shutdown"); },
                   [&](const link::SendBytes& one) {
                       if (!connected_) Violation = "sends without a connection";
                       ShowOutput(one.Count);
                   },
                   [&](const link::PauseReading&) { Add("pause"); },
                   [&](const link::ResumeReading&) { Add("resume"); },
                   [&](const link::RaiseConnect&) {
                       if (std::exchange(sessionOpen_, true)) Violation = "Connect twice";
                       Add("Connect");
                   },
                   [&](const link::RaiseDisconnect& one) {
                       if (!std::exchange(sessionOpen_, false)) Violation = "Disconnect twice";
                       told("Disconnect", one.Code, one.Text);
                   },
                   [&](const link::RaiseError& one) { told("Error", one.Code, one.Text); },
                   [&](const link::RaiseSent& one) {
                       if (!sessionOpen_) Violation = "Sent without a session";
                       Add("Sent " + MessageNotation(one.Header,
                                                     std::span(one.Bytes).subspan(one.BodyOffset)));
                   },
                   [&](const link::RaiseBlock& one) {
                       if (!sessionOpen_) Violation = "a block without a session";
                       ShowBlock(one.Bytes);
                   },
                   [&](const link::RaiseReceived& one) {
                       if (!sessionOpen_) Violation = "Received without a session";
                       ++waiting_;
                       Add("Received " + MessageNotation(one.Header, one.Body));
                   },
               },
               action);
}

void MachineRig::Check() {
    using enum link::TimerId;
    for (const link::TimerId id :
         {T1, T2, T4, LineCap, T6, T7, T8, FrameCap, Linktest, WriteStall, Linger}) {
        if (!connected_ && Runs(id)) Violation = "timers without a connection: " + Timers();
    }
    if (!connected_ && sessionOpen_) Violation = "a session without a connection";
    if (!connected_ && machine_.HasOutput()) Violation = "output without a connection";
    if (connected_ && State() == "CLOSED") Violation = "CLOSED with a connection";
    if ((Runs(T5) || Runs(ConnectTimeout)) && State() != "NOT CONNECTED") {
        Violation = "attempts in " + State();
    }
    CheckOwn();
}

std::vector<std::uint8_t> HexToBytes(std::string_view hex) {
    std::vector<std::uint8_t> bytes;
    int high = -1;
    for (const char one : hex) {
        const int digit = HexDigitValue(one);
        if (digit < 0) continue;
        if (high < 0) {
            high = digit;
        } else {
            bytes.push_back(static_cast<std::uint8_t>(high * 16 + digit));
            high = -1;
        }
    }
    return bytes;
}

std::string Hex(unsigned value, int digits) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "%0*X", digits, value);
    return text.data();
}

link::TimerId TimerNamed(std::string_view name) {
    for (std::size_t index = 0; index < kTimers.size(); ++index) {
        if (kTimers[index] == name) return static_cast<link::TimerId>(index);
    }
    throw std::invalid_argument("no timer: " + std::string(name));
}

std::string TimerName(link::TimerId id) {
    return std::string(kTimers.at(static_cast<std::size_t>(id)));
}

}  // namespace hexmire::test
