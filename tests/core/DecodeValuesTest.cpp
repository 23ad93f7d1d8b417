#include <hexmire/core/detail/SECSItemAccess.h>

#include "../fakes/Golden.h"
#include "../fakes/Messages.h"
#include "../fakes/RecordingSite.h"
#include "../fakes/TestHost.h"
#include <gtest/gtest.h>

#include <bit>
#include <limits>
#include <string>
#include <vector>

// What decoding leaves on an item: kind of value, raw bytes, counts (SEMI E5, item encoding).

namespace hexmire {
namespace {

using namespace fakes;

using Bytes8 = std::vector<std::uint8_t>;

struct Row {
    const char* Hex;
    Variant Value;
    Variant Raw;
};

/// Neither another value nor another format touches what the last decoding left.
void ExpectRawOutlivesChanges(const SECSItemPtr& item, const Variant& raw) {
    const SECSItemPtr copy = item->Duplicate().Object<SECSItem>();
    ASSERT_NE(copy, nullptr);
    EXPECT_TRUE(copy->Raw() == raw);
    copy->Format(copy->Format() == FormatU2 ? FormatF8 : FormatU2);
    EXPECT_TRUE(copy->Raw() == raw);
    copy->Value("changed");
    EXPECT_TRUE(copy->Raw() == raw);
    item->Value(5);
    item->Format(FormatI1);
    item->Value(Variant());
    EXPECT_TRUE(item->Raw() == raw);
}

void ExpectDecoded(const std::vector<Row>& rows) {
    RecordingSite site;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.Hex);
        const DecodedItem decoded = DecodeItem(Bytes(row.Hex));
        ASSERT_NE(decoded.Item, nullptr);
        EXPECT_TRUE(decoded.Ok);
        EXPECT_TRUE(SameValue(decoded.Item->Value(), row.Value)) << Describe(decoded.Item);
        EXPECT_TRUE(decoded.Item->Raw() == row.Raw);
        EXPECT_EQ(decoded.Item->NLB(), 0);
        EXPECT_EQ(decoded.Item->Length(), 0);
        EXPECT_EQ(decoded.Item->Name(), "");
        EXPECT_EQ(decoded.Item->ItemIndex(), 1);
        ExpectRawOutlivesChanges(decoded.Item, row.Raw);
    }
    EXPECT_EQ(site.Errors, std::vector<std::string>{});
}

TEST(DecodeValues, TextIsAStringAndOneCharacterHasOneByteAsRaw) {
    ExpectDecoded({
        {"41 01 41", "A", std::uint8_t{0x41}},
        {"41 03 41 42 43", "ABC", Bytes8{0x41, 0x42, 0x43}},
        {"41 01 00", std::string(1, '\0'), std::uint8_t{0}},
        {"41 02 30 31", "01", Bytes8{0x30, 0x31}},
        {"41 02 E4 FF", "\xE4\xFF", Bytes8{0xE4, 0xFF}},
        {"FD 01 78", "x", std::uint8_t{0x78}},
        {"FD 02 78 79", "xy", Bytes8{0x78, 0x79}},
    });
}

TEST(DecodeValues, BooleansAreTrueForAnyByteButZero) {
    ExpectDecoded({
        {"25 01 00", false, std::uint8_t{0}},
        {"25 01 02", true, std::uint8_t{2}},
        {"25 01 FF", true, std::uint8_t{255}},
        {"25 02 00 FF", std::vector<bool>{false, true}, Bytes8{0, 255}},
        {"25 03 01 00 80", std::vector<bool>{true, false, true}, Bytes8{1, 0, 128}},
    });
}

TEST(DecodeValues, BinaryIsAByteOrAnArrayOfBytes) {
    ExpectDecoded({
        {"21 01 F2", std::uint8_t{0xF2}, std::uint8_t{0xF2}},
        {"21 02 00 FF", Bytes8{0, 255}, Bytes8{0, 255}},
    });
}

TEST(DecodeValues, SmallIntegersAreLongs) {
    ExpectDecoded({
        {"65 01 FF", -1, Bytes8{255}},
        {"65 01 80", -128, Bytes8{128}},
        {"65 01 7F", 127, Bytes8{127}},
        {"A5 01 FF", 255, Bytes8{255}},
        {"69 02 FF FE", -2, Bytes8{255, 254}},
        {"69 02 80 00", -32768, Bytes8{128, 0}},
        {"A9 02 FF FE", 65534, Bytes8{255, 254}},
        {"71 04 80 00 00 00", std::numeric_limits<std::int32_t>::min(), Bytes8{128, 0, 0, 0}},
        {"71 04 7F FF FF FF", std::numeric_limits<std::int32_t>::max(), Bytes8{127, 255, 255, 255}},
        {"65 02 FF 7F", std::vector<std::int32_t>{-1, 127}, Bytes8{255, 127}},
        {"A5 02 FF 7F", std::vector<std::int32_t>{255, 127}, Bytes8{255, 127}},
        {"69 04 00 01 FF FF", std::vector<std::int32_t>{1, -1}, Bytes8{0, 1, 255, 255}},
        {"A9 04 00 01 FF FF", std::vector<std::int32_t>{1, 65535}, Bytes8{0, 1, 255, 255}},
        {"71 08 00 00 00 01 FF FF FF FE",
         std::vector<std::int32_t>{1, -2},
         Bytes8{0, 0, 0, 1, 255, 255, 255, 254}},
    });
}

