#include <hexmire/core/ModGeneral.h>

#include "../fakes/Messages.h"
#include "../fakes/RecordingSite.h"
#include <gtest/gtest.h>

#include <string>
#include <vector>

// What encoding leaves on the items: length bytes used, length, and the bytes of the value.

namespace hexmire {
namespace {

using namespace fakes;

using Bytes8 = std::vector<std::uint8_t>;

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
        const SECSItemPtr copy = item->Duplicate().Object<SECSItem>();
        ASSERT_NE(copy, nullptr);
        for (const SECSItemPtr& changed : {copy, item}) {
            EXPECT_TRUE(changed->Raw() == row.Raw) << row.Format;
            changed->Format(row.Format == FormatU2 ? FormatF8 : FormatU2);
            EXPECT_TRUE(changed->Raw() == row.Raw) << row.Format;
            changed->Value("changed");
            EXPECT_TRUE(changed->Raw() == row.Raw) << row.Format;
        }
    }
}

TEST(EncodeRecords, TheRawOfTheLastEncodingCountsWhateverTheValueWasBefore) {
    const SECSMessagePtr message = MessageOf(FormatU4, 7U);
    const SECSItemPtr item = Body(message);
    (void)EncodeBody(*message);
    item->Value("12");  // A text, to be converted.
    EXPECT_TRUE(item->Raw() == Variant(Bytes8{0, 0, 0, 7}));
    (void)EncodeBody(*message);
    EXPECT_TRUE(item->Raw() == Variant(Bytes8{0, 0, 0, 12}));
    item->Value(13);
    EXPECT_TRUE(item->Raw() == Variant(Bytes8{0, 0, 0, 12}));
    (void)EncodeBody(*message);
    EXPECT_TRUE(item->Raw() == Variant(Bytes8{0, 0, 0, 13}));
    item->Format(FormatU1);
    EXPECT_TRUE(item->Raw() == Variant(Bytes8{0, 0, 0, 13}));
    (void)EncodeBody(*message);
    EXPECT_TRUE(item->Raw() == Variant(Bytes8{13}));
}

TEST(EncodeRecords, AFailedEncodingLeavesTheRawOfTheOneBefore) {
    RecordingSite site;
    const SECSMessagePtr message = MessageOf(FormatU4, 7U);
    const SECSItemPtr item = Body(message);
    (void)EncodeBody(*message);
    item->Value("seven");
    (void)EncodeBody(*message);
    EXPECT_EQ(site.Errors.size(), 1U);
    EXPECT_TRUE(item->Raw() == Variant(Bytes8{0, 0, 0, 7}));
}

