#include <hexmire/hexmire.h>

#include "../hosting/TempFolder.h"
#include "BodyCheck.h"
#include "ProgramRun.h"
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <string>
#include <vector>

// hexmire decode, as a real process.

namespace hexmire {
namespace {

using fakes::ProgramRun;
using fakes::RunProgram;
using fakes::TempFolder;

using Words = std::vector<std::string>;

ProgramRun Decode(Words words, const std::string& input = {}) {
    words.insert(words.begin(), "decode");
    return RunProgram(words, input);
}

const char* const kJob = "< L \n  < A 'JOB' >\n  < U4 7 >\n >\n";

TEST(Decode, HexIsReadHoweverItIsWritten) {
    for (const char* hex : {"01 02 41 03 4A 4F 42 B1 04 00 00 00 07",
                            "010241034a4f42b10400000007",
                            "0x01 0x02 0x41,0x03,0x4A 0x4F 0x42 0XB1 0x04 0x00 0x00 0x00 0x07",
                            "01:02:41:03:4A:4F:42:B1:04:00:00:00:07",
                            "01-02-41-03-4A-4F-42-B1-04-00-00-00-07",
                            "0102 4103\n4A4F\r\n\t42B1 0400 0000 07\n"}) {
        EXPECT_EQ(Decode({hex}), (ProgramRun{0, kJob, ""})) << hex;
        EXPECT_EQ(Decode({}, hex), (ProgramRun{0, kJob, ""})) << hex;
    }
    EXPECT_EQ(Decode({"0102", "41034A4F42", "B10400000007"}), (ProgramRun{0, kJob, ""}));
    EXPECT_EQ(Decode({"-"}, "4100"), (ProgramRun{0, "< A >\n", ""}));
}

TEST(Decode, AFileIsReadAsHexOrAsBytes) {
    const TempFolder folder;
    const std::string hex = folder.Write("body.hex", "0102 41034A4F42\nB10400000007\n");
    EXPECT_EQ(Decode({hex}), (ProgramRun{0, kJob, ""}));
    const std::string bytes("\x01\x02\x41\x03JOB\xB1\x04\0\0\0\x07", 13);
    EXPECT_EQ(Decode({"--binary", folder.Write("body.bin", bytes)}), (ProgramRun{0, kJob, ""}));
    EXPECT_EQ(Decode({"--binary"}, bytes), (ProgramRun{0, kJob, ""}));
}

TEST(Decode, ABodyWithoutBytesIsNothing) {
    EXPECT_EQ(Decode({""}), (ProgramRun{0, "", ""}));
    EXPECT_EQ(Decode({"--exact", ""}), (ProgramRun{0, "", ""}));
}

TEST(Decode, WhatIsNoHexIsToldWithItsPlace) {
    const TempFolder folder;
    const std::string file = folder.Write("x.hex", "41 01\n4");
    const struct {
        Words Line;
        int Status;
        std::string Reason;
    } kCases[] = {
        {{"4103414"},
         2,
         "<argument>:1:8: expected the second digit of a byte, found the end of the text"},
        {{"41 0g"}, 2, "<argument>:1:5: expected the second digit of a byte, found \"g\""},
        {{"41 1 02"}, 2, "<argument>:1:5: expected the second digit of a byte, found \" \""},
        {{"41 0x"}, 2, "<argument>:1:6: expected a hexadecimal digit, found the end of the text"},
        {{"zz"}, 2, "<argument>:1:1: expected a hexadecimal digit, found \"z\""},
        {{"41\xC3"}, 2, "<argument>:1:3: expected a hexadecimal digit, found byte 0xC3"},
        {{file}, 2, file + ":2:2: expected the second digit of a byte, found the end of the text"},
        {{"body.bin"}, 1, "no such file: body.bin"},
        {{"no/where"}, 1, "no such file: no/where"},
    };
    for (const auto& one : kCases)
        EXPECT_EQ(Decode(one.Line), (ProgramRun{one.Status, "", "hexmire: " + one.Reason + '\n'}));
}

TEST(Decode, ABodyThatIsBrokenIsShownAsFarAsItGoes) {
    const struct {
        const char* Hex;
        const char* Sml;
        const char* Finding;
    } kCases[] = {
        {"41034142", "< A >\n", "offset 0: item A of 3 bytes, but only 2 are there"},
        {"0102410141", "< L \n  < A 'A' >\n >\n", "offset 0: list of 2 items, but only 1 is there"},
        {"410141FF", "< A 'A' >\n", "offset 3: 1 byte behind the body's item: a body is one item"},
        {"0500", "< V >\n", "offset 0: format code 01 octal is not known; the rest cannot be read"},
        {"42", "", "offset 0: the head of an item is cut short"},
        {"01 01 B1 03 010203",
         "< L \n  < U4 >\n >\n",
         "offset 2: 3 bytes are no multiple of the 4 bytes of U4"},
        {"00", "< L  >\n", "offset 0: the item has no length bytes"},
    };
    for (const auto& one : kCases) {
        const ProgramRun run = Decode({one.Hex});
        EXPECT_EQ(run.Status, 1) << one.Hex;
        EXPECT_EQ(run.Output, one.Sml) << one.Hex;
        EXPECT_TRUE(run.Errors.starts_with(std::string("hexmire: ") + one.Finding + '\n'))
            << run.Errors;
    }
}

TEST(Decode, EqualReportsAreToldOnceWithTheirNumber) {
    const ProgramRun run = Decode({"01 05 41 01 41"});
    EXPECT_EQ(run.Status, 1);
    EXPECT_EQ(run.Errors,
              "hexmire: offset 0: list of 5 items, but only 1 is there\n"
              "hexmire: error 9 (SECSMessage-lParseSECSMessage) Subscript out of range, 4 times\n");
}

TEST(Decode, ABodyThatClaimsMillionsOfItemsIsNotDecoded) {
    EXPECT_EQ(Decode({"03 FF FF FF"}),
              (ProgramRun{1,
                          "",
                          "hexmire: offset 0: list of 16777215 items, but only 0 are there; it is "
                          "not decoded\n"}));
}

TEST(Decode, MissingItemsAreThoseThatTheControlReports) {
    const struct {
        std::vector<std::uint8_t> Body;
        std::uint64_t Missing;
    } kCases[] = {
        {{1, 0}, 0},
        {{0x41, 1, 0x41}, 0},
        {{1, 5}, 5},
        {{1, 5, 0x41, 1, 0x41}, 4},
        {{1, 5, 0x41, 9, 0x41}, 4},
        {{1, 5, 1, 3, 0x41}, 6},
        {{1, 2, 1, 0, 1, 4}, 4},
        {{3, 0xFF, 0xFF, 0xFF}, 0xFFFFFF},
        {{1, 2, 5, 0, 3, 0xFF, 0xFF, 0xFF}, 0xFFFFFF},     // behind an unknown format
        {{1, 2, 0xB1, 1, 2, 0, 1}, 1},                     // a quarter of a U4 is none
        {{1, 2, 0xB1, 6, 0, 0, 0, 0, 0, 0, 1, 4}, 1},      // one and a half are two
        {{1, 2, 0xB1, 2, 3, 0xFF, 0xFF, 0xFF}, 0xFFFFFF},  // half a one is none
    };
    for (const auto& one : kCases) {
        std::uint64_t reports = 0;
        EventLoop loop;
        Hexmire control(loop.Platform({.MessageLog = false}));
        control.Events().Error = [&](std::int32_t code, const std::string&, std::int32_t) {
            if (code == 9) ++reports;
        };
        EXPECT_EQ(program::MissingItems(one.Body), one.Missing) << reports;
        if (one.Missing > 1000) continue;
        static_cast<void>(DecodeBody(one.Body));
        EXPECT_GE(reports, one.Missing);
        EXPECT_LE(reports, one.Missing + 1);  // The last item that is there may be cut short.
    }
}

TEST(Decode, WholeMessagesAreTakenFromEveryFraming) {
    const std::string expected = "* device ID 5, system bytes 16909060\nS1F13 W\n< L  >\n.\n";
    for (const Words& words : {
             Words{"--header", "0005 81 0D 0000 01020304 0100"},
             Words{"--header", "0000000C 0005 81 0D 0000 01020304 0100"},
             Words{"--header", "0C 0005 81 0D 8001 01020304 0100 011F"},
             Words{"--header", "--framing", "message", "0005 81 0D 0000 01020304 0100"},
             Words{"--header", "--framing", "hsms", "0000000C 0005 81 0D 0000 01020304 0100"},
             Words{"--header", "--framing", "secs1", "0C 0005 81 0D 8001 01020304 0100 011F"},
         }) {
        EXPECT_EQ(Decode(words), (ProgramRun{0, expected, ""}));
    }
}

TEST(Decode, MessagesStandOneBehindTheOther) {
    const ProgramRun run = Decode({"--header",
                                   "0000000A FFFF 0000 0001 00000001"
                                   "0000000A FFFF 0000 0002 00000001"
                                   "0000000D 0000 0101 0000 00000002 210100"
                                   "0000000C 0000 0102 0000 00000003 4101"});
    EXPECT_EQ(run.Status, 1);
    EXPECT_EQ(run.Output,
              "* Select.req, session ID 65535, system bytes 1\n"
              "* Select.rsp, session ID 65535, system bytes 1\n"
              "* device ID 0, system bytes 2\nS1F1\n< B 0x00 >\n.\n"
              "* device ID 0, system bytes 3\nS1F2\n< A >\n.\n");
    EXPECT_TRUE(run.Errors.starts_with(
        "hexmire: message 4, body offset 0: item A of 1 byte, but only 0 are there\n"))
        << run.Errors;
}

TEST(Decode, JsonHasOneObjectForEachMessage) {
    const ProgramRun run = Decode({"--json",
                                   "--header",
                                   "0000000A FFFF 0000 0005 FFFFFFFF"
                                   "0000000D 8007 8101 0000 80000000 4101E9"});
    EXPECT_EQ(run.Status, 0);
    EXPECT_EQ(run.Output,
              "{\"control\":\"Linktest.req\",\"session_id\":65535,\"system_bytes\":4294967295}\n"
              "{\"stream\":1,\"function\":1,\"device_id\":7,\"system_bytes\":2147483648,"
              "\"reply_expected\":true,\"reverse_bit\":true,\"sml\":\"S1F1 W\\r\\n< A '\xC3\xA9' >"
              "\\r\\n.\\r\\n\",\"body_hex\":\"41 01 E9\",\"reports\":[]}\n");
    const ProgramRun broken = Decode({"--json", "4102"});
    EXPECT_EQ(broken.Status, 1);
    const auto json = nlohmann::json::parse(broken.Output);
    EXPECT_EQ(json.at("sml"), "< A >\r\n");
    EXPECT_EQ(json.at("reports").at(0), "offset 0: item A of 2 bytes, but only 0 are there");
}

TEST(Decode, ExactSmlEncodesToTheSameBytes) {
    const std::string hex =
        "01 04 41 07 27 22 0D 0A 00 7F E9 91 08 80 00 00 00 7F 80 00 01 01 00 41 00";
    const ProgramRun exact = Decode({"--exact", hex});
    EXPECT_EQ(exact,
              (ProgramRun{0,
                          "<L [4]\n"
                          "  <A \"'\" 0x22 0x0D 0x0A 0x00 0x7F 0xE9>\n"
                          "  <F4 -0 NaN(0x7F800001)>\n"
                          "  <L [0]>\n"
                          "  <A>\n"
                          ">\n",
                          ""}));
    EXPECT_EQ(RunProgram({"encode"}, exact.Output), (ProgramRun{0, hex + '\n', ""}));
}

TEST(Decode, ExactTellsBytesThatNoValueStandsFor) {
    EXPECT_EQ(Decode({"--exact", "01 02 25 01 01 42 00 01 41"}),
              (ProgramRun{1,
                          "<L [2]\n  <BOOL TRUE>\n  <A \"A\">\n>\n",
                          "hexmire: offset 4: the same values are sent as other bytes: FF in "
                          "place of 01\n"}));
    EXPECT_EQ(Decode({"25 01 01"}), (ProgramRun{0, "< BOOL TRUE >\n", ""}));
}

TEST(Decode, WhatIsNotUnderstoodHasStatus2) {
    const std::pair<Words, std::string> kCases[] = {
        {{"--framing", "hsms", "00"}, "--framing requires --header"},
        {{"--header", "--framing", "tcp", "00"}, "tcp"},
        {{"--header", ""}, "<argument>: no message in it"},
        {{"--header", "0000810100"}, "<argument>: offset 0: a header has 10 bytes, 5 are there"},
        {{"--header", "0000000C 0005 81 0D 0000 01020304 01"},
         "offset 0: a message of 12 bytes, but only 11 are there"},
    };
    for (const auto& [words, reason] : kCases) {
        const ProgramRun run = Decode(words);
        EXPECT_EQ(run.Status, 2);
        EXPECT_EQ(run.Output, "");
        EXPECT_NE(run.Errors.find(reason), std::string::npos) << run.Errors;
    }
}

}  // namespace
}  // namespace hexmire
