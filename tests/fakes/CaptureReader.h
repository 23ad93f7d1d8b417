#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// An independent reader of pcapng files with TCP packets in Ethernet frames.
namespace hexmire::fakes {

struct CapturedPacket {
    std::uint64_t Nanoseconds = 0;
    bool IsInbound = false;
    std::string Comment;
    std::vector<std::uint8_t> Frame;
};

struct CaptureFile {
    int Sections = 0;
    std::vector<std::string> Interfaces;
    std::vector<CapturedPacket> Packets;
};

/// Throws std::runtime_error for what is no such file.
[[nodiscard]] CaptureFile ReadCapture(std::string_view bytes);

/// One TCP segment. Lengths and checksums have been checked: those that are wrong throw
/// std::runtime_error.
struct Segment {
    std::string Source;       ///< hexadecimal address, ":" and port
    std::string Destination;  ///< the same
    std::string Flags;        ///< of S, F, R, P and A, in this order
    std::uint32_t Sequence = 0;
    std::uint32_t Acknowledged = 0;
    std::vector<std::uint8_t> Data;
};
[[nodiscard]] Segment ReadSegment(std::span<const std::uint8_t> frame);

/// "> SA 0 1 | 05 06 | comment" for each packet: direction ("<" is inbound), flags, sequence and
/// acknowledge number, data, comment.
[[nodiscard]] std::vector<std::string> ShowCapture(std::string_view bytes);

}  // namespace hexmire::fakes
