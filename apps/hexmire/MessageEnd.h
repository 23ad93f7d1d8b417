#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace hexmire::program {

/// Looks for the "." at the end of a message while its SML comes line by line, so that the message
/// need not be read again with each of them: what stands in texts and comments is passed over as
/// the reader of SML does, and what is open at the end of a line goes on in the next.
class MessageEnd {
public:
    /// Takes the next line, without its end. True when the message may end in it, or is wrong
    /// there: it is to be read now. False is certain but for texts that run over lines, which only
    /// SML as it was rendered has (docs/sml.md).
    [[nodiscard]] bool MayBeIn(std::string_view line);

private:
    void Pass(std::string_view line);
    // Each of these gives the offset behind what begins at `offset`.
    std::size_t PassComment(std::string_view line, std::size_t offset);
    std::size_t PassPiece(std::string_view line, std::size_t offset);
    std::size_t PassFormatName(std::string_view line, std::size_t offset);
    void PassLetter(char letter);

    bool isInComment_ = false;
    bool namesFormat_ = false;  ///< "<" was the last that came
    std::int64_t openItems_ = 0;
    bool hasEnded_ = false;     ///< the "." has come
    bool isWrong_ = false;      ///< something in this line stands where it cannot
    std::size_t size_ = 0;      ///< of all lines
    std::size_t doubtful_ = 0;  ///< bytes that were read for doubtful ends
};

}  // namespace hexmire::program
