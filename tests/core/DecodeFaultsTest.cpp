#include "../fakes/Golden.h"
#include "../fakes/Messages.h"
#include "../fakes/RecordingSite.h"
#include "../fakes/TestHost.h"
#include <gtest/gtest.h>

#include <chrono>
#include <set>
#include <string>
#include <vector>

// Bodies that lie about their length, end too soon or hold unknown codes.

namespace hexmire {
namespace {

using namespace fakes;

using Bytes8 = std::vector<std::uint8_t>;
using Texts = std::vector<std::string>;

constexpr const char* kBounds = "9 (SECSMessage-lParseSECSMessage) Subscript out of range";
constexpr const char* kUnknown =
    "1001 (SECSItem-Let Format) You cannot change the Format of the Root item. The Root item "
    "Format is always 0 (list).";

struct Row {
    const char* Hex;
    const char* Tree;  ///< "" for nothing at all
    std::size_t Errors;
};

/// Decodes every row; all errors are bounds faults and the result stays true.
void ExpectCut(const std::vector<Row>& rows) {
    RecordingSite site;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.Hex);
        site.Errors.clear();
        const DecodedItem decoded = DecodeItem(Bytes(row.Hex));
        EXPECT_TRUE(decoded.Ok);
        EXPECT_EQ(site.Errors, Texts(row.Errors, kBounds));
        if (row.Tree[0] == '\0') {
            EXPECT_EQ(decoded.Item, nullptr);
        } else {
            EXPECT_TRUE(SameTree(decoded.Item, Body(MessageFromNotation(row.Tree))))
                << Describe(decoded.Item);
        }
    }
}

TEST(DecodeFaults, AHeaderThatIsCutAddsNothing) {
    ExpectCut({
        {"41", "", 1},
        {"01", "", 1},
        {"02 01", "", 1},
        {"43 00 00", "", 1},
        {"FF 00", "", 1},
        {"B2 00", "", 1},
    });
}

TEST(DecodeFaults, ACutValueLeavesItsItemWithoutValue) {
    ExpectCut({
        {"41 01", "<A>", 1},
        {"41 03 41 42", "<A>", 1},
        {"21 02 01", "<B>", 1},
        {"25 01", "<BOOL>", 1},
        {"25 02 FF", "<BOOL>", 1},
        {"71 04 00 00 00", "<I4>", 1},
        {"71 08 00 00 00 01 00 00 00", "<I4>", 1},
        {"61 08 FF FF FF FF FF FF FF", "<I8>", 1},
        {"91 04 3F", "<F4>", 1},
        {"81 10 3F F0 00 00 00 00 00 00 40", "<F8>", 1},
        {"FD 05 41", "<V>", 1},
        {"43 FF FF FF 41", "<A>", 1},
        {"AB FF FF FF 41", "<U2>", 1},
        {"B3 FF FF FC 41", "<U4>", 1},
    });
}

TEST(DecodeFaults, EveryItemStillAwaitedIsReportedOnce) {
    ExpectCut({
        {"01 01", "<L>", 1},
        {"01 03", "<L>", 3},
        {"01 FF", "<L>", 255},
        {"01 02 01 00", "<L <L>>", 1},
        {"01 03 41 05 41", "<L <A>>", 3},
        {"01 03 A5 01 01 41", "<L <U1 1>>", 2},
        {"01 02 01 02 01 02", "<L <L <L>>>", 4},
        {"01 03 01 03 A5 01 01 A5 02 01", "<L <L <U1 1> <U1>>>", 4},
        {"01 02 02 01 00", "<L <L>>", 257},
        {"03 00 00 02 41 01 58", "<L <A \"X\">>", 1},
        {"01 05 01 00 01 00", "<L <L> <L>>", 3},
    });
}

TEST(DecodeFaults, ManyListsInOneAnotherFaultOnceForEachItemTheyAwait) {
    RecordingSite site;
    Bytes8 bytes;
    for (int level = 0; level < 200; ++level) {
        bytes.insert(bytes.end(), {0x01, 0xFF});
    }
    const DecodedItem decoded = DecodeItem(bytes);
    EXPECT_EQ(site.Errors, Texts(255 + 199 * 254, kBounds));
    SECSItemPtr item = decoded.Item;
    int depth = 1;
    while (item->ItemCount() == 1) {
        item = item->Item(1);
        ++depth;
    }
    EXPECT_EQ(item->ItemCount(), 0);
    EXPECT_EQ(depth, 200);
}

TEST(DecodeFaults, AShortBodyThatClaimsSixteenMillionBytesCostsNothing) {
    RecordingSite site;
    const auto start = std::chrono::steady_clock::now();
    for (const int code : {8, 9, 16, 24, 25, 26, 28, 32, 36, 40, 41, 42, 44, 63}) {
        for (int round = 0; round < 50; ++round) {
            const DecodedItem decoded =
                DecodeItem(Bytes8{static_cast<std::uint8_t>(code * 4 + 3), 255, 255, 255, 1, 2, 3});
            EXPECT_TRUE(decoded.Item->Value().IsEmpty());
            EXPECT_EQ(decoded.Item->Format(), code);
        }
    }
    EXPECT_EQ(site.Errors, Texts(14 * 50, kBounds));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds{2});
}

