#include <hexmire/core/ModGeneral.h>

#include "../fakes/ErrorRecorder.h"
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace hexmire {
namespace {

using namespace ModGeneral;
using fakes::ErrorRecorder;
using Bytes = std::vector<std::uint8_t>;
using Reports = ErrorRecorder::Reports;

TEST(Dumps, HexFieldsOfEveryByte) {
    for (unsigned value = 0; value < 256; ++value) {
        char digits[3];
        std::snprintf(digits, sizeof(digits), "%02X", value);
        const auto byte = static_cast<std::uint8_t>(value);
        EXPECT_EQ(Hex2(byte), std::string(" ") + digits);
        EXPECT_EQ(Hex3(byte), std::string(" 0x") + digits);
        EXPECT_EQ(Hex4(byte), std::string(",") + digits);
    }
}

TEST(Dumps, OfBytes) {
    ErrorRecorder site;
    EXPECT_EQ(HexDumpArray(Bytes{0x0A, 0xFF}), "0A FF");
    EXPECT_EQ(HexDumpArray2(Bytes{0x0A, 0xFF}), "0x0A 0xFF");
    EXPECT_EQ(HexDumpArray3(Bytes{0x0A, 0xFF}), "0A,FF");
    EXPECT_EQ(HexDumpArray(Bytes{0x00, 0x10, 0xAB}), "00 10 AB");
    EXPECT_EQ(HexDumpArray2(Bytes{0x00, 0x10, 0xAB}), "0x00 0x10 0xAB");
    EXPECT_EQ(HexDumpArray3(Bytes{0x00, 0x10, 0xAB}), "00,10,AB");
    EXPECT_EQ(ChrDumpArray(Bytes{0x0A, 0xFF}), "\x0A\xFF");
    EXPECT_EQ(HexDumpArray(Bytes{0x0F}), "0F");
    EXPECT_TRUE(site.Errors.empty());
}

TEST(Dumps, CharactersOfEveryByte) {
    Bytes bytes;
    std::string text;
    for (int code = 0; code < 256; ++code) {
        bytes.push_back(static_cast<std::uint8_t>(code));
        text.push_back(static_cast<char>(code));
    }
    EXPECT_EQ(ChrDumpArray(bytes), text);
}

TEST(Dumps, OfByteValuesOfAnyKind) {
    ErrorRecorder site;
    EXPECT_EQ(HexDumpArray(std::vector<std::int32_t>{10, 255}), "0A FF");
    EXPECT_EQ(HexDumpArray(std::vector<std::int16_t>{0, 16}), "00 10");
    EXPECT_EQ(HexDumpArray2(std::vector<double>{254.5, 0.5}), "0xFE 0x00");
    EXPECT_EQ(HexDumpArray3(std::vector<Variant>{"12", 3, std::uint8_t{255}, Variant()}),
              "0C,03,FF,00");
    EXPECT_EQ(ChrDumpArray(std::vector<std::int32_t>{65, 66}), "AB");
    EXPECT_EQ(ChrDumpArray(std::vector<Variant>{"65", 66.4, std::uint8_t{67}}), "ABC");
    EXPECT_TRUE(site.Errors.empty());
}

TEST(Dumps, LowerBoundOneKeepsTheBlanksOfTheUnusedField) {
    const Variant values = Variant::Array(Bytes{0x0A, 0xFF}, 1);
    EXPECT_EQ(HexDumpArray(values), "0A FF   ");
    EXPECT_EQ(HexDumpArray2(values), "0x0A 0xFF     ");
    EXPECT_EQ(HexDumpArray3(values), "0A,FF   ");
    EXPECT_EQ(ChrDumpArray(Variant::Array(Bytes{65, 66}, 1)), "AB ");
}

TEST(Dumps, LowerBoundTwoKeepsTwoFields) {
    EXPECT_EQ(HexDumpArray(Variant::Array(Bytes{0x0A}, 2)), "0A      ");
    EXPECT_EQ(ChrDumpArray(Variant::Array(Bytes{65}, 2)), "A  ");
}

TEST(Dumps, EmptyArrayCannotBeShortened) {
    ErrorRecorder site;
    EXPECT_EQ(HexDumpArray(Bytes{}), "");
    EXPECT_EQ(HexDumpArray2(Bytes{}), "");
    EXPECT_EQ(HexDumpArray3(std::vector<Variant>{}), "");
    EXPECT_EQ(site.Errors,
              (Reports{{5, "(ModGeneral-HexDumpArray) Invalid procedure call or argument", 0},
                       {5, "(ModGeneral-HexDumpArray2) Invalid procedure call or argument", 0},
                       {5, "(ModGeneral-HexDumpArray3) Invalid procedure call or argument", 0}}));
}

TEST(Dumps, ValueBeyondOneByteIsAnOverflow) {
    ErrorRecorder site;
    for (const std::int32_t value : {256, -1, 70000}) {
        static_cast<void>(HexDumpArray(std::vector<std::int32_t>{1, value}));
        EXPECT_EQ(site.Take(), (Reports{{6, "(ModGeneral-HexDumpArray) Overflow", 0}}));
        static_cast<void>(HexDumpArray2(std::vector<std::int32_t>{1, value}));
        EXPECT_EQ(site.Take(), (Reports{{6, "(ModGeneral-HexDumpArray2) Overflow", 0}}));
        static_cast<void>(HexDumpArray3(std::vector<std::int32_t>{1, value}));
        EXPECT_EQ(site.Take(), (Reports{{6, "(ModGeneral-HexDumpArray3) Overflow", 0}}));
    }
    static_cast<void>(HexDumpArray(std::vector<double>{255.5}));
    EXPECT_EQ(site.Take(), (Reports{{6, "(ModGeneral-HexDumpArray) Overflow", 0}}));
}

TEST(Dumps, CharacterCodeBeyondOneByteIsAnInvalidCall) {
    ErrorRecorder site;
    for (const std::int32_t value : {256, -1, 65536 + 65}) {
        static_cast<void>(ChrDumpArray(std::vector<std::int32_t>{65, value}));
        EXPECT_EQ(
            site.Take(),
            (Reports{{5, "(ModGeneral-ChrDumpArray) Invalid procedure call or argument", 0}}));
    }
    static_cast<void>(ChrDumpArray(std::vector<double>{3e9}));
    EXPECT_EQ(site.Take(), (Reports{{6, "(ModGeneral-ChrDumpArray) Overflow", 0}}));
}

TEST(Dumps, ElementThatDoesNotConvertIsItsOwnFault) {
    ErrorRecorder site;
    static_cast<void>(HexDumpArray(std::vector<Variant>{"zz"}));
    EXPECT_EQ(site.Take(), (Reports{{13, "(ModGeneral-HexDumpArray) Type mismatch", 0}}));
    static_cast<void>(HexDumpArray3(std::vector<Variant>{Variant::Null()}));
    EXPECT_EQ(site.Take(), (Reports{{94, "(ModGeneral-HexDumpArray3) Invalid use of Null", 0}}));
    static_cast<void>(ChrDumpArray(std::vector<Variant>{"A"}));
    EXPECT_EQ(site.Take(), (Reports{{13, "(ModGeneral-ChrDumpArray) Type mismatch", 0}}));
}

TEST(Dumps, AnythingButAnArrayIsAMismatch) {
    ErrorRecorder site;
    for (const Variant& value :
         {Variant(), Variant("0A FF"), Variant(10), Variant(std::uint8_t{10})}) {
        EXPECT_EQ(HexDumpArray(value), "");
        EXPECT_EQ(HexDumpArray2(value), "");
        EXPECT_EQ(HexDumpArray3(value), "");
        EXPECT_EQ(ChrDumpArray(value), "");
        EXPECT_EQ(site.Take(),
                  (Reports{{13, "(ModGeneral-HexDumpArray) Type mismatch", 0},
                           {13, "(ModGeneral-HexDumpArray2) Type mismatch", 0},
                           {13, "(ModGeneral-HexDumpArray3) Type mismatch", 0},
                           {13, "(ModGeneral-ChrDumpArray) Type mismatch", 0}}));
    }
}

TEST(Dumps, LargeArraysAreDumpedWhole) {
    const std::string text = HexDumpArray(Bytes(100000, 0xAB));
    EXPECT_EQ(text.size(), 299999U);
    EXPECT_EQ(text.substr(0, 5), "AB AB");
    EXPECT_EQ(text.substr(299994), "AB AB");
}

}  // namespace
}  // namespace hexmire
