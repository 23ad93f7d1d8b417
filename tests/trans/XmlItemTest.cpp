#include <hexmire/core/detail/SECSMessageAccess.h>
#include <hexmire/trans/XmlDictionary.h>

#include "../fakes/FakeXMLDocument.h"
#include "../fakes/Messages.h"
#include "../fakes/TransHost.h"
#include "../fakes/VariantText.h"
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace hexmire {
namespace {

using fakes::FakeXMLNode;
using fakes::Show;
using fakes::TransHost;
using Node = std::shared_ptr<FakeXMLNode>;
using Attributes = FakeXMLNode::Attributes;
using Children = FakeXMLNode::Children;
using Reports = TransHost::Reports;

const Reports kItemNode{
    {91, "(Hexmire-CreateItemNode) Object variable or With block variable not set", 0}};

Attributes AttributesOf(const std::string& format,
                        const std::string& isArray,
                        const std::string& value) {
    return {
        {"Name", "n"}, {"Desc", "d"}, {"Format", format}, {"IsArray", isArray}, {"Value", value}};
}

Node ItemNode(const std::string& format,
              const std::string& value,
              Children children = {},
              const std::string& isArray = "NO") {
    return FakeXMLNode::Make("Item", AttributesOf(format, isArray, value), std::move(children));
}

/// What one node builds below a root.
SECSItemPtr Build(TransHost& host, const SECSMessagePtr& message, const Node& node) {
    const SiteScope scope(detail::SECSMessageAccess::Site(*message));
    detail::CreateItemNode(message->Root(), node);
    static_cast<void>(host);
    return message->Root();
}

TEST(XmlItem, TakesNameDescriptionFormatAndValue) {
    TransHost host;
    const SECSMessagePtr message = host.Make<SECSMessage>();
    const SECSItemPtr item = Build(host, message, ItemNode("A", "text"))->Item(1);
    EXPECT_EQ(item->Name(), "n");
    EXPECT_EQ(item->Description(), "d");
    EXPECT_EQ(item->Format(), FormatAscii);
    EXPECT_EQ(item->Value(), Variant("text"));
    EXPECT_EQ(host.Take(), Reports{});
}

TEST(XmlItem, KnowsTheFormatTexts) {
    struct Row {
        const char* Text;
        std::int32_t Format;
    };
    for (const Row& row : {Row{"L", 0},
                           Row{"B", 8},
                           Row{"BOOL", 9},
                           Row{"A", 16},
                           Row{"I8", 24},
                           Row{"I4", 28},
                           Row{"I2", 26},
                           Row{"I1", 25},
                           Row{"F8", 32},
                           Row{"F4", 36},
                           Row{"U8", 40},
                           Row{"U4", 44},
                           Row{"U2", 42},
                           Row{"U1", 41},
                           Row{"V", 63},
                           Row{"u4", 44},
                           Row{"XX", 63},
                           Row{"", 63}}) {
        TransHost host;
        const SECSMessagePtr message = host.Make<SECSMessage>();
        EXPECT_EQ(Build(host, message, ItemNode(row.Text, ""))->Item(1)->Format(), row.Format)
            << row.Text;
    }
}

TEST(XmlItem, ReadsAnArrayOnlyForYes) {
    struct Row {
        const char* IsArray;
        bool Array;
    };
    for (const Row& row : {Row{"YES", true},
                           Row{"yes", true},
                           Row{"Yes", true},
                           Row{"yEs", true},
                           Row{"TRUE", false},
                           Row{"NO", false},
                           Row{"", false},
                           Row{" YES", false},
                           Row{"Y", false}}) {
        TransHost host;
        const SECSMessagePtr message = host.Make<SECSMessage>();
        const SECSItemPtr item =
            Build(host, message, ItemNode("U1", "7", {}, row.IsArray))->Item(1);
        EXPECT_EQ(item->Value().IsArray(), row.Array) << row.IsArray << " " << Show(item->Value());
    }
}

TEST(XmlItem, StopsAtTheFirstMissingAttribute) {
    // Read in this order; what was read stays, the value needs them all.
    const std::vector<std::string> order{"Name", "Desc", "Format", "IsArray", "Value"};
    const std::vector<std::string> after{"|| 63", "n|| 63", "n|d| 63", "n|d| 41", "n|d| 41"};
    for (std::size_t missing = 0; missing < order.size(); ++missing) {
        TransHost host;
        Attributes attributes = AttributesOf("U1", "NO", "7");
        attributes.erase(order[missing]);
        const SECSMessagePtr message = host.Make<SECSMessage>();
        const SECSItemPtr root =
            Build(host, message, FakeXMLNode::Make("Item", attributes, {ItemNode("U1", "1")}));
        ASSERT_EQ(root->ItemCount(), 1);
        const SECSItemPtr item = root->Item(1);
        EXPECT_EQ(item->Name() + "|" + item->Description() + "| " + std::to_string(item->Format()),
                  after[missing]);
        EXPECT_TRUE(item->Value().IsEmpty()) << order[missing];
        EXPECT_EQ(host.Take(), kItemNode) << order[missing];
    }
}

TEST(XmlItem, StoppedInAListReadsNoChildren) {
    TransHost host;
    Attributes attributes = AttributesOf("L", "NO", "");
    attributes.erase("Value");
    const SECSMessagePtr message = host.Make<SECSMessage>();
    const SECSItemPtr root =
        Build(host, message, FakeXMLNode::Make("Item", attributes, {ItemNode("U1", "1")}));
    EXPECT_EQ(root->Item(1)->ItemCount(), 0);
    EXPECT_EQ(host.Take(), kItemNode);
}

TEST(XmlItem, BuildsNestedListsInDocumentOrder) {
    TransHost host;
    const SECSMessagePtr message = host.Make<SECSMessage>();
    Build(host,
          message,
          ItemNode("L",
                   "",
                   {ItemNode("U1", "1"),
                    ItemNode("L", "", {ItemNode("U1", "2"), ItemNode("L", "")}),
                    ItemNode("U1", "3")}));
    EXPECT_EQ(fakes::HexOf(EncodeBody(*message)), "01 03 A5 01 01 01 02 A5 01 02 01 00 A5 01 03");
}

TEST(XmlItem, PassesOverEverythingThatIsNoItem) {
    TransHost host;
    const SECSMessagePtr message = host.Make<SECSMessage>();
    for (const Node& node : {FakeXMLNode::Make(""),
                             FakeXMLNode::Make("item", AttributesOf("U1", "NO", "1")),
                             FakeXMLNode::Make("ITEM"),
                             FakeXMLNode::Make("Items"),
                             FakeXMLNode::Make("Root", {}, {ItemNode("U1", "1")})}) {
        EXPECT_EQ(Build(host, message, node)->ItemCount(), 0);
    }
    EXPECT_EQ(host.Take(), Reports{});
}

TEST(XmlItem, PassesOverCommentsBetweenChildren) {
    TransHost host;
    const SECSMessagePtr message = host.Make<SECSMessage>();
    const SECSItemPtr list = Build(host,
                                   message,
                                   ItemNode("L",
                                            "",
                                            {FakeXMLNode::Make(""),
                                             ItemNode("U1", "1"),
                                             FakeXMLNode::Make("Note"),
                                             ItemNode("U1", "2"),
                                             FakeXMLNode::Make("")}))
                                 ->Item(1);
    EXPECT_EQ(list->ItemCount(), 2);
    EXPECT_EQ(host.Take(), Reports{});
}

TEST(XmlItem, ReportsAValueThatDoesNotConvertAndBuildsTheChildren) {
    TransHost host;
    const SECSMessagePtr message = host.Make<SECSMessage>();
    Build(host, message, ItemNode("L", "", {ItemNode("U1", "abc"), ItemNode("U1", "2")}));
    ASSERT_EQ(host.Errors.size(), 1U);
    EXPECT_EQ(host.Errors[0].Code, 13);
    EXPECT_EQ(host.Errors[0].Text, "(ModGeneral-lAssignValue) Type mismatch");
    EXPECT_TRUE(message->Item(1)->Item(1)->Value().IsEmpty());
    EXPECT_EQ(message->Item(1)->Item(2)->Value(), Variant(std::int16_t{2}));
}

TEST(XmlItem, FaultsForEveryChildOfAnItemThatIsNoList) {
    TransHost host;
    const SECSMessagePtr message = host.Make<SECSMessage>();
    Build(host, message, ItemNode("U1", "1", {ItemNode("U1", "2"), ItemNode("U1", "3")}));
    const Reports noList{{2002, "(SECSItem-AddNew) You cannot add new item into non-list item.", 0},
                         kItemNode[0]};
    EXPECT_EQ(host.Take(), (Reports{noList[0], noList[1], noList[0], noList[1]}));
    EXPECT_EQ(message->Root()->ItemCount(), 1);
}

TEST(XmlItem, TakesAnEmptyAttributeAsAValue) {
    TransHost host;
    const SECSMessagePtr message = host.Make<SECSMessage>();
    const Attributes attributes{
        {"Name", ""}, {"Desc", ""}, {"Format", "A"}, {"IsArray", ""}, {"Value", ""}};
    const SECSItemPtr item = Build(host, message, FakeXMLNode::Make("Item", attributes))->Item(1);
    EXPECT_EQ(item->Name(), "");
    EXPECT_TRUE(item->Value().IsEmpty());
    EXPECT_EQ(host.Take(), Reports{});
}

TEST(XmlItem, SurvivesItemsNestedAHundredThousandDeep) {
    TransHost host;
    constexpr int kDepth = 100000;
    Node node = ItemNode("U1", "7");
    std::vector<Node> nodes{node};
    for (int depth = 0; depth < kDepth; ++depth) {
        node = ItemNode("L", "", {node});
        nodes.push_back(node);
    }
    const SECSMessagePtr message = host.Make<SECSMessage>();
    Build(host, message, node);
    EXPECT_EQ(EncodeBody(*message).size(), 2U * kDepth + 3U);
    EXPECT_EQ(host.Take(), Reports{});
    node.reset();
    while (!nodes.empty())
        nodes.pop_back();
}

TEST(XmlTransactions, AreTheDirectChildrenOfTheDocumentElementInOrder) {
    fakes::XMLRecord record;
    const auto first = FakeXMLNode::Make("Trans", {}, {FakeXMLNode::Make("Trans")});
    const auto last = FakeXMLNode::Make("Trans");
    record.Document =
        FakeXMLNode::Make("AnyName",
                          {},
                          {FakeXMLNode::Make(""),
                           first,
                           FakeXMLNode::Make("Group", {}, {FakeXMLNode::Make("Trans")}),
                           FakeXMLNode::Make("trans"),
                           last});
    EXPECT_EQ(detail::SelectTransactions(fakes::FakeXMLDocument(record)),
              (std::vector<std::shared_ptr<const IXMLNode>>{first, last}));
}

TEST(XmlTransactions, OfAnEmptyDocumentAreNone) {
    fakes::XMLRecord record;
    record.Document = FakeXMLNode::Make("Dictionary");
    EXPECT_TRUE(detail::SelectTransactions(fakes::FakeXMLDocument(record)).empty());
}

}  // namespace
}  // namespace hexmire
