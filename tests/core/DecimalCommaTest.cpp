#include <hexmire/core/ModGeneral.h>

#include "../fakes/CommaLocale.h"
#include "../fakes/ErrorRecorder.h"
#include "../fakes/Messages.h"
#include "../fakes/VariantText.h"
#include "ItemsOfFormat.h"
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace hexmire {
namespace {

using fakes::ErrorRecorder;
using fakes::Show;
using ModGeneral::lAssignArrayValue;
using ModGeneral::lAssignValue;
using ModGeneral::lVarBoolean;
using testing_items::Items;
using Reports = ErrorRecorder::Reports;

class DecimalComma : public fakes::CommaLocale {
protected:
    ErrorRecorder Site;
    Items Subjects;
};

TEST_F(DecimalComma, SingleValuesFollowTheLocale) {
    EXPECT_EQ(Show(lAssignValue(Subjects.Of(FormatF4), "1,5")), "Double 1.5");
    EXPECT_EQ(Show(lAssignValue(Subjects.Of(FormatI4), "12,5")), "Long 12");
    EXPECT_EQ(Show(lAssignValue(Subjects.Of(FormatU1), "13,5")), "Integer 14");
    EXPECT_EQ(Show(lAssignValue(Subjects.Of(FormatU4), "12,7")), "Double 12");
    EXPECT_EQ(Show(lVarBoolean("0,0")), "Boolean False");
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(DecimalComma, PointInASingleValueIsAMismatch) {
    EXPECT_EQ(Show(lAssignValue(Subjects.Of(FormatF4), "1.5")), "Empty");
    EXPECT_EQ(Site.Take(), (Reports{{13, "(ModGeneral-lAssignValue) Type mismatch", 0}}));
    EXPECT_EQ(Show(lVarBoolean("0.0")), "Empty");
    EXPECT_EQ(Site.Take(), (Reports{{13, "(ModGeneral-lVarBoolean) Type mismatch", 0}}));
}

TEST_F(DecimalComma, ElementsOfArraysKeepThePoint) {
    EXPECT_EQ(Show(lAssignArrayValue(Subjects.Of(FormatF8), "1.5 -0.25 1e-7 1e20")),
              "Double[1.5, -0.25, 1e-07, 1e+20]");
    EXPECT_EQ(Show(lAssignArrayValue(Subjects.Of(FormatI4), "12.5 13.5")), "Long[12, 14]");
    EXPECT_EQ(Show(lAssignArrayValue(Subjects.Of(FormatF8), "1,5 2")), "Double[1, 2]");
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(DecimalComma, CommaMayStandFirstOrLastAndBeforeAnExponent) {
    EXPECT_EQ(Show(lAssignValue(Subjects.Of(FormatF8), "1,5e1")), "Double 15");
    EXPECT_EQ(Show(lAssignValue(Subjects.Of(FormatF8), ",5")), "Double 0.5");
    EXPECT_EQ(Show(lAssignValue(Subjects.Of(FormatF8), "5,")), "Double 5");
    EXPECT_EQ(Show(lAssignValue(Subjects.Of(FormatI1), "32767,4")), "Integer 32767");
    EXPECT_TRUE(Site.Errors.empty());
    for (const char* text : {",", "1,2,3", "1.000,5", "1,000.5", "1 000,5"}) {
        EXPECT_EQ(Show(lAssignValue(Subjects.Of(FormatF8), text)), "Empty") << text;
        EXPECT_EQ(Site.Take(), (Reports{{13, "(ModGeneral-lAssignValue) Type mismatch", 0}}));
    }
}

TEST_F(DecimalComma, ElementsOfBooleanArraysFollowTheLocale) {
    EXPECT_EQ(Show(lAssignArrayValue(Subjects.Of(FormatBoolean), "0,0 0,5 T")),
              "Boolean[False, True, True]");
    EXPECT_TRUE(Site.Errors.empty());
    EXPECT_EQ(Show(lAssignArrayValue(Subjects.Of(FormatBoolean), "T 1.0 T")),
              "Boolean[True, False, True]");
    EXPECT_EQ(Site.Take(), (Reports{{13, "(ModGeneral-lVarBoolean) Type mismatch", 0}}));
}

TEST_F(DecimalComma, DoublesComeThroughTheirTextUnchanged) {
    EXPECT_EQ(lAssignArrayValue(Subjects.Of(FormatF8),
                                "1.7976931348623157e308 5e-324 0.30000000000000004 12345.678"),
              Variant(std::vector<double>{
                  1.7976931348623157e308, 5e-324, 0.30000000000000004, 12345.678}));
    EXPECT_EQ(Show(lAssignArrayValue(Subjects.Of(FormatU4), "12.7 -12.7")), "Double[12, -12]");
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(DecimalComma, HexadecimalDigitsAndDumpsAreUntouched) {
    EXPECT_EQ(Show(lAssignValue(Subjects.Of(FormatBinary), "1F,5")), "Byte 31");
    EXPECT_EQ(Show(lAssignArrayValue(Subjects.Of(FormatBinary), "A,5 FF")), "Byte[10, 255]");
    EXPECT_EQ(ModGeneral::HexDumpArray(std::vector<std::uint8_t>{10, 255}), "0A FF");
    EXPECT_EQ(ModGeneral::HexDumpArray3(std::vector<Variant>{"10,4", 254.5}), "0A,FE");
    EXPECT_TRUE(Site.Errors.empty());
    EXPECT_EQ(ModGeneral::HexDumpArray(std::vector<Variant>{"10.4"}), "");
    EXPECT_EQ(Site.Take(), (Reports{{13, "(ModGeneral-HexDumpArray) Type mismatch", 0}}));
}

TEST_F(DecimalComma, SmlKeepsThePoint) {
    const SECSMessagePtr message = fakes::MessageOf(FormatList);
    fakes::AddItem(fakes::Body(message), FormatF8, std::vector<double>{1.5, -2.5e-7});
    fakes::AddItem(fakes::Body(message), FormatAscii, 0.25F);
    fakes::AddItem(fakes::Body(message), FormatVar, 0.5);
    fakes::AddItem(fakes::Body(message), FormatBoolean, "0,0");
    fakes::AddItem(fakes::Body(message), FormatBinary, "11,5");
    EXPECT_EQ(RenderSml(*message, false),
              "S0F1\r\n< L \r\n  < F8 1.5 -2.5E-07 >\r\n  < A '0.25' >\r\n  < V 0.5 >\r\n"
              "  < BOOL FALSE >\r\n  < B 0x0C >\r\n >\r\n.");
    EXPECT_TRUE(Site.Errors.empty());
}

}  // namespace
}  // namespace hexmire
