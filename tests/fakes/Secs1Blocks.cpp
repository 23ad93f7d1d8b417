#include "Secs1Rig.h"

#include <algorithm>
#include <cstdio>
#include <sstream>
#include <stdexcept>

namespace hexmire::test {

namespace {

constexpr std::size_t kShownBytes = 16;

std::vector<std::uint8_t> BodyBytes(const std::string& text) {
    if (text.starts_with('*')) return PatternBytes(std::stoul(text.substr(1)));
    return HexToBytes(text);
}

std::string BodyNotation(std::span<const std::uint8_t> body) {
    if (body.size() > kShownBytes) {
        const auto pattern = PatternBytes(body.size());
        const std::string count = std::to_string(body.size());
        return std::equal(body.begin(), body.end(), pattern.begin()) ? "*" + count
                                                                     : "(" + count + " bytes)";
    }
    std::string text;
    for (const std::uint8_t byte : body) {
        text += Hex(byte, 2);
    }
    return text;
}

std::vector<std::uint8_t> TokenBytes(std::string token) {
    token.erase(0, token.find_first_not_of(' '));
    if (token == "ENQ") return {secs1::kEnq};
    if (token == "EOT") return {secs1::kEot};
    if (token == "ACK") return {secs1::kAck};
    if (token == "NAK") return {secs1::kNak};
    if (token.starts_with("bad ")) {
        auto bytes = BlockBytes(token.substr(4));
        bytes.back() = static_cast<std::uint8_t>(bytes.back() ^ 1U);
        return bytes;
    }
    if (token.starts_with("first ")) {
        std::size_t digits = 0;
        const std::size_t count = std::stoul(token.substr(6), &digits);
        auto bytes = BlockBytes(token.substr(6 + digits + 1));
        bytes.resize(count);
        return bytes;
    }
    return token.starts_with('S') ? BlockBytes(token) : HexToBytes(token);
}

}  // namespace

std::vector<std::uint8_t> PatternBytes(std::size_t count) {
    std::vector<std::uint8_t> bytes(count);
    for (std::size_t index = 0; index < count; ++index) {
        bytes[index] = static_cast<std::uint8_t>(index * 37 + index / 256);
    }
    return bytes;
}

BlockParts ParseBlock(std::string_view notation) {
    std::istringstream words{std::string(notation)};
    std::string name;
    std::string device;
    std::string systemBytes;
    std::string body;
    words >> name >> device >> systemBytes >> body;
    unsigned stream = 0;
    unsigned function = 0;
    char wBit = 0;
    if (std::sscanf(name.c_str(), "S%uF%u%c", &stream, &function, &wBit) < 2) {
        throw std::invalid_argument("no block: " + name);
    }
    BlockParts parts;
    const auto first = std::stoul(device, nullptr, 16);
    parts.Header.ToHost = (first & 0x8000U) != 0;
    parts.Header.DeviceID = static_cast<std::uint16_t>(first & 0x7FFFU);
    parts.Header.WBit = wBit == 'W';
    parts.Header.Stream = static_cast<std::uint8_t>(stream);
    parts.Header.Function = static_cast<std::uint8_t>(function);
    parts.Header.SystemBytes = static_cast<std::uint32_t>(std::stoul(systemBytes, nullptr, 16));
    if (body.starts_with('#')) {
        parts.Header.Number = static_cast<std::uint16_t>(std::stoul(body.substr(1)));
        parts.Header.IsLast = body.ends_with('E');
        body.clear();
        words >> body;
    }
    parts.Data = BodyBytes(body);
    return parts;
}

std::vector<std::uint8_t> BlockBytes(std::string_view notation) {
    const BlockParts parts = ParseBlock(notation);
    return secs1::EncodeBlock(parts.Header, parts.Data);
}

std::vector<std::uint8_t> LineBytes(std::string_view tokens) {
    std::vector<std::uint8_t> bytes;
    std::istringstream words{std::string(tokens)};
    for (std::string token; std::getline(words, token, ',');) {
        const auto more = TokenBytes(token);
        bytes.insert(bytes.end(), more.begin(), more.end());
    }
    return bytes;
}

std::string BlockNotation(const secs1::BlockHeader& header, std::span<const std::uint8_t> data) {
    std::string text = "S" + std::to_string(header.Stream) + "F" + std::to_string(header.Function) +
                       (header.WBit ? "W " : " ");
    text += Hex((header.ToHost ? 0x8000U : 0U) | header.DeviceID, 4) + " " +
            Hex(header.SystemBytes, 8) + " #" + std::to_string(header.Number) +
            (header.IsLast ? "E" : "");
    const std::string body = BodyNotation(data);
    return body.empty() ? text : text + " " + body;
}

}  // namespace hexmire::test
