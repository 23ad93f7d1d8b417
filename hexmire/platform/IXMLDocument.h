#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace hexmire {

/// One node of a loaded XML document, in document order. Texts are byte strings in ISO 8859-1; a
/// character above U+00FF reads as "?". A node keeps what it needs of its document alive: the walk
/// through one file goes on when an error handler loads the next into the same document.
class IXMLNode {
public:
    /// True for an element; false for text, white space, comments and anything else.
    [[nodiscard]] virtual bool IsElement() const = 0;
    /// Name of an element as written; "" for other nodes.
    [[nodiscard]] virtual std::string Name() const = 0;
    /// Value of an attribute; none when the element does not carry it (an empty value is a value).
    [[nodiscard]] virtual std::optional<std::string> Attribute(std::string_view name) const = 0;
    /// First child node of any kind; none when there is none.
    [[nodiscard]] virtual std::shared_ptr<const IXMLNode> FirstChild() const = 0;
    /// Next node of the same parent; none after the last.
    [[nodiscard]] virtual std::shared_ptr<const IXMLNode> NextSibling() const = 0;

    virtual ~IXMLNode() = default;

protected:
    IXMLNode() = default;
    IXMLNode(const IXMLNode&) = default;
    IXMLNode& operator=(const IXMLNode&) = default;
};

/// An XML document read from a file as a whole, validated against a DTD that it carries itself. No
/// network, no external entities, bounded entity growth.
class IXMLDocument {
public:
    /// Reads and parses the whole file. False when it could not be read or is not well-formed or
    /// not valid; ParseErrorCode() then tells why. A path is used as it stands, relative to the
    /// current directory.
    virtual bool Load(const std::string& path) = 0;
    /// The parser's code of the last failed Load; 0 after a successful one.
    [[nodiscard]] virtual std::int32_t ParseErrorCode() const = 0;
    /// The document element of the last successful Load; none before it.
    [[nodiscard]] virtual std::shared_ptr<const IXMLNode> DocumentElement() const = 0;

    virtual ~IXMLDocument() = default;

protected:
    IXMLDocument() = default;
    IXMLDocument(const IXMLDocument&) = default;
    IXMLDocument& operator=(const IXMLDocument&) = default;
};

}  // namespace hexmire
