#include <hexmire/control/detail/Control.h>
#include <hexmire/support/Fault.h>
#include <hexmire/support/detail/ObjectMaker.h>
#include <hexmire/trans/detail/SECSDictionaryAccess.h>

#include <cassert>
#include <chrono>

/// Life of the control: construction, errors, teardown.
namespace hexmire::detail {

namespace {

constexpr std::chrono::milliseconds kTimerPeriod{500};

}  // namespace

Control::Entry::Entry(Control& control) : scope_(control.site_.Ref()) {
    assert(control.thread_ == std::this_thread::get_id() && "call the control from its own thread");
}

Control::Control(const hexmire::Platform& platform)
    : site_(*this), container_(platform.Container), files_(platform.Files), clock_(platform.Clock) {
    settings_.SECSLogFile = platform.ApplicationFolder + "\\Log\\SECSII.log";
    settings_.SECSILogPath = platform.ApplicationFolder + "\\Log\\";
    RunOwn("Class_Initialize", [&] { Initialize(platform); });
}

Control::~Control() {
    assert(raising_ == 0 && "a control must not be destroyed inside its own handler");
    if (!tornDown_) TearDown();
    site_.Release();
}

void Control::Initialize(const hexmire::Platform& platform) {
    driver_ = platform.NewDriver(*this);
    dictionary_ = ObjectMaker::Make<hexmire::SECSDictionary>(site_.Ref());
    transInUse_ = ObjectMaker::Make<hexmire::SECSDictionary>(site_.Ref());
    transInUse_->Description("TRANSINUSE");
    xmlDocument_ = platform.NewXMLDocument();
    StartTimer();
    PushAll(SettingPushes::FirstDefaults());
    if (platform.MessageLog) {
        log_ = std::make_unique<CLogFile>(files_, clock_, site_.Ref());
        log_->FileName(settings_.SECSLogFile);
    }
    PushAll(SettingPushes::LastDefaults());
    connected_ = RequireDriver().LinkStatus();
    portOpened_ = connected_;
    currentBaud_ = settings_.BaudRate;
    currentConnectionType_ = settings_.HSMSConnectionType;
    errorCode_ = 0;
    site_.Publish();
}

bool Control::InitTimer() {
    bool started = false;
    RunOwn("InitProperties", [&] {
        RequireAlive();
        StartTimer();
        started = true;
    });
    return started;
}

std::string Control::Text(const char* routine, std::string ControlSettings::*setting) noexcept {
    std::string text;
    RunOwn(routine, [&] { text = settings_.*setting; });
    return text;
}

void Control::SECSLogFile(const std::string& value) {
    Assign("Let SECSLogFile", true, 0, nullptr, true, [&](ControlSettings& settings) {
        settings.SECSLogFile = value;
        if (log_ != nullptr) log_->FileName(value);
    });
}

void Control::StartTimer() {
    lastSecond_ = SecondOfDay();
    container_.StartTimer(kTimerPeriod, [this] { TimerCheck_Timer(); });
}

std::chrono::seconds Control::SecondOfDay() const {
    return std::chrono::floor<std::chrono::seconds>(clock_.Now().TimeOfDay);
}

void Control::PushAll(std::span<const SettingPush> pushes) {
    for (const SettingPush push : pushes)
        push(settings_, RequireDriver());
}

SECSIService& Control::RequireDriver() const {
    if (driver_ == nullptr) throw Fault(FaultNumber::ObjectNotSet);
    return *driver_;
}

void Control::RequireAlive() const {
    if (tornDown_) throw Fault(FaultNumber::ObjectNotSet);
}

// --- Errors ------------------------------------------------------------------------------------

void Control::RaiseError(std::int32_t code, const std::string& text, std::int32_t line) {
    Raise(events_.Error, code, text, line);
    errorCode_ = code;
}

void Control::RaiseOwnError(const char* routine,
                            std::int32_t code,
                            const std::string& details,
                            std::int32_t line) {
    RaiseError(code,
               ContextPrefix({"Hexmire", routine}) + ModErrorMsg::FormatErrorMsg(code) + details,
               line);
}

void Control::ReportOwnFault(const char* routine) noexcept {
    auto number = static_cast<std::int32_t>(FaultNumber::OutOfMemory);
    try {
        const Fault fault = CurrentFault();
        number = fault.Number();
        RaiseError(number, ContextPrefix({"Hexmire", routine}) + fault.Description(), 0);
    } catch (...) {
        // The report failed as well: the host is left with the code.
        errorCode_ = number;
    }
}

void Control::TriggerError(std::int32_t errorCode,
                           const std::string& errorText,
                           std::int32_t errorLine) {
    const Entry entry(*this);
    try {
        RaiseError(errorCode, errorText, errorLine);
    } catch (...) {
        ReportOwnFault("TriggerError");
    }
}

// --- Teardown ----------------------------------------------------------------------------------

void Control::ControlTerminate() {
    RunOwn("ControlTerminate", [&] {
        RequireAlive();
        container_.Unload([this, alive = std::weak_ptr<const Alive>(alive_)] {
            if (!alive.expired() && !tornDown_) TearDown();
        });
    });
}

// Each step runs under its own fault handler: a teardown never stops half way.
void Control::TearDown() noexcept {
    constexpr const char* kRoutine = "Class_Terminate";
    tornDown_ = true;
    RunOwn(kRoutine, [&] { container_.StopTimer(); });
    RunOwn(kRoutine, [&] {
        const std::shared_ptr<SECSIService> driver = std::exchange(driver_, nullptr);
        if (driver != nullptr) driver->CloseLink();
    });
    for (auto* dictionary : {&dictionary_, &transInUse_}) {
        const auto released = std::exchange(*dictionary, nullptr);
        RunOwn(kRoutine, [&] {
            if (released != nullptr) SECSDictionaryAccess::TearDown(*released);
        });
    }
    xmlDocument_.reset();
}

}  // namespace hexmire::detail
