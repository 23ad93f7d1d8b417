#include <hexmire/core/SECSItem.h>
#include <hexmire/core/detail/SECSItemAccess.h>

#include "../fakes/ErrorRecorder.h"
#include "../fakes/VariantText.h"
#include "ListOfThree.h"
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace hexmire {
namespace {

using detail::SECSItemAccess;
using fakes::ErrorRecorder;
using fakes::Show;
using Reports = ErrorRecorder::Reports;

const Reports kNothing{{1004, "(SECSItem-Get Item) There are no items contained in the list.", 0}};
const Reports kNoIndex{{1007,
                        "(SECSItem-Get Item) There is no item with this index.The index must be "
                        "between 1 and ItemCount.",
                        0}};
const Reports kWrongKind{{1008,
                          "(SECSItem-Get Item) The first parameter to the Item property must be "
                          "either a number or a string.",
                          0}};
const Reports kNoName{
    {1009, "(SECSItem-Get Item) The item name is not defined within the parent item.", 0}};

class ItemLookup : public testing_items::ListOfThree {
protected:
    void ExpectRefused(const Variant& value, const Reports& reports) {
        EXPECT_EQ(List->Item(value), nullptr) << Show(value);
        EXPECT_EQ(Site.Take(), reports) << Show(value);
    }
};

TEST_F(ItemLookup, ByIntegerOrLong) {
    EXPECT_EQ(List->Item(Variant(std::int16_t{2})), Children[1]);
    EXPECT_EQ(List->Item(Variant(std::int32_t{2})), Children[1]);
    EXPECT_EQ(List->Item(Variant(std::int8_t{3})), Children[2]);
    EXPECT_EQ(List->Item(Variant(std::uint16_t{1})), Children[0]);
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(ItemLookup, PlainIntegersOfAnyWidthArePositions) {
    EXPECT_EQ(List->Item(2), Children[1]);
    EXPECT_EQ(List->Item(2U), Children[1]);
    EXPECT_EQ(List->Item(2L), Children[1]);
    EXPECT_EQ(List->Item(std::size_t{2}), Children[1]);
    EXPECT_EQ(List->Item(std::uint8_t{2}), Children[1]);
    EXPECT_EQ(List->Item(std::int64_t{3}), Children[2]);
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(ItemLookup, PlainIntegerBeyondThirtyTwoBitsIsNoPosition) {
    EXPECT_EQ(List->Item(std::int64_t{4294967298}), nullptr);
    EXPECT_EQ(Site.Take(), kWrongKind);
    EXPECT_EQ(List->Item(std::uint64_t{0xFFFFFFFFFFFFFFFFULL}), nullptr);
    EXPECT_EQ(Site.Take(), kWrongKind);
}

TEST_F(ItemLookup, PlainArgumentsOfOtherTypesKeepTheirKind) {
    EXPECT_EQ(List->Item(2.0), nullptr);
    EXPECT_EQ(Site.Take(), kWrongKind);
    EXPECT_EQ(List->Item(true), nullptr);
    EXPECT_EQ(Site.Take(), kWrongKind);
    EXPECT_EQ(List->Item(std::vector<std::int32_t>{1}), nullptr);
    EXPECT_EQ(Site.Take(), kWrongKind);
}

TEST_F(ItemLookup, IndexOutsideIsRefused) {
    using Limits = std::numeric_limits<std::int32_t>;
    for (const std::int32_t index : {0, -1, 4, 100, Limits::min(), Limits::max()}) {
        ExpectRefused(index, kNoIndex);
    }
    for (const int index : {0, 4, -1, -32768, 32767})
        ExpectRefused(static_cast<std::int16_t>(index), kNoIndex);
}

TEST_F(ItemLookup, WholeNumbersOfOtherKindsAreNoNumbers) {
    ExpectRefused(2.0, kWrongKind);
    ExpectRefused(2.0F, kWrongKind);
    ExpectRefused(std::uint8_t{2}, kWrongKind);
    ExpectRefused(true, kWrongKind);
    ExpectRefused(Decimal::FromInt64(2), kWrongKind);
    ExpectRefused(Variant(std::uint32_t{2}), kWrongKind);
}

TEST_F(ItemLookup, OtherKindsAreRefused) {
    ExpectRefused(Variant(), kWrongKind);
    ExpectRefused(Variant::Null(), kWrongKind);
    ExpectRefused(std::make_shared<int>(1), kWrongKind);
    ExpectRefused(Variant(List), kWrongKind);
    ExpectRefused(std::vector<std::int32_t>{2}, kWrongKind);
    ExpectRefused(std::vector<Variant>{"A"}, kWrongKind);
    ExpectRefused(std::vector<std::uint8_t>{'A'}, kWrongKind);
    ExpectRefused(std::vector<bool>{true}, kWrongKind);
    ExpectRefused(std::vector<std::int16_t>{}, kWrongKind);
    ExpectRefused(std::vector<double>{1}, kWrongKind);
    ExpectRefused(SECSItemPtr(), kWrongKind);
    ExpectRefused(false, kWrongKind);
    ExpectRefused(std::uint8_t{0}, kWrongKind);
    ExpectRefused(0.0, kWrongKind);
}

TEST_F(ItemLookup, ByNameIgnoresLetterCase) {
    EXPECT_EQ(List->Item("b"), Children[1]);
    EXPECT_EQ(List->Item(std::string("B")), Children[1]);
    EXPECT_EQ(List->Item(std::string_view("xb").substr(1)), Children[1]);
    EXPECT_EQ(List->Item(Variant("b")), Children[1]);
    Children[2]->Name("TEMP");
    EXPECT_EQ(List->Item("temp"), Children[2]);
    Children[2]->Name("temp");
    EXPECT_EQ(List->Item("TeMp"), Children[2]);
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(ItemLookup, ByNameTakesTheFirstOfSeveral) {
    Children[1]->Name("same");
    Children[2]->Name("SAME");
    EXPECT_EQ(List->Item("same"), Children[1]);
    EXPECT_EQ(List->Item("SAME"), Children[1]);
    static_cast<void>(Children[1]->Delete());
    EXPECT_EQ(List->Item("same"), Children[2]);
}

TEST_F(ItemLookup, NamesFollowIso8859_1) {
    Children[0]->Name("\xE9t\xE9");
    EXPECT_EQ(List->Item("\xC9T\xC9"), Children[0]);
    Children[0]->Name("\xFF");
    ExpectRefused("Y", kNoName);
    EXPECT_EQ(List->Item("\xFF"), Children[0]);
    Children[0]->Name("\xDF");
    ExpectRefused("SS", kNoName);
    Children[0]->Name("\xF7");
    ExpectRefused("\xD7", kNoName);
}

TEST_F(ItemLookup, EveryCharacterFindsItsOwnLetterCaseOnly) {
    // Capital letters of ISO 8859-1; their small ones lie 32 behind. The multiplication and
    // division signs lie alike and are none; sharp s, y with diaeresis and the micro sign have no
    // capital.
    const auto isCapital = [](int code) {
        return (code >= 'A' && code <= 'Z') || (code >= 0xC0 && code <= 0xDE && code != 0xD7);
    };
    const auto isSmall = [&](int code) { return code >= 32 && isCapital(code - 32); };
    for (int name = 0; name < 256; ++name) {
        Children[1]->Name(std::string(1, static_cast<char>(name)));
        for (int asked = 0; asked < 256; ++asked) {
            // "A" and "C" are there besides.
            if (asked == 'A' || asked == 'a' || asked == 'C' || asked == 'c') continue;
            const bool same = name == asked || (isSmall(name) && asked == name - 32) ||
                              (isSmall(asked) && name == asked - 32);
            ASSERT_EQ(List->Item(std::string(1, static_cast<char>(asked))),
                      same ? Children[1] : nullptr)
                << name << " " << asked;
        }
    }
    EXPECT_EQ(Site.Take().front(), kNoName.front());
}

TEST_F(ItemLookup, NamesAreNotTrimmed) {
    for (const char* name : {" B", "B ", "\tB", "BB", "A B"})
        ExpectRefused(name, kNoName);
    Children[1]->Name(" B");
    EXPECT_EQ(List->Item(" b"), Children[1]);
    ExpectRefused("B", kNoName);
}

TEST_F(ItemLookup, EmptyTextIsRefusedEvenWhenAChildHasNoName) {
    Children[0]->Name("");
    ExpectRefused("", kWrongKind);
    ExpectRefused(std::string(), kWrongKind);
}

TEST_F(ItemLookup, BlankTextIsAName) {
    ExpectRefused(" ", kNoName);
    Children[1]->Name(" ");
    EXPECT_EQ(List->Item(" "), Children[1]);
    ExpectRefused("  ", kNoName);
}

TEST_F(ItemLookup, ChildrenWithoutNameArePassedOver) {
    static_cast<void>(List->AddNew(1));
    EXPECT_EQ(List->Item("a"), Children[0]);
    ExpectRefused("none", kNoName);
}

TEST_F(ItemLookup, DigitsInATextAreAName) {
    ExpectRefused("2", kNoName);
    Children[0]->Name("2");
    EXPECT_EQ(List->Item("2"), Children[0]);
}

TEST_F(ItemLookup, NameWithANulCharacterIsComparedWhole) {
    Children[0]->Name(std::string_view("A\0x", 3));
    EXPECT_EQ(List->Item(std::string("a\0X", 3)), Children[0]);
    ExpectRefused("A", kNoName);
}

TEST_F(ItemLookup, OnlyDirectChildrenAreFound) {
    Children[0]->Format(FormatList);
    Children[0]->AddNew(1)->Name("deep");
    ExpectRefused("deep", kNoName);
    EXPECT_NE(Children[0]->Item("deep"), nullptr);
}

TEST_F(ItemLookup, EmptyListIsReportedBeforeTheArgumentIsLookedAt) {
    const SECSItemPtr empty = New<SECSItem>();
    empty->Format(FormatList);
    for (const Variant& value : {Variant(1),
                                 Variant(0),
                                 Variant(2.0),
                                 Variant(""),
                                 Variant(),
                                 Variant("A"),
                                 Variant(std::vector<std::int32_t>{1})}) {
        EXPECT_EQ(empty->Item(value), nullptr);
        EXPECT_EQ(Site.Take(), kNothing) << Show(value);
    }
}

TEST_F(ItemLookup, AnythingButAListHasNoItemsThoughItKeepsItsChildren) {
    Children[0]->Format(FormatList);
    const SECSItemPtr kept = Children[0]->AddNew(1);
    Children[0]->Format(FormatU1);
    EXPECT_EQ(Children[0]->Item(1), nullptr);
    EXPECT_EQ(Site.Take(), kNothing);
    EXPECT_EQ(Children[1]->Item(2.0), nullptr);
    EXPECT_EQ(Site.Take(), kNothing);
    Children[0]->Format(FormatList);
    EXPECT_EQ(Children[0]->Item(1), kept);
}

TEST_F(ItemLookup, GoesByTheStoredIndexNotByThePlace) {
    SECSItemAccess::ItemIndex(*Children[0], 2);
    SECSItemAccess::ItemIndex(*Children[1], 1);
    EXPECT_EQ(List->Item(1), Children[1]);
    EXPECT_EQ(List->Item(2), Children[0]);
    EXPECT_EQ(List->Item(3), Children[2]);
    SECSItemAccess::ItemIndex(*Children[2], 2);
    EXPECT_EQ(List->Item(2), Children[0]);
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(ItemLookup, StoredIndexThatNobodyHasFindsNothingSilently) {
    SECSItemAccess::ItemIndex(*Children[1], 9);
    EXPECT_EQ(List->Item(2), nullptr);
    EXPECT_TRUE(Site.Errors.empty());
    ExpectRefused(9, kNoIndex);
}

TEST_F(ItemLookup, StoredIndexesAreRightAgainAfterTheNextInsertion) {
    SECSItemAccess::ItemIndex(*Children[0], 3);
    SECSItemAccess::ItemIndex(*Children[2], 1);
    static_cast<void>(List->AddNew(4));
    for (std::int32_t index = 1; index <= 3; ++index) {
        EXPECT_EQ(List->Item(index), Children[static_cast<std::size_t>(index - 1)]);
    }
}

TEST_F(ItemLookup, KeyIsLeftAsItWas) {
    Variant key("b");
    EXPECT_EQ(List->Item(key), Children[1]);
    EXPECT_EQ(Show(key), "String 'b'");
    key = std::int16_t{9};
    EXPECT_EQ(List->Item(key), nullptr);
    EXPECT_EQ(Show(key), "Integer 9");
}

TEST_F(ItemLookup, TextThatIsNotThereIsTheEmptyOne) {
    const char* none = nullptr;
    EXPECT_EQ(List->Item(none), nullptr);
    EXPECT_EQ(Site.Take(), kWrongKind);
}

TEST_F(ItemLookup, PositionsFollowEveryEdit) {
    List->AddNew(1)->Name("N");
    static_cast<void>(Children[1]->Delete());
    static_cast<void>(Children[2]->Duplicate());
    static_cast<void>(Children[0]->Duplicate());
    EXPECT_EQ(Order(), "N1 A2 A3 C4 C5");
    std::int32_t position = 0;
    for (const SECSItemPtr& child : *List)
        EXPECT_EQ(List->Item(++position), child);
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(ItemLookup, GivesTheSameObjectEveryTime) {
    EXPECT_EQ(List->Item(1), List->Item("a"));
    EXPECT_EQ(List->Item(1)->Parent(), List);
}

}  // namespace
}  // namespace hexmire
