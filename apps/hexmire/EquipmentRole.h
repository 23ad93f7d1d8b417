#pragma once

#include <hexmire/hexmire.h>

#include "Peer.h"

#include <cstdint>
#include <string>

namespace hexmire::program {

/// Behaves as an equipment without being told: answers every primary of its dictionary that expects
/// a reply with the template's secondary, S1F13 with COMMACK 0 and S2F17 with the clock; a stream
/// or function that the dictionary does not hold with S9F3 or S9F5, and a foreign device ID with
/// S9F1 (SEMI E5, stream 9).
class EquipmentRole {
public:
    /// Takes the peer's primaries and errors. The peer outlives this object.
    explicit EquipmentRole(Peer& peer);

private:
    void Answer(const SECSTransPtr& trans);
    void ReportUnknown(const SECSTransPtr& trans);
    void ReportForeignDevice(const std::string& errorText);
    void SendStream9(std::int32_t function, std::vector<std::uint8_t> header);
    [[nodiscard]] bool Knows(std::int32_t stream) const;
    [[nodiscard]] bool Knows(std::int32_t stream, std::int32_t function) const;

    Peer& peer_;
};

}  // namespace hexmire::program
