#pragma once

#include <hexmire/driver/hsms/LinkMachine.h>

#include "MachineRig.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace hexmire::test {

/// An HSMS link with a scripted peer. On top of what every rig understands:
///
///     rx FRAME                          a whole frame arrives
///     rx-early FRAME                    the same, while a write is not yet reported
///     send FRAME                        the control sends a data message
///
/// FRAME is "SelectReq FFFF 00000001", "SelectRsp.1 FFFF 00000001" (byte 3 behind the dot),
/// "RejectReq.4 FFFF 00000001", or data "S1F1W 0005 00000007 0100" with an optional body. The
/// machine answers with "tx FRAME", "Sent S1F1W 0005 00000007", "Received ...".
class HsmsRig final : public MachineRig {
public:
    explicit HsmsRig(const LinkSettings& settings);

    /// Port type 4 (or 2), active (or passive), device 5, addresses 10.0.0.1 and 10.0.0.2.
    [[nodiscard]] static LinkSettings Settings(std::int32_t portType = 4, bool active = true);

    [[nodiscard]] hsms::LinkMachine& Machine() { return machine_; }
    [[nodiscard]] std::string State() const override { return std::string(machine_.StateName()); }

private:
    bool ExecuteOwn(const std::string& word, const std::string& rest) override;
    [[nodiscard]] std::string WriteNotation(std::span<const std::uint8_t> bytes) const override;
    [[nodiscard]] std::string MessageNotation(const link::HeaderBytes& header,
                                              std::span<const std::uint8_t> body) const override;
    void ShowBlock(std::span<const std::uint8_t> bytes) override;
    void CheckOwn() override;

    hsms::LinkMachine machine_;
};

/// Bytes of a frame in the notation above, length field included.
[[nodiscard]] std::vector<std::uint8_t> FrameBytes(std::string_view notation);
/// The notation of a frame.
[[nodiscard]] std::string FrameNotation(std::span<const std::uint8_t> frame);

}  // namespace hexmire::test
