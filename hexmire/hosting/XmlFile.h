#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace hexmire {

/// What reading a file for the parser gave: its bytes, or libxml2's code of the failure.
struct XmlFile {
    std::int32_t ErrorCode = 0;
    std::string Bytes;
};

/// Reads a whole regular file of at most `limit` bytes. The parser is not given the path: it would
/// take some for addresses, unpack compressed files, and wait on a named pipe.
[[nodiscard]] XmlFile ReadXmlFile(const std::string& path, std::size_t limit);

}  // namespace hexmire