TEST(DecodeFaults, AShortBodyThatClaimsManyChildrenIsReportedForEachAndKeepsWhatIsThere) {
    RecordingSite site;
    site.KeepTexts = false;
    const DecodedItem decoded = DecodeItem(Bytes("03 00 4E 20 A5 01 07"));
    EXPECT_EQ(site.ErrorCount, 20000U - 1);
    EXPECT_EQ(decoded.Item->ItemCount(), 1);
    EXPECT_EQ(EncodedHex(decoded.Message), "01 01 A5 01 07");
}

TEST(DecodeFaults, ABodyThatBreaksOffCanBeEncodedAsItStands) {
    RecordingSite site;
    EXPECT_EQ(EncodedHex(DecodeItem(Bytes("01 03 A5 01 07 41 05 41")).Message),
              "01 02 A5 01 07 41 00");
    EXPECT_EQ(EncodedHex(DecodeItem(Bytes("01 04 01 02 71 04 00 00")).Message),
              "01 01 01 01 71 00");
}

TEST(UnknownCodes, EachOfThemIsRefusedAndMakesTheResultFalse) {
    RecordingSite site;
    const std::set<int> known = {0, 8, 9, 16, 24, 25, 26, 28, 32, 36, 40, 41, 42, 44, 63};
    for (int code = 0; code < 64; ++code) {
        if (known.contains(code)) continue;
        for (int nlb = 0; nlb < 4; ++nlb) {
            site.Errors.clear();
            Bytes8 bytes{static_cast<std::uint8_t>(code * 4 + nlb), 0, 0, 0};
            const DecodedItem decoded = DecodeItem(bytes);
            EXPECT_FALSE(decoded.Ok) << code;
            EXPECT_EQ(site.Errors, Texts{kUnknown}) << code;
            EXPECT_EQ(decoded.Item->Format(), FormatVar);
            EXPECT_TRUE(decoded.Item->Value().IsEmpty());
            EXPECT_EQ(decoded.Message->Root()->ItemCount(), 1);
        }
    }
}

TEST(UnknownCodes, TheirBytesAreNotReadAndAreTheNextItem) {
    RecordingSite site;
    const DecodedItem decoded = DecodeItem(Bytes("01 03 0D 02 41 00 A5 01 07"));
    EXPECT_FALSE(decoded.Ok);
    EXPECT_EQ(site.Errors, Texts{kUnknown});
    EXPECT_TRUE(SameTree(decoded.Item, Body(MessageFromNotation("<L <V> <A> <U1 7>>"))))
        << Describe(decoded.Item);
}

TEST(UnknownCodes, WhatCameBeforeAndWhatFollowsIsDecoded) {
    struct Case {
        const char* Hex;
        const char* Tree;
        std::size_t Unknown;
    };
    const std::vector<Case> cases = {
        {"01 02 0D 00 A5 01 07", "<L <V> <U1 7>>", 1},
        {"01 02 A5 01 07 0D 00", "<L <U1 7> <V>>", 1},
        {"01 03 41 01 58 44 A5 01 07", "<L <A \"X\"> <V> <U1 7>>", 1},
        {"01 02 01 02 0D 00 A5 01 01 A5 01 02", "<L <L <V> <U1 1>> <U1 2>>", 1},
        {"01 03 04 08 0C", "<L <V> <V> <V>>", 3},
        {"0D 05 41 42", "<V>", 1},
    };
    RecordingSite site;
    for (const Case& row : cases) {
        SCOPED_TRACE(row.Hex);
        site.Errors.clear();
        const DecodedItem decoded = DecodeItem(Bytes(row.Hex));
        EXPECT_FALSE(decoded.Ok);
        EXPECT_EQ(site.Errors, Texts(row.Unknown, kUnknown));
        EXPECT_TRUE(SameTree(decoded.Item, Body(MessageFromNotation(row.Tree))))
            << Describe(decoded.Item);
    }
}

TEST(UnknownCodes, TheResultStaysFalseWhateverFollows) {
    RecordingSite site;
    const DecodedItem decoded = DecodeItem(Bytes("01 04 0D 00 A5 01 07"));
    EXPECT_FALSE(decoded.Ok);
    EXPECT_EQ(site.Errors, (Texts{kUnknown, kBounds, kBounds}));
}

TEST(UnknownCodes, ABoundsFaultAloneDoesNotMakeTheResultFalse) {
    RecordingSite site;
    EXPECT_TRUE(DecodeItem(Bytes("01 02 41")).Ok);
    EXPECT_TRUE(DecodeItem(Bytes("0D")).Ok);  // Its length byte is missing, so it was never met.
    EXPECT_EQ(site.Errors, Texts(3, kBounds));
}

}  // namespace
}  // namespace hexmire
