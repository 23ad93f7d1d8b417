#include "SimulatedEquipment.h"

namespace hexmire::program {
namespace {

constexpr const char* kTemperature =
    "<L <B 0x02> <U4 4001> <A 'Chamber temperature above the limit'>>";
constexpr const char* kDoor = "<L <B 0x01> <U4 4002> <A 'Door open'>>";
constexpr const char* kGas = "<L <B 0x04> <U4 4003> <A 'Gas pressure low'>>";

std::string ListOf(std::initializer_list<const char*> items) {
    std::string list = "<L";
    for (const char* item : items)
        list += std::string(" ") + item;
    return list + ">";
}

class AlarmAnswers : public SimulatedEquipment {};

TEST_F(AlarmAnswers, ListAllTheOnesAskedForOrTheEnabledOnes) {
    Expect({{"S5F5 W <U4>", ListOf({kTemperature, kDoor, kGas}).c_str()},
            {"S5F5 W <U4 4003>", ListOf({kGas}).c_str()},
            {"S5F5 W <U2 4003 4001>", ListOf({kGas, kTemperature}).c_str()},
            {"S5F5 W <U4 9 4002>", ListOf({"<L <B> <U4 9> <A>>", kDoor}).c_str()},
            {"S5F5 W <U4 9>", "<L <L <B> <U4 9> <A>>>"},
            {"S5F5 W <L>", "malformed"},
            {"S5F5 W <F4 1 2>", "malformed"},
            {"S5F5 W", "malformed"},
            {"S5F7 W", ListOf({kTemperature, kDoor}).c_str()}});
}

TEST_F(AlarmAnswers, AreEnabledAndDisabled) {
    Expect({{"S5F3 W <L <B 0x80> <U4 4003>>", "<B 0x00>"},
            {"S5F3 W <L <B 0x00> <U4 4001>>", "<B 0x00>"},
            {"S5F7 W", ListOf({kDoor, kGas}).c_str()},
            {"S5F3 W <L <B 0x80> <U4 9>>", "<B 0x01>"},
            {"S5F3 W <L <B 0x7F> <U4>>", "<B 0x00>"},
            {"S5F7 W", "<L>"},
            {"S5F3 W <L <B 0x80> <U4>>", "<B 0x00>"},
            {"S5F7 W", ListOf({kTemperature, kDoor, kGas}).c_str()},
            {"S5F3 W <L <A 'x'> <U4 4001>>", "malformed"},
            {"S5F3 W <L <B 0x80>>", "malformed"},
            {"S5F3 W <L <B> <U4 4001>>", "malformed"}});
}

TEST_F(AlarmAnswers, AnAlarmThatIsSetOrClearedIsSentAndIsAnEvent) {
    Alarm& alarm = *equipment_.FindAlarm("4001");
    equipment_.FindEvent("3032")->Enabled = true;
    equipment_.SetAlarm(alarm, true);
    equipment_.SetAlarm(alarm, true);
    Expect({{"S5F5 W <U4 4001>",
             "<L <L <B 0x82> <U4 4001> <A 'Chamber temperature above the limit'>>>"},
            {"S1F3 W <L <U4 1004>>", "<L <L <U4 4001>>>"}});
    equipment_.SetAlarm(alarm, false);
    EXPECT_EQ(
        Sent(),
        Messages({{"S5F1", "<L <B 0x82> <U4 4001> <A 'Chamber temperature above the limit'>>"},
                  {"S5F1", kTemperature},
                  {"S6F11", "<L <U4 1> <U4 3032> <L>>"}}));
}

TEST_F(AlarmAnswers, ADisabledAlarmIsNotSentButIsSet) {
    equipment_.SetAlarm(*equipment_.FindAlarm("4003"), true);
    EXPECT_EQ(Sent(), Messages({}));
    Expect({{"S5F5 W <U4 4003>", "<L <L <B 0x84> <U4 4003> <A 'Gas pressure low'>>>"}});
}

}  // namespace
}  // namespace hexmire::program
