#include "SimulatedEquipment.h"

#include <string>

namespace hexmire::program {
namespace {

class RecipeAnswers : public SimulatedEquipment {
protected:
    static std::string WithId(const std::string& before, std::size_t length, const char* behind) {
        return before + "<A '" + std::string(length, 'P') + "'>" + behind;
    }
};

TEST_F(RecipeAnswers, RecipesAreListedReadAndStored) {
    equipment_.FindEvent("3005")->Enabled = true;
    Expect({{"S7F19 W", "<L <A 'CLEAN'> <A 'ETCH-1'>>"},
            {"S7F5 W <A 'CLEAN'>", "<L <A 'CLEAN'> <A 'PURGE 30'>>"},
            {"S7F5 W <A 'ETCH-1'>", "<L <A 'ETCH-1'> <B 0x01 0x02 0xFE 0xFF>>"},
            {"S7F5 W <A 'clean'>", "<L>"},
            {"S7F3 W <L <A 'NEW'> <U2 1 2>>", "<B 0x00>"},
            {"S7F3 W <L <A 'CLEAN'> <A 'PURGE 31'>>", "<B 0x00>"},
            {"S7F5 W <B 0x4E 0x45 0x57>", "<L <A 'NEW'> <U2 1 2>>"},
            {"S7F5 W <A 'CLEAN'>", "<L <A 'CLEAN'> <A 'PURGE 31'>>"},
            {"S7F19 W", "<L <A 'CLEAN'> <A 'ETCH-1'> <A 'NEW'>>"}});
    EXPECT_EQ(
        Sent(),
        Messages({{"S6F11", "<L <U4 1> <U4 3005> <L>>"}, {"S6F11", "<L <U4 2> <U4 3005> <L>>"}}));
}

TEST_F(RecipeAnswers, RecipesAreDeletedAllOrNone) {
    Expect({{"S7F17 W <L <A 'CLEAN'> <A 'X'>>", "<B 0x04>"},
            {"S7F19 W", "<L <A 'CLEAN'> <A 'ETCH-1'>>"},
            {"S7F17 W <L <A 'CLEAN'>>", "<B 0x00>"},
            {"S7F19 W", "<L <A 'ETCH-1'>>"},
            {"S7F3 W <L <A 'NEW'> <A 'x'>>", "<B 0x00>"},
            {"S7F17 W <L>", "<B 0x00>"},
            {"S7F19 W", "<L>"},
            {"S7F17 W <A 'CLEAN'>", "malformed"}});
}

TEST_F(RecipeAnswers, AnInquiryTellsWhatWouldHappen) {
    Expect({{"S7F1 W <L <A 'NEW'> <U4 100>>", "<B 0x00>"},
            {"S7F1 W <L <A 'CLEAN'> <U4 100>>", "<B 0x01>"},
            {WithId("S7F1 W <L ", 80, " <U4 1>>").c_str(), "<B 0x00>"},
            {WithId("S7F1 W <L ", 81, " <U4 1>>").c_str(), "<B 0x03>"},
            {"S7F1 W <L <A 'NEW'> <A 'x'>>", "malformed"},
            {"S7F1 W <L <U4 1> <U4 1>>", "malformed"}});
    equipment_.Model().Most.Recipes = 2;
    Expect({{"S7F1 W <L <A 'NEW'> <U4 100>>", "<B 0x02>"},
            {"S7F1 W <L <A 'CLEAN'> <U4 100>>", "<B 0x01>"}});
    equipment_.Busy = true;
    Expect({{"S7F1 W <L <A 'CLEAN'> <U4 100>>", "<B 0x04>"}});
}

TEST_F(RecipeAnswers, WhatCannotBeStoredIsRefused) {
    equipment_.Model().Most.Recipes = 2;
    Expect({{"S7F3 W <L <A 'NEW'> <A 'x'>>", "<B 0x03>"},
            {"S7F3 W <L <A 'CLEAN'> <A 'x'>>", "<B 0x00>"},
            {WithId("S7F3 W <L ", 81, " <A 'x'>>").c_str(), "<B 0x02>"},
            {"S7F3 W <L <A 'CLEAN'> <L>>", "malformed"},
            {"S7F3 W <A 'CLEAN'>", "malformed"}});
    equipment_.Busy = true;
    Expect({{"S7F3 W <L <A 'CLEAN'> <A 'y'>>", "<B 0x01>"},
            {"S7F17 W <L>", "<B 0x01>"},
            {"S7F5 W <A 'CLEAN'>", "<L <A 'CLEAN'> <A 'x'>>"}});
}

TEST_F(RecipeAnswers, ATerminalShowsTexts) {
    equipment_.FindEvent("3003")->Enabled = true;
    Expect({{"S10F3 W <L <B 0x00> <A 'hello'>>", "<B 0x00>"},
            {"S10F3 W <L <B 0x01> <A 'hello'>>", "<B 0x02>"},
            {"S10F5 W <L <B 0x00> <L <A 'hello'> <A 'operator'>>>", "<B 0x00>"},
            {"S10F5 W <L <B 0x00> <A 'hello'>>", "malformed"},
            {"S10F5 W <L <B 0x00> <L <L>>>", "malformed"},
            {"S10F3 W <L <B 0x00> <L>>", "malformed"},
            {"S10F3 W <L <B> <A 'hello'>>", "malformed"}});
    EXPECT_EQ(
        Sent(),
        Messages({{"S6F11", "<L <U4 1> <U4 3003> <L>>"}, {"S6F11", "<L <U4 2> <U4 3003> <L>>"}}));
}

}  // namespace
}  // namespace hexmire::program
