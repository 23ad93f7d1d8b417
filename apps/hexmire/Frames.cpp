#include "Frames.h"

#include "Failure.h"

#include <algorithm>
#include <array>

namespace hexmire::program {

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t kLengthBytes = 4;
constexpr std::size_t kChecksumBytes = 2;

std::uint32_t Number(Bytes bytes) {
    std::uint32_t number = 0;
    for (const std::uint8_t byte : bytes)
        number = number << 8U | byte;
    return number;
}

std::vector<std::uint8_t> Copy(Bytes bytes) { return {bytes.begin(), bytes.end()}; }

/// Name of a control message (SEMI E37, session type); empty for any other number.
std::string ControlName(std::uint8_t type) {
    static constexpr std::array kNames{"",
                                       "Select.req",
                                       "Select.rsp",
                                       "Deselect.req",
                                       "Deselect.rsp",
                                       "Linktest.req",
                                       "Linktest.rsp",
                                       "Reject.req",
                                       "",
                                       "Separate.req"};
    return type < kNames.size() ? kNames.at(type) : "";
}

class Splitter {
public:
    Splitter(Bytes bytes, const std::string& name) : bytes_(bytes), name_(name) {}

    [[nodiscard]] std::vector<Frame> Message() const {
        if (bytes_.size() < WireHeader::kSize)
            Fail(0, "a header has 10 bytes, " + std::to_string(bytes_.size()) + " are there");
        Frame frame{.Offset = 0, .Header = WireHeader::From(bytes_), .Body = {}};
        frame.Body = Copy(bytes_.subspan(WireHeader::kSize));
        const bool isForNoSession = bytes_[0] == 0xFF && bytes_[1] == 0xFF;
        if (isForNoSession && frame.Header.PType == 0)
            frame.Control = ControlName(frame.Header.SType);
        return {frame};
    }

    [[nodiscard]] std::vector<Frame> Hsms() const {
        std::vector<Frame> frames;
        for (std::size_t offset = 0; offset < bytes_.size();) {
            const std::size_t left = bytes_.size() - offset;
            if (left < kLengthBytes) Fail(offset, "the four length bytes are cut short");
            const std::uint32_t length = Number(bytes_.subspan(offset, kLengthBytes));
            if (length < WireHeader::kSize)
                Fail(offset, "a message of " + std::to_string(length) + " bytes has no header");
            if (length > left - kLengthBytes)
                Fail(offset,
                     "a message of " + std::to_string(length) + " bytes, but only " +
                         std::to_string(left - kLengthBytes) + " are there");
            const Bytes message = bytes_.subspan(offset + kLengthBytes, length);
            Frame frame{.Offset = offset + kLengthBytes,
                        .Header = WireHeader::From(message),
                        .Body = Copy(message.subspan(WireHeader::kSize))};
            if (frame.Header.PType == 0) frame.Control = ControlName(frame.Header.SType);
            frames.push_back(std::move(frame));
            offset += kLengthBytes + length;
        }
        return frames;
    }

    [[nodiscard]] std::vector<Frame> Blocks() const {
        std::vector<Frame> frames;
        unsigned next = 0;  // Number of the block that goes on with a message; 0: none does.
        for (std::size_t offset = 0; offset < bytes_.size();) {
            const Bytes block = BlockAt(offset);
            const unsigned number = Number(block.subspan(4, 2)) & 0x7FFFU;
            const bool isLast = (block[4] & 0x80U) != 0;
            if (next == 0) {
                if (number > 1 || (number == 0 && !isLast))
                    Fail(offset, "block " + std::to_string(number) + " begins no message");
                frames.push_back(
                    {.Offset = offset + 1, .Header = WireHeader::From(block), .Body = {}});
            } else if (number != next || !Belongs(block, frames.back().Header)) {
                Fail(offset, "block " + std::to_string(next) + " of the message is missing");
            }
            const Bytes data = block.subspan(WireHeader::kSize);
            frames.back().Body.insert(frames.back().Body.end(), data.begin(), data.end());
            next = isLast ? 0 : number + 1;
            offset += 1 + block.size() + kChecksumBytes;
        }
        if (next != 0)
            Fail(bytes_.size(), "block " + std::to_string(next) + " of the message is missing");
        return frames;
    }

