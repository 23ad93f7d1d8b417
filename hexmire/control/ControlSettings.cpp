#include <hexmire/control/detail/ControlSettings.h>
#include <hexmire/support/Conversion.h>

#include <array>

namespace hexmire::detail {

void SettingPushes::BaudRate(const ControlSettings& settings, SECSIService& driver) {
    driver.BaudRate(NarrowToInteger(settings.BaudRate));
}

void SettingPushes::ConnectionHost(const ControlSettings& settings, SECSIService& driver) {
    driver.HostRole(settings.ConnectionHost);
}

void SettingPushes::ConnectionPortType(const ControlSettings& settings, SECSIService& driver) {
    driver.PortType(NarrowToInteger(settings.ConnectionPortType));
}

void SettingPushes::ConnectionRetryLimit(const ControlSettings& settings, SECSIService& driver) {
    driver.ConnectionRetryLimit(NarrowToInteger(settings.ConnectionRetryLimit));
}

void SettingPushes::DeviceID(const ControlSettings& settings, SECSIService& driver) {
    driver.DeviceID(settings.DeviceID);
}

void SettingPushes::DuplicateBlockCheck(const ControlSettings& settings, SECSIService& driver) {
    driver.DuplicateBlockCheck(settings.DuplicateBlockCheck);
}

void SettingPushes::HSMSConnectionType(const ControlSettings& settings, SECSIService& driver) {
    driver.HSMSConnectionMode(NarrowToInteger(settings.HSMSConnectionType));
}

void SettingPushes::InterleaveCheck(const ControlSettings& settings, SECSIService& driver) {
    driver.InterleaveCheck(settings.InterleaveCheck);
}

void SettingPushes::LocalIPAddress(const ControlSettings& settings, SECSIService& driver) {
    driver.LocalIPAddress(settings.LocalIPAddress);
}

void SettingPushes::LocalIPPort(const ControlSettings& settings, SECSIService& driver) {
    driver.LocalIPPort(settings.LocalIPPort);
}

void SettingPushes::TraceEnabled(const ControlSettings& settings, SECSIService& driver) {
    driver.Trace(settings.TraceEnabled);
}

void SettingPushes::RemoteIPAddress(const ControlSettings& settings, SECSIService& driver) {
    driver.RemoteIPAddress(settings.RemoteIPAddress);
}

void SettingPushes::RemoteIPPort(const ControlSettings& settings, SECSIService& driver) {
    driver.RemoteIPPort(settings.RemoteIPPort);
}

void SettingPushes::SerialPort(const ControlSettings& settings, SECSIService& driver) {
    driver.SerialPort(settings.SerialPort);
}

void SettingPushes::SystemBytesCheck(const ControlSettings& settings, SECSIService& driver) {
    driver.SystemBytesCheck(settings.SystemBytesCheck);
}

void SettingPushes::T1Timeout(const ControlSettings& settings, SECSIService& driver) {
    driver.T1(settings.T1Timeout);
}

void SettingPushes::T2Timeout(const ControlSettings& settings, SECSIService& driver) {
    driver.T2(settings.T2Timeout);
}

void SettingPushes::T3Timeout(const ControlSettings& settings, SECSIService& driver) {
    driver.T3(NarrowToInteger(settings.T3Timeout));
}

void SettingPushes::T4Timeout(const ControlSettings& settings, SECSIService& driver) {
    driver.T4(NarrowToInteger(settings.T4Timeout));
}

void SettingPushes::T5Timeout(const ControlSettings& settings, SECSIService& driver) {
    driver.T5(NarrowToInteger(settings.T5Timeout));
}

void SettingPushes::T6Timeout(const ControlSettings& settings, SECSIService& driver) {
    driver.T6(NarrowToInteger(settings.T6Timeout));
}

void SettingPushes::T7Timeout(const ControlSettings& settings, SECSIService& driver) {
    driver.T7(NarrowToInteger(settings.T7Timeout));
}

void SettingPushes::T8Timeout(const ControlSettings& settings, SECSIService& driver) {
    driver.T8(NarrowToInteger(settings.T8Timeout));
}

void SettingPushes::TimeOutRetry(const ControlSettings& settings, SECSIService& driver) {
    driver.TimeOutRetry(NarrowToInteger(settings.TimeOutRetry));
}

void SettingPushes::RecipeFileEnabled(const ControlSettings& settings, SECSIService& driver) {
    driver.RecipeFileEnabled(settings.RecipeFileEnabled);
}

void SettingPushes::RecipeSendPath(const ControlSettings& settings, SECSIService& driver) {
    driver.RecipeSendPath(settings.RecipeSendPath);
}

void SettingPushes::RecipeRecvPath(const ControlSettings& settings, SECSIService& driver) {
    driver.RecipeRecvPath(settings.RecipeRecvPath);
}

void SettingPushes::SECSILogPath(const ControlSettings& settings, SECSIService& driver) {
    driver.SECSILogPath(settings.SECSILogPath);
}

void SettingPushes::InitialTimeOutRetry(const ControlSettings& settings, SECSIService& driver) {
    driver.ConnectionRetryLimit(NarrowToInteger(settings.TimeOutRetry));
}

namespace {

using Pushes = SettingPushes;

constexpr std::array kFirstDefaults{SettingPush{Pushes::BaudRate},
                                    SettingPush{Pushes::ConnectionHost},
                                    SettingPush{Pushes::ConnectionPortType},
                                    SettingPush{Pushes::ConnectionRetryLimit},
                                    SettingPush{Pushes::DeviceID},
                                    SettingPush{Pushes::DuplicateBlockCheck},
                                    SettingPush{Pushes::HSMSConnectionType},
                                    SettingPush{Pushes::InterleaveCheck},
                                    SettingPush{Pushes::LocalIPAddress},
                                    SettingPush{Pushes::LocalIPPort},
                                    SettingPush{Pushes::TraceEnabled},
                                    SettingPush{Pushes::RemoteIPAddress},
                                    SettingPush{Pushes::RemoteIPPort}};

constexpr std::array kOpenOrder{
    SettingPush{Pushes::BaudRate},           SettingPush{Pushes::ConnectionHost},
    SettingPush{Pushes::ConnectionPortType}, SettingPush{Pushes::ConnectionRetryLimit},
    SettingPush{Pushes::DeviceID},           SettingPush{Pushes::DuplicateBlockCheck},
    SettingPush{Pushes::HSMSConnectionType}, SettingPush{Pushes::InterleaveCheck},
    SettingPush{Pushes::LocalIPAddress},     SettingPush{Pushes::LocalIPPort},
    SettingPush{Pushes::TraceEnabled},       SettingPush{Pushes::RemoteIPAddress},
    SettingPush{Pushes::RemoteIPPort},       SettingPush{Pushes::SerialPort},
    SettingPush{Pushes::SystemBytesCheck},   SettingPush{Pushes::T1Timeout},
    SettingPush{Pushes::T2Timeout},          SettingPush{Pushes::T3Timeout},
    SettingPush{Pushes::T4Timeout},          SettingPush{Pushes::T5Timeout},
    SettingPush{Pushes::T6Timeout},          SettingPush{Pushes::T7Timeout},
    SettingPush{Pushes::T8Timeout},          SettingPush{Pushes::TimeOutRetry}};

constexpr std::array kLastDefaults{SettingPush{Pushes::SECSILogPath},
                                   SettingPush{Pushes::SerialPort},
                                   SettingPush{Pushes::SystemBytesCheck},
                                   SettingPush{Pushes::T1Timeout},
                                   SettingPush{Pushes::T2Timeout},
                                   SettingPush{Pushes::T3Timeout},
                                   SettingPush{Pushes::T4Timeout},
                                   SettingPush{Pushes::T5Timeout},
                                   SettingPush{Pushes::T6Timeout},
                                   SettingPush{Pushes::T7Timeout},
                                   SettingPush{Pushes::T8Timeout},
                                   SettingPush{Pushes::InitialTimeOutRetry},
                                   SettingPush{Pushes::RecipeFileEnabled}};

}  // namespace

std::span<const SettingPush> SettingPushes::OpenOrder() noexcept { return kOpenOrder; }

std::span<const SettingPush> SettingPushes::FirstDefaults() noexcept { return kFirstDefaults; }

std::span<const SettingPush> SettingPushes::LastDefaults() noexcept { return kLastDefaults; }

}  // namespace hexmire::detail
