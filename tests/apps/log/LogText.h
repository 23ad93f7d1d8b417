#pragma once

#include "log/LogReader.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <string_view>

namespace hexmire::fakes {

/// Writes a message log as the control does, at a time that the test moves.
class LogText {
public:
    explicit LogText(std::string day = "2024/03/05") : day_(std::move(day)) {}

    /// Hundredths of a second since midnight.
    int Time = 14 * 360'000;

    LogText& Line(const std::string& text) {
        char time[64];
        std::snprintf(time,
                      sizeof time,
                      " %02d:%02d:%02d.%02d ",
                      Time / 360'000,
                      Time / 6'000 % 60,
                      Time / 100 % 60,
                      Time % 100);
        text_ += day_ + time + text + "\r\n";
        return *this;
    }
    LogText& Header(const std::string& way, int stream, int function, unsigned systemBytes) {
        char header[64];
        std::snprintf(header,
                      sizeof header,
                      "00 00 %02X %02X 00 00 %02X %02X %02X %02X",
                      static_cast<unsigned>(stream),
                      static_cast<unsigned>(function),
                      systemBytes >> 24,
                      systemBytes >> 16 & 0xFF,
                      systemBytes >> 8 & 0xFF,
                      systemBytes & 0xFF);
        return Line("SECS I HEADER " + way + " : " + header);
    }
    LogText& Body(const std::string& way, const std::string& bytes) {
        Line("SECS I DATALEN " + way + " : " + std::to_string((bytes.size() + 1) / 3));
        return bytes.empty() ? *this : Line("SECS I DATA " + way + " : " + bytes);
    }
    LogText& Sml(const std::string& way, const std::string& sml) {
        return Line("SECS II Message " + way + " : \r\n" + sml + (way == "Received" ? "" : "\r\n"));
    }
    /// A whole message without a body. A stream of 128 and more has the W-bit.
    LogText& Message(const std::string& way, int stream, int function, unsigned systemBytes) {
        const std::string name =
            'S' + std::to_string(stream % 128) + 'F' + std::to_string(function);
        return Header(way, stream, function, systemBytes)
            .Body(way, "")
            .Sml(way, name + (stream >= 128 ? " W" : "") + "\r\n.");
    }
    /// What the reply timer writes: "Start" or "Cancel".
    LogText& Timer(const std::string& action,
                   const std::string& name,
                   int systemBytes,
                   bool found) {
        const std::string what = name + " SystemBytes: " + std::to_string(systemBytes);
        Line(action + " T3 - Searching for " + what);
        if (!found) return *this;
        Line(action + " T3 - TransactionInUse[1] : " + what);
        return Line(action + " T3 - Timer for " + what);
    }
    LogText& Wait(int hundredths) {
        Time += hundredths;
        return *this;
    }
    LogText& Raw(std::string_view bytes) {
        text_ += bytes;
        return *this;
    }

    [[nodiscard]] const std::string& Text() const { return text_; }

private:
    std::string day_;
    std::string text_;
};

/// Gives a text to a reader in pieces of at most `size` bytes.
inline void Feed(program::LogReader& reader, std::string_view text, std::size_t size = SIZE_MAX) {
    while (!text.empty()) {
        const auto room = reader.Room();
        const std::size_t count = std::min({text.size(), room.size(), size});
        std::copy_n(text.begin(), count, room.begin());
        reader.Take(count);
        text.remove_prefix(count);
    }
}

/// Reads a text as one file.
inline program::LogReport ReadWhole(program::LogSink& sink,
                                    std::string_view text,
                                    std::size_t size = SIZE_MAX,
                                    std::size_t bufferSize = program::LineSplitter::kSize) {
    program::LogReader reader(sink, bufferSize);
    Feed(reader, text, size);
    const program::LogReport report = reader.EndFile();
    reader.Finish();
    return report;
}

}  // namespace hexmire::fakes
