#pragma once

#include <cstring>
#include <span>
#include <string_view>
#include <vector>

namespace hexmire::program {

/// A line, or a piece of one that is longer than the buffer; the line end belongs to it.
struct LinePiece {
    std::string_view Text;
    bool Starts = true;  ///< the line begins here
    bool Ends = true;    ///< the line ends here, with its line end
};

/// Cuts bytes into lines within one buffer of constant size: nothing is copied but the beginning of
/// a line whose end has not come yet.
class LineSplitter {
public:
    static constexpr std::size_t kSize = std::size_t{256} * 1024;

    explicit LineSplitter(std::size_t size = kSize) : buffer_(size) {}

    /// Where the next bytes are to be put; never empty.
    [[nodiscard]] std::span<char> Room() noexcept { return std::span(buffer_).subspan(held_); }

    /// Takes `count` bytes that were put into the room and hands on the lines that are whole, or a
    /// full buffer without any line end.
    template <class OnPiece>
    void Take(std::size_t count, OnPiece&& onPiece) {
        const char* const end = buffer_.data() + held_ + count;
        const char* line = buffer_.data();
        const char* search = line + held_;
        while (const void* found =
                   std::memchr(search, '\n', static_cast<std::size_t>(end - search))) {
            const char* const next = static_cast<const char*>(found) + 1;
            onPiece(Piece(line, next, true));
            inLine_ = false;
            line = search = next;
        }
        if (line == buffer_.data() && end == buffer_.data() + buffer_.size()) {
            onPiece(Piece(line, end, false));
            inLine_ = true;
            line = end;
        }
        held_ = static_cast<std::size_t>(end - line);
        if (held_ > 0) std::memmove(buffer_.data(), line, held_);
    }

    /// Hands on the last line, which has no line end. What comes later begins a line.
    template <class OnPiece>
    void Finish(OnPiece&& onPiece) {
        if (held_ > 0) onPiece(Piece(buffer_.data(), buffer_.data() + held_, false));
        held_ = 0;
        inLine_ = false;
    }

    /// Every byte was handed on, and the last one ended a line.
    [[nodiscard]] bool AtLineStart() const noexcept { return held_ == 0 && !inLine_; }

private:
    [[nodiscard]] LinePiece Piece(const char* from, const char* to, bool ends) const {
        return {
            .Text = {from, static_cast<std::size_t>(to - from)}, .Starts = !inLine_, .Ends = ends};
    }

    std::vector<char> buffer_;
    std::size_t held_ = 0;
    bool inLine_ = false;
};

}  // namespace hexmire::program
