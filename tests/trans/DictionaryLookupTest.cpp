#include <hexmire/trans/SECSDictionary.h>

#include "Dictionaries.h"
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

namespace hexmire {
namespace {

using fakes::DictionaryOf;
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
        {"least integer", Variant(std::int16_t{-32768}), 0, 1022, kTooSmall},
        {"greatest integer", Variant(std::int16_t{32767}), 0, 1026, kTooLarge},
        {"integer 7", Variant(std::int16_t{7}), 0, 1026, kTooLarge},
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
        {"no object", Variant(std::shared_ptr<SECSItem>()), 0, 1024, kNoKind},
        {"single 1", Variant(1.0F), 0, 1024, kNoKind},
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
    for (const Variant& value : {Variant(1),
                                 Variant(0),
                                 Variant(std::int16_t{-1}),
                                 Variant("S1F1"),
                                 Variant(""),
                                 Variant(1.0),
                                 Variant::Null(),
                                 Variant(host.MakeTrans(1, 1)),
                                 Variant()}) {
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
    EXPECT_EQ(dictionary->SECSTrans(std::int64_t{-5}), nullptr);
    EXPECT_EQ(host.Take(), (Reports{{1022, kTooSmall, 0}}));
    EXPECT_EQ(dictionary->SECSTrans(std::int64_t{1} << 40), nullptr);
    EXPECT_EQ(dictionary->SECSTrans(3000000000U), nullptr);
    EXPECT_EQ(dictionary->SECSTrans(true), nullptr);
    EXPECT_EQ(host.Take(), (Reports{3, {1024, kNoKind, 0}}));
}

TEST(DictionaryLookup, ComparesNamesOfAnyBytes) {
    TransHost host;
    const std::string name("\0\xC4 x", 4);
    const auto dictionary = DictionaryOf(host, {"\xE4 x", name});
    EXPECT_EQ(dictionary->SECSTrans(Variant(std::string_view(name)))->Index(), 2);
}

TEST(DictionaryLookup, ComparesWholeNamesWithNulCharactersInThem) {
    TransHost host;
    const auto dictionary = DictionaryOf(host, {std::string("A\0B", 3), "A"});
    EXPECT_EQ(dictionary->SECSTrans("A")->Index(), 2);
    EXPECT_EQ(dictionary->SECSTrans(std::string("A\0B", 3))->Index(), 1);
    EXPECT_EQ(dictionary->SECSTrans(std::string("A\0C", 3)), nullptr);
    EXPECT_EQ(host.Take(), (Reports{{1025, kNoName, 0}}));
}

TEST(DictionaryLookup, OfASharedNameTakesTheFirstAsTheyStandNow) {
    TransHost host;
    const auto dictionary = DictionaryOf(host, {"s1f1", "S1F1", "S1F1"});
    const SECSTransPtr second = dictionary->SECSTrans(2);
    const SECSTransPtr third = dictionary->SECSTrans(3);
    EXPECT_EQ(dictionary->SECSTrans("S1F1"), second);
    const SECSTransPtr front = dictionary->AddNewTrans(1);
    front->Name("S1F1");
    EXPECT_EQ(dictionary->SECSTrans("S1F1"), front);
    front->Delete();
    second->Delete();
    EXPECT_EQ(dictionary->SECSTrans("S1F1"), third);
    third->Delete();
    EXPECT_EQ(dictionary->SECSTrans("S1F1"), nullptr);
    EXPECT_EQ(host.Take(), (Reports{{1025, kNoName, 0}}));
}

TEST(DictionaryLookup, ReturnsNoneEvenWhenItsReportAddsWhatWasSought) {
    TransHost host;
    const auto dictionary = DictionaryOf(host, {"A"});
    host.OnError = [&] { dictionary->AddNewTrans(1)->Name("B"); };
    EXPECT_EQ(dictionary->SECSTrans("B"), nullptr);
    EXPECT_EQ(dictionary->SECSTrans("B")->Index(), 1);
    EXPECT_EQ(dictionary->SECSTrans(3), nullptr);
    EXPECT_EQ(host.Take(), (Reports{{1025, kNoName, 0}, {1026, kTooLarge, 0}}));
    EXPECT_EQ(dictionary->TransCount(), 3);
}

TEST(DictionaryLookup, GoesByPlaceWhateverIndexIsStored) {
    TransHost host;
    const auto dictionary = DictionaryOf(host, {"A", "B"});
    detail::SECSTransAccess::Index(*dictionary->SECSTrans(1), 7);
    EXPECT_EQ(dictionary->SECSTrans(1)->Name(), "A");
    EXPECT_EQ(dictionary->SECSTrans(7), nullptr);
    EXPECT_EQ(host.Take(), (Reports{{1026, kTooLarge, 0}}));
}

TEST(DictionaryLookup, FollowsARenamedEntry) {
    TransHost host;
    const auto dictionary = DictionaryOf(host, {"A", "B"});
    dictionary->SECSTrans("A")->Name("C");
    EXPECT_EQ(dictionary->SECSTrans("C")->Index(), 1);
    EXPECT_EQ(dictionary->SECSTrans("A"), nullptr);
    EXPECT_EQ(host.Take(), (Reports{{1025, kNoName, 0}}));
}

}  // namespace
}  // namespace hexmire
