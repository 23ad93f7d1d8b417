#include <hexmire/control/Hexmire.h>
#include <hexmire/control/detail/Control.h>

#include <algorithm>
#include <array>

/// The settable properties: check, store, push, notify.
namespace hexmire {

namespace {

using Pushes = detail::SettingPushes;
using Settings = detail::ControlSettings;

constexpr bool IsBetween(std::int32_t value, std::int32_t low, std::int32_t high) {
    return value >= low && value <= high;
}

bool IsBaudRate(std::int32_t value) {
    constexpr std::array kRates{BaudRate150,
                                BaudRate300,
                                BaudRate1200,
                                BaudRate2400,
                                BaudRate4800,
                                BaudRate9600,
                                BaudRate19200};
    return std::find(kRates.begin(), kRates.end(), value) != kRates.end();
}

}  // namespace

std::int32_t Hexmire::BaudRate() const noexcept { return control_->Settings().BaudRate; }

void Hexmire::BaudRate(std::int32_t value) {
    control_->Assign(
        "Let BaudRate", IsBaudRate(value), 1046, Pushes::BaudRate, true, [&](Settings& settings) {
            settings.BaudRate = value;
        });
}

bool Hexmire::ConnectionHost() const noexcept { return control_->Settings().ConnectionHost; }

void Hexmire::ConnectionHost(bool value) {
    control_->Assign(
        "Let ConnectionHost", true, 0, Pushes::ConnectionHost, true, [&](Settings& settings) {
            settings.ConnectionHost = value;
        });
}

std::int32_t Hexmire::ConnectionPortType() const noexcept {
    return control_->Settings().ConnectionPortType;
}

void Hexmire::ConnectionPortType(std::int32_t value) {
    control_->Assign("Let ConnectionPortType",
                     IsBetween(value, PortTypeRS232, PortTypeHSMS_SS),
                     1053,
                     Pushes::ConnectionPortType,
                     true,
                     [&](Settings& settings) { settings.ConnectionPortType = value; });
}

std::int32_t Hexmire::ConnectionRetryLimit() const noexcept {
    return control_->Settings().ConnectionRetryLimit;
}

void Hexmire::ConnectionRetryLimit(std::int32_t value) {
    control_->Assign("Let ConnectionRetryLimit",
                     IsBetween(value, 0, 31),
                     1048,
                     Pushes::ConnectionRetryLimit,
                     true,
                     [&](Settings& settings) { settings.ConnectionRetryLimit = value; });
}

std::int32_t Hexmire::DeviceID() const noexcept { return control_->Settings().DeviceID; }

void Hexmire::DeviceID(std::int32_t value) {
    control_->Assign("Let DeviceID",
                     IsBetween(value, 0, 32767),
                     1047,
                     Pushes::DeviceID,
                     true,
                     [&](Settings& settings) { settings.DeviceID = value; });
}

bool Hexmire::DuplicateBlockCheck() const noexcept {
    return control_->Settings().DuplicateBlockCheck;
}

void Hexmire::DuplicateBlockCheck(bool value) {
    control_->Assign("Let DuplicateBlockCheck",
                     true,
                     0,
                     Pushes::DuplicateBlockCheck,
                     true,
                     [&](Settings& settings) { settings.DuplicateBlockCheck = value; });
}

std::int32_t Hexmire::HSMSConnectionType() const noexcept {
    return control_->Settings().HSMSConnectionType;
}

void Hexmire::HSMSConnectionType(std::int32_t value) {
    control_->Assign("Let HSMSConnectionType",
                     IsBetween(value, ConnectionModeActive, ConnectionModeAlternating),
                     2005,
                     Pushes::HSMSConnectionType,
                     true,
                     [&](Settings& settings) { settings.HSMSConnectionType = value; });
}

bool Hexmire::InterleaveCheck() const noexcept { return control_->Settings().InterleaveCheck; }

void Hexmire::InterleaveCheck(bool value) {
    control_->Assign(
        "Let InterleaveCheck", true, 0, Pushes::InterleaveCheck, true, [&](Settings& settings) {
            settings.InterleaveCheck = value;
        });
}

std::string Hexmire::LocalIPAddress() const {
    return control_->Text("Get LocalIPAddress", &Settings::LocalIPAddress);
}

void Hexmire::LocalIPAddress(const std::string& value) {
    control_->Assign(
        "Let LocalIPAddress", true, 0, Pushes::LocalIPAddress, true, [&](Settings& settings) {
            settings.LocalIPAddress = value;
        });
}

std::int32_t Hexmire::LocalIPPort() const noexcept { return control_->Settings().LocalIPPort; }

void Hexmire::LocalIPPort(std::int32_t value) {
    control_->Assign(
        "Let LocalIPPort", value >= 1, 2006, Pushes::LocalIPPort, true, [&](Settings& settings) {
            settings.LocalIPPort = value;
        });
}

bool Hexmire::TraceEnabled() const noexcept { return control_->Settings().TraceEnabled; }

void Hexmire::TraceEnabled(bool value) {
    control_->Assign(
        "Let TraceEnabled", true, 0, Pushes::TraceEnabled, true, [&](Settings& settings) {
            settings.TraceEnabled = value;
        });
}

std::string Hexmire::RemoteIPAddress() const {
    return control_->Text("Get RemoteIPAddress", &Settings::RemoteIPAddress);
}

void Hexmire::RemoteIPAddress(const std::string& value) {
    control_->Assign(
        "Let RemoteIPAddress", true, 0, Pushes::RemoteIPAddress, true, [&](Settings& settings) {
            settings.RemoteIPAddress = value;
        });
}

std::int32_t Hexmire::RemoteIPPort() const noexcept { return control_->Settings().RemoteIPPort; }

void Hexmire::RemoteIPPort(std::int32_t value) {
    control_->Assign(
        "Let RemoteIPPort", value >= 1, 2006, Pushes::RemoteIPPort, true, [&](Settings& settings) {
            settings.RemoteIPPort = value;
        });
}

std::string Hexmire::SECSDictionaryFile() const {
    return control_->Text("Get SECSDictionaryFile", &Settings::SECSDictionaryFile);
}

void Hexmire::SECSDictionaryFile(const std::string& value) {
    control_->Assign("Let SECSDictionaryFile", true, 0, nullptr, true, [&](Settings& settings) {
        settings.SECSDictionaryFile = value;
    });
}

std::string Hexmire::SECSLogFile() const {
    return control_->Text("Get SECSLogFile", &Settings::SECSLogFile);
}

void Hexmire::SECSLogFile(const std::string& value) { control_->SECSLogFile(value); }

std::string Hexmire::SerialPort() const {
    return control_->Text("Get SerialPort", &Settings::SerialPort);
}

void Hexmire::SerialPort(const std::string& value) {
    control_->Assign("Let SerialPort", true, 0, Pushes::SerialPort, true, [&](Settings& settings) {
        settings.SerialPort = value;
    });
}

bool Hexmire::SystemBytesCheck() const noexcept { return control_->Settings().SystemBytesCheck; }

void Hexmire::SystemBytesCheck(bool value) {
    control_->Assign(
        "Let SystemBytesCheck", true, 0, Pushes::SystemBytesCheck, true, [&](Settings& settings) {
            settings.SystemBytesCheck = value;
        });
}

float Hexmire::T1Timeout() const noexcept { return control_->Settings().T1Timeout; }

void Hexmire::T1Timeout(float value) {
    control_->Assign("Let T1Timeout",
                     value >= 0.1F && value <= 10.0F,
                     1049,
                     Pushes::T1Timeout,
                     true,
                     [&](Settings& settings) { settings.T1Timeout = value; });
}

float Hexmire::T2Timeout() const noexcept { return control_->Settings().T2Timeout; }

void Hexmire::T2Timeout(float value) {
    control_->Assign("Let T2Timeout",
                     value >= 0.2F && value <= 25.0F,
                     1050,
                     Pushes::T2Timeout,
                     true,
                     [&](Settings& settings) { settings.T2Timeout = value; });
}

std::int32_t Hexmire::T3Timeout() const noexcept { return control_->Settings().T3Timeout; }

void Hexmire::T3Timeout(std::int32_t value) {
    control_->Assign("Let T3Timeout",
                     IsBetween(value, 1, 120),
                     1051,
                     Pushes::T3Timeout,
                     true,
                     [&](Settings& settings) { settings.T3Timeout = value; });
}

std::int32_t Hexmire::T4Timeout() const noexcept { return control_->Settings().T4Timeout; }

void Hexmire::T4Timeout(std::int32_t value) {
    control_->Assign("Let T4Timeout",
                     IsBetween(value, 1, 120),
                     1052,
                     Pushes::T4Timeout,
                     true,
                     [&](Settings& settings) { settings.T4Timeout = value; });
}

std::int32_t Hexmire::T5Timeout() const noexcept { return control_->Settings().T5Timeout; }

void Hexmire::T5Timeout(std::int32_t value) {
    control_->Assign("Let T5Timeout",
                     IsBetween(value, 1, 240),
                     1066,
                     Pushes::T5Timeout,
                     true,
                     [&](Settings& settings) { settings.T5Timeout = value; });
}

std::int32_t Hexmire::T6Timeout() const noexcept { return control_->Settings().T6Timeout; }

void Hexmire::T6Timeout(std::int32_t value) {
    control_->Assign("Let T6Timeout",
                     IsBetween(value, 1, 240),
                     1067,
                     Pushes::T6Timeout,
                     true,
                     [&](Settings& settings) { settings.T6Timeout = value; });
}

std::int32_t Hexmire::T7Timeout() const noexcept { return control_->Settings().T7Timeout; }

void Hexmire::T7Timeout(std::int32_t value) {
    control_->Assign("Let T7Timeout",
                     IsBetween(value, 1, 240),
                     1068,
                     Pushes::T7Timeout,
                     true,
                     [&](Settings& settings) { settings.T7Timeout = value; });
}

std::int32_t Hexmire::T8Timeout() const noexcept { return control_->Settings().T8Timeout; }

void Hexmire::T8Timeout(std::int32_t value) {
    control_->Assign("Let T8Timeout",
                     IsBetween(value, 1, 120),
                     1069,
                     Pushes::T8Timeout,
                     true,
                     [&](Settings& settings) { settings.T8Timeout = value; });
}

std::int32_t Hexmire::TimeOutRetry() const noexcept { return control_->Settings().TimeOutRetry; }

void Hexmire::TimeOutRetry(std::int32_t value) {
    control_->Assign("Let TimeOutRetry",
                     IsBetween(value, 0, 86400),
                     2007,
                     Pushes::TimeOutRetry,
                     true,
                     [&](Settings& settings) { settings.TimeOutRetry = value; });
}

bool Hexmire::RecipeFileEnabled() const noexcept { return control_->Settings().RecipeFileEnabled; }

void Hexmire::RecipeFileEnabled(bool value) {
    control_->Assign("Let RecipeFileEnabled",
                     true,
                     0,
                     Pushes::RecipeFileEnabled,
                     false,
                     [&](Settings& settings) { settings.RecipeFileEnabled = value; });
}

std::string Hexmire::RecipeSendPath() const {
    return control_->Text("Get RecipeSendPath", &Settings::RecipeSendPath);
}

void Hexmire::RecipeSendPath(const std::string& value) {
    control_->Assign(
        "Let RecipeSendPath", true, 0, Pushes::RecipeSendPath, false, [&](Settings& settings) {
            settings.RecipeSendPath = value;
        });
}

std::string Hexmire::RecipeRecvPath() const {
    return control_->Text("Get RecipeRecvPath", &Settings::RecipeRecvPath);
}

void Hexmire::RecipeRecvPath(const std::string& value) {
    control_->Assign(
        "Let RecipeRecvPath", true, 0, Pushes::RecipeRecvPath, false, [&](Settings& settings) {
            settings.RecipeRecvPath = value;
        });
}

std::string Hexmire::SECSILogPath() const {
    return control_->Text("Get SECSILogPath", &Settings::SECSILogPath);
}

void Hexmire::SECSILogPath(const std::string& value) {
    control_->Assign(
        "Let SECSILogPath", true, 0, Pushes::SECSILogPath, false, [&](Settings& settings) {
            settings.SECSILogPath = value;
        });
}

}  // namespace hexmire
