#pragma once

#include <hexmire/driver/ILinkMachine.h>
#include <hexmire/driver/LinkStatistics.h>
#include <hexmire/hosting/links/ByteStream.h>
#include <hexmire/hosting/links/EventQueue.h>
#include <hexmire/hosting/links/LinkRecords.h>
#include <hexmire/hosting/links/TimerQueue.h>
#include <hexmire/hosting/links/TransportDriver.h>

#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/steady_timer.hpp>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace hexmire {

/// The hands of a link machine: sockets, timers, the clock, and the events to the control. It holds
/// no protocol. Asio's handlers share its ownership, so that it outlives a driver that is destroyed
/// inside its own event.
///
/// Each connection, or attempt at one, has a generation number; a handler of an older one does
/// nothing.
class TransportDriver::Shell : public std::enable_shared_from_this<TransportDriver::Shell> {
public:
    Shell(asio::io_context& loop,
          SECSIServiceEvents& events,
          LinkSettings own,
          const link::RecordSite& site);

    void Open();
    void Close();
    [[nodiscard]] bool IsOpen() const { return reopening_ || machine_->IsOpen(); }
    void Send(std::span<const std::uint8_t> header, const Variant& body, std::int32_t length);
    /// Takes a setting and tells the machine.
    template <class Value>
    void Set(Value LinkSettings::*field, const std::type_identity_t<Value>& value) {
        Call([&](link::TimePoint now) {
            LinkSettings alone = inForce_;
            alone.*field = value;
            Value before = std::exchange(settings_.*field, value);
            if (!Configure(std::move(alone), now)) settings_.*field = std::move(before);
            records_.Configure(settings_);
        });
    }
    /// Closes everything at once; nothing is raised any more.
    void Destroy() noexcept;

    [[nodiscard]] const LinkSettings& Settings() const noexcept { return settings_; }
    [[nodiscard]] const LinkStatistics& Statistics() const noexcept { return statistics_; }

private:
    using Tcp = asio::ip::tcp;
    static constexpr std::size_t kInputBytes = std::size_t{64} * 1024;  ///< most bytes of one read
    /// Links that one machine carries; from one kind to another the machine changes.
    enum class Kind : std::uint8_t { Serial, Tcp, Hsms };
    using Resolved = std::function<void(const asio::error_code&, std::vector<Tcp::endpoint>)>;

    // TransportShell.cpp: the machine, turns, actions, timers, events
    [[nodiscard]] Kind KindWanted() const noexcept;
    [[nodiscard]] bool Configure(LinkSettings alone, link::TimePoint now);
    void PutInForce(const LinkSettings& settings, link::TimePoint now);
    void ReportFault(const SettingsFault& fault, link::TimePoint now);
    void FollowPortType(link::TimePoint now);
    void MakeMachine();
    void OpenMachine(link::TimePoint now);
    /// An input that comes from a call of the control: its events are raised later, by the loop.
    template <class Input>
    void Call(Input&& input) noexcept {
        Guard([&] {
            Perform(input);
            if (!events_.IsEmpty()) ScheduleDelivery();
        });
    }
    /// An input that comes from the loop: its events are raised once the turn has settled.
    template <class Input>
    void Turn(Input&& input) noexcept {
        Guard([&] {
            Perform([&](link::TimePoint now) {
                FollowPortType(now);
                input(now);
            });
        });
        Deliver();
    }
    /// Nothing that is thrown leaves the driver: it becomes an event.
    template <class Work>
    void Guard(Work&& work) noexcept {
        try {
            work();
        } catch (const std::exception& failure) {
            ReportInternal(failure.what());
        } catch (...) {
            ReportInternal("unknown exception");
        }
    }
    template <class Input>
    void Perform(Input&& input) {
        const link::TimePoint now = Now();
        input(now);
        Settle(now);
    }
    void Settle(link::TimePoint now);
    void PerformActions();
    void PerformOne(link::Action& action) noexcept;
    void ReportInternal(const char* what) noexcept;
    void Report(link::LinkError code, std::string_view details);
    void Deliver() noexcept;
    void DeliverSome();
    void HoldWrites(link::TimePoint now) noexcept;
    [[nodiscard]] bool WritesWait() const noexcept {
        return writesHeldUntil_ && !events_.IsEmpty();
    }
    void WriteHeld(link::TimePoint now);
    void ScheduleDelivery();
    void ScheduleFlush();
    void ArmTimer();
    void RunDueTimers();
    [[nodiscard]] bool TakesLateInput(link::TimerId id) const noexcept;
    [[nodiscard]] static link::TimePoint Now() { return std::chrono::steady_clock::now(); }

