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

/// The same without a copy: an array of Byte that shares the memory of the message's Raw.
[[nodiscard]] Variant EncodedBody(SECSMessage& message);

/// A message (stream 0, function 1) whose tree holds the decoded body. Nothing but an empty root
/// for an empty body.
struct DecodedBody {
    SECSMessagePtr Message;  ///< none without memory for it
    bool Ok = false;         ///< false after an unknown format code, and without a message
};
[[nodiscard]] DecodedBody DecodeBody(std::span<const std::uint8_t> bytes);

/// The same without a copy: the message's Raw, and values that are at least half of the body, share
/// the memory of an array of Byte. Any other value is no body: nothing but an empty root, not Ok.
[[nodiscard]] DecodedBody DecodeSharedBody(const Variant& bytes);

/// What a text said, or where and why it says nothing.
struct ParsedSml {
    SECSMessagePtr Message;      ///< none after an error
    bool ReplyExpected = false;  ///< the header's W
    std::string Name;            ///< what stands in front of the header, "name: S1F1"
    std::int32_t Line = 1;       ///< place of the error, 1-based; every byte is a column
    std::int32_t Column = 1;
    /// "expected ..., found ..."; empty on success.
    std::string Error;
    /// True after an error that more text at the end could put right: the message is cut short.
    bool IsIncomplete = false;
};

/// Reads one message: what RenderSml writes, and the dialects that docs/sml.md describes. Values
/// have the kinds that decoding gives. A number that its format cannot hold, a count that is wrong
/// and anything behind the closing "." but blanks and comments are errors; errors are told in the
/// result only, no event is raised. Lists nest to any depth.
///
/// RenderSml does not mark quotes and line ends inside a text. They are read back as they were as
/// long as the whole message stands as it was rendered, CR LF included.
[[nodiscard]] ParsedSml ParseSml(std::string_view text) noexcept;

/// Reads messages one behind the other up to the end of the text. After an error, which is the
/// last element, nothing more is read. No element for a text without any message.
[[nodiscard]] std::vector<ParsedSml> ParseSmlMessages(std::string_view text);

}  // namespace hexmire
