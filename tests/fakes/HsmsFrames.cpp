#include "HsmsRig.h"

#include <array>
#include <cstdio>
#include <sstream>
#include <stdexcept>

namespace hexmire::test {

namespace {

constexpr std::array<std::string_view, 10> kNames{"Data",
                                                  "SelectReq",
                                                  "SelectRsp",
                                                  "DeselectReq",
                                                  "DeselectRsp",
                                                  "LinktestReq",
                                                  "LinktestRsp",
                                                  "RejectReq",
                                                  "",
                                                  "SeparateReq"};

hsms::FrameHeader HeaderNamed(const std::string& name) {
    hsms::FrameHeader header;
    unsigned stream = 0;
    unsigned function = 0;
    char wBit = 0;
    if (std::sscanf(name.c_str(), "S%uF%u%c", &stream, &function, &wBit) >= 2) {
        header.Byte2 = static_cast<std::uint8_t>(stream | (wBit == 'W' ? 0x80U : 0U));
        header.Byte3 = static_cast<std::uint8_t>(function);
        return header;
    }
    const std::size_t dot = name.find('.');
    for (std::size_t type = 0; type < kNames.size(); ++type) {
        if (name.substr(0, dot) != kNames[type]) continue;
        header.SessionType = static_cast<std::uint8_t>(type);
        if (dot != std::string::npos) {
            header.Byte3 = static_cast<std::uint8_t>(std::stoul(name.substr(dot + 1)));
        }
        return header;
    }
    throw std::invalid_argument("no frame: " + name);
}

}  // namespace

std::vector<std::uint8_t> FrameBytes(std::string_view notation) {
    std::istringstream words{std::string(notation)};
    std::string name;
    std::string session;
    std::string systemBytes;
    std::string body;
    words >> name >> session >> systemBytes >> body;
    hsms::FrameHeader header = HeaderNamed(name);
    header.SessionID = static_cast<std::uint16_t>(std::stoul(session, nullptr, 16));
    header.SystemBytes = static_cast<std::uint32_t>(std::stoul(systemBytes, nullptr, 16));
    const auto head = hsms::EncodeControlFrame(header);
    std::vector<std::uint8_t> bytes(head.begin(), head.end());
    const std::vector<std::uint8_t> data = HexToBytes(body);
    bytes.insert(bytes.end(), data.begin(), data.end());
    hsms::PutU32(bytes.data(), static_cast<std::uint32_t>(bytes.size() - hsms::kLengthBytes));
    return bytes;
}

std::string FrameNotation(std::span<const std::uint8_t> frame) {
    const auto header =
        hsms::DecodeHeader(frame.subspan(hsms::kLengthBytes).first<hsms::kHeaderBytes>());
    std::string text;
    if (header.IsData()) {
        text = "S" + std::to_string(header.Stream()) + "F" + std::to_string(header.Function()) +
               (header.WBit() ? "W" : "");
    } else {
        text = kNames.at(header.SessionType);
        if (header.Byte2 != 0) text += "(" + std::to_string(header.Byte2) + ")";
        if (header.Byte3 != 0) text += "." + std::to_string(header.Byte3);
    }
    text += " " + Hex(header.SessionID, 4) + " " + Hex(header.SystemBytes, 8);
    const auto body = frame.subspan(hsms::kLengthBytes + hsms::kHeaderBytes);
    if (!body.empty()) text += " ";
    for (const std::uint8_t byte : body) {
        text += Hex(byte, 2);
    }
    return text;
}

}  // namespace hexmire::test
