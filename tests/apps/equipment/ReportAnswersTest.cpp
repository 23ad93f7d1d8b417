#include "SimulatedEquipment.h"

#include <algorithm>

namespace hexmire::program {
namespace {

class ReportAnswers : public SimulatedEquipment {
protected:
    /// Report 1 with chamber temperature and lot, linked to WaferProcessed.
    void Define() {
        Expect({{"S2F33 W <L <U4 0> <L <L <U4 1> <L <U4 1010> <U4 1101>>>>>", "<B 0x00>"},
                {"S2F35 W <L <U4 0> <L <L <U4 3020> <L <U4 1>>>>>", "<B 0x00>"}});
    }
};

TEST_F(ReportAnswers, AnEnabledEventCarriesItsReports) {
    Define();
    equipment_.Fire("3020");
    EXPECT_EQ(Sent(), Messages({}));
    Expect({{"S2F37 W <L <BOOLEAN T> <L <U4 3020>>>", "<B 0x00>"}});
    equipment_.Fire("3020");
    equipment_.SetValue("1101", Ascii("LOT-7"));
    equipment_.Fire("3020");
    EXPECT_EQ(
        Sent(),
        Messages({{"S6F11", "<L <U4 1> <U4 3020> <L <L <U4 1> <L <F4 20.5> <A>>>>>"},
                  {"S6F11", "<L <U4 2> <U4 3020> <L <L <U4 1> <L <F4 20.5> <A 'LOT-7'>>>>>"}}));
    Expect({{"S2F37 W <L <BOOLEAN F> <L>>", "<B 0x00>"}});
    equipment_.Fire("3020");
    equipment_.Fire("no event");
    EXPECT_EQ(Sent(), Messages({}));
}

TEST_F(ReportAnswers, AHostMayAskForReports) {
    Define();
    Expect({{"S6F15 W <U4 3020>", "<L <U4 1> <U4 3020> <L <L <U4 1> <L <F4 20.5> <A>>>>>"},
            {"S6F15 W <U2 3011>", "<L <U4 2> <U4 3011> <L>>"},
            {"S6F15 W <U2 5>", "<L <U4 3> <U2 5> <L>>"},
            {"S6F15 W <L>", "malformed"},
            {"S6F15 W", "malformed"},
            {"S6F19 W <U4 1>", "<L <F4 20.5> <A>>"},
            {"S6F19 W <U4 2>", "<L>"},
            {"S6F19 W <L>", "malformed"}});
}

TEST_F(ReportAnswers, DefinitionsAreTakenWholeOrNotAtAll) {
    Define();
    Expect(
        {{"S2F33 W <L <U4 0> <L <L <U4 2> <L <U4 1010>>> <L <U4 1> <L <U4 1010>>>>>", "<B 0x03>"},
         {"S2F33 W <L <U4 0> <L <L <U4 2> <L <U4 1010>>> <L <U4 2> <L <U4 1010>>>>>", "<B 0x03>"},
         {"S2F33 W <L <U4 0> <L <L <U4 2> <L <U4 1010>>> <L <U4 3> <L <U4 77>>>>>", "<B 0x04>"},
         {"S2F33 W <L <U4 0> <L <L <U4 1> <L>> <L <U4 3> <L <U4 77>>>>>", "<B 0x04>"},
         {"S2F33 W <L <U4 0> <L <L <U4 2> <L <L>>>>>", "<B 0x02>"},
         {"S2F33 W <L <U4 0> <L <L <U4> <L <U4 1010>>>>>", "<B 0x02>"},
         {"S2F33 W <L <U4 0>>", "<B 0x02>"},
         {"S2F33 W <U4 0>", "<B 0x02>"},
         {"S2F33 W", "malformed"},
         {"S6F19 W <U4 2>", "<L>"},
         {"S6F15 W <U4 3020>", "<L <U4 1> <U4 3020> <L <L <U4 1> <L <F4 20.5> <A>>>>>"}});
}

TEST_F(ReportAnswers, LinksAreTakenWholeOrNotAtAll) {
    Define();
    Expect(
        {{"S2F35 W <L <U4 0> <L <L <U4 3011> <L <U4 1>>> <L <U4 3020> <L <U4 1>>>>>", "<B 0x03>"},
         {"S2F35 W <L <U4 0> <L <L <U4 3011> <L <U4 1>>> <L <U4 9> <L <U4 1>>>>>", "<B 0x04>"},
         {"S2F35 W <L <U4 0> <L <L <U4 3011> <L <U4 1>>> <L <U4 3012> <L <U4 8>>>>>", "<B 0x05>"},
         {"S2F35 W <L <U4 0> <L <U4 3011>>>", "<B 0x02>"},
         {"S6F15 W <U4 3011>", "<L <U4 1> <U4 3011> <L>>"},
         {"S2F35 W <L <U4 0> <L <L <U4 3020> <L>> <L <U4 3011> <L <U4 1>>>>>", "<B 0x00>"},
         {"S6F15 W <U4 3020>", "<L <U4 2> <U4 3020> <L>>"},
         {"S6F15 W <U4 3011>", "<L <U4 3> <U4 3011> <L <L <U4 1> <L <F4 20.5> <A>>>>>"}});
}

TEST_F(ReportAnswers, EmptyListsDelete) {
    Define();
    Expect(
        {{"S2F33 W <L <U4 0> <L <L <U4 1> <L>>>>", "<B 0x00>"},
         {"S6F15 W <U4 3020>", "<L <U4 1> <U4 3020> <L>>"},
         {"S2F33 W <L <U4 0> <L <L <U4 1> <L <U4 1002>>> <L <U4 2> <L <U4 1002>>>>>", "<B 0x00>"},
         {"S2F35 W <L <U4 0> <L <L <U4 3020> <L <U4 1> <U4 2>>>>>", "<B 0x00>"},
         {"S2F33 W <L <U4 0> <L <L <U4 1> <L>>>>", "<B 0x00>"},
         {"S6F15 W <U4 3020>", "<L <U4 2> <U4 3020> <L <L <U4 2> <L <U1 5>>>>>"},
         {"S2F33 W <L <U4 0> <L>>", "<B 0x00>"},
         {"S6F15 W <U4 3020>", "<L <U4 3> <U4 3020> <L>>"},
         {"S6F19 W <U4 2>", "<L>"}});
}

TEST_F(ReportAnswers, AReportMayBeDefinedAnewBehindItsDeletion) {
    Define();
    Expect({{"S2F33 W <L <U4 0> <L <L <U4 1> <L>> <L <U4 1> <L <U4 2001>>>>>", "<B 0x00>"},
            {"S6F19 W <U4 1>", "<L <U2 10>>"}});
}

TEST_F(ReportAnswers, TheRoomIsLimited) {
    equipment_.Model().Most.Reports = 2;
    equipment_.Model().Most.Links = 1;
    Define();
    Expect(
        {{"S2F33 W <L <U4 0> <L <L <U4 2> <L <U4 1002>>> <L <U4 3> <L <U4 1002>>>>>", "<B 0x01>"},
         {"S2F33 W <L <U4 0> <L <L <U4 2> <L <U4 1002>>>>>", "<B 0x00>"},
         {"S2F35 W <L <U4 0> <L <L <U4 3011> <L <U4 1> <U4 2>>>>>", "<B 0x01>"},
         {"S2F35 W <L <U4 0> <L <L <U4 3011> <L <U4 2>>>>>", "<B 0x00>"}});
}

TEST_F(ReportAnswers, EventsAreEnabledAllOrNone) {
    Expect({{"S2F37 W <L <BOOLEAN T> <L <U4 3011> <U4 9>>>", "<B 0x01>"},
            {"S1F3 W <L <U4 1006>>", "<L <L>>"},
            {"S2F37 W <L <BOOLEAN T> <L <U4 3011> <U4 3012>>>", "<B 0x00>"},
            {"S2F37 W <L <BOOLEAN F> <L <U4 3011>>>", "<B 0x00>"},
            {"S1F3 W <L <U4 1006>>", "<L <L <U4 3012>>>"},
            {"S2F37 W <L <BOOLEAN F> <L>>", "<B 0x00>"},
            {"S1F3 W <L <U4 1006>>", "<L <L>>"},
            {"S2F37 W <L <U1 1> <L>>", "malformed"},
            {"S2F37 W <L <BOOLEAN T F> <L>>", "malformed"},
            {"S2F37 W <L <BOOLEAN> <L>>", "malformed"},
            {"S2F37 W <L <BOOLEAN T>>", "malformed"}});
    Expect({{"S2F37 W <L <BOOLEAN T> <L>>", "<B 0x00>"}});
    EXPECT_EQ(std::ranges::count(equipment_.Model().Events, true, &CollectionEvent::Enabled), 13);
}

}  // namespace
}  // namespace hexmire::program
