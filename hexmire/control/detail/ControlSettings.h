#pragma once

#include <hexmire/control/Enumerations.h>
#include <hexmire/platform/SECSIService.h>

#include <cstdint>
#include <span>
#include <string>

namespace hexmire::detail {

/// What a control holds of its settable properties, with the values that it begins with.
struct ControlSettings {
    std::int32_t BaudRate = BaudRate9600;
    bool ConnectionHost = true;
    std::int32_t ConnectionPortType = PortTypeRS232;
    std::int32_t ConnectionRetryLimit = 3;
    std::int32_t DeviceID = 0;
    bool DuplicateBlockCheck = true;
    std::int32_t HSMSConnectionType = ConnectionModeActive;
    bool InterleaveCheck = false;
    std::string LocalIPAddress = "0.0.0.0";
    std::int32_t LocalIPPort = 5000;
    bool TraceEnabled = false;
    std::string RemoteIPAddress = "255.255.255.100";
    std::int32_t RemoteIPPort = 5000;
    std::string SECSDictionaryFile = "Default.xml";
    std::string SECSLogFile;  ///< application folder + "\Log\SECSII.log"
    std::string SerialPort = "COM1";
    bool SystemBytesCheck = false;
    float T1Timeout = 0.3F;
    float T2Timeout = 0.5F;
    std::int32_t T3Timeout = 45;
    std::int32_t T4Timeout = 10;
    std::int32_t T5Timeout = 10;
    std::int32_t T6Timeout = 5;
    std::int32_t T7Timeout = 10;
    std::int32_t T8Timeout = 5;
    std::int32_t TimeOutRetry = 0;
    bool RecipeFileEnabled = false;
    std::string RecipeSendPath;
    std::string RecipeRecvPath;
    std::string SECSILogPath;  ///< application folder + "\Log\"
};

/// Hands one setting to the driver. Numbers are narrowed here: fault 6 beyond 16 bits.
using SettingPush = void (*)(const ControlSettings& settings, SECSIService& driver);

/// The push of each setting that the driver uses.
struct SettingPushes {
    static void BaudRate(const ControlSettings& settings, SECSIService& driver);
    static void ConnectionHost(const ControlSettings& settings, SECSIService& driver);
    static void ConnectionPortType(const ControlSettings& settings, SECSIService& driver);
    static void ConnectionRetryLimit(const ControlSettings& settings, SECSIService& driver);
    static void DeviceID(const ControlSettings& settings, SECSIService& driver);
    static void DuplicateBlockCheck(const ControlSettings& settings, SECSIService& driver);
    static void HSMSConnectionType(const ControlSettings& settings, SECSIService& driver);
    static void InterleaveCheck(const ControlSettings& settings, SECSIService& driver);
    static void LocalIPAddress(const ControlSettings& settings, SECSIService& driver);
    static void LocalIPPort(const ControlSettings& settings, SECSIService& driver);
    static void TraceEnabled(const ControlSettings& settings, SECSIService& driver);
    static void RemoteIPAddress(const ControlSettings& settings, SECSIService& driver);
    static void RemoteIPPort(const ControlSettings& settings, SECSIService& driver);
    static void SerialPort(const ControlSettings& settings, SECSIService& driver);
    static void SystemBytesCheck(const ControlSettings& settings, SECSIService& driver);
    static void T1Timeout(const ControlSettings& settings, SECSIService& driver);
    static void T2Timeout(const ControlSettings& settings, SECSIService& driver);
    static void T3Timeout(const ControlSettings& settings, SECSIService& driver);
    static void T4Timeout(const ControlSettings& settings, SECSIService& driver);
    static void T5Timeout(const ControlSettings& settings, SECSIService& driver);
    static void T6Timeout(const ControlSettings& settings, SECSIService& driver);
    static void T7Timeout(const ControlSettings& settings, SECSIService& driver);
    static void T8Timeout(const ControlSettings& settings, SECSIService& driver);
    static void TimeOutRetry(const ControlSettings& settings, SECSIService& driver);
    static void RecipeFileEnabled(const ControlSettings& settings, SECSIService& driver);
    static void RecipeSendPath(const ControlSettings& settings, SECSIService& driver);
    static void RecipeRecvPath(const ControlSettings& settings, SECSIService& driver);
    static void SECSILogPath(const ControlSettings& settings, SECSIService& driver);

    /// The default of TimeOutRetry lands in the driver's retry limit, so that after construction
    /// alone the driver holds a limit of 0; opening the port pushes both to their proper places.
    static void InitialTimeOutRetry(const ControlSettings& settings, SECSIService& driver);

    /// The order in which the port's opening pushes.
    [[nodiscard]] static std::span<const SettingPush> OpenOrder() noexcept;
    /// The order of construction, up to the log's file name and behind it.
    [[nodiscard]] static std::span<const SettingPush> FirstDefaults() noexcept;
    [[nodiscard]] static std::span<const SettingPush> LastDefaults() noexcept;
};

}  // namespace hexmire::detail
