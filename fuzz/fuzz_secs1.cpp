// A SECS-I link machine against any peer: bytes in any pieces, timers that expire, writes that
// stall, connections that end. The first byte chooses medium, role, reconnection and checks; then
// one byte for each step, its upper half a number, with the bytes behind it where bytes arrive. At
// the end, on a line that has been quiet for a while, a message passes each way.
#include "../tests/fakes/Secs1Rig.h"
#include "LinkSteps.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace {

using hexmire::fuzz::Require;
using hexmire::fuzz::TakeStep;
using hexmire::test::Secs1Rig;

/// The rig, kept to what a shell does: only a live connection tells of bytes or of its end.
class Link {
public:
    explicit Link(std::uint8_t choice) : host_((choice & 2U) != 0), rig_(Settings(choice)) {
        rig_.Do("open");
        rig_.Do("connected");
    }

    void Step(std::span<const std::uint8_t>& input) {
        TakeStep<kSteps.size()>(input, rig_, [this](std::size_t step) { Do(step); });
    }

    void ExpectAMessageEachWay() {
        rig_.Do("unblock");
        rig_.Do("close");
        rig_.Do("advance 60000");
        rig_.Do("open");
        rig_.Do("connected");
        Check();
        const std::string block =
            std::string("S99F1W ") + (host_ ? "800A" : "000A") + " 0ABCDEF0 #1E 01";
        Require(
            rig_.Do("take " + block) == "tx EOT; tx ACK; Block " + block + "; Received " + block,
            "a good block is taken");
        rig_.Do("send S99F3W 000A 0ABCDEF1");
        Require(rig_.Do("pass").ends_with("Sent S99F3W 000A 0ABCDEF1 #1E"), "a message goes out");
        Check();
    }

private:
    static constexpr std::array kSteps{"connected",
                                       "caller 10.0.0.7",
                                       "fin",
                                       "close",
                                       "open",
                                       "send S1F1W 000A 00000007",
                                       "send S7F3W 000A 00000008 *300",
                                       "pass",
                                       "block",
                                       "unblock",
                                       "advance 300",
                                       "advance 500",
                                       "advance 10000"};

    static hexmire::LinkSettings Settings(std::uint8_t choice) {
        auto settings = Secs1Rig::Settings((choice & 1U) != 0 ? 1 : 3, (choice & 2U) != 0);
        settings.AutoReconnect = (choice & 4U) != 0;
        settings.InterleaveCheck = (choice & 8U) != 0;
        settings.DuplicateBlockCheck = (choice & 16U) == 0;
        settings.IgnoreDirection = (choice & 32U) != 0;
        settings.ConnectionRetryLimit = static_cast<std::int32_t>(choice / 64U);
        return settings;
    }
    [[nodiscard]] bool IsConnected() const { return hexmire::fuzz::IsConnected(rig_); }
    void Do(std::size_t step) {
        const std::string line = kSteps.at(step);
        const bool needsConnection = line == "fin" || line == "pass" || line == "caller 10.0.0.7";
        const bool needsAttempt = line == "connected";
        if (needsConnection && !IsConnected()) return;
        if (needsAttempt && rig_.State() != "NOT CONNECTED") return;
        rig_.Do(line);
    }
    void Check() const { Require(rig_.Violation.empty(), rig_.Violation.c_str()); }

    bool host_;
    Secs1Rig rig_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return hexmire::fuzz::RunLink<Link>(
        data, size, [](Link& link) { link.ExpectAMessageEachWay(); });
}
