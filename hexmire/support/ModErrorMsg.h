#pragma once

#include <cstdint>
#include <string>

/// The fixed texts of the system's own error codes.
namespace hexmire::ModErrorMsg {

/// The message of a code (1001..1133 object model and configuration, 2001..2017 loading,
/// transactions and reception); the empty string for any other code.
[[nodiscard]] std::string FormatErrorMsg(std::int32_t code);

}  // namespace hexmire::ModErrorMsg
