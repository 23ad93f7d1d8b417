#pragma once

#include <hexmire/hosting/links/TransportDriver.h>
#include <hexmire/support/HexBytes.h>

#include <asio.hpp>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace hexmire::test {

/// Writes down what a driver raises, one line an event; a hook may act from inside the event.
class LinkRecorder final : public SECSIServiceEvents {
public:
    void Connect() override { Add("Connect"); }
    void Disconnect(std::int32_t code, const std::string& text) override;
    void Error(std::int32_t code, const std::string& text) override;
    void SecsMsgSend(const std::string& hex) override { Add("Sent " + hex); }
    void SecsBlockReceive(const std::string& hex) override { Add("Block " + hex); }
    void SecsMsgReceive(const std::string& header,
                        const std::string& body,
                        std::int32_t length) override;

    /// Number of lines that start with this text.
    [[nodiscard]] std::size_t Count(std::string_view start) const;
    [[nodiscard]] bool Has(std::string_view start) const { return Count(start) > 0; }

    std::vector<std::string> Lines;
    std::vector<std::string> Texts;  ///< error and disconnect texts
    std::function<void(const std::string&)> Hook;
    bool Recording = true;

private:
    void Add(std::string line);
};

/// One loop, and drivers on loopback with short timers. Nothing sleeps: the loop runs until a
/// condition holds or a generous deadline has passed.
class LinkRig {
public:
    /// Runs the loop until the condition holds; false when it did not within the deadline.
    bool RunUntil(const std::function<bool()>& condition,
                  std::chrono::milliseconds deadline = std::chrono::seconds(10));
    /// Runs the loop for so long, for what must not happen.
    void RunFor(std::chrono::milliseconds duration);

    /// A port that nobody listens on at the moment.
    [[nodiscard]] std::uint16_t FreePort();
    /// Settings for one end on loopback: HSMS-SS, device 5, short timers.
    [[nodiscard]] static LinkSettings Active(std::uint16_t port);
    [[nodiscard]] static LinkSettings Passive(std::uint16_t port);
    /// Settings of a host on a serial port: device 5, 19200 bit/s, short timers.
    [[nodiscard]] static LinkSettings Serial(const std::string& path);

    asio::io_context Loop;
};

/// A raw socket at the other end, blocking towards the test alone: every operation runs the loop.
class RawPeer {
public:
    explicit RawPeer(LinkRig& rig) : rig_(rig), socket_(rig.Loop) {}

    bool ConnectTo(std::uint16_t port);
    /// Takes the next caller of this listener.
    bool AcceptFrom(asio::ip::tcp::acceptor& acceptor);
    void Send(std::string_view hex);
    /// Reads so many bytes; their hex text, or what came until the connection ended.
    std::string Read(std::size_t count);
    /// Reads until the other side closes; "" when it closed without a word.
    std::string ReadToEnd();
    [[nodiscard]] bool WasReset() const { return reset_; }
    void Close() { socket_.close(); }
    /// Closes with a reset instead of a FIN.
    void Reset();
    [[nodiscard]] asio::ip::tcp::socket& Socket() { return socket_; }

private:
    LinkRig& rig_;
    asio::ip::tcp::socket socket_;
    bool reset_ = false;
};

/// Reads so many bytes from a stream, running the loop; what came when it ended or failed.
template <class Stream>
std::vector<std::uint8_t> ReadBytes(LinkRig& rig,
                                    Stream& stream,
                                    std::size_t count,
                                    asio::error_code& error) {
    std::vector<std::uint8_t> bytes(count);
    bool done = false;
    asio::async_read(
        stream, asio::buffer(bytes), [&](const asio::error_code& failure, std::size_t got) {
            done = true;
            error = failure;
            bytes.resize(got);
        });
    if (!rig.RunUntil([&] { return done; })) {
        stream.cancel();
        (void)rig.RunUntil([&] { return done; });
    }
    return bytes;
}

/// Bytes of a hex text such as "0000000A FFFF".
[[nodiscard]] std::vector<std::uint8_t> Bytes(std::string_view hex);
/// A SECS-I block as on the line, as hex text: length, ten header bytes, data, checksum.
[[nodiscard]] std::string BlockHex(std::string_view header, std::string_view data = {});
/// Header bytes of a data message.
[[nodiscard]] std::vector<std::uint8_t> Header(std::uint8_t streamWithW,
                                               std::uint8_t function,
                                               std::uint32_t systemBytes,
                                               std::uint16_t device = 5);

}  // namespace hexmire::test
