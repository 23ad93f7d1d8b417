#include "equipment/ModelFile.h"

#include "Failure.h"
#include "FileReader.h"
#include "equipment/ConstantValue.h"
#include "equipment/JsonPlace.h"
#include "equipment/ParsedJson.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>
#include <vector>

namespace hexmire::program {

namespace {

using Keys = std::set<std::string>;

/// Reads the parts of one model; knows the identifiers that references may name.
class ModelReader {
public:
    explicit ModelReader(const JsonPlace& top) : top_(top) {}

    EquipmentModel Read() {
        top_.Members({"model",
                      "revision",
                      "online",
                      "process_state",
                      "status_variables",
                      "data_values",
                      "constants",
                      "events",
                      "alarms",
                      "commands",
                      "recipes",
                      "own_events",
                      "limits"});
        EquipmentModel model;
        model.Name = Short(top_, "model");
        model.Revision = Short(top_, "revision");
        model.Online = top_.TruthOf("online", true);
        model.ProcessState = top_.TextOf("process_state");
        for (const JsonPlace& place : top_.ElementsOf("status_variables"))
            model.StatusVariables.push_back(ReadVariable(place));
        for (const JsonPlace& place : top_.ElementsOf("data_values"))
            model.DataValues.push_back(ReadVariable(place));
        for (const JsonPlace& place : top_.ElementsOf("constants"))
            model.Constants.push_back(ReadConstant(place));
        for (const JsonPlace& place : top_.ElementsOf("events"))
            model.Events.push_back(ReadEvent(place));
        for (const JsonPlace& place : top_.ElementsOf("alarms"))
            model.Alarms.push_back(ReadAlarm(place));
        for (const JsonPlace& place : top_.ElementsOf("commands"))
            model.Commands.push_back(ReadCommand(place));
        for (const JsonPlace& place : top_.ElementsOf("recipes"))
            model.Recipes.push_back(ReadRecipe(place));
        if (const auto place = top_.Find("own_events")) model.OwnEvents = ReadOwnEvents(*place);
        if (const auto place = top_.Find("limits")) model.Most = ReadLimits(*place);
        return model;
    }

private:
    /// MDLN and SOFTREV have 20 characters at most (SEMI E5).
    static std::string Short(const JsonPlace& top, const std::string& member) {
        constexpr std::size_t kLongest = 20;
        std::string text = top.TextOf(member);
        if (text.size() > kLongest) top.At(member).Refuse("at most 20 characters");
        return text;
    }

    static void Enter(Keys& keys, const JsonPlace& place, const std::string& key) {
        if (!keys.insert(key).second) place.Refuse("\"" + key + "\" stands here twice");
    }

    /// The key that a member names; "" when it is missing.
    static std::string Reference(const JsonPlace& owner,
                                 const std::string& member,
                                 const Keys& keys,
                                 const char* what) {
        const auto place = owner.Find(member);
        return place ? Known(*place, keys, what) : "";
    }
    static std::string Known(const JsonPlace& place, const Keys& keys, const char* what) {
        std::string key = KeyOf(place.Identifier());
        if (!keys.contains(key)) place.Refuse("no " + std::string(what) + " has the id " + key);
        return key;
    }

    static Variable::Source SourceOf(const JsonPlace& place) {
        static const std::pair<const char*, Variable::Source> kSources[] = {
            {"clock", Variable::Source::Clock},
            {"control_state", Variable::Source::ControlState},
            {"process_state", Variable::Source::ProcessState},
            {"alarms_set", Variable::Source::AlarmsSet},
            {"alarms_enabled", Variable::Source::AlarmsEnabled},
            {"events_enabled", Variable::Source::EventsEnabled}};
        const std::string text = place.Text();
        for (const auto& [name, source] : kSources) {
            if (text == name) return source;
        }
        place.Refuse(
            "expected clock, control_state, process_state, alarms_set, alarms_enabled or "
            "events_enabled");
    }

