#include <hexmire/core/ModGeneral.h>
#include <hexmire/support/Fault.h>

#include "../fakes/ErrorRecorder.h"
#include "../fakes/VariantText.h"
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// The four dumps of arrays of every kind and bound.
namespace hexmire {
namespace {

using namespace ModGeneral;
using fakes::ErrorRecorder;
using fakes::Show;
using Bytes = std::vector<std::uint8_t>;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

struct Texts {
    std::string Chr;
    std::string Hex;
    std::string Hex2;
    std::string Hex3;
};

/// Asks for the four dumps; the text of what each reported is put behind what it returned.
void ExpectDumps(ErrorRecorder& site, const Variant& values, const Texts& expected) {
    const auto outcome = [&](std::string text) {
        for (const auto& error : site.Take())
            text += "|" + std::to_string(error.Code) + " " + error.Text;
        return text;
    };
    EXPECT_EQ(outcome(ChrDumpArray(values)), expected.Chr) << Show(values);
    EXPECT_EQ(outcome(HexDumpArray(values)), expected.Hex) << Show(values);
    EXPECT_EQ(outcome(HexDumpArray2(values)), expected.Hex2) << Show(values);
    EXPECT_EQ(outcome(HexDumpArray3(values)), expected.Hex3) << Show(values);
}

Decimal Whole(std::int64_t value) { return Decimal::FromInt64(value); }

TEST(DumpKinds, EveryKindOfNumberIsDumpedAsItsByte) {
    ErrorRecorder site;
    const Texts expected{"\x0A\xFF", "0A FF", "0x0A 0xFF", "0A,FF"};
    for (const Variant& values : {Variant(Bytes{10, 255}),
                                  Variant(std::vector<std::int16_t>{10, 255}),
                                  Variant(std::vector<std::int32_t>{10, 255}),
                                  Variant(std::vector<float>{10, 255}),
                                  Variant(std::vector<double>{10, 255}),
                                  Variant(std::vector<Decimal>{Whole(10), Whole(255)}),
                                  Variant(std::vector<Variant>{std::uint8_t{10}, 255.0}),
                                  Variant(std::vector<Variant>{" 10 ", "2.55e2"}),
                                  Variant(std::vector<Variant>{10.4F, std::uint64_t{255}})}) {
        ExpectDumps(site, values, expected);
    }
    const std::string zeros(2, '\0');
    ExpectDumps(site, std::vector<bool>{false, false}, {zeros, "00 00", "0x00 0x00", "00,00"});
    ExpectDumps(
        site, std::vector<Variant>{Variant(), false}, {zeros, "00 00", "0x00 0x00", "00,00"});
}

TEST(DumpKinds, FractionsGoToTheNearestByteTiesToEven) {
    ErrorRecorder site;
    const Texts expected{std::string("\0\2\xFE\0\xFF", 5),
                         "00 02 FE 00 FF",
                         "0x00 0x02 0xFE 0x00 0xFF",
                         "00,02,FE,00,FF"};
    ExpectDumps(site, std::vector<double>{0.5, 1.5, 254.5, -0.5, 255.49}, expected);
    ExpectDumps(site, std::vector<float>{0.5F, 1.5F, 254.5F, -0.5F, 255.25F}, expected);
    ExpectDumps(site, std::vector<Variant>{"0.5", "1.5", "254.5", "-0.5", "255.49"}, expected);
}

TEST(DumpKinds, ElementThatIsNoByteLeavesNoText) {
    struct Row {
        Variant Values;
        int HexFault;
        int ChrFault;
    };
    const std::vector<Row> rows{
        {std::vector<bool>{false, true}, 6, 5},
        {std::vector<std::int16_t>{1, -1}, 6, 5},
        {std::vector<std::int32_t>{1, 256, 2}, 6, 5},
        {std::vector<double>{1, 255.5}, 6, 5},
        {std::vector<double>{1, -0.51}, 6, 5},
        {std::vector<double>{1, 2147483647.5}, 6, 6},
        {std::vector<double>{1, kNaN}, 6, 6},
        {std::vector<float>{1, -kInfinity}, 6, 6},
        {std::vector<Decimal>{Whole(1), Whole(256)}, 6, 5},
        {std::vector<Decimal>{Whole(1), Whole(std::numeric_limits<std::int64_t>::max())}, 6, 6},
        {std::vector<Variant>{1, Variant::Null()}, 94, 94},
        {std::vector<Variant>{1, "zz"}, 13, 13},
        {std::vector<Variant>{1, ""}, 13, 13},
        {std::vector<Variant>{1, "FF"}, 13, 13},
        {std::vector<Variant>{1, "256"}, 6, 5},
        {std::vector<Variant>{1, true}, 6, 5},
        {std::vector<Variant>{1, Variant(Bytes{1})}, 13, 13},
        {std::vector<Variant>{1, std::make_shared<int>(1)}, 438, 438},
        {std::vector<Variant>{1, std::shared_ptr<int>()}, 91, 91}};
    ErrorRecorder site;
    const auto report = [](const char* routine, int fault) {
        return "|" + std::to_string(fault) + " (ModGeneral-" + routine + ") " +
               FaultDescription(static_cast<FaultNumber>(fault));
    };
    for (const Row& row : rows) {
        ExpectDumps(site,
                    row.Values,
                    {report("ChrDumpArray", row.ChrFault),
                     report("HexDumpArray", row.HexFault),
                     report("HexDumpArray2", row.HexFault),
                     report("HexDumpArray3", row.HexFault)});
    }
}

TEST(DumpKinds, UnusedFieldsOfALowerBoundStayBlank) {
    ErrorRecorder site;
    for (const Variant& values :
         {Variant::Array(Bytes{10, 255}, 1),
          Variant::Array(std::vector<std::int32_t>{10, 255}, 1),
          Variant::Array(std::vector<Variant>{std::uint8_t{10}, "255"}, 1)}) {
        ExpectDumps(site, values, {"\x0A\xFF ", "0A FF   ", "0x0A 0xFF     ", "0A,FF   "});
    }
    ExpectDumps(site,
                Variant::Array(std::vector<double>{7}, 3),
                {"\7   ", "07         ", "0x07               ", "07         "});
}

TEST(DumpKinds, EmptyArrayWithLowerBoundOneHasOneBlankField) {
    ErrorRecorder site;
    ExpectDumps(site, Variant::Array(Bytes{}, 1), {" ", "  ", "    ", "  "});
    ExpectDumps(site, Variant::Array(std::vector<Variant>{}, 1), {" ", "  ", "    ", "  "});
}

TEST(DumpKinds, LowerBoundBelowZeroLeavesTooLittleRoom) {
    ErrorRecorder site;
    const std::string fault = ") Invalid procedure call or argument";
    for (const Variant& values : {Variant::Array(Bytes{65, 66}, -1),
                                  Variant::Array(std::vector<std::int16_t>{65, 66}, -1),
                                  Variant::Array(Bytes{65}, -2)}) {
        ExpectDumps(site,
                    values,
                    {"|5 (ModGeneral-ChrDumpArray" + fault,
                     "|5 (ModGeneral-HexDumpArray" + fault,
                     "|5 (ModGeneral-HexDumpArray2" + fault,
                     "|5 (ModGeneral-HexDumpArray3" + fault});
    }
}

TEST(DumpKinds, EmptyArrayOfAnyKindIsReportedByTheHexadecimalDumps) {
    ErrorRecorder site;
    const std::string fault = ") Invalid procedure call or argument";
    for (const Variant& values : {Variant(Bytes{}),
                                  Variant(std::vector<bool>{}),
                                  Variant(std::vector<std::int32_t>{}),
                                  Variant(std::vector<double>{}),
                                  Variant(std::vector<Variant>{})}) {
        ExpectDumps(site,
                    values,
                    {"",
                     "|5 (ModGeneral-HexDumpArray" + fault,
                     "|5 (ModGeneral-HexDumpArray2" + fault,
                     "|5 (ModGeneral-HexDumpArray3" + fault});
    }
}

TEST(DumpKinds, LargeArraysAreDumpedWholeByEachDump) {
    constexpr std::size_t kCount = 100'000;
    ErrorRecorder site;
    for (const Variant& values :
         {Variant(Bytes(kCount, 0x41)), Variant(std::vector<std::int32_t>(kCount, 0x41))}) {
        EXPECT_EQ(ChrDumpArray(values), std::string(kCount, 'A'));
        EXPECT_EQ(HexDumpArray(values).size(), kCount * 3 - 1);
        const std::string hex2 = HexDumpArray2(values);
        EXPECT_EQ(hex2.size(), kCount * 5 - 1);
        EXPECT_EQ(hex2.substr(hex2.size() - 9), "0x41 0x41");
        const std::string hex3 = HexDumpArray3(values);
        EXPECT_EQ(hex3.size(), kCount * 3 - 1);
        EXPECT_EQ(hex3.substr(hex3.size() - 5), "41,41");
    }
    EXPECT_TRUE(site.Errors.empty());
}

}  // namespace
}  // namespace hexmire
