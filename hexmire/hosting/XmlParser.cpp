#include <hexmire/hosting/XmlNode.h>
#include <hexmire/hosting/XmlParser.h>

#include <libxml/SAX2.h>
#include <libxml/parser.h>
#include <libxml/valid.h>
#include <libxml/xmlerror.h>

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
    const std::unique_ptr<xmlParserCtxt, FreeContext> context(xmlNewParserCtxt());
    if (context == nullptr) return {.ErrorCode = XML_ERR_NO_MEMORY, .Root = nullptr};
    context->sax->entityDecl = &DeclareEntity;
    xmlDoc* tree = xmlCtxtReadMemory(context.get(),
                                     bytes.data(),
                                     static_cast<int>(bytes.size()),
                                     nullptr,
                                     nullptr,
                                     XML_PARSE_NONET | XML_PARSE_NOENT | XML_PARSE_COMPACT);
    if (tree == nullptr)
        return {.ErrorCode = errors.CodeOr(XML_ERR_INTERNAL_ERROR), .Root = nullptr};

    std::shared_ptr<void> document(tree, [](xmlDoc* ended) { xmlFreeDoc(ended); });
    if (CarriesWholeDtd(*tree) && !IsValid(tree))
        return {.ErrorCode = errors.CodeOr(XML_ERR_INTERNAL_ERROR), .Root = nullptr};
    return {.ErrorCode = 0, .Root = XmlRoot(std::move(document))};
}

}  // namespace hexmire
