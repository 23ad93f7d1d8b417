#pragma once

#include <string>
#include <vector>

namespace hexmire::fakes {

/// The lines of a message log without time stamps and line ends; a line break inside a line stays.
inline std::vector<std::string> LogLinesOf(const std::string& text) {
    constexpr std::size_t kStampSize = 23;  // "2024/03/05 14:07:09.42 "
    const auto isStamp = [&text](std::size_t at) {
        return text.size() >= at + kStampSize && text[at + 4] == '/' && text[at + 7] == '/' &&
               text[at + 13] == ':' && text[at + 19] == '.';
    };
    std::vector<std::string> lines;
    for (std::size_t start = 0; start < text.size();) {
        std::size_t end = text.find("\r\n", start);
        while (end != std::string::npos && end + 2 < text.size() && !isStamp(end + 2)) {
            end = text.find("\r\n", end + 2);
        }
        if (end == std::string::npos) end = text.size();
        lines.push_back(text.substr(start + kStampSize, end - start - kStampSize));
        start = end + 2;
    }
    return lines;
}

}  // namespace hexmire::fakes
