#include <hexmire/driver/trace/PcapNg.h>

#include <cstddef>

namespace hexmire::link {

namespace {

constexpr std::uint32_t kSectionHeader = 0x0A0D'0D0A;
constexpr std::uint32_t kInterfaceDescription = 1;
constexpr std::uint32_t kEnhancedPacket = 6;
constexpr std::uint32_t kByteOrderMagic = 0x1A2B'3C4D;
constexpr std::uint16_t kEthernet = 1;

constexpr std::uint16_t kEndOfOptions = 0;
constexpr std::uint16_t kComment = 1;
constexpr std::uint16_t kUserApplication = 4;  // of a section
constexpr std::uint16_t kInterfaceName = 2;
constexpr std::uint16_t kTimeResolution = 9;  // of an interface
constexpr std::uint16_t kPacketFlags = 2;

void Append16(std::string& file, std::uint16_t value) {
    file += static_cast<char>(value & 0xFFU);
    file += static_cast<char>(value >> 8U);
}

void Append32(std::string& file, std::uint32_t value) {
    Append16(file, static_cast<std::uint16_t>(value));
    Append16(file, static_cast<std::uint16_t>(value >> 16U));
}

void Put32(std::string& file, std::size_t offset, std::uint32_t value) {
    for (unsigned index = 0; index < 4; ++index) {
        file[offset + index] = static_cast<char>(value >> (8U * index));
    }
}

/// Everything in a block stands on multiples of four bytes.
void AppendPadded(std::string& file, std::string_view bytes) {
    file += bytes;
    file.append((4 - bytes.size() % 4) % 4, '\0');
}

void AppendOption(std::string& file, std::uint16_t code, std::string_view value) {
    Append16(file, code);
    Append16(file, static_cast<std::uint16_t>(value.size()));
    AppendPadded(file, value);
}

/// A block counts its own length at both ends.
std::size_t BeginBlock(std::string& file, std::uint32_t type) {
    const std::size_t start = file.size();
    Append32(file, type);
    Append32(file, 0);
    return start;
}

void EndBlock(std::string& file, std::size_t start) {
    AppendOption(file, kEndOfOptions, "");
    const auto length = static_cast<std::uint32_t>(file.size() - start + 4);
    Append32(file, length);
    Put32(file, start + 4, length);
}

}  // namespace

void AppendPcapNgStart(std::string& file, std::string_view interfaceName) {
    const std::size_t section = BeginBlock(file, kSectionHeader);
    Append32(file, kByteOrderMagic);
    Append16(file, 1);  // version 1.0
    Append16(file, 0);
    Append32(file, 0xFFFF'FFFF);  // length of the section: not told
    Append32(file, 0xFFFF'FFFF);
    AppendOption(file, kUserApplication, "hexmire");
    EndBlock(file, section);

    const std::size_t interface = BeginBlock(file, kInterfaceDescription);
    Append16(file, kEthernet);
    Append16(file, 0);  // reserved
    Append32(file, 0);  // no limit on the length of packets
    AppendOption(file, kInterfaceName, interfaceName);
    AppendOption(file, kTimeResolution, "\x09");  // 10^-9 s
    EndBlock(file, interface);
}

void AppendPcapNgPacket(std::string& file,
                        std::chrono::system_clock::time_point time,
                        bool isInbound,
                        std::span<const std::uint8_t> frame,
                        std::string_view comment) {
    using namespace std::chrono;
    const auto nanoseconds = static_cast<std::uint64_t>(
        duration_cast<std::chrono::nanoseconds>(time.time_since_epoch()).count());
    const auto length = static_cast<std::uint32_t>(frame.size());
    const std::size_t packet = BeginBlock(file, kEnhancedPacket);
    Append32(file, 0);  // the one interface
    Append32(file, static_cast<std::uint32_t>(nanoseconds >> 32U));
    Append32(file, static_cast<std::uint32_t>(nanoseconds));
    Append32(file, length);  // captured
    Append32(file, length);  // as it was
    AppendPadded(file, {reinterpret_cast<const char*>(frame.data()), frame.size()});
    if (!comment.empty()) AppendOption(file, kComment, comment);
    AppendOption(file, kPacketFlags, {isInbound ? "\x01\0\0\0" : "\x02\0\0\0", 4});
    EndBlock(file, packet);
}

}  // namespace hexmire::link
