#pragma once

#include <hexmire/core/SECSMessage.h>

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Tools for programs: the text and the bytes of a message, outside any transaction.
namespace hexmire {

/// The message as SML text, "S1F1 W" CR LF "." and so on, as the log shows it.
[[nodiscard]] std::string RenderSml(const SECSMessage& message, bool replyExpected);

/// The body bytes of a message (SEMI E5 item encoding of the root's first child); empty for a
/// message without body. Sets the message's Length, Raw and RawHex as sending it would. Values that
/// do not convert are reported as errors and leave their item short.
[[nodiscard]] std::vector<std::uint8_t> EncodeBody(SECSMessage& message);

/// A message (stream 0, function 1) whose tree holds the decoded body. Nothing but an empty root
/// for an empty body.
struct DecodedBody {
    SECSMessagePtr Message;
    bool Ok = false;  ///< false after an unknown format code
};
[[nodiscard]] DecodedBody DecodeBody(std::span<const std::uint8_t> bytes);

}  // namespace hexmire
