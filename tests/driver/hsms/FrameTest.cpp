// Frames of HSMS (SEMI E37, message format): header fields, framing whatever the pieces.
#include <hexmire/driver/hsms/FrameParser.h>

#include "../../fakes/HeapInUse.h"
#include "../../fakes/HsmsRig.h"
#include <gtest/gtest.h>

#include <string>

namespace hexmire::test {
namespace {

using hsms::FrameParser;
using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t kMost = 1'000;

/// What a parser makes of pieces: one line a frame, the last one the fault or the bytes in
/// progress.
std::vector<std::string> Parse(const std::vector<Bytes>& pieces) {
    FrameParser parser;
    std::vector<std::string> told;
    for (const Bytes& piece : pieces) {
        std::span<const std::uint8_t> input(piece);
        for (;;) {
            const auto step = parser.Next(input, kMost);
            if (step == FrameParser::Step::NeedMore) break;
            if (step == FrameParser::Step::TooShort) return told.emplace_back("too short"), told;
            if (step == FrameParser::Step::TooLong) return told.emplace_back("too long"), told;
            Bytes frame(hsms::kLengthBytes);
            frame.insert(frame.end(), parser.Header().begin(), parser.Header().end());
            frame.insert(frame.end(), parser.Body().begin(), parser.Body().end());
            told.push_back(FrameNotation(frame));
        }
    }
    if (parser.InProgress()) told.emplace_back("in progress");
    return told;
}

const std::vector<std::string> kFrames{
    "SelectReq FFFF 00000001", "S1F1W 0005 00000002", "S6F11W 0005 89ABCDEF 0102A50101A50102"};

TEST(HsmsFrame, HeaderFieldsLieWhereTheStandardPutsThem) {
    const hsms::FrameHeader header{.SessionID = 0x1234,
                                   .Byte2 = 0x81,
                                   .Byte3 = 0x0D,
                                   .PType = 5,
                                   .SessionType = 9,
                                   .SystemBytes = 0x01020304};
    const link::HeaderBytes bytes{0x12, 0x34, 0x81, 0x0D, 5, 9, 1, 2, 3, 4};
    EXPECT_EQ(hsms::EncodeHeader(header), bytes);
    EXPECT_EQ(hsms::DecodeHeader(bytes), header);
    EXPECT_TRUE(header.WBit());
    EXPECT_EQ(header.Stream(), 1);
    EXPECT_TRUE(header.IsPrimary());
}

TEST(HsmsFrame, RejectNamesTheSTypeOrTheBadPType) {
    const hsms::FrameHeader bad{.SessionID = 7, .PType = 3, .SessionType = 8, .SystemBytes = 11};
    const auto byType = hsms::RejectHeader(bad, hsms::RejectReason::STypeUnknown);
    EXPECT_EQ(byType.Byte2, 8);
    EXPECT_EQ(byType.Byte3, 1);
    EXPECT_EQ(byType.SessionID, 7);
    EXPECT_EQ(byType.SystemBytes, 11U);
    EXPECT_EQ(hsms::RejectHeader(bad, hsms::RejectReason::PTypeUnknown).Byte2, 3);
}

TEST(HsmsFrame, KnownSTypesAreThoseOfTheTable) {
    for (unsigned value = 0; value < 256; ++value) {
        const bool known = value <= 7 || value == 9;
        EXPECT_EQ(hsms::IsKnownSType(static_cast<std::uint8_t>(value)), known) << value;
    }
}

TEST(HsmsFrameParser, EveryFrameSplitAtEveryByteIsTheSameFrame) {
    for (const std::string& notation : kFrames) {
        const Bytes frame = FrameBytes(notation);
        EXPECT_EQ(Parse({frame}), std::vector{notation});
        for (std::size_t cut = 1; cut < frame.size(); ++cut) {
            const auto middle = frame.begin() + static_cast<std::ptrdiff_t>(cut);
            EXPECT_EQ(Parse({{frame.begin(), middle}, {middle, frame.end()}}),
                      std::vector{notation});
            EXPECT_EQ(Parse({{frame.begin(), middle}}), std::vector<std::string>{"in progress"});
        }
    }
}

TEST(HsmsFrameParser, ByteByByteAndAllInOneReadGiveTheSameFrames) {
    Bytes all;
    std::vector<Bytes> single;
    for (const std::string& notation : kFrames) {
        for (const std::uint8_t byte : FrameBytes(notation)) {
            all.push_back(byte);
            single.push_back({byte});
        }
    }
    EXPECT_EQ(Parse({all}), kFrames);
    EXPECT_EQ(Parse(single), kFrames);
}

TEST(HsmsFrameParser, LengthsAreJudgedOnTheFourLengthBytesAlone) {
    EXPECT_EQ(Parse({HexToBytes("00000009")}), std::vector<std::string>{"too short"});
    EXPECT_EQ(Parse({HexToBytes("00000000")}), std::vector<std::string>{"too short"});
    EXPECT_EQ(Parse({HexToBytes("000003F3")}), std::vector<std::string>{"too long"});
    EXPECT_EQ(Parse({HexToBytes("FFFFFFFF")}), std::vector<std::string>{"too long"});
    EXPECT_EQ(Parse({HexToBytes("000003F2")}), std::vector<std::string>{"in progress"});
    EXPECT_EQ(Parse({HexToBytes("000000")}), std::vector<std::string>{"in progress"});
}

TEST(HsmsFrameParser, AClaimedLengthAllocatesNothing) {
    FrameParser parser;
    const Bytes head = HexToBytes("FFFFFFFF 0005 8101 0000 00000001 AA");
    std::span<const std::uint8_t> input(head);
    EXPECT_EQ(parser.Next(input, 0xFFFFFFF5), FrameParser::Step::NeedMore);
    EXPECT_LT(parser.TakeBody().capacity(), 64U);
}

TEST(HsmsFrameParser, ResetForgetsAHalfFrame) {
    FrameParser parser;
    const Bytes half = HexToBytes("0000000C 0005 8101 0000 00000001 AA");
    std::span<const std::uint8_t> input(half);
    (void)parser.Next(input, kMost);
    parser.Reset();
    EXPECT_FALSE(parser.InProgress());
    const Bytes whole = FrameBytes(kFrames[2]);
    input = whole;
    EXPECT_EQ(parser.Next(input, kMost), FrameParser::Step::Frame);
    EXPECT_EQ(parser.Body().size(), 8U);
}

TEST(FrameParser, AFrameThatIsForgottenLeavesNoMemoryBehind) {
    constexpr std::size_t kHalf = std::size_t{4} << 20U;
    FrameParser parser;
    const std::size_t before = fakes::HeapInUse();
    {
        Bytes bytes{0x00, 0x80, 0x00, 0x0A};
        bytes.resize(bytes.size() + hsms::kHeaderBytes + kHalf);
        std::span<const std::uint8_t> input = bytes;
        EXPECT_EQ(parser.Next(input, std::uint32_t{16} << 20U), FrameParser::Step::NeedMore);
    }
    EXPECT_GT(fakes::HeapInUse(), before + kHalf / 2);
    parser.Reset();
    EXPECT_LT(fakes::HeapInUse(), before + kHalf / 4);
}

}  // namespace
}  // namespace hexmire::test
