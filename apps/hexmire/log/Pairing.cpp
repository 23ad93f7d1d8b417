#include "log/Pairing.h"

#include <algorithm>

namespace hexmire::program {

namespace {

constexpr std::int32_t kTransactionTimeOut = 9;

bool IsReceived(const LogEntry& entry) { return entry.Facts.Direction == Way::Received; }

/// Two of these are the same when a reply to the one is a reply to the other.
std::uint64_t Key(bool received, const LineFacts& facts) {
    const auto stream = static_cast<std::uint64_t>(facts.Name.Stream & 0x7F);
    return facts.SystemBytes.value_or(0) | stream << 32 |
           static_cast<std::uint64_t>(received) << 40;
}

}  // namespace

bool TellsOfMessage(const LogEntry& entry) {
    const LineKind kind = entry.Facts.Kind;
    return kind == LineKind::Header || (kind == LineKind::Message && entry.Message == 0);
}

bool IsPrimary(const LogEntry& entry) { return entry.Facts.Name.Function % 2 != 0; }

std::optional<LineFacts> HeaderInBody(std::string_view dataLine) {
    const std::size_t colon = dataLine.find(" : ");
    if (colon == std::string_view::npos) return std::nullopt;
    std::array<std::uint8_t, 13> bytes{};
    constexpr std::size_t kBody = 12;  // Binary, 10 bytes long, and those.
    if (ReadBytes(dataLine.substr(colon + 3), bytes.data(), bytes.size()) != kBody ||
        bytes[0] != 0x21 || bytes[1] != 10)
        return std::nullopt;
    const std::string_view header = WithoutLineEnd(dataLine).substr(colon + 3 + 6);
    LineFacts facts = ReadLine("SECS I HEADER Send : " + std::string(header));
    facts.Direction = Way::None;
    return facts;
}

std::optional<PairingResult> Pairing::Take(const LogEntry& entry, std::int64_t tag) {
    const LineFacts& facts = entry.Facts;
    if (IsPrimary(entry)) {
        if (!facts.ReplyExpected) return std::nullopt;
        return Add(entry, tag);
    }
    const auto found = Find(facts, !IsReceived(entry));
    if (found == open_.end()) return std::nullopt;
    PairingResult result = Remove(found);
    result.Kind = facts.Name.Function == 0 ? Outcome::Aborted
                  : entry.Unexpected       ? Outcome::TooLate
                                           : Outcome::Answered;
    result.By = facts.Name;
    result.Moment = entry.Moment;
    result.ReplyTag = tag;
    return result;
}

std::optional<PairingResult> Pairing::TakeRejected(const LogEntry& error,
                                                   const LineFacts& rejected,
                                                   std::int64_t tag) {
    // A time-out is told by the side that sent the primary, everything else by the other one.
    const bool own = error.Facts.Name.Function == kTransactionTimeOut;
    const bool received = IsReceived(error) == own;
    const auto known = byKey_.find(Key(received, rejected));
    if (known == byKey_.end()) return std::nullopt;
    const auto found = open_.find(known->second);
    if (found->second.Head.Facts.Name.Function != rejected.Name.Function) return std::nullopt;
    PairingResult result = Remove(found);
    result.Kind = Outcome::Rejected;
    result.By = error.Facts.Name;
    result.Moment = error.Moment;
    result.ReplyTag = tag;
    return result;
}

std::optional<PairingResult> Pairing::Add(const LogEntry& entry, std::int64_t tag) {
    std::optional<PairingResult> displaced;
    const std::uint64_t key = Key(IsReceived(entry), entry.Facts);
    const auto same = byKey_.find(key);
    if (entry.Facts.SystemBytes && same != byKey_.end()) {
        displaced = Remove(open_.find(same->second));
    } else if (open_.size() == mostOpen_) {
        displaced = Remove(open_.begin());
    }
    if (displaced) displaced->Moment = entry.Moment;
    const std::int64_t number = count_++;
    open_.emplace(number, OpenPrimary{.Head = entry, .Tag = tag});
    if (entry.Facts.SystemBytes) byKey_[key] = number;
    return displaced;
}

Pairing::Open::iterator Pairing::Find(const LineFacts& reply, bool received) {
    const auto answers = [&](const LogEntry& primary) {
        return IsReceived(primary) == received && primary.Facts.Name.Stream == reply.Name.Stream &&
               (reply.Name.Function == 0 || primary.Facts.Name.Function == reply.Name.Function - 1);
    };
    if (!reply.SystemBytes) {
        return std::find_if(open_.begin(), open_.end(), [&](const auto& one) {
            return !one.second.Head.Facts.SystemBytes && answers(one.second.Head);
        });
    }
    const auto known = byKey_.find(Key(received, reply));
    if (known == byKey_.end()) return open_.end();
    const auto found = open_.find(known->second);
    return answers(found->second.Head) ? found : open_.end();
}

void Pairing::Forget(const LogEntry& header) {
    const auto known = byKey_.find(Key(IsReceived(header), header.Facts));
    if (known == byKey_.end()) return;
    const auto found = open_.find(known->second);
    if (found->second.Head.Message == header.Message) static_cast<void>(Remove(found));
}

PairingResult Pairing::Remove(Open::iterator place) {
    PairingResult result;
    result.Primary = place->second;
    if (const LineFacts& facts = result.Primary.Head.Facts; facts.SystemBytes)
        byKey_.erase(Key(IsReceived(result.Primary.Head), facts));
    open_.erase(place);
    return result;
}

std::optional<PairingResult> Pairing::TakeOldest(LogTime end) {
    if (open_.empty()) return std::nullopt;
    PairingResult result = Remove(open_.begin());
    result.Moment = end;
    return result;
}

}  // namespace hexmire::program
