#include <hexmire/core/SECSItem.h>
#include <hexmire/core/detail/SECSItemAccess.h>
#include <hexmire/support/Text.h>

#include "../fakes/ErrorRecorder.h"
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

// Long lists find their children by name as short ones do: the first one of that name.

namespace hexmire {
namespace {

using detail::SECSItemAccess;
using fakes::ErrorRecorder;

constexpr int kLong = 100;

SECSItemPtr NewList() {
    SECSItemPtr list = New<SECSItem>();
    list->Format(FormatList);
    return list;
}

SECSItemPtr Append(const SECSItemPtr& list, const std::string& name) {
    SECSItemPtr child = list->AddNew(list->ItemCount() + 1);
    child->Name(name);
    return child;
}

SECSItemPtr Named(const std::string& prefix, int count) {
    SECSItemPtr list = NewList();
    for (int index = 1; index <= count; ++index)
        Append(list, prefix + std::to_string(index));
    return list;
}

/// So many lookups that the list has noted its names.
void LookUpOften(const SECSItemPtr& list) {
    for (int time = 0; time < 20; ++time)
        static_cast<void>(list->Item("nobody"));
}

SECSItemPtr Walked(const SECSItemPtr& list, const std::string& name) {
    for (const SECSItemPtr& child : *list) {
        if (EqualsIgnoringCase(child->Name(), name)) return child;
    }
    return nullptr;
}

TEST(ChildNames, EveryChildOfALongListIsFoundInAnyLetterCase) {
    ErrorRecorder site;
    const SECSItemPtr list = Named("Name", kLong);
    for (int round = 0; round < 3; ++round) {
        for (int index = 1; index <= kLong; ++index)
            EXPECT_EQ(list->Item("nAmE" + std::to_string(index)), list->Item(index));
    }
    EXPECT_TRUE(site.Errors.empty());
    EXPECT_EQ(list->Item("Name"), nullptr);
    EXPECT_EQ(list->Item(" Name1"), nullptr);
    ASSERT_EQ(site.Errors.size(), 2U);
    EXPECT_EQ(site.Errors[0].Code, 1009);
}

TEST(ChildNames, TheFirstOfANameIsFoundAfterEveryKindOfChange) {
    ErrorRecorder site;
    const SECSItemPtr list = Named("n", kLong);
    LookUpOften(list);
    const SECSItemPtr twin = Append(list, "N50");
    EXPECT_EQ(list->Item("n50"), list->Item(50));
    LookUpOften(list);
    list->Item(50)->Name("other");
    EXPECT_EQ(list->Item("n50"), twin);
    LookUpOften(list);
    const SECSItemPtr front = list->AddNew(1);
    front->Name("n50");
    EXPECT_EQ(list->Item("n50"), front);
    LookUpOften(list);
    static_cast<void>(front->Delete());
    EXPECT_EQ(list->Item("n50"), twin);
    LookUpOften(list);
    static_cast<void>(twin->Delete());
    site.Errors.clear();
    EXPECT_EQ(list->Item("n50"), nullptr);
    EXPECT_EQ(site.Errors.size(), 1U);
    LookUpOften(list);
    const SECSItemPtr copy = list->Item(7)->Duplicate().Object<SECSItem>();
    EXPECT_EQ(list->Item("n7"), list->Item(7));
    list->Item(7)->Name("");
    EXPECT_EQ(list->Item("n7"), copy);
}

TEST(ChildNames, AChildWithoutNameThatGetsOneIsFound) {
    const SECSItemPtr list = Named("n", kLong);
    const SECSItemPtr nameless = list->AddNew(10);
    LookUpOften(list);
    nameless->Name("new");
    EXPECT_EQ(list->Item("NEW"), nameless);
    const SECSItemPtr before = list->AddNew(5);
    LookUpOften(list);
    before->Name("new");
    EXPECT_EQ(list->Item("new"), before);
}

TEST(ChildNames, AChildThatWasTornOffIsNotFoundWhateverItIsCalled) {
    ErrorRecorder site;
    const SECSItemPtr list = Named("n", kLong);
    const SECSItemPtr torn = list->Item(3);
    torn->Name("");
    LookUpOften(list);
    SECSItemAccess::TearDown(*list);
    for (int index = 1; index <= kLong; ++index)
        Append(list, "again" + std::to_string(index));
    LookUpOften(list);
    torn->Name("ghost");
    site.Errors.clear();
    EXPECT_EQ(list->Item("ghost"), nullptr);
    EXPECT_EQ(list->Item("n4"), nullptr);
    EXPECT_EQ(list->Item("again4"), list->Item(4));
}

TEST(ChildNames, ChildrenThatBelongToAnotherListAreWalked) {
    const SECSItemPtr owner = Named("n", kLong);
    const SECSItemPtr guest = NewList();
    SECSItemAccess::AllItems(*guest, *SECSItemAccess::AllItems(*owner));
    LookUpOften(guest);
    owner->Item(5)->Name("renamed");
    EXPECT_EQ(guest->Item("renamed"), owner->Item(5));
    LookUpOften(guest);
    owner->Item(6)->Name("renamed too");
    EXPECT_EQ(guest->Item("renamed too"), owner->Item(6));
}

TEST(ChildNames, AListWhoseChildrenAreReplacedFindsTheNewOnes) {
    const SECSItemPtr list = Named("n", kLong);
    LookUpOften(list);
    const SECSItemPtr other = Named("m", kLong);
    SECSItemAccess::AllItems(*list, *SECSItemAccess::AllItems(*other));
    EXPECT_EQ(list->Item("m9"), other->Item(9));
    EXPECT_EQ(list->Item("n9"), nullptr);
}

TEST(ChildNames, RandomChangesNeverMakeALookupDifferFromAWalk) {
    ErrorRecorder site;
    for (unsigned seed = 1; seed <= 20; ++seed) {
        std::mt19937 random(seed);
        const auto below = [&random](int count) {
            return std::uniform_int_distribution<int>(0, count - 1)(random);
        };
        const auto name = [&below] {
            const int number = below(60);
            return number == 0 ? std::string()
                               : (below(2) == 0 ? "k" : "K") + std::to_string(number);
        };
        const SECSItemPtr list = Named("k", 40);
        for (int step = 0; step < 2000; ++step) {
            const int count = list->ItemCount();
            switch (below(20)) {
                case 0:
                    Append(list, name());
                    break;
                case 1:
                    list->AddNew(1 + below(count + 1))->Name(name());
                    break;
                case 2:
                    if (count > 35) static_cast<void>(list->Item(1 + below(count))->Delete());
                    break;
                case 3:
                    list->Item(1 + below(count))->Name(name());
                    break;
                case 4:
                    if (count < 80) static_cast<void>(list->Item(1 + below(count))->Duplicate());
                    break;
                default:
                    const std::string wanted = "k" + std::to_string(1 + below(60));
                    ASSERT_EQ(list->Item(wanted), Walked(list, wanted)) << seed << ' ' << step;
            }
        }
    }
}

}  // namespace
}  // namespace hexmire
