#include "Endpoint.h"
#include "JsonEvents.h"
#include "SmlPrinter.h"
#include "VisibleText.h"
#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace hexmire::program {
namespace {

MessageRecord Sample(MessageKind kind) {
    return {.Kind = kind,
            .Stream = 10,
            .Function = 3,
            .DeviceID = 32767,
            .SystemBytes = 17,
            .ReplyExpected = true,
            .Name = "Anzeige \xE4",
            .Sml = "S10F3 W\r\n< A \"\xB5\" >\r\n.",
            .BodyHex = "41 01 B5"};
}

TEST(JsonEvents, one_object_a_line_in_utf_8) {
    std::ostringstream out;
    JsonEvents json(out);
    json.Connect();
    json.Disconnect(3054, "peer \"gone\" \xB5");
    json.Error(2001, "(Hexmire-LoadXMLDictionary) line\r\nend", 2);
    EXPECT_EQ(out.str(),
              "{\"event\":\"connect\"}\n"
              "{\"event\":\"disconnect\",\"code\":3054,\"text\":\"peer \\\"gone\\\" \xC2\xB5\"}\n"
              "{\"event\":\"error\",\"code\":2001,"
              "\"text\":\"(Hexmire-LoadXMLDictionary) line\\r\\nend\",\"line\":2}\n");
}

TEST(JsonEvents, message_carries_header_name_sml_and_body) {
    const std::pair<MessageKind, const char*> kCases[] = {
        {MessageKind::Sent, "sent"},
        {MessageKind::ReceivedPrimary, "received-primary"},
        {MessageKind::ReceivedSecondary, "received-secondary"}};
    for (const auto& [kind, name] : kCases) {
        std::ostringstream out;
        JsonEvents(out).Message(Sample(kind));
        EXPECT_EQ(out.str(),
                  "{\"event\":\"" + std::string(name) +
                      "\",\"stream\":10,\"function\":3,\"device_id\":32767,\"system_bytes\":17,"
                      "\"reply_expected\":true,\"name\":\"Anzeige \xC3\xA4\","
                      "\"sml\":\"S10F3 W\\r\\n< A \\\"\xC2\xB5\\\" >\\r\\n.\","
                      "\"body_hex\":\"41 01 B5\"}\n");
    }
}

TEST(SmlPrinter, events_are_lines_with_a_label) {
    std::ostringstream out;
    SmlPrinter printer(out, "host");
    printer.Connect();
    printer.Disconnect(0, "");
    printer.Disconnect(3054, "peer closed");
    printer.Error(2012, "T3", 0);
    printer.Error(2001, "xml", 2);
    EXPECT_EQ(out.str(),
              "host connected\nhost disconnected\nhost disconnected, 3054 peer closed\n"
              "host error 2012 T3\nhost error 2001 xml (line 2)\n");
}

TEST(SmlPrinter, message_is_followed_by_its_sml) {
    std::ostringstream out;
    SmlPrinter(out, "host").Message(Sample(MessageKind::Sent));
    EXPECT_EQ(out.str(),
              "host sent S10F3 W, device ID 32767, system bytes 17\n"
              "    S10F3 W\n    < A \"\xC2\xB5\" >\n    .\n");
}

TEST(SmlPrinter, sent_message_is_one_line_when_the_other_side_is_shown_too) {
    std::ostringstream out;
    SmlPrinter printer(out, "host", SmlPrinter::Detail::ReceivedSml);
    printer.Message(Sample(MessageKind::Sent));
    EXPECT_EQ(out.str(), "host sent S10F3 W, device ID 32767, system bytes 17\n");
    printer.Message(Sample(MessageKind::ReceivedPrimary));
    EXPECT_NE(out.str().find("\xC2\xB5"), std::string::npos);
}

TEST(SmlPrinter, control_characters_are_visible_on_a_terminal) {
    using enum SmlPrinter::Detail;
    MessageRecord message = Sample(MessageKind::ReceivedPrimary);
    message.Sml = "S10F3 W\r\n< A '\x1B[2J\x9B\x7F\t\r\xE4\n' >\r\n.";
    std::ostringstream out;
    SmlPrinter printer(out, "host", Everything, Controls::Visible);
    printer.Message(message);
    printer.Error(2012, "\033c", 0);
    printer.Disconnect(3054, "gone\a");
    EXPECT_EQ(out.str(),
              "host received S10F3 W, device ID 32767, system bytes 17\n"
              "    S10F3 W\n    < A '\\x1B[2J\\x9B\\x7F\t\\x0D\xC3\xA4\n' >\n    .\n"
              "host error 2012 \\x1Bc\nhost disconnected, 3054 gone\\x07\n");
    std::ostringstream file;
    SmlPrinter(file, "host").Error(2012, "\x1B", 0);
    EXPECT_EQ(file.str(), "host error 2012 \x1B\n");
}

TEST(VisibleText, what_is_no_printable_utf_8_is_shown_by_its_bytes) {
    EXPECT_EQ(VisibleText("a\t\r\n\x7F\xC3\xA9\xE2\x82\xAC"),
              "a\\x09\\x0D\\x0A\\x7F\xC3\xA9\xE2\x82\xAC");
    EXPECT_EQ(VisibleText("\r\r\n\t\n", "\n\t"), "\\x0D\r\n\t\n");
    EXPECT_EQ(VisibleText("\xC3(\xE2\x82 \xC0\x80\xF5\xC2\x9B"),
              "\\xC3(\\xE2\\x82 \\xC0\\x80\\xF5\\x9B");
    EXPECT_EQ(VisibleText(""), "");
}

TEST(Endpoint, address_and_port_are_read_and_written) {
    EXPECT_EQ(ParseEndpoint("127.0.0.1:5000"), (Endpoint{.Address = "127.0.0.1", .Port = 5000}));
    EXPECT_EQ(ParseEndpoint("tool-7.fab:1"), (Endpoint{.Address = "tool-7.fab", .Port = 1}));
    EXPECT_EQ(ParseEndpoint("[::1]:65535"), (Endpoint{.Address = "::1", .Port = 65'535}));
    for (const char* text : {"127.0.0.1:5000", "[::1]:65535"})
        EXPECT_EQ(EndpointText(*ParseEndpoint(text)), text);
}

TEST(Endpoint, anything_else_is_refused) {
    for (const char* text : {"",
                             ":",
                             "host",
                             "host:",
                             ":5000",
                             "host:0",
                             "host:65536",
                             "host:-1",
                             "host:5000x",
                             "host: 5000",
                             "::1:5000",
                             "[]:5000",
                             "host:99999999999"})
        EXPECT_EQ(ParseEndpoint(text), std::nullopt) << text;
}

}  // namespace
}  // namespace hexmire::program
