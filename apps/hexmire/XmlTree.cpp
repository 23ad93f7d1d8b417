#include "XmlTree.h"

#include "Failure.h"
#include "FileReader.h"
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlerror.h>

#include <algorithm>
#include <filesystem>
#include <memory>

namespace hexmire::program {

namespace {

std::string Text(const xmlChar* text) {
    return text == nullptr ? std::string() : reinterpret_cast<const char*>(text);
}

template <class Node>
std::string QualifiedName(const Node& node) {
    const bool hasPrefix = node.ns != nullptr && node.ns->prefix != nullptr;
    return hasPrefix ? Text(node.ns->prefix) + ':' + Text(node.name) : Text(node.name);
}

/// The parser nests elements 256 deep at most.
XmlElement Element(xmlNode& node) {  // NOLINT(misc-no-recursion)
    XmlElement element{.Name = QualifiedName(node),
                       .Line = static_cast<std::size_t>(std::max(1L, xmlGetLineNo(&node))),
                       .Attributes = {},
                       .Children = {}};
    for (xmlAttr* attribute = node.properties; attribute != nullptr; attribute = attribute->next) {
        const std::unique_ptr<xmlChar, decltype(xmlFree)> value(
            xmlNodeListGetString(node.doc, attribute->children, 1), xmlFree);
        element.Attributes.emplace_back(QualifiedName(*attribute), Text(value.get()));
    }
    for (xmlNode* child = node.children; child != nullptr; child = child->next) {
        if (child->type == XML_ELEMENT_NODE) element.Children.push_back(Element(*child));
    }
    return element;
}

std::string FileBytes(const std::string& path) {
    std::error_code error;
    if (!std::filesystem::exists(path, error)) throw Failure("no such dictionary file: " + path);
    return FileReader(path, "the dictionary " + path).ReadAll();
}

XmlTree Broken(const xmlError* error) {
    XmlTree tree{.Root = {}, .ErrorLine = 1, .Error = "the file is empty"};
    if (error == nullptr || error->message == nullptr) return tree;
    tree.ErrorLine = static_cast<std::size_t>(std::max(1, error->line));
    tree.Error = error->message;
    tree.Error.erase(tree.Error.find_last_not_of(" \r\n") + 1);
    std::replace(tree.Error.begin(), tree.Error.end(), '\n', ' ');
    return tree;
}

}  // namespace

const std::string* XmlElement::Attribute(std::string_view name) const {
    const auto found = std::find_if(
        Attributes.begin(), Attributes.end(), [&](const auto& one) { return one.first == name; });
    return found == Attributes.end() ? nullptr : &found->second;
}

XmlTree ReadXmlTree(const std::string& path) {
    constexpr int kOptions =
        XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_BIG_LINES;
    const std::string bytes = FileBytes(path);
    if (bytes.empty()) return Broken(nullptr);
    const std::unique_ptr<xmlParserCtxt, decltype(&xmlFreeParserCtxt)> parser(xmlNewParserCtxt(),
                                                                              &xmlFreeParserCtxt);
    if (parser == nullptr) throw Failure("out of memory");
    const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> document(
        xmlCtxtReadMemory(
            parser.get(), bytes.data(), static_cast<int>(bytes.size()), nullptr, nullptr, kOptions),
        &xmlFreeDoc);
    xmlNode* root = document == nullptr ? nullptr : xmlDocGetRootElement(document.get());
    if (root == nullptr) return Broken(xmlCtxtGetLastError(parser.get()));
    return {.Root = Element(*root), .ErrorLine = 0, .Error = {}};
}

}  // namespace hexmire::program