    /// The bytes begin like a message behind its length: a short one, and no header, for there is
    /// no stream 0.
    [[nodiscard]] bool LooksLikeHsms() const {
        return bytes_.size() > kLengthBytes && bytes_[0] == 0 && bytes_[1] == 0 && bytes_[2] == 0 &&
               bytes_[3] >= WireHeader::kSize;
    }

private:
    [[noreturn]] void Fail(std::size_t offset, const std::string& reason) const {
        throw UsageError(name_ + ": offset " + std::to_string(offset) + ": " + reason);
    }

    /// Header and data of the block at an offset.
    [[nodiscard]] Bytes BlockAt(std::size_t offset) const {
        constexpr std::uint8_t kLongest = 254;
        const std::size_t length = bytes_[offset];
        if (length < WireHeader::kSize || length > kLongest)
            Fail(offset, "a block has 10 to 254 bytes, not " + std::to_string(length));
        const std::size_t there = bytes_.size() - offset - 1;
        if (there < length + kChecksumBytes)
            Fail(offset,
                 "a block of " + std::to_string(length) + " bytes and two of checksum, but only " +
                     std::to_string(there) + " are there");
        const Bytes block = bytes_.subspan(offset + 1, length);
        std::uint32_t sum = 0;
        for (const std::uint8_t byte : block)
            sum += byte;
        if ((sum & 0xFFFFU) != Number(bytes_.subspan(offset + 1 + length, kChecksumBytes)))
            Fail(offset + 1 + length, "the checksum of the block is wrong");
        return block;
    }

    static bool Belongs(Bytes block, const WireHeader& first) {
        const WireHeader header = WireHeader::From(block);
        return header.DeviceID == first.DeviceID && header.IsReversed == first.IsReversed &&
               header.Stream == first.Stream && header.Function == first.Function &&
               header.ReplyExpected == first.ReplyExpected &&
               header.SystemBytes == first.SystemBytes;
    }

    Bytes bytes_;
    const std::string& name_;
};

std::vector<Frame> Find(const Splitter& splitter) {
    try {
        return splitter.Blocks();
    } catch (const UsageError&) {
    }
    try {
        return splitter.Hsms();
    } catch (const UsageError&) {
        if (splitter.LooksLikeHsms()) throw;
    }
    return splitter.Message();
}

}  // namespace

WireHeader WireHeader::From(std::span<const std::uint8_t> bytes) {
    const std::uint32_t device = Number(bytes.first(2));
    return {.DeviceID = static_cast<std::uint16_t>(device & 0x7FFFU),
            .IsReversed = (device & 0x8000U) != 0,
            .ReplyExpected = (bytes[2] & 0x80U) != 0,
            .Stream = static_cast<std::uint8_t>(bytes[2] & 0x7FU),
            .Function = bytes[3],
            .PType = bytes[4],
            .SType = bytes[5],
            .SystemBytes = Number(bytes.subspan(6, 4))};
}

std::vector<std::uint8_t> WireHeader::Bytes() const {
    const auto byte = [](std::uint32_t value) { return static_cast<std::uint8_t>(value & 0xFFU); };
    return {byte((DeviceID >> 8U) | (IsReversed ? 0x80U : 0U)),
            byte(DeviceID),
            byte(Stream | (ReplyExpected ? 0x80U : 0U)),
            Function,
            PType,
            SType,
            byte(SystemBytes >> 24U),
            byte(SystemBytes >> 16U),
            byte(SystemBytes >> 8U),
            byte(SystemBytes)};
}

std::vector<Frame> SplitMessages(std::span<const std::uint8_t> bytes,
                                 Framing framing,
                                 const std::string& name) {
    const Splitter splitter(bytes, name);
    if (bytes.empty()) throw UsageError(name + ": no message in it");
    switch (framing) {
        case Framing::Message:
            return splitter.Message();
        case Framing::Hsms:
            return splitter.Hsms();
        case Framing::SecsI:
            return splitter.Blocks();
        default:
            return Find(splitter);
    }
}

}  // namespace hexmire::program
