#pragma once

#include <hexmire/support/Fault.h>
#include <hexmire/support/Variant.h>

#include <cstdint>
#include <span>
#include <string>

namespace hexmire {

/// What a transport driver tells the control. All events arrive one at a time on the loop thread,
/// never from inside a call of the driver.
///
/// Hex texts carry every byte as two upper-case digits and one blank, three characters a byte, the
/// last one included.
class SECSIServiceEvents {
public:
    /// The link is ready for messages.
    virtual void Connect() = 0;
    /// The link has ended. Code 0 with an empty text: closed by local request.
    virtual void Disconnect(std::int32_t errorCode, const std::string& errorText) = 0;
    /// Something went wrong that the host should know.
    virtual void Error(std::int32_t errorCode, const std::string& errorText) = 0;
    /// A data message has gone out: hex text of the 10 header bytes and the body.
    virtual void SecsMsgSend(const std::string& messageHex) = 0;
    /// A block was accepted: hex text of the 10 header bytes as on the wire and the block's data.
    virtual void SecsBlockReceive(const std::string& blockHex) = 0;
    /// A whole message was received: hex text of its 10 header bytes (R-bit cleared), hex text of
    /// its body (empty for none) and the body's length in bytes.
    virtual void SecsMsgReceive(const std::string& headerHex,
                                const std::string& bodyHex,
                                std::int32_t bodyLength) = 0;

    virtual ~SECSIServiceEvents() = default;

protected:
    SECSIServiceEvents() = default;
    SECSIServiceEvents(const SECSIServiceEvents&) = default;
    SECSIServiceEvents& operator=(const SECSIServiceEvents&) = default;
};

/// How a driver reports a call that failed: number and text reach the host unchanged.
class DriverError : public Fault {
public:
    using Fault::Fault;
};

/// The transport driver: link settings, open, close, status and send. Any driver can be plugged
/// into the control. Single-threaded; call from the loop thread. No member blocks.
class SECSIService {
public:
    /// Starts opening the link; success is told later by `Connect`.
    virtual void OpenLink() = 0;
    /// Closes the link. Idempotent, legal from inside an event, returns at once.
    virtual void CloseLink() = 0;
    /// True from OpenLink until CloseLink or until the connection has ended.
    [[nodiscard]] virtual bool LinkStatus() = 0;
    /// Hands over one message: the 10 header bytes, the body as an array of Byte or "" for none,
    /// and the body's length in bytes.
    virtual void SendMessage(std::span<const std::uint8_t> header,
                             const Variant& body,
                             std::int32_t length) = 0;

    virtual void SerialPort(const std::string& name) = 0;       ///< e.g. "COM1"
    virtual void ConnectionRetryLimit(std::int16_t limit) = 0;  ///< RTY, [0..31]
    virtual void PortType(std::int16_t type) = 0;               ///< enmPortType, [1..4]
    virtual void HostRole(bool host) = 0;                       ///< false: equipment
    virtual void BaudRate(std::int16_t baud) = 0;               ///< [150..19200] bit/s
    virtual void T1(float seconds) = 0;                         ///< inter-character, [0.1..10.0] s
    virtual void T2(float seconds) = 0;                         ///< protocol, [0.2..25.0] s
    virtual void T3(std::int16_t seconds) = 0;                  ///< reply, [1..120] s
    virtual void T4(std::int16_t seconds) = 0;                  ///< inter-block, [1..120] s
    virtual void T5(std::int16_t seconds) = 0;                  ///< connect separation, [1..240] s
    virtual void T6(std::int16_t seconds) = 0;                  ///< control transaction, [1..240] s
    virtual void T7(std::int16_t seconds) = 0;                  ///< not selected, [1..240] s
    virtual void T8(std::int16_t seconds) = 0;         ///< network inter-character, [1..120] s
    virtual void DeviceID(std::int32_t deviceId) = 0;  ///< [0..32767]
    virtual void LocalIPAddress(const std::string& address) = 0;
    virtual void LocalIPPort(std::int32_t port) = 0;
    virtual void RemoteIPAddress(const std::string& address) = 0;
    virtual void RemoteIPPort(std::int32_t port) = 0;
    virtual void InterleaveCheck(bool on) = 0;
    virtual void DuplicateBlockCheck(bool on) = 0;
    virtual void SystemBytesCheck(bool on) = 0;
    virtual void TimeOutRetry(std::int16_t count) = 0;
    virtual void HSMSConnectionMode(std::int16_t mode) = 0;  ///< enmConnectionMode, [1..3]
    virtual void Trace(bool on) = 0;
    virtual void RecipeFileEnabled(bool on) = 0;
    virtual void RecipeSendPath(const std::string& folder) = 0;
    virtual void RecipeRecvPath(const std::string& folder) = 0;
    virtual void SECSILogPath(const std::string& folder) = 0;

    virtual ~SECSIService() = default;

protected:
    SECSIService() = default;
    SECSIService(const SECSIService&) = default;
    SECSIService& operator=(const SECSIService&) = default;
};

}  // namespace hexmire
