#include "log/LogLine.h"

#include <array>
#include <charconv>

namespace hexmire::program {

namespace {

constexpr std::int32_t kLargestStream = 127;
constexpr std::int32_t kLargestFunction = 255;

bool Skip(std::string_view& text, std::string_view prefix) {
    if (!text.starts_with(prefix)) return false;
    text.remove_prefix(prefix.size());
    return true;
}

template <class Number>
std::optional<Number> SkipNumber(std::string_view& text, int base = 10) {
    Number value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    if (error != std::errc()) return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return value;
}

std::optional<std::int32_t> SkipSmall(std::string_view& text, std::int32_t largest) {
    const auto value = SkipNumber<std::int32_t>(text);
    if (!value || *value < 0 || *value > largest) return std::nullopt;
    return value;
}

std::optional<MessageName> SkipName(std::string_view& text) {
    if (!Skip(text, "S")) return std::nullopt;
    const auto stream = SkipSmall(text, kLargestStream);
    if (!stream || !Skip(text, "F")) return std::nullopt;
    const auto function = SkipSmall(text, kLargestFunction);
    if (!function) return std::nullopt;
    return MessageName{.Stream = *stream, .Function = *function};
}

std::optional<Way> SkipWay(std::string_view& text) {
    if (Skip(text, "Received : ")) return Way::Received;
    if (Skip(text, "Send : ")) return Way::Send;
    if (Skip(text, "Reply : ")) return Way::Reply;
    return std::nullopt;
}

int Digit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

std::string_view WithoutBlanks(std::string_view text) {
    while (text.ends_with(' '))
        text.remove_suffix(1);
    return text;
}

void ReadHeader(std::string_view text, LineFacts& facts) {
    std::array<std::uint8_t, 11> bytes{};
    if (ReadBytes(text, bytes.data(), bytes.size()) != std::size_t{10}) {
        facts.Kind = LineKind::Damaged;
        return;
    }
    facts.FromEquipment = (bytes[0] & 0x80) != 0;
    facts.DeviceID = (bytes[0] & 0x7F) << 8 | bytes[1];
    facts.ReplyExpected = (bytes[2] & 0x80) != 0;
    facts.Name = {.Stream = bytes[2] & 0x7F, .Function = bytes[3]};
    facts.SystemBytes = static_cast<std::uint32_t>(bytes[6]) << 24 |
                        static_cast<std::uint32_t>(bytes[7]) << 16 |
                        static_cast<std::uint32_t>(bytes[8]) << 8 | bytes[9];
}

void ReadLength(std::string_view text, LineFacts& facts) {
    const auto length = SkipNumber<std::int32_t>(text);
    if (!length || *length < 0 || !text.empty()) {
        facts.Kind = LineKind::Damaged;
        return;
    }
    facts.Length = *length;
}

/// The rest of "Start T3 - ".
void ReadTimer(std::string_view text, LineFacts& facts) {
    facts.Kind = LineKind::Damaged;
    facts.Direction = facts.Start ? Way::Send : Way::Received;
    if (Skip(text, "TransactionInUse[")) {
        facts.Step = TimerStep::Waiting;
        const auto position = SkipNumber<std::int32_t>(text);
        if (!position || !Skip(text, "] : ")) return;
        facts.Position = *position;
    } else if (Skip(text, "Timer for ")) {
        facts.Step = TimerStep::Timer;
    } else if (Skip(text, "Searching for ")) {
        facts.Step = TimerStep::Searching;
    } else {
        return;
    }
    const auto name = SkipName(text);
    if (!name || !Skip(text, " SystemBytes: ")) return;
    const auto systemBytes = ParseSystemBytes(text);
    if (!systemBytes) return;
    facts.Kind = LineKind::Timer;
    facts.Name = *name;
    facts.SystemBytes = systemBytes;
}

void ReadMessageLine(std::string_view text, LineKind kind, LineFacts& facts) {
    const auto way = SkipWay(text);
    if (!way) return;  // Other.
    facts.Kind = kind;
    facts.Direction = *way;
    if (kind == LineKind::Header) ReadHeader(text, facts);
    if (kind == LineKind::Length) ReadLength(WithoutBlanks(WithoutLineEnd(text)), facts);
    if (kind == LineKind::Message && !WithoutLineEnd(text).empty()) facts.Kind = LineKind::Damaged;
}

}  // namespace

LineFacts ReadLine(std::string_view text) {
    LineFacts facts;
    if (Skip(text, "SECS I")) {
        if (Skip(text, "I Message ")) {
            ReadMessageLine(text, LineKind::Message, facts);
        } else if (Skip(text, " HEADER ")) {
            ReadMessageLine(text, LineKind::Header, facts);
        } else if (Skip(text, " DATALEN ")) {
            ReadMessageLine(text, LineKind::Length, facts);
        } else if (Skip(text, " DATA ")) {
            ReadMessageLine(text, LineKind::Data, facts);
        }
        return facts;
    }
    const bool start = Skip(text, "Start T3 - ");
    if (start || Skip(text, "Cancel T3 - ")) {
        facts.Start = start;
        ReadTimer(WithoutBlanks(WithoutLineEnd(text)), facts);
    }
    return facts;
}

std::optional<SmlName> ReadSmlName(std::string_view line) {
    line = WithoutLineEnd(line);
    const auto name = SkipName(line);
    if (!name) return std::nullopt;
    const bool replyExpected = Skip(line, " W");
    const bool ended = Skip(line, ".");
    if (!line.empty()) return std::nullopt;
    return SmlName{.Name = *name, .ReplyExpected = replyExpected, .Ended = ended};
}

std::optional<MessageName> ParseMessageName(std::string_view text) {
    std::string upper(text);
    for (char& c : upper) {
        if (c == 's') c = 'S';
        if (c == 'f') c = 'F';
    }
    std::string_view whole = upper;
    std::string_view rest = whole;
    if (const auto name = SkipName(rest); name && rest.empty()) return name;
    if (!Skip(whole, "S")) return std::nullopt;
    const auto stream = SkipSmall(whole, kLargestStream);
    if (!stream || !whole.empty()) return std::nullopt;
    return MessageName{.Stream = *stream, .Function = -1};
}

std::optional<std::uint32_t> ParseSystemBytes(std::string_view text) {
    if (text.starts_with("0x") || text.starts_with("0X")) {
        text.remove_prefix(2);
        const auto value = SkipNumber<std::uint32_t>(text, 16);
        return text.empty() ? value : std::nullopt;
    }
    const auto value = SkipNumber<std::int64_t>(text);
    if (!value || !text.empty() || *value < INT32_MIN || *value > UINT32_MAX) return std::nullopt;
    return static_cast<std::uint32_t>(*value);
}

std::optional<std::size_t> ReadBytes(std::string_view text, std::uint8_t* bytes, std::size_t room) {
    text = WithoutBlanks(WithoutLineEnd(text));
    std::size_t count = 0;
    while (count < room && !text.empty()) {
        if (text.size() < 2 || (text.size() > 2 && text[2] != ' ')) return std::nullopt;
        const int high = Digit(text[0]);
        const int low = Digit(text[1]);
        if (high < 0 || low < 0) return std::nullopt;
        bytes[count++] = static_cast<std::uint8_t>(high << 4 | low);
        text.remove_prefix(text.size() > 2 ? 3 : 2);
    }
    return count;
}

std::string NameText(const MessageName& name) {
    return 'S' + std::to_string(name.Stream) + 'F' + std::to_string(name.Function);
}

std::string_view WithoutLineEnd(std::string_view line) {
    if (line.ends_with('\n')) line.remove_suffix(1);
    if (line.ends_with('\r')) line.remove_suffix(1);
    return line;
}

}  // namespace hexmire::program
