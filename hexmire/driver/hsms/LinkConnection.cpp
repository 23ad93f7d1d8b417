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
/// Accepting again at once after a failure would spin: the reason, no free descriptors, stays.
constexpr std::chrono::milliseconds kAcceptRetry{1'000};

std::string EndText(const std::string& address, std::uint16_t port) {
    return address + ":" + std::to_string(port);
}

std::string FailureText(const link::SystemFailure& failure) {
    return failure.Text + " (" + std::to_string(failure.Number) + ")";
}

}  // namespace

// --- commands ------------------------------------------------------------------------------------

void LinkMachine::Open(link::TimePoint now) {
    now_ = now;
    if (open_) return;
    if (const auto fault = CheckLinkSettings(settings_)) {
        return Raise(static_cast<LinkError>(fault->Code), fault->Text);
    }
    open_ = true;
    listenFailure_ = 0;
    Expect(state_->OnOpen);
}

void LinkMachine::Close(link::TimePoint now) {
    now_ = now;
    if (!open_) return;
    open_ = false;
    Expect(state_->OnClose);
}

void LinkMachine::Configure(const LinkSettings& settings, link::TimePoint now) {
    now_ = now;
    if (open_) {
        if (const auto fault = CheckLinkSettings(settings)) {
            return Raise(static_cast<LinkError>(fault->Code), fault->Text);
        }
    }
    const bool elsewhere = settings.HSMSConnectionMode != settings_.HSMSConnectionMode ||
                           settings.LocalIPAddress != settings_.LocalIPAddress ||
                           settings.LocalIPPort != settings_.LocalIPPort;
    settings_ = settings;
    if (elsewhere && state_->OnReconfigured != nullptr) Go(state_->OnReconfigured(*this));
}

// --- inputs --------------------------------------------------------------------------------------

void LinkMachine::OnListening(link::TimePoint now) {
    now_ = now;
    listenFailure_ = 0;
}

void LinkMachine::OnListenFailed(const link::SystemFailure& failure, link::TimePoint now) {
    now_ = now;
    failure_ = failure;
    Expect(state_->OnListenFailed);
}

void LinkMachine::OnAcceptFailed(const link::SystemFailure& failure, link::TimePoint now) {
    now_ = now;
    if (!listening_) return;
    ++statistics_.AcceptFailures;
    Raise(LinkError::AcceptFailed, link::ErrorText(LinkError::AcceptFailed, FailureText(failure)));
    Start(TimerId::AcceptRetry, kAcceptRetry);
}

void LinkMachine::OnConnected(const link::Endpoints& endpoints, link::TimePoint now) {
    now_ = now;
    candidate_ = endpoints;
    Expect(state_->OnConnected);
}

void LinkMachine::OnConnectFailed(const link::SystemFailure& failure, link::TimePoint now) {
    now_ = now;
    failure_ = failure;
    Expect(state_->OnConnectFailed);
}

void LinkMachine::OnClosed(link::TimePoint now) {
    now_ = now;
    Lose(LinkError::PeerClosed, EndText(endpoints_.RemoteAddress, endpoints_.RemotePort), false);
}

void LinkMachine::OnLost(const link::SystemFailure& failure, link::TimePoint now) {
    now_ = now;
    Lose(LinkError::ConnectionLost, FailureText(failure), false);
}

// --- what the states do on entry -----------------------------------------------------------------

void LinkMachine::BeginAttempt() {
    const auto mode = static_cast<LinkConnectionMode>(settings_.HSMSConnectionMode);
    mode == LinkConnectionMode::Passive ? BeginListening() : BeginConnect();
}

void LinkMachine::BeginListening() {
    const link::Listen wanted{settings_.LocalIPAddress,
                              static_cast<std::uint16_t>(settings_.LocalIPPort)};
    if (listening_ == wanted) return;
    StopListening();
    listening_ = wanted;
    Emit(wanted);
}

void LinkMachine::BeginConnect() {
    StopListening();
    if (const auto rest = RestOfT5(); rest > 0ms) return Start(TimerId::T5, rest);
    connecting_ = true;
    Emit(link::Connect{settings_.RemoteIPAddress,
                       static_cast<std::uint16_t>(settings_.RemoteIPPort),
                       settings_.LocalIPAddress});
    Start(TimerId::ConnectTimeout,
          settings_.ConnectTimeout.value_or(
              std::clamp<std::chrono::milliseconds>(settings_.T5, 2s, 20s)));
}

void LinkMachine::StopListening() {
    if (!listening_) return;
    listening_.reset();
    Emit(link::StopListening{});
    Stop(TimerId::AcceptRetry);
}

void LinkMachine::BeginSelecting() {
    Start(TimerId::T7, settings_.T7);
    if (std::exchange(greet_, false) && active_) SendRequest(SType::SelectReq);
}

void LinkMachine::BeginSession() {
    sessionOpen_ = true;
    if (settings_.LinktestInterval > 0ms) Start(TimerId::Linktest, settings_.LinktestInterval);
    Emit(link::RaiseConnect{});
}

void LinkMachine::BeginLinger() {
    StopListening();
    FinishRequest();
    StopFrameTimers();
    if (!std::exchange(reading_, true)) Emit(link::ResumeReading{});
    shutDown_ = false;
    Start(TimerId::Linger, kLingerStep);
    (void)LingerStep(*this);
}

void LinkMachine::DropConnection() {
    if (!connecting_ && !connected_) return;
    Emit(link::CloseConnection{});
    lastEnd_ = now_;
    connecting_ = connected_ = false;
    reading_ = true;
    FinishRequest();
    StopFrameTimers();
    if (std::exchange(stallTimed_, false)) Stop(TimerId::WriteStall);
    parser_.Reset();
    queue_.Clear();
}