TEST(EncodeRecords, ACopyIntoAnItemOfAnotherFormatKeepsTheRaw) {
    RecordingSite site;
    const SECSMessagePtr message = MessageOf(FormatU4, 7U);
    (void)EncodeBody(*message);
    const SECSItemPtr root = New<SECSItem>();  // It has no parent, so it refuses the format.
    ModGeneral::CreateDuplicateItem(root, Body(message));
    EXPECT_EQ(site.Errors.size(), 1U);
    EXPECT_EQ(root->Format(), FormatVar);
    EXPECT_TRUE(root->Value() == Variant(7U));
    EXPECT_TRUE(root->Raw() == Variant(Bytes8{0, 0, 0, 7}));
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

TEST(EncodeRecords, NoValueLeavesRawAloneInEveryFormat) {
    RecordingSite site;
    for (const std::int32_t format : {8, 9, 16, 24, 25, 26, 28, 32, 36, 40, 41, 42, 44, 63}) {
        SCOPED_TRACE(format);
        const SECSMessagePtr message = MessageOf(format, 1);
        static_cast<void>(EncodeBody(*message));
        const SECSItemPtr item = Body(message);
        const Variant first = item->Raw();
        EXPECT_FALSE(first.IsEmpty());
        for (const Variant& nothing : {Variant(), Variant::Null()}) {
            item->Value(nothing);
            item->NLB(2);
            static_cast<void>(EncodeBody(*message));
            EXPECT_EQ(item->NLB(), 1);
            EXPECT_EQ(item->Length(), 0);
            EXPECT_TRUE(item->Raw() == first);
        }
    }
    EXPECT_EQ(site.Errors, std::vector<std::string>{});
}

TEST(EncodeRecords, AnItemThatNeverHadAValueHasNoRaw) {
    const SECSMessagePtr message = MessageOf(FormatU4);
    EXPECT_EQ(EncodedHex(message), "B1 00");
    EXPECT_TRUE(Body(message)->Raw().IsEmpty());
}

TEST(EncodeRecords, AnArrayWithoutElementsIsAnArrayOfNoBytes) {
    const SECSMessagePtr message = MessageOf(FormatU4, 1);
    static_cast<void>(EncodeBody(*message));
    Body(message)->Value(std::vector<std::int32_t>{});
    EXPECT_EQ(EncodedHex(message), "B1 00");
    EXPECT_EQ(Body(message)->NLB(), 1);
    EXPECT_EQ(Body(message)->Length(), 0);
    EXPECT_TRUE(Body(message)->Raw() == Variant(Bytes8{}));
}

/// An item of a good value is given a bad one and encoded again.
struct FaultRow {
    std::int32_t Format;
    Variant Good;
    Variant Bad;
    const char* Hex;
    std::int32_t Nlb;
    std::int32_t Length;
};

TEST(EncodeRecords, AFaultLeavesWhatTheHeaderHoldsAndTheRawOfBefore) {
    const std::vector<std::int32_t> many(300, 1);
    std::vector<Variant> faulty(300, 1);
    faulty[0] = "x";
    const std::vector<FaultRow> rows = {
        {FormatI4, many, "abc", "71 04", 1, 4},
        {FormatF4, many, 1e39, "91 04", 1, 4},
        {FormatBoolean, true, "T", "25 01", 1, 1},
        {FormatBinary, 5, 3e9, "21 01", 1, 1},
        {FormatI8, -1, "abc", "61 08", 1, 8},
        {FormatU1, 7, faulty, "A6 01 2C", 2, 300},
        {FormatI2, 7, faulty, "6A 02 58", 2, 600},
    };
    for (const FaultRow& row : rows) {
        SCOPED_TRACE(row.Hex);
        RecordingSite site;
        const SECSMessagePtr message = MessageOf(row.Format, row.Good);
        static_cast<void>(EncodeBody(*message));
        const SECSItemPtr item = Body(message);
        const Variant raw = item->Raw();
        item->Value(row.Bad);
        item->NLB(0);
        EXPECT_EQ(EncodedHex(message), row.Hex);
        EXPECT_EQ(site.ErrorCount, 1U);
        EXPECT_EQ(item->NLB(), row.Nlb);
        EXPECT_EQ(item->Length(), row.Length);
        EXPECT_TRUE(item->Raw() == raw);
        EXPECT_EQ(message->RawHex(), row.Hex);
    }
}

TEST(EncodeRecords, ATextThatCannotBeMadeLeavesTheItemAsItWas) {
    for (const std::int32_t format : {FormatAscii, FormatVar}) {
        RecordingSite site;
        const SECSMessagePtr message = MessageOf(FormatList);
        const SECSItemPtr item = AddItem(Body(message), format, std::string(300, 'x'));
        static_cast<void>(EncodeBody(*message));
        item->Value(std::vector<Variant>{1, Variant::Null()});
        EXPECT_EQ(EncodedHex(message), "01 01");
        EXPECT_EQ(site.ErrorCount, 1U);
        EXPECT_EQ(item->NLB(), 2);
        EXPECT_EQ(item->Length(), 300);
        EXPECT_TRUE(item->Raw() == Variant(Bytes8(300, 0x78)));
    }
}

TEST(EncodeRecords, AFaultOfTheHelperStillKeepsRaw) {
    RecordingSite site;
    const SECSMessagePtr message = MessageOf(FormatU4, 549755813893ULL);
    EXPECT_EQ(EncodedHex(message), "B1 04 00 00 00 05");
    EXPECT_EQ(site.ErrorCount, 1U);
    EXPECT_TRUE(Body(message)->Raw() == Variant(Bytes8{0, 0, 0, 5}));
}

TEST(EncodeRecords, TheCountOfAListShowsOnceItIsAList) {
    const SECSMessagePtr message = MessageOf(FormatList);
    for (int child = 0; child < 3; ++child)
        AddItem(Body(message), FormatU1, child);
    static_cast<void>(EncodeBody(*message));
    const SECSItemPtr list = Body(message);
    list->Item(1)->Delete();
    EXPECT_EQ(list->Length(), 2);
    list->Format(FormatAscii);
    EXPECT_EQ(list->Length(), 3);
    EXPECT_EQ(list->NLB(), 1);
}

TEST(EncodeRecords, AListKeepsTheRawThatItHadAsAValue) {
    const SECSMessagePtr message = MessageOf(FormatAscii, "AB");
    static_cast<void>(EncodeBody(*message));
    Body(message)->Format(FormatList);
    EXPECT_EQ(EncodedHex(message), "01 00");
    EXPECT_TRUE(Body(message)->Raw() == Variant(Bytes8{0x41, 0x42}));
}

TEST(EncodeRecords, BeyondTwentyFourBitsTheItemStillTellsTheWholeLength) {
    constexpr std::int32_t kSize = 16777216;
    const SECSMessagePtr message = MessageOf(FormatAscii, std::string(kSize, 'x'));
    static_cast<void>(EncodeBody(*message));
    EXPECT_EQ(Body(message)->NLB(), 3);
    EXPECT_EQ(Body(message)->Length(), kSize);
    EXPECT_EQ(Body(message)->Raw().UpperBound(), kSize - 1);
    EXPECT_EQ(message->Length(), kSize + 4);
    EXPECT_EQ(message->Raw().UpperBound(), kSize + 3);
}

}  // namespace
}  // namespace hexmire
