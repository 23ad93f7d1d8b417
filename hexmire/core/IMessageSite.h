#pragma once

#include <hexmire/support/CLogFile.h>
#include <hexmire/support/IErrorSink.h>

namespace hexmire {

/// What messages need of the control that made them: its errors and its message log.
class IMessageSite : public IErrorSink {
public:
    [[nodiscard]] Service Serves() const noexcept override { return Service::Messages; }

    /// The shared message log; nullptr while there is none.
    [[nodiscard]] virtual CLogFile* Log() noexcept = 0;
};

}  // namespace hexmire
