#include <hexmire/hosting/Utf8.h>
#include <hexmire/hosting/XmlNode.h>

#include <libxml/tree.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace hexmire {

namespace {

std::string_view View(const xmlChar* text) {
    return text == nullptr ? std::string_view() : reinterpret_cast<const char*>(text);
}

/// The name as written, prefix included.
std::string WrittenName(const xmlNs* space, const xmlChar* local) {
    std::string name = Latin1FromUtf8(View(local));
    if (space != nullptr && space->prefix != nullptr)
        name = Latin1FromUtf8(View(space->prefix)) + ':' + name;
    return name;
}

std::string ValueOf(const xmlAttr& attribute) {
    std::string value;
    for (const xmlNode* part = attribute.children; part != nullptr; part = part->next)
        value += Latin1FromUtf8(View(part->content));
    return value;
}

class XmlNode final : public IXMLNode {
public:
    XmlNode(std::shared_ptr<void> document, const xmlNode* node)
        : document_(std::move(document)), node_(node) {}

    [[nodiscard]] bool IsElement() const override { return node_->type == XML_ELEMENT_NODE; }
    [[nodiscard]] std::string Name() const override;
    [[nodiscard]] std::optional<std::string> Attribute(std::string_view name) const override;
    [[nodiscard]] std::shared_ptr<const IXMLNode> FirstChild() const override;
    [[nodiscard]] std::shared_ptr<const IXMLNode> NextSibling() const override;

private:
    [[nodiscard]] std::shared_ptr<const IXMLNode> Wrap(const xmlNode* node) const;

    std::shared_ptr<void> document_;
    const xmlNode* node_;
};

std::string XmlNode::Name() const {
    return IsElement() ? WrittenName(node_->ns, node_->name) : std::string();
}

std::optional<std::string> XmlNode::Attribute(std::string_view name) const {
    if (!IsElement()) return std::nullopt;
    for (const xmlAttr* attribute = node_->properties; attribute != nullptr;
         attribute = attribute->next) {
        if (WrittenName(attribute->ns, attribute->name) == name) return ValueOf(*attribute);
    }
    return std::nullopt;
}

std::shared_ptr<const IXMLNode> XmlNode::FirstChild() const {
    // The children of a reference that could not be replaced belong to its declaration.
    return node_->type == XML_ENTITY_REF_NODE ? nullptr : Wrap(node_->children);
}

std::shared_ptr<const IXMLNode> XmlNode::NextSibling() const { return Wrap(node_->next); }

std::shared_ptr<const IXMLNode> XmlNode::Wrap(const xmlNode* node) const {
    return node == nullptr ? nullptr : std::make_shared<XmlNode>(document_, node);
}

}  // namespace

std::shared_ptr<const IXMLNode> XmlRoot(std::shared_ptr<void> document) {
    const xmlNode* root = xmlDocGetRootElement(static_cast<xmlDoc*>(document.get()));
    return root == nullptr ? nullptr : std::make_shared<XmlNode>(std::move(document), root);
}

}  // namespace hexmire
