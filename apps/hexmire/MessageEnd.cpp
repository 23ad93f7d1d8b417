#include "MessageEnd.h"

#include <algorithm>

namespace hexmire::program {

namespace {

constexpr std::string_view kBlanks = " \t\r\n\v\f";

bool IsBlank(char letter) { return kBlanks.find(letter) != std::string_view::npos; }
bool IsQuote(char letter) { return letter == '\'' || letter == '"'; }

bool IsComment(std::string_view line, std::size_t offset) {
    const std::string_view rest = line.substr(offset);
    return rest.starts_with("/*") || rest.starts_with("//");
}

std::size_t AfterBlanks(std::string_view line, std::size_t offset) {
    return std::min(line.find_first_not_of(" \t", offset), line.size());
}

/// What begins behind an item: nothing more in this line, a comment, an item, the end of a list or
/// of the message.
bool CanFollowItem(std::string_view line, std::size_t offset) {
    const std::size_t next = AfterBlanks(line, offset);
    if (next == line.size() || IsComment(line, next)) return true;
    if (line[next] != '.') return line[next] == '<' || line[next] == '>';
    return next + 1 == line.size() || line[next + 1] == '>' || IsBlank(line[next + 1]) ||
           IsComment(line, next + 1);
}

bool IsHexByte(std::string_view text) {
    return text.size() > 2 && (text.starts_with("0x") || text.starts_with("0X")) &&
           std::string_view("0123456789abcdefABCDEF").find(text[2]) != std::string_view::npos;
}

/// A single quote right before `offset` ends its piece of a text: texts hold single quotes too.
bool EndsPiece(std::string_view line, std::size_t offset) {
    const std::size_t next = AfterBlanks(line, offset);
    if (next == line.size() || IsComment(line, next)) return true;
    if (line[next] == '>') return CanFollowItem(line, next + 1);
    return next > offset && (IsQuote(line[next]) || IsHexByte(line.substr(next)));
}

std::string_view Trimmed(std::string_view line) {
    const std::size_t first = line.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return line.substr(first, line.find_last_not_of(kBlanks) + 1 - first);
}

}  // namespace

bool MessageEnd::MayBeIn(std::string_view line) {
    // A doubtful end costs a reading of all that has come: no more of them than grow with it.
    constexpr std::size_t kFreeDoubts = std::size_t{1} << 20;
    constexpr std::size_t kDoubtsPerByte = 4;
    size_ += line.size() + 1;
    if (line.ends_with('\r')) line.remove_suffix(1);
    const bool wasThere = hasEnded_ && !isInComment_;
    isWrong_ = false;
    Pass(line);
    const bool isThere = hasEnded_ && !isInComment_;
    if (isThere && !wasThere) return true;
    const bool isDoubtful = isThere || isWrong_ || Trimmed(line) == ".";
    if (!isDoubtful || doubtful_ + size_ > kFreeDoubts + kDoubtsPerByte * size_) return false;
    doubtful_ += size_;
    return true;
}

void MessageEnd::Pass(std::string_view line) {
    const std::size_t first = AfterBlanks(line, 0);
    for (std::size_t i = 0; i < line.size();) {
        const std::string_view rest = line.substr(i);
        if (isInComment_ || rest.starts_with("/*")) {
            i = PassComment(line, i);
        } else if (rest.starts_with("//") || (rest.front() == '*' && i == first)) {
            return;
        } else if (IsBlank(rest.front())) {
            ++i;
        } else if (namesFormat_) {
            i = PassFormatName(line, i);
        } else if (IsQuote(rest.front())) {
            i = PassPiece(line, i);
        } else {
            PassLetter(line[i++]);
        }
    }
}

std::size_t MessageEnd::PassComment(std::string_view line, std::size_t offset) {
    if (!isInComment_) offset += 2;
    const std::size_t end = line.find("*/", offset);
    isInComment_ = end == std::string_view::npos;
    return isInComment_ ? line.size() : end + 2;
}

// A piece of a text lies in one line, and so does a quoted name in front of the body.
std::size_t MessageEnd::PassPiece(std::string_view line, std::size_t offset) {
    const char quote = line[offset];
    std::size_t end = line.find(quote, offset + 1);
    while (quote == '\'' && openItems_ > 0 && end != std::string_view::npos &&
           !EndsPiece(line, end + 1))
        end = line.find(quote, end + 1);
    isWrong_ = isWrong_ || end == std::string_view::npos;
    return end == std::string_view::npos ? line.size() : end + 1;
}

std::size_t MessageEnd::PassFormatName(std::string_view line, std::size_t offset) {
    namesFormat_ = false;
    const char letter = line[offset];
    const std::size_t behind = offset + 1;
    const bool isAnyText = (letter == 'V' || letter == 'v') &&
                           (behind == line.size() || line[behind] == '>' || IsBlank(line[behind]));
    // Of other formats the letters tell nothing; a "<" or ">" here is wrong and is counted.
    if (!isAnyText) return offset;
    std::size_t end = behind;
    while (end < line.size() && (line[end] != '>' || !CanFollowItem(line, end + 1)))
        ++end;
    isWrong_ = isWrong_ || end == line.size();
    return end;
}

void MessageEnd::PassLetter(char letter) {
    if (letter == '<') {
        ++openItems_;
        namesFormat_ = true;
    } else if (letter == '>') {
        --openItems_;
    } else if (letter == '.' && openItems_ <= 0) {
        hasEnded_ = true;
    }
    isWrong_ = isWrong_ || openItems_ < 0;
}

}  // namespace hexmire::program
