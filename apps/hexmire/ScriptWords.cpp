#include "ScriptWords.h"

#include "Input.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>

namespace hexmire::program {

namespace {

/// The number at the front of the text, which it is taken from.
std::optional<std::int32_t> TakeNumber(std::string_view& text, std::int32_t largest) {
    std::int32_t number = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || number < 0 || number > largest) return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(stop - text.data()));
    return number;
}

bool TakeLetter(std::string_view& text, char upper, char lower) {
    if (text.empty() || (text.front() != upper && text.front() != lower)) return false;
    text.remove_prefix(1);
    return true;
}

char LowerCase(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

bool IsSameLetter(char one, char other) { return LowerCase(one) == LowerCase(other); }

bool FitsWildcards(std::string_view text, std::string_view pattern) {
    std::size_t star = std::string_view::npos;  // the last "*", and where its characters began
    std::size_t begin = 0;
    std::size_t at = 0;
    std::size_t in = 0;
    while (at < text.size()) {
        if (in < pattern.size() && pattern[in] == '*') {
            star = in++;
            begin = at;
        } else if (in < pattern.size() &&
                   (pattern[in] == '?' || IsSameLetter(pattern[in], text[at]))) {
            ++in;
            ++at;
        } else if (star != std::string_view::npos) {
            in = star + 1;
            at = ++begin;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', in) == std::string_view::npos;
}

}  // namespace

std::vector<std::string_view> SplitWords(std::string_view line) {
    constexpr std::string_view kBlanks = " \t\r\n";
    std::vector<std::string_view> words;
    for (std::size_t begin = line.find_first_not_of(kBlanks); begin != std::string_view::npos;) {
        const std::size_t end = line.find_first_of(kBlanks, begin);
        words.push_back(line.substr(begin, end - begin));
        begin = line.find_first_not_of(kBlanks, end);
    }
    return words;
}

std::string Latin1In(std::string_view utf8) {
    try {
        return Latin1Text(utf8);
    } catch (const BadText& bad) {
        throw BadCommand(
            bad.what(), static_cast<int>(bad.Line), static_cast<int>(bad.Column), false);
    }
}

std::string Latin1In(const CommandText& text, std::string_view piece) {
    if (piece.empty()) return {};
    // With what stands in front of it, so that places are those of the command.
    const auto begin = static_cast<std::size_t>(piece.data() - text.Whole.data());
    const std::size_t before = Latin1In(text.Whole.substr(0, begin)).size();
    return Latin1In(text.Whole.substr(0, begin + piece.size())).substr(before);
}

void CheckWordCount(const CommandText& text, std::size_t least, std::size_t most) {
    if (text.Words.size() < least || text.Words.size() > most) throw UsageOfCommand();
}

Duration SecondsIn(std::string_view word) {
    constexpr double kLongest = 86'400;
    double seconds = 0;
    const char* end = word.data() + word.size();
    const auto [stop, error] = std::from_chars(word.data(), end, seconds, std::chars_format::fixed);
    if (error != std::errc() || stop != end || !(seconds >= 0) || seconds > kLongest)
        throw BadCommand("'" + std::string(word) + "' is no number of seconds from 0 to 86400");
    return Duration(std::llround(seconds * 1'000));
}

std::optional<StreamAndFunction> ParseStreamAndFunction(std::string_view word) {
    if (!TakeLetter(word, 'S', 's')) return std::nullopt;
    const auto stream = TakeNumber(word, 127);
    if (!stream || !TakeLetter(word, 'F', 'f')) return std::nullopt;
    const auto function = TakeNumber(word, 255);
    if (!function || !word.empty()) return std::nullopt;
    return StreamAndFunction{.Stream = *stream, .Function = *function};
}

StreamAndFunction StreamAndFunctionIn(std::string_view word) {
    if (const auto read = ParseStreamAndFunction(word)) return *read;
    throw BadCommand("'" + std::string(word) + "' is no stream and function such as S1F13");
}

bool IsSameWord(std::string_view one, std::string_view other) {
    return std::ranges::equal(one, other, IsSameLetter);
}

bool FitsPattern(std::string_view text, std::string_view pattern) {
    if (pattern.find_first_of("*?") != std::string_view::npos) return FitsWildcards(text, pattern);
    return std::search(text.begin(), text.end(), pattern.begin(), pattern.end(), IsSameLetter) !=
               text.end() ||
           pattern.empty();
}

}  // namespace hexmire::program
