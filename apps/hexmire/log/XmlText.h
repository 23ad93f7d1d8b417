#pragma once

#include <string>
#include <string_view>

namespace hexmire::program {

/// Text as it stands in XML: markup escaped, what is no character of XML replaced by "?".
[[nodiscard]] std::string XmlText(std::string_view utf8);

}  // namespace hexmire::program
