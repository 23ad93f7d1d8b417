#pragma once

#include "Failure.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace hexmire::program {

/// What a command was given to read, and how messages name it.
struct Input {
    std::string Name;
    std::string Text;
};

/// The words of a command line: nothing or "-" is the standard input, one word that is the name of
/// a file is that file, anything else is the text itself, its words one blank apart. Throws Failure
/// for a file that cannot be read.
[[nodiscard]] Input ReadInput(const std::vector<std::string>& words);

/// The bytes that a hex text says: two digits each, in any letter case, "0x" in front of a byte and
/// blanks, line ends, ":", "-" and "," between bytes being passed over. Throws UsageError with the
/// place of what is anything else.
[[nodiscard]] std::vector<std::uint8_t> ReadHex(const Input& input);

/// A text that is not to be had in ISO 8859-1, and the place within it.
class BadText : public UsageError {
public:
    BadText(const std::string& reason, std::size_t line, std::size_t column, bool isUtf8)
        : UsageError(reason), Line(line), Column(column), IsUtf8(isUtf8) {}

    std::size_t Line;    ///< from 1
    std::size_t Column;  ///< from 1, in bytes of ISO 8859-1
    bool IsUtf8;         ///< the character is one, though not of ISO 8859-1
};

/// The text in ISO 8859-1, from UTF-8. Throws BadText for a character that ISO 8859-1 does not
/// have, and for a byte that is no UTF-8.
[[nodiscard]] std::string Latin1Text(std::string_view utf8);

/// The same without a byte order mark in front. Throws UsageError with the place.
[[nodiscard]] std::string Latin1Text(const Input& input);

/// "name:line:column: ", for the character before which the text stands. Columns count bytes
/// of ISO 8859-1.
[[nodiscard]] std::string PlaceIn(const Input& input, std::size_t line, std::size_t column);

}  // namespace hexmire::program
