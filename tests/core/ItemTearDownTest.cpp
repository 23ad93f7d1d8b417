#include <hexmire/core/SECSItem.h>
#include <hexmire/core/SECSMessage.h>
#include <hexmire/core/detail/SECSItemAccess.h>

#include "../fakes/ErrorRecorder.h"
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace hexmire {
namespace {

using detail::SECSItemAccess;
using fakes::ErrorRecorder;
using Reports = ErrorRecorder::Reports;

SECSItemPtr NewList() {
    SECSItemPtr list = New<SECSItem>();
    list->Format(FormatList);
    return list;
}

SECSItemPtr AddList(const SECSItemPtr& parent) {
    SECSItemPtr list = parent->AddNew(parent->ItemCount() + 1);
    list->Format(FormatList);
    return list;
}

TEST(ItemTearDown, EmptiesTheWholeTree) {
    ErrorRecorder site;
    const SECSItemPtr root = NewList();
    const SECSItemPtr first = AddList(root);
    const SECSItemPtr second = AddList(root);
    const SECSItemPtr inner = AddList(second);
    static_cast<void>(AddList(inner));
    SECSItemAccess::TearDown(*root);
    EXPECT_EQ(root->ItemCount(), 0);
    EXPECT_EQ(first->ItemCount(), 0);
    EXPECT_EQ(second->ItemCount(), 0);
    EXPECT_EQ(inner->ItemCount(), 0);
    EXPECT_TRUE(root->begin() == root->end());
    EXPECT_TRUE(site.Errors.empty());
}

TEST(ItemTearDown, LeavesEverythingButTheChildren) {
    const SECSItemPtr root = NewList();
    const SECSItemPtr child = AddList(root);
    child->Name("child");
    child->Value(5);
    SECSItemAccess::TearDown(*root);
    EXPECT_EQ(root->Format(), FormatList);
    EXPECT_EQ(child->Name(), "child");
    EXPECT_EQ(child->Value(), Variant(5));
    EXPECT_EQ(child->Format(), FormatList);
}

TEST(ItemTearDown, ReachesChildrenHiddenBehindAnotherFormat) {
    const SECSItemPtr root = NewList();
    const SECSItemPtr child = AddList(root);
    const std::weak_ptr<SECSItem> inner = AddList(child);
    child->Format(FormatU1);
    SECSItemAccess::TearDown(*root);
    EXPECT_TRUE(inner.expired());
}

/// Notes its own end.
struct Witness {
    Witness(std::string& log, char mark) : Log(log), Mark(mark) {}
    Witness(const Witness&) = delete;
    Witness& operator=(const Witness&) = delete;
    ~Witness() { Log += Mark; }
    std::string& Log;
    char Mark;
};

TEST(ItemTearDown, GoesDepthFirstInOrder) {
    std::string log;
    const SECSItemPtr root = NewList();
    const auto add = [&log](const SECSItemPtr& parent, char mark) {
        SECSItemPtr list = AddList(parent);
        list->Value(std::make_shared<Witness>(log, mark));
        return list;
    };
    {
        const SECSItemPtr a = add(root, 'a');
        static_cast<void>(add(add(a, 'b'), 'c'));
        static_cast<void>(add(a, 'd'));
        static_cast<void>(add(add(root, 'e'), 'f'));
    }
    SECSItemAccess::TearDown(*root);
    EXPECT_EQ(log, "cbdafe");
}

TEST(ItemTearDown, TwiceIsOnce) {
    ErrorRecorder site;
    const SECSItemPtr root = NewList();
    static_cast<void>(AddList(root));
    SECSItemAccess::TearDown(*root);
    SECSItemAccess::TearDown(*root);
    EXPECT_EQ(root->ItemCount(), 0);
    EXPECT_TRUE(site.Errors.empty());
}

TEST(ItemTearDown, ListTakesChildrenAgainAfterwards) {
    const SECSItemPtr root = NewList();
    static_cast<void>(AddList(root));
    SECSItemAccess::TearDown(*root);
    const SECSItemPtr child = root->AddNew(1);
    ASSERT_NE(child, nullptr);
    EXPECT_EQ(root->Item(1), child);
}

TEST(ItemTearDown, ChildThatWasTornOffCannotBeDeletedFromTheEmptyList) {
    ErrorRecorder site;
    const SECSItemPtr root = NewList();
    const SECSItemPtr child = AddList(root);
    SECSItemAccess::TearDown(*root);
    EXPECT_EQ(child->Parent(), root);
    static_cast<void>(child->Delete());
    EXPECT_EQ(site.Errors, (Reports{{9, "(SECSItem-Delete) Subscript out of range", 0}}));
}

TEST(ItemTearDown, ChildThatWasTornOffCannotBeDuplicatedIntoTheEmptyList) {
    ErrorRecorder site;
    const SECSItemPtr root = NewList();
    const SECSItemPtr child = AddList(root);
    SECSItemAccess::TearDown(*root);
    EXPECT_TRUE(child->Duplicate().IsEmpty());
    EXPECT_EQ(site.Errors, (Reports{{9, "(SECSItem-Duplicate) Subscript out of range", 0}}));
    EXPECT_EQ(root->ItemCount(), 0);
    // The attempt left the numbering alone.
    const SECSItemPtr first = root->AddNew(1);
    const SECSItemPtr second = root->AddNew(2);
    EXPECT_EQ(root->Item(1), first);
    EXPECT_EQ(root->Item(2), second);
}

TEST(ItemTearDown, WalkInProgressKeepsItsEntries) {
    const SECSItemPtr root = NewList();
    static_cast<void>(AddList(root));
    static_cast<void>(AddList(root));
    int seen = 0;
    for (const SECSItemPtr& child : *root) {
        SECSItemAccess::TearDown(*root);
        EXPECT_NE(child, nullptr);
        ++seen;
    }
    EXPECT_EQ(seen, 2);
}

TEST(ItemEnd, FreesTheTreeThoughChildrenPointBack) {
    std::vector<std::weak_ptr<SECSItem>> watched;
    {
        const SECSItemPtr root = NewList();
        const SECSItemPtr child = AddList(root);
        watched = {root, child, AddList(child)};
    }
    for (const auto& item : watched)
        EXPECT_TRUE(item.expired());
}

TEST(ItemEnd, TearsDownTheBranchThatAHostStillHolds) {
    SECSItemPtr held;
    {
        const SECSItemPtr root = NewList();
        held = AddList(root);
        held->Name("held");
        static_cast<void>(AddList(held));
    }
    EXPECT_EQ(held->ItemCount(), 0);
    EXPECT_EQ(held->Name(), "held");
    EXPECT_EQ(held->Parent(), nullptr);
}

TEST(ItemEnd, HeldChildIsARootAfterItsParentsEnd) {
    ErrorRecorder site;
    SECSItemPtr root = NewList();
    static_cast<void>(AddList(root));
    const SECSItemPtr held = root->AddNew(2);
    held->Format(FormatAscii);
    EXPECT_EQ(held->ItemIndex(), 2);
    root.reset();
    EXPECT_EQ(held->ItemIndex(), 1);
    EXPECT_TRUE(held->Delete().IsEmpty());
    EXPECT_TRUE(held->Duplicate().IsEmpty());
    held->Format(FormatAscii);
    ASSERT_EQ(site.Errors.size(), 3U);
    EXPECT_EQ(site.Errors[0].Code, 1079);
    EXPECT_EQ(site.Errors[1].Code, 1133);
    EXPECT_EQ(site.Errors[2].Code, 1001);
    held->Format(FormatList);
    EXPECT_NE(held->AddNew(1), nullptr);
    EXPECT_EQ(site.Errors.size(), 3U);
}

TEST(ItemEnd, HeldChildAloneDoesNotKeepItsParent) {
    SECSItemPtr root = NewList();
    const std::weak_ptr<SECSItem> watch = root;
    const SECSItemPtr held = AddList(AddList(root));
    root.reset();
    EXPECT_TRUE(watch.expired());
    EXPECT_EQ(held->Parent(), nullptr);
}

TEST(ItemEnd, BranchBelowAHeldOneGoesWithTheRoot) {
    SECSItemPtr root = NewList();
    const SECSItemPtr held = AddList(root);
    const SECSItemPtr inner = AddList(held);
    root.reset();
    EXPECT_EQ(held->ItemCount(), 0);
    EXPECT_EQ(inner->Parent(), held);
}

TEST(ItemEnd, ReleasesTheObjectInItsValue) {
    auto object = std::make_shared<int>(1);
    const std::weak_ptr<int> watch = object;
    SECSItemPtr item = New<SECSItem>();
    item->Value(std::move(object));
    item.reset();
    EXPECT_TRUE(watch.expired());
}

TEST(ItemEnd, ValuesThatReferUpwardsDoNotKeepATreeAliveBehindItsMessage) {
    SECSMessagePtr message = New<SECSMessage>();
    const std::weak_ptr<SECSItem> root = message->Root();
    const std::weak_ptr<SECSItem> list = AddList(message->Root());
    list.lock()->AddNew(1)->Value(message->Root());
    list.lock()->AddNew(2)->Value(list.lock());
    message.reset();
    EXPECT_TRUE(root.expired());
    EXPECT_TRUE(list.expired());
}

TEST(ItemEnd, ReportsNothing) {
    ErrorRecorder site;
    SECSItemPtr root = NewList();
    static_cast<void>(AddList(AddList(root)));
    root.reset();
    EXPECT_TRUE(site.Errors.empty());
}

TEST(ItemEnd, DeletedBranchLivesOnWithItsSubtree) {
    SECSItemPtr branch;
    {
        const SECSItemPtr root = NewList();
        branch = AddList(root);
        static_cast<void>(AddList(branch));
        static_cast<void>(branch->Delete());
    }
    EXPECT_EQ(branch->ItemCount(), 1);
}

TEST(AllItems, GivesTheChildrenThemselves) {
    const SECSItemPtr root = NewList();
    const SECSItemPtr child = AddList(root);
    const auto children = SECSItemAccess::AllItems(*root);
    ASSERT_NE(children, nullptr);
    ASSERT_EQ(children->size(), 1U);
    EXPECT_EQ(children->front(), child);
}

TEST(AllItems, ReplacesTheCollectionAsItStands) {
    const SECSItemPtr root = NewList();
    static_cast<void>(AddList(root));
    const SECSItemPtr other = NewList();
    const SECSItemPtr first = AddList(other);
    const SECSItemPtr second = AddList(other);
    SECSItemAccess::AllItems(*root, {second, first});
    EXPECT_EQ(root->ItemCount(), 2);
    EXPECT_EQ(*root->begin(), second);
    EXPECT_EQ(root->Item(1), first);
    EXPECT_EQ(root->Item(2), second);
    EXPECT_EQ(first->Parent(), other);
    static_cast<void>(root->AddNew(3));
    EXPECT_EQ(second->ItemIndex(), 1);
    EXPECT_EQ(first->ItemIndex(), 2);
    EXPECT_EQ(root->Item(1), second);
}

TEST(AllItems, EmptyCollectionLeavesNoChildren) {
    ErrorRecorder site;
    const SECSItemPtr root = NewList();
    static_cast<void>(AddList(root));
    SECSItemAccess::AllItems(*root, {});
    EXPECT_EQ(root->ItemCount(), 0);
    EXPECT_EQ(root->Item(1), nullptr);
    EXPECT_EQ(site.Errors.at(0).Code, 1004);
}

TEST(ParentLink, StoredByTheLibraryAlone) {
    const SECSItemPtr root = NewList();
    const SECSItemPtr item = New<SECSItem>();
    SECSItemAccess::Parent(*item, root);
    EXPECT_EQ(item->Parent(), root);
    EXPECT_EQ(root->ItemCount(), 0);
    item->Format(FormatAscii);
    EXPECT_EQ(item->Format(), FormatAscii);
    SECSItemAccess::Parent(*item, nullptr);
    EXPECT_EQ(item->Parent(), nullptr);
}

}  // namespace
}  // namespace hexmire
