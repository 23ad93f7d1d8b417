#pragma once

#include <hexmire/driver/LinkStatistics.h>
#include <hexmire/driver/hsms/LinkMachine.h>

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace hexmire::test {

/// A link machine with a scripted peer, a fake clock and fake timers, driven by lines of text:
///
///     open | close                      commands of the control
///     connected | self-connected | caller ADDRESS
///     connect-failed N | listen-failed N | listening | accept-failed N
///     rx FRAME                          a whole frame arrives
///     rx-bytes HEX                      any bytes arrive
///     rx-early FRAME                    the same, while a write is not yet reported
///     fin | reset                       the connection ends
///     send FRAME                        the control sends a data message
///     fire TIMER                        a timer expires now, whatever the clock says
///     advance MILLISECONDS              the clock goes on, timers that come due expire
///     block | unblock | written N         how writes fare; all are taken at once at first
///     consumed N                        the control has had so many messages
///
/// FRAME is "SelectReq FFFF 00000001", "SelectRsp.1 FFFF 00000001" (byte 3 behind the dot),
/// "RejectReq.4 FFFF 00000001", or data "S1F1W 0005 00000007 0100" with an optional body.
///
/// What the machine does comes back as lines of the same kind: "tx FRAME", "start T7 10000",
/// "stop T7", "connect 10.0.0.2:5000", "hold", "close", "Connect", "Disconnect 3035", "Error 3006",
/// "Sent S1F1W 0005 00000007", "Received ...".
class HsmsRig {
public:
    explicit HsmsRig(const LinkSettings& settings);
    HsmsRig(const HsmsRig&) = delete;
    HsmsRig& operator=(const HsmsRig&) = delete;

    /// Port type 4 (or 2), active (or passive), device 5, addresses 10.0.0.1 and 10.0.0.2.
    [[nodiscard]] static LinkSettings Settings(std::int32_t portType = 4, bool active = true);

    /// Does one line; the result is what the machine did, timers apart, joined by "; ".
    std::string Do(std::string_view line);
    /// Does several lines and gives what the last one caused.
    std::string Do(const std::vector<std::string>& lines);
    void Feed(std::span<const std::uint8_t> bytes);
    void Configure(const LinkSettings& settings);
    /// Everything since the last call of Do or Take, timers apart, joined by "; ".
    std::string Take();
    /// The running timers with their delays, in the order of their enumeration: "T6:5000 T7:10000".
    [[nodiscard]] std::string Timers() const;
    [[nodiscard]] bool Runs(link::TimerId id) const { return timers_.contains(id); }

    [[nodiscard]] hsms::LinkMachine& Machine() { return machine_; }
    [[nodiscard]] const LinkStatistics& Statistics() const { return statistics_; }
    [[nodiscard]] std::string State() const { return std::string(machine_.StateName()); }
    [[nodiscard]] link::TimePoint Now() const { return now_; }
    [[nodiscard]] std::size_t Waiting() const { return waiting_; }

    std::string LastText;    ///< of the last Error or Disconnect
    bool FullTexts = false;  ///< show the texts of Error and Disconnect
    bool Consumes = true;    ///< the control takes received messages at once
    /// What any machine must keep, checked after each line: Connect and Disconnect alternate, no
    /// timer outlives its connection, nothing is sent without one. Empty while all is well.
    std::string Violation;

private:
    struct Timer {
        link::TimePoint Deadline;
        std::chrono::milliseconds Delay;
    };
    void Execute(std::string_view line);
    void ExecuteWord(const std::string& word, const std::string& rest);
    void Settle();
    void Show(const link::Action& action);
    void ShowOutput(std::size_t count);
    void Advance(std::chrono::milliseconds duration);
    void Check();

    LinkStatistics statistics_;
    hsms::LinkMachine machine_;
    link::TimePoint now_;
    std::map<link::TimerId, Timer> timers_;
    std::vector<std::string> lines_;
    bool blocked_ = false;
    bool trying_ = false;  // a connect of its own is under way
    bool connected_ = false;
    bool sessionOpen_ = false;
    std::size_t shown_ = 0;    // bytes of the output already shown
    std::size_t waiting_ = 0;  // received messages that the control has not had
};

/// Bytes of a frame in the notation above, length field included.
[[nodiscard]] std::vector<std::uint8_t> FrameBytes(std::string_view notation);
/// The notation of a frame.
[[nodiscard]] std::string FrameNotation(std::span<const std::uint8_t> frame);
/// Bytes of hex text with any separators.
[[nodiscard]] std::vector<std::uint8_t> HexToBytes(std::string_view hex);
/// The timer of that name.
[[nodiscard]] link::TimerId TimerNamed(std::string_view name);
[[nodiscard]] std::string TimerName(link::TimerId id);

}  // namespace hexmire::test
