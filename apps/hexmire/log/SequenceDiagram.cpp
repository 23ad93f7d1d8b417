#include "log/SequenceDiagram.h"

#include <algorithm>
#include <array>

namespace hexmire::program {

namespace {

constexpr std::int32_t kErrorStream = 9;

const char* ErrorMeaning(std::int32_t function) {
    switch (function) {
        case 1:
            return "device ID not known";
        case 3:
            return "stream not known";
        case 5:
            return "function not known";
        case 7:
            return "illegal data";
        case 9:
            return "transaction time-out";
        case 11:
            return "data too long";
        case 13:
            return "conversation time-out";
        default:
            return "error message";
    }
}

}  // namespace

std::int64_t SequenceDiagram::Add(const LogEntry& entry) {
    ++seen_;
    if (entry.Facts.Direction != Way::Received && entry.Facts.FromEquipment) equipmentSeen_ = true;
    if (rows_.size() == limit_) return -1;
    rows_.emplace_back();
    rows_.back().Head = entry;
    return static_cast<std::int64_t>(rows_.size()) - 1;
}

void SequenceDiagram::Pair(const PairingResult& result) {
    if (result.Primary.Tag < 0) return;
    Row& primary = rows_[static_cast<std::size_t>(result.Primary.Tag)];
    primary.End = result;
    if (result.Kind == Outcome::NoReply || result.ReplyTag < 0) return;
    primary.Reply = result.ReplyTag;
    rows_[static_cast<std::size_t>(result.ReplyTag)].Primary = result.Primary.Tag;
}

void SequenceDiagram::SetUnfinished(const LogEntry& header) {
    const auto found = std::find_if(rows_.rbegin(), rows_.rend(), [&](const Row& row) {
        return row.Head.Message == header.Message;
    });
    if (found != rows_.rend()) found->Unfinished = true;
}

bool SequenceDiagram::FromHost(const Row& row) const {
    const bool ofEquipment =
        side_ == LogSide::Equipment || (side_ == LogSide::Unknown && equipmentSeen_);
    return (row.Head.Facts.Direction == Way::Received) == ofEquipment;
}

/// A bracket takes the first lane that is free from its primary to its reply.
std::vector<int> SequenceDiagram::Lanes() const {
    std::vector<int> lanes(rows_.size());
    std::array<std::array<std::int64_t, kLanes>, 2> takenUpTo{};
    for (auto& side : takenUpTo)
        side.fill(-1);
    for (std::size_t i = 0; i < rows_.size(); ++i) {
        if (rows_[i].Reply < 0) continue;
        auto& taken = takenUpTo[FromHost(rows_[i]) ? 0 : 1];
        const auto place = static_cast<std::int64_t>(i);
        const auto free =
            std::find_if(taken.begin(), taken.end(), [&](std::int64_t end) { return end < place; });
        const auto lane = std::min<std::ptrdiff_t>(free - taken.begin(), kLanes - 1);
        lanes[i] = static_cast<int>(lane);
        taken[static_cast<std::size_t>(lane)] = rows_[i].Reply;
    }
    return lanes;
}

std::string SequenceDiagram::NoteOf(const Row& row) const {
    if (row.Unfinished)
        return row.Head.Facts.Direction == Way::Received ? "cannot be decoded" : "not sent";
    if (row.Head.Facts.Name.Stream == kErrorStream)
        return ErrorMeaning(row.Head.Facts.Name.Function);
    if (row.Head.Facts.Name.Function == 0) return "transaction aborted";
    return row.Head.Unexpected ? "nobody waits for it" : "";
}

}  // namespace hexmire::program
