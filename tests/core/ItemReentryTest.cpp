#include <hexmire/core/SECSItem.h>
#include <hexmire/core/SECSMessage.h>
#include <hexmire/core/detail/SECSItemAccess.h>

#include "ListOfThree.h"
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>

// A handler of the Error event may edit the tree whose error it hears: what was refused stays
// refused, and what the handler did stands.

namespace hexmire {
namespace {

using detail::SECSItemAccess;
using Reports = fakes::ErrorRecorder::Reports;

const Reports kNoPlace{
    {2003, "(SECSItem-AddNew) You cannot add new item out of limit between 1 to ItemCount+1.", 0}};

class ItemReentry : public testing_items::ListOfThree {
protected:
    /// Runs inside the next error only.
    void OnNextError(std::function<void()> handler) {
        Site.OnError = [this, handler = std::move(handler)] {
            const std::function<void()> once = handler;
            Site.OnError = nullptr;
            once();
        };
    }
    /// Codes since the last call: "1007 1003".
    std::string Codes() {
        std::string text;
        for (const auto& report : Site.Take()) {
            if (!text.empty()) text += ' ';
            text += std::to_string(report.Code);
        }
        return text;
    }
};

TEST_F(ItemReentry, HandlerMayChangeTheListWhileItsErrorIsRaised) {
    Site.OnError = [&] {
        Site.OnError = nullptr;
        List->AddNew(1)->Name("fromHandler");
        static_cast<void>(Children[2]->Delete());
    };
    EXPECT_EQ(List->AddNew(9), nullptr);
    EXPECT_EQ(Order(), "fromHandler1 A2 B3");
    EXPECT_EQ(Site.Take(), kNoPlace);
}

TEST_F(ItemReentry, HandlerMayReleaseTheItemThatReports) {
    SECSItemPtr item = New<SECSItem>();
    Site.OnError = [&] { item.reset(); };
    item->Format(FormatAscii);
    EXPECT_EQ(item, nullptr);
    item = New<SECSItem>();
    item->NLB(7);
    EXPECT_EQ(item, nullptr);
    item = New<SECSItem>();
    EXPECT_EQ(item->AddNew(1), nullptr);
    item = New<SECSItem>();
    EXPECT_EQ(item->Item(1), nullptr);
    item = New<SECSItem>();
    EXPECT_TRUE(item->Delete().IsEmpty());
    item = New<SECSItem>();
    EXPECT_TRUE(item->Duplicate().IsEmpty());
    EXPECT_EQ(Site.Errors.size(), 6U);
}

TEST_F(ItemReentry, HandlerMayFailItself) {
    Site.OnError = [&] {
        Site.OnError = nullptr;
        Children[0]->NLB(9);
    };
    Children[0]->Format(7);
    ASSERT_EQ(Site.Errors.size(), 2U);
    EXPECT_EQ(Site.Errors[0].Code, 1001);
    EXPECT_EQ(Site.Errors[1].Code, 1003);
}

TEST_F(ItemReentry, HandlerMayEmptyTheListThatWasSearched) {
    OnNextError([&] {
        for (const SECSItemPtr& child : *List)
            static_cast<void>(child->Delete());
    });
    EXPECT_EQ(List->Item(4), nullptr);
    EXPECT_EQ(List->ItemCount(), 0);
    EXPECT_EQ(Codes(), "1007");
}

TEST_F(ItemReentry, NameThatTheHandlerAddsIsFoundNextTimeOnly) {
    OnNextError([&] { List->AddNew(1)->Name("missing"); });
    EXPECT_EQ(List->Item("missing"), nullptr);
    EXPECT_EQ(Codes(), "1009");
    EXPECT_EQ(List->Item("missing"), *List->begin());
    EXPECT_EQ(Codes(), "");
}

TEST_F(ItemReentry, PositionThatTheHandlerMakesLegalStaysRefused) {
    OnNextError([&] { List->AddNew(4)->Name("D"); });
    EXPECT_EQ(List->AddNew(5), nullptr);
    EXPECT_EQ(Order(), "A1 B2 C3 D4");
    OnNextError([&] { List->AddNew(5)->Name("E"); });
    EXPECT_EQ(List->Item(5), nullptr);
    EXPECT_EQ(Codes(), "2003 1007");
    EXPECT_EQ(List->Item(5)->Name(), "E");
}

TEST_F(ItemReentry, ItemThatTheHandlerMakesAListTakesChildrenNextTimeOnly) {
    OnNextError([&] { Children[0]->Format(FormatList); });
    EXPECT_EQ(Children[0]->AddNew(1), nullptr);
    EXPECT_EQ(Codes(), "2002");
    EXPECT_EQ(Children[0]->ItemCount(), 0);
    EXPECT_NE(Children[0]->AddNew(1), nullptr);
}

TEST_F(ItemReentry, ValuesThatTheHandlerSetsStand) {
    OnNextError([&] { Children[0]->Format(FormatU2); });
    Children[0]->Format(7);
    EXPECT_EQ(Children[0]->Format(), FormatU2);
    OnNextError([&] { Children[0]->NLB(2); });
    Children[0]->NLB(4);
    EXPECT_EQ(Children[0]->NLB(), 2);
    EXPECT_EQ(Codes(), "1001 1003");
}

TEST_F(ItemReentry, RootStaysThoughTheHandlerEmptiesIt) {
    OnNextError([&] { static_cast<void>(Children[1]->Delete()); });
    EXPECT_TRUE(List->Delete().IsEmpty());
    OnNextError([&] { static_cast<void>(Children[0]->Delete()); });
    EXPECT_TRUE(List->Duplicate().IsEmpty());
    EXPECT_EQ(Codes(), "1079 1133");
    EXPECT_EQ(Order(), "C1");
}

TEST_F(ItemReentry, ErrorsInsideAHandlerAreReportedBehindTheFirst) {
    OnNextError([&] {
        EXPECT_EQ(List->Item("none"), nullptr);
        EXPECT_EQ(List->Item(2.0), nullptr);
    });
    EXPECT_EQ(List->Item(0), nullptr);
    EXPECT_EQ(Codes(), "1007 1009 1008");
}

TEST_F(ItemReentry, ItemMayLoseItsMessageInItsOwnError) {
    SECSMessagePtr message = New<SECSMessage>();
    const SECSItemPtr child = message->Root()->AddNew(1);
    child->Format(FormatU1);
    OnNextError([&] { message.reset(); });
    child->Format(7);
    EXPECT_EQ(child->Parent(), nullptr);
    EXPECT_EQ(child->Format(), FormatU1);
    child->Format(FormatU2);
    EXPECT_EQ(Codes(), "1001 1001");
}

/// A list B whose second child cannot be found by its position: the copy of B reports it.
class CopyReentry : public ItemReentry {
protected:
    CopyReentry() {
        Children[1]->Format(FormatList);
        Children[1]->AddNew(1)->Name("x");
        SECSItemAccess::ItemIndex(*Children[1]->AddNew(2), 9);
    }
};

TEST_F(CopyReentry, CopyEndsThoughItsSourceIsTakenOut) {
    OnNextError([&] { static_cast<void>(Children[1]->Delete()); });
    const SECSItemPtr copy = Children[1]->Duplicate().Object<SECSItem>();
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(Codes(), "91");
    // It goes behind the position that its source had.
    EXPECT_EQ(Order(), "A1 C2 B3");
    EXPECT_EQ(List->Item(3), copy);
    EXPECT_EQ(testing_items::OrderOf(*copy), "x1 -2");
}

TEST_F(CopyReentry, CopyHasNoPlaceInAListThatWasEmptiedMeanwhile) {
    OnNextError([&] { SECSItemAccess::TearDown(*List); });
    EXPECT_TRUE(Children[1]->Duplicate().IsEmpty());
    EXPECT_EQ(Site.Take().back(),
              (fakes::ReportedError{9, "(SECSItem-Duplicate) Subscript out of range", 0}));
    EXPECT_EQ(List->ItemCount(), 0);
    EXPECT_EQ(List->AddNew(1)->ItemIndex(), 1);
}

TEST_F(CopyReentry, CopyEndsThoughItsListIsReleasedMeanwhile) {
    const SECSItemPtr source = Children[1];
    Children.clear();
    OnNextError([&] { List.reset(); });
    const SECSItemPtr copy = source->Duplicate().Object<SECSItem>();
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(Codes(), "91");
    EXPECT_EQ(copy->Parent(), nullptr);
    EXPECT_EQ(copy->ItemCount(), 0);
    EXPECT_EQ(source->ItemCount(), 0);
}

}  // namespace
}  // namespace hexmire
