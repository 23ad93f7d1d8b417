#include <hexmire/driver/Address.h>
#include <hexmire/driver/hsms/LinkState.h>

#include <algorithm>
#include <utility>

namespace hexmire::hsms {

using link::LinkError;
using link::TimerId;
using namespace std::chrono_literals;

namespace {

/// A local close: how long the last frames may take to be written, then how long the peer's own
/// close is waited for. Closing earlier could destroy our last bytes at the peer.
constexpr std::chrono::milliseconds kLingerStep{1'000};
/// A local close as a whole, an unanswered Deselect.req included.
constexpr std::chrono::milliseconds kLongestClose{2'000};

}  // namespace

// --- commands ------------------------------------------------------------------------------------

void LinkMachine::OnOpen() { Expect(state_->OnOpen); }

void LinkMachine::OnClose() { Expect(state_->OnClose); }

void LinkMachine::OnMoved() {
    if (state_->OnMoved != nullptr) Go(state_->OnMoved(*this));
}

// --- inputs --------------------------------------------------------------------------------------

void LinkMachine::OnListenFailed(const link::SystemFailure& failure, link::TimePoint now) {
    output_.Now(now);
    failure_ = failure;
    Expect(state_->OnListenFailed);
}

void LinkMachine::OnConnected(const link::Endpoints& endpoints, link::TimePoint now) {
    output_.Now(now);
    candidate_ = endpoints;
    Expect(state_->OnConnected);
}

void LinkMachine::OnConnectFailed(const link::SystemFailure& failure, link::TimePoint now) {
    output_.Now(now);
    failure_ = failure;
    Expect(state_->OnConnectFailed);
}

void LinkMachine::OnClosed(link::TimePoint now) {
    output_.Now(now);
    Lose(LinkError::PeerClosed, connector_.PeerText(), false);
}

void LinkMachine::OnLost(const link::SystemFailure& failure, link::TimePoint now) {
    output_.Now(now);
    Lose(LinkError::ConnectionLost, link::FailureText(failure), false);
}

// --- what the states do on entry -----------------------------------------------------------------

void LinkMachine::BeginSelecting() {
    Start(TimerId::T7, settings_.T7);
    if (std::exchange(greet_, false) && connector_.IsOpener()) SendRequest(SType::SelectReq);
}

void LinkMachine::BeginSession() {
    sessionOpen_ = true;
    if (settings_.LinktestInterval > 0ms) Start(TimerId::Linktest, settings_.LinktestInterval);
    Emit(link::RaiseConnect{});
}

void LinkMachine::BeginDeselecting() {
    connector_.StopListening();
    FinishRequest();
    Start(TimerId::Linger, RestOfClose());
    SendRequest(SType::DeselectReq);
    UpdateReading();
}

void LinkMachine::BeginLinger() {
    connector_.StopListening();
    FinishRequest();
    StopFrameTimers();
    if (!std::exchange(reading_, true)) Emit(link::ResumeReading{});
    shutDown_ = false;
    Start(TimerId::Linger, std::min(kLingerStep, RestOfClose()));
    (void)LingerStep(*this);
}

std::chrono::milliseconds LinkMachine::RestOfClose() {
    if (!closeBy_) closeBy_ = output_.Now() + kLongestClose;
    return std::chrono::ceil<std::chrono::milliseconds>(*closeBy_ - output_.Now());
}

void LinkMachine::DropConnection() {
    if (connector_.Drop()) ResetStream();
}

void LinkMachine::ResetStream() {
    reading_ = true;
    FinishRequest();
    StopFrameTimers();
    if (std::exchange(stallTimed_, false)) Stop(TimerId::WriteStall);
    closeBy_.reset();
    parser_.Reset();
    queue_.Clear();
}

// --- callers and our own connects ----------------------------------------------------------------

LinkMachine::Next LinkMachine::Follow(link::Connector::Verdict verdict) {
    switch (verdict) {
        case link::Connector::Verdict::Refused:
            return nullptr;
        case link::Connector::Verdict::Again:
            return &kNotConnected;
        case link::Connector::Verdict::Adopted:
            break;
    }
    greet_ = true;
    singleSession_ = settings_.PortType == static_cast<std::int32_t>(LinkPortType::HsmsSs);
    UpdateReading();
    return &kNotSelected;
}

LinkMachine::Next LinkMachine::Adopt(LinkMachine& link) {
    return link.Follow(link.connector_.OnConnected(link.candidate_));
}

LinkMachine::Next LinkMachine::RefuseSilently(LinkMachine& link) {
    link.connector_.RefuseSilently();
    return nullptr;
}

LinkMachine::Next LinkMachine::ExtraUnselected(LinkMachine& link) {
    if (!link.connector_.OnExtraConnected(link.candidate_)) return nullptr;
    link.ResetStream();
    return link.Follow(link::Connector::Verdict::Adopted);
}

LinkMachine::Next LinkMachine::ExtraSelected(LinkMachine& link) {
    // The caller may be our own peer, started anew: then the live link is dead, and T6 finds it
    // out.
    if (!link.connector_.IsCrossing(link.candidate_) && !link.request_)
        link.SendRequest(SType::LinktestReq);
    (void)link.connector_.OnExtraConnected(link.candidate_);
    return nullptr;
}

LinkMachine::Next LinkMachine::ListenFailed(LinkMachine& link) {
    link.connector_.OnListenFailed(link.failure_);
    return nullptr;
}

LinkMachine::Next LinkMachine::ConnectFailed(LinkMachine& link) {
    return link.Follow(link.connector_.OnConnectFailed(link.failure_));
}

LinkMachine::Next LinkMachine::ConnectTimedOut(LinkMachine& link) {
    return link.Follow(link.connector_.OnConnectTimeout());
}

LinkMachine::Next LinkMachine::CrossingTimedOut(LinkMachine& link) {
    return link.Follow(link.connector_.OnCrossingTimeout());
}

/// Another mode or listening address; an attempt under way is left to its end.
LinkMachine::Next LinkMachine::AfterMove(LinkMachine& link) {
    return link.connector_.IsTrying() ? nullptr : &kNotConnected;
}

// --- the end of connections ----------------------------------------------------------------------

void LinkMachine::EndSession(LinkError code, std::string_view details) {
    if (!std::exchange(sessionOpen_, false)) return;
    transactions_.Clear();
    systemBytes_.Clear();
    AbortQueue();
    // The connection has ended by itself: the port is closed with it, before the event tells so.
    if (code != LinkError::LocalClose && !settings_.AutoReconnect) open_ = false;
    Emit(link::RaiseDisconnect{code, link::ErrorText(code, details)});
}

LinkMachine::Next LinkMachine::AfterLink(LinkMachine& link) {
    return link.open_ ? &kNotConnected : &kClosed;
}

LinkMachine::Next LinkMachine::SelectedTooLate(LinkMachine& link) {
    ++link.statistics_.T7Timeouts;
    return LoseUnselected(link, {LinkError::T7, {}, true});
}

LinkMachine::Next LinkMachine::LoseUnselected(LinkMachine& link, const Loss& loss) {
    link.Raise(loss.Code, link::ErrorText(loss.Code, loss.Details));
    return AfterLink(link);
}

LinkMachine::Next LinkMachine::LoseSelected(LinkMachine& link, const Loss& loss) {
    if (loss.FoundHere) link.Raise(loss.Code, link::ErrorText(loss.Code, loss.Details));
    link.EndSession(loss.Code, loss.Details);
    return AfterLink(link);
}

LinkMachine::Next LinkMachine::LoseEnding(LinkMachine& link, const Loss&) {
    return LingerOver(link);
}

LinkMachine::Next LinkMachine::EndInOrder(LinkMachine& link) {
    if (link.settings_.DeselectOnClose && !link.singleSession_) return &kDeselecting;
    link.SendControl(
        ControlHeader(SType::SeparateReq, link.ControlSession(), link.NextSystemBytes()));
    return &kEnding;
}

LinkMachine::Next LinkMachine::LingerStep(LinkMachine& link) {
    if (link.shutDown_ || !link.queue_.IsEmpty()) return nullptr;
    link.shutDown_ = true;
    link.Emit(link::ShutdownSend{});
    link.Start(TimerId::Linger, std::min(kLingerStep, link.RestOfClose()));
    return nullptr;
}

LinkMachine::Next LinkMachine::LingerOver(LinkMachine& link) {
    link.EndSession(LinkError::LocalClose, {});
    return AfterLink(link);
}

}  // namespace hexmire::hsms
