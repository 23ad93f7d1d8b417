#include <hexmire/core/SECSMessage.h>

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

using fakes::ErrorRecorder;
using fakes::Show;
using Limits = std::numeric_limits<std::int32_t>;
using Reports = ErrorRecorder::Reports;

const Reports kNothing{
    {1004, "(SECSMessage-Get Item) There are no items contained in the list.", 0}};
const Reports kNoIndex{{1007,
                        "(SECSMessage-Get Item) There is no item with this index.The index must be "
                        "between 1 and ItemCount.",
                        0}};
const Reports kWrongKind{{1008,
                          "(SECSMessage-Get Item) The first parameter to the Item property must be "
                          "either a number or a string.",
                          0}};
const Reports kNoName{
    {1009, "(SECSMessage-Get Item) The item name is not defined within the parent item.", 0}};

class MessageLookup : public testing::Test {
protected:
    SECSItemPtr Add(const char* name) {
        const SECSItemPtr item = Subject->Root()->AddNew(Subject->Root()->ItemCount() + 1);
        item->Name(name);
        return item;
    }
    void ExpectRefused(const Variant& value, const Reports& reports) {
        EXPECT_EQ(Subject->Item(value), nullptr) << Show(value);
        EXPECT_EQ(Site.Take(), reports) << Show(value);
    }

    ErrorRecorder Site;
    SECSMessagePtr Subject = New<SECSMessage>();
};

TEST_F(MessageLookup, ItemOfAnEmptyRootIsReportedBeforeTheArgumentIsLookedAt) {
    for (const Variant& value : {Variant(1),
                                 Variant(0),
                                 Variant(1.0),
                                 Variant(""),
                                 Variant("  "),
                                 Variant(),
                                 Variant("abc")}) {
        ExpectRefused(value, kNothing);
    }
}

TEST_F(MessageLookup, ItemByPosition) {
    const SECSItemPtr first = Add("a");
    const SECSItemPtr second = Add("b");
    EXPECT_EQ(Subject->Item(1), first);
    EXPECT_EQ(Subject->Item(Variant(std::int16_t{2})), second);
    EXPECT_EQ(Subject->Item(Variant(std::int32_t{2})), second);
    EXPECT_EQ(Subject->Item(std::size_t{2}), second);
    EXPECT_TRUE(Site.Errors.empty());
    for (const std::int32_t index : {0, 3, -1, Limits::min(), Limits::max()}) {
        ExpectRefused(index, kNoIndex);
    }
}

TEST_F(MessageLookup, ItemByNameIgnoresLetterCase) {
    const SECSItemPtr item = Add("ABC");
    EXPECT_EQ(Subject->Item("abc"), item);
    EXPECT_EQ(Subject->Item(std::string("aBc")), item);
    EXPECT_EQ(Subject->Item(std::string_view("abcd").substr(0, 3)), item);
    item->Name("\xE9");
    EXPECT_EQ(Subject->Item("\xC9"), item);
}

TEST_F(MessageLookup, ItemByNameTakesTheFirstOfSeveral) {
    const SECSItemPtr first = Add("x");
    static_cast<void>(Add("X"));
    EXPECT_EQ(Subject->Item("X"), first);
}

TEST_F(MessageLookup, OnlyTheBlankTestTrims) {
    const SECSItemPtr item = Add("abc");
    ExpectRefused(" abc", kNoName);
    ExpectRefused("abc ", kNoName);
    item->Name(" abc");
    EXPECT_EQ(Subject->Item(" ABC"), item);
    ExpectRefused("abc", kNoName);
}

TEST_F(MessageLookup, BlankTextIsRefusedEvenWhenAnItemIsNamedSo) {
    static_cast<void>(Add("   "));
    static_cast<void>(Add(""));
    for (const char* text : {"", " ", "   "})
        ExpectRefused(text, kWrongKind);
    EXPECT_EQ(Subject->Item(static_cast<const char*>(nullptr)), nullptr);
    EXPECT_EQ(Site.Take(), kWrongKind);
}

TEST_F(MessageLookup, TabIsNoBlank) {
    const SECSItemPtr item = Add("\t");
    EXPECT_EQ(Subject->Item("\t"), item);
    ExpectRefused(" \t ", kNoName);
    ExpectRefused("\xA0", kNoName);
}

