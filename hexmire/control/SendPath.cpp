#include <hexmire/control/detail/Control.h>
#include <hexmire/control/detail/MessageHeader.h>
#include <hexmire/core/ModGeneral.h>
#include <hexmire/support/Fault.h>
#include <hexmire/support/Text.h>
#include <hexmire/support/detail/ObjectMaker.h>
#include <hexmire/trans/TransFactory.h>
#include <hexmire/trans/detail/SECSDictionaryAccess.h>
#include <hexmire/trans/detail/SECSTransAccess.h>

/// Working transactions, the start of T3, and the timer that supervises the waiting ones.
namespace hexmire::detail {

namespace {

constexpr const char* kNewTransaction = "NewSECSTransaction";

}  // namespace

SECSTransPtr Control::NewSECSTransaction() {
    SECSTransPtr result;
    RunOwn(kNewTransaction, [&] {
        RequireAlive();
        result = ObjectMaker::Make<SECSTrans>(site_.Ref());
    });
    return result;
}

SECSTransPtr Control::NewSECSTransaction(const Variant& value) {
    SECSTransPtr result;
    RunOwn(kNewTransaction, [&] {
        RequireAlive();
        if (dictionary_ == nullptr) throw Fault(FaultNumber::ObjectNotSet);
        SECSTransPtr found;
        const VariantKind kind = value.Kind();
        if (dictionary_->TransCount() < 1) {
            RaiseOwnError(kNewTransaction, 1020);
        } else if (kind == VariantKind::Integer || kind == VariantKind::Long) {
            found = TemplateByIndex(kind == VariantKind::Long ? value.AsLong()
                                                              : std::int32_t{value.AsInteger()});
        } else if (kind != VariantKind::String || TrimBlanks(value.Text()).empty()) {
            RaiseOwnError(kNewTransaction, 1027);
        } else {
            found = TemplateByName(value.Text());
        }
        if (found != nullptr) result = CopyOf(found);
    });
    return result;
}

SECSTransPtr Control::TemplateByIndex(std::int32_t index) {
    if (index < 1) {
        RaiseOwnError(kNewTransaction, 1022);
        return nullptr;
    }
    if (index > dictionary_->TransCount()) {
        RaiseOwnError(kNewTransaction, 1026);
        return nullptr;
    }
    return (*SECSDictionaryAccess::AllItems(*dictionary_))[static_cast<std::size_t>(index) - 1];
}

SECSTransPtr Control::TemplateByName(std::string_view name) {
    for (const SECSTransPtr& entry : *SECSDictionaryAccess::AllItems(*dictionary_)) {
        if (EqualsIgnoringCase(entry->Name(), name)) return entry;
    }
    RaiseOwnError(kNewTransaction, 1025);
    return nullptr;
}

SECSTransPtr Control::CopyOf(const SECSTransPtr& source) const {
    SECSTransPtr copy = ObjectMaker::Make<SECSTrans>(site_.Ref());
    ModGeneral::CreateNewTrans(copy, source);
    return copy;
}

// --- Start of T3
// ----------------------------------------------------------------------------------

void Control::moSECSIService_SecsMsgSend(const std::string& messageHex) {
    if (tornDown_) return;
    const std::shared_ptr<SECSIService> driver = driver_;
    constexpr const char* kRoutine = "moSECSIService_SecsMsgSend";
    RunOwn(kRoutine, [&] {
        if (messageHex.empty()) {
            RaiseOwnError(kRoutine, 2016);
            return;
        }
        MessageHeader header(messageHex);
        if (ModGeneral::IsEven(header.Function)) return;
        header.ReadSystemBytes();
        StartT3(header);
    });
}

void Control::StartT3(const MessageHeader& header) {
    if (transInUse_ == nullptr) return;  // A handler of the fault above has ended the control.
    const std::string suffix = " SystemBytes: ";
    if (log_ != nullptr) {
        log_->WriteLog("Start T3 - Searching for " + header.Name() + suffix +
                       std::to_string(header.SystemBytes));
    }
    std::int32_t count = 0;
    for (const SECSTransPtr& entry : *SECSDictionaryAccess::AllItems(*transInUse_)) {
        ++count;
        const SECSMessagePtr primary = entry->Primary();
        if (primary == nullptr) throw Fault(FaultNumber::ObjectNotSet);
        if (log_ != nullptr) {
            log_->WriteLog("Start T3 - TransactionInUse[" + std::to_string(count) + "] : S" +
                           std::to_string(primary->Stream()) + "F" +
                           std::to_string(primary->Func()) + suffix +
                           std::to_string(entry->SystemBytes()));
        }
        if (entry->SystemBytes() != header.SystemBytes || primary->Stream() != header.Stream ||
            primary->Func() != header.Function) {
            continue;
        }
        SECSTransAccess::T3Start(*entry, true);
        if (log_ != nullptr) {
            log_->WriteLog("Start T3 - Timer for " + header.Name() + suffix +
                           std::to_string(header.SystemBytes));
        }
        return;
    }
}

// --- The timer
// ------------------------------------------------------------------------------------

// What counts is a new second on the wall clock, not the time that has passed. The entries that
// were there are visited once each, as long as they still are; handlers may change the table.
void Control::TimerCheck_Timer() {
    if (tornDown_) return;
    RunOwn("TimerCheck_Timer", [&] {
        std::string second = SecondOfDay();
        if (second == lastSecond_) return;
        lastSecond_ = std::move(second);
        const std::shared_ptr<hexmire::SECSDictionary> table = transInUse_;
        if (table == nullptr) throw Fault(FaultNumber::ObjectNotSet);
        for (const SECSTransPtr& entry : *table) {
            if (transInUse_ != table) return;  // A handler has ended the control.
            if (SECSTransAccess::Parent(*entry) != table) continue;
            if (SECSTransAccess::T3Start(*entry)) {
                SECSTransAccess::T3Timer(*entry, SECSTransAccess::T3Timer(*entry) - 1);
            } else {
                SECSTransAccess::T3Counter(*entry, SECSTransAccess::T3Counter(*entry) + 1);
            }
        }
    });
}

}  // namespace hexmire::detail
