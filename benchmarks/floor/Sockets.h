#pragma once

#include <cstdint>
#include <span>

/// Blocking TCP sockets on the loopback interface. Failures throw std::system_error.
namespace hexmire::bench {

/// A socket that is closed at its end.
class Socket {
public:
    Socket() = default;
    explicit Socket(int descriptor) noexcept : descriptor_(descriptor) {}
    Socket(Socket&& other) noexcept;
    Socket& operator=(Socket&& other) noexcept;
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;
    ~Socket();

    [[nodiscard]] int Descriptor() const noexcept { return descriptor_; }
    /// What waits on it returns.
    void ShutDown() const noexcept;

private:
    int descriptor_ = -1;
};

/// Listens on the port; 0: on one that the system chooses.
Socket Listen(std::uint16_t port);
std::uint16_t LocalPort(const Socket& socket);
/// Accepted and connected sockets send without waiting for more.
Socket Accept(const Socket& listener);
Socket Connect(std::uint16_t port);
/// False when the peer has gone.
bool WriteAll(const Socket& socket, std::span<const std::uint8_t> bytes);

}  // namespace hexmire::bench
