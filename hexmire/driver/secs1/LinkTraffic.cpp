#include <hexmire/driver/secs1/LinkMachine.h>

#include <algorithm>
#include <array>
#include <variant>

namespace hexmire::secs1 {

using link::ErrorText;
using link::LinkError;
using link::TimerId;

namespace {

/// Writes that may wait for a peer that sends without reading. One that keeps to the protocol never
/// leaves more than two.
constexpr std::size_t kMaxUnwritten = 64;

constexpr TimerId IdOf(LineTimer id) {
    constexpr std::array kTimers{TimerId::T1, TimerId::T2, TimerId::LineCap};
    return kTimers.at(static_cast<std::size_t>(id));
}

}  // namespace

// --- messages out --------------------------------------------------------------------------------

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
    BlockHeader known = DecodeHeader(header.first<kHeaderBytes>());
    known.ToHost = false;
    known.IsLast = true;
    known.Number = static_cast<std::uint16_t>(std::min(BlockCount(body.size()), kMaxBlocks));
    if (state_ != State::Connected) {
        return RefuseSend(LinkError::NotSelected, known, statistics_.SendsWhileNotSelected);
    }
    if (body.size() > std::min<std::size_t>(settings_.MaxMessageBytes, kMaxBodyBytes)) {
        return RefuseSend(LinkError::MessageTooLong, known, statistics_.SendsTooLong);
    }
    if (queue_.size() >= settings_.MaxQueuedMessages ||
        queuedBytes_ + kHeaderBytes + body.size() > settings_.MaxQueuedBytes) {
        return RefuseSend(LinkError::SendQueueFull, known, statistics_.SendsRefusedByQueue);
    }
    BlockHeader onLine = known;
    onLine.ToHost = !settings_.HostRole;
    if (!known.IsPrimary()) {
        onLine.SystemBytes = systemBytes_.Original(known.SystemBytes, now);
        systemBytes_.Answered(known.SystemBytes);
    }
    queuedBytes_ += kHeaderBytes + body.size();
    queue_.push_back({.Known = known, .OnLine = onLine, .Body = {body.begin(), body.end()}});
    Drive();
}

void LinkMachine::RefuseSend(LinkError code,
                             const BlockHeader& header,
                             LinkStatistics::Count& counter) {
    ++counter;
    Raise(code, ErrorText(code, {}, EncodeHeader(header)));
}

void LinkMachine::PopMessage() {
    queuedBytes_ -= kHeaderBytes + queue_.front().Body.size();
    queue_.pop_front();
}

void LinkMachine::AbortQueue() {
    for (const Outgoing& message : queue_) {
        if (!message.IsTold) {
            RefuseSend(LinkError::SendAborted, message.Known, statistics_.SendsAborted);
        }
    }
    queue_.clear();
    queuedBytes_ = 0;
}

/// Cuts the next block off the message at the front.
void LinkMachine::OfferNext() {
    if (state_ != State::Connected || !reading_ || line_.HasBlock() || queue_.empty()) return;
    const Outgoing& message = queue_.front();
    const auto rest =
        std::span<const std::uint8_t>(message.Body).subspan(message.Sent * kMaxDataBytes);
    BlockHeader header = message.OnLine;
    header.Number = static_cast<std::uint16_t>(message.Sent + 1);
    header.IsLast = rest.size() <= kMaxDataBytes;
    line_.Offer(EncodeBlock(header, rest.first(std::min(rest.size(), kMaxDataBytes))));
}

void LinkMachine::TellSent(Outgoing& message) {
    message.IsTold = true;
    if (message.Known.IsPrimary() && message.Known.WBit) {
        transactions_.Add(message.Known.Id(), output_.Now() + settings_.T3, output_.Now());
    }
    output_.Emit(link::RaiseSent{EncodeHeader(message.Known), message.Body, 0});
}

/// The peer answers a message whose last ACK we have missed: it has gone out.
void LinkMachine::TellEarly(const BlockHeader& reply) {
    if (!IsEarlyReply(reply)) return;
    ++statistics_.EarlyReplies;
    TellSent(queue_.front());
}

