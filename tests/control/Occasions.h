#pragma once

#include "DictionaryFile.h"
#include "Receiving.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace hexmire::fakes {

inline const std::string kMessage = "(Hexmire-moSECSIService_SecsMsgReceive) ";
inline const std::string kNoHeader = "Invalid SECS II Header received.,0)";
inline const std::string kUnknown =
    "Error(2011," + kMessage +
    "This SECSMessage received is not contained in the SECSDictionary. - S7F3,0)";
inline const std::string kNotOurs =
    "Error(2013," + kMessage +
    "This SECSMessage received is not belong to any primary SECSMessage. - S1F6,0)";

/// A host with an open port, an S1F3 that waits under system bytes 1, a dictionary file of one
/// transaction, and one thing that it does inside the handler of one event.
struct Acting : Receiving {
    Acting() {
        Waiting = Send(1, 3);
        Control().OpenPort();
        XML.Document = FakeXMLNode::Make("SECSDictionary", {}, {TransNode("S5F1", "5", "1")});
    }
    /// The event is counted from 1.
    void ActInside(std::size_t event, std::function<void()> act) {
        const auto once = [this, event, act = std::move(act)] {
            if (Raised.size() == event) act();
        };
        HexmireEvents& events = Control().Events();
        events.Connect = [record = events.Connect, once] {
            record();
            once();
        };
        events.Disconnect = [record = events.Disconnect, once](std::int32_t code,
                                                               const std::string& text) {
            record(code, text);
            once();
        };
        OnError([once](std::int32_t) { once(); });
        for (auto* received : {&events.ReceivedPrimary, &events.ReceivedSecondary}) {
            *received = [record = *received, once](
                            const SECSTransPtr& trans, std::int32_t code, const std::string& text) {
                record(trans, code, text);
                once();
            };
        }
    }
    SECSTransPtr Waiting;
};

/// What makes the control raise something, and what it raises when the host only listens.
struct Occasion {
    const char* Label;
    std::function<void(Acting&)> Fire;
    std::size_t At;  ///< the event that the host acts in
    Lines Raised;
    std::int32_t Code;   ///< ErrorCode afterwards
    bool Leaves;         ///< takes the waiting entry out of the table
    const char* Teller;  ///< the routine that reports what a handler throws
};

inline const std::vector<Occasion>& Occasions() {
    static const std::vector<Occasion> occasions{
        {"connect",
         [](Acting& host) { host.DriverEvents().Connect(); },
         1,
         {"Connect"},
         0,
         false,
         "moSECSIService_Connect"},
        {"disconnect",
         [](Acting& host) { host.DriverEvents().Disconnect(7, "x"); },
         1,
         {"Disconnect(7,x)"},
         7,
         false,
         "moSECSIService_Disconnect"},
        {"driver's error",
         [](Acting& host) { host.DriverEvents().Error(8, "y"); },
         1,
         {"Error(8,y,0)"},
         8,
         false,
         "moSECSIService_Error"},
        {"known primary",
         [](Acting& host) { host.ReceivePrimary(6, 11); },
         1,
         {"ReceivedPrimary(S6F11,0,)"},
         0,
         false,
         "moSECSIService_SecsMsgReceive"},
        {"unknown primary",
         [](Acting& host) { host.ReceivePrimary(7, 3); },
         1,
         {"ReceivedPrimary(S7F3,0,)", kUnknown},
         2011,
         false,
         "moSECSIService_SecsMsgReceive"},
        {"error of an unknown primary",
         [](Acting& host) { host.ReceivePrimary(7, 3); },
         2,
         {"ReceivedPrimary(S7F3,0,)", kUnknown},
         2011,
         false,
         "moSECSIService_SecsMsgReceive"},
        {"awaited reply",
         [](Acting& host) { host.ReceiveReply(1, 4, 1); },
         1,
         {"ReceivedSecondary(S1F4,0,)"},
         0,
         true,
         "moSECSIService_SecsMsgReceive"},
        {"reply that nobody awaits",
         [](Acting& host) { host.ReceiveReply(1, 6, 1); },
         1,
         {"ReceivedSecondary(S1F6,0,)", kNotOurs},
         2013,
         false,
         "moSECSIService_SecsMsgReceive"},
        {"error of a reply that nobody awaits",
         [](Acting& host) { host.ReceiveReply(1, 6, 1); },
         2,
         {"ReceivedSecondary(S1F6,0,)", kNotOurs},
         2013,
         false,
         "moSECSIService_SecsMsgReceive"},
        {"reply time over",
         [](Acting& host) {
             hexmire::detail::SECSTransAccess::T3Start(*host.Waiting, true);
             hexmire::detail::SECSTransAccess::T3Timer(*host.Waiting, 1);
             host.TickSecond();
         },
         1,
         {"Error(2012,(SECSTrans-Let T3Timer) T3 Timeout encountered. For [SystemBytes-1] "
          "S1F3,0)"},
         2012,
         true,
         "TriggerError"},
        {"never sent",
         [](Acting& host) {
             hexmire::detail::SECSTransAccess::T3Counter(*host.Waiting, 179);
             host.TickSecond();
         },
         1,
         {"Error(2015,(SECSTrans-Let T3Counter) SECSTrans in use cleared. For ,0)"},
         2015,
         true,
         "TriggerError"},
        {"sent without header",
         [](Acting& host) { host.DriverEvents().SecsMsgSend(""); },
         1,
         {"Error(2016,(Hexmire-moSECSIService_SecsMsgSend) " + kNoHeader},
         2016,
         false,
         "moSECSIService_SecsMsgSend"},
        {"block without header",
         [](Acting& host) { host.DriverEvents().SecsBlockReceive(""); },
         1,
         {"Error(2016,(Hexmire-moSECSIService_SecsBlockReceive) " + kNoHeader},
         2016,
         false,
         "moSECSIService_SecsBlockReceive"},
        {"message without header",
         [](Acting& host) { host.DriverEvents().SecsMsgReceive("", "", 0); },
         1,
         {"Error(2016," + kMessage + kNoHeader},
         2016,
         false,
         "moSECSIService_SecsMsgReceive"},
        {"system bytes that overflow",
         [](Acting& host) { host.MessageSent(Header(0, true, 1, 3, 0x80000001U)); },
         1,
         {"Error(6,(ModGeneral-lLBitShift) Overflow,0)"},
         6,
         false,
         "TriggerError"},
        {"refusal of the control",
         [](Acting& host) { host.Control().DeviceID(-1); },
         1,
         {"Error(1047,(Hexmire-Let DeviceID) The DeviceID must be between 0 and 32767.,0)"},
         1047,
         false,
         "Let DeviceID"},
        {"refusal of a transaction",
         [](Acting& host) { host.Waiting->DeviceID(-1); },
         1,
         {"Error(1047,(SECSTrans-Let DeviceID) The DeviceID must be between 0 and 32767.,0)"},
         1047,
         false,
         "TriggerError"}};
    return occasions;
}

}  // namespace hexmire::fakes
