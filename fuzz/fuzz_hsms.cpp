// An HSMS link machine against any peer: bytes in any pieces, timers that expire, writes that
// stall, connections that end. The first byte chooses port type, mode, reconnection, role and how
// sessions end; then one byte for each step, its upper half a number, with the bytes behind it
// where bytes arrive.
#include "../tests/fakes/HsmsRig.h"
#include "LinkSteps.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace {

using hexmire::fuzz::TakeStep;
using hexmire::test::HsmsRig;

/// The rig, kept to what a shell does: only a live connection tells of bytes or of its end.
class Link {
public:
    explicit Link(std::uint8_t choice)
        : active_((choice & 2U) != 0),
          listens_(!active_ || (choice & 8U) != 0),
          rig_(Settings(choice, active_)) {
        rig_.Do("open");
        Connect();
    }

    void Step(std::span<const std::uint8_t>& input) {
        TakeStep<kSteps.size()>(input, rig_, [this](std::size_t step) { Do(step); });
    }

private:
    static constexpr std::array kSteps{"connect",
                                       "caller 10.0.0.7",
                                       "fin",
                                       "reset",
                                       "close",
                                       "open",
                                       "send S1F1W 0005 00000007",
                                       "send S6F11W 0005 00000008 0102B10400000001",
                                       "block",
                                       "unblock",
                                       "advance 1000",
                                       "advance 10000"};

    static hexmire::LinkSettings Settings(std::uint8_t choice, bool active) {
        hexmire::LinkSettings settings = HsmsRig::Settings((choice & 1U) != 0 ? 2 : 4, active);
        settings.AutoReconnect = (choice & 4U) != 0;
        if (active && (choice & 8U) != 0) settings.HSMSConnectionMode = 3;
        settings.DeselectOnClose = (choice & 16U) != 0;
        settings.HostRole = (choice & 32U) == 0;
        return settings;
    }
    [[nodiscard]] bool IsConnected() const { return hexmire::fuzz::IsConnected(rig_); }
    void Connect() {
        if (rig_.State() != "NOT CONNECTED") return;
        if (rig_.Runs(hexmire::link::TimerId::ConnectTimeout)) {
            rig_.Do("connected");
        } else if (listens_) {
            rig_.Do("listening");
            rig_.Do("caller 10.0.0.2");
        }
    }
    void Do(std::size_t step) {
        if (step == 0) {
            Connect();
        } else if (step == 1) {
            if (listens_ && (active_ || IsConnected())) rig_.Do(kSteps[step]);
        } else if (step > 3 || IsConnected()) {
            rig_.Do(kSteps[step]);
        }
    }

    bool active_;
    bool listens_;  // passive or alternating
    HsmsRig rig_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return hexmire::fuzz::RunLink<Link>(data, size, [](Link&) {});
}
