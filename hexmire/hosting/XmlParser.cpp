#include <hexmire/hosting/XmlNode.h>
#include <hexmire/hosting/XmlParser.h>

#include <libxml/SAX2.h>
#include <libxml/parser.h>
#include <libxml/valid.h>
#include <libxml/xmlerror.h>

#include <cstddef>
#include <limits>

namespace hexmire {

namespace {

/// Keeps the first error of the calling thread's libxml2 while it lives, and the library from
/// printing any; then puts the host's own error handler back.
class ErrorCollector {
public:
    ErrorCollector() : oldHandler_(xmlStructuredError), oldContext_(xmlStructuredErrorContext) {
        xmlSetStructuredErrorFunc(this, &ErrorCollector::OnError);
    }
    ErrorCollector(const ErrorCollector&) = delete;
    ErrorCollector& operator=(const ErrorCollector&) = delete;
    ~ErrorCollector() { xmlSetStructuredErrorFunc(oldContext_, oldHandler_); }

    /// Code of the first error, or `otherwise` when the library told none.
    [[nodiscard]] std::int32_t CodeOr(std::int32_t otherwise) const {
        return code_ != 0 ? code_ : otherwise;
    }

private:
    static void OnError(void* self, xmlErrorPtr error) {
        auto& code = static_cast<ErrorCollector*>(self)->code_;
        if (code == 0 && error != nullptr && error->level >= XML_ERR_ERROR) code = error->code;
    }

