#include <hexmire/hosting/links/SocketStream.h>

#include <asio/error.hpp>

namespace hexmire::link {

using Socket = asio::ip::tcp::socket;

void SocketStream::WaitForInput(Ready ready) {
    socket_.async_wait(Socket::wait_read, std::move(ready));
}

void SocketStream::WaitForRoom(Ready ready) {
    socket_.async_wait(Socket::wait_write, std::move(ready));
}

std::size_t SocketStream::Read(asio::mutable_buffer into, asio::error_code& error) {
    const std::size_t count = socket_.read_some(into, error);
    if (error == asio::error::eof && wasReset_) error = asio::error::connection_reset;
    return count;
}

std::size_t SocketStream::Write(std::span<const asio::const_buffer> from, asio::error_code& error) {
    // One buffer is a cheaper call of the system than a list with one entry.
    const std::size_t count =
        from.size() == 1 ? socket_.write_some(from[0], error) : socket_.write_some(from, error);
    // The system tells of a reset once: whoever reads afterwards finds what looks like an end in
    // good order.
    if (error == asio::error::connection_reset) wasReset_ = true;
    return count;
}

void SocketStream::ShutdownSend() noexcept {
    asio::error_code ignored;
    socket_.shutdown(Socket::shutdown_send, ignored);
}

/// Nothing unread may be left, or the system would reset the connection and with it destroy our
/// last bytes at the peer. A peer that sends without a pause is not waited for.
void SocketStream::Drain(asio::mutable_buffer scratch) noexcept {
    constexpr int kMostReads = 64;
    ShutdownSend();
    asio::error_code error;
    for (int reads = 0; reads < kMostReads && !error; ++reads) {
        Read(scratch, error);
    }
}

}  // namespace hexmire::link
