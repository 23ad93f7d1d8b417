#pragma once

#include <hexmire/driver/trace/TraceText.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace hexmire::link {

/// One end of a TCP connection, its address in network order: 4 bytes of it, or all 16.
struct CaptureEnd {
    std::array<std::uint8_t, 16> Address{};
    bool IsIPv6 = false;
    std::uint16_t Port = 0;

    bool operator==(const CaptureEnd&) const = default;
};

/// How a TCP connection came to its end.
enum class ConnectionEnd : std::uint8_t { ByUs, ByPeer, Lost };

/// Dresses the bytes of one TCP connection as the packets that could have carried them, for
/// programs that read captures: Ethernet, IP and TCP with running sequence numbers from 1 on, right
/// checksums, the opening handshake and the closing one. The real segments are the system's secret;
/// here each chunk is one, or several when it is longer than an IP packet may be. Ethernet
/// addresses are made up: 02:00:00:00:00:01 is this side, :02 the peer.
///
/// Packets are appended to a pcapng file.
class TcpCapture {
public:
    using TimePoint = std::chrono::system_clock::time_point;

    /// Both ends are of one IP version. `isCaller`: the peer has opened the connection.
    TcpCapture(const CaptureEnd& local, const CaptureEnd& peer, bool isCaller);

    /// The three packets of the opening; the comment goes to the first.
    void AppendOpening(std::string& file, TimePoint time, std::string_view comment = {});
    void AppendBytes(std::string& file,
                     TimePoint time,
                     TraceDirection direction,
                     std::span<const std::uint8_t> bytes);
    /// A lost connection ends by a reset from the peer. The comment goes to the first packet.
    void AppendEnd(std::string& file,
                   TimePoint time,
                   ConnectionEnd end,
                   std::string_view comment = {});

private:
    struct Side {
        CaptureEnd End;
        std::uint8_t Ethernet;   ///< last byte of its address
        std::uint32_t Next = 0;  ///< sequence number of its next byte
    };
    void AppendSegment(std::string& file,
                       TimePoint time,
                       bool fromPeer,
                       std::uint8_t flags,
                       std::span<const std::uint8_t> data = {},
                       std::string_view comment = {});
    void AddIPv4(const Side& from, const Side& to, std::size_t segmentSize);
    void AddIPv6(const Side& from, const Side& to, std::size_t segmentSize);

    Side local_;
    Side peer_;
    bool isCaller_;
    std::vector<std::uint8_t> frame_;  // being put together; kept to spare an allocation for each
};

}  // namespace hexmire::link
