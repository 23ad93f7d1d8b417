#pragma once

#include <hexmire/control/Enumerations.h>
#include <hexmire/control/HexmireEvents.h>
#include <hexmire/platform/Platform.h>
#include <hexmire/trans/SECSDictionary.h>

#include <cstdint>
#include <memory>
#include <string>

namespace hexmire {

namespace detail {
class Control;
class HexmireAccess;
}  // namespace detail

/// The SECS communication control of a host: configure it, load a dictionary, open the port, send
/// transactions and take its events.
///
/// Every property is checked when it is set, held here, and pushed to the transport driver at once
/// where the driver uses it; every value is pushed again when the port is opened. A rejected value
/// leaves the old one in place and raises `Error`. Nothing throws.
///
/// Single-threaded: create, use and destroy it on the loop thread. It never starts a thread and
/// never blocks.
class Hexmire {
public:
    explicit Hexmire(const Platform& platform);
    Hexmire(const Hexmire&) = delete;
    Hexmire& operator=(const Hexmire&) = delete;
    ~Hexmire();

    /// The handlers of this control's events; set them before opening the port.
    [[nodiscard]] HexmireEvents& Events() noexcept;

    // --- Settings ------------------------------------------------------------------------------

    /// 150, 300, 1200, 2400, 4800, 9600 or 19200 bit/s; error 1046. Default 9600.
    [[nodiscard]] std::int32_t BaudRate() const noexcept;
    void BaudRate(std::int32_t value);
    /// True for the host role, false for an equipment. Default True.
    [[nodiscard]] bool ConnectionHost() const noexcept;
    void ConnectionHost(bool value);
    /// One of enmPortType; error 1053. Default 1 (RS-232).
    [[nodiscard]] std::int32_t ConnectionPortType() const noexcept;
    void ConnectionPortType(std::int32_t value);
    /// Retries of a block, RTY, [0..31]; error 1048. Default 3.
    [[nodiscard]] std::int32_t ConnectionRetryLimit() const noexcept;
    void ConnectionRetryLimit(std::int32_t value);
    /// [0..32767]; error 1047. Default 0.
    [[nodiscard]] std::int32_t DeviceID() const noexcept;
    void DeviceID(std::int32_t value);
    /// Default True.
    [[nodiscard]] bool DuplicateBlockCheck() const noexcept;
    void DuplicateBlockCheck(bool value);
    /// One of enmConnectionMode; error 2005. Default 1 (Active).
    [[nodiscard]] std::int32_t HSMSConnectionType() const noexcept;
    void HSMSConnectionType(std::int32_t value);
    /// Default False.
    [[nodiscard]] bool InterleaveCheck() const noexcept;
    void InterleaveCheck(bool value);
    /// Default "0.0.0.0".
    [[nodiscard]] std::string LocalIPAddress() const;
    void LocalIPAddress(const std::string& value);
    /// [1..2147483647]; error 2006. Default 5000.
    [[nodiscard]] std::int32_t LocalIPPort() const noexcept;
    void LocalIPPort(std::int32_t value);
    /// Byte trace of the driver. Default False.
    [[nodiscard]] bool TraceEnabled() const noexcept;
    void TraceEnabled(bool value);
    /// Default "255.255.255.100".
    [[nodiscard]] std::string RemoteIPAddress() const;
    void RemoteIPAddress(const std::string& value);
    /// [1..2147483647]; error 2006. Default 5000.
    [[nodiscard]] std::int32_t RemoteIPPort() const noexcept;
    void RemoteIPPort(std::int32_t value);
    /// Path of the XML dictionary, used as it stands. Default "Default.xml".
    [[nodiscard]] std::string SECSDictionaryFile() const;
    void SECSDictionaryFile(const std::string& value);
    /// Base name of the daily message log. Default: application folder + "\Log\SECSII.log".
    [[nodiscard]] std::string SECSLogFile() const;
    void SECSLogFile(const std::string& value);
    /// Default "COM1".
    [[nodiscard]] std::string SerialPort() const;
    void SerialPort(const std::string& value);
    /// True: a reply is matched by its system bytes too. Default False.
    [[nodiscard]] bool SystemBytesCheck() const noexcept;
    void SystemBytesCheck(bool value);
    /// Inter-character time-out, [0.1..10.0] s; error 1049. Default 0.3.
    [[nodiscard]] float T1Timeout() const noexcept;
    void T1Timeout(float value);
    /// Protocol time-out, [0.2..25.0] s; error 1050. Default 0.5.
    [[nodiscard]] float T2Timeout() const noexcept;
    void T2Timeout(float value);
    /// Reply time-out, [1..120] s; error 1051. Default 45.
    [[nodiscard]] std::int32_t T3Timeout() const noexcept;
    void T3Timeout(std::int32_t value);
    /// Inter-block time-out, [1..120] s; error 1052. Default 10.
    [[nodiscard]] std::int32_t T4Timeout() const noexcept;
    void T4Timeout(std::int32_t value);
    /// Connect separation time-out, [1..240] s; error 1066. Default 10.
    [[nodiscard]] std::int32_t T5Timeout() const noexcept;
    void T5Timeout(std::int32_t value);
    /// Control transaction time-out, [1..240] s; error 1067. Default 5.
    [[nodiscard]] std::int32_t T6Timeout() const noexcept;
    void T6Timeout(std::int32_t value);
    /// Not selected time-out, [1..240] s; error 1068. Default 10.
    [[nodiscard]] std::int32_t T7Timeout() const noexcept;
    void T7Timeout(std::int32_t value);
    /// Network inter-character time-out, [1..120] s; error 1069. Default 5.
    [[nodiscard]] std::int32_t T8Timeout() const noexcept;
    void T8Timeout(std::int32_t value);
    /// Attempts beyond RTY after a time-out, [0..86400]; error 2007. Default 0.
    [[nodiscard]] std::int32_t TimeOutRetry() const noexcept;
    void TimeOutRetry(std::int32_t value);
    /// Default False.
    [[nodiscard]] bool RecipeFileEnabled() const noexcept;
    void RecipeFileEnabled(bool value);
    /// Default "".
    [[nodiscard]] std::string RecipeSendPath() const;
    void RecipeSendPath(const std::string& value);
    [[nodiscard]] std::string RecipeRecvPath() const;
    void RecipeRecvPath(const std::string& value);
    /// Folder of the driver's own log. Default: application folder + "\Log\".
    [[nodiscard]] std::string SECSILogPath() const;
    void SECSILogPath(const std::string& value);

