#include <hexmire/core/detail/SECSMessageAccess.h>

#include "../fakes/Golden.h"
#include "../fakes/Messages.h"
#include "../fakes/RecordingSite.h"
#include "../fakes/TestHost.h"
#include <gtest/gtest.h>

#include <string>
#include <vector>

// What receiving a body leaves on the message, and the line that it writes to the log.

namespace hexmire {
namespace {

using namespace fakes;
using detail::SECSMessageAccess;

using Bytes8 = std::vector<std::uint8_t>;
using Texts = std::vector<std::string>;

TEST(Parse, TheTopLevelItemBecomesTheFirstChildOfTheRoot) {
    const SECSMessagePtr message = New<SECSMessage>();
    EXPECT_TRUE(SECSMessageAccess::Parse(*message, Bytes("01 01 A5 01 07")));
    EXPECT_EQ(message->Root()->ItemCount(), 1);
    EXPECT_EQ(message->Root()->Name(), "Root");
    EXPECT_TRUE(SameTree(Body(message), Body(MessageFromNotation("<L <U1 7>>"))));
}

TEST(Parse, ItStandsBeforeWhatTheRootHeldAlready) {
    const SECSMessagePtr message = MessageOf(FormatAscii, "old");
    EXPECT_TRUE(SECSMessageAccess::Parse(*message, Bytes("A5 01 07")));
    ASSERT_EQ(message->Root()->ItemCount(), 2);
    EXPECT_EQ(message->Item(1)->Format(), FormatU1);
    EXPECT_TRUE(message->Item(2)->Value() == Variant("old"));
    EXPECT_EQ(message->Item(2)->ItemIndex(), 2);
}

TEST(Parse, RawAndHexTextHoldAllTheBytesAlsoThoseNotNeeded) {
    const SECSMessagePtr message = New<SECSMessage>();
    Bytes8 bytes = Bytes("21 01 0A FF EE");
    EXPECT_TRUE(SECSMessageAccess::Parse(*message, bytes));
    bytes.assign(5, 0);  // The message keeps a copy.
    EXPECT_EQ(message->RawHex(), "21 01 0A FF EE");
    EXPECT_TRUE(message->Raw() == Variant(Bytes("21 01 0A FF EE")));
    EXPECT_TRUE(Body(message)->Value() == Variant(std::uint8_t{10}));
}

TEST(Parse, LengthStreamAndFunctionStayAsTheyAre) {
    const SECSMessagePtr message = MessageOf(FormatU1, 1);
    message->Stream(6);
    message->Func(11);
    EXPECT_EQ(EncodedHex(message), "A5 01 01");
    EXPECT_TRUE(SECSMessageAccess::Parse(*message, Bytes("41 05 48 45 4C 4C 4F")));
    EXPECT_EQ(message->Length(), 3);
    EXPECT_EQ(message->Stream(), 6);
    EXPECT_EQ(message->Func(), 11);
    EXPECT_EQ(message->RawHex(), "41 05 48 45 4C 4C 4F");
}

TEST(Parse, ASecondBodyStandsBeforeTheFirstAndReplacesItsBytes) {
    RecordingSite site;
    const SECSMessagePtr message = New<SECSMessage>();
    EXPECT_FALSE(SECSMessageAccess::Parse(*message, Bytes("0D 00")));
    EXPECT_TRUE(SECSMessageAccess::Parse(*message, Bytes("01 01 A5 01 07")));
    EXPECT_EQ(message->RawHex(), "01 01 A5 01 07");
    EXPECT_TRUE(message->Raw() == Variant(Bytes("01 01 A5 01 07")));
    EXPECT_EQ(Describe(message->Root()), "<L <L <U1 7>> <V>>");
    EXPECT_EQ(EncodedHex(message), "01 01 A5 01 07");
    EXPECT_EQ(RenderSml(*message, false), "S0F1\r\n< L \r\n  < U1 7 >\r\n >\r\n.");
}

TEST(Parse, ABodyWithoutBytesLeavesTheItemsAndClearsTheBytes) {
    RecordingSite site;
    const SECSMessagePtr message = New<SECSMessage>();
    EXPECT_TRUE(SECSMessageAccess::Parse(*message, Bytes("A5 01 07")));
    Texts seen;
    site.OnError = [&](std::int32_t code) {
        seen.push_back(std::to_string(code) + " " + message->RawHex() + " " +
                       std::to_string(message->Raw().ElementCount()));
    };
    EXPECT_TRUE(SECSMessageAccess::Parse(*message, {}));
    EXPECT_EQ(seen, (Texts{"5 A5 01 07 3", "9  0"}));
    EXPECT_EQ(Describe(message->Root()), "<L <U1 7>>");
    EXPECT_EQ(message->RawHex(), "");
    EXPECT_TRUE(message->Raw() == Variant(Bytes8{}));
}

TEST(Parse, FalseTellsOfAnUnknownFormatCodeOnly) {
    RecordingSite site;
    EXPECT_FALSE(SECSMessageAccess::Parse(*New<SECSMessage>(), Bytes("0D 00")));
    EXPECT_TRUE(SECSMessageAccess::Parse(*New<SECSMessage>(), Bytes("41 05 41")));
    EXPECT_TRUE(SECSMessageAccess::Parse(*New<SECSMessage>(), Bytes("41 01 41")));
}

TEST(Parse, ABodyWithoutBytesIsReportedTwiceAndAddsNothing) {
    RecordingSite site;
    site.StartLog();
    const SECSMessagePtr message = New<SECSMessage>();
    EXPECT_TRUE(SECSMessageAccess::Parse(*message, {}));
    EXPECT_EQ(site.Errors,
              (Texts{"5 (ModGeneral-HexDumpArray) Invalid procedure call or argument",
                     "9 (SECSMessage-lParseSECSMessage) Subscript out of range"}));
    EXPECT_EQ(message->RawHex(), "");
    EXPECT_TRUE(message->Raw() == Variant(Bytes8{}));
    EXPECT_EQ(message->Root()->ItemCount(), 0);
    EXPECT_EQ(site.LogText(), "2024/03/05 14:07:09.42 SECS I DATA Received : \r\n");
}

TEST(Parse, WritesTheHexTextToTheLog) {
    RecordingSite site;
    site.StartLog();
    (void)SECSMessageAccess::Parse(*New<SECSMessage>(), Bytes("21 03 01 0A FF"));
    site.Clock.Advance(std::chrono::seconds{1});
    (void)SECSMessageAccess::Parse(*New<SECSMessage>(), Bytes("01 00"));
    EXPECT_EQ(site.LogText(),
              "2024/03/05 14:07:09.42 SECS I DATA Received : 21 03 01 0A FF\r\n"
              "2024/03/05 14:07:10.42 SECS I DATA Received : 01 00\r\n");
    EXPECT_EQ(site.Errors, Texts{});
}

TEST(Parse, TheLogLineIsWrittenBeforeTheItemsAreRead) {
    RecordingSite site;
    site.StartLog();
    Texts seen;
    site.OnError = [&](std::int32_t) { seen.push_back(site.LogText()); };
    (void)SECSMessageAccess::Parse(*New<SECSMessage>(), Bytes("41 05"));
    EXPECT_EQ(seen, Texts{"2024/03/05 14:07:09.42 SECS I DATA Received : 41 05\r\n"});
}

TEST(Parse, WithoutALogNothingIsWritten) {
    RecordingSite site;
    EXPECT_TRUE(SECSMessageAccess::Parse(*New<SECSMessage>(), Bytes("01 00")));
    EXPECT_EQ(site.Files.Appends, 0);
    EXPECT_EQ(site.Errors, Texts{});
}

TEST(Parse, WithoutAnyControlItDecodesSilently) {
    const SECSMessagePtr message = New<SECSMessage>();
    EXPECT_TRUE(SECSMessageAccess::Parse(*message, Bytes("01 02 41 01 58 41 05")));
    EXPECT_TRUE(SameTree(Body(message), Body(MessageFromNotation("<L <A \"X\"> <A>>"))));
}

TEST(Parse, ALogThatCannotBeWrittenChangesNothing) {
    RecordingSite site;
    site.StartLog();
    site.Files.FailAppend = true;
    const SECSMessagePtr message = New<SECSMessage>();
    EXPECT_TRUE(SECSMessageAccess::Parse(*message, Bytes("A5 01 07")));
    EXPECT_EQ(Body(message)->Format(), FormatU1);
    EXPECT_EQ(site.Errors, Texts{});
}

TEST(DecodeBody, MakesAMessageOfItsOwnWithoutALogLine) {
    RecordingSite site;
    site.StartLog();
    const DecodedBody decoded = DecodeBody(Bytes("01 01 A5 01 07"));
    EXPECT_TRUE(decoded.Ok);
    EXPECT_EQ(decoded.Message->Stream(), 0);
    EXPECT_EQ(decoded.Message->Func(), 1);
    EXPECT_EQ(decoded.Message->RawHex(), "01 01 A5 01 07");
    EXPECT_EQ(site.Files.Appends, 0);
}

TEST(DecodeBody, AnEmptyBodyGivesAnEmptyRootWithoutErrors) {
    RecordingSite site;
    const DecodedBody decoded = DecodeBody({});
    EXPECT_TRUE(decoded.Ok);
    EXPECT_EQ(decoded.Message->Root()->ItemCount(), 0);
    EXPECT_EQ(site.Errors, Texts{});
}

}  // namespace
}  // namespace hexmire
