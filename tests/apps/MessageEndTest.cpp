#include <hexmire/sml.h>

#include "MessageEnd.h"
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace hexmire::program {
namespace {

std::vector<std::string> LinesOf(std::string_view text) {
    std::vector<std::string> lines;
    for (std::size_t end = text.find('\n'); end != std::string_view::npos; end = text.find('\n')) {
        lines.emplace_back(text.substr(0, end));
        text.remove_prefix(end + 1);
    }
    lines.emplace_back(text);
    return lines;
}

/// Numbers of the lines, from 1, in which the message may end.
std::vector<int> EndsIn(const std::string& text) {
    MessageEnd end;
    std::vector<int> found;
    int number = 0;
    for (const std::string& line : LinesOf(text)) {
        ++number;
        if (end.MayBeIn(line)) found.push_back(number);
    }
    return found;
}

/// Wherever SML is read as a whole message, its end is noticed.
void ExpectNoEndMissed(const std::string& text) {
    MessageEnd end;
    std::string soFar;
    for (const std::string& line : LinesOf(text)) {
        soFar += (soFar.empty() ? "" : "\n") + line;
        const bool mayBe = end.MayBeIn(line);
        if (ParseSml(soFar).Message == nullptr) continue;
        EXPECT_TRUE(mayBe) << text;
        return;
    }
}

TEST(MessageEnd, is_the_point_behind_the_items) {
    const std::pair<const char*, std::vector<int>> kCases[] = {
        {"S1F1.", {1}},
        {"S1F1 W\n.", {2}},
        {"S1F1 W\n  .  \r", {2}},
        {"name: 'S1F1' W\n<L\n<F4 1.5 .5 2.>\n<L [0..2]>\n>\n.", {6}},
        {"S1F1 <A 'x. ' \". \"\n'y.'>\n.", {3}},
        {"S1F1 W /* it's */. // that's it", {1}},
        {"S1F1 <L // <L x.\n* <L .\n/* >. \n. */ >.", {4}},
        {"S1F1 <U1 1> /* a */ . /* b\nc */", {2}},
        {"S1F1 <A 'http://x.y /* '>\n.", {2}},
        {"S1F1 <A 'it's. ' 0x41>\n.", {2}},
        {"S1F1 < /* A */ V it's /* < . >\n.", {2}},
        {"S1F1 <\nV \">.", {2}},
        {"S1F1 . wait", {1}},
    };
    for (const auto& [text, lines] : kCases) {
        EXPECT_EQ(EndsIn(text), lines) << text;
        ExpectNoEndMissed(text);
    }
}

TEST(MessageEnd, what_is_wrong_is_read_in_its_line) {
    for (const char* text : {"S1F1 <A 'x", "S1F1 <U1 1>>", "S1F1 < V x"})
        EXPECT_EQ(EndsIn(text), std::vector<int>{1}) << text;
}

TEST(MessageEnd, texts_of_rendered_messages_may_run_over_lines) {
    for (const char* text :
         {"it's", "a\r\nb", "/* a\r\n<L // b", ".\r\n. ", "' > . \r\n'", "\r\n.\r\n"}) {
        const SECSMessagePtr message = ParseSml("S6F11 W <L <A 'x'> <U4 1>>.").Message;
        message->Item(1)->Item(1)->Value(text);
        ExpectNoEndMissed(RenderSml(*message, true));
    }
}

TEST(MessageEnd, of_any_pieces_of_messages_is_not_missed) {
    constexpr std::array<std::string_view, 26> kPieces{
        "<L ", "<A ", "<V ", "<U1 ", ">",     ">",     ".",      ".\n", "\n",
        " ",   "'",   "\"",  "it's", "//",    "/*",    "*/",     "*",   "[1]",
        "5",   "x.",  "<B ", "<L >", "<A 'x", "' >\n", "S1F1 W", "0x41"};
    std::uint32_t state = 7;
    const auto next = [&state](std::uint32_t bound) {
        state = state * 1664525U + 1013904223U;
        return (state >> 8U) % bound;
    };
    int whole = 0;
    for (int i = 0; i < 10'000; ++i) {
        std::string text = "S1F1 ";
        for (std::uint32_t left = next(9); left > 0; --left)
            text += kPieces.at(next(kPieces.size()));
        text += next(2) == 0 ? "'>\n." : ">\n.";
        whole += ParseSml(text).Message == nullptr ? 0 : 1;
        ExpectNoEndMissed(text);
    }
    EXPECT_GT(whole, 100);
}

TEST(MessageEnd, doubtful_lines_are_read_only_as_often_as_the_message_has_grown) {
    const std::string points = [] {
        std::string text = "S1F1 /*\n";
        for (int i = 0; i < 60'000; ++i)
            text += ".\n";
        return text;
    }();
    MessageEnd end;
    std::size_t size = 0;
    std::size_t read = 0;
    for (const std::string& line : LinesOf(points)) {
        size += line.size() + 1;
        if (end.MayBeIn(line)) read += size;
    }
    EXPECT_GT(read, 0U);
    EXPECT_LE(read, (std::size_t{1} << 20U) + 4 * size);
    EXPECT_EQ(EndsIn("S1F1 <L\n" + std::string(30'000, '\n') + "<F4 1.5> // x.\n>."),
              std::vector<int>{30'003});
}

}  // namespace
}  // namespace hexmire::program
