#include <hexmire/core/SECSMessage.h>
#include <hexmire/core/detail/SECSItemAccess.h>
#include <hexmire/core/detail/SECSMessageAccess.h>

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

using detail::SECSMessageAccess;
using fakes::ErrorRecorder;
using fakes::Show;
using Bytes = std::vector<std::uint8_t>;
using Limits = std::numeric_limits<std::int32_t>;
using Reports = ErrorRecorder::Reports;

const Reports kStreamRefused{
    {1013, "(SECSMessage-Let Stream) The Stream property must be between 0 and 127 inclusive.", 0}};
const Reports kFuncRefused{
    {1014, "(SECSMessage-Let Func) The Func property must be between 0 and 255 inclusive.", 0}};

class Message : public testing::Test {
protected:
    SECSItemPtr Add(const char* name) {
        const SECSItemPtr item = Subject->Root()->AddNew(Subject->Root()->ItemCount() + 1);
        item->Name(name);
        return item;
    }
    SECSItemPtr AddText(std::string_view text) {
        const SECSItemPtr item = Add("text");
        item->Format(FormatAscii);
        item->Value(text);
        return item;
    }
    Bytes Build() {
        Bytes bytes;
        SECSMessageAccess::Build(*Subject, bytes);
        return bytes;
    }

    ErrorRecorder Site;
    SECSMessagePtr Subject = New<SECSMessage>();
};

