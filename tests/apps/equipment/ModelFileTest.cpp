#include "../../hosting/TempFolder.h"
#include "Failure.h"
#include "equipment/ModelFile.h"
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <utility>

namespace hexmire::program {
namespace {

std::string RefusalOf(const std::string& json) {
    try {
        static_cast<void>(ReadModel(json, "m.json"));
    } catch (const UsageError& error) {
        return error.what();
    }
    return "";
}

TEST(ModelFile, TheExampleIsTheEquipmentThatIsBuiltIn) {
    const EquipmentModel example = LoadModel(HEXMIRE_SOURCE_DIR "/examples/equipment.json");
    const EquipmentModel builtIn = BuiltInModel();
    for (const EquipmentModel& model : {example, builtIn}) {
        EXPECT_EQ(model.Name, "HXM-200");
        EXPECT_EQ(model.StatusVariables.size(), 12U);
        EXPECT_EQ(model.DataValues.size(), 2U);
        EXPECT_EQ(model.Constants.size(), 4U);
        EXPECT_EQ(model.Events.size(), 13U);
        EXPECT_EQ(model.Alarms.size(), 3U);
        EXPECT_EQ(model.Commands.size(), 7U);
        EXPECT_EQ(model.Recipes.size(), 2U);
        EXPECT_EQ(model.OwnEvents.RecipeChanged, "3005");
        EXPECT_EQ(model.Most.Reports, 100U);
    }
}

TEST(ModelFile, NothingHasToStandInIt) {
    const EquipmentModel model = ReadModel("{}", "m.json");
    EXPECT_EQ(model.Name, "");
    EXPECT_TRUE(model.Online);
    EXPECT_TRUE(model.StatusVariables.empty());
    EXPECT_EQ(model.Most.Terminals, 1U);
}

TEST(ModelFile, ValuesHaveTheKindsThatDecodingGives) {
    const std::pair<const char*, Datum> kCases[] = {
        {R"("A", "value": "\u00e4")", Ascii("\xE4")},
        {R"("A", "value": "")", Ascii("")},
        {R"("BOOLEAN", "value": true)", Boolean(true)},
        {R"("B", "value": 255)", Binary(255)},
        {R"("U4", "value": 4294967295)", Unsigned4(4294967295U)},
        {R"("U1", "value": [7])", Unsigned1(7)},
        {R"("I2", "value": [-1, 2])",
         {.Format = FormatI2, .Value = Variant(std::vector<std::int32_t>{-1, 2})}},
        {R"("I8", "value": -5)", {.Format = FormatI8, .Value = Decimal::FromInt64(-5)}},
        {"\"U8\", \"value\": 18446744073709551615",
         {.Format = FormatU8, .Value = Decimal::FromUInt64(18446744073709551615U)}},
        {R"("F4", "value": 1)", {.Format = FormatF4, .Value = 1.0F}},
        {R"("F8", "value": [0.5, 2])",
         {.Format = FormatF8, .Value = Variant(std::vector<double>{0.5, 2})}},
        {R"("U2", "value": [])", {.Format = FormatU2}},
        {R"("L", "value": [{"format": "L", "value": []}])", List({List()})}};
    for (const auto& [text, value] : kCases) {
        const EquipmentModel model = ReadModel(
            std::string(R"({"data_values": [{"id": "x", "format": )") + text + "}]}", "m.json");
        EXPECT_EQ(model.DataValues.at(0).Value, value) << text;
    }
}

TEST(ModelFile, WhatIsWrongIsToldWithItsPlace) {
    const std::pair<const char*, const char*> kCases[] = {
        {"[]", "m.json: expected an object"},
        {R"({"modell": "x"})", "m.json: unknown member \"modell\""},
        {R"({"model": 5})", "m.json: model: expected a text"},
        {R"({"model": "123456789012345678901"})", "m.json: model: at most 20 characters"},
        {R"({"events": {}})", "m.json: events: expected an array"},
        {R"({"events": [5]})", "m.json: events[0]: expected an object"},
        {R"({"events": [{"id": 1}, {"name": "x"}]})", "m.json: events[1]: \"id\" is missing"},
        {R"({"events": [{"id": 1}, {"id": "1"}]})",
         "m.json: events[1].id: \"1\" stands here twice"},
        {R"({"events": [{"id": 4294967296}]})",
         "m.json: events[0].id: expected a whole number from 0 to 4294967295"},
        {R"({"events": [{"id": 18446744073709551615}]})",
         "m.json: events[0].id: expected a whole number from 0 to 4294967295"},
        {R"({"events": [{"id": 1.5}]})", "m.json: events[0].id: expected a number or a text"},
        {R"({"events": [{"id": ""}]})", "m.json: events[0].id: an identifier has no characters"},
        {R"({"events": [{"id": 1, "variables": [7]}]})",
         "m.json: events[0].variables[0]: no variable has the id 7"},
        {R"({"events": [{"id": 1, "enabled": 1}]})",
         "m.json: events[0].enabled: expected true or false"},
        {R"({"status_variables": [{"id": 1}]})",
         "m.json: status_variables[0]: \"value\" is missing"},
        {R"({"status_variables": [{"id": 1, "value": 1}]})",
         "m.json: status_variables[0]: \"format\" is missing"},
        {R"({"status_variables": [{"id": 1, "format": "X", "value": 1}]})",
         "m.json: status_variables[0].format: expected one of L B BOOLEAN A I1 I2 I4 I8 U1 U2 U4 "
         "U8 F4 F8"},
        {R"({"status_variables": [{"id": 1, "format": "U1", "value": [1, 256]}]})",
         "m.json: status_variables[0].value[1]: expected a whole number from 0 to 255"},
        {R"({"status_variables": [{"id": 1, "format": "F4", "value": "x"}]})",
         "m.json: status_variables[0].value: expected a number"},
        {R"({"status_variables": [{"id": 1, "source": "moon"}]})",
         "m.json: status_variables[0].source: expected clock, control_state, process_state, "
         "alarms_set, alarms_enabled or events_enabled"},
        {R"({"status_variables": [{"id": 1, "source": "clock", "value": 1}]})",
         "m.json: status_variables[0]: 'source' and 'value' exclude each other"},
        {R"({"status_variables": [{"id": 1, "source": "clock"}], "data_values":
             [{"id": 1, "source": "clock"}]})",
         "m.json: data_values[0].id: \"1\" stands here twice"},
        {R"({"constants": [{"id": 1, "format": "U1", "default": 5, "max": 4}]})",
         "m.json: constants[0].default: outside of min and max"},
        {R"({"constants": [{"id": 1, "format": "U1", "default": 5, "min": 3, "value": 2}]})",
         "m.json: constants[0].value: outside of min and max"},
        {R"({"constants": [{"id": 1, "format": "A", "default": "x", "min": "a"}]})",
         "m.json: constants[0].min: only numbers have limits"},
        {R"({"constants": [{"id": 1, "format": "L", "default": []}]})",
         "m.json: constants[0].format: a constant is no list"},
        {"{\"constants\": [{\"id\": 1, \"format\": \"U1\", \"default\": 5, \"min\": [1, 2]}]}",
         "m.json: constants[0].min: expected one number"},
        {"{\"constants\": [{\"id\": 1, \"format\": \"U1\", \"default\": 5, \"max\": []}]}",
         "m.json: constants[0].max: expected one number"},
        {"{\"constants\": [{\"id\": 1, \"format\": \"U1\", \"default\": [1, 2], \"max\": 9}]}",
         "m.json: constants[0].default: expected one number"},
        {"{\"constants\": [{\"id\": 1, \"format\": \"U1\", \"default\": 20, \"value\": 1, \"max\": "
         "9}]}",
         "m.json: constants[0].default: outside of min and max"},
        {"{\"constants\": [{\"id\": 1, \"format\": \"F4\", \"default\": 1e300}]}",
         "m.json: constants[0].default: the number is too large for F4"},
        {"{\"constants\": [{\"id\": 1, \"format\": \"F4\", \"default\": [0, -4e38]}]}",
         "m.json: constants[0].default[1]: the number is too large for F4"},
        {"{\"model\": \"\\u20ac\"}", "m.json: model: expected characters of ISO 8859-1"},
        {"{\"model\": 1e999}", "m.json: number overflow parsing '1e999'"},
        {R"({"alarms": [{"id": 1, "category": 128}]})",
         "m.json: alarms[0].category: expected a whole number from 0 to 127"},
        {R"({"alarms": [{"id": 1, "set_event": 3}]})",
         "m.json: alarms[0].set_event: no event has the id 3"},
        {R"({"commands": [{"name": "A"}, {"name": "A"}]})",
         "m.json: commands[1].name: \"A\" stands here twice"},
        {R"({"commands": [{"name": "A", "acknowledge": 3}]})",
         "m.json: commands[0].acknowledge: expected 0 (done) or 4 (will be done)"},
        {R"({"commands": [{"name": "A", "parameters": [{"name": "P", "variable": 1}]}]})",
         "m.json: commands[0].parameters[0].variable: no variable has the id 1"},
        {"{\"status_variables\": [{\"id\": 1, \"source\": \"clock\"}], \"commands\": [{\"name\": "
         "\"A\", "
         "\"parameters\": [{\"name\": \"P\", \"variable\": 1}]}]}",
         "m.json: commands[0].parameters[0].variable: variable 1 is made by the equipment"},
        {"{\"data_values\": [{\"id\": 1, \"format\": \"F4\", \"value\": 1}], \"commands\": "
         "[{\"name\": "
         "\"A\", \"parameters\": [{\"name\": \"P\", \"variable\": 1}]}]}",
         "m.json: commands[0].parameters[0].variable: variable 1 has the format F4, the parameter "
         "A"},
        {"{\"constants\": [{\"id\": 1, \"format\": \"U2\", \"default\": 1}], \"commands\": "
         "[{\"name\": "
         "\"A\", \"parameters\": [{\"name\": \"P\", \"variable\": 1}]}]}",
         "m.json: commands[0].parameters[0].variable: variable 1 has the format U2, the parameter "
         "A"},
        {"{\"constants\": [{\"id\": 1, \"format\": \"U1\", \"default\": [1, 2]}]}",
         "m.json: constants[0].default: expected one number"},
        {"{\"constants\": [{\"id\": 1, \"format\": \"U1\", \"default\": 1, \"value\": []}]}",
         "m.json: constants[0].value: expected one number"},
        {"{\"constants\": [{\"id\": 1, \"format\": \"U8\", \"default\": -1}]}",
         "m.json: constants[0].default: expected a whole number from 0 to 18446744073709551615"},
        {"{\"model\": \"a\", \"model\": \"b\"}",
         "m.json: member \"model\" stands twice in one object"},
        {"{\"events\": [{\"id\": 1}, {\"id\": 2, \"id\": 3}]}",
         "m.json: member \"id\" stands twice in one object"},
        {R"({"recipes": [{"id": "A"}]})", "m.json: recipes[0]: \"body\" is missing"},
        {R"({"own_events": {"online": 1}})", "m.json: own_events.online: no event has the id 1"},
        {R"({"limits": {"terminals": 257}})",
         "m.json: limits.terminals: expected a whole number from 0 to 256"}};
    for (const auto& [json, refusal] : kCases)
        EXPECT_EQ(RefusalOf(json), refusal) << json;
    EXPECT_THAT(RefusalOf("{\n  \"model\": }"),
                testing::StartsWith("m.json: parse error at line 2, column 12: "));
}

