#include <hexmire/support/ItemHeader.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace hexmire {
namespace {

using Bytes = std::vector<std::uint8_t>;

struct Read {
    std::size_t Next = 0;
    ItemHeader Header;
};

Read ReadAt(const Bytes& bytes, std::size_t offset) {
    Read read;
    read.Next = ReadItemHeader(bytes, offset, read.Header);
    return read;
}

TEST(ItemHeader, FormatByteHoldsCodeAndNumberOfLengthBytes) {
    for (unsigned format = 0; format < 256; ++format) {
        const Read read = ReadAt({static_cast<std::uint8_t>(format), 1, 2, 3}, 0);
        EXPECT_EQ(read.Header.FormatCode, format / 4);
        EXPECT_EQ(read.Header.LengthBytes, format % 4);
        EXPECT_EQ(read.Next, 1 + format % 4);
    }
}

TEST(ItemHeader, LengthIsReadMostSignificantByteFirst) {
    EXPECT_EQ(ReadAt({0x40, 9}, 0).Header.Length, 0U);
    EXPECT_EQ(ReadAt({0x41, 0xFF}, 0).Header.Length, 0xFFU);
    EXPECT_EQ(ReadAt({0x42, 0x01, 0x2C}, 0).Header.Length, 300U);
    EXPECT_EQ(ReadAt({0x43, 0xFF, 0xFF, 0xFF}, 0).Header.Length, 0xFFFFFFU);
    EXPECT_EQ(ReadAt({0x43, 0x01, 0x00, 0x00}, 0).Header.Length, 65536U);
}

TEST(ItemHeader, EndsBeforeTheHeadIsComplete) {
    EXPECT_EQ(ReadAt({}, 0).Next, 0U);
    EXPECT_EQ(ReadAt({0x41}, 0).Next, 0U);
    EXPECT_EQ(ReadAt({0x42, 1}, 0).Next, 0U);
    EXPECT_EQ(ReadAt({0x43, 1, 2}, 0).Next, 0U);
    EXPECT_EQ(ReadAt({0x43, 1, 2, 3}, 0).Next, 4U);
    EXPECT_EQ(ReadAt({0x40}, 0).Next, 1U);
}

TEST(ItemHeader, IsReadAnywhereInTheBytes) {
    const Bytes bytes{0x01, 0x01, 0x41, 0x03, 'A', 'B', 'C'};
    const Read read = ReadAt(bytes, 2);
    EXPECT_EQ(read.Header.FormatCode, 16);
    EXPECT_EQ(read.Header.Length, 3U);
    EXPECT_EQ(read.Next, 4U);
    EXPECT_EQ(ReadAt(bytes, bytes.size()).Next, 0U);
    EXPECT_EQ(ReadAt(bytes, bytes.size() + 100).Next, 0U);
    EXPECT_EQ(ReadAt(bytes, ~std::size_t{0}).Next, 0U);
}

TEST(ItemHeader, ClaimedLengthIsNotChecked) {
    EXPECT_EQ(ReadAt({0x43, 0xFF, 0xFF, 0xFF}, 0).Next, 4U);
}

}  // namespace
}  // namespace hexmire
