#include <hexmire/hosting/links/SocketStream.h>

namespace hexmire::link {

using Socket = asio::ip::tcp::socket;

void SocketStream::WaitForInput(Ready ready) {
    socket_.async_wait(Socket::wait_read, std::move(ready));
}

void SocketStream::WaitForRoom(Ready ready) {
    socket_.async_wait(Socket::wait_write, std::move(ready));
}

std::size_t SocketStream::Read(asio::mutable_buffer into, asio::error_code& error) {
    return socket_.read_some(asio::mutable_buffers_1(into), error);
}

std::size_t SocketStream::Write(std::span<const asio::const_buffer> from, asio::error_code& error) {
    return socket_.write_some(from, error);
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
