#include "LinkNetwork.h"

#include "MachineRig.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace hexmire::test {

namespace {

constexpr std::array<const char*, 2> kAddresses{"10.0.0.1", "10.0.0.2"};
constexpr std::uint16_t kListenPort = 5'000;
constexpr int kFirstEphemeralPort = 40'000;
constexpr std::uint32_t kMessagesOfAnEnd = 0x100000;

std::string CodeText(link::LinkError code) { return std::to_string(static_cast<int>(code)); }

/// System bytes from the text of an Error that ends with a header.
std::uint32_t SystemBytesOf(const std::string& text) {
    return static_cast<std::uint32_t>(std::stoul(text.substr(text.size() - 8), nullptr, 16));
}

}  // namespace

LinkNetwork::LinkNetwork(const LinkSettings& host, const LinkSettings& equipment)
    : ends_{std::make_unique<End>(host, 11U), std::make_unique<End>(equipment, 97U)} {
    ends_[1]->NextMessage = kMessagesOfAnEnd;
}

// --- commands ------------------------------------------------------------------------------------

void LinkNetwork::Open(int end) {
    ends_[Index(end)]->Machine.Open(now_);
    Settle(end);
}

void LinkNetwork::Close(int end) {
    ends_[Index(end)]->Machine.Close(now_);
    Settle(end);
}

void LinkNetwork::ResetAll(std::array<bool, 2> seenBy) {
    packets_.clear();
    for (std::size_t tcp = 0; tcp < connections_.size(); ++tcp) {
        for (const int end : {0, 1}) {
            Side& side = connections_[tcp].Sides[Index(end)];
            const bool attempt = ends_[Index(end)]->Attempt == static_cast<int>(tcp);
            if (!side.Open && !attempt) continue;
            if (seenBy[Index(end)]) {
                Transmit(attempt ? Kind::Refused : Kind::Reset, static_cast<int>(tcp), 1 - end);
            }
        }
    }
}

void LinkNetwork::Restore() {
    Down = false;
    for (Packet& packet : packets_) {
        packet.Time = std::max(packet.Time, now_);
    }
}

// --- time ----------------------------------------------------------------------------------------

LinkNetwork::Due LinkNetwork::Next() const {
    Due next;
    for (std::size_t index = 0; index < packets_.size() && !Down; ++index) {
        const Packet& packet = packets_[index];
        if (packet.Time < next.Time ||
            (packet.Time == next.Time && packet.Order < packets_[next.Packet].Order)) {
            next = {.Time = packet.Time, .Packet = index};
        }
    }
    for (const int end : {0, 1}) {
        for (const auto& [timer, deadline] : ends_[Index(end)]->Timers) {
            if (deadline < next.Time) next = {.Time = deadline, .End = end, .Timer = timer};
        }
    }
    return next;
}

void LinkNetwork::Step() {
    const Due due = Next();
    if (due.Time == link::TimePoint::max()) throw std::runtime_error("nothing is under way");
    now_ = std::max(now_, due.Time);
    if (due.End < 0) {
        Packet packet = std::move(packets_[due.Packet]);
        packets_.erase(packets_.begin() + static_cast<std::ptrdiff_t>(due.Packet));
        return Deliver(std::move(packet));
    }
    ends_[Index(due.End)]->Timers.erase(due.Timer);
    ends_[Index(due.End)]->Machine.OnTimer(due.Timer, now_);
    Settle(due.End);
}

void LinkNetwork::RunFor(Milliseconds duration) {
    const link::TimePoint end = now_ + duration;
    constexpr int kMostSteps = 200'000;
    for (int steps = 0; Next().Time <= end; ++steps) {
        if (steps == kMostSteps) throw std::runtime_error("time does not go on");
        Step();
    }
    now_ = end;
}

// --- packets -------------------------------------------------------------------------------------

void LinkNetwork::Transmit(Kind kind, int tcp, int from, std::vector<std::uint8_t> bytes) {
    if (Down && (kind == Kind::Syn || kind == Kind::SynAck)) return;
    const int to = 1 - from;
    link::TimePoint& last = At(tcp).LastArrival[Index(to)];
    last = std::max(last, now_ + Delay[Index(from)]);
    packets_.push_back({last, ++order_, kind, tcp, to, std::move(bytes)});
}

