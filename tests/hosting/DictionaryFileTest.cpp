#include "DictionaryFile.h"
#include <gtest/gtest.h>

namespace hexmire {
namespace {

using namespace fakes;
using Texts = std::vector<std::string>;

const std::string kSecondary = MessageElement("Secondary");
const std::string kTransFault =
    "91 (Hexmire-CreateTransObject) Object variable or With block variable not set";
const std::string kItemFault =
    "91 (Hexmire-CreateItemNode) Object variable or With block variable not set";
const std::string kFileError =
    "2001 (Hexmire-LoadXMLDictionary) Read and parsing xml input file failed.";

struct Row {
    const char* Name;
    std::string Xml;
    Texts Templates;
    Texts Reported;
};

void ExpectEach(const std::vector<Row>& rows) {
    for (const Row& row : rows) {
        DictionaryFile host;
        host.Load(row.Xml);
        EXPECT_EQ(host.Templates(), row.Templates) << row.Name;
        EXPECT_EQ(host.Reported, row.Reported) << row.Name;
    }
}

TEST(DictionaryFile, GivesTransactionsMessagesAndItems) {
    ExpectEach(
        {{"whole",
          "<?xml version='1.0'?><Any><Trans Name='S1F3' Desc='Selected &amp; status'>"
          "<Primary Stream='1' Func='3' Name='SSR' Desc='request'><Root>" +
              ItemElement("L", "L", "NO", "", ItemElement("SVID", "u2", "no", "12.7")) +
              "</Root></Primary><Secondary Stream='2' Func='0' Name='SSD' Desc=''><Root/>"
              "</Secondary></Trans></Any>",
          {"S1F3|Selected & status P S1F3 SSR|request (L:0 Empty (SVID:42 Double 12)) "
           "S S2F0 SSD|"},
          {}},
         {"no transaction", "<D/>", {}, {}},
         {"nothing but other nodes", "<D>text<!-- c --><?p i?><![CDATA[<Trans/>]]></D>", {}, {}}});
}

TEST(DictionaryFile, HoldsTransactionsAsDirectChildrenOfTheDocumentElementOnly) {
    const std::string trans = "<Trans Name='%' Desc=''>" + MessageElement("Primary") + kSecondary;
    const auto named = [&](const char* name) {
        std::string text = trans;
        return text.replace(text.find('%'), 1, name);
    };
    const std::string rest = "| P S1F3 n|d S S1F4 n|d";
    ExpectEach(
        {{"below a group",
          "<D><Group>" + named("in") + "</Trans></Group>" + named("out") + "</Trans></D>",
          {"out" + rest},
          {}},
         {"below another",
          "<D>" + named("A") + named("B") + "</Trans></Trans></D>",
          {"A" + rest},
          {}},
         {"document element named Trans with transactions",
          "<Trans>" + named("A") + "</Trans>" + named("B") + "</Trans></Trans>",
          {"A" + rest, "B" + rest},
          {}},
         {"document element that is a transaction", named("A") + "</Trans>", {}, {}},
         {"other letter case", "<D><trans Name='a' Desc=''/><TRANS/></D>", {}, {}},
         {"prefixed", "<D xmlns:x='u'><x:Trans/></D>", {}, {}},
         {"default namespace", "<D xmlns='u'>" + named("A") + "</Trans></D>", {"A" + rest}, {}}});
}

TEST(DictionaryFile, HoldsMessagesAsTheFirstDirectChildOfTheirName) {
    const std::string second = "<Primary Stream='9' Func='9' Name='x' Desc='x'><Root/></Primary>";
    ExpectEach(
        {{"second of each is passed over",
          TransFile(MessageElement("Primary") + second, kSecondary + kSecondary),
          {"T|t P S1F3 n|d S S1F4 n|d"},
          {}},
         {"secondary first",
          TransFile(kSecondary, MessageElement("Primary")),
          {"T|t P S1F3 n|d S S1F4 n|d"},
          {}},
         {"not below another element",
          TransFile("<Both>" + MessageElement("Primary"), kSecondary + "</Both>"),
          {"T|t P S0F1 | S S0F2 |"},
          {kTransFault}},
         {"a broken first one is not replaced by a whole second",
          TransFile("<Primary/>" + second, kSecondary),
          {"T|t P S0F1 | S S0F2 |"},
          {kTransFault}},
         {"only the first Root",
          TransFile(
              "<Primary Stream='1' Func='3' Name='n' Desc='d'><!-- c --><root/><Root/><Root>" +
                  ItemElement("i", "U1", "NO", "1") + "</Root></Primary>",
              kSecondary),
          {"T|t P S1F3 n|d S S1F4 n|d"},
          {}},
         {"an item beside the Root",
          TransFile("<Primary Stream='1' Func='3' Name='n' Desc='d'>" +
                        ItemElement("i", "U1", "NO", "1") + "<Root/></Primary>",
                    kSecondary),
          {"T|t P S1F3 n|d S S1F4 n|d"},
          {}}});
}

TEST(DictionaryFile, PassesOverEveryNodeThatIsNoItem) {
    const std::string a = ItemElement("a", "U1", "NO", "1");
    const std::string b = ItemElement("b", "U1", "NO", "2");
    const std::string mixed = "\n  " + a + "<!-- " + b + " -->text<?Item Name='i'?><![CDATA[" + b +
                              "]]><item Name='i' Desc='' Format='A' IsArray='' Value=''/><Items>" +
                              b + "</Items><x:Item>" + b + "</x:Item>&amp;\t" + b + "\n";
    const std::string top =
        "<D xmlns:x='u'><Trans Name='T' Desc='t'>" + MessageElement("Primary", mixed) +
        MessageElement("Secondary", ItemElement("L", "L", "NO", "", mixed)) + "</Trans></D>";
    ExpectEach({{"in a root and in a list",
                 top,
                 {"T|t P S1F3 n|d (a:41 Integer 1, b:41 Integer 2) "
                  "S S1F4 n|d (L:0 Empty (a:41 Integer 1, b:41 Integer 2))"},
                 {}}});
}

TEST(DictionaryFile, StopsAMessageAtWhatIsMissingAndGoesOnBehindTheTransaction) {
    const std::string primary = MessageElement("Primary", ItemElement("i", "A", "NO", "x"));
    const std::string filled = "T|t P S1F3 n|d (i:16 String 'x') S ";
    const std::string root = "><Root>" + ItemElement("j", "A", "NO", "y") + "</Root></Secondary>";
    struct Gap {
        const char* Attributes;
        const char* After;
    };
    for (const Gap& gap : {Gap{"Func='8' Name='m' Desc='e'", "S0F2 |"},
                           Gap{"stream='5' Func='8' Name='m' Desc='e'", "S0F2 |"},
                           Gap{"Stream='5' Name='m' Desc='e'", "S5F2 |"},
                           Gap{"Stream='5' Func='8' Desc='e'", "S5F8 |"},
                           Gap{"Stream='5' Func='8' Name='m'", "S5F8 m|"}}) {
        DictionaryFile host;
        const std::string broken =
            TransFile(primary, std::string("<Secondary ") + gap.Attributes + root);
        host.Load(broken.substr(0, broken.size() - 4) + "<Trans Name='U' Desc='u'/></D>");
        EXPECT_EQ(host.Templates(), (Texts{filled + gap.After, "U|u P S0F1 | S S0F2 |"}));
        EXPECT_EQ(host.Reported, (Texts{kTransFault, kTransFault})) << gap.Attributes;
    }
    ExpectEach({{"no Root",
                 TransFile(primary, "<Secondary Stream='5' Func='8' Name='m' Desc='e'/>"),
                 {filled + "S5F8 m|e"},
                 {kTransFault}},
                {"no Secondary", TransFile(primary, ""), {filled + "S0F2 |"}, {kTransFault}}});
}

TEST(DictionaryFile, StopsAnItemAtWhatIsMissingAndGoesOnWithTheNext) {
    struct Gap {
        const char* Attributes;
        const char* After;
    };
    const std::string child = ItemElement("c", "U1", "NO", "1");
    for (const Gap& gap : {Gap{"Desc='' Format='L' IsArray='' Value=''", ":63 Empty"},
                           Gap{"Name='i' Format='L' IsArray='' Value=''", "i:63 Empty"},
                           Gap{"Name='i' Desc='' IsArray='' Value=''", "i:63 Empty"},
                           Gap{"Name='i' Desc='' format='L' IsArray='' Value=''", "i:63 Empty"},
                           Gap{"Name='i' Desc='' Format='L' Value=''", "i:0 Empty"},
                           Gap{"Name='i' Desc='' Format='L' IsArray='YES'", "i:0 Empty"},
                           Gap{"Name='i' Desc='' Format='L' IsArray='NO'", "i:0 Empty"}}) {
        DictionaryFile host;
        host.Load(TransFile(MessageElement("Primary",
                                           std::string("<Item ") + gap.Attributes + ">" + child +
                                               "</Item>" + child),
                            kSecondary));
        EXPECT_EQ(
            host.Templates(),
            (Texts{std::string("T|t P S1F3 n|d (") + gap.After + ", c:41 Integer 1) S S1F4 n|d"}));
        EXPECT_EQ(host.Reported, (Texts{kItemFault})) << gap.Attributes;
    }
}

TEST(DictionaryFile, WithABrokenTailLoadsNothing) {
    const std::string whole = TransFile(MessageElement("Primary"), kSecondary);
    for (const std::string& text : {whole.substr(0, whole.size() - 1),
                                    whole + "<D/>",
                                    whole + "tail",
                                    whole.substr(0, whole.size() - 4) + "<Trans></D>",
                                    whole.substr(0, whole.size() - 4) + "<Trans a='1' a='2'/></D>",
                                    whole.substr(0, whole.size() - 4) + "&nothing;</D>",
                                    std::string()}) {
        DictionaryFile host;
        host.Load(whole);
        host.Load(text);
        EXPECT_EQ(host.Templates().size(), 1U) << text;
        EXPECT_EQ(host.Reported, (Texts{kFileError})) << text;
        EXPECT_EQ(host.Loader().ErrorCode(), 2001);
        host.Load(whole);
        EXPECT_EQ(host.Templates().size(), 2U) << text;
        EXPECT_EQ(host.Loader().ErrorCode(), 2001);
    }
}

TEST(DictionaryFile, IsHeldAgainstTheDeclarationsItCarries) {
    const std::string declared =
        "<!DOCTYPE D [<!ELEMENT D (Trans*)><!ELEMENT Trans (Primary, Secondary)>"
        "<!ELEMENT Primary (Root)><!ELEMENT Secondary (Root)><!ELEMENT Root EMPTY>"
        "<!ATTLIST Trans Name CDATA #REQUIRED Desc CDATA 'd'>"
        "<!ATTLIST Primary Stream CDATA '1' Func CDATA '3' Name CDATA 'n' Desc CDATA 'd'>"
        "<!ATTLIST Secondary Stream CDATA '1' Func CDATA '4' Name CDATA 'n' Desc CDATA 'd'>]>";
    ExpectEach({{"declared defaults are attributes",
                 declared + "<D><Trans Name='T'><Primary><Root/></Primary><Secondary><Root/>"
                            "</Secondary></Trans></D>",
                 {"T|d P S1F3 n|d S S1F4 n|d"},
                 {}},
                {"what they do not allow loads nothing",
                 declared + "<D><Trans Name='T'><Primary><Root/></Primary></Trans></D>",
                 {},
                 {kFileError}}});
}

TEST(DictionaryFile, ThatIsMissingIsReported) {
    DictionaryFile host;
    for (const char* path : {"", "/nowhere/Default.xml", "/", "http://127.0.0.1:1/Default.xml"}) {
        host.Loader().SECSDictionaryFile(path);
        host.Reported.clear();
        host.Loader().LoadXMLDictionary();
        EXPECT_EQ(host.Reported, (Texts{kFileError})) << path;
    }
    EXPECT_EQ(host.Templates(), Texts{});
}

}  // namespace
}  // namespace hexmire
