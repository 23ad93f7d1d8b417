#pragma once

#include <hexmire/platform/IXMLDocument.h>
#include <hexmire/trans/SECSDictionary.h>

#include <memory>
#include <vector>

/// Building templates from a loaded XML dictionary.
namespace hexmire::detail {

/// Appends one transaction built from a `Trans` element. A missing element or attribute or a value
/// that does not convert is reported and leaves what was built so far.
void CreateTransObject(SECSDictionary& dictionary, const std::shared_ptr<const IXMLNode>& node);

/// Builds one item below `parent`, with everything below it, from an `Item` element; any other node
/// is passed over.
void CreateItemNode(const SECSItemPtr& parent, const std::shared_ptr<const IXMLNode>& node);

/// Every `Trans` child of the document element, in document order; fault 91 when there is no
/// document element.
[[nodiscard]] std::vector<std::shared_ptr<const IXMLNode>> SelectTransactions(
    const IXMLDocument& document);

}  // namespace hexmire::detail
