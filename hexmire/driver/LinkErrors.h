#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace hexmire::link {

/// Codes of the driver's `Error` and `Disconnect` events. Codes that are absent belong to other
/// link protocols.
enum class LinkError : std::int32_t {
    LocalClose = 0,            ///< closed by local request; `Disconnect` only, with an empty text
    T6 = 3006,                 ///< no response to our control request
    T7 = 3007,                 ///< not selected in time
    T8 = 3008,                 ///< a frame stopped arriving, or took too long as a whole
    WriteStalled = 3009,       ///< outgoing bytes made no progress
    UnknownDevice = 3020,      ///< data for a session or device ID that is not ours
    MessageTooLong = 3029,     ///< message to send is longer than the limit
    SelectRefused = 3030,      ///< the peer answered our Select.req with a bad status
    SelectRefusedByUs = 3031,  ///< we answered a Select.req with a status other than 0
    RejectReceived = 3033,     ///< Reject.req from the peer
    RejectSent = 3034,         ///< Reject.req from us
    Separated = 3035,          ///< Separate.req from the peer
    Deselected = 3036,         ///< Deselect.req from the peer
    BadLength = 3037,          ///< length below 10, or a control frame with a body
    FrameTooLong = 3038,       ///< frame longer than the limit
    NoOpenTransaction = 3039,  ///< control response that answers nothing
    NotSelected = 3040,        ///< send request while there is no selected link
    ExtraConnection = 3041,    ///< a caller was refused
    ConnectFailed = 3050,      ///< connect attempt failed
    ConnectTimedOut = 3051,    ///< connect attempt took too long
    ListenFailed = 3052,       ///< bind or listen failed
    AcceptFailed = 3053,       ///< accept failed
    PeerClosed = 3054,         ///< the peer closed the connection
    ConnectionLost = 3055,     ///< connection reset or another I/O error
    BadAddress = 3056,         ///< address or port that can never work
    SelfConnect = 3057,        ///< the connection led back to this very socket
    SettingOutOfRange =
        3070,               ///< a setting outside its range, or a port type that is not available
    SendQueueFull = 3071,   ///< message refused, too many are waiting to be written
    ReceiveBacklog = 3072,  ///< reading has stopped until the control has caught up
    SendAborted = 3073,     ///< queued message that never went out
    HostileBody = 3090,     ///< received message dropped, its body would only burn the host
    Internal = 3099,        ///< a failure inside the driver, or a call that makes no sense
};

/// The short text of a code; "" for LocalClose.
[[nodiscard]] std::string_view LinkErrorText(LinkError code) noexcept;

/// "short text", or "short text: details".
[[nodiscard]] std::string ErrorText(LinkError code, std::string_view details = {});

/// The same with the ten header bytes of the message concerned as last token, " hdr=" and 20
/// digits.
[[nodiscard]] std::string ErrorText(LinkError code,
                                    std::string_view details,
                                    std::span<const std::uint8_t, 10> header);

/// True for codes that tell of one lost message each: those are never left out.
[[nodiscard]] bool IsNeverLimited(LinkError code) noexcept;

}  // namespace hexmire::link
