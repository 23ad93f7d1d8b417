#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace hexmire::program {

enum class LineKind : std::uint8_t {
    Header,   ///< "SECS I HEADER Send : " and ten bytes
    Length,   ///< "SECS I DATALEN Send : " and the size of the body
    Data,     ///< "SECS I DATA Send : " and the bytes of the body
    Message,  ///< "SECS II Message Send : ", the SML in the lines below
    Timer,    ///< "Start T3 - ..." and "Cancel T3 - ..."
    Other,    ///< a line with a time stamp that is none of these
    Damaged,  ///< a line that begins like one of these and does not go on like it
    Broken,   ///< no time stamp, and below no entry that goes on over several lines
};

/// Which way a message went, and how it was handed over.
enum class Way : std::uint8_t { None, Send, Reply, Received };

enum class TimerStep : std::uint8_t { Searching, Waiting, Timer };

/// A stream and a function; a negative function stands for all of the stream.
struct MessageName {
    std::int32_t Stream = -1;
    std::int32_t Function = -1;

    friend bool operator==(const MessageName&, const MessageName&) = default;
};

/// What the text of one line says, behind its time stamp.
struct LineFacts {
    LineKind Kind = LineKind::Other;
    Way Direction = Way::None;
    MessageName Name{};  ///< -1, -1 when the line does not tell
    bool ReplyExpected = false;
    bool FromEquipment = false;  ///< the R-bit
    std::int32_t DeviceID = -1;
    std::optional<std::uint32_t> SystemBytes{};
    std::int64_t Length = -1;
    bool Start = false;  ///< of a timer's line: start, not cancel
    TimerStep Step = TimerStep::Searching;
    std::int32_t Position = 0;  ///< of a waiting transaction in the table, from 1
};

/// Reads the text of a line, its line end included or not.
[[nodiscard]] LineFacts ReadLine(std::string_view text);

/// Reads "S6F11" with what stands behind it, " W" or not, as SML begins. None when it is no name.
struct SmlName {
    MessageName Name{};
    bool ReplyExpected = false;
    bool Ended = false;  ///< the final "." stands in the same line
};
[[nodiscard]] std::optional<SmlName> ReadSmlName(std::string_view line);

/// Reads "S6F11" or "S6", in either letter case.
[[nodiscard]] std::optional<MessageName> ParseMessageName(std::string_view text);

/// Reads a decimal number, with a sign or not, or a hexadecimal one behind "0x", of 32 bits.
[[nodiscard]] std::optional<std::uint32_t> ParseSystemBytes(std::string_view text);

/// Reads blank-separated pairs of hexadecimal digits into `bytes`, as many as there is room for.
/// Gives how many were read; none when something else stands among them.
[[nodiscard]] std::optional<std::size_t> ReadBytes(std::string_view text,
                                                   std::uint8_t* bytes,
                                                   std::size_t room);

/// "S6F11"
[[nodiscard]] std::string NameText(const MessageName& name);

/// The line without its line end.
[[nodiscard]] std::string_view WithoutLineEnd(std::string_view line);

}  // namespace hexmire::program
