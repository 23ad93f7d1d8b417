#include "equipment/ErrorMessages.h"

#include <algorithm>
#include <charconv>

namespace hexmire::program {

namespace {

constexpr std::int32_t kErrorStream = 9;
constexpr std::uint32_t kTopBit = 0x80;  // The W-bit in byte 2, the R-bit in byte 0.

/// Block number and E-bit of the last block of a message (SEMI E4).
std::uint32_t LastBlock(std::size_t bodyBytes) {
    constexpr std::size_t kMostData = 244;
    const std::size_t blocks = std::max<std::size_t>(1, (bodyBytes + kMostData - 1) / kMostData);
    return 0x8000U | static_cast<std::uint32_t>(blocks);
}

/// The header at the end of an error's text: " hdr=" and twenty hex digits.
std::optional<HeaderBytes> HeaderIn(std::string_view text) {
    constexpr std::string_view kMark = " hdr=";
    const std::size_t mark = text.rfind(kMark);
    if (mark == std::string_view::npos) return std::nullopt;
    const std::string_view digits = text.substr(mark + kMark.size());
    if (digits.size() != 2 * kHeaderSize) return std::nullopt;
    HeaderBytes header{};
    for (std::size_t i = 0; i < kHeaderSize; ++i) {
        const char* begin = digits.data() + 2 * i;
        if (std::from_chars(begin, begin + 2, header[i], 16).ptr != begin + 2) return std::nullopt;
    }
    return header;
}

/// Takes the mark and the number behind it from the front of the text.
bool Take(std::string_view& text, std::string_view mark, std::int32_t& number) {
    if (!text.starts_with(mark)) return false;
    text.remove_prefix(mark.size());
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc()) return false;
    text.remove_prefix(static_cast<std::size_t>(stop - text.data()));
    return true;
}

/// "... [SystemBytes-17] S6F11"
std::optional<HeaderFacts> WaitingPrimary(std::string_view text, HeaderFacts facts) {
    const std::size_t begin = text.rfind("[SystemBytes-");
    if (begin == std::string_view::npos) return std::nullopt;
    text.remove_prefix(begin);
    facts.ReplyExpected = true;
    if (!Take(text, "[SystemBytes-", facts.SystemBytes) || !Take(text, "] S", facts.Stream) ||
        !Take(text, "F", facts.Function) || !text.empty())
        return std::nullopt;
    return facts;
}

}  // namespace

HeaderBytes HeaderOf(const HeaderFacts& facts) {
    const auto device = static_cast<std::uint32_t>(facts.DeviceID);
    const auto bytes = static_cast<std::uint32_t>(facts.SystemBytes);
    const std::uint32_t block = facts.BodyBytes ? LastBlock(*facts.BodyBytes) : 0;
    const std::uint32_t reverse = facts.BodyBytes && facts.FromEquipment ? kTopBit : 0;
    const std::uint32_t wait = facts.ReplyExpected ? kTopBit : 0;
    HeaderBytes header{};
    header[0] = static_cast<std::uint8_t>(device >> 8U | reverse);
    header[1] = static_cast<std::uint8_t>(device);
    header[2] = static_cast<std::uint8_t>(static_cast<std::uint32_t>(facts.Stream) | wait);
    header[3] = static_cast<std::uint8_t>(facts.Function);
    header[4] = static_cast<std::uint8_t>(block >> 8U);
    header[5] = static_cast<std::uint8_t>(block);
    for (std::size_t i = 0; i < 4; ++i)
        header[6 + i] = static_cast<std::uint8_t>(bytes >> (8U * (3U - i)));
    return header;
}

std::optional<ErrorMessage> ErrorMessageFor(std::int32_t code,
                                            std::string_view text,
                                            const HeaderFacts& own) {
    constexpr std::int32_t kReplyTimeOut = 2012;
    constexpr std::int32_t kForeignDevice = 3020;
    constexpr std::int32_t kMessageTooLong = 3029;
    constexpr std::int32_t kRefusedBody = 3090;
    ErrorMessage message;
    std::optional<HeaderBytes> header;
    switch (code) {
        case kForeignDevice:
            message.Function = 1;
            header = HeaderIn(text);
            break;
        case kRefusedBody:
            message.Function = 7;
            header = HeaderIn(text);
            break;
        case kReplyTimeOut:
            message.Function = 9;
            if (const auto primary = WaitingPrimary(text, own)) header = HeaderOf(*primary);
            break;
        case kMessageTooLong:
            message.Function = 11;
            header = HeaderIn(text);
            break;
        default:
            return std::nullopt;
    }
    if (!header || ((*header)[2] & ~kTopBit) == kErrorStream) return std::nullopt;
    message.Header = *header;
    return message;
}

}  // namespace hexmire::program
