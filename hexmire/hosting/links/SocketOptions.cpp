#include <hexmire/hosting/links/SocketOptions.h>

#include <fcntl.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

namespace hexmire::link {

namespace {

constexpr int kKeepIdleSeconds = 30;
constexpr int kKeepIntervalSeconds = 10;
constexpr int kKeepProbes = 3;
constexpr int kUserTimeoutMilliseconds = 30'000;
constexpr int kBacklog = 8;

void CloseOnExec(int descriptor) {
    const int flags = ::fcntl(descriptor, F_GETFD);
    if (flags >= 0) (void)::fcntl(descriptor, F_SETFD, flags | FD_CLOEXEC);
}

void SetTcpOption(int descriptor, int option, int value) {
    (void)::setsockopt(descriptor, IPPROTO_TCP, option, &value, sizeof value);
}

std::string AddressText(asio::ip::address address) {
    if (address.is_v6() && address.to_v6().is_v4_mapped()) {
        address = asio::ip::make_address_v4(asio::ip::v4_mapped, address.to_v6());
    }
    return address.to_string();
}

}  // namespace

void PrepareStream(asio::ip::tcp::socket& socket, asio::error_code& error) {
    asio::error_code ignored;
    socket.set_option(asio::ip::tcp::no_delay(true), ignored);
    socket.set_option(asio::socket_base::keep_alive(true), ignored);
    const int descriptor = socket.native_handle();
    SetTcpOption(descriptor, TCP_KEEPIDLE, kKeepIdleSeconds);
    SetTcpOption(descriptor, TCP_KEEPINTVL, kKeepIntervalSeconds);
    SetTcpOption(descriptor, TCP_KEEPCNT, kKeepProbes);
    SetTcpOption(descriptor, TCP_USER_TIMEOUT, kUserTimeoutMilliseconds);
    CloseOnExec(descriptor);
    socket.non_blocking(true, error);
}

void OpenListener(asio::ip::tcp::acceptor& acceptor,
                  const asio::ip::tcp::endpoint& endpoint,
                  asio::error_code& error) {
    acceptor.open(endpoint.protocol(), error);
    if (error) return;
    CloseOnExec(acceptor.native_handle());
    acceptor.set_option(asio::socket_base::reuse_address(true), error);
    if (!error) acceptor.bind(endpoint, error);
    if (!error) acceptor.listen(kBacklog, error);
}

Endpoints EndpointsOf(const asio::ip::tcp::socket& socket) {
    asio::error_code error;
    Endpoints ends;
    if (const auto local = socket.local_endpoint(error); !error) {
        ends.LocalAddress = AddressText(local.address());
        ends.LocalPort = local.port();
    }
    if (const auto remote = socket.remote_endpoint(error); !error) {
        ends.RemoteAddress = AddressText(remote.address());
        ends.RemotePort = remote.port();
    }
    return ends;
}

std::string CanonicalAddress(const std::string& address) {
    asio::error_code error;
    const auto numeric = asio::ip::make_address(address, error);
    return error ? address : AddressText(numeric);
}

SystemFailure FailureOf(const asio::error_code& error) {
    return {.Number = error.value(), .Text = error.message()};
}

}  // namespace hexmire::link
