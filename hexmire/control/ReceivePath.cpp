#include <hexmire/control/detail/Control.h>
#include <hexmire/control/detail/MessageHeader.h>
#include <hexmire/core/ModGeneral.h>
#include <hexmire/core/detail/SECSMessageAccess.h>
#include <hexmire/support/Fault.h>
#include <hexmire/support/HexBytes.h>
#include <hexmire/support/detail/ObjectMaker.h>
#include <hexmire/trans/detail/SECSDictionaryAccess.h>
#include <hexmire/trans/detail/SECSTransAccess.h>

#include <array>
#include <span>
#include <vector>

/// Decoding and dispatch of received messages.
namespace hexmire::detail {

namespace {

constexpr const char* kMessageReceive = "moSECSIService_SecsMsgReceive";

/// What a received message says of its transaction.
void TakeHeader(SECSTrans& trans,
                std::int32_t deviceId,
                bool replyExpected,
                std::int32_t systemBytes) {
    trans.DeviceID(deviceId);
    trans.ReplyExpected(replyExpected);
    SECSTransAccess::SystemBytes(trans, systemBytes);
    SECSTransAccess::InProgress(trans, false);
}

}  // namespace

// --- Dispatch ----------------------------------------------------------------------------------

void Control::moSECSIService_SecsMsgReceive(const std::string& headerHex,
                                            const std::string& bodyHex,
                                            std::int32_t bodyLength) {
    if (tornDown_) return;
    RunOwn(kMessageReceive, [&] { Receive(headerHex, bodyHex, bodyLength); });
}

void Control::Receive(const std::string& headerHex,
                      const std::string& bodyHex,
                      std::int32_t bodyLength) {
    if (headerHex.empty()) {
        RaiseOwnError(kMessageReceive, 2016);
        return;
    }
    MessageHeader header(headerHex);
    if (log_ != nullptr) {
        log_->WriteLog("SECS I HEADER Received : " +
                       ModGeneral::HexDumpArray(Variant::Bytes(header.Bytes)));
    }
    // Most bodies are short: they need no memory of their own.
    std::array<std::uint8_t, 512> shortBody;  // NOLINT(*-member-init): written before it is read
    std::vector<std::uint8_t> longBody;
    std::span<std::uint8_t> body;
    if (bodyLength >= 1) {
        const auto count = static_cast<std::size_t>(bodyLength);
        if (bodyHex.empty()) {
            RaiseOwnError(kMessageReceive, 2010);
            return;
        }
        if (bodyHex.size() != count * 3) {
            RaiseOwnError(kMessageReceive, 2017);
            return;
        }
        if (count > shortBody.size()) longBody.resize(count);
        body = longBody.empty() ? std::span(shortBody).first(count) : std::span(longBody);
        if (!ReadHexText(bodyHex, count, body.data())) throw Fault(FaultNumber::TypeMismatch);
    }
    if (log_ != nullptr) {
        log_->WriteLog("SECS I DATALEN Received : " + std::to_string(bodyLength));
    }
    header.ReadSystemBytes();
    const SECSMessagePtr message = ObjectMaker::Make<SECSMessage>(site_.Ref());
    message->Stream(header.Stream);
    message->Func(header.Function);
    if (!body.empty() && !SECSMessageAccess::Parse(*message, body)) {
        SendS9F7(header.Stream, header.Function, header.SystemBytes);
        return;
    }
    if (log_ != nullptr) {
        log_->WriteLog("SECS II Message Received : \r\n" +
                       SECSMessageAccess::ToSML(*message, header.ReplyExpected));
    }
    if (ModGeneral::IsEven(header.Function)) {
        DispatchSecondary(header, message);
    } else {
        DispatchPrimary(header, message);
    }
}

SECSTransPtr Control::TemplateFor(const MessageHeader& header) const {
    if (dictionary_ == nullptr) throw Fault(FaultNumber::ObjectNotSet);
    for (const SECSTransPtr& entry : *SECSDictionaryAccess::AllItems(*dictionary_)) {
        const SECSMessagePtr primary = entry->Primary();
        if (primary->Stream() == header.Stream && primary->Func() == header.Function) return entry;
    }
    return nullptr;
}

void Control::DispatchPrimary(const MessageHeader& header, const SECSMessagePtr& message) {
    const SECSTransPtr found = TemplateFor(header);
    const SECSTransPtr trans = TransWithPrimary(found, message);
    TakeHeader(*trans, header.DeviceID, header.ReplyExpected, header.SystemBytes);
    Raise(events_.ReceivedPrimary, trans, 0, std::string());
    if (found == nullptr) RaiseOwnError(kMessageReceive, 2011, " - " + header.Name());
}

SECSTransPtr Control::WaitingFor(const MessageHeader& header) const {
    if (transInUse_ == nullptr) throw Fault(FaultNumber::ObjectNotSet);
    const auto fits = [&](const SECSTransPtr& entry) {
        if (settings_.SystemBytesCheck && entry->SystemBytes() != header.SystemBytes) return false;
        const SECSMessagePtr secondary = entry->Secondary();
        return secondary->Stream() == header.Stream && secondary->Func() == header.Function;
    };
    if (settings_.SystemBytesCheck) {
        const auto known =
            SECSDictionaryAccess::OneWithSystemBytes(*transInUse_, header.SystemBytes);
        if (known) return *known != nullptr && fits(*known) ? *known : nullptr;
    }
    for (const SECSTransPtr& entry : *SECSDictionaryAccess::AllItems(*transInUse_)) {
        if (fits(entry)) return entry;
    }
    return nullptr;
}

// The host gets a copy with the reply in it; the waiting entry leaves the table when the host is
// done, a table that the host may have torn down.
void Control::DispatchSecondary(const MessageHeader& header, const SECSMessagePtr& message) {
    const std::shared_ptr<hexmire::SECSDictionary> table = transInUse_;
    const SECSTransPtr waiting = WaitingFor(header);
    const SECSTransPtr trans = TransWithSecondary(waiting, message);
    TakeHeader(*trans, header.DeviceID, header.ReplyExpected, header.SystemBytes);
    Raise(events_.ReceivedSecondary, trans, 0, std::string());
    if (waiting == nullptr) {
        RaiseOwnError(kMessageReceive, 2013, " - " + header.Name());
        return;
    }
    SECSTransAccess::InProgress(*waiting, false);
    waiting->Delete();
}

// --- S9F7 --------------------------------------------------------------------------------------

void Control::SendS9F7(std::int32_t stream, std::int32_t function, std::int32_t systemBytes) {
    const Entry entry(*this);
    RunFreeRoutine({"ModGeneral", "SendS9F7"}, [&] {
        const SECSTransPtr trans = NewSECSTransaction(Variant("S9F7"));
        if (trans == nullptr) return;
        const SECSItemPtr item = trans->Primary()->Root()->Item(std::int32_t{1});
        if (item == nullptr) throw Fault(FaultNumber::ObjectNotSet);
        item->Format(FormatBinary);
        // The header as it would stand on a SECS-I line: last block, number 1, whatever it really
        // was.
        constexpr std::uint8_t kLastBlock = 0x80;
        const auto byte = [](std::int32_t value, int shift) {
            return static_cast<std::uint8_t>(static_cast<std::uint32_t>(value) >> shift & 0xFFU);
        };
        item->Value(std::vector<std::uint8_t>{byte(settings_.DeviceID, 8),
                                              byte(settings_.DeviceID, 0),
                                              byte(stream, 0),
                                              byte(function, 0),
                                              kLastBlock,
                                              1,
                                              byte(systemBytes, 24),
                                              byte(systemBytes, 16),
                                              byte(systemBytes, 8),
                                              byte(systemBytes, 0)});
        trans->Send();
    });
}

}  // namespace hexmire::detail
