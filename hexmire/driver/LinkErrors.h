#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace hexmire::link {

/// Codes of the driver's `Error` and `Disconnect` events. Codes that are absent belong to other
/// link protocols.
enum class LinkError : std::int32_t {
    LocalClose = 0,              ///< closed by local request; `Disconnect` only, with an empty text
    T1 = 3001,                   ///< SECS-I: a block stopped arriving
    T2 = 3002,                   ///< SECS-I: no EOT, no ACK or no length byte
    T4 = 3004,                   ///< SECS-I: the next block of a message did not come
    T6 = 3006,                   ///< no response to our control request
    T7 = 3007,                   ///< not selected in time
    T8 = 3008,                   ///< a frame stopped arriving, or took too long as a whole
    WriteStalled = 3009,         ///< outgoing bytes made no progress
    RetriesExceeded = 3010,      ///< SECS-I: a message was given up after the retries of a block
    NoAck = 3011,                ///< SECS-I: NAK, or another byte, instead of ACK
    Checksum = 3012,             ///< SECS-I: checksum wrong
    BlockLength = 3013,          ///< SECS-I: length byte outside 10 to 254
    Babble = 3014,               ///< SECS-I: the line never falls silent
    UnknownDevice = 3020,        ///< data for a session or device ID that is not ours
    WrongDirection = 3021,       ///< SECS-I: R-bit of our own direction
    DuplicateBlock = 3022,       ///< SECS-I: a block came twice and was dropped
    BlockOutOfSequence = 3023,   ///< SECS-I: not the block number that follows
    NotAFirstBlock = 3024,       ///< SECS-I: a block of no open message, and not the first of one
    HeaderChanged = 3025,        ///< SECS-I: the header changed inside a message
    Interleaved = 3026,          ///< SECS-I: another message began inside a message
    TooManyOpenMessages = 3028,  ///< SECS-I: the oldest unfinished message was given up
    MessageTooLong = 3029,       ///< message longer than the limit
    SelectRefused = 3030,        ///< the peer answered our Select.req with a bad status
    SelectRefusedByUs = 3031,    ///< we answered a Select.req with a status other than 0
    DeselectRefused = 3032,      ///< the peer answered our Deselect.req with a bad status
    RejectReceived = 3033,       ///< Reject.req from the peer
    RejectSent = 3034,           ///< Reject.req from us
    Separated = 3035,            ///< Separate.req from the peer
    Deselected = 3036,           ///< Deselect.req from the peer
    BadLength = 3037,            ///< length below 10, or a control frame with a body
    FrameTooLong = 3038,         ///< frame longer than the limit
    NoOpenTransaction = 3039,    ///< control response that answers nothing
    NotSelected = 3040,          ///< send request while there is no selected link
    ExtraConnection = 3041,      ///< a caller was refused
    ConnectFailed = 3050,        ///< connect attempt failed
    ConnectTimedOut = 3051,      ///< connect attempt took too long
    ListenFailed = 3052,         ///< bind or listen failed
    AcceptFailed = 3053,         ///< accept failed
    PeerClosed = 3054,           ///< the peer closed the connection
    ConnectionLost = 3055,       ///< connection reset or another I/O error
    BadAddress = 3056,           ///< address or port that can never work
    SelfConnect = 3057,          ///< the connection led back to this very socket
    SerialOpenFailed = 3060,     ///< serial port cannot be opened
    SerialSetupFailed = 3061,    ///< serial port takes no setting of ours
    SerialInUse = 3062,          ///< serial port belongs to somebody else
    SerialLost = 3063,           ///< serial port is gone
    SettingOutOfRange = 3070,    ///< a setting outside its range
    SendQueueFull = 3071,        ///< message refused, too many are waiting to be written
    ReceiveBacklog = 3072,       ///< reading has stopped until the control has caught up
    SendAborted = 3073,          ///< queued message that never went out
    TraceFailed = 3080,          ///< trace file cannot be written; traffic goes on
    RecipeFailed = 3081,         ///< process program not stored; its message goes on
    HostileBody = 3090,          ///< received message dropped, its body would only burn the host
    Internal = 3099,             ///< a failure inside the driver, or a call that makes no sense
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
