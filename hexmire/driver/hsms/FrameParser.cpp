#include <hexmire/driver/hsms/FrameParser.h>

#include <algorithm>

namespace hexmire::hsms {

bool FrameParser::FillHead(std::span<const std::uint8_t>& input, std::size_t upTo) noexcept {
    const std::size_t count = std::min(upTo - headCount_, input.size());
    std::copy_n(input.begin(), count, head_.begin() + static_cast<std::ptrdiff_t>(headCount_));
    headCount_ += count;
    input = input.subspan(count);
    return headCount_ == upTo;
}

FrameParser::Step FrameParser::Next(std::span<const std::uint8_t>& input,
                                    std::uint32_t maxBodyBytes) {
    if (headCount_ == 0) body_.clear();
    if (headCount_ < kLengthBytes) {
        if (!FillHead(input, kLengthBytes)) return Step::NeedMore;
        if (Length() < kHeaderBytes) return Step::TooShort;
        if (Length() - kHeaderBytes > maxBodyBytes) return Step::TooLong;
    }
    if (headCount_ < head_.size() && !FillHead(input, head_.size())) return Step::NeedMore;
    const std::size_t missing = Length() - kHeaderBytes - body_.size();
    const std::size_t count = std::min(missing, input.size());
    body_.insert(body_.end(), input.begin(), input.begin() + static_cast<std::ptrdiff_t>(count));
    input = input.subspan(count);
    if (count < missing) return Step::NeedMore;
    headCount_ = 0;
    return Step::Frame;
}

void FrameParser::Reset() noexcept {
    headCount_ = 0;
    body_ = decltype(body_)();  // with its memory
}

}  // namespace hexmire::hsms
