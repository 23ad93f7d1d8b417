#include "../fakes/Golden.h"
#include "../fakes/Messages.h"
#include "../fakes/RecordingSite.h"
#include "../fakes/TestHost.h"
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

// Lengths that are no multiple of the element width: the count is rounded to the nearest whole
// number, halves to even, and so many elements are read, whatever they belong to.

namespace hexmire {
namespace {

using namespace fakes;

using Bytes8 = std::vector<std::uint8_t>;

struct Row {
    const char* Hex;
    const char* Tree;
};

void ExpectTrees(const std::vector<Row>& rows) {
    RecordingSite site;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.Hex);
        const DecodedItem decoded = DecodeItem(Bytes(row.Hex));
        EXPECT_TRUE(decoded.Ok);
        EXPECT_TRUE(SameTree(decoded.Item, Body(MessageFromNotation(row.Tree))))
            << Describe(decoded.Item);
    }
    EXPECT_EQ(site.Errors, std::vector<std::string>{});
}

TEST(DecodeCounts, AHalfGoesToTheEvenCount) {
    ExpectTrees({
        {"71 06 00 00 00 01 00 00 00 02", "<I4 1 2>"},
        {"71 0A 00 00 00 01 00 00 00 02 FF FF", "<I4 1 2>"},
        {"71 0E 00 00 00 01 00 00 00 02 00 00 00 03 00 00 00 04", "<I4 1 2 3 4>"},
        {"69 01 FF FF", "<I2>"},
        {"69 03 00 01 00 02", "<I2 1 2>"},
        {"69 05 00 01 00 02 FF", "<I2 1 2>"},
        {"A9 07 00 01 00 02 00 03 00 04", "<U2 1 2 3 4>"},
        {"61 04 FF FF FF FF", "<I8>"},
        {"A1 0C 00 00 00 00 00 00 00 01 00 00 00 00 00 00 00 02", "<U8 1 2>"},
        {"81 14 3F F0 00 00 00 00 00 00 40 00 00 00 00 00 00 00 FF FF FF FF", "<F8 1 2>"},
        {"91 02 FF FF", "<F4>"},
        {"B1 06 00 00 00 01 00 00 00 02", "<U4 1 2>"},
    });
}

TEST(DecodeCounts, AnythingElseGoesToTheNearestCount) {
    ExpectTrees({
        {"71 01 FF", "<I4>"},
        {"71 03 00 00 00 01", "<I4 1>"},
        {"71 05 00 00 00 01 FF", "<I4 1>"},
        {"71 07 00 00 00 01 00 00 00 02", "<I4 1 2>"},
        {"B1 09 00 00 00 01 00 00 00 02 FF", "<U4 1 2>"},
        {"61 03 FF FF FF", "<I8>"},
        {"A1 05 00 00 00 00 00 00 00 07", "<U8 7>"},
        {"A1 0B 00 00 00 00 00 00 00 07 FF FF FF", "<U8 7>"},
        {"81 0D 3F F0 00 00 00 00 00 00 40 00 00 00 00 00 00 00", "<F8 1 2>"},
    });
}

TEST(DecodeCounts, BytesNotReadAreTheNextItem) {
    ExpectTrees({
        {"01 03 71 01 41 01 58 A5 01 07", "<L <I4> <A \"X\"> <U1 7>>"},
        {"01 02 71 05 00 00 00 01 41 01 58", "<L <I4 1> <A \"X\">>"},
        {"01 02 61 04 41 02 58 59", "<L <I8> <A \"XY\">>"},
        {"01 02 69 01 21 01 05", "<L <I2> <B 0x05>>"},
        {"01 03 81 03 01 00 00", "<L <F8> <L> <L>>"},
    });
}

TEST(DecodeCounts, BytesReadTooManyAreMissingInWhatFollows) {
    RecordingSite site;
    const DecodedItem decoded = DecodeItem(Bytes("01 02 71 06 00 00 00 01 00 02 41 01 58 59"));
    ASSERT_EQ(decoded.Item->ItemCount(), 2);
    EXPECT_TRUE(decoded.Item->Item(1)->Value() ==
                Variant(std::vector<std::int32_t>{1, 0x00024101}));
    // 58: code 22, no length byte; the last byte is not needed.
    EXPECT_FALSE(decoded.Ok);
    EXPECT_EQ(decoded.Item->Item(2)->Format(), FormatVar);
    EXPECT_EQ(site.Errors.size(), 1U);
}

TEST(DecodeCounts, ARoundedUpCountNeedsItsBytes) {
    RecordingSite site;
    const DecodedItem decoded = DecodeItem(Bytes("71 06 00 00 00 01 00 02"));
    EXPECT_EQ(decoded.Item->Format(), FormatI4);
    EXPECT_TRUE(decoded.Item->Value().IsEmpty());
    EXPECT_TRUE(decoded.Ok);
    EXPECT_EQ(site.Errors,
              std::vector<std::string>{"9 (SECSMessage-lParseSECSMessage) Subscript out of range"});
}

TEST(DecodeCounts, RawHoldsTheBytesThatWereRead) {
    const DecodedItem decoded = DecodeItem(Bytes("71 05 00 00 00 01 FF"));
    EXPECT_TRUE(decoded.Item->Raw() == Variant(Bytes8{0, 0, 0, 1}));
    const DecodedItem longer = DecodeItem(Bytes("69 03 00 01 00 02"));
    EXPECT_TRUE(longer.Item->Raw() == Variant(Bytes8{0, 1, 0, 2}));
}

TEST(DecodeCounts, EveryLengthUpTo64GivesTheRoundedCount) {
    RecordingSite site;
    struct Format {
        int Code;
        int Width;
    };
    for (const Format format : {Format{26, 2},
                                Format{28, 4},
                                Format{42, 2},
                                Format{44, 4},
                                Format{24, 8},
                                Format{40, 8},
                                Format{36, 4},
                                Format{32, 8}}) {
        for (int length = 0; length <= 64; ++length) {
            Bytes8 bytes(80, 0);
            bytes[0] = static_cast<std::uint8_t>(format.Code * 4 + 1);
            bytes[1] = static_cast<std::uint8_t>(length);
            const Variant value = DecodeItem(bytes).Item->Value();
            const auto count = std::lrint(static_cast<double>(length) / format.Width);
            const auto found = value.IsEmpty() ? 0 : (value.IsArray() ? value.ElementCount() : 1);
            EXPECT_EQ(found, static_cast<std::size_t>(count)) << format.Code << ", " << length;
        }
    }
    EXPECT_EQ(site.Errors, std::vector<std::string>{});
}

}  // namespace
}  // namespace hexmire
