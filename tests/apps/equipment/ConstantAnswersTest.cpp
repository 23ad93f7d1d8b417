#include "SimulatedEquipment.h"

namespace hexmire::program {
namespace {

class ConstantAnswers : public SimulatedEquipment {};

TEST_F(ConstantAnswers, TellValues) {
    Expect({{"S2F13 W <L>", "<L <U2 10> <F4 320.5> <BOOLEAN F> <A 'HXM-200'>>"},
            {"S2F13 W <L <U4 2002> <U4 7> <U4 1010>>", "<L <F4 320.5> <L> <L>>"},
            {"S2F13 W <U4 2002>", "malformed"},
            {"S2F13 W", "malformed"}});
}

TEST_F(ConstantAnswers, TellNamesAndLimits) {
    Expect({{"S2F29 W <L <U4 2001> <U4 2004> <U4 7>>",
             "<L <L <U4 2001> <A 'EstablishTimeout'> <U2 1> <U2 240> <U2 10> <A 's'>> "
             "<L <U4 2004> <A 'EquipmentName'> <A> <A> <A 'HXM-200'> <A>> "
             "<L <U4 7> <A> <A> <A> <A> <A>>>"}});
    EXPECT_EQ(AnswerTo("S2F29 W <L>"),
              AnswerTo("S2F29 W <L <U4 2001> <U4 2002> <U4 2003> <U4 2004>>"));
}

TEST_F(ConstantAnswers, TakeNewValuesInAnyNumberFormatThatFits) {
    Expect({{"S2F15 W <L <L <U4 2001> <U2 240>>>", "<B 0x00>"},
            {"S2F13 W <L <U4 2001>>", "<L <U2 240>>"},
            {"S2F15 W <L <L <U4 2001> <F8 1>>>", "<B 0x00>"},
            {"S2F13 W <L <U4 2001>>", "<L <U2 1>>"},
            {"S2F15 W <L <L <U4 2002> <I1 0>> <L <U4 2003> <BOOLEAN T>> <L <U4 2004> <A 'X'>>>",
             "<B 0x00>"},
            {"S2F13 W <L>", "<L <U2 1> <F4 0> <BOOLEAN T> <A 'X'>>"},
            {"S2F15 W <L>", "<B 0x00>"}});
}

TEST_F(ConstantAnswers, TakeAllOfThemOrNone) {
    const std::string before = AnswerTo("S2F13 W <L>");
    Expect({{"S2F15 W <L <L <U4 2001> <U2 20>> <L <U4 9> <U2 1>>>", "<B 0x01>"},
            {"S2F15 W <L <L <U4 2001> <U2 241>> <L <U4 9> <U2 1>>>", "<B 0x01>"},
            {"S2F15 W <L <L <U4 1010> <F4 1>>>", "<B 0x01>"},
            {"S2F15 W <L <L <U4 2001> <U2 20>> <L <U4 2002> <F4 400.5>>>", "<B 0x03>"},
            {"S2F15 W <L <L <U4 2001> <U2 0>>>", "<B 0x03>"},
            {"S2F15 W <L <L <U4 2001> <U2 241>>>", "<B 0x03>"},
            {"S2F15 W <L <L <U4 2001> <F4 1.5>>>", "<B 0x03>"},
            {"S2F15 W <L <L <U4 2001> <U2 1 2>>>", "<B 0x03>"},
            {"S2F15 W <L <L <U4 2001> <U2>>>", "<B 0x03>"},
            {"S2F15 W <L <L <U4 2001> <A '7'>>>", "<B 0x03>"},
            {"S2F15 W <L <L <U4 2001> <B 0x07>>>", "<B 0x03>"},
            {"S2F15 W <L <L <U4 2003> <U1 1>>>", "<B 0x03>"},
            {"S2F15 W <L <L <U4 2001> <U2 20>> <L <U4 2002>>>", "malformed"},
            {"S2F15 W <L <U4 2001>>", "malformed"}});
    equipment_.Busy = true;
    Expect({{"S2F15 W <L <L <U4 2001> <U2 20>>>", "<B 0x02>"}});
    EXPECT_EQ(AnswerTo("S2F13 W <L>"), before);
}

TEST_F(ConstantAnswers, AChangeIsOneEvent) {
    equipment_.FindEvent("3004")->Enabled = true;
    Expect({{"S2F15 W <L <L <U4 2001> <U2 20>> <L <U4 2004> <A>>>", "<B 0x00>"},
            {"S2F15 W <L>", "<B 0x00>"},
            {"S2F15 W <L <L <U4 2001> <U2 0>>>", "<B 0x03>"}});
    EXPECT_EQ(Sent(), Messages({{"S6F11", "<L <U4 1> <U4 3004> <L>>"}}));
}

TEST_F(ConstantAnswers, NumbersOfEightBytesKeepAllTheirDigits) {
    const Datum zero{.Format = FormatU8, .Value = Decimal()};
    const Datum bound{.Format = FormatU8, .Value = Decimal::FromUInt64(1ULL << 53U)};
    equipment_.Model().Constants = {
        {.Id = Unsigned4(1), .Default = zero, .Value = zero},
        {.Id = Unsigned4(2), .Default = {.Format = FormatI8, .Value = Decimal()}},
        {.Id = Unsigned4(3), .Maximum = bound, .Default = zero, .Value = zero},
        {.Id = Unsigned4(4), .Minimum = bound, .Default = bound, .Value = bound}};
    Expect({{"S2F15 W <L <L <U4 1> <F8 18446744073709551616>>>", "<B 0x03>"},
            {"S2F15 W <L <L <U4 1> <I8 -1>>>", "<B 0x03>"},
            {"S2F15 W <L <L <U4 1> <F8 1E300>>>", "<B 0x03>"},
            {"S2F13 W <L <U4 1>>", "<L <U8 0>>"},
            {"S2F15 W <L <L <U4 1> <U8 18446744073709551615>>>", "<B 0x00>"},
            {"S2F13 W <L <U4 1>>", "<L <U8 18446744073709551615>>"},
            {"S2F15 W <L <L <U4 2> <F8 9223372036854775808>>>", "<B 0x03>"},
            {"S2F15 W <L <L <U4 2> <U8 9223372036854775808>>>", "<B 0x03>"},
            {"S2F15 W <L <L <U4 2> <I8 9223372036854775807>>>", "<B 0x00>"},
            {"S2F13 W <L <U4 2>>", "<L <I8 9223372036854775807>>"},
            {"S2F15 W <L <L <U4 2> <F8 -9223372036854775808>>>", "<B 0x00>"},
            {"S2F13 W <L <U4 2>>", "<L <I8 -9223372036854775808>>"},
            {"S2F15 W <L <L <U4 3> <U8 9007199254740993>>>", "<B 0x03>"},
            {"S2F15 W <L <L <U4 3> <U8 9007199254740992>>>", "<B 0x00>"},
            {"S2F15 W <L <L <U4 4> <U8 9007199254740991>>>", "<B 0x03>"},
            {"S2F15 W <L <L <U4 4> <U8 9007199254740993>>>", "<B 0x00>"}});
}

TEST_F(ConstantAnswers, TheOperatorHasTheSameLimitsAndMakesTheSameEvent) {
    equipment_.FindEvent("3004")->Enabled = true;
    for (const Datum& wrong : {Unsigned4(241), Ascii("7"), List()})
        EXPECT_FALSE(equipment_.SetValue("2001", wrong));
    EXPECT_EQ(Sent(), Messages({}));
    EXPECT_TRUE(equipment_.SetValue("2001", Unsigned4(20)));
    Expect({{"S2F13 W <L <U4 2001>>", "<L <U2 20>>"}});
    EXPECT_EQ(Sent(), Messages({{"S6F11", "<L <U4 1> <U4 3004> <L>>"}}));
}

TEST_F(ConstantAnswers, TheClockIsSetAndGoesOn) {
    Expect({{"S2F17 W", "<A '2026030514070925'>"},
            {"S2F31 W <A '2031123123595999'>", "<B 0x00>"},
            {"S2F17 W", "<A '2031123123595999'>"},
            {"S2F31 W <A '700102030405'>", "<B 0x00>"},
            {"S2F17 W", "<A '1970010203040500'>"},
            {"S2F31 W <A '2200123123595999'>", "<B 0x00>"},
            {"S2F17 W", "<A '2200123123595999'>"},
            {"S2F31 W <A '690102030405'>", "<B 0x00>"},
            {"S2F17 W", "<A '2069010203040500'>"}});
    for (const char* text : {"",
                             "20260305140709",
                             "2026022914070900",
                             "2026130114070900",
                             "2026030524070900",
                             "2026030514600900",
                             "2026030514076000",
                             "20260305140709x5",
                             "0001010100000000",
                             "1969123123595900",
                             "2201010100000000",
                             "9999123123595900",
                             "20260305140709251"})
        Expect({{("S2F31 W <A '" + std::string(text) + "'>").c_str(), "<B 0x01>"}});
    Expect({{"S2F17 W", "<A '2069010203040500'>"}, {"S2F31 W <L>", "malformed"}});
}

}  // namespace
}  // namespace hexmire::program
