#include <hexmire/control/detail/MessageHeader.h>
#include <hexmire/core/ModGeneral.h>
#include <hexmire/support/Fault.h>
#include <hexmire/support/HexBytes.h>

namespace hexmire::detail {

Control::MessageHeader::MessageHeader(const std::string& hex) {
    if (!ReadHexText(hex, Bytes.size(), Bytes.data())) throw Fault(FaultNumber::TypeMismatch);
    constexpr unsigned kReplyBit = 0x80;
    constexpr unsigned kStreamBits = 0x7F;
    DeviceID = Bytes[0] << 8 | Bytes[1];
    ReplyExpected = (Bytes[2] & kReplyBit) != 0;
    Stream = static_cast<std::int32_t>(Bytes[2] & kStreamBits);
    Function = Bytes[3];
}

void Control::MessageHeader::ReadSystemBytes() {
    constexpr std::uint8_t kTopBit = 0x80;
    if (Bytes[6] < kTopBit) {
        SystemBytes = Bytes[6] << 24 | Bytes[7] << 16 | Bytes[8] << 8 | Bytes[9];
        return;
    }
    for (std::size_t place = 6; place <= 9; ++place) {
        SystemBytes = ModGeneral::lLBitShift(SystemBytes, 8) | Bytes[place];
    }
}

std::string Control::MessageHeader::Name() const {
    return "S" + std::to_string(Stream) + "F" + std::to_string(Function);
}

}  // namespace hexmire::detail
