#pragma once

#include <nlohmann/json.hpp>

#include <string>
#include <string_view>

namespace hexmire::program {

/// The JSON of a model file. Throws UsageError, which begins with the name, for what is no JSON,
/// for a member that stands twice in its object, and beyond any depth that a model has.
[[nodiscard]] nlohmann::ordered_json ParsedJson(std::string_view json, const std::string& name);

}  // namespace hexmire::program
