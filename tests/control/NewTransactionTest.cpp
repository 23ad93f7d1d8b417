#include <hexmire/trans/detail/SECSTransAccess.h>

#include "../fakes/Messages.h"
#include "../fakes/TestHost.h"
#include "Settings.h"
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace hexmire {
namespace {

using Access = detail::SECSTransAccess;
using fakes::ErrorEvent;
using fakes::TestHost;
using Errors = std::vector<ErrorEvent>;

const std::string kPrefix = "(Hexmire-NewSECSTransaction) ";
const ErrorEvent kEmpty{
    1020,
    kPrefix +
        "There are no SECSTrans defined in the SECSDictionary. You must either add SECSTrans "
        "you define yourself or use default SECSDictionary.",
    0};
const ErrorEvent kTooSmall{
    1022, kPrefix + "The SECSTrans index value is too small. The index must be 1 or greater.", 0};
const ErrorEvent kNoName{1025, kPrefix + "SECSTrans name is not found in the SECSDictionary.", 0};
const ErrorEvent kTooLarge{1026,
                           kPrefix +
                               "The SECSTrans index value is too large. The index must be not "
                               "greater than TransCount + 1.",
                           0};
const ErrorEvent kNoKind{1027,
                         kPrefix +
                             "The parameter to the AddNewTrans/NewSECSTransaction method must "
                             "be a string or an integer.",
                         0};

/// Three templates: S1F1, S2F41, S1F1 again.
struct Loaded : TestHost {
    Loaded() {
        AddTemplate("S1F1", 1, 1);
        AddTemplate("S2F41", 2, 41);
        AddTemplate("S1F1", 6, 11);
    }
};

TEST(NewTransaction, WithoutArgumentIsBlank) {
    TestHost host;
    host.Control().DeviceID(7);
    host.Control().T3Timeout(9);
    const SECSTransPtr trans = host.Control().NewSECSTransaction();
    ASSERT_NE(trans, nullptr);
    EXPECT_EQ(trans->DeviceID(), 7);
    EXPECT_EQ(Access::T3Timer(*trans), 9);
    EXPECT_EQ(trans->Name(), "");
    EXPECT_EQ(Access::Parent(*trans), nullptr);
    EXPECT_TRUE(host.Raised.empty());
    EXPECT_NE(host.Control().NewSECSTransaction(), trans);
}

TEST(NewTransaction, WithoutArgumentIsBlankEvenWhenThereAreTemplates) {
    Loaded host;
    const SECSTransPtr trans = host.Control().NewSECSTransaction();
    EXPECT_EQ(trans->Primary()->Stream(), 0);
    EXPECT_EQ(trans->Name(), "");
}

TEST(NewTransaction, TellsOfAnEmptyDictionaryBeforeAnythingElse) {
    for (const Variant& value :
         {Variant("S1F1"), Variant(1), Variant(0), Variant(""), Variant(1.0), Variant()}) {
        TestHost host;
        EXPECT_EQ(host.Control().NewSECSTransaction(value), nullptr);
        EXPECT_EQ(host.Errors, (Errors{kEmpty}));
        EXPECT_EQ(host.Control().ErrorCode(), 1020);
    }
}

struct LookupRow {
    const char* Label;
    Variant Value;
    std::int32_t Stream;  // Of the template found; 0: none.
    Errors Reported;
};

TEST(NewTransaction, FollowsTheTableOfArguments) {
    Loaded host;
    host.AddTemplate(" x ", 99, 1);
    host.AddTemplate("\xE4", 98, 1);
    const std::vector<LookupRow> rows{
        {"long", Variant(2), 2, {}},
        {"integer", Variant(std::int16_t{3}), 6, {}},
        {"first", Variant(1), 1, {}},
        {"last", Variant(5), 98, {}},
        {"zero", Variant(0), 0, {kTooSmall}},
        {"negative", Variant(std::int16_t{-1}), 0, {kTooSmall}},
        {"least", Variant(fakes::kLongMin), 0, {kTooSmall}},
        {"behind the last", Variant(6), 0, {kTooLarge}},
        {"greatest", Variant(fakes::kLongMax), 0, {kTooLarge}},
        {"name", Variant("S2F41"), 2, {}},
        {"lower case", Variant("s2f41"), 2, {}},
        {"mixed case", Variant("s2F41"), 2, {}},
        {"first of two", Variant("S1F1"), 1, {}},
        {"blanks count", Variant(" X "), 99, {}},
        {"blanks are not trimmed", Variant(" S1F1"), 0, {kNoName}},
        {"blanks are not added", Variant("x"), 0, {kNoName}},
        {"letters beyond ASCII", Variant("\xC4"), 98, {}},
        {"prefix", Variant("S1F"), 0, {kNoName}},
        {"digits", Variant("1"), 0, {kNoName}},
        {"tab", Variant("\t"), 0, {kNoName}},
        {"empty text", Variant(""), 0, {kNoKind}},
        {"blanks", Variant("   "), 0, {kNoKind}},
        {"double", Variant(1.0), 0, {kNoKind}},
        {"single", Variant(1.0F), 0, {kNoKind}},
        {"byte", Variant(std::uint8_t{1}), 0, {kNoKind}},
        {"boolean", Variant(true), 0, {kNoKind}},
        {"decimal", Variant(Decimal::FromInt64(1)), 0, {kNoKind}},
        {"empty", Variant(), 0, {kNoKind}},
        {"null", Variant::Null(), 0, {kNoKind}},
        {"array", Variant(std::vector<std::int32_t>{1}), 0, {kNoKind}},
        {"object", Variant(host.Control().NewSECSTransaction()), 0, {kNoKind}}};
    for (const LookupRow& row : rows) {
        host.Errors.clear();
        const SECSTransPtr trans = host.Control().NewSECSTransaction(row.Value);
        EXPECT_EQ(trans == nullptr ? 0 : trans->Primary()->Stream(), row.Stream) << row.Label;
        EXPECT_EQ(host.Errors, row.Reported) << row.Label;
        if (!row.Reported.empty()) {
            EXPECT_EQ(host.Control().ErrorCode(), row.Reported[0].Code);
        }
    }
}

TEST(NewTransaction, TakesPlainIntegersAndTexts) {
    Loaded host;
    EXPECT_EQ(host.Control().NewSECSTransaction(2)->Primary()->Stream(), 2);
    EXPECT_EQ(host.Control().NewSECSTransaction(2U)->Primary()->Stream(), 2);
    EXPECT_EQ(host.Control().NewSECSTransaction(std::size_t{3})->Primary()->Stream(), 6);
    EXPECT_EQ(host.Control().NewSECSTransaction(std::string("s1f1"))->Primary()->Stream(), 1);
    EXPECT_EQ(host.Control().NewSECSTransaction(std::string_view("s1f1"))->Primary()->Stream(), 1);
    EXPECT_EQ(host.Control().NewSECSTransaction(std::int64_t{1} << 40), nullptr);
    EXPECT_EQ(host.Errors, (Errors{kNoKind}));
}

TEST(NewTransaction, IsAWorkingCopyOfTheTemplate) {
    Loaded host;
    const SECSTransPtr entry = host.Control().SECSDictionary()->SECSTrans(2);
    entry->Description("described");
    entry->Tag("tag");
    fakes::AddItem(entry->Primary()->Root(), FormatAscii, "START");
    host.Control().DeviceID(5);
    const SECSTransPtr trans = host.Control().NewSECSTransaction("S2F41");
    EXPECT_NE(trans, entry);
    EXPECT_EQ(trans->Name(), "S2F41");
    EXPECT_EQ(trans->Description(), "described");
    EXPECT_EQ(trans->Tag(), Variant("tag"));
    EXPECT_EQ(trans->DeviceID(), 5);
    EXPECT_EQ(trans->Index(), 0);
    trans->Primary()->Item(1)->Value("STOP");
    EXPECT_EQ(entry->Primary()->Item(1)->Value(), Variant("START"));
    trans->Send();
    EXPECT_EQ(fakes::HexOf(host.Driver.Sent.at(0).Body), "41 04 53 54 4F 50");
    EXPECT_TRUE(host.Raised.empty());
}

TEST(NewTransaction, FollowsTheDictionaryAsTheHostEditsIt) {
    Loaded host;
    const auto dictionary = host.Control().SECSDictionary();
    EXPECT_EQ(host.Control().NewSECSTransaction("S2F41")->Primary()->Func(), 41);
    dictionary->SECSTrans(2)->Name("REMOTE");
    EXPECT_EQ(host.Control().NewSECSTransaction("S2F41"), nullptr);
    EXPECT_EQ(host.Control().NewSECSTransaction("remote")->Primary()->Func(), 41);
    dictionary->SECSTrans(1)->Delete();
    EXPECT_EQ(host.Control().NewSECSTransaction("S1F1")->Primary()->Stream(), 6);
    EXPECT_EQ(host.Control().NewSECSTransaction(1)->Name(), "REMOTE");
    dictionary->AddNewTrans(1)->Name("REMOTE");
    EXPECT_EQ(host.Control().NewSECSTransaction("REMOTE")->Primary()->Func(), 1);
    EXPECT_EQ(host.Control().NewSECSTransaction(3)->Primary()->Stream(), 6);
}

TEST(NewTransaction, OfATemplateThatSharesANameTakesTheFirstAfterADelete) {
    Loaded host;
    host.Control().SECSDictionary()->SECSTrans(1)->Delete();
    EXPECT_EQ(host.Control().NewSECSTransaction("S1F1")->Primary()->Stream(), 6);
    host.Control().SECSDictionary()->SECSTrans(2)->Delete();
    EXPECT_EQ(host.Control().NewSECSTransaction("S1F1"), nullptr);
    EXPECT_EQ(host.Errors, (Errors{kNoName}));
}

TEST(NewTransaction, SeesSettingsChangedBetweenCopyAndSend) {
    Loaded host;
    const SECSTransPtr trans = host.Control().NewSECSTransaction("S1F1");
    host.Control().DeviceID(300);
    host.Control().T3Timeout(3);
    host.Control().ConnectionHost(false);
    trans->Send();
    // The device ID and the reply time are the copy's own, the R-bit follows the control.
    EXPECT_EQ(fakes::HexOf(host.Driver.Sent.at(0).Header).substr(0, 5), "80 00");
    EXPECT_EQ(Access::T3Timer(*trans), 45);
    EXPECT_EQ(host.Control().NewSECSTransaction("S1F1")->DeviceID(), 300);
}

}  // namespace
}  // namespace hexmire
