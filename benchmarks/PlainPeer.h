#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <thread>
#include <vector>

/// HSMS-SS with blocking sockets and nothing else: the least that two programs need to exchange the
/// same bytes. The measure for the library's links, and their peer.
namespace hexmire::bench {

/// A message as it stands on the wire: length, header, body.
std::vector<std::uint8_t> HsmsFrame(std::uint8_t byte2,
                                    std::uint8_t byte3,
                                    std::uint8_t sType,
                                    std::uint32_t systemBytes,
                                    std::span<const std::uint8_t> body = {});

/// Listens on a free port of the loopback interface, on a thread of its own, for one caller after
/// the other: selects, answers S1F1 with a fixed S1F2 and S2F101 with its own body.
class PlainEquipment {
public:
    PlainEquipment();
    PlainEquipment(const PlainEquipment&) = delete;
    PlainEquipment& operator=(const PlainEquipment&) = delete;
    ~PlainEquipment();

    [[nodiscard]] std::uint16_t Port() const noexcept { return port_; }

private:
    void Serve();

    int listener_ = -1;
    std::uint16_t port_ = 0;
    std::thread thread_;
};

/// Connects to that port and selects.
class PlainHost {
public:
    explicit PlainHost(std::uint16_t port);
    PlainHost(const PlainHost&) = delete;
    PlainHost& operator=(const PlainHost&) = delete;
    ~PlainHost();

    /// Writes the frames and reads as many bytes as are expected back.
    void Exchange(std::span<const std::uint8_t> frames, std::size_t replyBytes);

private:
    int socket_ = -1;
    std::vector<std::uint8_t> buffer_;
};

}  // namespace hexmire::bench
