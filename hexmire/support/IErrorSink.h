#pragma once

#include <cstdint>
#include <string>

namespace hexmire {

/// Where errors of the object model go: the control. Single-threaded; call from the loop thread.
class IErrorSink {
public:
    /// What objects may ask of a sink beyond errors. It stands in for a search through the classes
    /// that it is of, which costs more than what is asked.
    enum class Service : std::uint8_t {
        Errors,
        Messages,      ///< it is an IMessageSite
        Transactions,  ///< it is an ITransSite, and so an IMessageSite
    };
    [[nodiscard]] virtual Service Serves() const noexcept { return Service::Errors; }

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
