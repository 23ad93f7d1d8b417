#include <hexmire/driver/secs1/LinkMachine.h>

namespace hexmire::secs1 {

using link::Connector;
using link::ErrorText;
using link::LinkError;
using link::TimerId;

LinkMachine::LinkMachine(LinkSettings settings, LinkStatistics& statistics, std::uint32_t seed)
    : PortMachine(std::move(settings), statistics, seed),
      line_(settings_, statistics_),
      assembly_(settings_, statistics_, transactions_, systemBytes_) {}

std::string_view LinkMachine::StateName() const noexcept {
    switch (state_) {
        case State::Closed:
            return "CLOSED";
        case State::NotConnected:
            return "NOT CONNECTED";
        case State::Connected:
            break;
    }
    return "CONNECTED";
}

// --- commands ------------------------------------------------------------------------------------

void LinkMachine::OnClose() {
    EndSession(LinkError::LocalClose, {});
    Go(State::Closed);
}

void LinkMachine::OnMoved() {
    if (state_ == State::NotConnected && !connector_.IsTrying()) Go(State::NotConnected);
}

// --- the one place that changes state ------------------------------------------------------------

void LinkMachine::Go(State next) {
    if (state_ == State::NotConnected) connector_.StopTrying();
    state_ = next;
    switch (state_) {
        case State::Closed:
            connector_.StopListening();
            DropConnection();
            break;
        case State::NotConnected:
            DropConnection();
            connector_.Begin();
            break;
        case State::Connected:
            BeginSession();
            break;
    }
}

void LinkMachine::Follow(Connector::Verdict verdict) {
    if (verdict == Connector::Verdict::Adopted) Go(State::Connected);
    if (verdict == Connector::Verdict::Again) Go(State::NotConnected);
}

void LinkMachine::BeginSession() {
    // Settings may change while the connection stays what it is.
    serial_ = settings_.PortType == static_cast<std::int32_t>(LinkPortType::Serial);
    ResetLine(serial_ ? settings_.BaudRate : 0);
    if (!std::exchange(sessionOpen_, true)) output_.Emit(link::RaiseConnect{});
    Drive();
}

void LinkMachine::EndSession(LinkError code, std::string_view details) {
    if (!std::exchange(sessionOpen_, false)) return;
    transactions_.Clear();
    systemBytes_.Clear();
    AbortQueue();
    // The connection has ended by itself: the port is closed with it, before the event tells so.
    if (code != LinkError::LocalClose && !settings_.AutoReconnect) open_ = false;
    output_.Emit(link::RaiseDisconnect{code, ErrorText(code, details)});
}

void LinkMachine::DropConnection() {
    if (connector_.Drop()) ResetLine(0);
}

/// No state of a line goes over to the next connection.
void LinkMachine::ResetLine(std::int32_t baudRate) {
    reading_ = true;
    line_.Reset(baudRate);
    line_.TakeOutput(lineOutput_);
    assembly_.Clear();
    for (const LineTimer id : kLineTimers) {
        Perform(StopLineTimer{id});
    }
    UpdateT4();
    if (std::exchange(stallTimed_, false)) output_.Stop(TimerId::WriteStall);
    writing_.clear();
    written_ = 0;
    if (!queue_.empty()) queue_.front().Sent = 0;
}

void LinkMachine::Lose(LinkError code, const std::string& details, bool foundHere) {
    if (state_ != State::Connected) {
        ++statistics_.UnexpectedEvents;
        return;
    }
    if (foundHere) Raise(code, ErrorText(code, details));
    EndSession(code, details);
    Go(open_ ? State::NotConnected : State::Closed);
}

// --- inputs of the connection --------------------------------------------------------------------

void LinkMachine::OnListenFailed(const link::SystemFailure& failure, link::TimePoint now) {
    output_.Now(now);
    connector_.OnListenFailed(failure);
}

void LinkMachine::OnConnected(const link::Endpoints& endpoints, link::TimePoint now) {
    output_.Now(now);
    switch (state_) {
        case State::Closed:
            return connector_.RefuseSilently();
        case State::NotConnected:
            return Follow(connector_.OnConnected(endpoints));
        case State::Connected:
            if (connector_.OnExtraConnected(endpoints)) Go(State::Connected);
    }
}

void LinkMachine::OnConnectFailed(const link::SystemFailure& failure, link::TimePoint now) {
    output_.Now(now);
    const bool hopeless = failure.IsPermanent && connector_.IsFirstAttempt();
    const auto verdict = connector_.OnConnectFailed(failure);
    if (verdict == Connector::Verdict::Again && hopeless) {
        open_ = false;
        return Go(State::Closed);
    }
    Follow(verdict);
}

void LinkMachine::OnClosed(link::TimePoint now) {
    output_.Now(now);
    Lose(serial_ ? LinkError::SerialLost : LinkError::PeerClosed, connector_.PeerText(), false);
}

void LinkMachine::OnLost(const link::SystemFailure& failure, link::TimePoint now) {
    output_.Now(now);
    Lose(serial_ ? LinkError::SerialLost : LinkError::ConnectionLost,
         link::FailureText(failure),
         false);
}

void LinkMachine::OnTimer(TimerId id, link::TimePoint now) {
    output_.Now(now);
    switch (id) {
        case TimerId::T1:
            return LineTimerExpired(LineTimer::T1);
        case TimerId::T2:
            return LineTimerExpired(LineTimer::T2);
        case TimerId::LineCap:
            return LineTimerExpired(LineTimer::Cap);
        case TimerId::T4:
            t4Deadline_.reset();
            assembly_.OnT4(now);
            return Drive();
        case TimerId::T5:
            if (state_ == State::NotConnected) connector_.Begin();
            return;
        case TimerId::ConnectTimeout:
            return Follow(connector_.OnConnectTimeout());
        case TimerId::Crossing:
            return Follow(connector_.OnCrossingTimeout());
        case TimerId::AcceptRetry:
            return connector_.OnAcceptRetry();
        case TimerId::WriteStall:
            ++statistics_.WriteStalls;
            return Lose(LinkError::WriteStalled, {}, true);
        case TimerId::ErrorWindow:
            return output_.RaiseSummaries();
        case TimerId::T6:
        case TimerId::T7:
        case TimerId::T8:
        case TimerId::FrameCap:
        case TimerId::Linktest:
        case TimerId::Linger:
            ++statistics_.UnexpectedEvents;  // not of this protocol
    }
}

}  // namespace hexmire::secs1
