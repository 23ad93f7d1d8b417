#include "log/LogLine.h"
#include <gtest/gtest.h>

#include <array>
#include <string>

namespace hexmire::program {
namespace {

TEST(LogLine, header_tells_all_of_its_fields) {
    const LineFacts facts = ReadLine("SECS I HEADER Received : 81 02 86 0B 80 01 FF 00 00 2A\r\n");
    EXPECT_EQ(facts.Kind, LineKind::Header);
    EXPECT_EQ(facts.Direction, Way::Received);
    EXPECT_TRUE(facts.FromEquipment);
    EXPECT_EQ(facts.DeviceID, 0x102);
    EXPECT_TRUE(facts.ReplyExpected);
    EXPECT_EQ(facts.Name, (MessageName{.Stream = 6, .Function = 11}));
    EXPECT_EQ(facts.SystemBytes, 0xFF00002AU);
}

TEST(LogLine, each_kind_of_line_is_known) {
    const struct {
        const char* Text;
        LineKind Kind;
        Way Direction;
    } kCases[] = {
        {"SECS I HEADER Send : 00 00 81 01 00 00 00 00 00 01", LineKind::Header, Way::Send},
        {"SECS I HEADER Reply : 00 00 01 02 00 00 00 00 00 01 ", LineKind::Header, Way::Reply},
        {"SECS I HEADER Send : 00 00 81 01 00 00 00 00 00", LineKind::Damaged, Way::Send},
        {"SECS I HEADER Send : 00 00 81 01 00 00 00 00 00 01 02", LineKind::Damaged, Way::Send},
        {"SECS I HEADER Send : 00 00 81 01 00 00 00 00 00 0", LineKind::Damaged, Way::Send},
        {"SECS I HEADER Send : 00 00 81 01 00 00 00 00 00 0G", LineKind::Damaged, Way::Send},
        {"SECS I HEADER Send : 00-00 81 01 00 00 00 00 00 01", LineKind::Damaged, Way::Send},
        {"SECS I HEADER Sent : 00 00 81 01 00 00 00 00 00 01", LineKind::Other, Way::None},
        {"SECS I DATALEN Received : 42\r\n", LineKind::Length, Way::Received},
        {"SECS I DATALEN Received : -1", LineKind::Damaged, Way::Received},
        {"SECS I DATALEN Received : 4x", LineKind::Damaged, Way::Received},
        {"SECS I DATALEN Received : ", LineKind::Damaged, Way::Received},
        {"SECS I DATALEN Received : 99999999999", LineKind::Damaged, Way::Received},
        {"SECS I DATA Send : 01 00\r\n", LineKind::Data, Way::Send},
        {"SECS II Message Reply : \r\n", LineKind::Message, Way::Reply},
        {"SECS II Message Reply : S1F1", LineKind::Damaged, Way::Reply},
        {"Start T3 - Searching for S1F13 SystemBytes: 1\n", LineKind::Timer, Way::Send},
        {"Start T3 - TransactionInUse[12] : S1F13 SystemBytes: 1", LineKind::Timer, Way::Send},
        {"Cancel T3 - Timer for S1F14 SystemBytes: -1", LineKind::Timer, Way::Received},
        {"Cancel T3 - Timer for S1F14", LineKind::Damaged, Way::Received},
        {"Cancel T3 - Timer for S1F14 SystemBytes: one", LineKind::Damaged, Way::Received},
        {"Cancel T3 - TransactionInUse[x] : S1F1 SystemBytes: 1", LineKind::Damaged, Way::Received},
        {"Cancel T3 - Nothing", LineKind::Damaged, Way::Received},
        {"", LineKind::Other, Way::None},
        {"Hello", LineKind::Other, Way::None},
        {"SECS I", LineKind::Other, Way::None},
    };
    for (const auto& one : kCases) {
        const LineFacts facts = ReadLine(one.Text);
        EXPECT_EQ(facts.Kind, one.Kind) << one.Text;
        EXPECT_EQ(facts.Direction, one.Direction) << one.Text;
    }
}

TEST(LogLine, timer_line_tells_its_step_and_its_message) {
    const LineFacts waiting = ReadLine("Start T3 - TransactionInUse[12] : S1F13 SystemBytes: 900");
    EXPECT_TRUE(waiting.Start);
    EXPECT_EQ(waiting.Step, TimerStep::Waiting);
    EXPECT_EQ(waiting.Position, 12);
    EXPECT_EQ(waiting.Name, (MessageName{.Stream = 1, .Function = 13}));
    EXPECT_EQ(waiting.SystemBytes, 900U);
    const LineFacts stopped = ReadLine("Cancel T3 - Timer for S1F14 SystemBytes: -1");
    EXPECT_FALSE(stopped.Start);
    EXPECT_EQ(stopped.Step, TimerStep::Timer);
    EXPECT_EQ(stopped.SystemBytes, 0xFFFFFFFFU);
}

TEST(LogLine, first_line_of_sml_is_a_name) {
    const auto primary = ReadSmlName("S6F11 W\r\n");
    ASSERT_TRUE(primary);
    EXPECT_EQ(primary->Name, (MessageName{.Stream = 6, .Function = 11}));
    EXPECT_TRUE(primary->ReplyExpected);
    EXPECT_FALSE(primary->Ended);
    const auto alone = ReadSmlName("S9F1.");
    ASSERT_TRUE(alone);
    EXPECT_FALSE(alone->ReplyExpected);
    EXPECT_TRUE(alone->Ended);
    for (const char* line :
         {"", "S", "S1", "S1F", "S128F1", "S1F256", "S-1F1", "S1F1 X", "S1F1..", "< L "})
        EXPECT_FALSE(ReadSmlName(line)) << line;
}

TEST(LogLine, name_of_a_filter_is_a_message_or_a_stream) {
    EXPECT_EQ(ParseMessageName("S6F11"), (MessageName{.Stream = 6, .Function = 11}));
    EXPECT_EQ(ParseMessageName("s127f255"), (MessageName{.Stream = 127, .Function = 255}));
    EXPECT_EQ(ParseMessageName("s6"), (MessageName{.Stream = 6, .Function = -1}));
    for (const char* text : {"", "6", "S", "S128", "S6F", "S6F256", "S6F11 ", "S6F-1", "SxFy"})
        EXPECT_EQ(ParseMessageName(text), std::nullopt) << text;
}

TEST(LogLine, system_bytes_are_decimal_or_hexadecimal_numbers_of_32_bits) {
    EXPECT_EQ(ParseSystemBytes("0"), 0U);
    EXPECT_EQ(ParseSystemBytes("4294967295"), 0xFFFFFFFFU);
    EXPECT_EQ(ParseSystemBytes("-1"), 0xFFFFFFFFU);
    EXPECT_EQ(ParseSystemBytes("-2147483648"), 0x80000000U);
    EXPECT_EQ(ParseSystemBytes("0x2a"), 42U);
    EXPECT_EQ(ParseSystemBytes("0XFFFFFFFF"), 0xFFFFFFFFU);
    for (const char* text :
         {"", "x", "0x", "0xG", "0x-1", "1x", " 1", "4294967296", "-2147483649", "0x100000000"})
        EXPECT_EQ(ParseSystemBytes(text), std::nullopt) << text;
}

TEST(LogLine, bytes_are_read_up_to_the_room_there_is) {
    std::array<std::uint8_t, 3> bytes{};
    EXPECT_EQ(ReadBytes("0a FF 7f \r\n", bytes.data(), bytes.size()), 3U);
    EXPECT_EQ(bytes, (std::array<std::uint8_t, 3>{0x0A, 0xFF, 0x7F}));
    EXPECT_EQ(ReadBytes("01 02 03 04", bytes.data(), bytes.size()), 3U);
    EXPECT_EQ(ReadBytes("", bytes.data(), bytes.size()), 0U);
    for (const char* text : {"0", "01 2", "0102", "01  02", "0x01", " 01"})
        EXPECT_EQ(ReadBytes(text, bytes.data(), bytes.size()), std::nullopt) << text;
}

}  // namespace
}  // namespace hexmire::program
