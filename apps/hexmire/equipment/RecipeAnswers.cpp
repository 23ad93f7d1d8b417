#include "equipment/Answers.h"

#include <algorithm>

/// Process programs, stream 7.
namespace hexmire::program::answers {

namespace {

constexpr std::uint8_t kAccepted = 0;
constexpr std::size_t kLongestId = 80;  // SEMI E5, PPID

bool IsFull(const Equipment& equipment) {
    return equipment.Model().Recipes.size() >= equipment.Model().Most.Recipes;
}

}  // namespace

Datum InquireRecipe(Equipment& equipment, const Datum& body) {
    constexpr std::uint8_t kAlreadyThere = 1;
    constexpr std::uint8_t kNoSpace = 2;
    constexpr std::uint8_t kInvalidId = 3;
    constexpr std::uint8_t kBusy = 4;
    const auto& parts = ItemsOf(body, 2);
    const std::string id = TextOf(parts[0]);
    if (!IsInteger(parts[1].Format)) throw IllegalData("a length is missing");
    if (equipment.Busy) return Binary(kBusy);
    if (id.size() > kLongestId) return Binary(kInvalidId);
    if (equipment.FindRecipe(id) != nullptr) return Binary(kAlreadyThere);
    return Binary(IsFull(equipment) ? kNoSpace : kAccepted);
}

Datum StoreRecipe(Equipment& equipment, const Datum& body) {
    constexpr std::uint8_t kNotGranted = 1;
    constexpr std::uint8_t kLengthError = 2;
    constexpr std::uint8_t kMatrixOverflow = 3;
    const auto& parts = ItemsOf(body, 2);
    const std::string id = TextOf(parts[0]);
    if (parts[1].Format == FormatList) throw IllegalData("a recipe is no list");
    if (equipment.Busy) return Binary(kNotGranted);
    if (id.size() > kLongestId) return Binary(kLengthError);
    if (Recipe* known = equipment.FindRecipe(id)) {
        known->Body = parts[1];
    } else if (IsFull(equipment)) {
        return Binary(kMatrixOverflow);
    } else {
        equipment.Model().Recipes.push_back({.Id = id, .Body = parts[1]});
    }
    equipment.Fire(equipment.Model().OwnEvents.RecipeChanged);
    return Binary(kAccepted);
}

Datum SendRecipe(Equipment& equipment, const Datum& body) {
    const Recipe* recipe = equipment.FindRecipe(TextOf(body));
    return recipe == nullptr ? List() : List({Ascii(recipe->Id), recipe->Body});
}

Datum DeleteRecipes(Equipment& equipment, const Datum& body) {
    constexpr std::uint8_t kNotGranted = 1;
    constexpr std::uint8_t kUnknownRecipe = 4;
    std::vector<std::string> ids;
    for (const Datum& id : ItemsOf(body))
        ids.push_back(TextOf(id));
    if (equipment.Busy) return Binary(kNotGranted);
    for (const std::string& id : ids) {
        if (equipment.FindRecipe(id) == nullptr) return Binary(kUnknownRecipe);
    }
    std::erase_if(equipment.Model().Recipes, [&](const Recipe& recipe) {
        return ids.empty() || std::ranges::find(ids, recipe.Id) != ids.end();
    });
    equipment.Fire(equipment.Model().OwnEvents.RecipeChanged);
    return Binary(kAccepted);
}

Datum ListRecipes(Equipment& equipment, const Datum&) {
    Datum answer = List();
    for (const Recipe& recipe : equipment.Model().Recipes)
        answer.Items.push_back(Ascii(recipe.Id));
    return answer;
}

}  // namespace hexmire::program::answers
