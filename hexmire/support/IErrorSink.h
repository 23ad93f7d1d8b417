#pragma once

#include <cstdint>
#include <string>

namespace hexmire {

/// Where errors of the object model go: the control. Single-threaded; call from the loop thread.
class IErrorSink {
public:
    /// Raises the control's `Error` event with the three values unchanged, then stores the code as
    /// its last error. Never throws.
    virtual void TriggerError(std::int32_t errorCode,
                              const std::string& errorText,
                              std::int32_t errorLine) = 0;

    virtual ~IErrorSink() = default;

protected:
    IErrorSink() = default;
    IErrorSink(const IErrorSink&) = default;
    IErrorSink& operator=(const IErrorSink&) = default;
};

}  // namespace hexmire