void LinkNetwork::Deliver(Packet packet) {
    End& end = *ends_[Index(packet.To)];
    Side& side = At(packet.Tcp).Sides[Index(packet.To)];
    switch (packet.What) {
        case Kind::Syn:
        case Kind::Ack:
            return DeliverToListener(packet);
        case Kind::SynAck:
        case Kind::Refused:
            return DeliverToOpener(packet);
        case Kind::Fin:
        case Kind::Reset:
            return TellEnd(packet.To, packet.Tcp, packet.What == Kind::Reset);
        case Kind::Data:
            break;
    }
    if (!side.Open) return Transmit(Kind::Reset, packet.Tcp, packet.To);
    side.Inbox.insert(side.Inbox.end(), packet.Bytes.begin(), packet.Bytes.end());
    if (end.Live == packet.Tcp) BeginReading(packet.To);
}

void LinkNetwork::DeliverToListener(const Packet& packet) {
    End& end = *ends_[Index(packet.To)];
    Side& side = At(packet.Tcp).Sides[Index(packet.To)];
    if (!end.Listening) {
        side.Open = false;
        return Transmit(
            packet.What == Kind::Syn ? Kind::Refused : Kind::Reset, packet.Tcp, packet.To);
    }
    if (packet.What == Kind::Syn) return Transmit(Kind::SynAck, packet.Tcp, packet.To);
    side.Open = true;
    TellConnected(packet.To, packet.Tcp);
}

void LinkNetwork::DeliverToOpener(const Packet& packet) {
    End& end = *ends_[Index(packet.To)];
    if (end.Attempt != packet.Tcp) return;  // given up meanwhile: the caller never shows
    end.Attempt = -1;
    if (packet.What == Kind::Refused) {
        end.Machine.OnConnectFailed({111, "refused"}, now_);
        return Settle(packet.To);
    }
    At(packet.Tcp).Sides[Index(packet.To)].Open = true;
    Transmit(Kind::Ack, packet.Tcp, packet.To);
    TellConnected(packet.To, packet.Tcp);
}

void LinkNetwork::TellConnected(int end, int tcp) {
    End& one = *ends_[Index(end)];
    const bool isCaller = At(tcp).Opener != end;
    const auto ephemeral = static_cast<std::uint16_t>(kFirstEphemeralPort + tcp);
    one.Candidate = tcp;
    one.Machine.OnConnected({kAddresses[Index(end)],
                             isCaller ? kListenPort : ephemeral,
                             kAddresses[Index(1 - end)],
                             isCaller ? ephemeral : kListenPort,
                             isCaller},
                            now_);
    Settle(end);
    one.Candidate = -1;
}

void LinkNetwork::TellEnd(int end, int tcp, bool reset) {
    End& one = *ends_[Index(end)];
    Side& side = At(tcp).Sides[Index(end)];
    if (reset) side.FinSent = true;
    if (one.Live != tcp) {
        side.Ended = true;
        return;
    }
    reset ? one.Machine.OnLost({104, "reset"}, now_) : one.Machine.OnClosed(now_);
    Settle(end);
}

void LinkNetwork::CloseSocket(int end, int& tcp) {
    if (tcp < 0) return;
    Side& side = At(tcp).Sides[Index(end)];
    if (side.Open && !std::exchange(side.FinSent, true)) Transmit(Kind::Fin, tcp, end);
    side.Open = false;
    tcp = -1;
}

/// What came before the connection was adopted is read now.
void LinkNetwork::BeginReading(int end) {
    End& one = *ends_[Index(end)];
    const int live = one.Live;
    Side& side = At(live).Sides[Index(end)];
    if (!side.Inbox.empty()) {
        const auto bytes = std::exchange(side.Inbox, {});
        one.Machine.OnBytes(bytes, now_);
        Settle(end);
    }
    if (one.Live == live && std::exchange(side.Ended, false)) TellEnd(end, live, false);
}

// --- the shells ----------------------------------------------------------------------------------

void LinkNetwork::Settle(int end) {
    End& one = *ends_[Index(end)];
    const int before = one.Live;
    std::vector<link::Action> actions;
    for (;;) {
        one.Machine.TakeActions(actions);
        for (const link::Action& action : actions) {
            Perform(end, action);
        }
        if (!actions.empty()) continue;
        if (!one.Machine.HasOutput()) break;
        std::array<std::span<const std::uint8_t>, 16> views;
        const std::size_t filled = one.Machine.Output(views);
        std::vector<std::uint8_t> bytes;
        for (std::size_t view = 0; view < filled; ++view) {
            bytes.insert(bytes.end(), views[view].begin(), views[view].end());
        }
        const std::size_t count = bytes.size();
        Transmit(Kind::Data, one.Live, end, std::move(bytes));
        one.Machine.OnWritten(count, now_);
    }
    if (one.Live >= 0 && one.Live != before) BeginReading(end);
}

