#pragma once

#include <hexmire/platform/IXMLDocument.h>

#include <cstdint>
#include <memory>
#include <string>

namespace hexmire {

/// What parsing gave: the document element, or libxml2's code of the failure and none.
struct ParsedXml {
    std::int32_t ErrorCode = 0;
    std::shared_ptr<const IXMLNode> Root;
};

/// Parses a whole file and validates it against the declarations that it carries itself. Fetches
/// nothing, prints nothing.
[[nodiscard]] ParsedXml ParseXml(const std::string& bytes);

}  // namespace hexmire
