#include <hexmire/support/HexBytes.h>

#include "Receiving.h"
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <limits>

namespace hexmire {
namespace {

using namespace fakes;

const std::string kPrefix = "(Hexmire-moSECSIService_SecsMsgReceive) ";
const ErrorEvent kNoHeader{2016, kPrefix + "Invalid SECS II Header received.", 0};
const ErrorEvent kNoData{2010, kPrefix + "SECS II Data not found.", 0};
const ErrorEvent kMismatch{2017, kPrefix + "SECS II Data length mismatched.", 0};
const ErrorEvent kNoHex{13, kPrefix + "Type mismatch", 0};
const std::string kHeader = "00 00 81 01 00 00 00 00 00 09 ";

struct CheckRow {
    const char* Label;
    std::string Header;
    std::string Body;
    std::int32_t Length;
    Errors Reported;
    std::size_t LogLines;
};

TEST(ReceiveChecks, EndTheMessageInTheirOrder) {
    const std::vector<CheckRow> rows{
        {"no header", "", "", 0, {kNoHeader}, 0},
        {"no header and no body", "", "", 5, {kNoHeader}, 0},
        {"no header and a bad body", "", "A5", 3, {kNoHeader}, 0},
        {"short header", kHeader.substr(0, 28), "", 0, {kNoHex}, 0},
        {"header of one byte", "00 ", "", 0, {kNoHex}, 0},
        {"header before body", "xx", "", 5, {kNoHex}, 0},
        {"header that is no hex", "G0" + kHeader.substr(2), "", 0, {kNoHex}, 0},
        {"no body", kHeader, "", 1, {kNoData}, 1},
        {"no body of many", kHeader, "", std::numeric_limits<std::int32_t>::max(), {kNoData}, 1},
        {"one character less", kHeader, "A5 01 07", 3, {kMismatch}, 1},
        {"one character more", kHeader, "A5 01 07  ", 3, {kMismatch}, 1},
        {"one byte less", kHeader, "A5 01 ", 3, {kMismatch}, 1},
        {"one byte more", kHeader, "A5 01 07 00 ", 3, {kMismatch}, 1},
        {"length beyond any text",
         kHeader,
         "A5 01 07 ",
         std::numeric_limits<std::int32_t>::max(),
         {kMismatch},
         1},
        {"a length that wraps", kHeader, "A5 01 07 ", 0x55555555 + 3, {kMismatch}, 1},
        {"body that is no hex", kHeader, "A5 01 XX ", 3, {kNoHex}, 1},
        {"first digit that is none", kHeader, "A5 01 G7 ", 3, {kNoHex}, 1},
        {"second digit that is none", kHeader, "A5 01 7g ", 3, {kNoHex}, 1},
        {"blank for a digit", kHeader, "A5 01  7 ", 3, {kNoHex}, 1},
        {"sign for a digit", kHeader, "A5 01 +7 ", 3, {kNoHex}, 1},
        {"digits out of step", kHeader, " A5 01 07", 3, {kNoHex}, 1},
        {"tenth byte of the header", kHeader.substr(0, 28) + "G ", "", 0, {kNoHex}, 0},
        {"length before hex", kHeader, "XX XX XX", 3, {kMismatch}, 1}};
    for (const CheckRow& row : rows) {
        Receiving host;
        host.DriverEvents().SecsMsgReceive(row.Header, row.Body, row.Length);
        EXPECT_EQ(host.Errors, row.Reported) << row.Label;
        EXPECT_EQ(host.Raised.size(), 1U) << row.Label;
        EXPECT_EQ(host.Control().ErrorCode(), row.Reported[0].Code) << row.Label;
        const Lines lines = host.NewLines();
        EXPECT_EQ(lines.size(), row.LogLines) << row.Label;
        if (!lines.empty()) {
            EXPECT_EQ(lines[0], "SECS I HEADER Received : 00 00 81 01 00 00 00 00 00 09");
        }
    }
}

TEST(ReceiveChecks, AcceptAnyCaseAndAnySeparator) {
    const auto lower = [](std::string text) {
        std::transform(text.begin(), text.end(), text.begin(), [](unsigned char letter) {
            return static_cast<char>(std::tolower(letter));
        });
        return text;
    };
    const auto separated = [](std::string text, char separator) {
        std::replace(text.begin(), text.end(), ' ', separator);
        return text;
    };
    const std::string header = "00 00 81 01 00 00 00 00 0A FF ";
    const std::string body = "41 02 4F 4B ";
    for (const char separator : {' ', ',', '-', 'F', '\0', '\n'}) {
        for (const bool small : {false, true}) {
            Receiving host;
            const std::string h = separated(small ? lower(header) : header, separator);
            const std::string b = separated(small ? lower(body) : body, separator);
            host.DriverEvents().SecsMsgReceive(h, b, 4);
            ASSERT_EQ(host.Primaries.size(), 1U);
            EXPECT_EQ(host.Primaries[0]->SystemBytes(), 0x0AFF);
            EXPECT_EQ(host.Primaries[0]->Primary()->Item(1)->Value(), Variant("OK"));
            EXPECT_EQ(host.NewLines().at(0),
                      "SECS I HEADER Received : 00 00 81 01 00 00 00 00 0A FF");
        }
    }
}

TEST(ReceiveChecks, ReadTenBytesOfALongerHeaderOrOneWithoutTheLastSeparator) {
    for (const std::string& header : {kHeader.substr(0, 29), kHeader + "zz", kHeader + "00 00 "}) {
        Receiving host;
        host.DriverEvents().SecsMsgReceive(header, "", 0);
        EXPECT_EQ(host.Primaries.size(), 1U);
        EXPECT_TRUE(host.Errors.empty());
    }
}

TEST(ReceiveChecks, TakeALengthBelowOneAsNoBodyWhateverTheTextSays) {
    for (const std::int32_t length : {0, -1, std::numeric_limits<std::int32_t>::min()}) {
        Receiving host;
        host.DriverEvents().SecsMsgReceive(kHeader, "A5 01 07 ", length);
        ASSERT_EQ(host.Primaries.size(), 1U);
        EXPECT_EQ(host.Primaries[0]->Primary()->Root()->ItemCount(), 0);
        EXPECT_EQ(host.NewLines(),
                  (Lines{"SECS I HEADER Received : 00 00 81 01 00 00 00 00 00 09",
                         "SECS I DATALEN Received : " + std::to_string(length),
                         "SECS II Message Received : \r\nS1F1 W\r\n."}));
    }
}

TEST(ReceiveChecks, ReportSystemBytesBeyondThirtyOneBitsAndGoOnWithTheLastByte) {
    struct Row {
        std::uint32_t SystemBytes;
        std::int32_t Left;
    };
    for (const Row& row : {Row{0x80000000U, 0}, Row{0x80000007U, 7}, Row{0xFFFFFFFFU, 255}}) {
        Receiving host;
        host.ReceivePrimary(1, 1, row.SystemBytes);
        EXPECT_EQ(
            host.Raised,
            (Lines{"Error(6,(ModGeneral-lLBitShift) Overflow,0)", "ReceivedPrimary(S1F1,0,)"}));
        EXPECT_EQ(host.Primaries.at(0)->SystemBytes(), row.Left);
    }
}

TEST(ReceiveChecks, ComeBeforeTheSystemBytesAreRead) {
    Receiving host;
    host.DriverEvents().SecsMsgReceive("00 00 81 01 00 00 80 00 00 01 ", "A5", 3);
    EXPECT_EQ(host.Errors, (Errors{kMismatch}));
}

TEST(ReceiveLog, TellsHeaderLengthDataAndText) {
    Receiving host;
    host.ReceivePrimary(6, 11, 9, "01 01 A5 01 07");
    EXPECT_EQ(host.NewLines(),
              (Lines{"SECS I HEADER Received : 00 00 86 0B 00 00 00 00 00 09",
                     "SECS I DATALEN Received : 5",
                     "SECS I DATA Received : 01 01 A5 01 07",
                     "SECS II Message Received : \r\nS6F11 W\r\n< L \r\n  < U1 7 >\r\n >\r\n."}));
}

TEST(ReceiveLog, ShowsTheReceivedWBit) {
    Receiving host;
    host.MessageReceived(Header(0, false, 6, 11, 9), {});
    EXPECT_EQ(host.NewLines().back(), "SECS II Message Received : \r\nS6F11\r\n.");
    host.MessageReceived(Header(0, true, 1, 2, 9), {});
    EXPECT_EQ(host.NewLines().back(), "SECS II Message Received : \r\nS1F2 W\r\n.");
}

TEST(ReceiveLog, IsWrittenBeforeTheHostHears) {
    Receiving host;
    std::size_t lines = 0;
    host.Control().Events().ReceivedPrimary =
        [&](const SECSTransPtr&, std::int32_t, const std::string&) {
            lines = host.LogLines().size();
        };
    host.ReceivePrimary(1, 1);
    EXPECT_EQ(lines, 3U);
}

TEST(ReceiveLog, IsNotNeeded) {
    Receiving host(false);
    host.ReceivePrimary(6, 11, 9, "01 01 A5 01 07");
    host.Send();
    host.ReceiveReply(1, 2, 1);
    EXPECT_EQ(host.Raised, (Lines{"ReceivedPrimary(S6F11,0,)", "ReceivedSecondary(S1F2,0,)"}));
    EXPECT_EQ(host.Files.Appends, 0);
}

TEST(ReceiveLog, ThatCannotBeWrittenIsSilent) {
    Receiving host;
    host.Files.FailAppend = true;
    host.ReceivePrimary(6, 11, 9, "A5 01 07");
    EXPECT_EQ(host.Raised, (Lines{"ReceivedPrimary(S6F11,0,)"}));
}

TEST(ReceiveBody, WithAClaimBeyondItsEndIsReportedAndDispatchedAllTheSame) {
    Receiving host;
    host.ReceivePrimary(6, 11, 9, "01 02 A5 01");
    ASSERT_EQ(host.Errors.size(), 2U);
    EXPECT_EQ(host.Errors[0],
              (ErrorEvent{9, "(SECSMessage-lParseSECSMessage) Subscript out of range", 0}));
    ASSERT_EQ(host.Primaries.size(), 1U);
    EXPECT_EQ(host.Primaries[0]->Primary()->Item(1)->ItemCount(), 1);
    EXPECT_TRUE(host.Driver.Sent.empty());
}

TEST(ReceiveBody, IgnoresBytesBehindTheFirstItem) {
    Receiving host;
    host.ReceivePrimary(6, 11, 9, "A5 01 07 A5 01 08");
    EXPECT_EQ(host.Raised, (Lines{"ReceivedPrimary(S6F11,0,)"}));
    EXPECT_EQ(host.Primaries.at(0)->Primary()->Root()->ItemCount(), 1);
    EXPECT_EQ(host.Primaries.at(0)->Primary()->RawHex(), "A5 01 07 A5 01 08");
}

TEST(ReceiveBody, ThatMakesTheHandlerEndTheControlIsNotDispatched) {
    for (const std::int32_t function : {1, 2}) {
        Receiving host;
        host.OnError([&](std::int32_t code) {
            if (code == 9) host.Control().ControlTerminate();
        });
        host.MessageReceived(Header(0, false, 1, function, 9), Bytes("A5 02 07"));
        EXPECT_EQ(host.Errors,
                  (Errors{{9, "(SECSMessage-lParseSECSMessage) Subscript out of range", 0},
                          {91, kPrefix + "Object variable or With block variable not set", 0}}));
        EXPECT_EQ(host.Raised.size(), 2U);
    }
}

}  // namespace
}  // namespace hexmire
