#pragma once

#include <hexmire/hexmire.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace hexmire::program {

/// A property of the control that scripts may read and set.
struct ControlProperty {
    std::string Name;
    std::string Values;  ///< what may be set, for people
    std::function<std::string(Hexmire& control)> Get;
    /// Reads a value, in ISO 8859-1; what it gives sets that value. Throws BadCommand for what is
    /// no value of the property's kind; the control itself refuses one beyond its limits.
    std::function<std::function<void(Hexmire& control)>(const std::string& value)> Read;
};

/// In alphabetical order. The role and the dictionary belong to the command line.
[[nodiscard]] const std::vector<ControlProperty>& ControlProperties();

/// Letter case does not count. None for an unknown name.
[[nodiscard]] const ControlProperty* FindControlProperty(std::string_view name);

}  // namespace hexmire::program
