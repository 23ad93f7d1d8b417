#include <hexmire/core/SECSItem.h>
#include <hexmire/core/detail/SECSItemAccess.h>

#include "../fakes/ErrorRecorder.h"
#include "../fakes/VariantText.h"
#include "ListOfThree.h"
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace hexmire {
namespace {

using detail::SECSItemAccess;
using fakes::ErrorRecorder;
using fakes::Show;
using Limits = std::numeric_limits<std::int32_t>;
using Reports = ErrorRecorder::Reports;

const Reports kNotAList{{2002, "(SECSItem-AddNew) You cannot add new item into non-list item.", 0}};
const Reports kNoPlace{
    {2003, "(SECSItem-AddNew) You cannot add new item out of limit between 1 to ItemCount+1.", 0}};
const Reports kRootStays{{1079, "(SECSItem-Delete) The Root item cannot be deleted.", 0}};

class ItemEdit : public testing_items::ListOfThree {};

TEST_F(ItemEdit, NewChildIsOfAnyFormatWithoutNameAndValue) {
    const SECSItemPtr item = List->AddNew(4);
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->Format(), FormatVar);
    EXPECT_EQ(item->Name(), "");
    EXPECT_EQ(item->Description(), "");
    EXPECT_TRUE(item->Value().IsEmpty());
    EXPECT_TRUE(item->Raw().IsEmpty());
    EXPECT_EQ(item->NLB(), 0);
    EXPECT_EQ(item->Length(), 0);
    EXPECT_EQ(item->ItemIndex(), 4);
    EXPECT_EQ(item->Parent(), List);
}

TEST_F(ItemEdit, AddNewTakesThePositionAndRenumbers) {
    const SECSItemPtr item = List->AddNew(2);
    EXPECT_EQ(Order(), "A1 -2 B3 C4");
    EXPECT_EQ(List->Item(2), item);
    static_cast<void>(List->AddNew(5));
    EXPECT_EQ(Order(), "A1 -2 B3 C4 -5");
    static_cast<void>(List->AddNew(1));
    EXPECT_EQ(Order(), "-1 A2 -3 B4 C5 -6");
    EXPECT_EQ(List->ItemCount(), 6);
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(ItemEdit, AddNewBeforeTheLastKeepsTheLastLast) {
    static_cast<void>(List->AddNew(3));
    EXPECT_EQ(Order(), "A1 B2 -3 C4");
}

TEST_F(ItemEdit, AddNewOutsideIsRefusedAndChangesNothing) {
    for (const std::int32_t index : {0, -1, 5, 6, Limits::min(), Limits::max()}) {
        EXPECT_EQ(List->AddNew(index), nullptr) << index;
        EXPECT_EQ(Site.Take(), kNoPlace) << index;
        EXPECT_EQ(Order(), "A1 B2 C3");
    }
}

TEST_F(ItemEdit, AddNewIntoAnEmptyList) {
    const SECSItemPtr list = New<SECSItem>();
    list->Format(FormatList);
    EXPECT_EQ(list->AddNew(2), nullptr);
    EXPECT_EQ(list->AddNew(0), nullptr);
    EXPECT_EQ(Site.Take().size(), 2U);
    EXPECT_NE(list->AddNew(1), nullptr);
    EXPECT_EQ(list->ItemCount(), 1);
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(ItemEdit, AddNewIntoAnythingButAListIsRefusedWhateverTheIndex) {
    const SECSItemPtr fresh = New<SECSItem>();
    for (const std::int32_t index : {1, 0, 99}) {
        EXPECT_EQ(fresh->AddNew(index), nullptr);
        EXPECT_EQ(Site.Take(), kNotAList);
        Children[0]->Format(FormatAscii);
        EXPECT_EQ(Children[0]->AddNew(index), nullptr);
        EXPECT_EQ(Site.Take(), kNotAList);
    }
    EXPECT_EQ(fresh->ItemCount(), 0);
}

TEST_F(ItemEdit, AddNewCountsTheChildrenThatItSees) {
    // A list made into something else and back still has its children.
    Children[0]->Format(FormatList);
    static_cast<void>(Children[0]->AddNew(1));
    Children[0]->Format(FormatU1);
    EXPECT_EQ(Children[0]->AddNew(2), nullptr);
    EXPECT_EQ(Site.Take(), kNotAList);
    Children[0]->Format(FormatList);
    EXPECT_NE(Children[0]->AddNew(2), nullptr);
    EXPECT_EQ(Children[0]->ItemCount(), 2);
}

TEST_F(ItemEdit, DeleteTakesTheItemOutAndRenumbers) {
    EXPECT_TRUE(Children[1]->Delete().IsEmpty());
    EXPECT_EQ(Order(), "A1 C2");
    EXPECT_EQ(Children[1]->Parent(), nullptr);
    EXPECT_EQ(Children[1]->ItemIndex(), 1);
    EXPECT_EQ(List->ItemCount(), 2);
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(ItemEdit, DeleteOfFirstAndLast) {
    static_cast<void>(Children[0]->Delete());
    EXPECT_EQ(Order(), "B1 C2");
    static_cast<void>(Children[2]->Delete());
    EXPECT_EQ(Order(), "B1");
    static_cast<void>(Children[1]->Delete());
    EXPECT_EQ(Order(), "");
    EXPECT_EQ(List->ItemCount(), 0);
}

TEST_F(ItemEdit, DeletedItemKeepsItsSubtreeAndItsFields) {
    Children[1]->Format(FormatList);
    Children[1]->AddNew(1)->Name("inner");
    Children[1]->Value(5);
    static_cast<void>(Children[1]->Delete());
    EXPECT_EQ(Children[1]->Item("inner")->Parent(), Children[1]);
    EXPECT_EQ(Children[1]->Name(), "B");
    EXPECT_EQ(Show(Children[1]->Value()), "Long 5");
    EXPECT_EQ(Children[1]->Format(), FormatList);
}

TEST_F(ItemEdit, DeletedItemIsARootFromThenOn) {
    Children[1]->Format(FormatAscii);
    static_cast<void>(Children[1]->Delete());
    EXPECT_TRUE(Children[1]->Delete().IsEmpty());
    EXPECT_EQ(Site.Take(), kRootStays);
    EXPECT_TRUE(Children[1]->Duplicate().IsEmpty());
    EXPECT_EQ(Site.Take()[0].Code, 1133);
    Children[1]->Format(FormatU1);
    EXPECT_EQ(Site.Take()[0].Code, 1001);
    EXPECT_EQ(Children[1]->Format(), FormatAscii);
    Children[1]->Format(FormatList);
    EXPECT_EQ(Children[1]->Format(), FormatList);
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(ItemEdit, DeleteOfARootIsRefusedAndChangesNothing) {
    EXPECT_TRUE(List->Delete().IsEmpty());
    EXPECT_EQ(Site.Take(), kRootStays);
    EXPECT_EQ(Order(), "A1 B2 C3");
    EXPECT_TRUE(New<SECSItem>()->Delete().IsEmpty());
    EXPECT_EQ(Site.Take(), kRootStays);
}

TEST_F(ItemEdit, DeleteWorksInAParentThatIsNoListAnyMore) {
    Children[0]->Format(FormatList);
    const SECSItemPtr inner = Children[0]->AddNew(1);
    Children[0]->Format(FormatU1);
    static_cast<void>(inner->Delete());
    EXPECT_EQ(inner->Parent(), nullptr);
    Children[0]->Format(FormatList);
    EXPECT_EQ(Children[0]->ItemCount(), 0);
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(ItemEdit, DeleteRemovesWhatStandsAtTheStoredPosition) {
    SECSItemAccess::ItemIndex(*Children[0], 2);
    static_cast<void>(Children[0]->Delete());
    EXPECT_EQ(List->ItemCount(), 2);
    EXPECT_EQ(*List->begin(), Children[0]);
    EXPECT_EQ(Children[0]->Parent(), nullptr);
    EXPECT_EQ(Children[2]->ItemIndex(), 2);
    EXPECT_EQ(Children[1]->Parent(), List);
}

TEST_F(ItemEdit, DeleteWithAStoredPositionOutsideIsAFaultAndChangesNothing) {
    for (const std::int32_t index : {0, 4, -1, Limits::max(), Limits::min()}) {
        SECSItemAccess::ItemIndex(*Children[0], index);
        EXPECT_TRUE(Children[0]->Delete().IsEmpty());
        EXPECT_EQ(Site.Take(), (Reports{{9, "(SECSItem-Delete) Subscript out of range", 0}}));
        EXPECT_EQ(List->ItemCount(), 3);
        EXPECT_EQ(Children[0]->Parent(), List);
    }
}

}  // namespace
}  // namespace hexmire
