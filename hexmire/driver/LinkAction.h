#pragma once

#include <hexmire/driver/ErrorLimiter.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace hexmire::link {

/// Timers that a link machine may ask for. There is one of each; starting one that runs restarts
/// it.
enum class TimerId : std::uint8_t {
    T1,              ///< SECS-I: next character of a block, or silence
    T2,              ///< SECS-I: answer of the peer's line
    T4,              ///< SECS-I: next block of a message
    LineCap,         ///< SECS-I: silence on a line that babbles
    T5,              ///< until the next connect or listen attempt
    T6,              ///< response to our open control request
    T7,              ///< until the link is selected
    T8,              ///< until the frame in progress goes on
    FrameCap,        ///< until the frame in progress is complete
    Linktest,        ///< quiet time until a Linktest.req is sent
    ConnectTimeout,  ///< one connect attempt
    WriteStall,      ///< progress of outgoing bytes
    Linger,          ///< last writes, then the peer's close, after a local close
    AcceptRetry,     ///< accepting again after a failed accept
    Crossing,        ///< a caller waits for the outcome of our own connect
    ErrorWindow,     ///< summary of errors that were left out
};
inline constexpr std::size_t kTimerCount = 16;

/// The ten header bytes of a message.
using HeaderBytes = std::array<std::uint8_t, 10>;

// What a machine asks of its shell. Plain values, comparable in tests; the shell performs them in
// their order. The Raise... actions are events for the control: the shell raises them in their
// order after the turn has settled, for an event handler may call anything back.

struct StartTimer {
    TimerId Id;
    std::chrono::milliseconds Delay;
    bool operator==(const StartTimer&) const = default;
};
/// Stopping a timer that does not run is a no-op.
struct StopTimer {
    TimerId Id;
    bool operator==(const StopTimer&) const = default;
};
/// Bind and listen; answered by OnListening or OnListenFailed. Callers are told by OnConnected.
struct Listen {
    std::string Address;
    std::uint16_t Port;
    bool operator==(const Listen&) const = default;
};
struct StopListening {
    bool operator==(const StopListening&) const = default;
};
/// Accept callers again after a failed accept.
struct ResumeAccepting {
    bool operator==(const ResumeAccepting&) const = default;
};
/// Connect, resolving a name first; answered by OnConnected or OnConnectFailed.
struct Connect {
    std::string RemoteAddress;
    std::uint16_t RemotePort;
    std::string LocalAddress;  ///< bound unless it is 0.0.0.0
    bool operator==(const Connect&) const = default;
};
/// Open and set up a serial port; answered by OnConnected or OnConnectFailed.
struct OpenSerial {
    std::string Device;
    std::int32_t BaudRate;
    bool operator==(const OpenSerial&) const = default;
};
/// Give up the connect attempt; a live connection stays.
struct StopConnecting {
    bool operator==(const StopConnecting&) const = default;
};
/// The caller just told by OnConnected is put aside, neither read nor closed. There is one at most.
struct HoldConnection {
    bool operator==(const HoldConnection&) const = default;
};
/// The caller put aside becomes the live connection.
struct AdoptHeld {
    bool operator==(const AdoptHeld&) const = default;
};
/// The caller put aside is closed without a byte read or written.
struct RefuseHeld {
    bool operator==(const RefuseHeld&) const = default;
};
/// The connection just told by OnConnected becomes the live one: start to read it. One that was
/// live before is closed.
struct AdoptConnection {
    bool operator==(const AdoptConnection&) const = default;
};
/// The connection just told by OnConnected is closed without a byte read or written.
struct RefuseConnection {
    bool operator==(const RefuseConnection&) const = default;
};
/// Close the live connection, or give up the connect attempt; nothing more is told of it.
struct CloseConnection {
    bool operator==(const CloseConnection&) const = default;
};
/// Nothing more will be sent on the live connection; go on reading.
struct ShutdownSend {
    bool operator==(const ShutdownSend&) const = default;
};
/// So many more bytes wait in the machine's output.
struct SendBytes {
    std::size_t Count;
    bool operator==(const SendBytes&) const = default;
};
struct PauseReading {
    bool operator==(const PauseReading&) const = default;
};
struct ResumeReading {
    bool operator==(const ResumeReading&) const = default;
};

struct RaiseConnect {
    bool operator==(const RaiseConnect&) const = default;
};
struct RaiseDisconnect {
    LinkError Code;
    std::string Text;
    bool operator==(const RaiseDisconnect&) const = default;
};
struct RaiseError {
    LinkError Code;
    std::string Text;
    bool operator==(const RaiseError&) const = default;
};
/// SecsMsgSend: a data message has been handed over whole. Bytes are what went out; Header is how
/// the control knows it.
struct RaiseSent {
    HeaderBytes Header;
    std::vector<std::uint8_t> Bytes;
    std::size_t BodyOffset;  ///< where the body starts in Bytes
    bool operator==(const RaiseSent&) const = default;
};
/// SecsBlockReceive: a block of SECS-I was accepted. Header and data.
struct RaiseBlock {
    std::vector<std::uint8_t> Bytes;
    bool operator==(const RaiseBlock&) const = default;
};
/// SecsMsgReceive, on HSMS after SecsBlockReceive of the whole message as one block. Counted by the
/// machine as waiting until the shell has told OnConsumed.
struct RaiseReceived {
    HeaderBytes Header;  ///< as on the wire, but for the system bytes that stand for others
    std::vector<std::uint8_t> Body;
    bool IsOneBlock = true;  ///< false: its blocks have been told by RaiseBlock
    bool operator==(const RaiseReceived&) const = default;
};

using Action = std::variant<StartTimer,
                            StopTimer,
                            Listen,
                            StopListening,
                            ResumeAccepting,
                            Connect,
                            OpenSerial,
                            StopConnecting,
                            HoldConnection,
                            AdoptHeld,
                            RefuseHeld,
                            AdoptConnection,
                            RefuseConnection,
                            CloseConnection,
                            ShutdownSend,
                            SendBytes,
                            PauseReading,
                            ResumeReading,
                            RaiseConnect,
                            RaiseDisconnect,
                            RaiseError,
                            RaiseSent,
                            RaiseBlock,
                            RaiseReceived>;

/// True for the Raise... actions.
[[nodiscard]] inline bool IsEvent(const Action& action) noexcept {
    return std::holds_alternative<RaiseConnect>(action) ||
           std::holds_alternative<RaiseDisconnect>(action) ||
           std::holds_alternative<RaiseError>(action) ||
           std::holds_alternative<RaiseSent>(action) ||
           std::holds_alternative<RaiseBlock>(action) ||
           std::holds_alternative<RaiseReceived>(action);
}

}  // namespace hexmire::link
