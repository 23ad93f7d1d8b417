#pragma once

#include "equipment/Datum.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace hexmire::program {

/// What a simulated equipment knows about itself, as SEMI E30 divides it. Identifiers are U4 or A
/// items; references to them are keys (KeyOf). Texts are in ISO 8859-1.

/// A status variable or a data value.
struct Variable {
    /// Where the value comes from: kept, or made when it is asked for.
    enum class Source : std::uint8_t {
        Kept,
        Clock,
        ControlState,
        ProcessState,
        AlarmsSet,
        AlarmsEnabled,
        EventsEnabled
    };
    Datum Id{};
    std::string Name{};
    std::string Units{};
    Source From = Source::Kept;
    Datum Value{};
};

struct Constant {
    Datum Id{};
    std::string Name{};
    std::string Units{};
    std::optional<Datum> Minimum{};  ///< numbers only
    std::optional<Datum> Maximum{};
    Datum Default{};
    Datum Value{};
};

struct CollectionEvent {
    Datum Id{};
    std::string Name{};
    std::vector<std::string> Variables{};  ///< those that go with it (SEMI E5, S1F24)
    bool Enabled = false;
};

struct Alarm {
    Datum Id{};
    std::string Text{};
    std::uint8_t Category = 0;  ///< [0..127], the lower bits of ALCD
    bool Enabled = true;
    bool Set = false;
    std::string SetEvent{};  ///< "": none
    std::string ClearEvent{};
};

struct CommandParameter {
    std::string Name{};
    std::int32_t Format = FormatAscii;
    std::vector<Datum> Values{};  ///< those allowed; empty: any
    std::string Variable{};       ///< takes the value; "": none
};

struct RemoteCommand {
    std::string Name{};
    std::vector<CommandParameter> Parameters{};
    std::vector<std::string> From{};  ///< process states that it is taken in; empty: any
    std::string To{};                 ///< "": the process state stays
    std::string Event{};              ///< "": none
    std::uint8_t Acknowledge = 0;     ///< HCACK of success, 0 or 4
};

struct Recipe {
    std::string Id{};
    Datum Body{};
};

/// Events of the equipment's own doings; "": none.
struct SystemEvents {
    std::string Online{};
    std::string Offline{};
    std::string TerminalMessage{};
    std::string ConstantChanged{};
    std::string RecipeChanged{};
};

struct Limits {
    std::size_t Reports = 1000;
    std::size_t Links = 1000;  ///< reports of one event
    std::size_t Recipes = 1000;
    std::size_t Terminals = 1;
};

struct EquipmentModel {
    std::string Name{};      ///< MDLN
    std::string Revision{};  ///< SOFTREV
    bool Online = true;
    std::string ProcessState{};
    std::vector<Variable> StatusVariables{};
    std::vector<Variable> DataValues{};
    std::vector<Constant> Constants{};
    std::vector<CollectionEvent> Events{};
    std::vector<Alarm> Alarms{};
    std::vector<RemoteCommand> Commands{};
    std::vector<Recipe> Recipes{};
    SystemEvents OwnEvents{};
    Limits Most{};
};

}  // namespace hexmire::program
