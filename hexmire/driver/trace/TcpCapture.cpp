#include <hexmire/driver/trace/PcapNg.h>
#include <hexmire/driver/trace/TcpCapture.h>

#include <algorithm>

namespace hexmire::link {

namespace {

using Bytes = std::vector<std::uint8_t>;
using View = std::span<const std::uint8_t>;

constexpr std::uint8_t kFin = 0x01;
constexpr std::uint8_t kSyn = 0x02;
constexpr std::uint8_t kReset = 0x04;
constexpr std::uint8_t kPush = 0x08;
constexpr std::uint8_t kAck = 0x10;

constexpr std::uint8_t kTcp = 6;
constexpr std::size_t kTcpHeader = 20;
constexpr std::size_t kIPv4Header = 20;
/// Well below the 65 535 bytes that the length of an IP packet can tell.
constexpr std::size_t kMostData = 60'000;

void Add16(Bytes& bytes, std::size_t value) {
    bytes.push_back(static_cast<std::uint8_t>(value >> 8U));
    bytes.push_back(static_cast<std::uint8_t>(value));
}

void Add32(Bytes& bytes, std::uint32_t value) {
    Add16(bytes, value >> 16U);
    Add16(bytes, value & 0xFFFFU);
}

void Add(Bytes& bytes, View more) { bytes.insert(bytes.end(), more.begin(), more.end()); }

View AddressOf(const CaptureEnd& end) {
    constexpr std::size_t kIPv4Bytes = 4;
    return View(end.Address).first(end.IsIPv6 ? end.Address.size() : kIPv4Bytes);
}

/// Sum of 16-bit words, most significant byte first; an odd last byte counts as one with a zero
/// behind.
std::uint64_t SumOf(View bytes) {
    std::uint64_t sum = 0;
    for (std::size_t index = 0; index < bytes.size(); ++index) {
        sum += index % 2 == 0 ? std::uint64_t{bytes[index]} << 8U : bytes[index];
    }
    return sum;
}

/// The Internet checksum of a sum of words.
void PutChecksum(Bytes& bytes, std::size_t offset, std::uint64_t sum) {
    while (sum > 0xFFFF) {
        sum = (sum & 0xFFFFU) + (sum >> 16U);
    }
    const std::uint64_t checksum = ~sum;
    bytes[offset] = static_cast<std::uint8_t>(checksum >> 8U);
    bytes[offset + 1] = static_cast<std::uint8_t>(checksum);
}

}  // namespace

TcpCapture::TcpCapture(const CaptureEnd& local, const CaptureEnd& peer, bool isCaller)
    : local_{.End = local, .Ethernet = 1}, peer_{.End = peer, .Ethernet = 2}, isCaller_(isCaller) {}

void TcpCapture::AppendOpening(std::string& file, TimePoint time, std::string_view comment) {
    local_.Next = peer_.Next = 0;
    AppendSegment(file, time, isCaller_, kSyn, {}, comment);
    AppendSegment(file, time, !isCaller_, kSyn | kAck);
    AppendSegment(file, time, isCaller_, kAck);
}

void TcpCapture::AppendBytes(std::string& file,
                             TimePoint time,
                             TraceDirection direction,
                             std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        const auto data = bytes.first(std::min(bytes.size(), kMostData));
        bytes = bytes.subspan(data.size());
        AppendSegment(file, time, direction == TraceDirection::Received, kPush | kAck, data);
    }
}

void TcpCapture::AppendEnd(std::string& file,
                           TimePoint time,
                           ConnectionEnd end,
                           std::string_view comment) {
    if (end == ConnectionEnd::Lost) {
        return AppendSegment(file, time, true, kReset | kAck, {}, comment);
    }
    const bool byPeer = end == ConnectionEnd::ByPeer;
    AppendSegment(file, time, byPeer, kFin | kAck, {}, comment);
    AppendSegment(file, time, !byPeer, kFin | kAck);
    AppendSegment(file, time, byPeer, kAck);
}

void TcpCapture::AddIPv4(const Side& from, const Side& to, std::size_t segmentSize) {
    const std::size_t start = frame_.size();
    Add16(frame_, 0x4500);  // version 4, header of five words
    Add16(frame_, kIPv4Header + segmentSize);
    Add32(frame_, 0x0000'4000);     // never a fragment
    Add16(frame_, 0x4000U | kTcp);  // 64 hops
    Add16(frame_, 0);
    Add(frame_, AddressOf(from.End));
    Add(frame_, AddressOf(to.End));
    constexpr std::size_t kChecksum = 10;
    PutChecksum(frame_, start + kChecksum, SumOf(View(frame_).subspan(start)));
}

void TcpCapture::AddIPv6(const Side& from, const Side& to, std::size_t segmentSize) {
    Add32(frame_, 0x6000'0000);  // version 6
    Add16(frame_, segmentSize);
    Add16(frame_, std::size_t{kTcp} << 8U | 64U);  // 64 hops
    Add(frame_, AddressOf(from.End));
    Add(frame_, AddressOf(to.End));
}

void TcpCapture::AppendSegment(std::string& file,
                               TimePoint time,
                               bool fromPeer,
                               std::uint8_t flags,
                               std::span<const std::uint8_t> data,
                               std::string_view comment) {
    Side& from = fromPeer ? peer_ : local_;
    const Side& to = fromPeer ? local_ : peer_;
    const bool isIPv6 = from.End.IsIPv6;
    const std::size_t size = kTcpHeader + data.size();

    frame_.clear();
    for (const std::uint8_t last : {to.Ethernet, from.Ethernet}) {
        Add16(frame_, 0x0200);  // an address of local meaning
        Add32(frame_, last);
    }
    Add16(frame_, isIPv6 ? 0x86DD : 0x0800);
    isIPv6 ? AddIPv6(from, to, size) : AddIPv4(from, to, size);

    const std::size_t start = frame_.size();
    Add16(frame_, from.End.Port);
    Add16(frame_, to.End.Port);
    Add32(frame_, from.Next);
    Add32(frame_, (flags & kAck) != 0 ? to.Next : 0);
    Add16(frame_, 0x5000U | flags);  // header of five words
    Add16(frame_, 0xFFFF);           // window
    Add32(frame_, 0);                // checksum, no urgent data
    Add(frame_, data);
    constexpr std::size_t kChecksum = 16;
    const std::uint64_t ends = SumOf(AddressOf(from.End)) + SumOf(AddressOf(to.End));
    PutChecksum(frame_, start + kChecksum, ends + kTcp + size + SumOf(View(frame_).subspan(start)));

    AppendPcapNgPacket(file, time, fromPeer, frame_, comment);
    from.Next += static_cast<std::uint32_t>(data.size());
    if ((flags & (kSyn | kFin)) != 0) ++from.Next;
}

}  // namespace hexmire::link
