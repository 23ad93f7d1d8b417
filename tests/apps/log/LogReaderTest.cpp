#include "LogText.h"
#include "log/LogReader.h"
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace hexmire::program {
namespace {

using fakes::Feed;
using fakes::LogText;
using fakes::ReadWhole;

/// What a reader found, entry by entry.
class Found : public LogSink {
public:
    struct One {
        LogEntry Entry;
        std::string Text;
    };
    std::vector<One> Entries;
    std::vector<LogEntry> Given;
    std::vector<bool> Pauses;

    void Begin(const LogEntry& entry) override { Entries.push_back({.Entry = entry, .Text = ""}); }
    void Text(std::string_view bytes) override { Entries.back().Text += bytes; }
    void Pause(bool whole) override { Pauses.push_back(whole); }
    void Unfinished(const LogEntry& header) override { Given.push_back(header); }
    void Finish() override {}

    [[nodiscard]] std::string All() const {
        std::string text;
        for (const One& one : Entries)
            text += one.Text;
        return text;
    }
    [[nodiscard]] std::vector<LineKind> Kinds() const {
        std::vector<LineKind> kinds;
        for (const One& one : Entries)
            kinds.push_back(one.Entry.Facts.Kind);
        return kinds;
    }
};

std::string Exchange() {
    return LogText()
        .Header("Send", 0x81, 13, 1)
        .Body("Send", "01 00")
        .Sml("Send", "S1F13 W\r\n< L  >\r\n.")
        .Timer("Start", "S1F13", 1, true)
        .Wait(2)
        .Timer("Cancel", "S1F14", 1, true)
        .Header("Received", 1, 14, 1)
        .Body("Received", "21 01 00")
        .Sml("Received", "S1F14\r\n< B 0x00 >\r\n.")
        .Text();
}

TEST(LogReader, entries_take_name_and_system_bytes_from_their_header) {
    Found found;
    const LogReport report = ReadWhole(found, Exchange());
    EXPECT_EQ(report.Entries, 14);
    EXPECT_EQ(report.Broken, 0);
    EXPECT_FALSE(report.CutOff);
    ASSERT_EQ(found.Entries.size(), 14U);
    for (const std::size_t i : {0U, 1U, 2U, 3U}) {
        const LogEntry& entry = found.Entries[i].Entry;
        EXPECT_EQ(NameText(entry.Facts.Name), "S1F13");
        EXPECT_EQ(entry.Facts.SystemBytes, 1U);
        EXPECT_TRUE(entry.Facts.ReplyExpected);
        EXPECT_EQ(entry.Message, found.Entries[0].Entry.Message);
    }
    EXPECT_EQ(found.Entries[13].Entry.Facts.Kind, LineKind::Message);
    EXPECT_EQ(NameText(found.Entries[13].Entry.Facts.Name), "S1F14");
    EXPECT_EQ(found.Entries[13].Entry.Line, 18);
    EXPECT_EQ(found.Entries[13].Entry.Time - found.Entries[0].Entry.Time, 2);
    EXPECT_TRUE(found.Given.empty());
}

TEST(LogReader, every_byte_is_handed_on_however_the_bytes_come) {
    const std::string text = Exchange() + "rubbish\n" + Exchange();
    Found whole;
    static_cast<void>(ReadWhole(whole, text));
    EXPECT_EQ(whole.All(), text);
    for (const std::size_t size : {1U, 2U, 3U, 7U, 64U, 100U}) {
        Found found;
        static_cast<void>(ReadWhole(found, text, size));
        EXPECT_EQ(found.All(), text) << size;
        EXPECT_EQ(found.Kinds(), whole.Kinds()) << size;
    }
}

TEST(LogReader, lines_longer_than_the_buffer_are_read_in_pieces) {
    const std::string body = [] {
        std::string bytes = "41";
        for (int i = 0; i < 1000; ++i)
            bytes += " 41";
        return bytes;
    }();
    const std::string text =
        LogText().Header("Received", 6, 11, 7).Body("Received", body).Text() + Exchange();
    Found found;
    static_cast<void>(ReadWhole(found, text, 50, 128));
    EXPECT_EQ(found.All(), text);
    EXPECT_EQ(found.Entries.size(), 17U);
    EXPECT_EQ(found.Entries[2].Entry.Facts.Kind, LineKind::Data);
    EXPECT_EQ(found.Entries[2].Entry.Facts.SystemBytes, 7U);
}

TEST(LogReader, line_feeds_alone_end_lines_as_well) {
    std::string text = Exchange();
    std::erase(text, '\r');
    Found found;
    const LogReport report = ReadWhole(found, text);
    EXPECT_EQ(report.Broken, 0);
    EXPECT_FALSE(report.CutOff);
    EXPECT_EQ(found.Entries.size(), 14U);
    EXPECT_EQ(found.All(), text);
}

TEST(LogReader, send_from_within_a_send_comes_to_its_sml_first) {
    Found found;
    static_cast<void>(ReadWhole(found,
                                LogText()
                                    .Header("Send", 0x81, 1, 10)
                                    .Message("Send", 0x82, 17, 11)
                                    .Body("Send", "01 00")
                                    .Sml("Send", "S1F1 W\r\n.")
                                    .Text()));
    std::vector<std::uint32_t> systemBytes;
    for (const auto& one : found.Entries)
        systemBytes.push_back(one.Entry.Facts.SystemBytes.value_or(0));
    EXPECT_EQ(systemBytes, (std::vector<std::uint32_t>{10, 11, 11, 11, 10, 10, 10}));
}

TEST(LogReader, failed_send_within_a_send_leaves_the_sml_to_its_own_header) {
    Found found;
    static_cast<void>(ReadWhole(found,
                                LogText()
                                    .Header("Send", 0x81, 1, 10)
                                    .Header("Send", 0x82, 17, 11)
                                    .Sml("Send", "S1F1 W\r\n.")
                                    .Text()));
    EXPECT_EQ(found.Entries.back().Entry.Facts.SystemBytes, 10U);
    ASSERT_EQ(found.Given.size(), 1U);
    EXPECT_EQ(found.Given[0].Facts.SystemBytes, 11U);
}

TEST(LogReader, header_without_sml_is_told_as_unfinished) {
    Found found;
    static_cast<void>(ReadWhole(found,
                                LogText()
                                    .Header("Received", 0x86, 11, 5)
                                    .Body("Received", "01 05")
                                    .Message("Send", 9, 7, 6)
                                    .Message("Received", 1, 2, 7)
                                    .Text()));
    ASSERT_EQ(found.Given.size(), 1U);
    EXPECT_EQ(found.Given[0].Facts.SystemBytes, 5U);
}

TEST(LogReader, failed_send_is_told_when_the_log_ends_or_too_many_wait) {
    LogText text;
    for (unsigned i = 0; i < 10; ++i)
        text.Header("Send", 0x81, 1, i);
    Found found;
    LogReader reader(found);
    Feed(reader, text.Text());
    EXPECT_EQ(found.Given.size(), 2U);
    static_cast<void>(reader.EndFile());
    reader.Finish();
    EXPECT_EQ(found.Given.size(), 10U);
}

TEST(LogReader, errors_are_stream_9_function_0_and_replies_that_nobody_waits_for) {
    Found found;
    static_cast<void>(ReadWhole(found,
                                LogText()
                                    .Message("Received", 9, 5, 1)
                                    .Message("Received", 7, 0, 2)
                                    .Timer("Cancel", "S1F2", 3, false)
                                    .Message("Received", 1, 2, 3)
                                    .Timer("Cancel", "S1F2", 5, false)
                                    .Timer("Start", "S2F17", 9, true)
                                    .Message("Received", 1, 2, 5)
                                    .Timer("Cancel", "S1F2", 4, true)
                                    .Message("Received", 1, 2, 4)
                                    .Text()));
    std::vector<std::uint32_t> errors;
    std::vector<std::uint32_t> unexpected;
    for (const auto& one : found.Entries) {
        if (one.Entry.Error) errors.push_back(*one.Entry.Facts.SystemBytes);
        if (one.Entry.Unexpected) unexpected.push_back(*one.Entry.Facts.SystemBytes);
    }
    EXPECT_EQ(errors, (std::vector<std::uint32_t>{1, 1, 1, 2, 2, 2, 3, 3, 3, 5, 5, 5}));
    EXPECT_EQ(unexpected, (std::vector<std::uint32_t>{3, 3, 3, 5, 5, 5}));
}

TEST(LogReader, lines_that_belong_to_no_entry_are_broken) {
    Found found;
    const std::string text = "cut head\r\n.\r\n" + LogText().Header("Send", 1, 1, 1).Text() +
                             std::string("\0\0\0\n", 4) +
                             LogText().Line("SECS I DATALEN Send : many").Text();
    const LogReport report = ReadWhole(found, text);
    EXPECT_EQ(
        found.Kinds(),
        (std::vector{LineKind::Broken, LineKind::Header, LineKind::Broken, LineKind::Damaged}));
    EXPECT_EQ(report.Broken, 4);
    EXPECT_EQ(report.FirstBroken, 1);
    EXPECT_EQ(found.All(), text);
}

TEST(LogReader, text_with_a_line_that_looks_like_the_end_of_sml_goes_on) {
    Found found;
    const LogReport report =
        ReadWhole(found, LogText().Sml("Received", "S10F3\r\n< A 'a\r\n.\r\nb' >\r\n.").Text());
    EXPECT_EQ(found.Kinds(), (std::vector{LineKind::Message}));
    EXPECT_EQ(report.Broken, 0);
    EXPECT_FALSE(report.CutOff);
}

TEST(LogReader, line_of_another_writer_goes_on_below) {
    Found found;
    const LogReport report = ReadWhole(found, LogText().Line("note\r\nmore of it").Text());
    EXPECT_EQ(found.Kinds(), (std::vector{LineKind::Other}));
    EXPECT_EQ(report.Broken, 0);
}

TEST(LogReader, entry_that_is_cut_off_is_told_once) {
    const std::string text = Exchange();
    std::size_t line = 0;
    for (std::size_t size = 1; size < text.size(); ++size) {
        Found found;
        const LogReport report = ReadWhole(found, text.substr(0, size));
        EXPECT_EQ(found.All(), text.substr(0, size)) << size;
        if (text[size - 1] == '\n') line = size;
        const bool inLine = line != size && size > StampReader::kSize;
        EXPECT_TRUE(report.CutOff || !inLine) << size;
        EXPECT_TRUE(report.Broken == 0 || report.Entries == 0) << size;
    }
    Found found;
    EXPECT_TRUE(ReadWhole(found, text.substr(0, text.size() - 3)).CutOff);
    EXPECT_FALSE(ReadWhole(found, text).CutOff);
}

TEST(LogReader, pause_tells_whether_the_last_entry_is_whole) {
    Found found;
    LogReader reader(found);
    reader.Pause();
    for (const char* part : {"2024/03/05 14:00:00.00 SECS II Message Received : \r\n",
                             "S1F1\r\n",
                             "< L ",
                             " >\r\n",
                             ".\r\n"}) {
        Feed(reader, part);
        reader.Pause();
    }
    EXPECT_EQ(found.Pauses, (std::vector{true, false, false, false, false, true}));
}

TEST(LogReader, clock_that_goes_back_is_counted) {
    Found found;
    const LogReport report = ReadWhole(found,
                                       LogText()
                                           .Message("Send", 1, 1, 1)
                                           .Wait(-360'000)
                                           .Message("Send", 1, 1, 2)
                                           .Wait(1)
                                           .Message("Send", 1, 1, 3)
                                           .Text());
    EXPECT_EQ(report.StepsBack, 1);
    EXPECT_EQ(report.FirstStepBack, 7);
    EXPECT_EQ(report.FirstStepSize, 360'000);
}

TEST(LogReader, end_of_a_second_that_is_rounded_to_its_beginning_is_reckoned_as_its_end) {
    LogText text;
    text.Time += 99;
    text.Line("a").Wait(-99).Line("b").Line("c").Wait(100).Line("d").Wait(30).Line("e");
    Found found;
    EXPECT_EQ(ReadWhole(found, text.Text()).StepsBack, 0);
    std::vector<LogTime> moments;
    for (const auto& one : found.Entries)
        moments.push_back(one.Entry.Moment - found.Entries[0].Entry.Moment);
    EXPECT_EQ(moments, (std::vector<LogTime>{0, 1, 1, 1, 31}));
    EXPECT_EQ(found.Entries[1].Entry.Time - found.Entries[0].Entry.Time, -99);
}

TEST(LogReader, line_that_a_file_cuts_off_does_not_go_on_in_the_next) {
    Found found;
    LogReader reader(found, 64);
    Feed(reader, LogText().Line(std::string(41, 'x')).Text().substr(0, 64));
    EXPECT_TRUE(reader.EndFile().CutOff);
    Feed(reader, LogText().Line("y").Text());
    EXPECT_EQ(reader.EndFile().Entries, 1);
    EXPECT_EQ(found.Entries.size(), 2U);
}

TEST(LogReader, next_file_begins_with_line_1_and_a_report_of_its_own) {
    Found found;
    LogReader reader(found);
    Feed(reader, "junk\n" + LogText().Header("Send", 0x81, 1, 9).Text());
    EXPECT_EQ(reader.EndFile().Broken, 1);
    Feed(reader, LogText("2024/03/06").Sml("Send", "S1F1 W\r\n.").Text());
    const LogReport second = reader.EndFile();
    EXPECT_EQ(second.Broken, 0);
    EXPECT_EQ(second.Entries, 1);
    EXPECT_EQ(found.Entries.back().Entry.Line, 1);
    EXPECT_EQ(found.Entries.back().Entry.Facts.SystemBytes, 9U);
}

}  // namespace
}  // namespace hexmire::program
