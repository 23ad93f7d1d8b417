#pragma once

#include <hexmire/driver/ILinkMachine.h>
#include <hexmire/hosting/links/ByteStream.h>

#include <asio/io_context.hpp>
#include <asio/posix/stream_descriptor.hpp>

#include <cstdint>
#include <memory>
#include <string>

namespace hexmire::link {

/// The path of a serial port: a name with a "/" in it as it stands, any other in /dev.
[[nodiscard]] std::string SerialDevicePath(const std::string& name);

/// A serial port that is ours alone: raw, 8 data bits, no parity, one stop bit, no flow control.
class SerialStream final : public IByteStream {
public:
    /// Opens the port and sets it up; what was received before is thrown away. Without a port,
    /// `failure` tells why: 3060 it cannot be opened, 3061 it takes no setting of ours, 3062 it is
    /// in use.
    [[nodiscard]] static std::unique_ptr<SerialStream> Open(asio::io_context& loop,
                                                            const std::string& name,
                                                            std::int32_t baudRate,
                                                            SystemFailure& failure);
    SerialStream(const SerialStream&) = delete;
    SerialStream& operator=(const SerialStream&) = delete;
    ~SerialStream() override;

    void WaitForInput(Ready ready) override;
    void WaitForRoom(Ready ready) override;
    std::size_t Read(asio::mutable_buffer into, asio::error_code& error) override;
    std::size_t Write(std::span<const asio::const_buffer> from, asio::error_code& error) override;
    void ShutdownSend() noexcept override {}  // a serial line knows no end
    void Drain(asio::mutable_buffer) noexcept override {}

private:
    explicit SerialStream(asio::io_context& loop) : port_(loop) {}

    asio::posix::stream_descriptor port_;
};

}  // namespace hexmire::link
