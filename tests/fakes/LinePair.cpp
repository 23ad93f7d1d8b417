#include "LinePair.h"

#include "Secs1Rig.h"

#include <algorithm>
#include <array>
#include <utility>
#include <variant>

namespace hexmire::test {

LinePair::LinePair(const LinkSettings& settings) : LinePair(settings, Fault{}) {}

LinePair::LinePair(LinkSettings settings, const Fault& fault)
    : fault_(fault), start_(std::chrono::hours(1)), now_(start_), ends_(2) {
    if (settings.PortType == static_cast<std::int32_t>(LinkPortType::Serial)) {
        character_ = std::chrono::nanoseconds(10'000'000'000 / settings.BaudRate);
    } else {
        latency_ = std::chrono::milliseconds(1);
    }
    for (std::size_t index = 0; index < ends_.size(); ++index) {
        settings.HostRole = index == 0;
        End& end = ends_[index];
        end.Machine.emplace(settings, end.Counts);
        end.Machine->Open(now_);
        Settle(index);
        end.Machine->OnConnected({"10.0.0.1", 40'000, "10.0.0.2", 5'000, false}, now_);
        Settle(index);
    }
}

void LinePair::Send(bool fromHost, std::string_view notation) {
    const BlockParts message = ParseBlock(notation);
    Send(fromHost, message.Header, message.Data);
}

void LinePair::Send(bool fromHost,
                    const secs1::BlockHeader& header,
                    const std::vector<std::uint8_t>& body) {
    const std::size_t index = fromHost ? 0 : 1;
    ends_[index].Seen.Offered.push_back({header, body});
    ends_[index].Machine->Send(secs1::EncodeHeader(header), body, now_);
    Settle(index);
}

bool LinePair::Run(std::chrono::milliseconds limit) {
    const link::TimePoint end = now_ + limit;
    while (Step(end)) {
    }
    return arrivals_.empty() && ends_[0].Timers.empty() && ends_[1].Timers.empty();
}

/// What is due next: bytes before timers, for a machine is given what waits before it is told that
/// time is up.
bool LinePair::Step(link::TimePoint end) {
    std::size_t expired = ends_.size();
    auto timer = ends_[0].Timers.end();
    for (std::size_t index = 0; index < ends_.size(); ++index) {
        auto& timers = ends_[index].Timers;
        const auto next =
            std::min_element(timers.begin(), timers.end(), [](const auto& a, const auto& b) {
                return a.second < b.second;
            });
        if (next == timers.end()) continue;
        if (expired != ends_.size() && timer->second <= next->second) continue;
        expired = index;
        timer = next;
    }
    const bool isTimerDue = expired != ends_.size();
    const auto arrival = arrivals_.begin();
    if (arrival != arrivals_.end() && (!isTimerDue || arrival->first <= timer->second)) {
        if (arrival->first > end) return false;
        now_ = arrival->first;
        const Arrival one = std::move(arrival->second);
        arrivals_.erase(arrival);
        ends_[one.At].Machine->OnBytes(one.Bytes, now_);
        Settle(one.At);
        return true;
    }
    if (!isTimerDue || timer->second > end) return false;
    now_ = timer->second;
    const link::TimerId id = timer->first;
    ends_[expired].Timers.erase(timer);
    ends_[expired].Machine->OnTimer(id, now_);
    Settle(expired);
    return true;
}

/// What a shell does after each input.
void LinePair::Settle(std::size_t index) {
    std::vector<link::Action> actions;
    for (;;) {
        ends_[index].Machine->TakeActions(actions);
        for (const link::Action& action : actions) {
            Perform(index, action);
        }
        if (!Write(index) && actions.empty()) return;
    }
}

void LinePair::Perform(std::size_t index, const link::Action& action) {
    End& end = ends_[index];
    if (const auto* one = std::get_if<link::StartTimer>(&action)) {
        end.Timers[one->Id] = now_ + one->Delay;
    } else if (const auto* two = std::get_if<link::StopTimer>(&action)) {
        end.Timers.erase(two->Id);
    } else if (const auto* error = std::get_if<link::RaiseError>(&action)) {
        end.Seen.Errors.push_back(std::to_string(static_cast<int>(error->Code)) + " " +
                                  error->Text);
    } else if (const auto* sent = std::get_if<link::RaiseSent>(&action)) {
        end.Seen.Sent.push_back(
            {secs1::DecodeHeader(sent->Header),
             {sent->Bytes.begin() + static_cast<std::ptrdiff_t>(sent->BodyOffset),
              sent->Bytes.end()}});
    } else if (const auto* received = std::get_if<link::RaiseReceived>(&action)) {
        Take(index, *received);
    }
}

void LinePair::Take(std::size_t index, const link::RaiseReceived& received) {
    End& end = ends_[index];
    const secs1::BlockHeader header = secs1::DecodeHeader(received.Header);
    end.Seen.Received.push_back({header, received.Body});
    end.Machine->OnConsumed(1, now_);
    if (!Echo || !header.WBit || !header.IsPrimary()) return;
    secs1::BlockHeader reply = header;
    reply.WBit = false;
    ++reply.Function;
    end.Seen.Offered.push_back({reply, received.Body});
    end.Machine->Send(secs1::EncodeHeader(reply), received.Body, now_);
}

bool LinePair::Write(std::size_t index) {
    std::array<std::span<const std::uint8_t>, 16> views;
    const std::size_t filled = ends_[index].Machine->Output(views);
    std::size_t count = 0;
    for (std::size_t view = 0; view < filled; ++view) {
        Carry(index, views[view]);
        count += views[view].size();
    }
    if (count > 0) ends_[index].Machine->OnWritten(count, now_);
    return count > 0;
}

/// One write arrives as one read, unless a late byte splits it or each byte comes by itself.
void LinePair::Carry(std::size_t from, std::span<const std::uint8_t> bytes) {
    link::TimePoint& free = ends_[from].Free;
    free = std::max(free, now_);
    Arrival arrival{1 - from, {}};
    const auto arrive = [&] {
        if (!arrival.Bytes.empty()) arrivals_.emplace(free + latency_, arrival);
        arrival.Bytes.clear();
    };
    for (const std::uint8_t byte : bytes) {
        const Damage damage = bytes_ == fault_.Byte ? fault_.What : Damage::None;
        ++bytes_;
        if (damage == Damage::Late) {
            arrive();
            free += fault_.Delay;
        }
        free += character_;
        if (damage == Damage::Lost) continue;
        const unsigned mask = damage == Damage::Changed ? fault_.Mask : 0U;
        arrival.Bytes.push_back(static_cast<std::uint8_t>(byte ^ mask));
        if (damage == Damage::Doubled) arrival.Bytes.push_back(byte);
        if (OneByOne) arrive();
    }
    arrive();
}

}  // namespace hexmire::test
