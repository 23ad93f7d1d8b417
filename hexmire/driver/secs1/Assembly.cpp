#include <hexmire/driver/secs1/Assembly.h>

#include <algorithm>
#include <utility>

namespace hexmire::secs1 {

using link::LinkError;
using namespace std::chrono_literals;

Assembly::Assembly(const LinkSettings& settings,
                   LinkStatistics& statistics,
                   link::OpenTransactions& transactions,
                   link::SystemBytesMap& systemBytes)
    : settings_(settings),
      statistics_(statistics),
      transactions_(transactions),
      systemBytes_(systemBytes) {}

// --- one block: the checks in their order --------------------------------------------------------

void Assembly::OnBlock(std::span<const std::uint8_t> block, link::TimePoint now) {
    Pause(now);
    const BlockHeader header = DecodeHeader(block.first<kHeaderBytes>());
    if (!PassesRouting(header) || IsDuplicate(header, now)) return;
    auto message = Find(header);
    bool quiet = false;  // what is wrong with this block has been told
    if (message != open_.end() && header.Number != message->Last.Number + 1) {
        Count(statistics_.BlocksOutOfSequence, LinkError::BlockOutOfSequence, header);
        Discard(message);
        message = open_.end();
        quiet = true;
    }
    if (message == open_.end()) {
        const auto begun = Begin(header, quiet, now);
        if (!begun) return;
        message = *begun;
    }
    Append(message, header, block.subspan(kHeaderBytes), now);
}

bool Assembly::PassesRouting(const BlockHeader& header) {
    if (!IsDirectionRight(header)) {
        Count(statistics_.WrongDirections, LinkError::WrongDirection, header);
        return false;
    }
    if (header.DeviceID != settings_.DeviceID) {
        Count(statistics_.ForeignDeviceBlocks, LinkError::UnknownDevice, header);
        return false;
    }
    return true;
}

/// A peer that missed our ACK sends its block again. After T3 of silence it is no repetition any
/// more: there are peers whose system bytes are always the same.
bool Assembly::IsDuplicate(const BlockHeader& header, link::TimePoint now) {
    const bool same =
        settings_.DuplicateBlockCheck && previous_ == header && now - previousTime_ < settings_.T3;
    previousTime_ = now;
    previous_ = header;
    if (same) Count(statistics_.DuplicateBlocks, LinkError::DuplicateBlock, header);
    return same;
}

Assembly::OpenMessage Assembly::Find(const BlockHeader& header) {
    return std::find_if(open_.begin(), open_.end(), [&](const Open& message) {
        return message.Last.IsOfSameMessage(header);
    });
}

// --- the first block of a message ----------------------------------------------------------------

std::optional<Assembly::OpenMessage> Assembly::Begin(const BlockHeader& header,
                                                     bool quiet,
                                                     link::TimePoint now) {
    quiet = GiveUpOfSameSystemBytes(header) || quiet;
    if (header.Number > 1) {
        ++statistics_.BlocksWithoutMessage;
        if (!quiet) Tell(LinkError::NotAFirstBlock, header);
        return std::nullopt;
    }
    MakeRoom(header);
    const link::MessageId id = header.Id();
    const bool isStray = !header.IsPrimary() && !transactions_.EndByReply(id, now);
    const auto delivered = systemBytes_.Deliver(id, now, settings_.T3);
    if (delivered.SystemBytes != header.SystemBytes) ++statistics_.SystemBytesReplaced;
    if (delivered.ForgotOldest) ++statistics_.SubstitutesForgotten;
    open_.push_back({.Last = header,
                     .SystemBytes = delivered.SystemBytes,
                     .IsStray = isStray,
                     .Body = {},
                     .Left = settings_.T4});
    return std::prev(open_.end());
}

/// A message whose header changes half way: it is over, and this block is looked at afresh.
bool Assembly::GiveUpOfSameSystemBytes(const BlockHeader& header) {
    const auto other = std::find_if(open_.begin(), open_.end(), [&](const Open& message) {
        return message.Last.SystemBytes == header.SystemBytes;
    });
    if (other == open_.end()) return false;
    Count(statistics_.HeadersChanged, LinkError::HeaderChanged, header);
    Discard(other);
    return true;
}

/// With the interleave check there is one unfinished message at most; without, they are bounded.
void Assembly::MakeRoom(const BlockHeader& next) {
    while (settings_.InterleaveCheck && !open_.empty()) {
        Count(statistics_.InterleavedMessages, LinkError::Interleaved, open_.front().Last);
        Discard(open_.begin());
    }
    while (open_.size() >= kMaxOpenMessages && !next.IsLast) {
        Count(statistics_.MessagesCrowdedOut, LinkError::TooManyOpenMessages, open_.front().Last);
        Discard(open_.begin());
    }
}

// --- growing and completing ----------------------------------------------------------------------

void Assembly::Append(OpenMessage message,
                      const BlockHeader& header,
                      std::span<const std::uint8_t> data,
                      link::TimePoint now) {
    message->Last = header;
    message->Left = settings_.T4;
    if (!Store(message, data)) return;
    if (header.IsLast && !PassesBodyCheck(*message)) return Discard(message);
    BlockHeader seen = header;
    seen.SystemBytes = message->SystemBytes;
    const link::HeaderBytes head = EncodeHeader(seen);
    std::vector<std::uint8_t> bytes(head.begin(), head.end());
    bytes.insert(bytes.end(), data.begin(), data.end());
    output_.emplace_back(BlockAccepted{std::move(bytes)});
    if (header.IsLast) Complete(message, now);
}

/// False when the message had to be given up for its length or for that of all together.
bool Assembly::Store(OpenMessage message, std::span<const std::uint8_t> data) {
    if (message->Body.size() + data.size() > settings_.MaxMessageBytes) {
        Count(statistics_.MessagesTooLong, LinkError::MessageTooLong, message->Last);
        Discard(message);
        return false;
    }
    while (openBytes_ + data.size() > kMaxOpenBytes) {
        const bool isThis = open_.begin() == message;
        Count(statistics_.MessagesCrowdedOut, LinkError::TooManyOpenMessages, open_.front().Last);
        Discard(open_.begin());
        if (isThis) return false;
    }
    message->Body.insert(message->Body.end(), data.begin(), data.end());
    openBytes_ += data.size();
    return true;
}

void Assembly::Complete(OpenMessage message, link::TimePoint now) {
    if (message->IsStray && settings_.SystemBytesCheck) ++statistics_.RepliesWithoutTransaction;
    BlockHeader seen = message->Last;
    seen.SystemBytes = message->SystemBytes;
    // The peer waits for its reply from now on: on a slow line a message can take longer than T3.
    if (seen.IsPrimary()) {
        systemBytes_.Renew(seen.SystemBytes, message->Last.SystemBytes, now, settings_.T3);
    }
    openBytes_ -= message->Body.size();
    output_.emplace_back(MessageComplete{EncodeHeader(seen), std::move(message->Body)});
    open_.erase(message);
}

bool Assembly::PassesBodyCheck(const Open& message) {
    const auto verdict = bodyCheck_.Check(message.Body, settings_.MaxListDepth);
    if (verdict == link::BodyCheck::Verdict::Pass) return true;
    ++statistics_.HostileBodies;
    Tell(LinkError::HostileBody,
         message.Last,
         verdict == link::BodyCheck::Verdict::TooDeep ? "lists nested too deep"
                                                      : "lists claim more items than can be there");
    return false;
}

void Assembly::Discard(OpenMessage message) {
    openBytes_ -= message->Body.size();
    open_.erase(message);
}

void Assembly::Clear() noexcept {
    open_.clear();
    openBytes_ = 0;
    runningSince_.reset();
    previous_.reset();
}

// --- T4 ------------------------------------------------------------------------------------------

void Assembly::Pause(link::TimePoint now) {
    if (!runningSince_) return;
    const auto elapsed = now - *std::exchange(runningSince_, std::nullopt);
    for (Open& message : open_) {
        message.Left -= elapsed;
    }
}

void Assembly::Resume(link::TimePoint now) {
    if (!runningSince_) runningSince_ = now;
}

std::optional<std::chrono::milliseconds> Assembly::NextT4(link::TimePoint now) const {
    if (!runningSince_ || open_.empty()) return std::nullopt;
    const auto next = std::min_element(
        open_.begin(), open_.end(), [](const Open& a, const Open& b) { return a.Left < b.Left; });
    return std::max(
        std::chrono::ceil<std::chrono::milliseconds>(next->Left - (now - *runningSince_)), 0ms);
}

void Assembly::OnT4(link::TimePoint now) {
    const bool running = runningSince_.has_value();
    Pause(now);
    for (auto message = open_.begin(); message != open_.end();) {
        const auto current = message++;
        if (current->Left > 0ns) continue;
        Count(statistics_.T4Timeouts, LinkError::T4, current->Last);
        // The peer may begin the message again with the very same block.
        if (previous_ && previous_->IsOfSameMessage(current->Last)) previous_.reset();
        Discard(current);
    }
    if (running) Resume(now);
}

// --- output --------------------------------------------------------------------------------------

void Assembly::Count(LinkStatistics::Count& counter, LinkError code, const BlockHeader& header) {
    ++counter;
    Tell(code, header);
}

void Assembly::Tell(LinkError code, const BlockHeader& header, std::string details) {
    output_.emplace_back(MessageFault{code, std::move(details), EncodeHeader(header)});
}

void Assembly::TakeOutput(std::vector<AssemblyOutput>& into) {
    into.clear();
    std::swap(into, output_);
}

}  // namespace hexmire::secs1
