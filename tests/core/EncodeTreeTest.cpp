#include <hexmire/core/detail/Encoder.h>
#include <hexmire/core/detail/SECSMessageAccess.h>

#include "../fakes/Messages.h"
#include "../fakes/RecordingSite.h"
#include <gtest/gtest.h>

#include <string>
#include <vector>

// Lists, what encoding leaves on the message, and what one fault does to the rest.

namespace hexmire {
namespace {

using namespace fakes;

using Bytes8 = std::vector<std::uint8_t>;
using detail::SECSMessageAccess;

TEST(EncodeTree, AnEmptyListIsTwoBytes) { EXPECT_EQ(EncodedHex(FormatList), "01 00"); }

TEST(EncodeTree, ChildrenFollowTheirListDepthFirst) {
    const SECSMessagePtr message = MessageOf(FormatList);
    const SECSItemPtr list = Body(message);
    AddItem(list, FormatU1, 1);
    const SECSItemPtr inner = AddItem(list, FormatList);
    AddItem(inner, FormatU1, 2);
    AddItem(AddItem(inner, FormatList), FormatU1, 3);
    AddItem(list, FormatU1, 4);
    EXPECT_EQ(EncodedHex(message), "01 03 A5 01 01 01 02 A5 01 02 01 01 A5 01 03 A5 01 04");
}

TEST(EncodeTree, TheNumberOfChildrenChoosesTheLengthBytes) {
    const auto start = [](int count) {
        const SECSMessagePtr message = MessageOf(FormatList);
        const SECSItemPtr list = Body(message);
        for (int child = 0; child < count; ++child) {
            AddItem(list, FormatU1, child);
        }
        const std::vector<std::uint8_t> bytes = EncodeBody(*message);
        EXPECT_EQ(bytes.size() % 3, static_cast<std::size_t>(list->NLB() + 1) % 3);
        EXPECT_EQ(list->Length(), count);
        EXPECT_TRUE(list->Raw().IsEmpty());
        return HexOf(std::span(bytes).first(4));
    };
    EXPECT_EQ(start(1), "01 01 A5 01");
    EXPECT_EQ(start(255), "01 FF A5 01");
    EXPECT_EQ(start(256), "02 01 00 A5");
    EXPECT_EQ(start(65535), "02 FF FF A5");
    EXPECT_EQ(start(65536), "03 01 00 00");
}

TEST(EncodeTree, TheValueOfAListAndTheChildrenOfAValueAreNotSent) {
    const SECSMessagePtr message = MessageOf(FormatList, "not sent");
    const SECSItemPtr child = AddItem(Body(message), FormatList);
    AddItem(child, FormatU1, 1);
    child->Format(FormatI1);
    child->Value(5);
    EXPECT_EQ(EncodedHex(message), "01 01 65 01 05");
}

TEST(EncodeTree, OnlyTheFirstChildOfTheRootIsEncoded) {
    const SECSMessagePtr message = MessageOf(FormatU1, 1);
    const SECSItemPtr second = AddItem(message->Root(), FormatU1, 2);
    EXPECT_EQ(EncodedHex(message), "A5 01 01");
    EXPECT_EQ(second->NLB(), 0);
    EXPECT_EQ(second->Length(), 0);
    EXPECT_TRUE(second->Raw().IsEmpty());
    EXPECT_EQ(message->Root()->NLB(), 0);
}

TEST(EncodeTree, AnEmptyRootKeepsTheBytesOfAnEarlierEncoding) {
    const SECSMessagePtr message = MessageOf(FormatU1, 9);
    EXPECT_EQ(EncodedHex(message), "A5 01 09");
    Body(message)->Delete();
    EXPECT_EQ(EncodeBody(*message), Bytes8{});
    EXPECT_EQ(message->Length(), 0);
    EXPECT_EQ(message->RawHex(), "A5 01 09");
    EXPECT_TRUE(message->Raw() == Variant(Bytes8{0xA5, 1, 9}));
}

TEST(EncodeTree, AnEmptyRootOfANewMessageGivesNothing) {
    RecordingSite site;
    const SECSMessagePtr message = New<SECSMessage>();
    EXPECT_EQ(EncodeBody(*message), Bytes8{});
    EXPECT_EQ(message->Length(), 0);
    EXPECT_EQ(message->RawHex(), "");
    EXPECT_TRUE(message->Raw().IsEmpty());
    EXPECT_EQ(site.Errors, std::vector<std::string>{});
}

TEST(EncodeTree, ABodyThatWritesNothingKeepsTheEarlierBytesToo) {
    RecordingSite site;
    const SECSMessagePtr message = MessageOf(FormatAscii, "A");
    EXPECT_EQ(EncodedHex(message), "41 01 41");
    Body(message)->Value(std::vector<std::int32_t>{1});
    EXPECT_EQ(EncodedHex(message), "");
    EXPECT_EQ(message->Length(), 0);
    EXPECT_EQ(message->RawHex(), "41 01 41");
    EXPECT_TRUE(message->Raw() == Variant(Bytes8{0x41, 1, 0x41}));
    EXPECT_EQ(site.Errors,
              std::vector<std::string>{"13 (SECSMessage-lBuildSECSMessage) Type mismatch"});
}

TEST(EncodeTree, LengthRawAndRawHexDescribeTheBytesOfTheLastEncoding) {
    const SECSMessagePtr message = MessageOf(FormatBinary, Bytes8{1, 10, 255});
    EXPECT_EQ(EncodedHex(message), "21 03 01 0A FF");
    const Variant first = message->Raw();
    Body(message)->Value(std::uint8_t{0});
    EXPECT_EQ(EncodedHex(message), "21 01 00");
    EXPECT_EQ(message->Length(), 3);
    EXPECT_EQ(message->RawHex(), "21 01 00");
    EXPECT_TRUE(message->Raw() == Variant(Bytes8{0x21, 1, 0}));
    EXPECT_TRUE(first == Variant(Bytes8{0x21, 3, 1, 10, 255}));
}

TEST(EncodeTree, RawSetByTheHostDoesNotChangeTheHexText) {
    const SECSMessagePtr message = MessageOf(FormatU1, 1);
    EXPECT_EQ(EncodedHex(message), "A5 01 01");
    message->Raw("something else");
    EXPECT_EQ(message->RawHex(), "A5 01 01");
    EXPECT_EQ(message->Length(), 3);
    EXPECT_EQ(EncodedHex(message), "A5 01 01");
    EXPECT_TRUE(message->Raw() == Variant(Bytes8{0xA5, 1, 1}));
}

TEST(EncodeTree, TheOutputArrayHoldsTheBytesAndNothingElse) {
    std::vector<std::uint8_t> bytes{1, 2, 3, 4, 5, 6, 7};
    SECSMessageAccess::Build(*MessageOf(FormatU1, 1), bytes);
    EXPECT_EQ(HexOf(bytes), "A5 01 01");
    SECSMessageAccess::Build(*New<SECSMessage>(), bytes);
    EXPECT_EQ(HexOf(bytes), "");
}

TEST(EncodeTree, TheWorkerAppendsToWhatIsThere) {
    std::vector<std::uint8_t> bytes{0xEE};
    detail::lBuildSECSMessage(bytes, Body(MessageOf(FormatU1, 1)));
    EXPECT_EQ(HexOf(bytes), "EE A5 01 01");
}

TEST(EncodeFaults, OneFaultInTheMiddleLeavesAllOthersWhole) {
    RecordingSite site;
    const SECSMessagePtr message = MessageOf(FormatList);
    const SECSItemPtr list = Body(message);
    AddItem(list, FormatU1, 1);
    const SECSItemPtr inner = AddItem(list, FormatList);
    AddItem(inner, FormatAscii, "A");
    AddItem(inner, FormatI4, "abc");
    AddItem(inner, FormatAscii, "B");
    AddItem(list, FormatU1, 2);
    EXPECT_EQ(EncodedHex(message), "01 03 A5 01 01 01 03 41 01 41 71 04 41 01 42 A5 01 02");
    EXPECT_EQ(site.Errors,
              std::vector<std::string>{"13 (SECSMessage-lBuildSECSMessage) Type mismatch"});
    EXPECT_EQ(message->Length(), 18);
    EXPECT_EQ(message->RawHex(), "01 03 A5 01 01 01 03 41 01 41 71 04 41 01 42 A5 01 02");
}

TEST(EncodeFaults, EveryFaultIsReportedInTheOrderOfTheItems) {
    RecordingSite site;
    const SECSMessagePtr message = MessageOf(FormatList);
    AddItem(Body(message), FormatI4, "abc");
    AddItem(Body(message), FormatU4, 549755813888ULL);
    AddItem(Body(message), FormatI1, 3e9);
    AddItem(Body(message), FormatAscii, Bytes8{1});
    AddItem(Body(message), FormatVar, Bytes8{});
    EXPECT_EQ(EncodedHex(message), "01 05 71 04 B1 04 00 00 00 00 65 01 41 04 5B 20 20 5D");
    EXPECT_EQ(site.Errors,
              (std::vector<std::string>{"13 (SECSMessage-lBuildSECSMessage) Type mismatch",
                                        "9 (SECSMessage-lDecToByte) Subscript out of range",
                                        "6 (SECSMessage-lBuildSECSMessage) Overflow",
                                        "13 (SECSMessage-lBuildSECSMessage) Type mismatch",
                                        "9 (ModGeneral-IsByteArray) Subscript out of range"}));
}

TEST(EncodeFaults, AnItemWithoutBytesIsStillCountedInItsList) {
    RecordingSite site;
    const SECSMessagePtr message = MessageOf(FormatList);
    AddItem(Body(message), FormatI4, "abc");
    const SECSItemPtr inner = AddItem(Body(message), FormatList);
    AddItem(inner, FormatAscii, Bytes8{1});
    AddItem(inner, FormatU1, 5);
    AddItem(Body(message), FormatAscii, "x");
    EXPECT_EQ(EncodedHex(message), "01 03 71 04 01 02 A5 01 05 41 01 78");
    EXPECT_EQ(site.Errors,
              std::vector<std::string>(2, "13 (SECSMessage-lBuildSECSMessage) Type mismatch"));
    EXPECT_EQ(inner->Length(), 2);
    EXPECT_EQ(message->Length(), 12);
}

TEST(EncodeFaults, NoItemIsAnObjectThatIsNotSet) {
    RecordingSite site;
    std::vector<std::uint8_t> bytes{0xEE};
    detail::lBuildSECSMessage(bytes, nullptr);
    EXPECT_EQ(HexOf(bytes), "EE");
    EXPECT_EQ(site.Errors,
              std::vector<std::string>{"91 (SECSMessage-lBuildSECSMessage) Object variable or "
                                       "With block variable not set"});
}

TEST(EncodeFaults, WithoutAnyControlFaultsAreDropped) {
    EXPECT_EQ(EncodedBeforeSibling(FormatI4, "abc"), "01 02 71 04 A5 01 07");
}

TEST(EncodeFaults, TheNextEncodingOfAMendedTreeIsWhole) {
    RecordingSite site;
    const SECSMessagePtr message = MessageOf(FormatI4, "abc");
    EXPECT_EQ(EncodedHex(message), "71 04");
    EXPECT_EQ(message->Length(), 2);
    Body(message)->Value("12");
    EXPECT_EQ(EncodedHex(message), "71 04 00 00 00 0C");
    EXPECT_EQ(site.Errors.size(), 1U);
}

}  // namespace
}  // namespace hexmire
