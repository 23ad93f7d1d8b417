#pragma once

#include <hexmire/driver/BodyCheck.h>
#include <hexmire/driver/OpenTransactions.h>
#include <hexmire/driver/PortMachine.h>
#include <hexmire/driver/SystemBytesMap.h>
#include <hexmire/driver/hsms/FrameParser.h>
#include <hexmire/driver/hsms/OutboundQueue.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace hexmire::hsms {

/// Connection state model and receive pipeline of one HSMS link: port type 4, the single-session
/// mode (SEMI E37.1), and port type 2, the general services with one session (SEMI E37). No socket,
/// no clock: inputs in, actions out.
///
/// The rows of its state table are CLOSED, NOT CONNECTED, NOT SELECTED, SELECTED, and for the
/// orderly end of a connection that this side closes DESELECTING (only if so set) and ENDING.
class LinkMachine final : public link::PortMachine {
public:
    /// Counts what it tolerates and refuses in `statistics`, which outlives it. `seed` spreads the
    /// connect attempts of an alternating link.
    LinkMachine(LinkSettings settings, LinkStatistics& statistics, std::uint32_t seed = 1);

    [[nodiscard]] bool IsOver() const override { return state_ == &kClosed; }
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
    [[nodiscard]] bool HasOutput() const override { return !queue_.IsEmpty(); }

    /// Name of the present row of the state table.
    [[nodiscard]] std::string_view StateName() const noexcept;

private:
    struct State;
    using Next = const State*;  // nullptr: stay. The current state: leave it and enter it again.

    /// Why a connection is over. Failures that this side has found are told by an Error of their
    /// own; what the peer or the network did is told by Disconnect alone once the link was
    /// selected.
    struct Loss {
        link::LinkError Code;
        std::string Details;
        bool FoundHere;
    };
    /// Our one open control request.
    struct ControlRequest {
        SType Type;
        std::uint32_t SystemBytes;
        bool Written = false;  // T6 counts from then on
    };

    // LinkStates.cpp: the table, and the one place that changes state
    void Go(Next next);
    void Expect(Next (*cell)(LinkMachine&));
    void Lose(link::LinkError code, std::string details, bool foundHere);
    void TimeOut(link::LinkError code, std::string details, LinkStatistics::Count& counter);
    void Dispatch(const FrameHeader& header);
    void DispatchTimer(link::TimerId id);

    // LinkConnection.cpp: getting connected, and the end of connections
    void OnOpen() override;
    void OnClose() override;
    void OnMoved() override;
    void DropConnection();
    void ResetStream();
    Next Follow(link::Connector::Verdict verdict);
    void EndSession(link::LinkError code, std::string_view details);
    void BeginSelecting();
    void BeginSession();
    void BeginDeselecting();
    void BeginLinger();
    [[nodiscard]] std::chrono::milliseconds RestOfClose();
    static Next AfterLink(LinkMachine& link);
    static Next Adopt(LinkMachine& link);
    static Next RefuseSilently(LinkMachine& link);
    static Next ExtraUnselected(LinkMachine& link);
    static Next ExtraSelected(LinkMachine& link);
    static Next ListenFailed(LinkMachine& link);
    static Next ConnectFailed(LinkMachine& link);
    static Next ConnectTimedOut(LinkMachine& link);
    static Next CrossingTimedOut(LinkMachine& link);
    static Next AfterMove(LinkMachine& link);
    static Next SelectedTooLate(LinkMachine& link);
    static Next LoseUnselected(LinkMachine& link, const Loss& loss);
    static Next LoseSelected(LinkMachine& link, const Loss& loss);
    static Next LoseEnding(LinkMachine& link, const Loss& loss);
    static Next EndInOrder(LinkMachine& link);
    static Next LingerStep(LinkMachine& link);
    static Next LingerOver(LinkMachine& link);

