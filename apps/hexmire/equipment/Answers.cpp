#include "equipment/Answers.h"

#include <algorithm>
#include <array>

namespace hexmire::program {

namespace {

using Handler = Datum (*)(Equipment&, const Datum&);
using enum EquipmentAnswer::Kind;

struct Row {
    std::int32_t Stream;
    std::int32_t Function;
    bool HasBody;
    bool IsAnsweredOffline;
    Handler Answer;
};

// S1F13 may come with or without its two texts, so its body is not asked for.
constexpr std::array<Row, 29> kRows{{{1, 1, false, false, &answers::AreYouThere},
                                     {1, 3, true, false, &answers::SelectedStatus},
                                     {1, 11, true, false, &answers::StatusNames},
                                     {1, 13, false, true, &answers::EstablishCommunications},
                                     {1, 15, false, false, &answers::GoOffline},
                                     {1, 17, false, true, &answers::GoOnline},
                                     {1, 21, true, false, &answers::DataValueNames},
                                     {1, 23, true, false, &answers::EventNames},
                                     {2, 13, true, false, &answers::ConstantValues},
                                     {2, 15, true, false, &answers::NewConstants},
                                     {2, 17, false, false, &answers::DateAndTime},
                                     {2, 29, true, false, &answers::ConstantNames},
                                     {2, 31, true, false, &answers::SetDateAndTime},
                                     {2, 33, true, false, &answers::DefineReports},
                                     {2, 35, true, false, &answers::LinkReports},
                                     {2, 37, true, false, &answers::EnableEvents},
                                     {2, 41, true, false, &answers::HostCommand},
                                     {5, 3, true, false, &answers::EnableAlarms},
                                     {5, 5, true, false, &answers::ListAlarms},
                                     {5, 7, false, false, &answers::EnabledAlarms},
                                     {6, 15, true, false, &answers::EventReport},
                                     {6, 19, true, false, &answers::SingleReport},
                                     {7, 1, true, false, &answers::InquireRecipe},
                                     {7, 3, true, false, &answers::StoreRecipe},
                                     {7, 5, true, false, &answers::SendRecipe},
                                     {7, 17, true, false, &answers::DeleteRecipes},
                                     {7, 19, false, false, &answers::ListRecipes},
                                     {10, 3, true, false, &answers::DisplayLine},
                                     {10, 5, true, false, &answers::DisplayLines}}};

const Row* FindRow(std::int32_t stream, std::int32_t function) {
    const auto* found = std::ranges::find_if(
        kRows, [&](const Row& row) { return row.Stream == stream && row.Function == function; });
    return found == kRows.end() ? nullptr : &*found;
}

}  // namespace

EquipmentAnswer AnswerTo(Equipment& equipment,
                         std::int32_t stream,
                         std::int32_t function,
                         const std::optional<Datum>& body) {
    const Row* row = FindRow(stream, function);
    const bool isOffline = equipment.State() != ControlState::Online;
    if (isOffline && (row == nullptr || !row->IsAnsweredOffline)) return {.What = Abort};
    if (row == nullptr) return {.What = Unknown};
    try {
        if (row->HasBody && !body) return {.What = Malformed};
        return {.What = Body, .Body = row->Answer(equipment, body.value_or(Datum()))};
    } catch (const IllegalData&) {
        return {.What = Malformed};
    }
}

}  // namespace hexmire::program
