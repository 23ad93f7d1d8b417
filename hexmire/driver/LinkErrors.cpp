#include <hexmire/driver/LinkErrors.h>
#include <hexmire/support/HexBytes.h>

#include <algorithm>
#include <array>
#include <utility>

namespace hexmire::link {

namespace {

using enum LinkError;

constexpr std::array<std::pair<LinkError, std::string_view>, 53> kTexts{{
    {LocalClose, ""},
    {T1, "T1 time-out, block incomplete"},
    {T2, "T2 time-out"},
    {T4, "T4 time-out, message incomplete"},
    {T6, "T6 time-out"},
    {T7, "T7 time-out, not selected"},
    {T8, "T8 time-out"},
    {WriteStalled, "Write stalled"},
    {RetriesExceeded, "Retry limit exceeded, message not sent"},
    {NoAck, "No ACK after block"},
    {Checksum, "Checksum wrong"},
    {BlockLength, "Bad block length"},
    {Babble, "Line babbles"},
    {UnknownDevice, "Unknown device or session ID"},
    {WrongDirection, "R-bit wrong"},
    {DuplicateBlock, "Duplicate block dropped"},
    {BlockOutOfSequence, "Block number out of sequence"},
    {NotAFirstBlock, "Not a valid first block"},
    {HeaderChanged, "Header changed inside a message"},
    {Interleaved, "Interleaved message"},
    {TooManyOpenMessages, "Too many open messages"},
    {MessageTooLong, "Message too long"},
    {SelectRefused, "Select refused by peer"},
    {SelectRefusedByUs, "Select.req refused"},
    {DeselectRefused, "Deselect refused by peer"},
    {RejectReceived, "Reject.req received"},
    {RejectSent, "Reject.req sent"},
    {Separated, "Separate.req received"},
    {Deselected, "Deselect.req received"},
    {BadLength, "Bad HSMS length"},
    {FrameTooLong, "HSMS frame too long"},
    {NoOpenTransaction, "Response without open transaction"},
    {NotSelected, "Send while not selected"},
    {ExtraConnection, "Extra connection refused"},
    {ConnectFailed, "Connect failed"},
    {ConnectTimedOut, "Connect timed out"},
    {ListenFailed, "Bind or listen failed"},
    {AcceptFailed, "Accept failed"},
    {PeerClosed, "Connection closed by peer"},
    {ConnectionLost, "Connection reset or I/O error"},
    {BadAddress, "Bad address"},
    {SelfConnect, "Connected to itself"},
    {SerialOpenFailed, "Serial port cannot be opened"},
    {SerialSetupFailed, "Serial port cannot be set up"},
    {SerialInUse, "Serial port in use"},
    {SerialLost, "Serial line lost"},
    {SettingOutOfRange, "Setting out of range"},
    {SendQueueFull, "Send queue full"},
    {ReceiveBacklog, "Receive backlog, reading stopped"},
    {SendAborted, "Queued message aborted by disconnect"},
    {TraceFailed, "Trace file cannot be written"},
    {RecipeFailed, "Recipe not stored"},
    {HostileBody, "Hostile body refused"},
}};

constexpr std::array kNeverLimited{
    RetriesExceeded, MessageTooLong, NotSelected, SendQueueFull, SendAborted, HostileBody};

}  // namespace

std::string_view LinkErrorText(LinkError code) noexcept {
    const auto* found = std::find_if(
        kTexts.begin(), kTexts.end(), [code](const auto& entry) { return entry.first == code; });
    return found == kTexts.end() ? "Internal failure" : found->second;
}

std::string ErrorText(LinkError code, std::string_view details) {
    std::string text(LinkErrorText(code));
    if (!details.empty()) text.append(": ").append(details);
    return text;
}

std::string ErrorText(LinkError code,
                      std::string_view details,
                      std::span<const std::uint8_t, 10> header) {
    std::string text = ErrorText(code, details);
    text += " hdr=";
    for (const std::uint8_t byte : header) {
        text += HexDigit(static_cast<unsigned>(byte) >> 4U);
        text += HexDigit(byte);
    }
    return text;
}

bool IsNeverLimited(LinkError code) noexcept {
    return std::find(kNeverLimited.begin(), kNeverLimited.end(), code) != kNeverLimited.end();
}

}  // namespace hexmire::link
