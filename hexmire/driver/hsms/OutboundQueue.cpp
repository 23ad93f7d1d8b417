#include <hexmire/driver/hsms/OutboundQueue.h>

#include <algorithm>
#include <utility>

namespace hexmire::hsms {

void OutboundQueue::Push(OutFrame frame) {
    if (frame.What != OutFrame::Kind::Control) {
        ++dataFrames_;
        dataBytes_ += frame.Bytes.size();
    }
    frames_.push_back(std::move(frame));
}

std::size_t OutboundQueue::Offer(std::span<std::span<const std::uint8_t>> views) {
    std::size_t skip = written_;
    std::size_t filled = 0;
    for (const OutFrame& frame : frames_) {
        if (filled == views.size()) break;
        views[filled++] = std::span(frame.Bytes).subspan(skip);
        skip = 0;
    }
    offered_ = std::max(offered_, filled);
    return filled;
}

std::optional<OutFrame> OutboundQueue::TakeWritten() {
    if (frames_.empty() || written_ < frames_.front().Bytes.size()) return std::nullopt;
    OutFrame frame = std::move(frames_.front());
    frames_.pop_front();
    written_ -= frame.Bytes.size();
    Leave(frame);
    return frame;
}

std::vector<OutFrame> OutboundQueue::SettleThrough(std::uint32_t systemBytes) {
    const auto begin = frames_.begin();
    const auto end = begin + static_cast<std::ptrdiff_t>(offered_);
    const auto found = std::find_if(begin, end, [systemBytes](const OutFrame& frame) {
        return frame.What == OutFrame::Kind::Data && frame.Header.IsPrimary() &&
               frame.Header.SystemBytes == systemBytes;
    });
    std::vector<OutFrame> settled;
    if (found == end) return settled;
    for (auto frame = begin; frame != found + 1; ++frame) {
        if (frame->What != OutFrame::Kind::Data) continue;
        settled.push_back(*frame);
        frame->What = OutFrame::Kind::Settled;
    }
    return settled;
}

std::vector<FrameHeader> OutboundQueue::AbortData() {
    std::vector<FrameHeader> aborted;
    for (OutFrame& frame : frames_) {
        if (frame.What != OutFrame::Kind::Data) continue;
        aborted.push_back(frame.Header);
        frame.What = OutFrame::Kind::Settled;
    }
    const std::size_t begun = std::max<std::size_t>(offered_, written_ > 0 ? 1 : 0);
    std::deque<OutFrame> rest;
    for (std::size_t index = 0; index < frames_.size(); ++index) {
        OutFrame& frame = frames_[index];
        if (index < begun || frame.What == OutFrame::Kind::Control) {
            rest.push_back(std::move(frame));
        } else {
            Leave(frame);
        }
    }
    frames_ = std::move(rest);
    return aborted;
}

void OutboundQueue::Clear() noexcept {
    frames_.clear();
    written_ = offered_ = dataFrames_ = dataBytes_ = 0;
}

void OutboundQueue::Leave(const OutFrame& frame) noexcept {
    if (frame.What == OutFrame::Kind::Control) return;
    --dataFrames_;
    dataBytes_ -= frame.Bytes.size();
}

}  // namespace hexmire::hsms
