#include <hexmire/driver/hsms/LinkState.h>

#include <utility>

namespace hexmire::hsms {

using link::LinkError;
using link::TimerId;

// --- the table: a short cell is written in place, a longer one names a function ------------------

const LinkMachine::State LinkMachine::kClosed{
    .Name = "CLOSED",
    .Enter = [](LinkMachine& link) { link.connector_.StopListening(), link.DropConnection(); },
    .OnOpen = [](LinkMachine&) { return &kNotConnected; },
    .OnConnected = &RefuseSilently,
};

const LinkMachine::State LinkMachine::kNotConnected{
    .Name = "NOT CONNECTED",
    .Enter = [](LinkMachine& link) { link.DropConnection(), link.connector_.Begin(); },
    .Exit = [](LinkMachine& link) { link.connector_.StopTrying(); },
    .OnClose = [](LinkMachine&) { return &kClosed; },
    .OnMoved = &AfterMove,
    .OnConnected = &Adopt,
    .OnConnectFailed = &ConnectFailed,
    .OnListenFailed = &ListenFailed,
    .OnT5 = [](LinkMachine& link) { return link.connector_.Begin(), Next{nullptr}; },
    .OnConnectTimeout = &ConnectTimedOut,
    .OnCrossing = &CrossingTimedOut,
};

const LinkMachine::State LinkMachine::kNotSelected{
    .Name = "NOT SELECTED",
    .ReadsFrames = true,
    .Enter = [](LinkMachine& link) { link.BeginSelecting(); },
    .Exit = [](LinkMachine& link) { link.Stop(TimerId::T7); },
    .OnClose = [](LinkMachine&) { return &kClosed; },
    .OnConnected = &ExtraUnselected,
    .OnListenFailed = &ListenFailed,
    .OnLost = &LoseUnselected,
    .OnData = &DataUnselected,
    .OnSelectReq = &AcceptSelect,
    .OnSelectRsp = &SelectAnswered,
    .OnDeselectReq = &DeselectUnselected,
    .OnDeselectRsp = &UnwantedResponse,
    .OnLinktestReq = &AnswerLinktest,
    .OnLinktestRsp = &LinktestAnswered,
    .OnRejectReq = &RejectedUnselected,
    .OnSeparateReq = &IgnoreSeparate,
    .OnT7 = &SelectedTooLate,
};

const LinkMachine::State LinkMachine::kSelected{
    .Name = "SELECTED",
    .ReadsFrames = true,
    .SendsData = true,
    .Enter = [](LinkMachine& link) { link.BeginSession(); },
    .Exit = [](LinkMachine& link) { link.Stop(TimerId::Linktest); },
    .OnClose = &EndInOrder,
    .OnConnected = &ExtraSelected,
    .OnListenFailed = &ListenFailed,
    .OnLost = &LoseSelected,
    .OnData = &Deliver,
    .OnSelectReq = &RepeatSelect,
    .OnSelectRsp = &LateSelectAnswered,
    .OnDeselectReq = &DeselectSelected,
    .OnDeselectRsp = &UnwantedResponse,
    .OnLinktestReq = &AnswerLinktest,
    .OnLinktestRsp = &LinktestAnswered,
    .OnRejectReq = &RejectedSelected,
    .OnSeparateReq = &Separated,
    .OnLinktestDue = &LinktestDue,
};

const LinkMachine::State LinkMachine::kDeselecting{
    .Name = "DESELECTING",
    .ReadsFrames = true,
    .Closes = true,
    .Enter = [](LinkMachine& link) { link.BeginDeselecting(); },
    .Exit = [](LinkMachine& link) { link.Stop(TimerId::Linger); },
    .OnOpen = [](LinkMachine&) { return Next{nullptr}; },
    .OnClose = [](LinkMachine&) { return Next{nullptr}; },
    .OnConnected = &RefuseSilently,
    .OnLost = &LoseEnding,
    .OnSelectReq = &RepeatSelect,
    .OnDeselectReq = &DeselectsCrossed,
    .OnDeselectRsp = &DeselectAnswered,
    .OnLinktestReq = &AnswerLinktest,
    .OnRejectReq = &DeselectRejected,
    .OnSeparateReq = &SeparatedWhileClosing,
    .OnLinger = &LingerOver,
};

const LinkMachine::State LinkMachine::kEnding{
    .Name = "ENDING",
    .Closes = true,
    .Enter = [](LinkMachine& link) { link.BeginLinger(); },
    .Exit = [](LinkMachine& link) { link.Stop(TimerId::Linger); },
    .OnOpen = [](LinkMachine&) { return Next{nullptr}; },
    .OnClose = [](LinkMachine&) { return Next{nullptr}; },
    .OnConnected = &RefuseSilently,
    .OnWritten = &LingerStep,
    .OnLost = &LoseEnding,
    .OnLinger = &LingerOver,
};

// --- the only place that changes state, and the dispatchers --------------------------------------

LinkMachine::LinkMachine(LinkSettings settings, LinkStatistics& statistics, std::uint32_t seed)
    : PortMachine(std::move(settings), statistics, seed), state_(&kClosed) {}

std::string_view LinkMachine::StateName() const noexcept { return state_->Name; }

void LinkMachine::Go(Next next) {
    if (next == nullptr) return;
    if (state_->Exit != nullptr) state_->Exit(*this);
    state_ = next;
    if (state_->Enter != nullptr) state_->Enter(*this);
}

void LinkMachine::Expect(Next (*cell)(LinkMachine&)) {
    cell != nullptr ? Go(cell(*this)) : void(++statistics_.UnexpectedEvents);
}

void LinkMachine::Lose(LinkError code, std::string details, bool foundHere) {
    if (state_->OnLost == nullptr) {
        ++statistics_.UnexpectedEvents;
        return;
    }
    Go(state_->OnLost(*this, {code, std::move(details), foundHere}));
}

void LinkMachine::TimeOut(LinkError code, std::string details, LinkStatistics::Count& counter) {
    if (state_->OnLost != nullptr) ++counter;
    Lose(code, std::move(details), true);
}

void LinkMachine::Dispatch(const FrameHeader& header) {
    State::FrameCell cell = nullptr;
    switch (static_cast<SType>(header.SessionType)) {
        case SType::Data:
            cell = state_->OnData;
            break;
        case SType::SelectReq:
            cell = state_->OnSelectReq;
            break;
        case SType::SelectRsp:
            cell = state_->OnSelectRsp;
            break;
        case SType::DeselectReq:
            cell = state_->OnDeselectReq;
            break;
        case SType::DeselectRsp:
            cell = state_->OnDeselectRsp;
            break;
        case SType::LinktestReq:
            cell = state_->OnLinktestReq;
            break;
        case SType::LinktestRsp:
            cell = state_->OnLinktestRsp;
            break;
        case SType::RejectReq:
            cell = state_->OnRejectReq;
            break;
        case SType::SeparateReq:
            cell = state_->OnSeparateReq;
            break;
    }
    cell != nullptr ? Go(cell(*this, header)) : void(++statistics_.UnexpectedEvents);
}

void LinkMachine::DispatchTimer(TimerId id) {
    switch (id) {
        case TimerId::T5:
            return Expect(state_->OnT5);
        case TimerId::ConnectTimeout:
            return Expect(state_->OnConnectTimeout);
        case TimerId::T7:
            return Expect(state_->OnT7);
        case TimerId::Linktest:
            return Expect(state_->OnLinktestDue);
        case TimerId::Linger:
            return Expect(state_->OnLinger);
        case TimerId::T6:
            return TimeOut(LinkError::T6, "", statistics_.T6Timeouts);
        case TimerId::T8:
            return TimeOut(LinkError::T8, "", statistics_.T8Timeouts);
        case TimerId::FrameCap:
            return TimeOut(LinkError::T8, "frame cap time", statistics_.FrameCapTimeouts);
        case TimerId::WriteStall:
            return TimeOut(LinkError::WriteStalled, "", statistics_.WriteStalls);
        case TimerId::AcceptRetry:
            return connector_.OnAcceptRetry();
        case TimerId::Crossing:
            return Expect(state_->OnCrossing);
        case TimerId::ErrorWindow:
            return output_.RaiseSummaries();
        case TimerId::T1:
        case TimerId::T2:
        case TimerId::T4:
        case TimerId::LineCap:
            ++statistics_.UnexpectedEvents;  // not of this protocol
            return;
    }
}

}  // namespace hexmire::hsms
