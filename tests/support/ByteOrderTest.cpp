#include <hexmire/support/ByteOrder.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace hexmire {

namespace {

TEST(ByteOrder, OneNumberIsReadAndWrittenMostSignificantByteFirst) {
    const std::uint8_t bytes[] = {0x01, 0x02, 0x03, 0x04, 0xFA, 0xFB, 0xFC, 0xFD};
    EXPECT_EQ(ReadBigEndian<1>(bytes), 0x01U);
    EXPECT_EQ(ReadBigEndian<2>(bytes), 0x0102U);
    EXPECT_EQ(ReadBigEndian<3>(bytes), 0x010203U);
    EXPECT_EQ(ReadBigEndian<4>(bytes), 0x01020304U);
    EXPECT_EQ(ReadBigEndian<8>(bytes), 0x01020304FAFBFCFDU);
    std::uint8_t written[4] = {};
    WriteBigEndian<4>(0xFFFFFFFF01020304U, written);
    EXPECT_TRUE(std::equal(written, written + 4, bytes));
}

/// Numbers of every length around the blocks that are copied together, at every alignment.
template <std::size_t Width, class T>
void ExpectCopies() {
    for (std::size_t count = 0; count <= 40; ++count) {
        for (std::size_t shift = 0; shift < 4; ++shift) {
            std::vector<std::uint8_t> from(shift + count * Width);
            for (std::size_t index = 0; index < from.size(); ++index)
                from[index] = static_cast<std::uint8_t>(index * 37 + count);
            std::vector<T> numbers(count + 1, T{0x5A});
            CopyBigEndian<Width>(
                from.data() + shift, count, reinterpret_cast<std::uint8_t*>(numbers.data()));
            for (std::size_t index = 0; index < count; ++index) {
                EXPECT_EQ(numbers[index],
                          static_cast<T>(ReadBigEndian<Width>(from.data() + shift + index * Width)))
                    << count << " numbers, number " << index;
            }
            EXPECT_EQ(numbers[count], T{0x5A}) << "nothing is written behind the last number";
            std::vector<std::uint8_t> back(count * Width);
            CopyBigEndian<Width>(
                reinterpret_cast<const std::uint8_t*>(numbers.data()), count, back.data());
            EXPECT_TRUE(std::equal(
                back.begin(), back.end(), from.begin() + static_cast<std::ptrdiff_t>(shift)));
        }
    }
}

TEST(ByteOrder, ManyNumbersAreCopiedAsOneByOneWouldBe) {
    ExpectCopies<1, std::uint8_t>();
    ExpectCopies<2, std::uint16_t>();
    ExpectCopies<4, std::uint32_t>();
    ExpectCopies<8, std::uint64_t>();
}

}  // namespace

}  // namespace hexmire
