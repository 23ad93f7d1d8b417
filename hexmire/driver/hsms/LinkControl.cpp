#include <hexmire/driver/hsms/LinkMachine.h>

#include <string>
#include <utility>

namespace hexmire::hsms {

using link::ErrorText;
using link::LinkError;
using link::TimerId;

namespace {

FrameHeader Response(SType type, const FrameHeader& request, std::uint8_t status) {
    return ControlHeader(type, request.SessionID, request.SystemBytes, status);
}

FrameHeader SelectResponse(const FrameHeader& request, SelectStatus status) {
    return Response(SType::SelectRsp, request, static_cast<std::uint8_t>(status));
}

FrameHeader DeselectResponse(const FrameHeader& request, DeselectStatus status) {
    return Response(SType::DeselectRsp, request, static_cast<std::uint8_t>(status));
}

bool IsAcceptance(const FrameHeader& selectRsp) {
    return selectRsp.Byte3 == static_cast<std::uint8_t>(SelectStatus::Established) ||
           selectRsp.Byte3 == static_cast<std::uint8_t>(SelectStatus::AlreadyActive);
}

std::string NumberText(const char* what, std::uint8_t value) {
    return std::string(what) + " " + std::to_string(value);
}

}  // namespace

// --- frames of ours ------------------------------------------------------------------------------

void LinkMachine::SendControl(const FrameHeader& header) {
    const auto frame = EncodeControlFrame(header);
    queue_.Push(
        {.What = OutFrame::Kind::Control, .Header = header, .Bytes = {frame.begin(), frame.end()}});
    Emit(link::SendBytes{frame.size()});
}

void LinkMachine::SendRequest(SType type) {
    const std::uint16_t session = type == SType::LinktestReq ? kNoSession : ControlSession();
    request_ = ControlRequest{type, NextSystemBytes()};
    requestHeld_ = false;
    if (type == SType::LinktestReq) ++statistics_.LinktestsSent;
    SendControl(ControlHeader(type, session, request_->SystemBytes));
}

std::uint32_t LinkMachine::NextSystemBytes() noexcept {
    lastRequest_ = lastRequest_ == kLastRequest ? kFirstRequest : lastRequest_ + 1;
    return lastRequest_;
}

void LinkMachine::FinishRequest() {
    if (!request_) return;
    request_.reset();
    requestHeld_ = false;
    Stop(TimerId::T6);
}

void LinkMachine::Reject(const FrameHeader& header, RejectReason reason, LinkError code) {
    SendControl(RejectHeader(header, reason));
    Raise(code,
          ErrorText(code,
                    NumberText("Reject reason", static_cast<std::uint8_t>(reason)),
                    EncodeHeader(header)));
}

bool LinkMachine::Answers(SType request, const FrameHeader& header) const {
    return request_ && request_->Type == request && request_->SystemBytes == header.SystemBytes;
}

std::uint16_t LinkMachine::ControlSession() const {
    return singleSession_ ? kNoSession : static_cast<std::uint16_t>(settings_.DeviceID);
}

bool LinkMachine::IsOurSession(const FrameHeader& header) const {
    return singleSession_ || header.SessionID == kNoSession ||
           header.SessionID == settings_.DeviceID;
}

// --- Select --------------------------------------------------------------------------------------

LinkMachine::Next LinkMachine::RefuseSelect(LinkMachine& link, const FrameHeader& header) {
    ++link.statistics_.SelectsOfForeignSession;
    link.SendControl(SelectResponse(header, SelectStatus::NoSuchEntity));
    link.Raise(
        LinkError::SelectRefusedByUs,
        ErrorText(LinkError::SelectRefusedByUs,
                  NumberText("status", static_cast<std::uint8_t>(SelectStatus::NoSuchEntity)),
                  EncodeHeader(header)));
    return nullptr;
}

LinkMachine::Next LinkMachine::AcceptSelect(LinkMachine& link, const FrameHeader& header) {
    if (!link.IsOurSession(header)) return RefuseSelect(link, header);
    if (link.connector_.IsOpener()) ++link.statistics_.SelectsFromPassiveSide;
    if (link.request_ && link.request_->Type == SType::SelectReq) {
        ++link.statistics_.SimultaneousSelects;
    }
    link.SendControl(SelectResponse(header, SelectStatus::Established));
    return &kSelected;
}

LinkMachine::Next LinkMachine::RepeatSelect(LinkMachine& link, const FrameHeader& header) {
    if (!link.IsOurSession(header)) return RefuseSelect(link, header);
    ++link.statistics_.SelectsWhileSelected;
    link.SendControl(SelectResponse(header, SelectStatus::AlreadyActive));
    return nullptr;
}

LinkMachine::Next LinkMachine::SelectAnswered(LinkMachine& link, const FrameHeader& header) {
    if (!link.Answers(SType::SelectReq, header)) return UnwantedResponse(link, header);
    link.FinishRequest();
    if (IsAcceptance(header)) return &kSelected;
    ++link.statistics_.SelectsRefused;
    link.Raise(LinkError::SelectRefused,
               ErrorText(LinkError::SelectRefused, NumberText("status", header.Byte3)));
    return AfterLink(link);
}

LinkMachine::Next LinkMachine::LateSelectAnswered(LinkMachine& link, const FrameHeader& header) {
    if (!link.Answers(SType::SelectReq, header)) return UnwantedResponse(link, header);
    link.FinishRequest();
    if (!IsAcceptance(header)) {
        ++link.statistics_.SelectsRefused;
        link.Raise(LinkError::SelectRefused,
                   ErrorText(LinkError::SelectRefused, NumberText("status", header.Byte3)));
    }
    return nullptr;
}

LinkMachine::Next LinkMachine::UnwantedResponse(LinkMachine& link, const FrameHeader& header) {
    ++link.statistics_.ResponsesWithoutTransaction;
    link.Reject(header, RejectReason::NotOpen, LinkError::NoOpenTransaction);
    return nullptr;
}

// --- Deselect and Separate -----------------------------------------------------------------------

LinkMachine::Next LinkMachine::DeselectUnselected(LinkMachine& link, const FrameHeader& header) {
    if (link.singleSession_) {
        ++link.statistics_.DeselectsNotSupported;
        link.Reject(header, RejectReason::STypeUnknown, LinkError::RejectSent);
    } else {
        ++link.statistics_.DeselectsWhileNotSelected;
        link.SendControl(DeselectResponse(header, DeselectStatus::NotEstablished));
    }
    return nullptr;
}

LinkMachine::Next LinkMachine::DeselectSelected(LinkMachine& link, const FrameHeader& header) {
    if (link.singleSession_) return DeselectUnselected(link, header);
    if (!link.IsOurSession(header)) {
        ++link.statistics_.ForeignSessionEnds;
        link.SendControl(DeselectResponse(header, DeselectStatus::NotEstablished));
        return nullptr;
    }
    link.EndSession(LinkError::Deselected, {});
    link.SendControl(DeselectResponse(header, DeselectStatus::Ended));
    return link.open_ ? &kNotSelected : &kEnding;
}

LinkMachine::Next LinkMachine::IgnoreSeparate(LinkMachine& link, const FrameHeader&) {
    ++link.statistics_.SeparatesWhileNotSelected;
    return nullptr;
}

LinkMachine::Next LinkMachine::Separated(LinkMachine& link, const FrameHeader& header) {
    if (!link.IsOurSession(header)) {
        ++link.statistics_.ForeignSessionEnds;
        return nullptr;
    }
    link.EndSession(LinkError::Separated, {});
    return link.open_ && !link.singleSession_ ? &kNotSelected : AfterLink(link);
}

/// Whatever the peer answers, this side is closing.
LinkMachine::Next LinkMachine::DeselectAnswered(LinkMachine& link, const FrameHeader& header) {
    if (!link.Answers(SType::DeselectReq, header)) return UnwantedResponse(link, header);
    if (header.Byte3 != static_cast<std::uint8_t>(DeselectStatus::Ended)) {
        ++link.statistics_.DeselectsRefused;
        link.Raise(LinkError::DeselectRefused,
                   ErrorText(LinkError::DeselectRefused, NumberText("status", header.Byte3)));
    }
    return &kEnding;
}

/// Both ends deselect at once: the session is over, and nothing is left to wait for.
LinkMachine::Next LinkMachine::DeselectsCrossed(LinkMachine& link, const FrameHeader& header) {
    const bool ours = link.IsOurSession(header);
    if (!ours) ++link.statistics_.ForeignSessionEnds;
    link.SendControl(
        DeselectResponse(header, ours ? DeselectStatus::Ended : DeselectStatus::NotEstablished));
    return ours ? &kEnding : nullptr;
}

LinkMachine::Next LinkMachine::DeselectRejected(LinkMachine& link, const FrameHeader& header) {
    const bool ours = link.request_ && link.request_->SystemBytes == header.SystemBytes;
    (void)RejectedSelected(link, header);
    return ours ? &kEnding : nullptr;
}

LinkMachine::Next LinkMachine::SeparatedWhileClosing(LinkMachine& link, const FrameHeader& header) {
    if (link.IsOurSession(header)) return LingerOver(link);
    ++link.statistics_.ForeignSessionEnds;
    return nullptr;
}

// --- Linktest and Reject -------------------------------------------------------------------------

LinkMachine::Next LinkMachine::AnswerLinktest(LinkMachine& link, const FrameHeader& header) {
    link.SendControl(Response(SType::LinktestRsp, header, 0));
    return nullptr;
}

LinkMachine::Next LinkMachine::LinktestAnswered(LinkMachine& link, const FrameHeader& header) {
    if (!link.Answers(SType::LinktestReq, header)) return UnwantedResponse(link, header);
    link.FinishRequest();
    return nullptr;
}

LinkMachine::Next LinkMachine::LinktestDue(LinkMachine& link) {
    if (!link.request_) {
        link.SendRequest(SType::LinktestReq);
    } else {
        link.Start(TimerId::Linktest, link.settings_.LinktestInterval);
    }
    return nullptr;
}

/// Takes a Reject.req in: true when it names our open control request, which is over then.
bool LinkMachine::RejectsRequest(const FrameHeader& header) {
    ++statistics_.RejectsReceived;
    Raise(LinkError::RejectReceived,
          ErrorText(
              LinkError::RejectReceived, NumberText("reason", header.Byte3), EncodeHeader(header)));
    if (!request_ || request_->SystemBytes != header.SystemBytes) return false;
    FinishRequest();
    return true;
}

LinkMachine::Next LinkMachine::RejectedUnselected(LinkMachine& link, const FrameHeader& header) {
    const bool selecting = link.request_ && link.request_->Type == SType::SelectReq;
    if (link.RejectsRequest(header)) return selecting ? AfterLink(link) : nullptr;
    ++link.statistics_.RejectsWithoutTransaction;
    return nullptr;
}

LinkMachine::Next LinkMachine::RejectedSelected(LinkMachine& link, const FrameHeader& header) {
    link.TellEarly(header.SystemBytes);
    if (link.RejectsRequest(header)) return nullptr;
    if (!link.transactions_.End(header.SystemBytes, link.output_.Now())) {
        ++link.statistics_.RejectsWithoutTransaction;
    }
    return nullptr;
}

}  // namespace hexmire::hsms