bool LinkMachine::IsEarlyReply(const BlockHeader& reply) const {
    if (!line_.WasBlockOut() || !assembly_.IsForUs(reply)) return false;
    const Outgoing& message = queue_.front();
    const BlockHeader& primary = message.OnLine;
    const bool answers = reply.Function == 0 || reply.Function == primary.Function + 1;
    return answers && primary.IsPrimary() && reply.Stream == primary.Stream &&
           reply.SystemBytes == primary.SystemBytes && !message.IsTold &&
           message.Sent + 1 == BlockCount(message.Body.size());
}

// --- the line ------------------------------------------------------------------------------------

void LinkMachine::OnBytes(std::span<const std::uint8_t> bytes, link::TimePoint now) {
    output_.Now(now);
    if (state_ != State::Connected) return;
    connector_.Heard();
    line_.OnBytes(bytes);
    Drive();
}

void LinkMachine::LineTimerExpired(LineTimer id) {
    lineTimers_.at(static_cast<std::size_t>(id)).reset();
    if (state_ != State::Connected) {
        ++statistics_.UnexpectedEvents;
        return;
    }
    line_.OnTimer(id);
    Drive();
}

std::size_t LinkMachine::Output(std::span<std::span<const std::uint8_t>> views) {
    std::size_t filled = 0;
    for (const auto& bytes : writing_) {
        if (filled == views.size()) break;
        views[filled] = std::span(bytes).subspan(filled == 0 ? written_ : 0);
        ++filled;
    }
    return filled;
}

void LinkMachine::OnWritten(std::size_t count, link::TimePoint now) {
    output_.Now(now);
    written_ += count;
    while (!writing_.empty() && written_ >= writing_.front().size()) {
        written_ -= writing_.front().size();
        writing_.pop_front();
    }
    if (writing_.empty()) {
        written_ = 0;
        if (std::exchange(stallTimed_, false)) output_.Stop(TimerId::WriteStall);
        line_.OnWritten();
    } else if (count > 0 || !stallTimed_) {
        stallTimed_ = true;
        output_.Start(TimerId::WriteStall, settings_.WriteStall);
    }
    Drive();
}

void LinkMachine::OnConsumed(std::size_t count, link::TimePoint now) {
    output_.Now(now);
    waiting_ -= std::min(count, waiting_);
    if (state_ == State::Connected) Drive();
}

/// Performs what the line and the assembly put out until there is nothing more, and keeps the line
/// at work.
void LinkMachine::Drive() {
    for (;;) {
        assembly_.TakeOutput(assemblyOutput_);
        for (AssemblyOutput& output : assemblyOutput_) {
            std::visit([this](auto& one) { Perform(one); }, output);
        }
        line_.TakeOutput(lineOutput_);
        if (lineOutput_.empty()) {
            if (state_ != State::Connected) return;
            UpdateReading();
            OfferNext();
            if (reading_) line_.Settle();
            line_.TakeOutput(lineOutput_);
            if (lineOutput_.empty()) break;
        }
        const std::vector<LineOutput> turn = std::exchange(lineOutput_, {});
        for (const LineOutput& output : turn) {
            std::visit([this](const auto& one) { Perform(one); }, output);
            if (state_ != State::Connected) return;
        }
    }
    UpdateT4();
}

void LinkMachine::Perform(const WriteLine& output) {
    writing_.push_back(output.Bytes);
    output_.Emit(link::SendBytes{output.Bytes.size()});
}

void LinkMachine::Perform(const StartLineTimer& output) {
    lineTimers_.at(static_cast<std::size_t>(output.Id)) = output.Delay;
    if (reading_) output_.Start(IdOf(output.Id), output.Delay);
}

void LinkMachine::Perform(const StopLineTimer& output) {
    lineTimers_.at(static_cast<std::size_t>(output.Id)).reset();
    output_.Stop(IdOf(output.Id));
}

