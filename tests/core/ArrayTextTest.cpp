#include <hexmire/core/ModGeneral.h>

#include "../fakes/ErrorRecorder.h"
#include "../fakes/VariantText.h"
#include "ItemsOfFormat.h"
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Array texts at the limits of their numbers, of their length and of the arrays given.
namespace hexmire {
namespace {

using namespace ModGeneral;
using fakes::ErrorRecorder;
using fakes::Show;
using testing_items::Items;
using Reports = ErrorRecorder::Reports;

const Reports kBuilderOverflow{{6, "(ModGeneral-lVariantArrayValue) Overflow", 0}};
const Reports kElementOverflow{{6, "(ModGeneral-lAssignValue) Overflow", 0}};

class ArrayText : public testing::Test {
protected:
    std::string Assigned(enmItemFormat format, std::string_view text) {
        return Show(lAssignArrayValue(Subjects.Of(format), text));
    }

    ErrorRecorder Site;
    Items Subjects;
};

TEST_F(ArrayText, LiteralBeyondADoubleEndsTheArray) {
    EXPECT_EQ(Assigned(FormatF8, "1 1e400 3"), "Double[1]");
    EXPECT_EQ(Site.Take(), kBuilderOverflow);
    EXPECT_EQ(Assigned(FormatI4, "1 2 -1e309"), "Long[1, 2]");
    EXPECT_EQ(Site.Take(), kBuilderOverflow);
    EXPECT_EQ(Assigned(FormatU1, "1e99999999999 3"), "Empty");
    EXPECT_EQ(Site.Take(), kBuilderOverflow);
    EXPECT_EQ(Assigned(FormatF8, "1 1e-400 0e400 3"), "Double[1, 0, 0, 3]");
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(ArrayText, ElementsAtTheLimitsOfTheirKind) {
    EXPECT_EQ(Assigned(FormatI1, "-32768.5 32767.4 -32768 32767"),
              "Integer[-32768, 32767, -32768, 32767]");
    EXPECT_EQ(Assigned(FormatI4, "-2147483648.5 2147483647.4"), "Long[-2147483648, 2147483647]");
    EXPECT_EQ(Assigned(FormatI2, "32768 -70000"), "Long[32768, -70000]");
    EXPECT_EQ(Assigned(FormatU8, "12.7 18446744073709551615"),
              "Double[12.7, 18446744073709551616]");
    EXPECT_TRUE(Site.Errors.empty());
    EXPECT_EQ(Assigned(FormatU1, "32767.5 1"), "Integer[0, 1]");
    EXPECT_EQ(Site.Take(), kElementOverflow);
    EXPECT_EQ(Assigned(FormatI2, "1 2147483647.5"), "Long[1, 0]");
    EXPECT_EQ(Site.Take(), kElementOverflow);
}

TEST_F(ArrayText, DoublesComeThroughTheirTextUnchanged) {
    const Variant expected(std::vector<double>{1e15,
                                               -1e21,
                                               1e-7,
                                               0.1,
                                               123456789012345680000.0,
                                               1.7976931348623157e308,
                                               5e-324,
                                               0.30000000000000004,
                                               999999999999999.9});
    EXPECT_EQ(lAssignArrayValue(Subjects.Of(FormatF8),
                                "1e15 -1e21 1e-7 0.1 123456789012345680000 "
                                "1.7976931348623157e308 5e-324 0.30000000000000004 "
                                "999999999999999.9"),
              expected);
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(ArrayText, LiteralsEndWhereTheyCannotGoOn) {
    EXPECT_EQ(Assigned(FormatF8, "1e+ 1e- 1e5e5 1.e1 +.5 -.5x .e1"),
              "Double[1, 1, 1e+05, 10, 0.5, -0.5, 0]");
    EXPECT_EQ(Assigned(FormatF8, "--1 +-1 1-2 1+2 &H10 $5 \xA0\x31"),
              "Double[0, 0, 1, 1, 0, 0, 0]");
    EXPECT_EQ(Assigned(FormatI4, std::string_view("1\0002 3", 5)), "Long[1, 3]");
    EXPECT_EQ(Assigned(FormatF8, "-0"), "Double[0]");
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(ArrayText, BooleansAreReadOneByOne) {
    EXPECT_EQ(Assigned(FormatBoolean, "T f TRUE false 1 0 -1 0.0 1e400"),
              "Boolean[True, False, True, False, True, False, True, False, True]");
    EXPECT_TRUE(Site.Errors.empty());
    EXPECT_EQ(Assigned(FormatBoolean, "T\tF T"), "Boolean[False, True]");
    EXPECT_EQ(Site.Take(), (Reports{{13, "(ModGeneral-lVarBoolean) Type mismatch", 0}}));
}

TEST_F(ArrayText, BinaryElementsHaveNoSign) {
    EXPECT_EQ(Assigned(FormatBinary, "-1 +1 -FF 1F\t20 00000000FF"), "Byte[0, 0, 0, 31, 255]");
    EXPECT_TRUE(Site.Errors.empty());
    // Neither the sign bit nor a wrap makes a byte of these.
    for (const char* text : {"7 FFFFFFFF", "7 80000000", "7 100000000", "7 FFFF", "7 0100"}) {
        EXPECT_EQ(Assigned(FormatBinary, text), "Byte[7]") << text;
        EXPECT_EQ(Site.Take(), (Reports{{6, "(ModGeneral-lByteArrayValue) Overflow", 0}}));
    }
}

TEST_F(ArrayText, TextsOfManyElementsAreReadWhole) {
    constexpr std::size_t kCount = 60'000;
    std::string numbers;
    std::string letters;
    for (std::size_t index = 0; index < kCount; ++index) {
        numbers += "7 ";
        letters += "T ";
    }
    EXPECT_EQ(lAssignArrayValue(Subjects.Of(FormatU1), numbers),
              Variant(std::vector<std::int16_t>(kCount, 7)));
    EXPECT_EQ(lAssignArrayValue(Subjects.Of(FormatU4), numbers),
              Variant(std::vector<double>(kCount, 7)));
    EXPECT_EQ(lAssignArrayValue(Subjects.Of(FormatBinary), numbers),
              Variant(std::vector<std::uint8_t>(kCount, 7)));
    EXPECT_EQ(lAssignArrayValue(Subjects.Of(FormatBoolean), letters),
              Variant(std::vector<bool>(kCount, true)));
    EXPECT_EQ(lAssignArrayValue(Subjects.Of(FormatI4), numbers + " " + numbers),
              Variant(std::vector<std::int32_t>(kCount, 7)));
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(ArrayText, LongElementsAreReadToTheirEnd) {
    const std::string zeros(100'000, '0');
    EXPECT_EQ(Assigned(FormatI4, zeros + "12 " + zeros + "13"), "Long[12, 13]");
    EXPECT_EQ(Assigned(FormatBinary, zeros + "1F " + zeros), "Byte[31, 0]");
    EXPECT_EQ(Assigned(FormatBoolean, zeros + " " + zeros + "1"), "Boolean[False, True]");
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(ArrayText, HandlerMayReadAnotherTextWhileAnElementIsReported) {
    std::string inner;
    Site.OnError = [&] {
        if (!inner.empty()) return;
        inner = "begun";
        inner = Assigned(FormatU1, "4 40000 6");
    };
    EXPECT_EQ(Assigned(FormatI4, "1 3000000000 3"), "Long[1, 0, 3]");
    EXPECT_EQ(inner, "Integer[4, 0, 6]");
    EXPECT_EQ(Site.Errors, (Reports{kElementOverflow[0], kElementOverflow[0]}));
}

TEST_F(ArrayText, ArrayGivenToABuilderIsBuiltAnew) {
    Variant longs(std::vector<std::int32_t>{9, 9, 9});
    EXPECT_EQ(Show(lVariantArrayValue(Subjects.Of(FormatI4), "1", longs)), "Long[1]");
    EXPECT_EQ(Show(longs), "Long[1]");
    Variant bytes(std::vector<std::uint8_t>{9, 9});
    EXPECT_EQ(Show(lByteArrayValue(Subjects.Of(FormatBinary), " 1", bytes)), "Empty");
    EXPECT_EQ(Show(bytes), "Byte[9, 9]");
    Variant booleans(std::vector<bool>{true, true});
    EXPECT_EQ(Show(lBoolArrayValue(Subjects.Of(FormatBoolean), "", booleans)), "Empty");
    EXPECT_EQ(Show(booleans), "Boolean[True, True]");
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(ArrayText, ArrayGivenToABuilderHoldsWhatWasBuiltBeforeAFault) {
    Variant bytes(std::vector<std::uint8_t>{});
    EXPECT_EQ(Show(lByteArrayValue(Subjects.Of(FormatBinary), "1 2 1FF 4", bytes)), "Byte[1, 2]");
    EXPECT_EQ(Show(bytes), "Byte[1, 2]");
    EXPECT_EQ(Site.Take(), (Reports{{6, "(ModGeneral-lByteArrayValue) Overflow", 0}}));
    Variant integers(std::vector<std::int16_t>{});
    EXPECT_EQ(Show(lVariantArrayValue(Subjects.Of(FormatU1), "1 1e309 3", integers)), "Integer[1]");
    EXPECT_EQ(Show(integers), "Integer[1]");
    EXPECT_EQ(Site.Take(), kBuilderOverflow);
}

TEST_F(ArrayText, ArrayNarrowerThanTheFormatEndsAtWhatItCannotHold) {
    // The item's format lets 40000 through, the array of 16-bit integers does not.
    Variant integers(std::vector<std::int16_t>{});
    EXPECT_EQ(Show(lVariantArrayValue(Subjects.Of(FormatI4), "1 40000 3", integers)), "Integer[1]");
    EXPECT_EQ(Site.Take(), kBuilderOverflow);
    Variant longs(std::vector<std::int32_t>{});
    EXPECT_EQ(Show(lVariantArrayValue(Subjects.Of(FormatF8), "2.5 3e9 3", longs)), "Long[2]");
    EXPECT_EQ(Site.Take(), kBuilderOverflow);
}

TEST_F(ArrayText, BooleanElementsAreReadAsTheFormatSays) {
    Variant booleans(std::vector<bool>{});
    EXPECT_EQ(Show(lBoolArrayValue(Subjects.Of(FormatI4), "2 0 0.4 T 0.6", booleans)),
              "Boolean[True, False, False, False, True]");
    EXPECT_EQ(Site.Take(), (Reports{{13, "(ModGeneral-lAssignValue) Type mismatch", 0}}));
    EXPECT_EQ(Show(lBoolArrayValue(Subjects.Of(FormatAscii), "True 0 T 1", booleans)),
              "Boolean[True, False]");
    EXPECT_EQ(Site.Take(), (Reports{{13, "(ModGeneral-lBoolArrayValue) Type mismatch", 0}}));
}

TEST_F(ArrayText, ByteElementsAreHexadecimalWhateverTheFormat) {
    Variant bytes(std::vector<std::uint8_t>{});
    EXPECT_EQ(Show(lByteArrayValue(Subjects.Of(FormatI4), "10 FF 12.5", bytes)),
              "Byte[16, 255, 18]");
    EXPECT_TRUE(Site.Errors.empty());
}

TEST_F(ArrayText, RoutineWorksOnAfterAFault) {
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(Assigned(FormatBinary, "1 1FF"), "Byte[1]");
        EXPECT_EQ(Site.Take().size(), 1U);
        EXPECT_EQ(Assigned(FormatBinary, "1 FF"), "Byte[1, 255]");
        EXPECT_TRUE(Site.Take().empty());
    }
}

TEST_F(ArrayText, BuilderWithoutAnArrayOfNumbersKeepsTheKindOfEachValue) {
    Variant any;
    EXPECT_EQ(Show(lVariantArrayValue(Subjects.Of(FormatI4), "1 3000000000 2", any)),
              "Variant[Long 1, Empty, Long 2]");
    EXPECT_EQ(Site.Take(), kElementOverflow);
}

}  // namespace
}  // namespace hexmire
