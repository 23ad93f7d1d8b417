// TCP connections as packets: every frame is read back, its lengths and checksums included.
#include <hexmire/driver/trace/PcapNg.h>
#include <hexmire/driver/trace/TcpCapture.h>

#include "../../fakes/CaptureReader.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <string>
#include <vector>

namespace hexmire::link {
namespace {

using fakes::ReadCapture;
using fakes::ReadSegment;
using fakes::ShowCapture;
using testing::ElementsAre;

const TcpCapture::TimePoint kTime{};

CaptureEnd IPv4(std::uint8_t last, std::uint16_t port) {
    return {.Address{10, 0, 0, last}, .Port = port};
}

CaptureEnd IPv6(std::uint8_t last, std::uint16_t port) {
    CaptureEnd end{.IsIPv6 = true, .Port = port};
    end.Address[0] = 0xFE;
    end.Address[15] = last;
    return end;
}

std::string NewFile() {
    std::string file;
    AppendPcapNgStart(file, "test");
    return file;
}

TEST(TcpCapture, AConnectionOfOursOpensCarriesBytesAndIsClosed) {
    std::string file = NewFile();
    TcpCapture capture(IPv4(1, 40'000), IPv4(2, 5'000), false);
    capture.AppendOpening(file, kTime, "connected");
    capture.AppendBytes(file, kTime, TraceDirection::Sent, std::vector<std::uint8_t>{1, 2, 3});
    capture.AppendBytes(file, kTime, TraceDirection::Received, std::vector<std::uint8_t>{4, 5});
    capture.AppendBytes(file, kTime, TraceDirection::Sent, std::vector<std::uint8_t>{6});
    capture.AppendEnd(file, kTime, ConnectionEnd::ByUs, "closed");
    EXPECT_THAT(ShowCapture(file),
                ElementsAre("> S 0 0 | connected",
                            "< SA 0 1",
                            "> A 1 1",
                            "> PA 1 1 | 01 02 03 ",
                            "< PA 1 4 | 04 05 ",
                            "> PA 4 3 | 06 ",
                            "> FA 5 3 | closed",
                            "< FA 3 6",
                            "> A 6 4"));
}

TEST(TcpCapture, ACallerOpensAndThePeerMayCloseOrBeLost) {
    std::string file = NewFile();
    TcpCapture capture(IPv4(1, 5'000), IPv4(2, 40'000), true);
    capture.AppendOpening(file, kTime);
    capture.AppendEnd(file, kTime, ConnectionEnd::ByPeer);
    capture.AppendOpening(file, kTime);
    capture.AppendEnd(file, kTime, ConnectionEnd::Lost, "reset");
    EXPECT_THAT(ShowCapture(file),
                ElementsAre("< S 0 0",
                            "> SA 0 1",
                            "< A 1 1",
                            "< FA 1 1",
                            "> FA 1 2",
                            "< A 2 2",
                            "< S 0 0",
                            "> SA 0 1",
                            "< A 1 1",
                            "< RA 1 1 | reset"));
}

TEST(TcpCapture, FramesNameBothEnds) {
    for (const bool isIPv6 : {false, true}) {
        std::string file = NewFile();
        TcpCapture capture(isIPv6 ? IPv6(1, 5'000) : IPv4(1, 5'000),
                           isIPv6 ? IPv6(2, 65'535) : IPv4(2, 65'535),
                           true);
        capture.AppendBytes(file, kTime, TraceDirection::Sent, std::vector<std::uint8_t>{1});
        capture.AppendBytes(file, kTime, TraceDirection::Received, std::vector<std::uint8_t>{1});
        const auto packets = ReadCapture(file).Packets;
        ASSERT_EQ(packets.size(), 2U);
        const std::vector<std::uint8_t> outbound{2, 0, 0, 0, 0, 2, 2, 0, 0, 0, 0, 1};
        const std::vector<std::uint8_t> inbound{2, 0, 0, 0, 0, 1, 2, 0, 0, 0, 0, 2};
        EXPECT_TRUE(std::equal(outbound.begin(), outbound.end(), packets[0].Frame.begin()));
        EXPECT_TRUE(std::equal(inbound.begin(), inbound.end(), packets[1].Frame.begin()));
        const std::string zeros =
            isIPv6 ? "FE 00 00 00 00 00 00 00 00 00 00 00 00 00 00 " : "0A 00 00 ";
        EXPECT_EQ(ReadSegment(packets[0].Frame).Source, zeros + "01 : 5000");
        EXPECT_EQ(ReadSegment(packets[0].Frame).Destination, zeros + "02 : 65535");
        EXPECT_EQ(ReadSegment(packets[1].Frame).Source, zeros + "02 : 65535");
    }
}

TEST(TcpCapture, ChecksumsHoldForEveryLengthAndContent) {
    for (const bool isIPv6 : {false, true}) {
        TcpCapture capture(
            isIPv6 ? IPv6(1, 1) : IPv4(1, 1), isIPv6 ? IPv6(2, 2) : IPv4(2, 2), false);
        for (std::size_t size = 1; size < 300; ++size) {
            std::string file = NewFile();
            std::vector<std::uint8_t> bytes(size);
            std::iota(bytes.begin(), bytes.end(), static_cast<std::uint8_t>(size * 7));
            capture.AppendBytes(file, kTime, TraceDirection::Sent, bytes);
            EXPECT_EQ(ReadSegment(ReadCapture(file).Packets.at(0).Frame).Data, bytes);
        }
        // Sums that overflow their 16 bits once more when the overflow is added.
        for (std::size_t size = 59'900; size < 60'000; ++size) {
            std::string file = NewFile();
            std::vector<std::uint8_t> bytes(size);
            std::iota(bytes.begin(), bytes.end(), static_cast<std::uint8_t>(size));
            capture.AppendBytes(file, kTime, TraceDirection::Sent, bytes);
            EXPECT_EQ(ReadSegment(ReadCapture(file).Packets.at(0).Frame).Data, bytes);
        }
        std::string file = NewFile();
        const std::vector<std::uint8_t> ones(60'000, 0xFF);
        capture.AppendBytes(file, kTime, TraceDirection::Sent, ones);
        EXPECT_EQ(ReadSegment(ReadCapture(file).Packets.at(0).Frame).Data, ones);
    }
}

TEST(TcpCapture, MoreThanAPacketHoldsBecomesSeveral) {
    std::string file = NewFile();
    TcpCapture capture(IPv4(1, 1), IPv4(2, 2), false);
    capture.AppendOpening(file, kTime);
    std::vector<std::uint8_t> bytes(120'001);
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{0});
    capture.AppendBytes(file, kTime, TraceDirection::Received, bytes);
    const auto packets = ReadCapture(file).Packets;
    ASSERT_EQ(packets.size(), 6U);
    std::vector<std::uint8_t> joined;
    std::vector<std::uint32_t> sequence;
    for (std::size_t index = 3; index < packets.size(); ++index) {
        const fakes::Segment segment = ReadSegment(packets[index].Frame);
        joined.insert(joined.end(), segment.Data.begin(), segment.Data.end());
        sequence.push_back(segment.Sequence);
    }
    EXPECT_EQ(joined, bytes);
    EXPECT_THAT(sequence, ElementsAre(1U, 60'001U, 120'001U));
}

}  // namespace
}  // namespace hexmire::link
