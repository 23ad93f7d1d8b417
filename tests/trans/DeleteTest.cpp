#include <hexmire/trans/SECSDictionary.h>

#include "Dictionaries.h"
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace hexmire {
namespace {

using Access = detail::SECSTransAccess;
using fakes::Contents;
using fakes::DictionaryOf;
using fakes::TransHost;
using Reports = TransHost::Reports;

const Reports kNotContained{{1079, "(SECSTrans-Delete) The Root item cannot be deleted.", 0}};

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

TEST(Delete, TurnsATemplateIntoAWorkingTransaction) {
    TransHost host;
    const auto dictionary = DictionaryOf(host, {"A", "B"});
    const SECSTransPtr trans = dictionary->SECSTrans(1);
    trans->Delete();
    trans->Send();
    EXPECT_EQ(host.Take(), Reports{});
    EXPECT_EQ(host.Table->SECSTrans("A"), trans);
    EXPECT_EQ(Contents(*dictionary), "B1");
}

TEST(Delete, OfAnEntryFromBeforeATearDownTakesTheOneThatHasItsPlace) {
    TransHost host;
    const auto dictionary = DictionaryOf(host, {"A", "B"});
    const SECSTransPtr stale = dictionary->SECSTrans(1);
    detail::SECSDictionaryAccess::TearDown(*dictionary);
    const SECSTransPtr fresh = dictionary->AddNewTrans(1);
    dictionary->AddNewTrans(2)->Name("D");
    stale->Delete();
    EXPECT_EQ(Contents(*dictionary), "D1");
    EXPECT_EQ(Access::Parent(*stale), nullptr);
    EXPECT_EQ(Access::Parent(*fresh), dictionary);
    EXPECT_EQ(host.Take(), Reports{});
}

TEST(Delete, OfATransactionThatStandsTwiceTakesThePlaceOfItsIndex) {
    TransHost host;
    const SECSTransPtr trans = host.MakeTrans(1, 1);
    const SECSTransPtr between = host.MakeTrans(1, 3);
    trans->Send();
    between->Send();
    Access::Parent(*trans, nullptr);
    trans->Send();
    EXPECT_EQ(trans->Index(), 3);
    trans->Delete();
    ASSERT_EQ(host.Table->TransCount(), 2);
    EXPECT_EQ(host.Table->SECSTrans(1), trans);
    EXPECT_EQ(host.Table->SECSTrans(2), between);
    EXPECT_EQ(Access::StoredIndex(*trans), 1);
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
