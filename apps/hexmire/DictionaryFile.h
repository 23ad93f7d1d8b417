#pragma once

#include <string>

namespace hexmire::program {

/// The dictionary that was asked for, or the default one: Default.xml next to the program, else
/// that of the source tree it was built from, else that of the current directory. Throws Failure
/// when there is none.
[[nodiscard]] std::string FindDictionary(const std::string& asked);

}  // namespace hexmire::program
