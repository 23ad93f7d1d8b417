#pragma once

#include <hexmire/core/SECSMessage.h>

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace hexmire::detail {

/// Members of SECSMessage that only the library uses.
class SECSMessageAccess {
public:
    static void Length(SECSMessage& message, std::int32_t value) noexcept {
        message.length_ = value;
    }
    static void RawHex(SECSMessage& message, std::string text);
    /// Encodes the root's first child into `bytes` and sets Length, Raw and RawHex; an empty root
    /// gives Length 0 and leaves the other two.
    static void Build(SECSMessage& message, std::vector<std::uint8_t>& bytes);
    /// The same without a copy of the bytes: they are in Raw afterwards when Length is above 0.
    static void Build(SECSMessage& message);
    /// Sets RawHex and Raw and decodes the bytes into the tree under the root. False after an
    /// unknown format code.
    static bool Parse(SECSMessage& message, std::span<const std::uint8_t> bytes);
    /// The same without the line in the message log: for bytes that no link delivered.
    static bool Decode(SECSMessage& message, std::span<const std::uint8_t> bytes);
    /// The same with an array of Byte, whose memory Raw and long values share.
    static bool Decode(SECSMessage& message, const Variant& bytes);
    /// The message as SML text.
    static std::string ToSML(const SECSMessage& message, bool replyExpected);
    static const SiteRef& Site(const SECSMessage& message) noexcept { return message.site_; }
    static void CopyRawHex(SECSMessage& target, const SECSMessage& source);

private:
    static void TakeRawHex(SECSMessage& message, const Variant& bytes);
    static bool DecodeTree(SECSMessage& message, const Variant& bytes);
};

}  // namespace hexmire::detail
