#include <hexmire/core/detail/SmlWriter.h>

#include "../fakes/Messages.h"
#include "../fakes/RecordingSite.h"
#include <gtest/gtest.h>

#include <string>
#include <vector>

// An item that cannot be shown is reported and left out; its siblings follow.

namespace hexmire {
namespace {

using namespace fakes;

using Texts = std::vector<std::string>;
using Bytes8 = std::vector<std::uint8_t>;
using Variants = std::vector<Variant>;

constexpr const char* kMismatch = "13 (SECSMessage-ItemToSML) Type mismatch";
constexpr const char* kOverflow = "6 (SECSMessage-ItemToSML) Overflow";
constexpr const char* kNull = "94 (SECSMessage-ItemToSML) Invalid use of Null";
constexpr const char* kNotSupported =
    "438 (SECSMessage-ItemToSML) Object doesn't support this property or method";
constexpr const char* kNotSet =
    "91 (SECSMessage-ItemToSML) Object variable or With block variable not set";

struct Row {
    std::int32_t Format;
    Variant Value;
    const char* Error;
};

const std::vector<Row>& Unshowable() {
    static const std::vector<Row> kRows = {
        {FormatAscii, Bytes8{65}, kMismatch},
        {FormatAscii, Variants{"a"}, kMismatch},
        {FormatAscii, New<SECSItem>(), kNotSupported},
        {FormatAscii, SECSItemPtr(), kNotSet},
        {FormatBoolean, "abc", kMismatch},
        {FormatBoolean, "T", kMismatch},
        {FormatBoolean, "", kMismatch},
        {FormatBoolean, Variants{true, "yes"}, kMismatch},
        {FormatBoolean, Variants{true, Variant::Null()}, kNull},
        {FormatBinary, "FF", kMismatch},
        {FormatBinary, 3e9, kOverflow},
        {FormatBinary, New<SECSItem>(), kNotSupported},
        {FormatI4, New<SECSItem>(), kNotSupported},
        {FormatI4, SECSItemPtr(), kNotSet},
        {FormatU2, Variants{1, Variant::Null()}, kNull},
        {FormatU2, Variants{1, Bytes8{1}}, kMismatch},
        {FormatVar, New<SECSItem>(), kNotSupported},
        {FormatVar, Variants{1, Variant::Null()}, kNull},
    };
    return kRows;
}

TEST(SmlFaults, AnItemThatFaultsAddsNothingAndItsSiblingsFollow) {
    RecordingSite site;
    for (const Row& row : Unshowable()) {
        site.Errors.clear();
        const SECSMessagePtr message = MessageOf(FormatList);
        AddItem(Body(message), FormatU1, 1);
        AddItem(Body(message), row.Format, row.Value);
        AddItem(Body(message), FormatU1, 2);
        EXPECT_EQ(RenderSml(*message, false),
                  "S0F1\r\n< L \r\n  < U1 1 >\r\n  < U1 2 >\r\n >\r\n.");
        EXPECT_EQ(site.Errors, Texts{row.Error}) << row.Format;
    }
}

TEST(SmlFaults, ABodyThatFaultsLeavesTheHeaderAndTheDot) {
    RecordingSite site;
    for (const Row& row : Unshowable()) {
        site.Errors.clear();
        EXPECT_EQ(RenderSml(*MessageOf(row.Format, row.Value), true), "S0F1 W\r\n.");
        EXPECT_EQ(site.Errors, Texts{row.Error}) << row.Format;
    }
}

TEST(SmlFaults, FaultsAreReportedInTheOrderOfTheItems) {
    RecordingSite site;
    const SECSMessagePtr message = MessageOf(FormatList);
    Texts expected;
    for (const Row& row : Unshowable()) {
        AddItem(AddItem(Body(message), FormatList), row.Format, row.Value);
        expected.emplace_back(row.Error);
    }
    const std::string text = RenderSml(*message, false);
    EXPECT_EQ(site.Errors, expected);
    std::string lists;
    for (std::size_t list = 0; list < expected.size(); ++list) {
        lists += "  < L \r\n   >\r\n";
    }
    EXPECT_EQ(text, "S0F1\r\n< L \r\n" + lists + " >\r\n.");
}

TEST(SmlFaults, AnEmptyBinaryArrayIsTheDumpsFaultAndShowsNoBytes) {
    RecordingSite site;
    EXPECT_EQ(RenderSml(*MessageOf(FormatBinary, Bytes8{}), false), "S0F1\r\n< B  >\r\n.");
    EXPECT_EQ(site.Errors,
              Texts{"5 (ModGeneral-HexDumpArray2) Invalid procedure call or argument"});
}

TEST(SmlFaults, AnEmptyArrayOfAnyFormatShowsEmptyBrackets) {
    RecordingSite site;
    EXPECT_EQ(RenderSml(*MessageOf(FormatVar, Bytes8{}), false), "S0F1\r\n< V [  ] >\r\n.");
    EXPECT_EQ(site.Errors, Texts{"9 (ModGeneral-IsByteArray) Subscript out of range"});
}

TEST(SmlFaults, ABinaryElementBeyondAByteIsTheDumpsFault) {
    RecordingSite site;
    const SECSMessagePtr message = MessageOf(FormatList);
    AddItem(Body(message), FormatBinary, std::vector<std::int32_t>{1, 256});
    AddItem(Body(message), FormatU1, 7);
    const std::string text = RenderSml(*message, false);
    EXPECT_EQ(site.Errors, Texts{"6 (ModGeneral-HexDumpArray2) Overflow"});
    EXPECT_EQ(text, "S0F1\r\n< L \r\n  < B  >\r\n  < U1 7 >\r\n >\r\n.");
}

TEST(SmlFaults, ASecondItemUnderTheRootIsNotEvenLookedAt) {
    RecordingSite site;
    const SECSMessagePtr message = MessageOf(FormatU1, 1);
    AddItem(message->Root(), FormatBoolean, "abc");
    EXPECT_EQ(RenderSml(*message, false), "S0F1\r\n< U1 1 >\r\n.");
    EXPECT_EQ(site.Errors, Texts{});
}

TEST(SmlFaults, WhatWasThereBeforeStays) {
    RecordingSite site;
    std::string text = "before ";
    detail::ItemToSML(Body(MessageOf(FormatBoolean, "abc")), 3, text);
    EXPECT_EQ(text, "before ");
    detail::ItemToSML(nullptr, 3, text);
    EXPECT_EQ(text, "before ");
    EXPECT_EQ(site.Errors, (Texts{kMismatch, kNotSet}));
}

TEST(SmlFaults, ALevelBelowZeroIsTheIndentationsFaultAndIndentsNothing) {
    RecordingSite site;
    const SECSMessagePtr message = MessageOf(FormatList);
    AddItem(Body(message), FormatU1, 1);
    std::string text;
    detail::ItemToSML(Body(message), -1, text);
    EXPECT_EQ(text, "< L \r\n< U1 1 >\r\n >\r\n");
    EXPECT_EQ(site.Errors,
              Texts(2, "5 (ModGeneral-GetSMLIndent) Invalid procedure call or argument"));
}

TEST(SmlFaults, WithoutAnyControlFaultsAreDropped) {
    EXPECT_EQ(RenderSml(*MessageOf(FormatBoolean, "abc"), false), "S0F1\r\n.");
}

}  // namespace
}  // namespace hexmire
