#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace hexmire::detail {

/// Follows a message for as long as it is laid out, character for character, as the renderer lays
/// it out: the header line, one item a line, two blanks a level, every line ended by CR LF.
///
/// The renderer writes texts as they are, with their quotes, brackets and line breaks. Only the
/// layout around a text tells where it ends: there where the item's closing characters are followed
/// by a line that can come next. Once a line differs, the message was written by somebody else, and
/// nothing more is known about its texts.
class SmlLayout {
public:
    /// `isOnly` is true when nothing but blanks may follow the message.
    SmlLayout(std::string_view text, bool isOnly) noexcept;

    /// The header, as the renderer would write it, is expected at `start`.
    void Begin(std::size_t start, std::string_view header) noexcept;
    /// True while everything so far stood where the renderer puts it.
    [[nodiscard]] bool Holds() const noexcept { return next_ != kLost; }
    void Lose() noexcept { next_ = kLost; }
    /// An item of this format whose "<" is at `start` begins at a level.
    void Item(std::size_t start, std::size_t level, std::string_view format) noexcept;
    /// The item just begun is a list.
    void List(std::size_t start, std::size_t level) noexcept;
    /// ">" at `end` closes a list of this level.
    void ListClosed(std::size_t end, std::size_t level) noexcept;
    /// ">" at `end` closes any other item.
    void ItemClosed(std::size_t end) noexcept;

    /// Where `closing`, the characters between a text and its line end, first stand before a line
    /// that can follow an item of this level; none when they do not.
    [[nodiscard]] std::optional<std::size_t> TextEnd(std::size_t from,
                                                     std::size_t level,
                                                     std::string_view closing) const noexcept;
    /// ">" at `end` is followed by CR LF and a line that can follow an item of this level.
    [[nodiscard]] bool CanEndItem(std::size_t end, std::size_t level) const noexcept;

private:
    static constexpr std::size_t kLost = std::string_view::npos;

    [[nodiscard]] bool CanFollow(std::size_t line, std::size_t level) const noexcept;
    [[nodiscard]] bool IsBlank(std::size_t from, std::size_t count) const noexcept;
    [[nodiscard]] std::string_view From(std::size_t offset) const noexcept;

    std::string_view text_;
    std::size_t contentEnd_;    // Nothing but blanks from here on.
    std::size_t next_ = kLost;  // Where the next line begins.
    bool isOnly_;
};

/// The name that the renderer writes for a format name of any letter case and dialect, and its
/// format code; none for any other word.
struct SmlFormat {
    std::string_view Name;
    std::int32_t Code = 0;
};
[[nodiscard]] std::optional<SmlFormat> FindSmlFormat(std::string_view word) noexcept;

}  // namespace hexmire::detail
