#pragma once

#include <hexmire/hosting/links/ByteStream.h>

#include <asio/ip/tcp.hpp>

#include <utility>

namespace hexmire::link {

/// A connected TCP socket, prepared by PrepareStream.
class SocketStream final : public IByteStream {
public:
    explicit SocketStream(asio::ip::tcp::socket socket) : socket_(std::move(socket)) {}

    void WaitForInput(Ready ready) override;
    void WaitForRoom(Ready ready) override;
    std::size_t Read(asio::mutable_buffer into, asio::error_code& error) override;
    std::size_t Write(std::span<const asio::const_buffer> from, asio::error_code& error) override;
    void ShutdownSend() noexcept override;
    void Drain(asio::mutable_buffer scratch) noexcept override;

private:
    asio::ip::tcp::socket socket_;
    bool wasReset_ = false;
};

}  // namespace hexmire::link