TEST_F(Message, StartsFromItsDefaults) {
    EXPECT_EQ(Subject->Stream(), 0);
    EXPECT_EQ(Subject->Func(), 1);
    EXPECT_EQ(Subject->Length(), 0);
    EXPECT_EQ(Subject->Name(), "");
    EXPECT_EQ(Subject->Description(), "");
    EXPECT_EQ(Subject->RawHex(), "");
    EXPECT_TRUE(Subject->Raw().IsEmpty());
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(Message, RootIsAnEmptyListNamedRoot) {
    const SECSItemPtr root = Subject->Root();
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(root->Name(), "Root");
    EXPECT_EQ(root->Format(), FormatList);
    EXPECT_EQ(root->ItemCount(), 0);
    EXPECT_EQ(root->Parent(), nullptr);
    EXPECT_EQ(root->ItemIndex(), 1);
    EXPECT_EQ(Subject->Root(), root);
    EXPECT_NE(New<SECSMessage>()->Root(), root);
}

TEST_F(Message, RootCanBeNeitherChangedNorDeletedNorDuplicated) {
    Subject->Root()->Format(FormatAscii);
    static_cast<void>(Subject->Root()->Delete());
    static_cast<void>(Subject->Root()->Duplicate());
    ASSERT_EQ(Site.Errors.size(), 3U);
    EXPECT_EQ(Site.Errors[0].Code, 1001);
    EXPECT_EQ(Site.Errors[1].Code, 1079);
    EXPECT_EQ(Site.Errors[2].Code, 1133);
    EXPECT_EQ(Subject->Root()->Format(), FormatList);
}

TEST_F(Message, StreamTakesZeroTo127) {
    for (std::int32_t stream = 0; stream <= 127; ++stream) {
        Subject->Stream(stream);
        EXPECT_EQ(Subject->Stream(), stream);
    }
    EXPECT_TRUE(Site.Errors.empty());
    for (const std::int32_t stream : {128, -1, 255, 256, 65536, Limits::min(), Limits::max()}) {
        Subject->Stream(stream);
        EXPECT_EQ(Subject->Stream(), 127);
        EXPECT_EQ(Site.Take(), kStreamRefused) << stream;
    }
}

TEST_F(Message, FuncTakesZeroTo255) {
    for (std::int32_t func = 0; func <= 255; ++func) {
        Subject->Func(func);
        EXPECT_EQ(Subject->Func(), func);
    }
    EXPECT_TRUE(Site.Errors.empty());
    for (const std::int32_t func : {256, -1, 257, 65536, Limits::min(), Limits::max()}) {
        Subject->Func(func);
        EXPECT_EQ(Subject->Func(), 255);
        EXPECT_EQ(Site.Take(), kFuncRefused) << func;
    }
}

TEST_F(Message, StreamAndFuncAreApart) {
    Subject->Stream(5);
    EXPECT_EQ(Subject->Func(), 1);
    Subject->Func(0);
    EXPECT_EQ(Subject->Stream(), 5);
    EXPECT_EQ(Subject->Func(), 0);
}

TEST_F(Message, HandlerMaySetTheStreamThatWasRefused) {
    Site.OnError = [&] { Subject->Stream(9); };
    Subject->Stream(128);
    EXPECT_EQ(Subject->Stream(), 9);
}

TEST_F(Message, HandlerMayReleaseTheMessageThatReports) {
    Site.OnError = [&] { Subject.reset(); };
    Subject->Stream(128);
    EXPECT_EQ(Subject, nullptr);
    Subject = New<SECSMessage>();
    Subject->Func(256);
    EXPECT_EQ(Subject, nullptr);
    Subject = New<SECSMessage>();
    EXPECT_EQ(Subject->Item(1), nullptr);
    EXPECT_EQ(Subject, nullptr);
}

TEST_F(Message, TextsAreStoredAsGiven) {
    for (const std::string& text :
         {std::string(" S1F1 "), std::string("a\0b", 3), std::string("\xE9"), std::string()}) {
        Subject->Name(text);
        Subject->Description(text + "d");
        EXPECT_EQ(Subject->Name(), text);
        EXPECT_EQ(Subject->Description(), text + "d");
    }
    EXPECT_EQ(Subject->Root()->Name(), "Root");
}

TEST_F(Message, RawIsStoredAsItIsAndTouchesNothingElse) {
    static_cast<void>(AddText("AB"));
    static_cast<void>(Build());
    for (const Variant& raw : {Variant(),
                               Variant("text"),
                               Variant(5),
                               Variant::Null(),
                               Variant(Bytes{9}),
                               Variant(std::make_shared<int>(1))}) {
        Subject->Raw(raw);
        EXPECT_EQ(Subject->Raw(), raw);
        EXPECT_EQ(Subject->Length(), 4);
        EXPECT_EQ(Subject->RawHex(), "41 02 41 42");
        EXPECT_EQ(Subject->Root()->ItemCount(), 1);
    }
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(Message, RawIsACopyBothWays) {
    Variant raw(Bytes{1, 2});
    Subject->Raw(raw);
    raw = 5;
    EXPECT_EQ(Show(Subject->Raw()), "Byte[1, 2]");
    Variant read = Subject->Raw();
    read = 6;
    EXPECT_EQ(Show(Subject->Raw()), "Byte[1, 2]");
}

TEST_F(Message, BuildSetsLengthRawAndRawHex) {
    static_cast<void>(AddText("ABC"));
    const Bytes bytes = Build();
    EXPECT_EQ(bytes, (Bytes{0x41, 3, 'A', 'B', 'C'}));
    EXPECT_EQ(Subject->Length(), 5);
    EXPECT_EQ(Subject->RawHex(), "41 03 41 42 43");
    EXPECT_EQ(Subject->Raw(), Variant(bytes));
    EXPECT_EQ(Subject->Raw().LowerBound(), 0);
}

TEST_F(Message, BuildTakesTheFirstChildOfTheRootOnly) {
    static_cast<void>(AddText("A"));
    static_cast<void>(AddText("B"));
    EXPECT_EQ(Build(), (Bytes{0x41, 1, 'A'}));
}

TEST_F(Message, BuildOfAnEmptyRootKeepsTheEarlierBytes) {
    const SECSItemPtr item = AddText("A");
    static_cast<void>(Build());
    static_cast<void>(item->Delete());
    EXPECT_TRUE(Build().empty());
    EXPECT_EQ(Subject->Length(), 0);
    EXPECT_EQ(Subject->RawHex(), "41 01 41");
    EXPECT_EQ(Show(Subject->Raw()), "Byte[65, 1, 65]");
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(Message, BuildThatWritesNothingKeepsTheEarlierBytes) {
    const SECSItemPtr item = AddText("A");
    static_cast<void>(Build());
    item->Value(std::make_shared<int>(1));
    EXPECT_TRUE(Build().empty());
    EXPECT_EQ(Subject->Length(), 0);
    EXPECT_EQ(Subject->RawHex(), "41 01 41");
    EXPECT_EQ(Site.Errors.size(), 1U);
}

TEST_F(Message, SecondBuildReplacesTheFirst) {
    const SECSItemPtr item = AddText("AAAA");
    static_cast<void>(Build());
    item->Value("B");
    static_cast<void>(Build());
    EXPECT_EQ(Subject->Length(), 3);
    EXPECT_EQ(Subject->RawHex(), "41 01 42");
    EXPECT_EQ(Show(Subject->Raw()), "Byte[65, 1, 66]");
}

TEST_F(Message, ParseSetsRawAndRawHexAndLeavesLength) {
    SECSMessageAccess::Length(*Subject, 77);
    EXPECT_TRUE(SECSMessageAccess::Parse(*Subject, Bytes{0x41, 1, 'Z'}));
    EXPECT_EQ(Subject->Length(), 77);
    EXPECT_EQ(Subject->RawHex(), "41 01 5A");
    EXPECT_EQ(Show(Subject->Raw()), "Byte[65, 1, 90]");
    EXPECT_EQ(Show(Subject->Item(1)->Value()), "String 'Z'");
}

TEST_F(Message, RawThatTheHostSetStaysApartFromParsedHexText) {
    EXPECT_TRUE(SECSMessageAccess::Parse(*Subject, Bytes{0x01, 0x00}));
    Subject->Raw("mine");
    EXPECT_EQ(Subject->RawHex(), "01 00");
    SECSMessageAccess::RawHex(*Subject, "AA BB");
    EXPECT_EQ(Subject->RawHex(), "AA BB");
    EXPECT_EQ(Show(Subject->Raw()), "String 'mine'");
}

TEST_F(Message, RawHexSetAsATextIsReplacedByTheNextBuild) {
    SECSMessageAccess::RawHex(*Subject, "anything");
    EXPECT_EQ(Subject->RawHex(), "anything");
    static_cast<void>(AddText("A"));
    static_cast<void>(Build());
    EXPECT_EQ(Subject->RawHex(), "41 01 41");
    SECSMessageAccess::RawHex(*Subject, "");
    EXPECT_EQ(Subject->RawHex(), "");
    EXPECT_EQ(Subject->Length(), 3);
}

TEST_F(Message, RawHexHasOneBlankBetweenBytesAndNoneAtTheEnds) {
    const SECSItemPtr item = Add("b");
    item->Format(FormatBinary);
    item->Value(Bytes{0x01, 0x0A, 0xFF});
    static_cast<void>(Build());
    EXPECT_EQ(Subject->RawHex(), "21 03 01 0A FF");
}

TEST_F(Message, RootIsTheSameObjectWhateverHappensToIt) {
    const SECSItemPtr root = Subject->Root();
    static_cast<void>(AddText("A"));
    static_cast<void>(Build());
    EXPECT_EQ(Subject->Root(), root);
    EXPECT_TRUE(SECSMessageAccess::Parse(*Subject, Bytes{0x01, 0x00}));
    EXPECT_EQ(Subject->Root(), root);
    root->Name("mine");
    EXPECT_EQ(Subject->Root()->Name(), "mine");
    EXPECT_EQ(Subject->Name(), "");
}

TEST_F(Message, UnknownFormatCodeLeavesTheBytesAndAnItemOfAnyFormat) {
    EXPECT_FALSE(SECSMessageAccess::Parse(*Subject, Bytes{0x0D, 0x01, 0x05}));
    EXPECT_EQ(Subject->RawHex(), "0D 01 05");
    EXPECT_EQ(Show(Subject->Raw()), "Byte[13, 1, 5]");
    EXPECT_EQ(Subject->Length(), 0);
    EXPECT_EQ(Subject->Root()->ItemCount(), 1);
    EXPECT_EQ(Subject->Item(1)->Format(), FormatVar);
    ASSERT_EQ(Site.Errors.size(), 1U);
    EXPECT_EQ(Site.Errors[0].Code, 1001);
}

TEST_F(Message, EmptyRootLeavesWhatTheHostPutIntoRaw) {
    for (const Variant& raw : {Variant::Null(), Variant("mine"), Variant(Bytes{})}) {
        Subject->Raw(raw);
        SECSMessageAccess::Length(*Subject, 9);
        EXPECT_TRUE(Build().empty());
        EXPECT_EQ(Subject->Raw(), raw);
        EXPECT_EQ(Subject->RawHex(), "");
        EXPECT_EQ(Subject->Length(), 0);
    }
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(Message, RootThatOutlivesItsMessageIsAnEmptyTreeOfItsOwn) {
    const SECSItemPtr root = Subject->Root();
    const SECSItemPtr old = Add("old");
    Subject.reset();
    const SECSItemPtr item = root->AddNew(1);
    ASSERT_NE(item, nullptr);
    item->Name("new");
    EXPECT_EQ(root->Item("NEW"), item);
    EXPECT_EQ(root->Item("old"), nullptr);
    root->Format(FormatAscii);
    ASSERT_EQ(Site.Errors.size(), 2U);
    EXPECT_EQ(Site.Errors[0].Code, 1009);
    EXPECT_EQ(Site.Errors[1].Code, 1001);
}

TEST_F(Message, EndTearsItsTreeDown) {
    const SECSItemPtr root = Subject->Root();
    const SECSItemPtr branch = Add("branch");
    branch->Format(FormatList);
    const std::weak_ptr<SECSItem> leaf = branch->AddNew(1);
    Subject.reset();
    EXPECT_EQ(root->ItemCount(), 0);
    EXPECT_EQ(root->Name(), "Root");
    EXPECT_EQ(branch->ItemCount(), 0);
    EXPECT_EQ(branch->Name(), "branch");
    EXPECT_TRUE(leaf.expired());
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(Message, EndReleasesTheObjectInRaw) {
    auto object = std::make_shared<int>(1);
    const std::weak_ptr<int> watch = object;
    Subject->Raw(std::move(object));
    Subject.reset();
    EXPECT_TRUE(watch.expired());
}

TEST_F(Message, EndFreesItsWholeTree) {
    const std::weak_ptr<SECSItem> root = Subject->Root();
    const std::weak_ptr<SECSItem> child = Add("a");
    Subject.reset();
    EXPECT_TRUE(root.expired());
    EXPECT_TRUE(child.expired());
}

TEST_F(Message, BranchTakenOutBeforeTheEndSurvivesIt) {
    const SECSItemPtr branch = Add("branch");
    branch->Format(FormatList);
    static_cast<void>(branch->AddNew(1));
    static_cast<void>(branch->Delete());
    Subject.reset();
    EXPECT_EQ(branch->ItemCount(), 1);
}

}  // namespace
}  // namespace hexmire
