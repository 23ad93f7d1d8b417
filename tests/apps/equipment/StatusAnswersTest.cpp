#include "SimulatedEquipment.h"

namespace hexmire::program {
namespace {

class StatusAnswers : public SimulatedEquipment {};

TEST_F(StatusAnswers, TellWhoTheEquipmentIs) {
    Expect({{"S1F1 W", "<L <A 'HXM-200'> <A '1.0'>>"},
            {"S1F13 W <L>", "<L <B 0x00> <L <A 'HXM-200'> <A '1.0'>>>"},
            {"S1F13 W <L <A 'HOST'> <A '7'>>", "<L <B 0x00> <L <A 'HXM-200'> <A '1.0'>>>"},
            {"S1F13 W", "<L <B 0x00> <L <A 'HXM-200'> <A '1.0'>>>"}});
}

TEST_F(StatusAnswers, TellTheVariablesAskedForAndAnEmptyListForUnknownOnes) {
    equipment_.FindEvent("3020")->Enabled = true;
    equipment_.FindAlarm("4002")->Set = true;
    Expect({{"S1F3 W <L <U4 1001>>", "<L <A '2026030514070925'>>"},
            {"S1F3 W <L <U4 1002> <U4 1003>>", "<L <U1 5> <A 'IDLE'>>"},
            {"S1F3 W <L <U4 1004> <U4 1005>>", "<L <L <U4 4002>> <L <U4 4001> <U4 4002>>>"},
            {"S1F3 W <L <U4 1006>>", "<L <L <U4 3020>>>"},
            {"S1F3 W <L <U2 1010> <I8 1011>>", "<L <F4 20.5> <F8 101325>>"},
            {"S1F3 W <L <A '1012'> <U4 1013>>", "<L <U4 0> <BOOLEAN F>>"},
            {"S1F3 W <L <U4 1014> <U4 1015>>", "<L <A> <U2 100 250 0 40>>"},
            {"S1F3 W <L <U4 99> <U4 1002>>", "<L <L> <U1 5>>"},
            {"S1F3 W <L <U4 1101> <U4 2001> <U4>>", "<L <L> <L> <L>>"}});
}

TEST_F(StatusAnswers, TellEverythingWhenNothingIsAskedForInParticular) {
    Expect({{"S1F3 W <L>",
             "<L <A '2026030514070925'> <U1 5> <A 'IDLE'> <L> <L <U4 4001> <U4 4002>> <L> "
             "<F4 20.5> <F8 101325> <U4 0> <BOOLEAN F> <A> <U2 100 250 0 40>>"},
            {"S1F21 W <L>",
             "<L <L <U4 1101> <A 'LotID'> <A>> <L <U4 1102> <A 'WaferPosition'> <A>>>"}});
}

TEST_F(StatusAnswers, TellNamesAndUnits) {
    Expect({{"S1F11 W <L <U4 1010> <U4 1011>>",
             "<L <L <U4 1010> <A 'ChamberTemperature'> <A 'degC'>> "
             "<L <U4 1011> <A 'ChamberPressure'> <A 'Pa'>>>"},
            {"S1F11 W <L <U2 98>>", "<L <L <U2 98> <A> <A>>>"},
            {"S1F21 W <L <U4 1102> <U4 1010>>",
             "<L <L <U4 1102> <A 'WaferPosition'> <A>> <L <U4 1010> <A> <A>>>"},
            {"S1F23 W <L <U4 3020> <U4 5>>",
             "<L <L <U4 3020> <A 'WaferProcessed'> <L <U4 1012> <U4 1101> <U4 1102>>> "
             "<L <U4 5> <A> <L>>>"}});
}

TEST_F(StatusAnswers, WhatHasAnotherShapeIsMalformed) {
    for (const char* message : {"S1F3 W",
                                "S1F3 W <U4 1001>",
                                "S1F3 W <L <L <U4 1001>>>",
                                "S1F3 W <L <U4 1001 1002>>",
                                "S1F3 W <L <F4 1001>>",
                                "S1F11 W <A 'x'>",
                                "S1F21 W <L <BOOLEAN T>>",
                                "S1F23 W"})
        EXPECT_EQ(AnswerTo(message), "malformed") << message;
}

TEST_F(StatusAnswers, OfflineOnlyTheWayBackIsAnswered) {
    Expect({{"S1F17 W", "<B 0x02>"},
            {"S1F15 W", "<B 0x00>"},
            {"S1F15 W", "abort"},
            {"S1F1 W", "abort"},
            {"S1F3 W", "abort"},
            {"S99F1 W", "abort"},
            {"S1F13 W <L>", "<L <B 0x00> <L <A 'HXM-200'> <A '1.0'>>>"},
            {"S1F17 W", "<B 0x00>"},
            {"S1F17 W", "<B 0x02>"},
            {"S1F1 W", "<L <A 'HXM-200'> <A '1.0'>>"},
            {"S99F1 W", "unknown"}});
}

TEST_F(StatusAnswers, AnOperatorWhoTookItOfflineIsNotOverruled) {
    equipment_.State(ControlState::EquipmentOffline);
    Expect({{"S1F17 W", "<B 0x01>"}, {"S1F1 W", "abort"}});
    equipment_.State(ControlState::HostOffline);
    Expect({{"S1F17 W", "<B 0x00>"}});
}

TEST_F(StatusAnswers, GoingOnlineAndOfflineIsAnEvent) {
    for (const char* event : {"3001", "3002"})
        equipment_.FindEvent(event)->Enabled = true;
    Expect({{"S1F15 W", "<B 0x00>"}});
    EXPECT_EQ(Sent(), Messages({{"S6F11", "<L <U4 1> <U4 3002> <L>>"}}));
    equipment_.Fire("3001");  // Nothing is sent while offline.
    Expect({{"S1F17 W", "<B 0x00>"}});
    EXPECT_EQ(Sent(), Messages({{"S6F11", "<L <U4 3> <U4 3001> <L>>"}}));
}

}  // namespace
}  // namespace hexmire::program
