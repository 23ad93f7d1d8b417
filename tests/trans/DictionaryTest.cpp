#include <hexmire/trans/SECSDictionary.h>

#include "Dictionaries.h"
#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace hexmire {
namespace {

using Access = detail::SECSTransAccess;
using DictionaryAccess = detail::SECSDictionaryAccess;
using fakes::Contents;
using fakes::DictionaryOf;
using fakes::TransHost;
using Reports = TransHost::Reports;

const Reports kNoPlace{{2004,
                        "(SECSDictionary-AddNewTrans) You cannot add new SECSTrans out of limit "
                        "between 1 to TransCount+1.",
                        0}};

TEST(Dictionary, IsCreatedEmptyAndNamed) {
    TransHost host;
    const auto dictionary = host.Make<SECSDictionary>();
    EXPECT_EQ(dictionary->TransCount(), 0);
    EXPECT_EQ(dictionary->Description(), "Default Dictionary");
    EXPECT_TRUE(dictionary->begin() == dictionary->end());
    dictionary->Description("");
    EXPECT_EQ(dictionary->Description(), "");
    dictionary->Description("TRANSINUSE");
    EXPECT_EQ(dictionary->Description(), "TRANSINUSE");
}

TEST(DictionaryInsert, PutsTheNewEntryAtItsPositionAndRenumbers) {
    struct Row {
        std::int32_t Position;
        const char* Contents;
    };
    for (const Row& row : {Row{1, "X1 A2 B3 C4"},
                           Row{2, "A1 X2 B3 C4"},
                           Row{3, "A1 B2 X3 C4"},
                           Row{4, "A1 B2 C3 X4"}}) {
        TransHost host;
        const auto dictionary = DictionaryOf(host, {"A", "B", "C"});
        const SECSTransPtr added = dictionary->AddNewTrans(row.Position);
        ASSERT_NE(added, nullptr);
        EXPECT_EQ(added->Index(), row.Position);
        EXPECT_EQ(Access::Parent(*added), dictionary);
        added->Name("X");
        EXPECT_EQ(Contents(*dictionary), row.Contents);
        EXPECT_EQ(host.Take(), Reports{});
    }
}

TEST(DictionaryInsert, IsRefusedOutsideTheCollection) {
    for (const std::size_t count : {0U, 1U, 3U}) {
        TransHost host;
        const auto dictionary =
            DictionaryOf(host, std::vector<std::string>(count, std::string("A")));
        const std::string before = Contents(*dictionary);
        for (const std::int32_t position : {0,
                                            -1,
                                            static_cast<std::int32_t>(count) + 2,
                                            std::numeric_limits<std::int32_t>::max(),
                                            std::numeric_limits<std::int32_t>::min()}) {
            EXPECT_EQ(dictionary->AddNewTrans(position), nullptr);
            EXPECT_EQ(host.Take(), kNoPlace);
        }
        EXPECT_EQ(Contents(*dictionary), before);
    }
}

TEST(DictionaryInsert, MakesATransactionWithCreationDefaults) {
    TransHost host;
    host.DeviceId = 12;
    host.T3 = 3;
    const SECSTransPtr added = host.Make<SECSDictionary>()->AddNewTrans(1);
    EXPECT_EQ(added->DeviceID(), 12);
    EXPECT_EQ(Access::T3Timer(*added), 3);
    EXPECT_EQ(added->Primary()->Func(), 1);
    EXPECT_EQ(added->Secondary()->Func(), 2);
    EXPECT_TRUE(added->ReplyExpected());
    EXPECT_TRUE(added->AutoSystemBytes());
    EXPECT_EQ(added->Name(), "");
}

TEST(DictionaryInsert, GivesItsMakerToWhatItMakes) {
    TransHost first;
    const auto dictionary = first.Make<SECSDictionary>();
    TransHost second;
    second.DeviceId = 2;
    const SECSTransPtr added = dictionary->AddNewTrans(1);
    EXPECT_EQ(added->DeviceID(), 0);
    added->DeviceID(-1);
    added->Primary()->Stream(128);
    added->Primary()->Root()->AddNew(5);
    EXPECT_EQ(first.Take().size(), 3U);
    EXPECT_EQ(second.Take(), Reports{});
}

TEST(DictionaryInsert, ThatIsRefusedReturnsNoneEvenWhenItsReportInserts) {
    TransHost host;
    const auto dictionary = DictionaryOf(host, {"A"});
    SECSTransPtr inner;
    host.OnError = [&] { inner = dictionary->AddNewTrans(1); };
    EXPECT_EQ(dictionary->AddNewTrans(3), nullptr);
    EXPECT_EQ(host.Take(), kNoPlace);
    ASSERT_NE(inner, nullptr);
    inner->Name("N");
    EXPECT_EQ(Contents(*dictionary), "N1 A2");
}

TEST(DictionaryInsert, LeavesMessagesAndFlagsOfTheMovedEntries) {
    TransHost host;
    const auto dictionary = DictionaryOf(host, {"A"});
    const SECSTransPtr moved = dictionary->SECSTrans(1);
    moved->ReplyExpected(false);
    Access::InProgress(*moved, true);
    dictionary->AddNewTrans(1);
    EXPECT_EQ(moved->Index(), 2);
    EXPECT_FALSE(moved->ReplyExpected());
    EXPECT_TRUE(moved->InProgress());
    EXPECT_EQ(dictionary->SECSTrans(2), moved);
}

TEST(DictionaryInsert, InFrontManyTimesKeepsEveryIndex) {
    TransHost host;
    const auto dictionary = host.Make<SECSDictionary>();
    for (int count = 0; count < 300; ++count)
        dictionary->AddNewTrans(1);
    std::int32_t position = 0;
    for (const SECSTransPtr& entry : *dictionary)
        EXPECT_EQ(entry->Index(), ++position);
    EXPECT_EQ(position, 300);
}

TEST(DictionaryWalk, VisitsWhatWasThereWhenItBegan) {
    TransHost host;
    const auto dictionary = DictionaryOf(host, {"A", "B", "C"});
    std::string seen;
    for (const SECSTransPtr& entry : *dictionary) {
        seen += entry->Name();
        dictionary->AddNewTrans(1)->Name("N");
    }
    EXPECT_EQ(seen, "ABC");
    EXPECT_EQ(Contents(*dictionary), "N1 N2 N3 A4 B5 C6");
}

TEST(DictionaryWalk, OutlivesTheDictionary) {
    TransHost host;
    auto dictionary = DictionaryOf(host, {"A", "B"});
    auto walk = dictionary->begin();
    dictionary.reset();
    EXPECT_EQ((*walk)->Name(), "A");
    ++walk;
    EXPECT_EQ((*walk)->Name(), "B");
}

TEST(DictionaryTearDown, EmptiesTheCollectionAndLeavesTheParents) {
    TransHost host;
    const auto dictionary = DictionaryOf(host, {"A", "B", "C"});
    const SECSTransPtr second = dictionary->SECSTrans(2);
    const std::weak_ptr<SECSTrans> third = dictionary->SECSTrans(3);
    DictionaryAccess::TearDown(*dictionary);
    EXPECT_EQ(dictionary->TransCount(), 0);
    EXPECT_TRUE(third.expired());
    EXPECT_EQ(Access::Parent(*second), dictionary);
    EXPECT_EQ(second->Index(), 2);
    DictionaryAccess::TearDown(*dictionary);
    EXPECT_EQ(host.Take(), Reports{});
    EXPECT_EQ(dictionary->AddNewTrans(1)->Index(), 1);
}

TEST(DictionaryTearDown, LeavesItsEntriesAsUnsendableAsTheyWere) {
    TransHost host;
    const auto dictionary = DictionaryOf(host, {"A"});
    const SECSTransPtr entry = dictionary->SECSTrans(1);
    DictionaryAccess::TearDown(*dictionary);
    entry->Send();
    entry->Reply();
    EXPECT_EQ(
        host.Take(),
        (Reports{{2009, "(SECSTrans-Send) You must call NewSECSTrans to use send method.", 0},
                 {2009, "(SECSTrans-Reply) You must call NewSECSTrans to use send method.", 0}}));
}

/// An object of the host that looks round when it ends.
struct Ending {
    explicit Ending(std::function<void()> look) : Look(std::move(look)) {}
    Ending(const Ending&) = delete;
    Ending& operator=(const Ending&) = delete;
    ~Ending() { Look(); }
    std::function<void()> Look;
};

TEST(DictionaryTearDown, ShowsAnEmptyCollectionToWhatEndsWithIt) {
    TransHost host;
    const auto dictionary = DictionaryOf(host, {"A", "B"});
    std::vector<std::int32_t> seen;
    dictionary->SECSTrans(1)->Tag(
        std::make_shared<Ending>([&] { seen.push_back(dictionary->TransCount()); }));
    DictionaryAccess::TearDown(*dictionary);
    EXPECT_EQ(seen, (std::vector<std::int32_t>{0}));
}

TEST(DictionaryTearDown, LeavesTheDescription) {
    TransHost host;
    const auto dictionary = DictionaryOf(host, {"A"});
    dictionary->Description("mine");
    DictionaryAccess::TearDown(*dictionary);
    EXPECT_EQ(dictionary->Description(), "mine");
}

TEST(DictionaryTearDown, InsideAWalkLeavesTheWalkWhole) {
    TransHost host;
    const auto dictionary = DictionaryOf(host, {"A", "B", "C"});
    std::string seen;
    for (const SECSTransPtr& entry : *dictionary) {
        seen += entry->Name();
        DictionaryAccess::TearDown(*dictionary);
    }
    EXPECT_EQ(seen, "ABC");
}

TEST(DictionaryEntries, LiveWithTheDictionaryOnly) {
    TransHost host;
    std::weak_ptr<SECSTrans> entry;
    {
        const auto dictionary = DictionaryOf(host, {"A"});
        entry = dictionary->SECSTrans(1);
        EXPECT_FALSE(entry.expired());
    }
    EXPECT_TRUE(entry.expired());
}

TEST(DictionaryEntries, AreSharedWithTheHost) {
    TransHost host;
    const auto dictionary = DictionaryOf(host, {"A"});
    EXPECT_EQ(dictionary->SECSTrans(1), dictionary->SECSTrans("A"));
    dictionary->SECSTrans(1)->Description("edited");
    EXPECT_EQ(dictionary->SECSTrans("A")->Description(), "edited");
}

TEST(DictionaryEntries, AddedInsideTheLibraryGetNeitherIndexNorParent) {
    TransHost host;
    const auto dictionary = DictionaryOf(host, {"A"});
    const SECSTransPtr trans = host.MakeTrans(1, 1);
    DictionaryAccess::Add(*dictionary, trans);
    EXPECT_EQ(dictionary->TransCount(), 2);
    EXPECT_EQ(Access::StoredIndex(*trans), 0);
    EXPECT_EQ(Access::Parent(*trans), nullptr);
    EXPECT_EQ(dictionary->SECSTrans(2), trans);
}

TEST(Dictionary, MadeByAHostWorksWithoutAnyControl) {
    const auto dictionary = New<SECSDictionary>();
    EXPECT_EQ(dictionary->SECSTrans(1), nullptr);
    EXPECT_EQ(dictionary->AddNewTrans(2), nullptr);
    const SECSTransPtr added = dictionary->AddNewTrans(1);
    ASSERT_NE(added, nullptr);
    EXPECT_EQ(added->DeviceID(), 0);
    EXPECT_EQ(dictionary->SECSTrans(1), added);
    added->Delete();
    EXPECT_EQ(dictionary->TransCount(), 0);
}

TEST(Dictionary, OutlivesItsControlInSilence) {
    TransHost other;
    TransHost host;
    const auto dictionary = DictionaryOf(host, {"A"});
    host.End();
    EXPECT_EQ(dictionary->SECSTrans(5), nullptr);
    EXPECT_EQ(dictionary->SECSTrans("A")->Name(), "A");
    EXPECT_EQ(host.Take(), Reports{});
    EXPECT_EQ(other.Take(), Reports{});
}

}  // namespace
}  // namespace hexmire
