#pragma once

#include <hexmire/control/Hexmire.h>
#include <hexmire/control/detail/HexmireAccess.h>

#include "FakeClock.h"
#include "FakeXMLDocument.h"
#include "MemoryFiles.h"
#include "RecordingContainer.h"
#include "RecordingDriver.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace hexmire::fakes {

/// One error that reached the host.
struct ErrorEvent {
    std::int32_t Code = 0;
    std::string Text;
    std::int32_t Line = 0;
    bool operator==(const ErrorEvent&) const = default;
};
std::ostream& operator<<(std::ostream& out, const ErrorEvent& event);

/// A host with one control on fakes: settable clock, files in memory, a recording driver, a
/// container whose timer ticks by hand, and everything that the control raised, in order. The
/// application folder is "C:\App", so the log of the start day is
/// "C:\App\Log\SECSII_2024-03-05.log".
class TestHost {
public:
    explicit TestHost(bool messageLog = true);
    TestHost(const TestHost&) = delete;
    TestHost& operator=(const TestHost&) = delete;
    ~TestHost();

    Hexmire& Control() { return *control_; }
    void DestroyControl() { control_.reset(); }

    /// Adds a template to the public dictionary: name, stream, function of the primary, secondary
    /// with function + 1.
    SECSTransPtr AddTemplate(const std::string& name, std::int32_t stream, std::int32_t function);

    /// Moves the clock one second on and ticks once.
    void TickSecond();

    // The driver's events, from bytes.
    void MessageSent(std::span<const std::uint8_t> headerAndBody);
    void BlockReceived(std::span<const std::uint8_t> headerAndData);
    void MessageReceived(std::span<const std::uint8_t> header, std::span<const std::uint8_t> body);
    SECSIServiceEvents& DriverEvents() { return *Driver.Events; }

    /// The waiting transactions.
    std::shared_ptr<hexmire::SECSDictionary> Table() {
        return detail::HexmireAccess::SECSTransInUse(*control_);
    }

    /// Lines of today's log without time stamps and line ends; a line break inside a line stays.
    [[nodiscard]] std::vector<std::string> LogLines() const;
    /// The whole content of today's log.
    [[nodiscard]] std::string LogText() const;

    FakeClock Clock;
    MemoryFiles Files;
    RecordingContainer Container;
    DriverRecord Driver;
    XMLRecord XML;

    /// Everything raised, in order: "Connect", "Disconnect(0,)", "Error(1047,text,0)",
    /// "ReceivedPrimary(S1F1,0,)", "ReceivedSecondary(S1F2,0,)".
    std::vector<std::string> Raised;
    std::vector<ErrorEvent> Errors;
    std::vector<SECSTransPtr> Primaries;
    std::vector<SECSTransPtr> Secondaries;

    Platform MakePlatform(bool messageLog = true);

private:
    std::unique_ptr<Hexmire> control_;
};

/// Ten header bytes: device ID, W-bit, stream, function, system bytes.
std::vector<std::uint8_t> Header(std::int32_t deviceId,
                                 bool replyExpected,
                                 std::int32_t stream,
                                 std::int32_t function,
                                 std::uint32_t systemBytes);
/// Bytes from text such as "01 0A FF" (blanks anywhere).
std::vector<std::uint8_t> Bytes(std::string_view hex);
/// An array of Byte from the same.
Variant ByteArray(std::string_view hex);

}  // namespace hexmire::fakes
