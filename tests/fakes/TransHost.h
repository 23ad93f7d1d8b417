#pragma once

#include <hexmire/support/ProcessState.h>
#include <hexmire/support/detail/ObjectMaker.h>
#include <hexmire/trans/ITransSite.h>
#include <hexmire/trans/SECSDictionary.h>
#include <hexmire/trans/detail/SECSDictionaryAccess.h>
#include <hexmire/trans/detail/SECSTransAccess.h>

#include "ErrorRecorder.h"
#include "FakeClock.h"
#include "LogLines.h"
#include "MemoryFiles.h"
#include "RecordingDriver.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace hexmire::fakes {

/// What transactions need of a control, without the control: values that a test sets, a recording
/// driver, a log in memory, a table of transactions in use, and the errors in order. The counter of
/// system bytes begins at 0.
class TransHost : public ITransSite {
public:
    using Reports = std::vector<ReportedError>;

    explicit TransHost(bool withLog = true) : owner_(std::make_unique<SiteOwner>(*this)) {
        hexmire::detail::State().SystemBytesCounter = 0;
        owner_->Publish();
        DriverObject = std::make_shared<RecordingDriver>(noEvents_, Record);
        Table = Make<SECSDictionary>();
        Table->Description("TRANSINUSE");
        Files.Directories.insert("C:\\Log");
        if (!withLog) return;
        LogObject = std::make_unique<CLogFile>(Files, Clock, owner_->Ref());
        LogObject->FileName("C:\\Log\\SECSII.log");
    }
    TransHost(const TransHost&) = delete;
    TransHost& operator=(const TransHost&) = delete;
    ~TransHost() override = default;

    /// An object that this control made.
    template <class T>
    [[nodiscard]] std::shared_ptr<T> Make() const {
        return hexmire::detail::ObjectMaker::Make<T>(owner_->Ref());
    }
    /// A working copy: stream and function of the primary, the secondary answers it.
    [[nodiscard]] SECSTransPtr MakeTrans(std::int32_t stream, std::int32_t function) const {
        SECSTransPtr trans = Make<SECSTrans>();
        trans->Primary()->Stream(stream);
        trans->Primary()->Func(function);
        trans->Secondary()->Stream(stream);
        trans->Secondary()->Func(function + 1);
        return trans;
    }
    /// The control's end.
    void End() { owner_.reset(); }

    void TriggerError(std::int32_t code, const std::string& text, std::int32_t line) override {
        Errors.push_back({code, text, line});
        if (OnError) OnError();
    }
    [[nodiscard]] CLogFile* Log() noexcept override { return LogObject.get(); }
    [[nodiscard]] std::shared_ptr<SECSIService> Driver() noexcept override { return DriverObject; }
    [[nodiscard]] std::int32_t DeviceID() const noexcept override { return DeviceId; }
    [[nodiscard]] std::int32_t T3Timeout() const noexcept override { return T3; }
    [[nodiscard]] std::int32_t ConnectionPortType() const noexcept override { return PortType; }
    [[nodiscard]] bool ConnectionHost() const noexcept override { return HostRole; }
    [[nodiscard]] std::shared_ptr<SECSDictionary> SECSTransInUse() noexcept override {
        return Table;
    }

    /// The errors since the last call.
    Reports Take() {
        Reports taken;
        taken.swap(Errors);
        return taken;
    }
    [[nodiscard]] std::vector<std::string> LogLines() const {
        const auto found = Files.Files.find("C:\\Log\\SECSII_2024-03-05.log");
        return found == Files.Files.end() ? std::vector<std::string>{}
                                          : LogLinesOf(found->second.Content);
    }

    std::int32_t DeviceId = 0;
    std::int32_t T3 = 45;
    std::int32_t PortType = 1;
    bool HostRole = true;
    FakeClock Clock;
    MemoryFiles Files;
    DriverRecord Record;
    std::shared_ptr<SECSIService> DriverObject;
    std::shared_ptr<SECSDictionary> Table;
    std::unique_ptr<CLogFile> LogObject;
    Reports Errors;
    /// Runs inside each report, as a host's handler does.
    std::function<void()> OnError;

private:
    struct NoEvents : SECSIServiceEvents {
        void Connect() override {}
        void Disconnect(std::int32_t, const std::string&) override {}
        void Error(std::int32_t, const std::string&) override {}
        void SecsMsgSend(const std::string&) override {}
        void SecsBlockReceive(const std::string&) override {}
        void SecsMsgReceive(const std::string&, const std::string&, std::int32_t) override {}
    };

    NoEvents noEvents_;
    std::unique_ptr<SiteOwner> owner_;
};

}  // namespace hexmire::fakes
