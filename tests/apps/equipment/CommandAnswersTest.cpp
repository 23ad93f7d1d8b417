#include "SimulatedEquipment.h"

namespace hexmire::program {
namespace {

class CommandAnswers : public SimulatedEquipment {};

TEST_F(CommandAnswers, CommandsChangeTheProcessStateAndAreEvents) {
    for (CollectionEvent& event : equipment_.Model().Events)
        event.Enabled = true;
    Expect({{"S2F41 W <L <A 'START'> <L <L <A 'LOTID'> <A 'LOT-7'>>>>", "<L <B 0x00> <L>>"},
            {"S1F3 W <L <U4 1003>>", "<L <A 'EXECUTING'>>"},
            {"S2F41 W <L <A 'PAUSE'> <L>>", "<L <B 0x00> <L>>"},
            {"S2F41 W <L <A 'RESUME'> <L>>", "<L <B 0x00> <L>>"},
            {"S2F41 W <L <A 'STOP'> <L>>", "<L <B 0x00> <L>>"},
            {"S2F41 W <L <A 'START'> <L>>", "<L <B 0x00> <L>>"},
            {"S2F41 W <L <A 'ABORT'> <L>>", "<L <B 0x04> <L>>"},
            {"S1F3 W <L <U4 1003>>", "<L <A 'IDLE'>>"}});
    EXPECT_EQ(equipment_.ValueOf("1101"), Ascii("LOT-7"));
    EXPECT_EQ(Sent(),
              Messages({{"S6F11", "<L <U4 1> <U4 3011> <L>>"},
                        {"S6F11", "<L <U4 2> <U4 3013> <L>>"},
                        {"S6F11", "<L <U4 3> <U4 3014> <L>>"},
                        {"S6F11", "<L <U4 4> <U4 3012> <L>>"},
                        {"S6F11", "<L <U4 5> <U4 3011> <L>>"},
                        {"S6F11", "<L <U4 6> <U4 3012> <L>>"}}));
}

TEST_F(CommandAnswers, ACommandIsRefusedForTheFirstReasonThatHolds) {
    Expect({{"S2F41 W <L <A 'JUMP'> <L>>", "<L <B 0x01> <L>>"},
            {"S2F41 W <L <A 'start'> <L>>", "<L <B 0x01> <L>>"},
            {"S2F41 W <L <A 'RESUME'> <L>>", "<L <B 0x02> <L>>"},
            {"S2F41 W <L <A 'STOP'> <L <L <A 'X'> <A 'Y'>>>>", "<L <B 0x05> <L>>"},
            {"S2F41 W <L <A 'START'> <L>>", "<L <B 0x00> <L>>"},
            {"S2F41 W <L <A 'START'> <L>>", "<L <B 0x05> <L>>"},
            {"S2F41 W <L <A 'PP-SELECT'> <L>>", "<L <B 0x02> <L>>"},
            {"S2F41 W <A 'START'>", "malformed"},
            {"S2F41 W <L <A 'START'>>", "malformed"},
            {"S2F41 W <L <A 'START'> <L <A 'LOTID'>>>", "malformed"},
            {"S2F41 W", "malformed"}});
    equipment_.Busy = true;
    Expect({{"S2F41 W <L <A 'PAUSE'> <L>>", "<L <B 0x02> <L>>"}});
}

TEST_F(CommandAnswers, WrongParametersAreListedWithTheirReasonsAndNothingHappens) {
    equipment_.FindEvent("3011")->Enabled = true;
    Expect({{"S2F41 W <L <A 'SET-SPEED'> <L <L <A 'SPEED'> <U1 4>>>>",
             "<L <B 0x03> <L <L <A 'SPEED'> <B 0x02>>>>"},
            {"S2F41 W <L <A 'SET-SPEED'> <L <L <A 'SPEED'> <U2 3>> <L <A 'TURN'> <U1 3>>>>",
             "<L <B 0x03> <L <L <A 'SPEED'> <B 0x03>> <L <A 'TURN'> <B 0x01>>>>"},
            {"S2F41 W <L <A 'SET-SPEED'> <L <L <A 'SPEED'> <U1 3>>>>", "<L <B 0x00> <L>>"},
            {"S2F41 W <L <A 'START'> <L <L <A 'LOTID'> <A 'L'>> <L <A 'X'> <A 'Y'>>>>",
             "<L <B 0x03> <L <L <A 'X'> <B 0x01>>>>"},
            {"S1F3 W <L <U4 1003>>", "<L <A 'IDLE'>>"}});
    EXPECT_EQ(equipment_.ValueOf("1101"), Ascii(""));
    EXPECT_EQ(Sent(), Messages({}));
}

TEST_F(CommandAnswers, AConstantTakesOnlyAParameterThatItCouldHold) {
    equipment_.FindEvent("3004")->Enabled = true;
    equipment_.Model().Commands.push_back(
        {.Name = "LIMIT",
         .Parameters = {{.Name = "SECONDS", .Format = FormatU4, .Variable = "2001"},
                        {.Name = "TEXT", .Format = FormatAscii, .Variable = "2001"}}});
    Expect({{"S2F41 W <L <A 'LIMIT'> <L <L <A 'SECONDS'> <U4 241>>>>",
             "<L <B 0x03> <L <L <A 'SECONDS'> <B 0x02>>>>"},
            {"S2F41 W <L <A 'LIMIT'> <L <L <A 'TEXT'> <A '7'>>>>",
             "<L <B 0x03> <L <L <A 'TEXT'> <B 0x02>>>>"},
            {"S2F13 W <L <U4 2001>>", "<L <U2 10>>"}});
    EXPECT_EQ(Sent(), Messages({}));
    Expect({{"S2F41 W <L <A 'LIMIT'> <L <L <A 'SECONDS'> <U4 20>>>>", "<L <B 0x00> <L>>"},
            {"S2F13 W <L <U4 2001>>", "<L <U2 20>>"}});
    EXPECT_EQ(Sent(), Messages({{"S6F11", "<L <U4 1> <U4 3004> <L>>"}}));
}

}  // namespace
}  // namespace hexmire::program
