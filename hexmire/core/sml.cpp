#include <hexmire/core/detail/SECSMessageAccess.h>
#include <hexmire/sml.h>

namespace hexmire {

std::string RenderSml(const SECSMessage& message, bool replyExpected) {
    return detail::SECSMessageAccess::ToSML(message, replyExpected);
}

std::vector<std::uint8_t> EncodeBody(SECSMessage& message) {
    std::vector<std::uint8_t> bytes;
    detail::SECSMessageAccess::Build(message, bytes);
    return bytes;
}

Variant EncodedBody(SECSMessage& message) {
    detail::SECSMessageAccess::Build(message);
    return message.Length() == 0 ? Variant::Bytes({}) : message.Raw();
}

DecodedBody DecodeBody(std::span<const std::uint8_t> bytes) {
    DecodedBody decoded{New<SECSMessage>(), false};
    if (decoded.Message == nullptr) return decoded;
    decoded.Ok = bytes.empty() || detail::SECSMessageAccess::Decode(*decoded.Message, bytes);
    return decoded;
}

DecodedBody DecodeSharedBody(const Variant& bytes) {
    DecodedBody decoded{New<SECSMessage>(), false};
    if (decoded.Message == nullptr || bytes.Kind() != VariantKind::ByteArray) return decoded;
    decoded.Ok =
        bytes.ElementCount() == 0 || detail::SECSMessageAccess::Decode(*decoded.Message, bytes);
    return decoded;
}

}  // namespace hexmire
