#include "equipment/EquipmentRole.h"

#include "BodyCheck.h"
#include "Template.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace hexmire::program {

namespace {

constexpr std::int32_t kErrorStream = 9;

/// What the control makes of a body that is cut off, or wrong in another way, is not what the host
/// has meant.
bool IsWhole(const SECSMessage& message) {
    const Variant body = message.Raw();
    return !body.IsArray() || CheckBody(body.View<std::uint8_t>()).empty();
}

}  // namespace

EquipmentRole::EquipmentRole(EventLoop& loop, Peer& peer, Options options)
    : peer_(peer),
      equipment_(std::move(options.Model)),
      establish_(options.Establish),
      truncate_(std::move(options.Truncate)),
      planned_(std::move(options.Planned)),
      delay_(loop) {
    peer.OnConnect = [this] {
        const EquipmentModel& model = equipment_.Model();
        if (establish_) Send(1, 13, List({Ascii(model.Name), Ascii(model.Revision)}), true);
    };
    peer.OnDisconnect = [this](std::int32_t) { delay_.Clear(); };
    peer.OnPrimary = [this](const SECSTransPtr& trans) { TakePrimary(trans); };
    peer.OnError = [this](std::int32_t code, const std::string& text) {
        if (const auto message = ErrorMessageFor(code, text, OwnHeader()))
            SendError(message->Function, message->Header);
    };
}

bool EquipmentRole::Flush() {
    bool isGood = true;
    for (const OutgoingPrimary& primary : equipment_.TakeOutgoing())
        isGood = Send(primary.Stream, primary.Function, primary.Body, true) && isGood;
    return isGood;
}

void EquipmentRole::TakePrimary(const SECSTransPtr& trans) {
    Answer(trans);
    Flush();
}

void EquipmentRole::Answer(const SECSTransPtr& trans) {
    using enum EquipmentAnswer::Kind;
    const std::int32_t stream = trans->Primary()->Stream();
    const std::int32_t function = trans->Primary()->Func();
    if (stream == kErrorStream) return;  // An error report is not answered.
    const bool isKnown = Knows(stream, function);
    const bool isOnline = equipment_.State() == ControlState::Online;
    if (!isKnown && isOnline) return SendError(Knows(stream) ? 5 : 3, HeaderOfPrimary(*trans));

    if (isOnline && !IsWhole(*trans->Primary())) return SendError(7, HeaderOfPrimary(*trans));

    const EquipmentAnswer answer =
        AnswerTo(equipment_, stream, function, BodyOf(*trans->Primary()));
    if (answer.What == Malformed) return SendError(7, HeaderOfPrimary(*trans));
    if (!trans->ReplyExpected() || (answer.What == Unknown && !HasReply(*trans))) return;
    SECSMessage& secondary = *trans->Secondary();
    if (answer.What == Abort) {
        secondary.Stream(stream);
        secondary.Func(0);
        SetBody(secondary, std::nullopt);
    } else if (answer.What == Body && !HoldsValues(secondary)) {
        SetBody(secondary, answer.Body);
    } else {
        DropExamples(secondary);
    }
    Reply(trans, stream, function);
}

void EquipmentRole::Reply(const SECSTransPtr& trans, std::int32_t stream, std::int32_t function) {
    using enum Misbehaviour::Kind;
    const auto planned = planned_.Take(stream, function);
    if (!planned) {
        peer_.Reply(trans);
        return;
    }
    switch (planned->What) {
        case Late:
            delay_.After(planned->Delay, [this, trans] { peer_.Reply(trans); });
            return;
        case Silent:
            return;
        case WrongFunction:
            trans->Secondary()->Func(trans->Secondary()->Func() + (function < 253 ? 2 : -2));
            peer_.Reply(trans);
            return;
        case WrongSystemBytes:
            return ReplyAsAnother(trans);
        case Truncated:
            *truncate_ = true;
            peer_.Reply(trans);
            return;
        case Duplicate:
            peer_.Reply(trans);
            peer_.Reply(trans);
            return;
        case Disconnect:
            peer_.Reopen();
    }
}

// The reply as a message of its own. A new transaction has the system bytes 0, and would get the
// next ones of the counter, which begins at 1.
void EquipmentRole::ReplyAsAnother(const SECSTransPtr& trans) {
    const SECSTransPtr other = peer_.Control().NewSECSTransaction();
    other->Name(trans->Name());
    other->ReplyExpected(false);
    other->AutoSystemBytes(trans->SystemBytes() == 0);
    other->Primary()->Stream(trans->Secondary()->Stream());
    other->Primary()->Func(trans->Secondary()->Func());
    SetBody(*other->Primary(), BodyOf(*trans->Secondary()));
    peer_.Send(other);
}

bool EquipmentRole::Send(std::int32_t stream,
                         std::int32_t function,
                         const Datum& body,
                         bool replyExpected) {
    if (!HasHost()) return true;  // A reply may be missed when its link is gone.
    const std::uint64_t before = peer_.Errors();
    const SECSTransPtr trans = peer_.Control().NewSECSTransaction();
    trans->Name(StreamFunction(stream, function));
    trans->ReplyExpected(replyExpected);
    trans->Primary()->Stream(stream);
    trans->Primary()->Func(function);
    trans->Secondary()->Stream(stream);
    trans->Secondary()->Func(function + 1);
    SetBody(*trans->Primary(), body);
    return peer_.Errors() == before && peer_.Send(trans);
}

void EquipmentRole::SendError(std::int32_t function, std::span<const std::uint8_t> header) {
    Send(kErrorStream, function, {.Format = FormatBinary, .Value = Variant::Bytes(header)}, false);
}

HeaderFacts EquipmentRole::OwnHeader() {
    HeaderFacts facts{.DeviceID = peer_.Control().DeviceID(), .FromEquipment = true};
    const std::int32_t portType = peer_.Control().ConnectionPortType();
    if (portType == PortTypeRS232 || portType == PortTypeTCPIP) facts.BodyBytes = 0;
    return facts;
}

HeaderBytes EquipmentRole::HeaderOfPrimary(const SECSTrans& trans) {
    HeaderFacts facts = OwnHeader();
    facts.DeviceID = trans.DeviceID();
    facts.Stream = trans.Primary()->Stream();
    facts.Function = trans.Primary()->Func();
    facts.ReplyExpected = trans.ReplyExpected();
    facts.SystemBytes = trans.SystemBytes();
    facts.FromEquipment = false;
    // Three characters a byte, the last one without its blank.
    if (facts.BodyBytes) facts.BodyBytes = (trans.Primary()->RawHex().size() + 1) / 3;
    return HeaderOf(facts);
}

bool EquipmentRole::Knows(std::int32_t stream) const {
    const auto dictionary = peer_.Control().SECSDictionary();
    return std::ranges::any_of(dictionary->begin(), dictionary->end(), [&](const auto& entry) {
        return entry->Primary()->Stream() == stream;
    });
}

bool EquipmentRole::Knows(std::int32_t stream, std::int32_t function) const {
    const auto dictionary = peer_.Control().SECSDictionary();
    return std::ranges::any_of(dictionary->begin(), dictionary->end(), [&](const auto& entry) {
        return entry->Primary()->Stream() == stream && entry->Primary()->Func() == function;
    });
}

}  // namespace hexmire::program
