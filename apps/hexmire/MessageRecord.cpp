#include "MessageRecord.h"

namespace hexmire::program {

namespace {

MessageRecord Record(MessageKind kind,
                     const SECSTrans& trans,
                     const SECSMessage& message,
                     bool replyExpected) {
    return {.Kind = kind,
            .Stream = message.Stream(),
            .Function = message.Func(),
            .DeviceID = trans.DeviceID(),
            .SystemBytes = trans.SystemBytes(),
            .ReplyExpected = replyExpected,
            .Name = trans.Name(),
            .Sml = RenderSml(message, replyExpected),
            .BodyHex = message.RawHex()};
}

}  // namespace

MessageRecord SentPrimary(const SECSTrans& trans) {
    return Record(MessageKind::Sent, trans, *trans.Primary(), trans.ReplyExpected());
}

MessageRecord SentSecondary(const SECSTrans& trans) {
    return Record(MessageKind::Sent, trans, *trans.Secondary(), false);
}

MessageRecord ReceivedPrimary(const SECSTrans& trans) {
    return Record(MessageKind::ReceivedPrimary, trans, *trans.Primary(), trans.ReplyExpected());
}

MessageRecord ReceivedSecondary(const SECSTrans& trans) {
    return Record(MessageKind::ReceivedSecondary, trans, *trans.Secondary(), trans.ReplyExpected());
}

std::string StreamFunction(std::int32_t stream, std::int32_t function) {
    return 'S' + std::to_string(stream) + 'F' + std::to_string(function);
}

}  // namespace hexmire::program
