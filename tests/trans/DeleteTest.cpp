#include <hexmire/trans/SECSDictionary.h>

#include "../fakes/TransHost.h"
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace hexmire {
namespace {

using Access = detail::SECSTransAccess;
using fakes::TransHost;
using Reports = TransHost::Reports;

const Reports kNotContained{{1079, "(SECSTrans-Delete) The Root item cannot be deleted.", 0}};

/// A dictionary of the named entries.
SECSDictionaryPtr DictionaryOf(TransHost& host, const std::vector<std::string>& names) {
    SECSDictionaryPtr dictionary = host.Make<SECSDictionary>();
    for (const std::string& name : names) {
        dictionary->AddNewTrans(dictionary->TransCount() + 1)->Name(name);
    }
    return dictionary;
}

/// "A1 B2": names and indexes in order.
std::string Contents(const SECSDictionary& dictionary) {
    std::string text;
    for (const SECSTransPtr& entry : dictionary) {
        text += (text.empty() ? "" : " ") + entry->Name() + std::to_string(entry->Index());
    }
    return text;
}

TEST(Delete, IsRefusedOutsideACollection) {
    TransHost host;
    const SECSTransPtr trans = host.MakeTrans(1, 1);
    EXPECT_TRUE(trans->Delete().IsEmpty());
    EXPECT_EQ(host.Take(), kNotContained);
    EXPECT_EQ(trans->Primary()->Stream(), 1);
}

TEST(Delete, RenumbersTheRemainingEntriesInTheirOldOrder) {
    struct Row {
        std::int32_t Position;
        const char* Left;
    };
    for (const Row& row :
         {Row{1, "B1 C2 D3"}, Row{2, "A1 C2 D3"}, Row{3, "A1 B2 D3"}, Row{4, "A1 B2 C3"}}) {
        TransHost host;
        const auto dictionary = DictionaryOf(host, {"A", "B", "C", "D"});
        const SECSTransPtr trans = dictionary->SECSTrans(row.Position);
        EXPECT_TRUE(trans->Delete().IsEmpty());
        EXPECT_EQ(Contents(*dictionary), row.Left);
        EXPECT_EQ(dictionary->TransCount(), 3);
        EXPECT_EQ(host.Take(), Reports{});
    }
}

TEST(Delete, ClearsTheParentAndLeavesTheRestOfTheTransaction) {
    TransHost host;
    const auto dictionary = DictionaryOf(host, {"A", "B"});
    const SECSTransPtr trans = dictionary->SECSTrans(2);
    Access::InProgress(*trans, true);
    Access::T3Start(*trans, true);
    Access::SystemBytes(*trans, 31);
    trans->Delete();
    EXPECT_EQ(Access::Parent(*trans), nullptr);
    EXPECT_EQ(trans->Index(), 0);
    EXPECT_TRUE(trans->InProgress());
    EXPECT_TRUE(Access::T3Start(*trans));
    EXPECT_EQ(trans->SystemBytes(), 31);
    EXPECT_EQ(trans->Name(), "B");
}

TEST(Delete, IsRefusedTheSecondTime) {
    TransHost host;
    const auto dictionary = DictionaryOf(host, {"A", "B"});
    const SECSTransPtr trans = dictionary->SECSTrans(1);
    trans->Delete();
    trans->Delete();
    EXPECT_EQ(host.Take(), kNotContained);
    EXPECT_EQ(Contents(*dictionary), "B1");
}

TEST(Delete, EmptiesACollectionOneByOneFromEitherEnd) {
    TransHost host;
    const auto dictionary = DictionaryOf(host, {"A", "B", "C", "D"});
    dictionary->SECSTrans(4)->Delete();
    EXPECT_EQ(Contents(*dictionary), "A1 B2 C3");
    dictionary->SECSTrans(1)->Delete();
    EXPECT_EQ(Contents(*dictionary), "B1 C2");
    dictionary->SECSTrans(1)->Delete();
    dictionary->SECSTrans(1)->Delete();
    EXPECT_EQ(dictionary->TransCount(), 0);
    EXPECT_EQ(host.Take(), Reports{});
}

TEST(Delete, SurvivesWhenTheCollectionHeldTheLastReference) {
    TransHost host;
    const auto dictionary = DictionaryOf(host, {"A", "B"});
    SECSTrans* const bare = dictionary->SECSTrans(1).get();
    EXPECT_TRUE(bare->Delete().IsEmpty());
    EXPECT_EQ(Contents(*dictionary), "B1");
}

TEST(Delete, InsideAWalkLeavesTheWalkWhole) {
    TransHost host;
    const auto dictionary = DictionaryOf(host, {"A", "B", "C"});
    std::string seen;
    for (const SECSTransPtr& entry : *dictionary) {
        seen += entry->Name();
        entry->Delete();
    }
    EXPECT_EQ(seen, "ABC");
    EXPECT_EQ(dictionary->TransCount(), 0);
    EXPECT_EQ(host.Take(), Reports{});
}

TEST(Delete, TakesTheEntryAtItsIndexWhateverTransactionThatIs) {
    TransHost host;
    const auto dictionary = DictionaryOf(host, {"A", "B", "C"});
    const SECSTransPtr trans = dictionary->SECSTrans(3);
    Access::Index(*trans, 1);
    trans->Delete();
    EXPECT_EQ(dictionary->SECSTrans(1)->Name(), "B");
    EXPECT_EQ(dictionary->TransCount(), 2);
    EXPECT_EQ(Access::Parent(*trans), nullptr);
}

TEST(Delete, FaultsWithAnIndexBeyondTheCollectionAndChangesNothing) {
    for (const std::int32_t index : {0, -1, 3, 2000000000}) {
        TransHost host;
        const auto dictionary = DictionaryOf(host, {"A", "B"});
        const SECSTransPtr trans = dictionary->SECSTrans(1);
        Access::Index(*trans, index);
        EXPECT_TRUE(trans->Delete().IsEmpty());
        EXPECT_EQ(host.Take(), (Reports{{9, "(SECSTrans-Delete) Subscript out of range", 0}}));
        EXPECT_EQ(dictionary->TransCount(), 2);
        EXPECT_EQ(Access::Parent(*trans), dictionary);
    }
}

TEST(Delete, FaultsAfterTheCollectionWasTornDown) {
    TransHost host;
    const auto dictionary = DictionaryOf(host, {"A"});
    const SECSTransPtr trans = dictionary->SECSTrans(1);
    detail::SECSDictionaryAccess::TearDown(*dictionary);
    EXPECT_EQ(Access::Parent(*trans), dictionary);
    trans->Delete();
    EXPECT_EQ(host.Take(), (Reports{{9, "(SECSTrans-Delete) Subscript out of range", 0}}));
}

TEST(Delete, IsRefusedOnceTheCollectionIsGone) {
    TransHost host;
    SECSTransPtr trans;
    {
        const auto dictionary = DictionaryOf(host, {"A", "B"});
        trans = dictionary->SECSTrans(2);
    }
    trans->Delete();
    EXPECT_EQ(host.Take(), kNotContained);
}

TEST(Delete, MakesATransactionSendableAgain) {
    TransHost host;
    const SECSTransPtr trans = host.MakeTrans(1, 1);
    trans->Send();
    trans->Delete();
    trans->Send();
    EXPECT_EQ(host.Take(), Reports{});
    EXPECT_EQ(host.Record.Sent.size(), 2U);
    EXPECT_EQ(trans->SystemBytes(), 2);
    EXPECT_EQ(trans->Index(), 1);
}

TEST(Delete, MayBeCalledAgainFromTheReportOfItsOwnRefusal) {
    TransHost host;
    const SECSTransPtr trans = host.MakeTrans(1, 1);
    int depth = 0;
    host.OnError = [&] {
        if (++depth < 3) trans->Delete();
    };
    trans->Delete();
    EXPECT_EQ(host.Errors.size(), 3U);
}

}  // namespace
}  // namespace hexmire