/// A data value of so many lists, each one in the one before.
std::string NestedLists(std::size_t levels) {
    std::string value = "[]";
    for (std::size_t i = 1; i < levels; ++i)
        value = "[{\"format\":\"L\",\"value\":" + value + "}]";
    return "{\"data_values\": [{\"id\": 1, \"format\": \"L\", \"value\": " + value + "}]}";
}

TEST(ModelFile, ListsAreNestedAsDeepAsALinkTakesThem) {
    EXPECT_EQ(DeepestValue(), 996U);
    EXPECT_EQ(RefusalOf(NestedLists(996)), "");
    const std::string refusal = RefusalOf(NestedLists(997));
    EXPECT_THAT(refusal, testing::StartsWith("m.json: data_values[0].value[0].value[0]."));
    EXPECT_THAT(refusal, testing::EndsWith(".value: lists are nested more than 996 deep"));
    EXPECT_LT(refusal.size(), 500U);
    EXPECT_EQ(RefusalOf(NestedLists(20'000)), "m.json: lists are nested more than 996 deep");
}

TEST(ModelFile, AParameterOfAnyNumberFormatMayChangeAConstant) {
    EXPECT_EQ(RefusalOf("{\"constants\": [{\"id\": 1, \"format\": \"U2\", \"default\": 1}], "
                        "\"commands\": [{\"name\": \"A\", \"parameters\": [{\"name\": \"P\", "
                        "\"format\": \"U4\", \"variable\": 1}]}]}"),
              "");
}

TEST(ModelFile, AFileThatCannotBeReadIsTold) {
    const fakes::TempFolder folder;
    for (const std::string& path : {folder / "none.json", folder / "."}) {
        try {
            static_cast<void>(LoadModel(path));
            FAIL() << path;
        } catch (const Failure& failure) {
            EXPECT_THAT(failure.what(),
                        testing::StartsWith("cannot read the model " + path + ": "));
        }
    }
}

}  // namespace
}  // namespace hexmire::program
