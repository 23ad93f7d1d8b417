#pragma once

#include <cstdint>
#include <string>

namespace hexmire::program {

/// What is wrong with the value of an item of a dictionary file, as the loader reads it; empty when
/// the value is taken over as it stands. The text is in UTF-8.
[[nodiscard]] std::string ValueProblem(std::int32_t format, bool isArray, const std::string& value);

}  // namespace hexmire::program
