#include "LogText.h"
#include "log/JsonLog.h"
#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace hexmire::program {
namespace {

using fakes::LogText;
using fakes::ReadWhole;

std::string Json(const std::string& text, LogFilter filter = {}) {
    std::ostringstream out;
    JsonLog json(out, std::move(filter));
    static_cast<void>(ReadWhole(json, text, 10));
    return out.str();
}

TEST(JsonLog, message_is_one_object_with_header_body_and_sml) {
    EXPECT_EQ(Json(LogText()
                       .Header("Received", 0x86, 11, 0xFFFFFFFF)
                       .Body("Received", "41 01 B5")
                       .Sml("Received", "S6F11 W\r\n< A '\xB5' >\r\n.")
                       .Text()),
              "{\"event\":\"received-primary\",\"time\":\"2024-03-05T14:00:00.00\",\"stream\":6,"
              "\"function\":11,\"device_id\":0,\"system_bytes\":-1,\"reply_expected\":true,"
              "\"length\":3,\"sml\":\"S6F11 W\\r\\n< A '\xC2\xB5' >\\r\\n.\","
              "\"body_hex\":\"41 01 B5\"}\n");
}

TEST(JsonLog, events_are_named_as_those_of_a_link) {
    const std::pair<std::string, const char*> kCases[] = {
        {LogText().Message("Send", 0x81, 1, 1).Text(), "sent"},
        {LogText().Message("Reply", 1, 2, 1).Text(), "sent"},
        {LogText().Message("Received", 1, 1, 1).Text(), "received-primary"},
        {LogText().Message("Received", 1, 2, 1).Text(), "received-secondary"},
    };
    for (const auto& [text, name] : kCases)
        EXPECT_TRUE(Json(text).starts_with("{\"event\":\"" + std::string(name) + "\",")) << name;
}

TEST(JsonLog, timer_and_other_lines_are_objects_too) {
    EXPECT_EQ(Json(LogText()
                       .Line("Start T3 - TransactionInUse[2] : S1F1 SystemBytes: 7")
                       .Line("Cancel T3 - Timer for S1F2 SystemBytes: 7")
                       .Line("a note\r\nof two lines")
                       .Text() +
                   LogText().Header("Send", 1, 1, 1).Text() + "junk \xB5\n"),
              "{\"event\":\"timer\",\"time\":\"2024-03-05T14:00:00.00\",\"action\":\"start\","
              "\"step\":\"waiting\",\"position\":2,\"stream\":1,\"function\":1,"
              "\"system_bytes\":7}\n"
              "{\"event\":\"timer\",\"time\":\"2024-03-05T14:00:00.00\",\"action\":\"cancel\","
              "\"step\":\"timer\",\"stream\":1,\"function\":2,\"system_bytes\":7}\n"
              "{\"event\":\"other\",\"time\":\"2024-03-05T14:00:00.00\",\"line\":3,"
              "\"text\":\"a note\\r\\nof two lines\"}\n"
              "{\"event\":\"broken\",\"line\":6,\"text\":\"junk \xC2\xB5\"}\n"
              "{\"event\":\"sent\",\"time\":\"2024-03-05T14:00:00.00\",\"stream\":1,"
              "\"function\":1,\"device_id\":0,\"system_bytes\":1,\"reply_expected\":false,"
              "\"body_hex\":\"\",\"incomplete\":true,\"error\":true}\n");
}

TEST(JsonLog, message_that_cannot_be_decoded_comes_before_what_answers_it) {
    const std::string json = Json(LogText()
                                      .Header("Received", 0x86, 11, 5)
                                      .Body("Received", "01 05")
                                      .Message("Send", 9, 7, 6)
                                      .Text());
    EXPECT_LT(json.find("\"incomplete\":true"), json.find("\"stream\":9"));
    EXPECT_NE(json.find("\"body_hex\":\"01 05\""), std::string::npos);
}

TEST(JsonLog, filter_holds_for_messages_as_a_whole) {
    const std::string text = LogText()
                                 .Message("Send", 0x81, 1, 1)
                                 .Timer("Start", "S1F1", 1, true)
                                 .Message("Received", 1, 2, 1)
                                 .Text();
    EXPECT_EQ(Json(text, {.Received = true}), Json(LogText().Message("Received", 1, 2, 1).Text()));
    EXPECT_EQ(Json(text, {.SmlAlone = true}),
              Json(LogText().Message("Send", 0x81, 1, 1).Message("Received", 1, 2, 1).Text()));
}

TEST(JsonLog, sml_without_a_header_is_told_without_system_bytes) {
    EXPECT_EQ(Json(LogText().Sml("Received", "S1F1.").Text()),
              "{\"event\":\"received-primary\",\"time\":\"2024-03-05T14:00:00.00\",\"stream\":1,"
              "\"function\":1,\"reply_expected\":false,\"sml\":\"S1F1.\",\"body_hex\":\"\"}\n");
}

TEST(JsonLog, message_is_written_at_a_pause_once_it_is_whole) {
    std::ostringstream out;
    JsonLog json(out, {});
    LogReader reader(json);
    const std::string text = LogText().Message("Send", 0x81, 1, 1).Text();
    fakes::Feed(reader, text.substr(0, text.size() - 5));
    reader.Pause();
    EXPECT_EQ(out.str(), "");
    fakes::Feed(reader, text.substr(text.size() - 5));
    reader.Pause();
    EXPECT_EQ(out.str(), Json(text));
    static_cast<void>(reader.EndFile());
    reader.Finish();
    EXPECT_EQ(out.str(), Json(text));
}

TEST(JsonLog, what_is_longer_than_the_bound_is_shortened) {
    std::string body;
    for (int i = 0; i < 2'000'000; ++i)
        body += "41 ";
    std::ostringstream out;
    JsonLog json(out, {});
    static_cast<void>(ReadWhole(json,
                                LogText()
                                    .Header("Send", 1, 1, 1)
                                    .Line("SECS I DATA Send : " + body)
                                    .Sml("Send", "S1F1\r\n.")
                                    .Text()));
    EXPECT_NE(out.str().find("\"shortened\":true"), std::string::npos);
    EXPECT_LT(out.str().size(), 4'300'000U);
}

}  // namespace
}  // namespace hexmire::program
