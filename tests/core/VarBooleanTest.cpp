#include <hexmire/core/ModGeneral.h>

#include "../fakes/ErrorRecorder.h"
#include "../fakes/VariantText.h"
#include <gtest/gtest.h>

#include <string_view>

namespace hexmire {
namespace {

using fakes::ErrorRecorder;
using fakes::Show;
using ModGeneral::lVarBoolean;

const ErrorRecorder::Reports kBooleanMismatch{{13, "(ModGeneral-lVarBoolean) Type mismatch", 0}};

TEST(VarBoolean, TakesLettersWordsAndNumbers) {
    ErrorRecorder site;
    for (const char* text :
         {"t", "T", "True", "TRUE", "tRuE", "1", "-1", "2", "0.1", " 1 ", "1e5"}) {
        EXPECT_EQ(Show(lVarBoolean(text)), "Boolean True") << text;
    }
    for (const char* text :
         {"f", "F", "False", "FALSE", "fAlSe", "0", "0.0", "-0", "+0", "0e9", " 0 "}) {
        EXPECT_EQ(Show(lVarBoolean(text)), "Boolean False") << text;
    }
    EXPECT_TRUE(site.Errors.empty());
}

TEST(VarBoolean, NumberOfAnySizeIsTrueUnlessItIsZero) {
    ErrorRecorder site;
    for (const char* text : {"1e400", "-1e400", "1e-400", "2147483648", "0.00000000001", ".1"}) {
        EXPECT_EQ(Show(lVarBoolean(text)), "Boolean True") << text;
    }
    for (const char* text : {"0e400", "-0.000", "00", ".0", "0."}) {
        EXPECT_EQ(Show(lVarBoolean(text)), "Boolean False") << text;
    }
    EXPECT_TRUE(site.Errors.empty());
}

TEST(VarBoolean, WordsStandAlone) {
    using namespace std::string_view_literals;
    ErrorRecorder site;
    for (const std::string_view text : {" True"sv,
                                        "False "sv,
                                        "T\0"sv,
                                        "\0T"sv,
                                        "T\t"sv,
                                        "True\0"sv,
                                        "INF"sv,
                                        "NaN"sv,
                                        "1,0"sv}) {
        EXPECT_EQ(Show(lVarBoolean(text)), "Empty") << text;
        EXPECT_EQ(site.Take(), kBooleanMismatch) << text;
    }
}

TEST(VarBoolean, AnythingElseIsAMismatchAndEmpty) {
    ErrorRecorder site;
    for (const char* text :
         {"yes", "no", "on", "TT", "FF", " T", "F ", "", " ", "Y", "Tru", "0x1", "1 0", "\xFE"}) {
        EXPECT_EQ(Show(lVarBoolean(text)), "Empty") << text;
        EXPECT_EQ(site.Take(), kBooleanMismatch) << text;
    }
}

}  // namespace
}  // namespace hexmire