void LinkNetwork::Perform(int end, const link::Action& action) {
    End& one = *ends_[Index(end)];
    std::visit(
        Overloaded{
            [&](const link::StartTimer& timer) { one.Timers[timer.Id] = now_ + timer.Delay; },
            [&](const link::StopTimer& timer) { one.Timers.erase(timer.Id); },
            [&](const link::Listen&) { one.Listening = true, one.Machine.OnListening(now_); },
            [&](const link::StopListening&) { one.Listening = false; },
            [&](const link::Connect&) {
                one.Attempt = static_cast<int>(connections_.size());
                connections_.push_back({.Opener = end, .Sides = {}, .LastArrival = {}});
                Transmit(Kind::Syn, one.Attempt, end);
            },
            [&](const link::StopConnecting&) { one.Attempt = -1; },
            [&](const link::HoldConnection&) { one.Held = one.Candidate; },
            [&](const link::AdoptHeld&) { one.Live = std::exchange(one.Held, -1); },
            [&](const link::RefuseHeld&) { CloseSocket(end, one.Held); },
            [&](const link::AdoptConnection&) {
                CloseSocket(end, one.Live);
                one.Live = one.Candidate;
            },
            [&](const link::RefuseConnection&) { CloseSocket(end, one.Candidate); },
            [&](const link::CloseConnection&) {
                one.Attempt = -1;
                CloseSocket(end, one.Live);
            },
            [&](const link::ShutdownSend&) {
                At(one.Live).Sides[Index(end)].FinSent = true;
                Transmit(Kind::Fin, one.Live, end);
            },
            [&](const link::RaiseConnect&) {
                if (std::exchange(one.Seen.Connected, true)) throw std::runtime_error("Connect");
                ++one.Seen.Connects;
                Talk(end);
            },
            [&](const link::RaiseDisconnect& event) {
                if (!std::exchange(one.Seen.Connected, false)) {
                    throw std::runtime_error("Disconnect");
                }
                one.Seen.Errors.push_back("D" + CodeText(event.Code));
                for (const auto& [message, count] : one.Seen.Sent) {
                    one.Seen.Broken.insert(message);
                }
            },
            [&](const link::RaiseError& event) {
                one.Seen.Errors.push_back(CodeText(event.Code));
                if (event.Code == link::LinkError::SendAborted) {
                    one.Seen.Aborted.insert(SystemBytesOf(event.Text));
                }
            },
            [&](const link::RaiseSent& event) {
                ++one.Seen.Sent[hsms::DecodeHeader(event.Header).SystemBytes];
            },
            [&](const link::RaiseReceived& event) { Answer(end, event); },
            [](const auto&) {},  // bytes that wait are written anyway, reading never pauses here
        },
        action);
}

/// A new session begins with two primaries.
void LinkNetwork::Talk(int end) {
    for (int count = 0; count < 2; ++count) {
        const std::uint32_t message = ++ends_[Index(end)]->NextMessage;
        Hand(end, {.SessionID = 5, .Byte2 = 0x81, .Byte3 = 1, .SystemBytes = message});
    }
}

void LinkNetwork::Answer(int end, const link::RaiseReceived& message) {
    End& one = *ends_[Index(end)];
    hsms::FrameHeader header = hsms::DecodeHeader(message.Header);
    ++one.Seen.Taken[header.SystemBytes];
    one.Machine.OnConsumed(1, now_);
    if (!header.IsPrimary()) return;
    header.Byte2 = header.Stream();
    ++header.Byte3;
    Hand(end, header);
}

void LinkNetwork::Hand(int end, const hsms::FrameHeader& header) {
    End& one = *ends_[Index(end)];
    if (one.Machine.StateName() != "SELECTED") return;
    one.Seen.Accepted.insert(header.SystemBytes);
    one.Machine.Send(hsms::EncodeHeader(header), {}, now_);
}

// --- what has come of it -------------------------------------------------------------------------

bool LinkNetwork::IsOneLink() const {
    const auto open = std::count_if(connections_.begin(), connections_.end(), [](const Tcp& tcp) {
        return tcp.Sides[0].Open || tcp.Sides[1].Open;
    });
    const auto settled = [](const End& end) {
        return end.Machine.StateName() == "SELECTED" && end.Held < 0 && end.Attempt < 0;
    };
    return open == 1 && settled(*ends_[0]) && settled(*ends_[1]) &&
           ends_[0]->Live == ends_[1]->Live && ends_[0]->Seen.Connected && ends_[1]->Seen.Connected;
}

int LinkNetwork::Opener(int end) const {
    const int live = ends_[Index(end)]->Live;
    return live < 0 ? -1 : connections_[Index(live)].Opener;
}

}  // namespace hexmire::test
