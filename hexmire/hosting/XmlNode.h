#pragma once

#include <hexmire/platform/IXMLDocument.h>

#include <memory>

namespace hexmire {

/// The document element of a parsed libxml2 tree, an xmlDoc, whose entities the parser has already
/// replaced by their content. The nodes keep the tree alive.
[[nodiscard]] std::shared_ptr<const IXMLNode> XmlRoot(std::shared_ptr<void> document);

}  // namespace hexmire
