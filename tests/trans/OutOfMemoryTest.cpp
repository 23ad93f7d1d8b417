#include <hexmire/trans/TransFactory.h>

#include "../fakes/FailingMemory.h"
#include "../fakes/Messages.h"
#include "Dictionaries.h"
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace hexmire {
namespace {

using Access = detail::SECSTransAccess;
using DictionaryAccess = detail::SECSDictionaryAccess;
using fakes::requestsLeft;
using fakes::TransHost;

const std::string kLongText(200, 'x');

/// Three entries whose names need memory.
class OutOfMemory : public fakes::FailingMemory {
protected:
    OutOfMemory() : Dictionary(Site.Make<SECSDictionary>()) {
        for (std::int32_t index = 1; index <= 3; ++index) {
            Dictionary->AddNewTrans(index)->Name(kLongText + std::to_string(index));
        }
        Site.Errors.clear();  // Of transactions that found no settings here.
    }
    void TearDown() override { requestsLeft = 0; }
    void ExpectInOrder(std::int32_t count) {
        ASSERT_EQ(Dictionary->TransCount(), count);
        std::int32_t index = 0;
        for (const SECSTransPtr& entry : *Dictionary) {
            ASSERT_EQ(entry->Index(), ++index);
            ASSERT_EQ(Access::Parent(*entry), Dictionary);
        }
    }

    SECSDictionaryPtr Dictionary;
};

TEST_F(OutOfMemory, TextsOfATransaction) {
    const SECSTransPtr trans = Dictionary->SECSTrans(1);
    const std::string twice = kLongText + kLongText;
    FailEverywhere([&] { trans->Name(twice); },
                   [&] { EXPECT_TRUE(trans->Name() == kLongText + "1" || trans->Name() == twice); },
                   {"(SECSTrans-Let Name) "});
    FailEverywhere([&] { trans->Description(kLongText); }, [] {}, {"(SECSTrans-Let Description) "});
    std::string read;
    FailEverywhere([&] { read = trans->Name(); }, [] {}, {"(SECSTrans-Get Name) "});
    EXPECT_EQ(read, twice);
    FailEverywhere([&] { read = trans->Description(); }, [] {}, {"(SECSTrans-Get Description) "});
    EXPECT_EQ(read, kLongText);
}

TEST_F(OutOfMemory, TextsOfADictionary) {
    FailEverywhere(
        [&] { Dictionary->Description(kLongText); }, [] {}, {"(SECSDictionary-Let Description) "});
    std::string read;
    FailEverywhere(
        [&] { read = Dictionary->Description(); }, [] {}, {"(SECSDictionary-Get Description) "});
    EXPECT_EQ(read, kLongText);
}

TEST_F(OutOfMemory, DeleteWhileTheDictionaryIsWalked) {
    const SECSTransPtr trans = Dictionary->SECSTrans(2);
    const auto walk = Dictionary->begin();
    FailEverywhere([&] { trans->Delete(); },
                   [&] { ExpectInOrder(Site.Errors.empty() ? 2 : 3); },
                   {"(SECSTrans-Delete) "});
    EXPECT_EQ(Access::Parent(*trans), nullptr);
}

TEST_F(OutOfMemory, TearDownOfADictionaryNeedsNone) {
    const SECSTransPtr held = Dictionary->SECSTrans(2);
    requestsLeft = 1;
    DictionaryAccess::TearDown(*Dictionary);
    requestsLeft = 0;
    EXPECT_EQ(Dictionary->TransCount(), 0);
    EXPECT_EQ(Access::Parent(*held), Dictionary);
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(OutOfMemory, TearDownOfAWalkedDictionaryReportsIt) {
    const auto walk = Dictionary->begin();
    FailEverywhere(
        [&] { DictionaryAccess::TearDown(*Dictionary); }, [] {}, {"(SECSDictionary-TearDown) "});
    EXPECT_EQ(Dictionary->TransCount(), 0);
    EXPECT_EQ((*walk)->Name(), kLongText + "1");
}

// A control runs out of memory once, at every place in turn.
TEST(OutOfMemoryOnTheWay, InsertsWhollyOrNotAtAll) {
    for (long request = 1; request < 200; ++request) {
        TransHost host(false);
        const auto dictionary = fakes::DictionaryOf(host, {"A", "B", "C"});
        requestsLeft = request;
        const SECSTransPtr added = dictionary->AddNewTrans(2);
        const bool reached = requestsLeft == 0;
        requestsLeft = 0;
        EXPECT_EQ(dictionary->TransCount(), added == nullptr ? 3 : 4);
        std::int32_t index = 0;
        for (const SECSTransPtr& entry : *dictionary)
            EXPECT_EQ(entry->Index(), ++index);
        if (!reached) {
            EXPECT_TRUE(host.Errors.empty());
            return;
        }
        ASSERT_GE(host.Errors.size(), 1U);
        EXPECT_EQ(host.Errors[0].Code, 7);
    }
    FAIL() << "no end";
}

TEST(OutOfMemoryOnTheWay, EntersATransactionThatWasSentWhollyOrNotAtAll) {
    for (long request = 1; request < 500; ++request) {
        TransHost host;
        host.MakeTrans(1, 1)->Send();
        const SECSTransPtr trans = host.MakeTrans(1, 3);
        fakes::AddItem(trans->Primary()->Root(), FormatAscii, kLongText);
        requestsLeft = request;
        trans->Send();
        const bool reached = requestsLeft == 0;
        requestsLeft = 0;
        const bool entered = host.Table->TransCount() == 2;
        EXPECT_EQ(trans->Index(), entered ? 2 : 0);
        EXPECT_EQ(trans->InProgress(), entered);
        EXPECT_EQ(Access::Parent(*trans), entered ? host.Table : nullptr);
        EXPECT_EQ(trans->SystemBytes(), 2);
        if (!reached) {
            EXPECT_TRUE(entered);
            EXPECT_TRUE(host.Errors.empty());
            return;
        }
        EXPECT_LE(host.Errors.size(), 1U);  // None for the log, which keeps its failures.
        for (const fakes::ReportedError& error : host.Errors)
            EXPECT_EQ(error.Code, 7);
    }
    FAIL() << "no end";
}

TEST(OutOfMemoryOnTheWay, LeavesAnExpiredEntryForTheNextSecond) {
    for (long request = 1; request < 200; ++request) {
        TransHost host(false);
        const SECSTransPtr trans = host.MakeTrans(1, 3);
        trans->Send();
        requestsLeft = request;
        Access::T3Timer(*trans, 0);
        const bool reached = requestsLeft == 0;
        requestsLeft = 0;
        ASSERT_GE(host.Errors.size(), 1U);
        if (!reached) {
            EXPECT_EQ(host.Errors[0].Code, 2012);
            EXPECT_EQ(host.Table->TransCount(), 0);
            return;
        }
        host.Errors.clear();
        Access::T3Timer(*trans, -1);
        EXPECT_EQ(host.Errors.at(0).Code, 2012);
        EXPECT_EQ(host.Table->TransCount(), 0);
    }
    FAIL() << "no end";
}

}  // namespace
}  // namespace hexmire
