#include <hexmire/core/ModGeneral.h>

#include "../fakes/CommaLocale.h"
#include "../fakes/ErrorRecorder.h"
#include "../fakes/VariantText.h"
#include "ItemsOfFormat.h"
#include <gtest/gtest.h>

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

}  // namespace
}  // namespace hexmire
