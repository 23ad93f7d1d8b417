#include <hexmire/driver/hsms/LinkState.h>

#include <algorithm>
#include <utility>

namespace hexmire::hsms {

using link::ErrorText;
using link::LinkError;
using link::TimerId;

namespace {

/// Bit 15 of the session ID is the direction bit of SECS-I; on HSMS it is 0.
constexpr std::uint16_t kDeviceMask = 0x7FFF;
constexpr std::size_t kBodyOffset = kLengthBytes + kHeaderBytes;

/// The control's header as it stands on an HSMS wire, but for the system bytes.
FrameHeader DataHeader(std::span<const std::uint8_t, kHeaderBytes> bytes) {
    FrameHeader header = DecodeHeader(bytes);
    header.SessionID &= kDeviceMask;
    header.PType = kPTypeSecs2;
    header.SessionType = static_cast<std::uint8_t>(SType::Data);
    return header;
}

std::vector<std::uint8_t> EncodeData(const FrameHeader& header,
                                     std::span<const std::uint8_t> body) {
    const auto head = EncodeControlFrame(header);
    std::vector<std::uint8_t> bytes;
    bytes.reserve(head.size() + body.size());
    bytes.insert(bytes.end(), head.begin(), head.end());
    bytes.insert(bytes.end(), body.begin(), body.end());
    PutU32(bytes.data(), static_cast<std::uint32_t>(kHeaderBytes + body.size()));
    return bytes;
}

}  // namespace

// --- data out ------------------------------------------------------------------------------------

void LinkMachine::Send(std::span<const std::uint8_t> header,
                       std::span<const std::uint8_t> body,
                       link::TimePoint now) {
    output_.Now(now);
    if (header.size() != kHeaderBytes) {
        ++statistics_.MalformedSends;
        return Raise(LinkError::Internal,
                     ErrorText(LinkError::Internal,
                               "message header of " + std::to_string(header.size()) + " bytes"));
    }
    const FrameHeader known = DataHeader(header.first<kHeaderBytes>());
    if (!state_->SendsData) {
        return RefuseSend(LinkError::NotSelected, known, statistics_.SendsWhileNotSelected);
    }
    if (body.size() > settings_.MaxMessageBytes) {
        return RefuseSend(LinkError::MessageTooLong, known, statistics_.SendsTooLong);
    }
    if (queue_.DataFrames() >= settings_.MaxQueuedMessages ||
        queue_.DataBytes() + kBodyOffset + body.size() > settings_.MaxQueuedBytes) {
        return RefuseSend(LinkError::SendQueueFull, known, statistics_.SendsRefusedByQueue);
    }
    FrameHeader onWire = known;
    if (!known.IsPrimary()) {
        onWire.SystemBytes = systemBytes_.Original(known.SystemBytes, output_.Now());
        systemBytes_.Answered(known.SystemBytes);
    }
    queue_.Push({.What = OutFrame::Kind::Data, .Header = known, .Bytes = EncodeData(onWire, body)});
    Emit(link::SendBytes{kBodyOffset + body.size()});
}

void LinkMachine::RefuseSend(LinkError code,
                             const FrameHeader& header,
                             LinkStatistics::Count& counter) {
    ++counter;
    Raise(code, ErrorText(code, {}, EncodeHeader(header)));
}

std::size_t LinkMachine::Output(std::span<std::span<const std::uint8_t>> views) {
    return queue_.Offer(views);
}

void LinkMachine::OnWritten(std::size_t count, link::TimePoint now) {
    output_.Now(now);
    queue_.Advance(count);
    while (auto frame = queue_.TakeWritten()) {
        FrameWritten(std::move(*frame));
    }
    if (queue_.IsEmpty()) {
        if (std::exchange(stallTimed_, false)) Stop(TimerId::WriteStall);
    } else if (count > 0 || !stallTimed_) {
        stallTimed_ = true;
        Start(TimerId::WriteStall, settings_.WriteStall);
    }
    if (state_->OnWritten != nullptr) Go(state_->OnWritten(*this));
    UpdateReading();
}

void LinkMachine::FrameWritten(OutFrame frame) {
    switch (frame.What) {
        case OutFrame::Kind::Control:
            if (request_ && request_->SystemBytes == frame.Header.SystemBytes &&
                static_cast<std::uint8_t>(request_->Type) == frame.Header.SessionType) {
                StartRequestTimer();
            }
            break;
        case OutFrame::Kind::Data:
            TellSent(frame.Header, std::move(frame.Bytes));
            break;
        case OutFrame::Kind::Settled:
            break;
    }
}

/// Our control request has been written.
void LinkMachine::StartRequestTimer() {
    request_->Written = true;
    if (!reading_) return;  // UpdateReading starts it when reading goes on
    if (request_->Type == SType::LinktestReq && parser_.InProgress()) {
        requestHeld_ = true;
    } else {
        Start(TimerId::T6, settings_.T6);
    }
}

void LinkMachine::ResumeRequestTimer() {
    if (request_ && request_->Written) Start(TimerId::T6, settings_.T6);
}

void LinkMachine::TellSent(const FrameHeader& header, std::vector<std::uint8_t> bytes) {
    if (header.IsPrimary() && header.WBit()) {
        transactions_.Add(header.Id(), output_.Now() + settings_.T3, output_.Now());
    }
    Emit(link::RaiseSent{EncodeHeader(header), std::move(bytes), kBodyOffset});
}

/// The peer has answered a message whose write is not reported yet: it has gone out, and so has
/// everything before it. True when there was such a message.
bool LinkMachine::TellEarly(std::uint32_t systemBytes) {
    std::vector<OutFrame> sent = queue_.SettleThrough(systemBytes);
    for (OutFrame& frame : sent) {
        TellSent(frame.Header, std::move(frame.Bytes));
    }
    return !sent.empty();
}

void LinkMachine::AbortQueue() {
    for (const FrameHeader& header : queue_.AbortData()) {
        RefuseSend(LinkError::SendAborted, header, statistics_.SendsAborted);
    }
}

// --- timers --------------------------------------------------------------------------------------

void LinkMachine::OnTimer(TimerId id, link::TimePoint now) {
    output_.Now(now);
    DispatchTimer(id);
}

}  // namespace hexmire::hsms
