#include "HsmsRig.h"

#include <algorithm>
#include <array>

namespace hexmire::test {

namespace {

std::vector<std::uint8_t> AsFrame(const link::HeaderBytes& header,
                                  std::span<const std::uint8_t> body) {
    std::vector<std::uint8_t> frame(hsms::kLengthBytes + header.size() + body.size());
    const auto bodyAt = std::copy(header.begin(), header.end(), frame.begin() + hsms::kLengthBytes);
    std::copy(body.begin(), body.end(), bodyAt);
    return frame;
}

}  // namespace

HsmsRig::HsmsRig(const LinkSettings& settings)
    : MachineRig(machine_), machine_(settings, Counts()) {}

LinkSettings HsmsRig::Settings(std::int32_t portType, bool active) {
    LinkSettings settings;
    settings.PortType = portType;
    settings.HSMSConnectionMode = active ? 1 : 2;
    settings.DeviceID = 5;
    settings.LocalIPAddress = "10.0.0.1";
    settings.RemoteIPAddress = "10.0.0.2";
    settings.AutoReconnect = true;
    return settings;
}

bool HsmsRig::ExecuteOwn(const std::string& word, const std::string& rest) {
    if (word == "rx") {
        machine_.OnBytes(FrameBytes(rest), Now());
    } else if (word == "rx-early") {
        std::array<std::span<const std::uint8_t>, 64> views;
        (void)machine_.Output(views);
        machine_.OnBytes(FrameBytes(rest), Now());
    } else if (word == "send") {
        const auto frame = FrameBytes(rest);
        const std::span<const std::uint8_t> bytes(frame);
        machine_.Send(bytes.subspan(4, 10), bytes.subspan(14), Now());
    } else {
        return false;
    }
    return true;
}

std::string HsmsRig::WriteNotation(std::span<const std::uint8_t> bytes) const {
    return FrameNotation(bytes);
}

std::string HsmsRig::MessageNotation(const link::HeaderBytes& header,
                                     std::span<const std::uint8_t> body) const {
    return FrameNotation(AsFrame(header, body));
}

void HsmsRig::ShowBlock(std::span<const std::uint8_t>) { Violation = "a block of SECS-I"; }

void HsmsRig::CheckOwn() {
    using enum link::TimerId;
    if (Runs(T1) || Runs(T2) || Runs(T4) || Runs(LineCap))
        Violation = "timers of SECS-I: " + Timers();
    if (Runs(T7) != (State() == "NOT SELECTED")) Violation = "T7 in " + State();
}

}  // namespace hexmire::test
