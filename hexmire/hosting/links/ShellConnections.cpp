#include <hexmire/driver/Address.h>
#include <hexmire/hosting/links/SerialStream.h>
#include <hexmire/hosting/links/SocketOptions.h>
#include <hexmire/hosting/links/SocketStream.h>
#include <hexmire/hosting/links/TransportShell.h>

#include <asio/error.hpp>

#include <algorithm>
#include <utility>

namespace hexmire {

// --- names ---------------------------------------------------------------------------------------

/// Turns an address into endpoints, a name without blocking the loop. A numeric one is answered at
/// once, inside the call.
void TransportDriver::Shell::Resolve(Tcp::resolver& resolver,
                                     const std::string& address,
                                     std::uint16_t port,
                                     Resolved done) {
    if (link::ClassifyAddress(address) != link::AddressKind::Name) {
        asio::error_code error;
        const auto numeric = asio::ip::make_address(address, error);
        return done(error, {Tcp::endpoint(numeric, port)});
    }
    resolver.async_resolve(
        address,
        std::to_string(port),
        Tcp::resolver::numeric_service,
        [self = shared_from_this(), done = std::move(done)](
            const asio::error_code& error, const Tcp::resolver::results_type& found) {
            self->Turn([&](link::TimePoint) { done(error, {found.begin(), found.end()}); });
        });
}

// --- callers -------------------------------------------------------------------------------------

void TransportDriver::Shell::Do(const link::Listen& action) {
    records_.OnAttempt(inForce_);
    const std::uint64_t generation = ++listenGeneration_;
    Resolve(localResolver_,
            action.Address,
            action.Port,
            [this, generation](const asio::error_code& error,
                               const std::vector<Tcp::endpoint>& endpoints) {
                if (generation == listenGeneration_) ListenAt(error, endpoints);
            });
}

void TransportDriver::Shell::ListenAt(const asio::error_code& error,
                                      const std::vector<Tcp::endpoint>& endpoints) {
    asio::error_code failure = error;
    if (!failure && endpoints.empty()) failure = asio::error::host_not_found;
    if (!failure) {
        acceptor_.emplace(loop_);
        link::OpenListener(*acceptor_, endpoints.front(), failure);
    }
    if (failure) {
        acceptor_.reset();
        const link::SystemFailure reason = link::FailureOf(failure);
        records_.OnAttemptFailed("listen", link::FailureText(reason));
        return machine_->OnListenFailed(reason, Now());
    }
    machine_->OnListening(Now());
    AcceptNext();
}

void TransportDriver::Shell::AcceptNext() {
    acceptor_->async_accept([self = shared_from_this(), generation = listenGeneration_](
                                const asio::error_code& error, Tcp::socket socket) {
        if (generation != self->listenGeneration_) return;
        self->Turn([&](link::TimePoint now) {
            if (!error) {
                // A caller that cannot be dealt with does not keep others away.
                self->Guard([&] { self->OfferCaller(std::move(socket)); });
            } else if (error != asio::error::connection_aborted) {
                return self->machine_->OnAcceptFailed(link::FailureOf(error), now);
            }
            if (generation == self->listenGeneration_) self->AcceptNext();
        });
    });
}

/// A caller that is gone already is none.
void TransportDriver::Shell::OfferCaller(Tcp::socket socket) {
    asio::error_code ignored;
    link::PrepareStream(socket, ignored);
    link::Endpoints ends = link::EndpointsOf(socket);
    if (ends.RemoteAddress.empty() || IsOwnAttempt(ends)) return;
    ends.IsCaller = true;
    OfferConnection(std::move(socket), std::move(ends));
}

/// Whether this caller is our own connect, which has found our own listener: it fails when it comes
/// through, or has done so.
bool TransportDriver::Shell::IsOwnAttempt(const link::Endpoints& caller) const {
    const link::Endpoints own = connecting_ ? link::EndpointsOf(*connecting_) : lastOwn_;
    return own.LocalAddress == caller.RemoteAddress && own.LocalPort == caller.RemotePort;
}

/// True when there was a caller and the machine has changed over to it.
bool TransportDriver::Shell::OfferWaitingCaller() {
    asio::error_code error;
    acceptor_->non_blocking(true, error);
    Tcp::socket socket(loop_);
    acceptor_->accept(socket, error);
    if (error) return false;
    const std::uint64_t generation = generation_;
    OfferCaller(std::move(socket));
    return generation != generation_;
}

void TransportDriver::Shell::Do(const link::ResumeAccepting&) {
    if (acceptor_) AcceptNext();
}

void TransportDriver::Shell::Do(const link::StopListening&) {
    ++listenGeneration_;
    localResolver_.cancel();
    acceptor_.reset();
}

// --- our own connects ----------------------------------------------------------------------------

void TransportDriver::Shell::Do(const link::Connect& action) {
    records_.OnAttempt(inForce_);
    lastOwn_ = {};
    const std::uint64_t generation = ++generation_;
    const auto toRemote = [this, generation, action] {
        Resolve(remoteResolver_,
                action.RemoteAddress,
                action.RemotePort,
                [this, generation](const asio::error_code& error,
                                   std::vector<Tcp::endpoint> endpoints) {
                    if (generation != generation_) return;
                    if (error) return FailConnect(error);
                    remotes_ = std::move(endpoints);
                    std::reverse(remotes_.begin(), remotes_.end());
                    ConnectNext();
                });
    };
    local_.reset();
    if (link::IsAnyAddress(action.LocalAddress)) return toRemote();
    Resolve(remoteResolver_,
            action.LocalAddress,
            0,
            [this, generation, toRemote](const asio::error_code& error,
                                         const std::vector<Tcp::endpoint>& endpoints) {
                if (generation != generation_) return;
                if (error) return FailConnect(error);
                local_ = endpoints.front();
                toRemote();
            });
}

void TransportDriver::Shell::ConnectNext() {
    if (remotes_.empty()) return FailConnect(asio::error::host_not_found);
    const Tcp::endpoint remote = remotes_.back();
    remotes_.pop_back();
    ConnectTo(remote);
}

void TransportDriver::Shell::ConnectTo(const Tcp::endpoint& remote) {
    asio::error_code error;
    connecting_.emplace(loop_);
    connecting_->open(remote.protocol(), error);
    if (!error) link::PrepareStream(*connecting_, error);
    if (!error && local_) connecting_->bind(*local_, error);
    if (error) return FailConnect(error);
    connecting_->async_connect(
        remote,
        [self = shared_from_this(), generation = generation_](const asio::error_code& failure) {
            if (generation != self->generation_) return;
            self->Turn([&](link::TimePoint) {
                if (failure) return self->FailConnect(failure);
                Tcp::socket socket = std::move(*self->connecting_);
                self->connecting_.reset();
                self->lastOwn_ = link::EndpointsOf(socket);
                self->OfferConnection(std::move(socket), self->lastOwn_);
            });
        });
}

/// Tries the next endpoint of the name; after the last one the attempt has failed.
void TransportDriver::Shell::FailConnect(const asio::error_code& error) {
    connecting_.reset();
    if (!remotes_.empty()) return ConnectNext();
    ++generation_;
    const link::SystemFailure reason = link::FailureOf(error);
    records_.OnAttemptFailed("connect", link::FailureText(reason));
    machine_->OnConnectFailed(reason, Now());
}

void TransportDriver::Shell::Do(const link::OpenSerial& action) {
    records_.OnAttempt(inForce_);
    link::SystemFailure failure;
    offered_ = link::SerialStream::Open(loop_, action.Device, action.BaudRate, failure);
    if (!offered_) {
        records_.OnAttemptFailed("open", link::FailureText(failure));
        return machine_->OnConnectFailed(failure, Now());
    }
    if (inForce_.T1 < LeastSensibleT1(action.BaudRate)) ++statistics_.ShortT1s;
    offeredEnds_ = {};
    offeredEnds_.RemoteAddress = action.Device;
    machine_->OnConnected(offeredEnds_, Now());
}

// --- what becomes of a connection ----------------------------------------------------------------

void TransportDriver::Shell::OfferConnection(Tcp::socket socket, link::Endpoints ends) {
    offered_ = std::make_unique<link::SocketStream>(std::move(socket));
    offeredEnds_ = std::move(ends);
    machine_->OnConnected(offeredEnds_, Now());
    PerformActions();
}

void TransportDriver::Shell::Do(const link::StopConnecting&) {
    ++generation_;
    remoteResolver_.cancel();
    remotes_.clear();
    connecting_.reset();
}

void TransportDriver::Shell::Adopt(std::unique_ptr<link::IByteStream>& stream,
                                   const link::Endpoints& ends) {
    ++generation_;
    connecting_.reset();
    stream_ = std::move(stream);
    waitingForInput_ = waitingForRoom_ = readingPaused_ = false;
    ourOwnUnheard_ = !ends.IsCaller;
    records_.OnConnection(ends);
}

void TransportDriver::Shell::Do(const link::AdoptConnection&) { Adopt(offered_, offeredEnds_); }

void TransportDriver::Shell::Do(const link::HoldConnection&) {
    held_ = std::move(offered_);
    heldEnds_ = offeredEnds_;
}

void TransportDriver::Shell::Do(const link::AdoptHeld&) { Adopt(held_, heldEnds_); }

void TransportDriver::Shell::Do(const link::RefuseHeld&) { held_.reset(); }

void TransportDriver::Shell::Do(const link::RefuseConnection&) { offered_.reset(); }

void TransportDriver::Shell::Do(const link::CloseConnection&) {
    Do(link::StopConnecting{});
    offered_.reset();
    CloseStream();
    records_.OnClosed();
    waitingForInput_ = waitingForRoom_ = readingPaused_ = false;
    if (KindWanted() != kind_) ScheduleFlush();
}

}  // namespace hexmire