TEST_F(MessageLookup, ItemByAnyOtherKindIsRefused) {
    static_cast<void>(Add("1"));
    for (const Variant& value : {Variant(1.0),
                                 Variant(1.0F),
                                 Variant(),
                                 Variant::Null(),
                                 Variant(true),
                                 Variant(std::uint8_t{1}),
                                 Variant(std::uint32_t{1}),
                                 Variant(Subject->Root()),
                                 Variant(std::vector<std::int32_t>{1}),
                                 Variant(std::shared_ptr<int>())}) {
        ExpectRefused(value, kWrongKind);
    }
}

TEST_F(MessageLookup, DeeperItemsAreReachedThroughItems) {
    const SECSItemPtr list = Add("list");
    list->Format(FormatList);
    list->AddNew(1)->Name("deep");
    ExpectRefused("deep", kNoName);
    EXPECT_NE(Subject->Item("list")->Item("deep"), nullptr);
}

TEST_F(MessageLookup, IntegersOutsideArePositionsToo) {
    static_cast<void>(Add("a"));
    for (const int index : {0, 2, -1, -32768, 32767})
        ExpectRefused(static_cast<std::int16_t>(index), kNoIndex);
    EXPECT_EQ(Subject->Item(std::int64_t{4294967297}), nullptr);
    EXPECT_EQ(Site.Take(), kWrongKind);
}

TEST_F(MessageLookup, ArraysAreNoNames) {
    static_cast<void>(Add("a"));
    ExpectRefused(std::vector<Variant>{"a"}, kWrongKind);
    ExpectRefused(std::vector<std::uint8_t>{'a'}, kWrongKind);
    ExpectRefused(Decimal::FromInt64(1), kWrongKind);
}

TEST_F(MessageLookup, DigitsInATextAreAName) {
    const SECSItemPtr item = Add("2");
    EXPECT_EQ(Subject->Item("2"), item);
    ExpectRefused("1", kNoName);
}

TEST_F(MessageLookup, RootItselfIsNotAmongItsItems) {
    static_cast<void>(Add("a"));
    ExpectRefused("Root", kNoName);
}

TEST_F(MessageLookup, NamesFollowIso8859_1) {
    const SECSItemPtr item = Add("\xFE\xF7");
    EXPECT_EQ(Subject->Item("\xDE\xF7"), item);
    ExpectRefused("\xDE\xD7", kNoName);
    item->Name("\xFF\xDF\xB5");
    EXPECT_EQ(Subject->Item("\xFF\xDF\xB5"), item);
    ExpectRefused("\xDF\xDF\xB5", kNoName);
}

TEST_F(MessageLookup, NulIsACharacterOfAName) {
    const SECSItemPtr item = Add("");
    item->Name(std::string_view("\0", 1));
    EXPECT_EQ(Subject->Item(std::string("\0", 1)), item);
    ExpectRefused(std::string("\0\0", 2), kNoName);
}

TEST_F(MessageLookup, PositionsFollowTheEdits) {
    const SECSItemPtr a = Add("a");
    const SECSItemPtr b = Add("b");
    const SECSItemPtr first = Subject->Root()->AddNew(1);
    EXPECT_EQ(Subject->Item(1), first);
    EXPECT_EQ(Subject->Item(3), b);
    static_cast<void>(a->Delete());
    EXPECT_EQ(Subject->Item(2), b);
    ExpectRefused(3, kNoIndex);
    const SECSItemPtr copy = b->Duplicate().Object<SECSItem>();
    EXPECT_EQ(Subject->Item(3), copy);
    EXPECT_EQ(Subject->Item("B"), b);
}

TEST_F(MessageLookup, NameThatTheHandlerAddsIsFoundNextTimeOnly) {
    static_cast<void>(Add("a"));
    Site.OnError = [&] {
        Site.OnError = nullptr;
        static_cast<void>(Add("b"));
    };
    ExpectRefused("b", kNoName);
    EXPECT_EQ(Subject->Item("b"), Subject->Item(2));
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(MessageLookup, HandlerMayEmptyTheRootThatWasSearched) {
    static_cast<void>(Add("a"));
    Site.OnError = [&] { static_cast<void>((*Subject->Root()->begin())->Delete()); };
    ExpectRefused(7, kNoIndex);
    Site.OnError = nullptr;
    ExpectRefused(1, kNothing);
}

}  // namespace
}  // namespace hexmire
