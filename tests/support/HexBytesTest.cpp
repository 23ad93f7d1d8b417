#include <hexmire/support/HexBytes.h>

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <memory>
#include <numeric>
#include <string>
#include <string_view>
#include <vector>

namespace hexmire {
namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(HexText, WritesThreeCharactersAByte) {
    EXPECT_EQ(HexText(Bytes{0x00, 0x0A, 0xFF}), "00 0A FF ");
    EXPECT_EQ(HexText(Bytes{}), "");
    EXPECT_EQ(HexText(Bytes{0xAB}), "AB ");
}

TEST(HexText, AppendsBehindWhatIsThere) {
    std::string text = "x";
    AppendHexText(text, Bytes{1, 2});
    AppendHexText(text, Bytes{});
    EXPECT_EQ(text, "x01 02 ");
}

TEST(HexText, EveryByteReadsBack) {
    Bytes all(256);
    std::iota(all.begin(), all.end(), std::uint8_t{0});
    Bytes read(256);
    ASSERT_TRUE(ReadHexText(HexText(all), 256, read.data()));
    EXPECT_EQ(read, all);
}

TEST(HexText, ReadsEitherCaseAndAnySeparator) {
    std::array<std::uint8_t, 3> bytes{};
    EXPECT_TRUE(ReadHexText("aB,Cd-eF", 3, bytes.data()));
    EXPECT_EQ(bytes, (std::array<std::uint8_t, 3>{0xAB, 0xCD, 0xEF}));
    EXPECT_TRUE(ReadHexText("01x02y03z", 3, bytes.data()));
    EXPECT_EQ(bytes, (std::array<std::uint8_t, 3>{1, 2, 3}));
}

TEST(HexText, SeparatorBehindTheLastByteMayBeMissing) {
    std::array<std::uint8_t, 2> bytes{};
    EXPECT_TRUE(ReadHexText("01 02", 2, bytes.data()));
    EXPECT_TRUE(ReadHexText("01 02 ", 2, bytes.data()));
    EXPECT_TRUE(ReadHexText("01 02 03 04 ", 2, bytes.data()));
    EXPECT_FALSE(ReadHexText("01 0", 2, bytes.data()));
    EXPECT_FALSE(ReadHexText("01 ", 2, bytes.data()));
    EXPECT_FALSE(ReadHexText("", 1, bytes.data()));
}

TEST(HexText, NoBytesNeedNoText) {
    EXPECT_TRUE(ReadHexText("", 0, nullptr));
    EXPECT_TRUE(ReadHexText("zz", 0, nullptr));
}

TEST(HexText, AnythingElseIsRefusedAndTheBytesInFrontStay) {
    for (const std::string_view text : {"01 G2 ", "01  2 ", "01 -2 ", "01 2 ", "01 +1 "}) {
        std::array<std::uint8_t, 2> bytes{9, 9};
        EXPECT_FALSE(ReadHexText(text, 2, bytes.data())) << text;
        EXPECT_EQ(bytes[0], 1) << text;
    }
}

TEST(HexText, NeverReadsBehindTheText) {
    // The text lies at the very end of its memory, without a terminator.
    for (std::size_t size = 0; size <= 9; ++size) {
        const std::string_view whole = "01 02 03 ";
        const auto exact = std::make_unique<char[]>(size == 0 ? 1 : size);
        std::copy_n(whole.data(), size, exact.get());
        std::array<std::uint8_t, 3> bytes{};
        EXPECT_EQ(ReadHexText({exact.get(), size}, 3, bytes.data()), size >= 8) << size;
    }
}

/// Each digit by itself.
std::string PlainText(const Bytes& bytes) {
    std::string text;
    for (const std::uint8_t byte : bytes) {
        text += HexDigit(byte >> 4U);
        text += HexDigit(byte);
        text += ' ';
    }
    return text;
}

Bytes Counted(std::size_t count, unsigned step) {
    Bytes bytes(count);
    for (std::size_t index = 0; index < count; ++index)
        bytes[index] = static_cast<std::uint8_t>(index * step);
    return bytes;
}

TEST(HexText, AnyLengthIsWrittenByteForByteAndReadsBack) {
    for (std::size_t count = 0; count <= 1'100; count += count < 80 ? 1 : 13) {
        const Bytes bytes = Counted(count, 37);
        std::string text = "begin";
        AppendHexText(text, bytes);
        ASSERT_EQ(text, "begin" + PlainText(bytes)) << count;
        Bytes read(count + 1, 0xEE);
        ASSERT_TRUE(ReadHexText(std::string_view(text).substr(5), count, read.data())) << count;
        ASSERT_EQ(read.back(), 0xEE) << "written behind the end of " << count;
        read.pop_back();
        ASSERT_EQ(read, bytes) << count;
    }
}

TEST(HexText, LongTextsAreReadInEitherCaseAndWithAnySeparator) {
    for (int separator = 0; separator < 256; ++separator) {
        const Bytes bytes = Counted(64, 91);
        std::string text = PlainText(bytes);
        for (std::size_t place = 0; place < text.size(); ++place) {
            if (place % 3 == 2) {
                text[place] = static_cast<char>(separator);
            } else if (place % 2 == 0 && text[place] >= 'A') {
                text[place] = static_cast<char>(text[place] + 'a' - 'A');
            }
        }
        Bytes read(64);
        ASSERT_TRUE(ReadHexText(text, 64, read.data())) << separator;
        ASSERT_EQ(read, bytes) << separator;
    }
}

TEST(HexText, WhatIsNoDigitIsRefusedWhereverItStands) {
    const Bytes bytes = Counted(50, 23);
    const std::string good = PlainText(bytes);
    for (std::size_t place = 0; place < good.size(); ++place) {
        if (place % 3 == 2) continue;
        for (int code = 0; code < 256; ++code) {
            const char character = static_cast<char>(code);
            if (HexDigitValue(character) >= 0) continue;
            std::string text = good;
            text[place] = character;
            Bytes read(50, 0xEE);
            ASSERT_FALSE(ReadHexText(text, 50, read.data())) << place << ": " << code;
            for (std::size_t index = 0; index < 50; ++index)
                ASSERT_EQ(read[index], index < place / 3 ? bytes[index] : 0xEE)
                    << place << ": " << code;
        }
    }
}

TEST(HexText, NeverReadsBehindALongText) {
    for (const std::size_t count : {16U, 17U, 32U, 33U, 48U, 49U, 160U}) {
        for (const std::size_t missing : {1U, 2U, 3U}) {
            const std::string whole = PlainText(Counted(count, 7));
            const std::size_t size = whole.size() - missing;
            const auto exact = std::make_unique<char[]>(size);
            std::copy_n(whole.data(), size, exact.get());
            Bytes read(count);
            EXPECT_EQ(ReadHexText({exact.get(), size}, count, read.data()), missing == 1)
                << count << " - " << missing;
        }
    }
}

TEST(HexDigits, ValuesOfAllCharacters) {
    for (int code = 0; code < 256; ++code) {
        const std::size_t at =
            std::string_view("0123456789ABCDEFabcdef").find(static_cast<char>(code));
        const int expected = at == std::string_view::npos ? -1
                             : at < 16                    ? static_cast<int>(at)
                                                          : static_cast<int>(at) - 6;
        EXPECT_EQ(HexDigitValue(static_cast<char>(code)), expected) << code;
    }
    static_assert(HexDigit(10) == 'A' && HexDigit(0) == '0' && HexDigit(15) == 'F');
}

}  // namespace
}  // namespace hexmire
