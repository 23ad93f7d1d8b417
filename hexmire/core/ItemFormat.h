#pragma once

#include <cstdint>

namespace hexmire {

/// Item format codes: the upper six bits of an item's format byte (SEMI E5, item header), in octal
/// as the standard prints them. JIS-8 (21) and two-byte characters (22) are not part of the set.
enum enmItemFormat : std::int32_t {
    FormatList = 000,     ///< list of items
    FormatBinary = 010,   ///< binary bytes
    FormatBoolean = 011,  ///< booleans, one byte each
    FormatAscii = 020,    ///< characters, one byte each
    FormatI8 = 030,       ///< signed 8-byte integers
    FormatI1 = 031,       ///< signed 1-byte integers
    FormatI2 = 032,       ///< signed 2-byte integers
    FormatI4 = 034,       ///< signed 4-byte integers
    FormatF8 = 040,       ///< IEEE 754 double
    FormatF4 = 044,       ///< IEEE 754 single
    FormatU8 = 050,       ///< unsigned 8-byte integers
    FormatU1 = 051,       ///< unsigned 1-byte integers
    FormatU2 = 052,       ///< unsigned 2-byte integers
    FormatU4 = 054,       ///< unsigned 4-byte integers
    FormatVar = 077,      ///< any format: a template's item whose format is not fixed
};

}  // namespace hexmire
