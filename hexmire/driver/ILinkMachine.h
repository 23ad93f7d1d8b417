#pragma once

#include <hexmire/driver/LinkAction.h>
#include <hexmire/driver/LinkSettings.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace hexmire::link {

/// Both ends of a new connection, as numeric "address" texts and ports; of a serial port its name
/// as RemoteAddress.
struct Endpoints {
    std::string LocalAddress;
    std::uint16_t LocalPort = 0;
    std::string RemoteAddress;
    std::uint16_t RemotePort = 0;
    bool IsCaller = false;  ///< the peer has opened it

    bool operator==(const Endpoints&) const = default;
};

/// An operation of the system that failed: its error number and words.
struct SystemFailure {
    int Number = 0;
    std::string Text;
    LinkError Code = LinkError::ConnectFailed;  ///< what a failed OpenSerial is told as
    bool IsPermanent = false;                   ///< trying again cannot help: no such device

    bool operator==(const SystemFailure&) const = default;
};

/// "words (number)".
[[nodiscard]] inline std::string FailureText(const SystemFailure& failure) {
    return failure.Text + " (" + std::to_string(failure.Number) + ")";
}

/// A link protocol without I/O: bytes, expired timers and commands in, actions out. It holds no
/// socket, no thread and no clock; every input brings the time of the loop's turn.
///
/// The shell calls one input, then performs everything TakeActions gives, writes what Output
/// offers, and raises the events last. Inputs about a connection that is closed are not given any
/// more.
class ILinkMachine {
public:
    // --- commands of the control -----------------------------------------------------------------
    virtual void Open(TimePoint now) = 0;
    virtual void Close(TimePoint now) = 0;
    /// True from a successful Open until Close or until the connection has ended.
    [[nodiscard]] virtual bool IsOpen() const = 0;
    /// True when the port is closed and nothing is left of its last connection.
    [[nodiscard]] virtual bool IsOver() const = 0;
    /// When the last attempt or connection ended, T5 counting from there; a machine that takes over
    /// from another one is told it before Open.
    [[nodiscard]] virtual std::optional<TimePoint> LastEnd() const = 0;
    virtual void LastEnd(std::optional<TimePoint> end) = 0;
    /// New settings. While the port is open, a set that could never work raises its Error and
    /// leaves the old ones in force.
    virtual void Configure(const LinkSettings& settings, TimePoint now) = 0;
    /// One message: 10 header bytes as the control builds them, and the body.
    virtual void Send(std::span<const std::uint8_t> header,
                      std::span<const std::uint8_t> body,
                      TimePoint now) = 0;
    /// A failure of the shell itself, or a call that it refuses: told like the errors of the link.
    virtual void Report(LinkError code, std::string text, TimePoint now) = 0;

    // --- what the shell has seen -----------------------------------------------------------------
    virtual void OnListening(TimePoint now) = 0;
    virtual void OnListenFailed(const SystemFailure& failure, TimePoint now) = 0;
    virtual void OnAcceptFailed(const SystemFailure& failure, TimePoint now) = 0;
    /// A caller, or our own connect that came through. Answered by AdoptConnection,
    /// RefuseConnection or, for our own connect, CloseConnection.
    virtual void OnConnected(const Endpoints& endpoints, TimePoint now) = 0;
    virtual void OnConnectFailed(const SystemFailure& failure, TimePoint now) = 0;
    virtual void OnBytes(std::span<const std::uint8_t> bytes, TimePoint now) = 0;
    /// The peer has closed its side.
    virtual void OnClosed(TimePoint now) = 0;
    /// Reset or any other I/O error.
    virtual void OnLost(const SystemFailure& failure, TimePoint now) = 0;
    /// After each attempt to write: the number of bytes that the system took, which may be 0.
    virtual void OnWritten(std::size_t count, TimePoint now) = 0;
    virtual void OnTimer(TimerId id, TimePoint now) = 0;
    /// So many received messages have been handed to the control.
    virtual void OnConsumed(std::size_t count, TimePoint now) = 0;

    // --- what comes out --------------------------------------------------------------------------
    /// Swaps the actions since the last call, oldest first, into `into`, which loses its content.
    virtual void TakeActions(std::vector<Action>& into) = 0;
    /// Fills `views` with the next outgoing bytes, in order; returns how many views were filled.
    /// What they show stays where it is until it is told by OnWritten or the connection is closed.
    virtual std::size_t Output(std::span<std::span<const std::uint8_t>> views) = 0;
    [[nodiscard]] virtual bool HasOutput() const = 0;

    virtual ~ILinkMachine() = default;

protected:
    ILinkMachine() = default;
    ILinkMachine(const ILinkMachine&) = default;
    ILinkMachine& operator=(const ILinkMachine&) = default;
};

}  // namespace hexmire::link
