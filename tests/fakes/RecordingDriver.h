#pragma once

#include <hexmire/platform/SECSIService.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <sstream>
#include <string>
#include <vector>

namespace hexmire::fakes {

/// One message that was handed to the driver.
struct SentMessage {
    std::vector<std::uint8_t> Header;
    std::vector<std::uint8_t> Body;
    bool BodyIsText = false;  ///< "" stood in place of the body
    std::int32_t Length = 0;
};

/// What a driver leaves behind for the test; it outlives the driver.
struct DriverRecord {
    std::vector<std::string> Calls;  ///< "BaudRate(9600)", "OpenLink()", ... in order
    std::vector<SentMessage> Sent;
    bool Status = false;
    int StatusReads = 0;
    bool Alive = false;
    /// When set, the call of this name throws it.
    std::string FailingCall;
    DriverError Failure{-2147467259, "driver failed"};
    /// When set, runs inside the call named, before it returns.
    std::function<void(const std::string& call)> OnCall;
    SECSIServiceEvents* Events = nullptr;
};

/// A driver that records every call and sends nothing. Booleans are written True/False.
class RecordingDriver : public SECSIService {
public:
    RecordingDriver(SECSIServiceEvents& events, DriverRecord& record) : record_(record) {
        record_.Events = &events;
        record_.Alive = true;
    }
    RecordingDriver(const RecordingDriver&) = delete;
    RecordingDriver& operator=(const RecordingDriver&) = delete;
    ~RecordingDriver() override { record_.Alive = false; }

    void OpenLink() override {
        Note("OpenLink", std::string());
        record_.Status = true;
    }
    void CloseLink() override {
        Note("CloseLink", std::string());
        record_.Status = false;
    }
    bool LinkStatus() override {
        ++record_.StatusReads;
        Fail("LinkStatus");
        return record_.Status;
    }
    void SendMessage(std::span<const std::uint8_t> header,
                     const Variant& body,
                     std::int32_t length) override {
        Note("SendMessage", std::to_string(length));
        const auto bytes = body.View<std::uint8_t>();
        record_.Sent.push_back({{header.begin(), header.end()},
                                {bytes.begin(), bytes.end()},
                                body == Variant(""),
                                length});
    }
    void SerialPort(const std::string& v) override { Note("SerialPort", v); }
    void ConnectionRetryLimit(std::int16_t v) override { Note("ConnectionRetryLimit", v); }
    void PortType(std::int16_t v) override { Note("PortType", v); }
    void HostRole(bool v) override { Note("HostRole", v); }
    void BaudRate(std::int16_t v) override { Note("BaudRate", v); }
    void T1(float v) override { Note("T1", v); }
    void T2(float v) override { Note("T2", v); }
    void T3(std::int16_t v) override { Note("T3", v); }
    void T4(std::int16_t v) override { Note("T4", v); }
    void T5(std::int16_t v) override { Note("T5", v); }
    void T6(std::int16_t v) override { Note("T6", v); }
    void T7(std::int16_t v) override { Note("T7", v); }
    void T8(std::int16_t v) override { Note("T8", v); }
    void DeviceID(std::int32_t v) override { Note("DeviceID", v); }
    void LocalIPAddress(const std::string& v) override { Note("LocalIPAddress", v); }
    void LocalIPPort(std::int32_t v) override { Note("LocalIPPort", v); }
    void RemoteIPAddress(const std::string& v) override { Note("RemoteIPAddress", v); }
    void RemoteIPPort(std::int32_t v) override { Note("RemoteIPPort", v); }
    void InterleaveCheck(bool v) override { Note("InterleaveCheck", v); }
    void DuplicateBlockCheck(bool v) override { Note("DuplicateBlockCheck", v); }
    void SystemBytesCheck(bool v) override { Note("SystemBytesCheck", v); }
    void TimeOutRetry(std::int16_t v) override { Note("TimeOutRetry", v); }
    void HSMSConnectionMode(std::int16_t v) override { Note("HSMSConnectionMode", v); }
    void Trace(bool v) override { Note("Trace", v); }
    void RecipeFileEnabled(bool v) override { Note("RecipeFileEnabled", v); }
    void RecipeSendPath(const std::string& v) override { Note("RecipeSendPath", v); }
    void RecipeRecvPath(const std::string& v) override { Note("RecipeRecvPath", v); }
    void SECSILogPath(const std::string& v) override { Note("SECSILogPath", v); }

private:
    void Fail(const std::string& call) {
        if (record_.FailingCall == call) throw DriverError(record_.Failure);
    }
    void Note(const std::string& call, const std::string& text) {
        record_.Calls.push_back(call + "(" + text + ")");
        Fail(call);
        if (record_.OnCall) record_.OnCall(call);
    }
    void Note(const std::string& call, bool value) {
        Note(call, std::string(value ? "True" : "False"));
    }
    void Note(const std::string& call, std::int16_t value) { Note(call, std::to_string(value)); }
    void Note(const std::string& call, std::int32_t value) { Note(call, std::to_string(value)); }
    void Note(const std::string& call, float value) {
        std::ostringstream text;
        text << value;
        Note(call, text.str());
    }

    DriverRecord& record_;
};

}  // namespace hexmire::fakes
