#include <hexmire/trans/TransFactory.h>
#include <hexmire/trans/XmlDictionary.h>

#include "../fakes/FailingMemory.h"
#include "../fakes/FakeXMLDocument.h"
#include "../fakes/TransHost.h"
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

// Transactions and dictionaries when memory runs out: nothing is thrown, every failure is told
// once, and whatever was being changed is changed wholly or not at all.

namespace hexmire {
namespace {

using fakes::FailEverywhere;
using fakes::FailsRequest;
using fakes::TransHost;
using Access = detail::SECSTransAccess;
using Prefixes = std::vector<std::string>;

const std::string kLongText(200, 'x');

/// What the making of a transaction may report: itself, or the name of one of its roots.
Prefixes Making(const std::string& own) { return {own, "(SECSItem-Let Name) "}; }

class TransOutOfMemory : public testing::Test {
protected:
    TransOutOfMemory() {
        for (std::int32_t index = 1; index <= 4; ++index) {
            const SECSTransPtr entry = Dictionary->AddNewTrans(index);
            entry->Name(kLongText + std::to_string(index));
            entry->Description(kLongText);
        }
    }
    /// Every entry is numbered by its place and knows its dictionary.
    void ExpectOrder(std::int32_t count) const {
        ASSERT_EQ(Dictionary->TransCount(), count);
        std::int32_t index = 0;
        for (const SECSTransPtr& entry : *Dictionary) {
            ASSERT_NE(entry, nullptr);
            ASSERT_EQ(entry->Index(), ++index);
            ASSERT_EQ(Access::Parent(*entry), Dictionary);
        }
    }

