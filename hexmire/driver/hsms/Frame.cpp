#include <hexmire/driver/hsms/Frame.h>

#include <algorithm>

namespace hexmire::hsms {

bool IsKnownSType(std::uint8_t value) noexcept { return value <= 7 || value == 9; }

FrameHeader DecodeHeader(std::span<const std::uint8_t, kHeaderBytes> bytes) noexcept {
    return {
        .SessionID = static_cast<std::uint16_t>(bytes[0] << 8U | bytes[1]),
        .Byte2 = bytes[2],
        .Byte3 = bytes[3],
        .PType = bytes[4],
        .SessionType = bytes[5],
        .SystemBytes = GetU32(&bytes[6]),
    };
}

link::HeaderBytes EncodeHeader(const FrameHeader& header) noexcept {
    link::HeaderBytes bytes{static_cast<std::uint8_t>(header.SessionID >> 8U),
                            static_cast<std::uint8_t>(header.SessionID),
                            header.Byte2,
                            header.Byte3,
                            header.PType,
                            header.SessionType};
    PutU32(&bytes[6], header.SystemBytes);
    return bytes;
}

std::array<std::uint8_t, kLengthBytes + kHeaderBytes> EncodeControlFrame(
    const FrameHeader& header) noexcept {
    std::array<std::uint8_t, kLengthBytes + kHeaderBytes> frame{};
    PutU32(frame.data(), kHeaderBytes);
    const link::HeaderBytes bytes = EncodeHeader(header);
    std::copy(bytes.begin(), bytes.end(), frame.begin() + kLengthBytes);
    return frame;
}

FrameHeader ControlHeader(SType type,
                          std::uint16_t sessionId,
                          std::uint32_t systemBytes,
                          std::uint8_t byte3) noexcept {
    return {
        .SessionID = sessionId,
        .Byte3 = byte3,
        .SessionType = static_cast<std::uint8_t>(type),
        .SystemBytes = systemBytes,
    };
}

FrameHeader RejectHeader(const FrameHeader& rejected, RejectReason reason) noexcept {
    FrameHeader header = ControlHeader(SType::RejectReq,
                                       rejected.SessionID,
                                       rejected.SystemBytes,
                                       static_cast<std::uint8_t>(reason));
    header.Byte2 = reason == RejectReason::PTypeUnknown ? rejected.PType : rejected.SessionType;
    return header;
}

}  // namespace hexmire::hsms