std::chrono::milliseconds LinkMachine::RestOfT5() const {
    if (!lastEnd_) return 0ms;
    return std::chrono::ceil<std::chrono::milliseconds>(*lastEnd_ + settings_.T5 - now_);
}

// --- callers and our own connects ----------------------------------------------------------------

bool LinkMachine::IsAllowed(const std::string& address) const {
    const auto& allowed = settings_.AllowedCallers;
    return allowed.empty() || std::find(allowed.begin(), allowed.end(), address) != allowed.end();
}

LinkMachine::Next LinkMachine::Adopt(LinkMachine& link) {
    return link.connecting_ ? AdoptOwn(link) : AdoptCaller(link);
}

LinkMachine::Next LinkMachine::AdoptOwn(LinkMachine& link) {
    const link::Endpoints& ends = link.candidate_;
    if (ends.LocalAddress == ends.RemoteAddress && ends.LocalPort == ends.RemotePort) {
        ++link.statistics_.SelfConnections;
        link.Raise(
            LinkError::SelfConnect,
            link::ErrorText(LinkError::SelfConnect, EndText(ends.RemoteAddress, ends.RemotePort)));
        return &kNotConnected;
    }
    link.connecting_ = false;
    link.active_ = true;
    return AdoptCandidate(link);
}

LinkMachine::Next LinkMachine::AdoptCaller(LinkMachine& link) {
    const link::Endpoints& ends = link.candidate_;
    if (!link.IsAllowed(ends.RemoteAddress)) {
        ++link.statistics_.CallersNotAllowed;
        link.Raise(LinkError::ExtraConnection,
                   link::ErrorText(
                       LinkError::ExtraConnection,
                       EndText(ends.RemoteAddress, ends.RemotePort) + " is not an allowed caller"));
        return RefuseSilently(link);
    }
    link.active_ = false;
    return AdoptCandidate(link);
}

LinkMachine::Next LinkMachine::AdoptCandidate(LinkMachine& link) {
    link.connected_ = true;
    link.greet_ = true;
    link.endpoints_ = link.candidate_;
    link.singleSession_ =
        link.settings_.PortType == static_cast<std::int32_t>(LinkPortType::HsmsSs);
    link.Emit(link::AdoptConnection{});
    link.UpdateReading();
    return &kNotSelected;
}

LinkMachine::Next LinkMachine::RefuseSilently(LinkMachine& link) {
    link.Emit(link::RefuseConnection{});
    return nullptr;
}

LinkMachine::Next LinkMachine::RefuseExtra(LinkMachine& link) {
    ++link.statistics_.ExtraConnections;
    link.Raise(LinkError::ExtraConnection,
               link::ErrorText(LinkError::ExtraConnection,
                               EndText(link.candidate_.RemoteAddress, link.candidate_.RemotePort)));
    return RefuseSilently(link);
}

LinkMachine::Next LinkMachine::RefuseExtraAndProbe(LinkMachine& link) {
    // The caller may be our own peer, started anew: then the live link is dead, and T6 finds it
    // out.
    if (!link.request_) link.SendRequest(SType::LinktestReq);
    return RefuseExtra(link);
}

LinkMachine::Next LinkMachine::ListenFailed(LinkMachine& link) {
    if (!link.listening_) return nullptr;
    ++link.statistics_.ListenFailures;
    // A port in use is told once, then tried in silence until something else is wrong.
    if (link.failure_.Number != std::exchange(link.listenFailure_, link.failure_.Number)) {
        link.Raise(LinkError::ListenFailed,
                   link::ErrorText(LinkError::ListenFailed,
                                   EndText(link.listening_->Address, link.listening_->Port) + ", " +
                                       FailureText(link.failure_)));
    }
    link.listening_.reset();
    link.Start(TimerId::T5, link.settings_.T5);
    return nullptr;
}

LinkMachine::Next LinkMachine::ConnectFailed(LinkMachine& link) {
    if (!link.connecting_) return nullptr;
    ++link.statistics_.ConnectFailures;
    link.connecting_ = false;
    link.lastEnd_ = link.now_;
    link.Raise(LinkError::ConnectFailed,
               link::ErrorText(LinkError::ConnectFailed,
                               EndText(link.settings_.RemoteIPAddress,
                                       static_cast<std::uint16_t>(link.settings_.RemoteIPPort)) +
                                   ", " + FailureText(link.failure_)));
    return &kNotConnected;
}

LinkMachine::Next LinkMachine::ConnectTimedOut(LinkMachine& link) {
    if (!link.connecting_) return nullptr;
    ++link.statistics_.ConnectTimeouts;
    link.Raise(LinkError::ConnectTimedOut,
               link::ErrorText(LinkError::ConnectTimedOut,
                               EndText(link.settings_.RemoteIPAddress,
                                       static_cast<std::uint16_t>(link.settings_.RemoteIPPort))));
    return &kNotConnected;
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

LinkMachine::Next LinkMachine::Separate(LinkMachine& link) {
    link.SendControl(
        ControlHeader(SType::SeparateReq, link.ControlSession(), link.NextSystemBytes()));
    return &kEnding;
}

LinkMachine::Next LinkMachine::LingerStep(LinkMachine& link) {
    if (link.shutDown_ || !link.queue_.IsEmpty()) return nullptr;
    link.shutDown_ = true;
    link.Emit(link::ShutdownSend{});
    link.Start(TimerId::Linger, kLingerStep);
    return nullptr;
}

LinkMachine::Next LinkMachine::LingerOver(LinkMachine& link) {
    link.EndSession(LinkError::LocalClose, {});
    return AfterLink(link);
}

}  // namespace hexmire::hsms