    // Status variables, data values and constants share their identifiers (SEMI E5, VID).
    Variable ReadVariable(const JsonPlace& place) {
        place.Members({"id", "name", "units", "source", "format", "value"});
        Variable variable{.Id = place.At("id").Identifier(),
                          .Name = place.TextOf("name"),
                          .Units = place.TextOf("units")};
        Enter(variables_, place.At("id"), KeyOf(variable.Id));
        if (const auto source = place.Find("source")) {
            if (place.Find("value")) place.Refuse("'source' and 'value' exclude each other");
            variable.From = SourceOf(*source);
        } else {
            const JsonPlace value = place.At("value");
            variable.Value = value.Value(place.At("format").Format());
        }
        formats_[KeyOf(variable.Id)] = {.IsKept = variable.From == Variable::Source::Kept,
                                        .Format = variable.Value.Format};
        return variable;
    }

    Constant ReadConstant(const JsonPlace& place) {
        place.Members({"id", "name", "units", "format", "min", "max", "default", "value"});
        const std::int32_t format = place.At("format").Format();
        if (format == FormatList) place.At("format").Refuse("a constant is no list");
        Constant constant{.Id = place.At("id").Identifier(),
                          .Name = place.TextOf("name"),
                          .Units = place.TextOf("units"),
                          .Default = place.At("default").Value(format)};
        Enter(variables_, place.At("id"), KeyOf(constant.Id));
        const bool isNumber = IsInteger(format) || IsFloating(format);
        formats_[KeyOf(constant.Id)] = {.IsNumber = isNumber, .Format = format};
        const auto bound = [&](const char* member) -> std::optional<Datum> {
            const auto found = place.Find(member);
            if (!found) return std::nullopt;
            if (!isNumber) found->Refuse("only numbers have limits");
            Datum limit = found->Value(format);
            if (!NumberOf(limit)) found->Refuse("expected one number");
            return limit;
        };
        constant.Minimum = bound("min");
        constant.Maximum = bound("max");
        const auto value = place.Find("value");
        constant.Value = value ? value->Value(format) : constant.Default;
        if (!isNumber) return constant;
        CheckNumber(constant, constant.Default, place.At("default"));
        if (value) CheckNumber(constant, constant.Value, *value);
        return constant;
    }

    /// S2F15 gives it one number.
    static void CheckNumber(const Constant& constant, const Datum& value, const JsonPlace& place) {
        if (!NumberOf(value)) place.Refuse("expected one number");
        if (!ValueFor(constant, value)) place.Refuse("outside of min and max");
    }

    CollectionEvent ReadEvent(const JsonPlace& place) {
        place.Members({"id", "name", "variables", "enabled"});
        CollectionEvent event{.Id = place.At("id").Identifier(),
                              .Name = place.TextOf("name"),
                              .Enabled = place.TruthOf("enabled", false)};
        Enter(events_, place.At("id"), KeyOf(event.Id));
        for (const JsonPlace& one : place.ElementsOf("variables"))
            event.Variables.push_back(Known(one, variables_, "variable"));
        return event;
    }

    Alarm ReadAlarm(const JsonPlace& place) {
        place.Members({"id", "text", "category", "enabled", "set_event", "clear_event"});
        constexpr std::size_t kLongestText = 120;  // SEMI E5, ALTX
        Alarm alarm{.Id = place.At("id").Identifier(),
                    .Text = place.TextOf("text"),
                    .Enabled = place.TruthOf("enabled", true),
                    .SetEvent = Reference(place, "set_event", events_, "event"),
                    .ClearEvent = Reference(place, "clear_event", events_, "event")};
        if (alarm.Text.size() > kLongestText) place.At("text").Refuse("at most 120 characters");
        if (const auto category = place.Find("category"))
            alarm.Category = static_cast<std::uint8_t>(category->Whole(0, 127));
        Enter(alarms_, place.At("id"), KeyOf(alarm.Id));
        return alarm;
    }

    /// The variable of a parameter can take its value.
    void CheckTaken(const CommandParameter& parameter, const JsonPlace& place) {
        const VariableFormat& variable = formats_[parameter.Variable];
        const JsonPlace reference = place.At("variable");
        if (!variable.IsKept)
            reference.Refuse("variable " + parameter.Variable + " is made by the equipment");
        const bool bothNumbers =
            variable.IsNumber && (IsInteger(parameter.Format) || IsFloating(parameter.Format));
        if (!bothNumbers && variable.Format != parameter.Format)
            reference.Refuse("variable " + parameter.Variable + " has the format " +
                             NameOf(variable.Format) + ", the parameter " +
                             NameOf(parameter.Format));
    }

