// Blocks on the line (SEMI E4, block structure and header).
#include "../../fakes/Secs1Rig.h"
#include <gtest/gtest.h>

namespace hexmire::test {
namespace {

using secs1::BlockHeader;

std::string HexText(std::span<const std::uint8_t> bytes) {
    std::string text;
    for (const std::uint8_t byte : bytes) {
        text += (text.empty() ? "" : " ") + Hex(byte, 2);
    }
    return text;
}

TEST(Secs1Block, TheShortestBlockIsAHeaderWithLengthAndChecksum) {
    const BlockHeader header{.DeviceID = 10,
                             .WBit = true,
                             .Stream = 1,
                             .Function = 1,
                             .IsLast = true,
                             .Number = 1,
                             .SystemBytes = 0x101};
    EXPECT_EQ(HexText(secs1::EncodeBlock(header, {})), "0A 00 0A 81 01 80 01 00 00 01 01 01 0F");
}

struct HeaderRow {
    const char* Bytes;
    BlockHeader Header;
};

TEST(Secs1Block, HeadersBothWays) {
    const std::vector<HeaderRow> rows{
        {"00 00 00 00 00 00 00 00 00 00",
         {.ToHost = false, .DeviceID = 0, .IsLast = false, .Number = 0}},
        {"80 00 00 00 00 00 00 00 00 00",
         {.ToHost = true, .DeviceID = 0, .IsLast = false, .Number = 0}},
        {"FF FF FF FF FF FF FF FF FF FF",
         {.ToHost = true,
          .DeviceID = 32'767,
          .WBit = true,
          .Stream = 127,
          .Function = 255,
          .IsLast = true,
          .Number = 32'767,
          .SystemBytes = 0xFFFFFFFF}},
        {"7F FF 7F FE 7F FF 80 00 00 01",
         {.ToHost = false,
          .DeviceID = 32'767,
          .WBit = false,
          .Stream = 127,
          .Function = 254,
          .IsLast = false,
          .Number = 32'767,
          .SystemBytes = 0x80000001}},
        {"01 02 83 04 81 00 01 02 03 04",
         {.ToHost = false,
          .DeviceID = 0x102,
          .WBit = true,
          .Stream = 3,
          .Function = 4,
          .IsLast = true,
          .Number = 256,
          .SystemBytes = 0x01020304}},
    };
    for (const HeaderRow& row : rows) {
        EXPECT_EQ(HexText(secs1::EncodeHeader(row.Header)), row.Bytes);
        const auto bytes = HexToBytes(row.Bytes);
        EXPECT_EQ(secs1::DecodeHeader(std::span(bytes).first<secs1::kHeaderBytes>()), row.Header)
            << row.Bytes;
    }
}

TEST(Secs1Block, TheLongestBlockHas257Bytes) {
    const auto block = secs1::EncodeBlock({}, PatternBytes(244));
    EXPECT_EQ(block.size(), 257U);
    EXPECT_EQ(block.front(), 254);
}

TEST(Secs1Block, TheChecksumSumsHeaderAndDataInSixteenBits) {
    EXPECT_EQ(secs1::Checksum({}), 0);
    const std::vector<std::uint8_t> most(254, 0xFF);
    EXPECT_EQ(secs1::Checksum(most), 254 * 255);
    const std::vector<std::uint8_t> beyond(258, 0xFF);
    EXPECT_EQ(secs1::Checksum(beyond), 254) << "258 * 255 - 65 536";
    const std::vector<std::uint8_t> data(244, 0xFF);
    const auto block = secs1::EncodeBlock({.ToHost = true,
                                           .DeviceID = 32'767,
                                           .WBit = true,
                                           .Stream = 127,
                                           .Function = 255,
                                           .IsLast = true,
                                           .Number = 32'767,
                                           .SystemBytes = 0xFFFFFFFF},
                                          data);
    EXPECT_EQ(Hex(block[255], 2) + Hex(block[256], 2), "FD02");
}

TEST(Secs1Block, ABodyTakesABlockForEach244Bytes) {
    EXPECT_EQ(secs1::BlockCount(0), 1U);
    EXPECT_EQ(secs1::BlockCount(1), 1U);
    EXPECT_EQ(secs1::BlockCount(244), 1U);
    EXPECT_EQ(secs1::BlockCount(245), 2U);
    EXPECT_EQ(secs1::BlockCount(488), 2U);
    EXPECT_EQ(secs1::BlockCount(489), 3U);
    EXPECT_EQ(secs1::kMaxBodyBytes, 7'995'148U);
    EXPECT_EQ(secs1::BlockCount(secs1::kMaxBodyBytes), 32'767U);
}

TEST(Secs1Block, EachFieldButNumberAndEndBitTellsMessagesApart) {
    const BlockHeader header{.DeviceID = 10, .Stream = 1, .Function = 3, .SystemBytes = 7};
    BlockHeader other = header;
    other.Number = 2;
    other.IsLast = false;
    EXPECT_TRUE(header.IsOfSameMessage(other));
    const std::vector<void (*)(BlockHeader&)> changes{
        [](BlockHeader& one) { one.ToHost = true; },
        [](BlockHeader& one) { one.DeviceID = 11; },
        [](BlockHeader& one) { one.WBit = true; },
        [](BlockHeader& one) { one.Stream = 2; },
        [](BlockHeader& one) { one.Function = 4; },
        [](BlockHeader& one) { one.SystemBytes = 8; },
    };
    for (std::size_t index = 0; index < changes.size(); ++index) {
        other = header;
        changes[index](other);
        EXPECT_FALSE(header.IsOfSameMessage(other)) << index;
    }
}

}  // namespace
}  // namespace hexmire::test
