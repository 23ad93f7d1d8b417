#pragma once

#include <hexmire/driver/LinkSettings.h>
#include <hexmire/support/IClock.h>

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace hexmire::link {

/// Whose bytes they are, or neither's.
enum class TraceDirection : std::uint8_t { Sent, Received };

/// Appends the lines of one chunk, the bytes of one write or one read, as they went over the wire:
///
///     2024/03/05 14:07:09.420000 Send 14: 00 00 00 0A FF FF 00 00 00 01 38 00 00 00
///
/// Local date and time with microseconds, "Send" or "Recv", the number of bytes, the bytes, CR LF.
/// A chunk of more than 65 536 bytes makes several lines.
void AppendTraceBytes(std::string& text,
                      const ClockReading& time,
                      TraceDirection direction,
                      std::span<const std::uint8_t> bytes);

/// Appends a line that tells of something other than bytes: "Note" in place of the direction, then
/// the text. Control characters in it become "?", for a line is one line.
void AppendTraceNote(std::string& text, const ClockReading& time, std::string_view note);

/// What the files of a port are called after: "to-<address>-<port>-device-<n>" of an active port,
/// "at-<address>-<port>-device-<n>" of one that listens, "serial-<device>" of a serial one, without
/// the folder "/dev". Safe as a part of a file name.
[[nodiscard]] std::string TracePortName(const LinkSettings& settings);

}  // namespace hexmire::link
