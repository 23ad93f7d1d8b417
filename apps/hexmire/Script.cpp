#include "Script.h"

#include "Failure.h"

#include <charconv>
#include <cmath>
#include <vector>

namespace hexmire::program {

namespace {

using Words = std::vector<std::string_view>;

Words Split(std::string_view line) {
    constexpr std::string_view kBlanks = " \t\r";
    Words words;
    for (std::size_t begin = line.find_first_not_of(kBlanks); begin != std::string_view::npos;) {
        const std::size_t end = line.find_first_of(kBlanks, begin);
        words.push_back(line.substr(begin, end - begin));
        begin = line.find_first_not_of(kBlanks, end);
    }
    return words;
}

[[noreturn]] void Refuse(std::string_view usage) {
    throw Failure("expected '" + std::string(usage) + "'");
}

/// Seconds with or without a fraction, up to a day.
Duration Seconds(std::string_view word) {
    constexpr double kLongest = 86'400;
    double seconds = 0;
    const char* end = word.data() + word.size();
    const auto [stop, error] = std::from_chars(word.data(), end, seconds, std::chars_format::fixed);
    if (error != std::errc() || stop != end || !(seconds >= 0) || seconds > kLongest)
        throw Failure("'" + std::string(word) + "' is no number of seconds from 0 to 86400");
    return Duration(std::llround(seconds * 1'000));
}

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

ExpectCommand Expectation(std::string_view word) {
    std::string_view rest = word;
    if (TakeLetter(rest, 'S', 's')) {
        const auto stream = TakeNumber(rest, 127);
        if (stream && TakeLetter(rest, 'F', 'f')) {
            const auto function = TakeNumber(rest, 255);
            if (function && rest.empty()) return {.Stream = *stream, .Function = *function};
        }
    }
    throw Failure("'" + std::string(word) + "' is no stream and function such as S1F13");
}

Command ParseConnect(const Words& words) {
    if (words.size() > 2) Refuse("connect [SECONDS]");
    ConnectCommand command;
    if (words.size() == 2) command.Timeout = Seconds(words[1]);
    return command;
}

Command ParseExpect(const Words& words) {
    if (words.size() < 2 || words.size() > 3) Refuse("expect SxFy [SECONDS]");
    ExpectCommand command = Expectation(words[1]);
    if (words.size() == 3) command.Timeout = Seconds(words[2]);
    return command;
}

}  // namespace

std::optional<Command> ParseCommand(std::string_view line) {
    const Words words = Split(line);
    if (words.empty() || words[0].starts_with('#')) return std::nullopt;
    if (words[0] == "connect") return ParseConnect(words);
    if (words[0] == "expect") return ParseExpect(words);
    if (words[0] == "send") {
        if (words.size() < 2) Refuse("send NAME");
        // Names may hold blanks: everything up to the last word is the name.
        const char* end = words.back().data() + words.back().size();
        return SendCommand{std::string(words[1].data(), end)};
    }
    if (words[0] == "wait") {
        if (words.size() != 2) Refuse("wait SECONDS");
        return WaitCommand{Seconds(words[1])};
    }
    if (words[0] == "disconnect" || words[0] == "quit") {
        if (words.size() != 1) Refuse(words[0]);
        if (words[0] == "quit") return QuitCommand();
        return DisconnectCommand();
    }
    throw Failure("unknown command '" + std::string(words[0]) +
                  "' (connect, send, expect, wait, disconnect, quit)");
}

}  // namespace hexmire::program
