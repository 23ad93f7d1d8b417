#include "CaptureReader.h"

#include <hexmire/support/HexBytes.h>

#include <cstddef>
#include <stdexcept>

namespace hexmire::fakes {

namespace {

[[noreturn]] void Fail(const std::string& what) { throw std::runtime_error("capture: " + what); }

void Require(bool holds, const char* what) {
    if (!holds) Fail(what);
}

/// Little-endian numbers of a pcapng file.
std::uint32_t Little(std::string_view bytes, std::size_t offset, std::size_t size) {
    Require(offset + size <= bytes.size(), "the file ends inside a block");
    std::uint32_t value = 0;
    for (std::size_t index = size; index > 0; --index) {
        value = value << 8U | static_cast<std::uint8_t>(bytes[offset + index - 1]);
    }
    return value;
}

/// The value of the first option with this code; "" when there is none.
std::string Option(std::string_view options, std::uint32_t wanted) {
    while (!options.empty()) {
        const std::uint32_t code = Little(options, 0, 2);
        const std::uint32_t size = Little(options, 2, 2);
        if (code == 0) {
            Require(size == 0 && options.size() == 4, "options go on behind their end");
            return "";
        }
        const std::size_t padded = (std::size_t{size} + 3U) / 4U * 4U;
        Require(4 + padded <= options.size(), "an option ends behind its block");
        if (code == wanted) return std::string(options.substr(4, size));
        options.remove_prefix(4 + padded);
    }
    Fail("options without an end");
}

void ReadBlock(CaptureFile& file, std::uint32_t type, std::string_view body) {
    constexpr std::uint32_t kSection = 0x0A0D0D0A;
    constexpr std::uint32_t kInterface = 1;
    constexpr std::uint32_t kPacket = 6;
    if (type == kSection) {
        Require(Little(body, 0, 4) == 0x1A2B3C4D && Little(body, 4, 4) == 1, "bad section");
        Require(body.substr(8, 8) == std::string(8, '\xFF'), "bad section length");
        ++file.Sections;
    } else if (type == kInterface) {
        Require(Little(body, 0, 2) == 1 && Little(body, 4, 4) == 0, "bad interface");
        Require(Option(body.substr(8), 9) == "\x09", "times are not nanoseconds");
        file.Interfaces.push_back(Option(body.substr(8), 2));
    } else {
        Require(type == kPacket, "unknown block");
        Require(Little(body, 0, 4) == 0 && !file.Interfaces.empty(), "packet of no interface");
        CapturedPacket packet;
        packet.Nanoseconds = std::uint64_t{Little(body, 4, 4)} << 32U | Little(body, 8, 4);
        const std::uint32_t size = Little(body, 12, 4);
        Require(Little(body, 16, 4) == size && 20 + size <= body.size(), "bad packet length");
        packet.Frame.assign(body.begin() + 20, body.begin() + 20 + size);
        const std::string_view options = body.substr(20 + (size + 3U) / 4U * 4U);
        packet.Comment = Option(options, 1);
        const std::string flags = Option(options, 2);
        Require(flags.size() == 4 && (flags[0] == 1 || flags[0] == 2), "no direction");
        packet.IsInbound = flags[0] == 1;
        file.Packets.push_back(std::move(packet));
    }
}

std::uint32_t Big(std::span<const std::uint8_t> bytes, std::size_t offset, std::size_t size) {
    std::uint32_t value = 0;
    for (std::size_t index = 0; index < size; ++index) {
        value = value << 8U | bytes[offset + index];
    }
    return value;
}

/// The sum that is 0xFFFF where a checksum is right.
std::uint32_t OnesSum(std::span<const std::uint8_t> bytes, std::uint32_t sum = 0) {
    for (std::size_t index = 0; index < bytes.size(); ++index) {
        sum += index % 2 == 0 ? std::uint32_t{bytes[index]} * 256U : bytes[index];
        sum = (sum & 0xFFFFU) + (sum >> 16U);
    }
    return sum;
}

std::string Flags(std::uint8_t bits) {
    std::string text;
    if ((bits & 0x02U) != 0) text += 'S';
    if ((bits & 0x01U) != 0) text += 'F';
    if ((bits & 0x04U) != 0) text += 'R';
    if ((bits & 0x08U) != 0) text += 'P';
    if ((bits & 0x10U) != 0) text += 'A';
    return text;
}

}  // namespace

CaptureFile ReadCapture(std::string_view bytes) {
    CaptureFile file;
    while (!bytes.empty()) {
        const std::uint32_t length = Little(bytes, 4, 4);
        Require(length >= 12 && length % 4 == 0 && length <= bytes.size(), "bad block length");
        Require(Little(bytes, length - 4, 4) == length, "the lengths of a block differ");
        ReadBlock(file, Little(bytes, 0, 4), bytes.substr(8, length - 12));
        bytes.remove_prefix(length);
    }
    return file;
}

Segment ReadSegment(std::span<const std::uint8_t> frame) {
    Require(frame.size() >= 14 + 40, "short frame");
    const std::uint32_t type = Big(frame, 12, 2);
    const auto packet = frame.subspan(14);
    const bool isIPv6 = type == 0x86DD;
    Require(isIPv6 || type == 0x0800, "no IP packet");
    const std::size_t header = isIPv6 ? 40 : 20;
    const std::size_t address = isIPv6 ? 16 : 4;
    const auto tcp = packet.subspan(header);
    if (isIPv6) {
        Require(Big(packet, 0, 4) == 0x60000000 && packet[6] == 6, "bad IPv6 header");
        Require(Big(packet, 4, 2) == tcp.size(), "bad IPv6 length");
    } else {
        Require(packet[0] == 0x45 && packet[9] == 6, "bad IPv4 header");
        Require(Big(packet, 2, 2) == packet.size(), "bad IPv4 length");
        Require(OnesSum(packet.first(20)) == 0xFFFF, "bad IPv4 checksum");
    }
    const auto source = packet.subspan(header - 2 * address, address);
    const auto destination = packet.subspan(header - address, address);
    const auto pseudo = static_cast<std::uint32_t>(6 + tcp.size());
    Require(OnesSum(tcp, OnesSum(source, OnesSum(destination, pseudo))) == 0xFFFF,
            "bad TCP checksum");
    Require(tcp.size() >= 20 && tcp[12] == 0x50, "bad TCP header");
    Segment segment;
    segment.Source = HexText(source) + ": " + std::to_string(Big(tcp, 0, 2));
    segment.Destination = HexText(destination) + ": " + std::to_string(Big(tcp, 2, 2));
    segment.Flags = Flags(tcp[13]);
    segment.Sequence = Big(tcp, 4, 4);
    segment.Acknowledged = Big(tcp, 8, 4);
    segment.Data.assign(tcp.begin() + 20, tcp.end());
    return segment;
}

std::vector<std::string> ShowCapture(std::string_view bytes) {
    std::vector<std::string> lines;
    for (const CapturedPacket& packet : ReadCapture(bytes).Packets) {
        const Segment segment = ReadSegment(packet.Frame);
        std::string line = packet.IsInbound ? "< " : "> ";
        line += segment.Flags + " " + std::to_string(segment.Sequence) + " " +
                std::to_string(segment.Acknowledged);
        if (!segment.Data.empty()) line += " | " + HexText(segment.Data);
        if (!packet.Comment.empty()) line += " | " + packet.Comment;
        lines.push_back(line);
    }
    return lines;
}

}  // namespace hexmire::fakes
