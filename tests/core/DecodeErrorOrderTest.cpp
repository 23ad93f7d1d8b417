#include <hexmire/core/detail/SECSMessageAccess.h>

#include "../fakes/Golden.h"
#include "../fakes/Messages.h"
#include "../fakes/RecordingSite.h"
#include "../fakes/TestHost.h"
#include <gtest/gtest.h>

#include <string>
#include <vector>

// Bodies with several faults: which errors they give, in which order, and what the tree holds then.

namespace hexmire {
namespace {

using namespace fakes;

using Texts = std::vector<std::string>;

constexpr const char* kBounds = "9 (SECSMessage-lParseSECSMessage) Subscript out of range";
constexpr const char* kUnknown =
    "1001 (SECSItem-Let Format) You cannot change the Format of the Root item. The Root item "
    "Format is always 0 (list).";

/// One letter an error: B for the bounds fault, U for the unknown code, ? for anything else.
std::string Letters(const Texts& errors) {
    std::string letters;
    for (const std::string& error : errors)
        letters.push_back(error == kBounds ? 'B' : (error == kUnknown ? 'U' : '?'));
    return letters;
}

/// Raw bytes are there exactly where a value is, and nothing below has counts of its own.
void ExpectRawWithValuesOnly(const SECSItemPtr& item) {
    EXPECT_EQ(item->Raw().IsEmpty(), item->Value().IsEmpty()) << Describe(item);
    EXPECT_EQ(item->NLB(), 0);
    EXPECT_EQ(item->Length(), item->ItemCount());
    std::int32_t index = 0;
    for (const SECSItemPtr& child : *item) {
        EXPECT_EQ(child->ItemIndex(), ++index);
        EXPECT_EQ(child->Parent(), item);
        ExpectRawWithValuesOnly(child);
    }
}

struct Row {
    const char* Hex;
    const char* Tree;  ///< "" for nothing at all
    std::string Errors;
};

void ExpectErrors(const std::vector<Row>& rows) {
    RecordingSite site;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.Hex);
        site.Errors.clear();
        const DecodedItem decoded = DecodeItem(Bytes(row.Hex));
        EXPECT_EQ(Letters(site.Errors), row.Errors);
        EXPECT_EQ(decoded.Ok, row.Errors.find('U') == std::string::npos);
        EXPECT_EQ(decoded.Message->RawHex(), row.Hex);
        EXPECT_TRUE(decoded.Message->Raw() == Variant(Bytes(row.Hex)));
        EXPECT_EQ(decoded.Message->Length(), 0);
        if (row.Tree[0] == '\0') {
            EXPECT_EQ(decoded.Item, nullptr);
            continue;
        }
        ASSERT_NE(decoded.Item, nullptr);
        EXPECT_TRUE(SameTree(decoded.Item, Body(MessageFromNotation(row.Tree))))
            << Describe(decoded.Item);
        ExpectRawWithValuesOnly(decoded.Item);
    }
}

TEST(DecodeErrorOrder, UnknownCodesAndCutsAreToldAsTheyAreMet) {
    ExpectErrors({
        {"01 04 45 01 41 01", "<L <V> <A>>", "UBBB"},
        {"01 03 41 00 0D 00", "<L <A> <V>>", "UB"},
        {"01 02 04 0F 00 00", "<L <V>>", "UB"},
        {"01 02 01 03 0D 00 41 02 58", "<L <L <V> <A>>>", "UBBB"},
        {"01 03 01 02 0D 00 0D 00 11", "<L <L <V> <V>>>", "UUBB"},
        {"01 02 01 02 01 02 45 00 41 05", "<L <L <L <V> <A>>>>", "UBBB"},
        {"01 03 01 03 A1 04 45 00 21 01", "<L <L <U8> <V> <B>>>", "UBBB"},
        {"01 04 01 01 4D 00 01 01 4D 00 01 01", "<L <L <V>> <L <V>> <L>>", "UUBB"},
    });
}

