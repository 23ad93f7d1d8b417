#include <hexmire/driver/hsms/LinkState.h>

#include <algorithm>
#include <string>
#include <utility>

namespace hexmire::hsms {

using link::ErrorText;
using link::LinkError;
using link::TimerId;
using namespace std::chrono_literals;

namespace {

/// Responses that may wait for a peer that asks and does not read; then reading stops.
constexpr std::size_t kMaxWaitingResponses = 1'024;

bool IsS9F1(const FrameHeader& header) { return header.Stream() == 9 && header.Function() == 1; }

}  // namespace

// --- bytes and their timers ----------------------------------------------------------------------

void LinkMachine::OnBytes(std::span<const std::uint8_t> bytes, link::TimePoint now) {
    output_.Now(now);
    connector_.Heard();
    bool sawFrame = false;
    bool more = true;
    while (more && state_->ReadsFrames) {
        switch (parser_.Next(bytes, settings_.MaxMessageBytes)) {
            case FrameParser::Step::NeedMore:
                more = false;
                break;
            case FrameParser::Step::Frame:
                sawFrame = true;
                OnFrame();
                break;
            case FrameParser::Step::TooShort:
                ++statistics_.ShortLengths;
                Lose(LinkError::BadLength, "length " + std::to_string(parser_.Length()), true);
                break;
            case FrameParser::Step::TooLong:
                ++statistics_.LongLengths;
                Lose(LinkError::FrameTooLong, "length " + std::to_string(parser_.Length()), true);
                break;
        }
    }
    if (!state_->ReadsFrames) return;
    UpdateReading();
    if (reading_) ArmFrameTimers(sawFrame);
}

/// After a read: T8 and the cap run while a frame is in progress, the Linktest's own T6 then waits,
/// and each complete frame proves that the peer lives.
void LinkMachine::ArmFrameTimers(bool sawFrame) {
    if (parser_.InProgress()) {
        Start(TimerId::T8, settings_.T8);
        if (sawFrame || !frameTimed_) Start(TimerId::FrameCap, settings_.FrameCap);
        frameTimed_ = true;
        if (request_ && request_->Type == SType::LinktestReq && !requestHeld_) {
            requestHeld_ = true;
            Stop(TimerId::T6);
        }
    } else {
        StopFrameTimers();
        if (std::exchange(requestHeld_, false)) ResumeRequestTimer();
    }
    if (sawFrame && state_ == &kSelected && settings_.LinktestInterval > 0ms) {
        Start(TimerId::Linktest, settings_.LinktestInterval);
    }
}

void LinkMachine::StopFrameTimers() {
    if (!std::exchange(frameTimed_, false)) return;
    Stop(TimerId::T8);
    Stop(TimerId::FrameCap);
}

/// Back-pressure: while too much waits for the control, or too many responses for the peer, nothing
/// is read, and what supervises the peer's sending stands still.
void LinkMachine::UpdateReading() {
    if (!connector_.IsConnected() || state_ == &kEnding) return;
    const std::size_t responses = queue_.ControlFrames();
    const std::size_t waiting = state_->Closes ? 0 : waiting_;
    if (reading_) {
        if (waiting < settings_.MaxWaitingMessages && responses < kMaxWaitingResponses) return;
        reading_ = false;
        ++statistics_.ReadingPauses;
        Emit(link::PauseReading{});
        Raise(LinkError::ReceiveBacklog,
              ErrorText(LinkError::ReceiveBacklog,
                        std::to_string(waiting) + " messages and " + std::to_string(responses) +
                            " responses wait"));
        StopFrameTimers();
        Stop(TimerId::T6);
        Stop(TimerId::Linktest);
    } else if (waiting <= settings_.MaxWaitingMessages / 2 &&
               responses <= kMaxWaitingResponses / 2) {
        reading_ = true;
        Emit(link::ResumeReading{});
        ArmFrameTimers(true);
        if (!requestHeld_) ResumeRequestTimer();
    }
}

void LinkMachine::OnConsumed(std::size_t count, link::TimePoint now) {
    output_.Now(now);
    waiting_ -= std::min(count, waiting_);
    UpdateReading();
}

// --- one frame: the checks in their order --------------------------------------------------------

void LinkMachine::OnFrame() {
    ++statistics_.FramesReceived;
    const FrameHeader header = DecodeHeader(parser_.Header());
    if (PassesFrameChecks(header)) Dispatch(header);
}

bool LinkMachine::PassesFrameChecks(const FrameHeader& header) {
    const bool isReject = header.SessionType == static_cast<std::uint8_t>(SType::RejectReq);
    if (header.PType != kPTypeSecs2) {
        ++(isReject ? statistics_.BrokenRejects : statistics_.UnknownPTypes);
        if (!isReject) Reject(header, RejectReason::PTypeUnknown, LinkError::RejectSent);
        return false;
    }
    if (!IsKnownSType(header.SessionType)) {
        ++statistics_.UnknownSTypes;
        Reject(header, RejectReason::STypeUnknown, LinkError::RejectSent);
        return false;
    }
    if (header.IsData() || parser_.Length() == kHeaderBytes) return true;
    ++statistics_.ControlFramesWithBody;
    if (isReject) {
        Raise(LinkError::BadLength,
              ErrorText(LinkError::BadLength, "Reject.req with a body", EncodeHeader(header)));
    } else {
        Reject(header, RejectReason::STypeUnknown, LinkError::BadLength);
    }
    return false;
}

// --- data ----------------------------------------------------------------------------------------

LinkMachine::Next LinkMachine::DataUnselected(LinkMachine& link, const FrameHeader& header) {
    ++link.statistics_.DataWhileNotSelected;
    link.Reject(header, RejectReason::NotSelected, LinkError::RejectSent);
    return nullptr;
}

bool LinkMachine::PassesDataChecks(const FrameHeader& header) {
    // All 16 bits: a session ID of FFFF must not turn into device 7FFF.
    if (header.SessionID != settings_.DeviceID) {
        if (IsS9F1(header)) {
            ++statistics_.ForeignS9F1;
        } else {
            ++statistics_.ForeignSessionData;
            if (!singleSession_) SendControl(RejectHeader(header, RejectReason::NotSelected));
            Raise(LinkError::UnknownDevice,
                  ErrorText(LinkError::UnknownDevice,
                            std::to_string(header.SessionID),
                            EncodeHeader(header)));
            return false;
        }
    }
    const auto verdict = bodyCheck_.Check(parser_.Body(), settings_.MaxListDepth);
    if (verdict == link::BodyCheck::Verdict::Pass) return true;
    ++statistics_.HostileBodies;
    const bool tooDeep = verdict == link::BodyCheck::Verdict::TooDeep;
    Raise(LinkError::HostileBody,
          ErrorText(LinkError::HostileBody,
                    tooDeep ? "lists nested too deep" : "lists claim more items than can be there",
                    EncodeHeader(header)));
    return false;
}

void LinkMachine::MatchReply(const FrameHeader& header) {
    if (TellEarly(header.SystemBytes)) ++statistics_.EarlyReplies;
    const bool known = transactions_.EndByReply(header.Id(), output_.Now());
    if (!known && settings_.SystemBytesCheck) ++statistics_.RepliesWithoutTransaction;
}

LinkMachine::Next LinkMachine::Deliver(LinkMachine& link, const FrameHeader& header) {
    if (!link.PassesDataChecks(header)) return nullptr;
    if (!header.IsPrimary()) link.MatchReply(header);
    const auto delivered =
        link.systemBytes_.Deliver(header.Id(), link.output_.Now(), link.settings_.T3);
    if (delivered.SystemBytes != header.SystemBytes) ++link.statistics_.SystemBytesReplaced;
    if (delivered.ForgotOldest) ++link.statistics_.SubstitutesForgotten;
    FrameHeader seen = header;
    seen.SystemBytes = delivered.SystemBytes;
    ++link.waiting_;
    link.Emit(link::RaiseReceived{EncodeHeader(seen), link.parser_.TakeBody()});
    return nullptr;
}

}  // namespace hexmire::hsms
