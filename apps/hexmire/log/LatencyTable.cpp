#include "log/LatencyTable.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <bit>
#include <cstdio>
#include <string>

namespace hexmire::program {

namespace {

constexpr std::uint64_t kExact = 2048;  // A power of two.
constexpr unsigned kExactBits = 11;
constexpr unsigned kStepBits = 6;  // 64 steps to the next power of two.
constexpr std::int64_t kMillisecondsEach = 10;

std::size_t StepOf(std::uint64_t value) {
    if (value < kExact) return value;
    const auto bits = static_cast<unsigned>(std::bit_width(value)) - 1;
    const std::uint64_t step = (value >> (bits - kStepBits)) & ((1U << kStepBits) - 1);
    return kExact + ((bits - kExactBits) << kStepBits) + step;
}

/// The largest value of a step.
std::uint64_t LastOf(std::size_t step) {
    if (step < kExact) return step;
    const std::size_t beyond = step - kExact;
    const unsigned bits = kExactBits + static_cast<unsigned>(beyond >> kStepBits);
    const std::uint64_t first =
        (std::uint64_t{1} << kStepBits) + (beyond & ((1U << kStepBits) - 1));
    return ((first + 1) << (bits - kStepBits)) - 1;
}

std::string Milliseconds(bool known, LogTime time) {
    return known ? std::to_string(time * kMillisecondsEach) : "-";
}

nlohmann::ordered_json JsonMilliseconds(bool known, LogTime time) {
    return known ? nlohmann::ordered_json(time * kMillisecondsEach) : nlohmann::ordered_json();
}

}  // namespace

void LatencyHistogram::Add(LogTime latency) {
    const std::size_t step = StepOf(static_cast<std::uint64_t>(latency));
    if (step >= counts_.size()) counts_.resize(step + 1);
    ++counts_[step];
    ++count_;
    max_ = std::max(max_, latency);
}

LogTime LatencyHistogram::Quantile(unsigned percent) const {
    const std::uint64_t rank = std::max<std::uint64_t>(1, (count_ * percent + 99) / 100);
    std::uint64_t passed = 0;
    for (std::size_t step = 0; step < counts_.size(); ++step) {
        passed += counts_[step];
        if (passed >= rank) return std::min(static_cast<LogTime>(LastOf(step)), max_);
    }
    return max_;
}

LatencyTable::Key LatencyTable::KeyOf(const LogEntry& primary) {
    return {primary.Facts.Name.Stream,
            primary.Facts.Name.Function,
            primary.Facts.Direction == Way::Received};
}

void LatencyTable::AddPrimary(const LogEntry& primary) {
    const Key key = KeyOf(primary);
    if (rows_.size() == kMostRows && !rows_.contains(key)) {
        ++beyond_;
        return;
    }
    Row& row = rows_[key];
    ++row.Count;
    if (primary.Facts.ReplyExpected) ++row.Expected;
}

void LatencyTable::AddReply(const LogEntry& primary, LogTime latency) {
    const auto found = rows_.find(KeyOf(primary));
    if (found == rows_.end()) return;
    ++found->second.Answered;
    if (latency >= 0 && latency <= kLongest) found->second.Times.Add(latency);
}

void LatencyTable::Print(std::ostream& out) const {
    out << "primary   direction       count    expected    answered  median ms    99 % ms     "
           "max ms\n";
    for (const auto& [key, row] : rows_) {
        const bool known = row.Times.Count() > 0;
        const std::string name =
            NameText({.Stream = std::get<0>(key), .Function = std::get<1>(key)});
        std::array<char, 160> line{};
        std::snprintf(line.data(),
                      line.size(),
                      "%-8s  %-9s %11llu %11llu %11llu %10s %10s %10s\n",
                      name.c_str(),
                      std::get<2>(key) ? "received" : "sent",
                      static_cast<unsigned long long>(row.Count),
                      static_cast<unsigned long long>(row.Expected),
                      static_cast<unsigned long long>(row.Answered),
                      Milliseconds(known, row.Times.Quantile(50)).c_str(),
                      Milliseconds(known, row.Times.Quantile(99)).c_str(),
                      Milliseconds(known, row.Times.Max()).c_str());
        out << line.data();
    }
}

void LatencyTable::PrintJson(std::ostream& out) const {
    for (const auto& [key, row] : rows_) {
        nlohmann::ordered_json json;
        json["event"] = "latency";
        json["stream"] = std::get<0>(key);
        json["function"] = std::get<1>(key);
        json["direction"] = std::get<2>(key) ? "received" : "sent";
        json["count"] = row.Count;
        json["expected"] = row.Expected;
        json["answered"] = row.Answered;
        const bool known = row.Times.Count() > 0;
        json["median_ms"] = JsonMilliseconds(known, row.Times.Quantile(50));
        json["p99_ms"] = JsonMilliseconds(known, row.Times.Quantile(99));
        json["max_ms"] = JsonMilliseconds(known, row.Times.Max());
        out << json.dump() << '\n';
    }
}

}  // namespace hexmire::program
