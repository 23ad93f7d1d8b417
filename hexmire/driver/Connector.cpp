#include <hexmire/driver/Connector.h>

#include <algorithm>
#include <utility>

namespace hexmire::link {

using namespace std::chrono_literals;

namespace {

/// Accepting again at once after a failure would spin: the reason, no free descriptors, stays.
constexpr std::chrono::milliseconds kAcceptRetry{1'000};
/// How long a caller may wait for the outcome of our own attempt. Shorter than any T6 or T7.
constexpr std::chrono::milliseconds kCrossingWait{500};

std::string EndText(const std::string& address, std::uint16_t port) {
    return address + ":" + std::to_string(port);
}

}  // namespace

Connector::Connector(const LinkSettings& settings,
                     LinkOutput& output,
                     LinkStatistics& statistics,
                     std::uint32_t seed)
    : settings_(settings), output_(output), statistics_(statistics), random_(seed) {}

// --- state ---------------------------------------------------------------------------------------

bool Connector::IsSerial() const noexcept {
    return settings_.PortType == static_cast<std::int32_t>(LinkPortType::Serial);
}

bool Connector::Listens() const noexcept {
    return !IsSerial() &&
           settings_.HSMSConnectionMode != static_cast<std::int32_t>(LinkConnectionMode::Active);
}

bool Connector::Connects() const noexcept {
    return IsSerial() ||
           settings_.HSMSConnectionMode != static_cast<std::int32_t>(LinkConnectionMode::Passive);
}

std::string Connector::RemoteText() const {
    if (IsSerial()) return settings_.SerialPort;
    return EndText(settings_.RemoteIPAddress, static_cast<std::uint16_t>(settings_.RemoteIPPort));
}

std::string Connector::PeerText() const {
    return ends_.RemotePort == 0 ? ends_.RemoteAddress
                                 : EndText(ends_.RemoteAddress, ends_.RemotePort);
}

bool Connector::IsAllowed(const std::string& address) const {
    const auto& allowed = settings_.AllowedCallers;
    return allowed.empty() || std::find(allowed.begin(), allowed.end(), address) != allowed.end();
}

std::chrono::milliseconds Connector::RestOfT5() const {
    if (!lastEnd_) return 0ms;
    return std::chrono::ceil<std::chrono::milliseconds>(*lastEnd_ + settings_.T5 + spread_ -
                                                        output_.Now());
}

// --- attempts ------------------------------------------------------------------------------------

void Connector::Open() noexcept {
    listenFailure_ = 0;
    attempts_ = 0;
}

void Connector::Begin() {
    Listens() ? BeginListening() : StopListening();
    if (Connects() && !connecting_) BeginConnect();
}

void Connector::BeginListening() {
    const Listen wanted{settings_.LocalIPAddress,
                        static_cast<std::uint16_t>(settings_.LocalIPPort)};
    if (listening_ == wanted) return;
    StopListening();
    listening_ = wanted;
    output_.Emit(wanted);
}

void Connector::BeginConnect() {
    if (const auto rest = RestOfT5(); rest > 0ms) return output_.Start(TimerId::T5, rest);
    connecting_ = true;
    ++attempts_;
    if (IsSerial()) {
        output_.Emit(OpenSerial{settings_.SerialPort, settings_.BaudRate});
        return;
    }
    output_.Emit(Connect{settings_.RemoteIPAddress,
                         static_cast<std::uint16_t>(settings_.RemoteIPPort),
                         settings_.LocalIPAddress});
    output_.Start(TimerId::ConnectTimeout,
                  settings_.ConnectTimeout.value_or(
                      std::clamp<std::chrono::milliseconds>(settings_.T5, 2s, 20s)));
}

void Connector::StopTrying() {
    output_.Stop(TimerId::T5);
    output_.Stop(TimerId::ConnectTimeout);
}

void Connector::StopListening() {
    if (!listening_) return;
    listening_.reset();
    output_.Emit(link::StopListening{});
    output_.Stop(TimerId::AcceptRetry);
}

bool Connector::Drop() {
    if (std::exchange(held_, std::nullopt)) {
        output_.Emit(RefuseHeld{});
        output_.Stop(TimerId::Crossing);
    }
    if (!connecting_ && !connected_) return false;
    output_.Emit(CloseConnection{});
    connecting_ = connected_ = false;
    EndAttempt();
    return true;
}

Connector::Verdict Connector::AttemptEnded() {
    connecting_ = false;
    EndAttempt();
    return held_ ? AdoptHeldCaller() : Verdict::Again;
}

/// T5 counts from here. Two alternating ends that keep the same pace would meet again and again.
void Connector::EndAttempt() {
    lastEnd_ = output_.Now();
    spread_ = 0ms;
    if (!IsAlternating()) return;
    const auto most = static_cast<std::minstd_rand::result_type>(settings_.T5.count() / 2);
    spread_ = std::chrono::milliseconds(random_() % (most + 1));
}

// --- failures ------------------------------------------------------------------------------------

void Connector::OnListenFailed(const SystemFailure& failure) {
    if (!listening_) return;
    ++statistics_.ListenFailures;
    // A port in use is told once, then tried in silence until something else is wrong.
    if (failure.Number != std::exchange(listenFailure_, failure.Number)) {
        output_.Raise(LinkError::ListenFailed,
                      ErrorText(LinkError::ListenFailed,
                                EndText(listening_->Address, listening_->Port) + ", " +
                                    FailureText(failure)));
    }
    listening_.reset();
    // Alternating: the end of the attempt under way, or the T5 that runs, leads here again.
    // A live connection leads here when it ends.
    if (!Connects() && !connected_) output_.Start(TimerId::T5, settings_.T5);
}

void Connector::OnAcceptFailed(const SystemFailure& failure) {
    if (!listening_) return;
    ++statistics_.AcceptFailures;
    output_.Raise(LinkError::AcceptFailed,
                  ErrorText(LinkError::AcceptFailed, FailureText(failure)));
    output_.Start(TimerId::AcceptRetry, kAcceptRetry);
}

void Connector::OnAcceptRetry() {
    if (listening_) output_.Emit(ResumeAccepting{});
}

Connector::Verdict Connector::OnConnectFailed(const SystemFailure& failure) {
    if (!connecting_) return Verdict::Refused;
    ++statistics_.ConnectFailures;
    output_.Raise(failure.Code,
                  ErrorText(failure.Code, RemoteText() + ", " + FailureText(failure)));
    return AttemptEnded();
}

Connector::Verdict Connector::OnConnectTimeout() {
    if (!connecting_) return Verdict::Refused;
    ++statistics_.ConnectTimeouts;
    output_.Raise(LinkError::ConnectTimedOut, ErrorText(LinkError::ConnectTimedOut, RemoteText()));
    output_.Emit(StopConnecting{});
    return AttemptEnded();
}

// --- connections ---------------------------------------------------------------------------------

Connector::Verdict Connector::OnConnected(const Endpoints& ends) {
    return ends.IsCaller ? TakeCaller(ends) : AdoptOwn(ends);
}

/// To this very socket, as loopback allows when its port is the one that it connects to, or to our
/// own listener.
bool Connector::LeadsBack(const Endpoints& ends) const {
    if (IsSerial() || ends.LocalAddress != ends.RemoteAddress) return false;
    return ends.LocalPort == ends.RemotePort || (listening_ && listening_->Port == ends.RemotePort);
}

Connector::Verdict Connector::AdoptOwn(const Endpoints& ends) {
    if (!connecting_) {
        RefuseSilently();
        return Verdict::Refused;
    }
    if (LeadsBack(ends)) {
        ++statistics_.SelfConnections;
        output_.Raise(
            LinkError::SelfConnect,
            ErrorText(LinkError::SelfConnect, EndText(ends.RemoteAddress, ends.RemotePort)));
        RefuseSilently();
        return AttemptEnded();
    }
    connecting_ = false;
    Adopt(ends, true);
    if (std::exchange(held_, std::nullopt)) {
        ++statistics_.CrossingsResolved;
        output_.Stop(TimerId::Crossing);
        output_.Emit(RefuseHeld{});
    }
    return Verdict::Adopted;
}

Connector::Verdict Connector::TakeCaller(const Endpoints& ends) {
    if (!IsAllowed(ends.RemoteAddress)) {
        ++statistics_.CallersNotAllowed;
        output_.Raise(
            LinkError::ExtraConnection,
            ErrorText(LinkError::ExtraConnection,
                      EndText(ends.RemoteAddress, ends.RemotePort) + " is not an allowed caller"));
        RefuseSilently();
        return Verdict::Refused;
    }
    if (!listening_) {
        RefuseSilently();
        return Verdict::Refused;
    }
    if (connecting_ && settings_.HostRole) {
        if (held_) {
            RefuseExtra(ends);
            return Verdict::Refused;
        }
        held_ = ends;
        output_.Emit(HoldConnection{});
        output_.Start(TimerId::Crossing, kCrossingWait);
        return Verdict::Refused;
    }
    if (connecting_) {
        ++statistics_.CrossingsResolved;
        output_.Emit(StopConnecting{});
        connecting_ = false;
    }
    Adopt(ends, false);
    return Verdict::Adopted;
}

/// Our own attempt is still open: the peer cannot be waiting for it, so the caller is taken.
Connector::Verdict Connector::OnCrossingTimeout() {
    if (!held_) return Verdict::Refused;
    ++statistics_.CrossingsResolved;
    output_.Emit(StopConnecting{});
    connecting_ = false;
    return AdoptHeldCaller();
}

Connector::Verdict Connector::AdoptHeldCaller() {
    output_.Stop(TimerId::Crossing);
    output_.Emit(AdoptHeld{});
    SetLive(*std::exchange(held_, std::nullopt), false);
    return Verdict::Adopted;
}

void Connector::Adopt(const Endpoints& ends, bool opener) {
    SetLive(ends, opener);
    output_.Emit(AdoptConnection{});
}

void Connector::SetLive(const Endpoints& ends, bool opener) {
    connected_ = true;
    opener_ = opener;
    heard_ = false;
    upSince_ = output_.Now();
    ends_ = ends;
}

/// The peer's call may be accepted some time after ours has come through. The equipment waits for
/// it until the host has spoken on ours; the host stays where it is in any case.
bool Connector::IsCrossing(const Endpoints& ends) const {
    const bool awaitsCall = !settings_.HostRole && !heard_;
    return IsAlternating() && opener_ && ends.IsCaller &&
           ends.RemoteAddress == ends_.RemoteAddress &&
           (awaitsCall || output_.Now() - upSince_ < kCrossingWait);
}

bool Connector::OnExtraConnected(const Endpoints& ends) {
    if (!IsCrossing(ends) || !IsAllowed(ends.RemoteAddress)) {
        RefuseExtra(ends);
        return false;
    }
    ++statistics_.CrossingsResolved;
    if (settings_.HostRole || heard_) {
        RefuseSilently();
        return false;
    }
    Adopt(ends, false);
    return true;
}

void Connector::RefuseSilently() { output_.Emit(RefuseConnection{}); }

void Connector::RefuseExtra(const Endpoints& ends) {
    ++statistics_.ExtraConnections;
    output_.Raise(
        LinkError::ExtraConnection,
        ErrorText(LinkError::ExtraConnection, EndText(ends.RemoteAddress, ends.RemotePort)));
    RefuseSilently();
}

}  // namespace hexmire::link
