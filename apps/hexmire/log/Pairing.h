#pragma once

#include "log/LogEntry.h"

#include <array>
#include <deque>
#include <map>
#include <optional>
#include <unordered_map>

namespace hexmire::program {

/// A primary that expects a reply.
struct OpenPrimary {
    LogEntry Head{};
    std::int64_t Tag = 0;  ///< whatever its owner gave it
};

/// How a primary came to its end.
enum class Outcome : std::uint8_t {
    Answered,
    TooLate,   ///< its transaction did not wait any more
    Aborted,   ///< by function 0 of its stream
    Rejected,  ///< by a message of stream 9
    NoReply,
};

struct PairingResult {
    OpenPrimary Primary{};
    Outcome Kind = Outcome::NoReply;
    MessageName By{};           ///< the message that ended it; -1, -1 for NoReply
    LogTime Moment = 0;         ///< of that message, or of the log's end
    std::int64_t ReplyTag = 0;  ///< of that message
};

/// Finds the reply of each primary: the message of the other direction with the same stream and
/// system bytes and the next function, or function 0; where a log tells no system bytes, the oldest
/// primary of that stream and function. A message of stream 9 ends the primary whose header it
/// bears. The number of primaries that wait is bounded: the oldest one is given up.
class Pairing {
public:
    static constexpr std::size_t kMostOpen = 16'384;

    explicit Pairing(std::size_t mostOpen = kMostOpen) : mostOpen_(mostOpen) {}

    /// Takes an entry that tells of a message (see TellsOfMessage); a result when it ends a
    /// primary's waiting, or begins one at the cost of another.
    [[nodiscard]] std::optional<PairingResult> Take(const LogEntry& entry, std::int64_t tag);
    /// Takes the header that a message of stream 9 bears in its body.
    [[nodiscard]] std::optional<PairingResult> TakeRejected(const LogEntry& error,
                                                            const LineFacts& rejected,
                                                            std::int64_t tag);
    /// The primary of this header was not sent after all.
    void Forget(const LogEntry& header);
    /// The primaries that still wait, in order; none once all were taken.
    [[nodiscard]] std::optional<PairingResult> TakeOldest(LogTime end);

    [[nodiscard]] std::size_t Waiting() const noexcept { return open_.size(); }

private:
    using Open = std::map<std::int64_t, OpenPrimary>;  // In the order of their coming.

    [[nodiscard]] std::optional<PairingResult> Add(const LogEntry& entry, std::int64_t tag);
    [[nodiscard]] Open::iterator Find(const LineFacts& reply, bool received);
    [[nodiscard]] PairingResult Remove(Open::iterator place);

    std::size_t mostOpen_;
    std::int64_t count_ = 0;
    Open open_;
    std::unordered_map<std::uint64_t, std::int64_t> byKey_;
};

/// True for the entry of a message that is looked at for pairing: its header, or its SML when it
/// has no header.
[[nodiscard]] bool TellsOfMessage(const LogEntry& entry);
[[nodiscard]] bool IsPrimary(const LogEntry& entry);

/// The header in the body of a message of stream 9, from the line of its bytes. None when the body
/// is something else.
[[nodiscard]] std::optional<LineFacts> HeaderInBody(std::string_view dataLine);

}  // namespace hexmire::program
