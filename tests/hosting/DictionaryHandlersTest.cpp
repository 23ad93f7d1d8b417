#include "DictionaryFile.h"
#include <gtest/gtest.h>

#include <stdexcept>
#include <utility>

namespace hexmire {
namespace {

using namespace fakes;
using Texts = std::vector<std::string>;

const std::string kTransFault =
    "91 (Hexmire-CreateTransObject) Object variable or With block variable not set";
const std::string kSecondary = MessageElement("Secondary");

TEST(DictionaryErrorHandler, MayLoadAnotherFileBetweenTwoTransactions) {
    DictionaryFile host;
    bool once = true;
    host.OnError = [&] {
        if (!std::exchange(once, false)) return;
        host.Load("<D><Trans Name='other' Desc=''>" + MessageElement("Primary") + kSecondary +
                  "</Trans></D>");
    };
    host.Load("<D><Trans Name='first' Desc=''/><Trans Name='last' Desc=''/></D>");
    EXPECT_EQ(host.Templates(),
              (Texts{"first| P S0F1 | S S0F2 |",
                     "other| P S1F3 n|d S S1F4 n|d",
                     "last| P S0F1 | S S0F2 |"}));
    EXPECT_EQ(host.Loader().SECSDictionary()->SECSTrans(3)->Index(), 3);
    EXPECT_EQ(host.Reported, (Texts{kTransFault, kTransFault}));
}

TEST(DictionaryErrorHandler, MayDeleteTheTransactionThatIsBeingBuilt) {
    DictionaryFile host;
    host.OnError = [&] {
        const auto dictionary = host.Loader().SECSDictionary();
        dictionary->SECSTrans(dictionary->TransCount())->Delete();
    };
    const std::string bad = ItemElement("i", "I4", "NO", "abc");
    const std::string list =
        ItemElement("L", "L", "NO", "", bad + ItemElement("j", "U1", "NO", "1"));
    const std::string file = TransFile(MessageElement("Primary", list), kSecondary);
    host.Load(file.substr(0, file.size() - 4) + "<Trans Name='U' Desc='u'>" +
              MessageElement("Primary") + kSecondary + "</Trans></D>");
    EXPECT_EQ(host.Templates(), (Texts{"U|u P S1F3 n|d S S1F4 n|d"}));
    EXPECT_EQ(host.Loader().SECSDictionary()->SECSTrans(1)->Index(), 1);
    EXPECT_EQ(host.Reported, (Texts{"13 (ModGeneral-lAssignValue) Type mismatch"}));
}

TEST(DictionaryErrorHandler, MayTakeAwayTheListThatIsBeingBuilt) {
    DictionaryFile host;
    SECSItemPtr list;
    host.OnError = [&] {
        list = host.Loader().SECSDictionary()->SECSTrans(1)->Primary()->Item(1);
        list->Delete();
    };
    host.Load(TransFile(MessageElement("Primary",
                                       ItemElement("L",
                                                   "L",
                                                   "NO",
                                                   "",
                                                   ItemElement("i", "I4", "NO", "abc") +
                                                       ItemElement("j", "U1", "NO", "1")) +
                                           ItemElement("k", "U1", "NO", "2")),
                        kSecondary));
    EXPECT_EQ(host.Templates(), (Texts{"T|t P S1F3 n|d (k:41 Integer 2) S S1F4 n|d"}));
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(list->ItemCount(), 2);
    EXPECT_EQ(list->Parent(), nullptr);
}

TEST(DictionaryErrorHandler, ThatThrowsDoesNotStopTheLoading) {
    DictionaryFile host;
    host.OnError = [] { throw std::runtime_error("host bug"); };
    host.Load("<D><Trans/><Trans Name='U' Desc='u'>" +
              MessageElement("Primary", "<Item/>" + ItemElement("i", "U1", "NO", "1")) +
              kSecondary + "</Trans></D>");
    EXPECT_EQ(
        host.Templates(),
        (Texts{"| P S0F1 | S S0F2 |", "U|u P S1F3 n|d (:63 Empty, i:41 Integer 1) S S1F4 n|d"}));
    const std::string thrown = "440 (Hexmire-TriggerError) host bug";
    EXPECT_EQ(host.Reported,
              (Texts{kTransFault,
                     thrown,
                     "91 (Hexmire-CreateItemNode) Object variable or With block variable not set",
                     thrown}));
    EXPECT_EQ(host.Loader().ErrorCode(), 440);
}

}  // namespace
}  // namespace hexmire
