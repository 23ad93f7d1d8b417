#include <hexmire/core/SECSItem.h>
#include <hexmire/core/SECSMessage.h>

#include "ListOfThree.h"
#include <gtest/gtest.h>

#include <iterator>
#include <string>

// "For each" over an item's children while its body edits the tree.

namespace hexmire {
namespace {

class ItemWalk : public testing_items::ListOfThree {};

TEST_F(ItemWalk, GoesOverWhatWasThereWhenItBegan) {
    std::string seen;
    for (const SECSItemPtr& child : *List) {
        seen += child->Name();
        if (child->Name() == "A") {
            static_cast<void>(Children[1]->Delete());
            List->AddNew(1)->Name("new");
            List->AddNew(List->ItemCount() + 1)->Name("last");
        }
    }
    EXPECT_EQ(seen, "ABC");
    EXPECT_EQ(Order(), "new1 A2 C3 last4");
}

TEST_F(ItemWalk, SurvivesTheDeletionOfEverything) {
    std::string seen;
    Children.clear();
    for (const SECSItemPtr& child : *List) {
        static_cast<void>(child->Delete());
        seen += child->Name();
    }
    EXPECT_EQ(seen, "ABC");
    EXPECT_EQ(List->ItemCount(), 0);
}

TEST_F(ItemWalk, KeepsItsChildrenWhenTheListItselfEnds) {
    std::string seen;
    Children.clear();
    auto entry = List->begin();
    List.reset();
    for (; entry != std::default_sentinel; ++entry)
        seen += (*entry)->Name();
    EXPECT_EQ(seen, "ABC");
}

TEST_F(ItemWalk, TheNextOneSeesTheChangesOfTheFirst) {
    for (const SECSItemPtr& child : *List) {
        if (child->Name() != "B") static_cast<void>(child->Delete());
    }
    EXPECT_EQ(Order(), "B1");
}

TEST_F(ItemWalk, TwoWalksAtOnceDoNotDisturbEachOther) {
    std::string pairs;
    for (const SECSItemPtr& outer : *List) {
        for (const SECSItemPtr& inner : *List)
            pairs += outer->Name() + inner->Name() + " ";
        static_cast<void>(outer->Delete());
    }
    EXPECT_EQ(pairs, "AA AB AC BB BC CC ");
}

TEST_F(ItemWalk, DuplicatesOfItsChildrenAreNotVisited) {
    int visited = 0;
    for (const SECSItemPtr& child : *List) {
        static_cast<void>(child->Duplicate());
        ++visited;
    }
    EXPECT_EQ(visited, 3);
    EXPECT_EQ(Order(), "A1 A2 B3 B4 C5 C6");
    EXPECT_EQ(List->Item(1), Children[0]);
    EXPECT_EQ(List->Item(3), Children[1]);
    EXPECT_EQ(List->Item(5), Children[2]);
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(ItemWalk, ListDuplicatedIntoItsOwnParentIsCopiedAsItIsThen) {
    Children[1]->Format(FormatList);
    Children[1]->AddNew(1)->Name("x");
    for (const SECSItemPtr& child : *List) {
        if (child->Name() == "A") Children[1]->AddNew(2)->Name("y");
        if (child->Name() == "B") static_cast<void>(child->Duplicate());
        if (child->Name() == "C") Children[1]->AddNew(1)->Name("z");
    }
    EXPECT_EQ(Order(), "A1 B2 B3 C4");
    EXPECT_EQ(testing_items::OrderOf(*List->Item(2)), "z1 x2 y3");
    EXPECT_EQ(testing_items::OrderOf(*List->Item(3)), "x1 y2");
}

TEST_F(ItemWalk, InsertionInFrontOfEveryChildEnds) {
    for (const SECSItemPtr& child : *List)
        static_cast<void>(List->AddNew(child->ItemIndex()));
    EXPECT_EQ(Order(), "-1 A2 -3 B4 -5 C6");
}

TEST_F(ItemWalk, ChildrenAreLiveObjectsNotCopies) {
    std::string seen;
    for (const SECSItemPtr& child : *List) {
        seen += child->Name() + std::to_string(child->ItemIndex()) + " ";
        Children[2]->Name("last");
        if (child == Children[0]) static_cast<void>(Children[1]->Delete());
    }
    // B has left the list in the meantime, and C has moved up.
    EXPECT_EQ(seen, "A1 B1 last2 ");
}

TEST_F(ItemWalk, GoesOnWhenTheListBecomesAValue) {
    const SECSItemPtr outer = New<SECSItem>();
    outer->Format(FormatList);
    const SECSItemPtr list = outer->AddNew(1);
    list->Format(FormatList);
    list->AddNew(1)->Name("a");
    list->AddNew(2)->Name("b");
    std::string seen;
    for (const SECSItemPtr& child : *list) {
        list->Format(FormatAscii);
        seen += child->Name();
    }
    EXPECT_EQ(seen, "ab");
    // Children hidden behind another format are walked all the same.
    EXPECT_EQ(testing_items::OrderOf(*list), "a1 b2");
    EXPECT_EQ(list->ItemCount(), 0);
}

TEST_F(ItemWalk, SurvivesTheEndOfTheMessage) {
    SECSMessagePtr message = New<SECSMessage>();
    for (const char* name : {"a", "b"}) {
        const SECSItemPtr list = message->Root()->AddNew(message->Root()->ItemCount() + 1);
        list->Name(name);
        list->Format(FormatList);
        static_cast<void>(list->AddNew(1));
    }
    std::string seen;
    for (const SECSItemPtr& child : *message->Root()) {
        message.reset();
        seen += child->Name() + std::to_string(child->ItemCount());
        EXPECT_EQ(child->Parent(), nullptr);
    }
    EXPECT_EQ(seen, "a0b0");
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(ItemWalk, OfADeletedBranchGoesOverItsOwnChildren) {
    Children[1]->Format(FormatList);
    Children[1]->AddNew(1)->Name("x");
    Children[1]->AddNew(2)->Name("y");
    static_cast<void>(Children[1]->Delete());
    EXPECT_EQ(testing_items::OrderOf(*Children[1]), "x1 y2");
    for (const SECSItemPtr& child : *Children[1])
        static_cast<void>(child->Duplicate());
    EXPECT_EQ(testing_items::OrderOf(*Children[1]), "x1 x2 y3 y4");
}

TEST_F(ItemWalk, IteratorsAreCopiedAndCompared) {
    auto entry = List->begin();
    const auto first = entry++;
    EXPECT_EQ(*first, Children[0]);
    EXPECT_EQ(*entry, Children[1]);
    EXPECT_NE(first, entry);
    EXPECT_EQ(*++entry, Children[2]);
    EXPECT_FALSE(entry == List->end());
    EXPECT_TRUE(++entry == List->end());
    EXPECT_EQ(std::ranges::distance(*List), 3);
}

TEST_F(ItemWalk, OverNothingSeesNothingAddedMeanwhile) {
    const SECSItemPtr list = New<SECSItem>();
    list->Format(FormatList);
    const auto entry = list->begin();
    static_cast<void>(list->AddNew(1));
    EXPECT_TRUE(entry == list->end());
    EXPECT_FALSE(list->begin() == list->end());
}

}  // namespace
}  // namespace hexmire
