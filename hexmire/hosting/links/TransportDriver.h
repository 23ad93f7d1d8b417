#pragma once

#include <hexmire/driver/LinkSettings.h>
#include <hexmire/platform/SECSIService.h>

#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace asio {
class io_context;
}

namespace hexmire {

struct LinkStatistics;

namespace link {
struct RecordSite;
}

/// The transport driver for real links, run by an Asio loop: SECS-I on a serial port and over TCP
/// (port types 1 and 3), HSMS and HSMS-SS (2 and 4); over TCP as active, passive or alternating
/// side. Another port type counts from the next connection on.
///
/// A serial port is a path such as /dev/ttyUSB0; a name without a "/", such as COM1, is looked up
/// in /dev.
///
/// Single-threaded: it is made, called and destroyed on the thread that runs the loop. Events come
/// from the loop, one at a time, never from inside a call; an event handler may call anything back,
/// up to destroying the driver. The loop outlives the driver; the sink lives as long as the driver.
/// No member blocks, and no exception leaves one: what fails is told by an `Error` event.
class TransportDriver final : public SECSIService {
public:
    /// Starts with the given settings; the setters replace those that they name.
    TransportDriver(asio::io_context& loop,
                    SECSIServiceEvents& events,
                    const LinkSettings& own = {});
    /// The same with the surroundings of traces, captures and recipe files.
    TransportDriver(asio::io_context& loop,
                    SECSIServiceEvents& events,
                    const LinkSettings& own,
                    const link::RecordSite& site);
    /// Closes the link at once and raises nothing more. A selected link gets its Separate.req if
    /// nothing is queued before it. What is left for the disk is written; a disk that does not
    /// answer is given a few seconds.
    ~TransportDriver() override;

    TransportDriver(const TransportDriver&) = delete;
    TransportDriver& operator=(const TransportDriver&) = delete;

    void OpenLink() override;
    void CloseLink() override;
    [[nodiscard]] bool LinkStatus() override;
    void SendMessage(std::span<const std::uint8_t> header,
                     const Variant& body,
                     std::int32_t length) override;

    void SerialPort(const std::string& name) override;
    void ConnectionRetryLimit(std::int16_t limit) override;
    void PortType(std::int16_t type) override;
    void HostRole(bool host) override;
    void BaudRate(std::int16_t baud) override;
    void T1(float seconds) override;
    void T2(float seconds) override;
    void T3(std::int16_t seconds) override;
    void T4(std::int16_t seconds) override;
    void T5(std::int16_t seconds) override;
    void T6(std::int16_t seconds) override;
    void T7(std::int16_t seconds) override;
    void T8(std::int16_t seconds) override;
    void DeviceID(std::int32_t deviceId) override;
    void LocalIPAddress(const std::string& address) override;
    void LocalIPPort(std::int32_t port) override;
    void RemoteIPAddress(const std::string& address) override;
    void RemoteIPPort(std::int32_t port) override;
    void InterleaveCheck(bool on) override;
    void DuplicateBlockCheck(bool on) override;
    void SystemBytesCheck(bool on) override;
    void TimeOutRetry(std::int16_t count) override;
    void HSMSConnectionMode(std::int16_t mode) override;
    void Trace(bool on) override;
    void RecipeFileEnabled(bool on) override;
    void RecipeSendPath(const std::string& folder) override;
    void RecipeRecvPath(const std::string& folder) override;
    void SECSILogPath(const std::string& folder) override;

    /// The settings as they stand, the driver's own included.
    [[nodiscard]] const LinkSettings& Settings() const noexcept;
    /// What the driver has tolerated and refused since it was made.
    [[nodiscard]] const LinkStatistics& Statistics() const noexcept;

private:
    class Shell;
    std::shared_ptr<Shell> shell_;
};

}  // namespace hexmire
