#include <hexmire/core/ItemFormat.h>
#include <hexmire/core/detail/SmlLayout.h>
#include <hexmire/support/Text.h>

#include <algorithm>
#include <array>

namespace hexmire::detail {

namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr std::string_view kListClosing = " >\r\n";

constexpr std::array kFormats{
    SmlFormat{"L", FormatList},
    SmlFormat{"B", FormatBinary},
    SmlFormat{"BOOL", FormatBoolean},
    SmlFormat{"A", FormatAscii},
    SmlFormat{"I8", FormatI8},
    SmlFormat{"I1", FormatI1},
    SmlFormat{"I2", FormatI2},
    SmlFormat{"I4", FormatI4},
    SmlFormat{"F8", FormatF8},
    SmlFormat{"F4", FormatF4},
    SmlFormat{"U8", FormatU8},
    SmlFormat{"U1", FormatU1},
    SmlFormat{"U2", FormatU2},
    SmlFormat{"U4", FormatU4},
    SmlFormat{"V", FormatVar},
};

/// An item as the renderer begins it: "< ", a format's name, a blank.
bool BeginsItem(std::string_view line) noexcept {
    if (!line.starts_with("< ")) return false;
    line.remove_prefix(2);
    return std::any_of(kFormats.begin(), kFormats.end(), [line](const SmlFormat& format) {
        return line.starts_with(format.Name) && line.substr(format.Name.size()).starts_with(' ');
    });
}

}  // namespace

std::optional<SmlFormat> FindSmlFormat(std::string_view word) noexcept {
    if (EqualsIgnoringCase(word, "BOOLEAN")) word = "BOOL";
    const auto found =
        std::find_if(kFormats.begin(), kFormats.end(), [word](const SmlFormat& format) {
            return EqualsIgnoringCase(format.Name, word);
        });
    if (found == kFormats.end()) return std::nullopt;
    return *found;
}

SmlLayout::SmlLayout(std::string_view text, bool isOnly) noexcept
    : text_(text), contentEnd_(text.find_last_not_of(" \t\r\n") + 1), isOnly_(isOnly) {}

void SmlLayout::Begin(std::size_t start, std::string_view header) noexcept {
    const std::size_t end = start + header.size();
    const bool matches = From(start).starts_with(header) && From(end).starts_with(kLineEnd);
    next_ = matches ? end + kLineEnd.size() : kLost;
}

void SmlLayout::Item(std::size_t start, std::size_t level, std::string_view format) noexcept {
    if (!Holds()) return;
    const bool matches = start == next_ + 2 * level && IsBlank(next_, 2 * level) &&
                         From(start).starts_with("< ") && From(start + 2).starts_with(format) &&
                         From(start + 2 + format.size()).starts_with(' ');
    if (!matches) next_ = kLost;
}

void SmlLayout::List(std::size_t start, std::size_t level) noexcept {
    if (!Holds()) return;
    const std::size_t behind = start + 4;  // "< L "
    if (From(behind).starts_with(kLineEnd)) {
        next_ = behind + kLineEnd.size();
    } else if (IsBlank(behind, 2 * level) && From(behind + 2 * level).starts_with(kListClosing)) {
        next_ = behind + 2 * level + kListClosing.size();
    } else {
        next_ = kLost;
    }
}

void SmlLayout::ListClosed(std::size_t end, std::size_t level) noexcept {
    if (!Holds() || end + 3 == next_) return;  // An empty list was told from its beginning.
    const std::size_t closing = next_ + 2 * level;
    const bool matches =
        closing + 1 == end && IsBlank(next_, 2 * level) && From(closing).starts_with(kListClosing);
    next_ = matches ? closing + kListClosing.size() : kLost;
}

void SmlLayout::ItemClosed(std::size_t end) noexcept {
    if (!Holds()) return;
    next_ = From(end - 1).starts_with(kListClosing) ? end + 3 : kLost;
}

std::optional<std::size_t> SmlLayout::TextEnd(std::size_t from,
                                              std::size_t level,
                                              std::string_view closing) const noexcept {
    if (!Holds()) return std::nullopt;
    for (std::size_t end = text_.find(closing, from); end != std::string_view::npos;
         end = text_.find(closing, end + 1)) {
        if (CanEndItem(end + closing.size() - 1, level)) return end;
    }
    return std::nullopt;
}

bool SmlLayout::CanEndItem(std::size_t end, std::size_t level) const noexcept {
    return From(end + 1).starts_with(kLineEnd) && CanFollow(end + 1 + kLineEnd.size(), level);
}

bool SmlLayout::CanFollow(std::size_t line, std::size_t level) const noexcept {
    if (line >= contentEnd_) return true;  // Cut short here; the item was complete.
    if (level == 0) {
        if (text_[line] != '.') return false;
        return line + 1 == contentEnd_ || (!isOnly_ && From(line + 1).starts_with(kLineEnd));
    }
    const std::size_t outer = 2 * (level - 1);
    if (IsBlank(line, outer) && From(line + outer).starts_with(kListClosing)) return true;
    return IsBlank(line, outer + 2) && BeginsItem(From(line + outer + 2));
}

bool SmlLayout::IsBlank(std::size_t from, std::size_t count) const noexcept {
    const std::string_view part = From(from).substr(0, count);
    return part.size() == count && part.find_first_not_of(' ') == std::string_view::npos;
}

std::string_view SmlLayout::From(std::size_t offset) const noexcept {
    return text_.substr(std::min(offset, text_.size()));
}

}  // namespace hexmire::detail