    CommandParameter ReadParameter(const JsonPlace& place) {
        place.Members({"name", "format", "values", "variable"});
        CommandParameter parameter{
            .Name = place.At("name").Text(),
            .Variable = Reference(place, "variable", variables_, "variable")};
        if (const auto format = place.Find("format")) parameter.Format = format->Format();
        if (!parameter.Variable.empty()) CheckTaken(parameter, place);
        for (const JsonPlace& value : place.ElementsOf("values"))
            parameter.Values.push_back(value.Value(parameter.Format));
        return parameter;
    }

    RemoteCommand ReadCommand(const JsonPlace& place) {
        place.Members({"name", "parameters", "from", "to", "event", "acknowledge"});
        RemoteCommand command{.Name = place.At("name").Text(),
                              .To = place.TextOf("to"),
                              .Event = Reference(place, "event", events_, "event")};
        Enter(commands_, place.At("name"), command.Name);
        Keys names;
        for (const JsonPlace& one : place.ElementsOf("parameters")) {
            command.Parameters.push_back(ReadParameter(one));
            Enter(names, one.At("name"), command.Parameters.back().Name);
        }
        for (const JsonPlace& one : place.ElementsOf("from"))
            command.From.push_back(one.Text());
        if (const auto acknowledge = place.Find("acknowledge")) {
            command.Acknowledge = static_cast<std::uint8_t>(acknowledge->Whole(0, 4));
            if (command.Acknowledge != 0 && command.Acknowledge != 4)
                acknowledge->Refuse("expected 0 (done) or 4 (will be done)");
        }
        return command;
    }

    Recipe ReadRecipe(const JsonPlace& place) {
        place.Members({"id", "format", "body"});
        const auto format = place.Find("format");
        Recipe recipe{
            .Id = place.At("id").Text(),
            .Body = place.At("body").Value(format ? format->Format() : std::int32_t{FormatAscii})};
        Enter(recipes_, place.At("id"), recipe.Id);
        return recipe;
    }

    SystemEvents ReadOwnEvents(const JsonPlace& place) {
        place.Members(
            {"online", "offline", "terminal_message", "constant_changed", "recipe_changed"});
        const auto event = [&](const char* member) {
            return Reference(place, member, events_, "event");
        };
        return {.Online = event("online"),
                .Offline = event("offline"),
                .TerminalMessage = event("terminal_message"),
                .ConstantChanged = event("constant_changed"),
                .RecipeChanged = event("recipe_changed")};
    }

    static Limits ReadLimits(const JsonPlace& place) {
        place.Members({"reports", "links", "recipes", "terminals"});
        Limits limits;
        const auto take = [&](const char* member, std::size_t& limit, std::int64_t largest) {
            if (const auto found = place.Find(member))
                limit = static_cast<std::size_t>(found->Whole(0, largest));
        };
        constexpr std::int64_t kMost = 1'000'000;
        take("reports", limits.Reports, kMost);
        take("links", limits.Links, kMost);
        take("recipes", limits.Recipes, kMost);
        take("terminals", limits.Terminals, 256);
        return limits;
    }

    struct VariableFormat {
        bool IsKept = true;     ///< not made by the equipment
        bool IsNumber = false;  ///< a constant, which takes a number of any format
        std::int32_t Format = FormatList;
    };

    const JsonPlace& top_;
    Keys variables_;
    std::map<std::string, VariableFormat> formats_;
    Keys events_;
    Keys alarms_;
    Keys commands_;
    Keys recipes_;
};

}  // namespace

EquipmentModel ReadModel(std::string_view json, const std::string& name) {
    const nlohmann::ordered_json parsed = ParsedJson(json, name);
    return ModelReader(JsonPlace(parsed, name + ": ")).Read();
}

EquipmentModel LoadModel(const std::string& path) {
    return ReadModel(FileReader(path, "the model " + path).ReadAll(), path);
}

}  // namespace hexmire::program