TEST(DecodeErrorOrder, AnUnknownItemEndsBehindItsLengthWhateverThatClaims) {
    ExpectErrors({
        {"45 03 41 42 43", "<V>", "U"},
        {"0C", "<V>", "U"},
        {"4B FF FF FF", "<V>", "U"},
        {"01 02 45 01 A5 01 07", "<L <V> <U1 7>>", "U"},
        {"01 02 49 02 41 01 58", "<L <V> <A \"X\">>", "U"},
        {"01 01 0D FF", "<L <V>>", "U"},
        {"01 02 0F FF FF FF 01 00", "<L <V> <L>>", "U"},
        {"01 02 71 02 45 00", "<L <I4> <V>>", "U"},
        {"02 00 03 00 04 20", "<L <L> <V> <B>>", "U"},
        {"01 02 01 00 44", "<L <L> <V>>", "U"},
    });
}

TEST(DecodeErrorOrder, AnUnknownCodeThatIsNeverMetChangesNothing) {
    ExpectErrors({
        {"0D", "", "B"},
        {"0E 00", "", "B"},
        {"0F 00 00", "", "B"},
        {"01 02 01 00 45", "<L <L>>", "B"},
        {"01 02 41 FF 58 45 00", "<L <A>>", "BB"},
        {"01 00 0D 00", "<L>", ""},
        {"03 00 00 00 0D", "<L>", ""},
        {"41 01 58 0D 00", "<A \"X\">", ""},
    });
}

TEST(DecodeErrorOrder, WhatAWrongCountReadsIsMissingBehindIt) {
    ExpectErrors({
        {"01 03 71 06 00 00 00 01 00 02", "<L <I4>>", "BBB"},
        {"01 02 69 03 00 01 02 A5 01 07", "<L <I2 1 677> <L>>", std::string(7, 'B')},
        {"01 02 69 05 00 01 00 02 01 A5 01 07", "<L <I2 1 2> <L <L>>>", std::string(7 + 164, 'B')},
        {"81 0C 3F F0 00 00 00 00 00 00 3F F0 00 00", "<F8>", "B"},
        {"01 02 A9 01 41 01 58", "<L <U2> <A \"X\">>", ""},
    });
}

TEST(DecodeErrorOrder, TextOfTheAnyFormatCodeIsCutLikeAnyText) {
    ExpectErrors({
        {"01 02 FD 03 41 42", "<L <V>>", "BB"},
        {"01 02 FF 00 00", "<L>", "BB"},
        {"01 02 FD 02 41 42 FC", "<L <V \"AB\"> <V>>", ""},
    });
}

TEST(DecodeErrorOrder, EveryErrorFindsTheTreeAsFarAsItWasRead) {
    RecordingSite site;
    const SECSMessagePtr message = New<SECSMessage>();
    Texts seen;
    site.OnError = [&](std::int32_t code) {
        const SECSItemPtr root = message->Root();
        seen.push_back(std::to_string(code) + " " +
                       (root->ItemCount() == 0 ? "-" : Describe(Body(message))));
        EXPECT_EQ(message->RawHex(), "01 04 01 02 0D 00 A5 01 07 41 02 58");
        EXPECT_EQ(message->Raw().ElementCount(), 12U);
    };
    EXPECT_FALSE(
        detail::SECSMessageAccess::Parse(*message, Bytes("01 04 01 02 0D 00 A5 01 07 41 02 58")));
    EXPECT_EQ(seen,
              (Texts{"1001 <L <L <V>>>",
                     "9 <L <L <V> <U1 7>> <A>>",
                     "9 <L <L <V> <U1 7>> <A>>",
                     "9 <L <L <V> <U1 7>> <A>>"}));
}

TEST(DecodeErrorOrder, ListsThatClaimMillionsInsideOneAnotherAddUp) {
    RecordingSite site;
    site.KeepTexts = false;
    const DecodedItem decoded = DecodeItem(Bytes("02 FF FF 01 00 02 FF FF A5 01 07 02 FF FF"));
    EXPECT_EQ(site.ErrorCount, (65535U - 2) + (65535U - 2) + 65535U);
    EXPECT_EQ(EncodedHex(decoded.Message), "01 02 01 00 01 02 A5 01 07 01 00");
    EXPECT_TRUE(decoded.Ok);
}

}  // namespace
}  // namespace hexmire
