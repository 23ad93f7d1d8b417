#include "TestHost.h"

#include <hexmire/support/HexBytes.h>

#include "LogLines.h"

#include <ostream>

namespace hexmire::fakes {

std::ostream& operator<<(std::ostream& out, const ErrorEvent& event) {
    return out << "Error(" << event.Code << ", \"" << event.Text << "\", " << event.Line << ")";
}

Platform TestHost::MakePlatform(bool messageLog) {
    return Platform{
        .NewDriver =
            [this](SECSIServiceEvents& events) {
                return std::make_unique<RecordingDriver>(events, Driver);
            },
        .NewXMLDocument = [this] { return std::make_unique<FakeXMLDocument>(XML); },
        .Container = Container,
        .Files = Files,
        .Clock = Clock,
        .ApplicationFolder = "C:\\App",
        .MessageLog = messageLog,
    };
}

TestHost::TestHost(bool messageLog) {
    Files.Directories.insert("C:\\App\\Log");
    control_ = std::make_unique<Hexmire>(MakePlatform(messageLog));
    HexmireEvents& events = control_->Events();
    events.Connect = [this] { Raised.emplace_back("Connect"); };
    events.Disconnect = [this](std::int32_t code, const std::string& text) {
        Raised.push_back("Disconnect(" + std::to_string(code) + "," + text + ")");
    };
    events.Error = [this](std::int32_t code, const std::string& text, std::int32_t line) {
        Raised.push_back("Error(" + std::to_string(code) + "," + text + "," + std::to_string(line) +
                         ")");
        Errors.push_back({code, text, line});
    };
    const auto received = [this](const char* event, std::vector<SECSTransPtr>& list, bool primary) {
        return [this, event, &list, primary](
                   const SECSTransPtr& trans, std::int32_t code, const std::string& text) {
            const SECSMessagePtr message = primary ? trans->Primary() : trans->Secondary();
            Raised.push_back(std::string(event) + "(S" + std::to_string(message->Stream()) + "F" +
                             std::to_string(message->Func()) + "," + std::to_string(code) + "," +
                             text + ")");
            list.push_back(trans);
        };
    };
    events.ReceivedPrimary = received("ReceivedPrimary", Primaries, true);
    events.ReceivedSecondary = received("ReceivedSecondary", Secondaries, false);
}

TestHost::~TestHost() {
    // What a test has hooked in may be gone by now.
    Driver.OnCall = nullptr;
    Container.OnCall = nullptr;
    if (control_ != nullptr) control_->Events() = HexmireEvents();
}

SECSTransPtr TestHost::AddTemplate(const std::string& name,
                                   std::int32_t stream,
                                   std::int32_t function) {
    const auto dictionary = control_->SECSDictionary();
    SECSTransPtr trans = dictionary->AddNewTrans(dictionary->TransCount() + 1);
    trans->Name(name);
    trans->Primary()->Stream(stream);
    trans->Primary()->Func(function);
    trans->Secondary()->Stream(stream);
    trans->Secondary()->Func(function + 1);
    return trans;
}

void TestHost::TickSecond() {
    Clock.Advance(std::chrono::seconds{1});
    Container.Tick();
}

void TestHost::MessageSent(std::span<const std::uint8_t> headerAndBody) {
    DriverEvents().SecsMsgSend(HexText(headerAndBody));
}

void TestHost::BlockReceived(std::span<const std::uint8_t> headerAndData) {
    DriverEvents().SecsBlockReceive(HexText(headerAndData));
}

void TestHost::MessageReceived(std::span<const std::uint8_t> header,
                               std::span<const std::uint8_t> body) {
    DriverEvents().SecsMsgReceive(
        HexText(header), HexText(body), static_cast<std::int32_t>(body.size()));
}

std::string TestHost::LogText() const {
    const auto today = Clock.Now().Date;
    const auto two = [](unsigned value) { return (value < 10 ? "0" : "") + std::to_string(value); };
    const auto found =
        Files.Files.find(R"(C:\App\Log\SECSII_)" + std::to_string(static_cast<int>(today.year())) +
                         "-" + two(static_cast<unsigned>(today.month())) + "-" +
                         two(static_cast<unsigned>(today.day())) + ".log");
    return found == Files.Files.end() ? "" : found->second.Content;
}

std::vector<std::string> TestHost::LogLines() const { return LogLinesOf(LogText()); }

std::vector<std::uint8_t> Header(std::int32_t deviceId,
                                 bool replyExpected,
                                 std::int32_t stream,
                                 std::int32_t function,
                                 std::uint32_t systemBytes) {
    const auto byte = [](std::uint32_t value) { return static_cast<std::uint8_t>(value & 0xFFU); };
    const auto id = static_cast<std::uint32_t>(deviceId);
    return {byte(id >> 8U),
            byte(id),
            byte(static_cast<std::uint32_t>(stream) | (replyExpected ? 0x80U : 0U)),
            byte(static_cast<std::uint32_t>(function)),
            0,
            0,
            byte(systemBytes >> 24U),
            byte(systemBytes >> 16U),
            byte(systemBytes >> 8U),
            byte(systemBytes)};
}

std::vector<std::uint8_t> Bytes(std::string_view hex) {
    std::vector<std::uint8_t> bytes;
    int high = -1;
    for (const char digit : hex) {
        const int value = HexDigitValue(digit);
        if (value < 0) continue;
        if (high < 0) {
            high = value;
        } else {
            bytes.push_back(static_cast<std::uint8_t>(high * 16 + value));
            high = -1;
        }
    }
    return bytes;
}

Variant ByteArray(std::string_view hex) { return Bytes(hex); }

}  // namespace hexmire::fakes
