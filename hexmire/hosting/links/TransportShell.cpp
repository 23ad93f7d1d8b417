#include <hexmire/driver/LinkOutput.h>
#include <hexmire/driver/hsms/LinkMachine.h>
#include <hexmire/driver/secs1/LinkMachine.h>
#include <hexmire/hosting/links/SocketOptions.h>
#include <hexmire/hosting/links/TransportShell.h>

#include <asio/error.hpp>
#include <asio/post.hpp>

#include <algorithm>
#include <random>
#include <utility>
#include <variant>

namespace hexmire {

using namespace std::chrono_literals;

namespace {

/// Events raised in one turn of the loop; the others wait for the next, so that handlers which
/// cause ever new events do not shut everybody else out.
constexpr std::size_t kEventsPerTurn = 20'000;
/// How long a message may wait for others to go out with it.
constexpr auto kLongestHold = 500us;
/// A handler that takes longer blocks. It is more than a thread loses when the system lets another
/// one run.
constexpr auto kBlocks = 5ms;
/// So many events in a row whose handlers did not block let messages wait: a host that blocks now
/// and then has each message on the wire before its next handler begins.
constexpr std::size_t kProvenQuick = 256;

}  // namespace

TransportDriver::Shell::Shell(asio::io_context& loop,
                              SECSIServiceEvents& events,
                              LinkSettings own,
                              const link::RecordSite& site)
    : loop_(loop),
      settings_(std::move(own)),
      events_(events),
      records_(loop,
               site,
               statistics_,
               settings_,
               [this](link::LinkError code, const std::string& details) { Report(code, details); }),
      timer_(loop),
      localResolver_(loop),
      remoteResolver_(loop),
      input_(std::make_unique_for_overwrite<std::uint8_t[]>(kInputBytes)) {
    // Callers are compared as texts: 127.0.0.1 is the same as ::FFFF:7F00:1.
    for (std::string& address : settings_.AllowedCallers)
        address = link::CanonicalAddress(address);
    batch_.reserve(link::LinkOutput::kUsualActions);  // the two are exchanged
    MakeMachine();
}

void TransportDriver::Shell::Open() {
    Call([this](link::TimePoint now) {
        if (IsOpen()) return;
        if (KindWanted() == kind_) {
            PutInForce(settings_, now);
            return machine_->Open(now);
        }
        if (machine_->IsOver()) return OpenMachine(now);
        // Another kind of link: the present one is still saying goodbye.
        const auto fault = CheckLinkSettings(settings_);
        if (!fault) return void(reopening_ = true);
        ReportFault(*fault, now);
    });
}

void TransportDriver::Shell::Close() {
    Call([this](link::TimePoint now) {
        writesHeldUntil_.reset();
        reopening_ = false;
        machine_->Close(now);
    });
}

void TransportDriver::Shell::Send(std::span<const std::uint8_t> header,
                                  const Variant& body,
                                  std::int32_t length) {
    const auto send = [&](link::TimePoint now) {
        const auto bytes = body.View<std::uint8_t>();
        if (length < 0 || static_cast<std::size_t>(length) > bytes.size()) {
            ++statistics_.MalformedSends;
            return ReportInternal("message body shorter than its length");
        }
        machine_->Send(header, bytes.first(static_cast<std::size_t>(length)), now);
    };
    // A primary that waits to be written with others begins nothing yet that is timed.
    const bool isPrimary = header.size() > 3 && (header[3] & 1U) != 0;
    if (!delivering_ || !WritesWait() || kind_ != Kind::Hsms || !isPrimary) return Call(send);
    Guard([&] {
        send(lookedAt_);
        Settle(lookedAt_);
    });
}

void TransportDriver::Shell::Destroy() noexcept {
    if (events_.IsClosed()) return;
    Close();
    events_.Close();
    Guard([this] {
        CloseStream();
        Do(link::CloseConnection{});
        Do(link::RefuseHeld{});
        Do(link::StopListening{});
        timers_.StopAll();
        timer_.cancel();
    });
    records_.Finish();
}

// --- the machine ---------------------------------------------------------------------------------

/// A port type that there is not belongs to no kind of link: it changes nothing.
TransportDriver::Shell::Kind TransportDriver::Shell::KindWanted() const noexcept {
    switch (static_cast<LinkPortType>(settings_.PortType)) {
        case LinkPortType::Serial:
            return Kind::Serial;
        case LinkPortType::Tcp:
            return Kind::Tcp;
        case LinkPortType::Hsms:
        case LinkPortType::HsmsSs:
            return Kind::Hsms;
    }
    return kind_;
}

/// One setting has changed; `alone` is what is in force with that change. A value that is out of
/// its range is refused while the port is open. One that does not work with the others, a mode
/// before its address, is told and waits until they have changed too; the others go on counting.
///
/// The port type of another kind of link waits for the end of the present connection.
bool TransportDriver::Shell::Configure(LinkSettings alone, link::TimePoint now) {
    if (IsOpen()) {
        if (const auto fault = CheckSettingRanges(settings_)) {
            ReportFault(*fault, now);
            return false;
        }
    }
    LinkSettings all = settings_;
    if (KindWanted() != kind_) {
        all.PortType = alone.PortType = inForce_.PortType;
        if (machine_->IsOpen()) ScheduleFlush();  // the other settings of the new kind come first
    } else {
        kindFault_.reset();
    }
    if (!machine_->IsOpen() || !CheckLinkSettings(all)) {
        PutInForce(all, now);
    } else if (const auto fault = CheckLinkSettings(alone)) {
        ReportFault(*fault, now);
    } else {
        PutInForce(alone, now);
    }
    return true;
}

void TransportDriver::Shell::PutInForce(const LinkSettings& settings, link::TimePoint now) {
    inForce_ = settings;
    machine_->Configure(inForce_, now);
}

void TransportDriver::Shell::ReportFault(const SettingsFault& fault, link::TimePoint now) {
    machine_->Report(static_cast<link::LinkError>(fault.Code), fault.Text, now);
}

/// Between two connections of an open port: the next one is of the kind that is set by now, unless
/// that cannot work.
void TransportDriver::Shell::FollowPortType(link::TimePoint now) {
    if (KindWanted() == kind_ || stream_ || !machine_->IsOpen()) return;
    if (auto fault = CheckLinkSettings(settings_)) {
        if (fault != kindFault_) ReportFault(*fault, now);
        kindFault_ = std::move(fault);
        return;
    }
    kindFault_.reset();
    reopening_ = true;
    machine_->Close(now);
}

void TransportDriver::Shell::MakeMachine() {
    kind_ = KindWanted();
    inForce_ = settings_;
    const std::uint32_t seed = std::random_device{}();
    if (kind_ == Kind::Hsms) {
        machine_ = std::make_unique<hsms::LinkMachine>(settings_, statistics_, seed);
    } else {
        machine_ = std::make_unique<secs1::LinkMachine>(settings_, statistics_, seed);
    }
}

void TransportDriver::Shell::OpenMachine(link::TimePoint now) {
    timers_.StopAll();
    const auto lastEnd = machine_->LastEnd();
    MakeMachine();
    machine_->LastEnd(lastEnd);
    machine_->Open(now);
}

// --- turns ---------------------------------------------------------------------------------------

/// Performs what the machine asks, then writes what it offers.
void TransportDriver::Shell::Settle(link::TimePoint now) {
    PerformActions();
    if (reopening_ && machine_->IsOver()) {
        reopening_ = false;
        OpenMachine(now);
        PerformActions();
    }
    WriteOutput(now);
    ArmTimer();
    WaitForInput();
    records_.Flush();
}

void TransportDriver::Shell::PerformActions() {
    for (;;) {
        machine_->TakeActions(batch_);
        if (batch_.empty()) return;
        for (link::Action& action : batch_)
            PerformOne(action);
    }
}

/// One that fails, for want of memory, does not stop those behind it. The machine is told of it as
/// of any other failure of the system, so that it does not wait for what cannot come.
void TransportDriver::Shell::PerformOne(link::Action& action) noexcept {
    Guard([&] {
        try {
            if (link::IsEvent(action)) {
                records_.OnEvent(action);
                events_.Push(std::move(action));
            } else {
                std::visit([this](const auto& one) { Do(one); }, action);
            }
        } catch (...) {
            std::visit([this](const auto& one) { Failed(one); }, action);
            throw;
        }
    });
}

void TransportDriver::Shell::Failed(const link::Listen&) {
    acceptor_.reset();
    machine_->OnListenFailed(link::FailureOf(asio::error::no_memory), Now());
}

void TransportDriver::Shell::Failed(const link::ResumeAccepting&) {
    machine_->OnAcceptFailed(link::FailureOf(asio::error::no_memory), Now());
}

void TransportDriver::Shell::Failed(const link::Connect&) {
    Do(link::StopConnecting{});
    machine_->OnConnectFailed(link::FailureOf(asio::error::no_memory), Now());
}

void TransportDriver::Shell::Failed(const link::OpenSerial&) {
    offered_.reset();
    link::SystemFailure failure = link::FailureOf(asio::error::no_memory);
    failure.Code = link::LinkError::SerialOpenFailed;
    machine_->OnConnectFailed(failure, Now());
}

/// The message is lost, and does not go on counting as one that waits.
void TransportDriver::Shell::Failed(const link::RaiseReceived&) { machine_->OnConsumed(1, Now()); }

/// It may come from the midst of anything: the machine's error is performed in a turn of its own,
/// which also does what the failure has left undone.
void TransportDriver::Shell::ReportInternal(const char* what) noexcept {
    try {
        Report(link::LinkError::Internal, what);
    } catch (...) {
        ++statistics_.InternalFailures;  // not even the report could be made
    }
}

/// A failure of the shell or of its records, at any time.
void TransportDriver::Shell::Report(link::LinkError code, std::string_view details) {
    if (events_.IsClosed()) return;
    ScheduleFlush();
    machine_->Report(code, link::ErrorText(code, details), Now());
}

void TransportDriver::Shell::Do(const link::StartTimer& action) {
    timersStarted_ = true;
    timers_.Start(action.Id, action.Delay, Now());
}

void TransportDriver::Shell::Do(const link::StopTimer& action) { timers_.Stop(action.Id); }

// --- events --------------------------------------------------------------------------------------

void TransportDriver::Shell::ScheduleDelivery() {
    if (deliveryScheduled_ || delivering_ || events_.IsClosed()) return;
    asio::post(loop_, [self = shared_from_this()] {
        self->deliveryScheduled_ = false;
        self->Deliver();
    });
    deliveryScheduled_ = true;
}

/// Held output goes out at the latest when the loop gets to run, be it inside a handler.
void TransportDriver::Shell::ScheduleFlush() {
    if (flushScheduled_) return;
    asio::post(loop_, [self = shared_from_this()] {
        self->flushScheduled_ = false;
        self->writesHeldUntil_.reset();
        self->Turn([](link::TimePoint) {});
    });
    flushScheduled_ = true;
}

void TransportDriver::Shell::Deliver() noexcept {
    if (delivering_ || events_.IsClosed() || events_.IsEmpty()) return;
    const auto self = shared_from_this();  // a handler may destroy the driver
    delivering_ = true;
    DeliverSome();
    writesHeldUntil_.reset();
    delivering_ = false;
    if (events_.IsClosed()) return;
    Guard([this] {
        const std::size_t consumed = events_.TakeConsumed();
        Perform([&](link::TimePoint now) {
            if (consumed > 0) machine_->OnConsumed(consumed, now);
        });
        if (!events_.IsEmpty()) ScheduleDelivery();
    });
}

void TransportDriver::Shell::DeliverSome() {
    lookedAt_ = Now();
    HoldWrites(lookedAt_);
    for (std::size_t raised = 0; raised < kEventsPerTurn && !events_.IsEmpty(); ++raised) {
        const bool internal = events_.IsInternalErrorNext();
        const bool isSent = events_.IsSentNext();
        try {
            events_.RaiseNext();
        } catch (...) {
            // A handler must not throw. It is told once, not about its telling.
            if (!internal) ReportInternal("exception in an event handler");
        }
        if (events_.IsClosed()) return;
        if (isSent && !machine_->HasOutput()) {
            ++quickInARow_;  // its time is taken with that of the next
            continue;
        }
        const link::TimePoint end = Now();
        quickInARow_ = end - lookedAt_ > kBlocks ? 0 : quickInARow_ + 1;
        lookedAt_ = end;
        if (machine_->HasOutput()) Guard([&] { WriteHeld(end); });
    }
}

/// What handlers send goes out together, at the latest when the time is over, unless they may
/// block: nobody knows what the next one will do, and it is not to keep back a finished reply.
void TransportDriver::Shell::HoldWrites(link::TimePoint now) noexcept {
    if (quickInARow_ >= kProvenQuick) writesHeldUntil_ = now + kLongestHold;
}

/// While events are being raised: writes what has been held long enough.
void TransportDriver::Shell::WriteHeld(link::TimePoint now) {
    if (!writesHeldUntil_ || now < *writesHeldUntil_) return;
    writesHeldUntil_.reset();
    Settle(now);
    HoldWrites(now);
}

// --- timers --------------------------------------------------------------------------------------

/// Arms the loop's timer for the earliest deadline. It is not set back when a deadline moves away:
/// then it expires once for nothing, which is cheaper than a system call at each restart.
void TransportDriver::Shell::ArmTimer() {
    if (!std::exchange(timersStarted_, false)) return;
    const auto next = timers_.NextDeadline();
    if (!next || (timerArmedFor_ && *timerArmedFor_ <= *next) || events_.IsClosed()) return;
    timerArmedFor_ = next;
    timer_.expires_at(*next);
    timer_.async_wait([self = shared_from_this()](const asio::error_code& error) {
        if (error || self->events_.IsClosed()) return;
        self->timerArmedFor_.reset();
        self->timersStarted_ = true;  // the others are still to be waited for
        self->Turn([&](link::TimePoint) { self->RunDueTimers(); });
    });
}

/// Whether the wait that this timer bounds may be over without our having looked.
bool TransportDriver::Shell::TakesLateInput(link::TimerId id) const noexcept {
    using enum link::TimerId;
    return (id == T1 || id == T2 || id == T6 || id == T8) && stream_ && !readingPaused_;
}

void TransportDriver::Shell::RunDueTimers() {
    const link::TimePoint now = Now();
    while (const auto id = timers_.NextDue(now)) {
        if (TakesLateInput(*id) && ReadInput(now) > 0) {
            // We were slow, not the peer.
            ++statistics_.LateReads;
            PerformActions();
            // Where T2 is still due, what has come in was nothing that the line waits for.
            if (*id != link::TimerId::T2) {
                if (timers_.IsDue(*id, now)) timers_.Restart(*id, now);
                continue;
            }
        }
        if (!timers_.IsDue(*id, now)) continue;  // the read has found the end of the connection
        timers_.Stop(*id);
        machine_->OnTimer(*id, now);
        PerformActions();
    }
}

}  // namespace hexmire
