#pragma once

#include <hexmire/control/HexmireEvents.h>
#include <hexmire/control/detail/ControlSettings.h>
#include <hexmire/platform/Platform.h>
#include <hexmire/support/CLogFile.h>
#include <hexmire/support/ModErrorMsg.h>
#include <hexmire/support/Reporting.h>
#include <hexmire/trans/ITransSite.h>
#include <hexmire/trans/SECSDictionary.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>
#include <tuple>
#include <utility>

namespace hexmire::detail {

/// What stands behind one Hexmire: settings, driver, dictionaries, log, and the handlers of the
/// driver's events and of the timer. It is the site of every object that it makes.
class Control final : public ITransSite, private SECSIServiceEvents {
public:
    explicit Control(const hexmire::Platform& platform);
    Control(const Control&) = delete;
    Control& operator=(const Control&) = delete;
    ~Control() override;

    HexmireEvents& Events() noexcept { return events_; }
    [[nodiscard]] const ControlSettings& Settings() const noexcept { return settings_; }

    /// One getter of a text.
    [[nodiscard]] std::string Text(const char* routine,
                                   std::string ControlSettings::*setting) noexcept;
    /// One setter: refuses with the code, or stores, pushes (nullptr: nothing to push) and
    /// notifies. The routine is named "Let " and the property. After the teardown nothing is taken.
    template <class Store>
    void Assign(const char* routine,
                bool accepted,
                std::int32_t refusal,
                SettingPush push,
                bool notify,
                Store store) {
        RunOwn(routine, [&] {
            RequireAlive();
            if (!accepted) {
                RaiseOwnError(routine, refusal);
                return;
            }
            store(settings_);
            if (push != nullptr) push(settings_, RequireDriver());
            if (notify) container_.PropertyChanged(routine + sizeof("Let ") - 1);
        });
    }
    void SECSLogFile(const std::string& value);
    /// The container's notification that the control was placed: the timer starts anew. False when
    /// the control has been torn down.
    [[nodiscard]] bool InitTimer();

    [[nodiscard]] bool Connected();
    [[nodiscard]] bool PortOpened();
    [[nodiscard]] std::int32_t CurrentBaud() noexcept { return currentBaud_ = settings_.BaudRate; }
    [[nodiscard]] std::int32_t CurrentHSMSConnectionType() noexcept {
        return currentConnectionType_ = settings_.HSMSConnectionType;
    }
    [[nodiscard]] std::int32_t ErrorCode() const noexcept { return errorCode_; }
    [[nodiscard]] std::shared_ptr<hexmire::SECSDictionary> Dictionary() const noexcept {
        return dictionary_;
    }

    void OpenPort();
    void ClosePort();
    void ControlTerminate();
    void LoadXMLDictionary();
    [[nodiscard]] SECSTransPtr NewSECSTransaction();
    [[nodiscard]] SECSTransPtr NewSECSTransaction(const Variant& value);
    [[nodiscard]] SECSTransPtr NewSECSTransaction(std::string_view name);
    void SendS9F7(std::int32_t stream, std::int32_t function, std::int32_t systemBytes);

    // ITransSite
    void TriggerError(std::int32_t errorCode,
                      const std::string& errorText,
                      std::int32_t errorLine) override;
    [[nodiscard]] CLogFile* Log() noexcept override { return log_.get(); }
    [[nodiscard]] std::shared_ptr<SECSIService> Driver() noexcept override { return driver_; }
    [[nodiscard]] std::int32_t DeviceID() const noexcept override { return settings_.DeviceID; }
    [[nodiscard]] std::int32_t T3Timeout() const noexcept override { return settings_.T3Timeout; }
    [[nodiscard]] std::int32_t ConnectionPortType() const noexcept override {
        return settings_.ConnectionPortType;
    }
    [[nodiscard]] bool ConnectionHost() const noexcept override { return settings_.ConnectionHost; }
    [[nodiscard]] std::shared_ptr<hexmire::SECSDictionary> SECSTransInUse() noexcept override {
        return transInUse_;
    }

private:
    struct MessageHeader;
    /// While it lives this control is the current one. Debug builds detect a foreign thread.
    class Entry;

    /// Runs a routine of the control under its own fault handler.
    template <class Body>
    void RunOwn(const char* routine, Body&& body) noexcept;
    void ReportOwnFault(const char* routine) noexcept;
    /// Raises `Error`, then stores the code. What a handler throws passes through.
    void RaiseError(std::int32_t code, const std::string& text, std::int32_t line);
    void RaiseOwnError(const char* routine,
                       std::int32_t code,
                       const std::string& details = {},
                       std::int32_t line = 0);
    [[nodiscard]] SECSIService& RequireDriver() const;
    void RequireAlive() const;

    void Initialize(const hexmire::Platform& platform);
    void StartTimer();
    void PushAll(std::span<const SettingPush> pushes);
    void TearDown() noexcept;
    [[nodiscard]] std::chrono::seconds SecondOfDay() const;

