#include <hexmire/core/ModGeneral.h>
#include <hexmire/core/SECSItem.h>
#include <hexmire/core/SECSMessage.h>
#include <hexmire/core/detail/SECSItemAccess.h>

#include "../fakes/ErrorRecorder.h"
#include <gtest/gtest.h>

#include <string>

// Which control hears of an error: the maker of the object, or for objects that a host makes by
// itself and for free routines the control created last.
namespace hexmire {
namespace {

using fakes::ErrorRecorder;
using ModGeneral::lLBitShift;

/// Reports 6.
void FreeFault() { static_cast<void>(lLBitShift(1, 31)); }

class ErrorOwner : public testing::Test {
protected:
    void Expect(std::size_t first, std::size_t second) {
        EXPECT_EQ(First.Take().size(), first);
        EXPECT_EQ(Second.Take().size(), second);
    }
    ErrorRecorder First;
    ErrorRecorder Second;
};

TEST_F(ErrorOwner, ObjectsReportToTheirMaker) {
    First.Make<SECSItem>()->NLB(9);
    Expect(1, 0);
    Second.Make<SECSItem>()->NLB(9);
    Expect(0, 1);
    First.Make<SECSMessage>()->Stream(-1);
    Expect(1, 0);
}

TEST_F(ErrorOwner, ObjectsOfTheHostReportToTheControlCreatedLast) {
    New<SECSItem>()->NLB(9);
    New<SECSMessage>()->Stream(-1);
    Expect(0, 2);
}

TEST_F(ErrorOwner, ObjectsOfTheHostFollowTheLastLivingControl) {
    const SECSItemPtr item = New<SECSItem>();
    item->NLB(9);
    Expect(0, 1);
    Second.End();
    item->NLB(9);
    Expect(1, 0);
    ErrorRecorder third;
    item->NLB(9);
    Expect(0, 0);
    EXPECT_EQ(third.Errors.size(), 1U);
}

TEST_F(ErrorOwner, ChildrenTakeTheMakerOfTheirParent) {
    const SECSItemPtr list = First.Make<SECSItem>();
    list->Format(FormatList);
    const SECSItemPtr child = list->AddNew(1);
    child->NLB(9);
    Expect(1, 0);
    child->Format(FormatList);
    child->AddNew(1)->NLB(9);
    Expect(1, 0);
}

TEST_F(ErrorOwner, CopiesTakeTheMakerOfTheirSource) {
    const SECSItemPtr list = First.Make<SECSItem>();
    list->Format(FormatList);
    const SECSItemPtr child = list->AddNew(1);
    child->Format(FormatList);
    static_cast<void>(child->AddNew(1));
    const SECSItemPtr copy = child->Duplicate().Object<SECSItem>();
    copy->NLB(9);
    copy->Item(1)->NLB(9);
    Expect(2, 0);
}

TEST_F(ErrorOwner, FaultWhileAnItemIsCopiedGoesToItsMaker) {
    const SECSItemPtr list = First.Make<SECSItem>();
    list->Format(FormatList);
    const SECSItemPtr child = list->AddNew(1);
    child->Format(FormatList);
    detail::SECSItemAccess::ItemIndex(*child->AddNew(1), 5);
    static_cast<void>(child->Duplicate());
    const auto errors = First.Take();
    ASSERT_EQ(errors.size(), 1U);
    EXPECT_EQ(errors[0].Code, 91);
    EXPECT_TRUE(Second.Errors.empty());
}

TEST_F(ErrorOwner, DeletedItemKeepsItsMaker) {
    const SECSItemPtr list = First.Make<SECSItem>();
    list->Format(FormatList);
    const SECSItemPtr child = list->AddNew(1);
    static_cast<void>(child->Delete());
    child->NLB(9);
    static_cast<void>(child->Delete());
    Expect(2, 0);
}

TEST_F(ErrorOwner, ItemsOfAMessageHaveItsMaker) {
    const SECSMessagePtr message = First.Make<SECSMessage>();
    message->Root()->Format(FormatAscii);
    message->Root()->AddNew(1)->NLB(9);
    static_cast<void>(message->Item("none"));
    Expect(3, 0);
}

TEST_F(ErrorOwner, ItemThatOutlivesItsMessageKeepsItsMaker) {
    SECSMessagePtr message = First.Make<SECSMessage>();
    const SECSItemPtr child = message->Root()->AddNew(1);
    message.reset();
    child->NLB(9);
    Expect(1, 0);
}

TEST_F(ErrorOwner, ErrorsAfterTheMakersEndAreDropped) {
    const SECSItemPtr item = First.Make<SECSItem>();
    const SECSMessagePtr message = First.Make<SECSMessage>();
    First.End();
    item->NLB(9);
    item->Format(7);
    message->Stream(500);
    static_cast<void>(message->Item(1));
    Expect(0, 0);
    EXPECT_EQ(item->NLB(), 0);
    EXPECT_EQ(message->Stream(), 0);
}

TEST_F(ErrorOwner, EveryRefusalAfterTheMakersEndIsSilentAndChangesNothing) {
    const SECSMessagePtr message = First.Make<SECSMessage>();
    const SECSItemPtr root = message->Root();
    const SECSItemPtr child = root->AddNew(1);
    child->Format(FormatAscii);
    First.End();
    EXPECT_EQ(root->AddNew(0), nullptr);
    EXPECT_EQ(child->AddNew(1), nullptr);
    EXPECT_EQ(root->Item(2), nullptr);
    EXPECT_EQ(child->Item("x"), nullptr);
    EXPECT_EQ(message->Item(2.0), nullptr);
    EXPECT_TRUE(root->Delete().IsEmpty());
    EXPECT_TRUE(root->Duplicate().IsEmpty());
    root->Format(FormatAscii);
    message->Func(256);
    Expect(0, 0);
    EXPECT_EQ(root->ItemCount(), 1);
    EXPECT_EQ(root->Format(), FormatList);
    EXPECT_EQ(message->Func(), 1);
}

TEST_F(ErrorOwner, TreesAreCopiedAndTakenApartAfterTheMakersEnd) {
    const SECSMessagePtr message = First.Make<SECSMessage>();
    const SECSItemPtr child = message->Root()->AddNew(1);
    child->Format(FormatList);
    static_cast<void>(child->AddNew(1));
    First.End();
    const SECSItemPtr copy = child->Duplicate().Object<SECSItem>();
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->ItemCount(), 1);
    static_cast<void>(child->Delete());
    EXPECT_EQ(message->Root()->ItemCount(), 1);
    copy->Item(1)->NLB(9);
    Expect(0, 0);
}

TEST_F(ErrorOwner, ObjectsGoOnWorkingAfterTheMakersEnd) {
    const SECSMessagePtr message = First.Make<SECSMessage>();
    First.End();
    message->Stream(5);
    const SECSItemPtr item = message->Root()->AddNew(1);
    ASSERT_NE(item, nullptr);
    item->Format(FormatAscii);
    item->Name("a");
    EXPECT_EQ(message->Item("A"), item);
    item->NLB(9);
    Expect(0, 0);
}

TEST_F(ErrorOwner, FreeRoutinesReportToTheControlCreatedLast) {
    FreeFault();
    Expect(0, 1);
    Second.End();
    FreeFault();
    Expect(1, 0);
    First.End();
    FreeFault();
    Expect(0, 0);
}

TEST_F(ErrorOwner, FreeRoutinesInsideAHandlerReportToTheControlWhoseRoutineRuns) {
    const SECSItemPtr item = First.Make<SECSItem>();
    First.OnError = [&] {
        First.OnError = nullptr;
        FreeFault();
    };
    item->NLB(9);
    Expect(2, 0);
    FreeFault();
    Expect(0, 1);
}

TEST_F(ErrorOwner, NestedHandlersReturnToTheOuterControl) {
    const SECSItemPtr ofFirst = First.Make<SECSItem>();
    const SECSItemPtr ofSecond = Second.Make<SECSItem>();
    Second.OnError = [&] {
        Second.OnError = nullptr;
        FreeFault();
    };
    First.OnError = [&] {
        First.OnError = nullptr;
        ofSecond->NLB(9);
        FreeFault();
    };
    ofFirst->NLB(9);
    EXPECT_EQ(First.Take().size(), 2U);
    EXPECT_EQ(Second.Take().size(), 2U);
}

TEST_F(ErrorOwner, FaultInsideAnItemsRoutineGoesToItsMaker) {
    const SECSItemPtr list = First.Make<SECSItem>();
    list->Format(FormatList);
    const SECSItemPtr child = list->AddNew(1);
    child->Format(FormatAscii);
    // The target cannot take the format: the setter's own error, in the setter's name.
    const SECSItemPtr target = First.Make<SECSItem>();
    ModGeneral::CreateDuplicateItem(target, child);
    const auto errors = First.Take();
    ASSERT_EQ(errors.size(), 1U);
    EXPECT_EQ(errors[0].Text.substr(0, 21), "(SECSItem-Let Format)");
    EXPECT_TRUE(Second.Errors.empty());
}

TEST(ErrorsWithoutAnyControl, AreDroppedAndEverythingWorks) {
    const SECSMessagePtr message = New<SECSMessage>();
    message->Stream(200);
    message->Stream(6);
    EXPECT_EQ(message->Stream(), 6);
    const SECSItemPtr item = message->Root()->AddNew(1);
    item->Format(7);
    EXPECT_EQ(item->Format(), FormatVar);
    EXPECT_EQ(message->Item(2), nullptr);
    EXPECT_EQ(lLBitShift(1, 31), 0);
    EXPECT_TRUE(message->Root()->Delete().IsEmpty());
}

TEST(ErrorsWithoutAnyControl, ObjectsMadeBeforeTheFirstControlReportToItLater) {
    const SECSItemPtr item = New<SECSItem>();
    item->NLB(9);
    ErrorRecorder site;
    item->NLB(9);
    EXPECT_EQ(site.Errors.size(), 1U);
}

}  // namespace
}  // namespace hexmire
