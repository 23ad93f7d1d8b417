#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace hexmire::detail {

/// Where and why a text is no SML. It ends the reading and never leaves the parser.
struct SmlError {
    std::size_t Offset = 0;
    std::string Expected;
    std::string Found;
    bool IsAtEnd = false;  ///< what was found ends the text, so that it may be cut short
};

/// Place of a character in a text, 1-based. Lines end with LF or CR LF; every byte is a column.
struct SmlPlace {
    std::int32_t Line = 1;
    std::int32_t Column = 1;
};
[[nodiscard]] SmlPlace PlaceOf(std::string_view text, std::size_t offset) noexcept;

/// Reads an SML text forward: blanks, comments, words and single characters. The text outlives it.
///
/// Comments stand wherever blanks may: from "/*" to "*/", from "//" to the end of the line, and
/// lines whose first character is "*".
class SmlScanner {
public:
    explicit SmlScanner(std::string_view text, std::size_t position = 0)
        : text_(text), position_(position) {}

    [[nodiscard]] std::string_view Text() const noexcept { return text_; }
    [[nodiscard]] std::size_t Position() const noexcept { return position_; }
    void MoveTo(std::size_t position) noexcept { position_ = position; }
    [[nodiscard]] bool IsAtEnd() const noexcept { return position_ >= text_.size(); }
    [[nodiscard]] bool IsAt(char character) const noexcept {
        return !IsAtEnd() && text_[position_] == character;
    }
    /// At a single or a double quote.
    [[nodiscard]] bool IsAtQuote() const noexcept { return IsAt('\'') || IsAt('"'); }

    /// Skips blanks, line ends and comments. Throws SmlError for a comment without end.
    void SkipBlanks();
    /// Takes one character; throws SmlError when another one, or none, is there.
    void Take(char character);
    /// Takes the characters up to a blank, a bracket, a quote, a comment or one of `others`; may be
    /// empty.
    std::string_view Word(std::string_view others = {});

    /// The character at an offset ends a line, as LF or as the CR of CR LF.
    [[nodiscard]] bool IsLineEnd(std::size_t offset) const noexcept;
    /// "/*" or "//" begins at an offset.
    [[nodiscard]] bool IsComment(std::size_t offset) const noexcept;
    /// A word or a quoted piece may end before this offset: a blank, ">" or a comment begins there,
    /// or the text ends.
    [[nodiscard]] bool IsBoundary(std::size_t offset) const noexcept;
    /// The first offset from this one on that holds neither blank nor tabulator.
    [[nodiscard]] std::size_t AfterBlanks(std::size_t offset) const noexcept;

    /// Throws SmlError; what was found is told from the text at the place.
    [[noreturn]] void Fail(std::string expected) const { FailAt(position_, std::move(expected)); }
    [[noreturn]] void FailAt(std::size_t offset, std::string expected) const;

private:
    [[nodiscard]] std::size_t WordEnd(std::size_t offset, std::string_view others) const noexcept;
    [[nodiscard]] bool IsFirstInLine() const noexcept;

    std::string_view text_;
    std::size_t position_ = 0;
};

}  // namespace hexmire::detail
