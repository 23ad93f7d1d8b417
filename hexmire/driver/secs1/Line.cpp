#include <hexmire/driver/secs1/LineState.h>

#include <utility>

namespace hexmire::secs1 {

using link::LinkError;
using namespace std::chrono_literals;

namespace {

/// A line that sends this much, or for this long beyond T2, without a pause is no SECS-I.
constexpr std::size_t kMaxDrained = 4'096;
constexpr std::chrono::milliseconds kDrainTime{10'000};
/// Serial: start bit, eight data bits, stop bit.
constexpr std::int64_t kBitsPerCharacter = 10;
/// Serial: what an adapter may hold back after the system has given it the last byte.
constexpr std::chrono::milliseconds kAdapterDelay{20};

}  // namespace

// --- the table -----------------------------------------------------------------------------------

const Line::State Line::kIdle{
    .Name = "IDLE",
    .OnByte = &Idle,
};

const Line::State Line::kTxEot{
    .Name = "TX_EOT",
    .Enter = [](Line& line) { line.Await({kEnq}); },
    .Exit = [](Line& line) { line.EndWait(); },
    .OnByte = &AwaitEot,
    .OnT2 = &NoEot,
};

const Line::State Line::kTxAck{
    .Name = "TX_ACK",
    .Enter = [](Line& line) { line.BeginBlock(); },
    .Exit = [](Line& line) { line.EndWait(); },
    .OnByte = &AwaitAck,
    .OnT2 = &NoAck,
};

const Line::State Line::kRxLen{
    .Name = "RX_LEN",
    .Enter = [](Line& line) { line.Await({kEot}); },
    .Exit = [](Line& line) { line.EndWait(); },
    .OnByte = &TakeLength,
    .OnT2 = &NoLength,
};

const Line::State Line::kRxBody{
    .Name = "RX_BODY",
    .Exit = [](Line& line) { line.Stop(LineTimer::T1); },
    .OnByte = &TakeBody,
    .TimesCharacters = true,
    .OnT1 = &BodyBroken,
};

const Line::State Line::kDrain{
    .Name = "DRAIN",
    .Enter = [](Line& line) { line.BeginDrain(); },
    .Exit = [](Line& line) { line.Stop(LineTimer::T1), line.Stop(LineTimer::Cap); },
    .OnByte = &Drain,
    .TimesCharacters = true,
    .OnT1 = &Silence,
    .OnCap = &Babble,
};

// --- inputs and the only place that changes state ------------------------------------------------

Line::Line(const LinkSettings& settings, LinkStatistics& statistics)
    : settings_(settings), statistics_(statistics), state_(&kIdle) {}

std::string_view Line::StateName() const noexcept { return state_->Name; }

void Line::Go(Next next) {
    if (next == nullptr) return;
    if (state_->Exit != nullptr) state_->Exit(*this);
    state_ = next;
    if (state_->Enter != nullptr) state_->Enter(*this);
}

void Line::OnBytes(std::span<const std::uint8_t> bytes) {
    discardRest_ = false;
    for (std::size_t index = 0; index < bytes.size(); ++index) {
        if (discardRest_) {
            statistics_.LineNoise += bytes.size() - index;
            break;
        }
        Go(state_->OnByte(*this, bytes[index]));
    }
    if (state_->TimesCharacters && !bytes.empty()) Start(LineTimer::T1, settings_.T1);
}

void Line::OnWritten() {
    const std::size_t bytes = std::exchange(unwritten_, 0);
    if (!std::exchange(awaits_, false)) return;
    Start(LineTimer::T2, settings_.T2 + TimeToLeave(bytes));
}

void Line::OnTimer(LineTimer id) {
    State::Cell cell = nullptr;
    switch (id) {
        case LineTimer::T1:
            cell = state_->OnT1;
            break;
        case LineTimer::T2:
            cell = state_->OnT2;
            break;
        case LineTimer::Cap:
            cell = state_->OnCap;
            break;
    }
    cell != nullptr ? Go(cell(*this)) : void(++statistics_.UnexpectedEvents);
}

void Line::Offer(std::vector<std::uint8_t> block) {
    block_ = std::move(block);
    wasOut_ = false;
    retries_ = 0;
}

void Line::Settle() {
    if (IsIdle() && block_) Go(&kTxEot);
}

void Line::Reset(std::int32_t baudRate) {
    baudRate_ = baudRate;
    block_.reset();
    yielded_ = false;
    Go(&kIdle);
    unwritten_ = 0;
}

void Line::TakeOutput(std::vector<LineOutput>& into) {
    into.clear();
    std::swap(into, output_);
}

// --- what the cells share ------------------------------------------------------------------------

void Line::Write(std::vector<std::uint8_t> bytes) {
    unwritten_ += bytes.size();
    output_.emplace_back(WriteLine{std::move(bytes)});
}

void Line::Tell(LinkError code, std::string details, bool isSending) {
    output_.emplace_back(LineFault{code, std::move(details), isSending});
}

/// T2 counts from the moment when the last byte has physically left. On a serial line the system
/// tells only that it has taken the bytes.
std::chrono::milliseconds Line::TimeToLeave(std::size_t bytes) const {
    if (baudRate_ == 0) return 0ms;
    const std::int64_t bits = static_cast<std::int64_t>(bytes) * kBitsPerCharacter;
    return std::chrono::milliseconds((bits * 1'000 + baudRate_ - 1) / baudRate_) + kAdapterDelay;
}

/// Writes; the answer is due within T2.
void Line::Await(std::vector<std::uint8_t> bytes) {
    awaits_ = true;
    Write(std::move(bytes));
}

void Line::EndWait() {
    // A write that is not told yet must not start T2 for a wait that is over.
    if (!std::exchange(awaits_, false)) Stop(LineTimer::T2);
}

void Line::BeginBlock() {
    wasOut_ = true;
    Await(*block_);
}

void Line::BeginDrain() {
    drained_ = 0;
    babbles_ = false;
    Start(LineTimer::Cap, settings_.T2 + kDrainTime);
}

// --- sending -------------------------------------------------------------------------------------

Line::Next Line::Idle(Line& line, std::uint8_t byte) {
    if (byte == kEnq) return &kRxLen;
    ++line.statistics_.LineNoise;
    return nullptr;
}

Line::Next Line::AwaitEot(Line& line, std::uint8_t byte) {
    // Before our ENQ has gone out, nothing can be its answer.
    if (byte == kEot && !line.awaits_) {
        line.discardRest_ = true;
        return &kTxAck;
    }
    if (byte == kEnq && line.settings_.HostRole) {
        // Both ends want the line: the host gives way and sends its block afterwards.
        ++line.statistics_.Yields;
        line.yielded_ = true;
        return &kRxLen;
    }
    ++(byte == kEnq ? line.statistics_.ContentionsWon : line.statistics_.LineNoise);
    return nullptr;
}

Line::Next Line::AwaitAck(Line& line, std::uint8_t byte) {
    if (byte != kAck) {
        ++(byte == kNak ? line.statistics_.NaksReceived : line.statistics_.WrongAnswers);
        return line.Retry(LinkError::NoAck, "byte " + std::to_string(byte), false);
    }
    ++line.statistics_.BlocksSent;
    line.block_.reset();
    line.output_.emplace_back(BlockSent{});
    return &kIdle;
}

Line::Next Line::NoEot(Line& line) {
    ++line.statistics_.T2Timeouts;
    return line.Retry(LinkError::T2, "no EOT", true);
}

Line::Next Line::NoAck(Line& line) {
    ++line.statistics_.T2Timeouts;
    return line.Retry(LinkError::T2, "no ACK", true);
}

/// A block may be tried again so often; silence of the peer is granted some attempts more.
Line::Next Line::Retry(LinkError code, std::string details, bool timeOut) {
    const std::int32_t limit =
        settings_.ConnectionRetryLimit + (timeOut ? settings_.TimeOutRetry : 0);
    Tell(code, std::move(details), true);
    if (retries_ < limit) {
        ++retries_;
        ++statistics_.BlocksRetried;
        return &kTxEot;
    }
    block_.reset();
    output_.emplace_back(BlockGivenUp{});
    return &kIdle;
}

// --- receiving -----------------------------------------------------------------------------------

Line::Next Line::TakeLength(Line& line, std::uint8_t byte) {
    if (byte < kMinLength || byte > kMaxLength) {
        ++line.statistics_.BadBlockLengths;
        line.drainCode_ = LinkError::BlockLength;
        line.drainDetails_ = "length byte " + std::to_string(byte);
        return &kDrain;
    }
    line.length_ = byte;
    line.body_.clear();
    return &kRxBody;
}

Line::Next Line::TakeBody(Line& line, std::uint8_t byte) {
    line.body_.push_back(byte);
    if (line.body_.size() < line.length_ + kChecksumBytes) return nullptr;
    const auto told =
        static_cast<std::uint16_t>(line.body_[line.length_] << 8U | line.body_[line.length_ + 1]);
    line.body_.resize(line.length_);
    if (told == Checksum(line.body_)) return line.Received();
    ++line.statistics_.BadChecksums;
    line.drainCode_ = LinkError::Checksum;
    line.drainDetails_.clear();
    return &kDrain;
}

Line::Next Line::Received() {
    ++statistics_.BlocksReceived;
    Write({kAck});
    output_.emplace_back(BlockReceived{body_});
    if (std::exchange(yielded_, false)) retries_ = 0;
    return &kIdle;
}

Line::Next Line::NoLength(Line& line) {
    ++line.statistics_.T2Timeouts;
    return line.ReceiveFailed(LinkError::T2, "no length byte", true);
}

Line::Next Line::BodyBroken(Line& line) {
    ++line.statistics_.T1Timeouts;
    return line.ReceiveFailed(LinkError::T1,
                              std::to_string(line.body_.size()) + " of " +
                                  std::to_string(line.length_ + kChecksumBytes) + " bytes",
                              true);
}

/// Never answered before silence: what is still to come would be taken for line control.
Line::Next Line::Drain(Line& line, std::uint8_t) {
    if (++line.drained_ == kMaxDrained + 1 && !line.babbles_) return Babble(line);
    return nullptr;
}

Line::Next Line::Silence(Line& line) {
    return line.ReceiveFailed(line.drainCode_, line.drainDetails_, !line.babbles_);
}

Line::Next Line::Babble(Line& line) {
    if (line.babbles_) {
        ++line.statistics_.UnexpectedEvents;
        return nullptr;
    }
    ++line.statistics_.Babbles;
    line.babbles_ = true;
    line.Stop(LineTimer::Cap);
    line.Tell(LinkError::Babble, {}, false);
    return nullptr;
}

/// A block of the peer did not come through. After a yield this counts as an attempt of our own
/// block, or a peer that only ever breaks off could keep it waiting for ever.
Line::Next Line::ReceiveFailed(LinkError code, std::string details, bool answer) {
    if (answer) {
        Write({kNak});
        Tell(code, std::move(details), false);
    }
    if (!std::exchange(yielded_, false)) return &kIdle;
    if (retries_ < settings_.ConnectionRetryLimit) {
        ++retries_;
        ++statistics_.BlocksRetried;
    } else {
        block_.reset();
        output_.emplace_back(BlockGivenUp{});
    }
    return &kIdle;
}

}  // namespace hexmire::secs1
