#include "Failure.h"
#include "Frames.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace hexmire::program {
namespace {

using Bytes = std::vector<std::uint8_t>;
using testing::HasSubstr;

/// A block with its checksum (SEMI E4).
Bytes Block(std::uint16_t number, std::uint8_t device, const Bytes& data) {
    Bytes block{static_cast<std::uint8_t>(10 + data.size()),
                0,
                device,
                0x86,
                11,
                static_cast<std::uint8_t>(number >> 8U),
                static_cast<std::uint8_t>(number),
                0,
                0,
                0,
                9};
    block.insert(block.end(), data.begin(), data.end());
    unsigned sum = 0;
    for (std::size_t i = 1; i < block.size(); ++i)
        sum += block[i];
    block.push_back(static_cast<std::uint8_t>(sum >> 8U));
    block.push_back(static_cast<std::uint8_t>(sum));
    return block;
}

Bytes operator+(Bytes left, const Bytes& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

constexpr std::uint16_t kLast = 0x8000;

/// The reason for which bytes are refused.
std::string Refusal(const Bytes& bytes, Framing framing) {
    try {
        static_cast<void>(SplitMessages(bytes, framing, "x"));
    } catch (const UsageError& error) {
        return error.what();
    }
    return "taken";
}

TEST(Frames, BlocksOfAMessageAreJoined) {
    const Bytes bytes = Block(1, 5, {1, 2}) + Block(2, 5, {3}) + Block(kLast | 3, 5, {4, 5}) +
                        Block(kLast | 1, 6, {}) + Block(kLast, 7, {9});
    for (const Framing framing : {Framing::Find, Framing::SecsI}) {
        const auto frames = SplitMessages(bytes, framing, "x");
        ASSERT_EQ(frames.size(), 3U);
        EXPECT_EQ(frames[0].Body, (Bytes{1, 2, 3, 4, 5}));
        EXPECT_EQ(frames[0].Header.DeviceID, 5);
        EXPECT_EQ(frames[0].Header.Stream, 6);
        EXPECT_EQ(frames[0].Header.Function, 11);
        EXPECT_TRUE(frames[0].Header.ReplyExpected);
        EXPECT_EQ(frames[0].Header.SystemBytes, 9U);
        EXPECT_EQ(frames[0].Offset, 1U);
        EXPECT_EQ(frames[1].Body, Bytes());
        EXPECT_EQ(frames[2].Body, Bytes{9});
        EXPECT_EQ(frames[2].Control, "");
    }
}

TEST(Frames, BlocksThatDoNotBelongTogetherAreRefused) {
    Bytes wrong = Block(kLast | 1, 5, {1});
    wrong.back() ^= 1U;
    const std::pair<Bytes, std::string> kCases[] = {
        {wrong, "x: offset 12: the checksum of the block is wrong"},
        {Block(1, 5, {1}), "x: offset 14: block 2 of the message is missing"},
        {Block(1, 5, {1}) + Block(kLast | 3, 5, {}),
         "x: offset 14: block 2 of the message is missing"},
        {Block(1, 5, {1}) + Block(kLast | 2, 6, {}),
         "x: offset 14: block 2 of the message is missing"},
        {Block(kLast | 2, 5, {}), "x: offset 0: block 2 begins no message"},
        {Block(0, 5, {}), "x: offset 0: block 0 begins no message"},
        {{9, 0}, "x: offset 0: a block has 10 to 254 bytes, not 9"},
        {{255, 0}, "x: offset 0: a block has 10 to 254 bytes, not 255"},
        {{10, 0, 0}, "x: offset 0: a block of 10 bytes and two of checksum, but only 2 are there"},
    };
    for (const auto& [bytes, reason] : kCases)
        EXPECT_EQ(Refusal(bytes, Framing::SecsI), reason);
}

TEST(Frames, LengthsThatDoNotFitAreRefused) {
    EXPECT_EQ(Refusal({0, 0, 0}, Framing::Hsms),
              "x: offset 0: the four length bytes are cut short");
    EXPECT_EQ(Refusal({0, 0, 0, 9, 1, 2, 3, 4, 5, 6, 7, 8, 9}, Framing::Hsms),
              "x: offset 0: a message of 9 bytes has no header");
    const Bytes cut{0, 0, 0, 11, 0, 0, 1, 1, 0, 0, 0, 0, 0, 1};
    EXPECT_EQ(Refusal(cut, Framing::Hsms),
              "x: offset 0: a message of 11 bytes, but only 10 are there");
    // It looks like nothing else: there is no stream 0.
    EXPECT_EQ(Refusal(cut, Framing::Find), Refusal(cut, Framing::Hsms));
    for (const Framing framing : {Framing::Find, Framing::Message, Framing::Hsms, Framing::SecsI})
        EXPECT_THAT(Refusal({}, framing), HasSubstr("no message in it"));
}

TEST(Frames, ControlMessagesHaveNames) {
    const std::pair<std::uint8_t, const char*> kNames[] = {{1, "Select.req"},
                                                           {2, "Select.rsp"},
                                                           {3, "Deselect.req"},
                                                           {4, "Deselect.rsp"},
                                                           {5, "Linktest.req"},
                                                           {6, "Linktest.rsp"},
                                                           {7, "Reject.req"},
                                                           {9, "Separate.req"},
                                                           {8, ""},
                                                           {10, ""},
                                                           {255, ""}};
    for (const auto& [type, name] : kNames) {
        const Bytes header{0xFF, 0xFF, 0, 0, 0, type, 0, 0, 0, 1};
        EXPECT_EQ(SplitMessages(Bytes{0, 0, 0, 10} + header, Framing::Find, "x")[0].Control, name);
        EXPECT_EQ(SplitMessages(header, Framing::Message, "x")[0].Control, name);
    }
    // Block 5 of device 1, taken out of its frame, is none.
    EXPECT_EQ(SplitMessages(Bytes{0, 1, 6, 11, 0, 5, 0, 0, 0, 1}, Framing::Message, "x")[0].Control,
              "");
}

TEST(Frames, AHeaderComesBackByteForByte) {
    for (const Bytes& bytes : {Bytes{0x80, 0x05, 0x86, 0x0B, 0x80, 0x01, 1, 2, 3, 4},
                               Bytes{0x7F, 0xFF, 0x7F, 0xFF, 0, 0, 0xFF, 0xFE, 0xFD, 0xFC},
                               Bytes{0, 0, 0x80, 0, 0, 9, 0, 0, 0, 0}}) {
        EXPECT_EQ(WireHeader::From(bytes).Bytes(), bytes);
    }
}

}  // namespace
}  // namespace hexmire::program
