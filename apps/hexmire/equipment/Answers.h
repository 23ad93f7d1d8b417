#pragma once

#include "equipment/Equipment.h"

#include <cstdint>
#include <optional>

namespace hexmire::program {

/// What a simulated equipment answers to a primary.
struct EquipmentAnswer {
    enum class Kind : std::uint8_t {
        Body,       ///< the secondary with this body
        Abort,      ///< function 0 of the stream, without body: not in this control state
        Malformed,  ///< S9F7
        Unknown     ///< nothing of its own: as the dictionary has it
    };
    Kind What = Kind::Unknown;
    Datum Body{};
    bool operator==(const EquipmentAnswer&) const = default;
};

/// Takes a primary with its effects on the equipment and tells the answer.
[[nodiscard]] EquipmentAnswer AnswerTo(Equipment& equipment,
                                       std::int32_t stream,
                                       std::int32_t function,
                                       const std::optional<Datum>& body);

/// How each stream and function is answered; IllegalData is thrown for a body of another shape.
namespace answers {

// StatusAnswers.cpp
Datum AreYouThere(Equipment& equipment, const Datum& body);              // S1F1
Datum SelectedStatus(Equipment& equipment, const Datum& body);           // S1F3
Datum StatusNames(Equipment& equipment, const Datum& body);              // S1F11
Datum EstablishCommunications(Equipment& equipment, const Datum& body);  // S1F13
Datum GoOffline(Equipment& equipment, const Datum& body);                // S1F15
Datum GoOnline(Equipment& equipment, const Datum& body);                 // S1F17
Datum DataValueNames(Equipment& equipment, const Datum& body);           // S1F21
Datum EventNames(Equipment& equipment, const Datum& body);               // S1F23

// ConstantAnswers.cpp
Datum ConstantValues(Equipment& equipment, const Datum& body);  // S2F13
Datum NewConstants(Equipment& equipment, const Datum& body);    // S2F15
Datum ConstantNames(Equipment& equipment, const Datum& body);   // S2F29
Datum DateAndTime(Equipment& equipment, const Datum& body);     // S2F17
Datum SetDateAndTime(Equipment& equipment, const Datum& body);  // S2F31

// ReportAnswers.cpp
Datum DefineReports(Equipment& equipment, const Datum& body);  // S2F33
Datum LinkReports(Equipment& equipment, const Datum& body);    // S2F35
Datum EnableEvents(Equipment& equipment, const Datum& body);   // S2F37
Datum EventReport(Equipment& equipment, const Datum& body);    // S6F15
Datum SingleReport(Equipment& equipment, const Datum& body);   // S6F19

// CommandAnswers.cpp
Datum HostCommand(Equipment& equipment, const Datum& body);  // S2F41

// AlarmAnswers.cpp
Datum EnableAlarms(Equipment& equipment, const Datum& body);   // S5F3
Datum ListAlarms(Equipment& equipment, const Datum& body);     // S5F5
Datum EnabledAlarms(Equipment& equipment, const Datum& body);  // S5F7

// RecipeAnswers.cpp
Datum InquireRecipe(Equipment& equipment, const Datum& body);  // S7F1
Datum StoreRecipe(Equipment& equipment, const Datum& body);    // S7F3
Datum SendRecipe(Equipment& equipment, const Datum& body);     // S7F5
Datum DeleteRecipes(Equipment& equipment, const Datum& body);  // S7F17
Datum ListRecipes(Equipment& equipment, const Datum& body);    // S7F19

// TerminalAnswers.cpp
Datum DisplayLine(Equipment& equipment, const Datum& body);   // S10F3
Datum DisplayLines(Equipment& equipment, const Datum& body);  // S10F5

}  // namespace answers

}  // namespace hexmire::program
