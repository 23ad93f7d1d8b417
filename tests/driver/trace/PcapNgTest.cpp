// Blocks of a capture file, byte by byte.
#include <hexmire/driver/trace/PcapNg.h>
#include <hexmire/support/HexBytes.h>

#include "../../fakes/CaptureReader.h"
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace hexmire::link {
namespace {

using std::chrono::nanoseconds;
using std::chrono::system_clock;

std::string Hex(const std::string& bytes) {
    return HexText(std::vector<std::uint8_t>(bytes.begin(), bytes.end()));
}

system_clock::time_point At(std::int64_t count) {
    return system_clock::time_point(
        std::chrono::duration_cast<system_clock::duration>(nanoseconds(count)));
}

TEST(PcapNg, AFileStartsWithASectionAndAnEthernetInterface) {
    std::string file;
    AppendPcapNgStart(file, "COM1!");
    EXPECT_EQ(
        Hex(file),
        // Section header: length, byte order, version 1.0, length not told, program.
        "0A 0D 0D 0A 2C 00 00 00 4D 3C 2B 1A 01 00 00 00 FF FF FF FF FF FF FF FF "
        "04 00 07 00 68 65 78 6D 69 72 65 00 00 00 00 00 2C 00 00 00 "
        // Interface: Ethernet, any length, name, nanoseconds.
        "01 00 00 00 2C 00 00 00 01 00 00 00 00 00 00 00 "
        "02 00 05 00 43 4F 4D 31 21 00 00 00 09 00 01 00 09 00 00 00 00 00 00 00 2C 00 00 00 ");
}

TEST(PcapNg, APacketTellsTimeDirectionAndBytes) {
    std::string file;
    AppendPcapNgPacket(file, At(0x0102'0304'0506'0708), true, std::vector<std::uint8_t>{1, 2, 3});
    EXPECT_EQ(Hex(file),
              "06 00 00 00 30 00 00 00 00 00 00 00 04 03 02 01 08 07 06 05 03 00 00 00 03 00 00 00 "
              "01 02 03 00 02 00 04 00 01 00 00 00 00 00 00 00 30 00 00 00 ");
}

TEST(PcapNg, APacketMayCarryAComment) {
    std::string file;
    AppendPcapNgPacket(file, At(1), false, std::vector<std::uint8_t>{1, 2, 3, 4}, "hello");
    EXPECT_EQ(Hex(file),
              "06 00 00 00 3C 00 00 00 00 00 00 00 00 00 00 00 01 00 00 00 04 00 00 00 04 00 00 00 "
              "01 02 03 04 01 00 05 00 68 65 6C 6C 6F 00 00 00 02 00 04 00 02 00 00 00 00 00 00 00 "
              "3C 00 00 00 ");
}

TEST(PcapNg, AReaderFindsEverythingAgain) {
    std::string file;
    AppendPcapNgStart(file, "to-a");
    for (std::size_t size = 0; size < 9; ++size) {
        const std::vector<std::uint8_t> frame(size, static_cast<std::uint8_t>(size));
        AppendPcapNgPacket(file, At(100), size % 2 == 0, frame, std::string(size, 'c'));
    }
    AppendPcapNgStart(file, "to-b");
    const fakes::CaptureFile read = fakes::ReadCapture(file);
    EXPECT_EQ(read.Sections, 2);
    EXPECT_EQ(read.Interfaces, (std::vector<std::string>{"to-a", "to-b"}));
    ASSERT_EQ(read.Packets.size(), 9U);
    for (std::size_t size = 0; size < 9; ++size) {
        EXPECT_EQ(read.Packets[size].Frame.size(), size);
        EXPECT_EQ(read.Packets[size].Comment, std::string(size, 'c'));
        EXPECT_EQ(read.Packets[size].IsInbound, size % 2 == 0);
        EXPECT_EQ(read.Packets[size].Nanoseconds, 100U);
    }
}

}  // namespace
}  // namespace hexmire::link
