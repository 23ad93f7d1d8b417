#include <hexmire/core/ModGeneral.h>
#include <hexmire/core/SECSItem.h>
#include <hexmire/core/detail/SECSItemAccess.h>

#include "../fakes/Messages.h"
#include "../fakes/VariantText.h"
#include "ItemsOfFormat.h"
#include "ListOfThree.h"
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

// A list that becomes a value hides its children and keeps them: they are there again when it is a
// list once more.

namespace hexmire {
namespace {

using detail::SECSItemAccess;
using fakes::AddItem;
using fakes::EncodedHex;
using fakes::MessageOf;
using fakes::Show;
using testing_items::kFormats;
using testing_items::OrderOf;
using Limits = std::numeric_limits<std::int32_t>;

class ItemFormatChange : public testing_items::ListOfThree {
protected:
    ItemFormatChange() {
        Children[1]->Format(FormatList);
        X = Children[1]->AddNew(1);
        X->Name("x");
        Y = Children[1]->AddNew(2);
        Y->Name("y");
    }
    std::int32_t LastCode() {
        const auto reports = Site.Take();
        return reports.size() == 1 ? reports.front().Code : 0;
    }
    SECSItemPtr X;
    SECSItemPtr Y;
};

TEST_F(ItemFormatChange, EveryOtherFormatHidesTheChildrenAndGivesThemBack) {
    const SECSItemPtr& item = Children[1];
    for (const enmItemFormat format : kFormats) {
        if (format == FormatList) continue;
        item->Format(format);
        EXPECT_EQ(item->ItemCount(), 0) << format;
        EXPECT_EQ(item->Length(), 0) << format;
        EXPECT_EQ(item->Item(1), nullptr) << format;
        EXPECT_EQ(LastCode(), 1004) << format;
        EXPECT_EQ(item->Item("x"), nullptr) << format;
        EXPECT_EQ(LastCode(), 1004) << format;
        for (const std::int32_t index : {1, 3, 0, Limits::min(), Limits::max()}) {
            EXPECT_EQ(item->AddNew(index), nullptr) << format;
            EXPECT_EQ(LastCode(), 2002) << format;
        }
        EXPECT_EQ(OrderOf(*item), "x1 y2") << format;
        EXPECT_EQ(X->Parent(), item);
        EXPECT_EQ(Y->ItemIndex(), 2);
        item->Format(FormatList);
        EXPECT_EQ(item->ItemCount(), 2) << format;
        EXPECT_EQ(item->Length(), 2) << format;
        EXPECT_EQ(item->Item(1), X) << format;
        EXPECT_EQ(item->Item("Y"), Y) << format;
    }
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(ItemFormatChange, HiddenChildrenAreEditedThroughThemselves) {
    Children[1]->Format(FormatU4);
    X->Format(FormatAscii);
    const SECSItemPtr copy = X->Duplicate().Object<SECSItem>();
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(OrderOf(*Children[1]), "x1 x2 y3");
    EXPECT_EQ(copy->Format(), FormatAscii);
    EXPECT_EQ(copy->Parent(), Children[1]);
    static_cast<void>(X->Delete());
    EXPECT_EQ(Children[1]->ItemCount(), 0);
    Children[1]->Format(FormatList);
    EXPECT_EQ(OrderOf(*Children[1]), "x1 y2");
    EXPECT_EQ(Children[1]->Item(1), copy);
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(ItemFormatChange, DetachedListCanNeverHideItsChildren) {
    static_cast<void>(Children[1]->Delete());
    Children[1]->Format(FormatU1);
    EXPECT_EQ(LastCode(), 1001);
    EXPECT_EQ(Children[1]->ItemCount(), 2);
    X->Format(FormatU1);
    EXPECT_EQ(X->Format(), FormatU1);
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(ItemFormatChange, DetachedValueBecomesAListWithItsHiddenChildren) {
    Children[1]->Format(FormatBinary);
    static_cast<void>(Children[1]->Delete());
    EXPECT_EQ(Children[1]->ItemCount(), 0);
    Children[1]->Format(FormatList);
    EXPECT_EQ(OrderOf(*Children[1]), "x1 y2");
    EXPECT_EQ(Children[1]->ItemCount(), 2);
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(ItemFormatChange, ValueAndChildrenTakeTurnsInWhatIsSent) {
    const SECSMessagePtr message = MessageOf(FormatList, "AB");
    const SECSItemPtr item = message->Item(1);
    AddItem(item, FormatU1, 7);
    EXPECT_EQ(EncodedHex(message), "01 01 A5 01 07");
    item->Format(FormatAscii);
    EXPECT_EQ(EncodedHex(message), "41 02 41 42");
    item->Format(FormatList);
    EXPECT_EQ(EncodedHex(message), "01 01 A5 01 07");
}

TEST_F(ItemFormatChange, LengthOfTheLastEncodingWaitsBehindTheCount) {
    const SECSMessagePtr message = MessageOf(FormatAscii, "ABC");
    const SECSItemPtr item = message->Item(1);
    EXPECT_EQ(item->Length(), 0);
    EXPECT_EQ(EncodedHex(message), "41 03 41 42 43");
    EXPECT_EQ(item->Length(), 3);
    item->Value("ABCDE");
    EXPECT_EQ(item->Length(), 3);
    item->Format(FormatList);
    EXPECT_EQ(item->Length(), 0);
    AddItem(item, FormatU1, 1);
    EXPECT_EQ(item->Length(), 1);
    item->Format(FormatAscii);
    EXPECT_EQ(item->Length(), 3);
    item->Format(FormatList);
    EXPECT_EQ(EncodedHex(message), "01 01 A5 01 01");
    static_cast<void>(item->AddNew(1));
    EXPECT_EQ(item->Length(), 2);
    item->Format(FormatAscii);
    EXPECT_EQ(item->Length(), 1);
}

TEST_F(ItemFormatChange, CopyTakesTheLengthOfTheLastEncodingNotTheCount) {
    const SECSItemPtr fresh = Children[1]->Duplicate().Object<SECSItem>();
    EXPECT_EQ(fresh->Length(), 2);
    fresh->Format(FormatAscii);
    EXPECT_EQ(fresh->Length(), 0);
    SECSItemAccess::Length(*Children[1], 300);
    const SECSItemPtr encoded = Children[1]->Duplicate().Object<SECSItem>();
    EXPECT_EQ(encoded->Length(), 2);
    encoded->Format(FormatAscii);
    EXPECT_EQ(encoded->Length(), 300);
}

TEST_F(ItemFormatChange, CopyOfAnEncodedItemCarriesWhatTheEncodingLeft) {
    const SECSMessagePtr message = MessageOf(FormatList);
    const SECSItemPtr text = AddItem(message->Item(1), FormatAscii, std::string(300, 'x'));
    static_cast<void>(EncodedHex(message));
    const SECSItemPtr copy = text->Duplicate().Object<SECSItem>();
    EXPECT_EQ(copy->Length(), 300);
    EXPECT_EQ(copy->NLB(), 2);
    EXPECT_EQ(copy->Raw(), text->Raw());
    EXPECT_EQ(copy->Raw().ElementCount(), 300U);
    copy->Value("y");
    EXPECT_EQ(copy->Length(), 300);
    EXPECT_EQ(text->Value().Text().size(), 300U);
}

TEST_F(ItemFormatChange, ReceivedItemsKeepNoLengthBesidesTheCount) {
    const SECSMessagePtr message =
        fakes::DecodeExact(
            std::vector<std::uint8_t>{0x01, 0x02, 0x41, 0x02, 0x41, 0x42, 0x01, 0x00})
            .Message;
    const SECSItemPtr list = message->Item(1);
    EXPECT_EQ(list->Length(), 2);
    EXPECT_EQ(list->NLB(), 0);
    EXPECT_EQ(list->Item(1)->Length(), 0);
    EXPECT_EQ(list->Item(1)->NLB(), 0);
    EXPECT_EQ(list->Item(2)->Length(), 0);
    list->Format(FormatBinary);
    EXPECT_EQ(list->Length(), 0);
    EXPECT_EQ(Show(list->Value()), "Empty");
}

}  // namespace
}  // namespace hexmire
