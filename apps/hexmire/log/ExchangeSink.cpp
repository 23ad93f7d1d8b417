#include "log/ExchangeSink.h"

#include "log/JsonLog.h"
#include <nlohmann/json.hpp>

#include <array>
#include <cstdio>
#include <utility>

namespace hexmire::program {

namespace {

constexpr std::int32_t kErrorStream = 9;
constexpr std::size_t kErrorBody = 256;
/// The longest reply time-out that a control can have.
constexpr LogTime kLongestTimeOut = 120 * kSecond;

std::string Seconds(LogTime time) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.2f s", static_cast<double>(time) / kSecond);
    return text.data();
}

const char* ReasonName(Outcome kind) {
    switch (kind) {
        case Outcome::TooLate:
            return "too-late";
        case Outcome::Aborted:
            return "aborted";
        case Outcome::Rejected:
            return "rejected";
        default:
            return "no-reply";
    }
}

const char* ReasonText(Outcome kind) {
    switch (kind) {
        case Outcome::TooLate:
            return "timed out before";
        case Outcome::Aborted:
            return "aborted by";
        default:
            return "rejected by";
    }
}

}  // namespace

ExchangeSink::ExchangeSink(std::ostream& out, ExchangeOptions options)
    : out_(out), options_(std::move(options)) {}

void ExchangeSink::Begin(const LogEntry& entry) {
    EndErrorBody();
    moment_ = entry.Moment;
    if (entry.Facts.Name.Stream == kErrorStream && entry.Facts.Kind == LineKind::Data) {
        inErrorBody_ = true;
        error_ = entry;
    }
    if (!TellsOfMessage(entry)) return;
    const bool passes = options_.Filter.PassesMessage(entry);
    std::int64_t tag = -1;
    if (passes && options_.Diagram != nullptr) tag = options_.Diagram->Add(entry);
    if (entry.Facts.Name.Stream == kErrorStream) errorTag_ = tag;
    if (IsPrimary(entry)) {
        if (!passes) return;
        if (options_.Latency) table_.AddPrimary(entry);
    }
    if (const auto result = pairing_.Take(entry, tag)) Take(*result);
}

void ExchangeSink::Text(std::string_view bytes) {
    if (inErrorBody_ && errorBody_.size() < kErrorBody)
        errorBody_.append(bytes.substr(0, kErrorBody));
}

void ExchangeSink::EndErrorBody() {
    if (!inErrorBody_) return;
    inErrorBody_ = false;
    const std::string body = std::exchange(errorBody_, {});
    const auto rejected = HeaderInBody(std::string_view(body).substr(StampReader::kSize));
    if (!rejected) return;
    if (const auto result = pairing_.TakeRejected(error_, *rejected, errorTag_)) Take(*result);
}

void ExchangeSink::Unfinished(const LogEntry& header) {
    if (options_.Diagram != nullptr) options_.Diagram->SetUnfinished(header);
    if (header.Facts.Direction != Way::Received) pairing_.Forget(header);
}

void ExchangeSink::Take(const PairingResult& result) {
    if (options_.Diagram != nullptr) options_.Diagram->Pair(result);
    if (result.Kind == Outcome::Answered) {
        const LogEntry& primary = result.Primary.Head;
        if (options_.Latency) table_.AddReply(primary, result.Moment - primary.Moment);
    } else if (options_.Unanswered) {
        options_.Json ? TellJson(result) : Tell(result);
    }
}

void ExchangeSink::Tell(const PairingResult& result) {
    const LogEntry& primary = result.Primary.Head;
    const LogTime waited = result.Moment - primary.Moment;
    out_ << LogTimeText(primary.Time)
         << (primary.Facts.Direction == Way::Received ? " received " : " sent ")
         << NameText(primary.Facts.Name) << " W";
    if (primary.Facts.SystemBytes)
        out_ << ", system bytes " << ShownSystemBytes(*primary.Facts.SystemBytes);
    if (result.Kind != Outcome::NoReply) {
        out_ << ": " << ReasonText(result.Kind) << ' ' << NameText(result.By) << " after "
             << Seconds(waited);
    } else if (finished_ && waited >= 0 && waited < kLongestTimeOut) {
        out_ << ": no reply when the log ends, " << Seconds(waited) << " later";
    } else {
        out_ << ": no reply";
    }
    out_ << '\n';
}

void ExchangeSink::TellJson(const PairingResult& result) {
    const LogEntry& primary = result.Primary.Head;
    nlohmann::ordered_json json;
    json["event"] = "unanswered";
    json["time"] = IsoTimeText(primary.Time);
    json["direction"] = primary.Facts.Direction == Way::Received ? "received" : "sent";
    json["stream"] = primary.Facts.Name.Stream;
    json["function"] = primary.Facts.Name.Function;
    if (primary.Facts.DeviceID >= 0) json["device_id"] = primary.Facts.DeviceID;
    if (primary.Facts.SystemBytes)
        json["system_bytes"] = ShownSystemBytes(*primary.Facts.SystemBytes);
    json["reason"] = ReasonName(result.Kind);
    if (result.By.Stream >= 0) json["by"] = NameText(result.By);
    out_ << json.dump() << '\n';
}

void ExchangeSink::Finish() {
    EndErrorBody();
    finished_ = true;
    while (const auto result = pairing_.TakeOldest(moment_))
        Take(*result);
    if (options_.Latency) options_.Json ? table_.PrintJson(out_) : table_.Print(out_);
    out_.flush();
}

}  // namespace hexmire::program