    xmlStructuredErrorFunc oldHandler_;
    void* oldContext_;
    std::int32_t code_ = 0;
};

struct FreeContext {
    void operator()(xmlParserCtxt* context) const noexcept { xmlFreeParserCtxt(context); }
};

struct FreeValidation {
    void operator()(xmlValidCtxt* context) const noexcept { xmlFreeValidCtxt(context); }
};

/// What the attributes of a file may amount to, and whether they did not. libxml2 limits how much
/// entities grow in content only: in attributes a file could still ask for any amount of memory.
struct AttributeBudget {
    std::size_t Left = 0;
    bool IsSpent = false;
};

/// Three bytes of UTF-8 for each byte of the file, whatever its encoding, and what entities add.
std::size_t AttributeLimit(const std::string& bytes) {
    constexpr std::size_t kEntityGrowth = std::size_t{16} * 1024 * 1024;
    return 3 * bytes.size() + kEntityGrowth;
}

void StartElement(void* context,
                  const xmlChar* name,
                  const xmlChar* prefix,
                  const xmlChar* uri,
                  int namespaceCount,
                  const xmlChar** namespaces,
                  int attributeCount,
                  int defaultedCount,
                  const xmlChar** attributes) {
    auto* parser = static_cast<xmlParserCtxt*>(context);
    auto& budget = *static_cast<AttributeBudget*>(parser->_private);
    for (int i = 0; i < attributeCount; ++i) {
        constexpr int kFields = 5;  // local name, prefix, URI, begin and end of the value
        const auto size =
            static_cast<std::size_t>(attributes[kFields * i + 4] - attributes[kFields * i + 3]);
        if (size > budget.Left) {
            budget.IsSpent = true;
            xmlStopParser(parser);
            return;
        }
        budget.Left -= size;
    }
    xmlSAX2StartElementNs(context,
                          name,
                          prefix,
                          uri,
                          namespaceCount,
                          namespaces,
                          attributeCount,
                          defaultedCount,
                          attributes);
}

/// An entity that lies outside the file is declared as an empty one inside it, so that no path
/// through the parser leads to a file or an address.
void DeclareEntity(void* context,
                   const xmlChar* name,
                   int type,
                   const xmlChar* publicId,
                   const xmlChar* systemId,
                   xmlChar* content) {
    static xmlChar empty[] = {0};
    switch (type) {
        case XML_EXTERNAL_GENERAL_PARSED_ENTITY:
            xmlSAX2EntityDecl(context, name, XML_INTERNAL_GENERAL_ENTITY, nullptr, nullptr, empty);
            break;
        case XML_EXTERNAL_PARAMETER_ENTITY:
            xmlSAX2EntityDecl(
                context, name, XML_INTERNAL_PARAMETER_ENTITY, nullptr, nullptr, empty);
            break;
        default:
            xmlSAX2EntityDecl(context, name, type, publicId, systemId, content);
    }
}

void ReadNoExternalSubset(void*, const xmlChar*, const xmlChar*, const xmlChar*) {}

/// A NUL byte ends the text for the parser; whatever stands behind it was not looked at.
bool ReadToTheEnd(const xmlParserCtxt& parser) {
    return parser.input == nullptr || parser.input->cur == parser.input->end;
}

/// True when the file itself declares elements or attributes and refers to no DTD elsewhere, whose
/// declarations would be missing.
bool CarriesWholeDtd(const xmlDoc& document) {
    const xmlDtd* dtd = document.intSubset;
    if (dtd == nullptr || dtd->SystemID != nullptr || dtd->ExternalID != nullptr) return false;
    return dtd->elements != nullptr || dtd->attributes != nullptr;
}

bool IsValid(xmlDoc* document) {
    const std::unique_ptr<xmlValidCtxt, FreeValidation> validation(xmlNewValidCtxt());
    return validation != nullptr && xmlValidateDocument(validation.get(), document) == 1;
}

std::shared_ptr<xmlDoc> Parse(xmlParserCtxt& parser, const std::string& bytes) {
    constexpr int kOptions =
        XML_PARSE_NONET | XML_PARSE_NOENT | XML_PARSE_DTDATTR | XML_PARSE_COMPACT;
    xmlDoc* tree = xmlCtxtReadMemory(
        &parser, bytes.data(), static_cast<int>(bytes.size()), nullptr, nullptr, kOptions);
    if (tree == nullptr) return nullptr;
    return {tree, [](xmlDoc* ended) { xmlFreeDoc(ended); }};
}

void PrepareLibrary() {
    static const bool kReady = (xmlInitParser(), true);
    static_cast<void>(kReady);
}

}  // namespace

ParsedXml ParseXml(const std::string& bytes) {
    PrepareLibrary();
    if (bytes.empty()) return {.ErrorCode = XML_ERR_DOCUMENT_EMPTY, .Root = nullptr};
    if (bytes.size() > static_cast<std::size_t>(std::numeric_limits<int>::max()))
        return {.ErrorCode = XML_IO_EFBIG, .Root = nullptr};

    const ErrorCollector errors;
    const std::unique_ptr<xmlParserCtxt, FreeContext> parser(xmlNewParserCtxt());
    if (parser == nullptr) return {.ErrorCode = XML_ERR_NO_MEMORY, .Root = nullptr};
    AttributeBudget budget{.Left = AttributeLimit(bytes)};
    parser->_private = &budget;
    parser->sax->entityDecl = &DeclareEntity;
    parser->sax->externalSubset = &ReadNoExternalSubset;
    parser->sax->startElementNs = &StartElement;

    const std::shared_ptr<xmlDoc> tree = Parse(*parser, bytes);
    if (budget.IsSpent) return {.ErrorCode = XML_ERR_ENTITY_LOOP, .Root = nullptr};
    if (tree == nullptr)
        return {.ErrorCode = errors.CodeOr(XML_ERR_INTERNAL_ERROR), .Root = nullptr};
    if (!ReadToTheEnd(*parser)) return {.ErrorCode = XML_ERR_DOCUMENT_END, .Root = nullptr};
    if (CarriesWholeDtd(*tree) && !IsValid(tree.get()))
        return {.ErrorCode = errors.CodeOr(XML_ERR_INTERNAL_ERROR), .Root = nullptr};
    return {.ErrorCode = 0, .Root = XmlRoot(tree)};
}

}  // namespace hexmire
