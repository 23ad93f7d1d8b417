#include "LogText.h"
#include "VisibleText.h"
#include "log/EntryPrinter.h"
#include "log/LogFilter.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace hexmire::program {
namespace {

using fakes::LogText;
using fakes::ReadWhole;
using testing::HasSubstr;
using testing::Not;

std::string Filtered(const std::string& text, LogFilter filter) {
    std::ostringstream out;
    EntryPrinter printer(out, std::move(filter));
    static_cast<void>(ReadWhole(printer, text));
    return out.str();
}

/// Three exchanges; each part is what the log holds of one message.
struct Log {
    std::string Sent = LogText().Message("Send", 0x81, 1, 1).Text();
    std::string Start = LogText().Timer("Start", "S1F1", 1, true).Text();
    std::string Reply = LogText().Wait(100).Message("Received", 1, 2, 1).Text();
    std::string Report = LogText()
                             .Wait(200)
                             .Header("Received", 0x86, 11, 0xFFFFFFFF)
                             .Body("Received", "41 01 41")
                             .Sml("Received", "S6F11 W\r\n< A 'A' >\r\n.")
                             .Text();
    std::string Answer = LogText().Wait(300).Message("Reply", 6, 12, 0xFFFFFFFF).Text();
    std::string All = Sent + Start + Reply + Report + Answer;
};

TEST(EntryPrinter, shows_utf_8_and_control_characters_on_a_terminal) {
    const auto shown = [](const std::string& text) {
        std::ostringstream out;
        EntryPrinter printer(out, LogFilter(), Controls::Visible);
        static_cast<void>(ReadWhole(printer, text));
        return out.str();
    };
    const Log log;
    EXPECT_EQ(shown(log.All), log.All);
    const std::string sml = "S6F11 W\r\n< A '\x1B[2J\r\x9B\x7F\t\xE9' >\r\n.";
    const std::string text = LogText().Sml("Received", sml).Text();
    EXPECT_THAT(shown(text), HasSubstr("< A '\\x1B[2J\\x0D\\x9B\\x7F\t\xC3\xA9' >\r\n."));
    EXPECT_EQ(Filtered(text, {}), text);
    // Lines that end where a piece of the output does.
    std::string many;
    for (int i = 0; i < 4000; ++i)
        many +=
            LogText().Body("Received", std::string(static_cast<std::size_t>(i % 90), '4')).Text();
    EXPECT_EQ(shown(many), many);
}

TEST(LogFilter, everything_passes_without_a_condition) {
    const std::string text = "junk\n" + Log().All + "2024/03/05 14:00:09.00 cut";
    EXPECT_TRUE(LogFilter().IsEmpty());
    EXPECT_EQ(Filtered(text, {}), text);
}

TEST(LogFilter, whole_entries_of_a_message_pass) {
    const Log log;
    EXPECT_EQ(Filtered(log.All, {.Messages = {{.Stream = 6, .Function = 11}}}), log.Report);
    EXPECT_EQ(Filtered(log.All, {.Messages = {{.Stream = 6, .Function = -1}}}),
              log.Report + log.Answer);
    EXPECT_EQ(Filtered(log.All,
                       {.Messages = {{.Stream = 1, .Function = 1}, {.Stream = 6, .Function = 12}}}),
              log.Sent + log.Start + log.Answer);
    EXPECT_EQ(Filtered(log.All, {.SystemBytes = 0xFFFFFFFF}), log.Report + log.Answer);
    EXPECT_EQ(Filtered(log.All, {.SystemBytes = 1}), log.Sent + log.Start + log.Reply);
    EXPECT_EQ(Filtered(log.All, {.DeviceID = 0}), log.Sent + log.Reply + log.Report + log.Answer);
    EXPECT_EQ(Filtered(log.All, {.DeviceID = 1}), "");
}

TEST(LogFilter, direction_is_that_of_the_message_and_its_timer) {
    const Log log;
    EXPECT_EQ(Filtered(log.All, {.Sent = true}), log.Sent + log.Start + log.Answer);
    EXPECT_EQ(Filtered(log.All, {.Received = true}), log.Reply + log.Report);
    EXPECT_EQ(Filtered(log.All, {.Sent = true, .Received = true}), log.All);
}

TEST(LogFilter, times_are_from_the_first_to_the_last_hundredth) {
    const Log log;
    EXPECT_EQ(Filtered(log.All, {.From = ParseFirst("2024-03-05 14:00:02")}),
              log.Report + log.Answer);
    EXPECT_EQ(Filtered(log.All, {.To = ParseLast("14:00:01")}), log.Sent + log.Start + log.Reply);
    EXPECT_EQ(Filtered(log.All, {.From = ParseFirst("14:00:01"), .To = ParseLast("14:00:01")}),
              log.Reply);
    EXPECT_EQ(Filtered(log.All, {.From = ParseFirst("2024-03-06")}), "");
    EXPECT_EQ(Filtered(log.All, {.To = ParseLast("2024-03-04")}), "");
    EXPECT_EQ(Filtered(log.All, {.From = ParseFirst("14:00:03.00")}), log.Answer);
    EXPECT_EQ(Filtered(log.All, {.To = ParseLast("14:00:00.00")}), log.Sent + log.Start);
}

TEST(LogFilter, every_condition_must_hold) {
    const Log log;
    EXPECT_EQ(Filtered(log.All, {.SystemBytes = 1, .Received = true}), log.Reply);
    EXPECT_EQ(Filtered(log.All, {.Messages = {{.Stream = 6}}, .Sent = true}), log.Answer);
}

TEST(LogFilter, sml_alone_leaves_out_the_other_lines) {
    EXPECT_EQ(
        Filtered(Log().All, {.Received = true, .SmlAlone = true}),
        "2024/03/05 14:00:01.00 SECS II Message Received : \r\nS1F2\r\n.\r\n"
        "2024/03/05 14:00:02.00 SECS II Message Received : \r\nS6F11 W\r\n< A 'A' >\r\n.\r\n");
}

TEST(LogFilter, error_passes_with_all_of_its_lines) {
    const std::string error = LogText().Message("Received", 9, 5, 1).Text();
    const std::string abort = LogText().Message("Reply", 7, 0, 2).Text();
    const std::string late = LogText().Message("Received", 1, 2, 3).Text();
    const std::string undecoded =
        LogText().Header("Received", 0x86, 11, 5).Body("Received", "01 05").Text();
    const std::string good = Log().All;
    const std::string search = LogText().Timer("Cancel", "S1F2", 3, false).Text();
    EXPECT_EQ(Filtered(good + error + good + abort + search + late + good + undecoded + good,
                       {.Errors = true}),
              error + abort + late + undecoded);
    EXPECT_EQ(Filtered(good + search + "junk\r\n" + good, {.Errors = true}), "junk\r\n");
    EXPECT_EQ(Filtered(good + undecoded, {.Errors = true}), undecoded);
    EXPECT_EQ(Filtered(undecoded + error, {.SystemBytes = 5, .Errors = true}), undecoded);
}

TEST(LogFilter, broken_lines_do_not_pass_a_condition) {
    const Log log;
    EXPECT_EQ(Filtered("junk\n" + log.All, {.SystemBytes = 1}), log.Sent + log.Start + log.Reply);
}

TEST(LogFilter, body_that_cannot_be_decoded_is_held_in_bounded_memory) {
    std::string text = LogText().Header("Received", 0x86, 11, 5).Text();
    text += "2024/03/05 14:00:00.00 SECS I DATA Received : ";
    for (int i = 0; i < 1'000'000; ++i)
        text += "41 ";
    const std::string shown = Filtered(text + "\r\n", {.Errors = true});
    EXPECT_THAT(shown, HasSubstr("HEADER Received"));
    EXPECT_LE(shown.size(), 1'100'000U);
}

}  // namespace
}  // namespace hexmire::program
