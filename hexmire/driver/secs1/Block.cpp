#include <hexmire/driver/secs1/Block.h>

#include <numeric>

namespace hexmire::secs1 {

namespace {

constexpr unsigned kTopBit = 0x80;
constexpr unsigned kLowBits = 0x7F;

std::uint16_t GetU15(std::uint8_t high, std::uint8_t low) noexcept {
    return static_cast<std::uint16_t>((high & kLowBits) << 8U | low);
}

std::uint8_t WithTopBit(bool bit, unsigned value) noexcept {
    return static_cast<std::uint8_t>((bit ? kTopBit : 0U) | (value & kLowBits));
}

}  // namespace

bool BlockHeader::IsOfSameMessage(const BlockHeader& other) const noexcept {
    return ToHost == other.ToHost && DeviceID == other.DeviceID && WBit == other.WBit &&
           Stream == other.Stream && Function == other.Function && SystemBytes == other.SystemBytes;
}

BlockHeader DecodeHeader(std::span<const std::uint8_t, kHeaderBytes> bytes) noexcept {
    return {.ToHost = (bytes[0] & kTopBit) != 0,
            .DeviceID = GetU15(bytes[0], bytes[1]),
            .WBit = (bytes[2] & kTopBit) != 0,
            .Stream = static_cast<std::uint8_t>(bytes[2] & kLowBits),
            .Function = bytes[3],
            .IsLast = (bytes[4] & kTopBit) != 0,
            .Number = GetU15(bytes[4], bytes[5]),
            .SystemBytes = static_cast<std::uint32_t>(bytes[6]) << 24U |
                           static_cast<std::uint32_t>(bytes[7]) << 16U |
                           static_cast<std::uint32_t>(bytes[8]) << 8U | bytes[9]};
}

link::HeaderBytes EncodeHeader(const BlockHeader& header) noexcept {
    return {WithTopBit(header.ToHost, header.DeviceID >> 8U),
            static_cast<std::uint8_t>(header.DeviceID),
            WithTopBit(header.WBit, header.Stream),
            header.Function,
            WithTopBit(header.IsLast, header.Number >> 8U),
            static_cast<std::uint8_t>(header.Number),
            static_cast<std::uint8_t>(header.SystemBytes >> 24U),
            static_cast<std::uint8_t>(header.SystemBytes >> 16U),
            static_cast<std::uint8_t>(header.SystemBytes >> 8U),
            static_cast<std::uint8_t>(header.SystemBytes)};
}

std::uint16_t Checksum(std::span<const std::uint8_t> bytes) noexcept {
    return static_cast<std::uint16_t>(std::accumulate(bytes.begin(), bytes.end(), 0U));
}

std::vector<std::uint8_t> EncodeBlock(const BlockHeader& header,
                                      std::span<const std::uint8_t> data) {
    const link::HeaderBytes head = EncodeHeader(header);
    std::vector<std::uint8_t> bytes;
    bytes.reserve(1 + kHeaderBytes + data.size() + kChecksumBytes);
    bytes.push_back(static_cast<std::uint8_t>(kHeaderBytes + data.size()));
    bytes.insert(bytes.end(), head.begin(), head.end());
    bytes.insert(bytes.end(), data.begin(), data.end());
    const std::uint16_t sum = Checksum(std::span(bytes).subspan(1));
    bytes.push_back(static_cast<std::uint8_t>(sum >> 8U));
    bytes.push_back(static_cast<std::uint8_t>(sum));
    return bytes;
}

}  // namespace hexmire::secs1
