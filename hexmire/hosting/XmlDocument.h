#pragma once

#include <hexmire/platform/IXMLDocument.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace hexmire {

/// An XML document on libxml2. Any encoding that the file declares and the system knows is read;
/// texts come out in ISO 8859-1, "?" for a character above U+00FF.
///
/// Files are not trusted. Nothing is fetched: an entity or DTD that lies outside the file reads as
/// empty. The growth of a file's own entities is limited, elements nest 256 deep at most, and one
/// value holds 10 million bytes at most; a file beyond that fails to load. Only regular files are
/// read. Nothing is printed, and the settings of a host that uses libxml2 itself stay as they are.
///
/// A file that declares elements or attributes inside itself is validated against them; one that
/// refers to a DTD elsewhere, or carries nothing but entities, is not validated. Names are those
/// written in the file, prefix included.
///
/// Single-threaded; a node keeps the document that it came from alive.
class XmlDocument final : public IXMLDocument {
public:
    /// Largest file that is read: room for a hundred thousand transactions, and a bound on what a
    /// wrong path can cost.
    static constexpr std::size_t kLargestFile = std::size_t{64} * 1024 * 1024;

    XmlDocument();
    XmlDocument(const XmlDocument&) = delete;
    XmlDocument& operator=(const XmlDocument&) = delete;
    ~XmlDocument() override;

    /// Forgets what was loaded before, whether or not the file can be read.
    bool Load(const std::string& path) override;
    /// libxml2's code (xmlParserErrors): of input and output for a file that cannot be read.
    [[nodiscard]] std::int32_t ParseErrorCode() const override { return errorCode_; }
    [[nodiscard]] std::shared_ptr<const IXMLNode> DocumentElement() const override { return root_; }

private:
    std::int32_t errorCode_ = 0;
    std::shared_ptr<const IXMLNode> root_;
};

}  // namespace hexmire