    // --- Status --------------------------------------------------------------------------------

    /// The driver's link status, asked on every read. The two always agree.
    [[nodiscard]] bool Connected();
    [[nodiscard]] bool PortOpened();
    [[nodiscard]] std::int32_t CurrentBaud() noexcept;
    [[nodiscard]] std::int32_t CurrentHSMSConnectionType() noexcept;
    /// Code of the last error; 0 at first.
    [[nodiscard]] std::int32_t ErrorCode() const noexcept;
    /// The templates.
    [[nodiscard]] std::shared_ptr<hexmire::SECSDictionary> SECSDictionary() const noexcept;

    // --- Operations ----------------------------------------------------------------------------

    /// Pushes every setting and asks the driver to open; error 1090 when it is open already.
    /// Success is told by `Connect`.
    void OpenPort();
    /// Closes the link; error 1089 when it is not open.
    void ClosePort();
    /// Asks the container to unload the control: its teardown runs, and the control is inert
    /// afterwards.
    void ControlTerminate();

    /// Appends the transactions of the XML dictionary to the templates; error 2001 when it cannot
    /// be read or parsed.
    void LoadXMLDictionary();

    /// A new transaction: an empty one, or a working copy of a template found by name (any letter
    /// case) or by 1-based position. Errors 1020, 1022, 1025, 1026, 1027; then none.
    [[nodiscard]] SECSTransPtr NewSECSTransaction();
    [[nodiscard]] SECSTransPtr NewSECSTransaction(const Variant& value);
    template <PositionInteger T>
    [[nodiscard]] SECSTransPtr NewSECSTransaction(T position) {
        return NewSECSTransaction(PositionVariant(position));
    }
    [[nodiscard]] SECSTransPtr NewSECSTransaction(std::string_view name);
    [[nodiscard]] SECSTransPtr NewSECSTransaction(const std::string& name) {
        return NewSECSTransaction(std::string_view(name));
    }
    [[nodiscard]] SECSTransPtr NewSECSTransaction(const char* name) {
        return NewSECSTransaction(std::string_view(name == nullptr ? "" : name));
    }

    // --- Placement on a form -------------------------------------------------------------------

    /// The container's notification that the control was placed: every setting is checked and
    /// pushed again.
    void InitProperties();
    /// The face is fixed: 615 by 615 container units (41 pixels at 96 dpi), one button "SxFx".
    [[nodiscard]] std::int32_t Width() const noexcept;
    [[nodiscard]] std::int32_t Height() const noexcept;
    void Resize(std::int32_t width, std::int32_t height) noexcept;
    [[nodiscard]] std::string Caption() const;

private:
    friend class detail::HexmireAccess;

    std::unique_ptr<detail::Control> control_;
};

}  // namespace hexmire