    [[nodiscard]] SECSTransPtr CopyOf(const SECSTransPtr& source) const;
    /// A copy of a transaction, or where there is none a new one, whose primary or secondary is a
    /// received message.
    [[nodiscard]] SECSTransPtr TransWithPrimary(const SECSTransPtr& source,
                                                const SECSMessagePtr& message) const;
    [[nodiscard]] SECSTransPtr TransWithSecondary(const SECSTransPtr& source,
                                                  const SECSMessagePtr& message) const;
    void RequireTemplates() const;
    [[nodiscard]] SECSTransPtr TemplateFor(std::string_view name);
    [[nodiscard]] SECSTransPtr TemplateByIndex(std::int32_t index);
    [[nodiscard]] SECSTransPtr TemplateByName(std::string_view name);
    [[nodiscard]] SECSTransPtr TemplateFor(const MessageHeader& header) const;
    [[nodiscard]] SECSTransPtr WaitingFor(const MessageHeader& header) const;

    void MarkT3(const char* routine, const std::string& hex, bool start);
    void SearchTable(const MessageHeader& header, bool start);
    void SearchSilently(const MessageHeader& header, bool start);
    static bool MarkEntry(SECSTrans& entry, const MessageHeader& header, bool start);
    void TimerCheck_Timer();
    void Receive(const std::string& headerHex, const std::string& bodyHex, std::int32_t bodyLength);
    void DispatchPrimary(const MessageHeader& header, const SECSMessagePtr& message);
    void DispatchSecondary(const MessageHeader& header, const SECSMessagePtr& message);

    // The driver's events, under the names that errors carry.
    void moSECSIService_Connect();
    void moSECSIService_Disconnect(std::int32_t errorCode, const std::string& errorText);
    void moSECSIService_Error(std::int32_t errorCode, const std::string& errorText);
    void moSECSIService_SecsMsgSend(const std::string& messageHex);
    void moSECSIService_SecsBlockReceive(const std::string& blockHex);
    void moSECSIService_SecsMsgReceive(const std::string& headerHex,
                                       const std::string& bodyHex,
                                       std::int32_t bodyLength);

    // SECSIServiceEvents
    void Connect() override { moSECSIService_Connect(); }
    void Disconnect(std::int32_t errorCode, const std::string& errorText) override {
        moSECSIService_Disconnect(errorCode, errorText);
    }
    void Error(std::int32_t errorCode, const std::string& errorText) override {
        moSECSIService_Error(errorCode, errorText);
    }
    void SecsMsgSend(const std::string& messageHex) override {
        moSECSIService_SecsMsgSend(messageHex);
    }
    void SecsBlockReceive(const std::string& blockHex) override {
        moSECSIService_SecsBlockReceive(blockHex);
    }
    void SecsMsgReceive(const std::string& headerHex,
                        const std::string& bodyHex,
                        std::int32_t bodyLength) override {
        moSECSIService_SecsMsgReceive(headerHex, bodyHex, bodyLength);
    }

    SiteOwner site_;
    IContainer& container_;
    IFileSystem& files_;
    IClock& clock_;
    HexmireEvents events_;
    ControlSettings settings_;
    std::shared_ptr<SECSIService> driver_;
    std::shared_ptr<hexmire::SECSDictionary> dictionary_;
    std::shared_ptr<hexmire::SECSDictionary> transInUse_;
    std::shared_ptr<IXMLDocument> xmlDocument_;
    std::unique_ptr<CLogFile> log_;
    std::chrono::seconds lastSecond_{0};  // of the day, on the wall clock
    std::int32_t currentBaud_ = 0;
    std::int32_t currentConnectionType_ = 0;
    std::int32_t errorCode_ = 0;
    bool connected_ = false;
    bool portOpened_ = false;
    bool tornDown_ = false;
    int raising_ = 0;  // Events being raised: the object must not end inside its own handler.
    // Ends with the control: the container may call the teardown later than that.
    struct Alive {};
    std::shared_ptr<const Alive> alive_ = std::make_shared<const Alive>();
    std::thread::id thread_ = std::this_thread::get_id();

    template <class Handler, class... Arguments>
    void Raise(const Handler& handler, Arguments&&... arguments);
};

class Control::Entry {
public:
    explicit Entry(Control& control);

private:
    SiteScope scope_;
};

template <class Body>
void Control::RunOwn(const char* routine, Body&& body) noexcept {
    const Entry entry(*this);
    try {
        std::forward<Body>(body)();
    } catch (...) {
        ReportOwnFault(routine);
    }
}

/// A handler may replace itself while it runs, so a copy is called; it may end the control, so what
/// that would release is held.
template <class Handler, class... Arguments>
void Control::Raise(const Handler& handler, Arguments&&... arguments) {
    if (!handler) return;
    struct Count {
        int& Depth;
        explicit Count(int& depth) : Depth(depth) { ++Depth; }
        Count(const Count&) = delete;
        Count& operator=(const Count&) = delete;
        ~Count() { --Depth; }
    };
    const Count count(raising_);
    const auto held = std::make_tuple(driver_, dictionary_, transInUse_);
    const Handler running = handler;
    running(std::forward<Arguments>(arguments)...);
}

}  // namespace hexmire::detail
