#include <hexmire/core/ModGeneral.h>
#include <hexmire/core/SECSItem.h>
#include <hexmire/core/detail/SECSItemAccess.h>

#include "../fakes/ErrorRecorder.h"
#include "../fakes/VariantText.h"
#include "ListOfThree.h"
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace hexmire {
namespace {

using detail::SECSItemAccess;
using fakes::ErrorRecorder;
using fakes::Show;
using ModGeneral::CreateDuplicateItem;
using Reports = ErrorRecorder::Reports;

/// "A<16,'x'> L[B<..> C<..>]" of a subtree: name, format, value, children.
std::string Tree(const SECSItemPtr& item) {
    std::string text =
        item->Name() + "<" + std::to_string(item->Format()) + "," + Show(item->Value()) + ">";
    if (item->ItemCount() == 0) return text;
    text += "[";
    for (const SECSItemPtr& child : *item) {
        text += std::to_string(child->ItemIndex()) + Tree(child);
    }
    return text + "]";
}

class ItemCopy : public testing_items::ListOfThree {
protected:
    ItemCopy() {
        // B is a list of a text and a list of one number.
        Children[1]->Format(FormatList);
        const SECSItemPtr text = Children[1]->AddNew(1);
        text->Name("t");
        text->Format(FormatAscii);
        text->Value("x");
        const SECSItemPtr inner = Children[1]->AddNew(2);
        inner->Name("i");
        inner->Format(FormatList);
        const SECSItemPtr number = inner->AddNew(1);
        number->Name("n");
        number->Format(FormatU1);
        number->Value(std::vector<std::int16_t>{1, 2});
    }

    /// A child of another list, to copy into.
    SECSItemPtr Target() {
        Other = New<SECSItem>();
        Other->Format(FormatList);
        return Other->AddNew(1);
    }

    SECSItemPtr Other;
};

TEST_F(ItemCopy, DuplicateStandsRightBehindItsSource) {
    const Variant result = Children[1]->Duplicate();
    const SECSItemPtr copy = result.Object<SECSItem>();
    ASSERT_NE(copy, nullptr);
    EXPECT_TRUE(result.IsObject());
    EXPECT_EQ(List->ItemCount(), 4);
    EXPECT_EQ(List->Item(3), copy);
    EXPECT_EQ(copy->ItemIndex(), 3);
    EXPECT_EQ(Children[2]->ItemIndex(), 4);
    EXPECT_EQ(Children[1]->ItemIndex(), 2);
    EXPECT_EQ(copy->Parent(), List);
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(ItemCopy, DuplicateHoldsTheWholeSubtreeAndSharesNothing) {
    const SECSItemPtr copy = Children[1]->Duplicate().Object<SECSItem>();
    EXPECT_EQ(Tree(copy), Tree(Children[1]));
    EXPECT_EQ(Tree(copy), "B<0,Empty>[1t<16,String 'x'>2i<0,Empty>[1n<41,Integer[1, 2]>]]");
    EXPECT_NE(copy->Item(1), Children[1]->Item(1));
    EXPECT_NE(copy->Item(2)->Item(1), Children[1]->Item(2)->Item(1));
    EXPECT_EQ(copy->Item(2)->Parent(), copy);
    EXPECT_EQ(copy->Item(2)->Item(1)->Parent(), copy->Item(2));
}

TEST_F(ItemCopy, EditsOfTheDuplicateLeaveTheSource) {
    const std::string before = Tree(Children[1]);
    const SECSItemPtr copy = Children[1]->Duplicate().Object<SECSItem>();
    copy->Item(1)->Value("changed");
    copy->Item(2)->Item(1)->Name("other");
    static_cast<void>(copy->Item(2)->AddNew(1));
    static_cast<void>(copy->Item(1)->Delete());
    EXPECT_EQ(Tree(Children[1]), before);
    static_cast<void>(Children[1]->Item(1)->Delete());
    EXPECT_EQ(copy->ItemCount(), 1);
}

TEST_F(ItemCopy, DuplicateOfTheLastIsTheLast) {
    const SECSItemPtr copy = Children[2]->Duplicate().Object<SECSItem>();
    EXPECT_EQ(List->Item(4), copy);
    EXPECT_EQ(copy->ItemIndex(), 4);
}

TEST_F(ItemCopy, DuplicateOfADuplicateFollowsIt) {
    const SECSItemPtr first = Children[0]->Duplicate().Object<SECSItem>();
    const SECSItemPtr second = Children[0]->Duplicate().Object<SECSItem>();
    EXPECT_EQ(second->ItemIndex(), 2);
    EXPECT_EQ(first->ItemIndex(), 3);
    const SECSItemPtr third = first->Duplicate().Object<SECSItem>();
    EXPECT_EQ(third->ItemIndex(), 4);
    EXPECT_EQ(List->ItemCount(), 6);
}

TEST_F(ItemCopy, DuplicateOfARootIsRefused) {
    const Reports refused{{1133,
                           "(SECSItem-Duplicate) The Duplicate method cannot be used on the Root "
                           "item.",
                           0}};
    EXPECT_TRUE(List->Duplicate().IsEmpty());
    EXPECT_EQ(Site.Take(), refused);
    static_cast<void>(Children[0]->Delete());
    EXPECT_TRUE(Children[0]->Duplicate().IsEmpty());
    EXPECT_EQ(Site.Take(), refused);
    EXPECT_EQ(List->ItemCount(), 2);
}

TEST_F(ItemCopy, DuplicateIsInsertedBehindTheStoredPosition) {
    SECSItemAccess::ItemIndex(*Children[0], 2);
    const SECSItemPtr copy = Children[0]->Duplicate().Object<SECSItem>();
    EXPECT_EQ(copy->ItemIndex(), 3);
    EXPECT_EQ(List->Item(3), copy);
    EXPECT_EQ(Children[0]->ItemIndex(), 1);
}

TEST_F(ItemCopy, AllFieldsAreCopied) {
    const SECSItemPtr& source = Children[0];
    source->Description("what it is");
    source->Format(FormatU4);
    source->NLB(3);
    source->Value(7);
    SECSItemAccess::Length(*source, 300);
    SECSItemAccess::KeepRaw(*source, std::vector<std::uint8_t>{7});
    const SECSItemPtr copy = source->Duplicate().Object<SECSItem>();
    EXPECT_EQ(copy->Description(), "what it is");
    EXPECT_EQ(copy->Format(), FormatU4);
    EXPECT_EQ(copy->NLB(), 3);
    EXPECT_EQ(copy->Length(), 300);
    EXPECT_EQ(copy->Name(), "A");
    EXPECT_EQ(Show(copy->Value()), "Long 7");
    EXPECT_EQ(Show(copy->Raw()), "Byte[7]");
}

TEST_F(ItemCopy, ChildrenThatAListHidesBehindAnotherFormatAreNotCopied) {
    Children[1]->Format(FormatAscii);
    const SECSItemPtr copy = Children[1]->Duplicate().Object<SECSItem>();
    copy->Format(FormatList);
    EXPECT_EQ(copy->ItemCount(), 0);
    Children[1]->Format(FormatList);
    EXPECT_EQ(Children[1]->ItemCount(), 2);
}

TEST_F(ItemCopy, ObjectsInValuesAreSharedNotCloned) {
    const auto object = std::make_shared<int>(5);
    Children[0]->Value(object);
    const SECSItemPtr copy = Children[0]->Duplicate().Object<SECSItem>();
    EXPECT_EQ(copy->Value().Object<int>(), object);
}

TEST_F(ItemCopy, CopyIntoATargetTakesTheStoredPositionWithoutRenumbering) {
    const SECSItemPtr target = Target();
    CreateDuplicateItem(target, Children[2]);
    EXPECT_EQ(target->ItemIndex(), 3);
    EXPECT_EQ(target->Name(), "C");
    EXPECT_EQ(target->Parent(), Other);
    EXPECT_EQ(Other->Item(1), nullptr);
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(ItemCopy, EmptyFieldsOfTheSourceLeaveThoseOfTheTarget) {
    const SECSItemPtr target = Target();
    target->Name("kept");
    target->Description("kept too");
    target->Value("old");
    target->NLB(2);
    SECSItemAccess::KeepRaw(*target, 5);
    SECSItemAccess::Length(*target, 9);
    const SECSItemPtr source = List->AddNew(4);
    CreateDuplicateItem(target, source);
    EXPECT_EQ(target->Name(), "kept");
    EXPECT_EQ(target->Description(), "kept too");
    EXPECT_EQ(Show(target->Value()), "String 'old'");
    EXPECT_EQ(Show(target->Raw()), "Long 5");
    EXPECT_EQ(target->NLB(), 0);
    EXPECT_EQ(target->Length(), 0);
}

TEST_F(ItemCopy, OnlyTheEmptyValueIsLeftOut) {
    for (const Variant& value : {Variant::Null(),
                                 Variant(""),
                                 Variant(std::vector<std::uint8_t>{}),
                                 Variant(0),
                                 Variant(false)}) {
        const SECSItemPtr target = Target();
        target->Value("old");
        SECSItemAccess::KeepRaw(*target, "old");
        Children[0]->Value(value);
        SECSItemAccess::KeepRaw(*Children[0], value);
        CreateDuplicateItem(target, Children[0]);
        EXPECT_EQ(target->Value(), value);
        EXPECT_EQ(target->Raw(), value);
    }
}

TEST_F(ItemCopy, TargetWithoutParentTakesListsOnly) {
    const SECSItemPtr target = New<SECSItem>();
    Children[0]->Format(FormatAscii);
    Children[0]->Value("v");
    CreateDuplicateItem(target, Children[0]);
    ASSERT_EQ(Site.Errors.size(), 1U);
    EXPECT_EQ(Site.Take()[0].Code, 1001);
    EXPECT_EQ(target->Format(), FormatVar);
    EXPECT_EQ(target->Name(), "A");
    EXPECT_EQ(Show(target->Value()), "String 'v'");
    CreateDuplicateItem(target, Children[1]);
    EXPECT_TRUE(Site.Errors.empty());
    EXPECT_EQ(target->Format(), FormatList);
    EXPECT_EQ(target->ItemCount(), 2);
}

TEST_F(ItemCopy, ChildrenAreAppendedBehindThoseOfTheTarget) {
    const SECSItemPtr target = Target();
    target->Format(FormatList);
    target->AddNew(1)->Name("first");
    CreateDuplicateItem(target, Children[1]);
    EXPECT_EQ(target->ItemCount(), 3);
    // The last copy keeps the position that its source stored: nothing renumbers behind it.
    EXPECT_EQ(Tree(target),
              "B<0,Empty>[1first<63,Empty>2t<16,String 'x'>2i<0,Empty>[1n<41,Integer[1, 2]>]]");
    EXPECT_EQ(target->Item(2)->Name(), "t");
    EXPECT_EQ(target->Item(3), nullptr);
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(ItemCopy, CopyOfAListIntoItselfDoublesItsChildren) {
    CreateDuplicateItem(Children[1], Children[1]);
    EXPECT_EQ(Children[1]->ItemCount(), 4);
    std::string names;
    for (const SECSItemPtr& child : *Children[1])
        names += child->Name();
    EXPECT_EQ(names, "titi");
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(ItemCopy, ChildrenAreTakenByTheirStoredPositions) {
    SECSItemAccess::ItemIndex(*Children[1]->Item(1), 2);
    const SECSItemPtr copy = Children[1]->Duplicate().Object<SECSItem>();
    // Nobody is at position 1, and two are at position 2.
    EXPECT_EQ(Site.Take(),
              (Reports{{91,
                        "(ModGeneral-CreateDuplicateItem) Object variable or With block variable "
                        "not set",
                        0}}));
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(Tree(copy), "B<0,Empty>[1<63,Empty>2t<16,String 'x'>]");
}

TEST_F(ItemCopy, MissingItemIsAFault) {
    const Reports fault{{91,
                         "(ModGeneral-CreateDuplicateItem) Object variable or With block variable "
                         "not set",
                         0}};
    CreateDuplicateItem(nullptr, Children[0]);
    EXPECT_EQ(Site.Take(), fault);
    CreateDuplicateItem(Target(), nullptr);
    EXPECT_EQ(Site.Take(), fault);
    CreateDuplicateItem(nullptr, nullptr);
    EXPECT_EQ(Site.Take(), fault);
}

TEST_F(ItemCopy, CopiedChildrenAreNumberedFromOne) {
    const SECSItemPtr copy = Children[1]->Duplicate().Object<SECSItem>();
    EXPECT_EQ(copy->Item(1)->ItemIndex(), 1);
    EXPECT_EQ(copy->Item(2)->ItemIndex(), 2);
    EXPECT_EQ(copy->Item("i")->Item("N")->ItemIndex(), 1);
}

TEST_F(ItemCopy, DuplicateOutlivesItsSource) {
    const SECSItemPtr copy = Children[1]->Duplicate().Object<SECSItem>();
    const std::string tree = Tree(copy);
    SECSItemAccess::TearDown(*Children[1]);
    static_cast<void>(Children[1]->Delete());
    Children.clear();
    EXPECT_EQ(Tree(copy), tree);
}

}  // namespace
}  // namespace hexmire
