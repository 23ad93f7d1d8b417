#pragma once

#include <hexmire/driver/OpenTransactions.h>
#include <hexmire/driver/PortMachine.h>
#include <hexmire/driver/SystemBytesMap.h>
#include <hexmire/driver/secs1/Assembly.h>
#include <hexmire/driver/secs1/Line.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace hexmire::secs1 {

/// One SECS-I link (SEMI E4): port type 1, a serial line, and port type 3, the same characters over
/// TCP. It puts together the connection, the line, which moves one block at a time, and the
/// assembly of received messages; what is sent waits here and is cut into blocks. No socket, no
/// clock: inputs in, actions out.
///
/// The rows of its state table are CLOSED, NOT CONNECTED and CONNECTED.
class LinkMachine final : public link::PortMachine {
public:
    /// Counts what it tolerates and refuses in `statistics`, which outlives it. `seed` spreads the
    /// connect attempts of an alternating link.
    LinkMachine(LinkSettings settings, LinkStatistics& statistics, std::uint32_t seed = 1);

    [[nodiscard]] bool IsOver() const override { return state_ == State::Closed; }
    void Send(std::span<const std::uint8_t> header,
              std::span<const std::uint8_t> body,
              link::TimePoint now) override;

    void OnListenFailed(const link::SystemFailure& failure, link::TimePoint now) override;
    void OnConnected(const link::Endpoints& endpoints, link::TimePoint now) override;
    void OnConnectFailed(const link::SystemFailure& failure, link::TimePoint now) override;
    void OnBytes(std::span<const std::uint8_t> bytes, link::TimePoint now) override;
    void OnClosed(link::TimePoint now) override;
    void OnLost(const link::SystemFailure& failure, link::TimePoint now) override;
    void OnWritten(std::size_t count, link::TimePoint now) override;
    void OnTimer(link::TimerId id, link::TimePoint now) override;
    void OnConsumed(std::size_t count, link::TimePoint now) override;

    std::size_t Output(std::span<std::span<const std::uint8_t>> views) override;
    [[nodiscard]] bool HasOutput() const override { return !writing_.empty(); }

    /// Name of the present row of the state table, and of the line's.
    [[nodiscard]] std::string_view StateName() const noexcept;
    [[nodiscard]] std::string_view LineStateName() const noexcept { return line_.StateName(); }

private:
    enum class State : std::uint8_t { Closed, NotConnected, Connected };
    /// A message on its way out.
    struct Outgoing {
        BlockHeader Known;  ///< as the control knows it
        BlockHeader OnLine;
        std::vector<std::uint8_t> Body;
        std::size_t Sent = 0;  ///< blocks that were acknowledged
        bool IsTold = false;   ///< SecsMsgSend has been raised
    };

    // LinkMachine.cpp: the port and its connection
    void OnOpen() override { Go(State::NotConnected); }
    void OnClose() override;
    void OnMoved() override;
    void Go(State next);
    void Follow(link::Connector::Verdict verdict);
    void BeginSession();
    void EndSession(link::LinkError code, std::string_view details);
    void DropConnection();
    void ResetLine(std::int32_t baudRate);
    void Lose(link::LinkError code, const std::string& details, bool foundHere);

    // LinkTraffic.cpp: messages out and in
    void RefuseSend(link::LinkError code,
                    const BlockHeader& header,
                    LinkStatistics::Count& counter);
    void Drive();
    void OfferNext();
    void UpdateT4();
    void UpdateReading();
    void Perform(const WriteLine& output);
    void Perform(const StartLineTimer& output);
    void Perform(const StopLineTimer& output);
    void Perform(const BlockReceived& output);
    void Perform(const BlockSent& output);
    void Perform(const BlockGivenUp& output);
    void Perform(const LineFault& output);
    void Perform(BlockAccepted& output);
    void Perform(MessageComplete& output);
    void Perform(MessageFault& output);
    void TellSent(Outgoing& message);
    void TellEarly(const BlockHeader& reply);
    [[nodiscard]] bool IsEarlyReply(const BlockHeader& reply) const;
    void AbortQueue();
    void PopMessage();
    void LineTimerExpired(LineTimer id);

    State state_ = State::Closed;
    bool sessionOpen_ = false;  // Connect has been raised, Disconnect not yet
    bool serial_ = false;       // the present connection is a serial line
    bool reading_ = true;       // false: paused until the control has caught up
    bool stallTimed_ = false;   // the write-stall timer runs
    std::size_t waiting_ = 0;   // received messages that the control has not yet had

    link::OpenTransactions transactions_;
    link::SystemBytesMap systemBytes_;
    Line line_;
    Assembly assembly_;
    /// Those of the line's timers that run, or stand still while reading is paused.
    std::array<std::optional<std::chrono::milliseconds>, kLineTimers.size()> lineTimers_;
    std::optional<link::TimePoint> t4Deadline_;  // for which TimerId::T4 runs

    std::deque<Outgoing> queue_;
    std::size_t queuedBytes_ = 0;
    std::deque<std::vector<std::uint8_t>> writing_;  // what the line wants written
    std::size_t written_ = 0;                        // bytes of its front that are gone
    std::vector<LineOutput> lineOutput_;
    std::vector<AssemblyOutput> assemblyOutput_;
};

}  // namespace hexmire::secs1
