#pragma once

#include <hexmire/driver/ILinkMachine.h>
#include <hexmire/driver/LinkStatistics.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace hexmire::test {

/// A link machine with a scripted peer, a fake clock and fake timers, driven by lines of text. What
/// every link understands:
///
///     open | close                      commands of the control
///     connected | self-connected | caller ADDRESS
///     connect-failed N | connect-hopeless N | listen-failed N | listening | accept-failed N
///     rx-bytes HEX                      any bytes arrive
///     fin | reset                       the connection ends
///     fire TIMER                        a timer expires now, whatever the clock says
///     advance MILLISECONDS              the clock goes on, timers that come due expire
///     block | unblock | written N       how writes fare; all are taken at once at first
///     consumed N                        the control has had so many messages
///
/// What the machine does comes back as lines of the same kind: "start T7 10000", "stop T7",
/// "connect 10.0.0.2:5000", "hold", "close", "Connect", "Disconnect 3035", "Error 3006". The rigs
/// of the protocols add their own lines for what is sent and received.
class MachineRig {
public:
    MachineRig(const MachineRig&) = delete;
    MachineRig& operator=(const MachineRig&) = delete;
    virtual ~MachineRig() = default;

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

    [[nodiscard]] const LinkStatistics& Statistics() const { return statistics_; }
    [[nodiscard]] virtual std::string State() const = 0;
    [[nodiscard]] link::TimePoint Now() const { return now_; }
    [[nodiscard]] std::size_t Waiting() const { return waiting_; }

    std::string LastText;    ///< of the last Error or Disconnect
    bool FullTexts = false;  ///< show the texts of Error and Disconnect
    bool Consumes = true;    ///< the control takes received messages at once
    /// What any machine must keep, checked after each line: Connect and Disconnect alternate, no
    /// timer outlives its connection, nothing is sent without one. Empty while all is well.
    std::string Violation;

protected:
    /// The machine is a member of the rig that is derived, made with Counts().
    explicit MachineRig(link::ILinkMachine& machine);

    /// A line that only this protocol knows; false when it does not know it either.
    virtual bool ExecuteOwn(const std::string& word, const std::string& rest) = 0;
    /// One write, as it is announced.
    [[nodiscard]] virtual std::string WriteNotation(std::span<const std::uint8_t> bytes) const = 0;
    [[nodiscard]] virtual std::string MessageNotation(const link::HeaderBytes& header,
                                                      std::span<const std::uint8_t> body) const = 0;
    /// A received block, which not every protocol tells.
    virtual void ShowBlock(std::span<const std::uint8_t> bytes) = 0;
    /// What this protocol's machine must keep on top.
    virtual void CheckOwn() = 0;

    void Add(std::string text) { lines_.push_back(std::move(text)); }
    [[nodiscard]] bool IsConnected() const { return connected_; }
    [[nodiscard]] LinkStatistics& Counts() { return statistics_; }

private:
    struct Timer {
        link::TimePoint Deadline;
        std::chrono::milliseconds Delay;
    };
    void Execute(std::string_view line);
    void ExecuteWord(const std::string& word, const std::string& rest);
    bool ExecuteConnection(const std::string& word, const std::string& rest);
    void Settle();
    void Show(const link::Action& action);
    void ShowOutput(std::size_t count);
    void Advance(std::chrono::milliseconds duration);
    void Check();

    LinkStatistics statistics_;
    link::ILinkMachine& machine_;
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

/// Bytes of hex text with any separators.
[[nodiscard]] std::vector<std::uint8_t> HexToBytes(std::string_view hex);
/// Upper-case hex digits, at least so many.
[[nodiscard]] std::string Hex(unsigned value, int digits);
/// The timer of that name.
[[nodiscard]] link::TimerId TimerNamed(std::string_view name);
[[nodiscard]] std::string TimerName(link::TimerId id);

template <class... Cases>
struct Overloaded : Cases... {
    using Cases::operator()...;
};
template <class... Cases>
Overloaded(Cases...) -> Overloaded<Cases...>;

}  // namespace hexmire::test
