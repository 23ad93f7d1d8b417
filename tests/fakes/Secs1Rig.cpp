#include "Secs1Rig.h"

namespace hexmire::test {

Secs1Rig::Secs1Rig(const LinkSettings& settings)
    : MachineRig(machine_), machine_(settings, Counts()) {}

LinkSettings Secs1Rig::Settings(std::int32_t portType, bool host) {
    LinkSettings settings;
    settings.PortType = portType;
    settings.HostRole = host;
    settings.DeviceID = 10;
    settings.LocalIPAddress = "10.0.0.1";
    settings.RemoteIPAddress = "10.0.0.2";
    settings.AutoReconnect = true;
    return settings;
}

std::string Secs1Rig::State() const {
    return std::string(machine_.StateName() == "CONNECTED" ? machine_.LineStateName()
                                                           : machine_.StateName());
}

bool Secs1Rig::ExecuteOwn(const std::string& word, const std::string& rest) {
    if (word == "rx") {
        machine_.OnBytes(LineBytes(rest), Now());
    } else if (word == "take") {
        Feed(LineBytes("ENQ"));
        machine_.OnBytes(BlockBytes(rest), Now());
    } else if (word == "pass") {
        Feed(LineBytes("EOT"));
        machine_.OnBytes(LineBytes("ACK"), Now());
    } else if (word == "send") {
        const BlockParts message = ParseBlock(rest);
        machine_.Send(secs1::EncodeHeader(message.Header), message.Data, Now());
    } else {
        return false;
    }
    return true;
}

std::string Secs1Rig::WriteNotation(std::span<const std::uint8_t> bytes) const {
    if (bytes.size() == 1) {
        switch (bytes[0]) {
            case secs1::kEnq:
                return "ENQ";
            case secs1::kEot:
                return "EOT";
            case secs1::kAck:
                return "ACK";
            case secs1::kNak:
                return "NAK";
            default:
                return "byte " + Hex(bytes[0], 2);
        }
    }
    const auto header = secs1::DecodeHeader(bytes.subspan(1).first<secs1::kHeaderBytes>());
    const auto data = bytes.subspan(1 + secs1::kHeaderBytes, bytes[0] - secs1::kHeaderBytes);
    return BlockNotation(header, data);
}

std::string Secs1Rig::MessageNotation(const link::HeaderBytes& header,
                                      std::span<const std::uint8_t> body) const {
    return BlockNotation(secs1::DecodeHeader(header), body);
}

void Secs1Rig::ShowBlock(std::span<const std::uint8_t> bytes) {
    const auto header = secs1::DecodeHeader(bytes.first<secs1::kHeaderBytes>());
    Add("Block " + BlockNotation(header, bytes.subspan(secs1::kHeaderBytes)));
}

void Secs1Rig::CheckOwn() {
    using enum link::TimerId;
    const std::string state = State();
    const bool receives = state == "RX_BODY" || state == "DRAIN";
    const bool awaits = state == "TX_EOT" || state == "TX_ACK" || state == "RX_LEN";
    if (Runs(T1) && !receives) Violation = "T1 in " + state;
    if (Runs(T2) && !awaits) Violation = "T2 in " + state;
    if (Runs(LineCap) && state != "DRAIN") Violation = "LineCap in " + state;
    if (Runs(T4) && state != "IDLE") Violation = "T4 in " + state;
    if (IsConnected() && receives && !Runs(T1)) Violation = "no T1 in " + state;
    if (awaits && !Runs(T2) && !machine_.HasOutput()) Violation = "no T2 in " + state;
}

}  // namespace hexmire::test
