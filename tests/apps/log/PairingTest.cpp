#include "LogText.h"
#include "log/ExchangeSink.h"
#include "log/Pairing.h"
#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace hexmire::program {
namespace {

using fakes::LogText;
using fakes::ReadWhole;

std::string Unanswered(const std::string& text, LogFilter filter = {}, bool json = false) {
    std::ostringstream out;
    ExchangeSink sink(out, {.Filter = std::move(filter), .Unanswered = true, .Json = json});
    static_cast<void>(ReadWhole(sink, text));
    return out.str();
}

/// Far behind everything, so that no time-out can still run.
std::string Later() { return LogText().Wait(1'000'000).Line("later").Text(); }

TEST(Pairing, reply_has_the_same_stream_and_system_bytes_and_the_next_function) {
    const std::string primary = LogText().Message("Send", 0x82, 17, 7).Text();
    const std::string line = "2024/03/05 14:00:00.00 sent S2F17 W, system bytes 7: no reply\n";
    const struct {
        std::string Reply;
        std::string Left;
    } kCases[] = {
        {LogText().Message("Received", 2, 18, 7).Text(), ""},
        {LogText().Message("Received", 2, 18, 8).Text(), line},
        {LogText().Message("Received", 2, 20, 7).Text(), line},
        {LogText().Message("Received", 3, 18, 7).Text(), line},
        {LogText().Message("Reply", 2, 18, 7).Text(), line},
        {LogText().Message("Received", 0x82, 17, 7).Message("Reply", 2, 18, 7).Text(), line},
        {LogText().Sml("Received", "S2F18\r\n.").Text(), line},
        {"", line},
    };
    for (const auto& one : kCases)
        EXPECT_EQ(Unanswered(primary + one.Reply + Later()), one.Left) << one.Reply;
}

TEST(Pairing, received_primary_is_answered_by_a_reply_of_this_side) {
    const std::string primary = LogText().Message("Received", 0x86, 11, 7).Text();
    EXPECT_EQ(Unanswered(primary + LogText().Message("Reply", 6, 12, 7).Text()), "");
    EXPECT_EQ(Unanswered(primary + Later()),
              "2024/03/05 14:00:00.00 received S6F11 W, system bytes 7: no reply\n");
}

TEST(Pairing, primary_that_expects_no_reply_is_never_unanswered) {
    EXPECT_EQ(Unanswered(LogText().Message("Send", 6, 11, 1).Text() + Later()), "");
}

TEST(Pairing, ends_other_than_a_reply_are_told) {
    const std::string primary = LogText().Message("Send", 0x82, 17, 7).Text();
    const std::string begin = "2024/03/05 14:00:00.00 sent S2F17 W, system bytes 7: ";
    EXPECT_EQ(Unanswered(primary + LogText().Wait(5).Message("Received", 2, 0, 7).Text()),
              begin + "aborted by S2F0 after 0.05 s\n");
    EXPECT_EQ(Unanswered(primary + LogText()
                                       .Wait(4512)
                                       .Timer("Cancel", "S2F18", 7, false)
                                       .Message("Received", 2, 18, 7)
                                       .Text()),
              begin + "timed out before S2F18 after 45.12 s\n");
    EXPECT_EQ(Unanswered(primary + LogText()
                                       .Wait(1)
                                       .Header("Received", 9, 5, 1000)
                                       .Body("Received", "21 0A 00 00 82 11 00 00 00 00 00 07")
                                       .Sml("Received", "S9F5\r\n.")
                                       .Text()),
              begin + "rejected by S9F5 after 0.01 s\n");
    EXPECT_EQ(Unanswered(primary + LogText().Wait(130).Line("later").Text()),
              begin + "no reply when the log ends, 1.30 s later\n");
}

TEST(Pairing, error_message_ends_the_primary_whose_header_it_bears) {
    const auto error = [](const char* way, int function, const char* body) {
        return LogText()
            .Message("Send", 0x82, 17, 7)
            .Message("Received", 0x82, 17, 7)
            .Header(way, 9, function, 1000)
            .Body(way, body)
            .Wait(20'000)
            .Line("later")
            .Text();
    };
    const char* const header = "21 0A 00 00 82 11 00 00 00 00 00 07";
    const std::string begin = "2024/03/05 14:00:00.00 ";
    const std::string sent = begin + "sent S2F17 W, system bytes 7: ";
    const std::string received = begin + "received S2F17 W, system bytes 7: ";
    EXPECT_EQ(Unanswered(error("Received", 7, header)),
              sent + "rejected by S9F7 after 0.00 s\n" + received + "no reply\n");
    EXPECT_EQ(Unanswered(error("Send", 7, header)),
              received + "rejected by S9F7 after 0.00 s\n" + sent + "no reply\n");
    // A time-out is told by the side that has sent the primary.
    EXPECT_EQ(Unanswered(error("Received", 9, header)),
              received + "rejected by S9F9 after 0.00 s\n" + sent + "no reply\n");
    for (const char* body : {"",
                             "21 0A 00 00 82 11 00 00 00 00 00",
                             "21 0A 00 00 82 11 00 00 00 00 00 08",
                             "21 0A 00 00 82 13 00 00 00 00 00 07",
                             "41 0A 00 00 82 11 00 00 00 00 00 07",
                             "21 0A 00 00 82 11 00 00 00 00 00 07 00"})
        EXPECT_EQ(Unanswered(error("Received", 7, body)),
                  sent + "no reply\n" + received + "no reply\n")
            << body;
}

TEST(Pairing, system_bytes_used_again_give_up_the_primary_before) {
    EXPECT_EQ(Unanswered(LogText()
                             .Message("Send", 0x82, 17, 7)
                             .Wait(100)
                             .Message("Send", 0x82, 17, 7)
                             .Message("Received", 2, 18, 7)
                             .Text()),
              "2024/03/05 14:00:00.00 sent S2F17 W, system bytes 7: no reply\n");
}

TEST(Pairing, without_headers_the_oldest_primary_of_the_name_is_answered) {
    const auto sml = [](const char* way, const char* name) {
        return LogText().Sml(way, std::string(name) + "\r\n.").Text();
    };
    EXPECT_EQ(Unanswered(sml("Send", "S1F1 W") + sml("Send", "S2F17 W") + sml("Received", "S2F18") +
                         sml("Received", "S1F2")),
              "");
    EXPECT_EQ(Unanswered(sml("Send", "S1F1 W") + sml("Received", "S1F4") + Later()),
              "2024/03/05 14:00:00.00 sent S1F1 W: no reply\n");
}

TEST(Pairing, failed_send_waits_for_nothing) {
    LogText text;
    text.Header("Send", 0x81, 1, 1);
    for (unsigned i = 2; i < 11; ++i)
        text.Header("Send", 1, 1, i);
    EXPECT_EQ(Unanswered(text.Text() + Later()), "");
}

TEST(Pairing, failed_send_does_not_take_another_primary_with_it) {
    const std::string line = "2024/03/05 14:00:00.00 sent S1F1 W, system bytes 1: no reply\n";
    EXPECT_EQ(Unanswered(LogText().Header("Send", 0x81, 1, 1).Message("Send", 0x81, 1, 1).Text() +
                         Later()),
              line + line);
}

TEST(Pairing, filter_holds_for_the_primary_alone) {
    const std::string text = LogText()
                                 .Message("Send", 0x81, 1, 1)
                                 .Wait(100)
                                 .Message("Received", 1, 2, 1)
                                 .Message("Send", 0x82, 17, 2)
                                 .Text() +
                             Later();
    EXPECT_EQ(Unanswered(text, {.Messages = {{.Stream = 1, .Function = 1}}}), "");
    EXPECT_EQ(Unanswered(text, {.To = ParseLast("14:00:00")}), "");
    EXPECT_EQ(Unanswered(text, {.Sent = true}),
              "2024/03/05 14:00:01.00 sent S2F17 W, system bytes 2: no reply\n");
}

TEST(Pairing, unanswered_primary_is_a_json_object) {
    EXPECT_EQ(Unanswered(LogText()
                             .Message("Send", 0x82, 17, 0x80000000)
                             .Message("Received", 2, 0, 0x80000000)
                             .Message("Received", 0x86, 11, 9)
                             .Text(),
                         {},
                         true),
              "{\"event\":\"unanswered\",\"time\":\"2024-03-05T14:00:00.00\","
              "\"direction\":\"sent\",\"stream\":2,\"function\":17,\"device_id\":0,"
              "\"system_bytes\":-2147483648,\"reason\":\"aborted\",\"by\":\"S2F0\"}\n"
              "{\"event\":\"unanswered\",\"time\":\"2024-03-05T14:00:00.00\","
              "\"direction\":\"received\",\"stream\":6,\"function\":11,\"device_id\":0,"
              "\"system_bytes\":9,\"reason\":\"no-reply\"}\n");
}

TEST(Pairing, oldest_primary_is_given_up_when_too_many_wait) {
    Pairing pairing(2);
    const auto primary = [](std::uint32_t systemBytes) {
        LogEntry entry;
        entry.Facts = {.Kind = LineKind::Header,
                       .Direction = Way::Send,
                       .Name = {.Stream = 1, .Function = 1},
                       .ReplyExpected = true,
                       .SystemBytes = systemBytes};
        return entry;
    };
    EXPECT_FALSE(pairing.Take(primary(1), 0));
    EXPECT_FALSE(pairing.Take(primary(2), 0));
    const auto given = pairing.Take(primary(3), 0);
    ASSERT_TRUE(given);
    EXPECT_EQ(given->Kind, Outcome::NoReply);
    EXPECT_EQ(given->Primary.Head.Facts.SystemBytes, 1U);
    EXPECT_EQ(pairing.Waiting(), 2U);
}

}  // namespace
}  // namespace hexmire::program
