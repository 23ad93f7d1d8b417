// Lines and names of the byte trace.
#include <hexmire/driver/trace/TraceText.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numeric>
#include <vector>

namespace hexmire::link {
namespace {

using namespace std::chrono_literals;
using std::chrono::day;
using std::chrono::month;
using std::chrono::year;

constexpr ClockReading kTime{.Date{year(2024), month(3), day(5)},
                             .TimeOfDay = 14h + 7min + 9s + 42ms + 7us + 999ns};

std::string LineOf(TraceDirection direction, const std::vector<std::uint8_t>& bytes) {
    std::string text;
    AppendTraceBytes(text, kTime, direction, bytes);
    return text;
}

TEST(TraceText, ALineTellsTimeDirectionNumberAndBytes) {
    EXPECT_EQ(LineOf(TraceDirection::Sent, {0x00, 0x0A, 0xFF}),
              "2024/03/05 14:07:09.042007 Send 3: 00 0A FF\r\n");
    EXPECT_EQ(LineOf(TraceDirection::Received, {0x05}),
              "2024/03/05 14:07:09.042007 Recv 1: 05\r\n");
}

TEST(TraceText, MidnightAndTheLastMicrosecondOfTheDayKeepTheirDigits) {
    std::string text;
    AppendTraceNote(text, {.Date{year(2024), month(12), day(31)}, .TimeOfDay = 0ns}, "a");
    AppendTraceNote(text, {.Date{year(2024), month(12), day(31)}, .TimeOfDay = 24h - 1ns}, "b");
    EXPECT_EQ(text,
              "2024/12/31 00:00:00.000000 Note a\r\n"
              "2024/12/31 23:59:59.999999 Note b\r\n");
}

TEST(TraceText, LinesAreAppended) {
    std::string text = "before";
    AppendTraceBytes(text, kTime, TraceDirection::Sent, std::vector<std::uint8_t>{1});
    EXPECT_TRUE(text.starts_with("before2024/"));
}

TEST(TraceText, NoBytesMakeNoLine) { EXPECT_EQ(LineOf(TraceDirection::Sent, {}), ""); }

TEST(TraceText, AChunkBeyond65536BytesMakesSeveralLines) {
    std::vector<std::uint8_t> bytes(65'536 + 2, 0xAB);
    const std::string text = LineOf(TraceDirection::Received, bytes);
    const std::size_t cut = text.find("\r\n") + 2;
    EXPECT_EQ(cut, std::string("2024/03/05 14:07:09.042007 Recv 65536: ").size() + 65'536 * 3 + 1);
    EXPECT_EQ(text.substr(cut), "2024/03/05 14:07:09.042007 Recv 2: AB AB\r\n");
    bytes.resize(65'536);
    EXPECT_TRUE(LineOf(TraceDirection::Received, bytes).ends_with("AB\r\n"));
}

TEST(TraceText, ANoteIsOneLineWhateverItHolds) {
    std::string text;
    AppendTraceNote(text, kTime, std::string_view("a\r\nb\0c\x1F\x7F\xE9", 9));
    EXPECT_EQ(text, "2024/03/05 14:07:09.042007 Note a??b?c??\xE9\r\n");
}

struct PortName {
    const char* Wanted;
    LinkPortType Type;
    LinkConnectionMode Mode;
    const char* Serial;
};

TEST(TraceText, APortHasANameOfItsOwn) {
    using enum LinkPortType;
    using enum LinkConnectionMode;
    const PortName names[] = {
        {"to-10.0.0.2-5001-device-7", Hsms, Active, ""},
        {"to-10.0.0.2-5001-device-7", HsmsSs, Active, ""},
        {"to-10.0.0.2-5001-device-7", Tcp, Active, ""},
        {"at-%3A%3A1-6002-device-7", HsmsSs, Passive, ""},
        {"at-%3A%3A1-6002-device-7", Tcp, Alternating, ""},
        {"serial-COM1", Serial, Active, "COM1"},
        {"serial-ttyUSB0", Serial, Passive, "/dev/ttyUSB0"},
        {"serial-pts%2F3", Serial, Active, "/dev/pts/3"},
        {"serial-..%2Fetc%2Fpasswd", Serial, Active, "../etc/passwd"},
        {"serial-", Serial, Active, ""},
    };
    for (const PortName& name : names) {
        LinkSettings settings;
        settings.PortType = static_cast<std::int32_t>(name.Type);
        settings.HSMSConnectionMode = static_cast<std::int32_t>(name.Mode);
        settings.SerialPort = name.Serial;
        settings.DeviceID = 7;
        settings.RemoteIPAddress = "10.0.0.2";
        settings.RemoteIPPort = 5001;
        settings.LocalIPAddress = "::1";
        settings.LocalIPPort = 6002;
        EXPECT_EQ(TracePortName(settings), name.Wanted);
    }
}

}  // namespace
}  // namespace hexmire::link
