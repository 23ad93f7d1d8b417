#pragma once

#include <cstdint>
#include <string>
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

/// The text in ISO 8859-1, from UTF-8. Throws UsageError with the place of a character that
/// ISO 8859-1 does not have, and of a byte that is no UTF-8.
[[nodiscard]] std::string Latin1Text(const Input& input);

/// "name:line:column: ", for the character before which the text stands. Columns count bytes
/// of ISO 8859-1.
[[nodiscard]] std::string PlaceIn(const Input& input, std::size_t line, std::size_t column);

}  // namespace hexmire::program
