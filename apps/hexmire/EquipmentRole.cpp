#include "EquipmentRole.h"

#include "Template.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <ctime>
#include <vector>

namespace hexmire::program {

namespace {

constexpr std::int32_t kErrorStream = 9;
constexpr std::size_t kHeaderSize = 10;

/// "yyyymmddhhmmsscc" in local time (SEMI E5, TIME).
std::string TimeText() {
    using namespace std::chrono;
    const auto now = system_clock::now();
    const std::time_t second = system_clock::to_time_t(now);
    std::tm parts{};
    ::localtime_r(&second, &parts);
    char text[32] = "";
    const std::size_t length = std::strftime(text, sizeof text, "%Y%m%d%H%M%S", &parts);
    const auto hundredths = floor<milliseconds>(now.time_since_epoch()).count() / 10 % 100;
    const std::string digits = std::to_string(100 + hundredths).substr(1);
    return std::string(text, length) + digits;
}

/// Block number and E-bit of the last block of a message on a SECS-I link (SEMI E4).
std::uint32_t LastBlock(const std::string& bodyHex) {
    constexpr std::size_t kMostData = 244;
    const std::size_t bodyBytes = (bodyHex.size() + 1) / 3;
    const std::size_t blocks = std::max<std::size_t>(1, (bodyBytes + kMostData - 1) / kMostData);
    return 0x8000U | static_cast<std::uint32_t>(blocks);
}

/// The header of a received primary (SEMI E5, MHEAD), as it stood on the link; on a SECS-I link
/// that of its last block.
std::vector<std::uint8_t> HeaderOf(const SECSTrans& trans, bool isSECSI) {
    const auto device = static_cast<std::uint32_t>(trans.DeviceID());
    const auto bytes = static_cast<std::uint32_t>(trans.SystemBytes());
    const auto wBit = trans.ReplyExpected() ? 0x80U : 0U;
    std::vector<std::uint8_t> header(kHeaderSize);
    header[0] = static_cast<std::uint8_t>(device >> 8U);
    header[1] = static_cast<std::uint8_t>(device);
    header[2] =
        static_cast<std::uint8_t>(static_cast<std::uint32_t>(trans.Primary()->Stream()) | wBit);
    header[3] = static_cast<std::uint8_t>(trans.Primary()->Func());
    const std::uint32_t block = isSECSI ? LastBlock(trans.Primary()->RawHex()) : 0;
    header[4] = static_cast<std::uint8_t>(block >> 8U);
    header[5] = static_cast<std::uint8_t>(block);
    for (std::size_t i = 0; i < 4; ++i)
        header[6 + i] = static_cast<std::uint8_t>(bytes >> (8U * (3U - i)));
    return header;
}

/// The header at the end of an error's text; empty when there is none.
std::vector<std::uint8_t> HeaderIn(const std::string& errorText) {
    constexpr std::string_view kMark = " hdr=";
    const std::size_t mark = errorText.rfind(kMark);
    if (mark == std::string::npos) return {};
    const std::string_view digits = std::string_view(errorText).substr(mark + kMark.size());
    if (digits.size() != 2 * kHeaderSize) return {};
    std::vector<std::uint8_t> header(kHeaderSize);
    for (std::size_t i = 0; i < kHeaderSize; ++i) {
        const char* begin = digits.data() + 2 * i;
        if (std::from_chars(begin, begin + 2, header[i], 16).ptr != begin + 2) return {};
    }
    return header;
}

void SetFirst(const SECSItemPtr& item, std::int32_t format, const Variant& value) {
    if (item == nullptr) return;
    item->Format(format);
    item->Value(value);
}

}  // namespace

EquipmentRole::EquipmentRole(Peer& peer) : peer_(peer) {
    peer.OnPrimary = [this](const SECSTransPtr& trans) { Answer(trans); };
    peer.OnError = [this](std::int32_t code, const std::string& text) {
        constexpr std::int32_t kForeignDevice = 3020;
        if (code == kForeignDevice) ReportForeignDevice(text);
    };
}

void EquipmentRole::Answer(const SECSTransPtr& trans) {
    const SECSMessage& primary = *trans->Primary();
    if (!Knows(primary.Stream(), primary.Func())) return ReportUnknown(trans);
    if (!trans->ReplyExpected()) return;
    const SECSItemPtr body =
        trans->Secondary()->Root()->ItemCount() == 0 ? nullptr : trans->Secondary()->Item(1);
    if (primary.Stream() == 1 && primary.Func() == 13 && body != nullptr && body->ItemCount() > 0)
        SetFirst(body->Item(1), FormatBinary, std::uint8_t{0});
    if (primary.Stream() == 2 && primary.Func() == 17) SetFirst(body, FormatAscii, TimeText());
    DropExamples(*trans->Secondary());
    peer_.Reply(trans);
}

void EquipmentRole::ReportUnknown(const SECSTransPtr& trans) {
    const std::int32_t stream = trans->Primary()->Stream();
    if (stream == kErrorStream) return;  // An error report is not answered by another.
    const std::int32_t portType = peer_.Control().ConnectionPortType();
    const bool isSECSI = portType == PortTypeRS232 || portType == PortTypeTCPIP;
    SendStream9(Knows(stream) ? 5 : 3, HeaderOf(*trans, isSECSI));
}

void EquipmentRole::ReportForeignDevice(const std::string& errorText) {
    const std::vector<std::uint8_t> header = HeaderIn(errorText);
    if (header.empty() || (header[2] & 0x7FU) == kErrorStream) return;
    SendStream9(1, header);
}

void EquipmentRole::SendStream9(std::int32_t function, std::vector<std::uint8_t> header) {
    const SECSTransPtr trans = peer_.Control().NewSECSTransaction();
    trans->Name(StreamFunction(kErrorStream, function));
    trans->ReplyExpected(false);
    trans->Primary()->Stream(kErrorStream);
    trans->Primary()->Func(function);
    SetFirst(trans->Primary()->Root()->AddNew(1), FormatBinary, std::move(header));
    peer_.Send(trans);
}

bool EquipmentRole::Knows(std::int32_t stream) const {
    const auto dictionary = peer_.Control().SECSDictionary();
    return std::ranges::any_of(dictionary->begin(), dictionary->end(), [&](const auto& entry) {
        return entry->Primary()->Stream() == stream;
    });
}

bool EquipmentRole::Knows(std::int32_t stream, std::int32_t function) const {
    const auto dictionary = peer_.Control().SECSDictionary();
    return std::ranges::any_of(dictionary->begin(), dictionary->end(), [&](const auto& entry) {
        return entry->Primary()->Stream() == stream && entry->Primary()->Func() == function;
    });
}

}  // namespace hexmire::program
