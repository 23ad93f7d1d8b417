#include <hexmire/core/ModGeneral.h>
#include <hexmire/core/detail/SECSMessageAccess.h>
#include <hexmire/support/ProcessState.h>
#include <hexmire/support/Reporting.h>
#include <hexmire/trans/SECSDictionary.h>
#include <hexmire/trans/SECSTrans.h>
#include <hexmire/trans/detail/SECSDictionaryAccess.h>
#include <hexmire/trans/detail/SECSTransAccess.h>
#include <hexmire/trans/detail/TransSite.h>

#include <array>
#include <string>

/// Send and Reply: header, driver, message log, table of transactions in use.
namespace hexmire {

namespace {

using HeaderBytes = std::array<std::uint8_t, 10>;

// SEMI E4 and E37, message header.
constexpr std::uint8_t kReverseBit = 0x80;  // In byte 0: from the equipment to the host.
constexpr std::uint8_t kReplyBit = 0x80;    // In byte 2: a reply is expected.
constexpr std::int32_t kPortTypeHsms = 2;
constexpr std::int32_t kLargestSystemBytes = 900000000;

std::uint8_t LowByte(std::int32_t value) { return static_cast<std::uint8_t>(value & 0xFF); }

/// A shift to the right by 8 as whole numbers are shifted here: by division.
std::int32_t WithoutLowByte(std::int32_t value) { return value / 256; }

std::int32_t NextSystemBytes() {
    std::int32_t& counter = detail::State().SystemBytesCounter;
    ++counter;
    if (counter > kLargestSystemBytes) counter = 0;
    return counter;
}

HeaderBytes MakeHeader(const ITransSite& control,
                       const SECSTrans& trans,
                       const SECSMessage& message,
                       bool replyBit) {
    HeaderBytes header{};
    header[1] = LowByte(trans.DeviceID());
    header[0] = LowByte(WithoutLowByte(trans.DeviceID()));
    // HSMS has no R-bit; the single-session form follows the role all the same, and the driver
    // takes it off the wire.
    if (control.ConnectionPortType() != kPortTypeHsms && !control.ConnectionHost()) {
        header[0] |= kReverseBit;
    }
    header[2] = LowByte(message.Stream());
    if (replyBit) {
        header[2] |= kReplyBit;
    } else {
        header[2] &= static_cast<std::uint8_t>(~kReplyBit);
    }
    header[3] = LowByte(message.Func());
    std::int32_t rest = trans.SystemBytes();
    for (std::size_t place = 9; place >= 6; --place) {
        header[place] = LowByte(rest);
        rest = WithoutLowByte(rest);
    }
    return header;
}

/// Logs the header, encodes the message and hands it to the driver.
void Transmit(ITransSite& control,
              const HeaderBytes& header,
              SECSMessage& message,
              const std::string& direction) {
    if (CLogFile* log = control.Log(); log != nullptr) {
        log->WriteLog("SECS I HEADER " + direction + " : " +
                      ModGeneral::HexDumpArray(Variant::Bytes(header)));
    }
    detail::SECSMessageAccess::Build(message);
    const std::shared_ptr<SECSIService> driver = control.Driver();
    if (driver == nullptr) throw Fault(FaultNumber::ObjectNotSet);
    if (message.Length() != 0) {
        const Variant body = message.Raw();
        driver->SendMessage(header, body, static_cast<std::int32_t>(body.ElementCount()));
    } else {
        driver->SendMessage(header, "", 0);
    }
}

void LogMessage(CLogFile* log,
                const SECSMessage& message,
                bool replyExpected,
                const std::string& direction) {
    if (log == nullptr) return;
    log->WriteLog("SECS I DATALEN " + direction + " : " + std::to_string(message.Length()));
    if (message.Length() > 0) {
        log->WriteLog("SECS I DATA " + direction + " : " + message.RawHex());
    }
    log->WriteLog("SECS II Message " + direction + " : \r\n" +
                  detail::SECSMessageAccess::ToSML(message, replyExpected) + "\r\n");
}

void EnterTable(ITransSite& control, SECSTrans& trans) {
    const SECSDictionaryPtr table = control.SECSTransInUse();
    if (table == nullptr) throw Fault(FaultNumber::ObjectNotSet);
    detail::SECSDictionaryAccess::Add(*table, trans.shared_from_this());
    detail::SECSTransAccess::Index(trans, table->TransCount());
    detail::SECSTransAccess::InProgress(trans, true);
    detail::SECSTransAccess::Parent(trans, table);
}

}  // namespace

Variant SECSTrans::Send() {
    static constexpr RoutineName kName{"SECSTrans", "Send"};
    const SiteScope scope(site_);
    RunRoutine(site_, kName, [&] {
        const SECSMessagePtr message = primary_;
        if (message == nullptr) {
            ReportError(site_, kName, 2008);
        } else if (!parent_.expired()) {
            ReportError(site_, kName, 2009);
        } else {
            const SECSTransPtr self = shared_from_this();
            ITransSite& control = detail::RequireTransSite(scope);
            if (autoSystemBytes_) systemBytes_ = NextSystemBytes();
            const HeaderBytes header = MakeHeader(control, *this, *message, replyExpected_);
            Transmit(control, header, *message, "Send");
            if (replyExpected_) EnterTable(control, *this);
            LogMessage(control.Log(), *message, replyExpected_, "Send");
        }
    });
    return {};
}

Variant SECSTrans::Reply() {
    static constexpr RoutineName kName{"SECSTrans", "Reply"};
    const SiteScope scope(site_);
    RunRoutine(site_, kName, [&] {
        const SECSMessagePtr message = secondary_;
        if (primary_ == nullptr || message == nullptr) {
            ReportError(site_, kName, 2008);
        } else if (!parent_.expired()) {
            ReportError(site_, kName, 2009);
        } else {
            const SECSTransPtr self = shared_from_this();
            ITransSite& control = detail::RequireTransSite(scope);
            Transmit(control, MakeHeader(control, *this, *message, false), *message, "Reply");
            // The log shows the primary's W mark on its reply.
            LogMessage(control.Log(), *message, replyExpected_, "Reply");
        }
    });
    return {};
}

}  // namespace hexmire
