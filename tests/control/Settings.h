#pragma once

#include <hexmire/control/Hexmire.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

/// Every settable property of the control, as rows that tests walk.
namespace hexmire::fakes {

constexpr std::int32_t kLongMax = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kLongMin = std::numeric_limits<std::int32_t>::min();

template <class Get, class Set, class Value>
struct SettingRow {
    const char* Name;
    Get Getter;
    Set Setter;
    Value Default;
    std::vector<Value> Accepted;
    std::vector<Value> Refused;
    std::int32_t Code;
    const char* Text;
    const char* DriverMember;  ///< "" when nothing is pushed
    bool Notifies;
};

using IntegerRow =
    SettingRow<std::int32_t (Hexmire::*)() const, void (Hexmire::*)(std::int32_t), std::int32_t>;
using FloatRow = SettingRow<float (Hexmire::*)() const, void (Hexmire::*)(float), float>;
using FlagRow = SettingRow<bool (Hexmire::*)() const, void (Hexmire::*)(bool), bool>;
using TextRow = SettingRow<std::string (Hexmire::*)() const,
                           void (Hexmire::*)(const std::string&),
                           std::string>;

inline const std::vector<IntegerRow>& IntegerRows() {
    static const char* const kPort = "The IP Port must be between 0 and 2147483647.";
    static const std::vector<IntegerRow> kRows{
        {"BaudRate",
         &Hexmire::BaudRate,
         &Hexmire::BaudRate,
         9600,
         {150, 300, 1200, 2400, 4800, 9600, 19200},
         {0, -9600, 149, 151, 600, 9601, 38400, 65536 + 9600, kLongMax, kLongMin},
         1046,
         "The BaudRate value is invalid.",
         "BaudRate",
         true},
        {"ConnectionPortType",
         &Hexmire::ConnectionPortType,
         &Hexmire::ConnectionPortType,
         1,
         {1, 2, 3, 4},
         {0, 5, -1, 65537, kLongMax, kLongMin},
         1053,
         "The ConnectionPortType value is invalid. This property must be 1(RS-232), 2(HSMS), "
         "3(TCPIP), 4(HSMS-SS)",
         "PortType",
         true},
        {"ConnectionRetryLimit",
         &Hexmire::ConnectionRetryLimit,
         &Hexmire::ConnectionRetryLimit,
         3,
         {0, 1, 30, 31},
         {-1, 32, kLongMax, kLongMin},
         1048,
         "The ConnectionRetryLimit must be between 0 and 31.",
         "ConnectionRetryLimit",
         true},
        {"DeviceID",
         &Hexmire::DeviceID,
         &Hexmire::DeviceID,
         0,
         {0, 1, 32766, 32767},
         {-1, 32768, 40000, 65536, kLongMax, kLongMin},
         1047,
         "The DeviceID must be between 0 and 32767.",
         "DeviceID",
         true},
        {"HSMSConnectionType",
         &Hexmire::HSMSConnectionType,
         &Hexmire::HSMSConnectionType,
         1,
         {1, 2, 3},
         {0, 4, -1, kLongMax, kLongMin},
         2005,
         "The HSMSConnectionType value is invalid. This property must be 1(Active), 2(Passive), "
         "3(Alternating).",
         "HSMSConnectionMode",
         true},
        {"LocalIPPort",
         &Hexmire::LocalIPPort,
         &Hexmire::LocalIPPort,
         5000,
         {1, 2, 65535, 65536, kLongMax},
         {0, -1, kLongMin},
         2006,
         kPort,
         "LocalIPPort",
         true},
        {"RemoteIPPort",
         &Hexmire::RemoteIPPort,
         &Hexmire::RemoteIPPort,
         5000,
         {1, 2, 65535, 65536, kLongMax},
         {0, -1, kLongMin},
         2006,
         kPort,
         "RemoteIPPort",
         true},
        {"T3Timeout",
         &Hexmire::T3Timeout,
         &Hexmire::T3Timeout,
         45,
         {1, 2, 119, 120},
         {0, -1, 121, kLongMax, kLongMin},
         1051,
         "The T3 value must be between 1 and 120 inclusive.",
         "T3",
         true},
        {"T4Timeout",
         &Hexmire::T4Timeout,
         &Hexmire::T4Timeout,
         10,
         {1, 120},
         {0, 121, kLongMax, kLongMin},
         1052,
         "The T4 value must be between 1 and 120 inclusive.",
         "T4",
         true},
        {"T5Timeout",
         &Hexmire::T5Timeout,
         &Hexmire::T5Timeout,
         10,
         {1, 121, 240},
         {0, 241, kLongMax, kLongMin},
         1066,
         "The T5 value must be between 1 and 240 inclusive.",
         "T5",
         true},
        {"T6Timeout",
         &Hexmire::T6Timeout,
         &Hexmire::T6Timeout,
         5,
         {1, 121, 240},
         {0, 241, kLongMax, kLongMin},
         1067,
         "The T6 value must be between 1 and 240 inclusive.",
         "T6",
         true},
        {"T7Timeout",
         &Hexmire::T7Timeout,
         &Hexmire::T7Timeout,
         10,
         {1, 121, 240},
         {0, 241, kLongMax, kLongMin},
         1068,
         "The T7 value must be between 1 and 240 inclusive.",
         "T7",
         true},
        {"T8Timeout",
         &Hexmire::T8Timeout,
         &Hexmire::T8Timeout,
         5,
         {1, 120},
         {0, 121, 240, kLongMax, kLongMin},
         1069,
         "The T8 value must be between 1 and 120 inclusive.",
         "T8",
         true},
        {"TimeOutRetry",
         &Hexmire::TimeOutRetry,
         &Hexmire::TimeOutRetry,
         0,
         {0, 1, 32766, 32767},
         {-1, 86401, kLongMax, kLongMin},
         2007,
         "The TimeOutRetry must be between 1 and 86400 inclusive.",
         "TimeOutRetry",
         true}};
    return kRows;
}

inline const std::vector<FloatRow>& FloatRows() {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    static const std::vector<FloatRow> kRows{
        {"T1Timeout",
         &Hexmire::T1Timeout,
         &Hexmire::T1Timeout,
         0.3F,
         {0.1F, std::nextafterf(0.1F, 1.0F), 0.5F, std::nextafterf(10.0F, 1.0F), 10.0F},
         {0.0F,
          -0.0F,
          0.09F,
          std::nextafterf(0.1F, 0.0F),
          std::nextafterf(10.0F, 11.0F),
          10.01F,
          -0.1F,
          -1.0F,
          kInfinity,
          -kInfinity,
          std::nanf("")},
         1049,
         "The T1 value must be between 0.1 and 10.0 inclusive.",
         "T1",
         true},
        {"T2Timeout",
         &Hexmire::T2Timeout,
         &Hexmire::T2Timeout,
         0.5F,
         {0.2F, std::nextafterf(0.2F, 1.0F), 0.5F, std::nextafterf(25.0F, 1.0F), 25.0F},
         {0.0F,
          0.19F,
          std::nextafterf(0.2F, 0.0F),
          std::nextafterf(25.0F, 26.0F),
          25.01F,
          -0.2F,
          kInfinity,
          -kInfinity,
          std::nanf("")},
         1050,
         "The T2 value must be between 0.2 and 25.0 inclusive.",
         "T2",
         true}};
    return kRows;
}

inline const std::vector<FlagRow>& FlagRows() {
    const auto row = [](const char* name,
                        bool (Hexmire::*get)() const,
                        void (Hexmire::*set)(bool),
                        bool initial,
                        const char* member,
                        bool notifies) {
        return FlagRow{
            name, get, set, initial, {true, false, false, true}, {}, 0, "", member, notifies};
    };
    static const std::vector<FlagRow> kRows{
        row("ConnectionHost",
            &Hexmire::ConnectionHost,
            &Hexmire::ConnectionHost,
            true,
            "HostRole",
            true),
        row("DuplicateBlockCheck",
            &Hexmire::DuplicateBlockCheck,
            &Hexmire::DuplicateBlockCheck,
            true,
            "DuplicateBlockCheck",
            true),
        row("InterleaveCheck",
            &Hexmire::InterleaveCheck,
            &Hexmire::InterleaveCheck,
            false,
            "InterleaveCheck",
            true),
        row("TraceEnabled", &Hexmire::TraceEnabled, &Hexmire::TraceEnabled, false, "Trace", true),
        row("SystemBytesCheck",
            &Hexmire::SystemBytesCheck,
            &Hexmire::SystemBytesCheck,
            false,
            "SystemBytesCheck",
            true),
        row("RecipeFileEnabled",
            &Hexmire::RecipeFileEnabled,
            &Hexmire::RecipeFileEnabled,
            false,
            "RecipeFileEnabled",
            false)};
    return kRows;
}

inline const std::vector<TextRow>& TextRows() {
    const auto row = [](const char* name,
                        std::string (Hexmire::*get)() const,
                        void (Hexmire::*set)(const std::string&),
                        const char* initial,
                        const char* member,
                        bool notifies) {
        return TextRow{name,
                       get,
                       set,
                       initial,
                       {"a",
                        "",
                        "C:\\x y\\",
                        "/dev/ttyS0",
                        "10.0.0.1.log",
                        "\xE4",
                        " b ",
                        std::string("a\0b", 3)},
                       {},
                       0,
                       "",
                       member,
                       notifies};
    };
    static const std::vector<TextRow> kRows{
        row("LocalIPAddress",
            &Hexmire::LocalIPAddress,
            &Hexmire::LocalIPAddress,
            "0.0.0.0",
            "LocalIPAddress",
            true),
        row("RemoteIPAddress",
            &Hexmire::RemoteIPAddress,
            &Hexmire::RemoteIPAddress,
            "255.255.255.100",
            "RemoteIPAddress",
            true),
        row("SECSDictionaryFile",
            &Hexmire::SECSDictionaryFile,
            &Hexmire::SECSDictionaryFile,
            "Default.xml",
            "",
            true),
        row("SerialPort", &Hexmire::SerialPort, &Hexmire::SerialPort, "COM1", "SerialPort", true),
        row("RecipeSendPath",
            &Hexmire::RecipeSendPath,
            &Hexmire::RecipeSendPath,
            "",
            "RecipeSendPath",
            false),
        row("RecipeRecvPath",
            &Hexmire::RecipeRecvPath,
            &Hexmire::RecipeRecvPath,
            "",
            "RecipeRecvPath",
            false),
        row("SECSILogPath",
            &Hexmire::SECSILogPath,
            &Hexmire::SECSILogPath,
            "C:\\App\\Log\\",
            "SECSILogPath",
            false)};
    return kRows;
}

}  // namespace hexmire::fakes
