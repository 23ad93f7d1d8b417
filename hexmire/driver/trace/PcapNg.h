#pragma once

#include <chrono>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace hexmire::link {

// Blocks of a pcapng file, little-endian: the format that Wireshark writes. All of them append.

/// A section header and one Ethernet interface, whose packets carry nanoseconds. A file may hold
/// several sections, so this also goes before what is added to an existing file by another program.
void AppendPcapNgStart(std::string& file, std::string_view interfaceName);

/// One packet that was captured whole. `isInbound`: the interface received it. A comment of at most
/// 65 535 bytes (UTF-8) is shown beside it; "": none.
void AppendPcapNgPacket(std::string& file,
                        std::chrono::system_clock::time_point time,
                        bool isInbound,
                        std::span<const std::uint8_t> frame,
                        std::string_view comment = {});

}  // namespace hexmire::link
