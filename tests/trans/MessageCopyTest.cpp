#include <hexmire/core/detail/SECSMessageAccess.h>
#include <hexmire/trans/TransFactory.h>

#include "../fakes/Messages.h"
#include "../fakes/TransHost.h"
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace hexmire {
namespace {

using MessageAccess = detail::SECSMessageAccess;
using fakes::AddItem;
using fakes::TransHost;
using ModGeneral::CreateSECSMessage;
using Reports = TransHost::Reports;

const char* const kNoMessage =
    "(ModGeneral-CreateSECSMessage) Object variable or With block variable not set";

TEST(CopyOfAMessage, TakesHeaderFieldsRawAndItemTree) {
    TransHost host;
    const SECSMessagePtr source = host.Make<SECSMessage>();
    source->Stream(6);
    source->Func(11);
    source->Name("N");
    source->Description("D");
    AddItem(source->Root(), FormatU1, 5);
    std::vector<std::uint8_t> bytes;
    MessageAccess::Build(*source, bytes);
    const SECSMessagePtr target = host.Make<SECSMessage>();
    CreateSECSMessage(target, source);
    EXPECT_EQ(target->Stream(), 6);
    EXPECT_EQ(target->Func(), 11);
    EXPECT_EQ(target->Name(), "N");
    EXPECT_EQ(target->Description(), "D");
    EXPECT_EQ(target->Length(), 3);
    EXPECT_EQ(target->RawHex(), "A5 01 05");
    EXPECT_EQ(target->Raw(), source->Raw());
    EXPECT_EQ(target->Item(1)->Value(), Variant(5));
}

TEST(CopyOfAMessage, LeavesWhatTheSourceHasEmpty) {
    TransHost host;
    const SECSMessagePtr source = host.Make<SECSMessage>();
    const SECSMessagePtr target = host.Make<SECSMessage>();
    target->Name("kept");
    target->Description("kept too");
    target->Raw(5);
    MessageAccess::RawHex(*target, "AA");
    MessageAccess::Length(*target, 9);
    target->Stream(3);
    target->Func(7);
    CreateSECSMessage(target, source);
    EXPECT_EQ(target->Name(), "kept");
    EXPECT_EQ(target->Description(), "kept too");
    EXPECT_EQ(target->Raw(), Variant(5));
    EXPECT_EQ(target->RawHex(), "AA");
    EXPECT_EQ(target->Length(), 0);
    EXPECT_EQ(target->Stream(), 0);
    EXPECT_EQ(target->Func(), 1);
    EXPECT_EQ(target->Root()->ItemCount(), 0);
}

/// Everything but the tree: "S3F7 9 kept 'kept too' 5 AA".
std::string FieldsOf(const SECSMessage& message) {
    std::string text = "S" + std::to_string(message.Stream()) + "F";
    text += std::to_string(message.Func()) + " " + std::to_string(message.Length()) + " ";
    text += message.Name() + " '" + message.Description() + "' ";
    text += (message.Raw().Kind() == VariantKind::Long ? std::to_string(message.Raw().AsLong())
                                                       : std::string("-"));
    return text + " " + message.RawHex();
}

TEST(CopyOfAMessage, TakesEachFieldByItself) {
    struct Row {
        std::function<void(SECSMessage&)> Set;
        const char* Fields;
    };
    const std::vector<Row> rows{
        {[](SECSMessage&) {}, "S0F1 0 kept 'kept too' 5 AA"},
        {[](SECSMessage& source) { source.Description("D"); }, "S0F1 0 kept 'D' 5 AA"},
        {[](SECSMessage& source) { source.Description(" "); }, "S0F1 0 kept ' ' 5 AA"},
        {[](SECSMessage& source) { source.Func(0); }, "S0F0 0 kept 'kept too' 5 AA"},
        {[](SECSMessage& source) { source.Func(255); }, "S0F255 0 kept 'kept too' 5 AA"},
        {[](SECSMessage& source) { MessageAccess::Length(source, 77); },
         "S0F1 77 kept 'kept too' 5 AA"},
        {[](SECSMessage& source) { source.Name("N"); }, "S0F1 0 N 'kept too' 5 AA"},
        {[](SECSMessage& source) { source.Raw(6); }, "S0F1 0 kept 'kept too' 6 AA"},
        {[](SECSMessage& source) { source.Raw(Variant::Null()); }, "S0F1 0 kept 'kept too' - AA"},
        {[](SECSMessage& source) { source.Raw(""); }, "S0F1 0 kept 'kept too' - AA"},
        {[](SECSMessage& source) { MessageAccess::RawHex(source, "BB"); },
         "S0F1 0 kept 'kept too' 5 BB"},
        {[](SECSMessage& source) { source.Stream(127); }, "S127F1 0 kept 'kept too' 5 AA"}};
    for (const Row& row : rows) {
        TransHost host;
        const SECSMessagePtr source = host.Make<SECSMessage>();
        row.Set(*source);
        const SECSMessagePtr target = host.Make<SECSMessage>();
        target->Name("kept");
        target->Description("kept too");
        target->Raw(5);
        MessageAccess::RawHex(*target, "AA");
        MessageAccess::Length(*target, 9);
        target->Stream(3);
        target->Func(7);
        AddItem(target->Root(), FormatU1, 1);
        CreateSECSMessage(target, source);
        EXPECT_EQ(FieldsOf(*target), row.Fields);
        EXPECT_EQ(target->Raw() == source->Raw(), !source->Raw().IsEmpty()) << row.Fields;
        EXPECT_EQ(target->Root()->ItemCount(), 1) << row.Fields;
        EXPECT_EQ(host.Take(), Reports{});
    }
}

TEST(CopyOfAMessage, PutsTheCopyUnderTheTargetsRootWithTheIndexOfTheOriginal) {
    TransHost host;
    const SECSMessagePtr source = host.Make<SECSMessage>();
    AddItem(source->Root(), FormatU1, 1);
    const SECSMessagePtr target = host.Make<SECSMessage>();
    const SECSItemPtr root = target->Root();
    AddItem(root, FormatU1, 8);
    AddItem(root, FormatU1, 9);
    CreateSECSMessage(target, source);
    EXPECT_EQ(target->Root(), root);
    std::vector<std::int32_t> indexes;
    for (const SECSItemPtr& item : *root) {
        indexes.push_back(item->ItemIndex());
        EXPECT_EQ(item->Parent(), root);
    }
    EXPECT_EQ(indexes, (std::vector<std::int32_t>{1, 2, 1}));
}

TEST(CopyOfAMessage, OfItselfAppendsItsFirstItem) {
    TransHost host;
    const SECSMessagePtr message = host.Make<SECSMessage>();
    AddItem(AddItem(message->Root(), FormatList), FormatU1, 5);
    CreateSECSMessage(message, message);
    ASSERT_EQ(message->Root()->ItemCount(), 2);
    message->Item(1)->Delete();
    EXPECT_EQ(fakes::HexOf(EncodeBody(*message)), "01 01 A5 01 05");
    EXPECT_EQ(host.Take(), Reports{});
}

TEST(CopyOfAMessage, LeavesRootsNameAndDescriptionAlone) {
    TransHost host;
    const SECSMessagePtr source = host.Make<SECSMessage>();
    source->Root()->Name("other root");
    source->Root()->Description("described");
    AddItem(source->Root(), FormatU1, 1);
    const SECSMessagePtr target = host.Make<SECSMessage>();
    CreateSECSMessage(target, source);
    EXPECT_EQ(target->Root()->Name(), "Root");
    EXPECT_EQ(target->Root()->Description(), "");
}

TEST(CopyOfAMessage, SharesNoArrayWithTheSource) {
    TransHost host;
    const SECSMessagePtr source = host.Make<SECSMessage>();
    AddItem(source->Root(), FormatU1, Variant(std::vector<std::uint8_t>{1, 2}));
    source->Raw(std::vector<std::uint8_t>{3, 4});
    const SECSMessagePtr target = host.Make<SECSMessage>();
    CreateSECSMessage(target, source);
    source->Item(1)->Value(std::vector<std::uint8_t>{9});
    source->Raw(std::vector<std::uint8_t>{9});
    EXPECT_EQ(target->Item(1)->Value(), Variant(std::vector<std::uint8_t>{1, 2}));
    EXPECT_EQ(target->Raw(), Variant(std::vector<std::uint8_t>{3, 4}));
}

TEST(CopyOfAMessage, TakesTheFirstItemOfTheRootOnly) {
    TransHost host;
    const SECSMessagePtr source = host.Make<SECSMessage>();
    AddItem(source->Root(), FormatU1, 1);
    AddItem(source->Root(), FormatU1, 2);
    const SECSMessagePtr target = host.Make<SECSMessage>();
    CreateSECSMessage(target, source);
    EXPECT_EQ(target->Root()->ItemCount(), 1);
    EXPECT_EQ(target->Item(1)->Value(), Variant(1));
    EXPECT_EQ(source->Root()->ItemCount(), 2);
}

TEST(CopyOfAMessage, AppendsBehindWhatTheTargetHolds) {
    TransHost host;
    const SECSMessagePtr source = host.Make<SECSMessage>();
    AddItem(source->Root(), FormatU1, 1);
    const SECSMessagePtr target = host.Make<SECSMessage>();
    AddItem(target->Root(), FormatU1, 9);
    CreateSECSMessage(target, source);
    CreateSECSMessage(target, source);
    std::vector<Variant> values;
    for (const SECSItemPtr& item : *target->Root())
        values.push_back(item->Value());
    EXPECT_EQ(values, (std::vector<Variant>{9, 1, 1}));
}

TEST(CopyOfAMessage, CopiesNamesAndDepthOfTheTree) {
    TransHost host;
    const SECSMessagePtr source = host.Make<SECSMessage>();
    SECSItemPtr item = AddItem(source->Root(), FormatList);
    for (int depth = 0; depth < 200; ++depth) {
        item->Name("level" + std::to_string(depth));
        item = AddItem(item, FormatList);
    }
    AddItem(item, FormatAscii, "deep");
    const SECSMessagePtr target = host.Make<SECSMessage>();
    CreateSECSMessage(target, source);
    EXPECT_EQ(target->Item(1)->Name(), "level0");
    EXPECT_EQ(EncodeBody(*target), EncodeBody(*source));
}

TEST(CopyOfAMessage, NeedsBothMessages) {
    TransHost host;
    CreateSECSMessage(host.Make<SECSMessage>(), nullptr);
    EXPECT_EQ(host.Take(), (Reports{{91, kNoMessage, 0}}));
    CreateSECSMessage(nullptr, host.Make<SECSMessage>());
    EXPECT_EQ(host.Take(), (Reports{{91, kNoMessage, 0}}));
}

}  // namespace
}  // namespace hexmire
