#pragma once

#include <asio/buffer.hpp>
#include <asio/error_code.hpp>

#include <cstddef>
#include <functional>
#include <span>

namespace hexmire::link {

/// A live connection as the shell reads and writes it, be it a socket or a serial port. Nothing
/// blocks: what cannot be done now is asio::error::would_block. Destroying the stream closes it;
/// waits under way end with asio::error::operation_aborted.
class IByteStream {
public:
    using Ready = std::function<void(const asio::error_code&)>;

    /// Calls `ready` once from the loop when there is something to read, the end included.
    virtual void WaitForInput(Ready ready) = 0;
    /// Calls `ready` once from the loop when there is room to write.
    virtual void WaitForRoom(Ready ready) = 0;
    /// The number of bytes read; asio::error::eof at the end.
    virtual std::size_t Read(asio::mutable_buffer into, asio::error_code& error) = 0;
    /// The number of bytes that the system has taken.
    virtual std::size_t Write(std::span<const asio::const_buffer> from,
                              asio::error_code& error) = 0;
    /// Tells the peer that nothing more will come, where the medium knows such a thing.
    virtual void ShutdownSend() noexcept = 0;
    /// What has been written still goes out when the stream is destroyed now.
    virtual void Drain(asio::mutable_buffer scratch) noexcept = 0;

    virtual ~IByteStream() = default;

protected:
    IByteStream() = default;
    IByteStream(const IByteStream&) = default;
    IByteStream& operator=(const IByteStream&) = default;
};

}  // namespace hexmire::link
