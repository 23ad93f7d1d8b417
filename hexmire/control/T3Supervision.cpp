#include <hexmire/control/detail/Control.h>
#include <hexmire/control/detail/MessageHeader.h>
#include <hexmire/core/ModGeneral.h>
#include <hexmire/support/Fault.h>
#include <hexmire/trans/detail/SECSDictionaryAccess.h>
#include <hexmire/trans/detail/SECSTransAccess.h>

/// Reply supervision: start and stop of T3, and the timer that counts it down (SEMI E4 and E37,
/// T3).
namespace hexmire::detail {

void Control::moSECSIService_SecsMsgSend(const std::string& messageHex) {
    MarkT3("moSECSIService_SecsMsgSend", messageHex, true);
}

void Control::moSECSIService_SecsBlockReceive(const std::string& blockHex) {
    MarkT3("moSECSIService_SecsBlockReceive", blockHex, false);
}

// A primary that has gone out starts its entry's timer; a block of a reply stops it.
void Control::MarkT3(const char* routine, const std::string& hex, bool start) {
    if (tornDown_) return;
    RunOwn(routine, [&] {
        if (hex.empty()) {
            RaiseOwnError(routine, 2016);
            return;
        }
        MessageHeader header(hex);
        if (ModGeneral::IsEven(header.Function) == start) return;
        header.ReadSystemBytes();
        if (transInUse_ == nullptr) return;  // A handler of a fault just now has ended the control.
        SearchTable(header, start);
    });
}

/// Whether the message that has gone out, or the reply that comes, is this entry's.
bool Control::MarkEntry(SECSTrans& entry, const MessageHeader& header, bool start) {
    const SECSMessagePtr message = start ? entry.Primary() : entry.Secondary();
    if (message == nullptr) throw Fault(FaultNumber::ObjectNotSet);
    if (message->Stream() != header.Stream || message->Func() != header.Function) return false;
    SECSTransAccess::T3Start(entry, start);
    return true;
}

void Control::SearchTable(const MessageHeader& header, bool start) {
    if (log_ == nullptr) return SearchSilently(header, start);
    const std::string label = start ? "Start T3 - " : "Cancel T3 - ";
    const std::string wanted =
        header.Name() + " SystemBytes: " + std::to_string(header.SystemBytes);
    log_->WriteLog(label + "Searching for " + wanted);
    std::int32_t count = 0;
    std::string line = label + "TransactionInUse[";
    const std::size_t lineBegin = line.size();
    for (const SECSTransPtr& entry : *SECSDictionaryAccess::AllItems(*transInUse_)) {
        ++count;
        const SECSMessagePtr message = start ? entry->Primary() : entry->Secondary();
        if (message == nullptr) throw Fault(FaultNumber::ObjectNotSet);
        line.resize(lineBegin);
        line.append(std::to_string(count)).append("] : S");
        line.append(std::to_string(message->Stream())).append("F");
        line.append(std::to_string(message->Func())).append(" SystemBytes: ");
        log_->WriteLog(line.append(std::to_string(entry->SystemBytes())));
        if (entry->SystemBytes() != header.SystemBytes || !MarkEntry(*entry, header, start)) {
            continue;
        }
        log_->WriteLog(std::string(label).append("Timer for ").append(wanted));
        return;
    }
}

/// Nothing tells which entries were looked at.
void Control::SearchSilently(const MessageHeader& header, bool start) {
    const auto known = SECSDictionaryAccess::OneWithSystemBytes(*transInUse_, header.SystemBytes);
    if (known) {
        if (*known != nullptr) MarkEntry(**known, header, start);
        return;
    }
    for (const SECSTransPtr& entry : *SECSDictionaryAccess::AllItems(*transInUse_)) {
        if (entry->SystemBytes() == header.SystemBytes && MarkEntry(*entry, header, start)) return;
    }
}

// --- The timer ---------------------------------------------------------------------------------

// What counts is a new second on the wall clock, not the time that has passed. The entries that
// were there are visited once each, as long as they still are; handlers may change the table.
void Control::TimerCheck_Timer() {
    if (tornDown_) return;
    RunOwn("TimerCheck_Timer", [&] {
        const std::chrono::seconds second = SecondOfDay();
        if (second == lastSecond_) return;
        lastSecond_ = second;
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
