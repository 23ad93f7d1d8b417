#include "../fakes/Messages.h"
#include "../fakes/RecordingSite.h"
#include "../fakes/VariantText.h"
#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <string>
#include <vector>

// Every kind of value under every format: its line, and what is reported.

namespace hexmire {
namespace {

using namespace fakes;

using Texts = std::vector<std::string>;
using Variants = std::vector<Variant>;

/// What stands between format name and bracket, or no line at all; and the error that it comes
/// with.
struct Cell {
    const char* Inner;
    const char* Error;
};

constexpr Cell Shows(const char* inner) { return {inner, nullptr}; }
/// Nothing is added for the item.
constexpr Cell Faults(const char* error) { return {nullptr, error}; }
/// The routine that dumps the bytes reports for itself and shows none.
constexpr Cell NoBytes(const char* error) { return {" ", error}; }

constexpr Cell kMismatch = Faults("13 (SECSMessage-ItemToSML) Type mismatch");
constexpr Cell kOverflow = Faults("6 (SECSMessage-ItemToSML) Overflow");
constexpr Cell kNull = Faults("94 (SECSMessage-ItemToSML) Invalid use of Null");
constexpr Cell kNotSupported =
    Faults("438 (SECSMessage-ItemToSML) Object doesn't support this property or method");
constexpr Cell kNotSet =
    Faults("91 (SECSMessage-ItemToSML) Object variable or With block variable not set");
constexpr Cell kDumpOverflow = NoBytes("6 (ModGeneral-HexDumpArray2) Overflow");
constexpr Cell kDumpMismatch = NoBytes("13 (ModGeneral-HexDumpArray2) Type mismatch");
constexpr Cell kDumpNull = NoBytes("94 (ModGeneral-HexDumpArray2) Invalid use of Null");
constexpr Cell kDumpEmpty =
    NoBytes("5 (ModGeneral-HexDumpArray2) Invalid procedure call or argument");
constexpr Cell kNoElements{" [  ]", "9 (ModGeneral-IsByteArray) Subscript out of range"};

struct Row {
    Variant Value;
    Cell Ascii;
    Cell Boolean;
    Cell Binary;
    Cell Number;  ///< the same for all ten formats
    Cell Any;
};

struct Format {
    std::int32_t Code;
    const char* Name;
    Cell Row::*Column;
};

constexpr std::array kFormats{Format{FormatAscii, "A", &Row::Ascii},
                              Format{FormatBoolean, "BOOL", &Row::Boolean},
                              Format{FormatBinary, "B", &Row::Binary},
                              Format{FormatI1, "I1", &Row::Number},
                              Format{FormatI2, "I2", &Row::Number},
                              Format{FormatI4, "I4", &Row::Number},
                              Format{FormatI8, "I8", &Row::Number},
                              Format{FormatU1, "U1", &Row::Number},
                              Format{FormatU2, "U2", &Row::Number},
                              Format{FormatU4, "U4", &Row::Number},
                              Format{FormatU8, "U8", &Row::Number},
                              Format{FormatF4, "F4", &Row::Number},
                              Format{FormatF8, "F8", &Row::Number},
                              Format{FormatVar, "V", &Row::Any}};

/// Shows each value under each format, in front of U1 7, which always follows.
void ExpectShown(const std::vector<Row>& rows) {
    RecordingSite site;
    for (const Row& row : rows) {
        for (const Format& format : kFormats) {
            SCOPED_TRACE(Show(row.Value) + " as " + format.Name);
            const Cell& cell = row.*format.Column;
            site.Errors.clear();
            const SECSMessagePtr message = MessageOf(FormatList);
            AddItem(Body(message), format.Code, row.Value);
            AddItem(Body(message), FormatU1, 7);
            std::string line;
            if (cell.Inner != nullptr)
                line = std::string("  < ") + format.Name + cell.Inner + " >\r\n";
            EXPECT_EQ(RenderSml(*message, false),
                      "S0F1\r\n< L \r\n" + line + "  < U1 7 >\r\n >\r\n.");
            EXPECT_EQ(site.Errors, cell.Error == nullptr ? Texts{} : Texts{cell.Error});
        }
    }
}

/// A row whose value has one text wherever a text is shown.
Row Scalar(Variant value, const char* quoted, Cell boolean, Cell binary, const char* text) {
    return {std::move(value), Shows(quoted), boolean, binary, Shows(text), Shows(text)};
}

constexpr Cell kTrue = Shows(" TRUE");
constexpr Cell kFalse = Shows(" FALSE");

TEST(SmlMatrix, NumbersOfEveryKind) {
    ExpectShown({
        Scalar(std::uint8_t{7}, " '7'", kTrue, Shows(" 0x07"), " 7"),
        Scalar(std::int16_t{-3}, " '-3'", kTrue, Shows(" 0xFFFD"), " -3"),
        Scalar(std::int16_t{-32768}, " '-32768'", kTrue, Shows(" 0x8000"), " -32768"),
        Scalar(std::int16_t{300}, " '300'", kTrue, Shows(" 0x12C"), " 300"),
        Scalar(70000, " '70000'", kTrue, Shows(" 0x11170"), " 70000"),
        Scalar(-1, " '-1'", kTrue, Shows(" 0xFFFFFFFF"), " -1"),
        Scalar(0, " '0'", kFalse, Shows(" 0x00"), " 0"),
        Scalar(0x7FFFFFFF, " '2147483647'", kTrue, Shows(" 0x7FFFFFFF"), " 2147483647"),
        Scalar(0.5F, " '0.5'", kTrue, Shows(" 0x00"), " 0.5"),
        Scalar(1.5F, " '1.5'", kTrue, Shows(" 0x02"), " 1.5"),
        Scalar(-2.5, " '-2.5'", kTrue, Shows(" 0xFFFFFFFE"), " -2.5"),
        Scalar(255.5, " '255.5'", kTrue, Shows(" 0x100"), " 255.5"),
        Scalar(2147483647.4, " '2147483647.4'", kTrue, Shows(" 0x7FFFFFFF"), " 2147483647.4"),
        Scalar(2147483648.0, " '2147483648'", kTrue, kOverflow, " 2147483648"),
        Scalar(1e20, " '1E+20'", kTrue, kOverflow, " 1E+20"),
        Scalar(std::numeric_limits<double>::quiet_NaN(), " 'NaN'", kTrue, kOverflow, " NaN"),
        Scalar(-std::numeric_limits<float>::infinity(), " '-INF'", kTrue, kOverflow, " -INF"),
        Scalar(-0.0, " '0'", kFalse, Shows(" 0x00"), " 0"),
        Scalar(Decimal::FromInt64(255), " '255'", kTrue, Shows(" 0xFF"), " 255"),
        Scalar(Decimal::FromInt64(-1), " '-1'", kTrue, Shows(" 0xFFFFFFFF"), " -1"),
        Scalar(Decimal::FromDouble(10.5), " '10.5'", kTrue, Shows(" 0x0A"), " 10.5"),
        Scalar(4294967295U, " '4294967295'", kTrue, kOverflow, " 4294967295"),
        Scalar(true, " 'True'", kTrue, Shows(" 0xFFFF"), " True"),
        Scalar(false, " 'False'", kFalse, Shows(" 0x00"), " False"),
    });
}

TEST(SmlMatrix, Texts) {
    ExpectShown({
        Scalar("x", " 'x'", kMismatch, kMismatch, " x"),
        Scalar(" 12 ", " ' 12 '", kTrue, Shows(" 0x0C"), "  12 "),
        Scalar("-1", " '-1'", kTrue, Shows(" 0xFFFFFFFF"), " -1"),
        Scalar("0.0", " '0.0'", kFalse, Shows(" 0x00"), " 0.0"),
        Scalar("TRUE", " 'TRUE'", kTrue, kMismatch, " TRUE"),
        Scalar("f", " 'f'", kMismatch, kMismatch, " f"),
        Scalar("0x0A", " '0x0A'", kMismatch, kMismatch, " 0x0A"),
        Scalar(" ", " ' '", kMismatch, kMismatch, "  "),
        {"", Shows(""), kMismatch, kMismatch, Shows(" "), Shows(" ")},
        {"9999999999",
         Shows(" '9999999999'"),
         kTrue,
         kOverflow,
         Shows(" 9999999999"),
         Shows(" 9999999999")},
    });
}

TEST(SmlMatrix, NothingAndObjects) {
    ExpectShown({
        {Variant(), Shows(""), Shows(""), Shows(" "), Shows(""), Shows("")},
        {Variant::Null(), Shows(""), Shows(""), Shows(" "), Shows(""), Shows("")},
        {New<SECSItem>(),
         kNotSupported,
         kNotSupported,
         kNotSupported,
         kNotSupported,
         kNotSupported},
        {SECSItemPtr(), kNotSet, kNotSet, kNotSet, kNotSet, kNotSet},
    });
}

TEST(SmlMatrix, ArraysOfEveryKind) {
    ExpectShown({
        {std::vector<std::uint8_t>{1, 255},
         kMismatch,
         Shows(" TRUE TRUE"),
         Shows(" 0x01 0xFF"),
         Shows(" 1 255"),
         Shows(" [ 01 FF ]")},
        {std::vector<std::uint8_t>{0},
         kMismatch,
         kFalse,
         Shows(" 0x00"),
         Shows(" 0"),
         Shows(" [ 00 ]")},
        {std::vector<std::int16_t>{-1, 2},
         kMismatch,
         Shows(" TRUE TRUE"),
         kDumpOverflow,
         Shows(" -1 2"),
         Shows(" [ -1, 2 ]")},
        {std::vector<std::int32_t>{0, 10},
         kMismatch,
         Shows(" FALSE TRUE"),
         Shows(" 0x00 0x0A"),
         Shows(" 0 10"),
         Shows(" [ 0, 10 ]")},
        {std::vector<std::int32_t>{1, 256},
         kMismatch,
         Shows(" TRUE TRUE"),
         kDumpOverflow,
         Shows(" 1 256"),
         Shows(" [ 1, 256 ]")},
        {std::vector<float>{0.5F, 2},
         kMismatch,
         Shows(" TRUE TRUE"),
         Shows(" 0x00 0x02"),
         Shows(" 0.5 2"),
         Shows(" [ 0.5, 2 ]")},
        {std::vector<double>{1.5, 2.5},
         kMismatch,
         Shows(" TRUE TRUE"),
         Shows(" 0x02 0x02"),
         Shows(" 1.5 2.5"),
         Shows(" [ 1.5, 2.5 ]")},
        {std::vector<Decimal>{Decimal(), Decimal::FromUInt64(~0ULL)},
         kMismatch,
         Shows(" FALSE TRUE"),
         kDumpOverflow,
         Shows(" 0 18446744073709551615"),
         Shows(" [ 0, 18446744073709551615 ]")},
    });
}

TEST(SmlMatrix, ArraysOfVariants) {
    ExpectShown({
        {Variants{std::uint8_t{1}, "2", 3.0},
         kMismatch,
         Shows(" TRUE TRUE TRUE"),
         Shows(" 0x01 0x02 0x03"),
         Shows(" 1 2 3"),
         Shows(" [ 01 02 03 ]")},
        {Variants{"1", std::uint8_t{2}},
         kMismatch,
         Shows(" TRUE TRUE"),
         Shows(" 0x01 0x02"),
         Shows(" 1 2"),
         Shows(" [ 1, 2 ]")},
        {Variants{std::uint8_t{1}, 256},
         kMismatch,
         Shows(" TRUE TRUE"),
         kDumpOverflow,
         Shows(" 1 256"),
         {" [  ]", "6 (ModGeneral-HexDumpArray) Overflow"}},
        {Variants{Variant(), 1},
         kMismatch,
         Shows(" FALSE TRUE"),
         Shows(" 0x00 0x01"),
         Shows("  1"),
         Shows(" [ , 1 ]")},
        {Variants{1, Variant::Null()}, kMismatch, kNull, kDumpNull, kNull, kNull},
        {Variants{true, "x"},
         kMismatch,
         kMismatch,
         kDumpOverflow,
         Shows(" True x"),
         Shows(" [ True, x ]")},
        {Variants{1, "x"}, kMismatch, kMismatch, kDumpMismatch, Shows(" 1 x"), Shows(" [ 1, x ]")},
        {Variants{1, Variants{2}}, kMismatch, kMismatch, kDumpMismatch, kMismatch, kMismatch},
    });
}

TEST(SmlMatrix, ArraysWithLowerBoundOneShowTheirElementsAndDumpsKeepTheBlanks) {
    ExpectShown({
        {ArrayOf(std::vector<std::uint8_t>{10, 0}, 1),
         kMismatch,
         Shows(" TRUE FALSE"),
         Shows(" 0x0A 0x00     "),
         Shows(" 10 0"),
         Shows(" [ 0A 00    ]")},
        {ArrayOf(std::vector<std::int32_t>{0, 3}, 1),
         kMismatch,
         Shows(" FALSE TRUE"),
         Shows(" 0x00 0x03     "),
         Shows(" 0 3"),
         Shows(" [ 0, 3 ]")},
    });
}

TEST(SmlMatrix, ArraysWithoutElements) {
    const auto empty = [](Variant value) {
        return Row{std::move(value), kMismatch, Shows(""), kDumpEmpty, Shows(""), kNoElements};
    };
    ExpectShown({empty(std::vector<std::uint8_t>{}),
                 empty(std::vector<bool>{}),
                 empty(std::vector<std::int16_t>{}),
                 empty(std::vector<std::int32_t>{}),
                 empty(std::vector<float>{}),
                 empty(std::vector<double>{}),
                 empty(std::vector<Decimal>{}),
                 empty(Variants{})});
}

}  // namespace
}  // namespace hexmire
