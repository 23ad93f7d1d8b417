#include <hexmire/driver/Address.h>
#include <hexmire/hosting/links/SocketOptions.h>
#include <hexmire/hosting/links/TransportShell.h>

#include <asio/error.hpp>

#include <algorithm>
#include <utility>

namespace hexmire {

// --- names ---------------------------------------------------------------------------------------

/// Turns an address into endpoints, a name without blocking the loop. A numeric one is answered at
/// once, inside the call.
void TransportDriver::Shell::Resolve(const std::string& address,
                                     std::uint16_t port,
                                     Resolved done) {
    if (link::ClassifyAddress(address) != link::AddressKind::Name) {
        asio::error_code error;
        const auto numeric = asio::ip::make_address(address, error);
        return done(error, {Tcp::endpoint(numeric, port)});
    }
    resolver_.async_resolve(
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
    const std::uint64_t generation = ++listenGeneration_;
    Resolve(action.Address,
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
        return machine_->OnListenFailed(link::FailureOf(failure), Now());
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
                asio::error_code ignored;
                link::PrepareStream(socket, ignored);
                self->OfferConnection(std::move(socket), true);
            } else if (error != asio::error::connection_aborted) {
                return self->machine_->OnAcceptFailed(link::FailureOf(error), now);
            }
            if (generation == self->listenGeneration_) self->AcceptNext();
        });
    });
}

void TransportDriver::Shell::Do(const link::ResumeAccepting&) {
    if (acceptor_) AcceptNext();
}

void TransportDriver::Shell::Do(const link::StopListening&) {
    ++listenGeneration_;
    acceptor_.reset();
}

// --- our own connects ----------------------------------------------------------------------------

void TransportDriver::Shell::Do(const link::Connect& action) {
    const std::uint64_t generation = ++generation_;
    const auto toRemote = [this, generation, action] {
        Resolve(action.RemoteAddress,
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
    Resolve(action.LocalAddress,
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
                self->OfferConnection(std::move(*self->connecting_), false);
            });
        });
}

/// Tries the next endpoint of the name; after the last one the attempt has failed.
void TransportDriver::Shell::FailConnect(const asio::error_code& error) {
    connecting_.reset();
    if (!remotes_.empty()) return ConnectNext();
    ++generation_;
    machine_->OnConnectFailed(link::FailureOf(error), Now());
}

void TransportDriver::Shell::OfferConnection(Tcp::socket socket, bool isCaller) {
    link::Endpoints ends = link::EndpointsOf(socket);
    ends.IsCaller = isCaller;
    offered_.emplace(std::move(socket));
    machine_->OnConnected(ends, Now());
    PerformActions();
}

void TransportDriver::Shell::Do(const link::StopConnecting&) {
    ++generation_;
    resolver_.cancel();
    remotes_.clear();
    connecting_.reset();
}

void TransportDriver::Shell::Adopt(std::optional<Tcp::socket>& socket) {
    ++generation_;
    connecting_.reset();
    stream_ = std::move(socket);
    socket.reset();
    waitingForInput_ = waitingForRoom_ = readingPaused_ = false;
}

void TransportDriver::Shell::Do(const link::AdoptConnection&) { Adopt(offered_); }

void TransportDriver::Shell::Do(const link::HoldConnection&) {
    held_ = std::move(offered_);
    offered_.reset();
}

void TransportDriver::Shell::Do(const link::AdoptHeld&) { Adopt(held_); }

void TransportDriver::Shell::Do(const link::RefuseHeld&) { held_.reset(); }

void TransportDriver::Shell::Do(const link::RefuseConnection&) { offered_.reset(); }

void TransportDriver::Shell::Do(const link::CloseConnection&) {
    Do(link::StopConnecting{});
    offered_.reset();
    stream_.reset();
    waitingForInput_ = waitingForRoom_ = readingPaused_ = false;
}

}  // namespace hexmire
