#include <hexmire/core/ModGeneral.h>
#include <hexmire/core/SECSItem.h>
#include <hexmire/core/SECSMessage.h>
#include <hexmire/core/detail/SECSItemAccess.h>

#include "../fakes/ErrorRecorder.h"
#include <gtest/gtest.h>

#include <cstdint>
#include <ctime>
#include <memory>
#include <vector>

namespace hexmire {
namespace {

using detail::SECSItemAccess;
using fakes::ErrorRecorder;

constexpr std::int32_t kDeep = 1000000;
constexpr std::int32_t kWide = 65536;

/// Lists in lists, `depth` of them below the item given; the last one is returned.
SECSItemPtr Nest(SECSItemPtr item, std::int32_t depth) {
    for (std::int32_t level = 0; level < depth; ++level) {
        item = item->AddNew(1);
        item->Format(FormatList);
    }
    return item;
}

SECSItemPtr NewList() {
    SECSItemPtr list = New<SECSItem>();
    list->Format(FormatList);
    return list;
}

std::int32_t Depth(SECSItemPtr item) {
    std::int32_t depth = 0;
    for (; item->ItemCount() > 0; item = item->Item(1))
        ++depth;
    return depth;
}

/// Processor seconds that a body takes, whatever else the machine does meanwhile.
template <class Body>
double Seconds(Body&& body) {
    const std::clock_t start = std::clock();
    body();
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

TEST(DeepTree, EndsWithoutRecursion) {
    SECSItemPtr root = NewList();
    const std::weak_ptr<SECSItem> last = Nest(root, kDeep);
    EXPECT_FALSE(last.expired());
    root.reset();
    EXPECT_TRUE(last.expired());
}

TEST(DeepTree, IsTornDownWithoutRecursion) {
    const SECSItemPtr root = NewList();
    const std::weak_ptr<SECSItem> last = Nest(root, kDeep / 4);
    SECSItemAccess::TearDown(*root);
    EXPECT_EQ(root->ItemCount(), 0);
    EXPECT_TRUE(last.expired());
}

TEST(DeepTree, EndsWithItsMessage) {
    SECSMessagePtr message = New<SECSMessage>();
    const SECSItemPtr last = Nest(message->Root(), kDeep / 4);
    const SECSItemPtr top = message->Item(1);
    message.reset();
    EXPECT_EQ(top->ItemCount(), 0);
    EXPECT_EQ(last->Parent(), nullptr);
}

TEST(DeepTree, IsCopiedWithoutRecursion) {
    ErrorRecorder site;
    const SECSItemPtr root = NewList();
    const SECSItemPtr top = Nest(root, 1);
    Nest(top, kDeep / 4)->Name("last");
    const SECSItemPtr copy = top->Duplicate().Object<SECSItem>();
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(Depth(copy), kDeep / 4);
    EXPECT_TRUE(site.Errors.empty());
}

TEST(DeepTree, BranchCanBeDeletedInTheMiddle) {
    const SECSItemPtr root = NewList();
    const SECSItemPtr middle = Nest(root, kDeep / 4);
    static_cast<void>(Nest(middle, kDeep / 4));
    static_cast<void>(middle->Delete());
    EXPECT_EQ(middle->Parent(), nullptr);
    EXPECT_EQ(Depth(middle), kDeep / 4);
    EXPECT_EQ(Depth(root), kDeep / 4 - 1);
}

TEST(DeepTree, InANonListItemEndsToo) {
    SECSItemPtr root = NewList();
    const SECSItemPtr top = Nest(root, 1);
    static_cast<void>(Nest(top, kDeep / 4));
    top->Format(FormatU1);
    const std::weak_ptr<SECSItem> watch = root;
    root.reset();
    EXPECT_TRUE(watch.expired());
    EXPECT_EQ(top->begin(), top->end());
}

TEST(WideList, IsBuiltAndReadInLinearTime) {
    const SECSItemPtr root = NewList();
    const double built = Seconds([&] {
        for (std::int32_t index = 1; index <= kWide; ++index)
            root->AddNew(index)->Value(index);
    });
    ASSERT_EQ(root->ItemCount(), kWide);
    std::int64_t sum = 0;
    const double read = Seconds([&] {
        for (std::int32_t index = 1; index <= kWide; ++index) {
            sum += root->Item(index)->Value().AsLong();
        }
    });
    EXPECT_EQ(sum, std::int64_t{kWide} * (kWide + 1) / 2);
    // Going through the children for each of them would take minutes.
    EXPECT_LT(built, 5.0);
    EXPECT_LT(read, 5.0);
}

TEST(WideList, StaysFastAfterTheFirstChildWasDeleted) {
    const SECSItemPtr root = NewList();
    for (std::int32_t index = 1; index <= kWide; ++index)
        static_cast<void>(root->AddNew(index));
    static_cast<void>(root->Item(1)->Delete());
    const double read = Seconds([&] {
        for (std::int32_t index = 1; index < kWide; ++index) {
            ASSERT_EQ(root->Item(index)->ItemIndex(), index);
        }
    });
    EXPECT_LT(read, 5.0);
}

TEST(WideList, MayBeExtendedWhileItIsWalked) {
    const SECSItemPtr root = NewList();
    for (std::int32_t index = 1; index <= kWide; ++index)
        static_cast<void>(root->AddNew(index));
    const double walked = Seconds([&] {
        for (const SECSItemPtr& child : *root) {
            static_cast<void>(child);
            static_cast<void>(root->AddNew(root->ItemCount() + 1));
        }
    });
    EXPECT_EQ(root->ItemCount(), 2 * kWide);
    EXPECT_LT(walked, 5.0);
}

TEST(WideList, IsCopiedInLinearTime) {
    const SECSItemPtr root = NewList();
    const SECSItemPtr list = Nest(root, 1);
    for (std::int32_t index = 1; index <= kWide; ++index)
        list->AddNew(index)->Value(index);
    SECSItemPtr copy;
    EXPECT_LT(Seconds([&] { copy = list->Duplicate().Object<SECSItem>(); }), 5.0);
    ASSERT_EQ(copy->ItemCount(), kWide);
    EXPECT_EQ(copy->Item(kWide)->Value(), Variant(kWide));
}

TEST(WideList, IsEmptiedFromItsEndInLinearTime) {
    const SECSItemPtr root = NewList();
    for (std::int32_t index = 1; index <= kWide; ++index)
        static_cast<void>(root->AddNew(index));
    const double emptied = Seconds([&] {
        while (root->ItemCount() > 0)
            static_cast<void>(root->Item(root->ItemCount())->Delete());
    });
    EXPECT_LT(emptied, 5.0);
}

}  // namespace
}  // namespace hexmire
