#pragma once

#include <hexmire/driver/ErrorLimiter.h>
#include <hexmire/driver/LinkErrors.h>
#include <hexmire/driver/LinkSettings.h>
#include <hexmire/driver/LinkStatistics.h>
#include <hexmire/driver/secs1/Block.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace hexmire::secs1 {

/// Timers of the line.
enum class LineTimer : std::uint8_t {
    T1,   ///< inter-character
    T2,   ///< protocol: EOT after our ENQ, ACK after our block, length byte after our EOT
    Cap,  ///< longest wait for silence on a line that babbles
};
inline constexpr std::array kLineTimers{LineTimer::T1, LineTimer::T2, LineTimer::Cap};

// What the line asks of its owner and tells it. Plain values, comparable in tests, in their order.

struct WriteLine {
    std::vector<std::uint8_t> Bytes;
    bool operator==(const WriteLine&) const = default;
};
struct StartLineTimer {
    LineTimer Id;
    std::chrono::milliseconds Delay;
    bool operator==(const StartLineTimer&) const = default;
};
struct StopLineTimer {
    LineTimer Id;
    bool operator==(const StopLineTimer&) const = default;
};
/// A block came whole and undamaged; its ACK has been asked for. Header and data.
struct BlockReceived {
    std::vector<std::uint8_t> Bytes;
    bool operator==(const BlockReceived&) const = default;
};
/// The offered block was acknowledged.
struct BlockSent {
    bool operator==(const BlockSent&) const = default;
};
/// The offered block was given up after its retries.
struct BlockGivenUp {
    bool operator==(const BlockGivenUp&) const = default;
};
/// Something went wrong on the line. IsSending: an attempt of our own block failed.
struct LineFault {
    link::LinkError Code;
    std::string Details;
    bool IsSending;
    bool operator==(const LineFault&) const = default;
};

using LineOutput = std::variant<WriteLine,
                                StartLineTimer,
                                StopLineTimer,
                                BlockReceived,
                                BlockSent,
                                BlockGivenUp,
                                LineFault>;

/// The block transfer protocol of SECS-I (SEMI E4): one half-duplex line between two ends, one
/// block at a time in either direction, with ENQ, EOT, ACK and NAK. No socket, no clock.
///
/// After each input the owner performs what TakeOutput gives, then calls Settle. The settings are
/// the owner's and may change at any time; each is read where it is used next.
class Line {
public:
    Line(const LinkSettings& settings, LinkStatistics& statistics);

    // --- inputs ----------------------------------------------------------------------------------
    void OnBytes(std::span<const std::uint8_t> bytes);
    /// Everything that was asked for with WriteLine has left.
    void OnWritten();
    void OnTimer(LineTimer id);
    /// The next block to send, a whole block as on the line. Only while HasBlock() is false.
    void Offer(std::vector<std::uint8_t> block);
    /// The end of a turn: an idle line turns to the offered block.
    void Settle();
    /// A new line, with nothing on it: bits per second of a serial one, 0 over TCP. What was on the
    /// old one is gone.
    void Reset(std::int32_t baudRate);

    // --- outputs ---------------------------------------------------------------------------------
    /// Swaps what was put out since the last call, oldest first, into `into`.
    void TakeOutput(std::vector<LineOutput>& into);
    [[nodiscard]] bool HasBlock() const noexcept { return block_.has_value(); }
    /// The offered block has gone out at least once: the peer may have it, its ACK being lost.
    [[nodiscard]] bool WasBlockOut() const noexcept { return HasBlock() && wasOut_; }
    [[nodiscard]] bool IsIdle() const noexcept { return state_ == &kIdle; }
    /// Name of the present row of the state table.
    [[nodiscard]] std::string_view StateName() const noexcept;

private:
    struct State;
    using Next = const State*;  // nullptr: stay. The current state: leave it and enter it again.

    void Go(Next next);
    void Write(std::vector<std::uint8_t> bytes);
    void Tell(link::LinkError code, std::string details, bool isSending);
    void Start(LineTimer id, std::chrono::milliseconds delay) {
        output_.emplace_back(StartLineTimer{id, delay});
    }
    void Stop(LineTimer id) { output_.emplace_back(StopLineTimer{id}); }
    [[nodiscard]] std::chrono::milliseconds TimeToLeave(std::size_t bytes) const;

    void Await(std::vector<std::uint8_t> bytes);
    void EndWait();
    void BeginBlock();
    void BeginDrain();
    static Next Idle(Line& line, std::uint8_t byte);
    static Next AwaitEot(Line& line, std::uint8_t byte);
    static Next AwaitAck(Line& line, std::uint8_t byte);
    static Next TakeLength(Line& line, std::uint8_t byte);
    static Next TakeBody(Line& line, std::uint8_t byte);
    static Next Drain(Line& line, std::uint8_t byte);
    static Next NoEot(Line& line);
    static Next NoAck(Line& line);
    static Next NoLength(Line& line);
    static Next BodyBroken(Line& line);
    static Next Silence(Line& line);
    static Next Babble(Line& line);
    Next Retry(link::LinkError code, std::string details, bool timeOut);
    Next ReceiveFailed(link::LinkError code, std::string details, bool answer);
    Next Received();

    static const State kIdle, kTxEot, kTxAck, kRxLen, kRxBody, kDrain;

    const LinkSettings& settings_;
    LinkStatistics& statistics_;
    const State* state_;
    std::int32_t baudRate_ = 0;  // 0: no serial line
    std::vector<LineOutput> output_;

    std::optional<std::vector<std::uint8_t>> block_;  // to send
    std::int32_t retries_ = 0;                        // of that block
    bool wasOut_ = false;                             // it has been written, whatever came of it
    bool yielded_ = false;            // it waits for a block of the peer that came in between
    bool discardRest_ = false;        // what is left of the read is not for us
    std::size_t unwritten_ = 0;       // bytes of the writes that are not told to have left
    bool awaits_ = false;             // T2 starts when they have left
    std::vector<std::uint8_t> body_;  // header, data and checksum as far as received
    std::size_t length_ = 0;          // that the length byte announced
    std::size_t drained_ = 0;
    bool babbles_ = false;
    link::LinkError drainCode_ = link::LinkError::Checksum;
    std::string drainDetails_;
};

}  // namespace hexmire::secs1