TEST(DecodeValues, WideIntegersAreDecimalsAlsoSmallOnes) {
    ExpectDecoded({
        {"B1 04 FF FF FF FF", Decimal::FromUInt64(4294967295U), Bytes8(4, 255)},
        {"B1 04 00 00 00 01", Decimal::FromInt64(1), Bytes8{0, 0, 0, 1}},
        {"61 08 FF FF FF FF FF FF FF FF", Decimal::FromInt64(-1), Bytes8(8, 255)},
        {"61 08 80 00 00 00 00 00 00 00",
         Decimal::FromInt64(std::numeric_limits<std::int64_t>::min()),
         Bytes8{128, 0, 0, 0, 0, 0, 0, 0}},
        {"61 08 FF FF FF FF FF FF FF 00",
         Decimal::FromInt64(-256),
         Bytes8{255, 255, 255, 255, 255, 255, 255, 0}},
        {"61 08 00 00 00 00 00 00 00 00", Decimal(), Bytes8(8, 0)},
        {"A1 08 FF FF FF FF FF FF FF FF", Decimal::FromUInt64(~0ULL), Bytes8(8, 255)},
        {"A1 08 00 20 00 00 00 00 00 01",
         Decimal::FromUInt64(9007199254740993ULL),
         Bytes8{0, 32, 0, 0, 0, 0, 0, 1}},
        {"B1 08 00 00 00 02 80 00 00 00",
         std::vector<Decimal>{Decimal::FromInt64(2), Decimal::FromInt64(2147483648LL)},
         Bytes8{0, 0, 0, 2, 128, 0, 0, 0}},
    });
}

TEST(DecodeValues, AnArrayOfI8MixesSigns) {
    ExpectDecoded({
        {"61 18 FF FF FF FF FF FF FF FE 00 00 00 00 00 00 00 03 80 00 00 00 00 00 00 01",
         std::vector<Decimal>{Decimal::FromInt64(-2),
                              Decimal::FromInt64(3),
                              Decimal::FromInt64(-9223372036854775807LL)},
         Bytes("FF FF FF FF FF FF FF FE 00 00 00 00 00 00 00 03 80 00 00 00 00 00 00 01")},
    });
}

TEST(DecodeValues, FloatsKeepEveryBit) {
    ExpectDecoded({
        {"91 04 3D CC CC CD", 0.1F, Bytes8{0x3D, 0xCC, 0xCC, 0xCD}},
        {"91 04 80 00 00 00", -0.0F, Bytes8{128, 0, 0, 0}},
        {"91 04 7F 80 00 01", std::bit_cast<float>(0x7F800001U), Bytes8{0x7F, 0x80, 0, 1}},
        {"91 04 FF C1 23 45", std::bit_cast<float>(0xFFC12345U), Bytes8{0xFF, 0xC1, 0x23, 0x45}},
        {"91 04 00 00 00 01", std::numeric_limits<float>::denorm_min(), Bytes8{0, 0, 0, 1}},
        {"81 08 7F F4 00 00 00 00 00 01",
         std::bit_cast<double>(0x7FF4000000000001ULL),
         Bytes8{0x7F, 0xF4, 0, 0, 0, 0, 0, 1}},
        {"81 08 80 00 00 00 00 00 00 00", -0.0, Bytes8{128, 0, 0, 0, 0, 0, 0, 0}},
        {"91 08 3F 80 00 00 7F 80 00 00",
         std::vector<float>{1, std::numeric_limits<float>::infinity()},
         Bytes8{0x3F, 0x80, 0, 0, 0x7F, 0x80, 0, 0}},
        {"81 10 3F E0 00 00 00 00 00 00 FF F0 00 00 00 00 00 00",
         std::vector<double>{0.5, -std::numeric_limits<double>::infinity()},
         Bytes("3F E0 00 00 00 00 00 00 FF F0 00 00 00 00 00 00")},
    });
}

TEST(DecodeValues, FloatsOfEveryBitPatternGoOutAsTheyCame) {
    RecordingSite site;
    for (const char* hex : {"91 04 7F C0 00 00",
                            "91 04 7F 80 00 01",
                            "91 04 FF FF FF FF",
                            "81 08 7F F4 00 00 00 00 00 01",
                            "81 08 FF FF FF FF FF FF FF FF",
                            "92 00 08 7F A0 00 00 00 00 00 01"}) {
        const DecodedItem decoded = DecodeItem(Bytes(hex));
        EXPECT_EQ(HexOf(EncodeBody(*decoded.Message)).substr(6),
                  std::string(hex).substr(hex[1] == '2' ? 9 : 6));
    }
    EXPECT_EQ(site.Errors, std::vector<std::string>{});
}

