#include <hexmire/trans/SECSDictionary.h>

#include "../fakes/TransHost.h"
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

namespace hexmire {
namespace {

using Access = detail::SECSTransAccess;
using DictionaryAccess = detail::SECSDictionaryAccess;
using fakes::TransHost;
using Reports = TransHost::Reports;

const char* const kEmptyText =
    "(SECSDictionary-Get SECSTrans) There are no SECSTrans defined in the SECSDictionary. You must "
    "either add SECSTrans you define yourself or use default SECSDictionary.";
const char* const kTooSmall =
    "(SECSDictionary-Get SECSTrans) The SECSTrans index value is too small. The index must be 1 or "
    "greater.";
const char* const kTooLarge =
    "(SECSDictionary-Get SECSTrans) The SECSTrans index value is too large. The index must be not "
    "greater than TransCount + 1.";
const char* const kNoName =
    "(SECSDictionary-Get SECSTrans) SECSTrans name is not found in the SECSDictionary.";
const char* const kNoKind =
    "(SECSDictionary-Get SECSTrans) The parameter to the SECSTrans property must be either a "
    "number or a string.";
const Reports kNoPlace{{2004,
                        "(SECSDictionary-AddNewTrans) You cannot add new SECSTrans out of limit "
                        "between 1 to TransCount+1.",
                        0}};

SECSDictionaryPtr DictionaryOf(TransHost& host, const std::vector<std::string>& names) {
    SECSDictionaryPtr dictionary = host.Make<SECSDictionary>();
    for (const std::string& name : names) {
        dictionary->AddNewTrans(dictionary->TransCount() + 1)->Name(name);
    }
    return dictionary;
}

std::string Contents(const SECSDictionary& dictionary) {
    std::string text;
    for (const SECSTransPtr& entry : dictionary) {
        text += (text.empty() ? "" : " ") + entry->Name() + std::to_string(entry->Index());
    }
    return text;
}

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

struct LookupRow {
    const char* Label;
    Variant Value;
    std::int32_t Found;  // Position; 0: none.
    std::int32_t Code;
    const char* Text;
};

TEST(DictionaryLookup, FollowsTheTableOfKinds) {
    TransHost host;
    const auto dictionary = DictionaryOf(host, {"S1F1", "", "S1F3", "S1F1", "s1f3", " "});
    const SECSTransPtr entry = dictionary->SECSTrans(1);
    const std::vector<LookupRow> rows{
        {"long 1", Variant(1), 1, 0, ""},
        {"long 6", Variant(6), 6, 0, ""},
        {"integer 2", Variant(std::int16_t{2}), 2, 0, ""},
        {"long 0", Variant(0), 0, 1022, kTooSmall},
        {"integer -1", Variant(std::int16_t{-1}), 0, 1022, kTooSmall},
        {"least", Variant(std::numeric_limits<std::int32_t>::min()), 0, 1022, kTooSmall},
        {"long 7", Variant(7), 0, 1026, kTooLarge},
        {"greatest", Variant(std::numeric_limits<std::int32_t>::max()), 0, 1026, kTooLarge},
        {"first of two names", Variant("S1F1"), 1, 0, ""},
        {"name", Variant("S1F3"), 3, 0, ""},
        {"letter case counts", Variant("s1f3"), 5, 0, ""},
        {"other case", Variant("s1f1"), 0, 1025, kNoName},
        {"blank is a name", Variant(" "), 6, 0, ""},
        {"no trimming", Variant("S1F1 "), 0, 1025, kNoName},
        {"no prefix", Variant("S1F"), 0, 1025, kNoName},
        {"digits are a name", Variant("1"), 0, 1025, kNoName},
        {"empty text", Variant(""), 0, 0, ""},
        {"double", Variant(2.0), 0, 1024, kNoKind},
        {"single", Variant(2.0F), 0, 1024, kNoKind},
        {"byte", Variant(std::uint8_t{2}), 0, 1024, kNoKind},
        {"boolean", Variant(true), 0, 1024, kNoKind},
        {"decimal", Variant(Decimal::FromInt64(2)), 0, 1024, kNoKind},
        {"empty", Variant(), 0, 1024, kNoKind},
        {"null", Variant::Null(), 0, 1024, kNoKind},
        {"array", Variant(std::vector<std::int32_t>{1}), 0, 1024, kNoKind},
        {"object", Variant(entry), 0, 1024, kNoKind}};
    for (const LookupRow& row : rows) {
        const SECSTransPtr found = dictionary->SECSTrans(row.Value);
        EXPECT_EQ(found == nullptr ? 0 : found->Index(), row.Found) << row.Label;
        const Reports expected = row.Code == 0 ? Reports{} : Reports{{row.Code, row.Text, 0}};
        EXPECT_EQ(host.Take(), expected) << row.Label;
    }
}

TEST(DictionaryLookup, TellsOfAnEmptyDictionaryBeforeAnythingElse) {
    TransHost host;
    const auto dictionary = host.Make<SECSDictionary>();
    for (const Variant& value :
         {Variant(1), Variant(0), Variant("S1F1"), Variant(""), Variant(1.0), Variant()}) {
        EXPECT_EQ(dictionary->SECSTrans(value), nullptr);
        EXPECT_EQ(host.Take(), (Reports{{1020, kEmptyText, 0}}));
    }
}

TEST(DictionaryLookup, TakesPlainIntegersAndTexts) {
    TransHost host;
    const auto dictionary = DictionaryOf(host, {"A", "B"});
    EXPECT_EQ(dictionary->SECSTrans(2)->Name(), "B");
    EXPECT_EQ(dictionary->SECSTrans(2U)->Name(), "B");
    EXPECT_EQ(dictionary->SECSTrans(std::size_t{1})->Name(), "A");
    EXPECT_EQ(dictionary->SECSTrans(std::string("B"))->Name(), "B");
    EXPECT_EQ(dictionary->SECSTrans(std::string_view("A"))->Name(), "A");
    EXPECT_EQ(host.Take(), Reports{});
    EXPECT_EQ(dictionary->SECSTrans(std::int64_t{1} << 40), nullptr);
    EXPECT_EQ(host.Take(), (Reports{{1024, kNoKind, 0}}));
}

TEST(DictionaryLookup, ComparesNamesOfAnyBytes) {
    TransHost host;
    const std::string name("\0\xC4 x", 4);
    const auto dictionary = DictionaryOf(host, {"\xE4 x", name});
    EXPECT_EQ(dictionary->SECSTrans(Variant(std::string_view(name)))->Index(), 2);
}

TEST(DictionaryLookup, FollowsARenamedEntry) {
    TransHost host;
    const auto dictionary = DictionaryOf(host, {"A", "B"});
    dictionary->SECSTrans("A")->Name("C");
    EXPECT_EQ(dictionary->SECSTrans("C")->Index(), 1);
    EXPECT_EQ(dictionary->SECSTrans("A"), nullptr);
    EXPECT_EQ(host.Take(), (Reports{{1025, kNoName, 0}}));
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