void LinkMachine::Perform(const BlockReceived& output) {
    const std::span<const std::uint8_t> block(output.Bytes);
    TellEarly(DecodeHeader(block.first<kHeaderBytes>()));
    assembly_.OnBlock(block, output_.Now());
    assembly_.TakeOutput(assemblyOutput_);
    for (AssemblyOutput& one : assemblyOutput_) {
        std::visit([this](auto& told) { Perform(told); }, one);
    }
}

void LinkMachine::Perform(const BlockSent&) {
    Outgoing& message = queue_.front();
    if (++message.Sent < BlockCount(message.Body.size())) return;
    if (!message.IsTold) TellSent(message);
    PopMessage();
}

/// The whole message is dropped; the link stays, for the line knows no link to drop.
void LinkMachine::Perform(const BlockGivenUp&) {
    const Outgoing& message = queue_.front();
    if (!message.IsTold) {
        ++statistics_.MessagesGivenUp;
        Raise(LinkError::RetriesExceeded,
              ErrorText(LinkError::RetriesExceeded,
                        "block " + std::to_string(message.Sent + 1) + " of " +
                            std::to_string(BlockCount(message.Body.size())),
                        EncodeHeader(message.Known)));
    }
    PopMessage();
}

void LinkMachine::Perform(const LineFault& output) {
    if (output.Code == LinkError::Babble && !serial_) {
        return Lose(LinkError::Babble, output.Details, true);
    }
    // The attempts of a block are told one by one only when somebody traces; what counts is
    // whether its message has gone out.
    if (output.IsSending && !settings_.Trace) return;
    Raise(output.Code, ErrorText(output.Code, output.Details));
}

// --- messages in ---------------------------------------------------------------------------------

void LinkMachine::Perform(BlockAccepted& output) {
    output_.Emit(link::RaiseBlock{std::move(output.Bytes)});
}

void LinkMachine::Perform(MessageComplete& output) {
    ++waiting_;
    output_.Emit(link::RaiseReceived{output.Header, std::move(output.Body), false});
}

void LinkMachine::Perform(MessageFault& output) {
    Raise(output.Code, ErrorText(output.Code, output.Details, output.Header));
}

/// T4 counts the time in which the peer could have sent.
void LinkMachine::UpdateT4() {
    const link::TimePoint now = output_.Now();
    if (state_ == State::Connected && reading_ && line_.IsIdle() && !line_.HasBlock()) {
        assembly_.Resume(now);
    } else {
        assembly_.Pause(now);
    }
    const auto left = assembly_.NextT4(now);
    const auto deadline = left ? std::optional(now + *left) : std::nullopt;
    if (deadline == t4Deadline_) return;
    t4Deadline_ = deadline;
    left ? output_.Start(TimerId::T4, *left) : output_.Stop(TimerId::T4);
}

/// Back-pressure: a control that lags behind gets no more blocks, and a peer that does not read is
/// not read either. Nobody is blamed for what is not read: the line's timers begin again
/// afterwards.
void LinkMachine::UpdateReading() {
    const std::size_t most = settings_.MaxWaitingMessages;
    if (reading_) {
        const bool lags = waiting_ >= most;
        if (!lags && writing_.size() < kMaxUnwritten) return;
        reading_ = false;
        ++statistics_.ReadingPauses;
        output_.Emit(link::PauseReading{});
        for (const LineTimer id : kLineTimers) {
            output_.Stop(IdOf(id));
        }
        Raise(LinkError::ReceiveBacklog,
              ErrorText(LinkError::ReceiveBacklog,
                        lags ? std::to_string(waiting_) + " messages wait"
                             : std::to_string(writing_.size()) + " writes wait"));
    } else if (waiting_ <= most / 2 && writing_.size() <= kMaxUnwritten / 2) {
        reading_ = true;
        output_.Emit(link::ResumeReading{});
        for (const LineTimer id : kLineTimers) {
            const auto delay = lineTimers_.at(static_cast<std::size_t>(id));
            if (delay) output_.Start(IdOf(id), *delay);
        }
    }
}

}  // namespace hexmire::secs1
