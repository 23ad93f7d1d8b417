#include "Sockets.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <system_error>
#include <utility>

namespace hexmire::bench {

namespace {

int Checked(int result, const char* call) {
    if (result < 0) throw std::system_error(errno, std::generic_category(), call);
    return result;
}

Socket NewSocket() { return Socket(Checked(::socket(AF_INET, SOCK_STREAM, 0), "socket")); }

sockaddr_in Loopback(std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    return address;
}

void Switch(const Socket& socket, int level, int option) {
    const int on = 1;
    Checked(::setsockopt(socket.Descriptor(), level, option, &on, sizeof(on)), "setsockopt");
}

}  // namespace

Socket::Socket(Socket&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}

Socket& Socket::operator=(Socket&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
}

Socket::~Socket() {
    if (descriptor_ >= 0) ::close(descriptor_);
}

void Socket::ShutDown() const noexcept { ::shutdown(descriptor_, SHUT_RDWR); }

Socket Listen(std::uint16_t port) {
    Socket listener = NewSocket();
    Switch(listener, SOL_SOCKET, SO_REUSEADDR);
    const sockaddr_in address = Loopback(port);
    Checked(
        ::bind(listener.Descriptor(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)),
        "bind");
    Checked(::listen(listener.Descriptor(), SOMAXCONN), "listen");
    return listener;
}

std::uint16_t LocalPort(const Socket& socket) {
    sockaddr_in address{};
    socklen_t size = sizeof(address);
    Checked(::getsockname(socket.Descriptor(), reinterpret_cast<sockaddr*>(&address), &size),
            "getsockname");
    return ntohs(address.sin_port);
}

Socket Accept(const Socket& listener) {
    Socket caller(Checked(::accept(listener.Descriptor(), nullptr, nullptr), "accept"));
    Switch(caller, IPPROTO_TCP, TCP_NODELAY);
    return caller;
}

Socket Connect(std::uint16_t port) {
    Socket socket = NewSocket();
    const sockaddr_in address = Loopback(port);
    Checked(::connect(
                socket.Descriptor(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)),
            "connect");
    Switch(socket, IPPROTO_TCP, TCP_NODELAY);
    return socket;
}

bool WriteAll(const Socket& socket, std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::send(socket.Descriptor(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count <= 0) return false;
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return true;
}

}  // namespace hexmire::bench
