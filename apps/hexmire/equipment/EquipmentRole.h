#pragma once

#include <hexmire/hexmire.h>

#include "Peer.h"
#include "equipment/Answers.h"
#include "equipment/Delay.h"
#include "equipment/ErrorMessages.h"
#include "equipment/Misbehaviour.h"
#include "equipment/TruncatingDriver.h"

#include <cstdint>
#include <span>
#include <string>

namespace hexmire::program {

/// Puts a simulated equipment on a link: answers what the equipment answers, everything else of its
/// dictionary that expects a reply with the template's secondary, sends what the equipment has to
/// send, and tells the host of its errors (SEMI E5, stream 9): a stream or function that the
/// dictionary does not hold (S9F3, S9F5), a body of another shape (S9F7), a foreign device ID
/// (S9F1), a reply that does not come (S9F9), a message that is too long (S9F11).
///
/// A template whose secondary holds values is answered with them.
class EquipmentRole {
public:
    struct Options {
        EquipmentModel Model{};
        bool Establish = false;  ///< sends S1F13 at each new connection
        Misbehaviours Planned{};
        TruncateNext Truncate = std::make_shared<bool>(false);
    };

    /// Takes the peer's events. Loop and peer outlive this object.
    EquipmentRole(EventLoop& loop, Peer& peer, Options options);

    [[nodiscard]] Equipment& Simulated() noexcept { return equipment_; }
    [[nodiscard]] Misbehaviours& Planned() noexcept { return planned_; }

    /// What is sent goes to a host: there is a connection, and the port is open.
    [[nodiscard]] bool HasHost() const { return peer_.CanSend(); }

    /// Sends what the equipment has to send; false when an error was raised meanwhile. While there
    /// is no connection it is lost.
    bool Flush();

private:
    void TakePrimary(const SECSTransPtr& trans);
    void Answer(const SECSTransPtr& trans);
    void Reply(const SECSTransPtr& trans, std::int32_t stream, std::int32_t function);
    void ReplyAsAnother(const SECSTransPtr& trans);
    bool Send(std::int32_t stream, std::int32_t function, const Datum& body, bool replyExpected);
    void SendError(std::int32_t function, std::span<const std::uint8_t> header);
    [[nodiscard]] HeaderFacts OwnHeader();
    [[nodiscard]] HeaderBytes HeaderOfPrimary(const SECSTrans& trans);
    [[nodiscard]] bool Knows(std::int32_t stream) const;
    [[nodiscard]] bool Knows(std::int32_t stream, std::int32_t function) const;

    Peer& peer_;
    Equipment equipment_;
    bool establish_;
    TruncateNext truncate_;
    Misbehaviours planned_;
    Delay delay_;
};

}  // namespace hexmire::program
