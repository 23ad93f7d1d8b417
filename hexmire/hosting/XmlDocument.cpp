#include <hexmire/hosting/XmlDocument.h>
#include <hexmire/hosting/XmlFile.h>
#include <hexmire/hosting/XmlParser.h>

#include <utility>

namespace hexmire {

XmlDocument::XmlDocument() = default;
XmlDocument::~XmlDocument() = default;

bool XmlDocument::Load(const std::string& path) {
    root_.reset();
    const XmlFile file = ReadXmlFile(path, kLargestFile);
    errorCode_ = file.ErrorCode;
    if (errorCode_ != 0) return false;
    ParsedXml parsed = ParseXml(file.Bytes);
    errorCode_ = parsed.ErrorCode;
    root_ = std::move(parsed.Root);
    return errorCode_ == 0;
}

}  // namespace hexmire
