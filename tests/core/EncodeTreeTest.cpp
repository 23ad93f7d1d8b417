#include <hexmire/core/detail/Encoder.h>
#include <hexmire/core/detail/SECSMessageAccess.h>

#include "../fakes/Messages.h"
#include "../fakes/RecordingSite.h"
#include <gtest/gtest.h>

#include <string>
#include <vector>

// Lists, what encoding leaves on items and message, and what one fault does to the rest.

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
}

TEST(EncodeTree, TheWorkerAppendsToWhatIsThere) {
    std::vector<std::uint8_t> bytes{0xEE};
    detail::lBuildSECSMessage(bytes, Body(MessageOf(FormatU1, 1)));
    EXPECT_EQ(HexOf(bytes), "EE A5 01 01");
}

struct Record {
    std::int32_t Format;
    Variant Value;
    std::int32_t Nlb;
    std::int32_t Length;
    Variant Raw;
};

TEST(EncodeRecords, EveryItemTellsWhatWasUsed) {
    const std::vector<Record> rows = {
        {FormatBoolean, true, 1, 1, std::int16_t{255}},
        {FormatBoolean, false, 1, 1, std::int16_t{0}},
        {FormatBoolean, std::vector<bool>{true, false}, 1, 2, Bytes8{255, 0}},
        {FormatBoolean, std::vector<bool>{true}, 1, 1, Bytes8{255}},
        {FormatBinary, 0x1F2, 1, 1, std::uint8_t{0xF2}},
        {FormatBinary, Bytes8{7}, 1, 1, Bytes8{7}},
        {FormatBinary, std::vector<std::int32_t>{-1, 256}, 1, 2, Bytes8{255, 0}},
        {FormatAscii, "A", 1, 1, Bytes8{0x41}},
        {FormatAscii, 12, 1, 2, Bytes8{0x31, 0x32}},
        {FormatAscii, std::string(300, 'x'), 2, 300, Bytes8(300, 0x78)},
        {FormatI1, -1, 1, 1, Bytes8{255}},
        {FormatI2, -2, 1, 2, Bytes8{255, 254}},
        {FormatI4, 1, 1, 4, Bytes8{0, 0, 0, 1}},
        {FormatI8, -1, 1, 8, Bytes8(8, 255)},
        {FormatU1, 255, 1, 1, Bytes8{255}},
        {FormatU2, 258, 1, 2, Bytes8{1, 2}},
        {FormatU4, 4294967295U, 1, 4, Bytes8(4, 255)},
        {FormatU8, 1, 1, 8, Bytes8{0, 0, 0, 0, 0, 0, 0, 1}},
        {FormatF4, 1.0F, 1, 4, Bytes8{0x3F, 0x80, 0, 0}},
        {FormatF8, 1.0, 1, 8, Bytes8{0x3F, 0xF0, 0, 0, 0, 0, 0, 0}},
        {FormatI2, std::vector<std::int32_t>(128, 257), 2, 256, Bytes8(256, 1)},
        {FormatU1, std::vector<std::int32_t>(65536, 1), 3, 65536, Variant(Bytes8(65536, 1))},
        {FormatI2, ArrayOf(std::vector<std::int32_t>{1}, 1), 1, 4, Bytes8{0, 0, 0, 1}},
    };
    for (const Record& row : rows) {
        const SECSMessagePtr message = MessageOf(row.Format, row.Value);
        (void)EncodeBody(*message);
        const SECSItemPtr item = Body(message);
        EXPECT_EQ(item->NLB(), row.Nlb) << row.Format;
        EXPECT_EQ(item->Length(), row.Length) << row.Format;
        EXPECT_TRUE(item->Raw() == row.Raw) << row.Format;
    }
}

TEST(EncodeRecords, TheItemsOwnLengthByteCountIsOverwrittenNotUsed) {
    const SECSMessagePtr message = MessageOf(FormatList);
    for (const std::int32_t nlb : {0, 1, 2, 3}) {
        AddItem(Body(message), FormatU1, nlb)->NLB(nlb);
    }
    Body(message)->NLB(3);
    EXPECT_EQ(EncodedHex(message), "01 04 A5 01 00 A5 01 01 A5 01 02 A5 01 03");
    EXPECT_EQ(Body(message)->NLB(), 1);
    for (const SECSItemPtr& child : *Body(message)) {
        EXPECT_EQ(child->NLB(), 1);
    }
}

TEST(EncodeRecords, AnItemWithoutValueKeepsTheRawOfAnEarlierEncoding) {
    const SECSMessagePtr message = MessageOf(FormatAscii, std::string(300, 'x'));
    (void)EncodeBody(*message);
    const SECSItemPtr item = Body(message);
    for (const Variant& nothing : {Variant(), Variant::Null(), Variant("")}) {
        item->NLB(3);
        item->Value(nothing);
        EXPECT_EQ(EncodedHex(message), "41 00");
        EXPECT_EQ(item->NLB(), 1);
        EXPECT_EQ(item->Length(), 0);
        EXPECT_TRUE(item->Raw() == Variant(Bytes8(300, 0x78)));
    }
}

TEST(EncodeRecords, EncodingLeavesFormatsValuesAndNamesAlone) {
    const SECSMessagePtr message = MessageOf(FormatI2, "7");
    Body(message)->Name("SPEED");
    Body(message)->Description("rpm");
    EXPECT_EQ(EncodedHex(message), "69 02 00 07");
    EXPECT_TRUE(Body(message)->Value() == Variant("7"));
    EXPECT_EQ(Body(message)->Format(), FormatI2);
    EXPECT_EQ(Body(message)->Name(), "SPEED");
    EXPECT_EQ(Body(message)->Description(), "rpm");
    EXPECT_EQ(Body(message)->ItemIndex(), 1);
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