TEST(DecodeValues, LengthZeroLeavesAnItemWithoutValueInEveryFormat) {
    RecordingSite site;
    for (const int code : {8, 9, 16, 24, 25, 26, 28, 32, 36, 40, 41, 42, 44, 63}) {
        const Bytes8 bytes{static_cast<std::uint8_t>(code * 4 + 1), 0};
        const DecodedItem decoded = DecodeItem(bytes);
        EXPECT_TRUE(decoded.Ok);
        EXPECT_EQ(decoded.Item->Format(), code);
        EXPECT_TRUE(decoded.Item->Value().IsEmpty()) << code;
        EXPECT_TRUE(decoded.Item->Raw().IsEmpty()) << code;
        const DecodedItem noLengthByte = DecodeItem(Bytes8{static_cast<std::uint8_t>(code * 4)});
        EXPECT_TRUE(noLengthByte.Ok);
        EXPECT_EQ(noLengthByte.Item->Format(), code);
        EXPECT_TRUE(noLengthByte.Item->Value().IsEmpty()) << code;
    }
    EXPECT_EQ(site.Errors, std::vector<std::string>{});
}

TEST(DecodeValues, AListCountsItsChildrenAndHasNoRaw) {
    const DecodedItem decoded = DecodeItem(Bytes("01 03 A5 01 01 01 00 41 01 41"));
    const SECSItemPtr list = decoded.Item;
    EXPECT_EQ(list->Format(), FormatList);
    EXPECT_EQ(list->ItemCount(), 3);
    EXPECT_EQ(list->Length(), 3);
    EXPECT_EQ(list->NLB(), 0);
    EXPECT_TRUE(list->Raw().IsEmpty());
    EXPECT_TRUE(list->Value().IsEmpty());
    std::int32_t index = 0;
    for (const SECSItemPtr& child : *list) {
        EXPECT_EQ(child->ItemIndex(), ++index);
        EXPECT_EQ(child->Parent(), list);
    }
    EXPECT_EQ(list->Parent(), decoded.Message->Root());
    EXPECT_EQ(list->Item(2)->ItemCount(), 0);
}

TEST(DecodeValues, EveryOneByteValueIsReadInEveryOneByteFormat) {
    RecordingSite site;
    for (int value = 0; value < 256; ++value) {
        const auto byte = static_cast<std::uint8_t>(value);
        const auto decode = [&](std::uint8_t head) {
            return DecodeItem(Bytes8{head, 1, byte}).Item->Value();
        };
        EXPECT_TRUE(decode(0x65) == Variant(value < 128 ? value : value - 256));
        EXPECT_TRUE(decode(0xA5) == Variant(value));
        EXPECT_TRUE(decode(0x21) == Variant(byte));
        EXPECT_TRUE(decode(0x25) == Variant(value != 0));
        EXPECT_TRUE(decode(0x41) == Variant(std::string(1, static_cast<char>(byte))));
    }
    EXPECT_EQ(site.Errors, std::vector<std::string>{});
}

TEST(DecodeValues, EveryTwoByteValueIsReadInArraysOfI2AndU2) {
    Bytes8 body{0x6B, 0x02, 0x00, 0x00};
    for (unsigned value = 0; value < 65536; ++value) {
        body.push_back(static_cast<std::uint8_t>(value >> 8U));
        body.push_back(static_cast<std::uint8_t>(value));
    }
    const Variant signedValues = DecodeItem(body).Item->Value();
    body[0] = 0xAB;
    const Variant unsignedValues = DecodeItem(body).Item->Value();
    ASSERT_EQ(signedValues.ElementCount(), 65536U);
    ASSERT_EQ(unsignedValues.ElementCount(), 65536U);
    for (std::int32_t value = 0; value < 65536; ++value) {
        const auto index = static_cast<std::size_t>(value);
        ASSERT_EQ(signedValues.View<std::int32_t>()[index], value < 32768 ? value : value - 65536);
        ASSERT_EQ(unsignedValues.View<std::int32_t>()[index], value);
    }
}

TEST(DecodeValues, TheLargestTextIsReadWhole) {
    RecordingSite site;
    Bytes8 body{0x43, 0xFF, 0xFF, 0xFF};
    body.resize(4 + 16777215, 'x');
    body.back() = 'y';
    const DecodedItem decoded = DecodeItem(body);
    const Variant value = decoded.Item->Value();
    EXPECT_EQ(value.Text().size(), 16777215U);
    EXPECT_TRUE(value.Text().ends_with("xxy"));
    EXPECT_EQ(EncodeBody(*decoded.Message), body);
    EXPECT_EQ(site.Errors, std::vector<std::string>{});
}

}  // namespace
}  // namespace hexmire