    void Do(const link::StartTimer& action);
    void Do(const link::StopTimer& action);
    void Do(const link::Listen& action);
    void Do(const link::StopListening& action);
    void Do(const link::ResumeAccepting& action);
    void Do(const link::Connect& action);
    void Do(const link::OpenSerial& action);
    void Do(const link::StopConnecting& action);
    void Do(const link::AdoptConnection& action);
    void Do(const link::HoldConnection& action);
    void Do(const link::AdoptHeld& action);
    void Do(const link::RefuseHeld& action);
    void Do(const link::RefuseConnection& action);
    void Do(const link::CloseConnection& action);
    void Do(const link::ShutdownSend& action);
    void Do(const link::PauseReading& action);
    void Do(const link::ResumeReading& action);
    template <class Other>
    void Do(const Other&) {}  // events, and SendBytes: output is written when the turn settles

    // What a failed action is for the machine.
    void Failed(const link::Listen& action);
    void Failed(const link::ResumeAccepting& action);
    void Failed(const link::Connect& action);
    void Failed(const link::OpenSerial& action);
    void Failed(const link::RaiseReceived& action);
    template <class Other>
    void Failed(const Other&) {}

    // ShellConnections.cpp: connections in the making
    void Resolve(Tcp::resolver& resolver,
                 const std::string& address,
                 std::uint16_t port,
                 Resolved done);
    void ListenAt(const asio::error_code& error, const std::vector<Tcp::endpoint>& endpoints);
    void AcceptNext();
    void OfferCaller(Tcp::socket socket);
    [[nodiscard]] bool IsOwnAttempt(const link::Endpoints& caller) const;
    bool OfferWaitingCaller();
    void ConnectNext();
    void ConnectTo(const Tcp::endpoint& remote);
    void FailConnect(const asio::error_code& error);
    void OfferConnection(Tcp::socket socket, link::Endpoints ends);
    void Adopt(std::unique_ptr<link::IByteStream>& stream, const link::Endpoints& ends);

    // ShellStream.cpp: the live connection
    void WaitForInput();
    void WaitForRoom();
    std::size_t ReadInput(link::TimePoint now);
    void WriteOutput(link::TimePoint now);
    void LoseStream(const asio::error_code& error, link::TimePoint now);
    void CloseStream() noexcept;

    asio::io_context& loop_;
    LinkSettings settings_;  // as they are wanted
    LinkSettings inForce_;   // as the machine has them
    LinkStatistics statistics_;
    Kind kind_ = Kind::Hsms;  // of the machine
    std::unique_ptr<link::ILinkMachine> machine_;
    std::optional<SettingsFault> kindFault_;  // why another kind of link waits; told already
    bool reopening_ = false;  // a link of another kind is opened once the present one is gone
    link::EventQueue events_;
    link::LinkRecords records_;
    std::vector<link::Action> batch_;

    link::TimerQueue timers_;
    asio::steady_timer timer_;
    std::optional<link::TimePoint> timerArmedFor_;
    bool timersStarted_ = false;  // since the loop's timer was armed

    std::uint64_t generation_ = 0;        // of the connection
    std::uint64_t listenGeneration_ = 0;  // of the listener
    Tcp::resolver localResolver_;         // of where to listen
    Tcp::resolver remoteResolver_;        // of our own attempts to connect
    std::optional<Tcp::acceptor> acceptor_;
    std::optional<Tcp::socket> connecting_;
    std::vector<Tcp::endpoint> remotes_;          // still to try in this attempt, the next one last
    std::optional<Tcp::endpoint> local_;          // to bind before connecting
    link::Endpoints lastOwn_;                     // of the last connect that came through
    std::unique_ptr<link::IByteStream> offered_;  // the machine is being asked about it
    link::Endpoints offeredEnds_;
    std::unique_ptr<link::IByteStream> held_;  // a caller that the machine has put aside
    link::Endpoints heldEnds_;
    std::unique_ptr<link::IByteStream> stream_;
    std::unique_ptr<std::uint8_t[]> input_;

    bool delivering_ = false;
    bool deliveryScheduled_ = false;
    bool flushScheduled_ = false;
    bool waitingForInput_ = false;
    bool waitingForRoom_ = false;
    bool readingPaused_ = false;
    bool ourOwnUnheard_ = false;   // we have opened the connection, and nothing has come in on it
    std::size_t quickInARow_ = 0;  // events whose handlers did not block
    link::TimePoint lookedAt_;     // the clock, before the event that is being raised
    // While events are being raised, what quick handlers send goes out together: when the last one
    // has returned, but not later than this.
    std::optional<link::TimePoint> writesHeldUntil_;
};

}  // namespace hexmire
