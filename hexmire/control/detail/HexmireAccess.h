#pragma once

#include <hexmire/control/Hexmire.h>
#include <hexmire/support/CLogFile.h>

#include <cstdint>
#include <memory>
#include <string>

namespace hexmire::detail {

/// Members of the control that only the library (and its tests) use.
class HexmireAccess {
public:
    /// The table of transactions that wait for a reply.
    static std::shared_ptr<SECSDictionary> SECSTransInUse(Hexmire& hexmire) noexcept;
    static void TriggerError(Hexmire& hexmire,
                             std::int32_t errorCode,
                             const std::string& errorText,
                             std::int32_t errorLine);
    /// Answers a received message whose body cannot be decoded.
    static void SendS9F7(Hexmire& hexmire,
                         std::int32_t stream,
                         std::int32_t function,
                         std::int32_t systemBytes);
    static CLogFile* Log(Hexmire& hexmire) noexcept;
};

}  // namespace hexmire::detail