    // LinkControl.cpp: control transactions of both sides
    void SendControl(const FrameHeader& header);
    void SendRequest(SType type);
    [[nodiscard]] std::uint32_t NextSystemBytes() noexcept;
    void FinishRequest();
    void Reject(const FrameHeader& header, RejectReason reason, link::LinkError code);
    [[nodiscard]] bool Answers(SType request, const FrameHeader& header) const;
    [[nodiscard]] bool IsOurSession(const FrameHeader& header) const;
    [[nodiscard]] std::uint16_t ControlSession() const;
    static Next RefuseSelect(LinkMachine& link, const FrameHeader& header);
    static Next AcceptSelect(LinkMachine& link, const FrameHeader& header);
    static Next RepeatSelect(LinkMachine& link, const FrameHeader& header);
    static Next SelectAnswered(LinkMachine& link, const FrameHeader& header);
    static Next LateSelectAnswered(LinkMachine& link, const FrameHeader& header);
    static Next UnwantedResponse(LinkMachine& link, const FrameHeader& header);
    static Next DeselectUnselected(LinkMachine& link, const FrameHeader& header);
    static Next DeselectSelected(LinkMachine& link, const FrameHeader& header);
    static Next DeselectAnswered(LinkMachine& link, const FrameHeader& header);
    static Next DeselectsCrossed(LinkMachine& link, const FrameHeader& header);
    static Next DeselectRejected(LinkMachine& link, const FrameHeader& header);
    static Next SeparatedWhileClosing(LinkMachine& link, const FrameHeader& header);
    static Next AnswerLinktest(LinkMachine& link, const FrameHeader& header);
    static Next LinktestAnswered(LinkMachine& link, const FrameHeader& header);
    static Next IgnoreSeparate(LinkMachine& link, const FrameHeader& header);
    static Next Separated(LinkMachine& link, const FrameHeader& header);
    bool RejectsRequest(const FrameHeader& header);
    static Next RejectedUnselected(LinkMachine& link, const FrameHeader& header);
    static Next RejectedSelected(LinkMachine& link, const FrameHeader& header);
    static Next LinktestDue(LinkMachine& link);

    // LinkReceive.cpp: bytes in, the checks in their order, delivery
    void OnFrame();
    void ArmFrameTimers(bool sawFrame);
    void StopFrameTimers();
    void ArmReadTimers();
    void UpdateReading();
    [[nodiscard]] bool PassesFrameChecks(const FrameHeader& header);
    [[nodiscard]] bool PassesDataChecks(const FrameHeader& header);
    void MatchReply(const FrameHeader& header);
    static Next DataUnselected(LinkMachine& link, const FrameHeader& header);
    static Next Deliver(LinkMachine& link, const FrameHeader& header);

    // LinkSend.cpp: data out, and errors
    void RefuseSend(link::LinkError code,
                    const FrameHeader& header,
                    LinkStatistics::Count& counter);
    void FrameWritten(OutFrame frame);
    void StartRequestTimer();
    void ResumeRequestTimer();
    void TellSent(const FrameHeader& header, std::vector<std::uint8_t> bytes);
    bool TellEarly(std::uint32_t systemBytes);
    void AbortQueue();

    void Emit(link::Action action) { output_.Emit(std::move(action)); }
    void Start(link::TimerId id, std::chrono::milliseconds delay) { output_.Start(id, delay); }
    void Stop(link::TimerId id) { output_.Stop(id); }

    /// System bytes of our own control requests: above those of the control, below the substitutes.
    static constexpr std::uint32_t kFirstRequest = 0x38000000;
    static constexpr std::uint32_t kLastRequest = 0x3FFFFFFF;

    static const State kClosed, kNotConnected, kNotSelected, kSelected, kDeselecting, kEnding;

    const State* state_;

    // the port
    std::size_t waiting_ = 0;  // received messages that the control has not yet had

    link::Endpoints candidate_;    // of the OnConnected at work
    link::SystemFailure failure_;  // of the OnConnectFailed or OnListenFailed at work

    // the connection
    bool singleSession_ = true;
    bool greet_ = false;        // the connection is new: the active side has to select
    bool sessionOpen_ = false;  // Connect has been raised, Disconnect not yet
    bool shutDown_ = false;     // ENDING: everything is written, waiting for the peer's close
    std::optional<link::TimePoint> closeBy_;  // when an orderly end is given up
    bool frameTimed_ = false;                 // T8 and frame cap run
    bool reading_ = true;      // false: paused until the control or the peer has caught up
    bool stallTimed_ = false;  // the write-stall timer runs
    std::optional<ControlRequest> request_;
    bool requestHeld_ = false;  // its T6 waits for the frame in progress
    std::uint32_t lastRequest_ = kLastRequest;
    FrameParser parser_;
    link::BodyCheck bodyCheck_;
    OutboundQueue queue_;
    link::OpenTransactions transactions_;
    link::SystemBytesMap systemBytes_;
};

}  // namespace hexmire::hsms
