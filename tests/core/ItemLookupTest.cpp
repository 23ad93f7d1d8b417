#include <hexmire/core/SECSItem.h>
#include <hexmire/core/detail/SECSItemAccess.h>

#include "../fakes/ErrorRecorder.h"
#include "../fakes/VariantText.h"
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

class ItemLookup : public testing::Test {
protected:
    ItemLookup() {
        List->Format(FormatList);
        for (const char* name : {"A", "B", "C"}) {
            Children.push_back(List->AddNew(List->ItemCount() + 1));
            Children.back()->Name(name);
        }
    }
    void ExpectRefused(const Variant& value, const Reports& reports) {
        EXPECT_EQ(List->Item(value), nullptr) << Show(value);
        EXPECT_EQ(Site.Take(), reports) << Show(value);
    }

    ErrorRecorder Site;
    SECSItemPtr List = New<SECSItem>();
    std::vector<SECSItemPtr> Children;
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
    ExpectRefused(std::int16_t{0}, kNoIndex);
    ExpectRefused(std::int16_t{4}, kNoIndex);
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

TEST_F(ItemLookup, GivesTheSameObjectEveryTime) {
    EXPECT_EQ(List->Item(1), List->Item("a"));
    EXPECT_EQ(List->Item(1)->Parent(), List);
}

}  // namespace
}  // namespace hexmire
