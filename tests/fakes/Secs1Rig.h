#pragma once

#include <hexmire/driver/secs1/LinkMachine.h>

#include "MachineRig.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace hexmire::test {

/// A SECS-I link with a scripted peer. On top of what every rig understands:
///
///     rx TOKEN, TOKEN ...               arrives in one read
///     take BLOCK                        the peer sends a block: ENQ, then the block
///     pass                              the peer lets a block of ours through: EOT, then ACK
///     send MESSAGE                      the control sends a message
///
/// TOKEN is ENQ, EOT, ACK, NAK, two hex digits, BLOCK, "bad BLOCK" with a wrong checksum, or
/// "first N BLOCK", its first N bytes on the line. MESSAGE is "S1F1W 000A 00000101 BODY": the first
/// two header bytes, R-bit included, then the system bytes. BLOCK is the same with the block
/// number, and E for the last one: "S1F1W 000A 00000101 #1E BODY". BODY is hex digits or *N, N
/// bytes of a pattern; bytes over 16 that are no such pattern are shown as "(N bytes)".
///
/// The machine answers with "tx ENQ", "tx BLOCK", "Sent ...", "Block ...", "Received ...", the last
/// three as blocks, Sent and Received with the number of the last block.
class Secs1Rig : public MachineRig {
public:
    explicit Secs1Rig(const LinkSettings& settings);

    /// Port type 3 (or 1), host (or equipment), device 10, active; T1 300 ms, T2 500 ms, T4 10 s,
    /// RTY 3.
    [[nodiscard]] static LinkSettings Settings(std::int32_t portType = 3, bool host = true);

    [[nodiscard]] secs1::LinkMachine& Machine() { return machine_; }
    /// The line's state while there is a connection, otherwise the link's.
    [[nodiscard]] std::string State() const override;

private:
    bool ExecuteOwn(const std::string& word, const std::string& rest) override;
    [[nodiscard]] std::string WriteNotation(std::span<const std::uint8_t> bytes) const override;
    [[nodiscard]] std::string MessageNotation(const link::HeaderBytes& header,
                                              std::span<const std::uint8_t> body) const override;
    void ShowBlock(std::span<const std::uint8_t> bytes) override;
    void CheckOwn() override;

    secs1::LinkMachine machine_;
};

/// N bytes that differ from their neighbours, by place.
[[nodiscard]] std::vector<std::uint8_t> PatternBytes(std::size_t count);
/// Header and data of a BLOCK, or of a MESSAGE as its only block, in the notation above.
struct BlockParts {
    secs1::BlockHeader Header;
    std::vector<std::uint8_t> Data;
};
[[nodiscard]] BlockParts ParseBlock(std::string_view notation);
/// The bytes of a BLOCK as on the line.
[[nodiscard]] std::vector<std::uint8_t> BlockBytes(std::string_view notation);
/// The bytes of several TOKENs.
[[nodiscard]] std::vector<std::uint8_t> LineBytes(std::string_view tokens);
[[nodiscard]] std::string BlockNotation(const secs1::BlockHeader& header,
                                        std::span<const std::uint8_t> data);

}  // namespace hexmire::test
