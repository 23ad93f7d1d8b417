#include <hexmire/core/detail/SmlScanner.h>

#include <algorithm>
#include <limits>
#include <utility>

namespace hexmire::detail {

namespace {

constexpr std::string_view kBlanks = " \t\r\n\v\f";
constexpr std::string_view kBrackets = "<>[]'\"";
constexpr std::size_t kLongestFound = 24;

bool IsOneOf(char character, std::string_view set) noexcept {
    return set.find(character) != std::string_view::npos;
}

std::int32_t Clamp(std::size_t value) noexcept {
    constexpr auto kLargest = static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max());
    return static_cast<std::int32_t>(std::min(value, kLargest));
}

/// In double quotes, cut when it is long, control characters as "?".
std::string Quoted(std::string_view text) {
    std::string shown(text.substr(0, kLongestFound));
    std::replace_if(
        shown.begin(),
        shown.end(),
        [](char character) {
            const auto code = static_cast<std::uint8_t>(character);
            return code < 0x20 || (code >= 0x7F && code < 0xA0);
        },
        '?');
    if (text.size() > kLongestFound) shown += "...";
    return '"' + shown + '"';
}

}  // namespace

SmlPlace PlaceOf(std::string_view text, std::size_t offset) noexcept {
    const std::string_view before = text.substr(0, offset);
    const auto lineEnds = static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n'));
    const std::size_t lastEnd = before.rfind('\n');
    const std::size_t start = lastEnd == std::string_view::npos ? 0 : lastEnd + 1;
    return {Clamp(lineEnds + 1), Clamp(before.size() - start + 1)};
}

void SmlScanner::SkipBlanks() {
    for (;;) {
        position_ = std::min(text_.find_first_not_of(kBlanks, position_), text_.size());
        if (IsComment(position_) && text_[position_ + 1] == '*') {
            const std::size_t end = text_.find("*/", position_ + 2);
            if (end == std::string_view::npos) FailAt(text_.size(), "\"*/\"");
            position_ = end + 2;
        } else if (IsComment(position_) || (IsAt('*') && IsFirstInLine())) {
            position_ = std::min(text_.find('\n', position_), text_.size());
        } else {
            return;
        }
    }
}

void SmlScanner::Take(char character) {
    if (!IsAt(character)) Fail(Quoted({&character, 1}));
    ++position_;
}

std::string_view SmlScanner::Word(std::string_view others) {
    const std::size_t start = position_;
    position_ = WordEnd(start, others);
    return text_.substr(start, position_ - start);
}

bool SmlScanner::IsLineEnd(std::size_t offset) const noexcept {
    const std::string_view rest = text_.substr(std::min(offset, text_.size()));
    return rest.starts_with('\n') || rest.starts_with("\r\n");
}

bool SmlScanner::IsComment(std::size_t offset) const noexcept {
    const std::string_view rest = text_.substr(std::min(offset, text_.size()));
    return rest.starts_with("/*") || rest.starts_with("//");
}

bool SmlScanner::IsBoundary(std::size_t offset) const noexcept {
    return offset >= text_.size() || text_[offset] == '>' || IsOneOf(text_[offset], kBlanks) ||
           IsComment(offset);
}

std::size_t SmlScanner::AfterBlanks(std::size_t offset) const noexcept {
    return std::min(text_.find_first_not_of(" \t", offset), text_.size());
}

void SmlScanner::FailAt(std::size_t offset, std::string expected) const {
    SmlError error{offset, std::move(expected), {}, offset >= text_.size()};
    if (error.IsAtEnd) {
        error.Found = "the end of the text";
    } else if (IsLineEnd(offset)) {
        error.Found = "the end of the line";
    } else {
        const std::size_t end = WordEnd(offset, {});
        error.IsAtEnd = end > offset && end == text_.size();
        error.Found = Quoted(text_.substr(offset, std::max<std::size_t>(end - offset, 1)));
    }
    throw error;
}

std::size_t SmlScanner::WordEnd(std::size_t offset, std::string_view others) const noexcept {
    while (offset < text_.size() && !IsOneOf(text_[offset], kBlanks) &&
           !IsOneOf(text_[offset], kBrackets) && !IsOneOf(text_[offset], others) &&
           !IsComment(offset))
        ++offset;
    return offset;
}

bool SmlScanner::IsFirstInLine() const noexcept {
    std::size_t start = position_;
    while (start > 0 && (text_[start - 1] == ' ' || text_[start - 1] == '\t'))
        --start;
    return start == 0 || text_[start - 1] == '\n';
}

}  // namespace hexmire::detail
