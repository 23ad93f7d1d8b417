#pragma once

#include <hexmire/support/Variant.h>
#include <hexmire/trans/SECSTrans.h>

#include <cstdint>
#include <functional>
#include <string>

namespace hexmire {

/// The events of a control. An event without handler is raised all the same and goes nowhere; a
/// handler that throws is a fault of the routine that raised it. Handlers may call anything of the
/// control, ControlTerminate included.
struct HexmireEvents {
    /// The link is ready for messages.
    std::function<void()> Connect;
    /// The link has ended (code, text); 0 and "" when the host closed it.
    std::function<void(std::int32_t errorCode, const std::string& errorText)> Disconnect;
    /// Every failure: code, text with its context, line indicator. `ErrorCode` still holds the
    /// previous code while the handler runs.
    std::function<void(
        std::int32_t errorCode, const std::string& errorText, std::int32_t errorLine)>
        Error;
    /// A primary has come; answer it with Reply.
    std::function<void(
        const SECSTransPtr& trans, std::int32_t errorCode, const std::string& errorText)>
        ReceivedPrimary;
    /// A reply has come: a copy of the waiting transaction with the reply as its secondary.
    std::function<void(
        const SECSTransPtr& trans, std::int32_t errorCode, const std::string& errorText)>
        ReceivedSecondary;
    /// Declared, never raised.
    std::function<void(
        bool sent, std::int32_t byteType, const Variant& bytes, const std::string& hexBytes)>
        ByteMonitor;
};

}  // namespace hexmire
