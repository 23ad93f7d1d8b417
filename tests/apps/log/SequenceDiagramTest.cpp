#include "LogText.h"
#include "log/ExchangeSink.h"
#include "log/SequenceDiagram.h"
#include "log/XmlText.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <libxml/parser.h>

#include <sstream>
#include <string>

namespace hexmire::program {
namespace {

using fakes::LogText;
using fakes::ReadWhole;
using testing::HasSubstr;
using testing::Not;

/// The picture of a log; every one must be XML.
std::string Picture(const std::string& text,
                    LogFilter filter = {},
                    std::size_t limit = 100,
                    LogSide side = LogSide::Unknown,
                    const std::string& title = "a.log") {
    std::ostringstream unused;
    SequenceDiagram diagram(side, limit);
    ExchangeSink sink(unused, {.Filter = std::move(filter), .Diagram = &diagram});
    static_cast<void>(ReadWhole(sink, text));
    std::ostringstream out;
    diagram.Write(out, title);
    const std::string svg = out.str();
    xmlDoc* const document = xmlReadMemory(svg.data(),
                                           static_cast<int>(svg.size()),
                                           nullptr,
                                           nullptr,
                                           XML_PARSE_NONET | XML_PARSE_NOERROR);
    EXPECT_NE(document, nullptr) << svg;
    xmlFreeDoc(document);
    return svg;
}

std::size_t Count(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++count;
    return count;
}

TEST(SequenceDiagram, messages_are_arrows_between_the_lifelines) {
    const std::string svg =
        Picture(LogText().Message("Send", 0x81, 1, 7).Wait(2).Message("Received", 1, 2, 7).Text());
    EXPECT_EQ(Count(svg, "class=\"arrow primary\""), 1U);
    EXPECT_EQ(Count(svg, "class=\"arrow reply dash\""), 1U);
    EXPECT_EQ(Count(svg, "class=\"wait\""), 1U);
    EXPECT_THAT(svg, HasSubstr(">S1F1 W</text>"));
    EXPECT_THAT(svg, HasSubstr(">S1F2</text>"));
    EXPECT_EQ(Count(svg, ">system bytes 7</text>"), 2U);
    EXPECT_THAT(svg, HasSubstr(">14:00:00.02</text>"));
    EXPECT_THAT(svg, HasSubstr(">20 ms</text>"));
    EXPECT_THAT(svg, HasSubstr("2024/03/05 14:00:00.00 to 2024/03/05 14:00:00.02, 2 messages"));
    EXPECT_THAT(svg, Not(HasSubstr("<script")));
    EXPECT_THAT(svg, Not(HasSubstr("href")));
}

TEST(SequenceDiagram, errors_and_missing_replies_are_marked) {
    const std::string svg = Picture(LogText()
                                        .Message("Send", 0x81, 1, 1)
                                        .Header("Received", 0x86, 11, 2)
                                        .Header("Send", 9, 7, 3)
                                        .Body("Send", "21 0A 00 00 86 0B 00 00 00 00 00 02")
                                        .Sml("Send", "S9F7\r\n.")
                                        .Message("Send", 0x82, 33, 4)
                                        .Timer("Cancel", "S2F34", 4, false)
                                        .Message("Received", 2, 34, 4)
                                        .Message("Send", 0x87, 19, 5)
                                        .Message("Received", 7, 0, 5)
                                        .Timer("Cancel", "S1F4", 6, false)
                                        .Message("Received", 1, 4, 6)
                                        .Text());
    for (const char* text : {">no reply<",
                             ">system bytes 2, cannot be decoded<",
                             ">ended by S9F7<",
                             ">system bytes 3, illegal data<",
                             ">timed out<",
                             ">ended by S7F0<",
                             ">system bytes 5, transaction aborted<",
                             ">system bytes 6, nobody waits for it<"})
        EXPECT_THAT(svg, HasSubstr(text));
    EXPECT_EQ(Count(svg, "class=\"arrow bad"), 5U);
}

TEST(SequenceDiagram, host_is_left_whoever_wrote_the_log) {
    const std::string sent = LogText().Message("Send", 1, 1, 1).Text();
    const std::string bit =
        LogText().Line("SECS I HEADER Send : 80 00 01 01 00 00 00 00 00 01").Text();
    const char* const toEquipment = "x1=\"250\" y1=\"158\" x2=\"651\"";
    const char* const toHost = "x1=\"660\" y1=\"158\" x2=\"259\"";
    EXPECT_THAT(Picture(sent), HasSubstr(toEquipment));
    EXPECT_THAT(Picture(bit), HasSubstr(toHost));
    EXPECT_THAT(Picture(sent, {}, 9, LogSide::Equipment), HasSubstr(toHost));
    EXPECT_THAT(Picture(bit, {}, 9, LogSide::Host), HasSubstr(toEquipment));
}

TEST(SequenceDiagram, pauses_days_and_a_clock_that_goes_back_are_written_between_rows) {
    const std::string svg = Picture(LogText()
                                        .Message("Send", 1, 1, 1)
                                        .Wait(99)
                                        .Message("Send", 1, 1, 2)
                                        .Wait(250)
                                        .Message("Send", 1, 1, 3)
                                        .Wait(-360'000)
                                        .Message("Send", 1, 1, 4)
                                        .Text() +
                                    LogText("2024/03/06").Message("Send", 1, 1, 5).Text());
    EXPECT_EQ(Count(svg, " later ..."), 2U);
    EXPECT_THAT(svg, HasSubstr("... 2.50 s later ..."));
    EXPECT_THAT(svg, HasSubstr("... the clock goes back by 1 h 00 min 00 s ..."));
    EXPECT_THAT(svg, HasSubstr("... 24 h 59 min 56 s later ..."));
    EXPECT_THAT(svg, HasSubstr(">2024/03/05</text>"));
    EXPECT_THAT(svg, HasSubstr(">2024/03/06</text>"));
}

TEST(SequenceDiagram, messages_beyond_the_limit_are_counted) {
    LogText text;
    for (unsigned i = 0; i < 20; ++i)
        text.Message("Send", 0x81, 1, i).Message("Received", 1, 2, i);
    const std::string svg = Picture(text.Text(), {}, 5);
    EXPECT_EQ(Count(svg, "class=\"arrow"), 5U);
    EXPECT_THAT(svg, HasSubstr("The first 5 of 40 messages"));
    EXPECT_THAT(svg, Not(HasSubstr("no reply")));
    EXPECT_THAT(Picture(text.Text(), {}, 40), Not(HasSubstr("The first")));
}

TEST(SequenceDiagram, reply_that_is_not_drawn_is_no_missing_reply) {
    const std::string svg = Picture(
        LogText().Message("Send", 0x81, 1, 7).Message("Received", 1, 2, 7).Text(), {.Sent = true});
    EXPECT_EQ(Count(svg, "class=\"arrow"), 1U);
    EXPECT_THAT(svg, Not(HasSubstr("no reply")));
    EXPECT_THAT(Picture(LogText().Message("Send", 0x81, 1, 7).Message("Received", 1, 0, 7).Text(),
                        {.Sent = true}),
                HasSubstr(">ended by S1F0<"));
}

TEST(SequenceDiagram, many_overlapping_brackets_stay_beside_the_lifeline) {
    LogText text;
    for (unsigned i = 0; i < 10; ++i)
        text.Message("Send", 0x81, 1, i);
    for (unsigned i = 0; i < 10; ++i)
        text.Message("Received", 1, 2, i);
    const std::string svg = Picture(text.Text());
    EXPECT_EQ(Count(svg, "class=\"wait\""), 10U);
    EXPECT_EQ(Count(svg, " H216 "), 7U);  // The outermost lane.
}

TEST(SequenceDiagram, log_without_messages_gives_an_empty_picture) {
    EXPECT_THAT(Picture(""), HasSubstr(">no message<"));
}

TEST(SequenceDiagram, reply_within_one_time_stamp_took_less_than_its_step) {
    EXPECT_THAT(Picture(LogText().Message("Send", 0x81, 1, 7).Message("Received", 1, 2, 7).Text()),
                HasSubstr(">&lt; 10 ms</text>"));
}

TEST(SequenceDiagram, title_is_escaped) {
    EXPECT_THAT(Picture("", {}, 1, LogSide::Host, "<&\">\x01\xFF.log"),
                HasSubstr(">&lt;&amp;&quot;&gt;??.log</text>"));
}

TEST(XmlText, what_is_no_character_of_xml_becomes_a_question_mark) {
    const std::pair<const char*, const char*> kCases[] = {
        {"plain", "plain"},
        {"\xC3\xA4 \xE2\x82\xAC \xF0\x9F\x94\xA7", "\xC3\xA4 \xE2\x82\xAC \xF0\x9F\x94\xA7"},
        {"\xC3", "?"},
        {"\xC3x", "?x"},
        {"\xC0\x80", "??"},
        {"\xE0\x80\x80", "???"},
        {"\xED\xA0\x80", "???"},
        {"\xEF\xBF\xBF", "???"},
        {"\xF4\x90\x80\x80", "????"},
        {"\xF5", "?"},
        {"\xC2\x85", "??"},
        {"\t\n\x1F", "\t??"},
    };
    for (const auto& [text, xml] : kCases)
        EXPECT_EQ(XmlText(text), xml);
}

}  // namespace
}  // namespace hexmire::program
