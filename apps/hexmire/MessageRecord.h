#pragma once

#include <hexmire/hexmire.h>

#include <cstdint>
#include <string>

namespace hexmire::program {

enum class MessageKind : std::uint8_t { Sent, ReceivedPrimary, ReceivedSecondary };

/// One message that went out or came in, as it is shown. Texts are in ISO 8859-1.
struct MessageRecord {
    MessageKind Kind = MessageKind::Sent;
    std::int32_t Stream = 0;
    std::int32_t Function = 0;
    std::int32_t DeviceID = 0;
    std::int32_t SystemBytes = 0;
    bool ReplyExpected = false;  ///< the W-bit
    std::string Name{};          ///< of the transaction; "" when the dictionary does not hold it
    std::string Sml{};
    std::string BodyHex{};
};

[[nodiscard]] MessageRecord SentPrimary(const SECSTrans& trans);
[[nodiscard]] MessageRecord SentSecondary(const SECSTrans& trans);
[[nodiscard]] MessageRecord ReceivedPrimary(const SECSTrans& trans);
[[nodiscard]] MessageRecord ReceivedSecondary(const SECSTrans& trans);

/// "S1F13"
[[nodiscard]] std::string StreamFunction(std::int32_t stream, std::int32_t function);

}  // namespace hexmire::program
