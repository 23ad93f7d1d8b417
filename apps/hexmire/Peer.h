#pragma once

#include <hexmire/hexmire.h>

#include "EventOutput.h"
#include "LinkOptions.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <string>
#include <utility>

namespace hexmire::program {

/// One side of a link: a control, its events shown as they come, and what a script asks about them.
/// Texts are in ISO 8859-1.
class Peer {
public:
    /// The loop and the output outlive the peer.
    Peer(EventLoop& loop, EventOutput& output, const LinkOptions& options, Role role);
    /// The same in surroundings that `adapt` has changed.
    Peer(EventLoop& loop,
         EventOutput& output,
         const LinkOptions& options,
         Role role,
         const std::function<void(Platform& platform)>& adapt);
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;

    [[nodiscard]] Hexmire& Control() noexcept { return control_; }

    /// Loads the dictionary file; throws Failure when it cannot be parsed.
    void LoadDictionary(const std::string& path);

    /// Between the control's Connect and Disconnect.
    [[nodiscard]] bool IsConnected() const noexcept { return connected_; }

    /// True while messages can go out: connected, and the port was not closed meanwhile.
    [[nodiscard]] bool CanSend() { return connected_ && control_.PortOpened(); }

    /// Opens the port unless it is open, and waits for the connection. False when the time has
    /// passed, the port has closed again, or `givenUp` holds; LastError then tells why, if there
    /// was an error.
    bool Open(const std::function<bool()>& givenUp, std::chrono::nanoseconds timeout);

    /// Sends the primary, or the secondary as a reply, and shows it. False when an error was raised
    /// meanwhile: then it is not shown as sent, and neither is one that cannot go out.
    bool Send(const SECSTransPtr& trans);
    bool Reply(const SECSTransPtr& trans);

    /// Closes the port, if it is open, and waits a few seconds at most for the end of the link, so
    /// that the other side gets its Separate.
    void Close();

    /// Closes the port and opens it again as soon as the link has ended; does not wait.
    void Reopen();
    /// Between these two.
    [[nodiscard]] bool IsReopening() const noexcept { return reopening_; }

    /// Opens the port, unless it is open, and does not wait.
    void StartOpening();

    /// Leaves primaries of this stream and function, or all of them, to replies that are asked for,
    /// or gives them back to OnPrimary. What was said last about a message counts.
    void Hold(std::int32_t stream, std::int32_t function, bool isHeld);
    void HoldAll(bool isHeld);

    /// Takes the oldest received primary that OnPrimary did not get and that waits for this reply:
    /// the function behind its own, or F0; without arguments, for any reply. None when there is no
    /// such primary. They are forgotten when the link ends; the last 10 000 are kept, and as many
    /// of them as have bodies of 4 MiB together, or the last one alone.
    [[nodiscard]] SECSTransPtr TakeWaiting(std::int32_t stream, std::int32_t function);
    [[nodiscard]] SECSTransPtr TakeWaiting();
    /// Nobody will take them: none is kept from now on.
    void KeepNoneWaiting() noexcept { keepsWaiting_ = false; }

    /// Takes the oldest received message of this stream and function that was not taken yet; false
    /// when there is none. The last 10 000 messages are kept.
    bool TakeReceived(std::int32_t stream, std::int32_t function);

    /// How many errors were raised so far.
    [[nodiscard]] std::uint64_t Errors() const noexcept { return errors_; }

    /// Number and text of the error that was raised last; "" before the first and after Open.
    [[nodiscard]] const std::string& LastError() const noexcept { return lastError_; }

    // Called after the event was shown; each may be empty. OnPrimary is not called for a primary
    // that is held.
    std::function<void()> OnConnect;
    std::function<void(const SECSTransPtr& trans)> OnPrimary;
    std::function<void(const SECSTransPtr& trans)> OnSecondary;
    std::function<void(std::int32_t code, const std::string& text)> OnError;
    std::function<void(std::int32_t code)> OnDisconnect;

private:
    struct Received {
        std::int32_t Stream = 0;
        std::int32_t Function = 0;
    };

    struct Waiting {
        SECSTransPtr Trans;
        std::size_t Bytes = 0;  ///< of the body
    };
    using WaitingPlace = std::deque<Waiting>::iterator;

    void TakeEvents();
    void Take(const SECSTransPtr& primary);
    [[nodiscard]] bool IsHeld(const SECSMessage& message) const;
    void Keep(const SECSMessage& message);
    void KeepWaiting(const SECSTransPtr& primary);
    SECSTransPtr TakeFrom(const WaitingPlace& place);

    EventLoop& loop_;
    EventOutput& output_;
    Hexmire control_;
    std::deque<Received> received_;
    std::deque<Waiting> waiting_;
    std::size_t waitingBytes_ = 0;
    bool keepsWaiting_ = true;
    std::map<std::pair<std::int32_t, std::int32_t>, bool> held_;
    bool allHeld_ = false;
    std::string lastError_;
    std::uint64_t errors_ = 0;
    bool connected_ = false;
    bool reopening_ = false;
};

}  // namespace hexmire::program
