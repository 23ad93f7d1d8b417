#include <hexmire/trans/XmlDictionary.h>

#include "../fakes/FakeXMLDocument.h"
#include "../fakes/Messages.h"
#include "../fakes/TransHost.h"
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace hexmire {
namespace {

using fakes::FakeXMLNode;
using fakes::TransHost;
using Node = std::shared_ptr<FakeXMLNode>;
using Attributes = FakeXMLNode::Attributes;
using Children = FakeXMLNode::Children;
using Reports = TransHost::Reports;

const Reports kTransObject{
    {91, "(Hexmire-CreateTransObject) Object variable or With block variable not set", 0}};
const Reports kItemNode{
    {91, "(Hexmire-CreateItemNode) Object variable or With block variable not set", 0}};

Node Comment() { return FakeXMLNode::Make(""); }

Node ItemNode(const std::string& name,
              const std::string& format,
              const std::string& value,
              Children children = {},
              const std::string& isArray = "NO") {
    return FakeXMLNode::Make("Item",
                             {{"Name", name},
                              {"Desc", name + " described"},
                              {"Format", format},
                              {"IsArray", isArray},
                              {"Value", value}},
                             std::move(children));
}

Node MessageNode(const std::string& element,
                 const std::string& stream,
                 const std::string& function,
                 Children items = {}) {
    return FakeXMLNode::Make(element,
                             {{"Stream", stream},
                              {"Func", function},
                              {"Name", element + "Name"},
                              {"Desc", element + "Desc"}},
                             {FakeXMLNode::Make("Root", {}, std::move(items))});
}

Node TransNode(const std::string& name, Children children) {
    return FakeXMLNode::Make(
        "Trans", {{"Name", name}, {"Desc", name + " described"}}, std::move(children));
}

Node S1F3(Children items = {}) {
    return TransNode(
        "S1F3",
        {MessageNode("Primary", "1", "3", std::move(items)), MessageNode("Secondary", "1", "4")});
}

/// A dictionary with what one Trans element built.
SECSDictionaryPtr Load(TransHost& host, const Node& node) {
    SECSDictionaryPtr dictionary = host.Make<SECSDictionary>();
    detail::CreateTransObject(*dictionary, node);
    return dictionary;
}

TEST(XmlTrans, BuildsBothMessages) {
    TransHost host;
    const auto dictionary = Load(host, S1F3({ItemNode("Ids", "U1", "7")}));
    ASSERT_EQ(dictionary->TransCount(), 1);
    const SECSTransPtr trans = dictionary->SECSTrans(1);
    EXPECT_EQ(trans->Name(), "S1F3");
    EXPECT_EQ(trans->Description(), "S1F3 described");
    EXPECT_EQ(trans->Index(), 1);
    EXPECT_EQ(trans->Primary()->Stream(), 1);
    EXPECT_EQ(trans->Primary()->Func(), 3);
    EXPECT_EQ(trans->Primary()->Name(), "PrimaryName");
    EXPECT_EQ(trans->Primary()->Description(), "PrimaryDesc");
    EXPECT_EQ(trans->Secondary()->Stream(), 1);
    EXPECT_EQ(trans->Secondary()->Func(), 4);
    EXPECT_EQ(trans->Secondary()->Name(), "SecondaryName");
    EXPECT_EQ(trans->Primary()->Root()->ItemCount(), 1);
    EXPECT_EQ(trans->Secondary()->Root()->ItemCount(), 0);
    EXPECT_EQ(host.Take(), Reports{});
}

TEST(XmlTrans, KeepsTheCreationDefaultsOfWhatTheFileDoesNotSay) {
    TransHost host;
    host.DeviceId = 3;
    const SECSTransPtr trans = Load(host, S1F3())->SECSTrans(1);
    EXPECT_TRUE(trans->ReplyExpected());
    EXPECT_TRUE(trans->AutoSystemBytes());
    EXPECT_EQ(trans->DeviceID(), 3);
    EXPECT_TRUE(trans->Tag().IsEmpty());
    EXPECT_FALSE(trans->InProgress());
}

TEST(XmlTrans, TakesTheSecondarysFunctionFromTheFile) {
    TransHost host;
    const auto dictionary = Load(
        host,
        TransNode("odd", {MessageNode("Primary", "6", "11"), MessageNode("Secondary", "0", "0")}));
    EXPECT_EQ(dictionary->SECSTrans(1)->Secondary()->Func(), 0);
    EXPECT_EQ(dictionary->SECSTrans(1)->Secondary()->Stream(), 0);
}

TEST(XmlTrans, AppendsBehindWhatIsThere) {
    TransHost host;
    const auto dictionary = Load(host, S1F3());
    detail::CreateTransObject(*dictionary, S1F3());
    EXPECT_EQ(dictionary->TransCount(), 2);
    EXPECT_EQ(dictionary->SECSTrans(2)->Index(), 2);
    EXPECT_EQ(dictionary->SECSTrans("S1F3")->Index(), 1);
}

TEST(XmlTrans, TakesTheFirstChildOfEachName) {
    TransHost host;
    const auto dictionary = Load(host,
                                 TransNode("T",
                                           {Comment(),
                                            FakeXMLNode::Make("primary"),
                                            MessageNode("Secondary", "2", "8"),
                                            MessageNode("Primary", "2", "7"),
                                            MessageNode("Primary", "3", "9"),
                                            MessageNode("Secondary", "4", "10")}));
    EXPECT_EQ(dictionary->SECSTrans(1)->Primary()->Func(), 7);
    EXPECT_EQ(dictionary->SECSTrans(1)->Secondary()->Func(), 8);
    EXPECT_EQ(host.Take(), Reports{});
}

TEST(XmlTrans, TakesItemsOfTheFirstRootOnly) {
    TransHost host;
    const Node primary = FakeXMLNode::Make(
        "Primary",
        {{"Stream", "1"}, {"Func", "3"}, {"Name", ""}, {"Desc", ""}},
        {Comment(),
         ItemNode("stray", "U1", "1"),
         FakeXMLNode::Make("Root", {}, {ItemNode("a", "U1", "1"), ItemNode("b", "U1", "2")}),
         FakeXMLNode::Make("Root", {}, {ItemNode("c", "U1", "3")})});
    const auto dictionary =
        Load(host, TransNode("T", {primary, MessageNode("Secondary", "1", "4")}));
    const SECSItemPtr root = dictionary->SECSTrans(1)->Primary()->Root();
    EXPECT_EQ(root->ItemCount(), 2);
    EXPECT_EQ(root->Item(1)->Name(), "a");
    EXPECT_EQ(root->Item(2)->Name(), "b");
}

TEST(XmlTrans, WithoutItsOwnAttributesStaysAppendedAndBlank) {
    struct Row {
        Attributes Given;
        const char* Name;
    };
    for (const Row& row : {Row{{}, ""}, Row{{{"Desc", "d"}}, ""}, Row{{{"Name", "n"}}, "n"}}) {
        TransHost host;
        const auto dictionary =
            Load(host, FakeXMLNode::Make("Trans", row.Given, {MessageNode("Primary", "5", "5")}));
        ASSERT_EQ(dictionary->TransCount(), 1);
        EXPECT_EQ(dictionary->SECSTrans(1)->Name(), row.Name);
        EXPECT_EQ(dictionary->SECSTrans(1)->Description(), "");
        EXPECT_EQ(dictionary->SECSTrans(1)->Primary()->Stream(), 0);
        EXPECT_EQ(host.Take(), kTransObject);
    }
}

TEST(XmlTrans, WithoutSecondaryKeepsTheFilledPrimary) {
    TransHost host;
    const auto dictionary =
        Load(host, TransNode("T", {MessageNode("Primary", "5", "7", {ItemNode("a", "U1", "1")})}));
    const SECSTransPtr trans = dictionary->SECSTrans(1);
    EXPECT_EQ(trans->Primary()->Func(), 7);
    EXPECT_EQ(trans->Primary()->Root()->ItemCount(), 1);
    EXPECT_EQ(trans->Secondary()->Stream(), 0);
    EXPECT_EQ(trans->Secondary()->Func(), 2);
    EXPECT_EQ(host.Take(), kTransObject);
}

TEST(XmlTrans, WithoutPrimaryReadsNoSecondary) {
    TransHost host;
    const auto dictionary = Load(host, TransNode("T", {MessageNode("Secondary", "5", "8")}));
    EXPECT_EQ(dictionary->SECSTrans(1)->Secondary()->Stream(), 0);
    EXPECT_EQ(host.Take(), kTransObject);
}

TEST(XmlTrans, StopsAtTheFirstMissingAttributeOfAMessage) {
    // What is read before the gap stays: stream, function, name, description, in this order.
    const std::vector<std::string> order{"Stream", "Func", "Name", "Desc"};
    const std::vector<std::string> after{"0 1  ", "9 1  ", "9 5  ", "9 5 n "};
    for (std::size_t missing = 0; missing < order.size(); ++missing) {
        TransHost host;
        Attributes attributes{{"Stream", "9"}, {"Func", "5"}, {"Name", "n"}, {"Desc", "d"}};
        attributes.erase(order[missing]);
        const Node primary = FakeXMLNode::Make(
            "Primary", attributes, {FakeXMLNode::Make("Root", {}, {ItemNode("a", "U1", "1")})});
        const auto dictionary =
            Load(host, TransNode("T", {primary, MessageNode("Secondary", "9", "6")}));
        const SECSMessagePtr message = dictionary->SECSTrans(1)->Primary();
        EXPECT_EQ(std::to_string(message->Stream()) + " " + std::to_string(message->Func()) + " " +
                      message->Name() + " " + message->Description(),
                  after[missing]);
        EXPECT_EQ(message->Root()->ItemCount(), 0);
        EXPECT_EQ(dictionary->SECSTrans(1)->Secondary()->Stream(), 0);
        EXPECT_EQ(host.Take(), kTransObject) << order[missing];
    }
}

TEST(XmlTrans, WithoutRootStopsBeforeTheSecondary) {
    TransHost host;
    const Node primary = FakeXMLNode::Make(
        "Primary", {{"Stream", "9"}, {"Func", "5"}, {"Name", "n"}, {"Desc", "d"}});
    const auto dictionary =
        Load(host, TransNode("T", {primary, MessageNode("Secondary", "9", "6")}));
    EXPECT_EQ(dictionary->SECSTrans(1)->Primary()->Description(), "d");
    EXPECT_EQ(dictionary->SECSTrans(1)->Secondary()->Stream(), 0);
    EXPECT_EQ(host.Take(), kTransObject);
}

TEST(XmlTrans, GoesOnAfterARefusedStreamOrFunction) {
    TransHost host;
    const auto dictionary =
        Load(host,
             TransNode(
                 "T", {MessageNode("Primary", "128", "256"), MessageNode("Secondary", "1", "-1")}));
    const SECSTransPtr trans = dictionary->SECSTrans(1);
    EXPECT_EQ(trans->Primary()->Stream(), 0);
    EXPECT_EQ(trans->Primary()->Func(), 1);
    EXPECT_EQ(trans->Primary()->Name(), "PrimaryName");
    EXPECT_EQ(trans->Secondary()->Stream(), 1);
    EXPECT_EQ(trans->Secondary()->Func(), 2);
    EXPECT_EQ(
        host.Take(),
        (Reports{
            {1013,
             "(SECSMessage-Let Stream) The Stream property must be between 0 and 127 inclusive.",
             0},
            {1014,
             "(SECSMessage-Let Func) The Func property must be between 0 and 255 inclusive.",
             0},
            {1014,
             "(SECSMessage-Let Func) The Func property must be between 0 and 255 inclusive.",
             0}}));
}

TEST(XmlTrans, FaultsOnAStreamThatIsNoNumber) {
    struct Row {
        const char* Text;
        std::int32_t Code;
        const char* Message;
    };
    for (const Row& row : {Row{"", 13, "(Hexmire-CreateTransObject) Type mismatch"},
                           Row{"one", 13, "(Hexmire-CreateTransObject) Type mismatch"},
                           Row{"1x", 13, "(Hexmire-CreateTransObject) Type mismatch"},
                           Row{"0x10", 13, "(Hexmire-CreateTransObject) Type mismatch"},
                           Row{"2147483648", 6, "(Hexmire-CreateTransObject) Overflow"},
                           Row{"-2147483649", 6, "(Hexmire-CreateTransObject) Overflow"}}) {
        TransHost host;
        const auto dictionary = Load(
            host,
            TransNode("T",
                      {MessageNode("Primary", row.Text, "3"), MessageNode("Secondary", "1", "4")}));
        EXPECT_EQ(host.Take(), (Reports{{row.Code, row.Message, 0}})) << row.Text;
        EXPECT_EQ(dictionary->SECSTrans(1)->Primary()->Func(), 1);
        EXPECT_EQ(dictionary->SECSTrans(1)->Secondary()->Stream(), 0);
    }
}

TEST(XmlTrans, GoesOnAfterAFaultOfAnItem) {
    TransHost host;
    const auto dictionary = Load(host, S1F3({FakeXMLNode::Make("Item"), ItemNode("b", "U1", "2")}));
    const SECSTransPtr trans = dictionary->SECSTrans(1);
    EXPECT_EQ(trans->Primary()->Root()->ItemCount(), 2);
    EXPECT_EQ(trans->Primary()->Root()->Item(2)->Value(), Variant(std::int16_t{2}));
    EXPECT_EQ(trans->Secondary()->Func(), 4);
    EXPECT_EQ(host.Take(), kItemNode);
}

}  // namespace
}  // namespace hexmire
