#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace hexmire::program {

/// An element of an XML file and the line that it begins in. Texts are in UTF-8, names as they
/// stand in the file, prefix included.
struct XmlElement {
    std::string Name;
    std::size_t Line = 0;
    std::vector<std::pair<std::string, std::string>> Attributes;
    std::vector<XmlElement> Children;

    /// None when the element does not carry it.
    [[nodiscard]] const std::string* Attribute(std::string_view name) const;
};

/// The document element, or where and why the file is not well-formed.
struct XmlTree {
    XmlElement Root;
    std::size_t ErrorLine = 0;  ///< 0: it is well-formed
    std::string Error;
};

/// Parses a file; nothing else is fetched. Throws Failure when it cannot be read.
[[nodiscard]] XmlTree ReadXmlTree(const std::string& path);

}  // namespace hexmire::program