    TransHost Host{false};
    SECSDictionaryPtr Dictionary = Host.Make<SECSDictionary>();
};

TEST_F(TransOutOfMemory, ATransactionThatAHostMakesIsThereOrNot) {
    SECSTransPtr made;
    const auto make = [&] { made = New<SECSTrans>(); };
    const auto check = [&] {
        if (made == nullptr) return;
        ASSERT_NE(made->Primary(), nullptr);
        ASSERT_NE(made->Secondary(), nullptr);
        EXPECT_EQ(made->Secondary()->Func(), 2);
    };
    FailEverywhere(Host.Errors, make, check, Making("(SECSTrans-Class_Initialize) "));
    EXPECT_NE(made, nullptr);
}

TEST_F(TransOutOfMemory, ADictionaryThatAHostMakesIsThereOrNot) {
    SECSDictionaryPtr made;
    FailEverywhere(
        Host.Errors,
        [&] { made = New<SECSDictionary>(); },
        [&] { EXPECT_EQ(made == nullptr, !Host.Errors.empty()); },
        {"(SECSDictionary-Class_Initialize) "});
    EXPECT_EQ(made->Description(), "Default Dictionary");
}

TEST_F(TransOutOfMemory, AddNewTransAddsWhollyOrNotAtAll) {
    std::int32_t count = Dictionary->TransCount();
    SECSTransPtr added;
    FailEverywhere(
        Host.Errors,
        [&] { added = Dictionary->AddNewTrans(2); },
        [&] {
            count += added == nullptr ? 0 : 1;
            ExpectOrder(count);
        },
        Making("(SECSDictionary-AddNewTrans) "));
}

TEST_F(TransOutOfMemory, AddNewTransWhileTheDictionaryIsWalked) {
    const auto walk = Dictionary->begin();
    std::int32_t count = Dictionary->TransCount();
    SECSTransPtr added;
    FailEverywhere(
        Host.Errors,
        [&] { added = Dictionary->AddNewTrans(count + 1); },
        [&] {
            count += added == nullptr ? 0 : 1;
            ExpectOrder(count);
        },
        Making("(SECSDictionary-AddNewTrans) "));
    EXPECT_EQ((*walk)->Name(), kLongText + "1");
}

TEST_F(TransOutOfMemory, DeleteWhileTheDictionaryIsWalkedDeletesWhollyOrNotAtAll) {
    const SECSTransPtr entry = Dictionary->SECSTrans(2);
    const auto walk = Dictionary->begin();
    FailEverywhere(
        Host.Errors,
        [&] { entry->Delete(); },
        [&] { ExpectOrder(Host.Errors.empty() ? 3 : 4); },
        {"(SECSTrans-Delete) "});
    EXPECT_EQ(entry->Index(), 0);
}

TEST_F(TransOutOfMemory, ATransactionOfADictionaryFileThatCannotBeMadeIsMissing) {
    const auto node = fakes::FakeXMLNode::Make("Trans");
    const TransHost::Reports missing{
        {7, "(SECSDictionary-AddNewTrans) Out of memory", 0},
        {91, "(Hexmire-CreateTransObject) Object variable or With block variable not set", 0}};
    std::int32_t count = Dictionary->TransCount();
    int failures = 0;
    for (long request = 1;; ++request) {
        ASSERT_LT(request, 1000);
        Host.Errors.clear();
        const bool reached =
            FailsRequest(request, [&] { detail::CreateTransObject(*Dictionary, node); });
        if (Host.Errors == missing) {
            ++failures;
        } else {
            ++count;  // Empty at least: the element says nothing of it.
        }
        ExpectOrder(count);
        if (!reached) break;
    }
    EXPECT_GT(failures, 0);
}

TEST_F(TransOutOfMemory, TextsOfATransaction) {
    const SECSTransPtr trans = Dictionary->SECSTrans(1);
    const std::string twice = kLongText + kLongText;
    FailEverywhere(
        Host.Errors,
        [&] { trans->Name(twice); },
        [&] { EXPECT_EQ(Access::Name(*trans), Host.Errors.empty() ? twice : kLongText + "1"); },
        {"(SECSTrans-Let Name) "});
    FailEverywhere(
        Host.Errors,
        [&] { trans->Description(twice); },
        [&] { EXPECT_EQ(Access::Description(*trans), Host.Errors.empty() ? twice : kLongText); },
        {"(SECSTrans-Let Description) "});
    std::string read;
    const auto check = [&] { EXPECT_EQ(read, Host.Errors.empty() ? twice : ""); };
    FailEverywhere(Host.Errors, [&] { read = trans->Name(); }, check, {"(SECSTrans-Get Name) "});
    FailEverywhere(
        Host.Errors, [&] { read = trans->Description(); }, check, {"(SECSTrans-Get Description) "});
}

TEST_F(TransOutOfMemory, TextOfADictionary) {
    FailEverywhere(
        Host.Errors,
        [&] { Dictionary->Description(kLongText); },
        [] {},
        {"(SECSDictionary-Let Description) "});
    std::string read;
    FailEverywhere(
        Host.Errors,
        [&] { read = Dictionary->Description(); },
        [&] { EXPECT_EQ(read, Host.Errors.empty() ? kLongText : ""); },
        {"(SECSDictionary-Get Description) "});
}

TEST_F(TransOutOfMemory, LookupByALongName) {
    const SECSTransPtr wanted = Dictionary->SECSTrans(3);
    const std::string name = kLongText + "3";
    SECSTransPtr found;
    const auto check = [&] { EXPECT_EQ(found, Host.Errors.empty() ? wanted : nullptr); };
    const Prefixes own{"(SECSDictionary-Get SECSTrans) "};
    FailEverywhere(
        Host.Errors, [&] { found = Dictionary->SECSTrans(name); }, check, own);
    FailEverywhere(
        Host.Errors, [&] { found = Dictionary->SECSTrans(name.c_str()); }, check, own);
    FailEverywhere(
        Host.Errors, [&] { found = Dictionary->SECSTrans(std::string_view(name)); }, check, own);
}

TEST_F(TransOutOfMemory, LookupByNoTextAtAllIsLookupByTheEmptyText) {
    EXPECT_EQ(Dictionary->SECSTrans(static_cast<const char*>(nullptr)), nullptr);
    EXPECT_TRUE(Host.Errors.empty());
}

TEST_F(TransOutOfMemory, RejectedValueStaysOutWhateverBecomesOfTheReport) {
    const SECSTransPtr trans = Dictionary->SECSTrans(1);
    for (long request = 1; request < 30; ++request) {
        Host.Errors.clear();
        FailsRequest(request, [&] {
            trans->DeviceID(-1);
            EXPECT_EQ(Dictionary->AddNewTrans(9), nullptr);
            EXPECT_EQ(Dictionary->SECSTrans(9), nullptr);
        });
        EXPECT_EQ(trans->DeviceID(), 0);
        ExpectOrder(4);
        EXPECT_GE(Host.Errors.size(), 2U);
    }
}

TEST_F(TransOutOfMemory, TearDownNeedsNoMemory) {
    EXPECT_FALSE(FailsRequest(1, [&] { detail::SECSDictionaryAccess::TearDown(*Dictionary); }));
    EXPECT_EQ(Dictionary->TransCount(), 0);
    EXPECT_TRUE(Host.Errors.empty());
}

TEST_F(TransOutOfMemory, TearDownLeavesAWalkItsEntries) {
    auto walk = Dictionary->begin();
    detail::SECSDictionaryAccess::TearDown(*Dictionary);
    EXPECT_EQ(Dictionary->TransCount(), 0);
    int seen = 0;
    for (; walk != Dictionary->end(); ++walk)
        seen += *walk != nullptr ? 1 : 100;
    EXPECT_EQ(seen, 4);
}

TEST_F(TransOutOfMemory, SendEntersTheTableWhollyOrNotAtAll) {
    std::int32_t waiting = 0;
    int unfinished = 0;
    for (long request = 1;; ++request) {
        ASSERT_LT(request, 1000);
        const SECSTransPtr trans = Host.MakeTrans(1, 1);
        const SECSItemPtr item = trans->Primary()->Root()->AddNew(1);
        item->Format(FormatAscii);
        item->Value(kLongText);
        Host.Errors.clear();
        const bool reached = FailsRequest(request, [&] { trans->Send(); });
        const bool entered = trans->InProgress();
        waiting += entered ? 1 : 0;
        ASSERT_EQ(Host.Table->TransCount(), waiting);
        EXPECT_EQ(trans->Index(), entered ? waiting : 0);
        EXPECT_EQ(Access::Parent(*trans), entered ? Host.Table : nullptr);
        if (!reached) break;
        // A body that could not be made is missed once more when it is to be sent.
        ASSERT_GE(Host.Errors.size(), 1U) << request;
        EXPECT_EQ(Host.Errors[0].Code, 7);
        unfinished += entered ? 0 : 1;
    }
    EXPECT_TRUE(Host.Errors.empty());
    EXPECT_GT(unfinished, 0);
}

TEST_F(TransOutOfMemory, ACopyOfATemplateReportsWhatItMissed) {
    const SECSTransPtr source = Host.MakeTrans(1, 3);
    source->Name(kLongText);
    source->Description(kLongText);
    source->Primary()->Name(kLongText);
    source->Primary()->Root()->AddNew(1)->Name(kLongText);
    for (long request = 1;; ++request) {
        ASSERT_LT(request, 1000);
        const SECSTransPtr copy = Host.Make<SECSTrans>();
        Host.Errors.clear();
        const bool reached =
            FailsRequest(request, [&] { ModGeneral::CreateNewTrans(copy, source); });
        EXPECT_EQ(copy->Primary()->Func(), 3);
        EXPECT_EQ(copy->Secondary()->Func(), 4);
        if (!reached) {
            EXPECT_EQ(copy->Name(), kLongText);
            break;
        }
        // An item that could not be made is missed once more when its fields are to be copied.
        ASSERT_GE(Host.Errors.size(), 1U) << request;
        EXPECT_EQ(Host.Errors[0].Code, 7);
        for (std::size_t later = 1; later < Host.Errors.size(); ++later) {
            EXPECT_EQ(Host.Errors[later].Code, 91);
        }
    }
    EXPECT_TRUE(Host.Errors.empty());
}

TEST_F(TransOutOfMemory, TearDownOfAWalkedDictionaryReportsIt) {
    const auto walk = Dictionary->begin();
    FailEverywhere(
        Host.Errors,
        [&] { detail::SECSDictionaryAccess::TearDown(*Dictionary); },
        [] {},
        {"(SECSDictionary-TearDown) "});
    EXPECT_EQ(Dictionary->TransCount(), 0);
    EXPECT_EQ((*walk)->Name(), kLongText + "1");
}

TEST_F(TransOutOfMemory, LeavesAnExpiredEntryForTheNextSecond) {
    for (long request = 1;; ++request) {
        ASSERT_LT(request, 200);
        TransHost host(false);
        const SECSTransPtr trans = host.MakeTrans(1, 3);
        trans->Send();
        const bool reached = FailsRequest(request, [&] { Access::T3Timer(*trans, 0); });
        ASSERT_GE(host.Errors.size(), 1U);
        if (!reached) {
            EXPECT_EQ(host.Errors[0].Code, 2012);
            EXPECT_EQ(host.Table->TransCount(), 0);
            break;
        }
        host.Errors.clear();
        Access::T3Timer(*trans, -1);
        EXPECT_EQ(host.Errors.at(0).Code, 2012);
        EXPECT_EQ(host.Table->TransCount(), 0);
    }
}

}  // namespace
}  // namespace hexmire
